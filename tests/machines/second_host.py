"""Starts the second host: an emulated machine with Debian's kernel (kernel.py), two NUMA nodes and persistent memory.
Its first program, second_host.sh, sets up huge pages, swap, page sharing and nested control groups with limits.
"""

import glob
import lzma
import os
import re
import shutil
import struct
import subprocess
import tarfile

import machines

HERE = os.path.dirname(os.path.abspath(__file__))
MOST_SECONDS = 300
HELPER = "swtpm"  # a process beside a machine, as libvirt starts it
LABEL_AREA = 128 << 10  # bytes that QEMU reserves at the end of the memory file

# The kernel modules of the second host, in addition to the modules that they depend on.
MODULES = "virtio_pci virtio_blk zram zsmalloc lzo_rle nfit nd_pmem".split()

# A processor of family 6, model 85; two nodes; a module of persistent memory; a disk for the results.
MACHINE = """-accel tcg -cpu qemu64,vendor=GenuineIntel,family=6,model=85,stepping=7 -smp 2
-machine pc,nvdimm=on -m 640M,slots=1,maxmem=1G
-object memory-backend-ram,id=m0,size=384M -numa node,nodeid=0,cpus=0,memdev=m0
-object memory-backend-ram,id=m1,size=256M -numa node,nodeid=1,cpus=1,memdev=m1
-object memory-backend-file,id=pmem,mem-path=pmem,size=96M,share=on
-device nvdimm,memdev=pmem,label-size=128K,node=1
-drive if=virtio,format=raw,file=disk
-drive if=virtio,format=raw,file=large-disk
-serial stdio -no-reboot""".split()


class Modules:
    """The modules of a kernel in load order."""

    def __init__(self, kernel):
        self.taken = {}
        self._paths = {}
        for path in glob.glob(f"{glob.escape(kernel)}/**/*.ko*", recursive=True):
            name = re.sub(r"\.ko.*", "", os.path.basename(path))
            self._paths[name.replace("-", "_")] = path

    def take(self, name):
        name = name.replace("-", "_")
        if name in self.taken or name not in self._paths:
            return  # a name without a module is built into the kernel
        with open(self._paths[name], "rb") as file:
            content = file.read()
        if self._paths[name].endswith(".xz"):
            content = lzma.decompress(content)
        for needed in re.search(rb"\0depends=([^\0]*)", content)[1].decode().split(","):
            self.take(needed)
        self.taken[name] = content


def libraries_of(*programs):
    """The paths of the shared libraries of programs, including the loader."""
    listed = subprocess.run(["ldd", *programs], check=True, stdout=subprocess.PIPE, text=True).stdout
    return set(re.findall(r"^\t(?:\S+ => )?(/.*) \(0x", listed, re.M))


def write(path, content, mode=0o755):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(content)
    os.chmod(path, mode)


def copy(source, path):
    with open(source, "rb") as file:
        write(path, file.read())


def copy_program(source, path):
    """Strips debug information, which would slow down the start of the emulated machine."""
    subprocess.run(["strip", "-o", path, source], check=True)


def copy_qemu(folder):
    """Copies QEMU, and the module for emulation if it is built with modules."""
    qemu = shutil.which(machines.QEMU)
    copy(qemu, f"{folder}/{machines.QEMU}")
    for module in glob.glob("/usr/lib/*/qemu/accel-tcg-x86_64.so"):
        copy(module, f"{folder}/{os.path.basename(module)}")


def make_root(folder, programs, kernel, reports):
    """Creates the host's root folder with busybox, the programs, QEMU, their libraries, and the modules."""
    for name in "dev proc sys tmp".split():
        os.makedirs(f"{folder}/{name}")
    copy(shutil.which("busybox"), f"{folder}/bin/busybox")
    os.symlink("busybox", f"{folder}/bin/sh")
    copy(f"{HERE}/second_host.sh", f"{folder}/init")
    for program in programs:
        copy_program(program, f"{folder}/bin/{os.path.basename(program)}")
    # These are copies, because /proc/PID/exe would name the target of a link.
    for name in machines.QEMU, HELPER:
        copy(f"{folder}/bin/memory_load", f"{folder}/bin/{name}")
    copy_qemu(f"{folder}/qemu")
    for library in libraries_of(*programs, shutil.which(machines.QEMU)):
        copy(library, folder + library if "/ld-" in library else f"{folder}/lib/{os.path.basename(library)}")
    modules = Modules(kernel)
    for name in MODULES:
        modules.take(name)
    for name, content in modules.taken.items():
        write(f"{folder}/lib/modules/{name}.ko", content)
    in_order = "".join(f"/lib/modules/{name}.ko\n" for name in modules.taken)
    write(f"{folder}/lib/modules/in-order", in_order.encode())
    write(f"{folder}/etc/reports", "\n".join(reports).encode())
    write(f"{folder}/etc/passwd", b"root::0:0::/:/bin/sh\nnobody::65534:65534::/:/bin/sh\n")


def pack(root, archive):
    names = sorted(os.path.relpath(path, root) for path in glob.glob(f"{glob.escape(root)}/**", recursive=True))
    with open(archive, "wb") as file:
        subprocess.run(["busybox", "cpio", "-o", "-H", "newc"], cwd=root, input="\n".join(names).encode(), stdout=file,
                       stderr=subprocess.DEVNULL, check=True)


def checksum(block):
    low, high = 0, 0
    for (word,) in struct.iter_unpack("<I", block):
        low = (low + word) & 0xFFFFFFFF
        high += low
    return (high & 0xFFFFFFFF) << 32 | low


def empty_labels():
    """The two index blocks of a label area of persistent memory. Without labels, a module has only one namespace."""
    index, count = 256, LABEL_AREA // 256 - 2
    indexes = b""
    for i in range(2):
        head = struct.Struct("<16s3xBIQQQQIHHQ")
        fields = [b"NAMESPACE_INDEX", 1, 3 - i, i * index, index, (1 - i) * index, 2 * index, count, 1, 2]
        free = ((1 << count) - 1).to_bytes(index - head.size, "little")
        indexes += head.pack(*fields, checksum(head.pack(*fields, 0) + free)) + free
    return indexes


def make_disk(path, size, labels=b""):
    with open(path, "wb") as file:
        file.truncate(size)
        file.seek(size - LABEL_AREA)
        file.write(labels)


def boot(folder, kernel, words):
    """Runs the host until it powers off, with these words on the kernel's command line. Returns its console output."""
    make_disk(f"{folder}/pmem", 96 << 20, empty_labels())
    make_disk(f"{folder}/disk", 64 << 20)
    make_disk(f"{folder}/large-disk", 800 << 20)
    host = machines.start_qemu(
        [*MACHINE, "-kernel", f"{kernel}/vmlinuz", "-initrd", f"{folder}/root.cpio",
         "-append", f"console=ttyS0 quiet mitigations=off panic=-1 {words}"],
        cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    try:
        return host.communicate(timeout=MOST_SECONDS)[0].decode(errors="replace")
    except subprocess.TimeoutExpired:
        host.kill()
        return host.communicate()[0].decode(errors="replace") + f"\nStill on after {MOST_SECONDS} seconds."


def prepare(folder, programs, kernel, reports):
    make_root(f"{folder}/root", programs, os.path.abspath(kernel), reports)
    pack(f"{folder}/root", f"{folder}/root.cpio")


def run(folder, kernel, out, words=""):
    """Runs the prepared host and unpacks its results into FOLDER/OUT. Returns its console output."""
    console = boot(folder, os.path.abspath(kernel), words)
    try:
        with tarfile.open(f"{folder}/disk") as archive:
            archive.extractall(f"{folder}/{out}")
    except tarfile.ReadError as error:
        raise RuntimeError(f"The host handed nothing over. Its console:\n{console}") from error
    return console
