"""Prints figures of the reports on two guests beside what virsh, the monitors and the kernel say.

    side_by_side.py KERNEL FOLDER KESTREL NODAL

KERNEL is the folder of kernel.py. FOLDER is recreated. The guest `web` has its memory in a memfd, and a filled balloon.
The guest `mail` has anonymous memory, and a limit two groups above its process, so the kernel swaps: to a file in
FOLDER, which is swap space until the end. Both guests are emulated. Requires root.
"""

import json
import os
import re
import shutil
import subprocess
import sys
import time

import libvirt_host
import machines

IN_NAMESPACES = "KESTREL_IN_NAMESPACES"
KERNEL, FOLDER, KESTREL, NODAL = map(os.path.abspath, sys.argv[1:])
MB = 1024  # in KB, the unit of the reports
MEMORY = libvirt_host.Host.MEMORY
BALLOONED = 160 * MB  # what the balloon leaves to web
LIMIT = 64 * MB  # of mail, which needs more
SWAP_SPACE = 256 * MB
MEMFD = "<memoryBacking><source type='memfd'/><access mode='shared'/></memoryBacking>"


def read(path):
    with open(path, encoding="utf-8") as file:
        return file.read()


def succeeds(act, *arguments):
    try:
        act(*arguments)
        return True
    except OSError:
        return False


class Scope:
    """A control group for a machine, whose process is two groups below it."""

    def __init__(self, pid, name):
        hierarchy, self.home = machines.memory_hierarchy(pid)
        self.home = f"{hierarchy}{self.home}"
        self.pid = pid
        self.name = f"machine-qemu\\x2d2\\x2d{name}.scope"
        self.path = f"{hierarchy}/machine.slice/{self.name}"
        self.is_version_1 = os.path.exists(f"{hierarchy}/memory.limit_in_bytes")
        self.made = []
        for folder in (f"{hierarchy}/machine.slice", self.path, f"{self.path}/libvirt", f"{self.path}/libvirt/emulator"):
            if not os.path.exists(folder):
                os.mkdir(folder)
                self.made.insert(0, folder)
            if folder == f"{hierarchy}/machine.slice" and not self.is_version_1:
                machines.write(f"{folder}/cgroup.subtree_control", "+memory")
        machines.write(f"{self.path}/libvirt/emulator/cgroup.procs", pid)

    def file(self, version_1, version_2):
        """The path of a file, by its names in the two versions of control groups."""
        return f"{self.path}/{version_1 if self.is_version_1 else version_2}"

    def limit(self, size):
        # The kernel refuses a limit to which it cannot reclaim in time. Each attempt reclaims more.
        path = self.file("memory.limit_in_bytes", "memory.max")
        libvirt_host.until(lambda: succeeds(machines.write, path, size * 1024), 60, "the limit is set")

    def remove(self):
        """Requires that the process has ended."""
        for folder in self.made:
            libvirt_host.until(lambda: succeeds(os.rmdir, folder), 10, f"{folder} is empty")


class SwapFile:
    def __init__(self, path):
        self.path = path
        with open(path, "wb") as file:
            os.chmod(path, 0o600)
            os.posix_fallocate(file.fileno(), 0, SWAP_SPACE * 1024)
        subprocess.run(["mkswap", "-q", path], check=True)
        subprocess.run(["swapon", path], check=True)

    def remove(self):
        subprocess.run(["swapoff", self.path], check=True)
        os.remove(self.path)


class Guest:
    """What the parties say of a guest, in KB."""

    def __init__(self, host, name, scope=None):
        self.host = host
        self.name = name
        self.scope = scope
        self.pid = host.pid(name)

    def kestrel(self, report, column, name=None):
        _, output, _ = machines.run(KESTREL, "-r", report, "-q")
        [row] = [row for row in machines.rows(output) if row["name"] == (name or self.name)]
        return row[column]

    def virsh_size(self):
        return int(re.search(r"Max memory: +(\d+) KiB", self.host.virsh("dominfo", self.name))[1])

    def virsh(self, key):
        return self.host.statistics(self.name)[key]

    def qmp(self, command, **arguments):
        request = json.dumps({"execute": command, "arguments": arguments})
        return json.loads(self.host.virsh("qemu-monitor-command", self.name, request))["return"]

    def driver(self, key):
        stats = self.qmp("qom-get", path="/machine/peripheral/balloon0", property="guest-stats")["stats"]
        return stats[f"stat-{key}"] // 1024

    def status(self, key):
        return machines.fields(read(f"/proc/{self.pid}/status"))[key]

    def smaps(self, key):
        """A figure of all mappings."""
        return machines.fields(read(f"/proc/{self.pid}/smaps_rollup"))[key]

    def memory(self, key):
        """A figure of the mapping that is the guest's memory."""
        for mapping in re.split(r"^(?=[0-9a-f]+-[0-9a-f]+ )", read(f"/proc/{self.pid}/smaps"), flags=re.M)[1:]:
            figures = machines.fields(mapping)
            if figures["Size"] == MEMORY:
                return figures[key]
        raise AssertionError(f"{self.name}: no mapping of {MEMORY} KB")

    def group(self, version_1, version_2, key=None):
        text = read(self.scope.file(version_1, version_2))
        return machines.fields(text)[key] if key else int(text)


def swap_space(column):
    return sum(int(line.split()[column]) for line in read("/proc/swaps").splitlines()[1:])


def swap_cached():
    return machines.fields(read("/proc/meminfo"))["SwapCached"]


def table_of(web, mail):
    """For each figure: guest, report, column, and what kestrel, virsh, the monitor and the kernel say, and where."""
    scope = mail.scope.name
    return [
        ("web", "vm-stats", "memSize", web.virsh_size,
         lambda: web.qmp("query-memory-size-summary")["base-memory"] // 1024, lambda: web.memory("Size"), "smaps: Size"),
        ("web", "vm-stats", "ballooned", lambda: web.virsh_size() - web.virsh("actual"),
         lambda: MEMORY - web.qmp("query-balloon")["actual"] // 1024, None, ""),
        ("web", "vm-stats", "mapped", None, None, lambda: web.memory("Rss"), "smaps: Rss of the guest's memory"),
        ("web", "group-stats", "consumed", lambda: web.virsh("rss"), None, lambda: web.smaps("Rss"), "smaps_rollup: Rss"),
        ("web", "guest-stats", "memTotal", lambda: web.virsh("available"), lambda: web.driver("total-memory"), None, ""),
        ("web", "guest-stats", "memNeeded", lambda: web.virsh("available") - web.virsh("usable"),
         lambda: web.driver("total-memory") - web.driver("available-memory"), None, ""),
        ("web", "swap-stats", "swapped", None, None, lambda: web.smaps("Swap"), "smaps_rollup: Swap"),
        ("mail", "vm-stats", "memSize", mail.virsh_size,
         lambda: mail.qmp("query-memory-size-summary")["base-memory"] // 1024, lambda: mail.memory("Size"), "smaps: Size"),
        ("mail", "vm-stats", "ballooned", lambda: mail.virsh_size() - mail.virsh("actual"),
         lambda: MEMORY - mail.qmp("query-balloon")["actual"] // 1024, None, ""),
        ("mail", "vm-stats", "max", None, None,
         lambda: mail.group("memory.limit_in_bytes", "memory.max") // 1024, "the limit of the scope"),
        ("mail", "vm-stats", "allocTgt", None, None,
         lambda: mail.group("memory.limit_in_bytes", "memory.max") // 1024, "the limit of the scope"),
        (scope, "group-stats", "consumed", None, None,
         lambda: mail.group("memory.usage_in_bytes", "memory.current") // 1024, "the memory of the scope"),
        (scope, "group-stats", "consumedPeak", None, None,
         lambda: mail.group("memory.max_usage_in_bytes", "memory.peak") // 1024, "the peak of the scope"),
        ("mail", "group-stats", "consumed", lambda: mail.virsh("rss"), None, lambda: mail.smaps("Rss"),
         "smaps_rollup: Rss"),
        ("mail", "vm-stats", "mapped", None, None, lambda: mail.memory("Rss"),
         "smaps: Rss of the guest's memory; kestrel has an upper bound"),
        ("mail", "swap-stats", "swapped", None, None, lambda: mail.smaps("Swap") - swap_cached(),
         "smaps_rollup: Swap, less the host's SwapCached"),
        ("mail", "uw-stats", "swapped", None, None, lambda: mail.status("VmSwap"), "status: VmSwap"),
        ("mail", "swap-stats", "hvcSwapOn", None, None,
         lambda: mail.group("memory.failcnt", "memory.events", None if mail.scope.is_version_1 else "max"),
         "how often the scope reached its limit"),
        ("mail", "swap-stats", "totalReg", None, None, lambda: swap_space(2), "/proc/swaps: Size"),
        ("mail", "swap-stats", "freeReg", None, None, lambda: swap_space(2) - swap_space(3), "/proc/swaps: Size - Used"),
        ("mail", "swap-stats", "gblSwapOut", None, None, lambda: 4 * machines.fields(read("/proc/vmstat"))["pswpout"],
         "/proc/vmstat: pswpout"),
    ]


def print_table(web, mail):
    rows = [("guest", "report", "column", "kestrel", "virsh", "monitor", "kernel", "which file")]
    for name, report, column, virsh, monitor, kernel, file in table_of(web, mail):
        guest = web if name == "web" else mail
        said = [str(ask()) if ask else "-" for ask in (lambda: guest.kestrel(report, column, name), virsh, monitor, kernel)]
        rows.append(("mail's scope" if name == mail.scope.name else name, report, column, *said, file))
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    for row in rows:
        cells = [cell.rjust(width) if 3 <= i <= 6 else cell.ljust(width) for i, (cell, width) in enumerate(zip(row, widths))]
        print("  ".join(cells).rstrip())


def main():
    shutil.rmtree(FOLDER, ignore_errors=True)
    os.makedirs(FOLDER)
    undo = []
    try:
        swap = SwapFile(f"{FOLDER}/swap")
        undo.append(swap.remove)
        host = libvirt_host.Host(FOLDER, KERNEL)
        undo.append(host.stop)
        host.start("web", period=1, backing=MEMFD)
        host.start("mail", paused=True)
        mail = Guest(host, "mail", Scope(host.pid("mail"), "mail"))
        undo.insert(1, mail.scope.remove)
        host.virsh("resume", "mail")
        web = Guest(host, "web")
        for name in ("web", "mail"):
            libvirt_host.until(lambda: host.is_up(name), 120, f"{name} is up")
            libvirt_host.until(lambda: host.statistics(name).get("usable"), 30, f"{name} tells its statistics")
        host.virsh("setmem", "web", f"{BALLOONED}K", "--live")
        libvirt_host.until(lambda: web.virsh("actual") == BALLOONED, 30, "the balloon is filled")
        mail.scope.limit(LIMIT)
        time.sleep(3)  # the guests tell their figures again
        os.mkdir("/run/kestrel", 0o755)
        machines.run(NODAL, "guests", "-o", "/run/kestrel/guests.nodal")
        print_table(web, mail)
    finally:
        for step in reversed(undo):
            step()


if __name__ == "__main__":
    if IN_NAMESPACES in os.environ:
        main()
    else:
        os.environ[IN_NAMESPACES] = "yes"
        os.execvp("unshare", ["unshare", "--mount", "--net", "--propagation", "private", sys.executable, "-B", *sys.argv])
