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

# The output of these does not change while nothing happens on the host.
STEADY_REPORTS = """pshare-stats lpool-stats pmem-regionstore-stats pmem-region-stats pmem-extent-stats
pmem-region-numa-stats""".split()

# For these, only the groups of sleeping processes do not change.
GROUP_REPORTS = """group-stats vm-stats uw-stats swap-stats guest-stats zip-stats lpage-stats
asyncremap-stats""".split()

# The namespaces of persistent memory that the host creates, and their sizes.
REGIONS = {"00000000-0000-4000-8000-000000000001": 32 * MB, "00000000-0000-4000-8000-000000000002": 16 * MB}


def setUpModule():
    if not os.path.exists(f"{KERNEL}/vmlinuz"):
        raise unittest.SkipTest("there is no kernel to start")
    shutil.rmtree(FOLDER, ignore_errors=True)
    Host.console = second_host.run(FOLDER, PROGRAMS, KERNEL, REPORTS)


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
        """The rows of a live report, or its only row with a value in a column."""
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
    def load(cls, program):
        """The PID and the /proc status of a program's process."""
        for pid in os.listdir(f"{cls.folder}/files/proc"):
            if pid.isdigit() and cls.file(f"proc/{pid}/cmdline").split("\0")[0] == program:
                return pid, machines.fields(cls.file(f"proc/{pid}/status"))
        raise AssertionError(f"there is no {program}\n{cls.console}")


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
        self.assertNear(row["sharedSaved"], 8 * MB, MB, "sharedSaved")
        self.assertCells(Host.report("swap-stats", ("schedGrp", pid)), name="second-guest", swapped=swapped)

    def test_large_pages_of_the_machine(self):
        pid, status = Host.load(machines.QEMU)
        [transparent] = re.findall(r"^anon_thp (.*)", Host.file("sys/fs/cgroup/outer/machine.scope/memory.stat"), re.M)
        self.assertGreater(int(transparent), 0)
        backings = status["HugetlbPages"] // (2 * MB) + int(transparent) // (2 * MB * 1024)
        self.assertCells(Host.report("lpage-stats", ("schedGrp", pid)), name="second-guest", nrBackings=backings)

    def test_user_world(self):
        pid, status = Host.load("memory_load")
        huge = status["HugetlbPages"]
        self.assertEqual((status["VmLck"], status["VmPin"], huge), (4 * MB, MB, 4 * MB))
        row = Host.report("uw-stats", ("schedGrp", pid))
        self.assertCells(row, type="uw", name="memory_load", memSize=status["VmData"] + status["VmStk"], swapped=status["VmSwap"])
        self.assertCells(row, mapped=status["VmRSS"] + huge, shm=status["RssShmem"], prealloced=huge)
        self.assertCells(row, pinned=status["VmLck"] + status["VmPin"] + huge)
        self.assertNear(row["cow"], 8 * MB, MB, "cow")


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
        self.assertGreaterEqual(int(row["total"]), memory[0]["MemTotal"])
        self.assertCells(row, memState="High")

    def test_a_shortage_is_what_makes_somebody_wait(self):
        def row(name):
            [found] = machines.rows(Host.read(f"shortage/{name}"))
            return {column: found[column] for column in ("memState", "numClear", "numSoft", "numHard", "numLow")}

        idle, read, filled = row("idle"), row("read"), row("filled")
        self.assertEqual(idle["memState"], "High")
        # If this machine is very busy, even a short wait in the emulated one lasts.
        if float(re.search(r"some avg10=(\S+)", Host.read("shortage/pressure"))[1]) < 5:
            self.assertEqual(read, idle, "reading a disk is no shortage")
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

    def test_persistent_memory(self):
        regions = {row["regionUuid"]: row for row in Host.report("pmem-region-stats")}
        [volume] = Host.report("pmem-regionstore-stats")
        for region, size in REGIONS.items():
            blocks = size // (2 * MB)
            self.assertCells(regions[region], uuid=volume["uuid"], size=size, allocated2MBlks=blocks)
            self.assertCells(regions[region], numaAffinityMask="0x2")
            own = [row for row in Host.report("pmem-region-numa-stats") if row["regionUuid"] == region]
            self.assertEqual([(row["numaNode"], row["num2MAllocated"]) for row in own], [("1", str(blocks))])
        self.assertEqual({row["numaNode"] for row in Host.report("pmem-extent-stats")}, {"1"})


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
