"""A libvirt daemon with two running guests. It has its own mounts, so it does not affect the daemon of this host.

The process must run in its own mount and network namespaces (`unshare --mount --net`).
"""

import os
import re
import signal
import subprocess
import time

import machines
import second_host

SETTINGS = {
    "libvirtd.conf": 'auth_unix_rw = "none"\nauth_unix_ro = "none"\n',
    # QEMU uses no helpers, users or control groups of this host.
    "qemu.conf": 'user = "root"\ngroup = "root"\ndynamic_ownership = 0\nremember_owner = 0\nsecurity_driver = "none"\n'
                 'cgroup_controllers = []\nnamespaces = []\nstdio_handler = "file"\n',
}

INIT = """#!/bin/sh
export PATH=/bin
/bin/busybox --install -s /bin
mount -t proc proc /proc
while read -r module; do insmod "$module"; done </lib/modules/in-order
echo guest is up
while :; do sleep 1000; done
"""

DOMAIN = """<domain type='qemu'>
  <name>{name}</name>
  <memory unit='KiB'>{memory}</memory>{backing}
  <os><type arch='x86_64' machine='pc'>hvm</type>
    <kernel>{folder}/vmlinuz</kernel><initrd>{folder}/guest.cpio</initrd>
    <cmdline>console=ttyS0 quiet mitigations=off panic=-1</cmdline></os>
  <features><acpi/></features>
  <devices>
    <emulator>{qemu}</emulator>
    <serial type='file'><source path='{folder}/{name}.console'/></serial>
    <memballoon model='virtio'>{stats}</memballoon>
  </devices>
</domain>"""


def make_initrd(folder, kernel):
    """Packs an initial RAM disk with busybox and the balloon driver."""
    root = f"{folder}/root"
    for name in "dev proc sys tmp".split():
        os.makedirs(f"{root}/{name}")
    second_host.copy(second_host.shutil.which("busybox"), f"{root}/bin/busybox")
    os.symlink("busybox", f"{root}/bin/sh")
    second_host.write(f"{root}/init", INIT.encode())
    modules = second_host.Modules(kernel)
    for name in ("virtio_pci", "virtio_balloon"):
        modules.take(name)
    for name, content in modules.taken.items():
        second_host.write(f"{root}/lib/modules/{name}.ko", content)
    in_order = "".join(f"/lib/modules/{name}.ko\n" for name in modules.taken)
    second_host.write(f"{root}/lib/modules/in-order", in_order.encode())
    second_host.pack(root, f"{folder}/guest.cpio")


def until(condition, seconds, what):
    """Waits until the condition holds, and returns its value."""
    end = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"after {seconds} s, still not: {what}")
        time.sleep(0.1)


def mount_own_folder(path):
    """Hides a folder behind an empty one. If the folder does not exist, hides its parent and creates the folder."""
    hidden = path if os.path.isdir(path) else os.path.dirname(path)
    subprocess.run(["mount", "-t", "tmpfs", "-o", "mode=755", "tmpfs", hidden], check=True)
    os.makedirs(path, exist_ok=True)


class Host:
    MEMORY = 256 * 1024  # KB, of each guest

    def __init__(self, folder, kernel):
        self.folder = folder
        self.pids = []
        for path in "/run /var/lib/libvirt /var/cache/libvirt /var/log/libvirt /etc/libvirt".split():
            mount_own_folder(path)
        os.makedirs("/etc/libvirt/qemu")
        for name, text in SETTINGS.items():
            second_host.write(f"/etc/libvirt/{name}", text.encode(), 0o644)
        second_host.copy(f"{kernel}/vmlinuz", f"{folder}/vmlinuz")
        make_initrd(folder, kernel)
        self.log = open(f"{folder}/libvirtd.log", "wb")
        self.daemon = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", "libvirtd"], stdout=self.log,
                                       stderr=self.log, stdin=subprocess.DEVNULL)
        until(lambda: os.path.exists("/run/libvirt/libvirt-sock-ro") and self.virsh("list", check=False) is not None,
              30, "libvirtd answers")

    def virsh(self, *words, check=True):
        """Returns the output of virsh. If virsh fails, raises an error, or returns None if `check` is false."""
        done = subprocess.run(["virsh", "-q", "-c", "qemu:///system", *words], capture_output=True, text=True, timeout=60)
        if check and done.returncode != 0:
            raise AssertionError(f"virsh {' '.join(words)}: {done.stderr}")
        return done.stdout if done.returncode == 0 else None

    def start(self, name, period=None, paused=False, backing=""):
        """Starts a guest. With a period, libvirt polls its balloon driver this often, in seconds. `backing` is an element
        of the domain: where the guest's memory is."""
        stats = f"<stats period='{period}'/>" if period else ""
        path = f"{self.folder}/{name}.xml"
        domain = DOMAIN.format(name=name, memory=self.MEMORY, folder=self.folder, stats=stats, backing=backing,
                               qemu=second_host.shutil.which(machines.QEMU))
        second_host.write(path, domain.encode(), 0o644)
        self.virsh("create", *(["--paused"] if paused else []), path)
        self.pids.append(self.pid(name))

    def pid(self, name):
        with open(f"/run/libvirt/qemu/{name}.pid", encoding="ascii") as file:
            return int(file.read())

    def statistics(self, name):
        """The guest's memory statistics from virsh: {"actual": 262144, "unused": ...}."""
        return {key: int(value) for key, value in re.findall(r"(\S+) (\d+)\n", self.virsh("dommemstat", name))}

    def is_up(self, name):
        try:
            with open(f"{self.folder}/{name}.console", encoding="utf-8", errors="replace") as file:
                return "guest is up" in file.read()
        except FileNotFoundError:
            return False

    def stop(self):
        for pid in self.pids:
            try:
                os.kill(pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
        self.daemon.kill()
        self.daemon.wait()
        self.log.close()
