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


class Pressed:
    """A report on the machine that wants more memory than its limit allows, and the host's files around the report."""

    GUEST = "pressed"

    def __init__(self, host, report):
        self.rows = machines.rows(host.read(f"pressed/{report}"))
        self.messages = host.read(f"pressed/{report}.err")
        self.texts = [host.read(f"pressed/{report}.{moment}") for moment in ("before", "after")]

    def row(self):
        [row] = [row for row in self.rows if row["name"] == self.GUEST]
        return row

    def lines(self, file):
        """The lines of a file before and after the report. `file` is the end of its path."""
        return ["\n".join(re.findall(rf"^\S*/{re.escape(file)}:(.*)", text, re.M)) for text in self.texts]

    def figures(self, file, key):
        return [machines.fields(text)[key] for text in self.lines(file)]

    def amounts(self, file):
        """The amounts of a file in KB; the file contains bytes."""
        return [int(text) // 1024 for text in self.lines(file)]

    def pressures(self, file, kind):
        """The pressure of the last ten seconds in percent, rounded down."""
        return [int(re.search(rf"^{kind} avg10=(\d+)", text, re.M)[1]) for text in self.lines(file)]

    def zram(self):
        """The memory usage of zram in KB."""
        return [int(text.split()[2]) // 1024 for text in self.lines("zram0/mm_stat")]


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

    def test_reservations_of_nested_groups(self):
        outer = Host.report("group-stats", ("name", "outer"))
        self.assertCells(outer, min=48 * MB, conResv=40 * MB, availResv=8 * MB, iMin=64 * MB)
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
        self.assertCells(Host.report("group-stats", ("gid", pid)), throttlePct=100, bMin=24 * MB)

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


class PressedMachine(SecondHost):
    """A machine that wants 40 MB and may have 24 MB. The limit is on its scope, two groups above its process."""

    def pressed(self, report, host=Host):
        result = Pressed(host, report)
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
        [scope] = [row for row in group.rows if row["name"].endswith("pressed.scope")]
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
        [scope] = [row for row in group.rows if row["name"].endswith("pressed.scope")]
        self.assertCells(scope, max=24 * MB)
        self.assertBetween(scope["consumedPeak"], group.amounts("memory.max_usage_in_bytes"), 0, "consumedPeak")
        self.assertBetween(scope["consumed"], group.amounts("memory.usage_in_bytes"), 512, "consumed")
        self.assertCells(self.pressed("vm-stats", host=Version1).row(), max=24 * MB, allocTgt=24 * MB)
        self.assertCells(self.pressed("uw-stats", host=Version1).row(), max=24 * MB)


class WholeHost(SecondHost):
    def test_page_sharing(self):
        shared, sharing = (int(Host.file(f"sys/kernel/mm/ksm/pages_{kind}")) for kind in ("shared", "sharing"))
        self.assertGreater(sharing, 4000)
        [row] = Host.report("pshare-stats")
        self.assertCells(row, used=4 * shared, reclaimed=4 * sharing, cow=4 * (shared + sharing))
        zeros = int(Host.file("sys/kernel/mm/ksm/ksm_zero_pages")) if Host.has("sys/kernel/mm/ksm/ksm_zero_pages") else 0
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
            return {column: found[column] for column in ("memState", "numClear", "numSoft", "numHard", "numLow")}

        idle, read, filled = row("idle"), row("read"), row("filled")
        self.assertEqual(idle["memState"], "High")
        # If this machine is very busy, even short waits in the emulated machine become long.
        if max(map(float, re.findall(r"some avg10=(\S+)", Host.read("shortage/pressure")))) < 5:
            self.assertEqual(read, idle, "reading a disk is no shortage")
            if os.path.exists(f"{Host.folder}/shortage/read-generations"):
                self.assertEqual(row("read-generations"), idle, "nor is it if the kernel ages memory by generations")
        for column in "numClear", "numSoft", "numHard", "numLow":
            self.assertGreater(int(filled[column]), int(read[column]), column)

    def test_members_add_up_to_the_host(self):
        rows = Host.report("group-stats")
        [host] = [row for row in rows if row["gid"] == "0"]
        members = sum(int(row["consumed"]) for row in rows if row["parGid"] == "0")
        self.assertNear(host["consumed"], members, 2 * MB, "consumed")

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
