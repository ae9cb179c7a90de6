"""Compares every report on an emulated host (second_host.py) with the files of that host.

    second_host_test.py KERNEL FOLDER KESTREL NODAL MEMORY_LOAD

KERNEL is the folder of kernel.py. FOLDER is recreated and keeps the input and the results of the host.
"""

import os
import re
import shutil
import sys
import unittest

import machines
import second_host

KERNEL, FOLDER, *PROGRAMS = sys.argv[1:]
KESTREL = PROGRAMS[0]
MB = 1024  # in KB, the unit of the reports

REPORTS = """group-stats vm-stats uw-stats buddy-stats pshare-stats pshareHint-stats swap-stats comp-stats lpool-stats
heap-stats guest-stats zip-stats lpage-stats asyncremap-stats pmem-regionstore-stats pmem-region-stats pmem-extent-stats
pmem-region-numa-stats dcpmm-stats""".split()

# While nothing happens on the host, the output of these reports does not change.
STEADY_REPORTS = """pshare-stats lpool-stats pmem-regionstore-stats pmem-region-stats pmem-extent-stats
pmem-region-numa-stats""".split()

# In the output of these reports, only the groups of sleeping processes do not change.
GROUP_REPORTS = """group-stats vm-stats uw-stats swap-stats guest-stats zip-stats lpage-stats
asyncremap-stats""".split()

# The namespaces of persistent memory that the host creates, and their sizes.
REGIONS = {"00000000-0000-4000-8000-000000000001": 32 * MB, "00000000-0000-4000-8000-000000000002": 16 * MB}

# The namespaces that are swap space.
SWAP_REGIONS = {"00000000-0000-4000-8000-000000000002"}


def setUpModule():
    if not os.path.exists(f"{KERNEL}/vmlinuz"):
        raise unittest.SkipTest("there is no kernel to start")
    shutil.rmtree(FOLDER, ignore_errors=True)
    second_host.prepare(FOLDER, PROGRAMS, KERNEL, REPORTS)
    Host.console = second_host.run(FOLDER, KERNEL, "out")
    Version1.console = second_host.run(FOLDER, KERNEL, "v1", "hierarchy=v1")


class Host:
    """The results of the host."""

    console = ""
    folder = f"{FOLDER}/out"

    @classmethod
    def read(cls, name):
        with open(f"{cls.folder}/{name}", encoding="utf-8") as file:
            return file.read()

    @classmethod
    def file(cls, path):
        return cls.read(f"files/{path}")

    @classmethod
    def has(cls, path):
        return os.path.exists(f"{cls.folder}/files/{path}")

    @classmethod
    def amount(cls, path):
        """The amount in a file in KB; the file contains bytes."""
        return int(cls.file(path)) // 1024

    @classmethod
    def around(cls, report, path):
        """The lines of a file right before and right after a report."""
        texts = [cls.read(f"live/{report}.{moment}") for moment in ("before", "after")]
        return ["\n".join(re.findall(rf"^/{re.escape(path)}:(.*)", text, re.M)) for text in texts]

    @classmethod
    def amounts_around(cls, report, path):
        return [int(text) // 1024 for text in cls.around(report, path)]

    @classmethod
    def report(cls, name, by=None):
        """The rows of a live report; with `by`, its only row that has this value in this column."""
        rows = machines.rows(cls.read(f"live/{name}"))
        if by is None:
            return rows
        [column, value] = by
        found = [row for row in rows if row[column] == str(value)]
        assert len(found) == 1, f"{name}: rows with {column} {value}: {rows}"
        return found[0]

    @classmethod
    def has_capture(cls):
        return os.path.exists(f"{cls.folder}/capture.status")

    @classmethod
    def load(cls, program, guest="second-guest"):
        """The PID and the /proc status of a program's process; for QEMU, of the machine with this name."""
        for pid in os.listdir(f"{cls.folder}/files/proc"):
            words = cls.file(f"proc/{pid}/cmdline").split("\0") if pid.isdigit() else [""]
            if words[0] == program and (program != machines.QEMU or words[2].split(",")[0] == f"guest={guest}"):
                return pid, machines.fields(cls.file(f"proc/{pid}/status"))
        raise AssertionError(f"there is no {program}\n{cls.console}")


class Version1(Host):
    """The results of the host with the memory controller on version 1 of control groups."""

    folder = f"{FOLDER}/v1"


class OnMachine:
    """A report that was run on a machine, and the host's files around the report."""

    def __init__(self, host, folder, report, guest):
        self.guest = guest
        self.rows = machines.rows(host.read(f"{folder}/{report}"))
        self.messages = host.read(f"{folder}/{report}.err")
        self.texts = [host.read(f"{folder}/{report}.{moment}") for moment in ("before", "after")]

    def row(self, name=None):
        [row] = [row for row in self.rows if row["name"] == (name or self.guest)]
        return row

    def scope(self):
        return [row for row in self.rows if row["name"].endswith(f"{self.guest}.scope")][0]

    def lines(self, file):
        """The lines of a file before and after the report. `file` is the end of its path."""
        return ["\n".join(re.findall(rf"^\S*/{re.escape(file)}:(.*)", text, re.M)) for text in self.texts]

    def figures(self, file, key):
        return [machines.fields(text)[key] for text in self.lines(file)]

    def figures_if_any(self, file, key):
        return [fields[key] for fields in map(machines.fields, self.lines(file)) if key in fields]

    def numbers(self, file):
        return [int(text) for text in self.lines(file)]

    def amounts(self, file):
        """The amounts of a file in KB; the file contains bytes."""
        return [number // 1024 for number in self.numbers(file)]

    def pressures(self, file, kind):
        """The pressure of the last ten seconds in percent, rounded down."""
        return [int(re.search(rf"^{kind} avg10=(\d+)", text, re.M)[1]) for text in self.lines(file)]

    def zram(self):
        """The memory usage of zram in KB."""
        return [int(text.split()[2]) // 1024 for text in self.lines("zram0/mm_stat")]


def status_of(text, pid):
    """The figures of a process' status among the lines of other files."""
    return machines.fields("\n".join(re.findall(rf"^/proc/{pid}/status:(.*)", text, re.M)))


def free_on(node, buddyinfo):
    """The free memory of a node: the sum of free blocks over its zones; block sizes are 4 KB times powers of two."""
    zones = re.findall(rf"Node {node}, zone +\S+ +(.*)", buddyinfo)
    return sum(int(count) * 4 << order for zone in zones for order, count in enumerate(zone.split()))


class SecondHost(machines.TestCase):
    def assertCells(self, row, **expected):
        self.assertEqual({name: row[name] for name in expected}, {n: str(value) for n, value in expected.items()})


class EveryReport(SecondHost):
    def test_the_host_is_as_it_shall_be(self):
        self.assertNotRegex(Host.console, "not ready|Still on|panic|rror")

    def test_runs_without_a_message(self):
        for report in REPORTS:
            with self.subTest(report):
                self.assertEqual((Host.read(f"live/{report}.err"), Host.read(f"live/{report}.status")), ("", "0\n"))

    def test_runs_for_an_ordinary_user(self):
        # Only root may read the kernel's caches.
        explained = {"heap-stats": "KestrelHeapGetMemMapStats: NODAL_GetInstanceListAlloc() for heapList failure\n"}
        for report in REPORTS:
            with self.subTest(report):
                said = Host.read(f"user/{report}.err"), Host.read(f"user/{report}.status")
                self.assertEqual(said, (explained.get(report, ""), "0\n"))

    def test_dcpmm_stats_takes_the_host_and_finds_no_counters(self):
        for folder in "live", "user":
            said = [Host.read(f"{folder}/dcpmm-stats{part}") for part in (".status", "", ".err")]
            self.assertEqual(said, ["0\n", "Socket,IMC,Channel,Event,Counts\n", ""])


class Groups(SecondHost):
    def test_control_groups_have_their_limits(self):
        for name in "outer", "inner", "machine.scope":
            with self.subTest(name):
                row = Host.report("group-stats", ("name", name))
                files = "sys/fs/cgroup/outer" + ("" if name == "outer" else f"/{name}")
                limit = Host.amount(f"{files}/memory.max")
                self.assertCells(row, max=limit, bMax=limit, min=Host.amount(f"{files}/memory.min"))
                used = Host.amounts_around("group-stats", f"{files}/memory.current")
                self.assertBetween(row["consumed"], used, 512, "consumed")
                swapped = Host.amounts_around("group-stats", f"{files}/memory.swap.current")
                self.assertGreaterEqual(min(swapped), 6 * MB)
                sizes = [int(row["consumed"]) + amount for amount in swapped]
                self.assertBetween(row["memSize"], sizes, 512, "memSize")

    def test_what_a_group_is_charged_for(self):
        for name in "inner", "machine.scope":
            row = Host.report("group-stats", ("name", name))
            charged = machines.fields(Host.file(f"sys/fs/cgroup/outer/{name}/memory.stat"))
            parts = sum(charged[key] for key in ("kernel_stack", "pagetables", "percpu", "slab", "sock"))
            self.assertGreater(parts, 0)
            self.assertNear(row["ovhd"], parts // 1024, 256, "ovhd, by its parts")
            self.assertCells(row, sharedSaved=2**64 - 1)

    def test_reservations_of_nested_groups(self):
        outer = Host.report("group-stats", ("name", "outer"))
        self.assertCells(outer, min=48 * MB, conResv=40 * MB, availResv=8 * MB, iMin=64 * MB, bMin=48 * MB)
        self.assertCells(Host.report("group-stats", ("gid", 0)), conResv=48 * MB)
        inner = Host.report("group-stats", ("name", "inner"))
        self.assertCells(inner, parGid=outer["gid"], allocTgt=80 * MB)

    def test_processes_are_in_their_groups(self):
        for group, program in ("inner", "memory_load"), ("machine.scope", machines.QEMU):
            row = Host.report("group-stats", ("gid", Host.load(program)[0]))
            self.assertCells(row, parGid=Host.report("group-stats", ("name", group))["gid"])


class Clients(SecondHost):
    def test_machine(self):
        pid, status = Host.load(machines.QEMU)
        swapped = status["VmSwap"]
        self.assertGreaterEqual(swapped, 6 * MB)
        row = Host.report("vm-stats", ("schedGrp", pid))
        self.assertCells(row, name="second-guest", memSize=20 * MB, min=24 * MB, max=80 * MB, swapped=swapped)
        self.assertCells(row, memSizeLimit=20 * MB)
        self.assertNear(row["sharedSaved"], 8 * MB, MB, "sharedSaved")
        swap = Host.report("swap-stats", ("schedGrp", pid))
        self.assertCells(swap, name="second-guest", swapped=swapped, isSwapping="n")
        group = Host.report("group-stats", ("gid", pid))
        self.assertCells(group, throttlePct=100, bMin=24 * MB, eMin=24 * MB)
        self.assertCells(Host.report("group-stats", ("parGid", pid)), min=24 * MB, max=80 * MB, bMin=0, bMax=80 * MB)
        self.assertCells(Host.report("uw-stats", ("schedGrp", pid)), min=24 * MB)
        merging = 4 * int(Host.file(f"proc/{pid}/ksm_merging_pages"))
        self.assertGreater(merging, 7 * MB)
        self.assertCells(row, shared=merging)

    def test_memory_in_zram(self):
        pid, status = Host.load(machines.QEMU)
        row = Host.report("swap-stats", ("schedGrp", pid))
        self.assertCells(row, llswapped=status["VmSwap"], totalReg=16 * MB - 4, freeReg=16 * MB - 4)
        [zram] = re.findall(r"^/dev/zram0\s+partition\s+\d+\s+(\d+)", Host.file("proc/swaps"), re.M)
        memory = [int(text.split()[2]) // 1024 for text in Host.around("swap-stats", "sys/block/zram0/mm_stat")]
        shares = [amount * status["VmSwap"] // int(zram) for amount in memory]
        self.assertGreater(min(shares), 0)
        self.assertBetween(row["llswapUsed"], shares, 256, "llswapUsed")

    def test_swap_traffic(self):
        pid, _ = Host.load(machines.QEMU)
        row = Host.report("swap-stats", ("schedGrp", pid))
        pages = [machines.fields(text)["pswpout"] for text in Host.around("swap-stats", "proc/vmstat")]
        self.assertGreaterEqual(min(pages) * 4, 12 * MB, "both loads have swapped 6 MB")
        self.assertBetween(row["gblSwapOut"], [4 * count for count in pages], 0, "gblSwapOut")
        pages = [machines.fields(text)["pswpin"] for text in Host.around("swap-stats", "proc/vmstat")]
        self.assertBetween(row["gblSwapIn"], [4 * count for count in pages], 0, "gblSwapIn")
        cached = [machines.fields(text)["SwapCached"] for text in Host.around("swap-stats", "proc/meminfo")]
        self.assertBetween(row["gblSwapRead"], cached, 0, "gblSwapRead")
        counted = re.findall(r"^pswpout (.*)", Host.file("sys/fs/cgroup/outer/machine.scope/memory.stat"), re.M)
        self.assertCells(row, swapOut=4 * int(counted[0]) if counted else 2**64 - 1)

    def test_a_helper_is_overhead(self):
        """The limit is on the scope, two groups above the process, as libvirt sets it."""
        pid, status = Host.load(machines.QEMU, "helped")
        _, helper = Host.load(second_host.HELPER)
        row = Host.report("vm-stats", ("schedGrp", pid))
        self.assertCells(row, name="helped", memSize=16 * MB, max=64 * MB, allocTgt=16 * MB)
        # The kernel counts the pages of a process with a delay.
        self.assertNear(row["mapped"], status["RssAnon"], 512, "mapped")
        [scope] = [row for row in Host.report("group-stats") if row["name"].endswith("helped.scope")]
        self.assertNear(row["ovhd"], int(scope["consumed"]) - 16 * MB, MB, "ovhd is what else the scope is charged for")
        self.assertGreaterEqual(int(row["ovhd"]), 12 * MB)
        self.assertLess(int(row["ovhd"]), helper["RssAnon"] + 8 * MB)

    def test_large_pages_of_the_machine(self):
        pid, status = Host.load(machines.QEMU)
        [transparent] = re.findall(r"^anon_thp (.*)", Host.file("sys/fs/cgroup/outer/machine.scope/memory.stat"), re.M)
        self.assertGreater(int(transparent), 0)
        backings = status["HugetlbPages"] // (2 * MB) + int(transparent) // (2 * MB * 1024)
        row = Host.report("lpage-stats", ("schedGrp", pid))
        self.assertCells(row, name="second-guest", nrBackings=backings)
        threshold = int(Host.file("sys/kernel/mm/transparent_hugepage/khugepaged/max_ptes_swap"))
        self.assertGreater(threshold, 0)
        self.assertCells(row, maxSwapThreshold=threshold)

    def test_user_world(self):
        pid, status = Host.load("memory_load")
        huge = status["HugetlbPages"]
        self.assertEqual((status["VmLck"], status["VmPin"], huge), (4 * MB, MB, 4 * MB))
        row = Host.report("uw-stats", ("schedGrp", pid))
        self.assertCells(row, type="uw", name="memory_load", memSize=status["VmData"] + status["VmStk"], swapped=status["VmSwap"])
        self.assertCells(row, mapped=status["VmRSS"] + huge, shm=status["RssShmem"], prealloced=huge)
        pinned = status["VmLck"] + status["VmPin"]
        self.assertCells(row, pinned=pinned + huge, pinnedResv=pinned + huge)
        self.assertCells(row, totalResv=pinned + huge, allocTgt=row["memSize"])
        self.assertNear(row["cow"], 8 * MB, MB, "cow")
        consumed = status["VmRSS"] + huge
        self.assertCells(row, memBStore=consumed, swapBStore=status["VmSwap"], consumed=consumed - int(row["cow"]))
        swappable = status["RssAnon"] - pinned
        self.assertCells(row, swappable=swappable, pageable=swappable + status["RssShmem"], pageableUnacct=status["RssFile"])
        group = Host.report("group-stats", ("gid", pid))
        # VmHWM excludes its huge pages.
        self.assertCells(group, consumed=consumed, ovhd=status["VmPTE"], consumedPeak=2**64 - 1)


class HugePages(SecondHost):
    """Two stopped QEMU machines in huge pages: `huge` has 16 MB of memory with 10 MB of data, and a group of its own;
    `huge-file` has 8 MB, which it filled at the start."""

    USED = {"huge": 10 * MB, "huge-file": 8 * MB}
    SIZES = {"huge": 16 * MB, "huge-file": 8 * MB}

    def on(self, report, guest):
        result = OnMachine(Host, "huge", report, guest)
        self.assertEqual(result.messages, "")
        return result

    def for_each_machine(self, report, check):
        for guest in self.USED:
            with self.subTest(guest):
                result = self.on(report, guest)
                row = result.row()
                pid = row.get("schedGrp", row.get("gid"))
                check(guest, row, *self.mappings(result.texts[0], pid), status_of(result.texts[0], pid))

    def mappings(self, text, pid):
        """The KB of small pages and of huge pages of a process, summed over the mappings in smaps."""
        def total(key):
            return sum(map(int, re.findall(rf"^/proc/{pid}/smaps:{key}: +(\d+)", text, re.M)))

        return total("Rss"), total("Shared_Hugetlb") + total("Private_Hugetlb")

    def test_memory_of_the_machines(self):
        def check(guest, row, small, huge, status):
            self.assertEqual(huge, self.USED[guest], "in smaps")
            monitor = re.search(r"base memory: (\d+)", Host.read(f"huge/{guest}.monitor"))
            self.assertEqual(int(monitor[1]), self.SIZES[guest] * 1024)
            self.assertCells(row, memSize=self.SIZES[guest], mapped=huge, consumed=huge, swapped=0, zipped=0)
            self.assertNear(row["ovhd"], small + status["VmPTE"], 512, "ovhd")

        self.for_each_machine("vm-stats", check)

    def test_groups_of_the_machines(self):
        def check(guest, row, small, huge, _):
            self.assertNear(row["consumed"], small + huge, 512, "consumed")
            self.assertCells(row, memSize=self.SIZES[guest])

        self.for_each_machine("group-stats", check)
        result = self.on("group-stats", "huge")
        self.assertEqual(set(result.amounts("hugetlb.2MB.current")), {self.USED["huge"]})
        self.assertBetween(result.scope()["consumed"], result.amounts("memory.current"), 128, "without them")

    def test_user_worlds(self):
        def check(_, row, small, huge, status):
            self.assertNear(row["mapped"], small + huge, 512, "mapped")
            self.assertNear(row["memBStore"], small + huge, 512, "memBStore")
            pinned = status["VmLck"] + status["VmPin"] + huge
            self.assertCells(row, prealloced=huge, pinned=pinned, pinnedResv=pinned, totalResv=pinned)
            self.assertCells(row, shm=status["RssShmem"])

        self.for_each_machine("uw-stats", check)

    def test_large_pages(self):
        def check(_, row, small, huge, status):
            self.assertCells(row, nrBackings=huge // (2 * MB))

        self.for_each_machine("lpage-stats", check)

    def test_pools(self):
        """The kernel promises pages to a mapping that has not used them yet. It counts them for the host only."""
        result = self.on("lpool-stats", "huge")
        promised = set(result.numbers("mm/hugepages/hugepages-2048kB/resv_hugepages"))
        self.assertEqual(promised, {(self.SIZES["huge"] - self.USED["huge"]) // (2 * MB)})
        used = 0
        for node in 0, 1:
            [row] = [row for row in result.rows if row["nodeID"] == str(node) and row["name"] == "hugepages-2MB"]
            pages, free = (result.numbers(f"node{node}/hugepages/hugepages-2048kB/{file}_hugepages")[0]
                           for file in ("nr", "free"))
            self.assertCells(row, nrLPages=pages, nrFreeSPages=512 * max(free - min(promised), 0))
            used += pages - free
        loads = sum(Host.load(program)[1]["HugetlbPages"] for program in ("memory_load", machines.QEMU))
        self.assertEqual(used * 2 * MB, loads + sum(self.USED.values()))


class CompressedMachine(SecondHost):
    """A machine with 32 MB of data, which may have 24 MB of memory, 2 MB of compressed memory and 12 MB of swap space."""

    def on(self, report, folder="zipped"):
        result = OnMachine(Host, folder, report, "zipped")
        self.assertEqual(result.messages, "")
        return result

    def assertIs(self, row, column, readings, tolerance=0):
        self.assertBetween(row[column], readings, tolerance, column)

    def swapped(self, result):
        """The KB in zswap and in swap space, from smaps. VmSwap of status lags behind."""
        return [sum(map(int, re.findall(r"^Swap: +(\d+)", text, re.M))) for text in result.lines("smaps")]

    def test_compressed_memory(self):
        result = self.on("vm-stats")
        # No other memory is compressed, so the host's figures are the machine's.
        zipped = result.figures("meminfo", "Zswapped")
        self.assertGreater(min(zipped), 3 * MB)
        self.assertEqual([4 * pages for pages in result.numbers("zswap/stored_pages")], zipped)
        self.assertIs(result.row(), "zipped", zipped)
        compressed = result.amounts("memory.zswap.current")
        self.assertNear(compressed[0], 2 * MB, 16, "its limit")
        self.assertLessEqual(compressed[0], result.figures("meminfo", "Zswap")[0], "the pools")
        self.assertIs(result.row(), "zipSaved", [zipped[0] - compressed[0]], 1)
        resident = result.figures("status", "RssAnon")
        # RssShmem: the program is in a file system in memory.
        shared = result.figures("status", "RssShmem")[0]
        self.assertIs(result.row(), "mapped", [*resident, resident[0] + shared], 64)
        self.assertIs(result.row(), "consumed", [compressed[0] + resident[0] + more for more in (0, shared)], 64)
        self.assertLess(int(result.row()["ovhd"]), 4 * MB, "without compressed memory")

    def test_the_rest_is_on_the_disk(self):
        result = self.on("swap-stats")
        swapped = [all - zipped for all, zipped in zip(self.swapped(result), result.figures("meminfo", "Zswapped"))]
        self.assertGreater(min(swapped), MB)
        self.assertIs(result.row(), "swapped", swapped, 512)
        current = result.amounts("memory.swap.current")
        self.assertCells(result.row(), totalReg=12 * MB, freeReg=12 * MB - current[0], llswapped=0)
        self.assertIs(self.on("vm-stats").row(), "swapped", swapped, 512)
        self.assertIs(self.on("uw-stats").row(), "swapped", result.figures("status", "VmSwap"))

    def test_the_group_is_charged_for_compressed_memory(self):
        result = self.on("group-stats")
        current, swap = (result.amounts(f"memory.{file}current")[0] for file in ("", "swap."))
        self.assertIs(result.scope(), "consumed", [current], 128)
        self.assertIs(result.scope(), "memSize", [current + swap], 128)
        self.assertGreater(current, 22 * MB)

    def test_the_cache(self):
        result = self.on("zip-stats")
        row = result.row()
        self.assertCells(row, totalCache=2 * MB, maxCache=2 * MB, nrFreeHalf=0, nrFreeQuarter=0)
        self.assertIs(row, "usedCache", result.amounts("memory.zswap.current"))
        for column, key in ("zipped", "zswpout"), ("unZipped", "zswpin"):
            self.assertIs(row, column, [4 * pages for pages in result.figures("memory.stat", key)])
        self.assertGreaterEqual(int(row["zipped"]), result.figures("meminfo", "Zswapped")[0])
        counts = result.figures_if_any("memory.stat", "pswpout")
        self.assertIs(row, "zipRejected", [4 * pages for pages in counts] or [2**64 - 1])

    def test_a_machine_without_a_limit_may_use_the_hosts_cache(self):
        result = self.on("zip-stats")
        host = result.figures("meminfo", "MemTotal")[0] * 5 // 100
        row = result.row("helped")
        self.assertNear(row["totalCache"], host, 5, "max_pool_percent is 5")
        self.assertCells(row, usedCache=0, zipped=0, unZipped=0)

    def test_zswap_off(self):
        self.assertCells(Host.report("zip-stats", ("name", "helped")), totalCache=0, maxCache=0, usedCache=0, zipped=0)
        result = self.on("zip-stats", "zswap-off")
        self.assertCells(result.row(), totalCache=0, maxCache=0, zipRejected=0)
        compressed = result.amounts("memory.zswap.current")
        self.assertGreater(min(compressed), MB, "what is compressed stays so")
        self.assertIs(result.row(), "usedCache", compressed)
        result = self.on("vm-stats", "zswap-off")
        self.assertIs(result.row(), "zipped", result.figures("meminfo", "Zswapped"))

    def test_memory_that_is_in_place_again(self):
        result = self.on("vm-stats", "unzipped")
        self.assertEqual(set(result.figures("meminfo", "Zswapped") + self.swapped(result)), {0})
        self.assertCells(result.row(), zipped=0, zipSaved=0, swapped=0)
        self.assertGreaterEqual(min(result.figures("status", "RssAnon")), 32 * MB - 256, "it lags behind")
        self.assertCells(result.row(), mapped=32 * MB)
        self.assertCells(self.on("swap-stats", "unzipped").row(), swapped=0, totalReg=0, freeReg=0)
        result = self.on("zip-stats", "unzipped")
        self.assertCells(result.row(), totalCache=0, maxCache=0, usedCache=0)
        unzipped = [4 * pages for pages in result.figures("memory.stat", "zswpin")]
        self.assertGreaterEqual(min(unzipped), 2 * MB)
        self.assertIs(result.row(), "unZipped", unzipped)


class PressedMachine(SecondHost):
    """A machine that wants 40 MB and may have 24 MB. The limit is on its scope, two groups above its process."""

    def pressed(self, report, host=Host):
        result = OnMachine(host, "pressed", report, "pressed")
        self.assertEqual(result.messages, "")
        return result

    def test_a_machine_at_its_limit_waits(self):
        swap = self.pressed("swap-stats")
        self.assertGreaterEqual(min(swap.pressures("memory.pressure", "some")), 1)
        self.assertCells(swap.row(), isSwapping="y")
        self.assertBetween(swap.row()["hvcSwapOn"], swap.figures("memory.events", "max"), 0, "hvcSwapOn")
        self.assertGreater(int(swap.row()["hvcSwapOn"]), 0)
        group = self.pressed("group-stats")
        waited = group.pressures("memory.pressure", "full")
        self.assertGreater(max(waited), 0)
        self.assertBetween(group.row()["throttlePct"], [100 - share for share in waited], 1, "throttlePct")

    def test_swapped_within_its_limit(self):
        swap = self.pressed("swap-stats")
        swapped = swap.figures("status", "VmSwap")
        self.assertGreater(min(swapped), 12 * MB)
        for column in "swapped", "llswapped":
            self.assertBetween(swap.row()[column], swapped, 2 * MB, column)
        self.assertLessEqual(int(swap.row()["llswapUsed"]), max(swap.zram()))
        cached = [figure // 1024 for figure in swap.figures("memory.stat", "swapcached")]
        self.assertBetween(swap.row()["swapRead"], cached, 0, "swapRead")
        self.assertCells(self.pressed("vm-stats").row(), swapped=swap.row()["swapped"], max=24 * MB, allocTgt=24 * MB)
        self.assertCells(self.pressed("uw-stats").row(), max=24 * MB, allocTgt=24 * MB)

    def test_peaks(self):
        group = self.pressed("group-stats")
        scope = group.scope()
        self.assertBetween(scope["consumedPeak"], group.amounts("memory.peak"), 0, "consumedPeak")
        self.assertGreaterEqual(int(scope["consumedPeak"]), 23 * MB)
        self.assertGreaterEqual(int(scope["memSizePeak"]), int(scope["memSize"]))

    def test_version_1(self):
        self.assertNotRegex(Version1.console, "not ready|Still on|panic|rror")
        swap = self.pressed("swap-stats", host=Version1)
        swapped = swap.figures("status", "VmSwap")
        self.assertGreater(min(swapped), 12 * MB)
        self.assertBetween(swap.row()["swapped"], swapped, 2 * MB, "swapped")
        self.assertBetween(swap.row()["llswapped"], swapped, 2 * MB, "llswapped")
        hits = [int(text) for text in swap.lines("memory.failcnt")]
        self.assertGreater(min(hits), 0)
        self.assertBetween(swap.row()["hvcSwapOn"], hits, 0, "hvcSwapOn")
        self.assertCells(swap.row(), isSwapping="y")
        group = self.pressed("group-stats", host=Version1)
        scope = group.scope()
        self.assertCells(scope, max=24 * MB)
        self.assertBetween(scope["consumedPeak"], group.amounts("memory.max_usage_in_bytes"), 0, "consumedPeak")
        self.assertBetween(scope["consumed"], group.amounts("memory.usage_in_bytes"), 512, "consumed")
        self.assertBetween(scope["memSizePeak"], group.amounts("memory.memsw.max_usage_in_bytes"), 0, "memSizePeak")
        self.assertCells(self.pressed("vm-stats", host=Version1).row(), max=24 * MB, allocTgt=24 * MB)
        self.assertCells(self.pressed("uw-stats", host=Version1).row(), max=24 * MB)


class WholeHost(SecondHost):
    def test_page_sharing(self):
        shared, sharing = (int(Host.file(f"sys/kernel/mm/ksm/pages_{kind}")) for kind in ("shared", "sharing"))
        self.assertGreater(sharing, 4000)
        [row] = Host.report("pshare-stats")
        self.assertCells(row, used=4 * shared, reclaimed=4 * sharing, cow=4 * (shared + sharing))
        unshared = 4 * machines.fields(Host.file("proc/vmstat"))["cow_ksm"]
        self.assertCells(row, totRemove=unshared, totAdd=4 * (shared + sharing) + unshared)
        zeros = int(Host.file("sys/kernel/mm/ksm/ksm_zero_pages")) if Host.has("sys/kernel/mm/ksm/ksm_zero_pages") else 0
        self.assertCells(row, zero=4 * zeros)
        self.assertCells(Host.report("group-stats", ("gid", 0)), sharedSaved=4 * (sharing + zeros))

    def test_memory(self):
        [row] = Host.report("comp-stats")
        memory = [machines.fields(text) for text in Host.around("comp-stats", "proc/meminfo")]
        self.assertBetween(row["free"], [fields["MemFree"] for fields in memory], 8 * MB, "free")
        zones = re.split(r"^Node ", Host.file("proc/zoneinfo"), flags=re.M)[1:]
        amounts = [{key: int(value) for key, value in re.findall(r"^ +(?:pages )?(\w+) +(\d+)$", zone, re.M)}
                   for zone in zones]
        self.assertCells(row, total=4 * sum(zone["present"] for zone in amounts), discarded=memory[0].get("HardwareCorrupted", 0))
        self.assertCells(row, minFree=4 * sum(zone["min"] for zone in amounts if zone["managed"]))
        [code] = re.findall(r"^ *(\w+)-(\w+) : Kernel code$", Host.file("proc/iomem"), re.M)
        self.assertCells(row, kernelCode=(int(code[1], 16) - int(code[0], 16) + 1) // 1024)
        self.assertCells(row, memState="High")

    def test_a_shortage_is_what_makes_somebody_wait(self):
        def row(name):
            [found] = machines.rows(Host.read(f"shortage/{name}"))
            return {column: found[column] for column in ("memState", "numHigh", "numClear", "numSoft", "numHard", "numLow")}

        idle, read, filled = row("idle"), row("read"), row("filled")
        self.assertEqual(idle["memState"], "High")
        # If this machine is very busy, even short waits in the emulated machine become long.
        if max(map(float, re.findall(r"some avg10=(\S+)", Host.read("shortage/pressure")))) < 5:
            self.assertEqual(read, idle, "reading a disk is no shortage")
            if os.path.exists(f"{Host.folder}/shortage/read-generations"):
                self.assertEqual(row("read-generations"), idle, "nor is it if the kernel ages memory by generations")
        for column in "numHigh", "numClear", "numSoft", "numHard", "numLow":
            self.assertGreater(int(filled[column]), int(read[column]), column)

    def test_members_add_up_to_the_host(self):
        rows = Host.report("group-stats")
        [host] = [row for row in rows if row["gid"] == "0"]
        members = sum(int(row["consumed"]) for row in rows if row["parGid"] == "0")
        self.assertNear(host["consumed"], members, 2 * MB, "consumed")
        memory = [machines.fields(text) for text in Host.around("group-stats", "proc/meminfo")]
        self.assertCells(host, memSize=memory[0]["MemTotal"], memSizePeak=memory[0]["MemTotal"])
        used = [fields["MemTotal"] - fields["MemFree"] for fields in memory]
        self.assertBetween(host["consumed"], used, 2 * MB, "consumed")

    def test_a_machine_has_the_limit_above_it(self):
        pid, _ = Host.load(machines.QEMU)
        machine = Host.report("group-stats", ("gid", pid))
        limit = Host.amount("sys/fs/cgroup/outer/machine.scope/memory.max")
        self.assertCells(machine, max=limit, bMax=limit)
        self.assertCells(Host.report("vm-stats", ("schedGrp", pid)), max=limit)
        self.assertCells(Host.report("uw-stats", ("schedGrp", pid)), max=limit)

    def test_buddies_of_two_nodes(self):
        rows = [row for row in Host.report("buddy-stats") if row["name"] != "Total"]
        self.assertEqual({row["numaNode"] for row in rows}, {"0", "1"})
        sizes = {f"{4 << order}KB" if order < 8 else f"{1 << order - 8}MB": 4 << order for order in range(11)}
        for node in 0, 1:
            own = [row for row in rows if row["numaNode"] == str(node)]
            free = sum(int(row[f"{name}free"]) * size for row in own for name, size in sizes.items())
            readings = [free_on(node, text) for text in Host.around("buddy-stats", "proc/buddyinfo")]
            self.assertBetween(free, readings, 8 * MB, f"free on node {node}")

    def test_pools_of_two_nodes(self):
        rows = Host.report("lpool-stats")
        for node in 0, 1:
            pool = f"sys/devices/system/node/node{node}/hugepages/hugepages-2048kB"
            pages, free = int(Host.file(f"{pool}/nr_hugepages")), int(Host.file(f"{pool}/free_hugepages"))
            own = [row for row in rows if row["nodeID"] == str(node)]
            self.assertEqual(sum(int(row["nrLPages"]) for row in own), pages)
            self.assertEqual(sum(int(row["nrFreeSPages"]) for row in own), 512 * free)

    def test_heaps(self):
        caches = [line.split() for line in Host.file("proc/slabinfo").splitlines()[2:]]
        names = {row["name"] for row in Host.report("heap-stats")}
        self.assertIn("task_struct", {cache[0] for cache in caches})
        self.assertIn("task_struct", names)
        [cache] = [cache for cache in caches if cache[0] == "task_struct"]
        row = Host.report("heap-stats", ("name", "task_struct"))
        self.assertCells(row, avgAllocSize=cache[3], numReqsPerGrowth=cache[4])
        self.assertNear(row["numRanges"], int(cache[14]), 20, "num_slabs")
        active, objects, size, pages = (int(cache[i]) for i in (1, 2, 3, 5))
        slab, avail = pages << 12, (objects - active) * size
        self.assertNear(row["avail"], avail, 20 * slab, "avail, in bytes")
        self.assertNear(row["used"], int(cache[14]) * slab - avail, 20 * slab, "used")

    def test_persistent_memory(self):
        regions = {row["regionUuid"]: row for row in Host.report("pmem-region-stats")}
        [volume] = Host.report("pmem-regionstore-stats")
        for region, size in REGIONS.items():
            blocks = size // (2 * MB)
            self.assertCells(regions[region], uuid=volume["uuid"], size=size, allocated2MBlks=blocks)
            self.assertCells(regions[region], reserved2MBlks=blocks)
            self.assertCells(regions[region], numaAffinityMask="0x2", numOpened=int(region in SWAP_REGIONS))
            own = [row for row in Host.report("pmem-region-numa-stats") if row["regionUuid"] == region]
            self.assertEqual([(row["numaNode"], row["num2MAllocated"]) for row in own], [("1", str(blocks))])
        self.assertCells(volume, total2MBlocks=47, alloc2MBlocks=24, resvd2MBlocks=24, avail2MBlocks=16)
        [extent] = Host.report("pmem-extent-stats")
        [memory] = re.findall(r"^ *(\w+)-(\w+) : Persistent Memory$", Host.file("proc/iomem"), re.M)
        first, last = (int(address, 16) // 4096 for address in memory)
        self.assertCells(extent, numaNode=1, startBlk=0, endBlk=47, startMPN=first)
        self.assertNear(extent["endMPN"], last, 32, "the last address, before the labels")


class Capture(SecondHost):
    def setUp(self):
        if not Host.has_capture():
            self.skipTest("nodal cannot capture")

    def test_is_written(self):
        self.assertEqual(Host.read("capture.status"), "0\n")
        self.assertRegex(Host.read("capture.err"), r"\A\S+ \S+ [0-9]+ nodes, .*\n\Z", "it has read everything")

    def test_replay_elsewhere_shows_what_it_shows_there(self):
        for report in REPORTS:
            with self.subTest(report):
                status, output, messages = machines.run(KESTREL, "-c", f"{Host.folder}/host.nodal", "-r", report, "-q")
                there = [Host.read(f"replay/{report}{part}") for part in (".status", "", ".err")]
                self.assertEqual([f"{status}\n", output, messages], there)

    def test_replay_shows_what_the_host_showed(self):
        for report in STEADY_REPORTS:
            with self.subTest(report):
                self.assertEqual(Host.read(f"replay/{report}"), Host.read(f"live/{report}"))
        loads = {Host.load(program)[0] for program in ("memory_load", machines.QEMU)}
        for report in GROUP_REPORTS:
            with self.subTest(report):
                live, replay = (
                    [row for row in machines.rows(Host.read(f"{folder}/{report}")) if loads & set(row.values())]
                    for folder in ("live", "replay"))
                self.assertEqual(replay, live)


if __name__ == "__main__":
    machines.main()
