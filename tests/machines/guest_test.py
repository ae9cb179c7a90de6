"""Tests the reports on real guests: QEMU machines that are stopped before their first instruction.

    guest_test.py KESTREL
"""

import json
import os
import subprocess
import sys
import tempfile
import unittest

import machines

KESTREL = sys.argv[1]
MB = 1024  # in KB, the unit of the reports and of /proc

# The tolerance for changes in a stopped machine's memory.
DRIFT = 16 * MB


class Guest:
    """A machine that is stopped before its first instruction."""

    def __init__(self, name, *words, machine="pc,memory-backend=ram"):
        common = ["-S", "-name", name, "-machine", machine, "-qmp", "stdio", *words]
        pipes = {stream: subprocess.PIPE for stream in ("stdin", "stdout", "stderr")}
        self.qemu = machines.start_qemu(common, text=True, **pipes)
        self.pid = self.qemu.pid
        self.ask("qmp_capabilities")  # the monitor answers when the machine is complete

    def ask(self, command, **arguments):
        """The monitor's answer to a QMP command."""
        self.qemu.stdin.write(json.dumps({"execute": command, "arguments": arguments}) + "\n")
        self.qemu.stdin.flush()
        while True:
            line = self.qemu.stdout.readline()
            if not line:
                raise AssertionError(f"QEMU ended: {self.qemu.stderr.read()}")
            answer = json.loads(line)
            if "error" in answer:
                raise AssertionError(f"{command}: {answer['error']}")
            if "return" in answer:
                return answer["return"]

    def size(self):
        """The size of the memory in KB, as the monitor tells it."""
        summary = self.ask("query-memory-size-summary")
        return (summary["base-memory"] + summary.get("plugged-memory", 0)) // 1024

    def resident_of_guest(self, size, name=""):
        """The resident memory in KB of the mapping with this size in KB and this name, from smaps."""
        found = []
        with open(f"/proc/{self.pid}/smaps", encoding="utf-8") as file:
            for line in file:
                words = line.split()
                if "-" in words[0] and not words[0].endswith(":"):
                    start, end = (int(address, 16) for address in words[0].split("-"))
                    is_guests = (end - start) // 1024 == size and " ".join(words[5:]).startswith(name)
                elif words[0] == "Rss:" and is_guests:
                    found.append(int(words[1]))
        if len(found) != 1:
            raise AssertionError(f"{len(found)} mappings of {size} KB")
        return found[0]

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
    def start(cls, *words, **options):
        guest = Guest(*words, **options)
        cls.addClassCleanup(guest.stop)
        return guest

    def start_loaded(self, name, *words):
        """Starts a machine whose memory contains 48 MB of data."""
        data = tempfile.NamedTemporaryFile()
        self.addCleanup(data.close)
        data.write(os.urandom(MB) * 48 * MB)
        data.flush()
        loader = f"loader,file={data.name},addr=0x1000000,force-raw=on"
        return self.start(name, "-accel", "tcg", *words, "-device", loader)

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

    def assertHasSize(self, guest, size):
        self.assertEqual(guest.size(), size, "the monitor's view")
        self.assertEqual(int(self.row_of(guest, "vm-stats")["memSize"]), size)
        self.assertEqual(int(self.row_of(guest, "guest-stats")["memTotal"]), size)

    def test_memory_devices(self):
        guest = self.start("with-devices", "-accel", "tcg", "-m", "256M,slots=4,maxmem=2G",
                           "-object", "memory-backend-ram,id=ram,size=256M",
                           "-object", json.dumps({"qom-type": "memory-backend-ram", "id": "m0", "size": 128 << 20}),
                           "-device", json.dumps({"driver": "pc-dimm", "id": "d0", "memdev": "m0"}),
                           "-object", "memory-backend-memfd,id=m1,size=128M", "-device", "pc-dimm,id=d1,memdev=m1")
        self.assertHasSize(guest, 512 * MB)
        most = guest.ask("qom-get", path="/machine", property="memory")["max-size"]
        self.assertEqual(int(self.row_of(guest, "vm-stats")["memSizeLimit"]), most // 1024)
        guest.ask("object-add", **{"qom-type": "memory-backend-ram", "id": "m2", "size": 384 << 20})
        guest.ask("device_add", driver="pc-dimm", id="d2", memdev="m2")
        self.assertEqual(len(guest.ask("query-memory-devices")), 3)
        self.assertHasSize(guest, 896 * MB)

    def test_a_machine_without_a_size(self):
        self.assertHasSize(self.start("without-size", "-accel", "tcg", machine="pc"), 128 * MB)

    def test_memory_in_a_memfd_is_told_exactly(self):
        guest = self.start_loaded("memfd", "-m", "320M", "-object", "memory-backend-memfd,id=ram,size=320M")
        truth = guest.resident_of_guest(320 * MB, "/memfd:")
        self.assertNear(truth, 48 * MB, MB, "what was loaded")
        row, statuses = self.watch(guest, "vm-stats")
        self.assertNear(row["mapped"], truth, 64, "mapped")
        rest = [resident(status) + status["VmPTE"] - truth for status in statuses]
        self.assertBetween(row["ovhd"], rest, MB, "ovhd")

    def test_memory_in_a_file(self):
        file = tempfile.NamedTemporaryFile()
        self.addCleanup(file.close)
        backend = f"memory-backend-file,id=ram,size=320M,share=on,mem-path={file.name}"
        guest = self.start_loaded("file", "-m", "320M", "-object", backend)
        truth = guest.resident_of_guest(320 * MB, file.name)
        error = int(self.row_of(guest, "vm-stats")["mapped"]) - truth
        status, file_system, _ = machines.run("stat", "-f", "-c", "%T", file.name)
        self.assertEqual(status, 0)
        if file_system.strip() == "tmpfs":
            self.assertNear(error, 0, 64, "the error in shared memory")
        else:
            self.assertBetween(error, [0, (48 + 80) * MB], 0, "the monitor's program, its data and its own memory")

    def test_anonymous_memory_is_an_upper_bound(self):
        guest = self.start_loaded("anonymous", "-m", "320M", "-object", "memory-backend-ram,id=ram,size=320M")
        truth = guest.resident_of_guest(320 * MB)
        self.assertNear(truth, 48 * MB, 3 * MB, "what was loaded, with huge pages around it")
        error = int(self.row_of(guest, "vm-stats")["mapped"]) - truth
        print(f"mapped is {error} KB too high", file=sys.stderr)
        self.assertGreaterEqual(error, 0)
        status = guest.status()
        self.assertLessEqual(error, status["VmData"] + status["VmStk"] - 320 * MB, "what the monitor may write")
        self.assertLess(error, (48 + 40) * MB, "the monitor's copy of the data, and its own memory")

    @unittest.skipUnless(can_use_kvm(), "/dev/kvm cannot be opened")
    def test_kvm_gives_away_a_machine_of_any_name(self):
        guest = self.start("guest=by-kvm,process=appliance", "-accel", "kvm", "-m", "64M",
                           "-object", "memory-backend-ram,id=ram,size=64M")
        [row] = [row for row in self.report("group-stats") if row["gid"] == str(guest.pid)]
        self.assertEqual((row["name"], row["flags"], int(row["memSize"])), ("by-kvm", "vm:uw", 64 * MB))
        self.assertLess(int(self.row_of(guest, "vm-stats")["mapped"]), 64 * MB, "not preallocated")


if __name__ == "__main__":
    machines.main()
