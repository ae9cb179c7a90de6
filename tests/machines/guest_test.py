"""Tests the reports on real guests: QEMU machines with preallocated memory, stopped before their first instruction.

    guest_test.py KESTREL
"""

import json
import os
import subprocess
import sys
import unittest

import machines

KESTREL = sys.argv[1]
MB = 1024  # in KB, the unit of the reports and of /proc

# The tolerance for changes in a stopped machine's memory.
DRIFT = 16 * MB


class Guest:
    """A started and stopped machine."""

    def __init__(self, name, *words):
        common = ["-S", "-name", name, "-machine", "pc,memory-backend=ram", "-qmp", "stdio", *words]
        pipes = {stream: subprocess.PIPE for stream in ("stdin", "stdout", "stderr")}
        self.qemu = machines.start_qemu(common, text=True, **pipes)
        self.pid = self.qemu.pid
        self._ask({"execute": "qmp_capabilities"})  # answered when the machine is built

    def _ask(self, command):
        self.qemu.stdin.write(json.dumps(command) + "\n")
        self.qemu.stdin.flush()
        while True:
            line = self.qemu.stdout.readline()
            if not line:
                raise AssertionError(f"QEMU ended: {self.qemu.stderr.read()}")
            if "return" in json.loads(line):
                return

    def status(self):
        with open(f"/proc/{self.pid}/status", encoding="utf-8") as file:
            return machines.fields(file.read())

    def stop(self):
        self.qemu.kill()
        self.qemu.communicate()


def resident(status):
    return status["VmRSS"] + status["HugetlbPages"]


def can_use_kvm():
    try:
        os.close(os.open("/dev/kvm", os.O_RDWR | os.O_CLOEXEC))
        return True
    except OSError:
        return False


class ReportsOnGuests(machines.TestCase):
    @classmethod
    def setUpClass(cls):
        either = ["-accel", "kvm", "-accel", "tcg"]
        cls.private = cls.start("quiet-one", *either, "-m", "256M",
                                "-object", "memory-backend-ram,id=ram,size=256M,prealloc=on")
        cls.shared = cls.start("guest=quiet-two,debug-threads=on", *either, "-m", "size=192M",
                               "-object", "memory-backend-memfd,id=ram,size=192M,share=on,prealloc=on")

    @classmethod
    def start(cls, *words):
        guest = Guest(*words)
        cls.addClassCleanup(guest.stop)
        return guest

    def report(self, name, *words):
        """The rows of a report on the whole host."""
        status, output, messages = machines.run(KESTREL, "-r", name, "-q", *words)
        self.assertEqual((status, messages), (0, ""), name)
        return machines.rows(output)

    def row_of(self, guest, report):
        own = [row for row in self.report(report) if row["schedGrp"] == str(guest.pid)]
        self.assertEqual(len(own), 1, f"{report}: one row for the machine")
        return own[0]

    def watch(self, guest, report):
        """The machine's row, and the /proc status of its process before and after the report."""
        return machines.around(guest.status, lambda: self.row_of(guest, report))

    def assertIsSwapped(self, row, statuses):
        self.assertBetween(row["swapped"], [status["VmSwap"] for status in statuses], 0, "swapped")

    def for_each_guest(self, check):
        for guest, name, memory in (self.private, "quiet-one", 256 * MB), (self.shared, "quiet-two", 192 * MB):
            with self.subTest(name):
                check(guest, name, memory)

    def test_a_guest_is_a_group_with_a_monitor(self):
        def check(guest, name, memory):
            rows, statuses = machines.around(guest.status, lambda: self.report("group-stats", "-g", str(guest.pid)))
            rows = {row["gid"]: row for row in rows}
            self.assertEqual(len(rows), 2)
            machine = rows.pop(str(guest.pid))
            self.assertEqual((machine["name"], machine["flags"]), (name, "vm:uw"))
            self.assertEqual(int(machine["memSize"]), memory)
            self.assertBetween(machine["consumed"], [resident(status) for status in statuses], DRIFT, "consumed")
            [monitor] = rows.values()
            self.assertEqual((monitor["name"], monitor["parGid"]), ("vmm", str(guest.pid)))

        self.for_each_guest(check)

    def test_vm_stats(self):
        def check(guest, name, memory):
            row, statuses = self.watch(guest, "vm-stats")
            self.assertEqual((row["name"], int(row["memSize"])), (name, memory))
            self.assertGreaterEqual(resident(statuses[0]), memory, "it is preallocated")
            self.assertNear(row["mapped"], memory, MB, "mapped")
            self.assertNear(row["consumed"], memory, MB, "consumed")
            self.assertIsSwapped(row, statuses)
            self.assertBetween(row["ovhd"], [resident(status) - memory for status in statuses], DRIFT, "ovhd")

        self.for_each_guest(check)

    def test_swap_stats(self):
        def check(guest, name, _):
            row, statuses = self.watch(guest, "swap-stats")
            self.assertEqual(row["name"], name)
            self.assertIsSwapped(row, statuses)

        self.for_each_guest(check)

    def test_lpage_stats(self):
        self.for_each_guest(lambda guest, name, _: self.assertEqual(self.row_of(guest, "lpage-stats")["name"], name))

    def test_uw_stats(self):
        def check(guest, name, _):
            row, statuses = self.watch(guest, "uw-stats")
            self.assertEqual((row["type"], row["name"]), ("(all)", name))
            self.assertBetween(row["memSize"], [status["VmData"] + status["VmStk"] for status in statuses], DRIFT, "memSize")
            self.assertBetween(row["mapped"], [resident(status) for status in statuses], DRIFT, "mapped")
            self.assertBetween(row["shm"], [status["RssShmem"] for status in statuses], MB, "shm")
            self.assertIsSwapped(row, statuses)

        self.for_each_guest(check)

    @unittest.skipUnless(can_use_kvm(), "/dev/kvm cannot be opened")
    def test_kvm_gives_away_a_machine_of_any_name(self):
        guest = self.start("guest=by-kvm,process=appliance", "-accel", "kvm", "-m", "64M",
                           "-object", "memory-backend-ram,id=ram,size=64M")
        [row] = [row for row in self.report("group-stats") if row["gid"] == str(guest.pid)]
        self.assertEqual((row["name"], row["flags"], int(row["memSize"])), ("by-kvm", "vm:uw", 64 * MB))
        self.assertLess(int(self.row_of(guest, "vm-stats")["mapped"]), 64 * MB, "not preallocated")


if __name__ == "__main__":
    machines.main()
