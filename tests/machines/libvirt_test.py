"""Tests what nodal-guests learns from libvirt about two running guests, and what the reports show of it.

    libvirt_test.py KERNEL FOLDER KESTREL NODAL

KERNEL is the folder of kernel.py. FOLDER is recreated.
"""

import json
import os
import shutil
import signal
import subprocess
import sys
import time
import unittest

import libvirt_host
import machines
import second_host

IN_NAMESPACES = "KESTREL_IN_NAMESPACES"
KERNEL, FOLDER, KESTREL, NODAL = sys.argv[1:]
FILE = "/run/kestrel/guests.nodal"
UNKNOWN = str(2**64 - 1)
MEMORY = libvirt_host.Host.MEMORY
MB = 1024  # in KB

# The maximum duration of a run in which a guest does not answer.
MOST_SECONDS = 1.2


def setUpModule():
    if not os.path.exists(f"{KERNEL}/vmlinuz"):
        raise unittest.SkipTest("there is no kernel to start")


def nodal_guests(*words):
    """Runs nodal guests. Returns its output, its messages, and the seconds that it took."""
    start = time.monotonic()
    status, output, messages = machines.run(NODAL, "guests", *words)
    if status != 0:
        raise AssertionError(f"nodal guests {' '.join(words)}: {status}: {messages}")
    return output, messages, time.monotonic() - start


def guests():
    """The JSON of nodal guests: a dictionary for each guest, by its name."""
    return {guest["name"]: guest for guest in json.loads(nodal_guests("--json")[0])}


def remove_file():
    if os.path.exists(FILE):
        os.remove(FILE)


class GuestsOfLibvirt(machines.TestCase):
    """libvirt polls the guest `web` every two seconds, and never polls the guest `mail`."""

    @classmethod
    def setUpClass(cls):
        shutil.rmtree(FOLDER, ignore_errors=True)
        os.makedirs(FOLDER)
        cls.host = libvirt_host.Host(FOLDER, KERNEL)
        cls.addClassCleanup(cls.host.stop)
        os.mkdir("/run/kestrel", 0o755)
        cls.host.start("web", period=2)
        cls.host.start("mail")
        for name in ("web", "mail"):
            libvirt_host.until(lambda: cls.host.is_up(name), 120, f"{name} is up")
            libvirt_host.until(lambda: cls.host.statistics(name).get("usable"), 30, f"{name} tells its statistics")

    def setUp(self):
        remove_file()

    def row(self, report, name):
        status, output, messages = machines.run(KESTREL, "-r", report, "-q")
        self.assertEqual((status, messages), (0, ""))
        [row] = [row for row in machines.rows(output) if row["name"] == name]
        return row

    def empty_balloon(self, name):
        self.host.virsh("setmem", name, f"{MEMORY}K", "--live")
        libvirt_host.until(lambda: self.row("vm-stats", name)["ballooned"] == "0", 30, "the balloon is empty")

    def write_file(self):
        """Writes the file of nodal-guests. Returns the seconds that this took, and the messages."""
        _, messages, seconds = nodal_guests("-o", FILE)
        return seconds, messages

    def test_figures_of_libvirt(self):
        told, expected = machines.around(lambda: self.host.statistics("web"), guests)
        web = told["web"]
        self.assertEqual(web["pid"], self.host.pid("web"))
        self.assertEqual((web["memory-kb"], web["balloon-driver"], web["polling-seconds"]), (MEMORY, 1, 2))
        self.assertEqual(web["balloon-kb"], MEMORY - expected[0]["actual"])
        self.assertEqual(web["written-kb"], 0)
        for key, figure in (("available", "guest-total-kb"), ("usable", "guest-usable-kb"), ("unused", "guest-free-kb"),
                            ("disk_caches", "guest-disk-caches-kb"), ("major_fault", "guest-major-faults")):
            self.assertBetween(web[figure], [statistics[key] for statistics in expected], 0, figure)

    def test_reports_without_the_file(self):
        row = self.row("vm-stats", "mail")
        self.assertEqual((row["ballooned"], row["balloonTgt"]), ("0", UNKNOWN), "from libvirt's status")
        self.assertEqual(self.row("guest-stats", "mail")["memNeeded"], "-1")
        self.assertEqual(self.row("swap-stats", "mail")["cptWritten"], "0")

    def test_reports_with_the_file(self):
        self.write_file()
        self.assertEqual(self.row("vm-stats", "web")["b"], "y")
        row, statistics = machines.around(lambda: self.host.statistics("web"), lambda: self.row("guest-stats", "web"))
        self.assertBetween(row["memTotal"], [one["available"] for one in statistics], 0, "memTotal")
        needed = [one["available"] - one["usable"] for one in statistics]
        self.assertBetween(row["memNeeded"], needed, 1 * MB, "memNeeded")

    def move_to_scope(self, name):
        """Puts QEMU into a control group with the name that systemd gives it. To users other than
        root, only the name shows that the process is a VM."""
        pid = self.host.pid(name)
        hierarchy, home = machines.memory_hierarchy(pid)
        slice = f"{hierarchy}/machine.slice"
        scope = f"{slice}/machine-qemu\\x2d1\\x2d{name}.scope"
        made = [folder for folder in (slice, scope) if not os.path.exists(folder)]
        os.makedirs(scope, exist_ok=True)
        for folder in made:
            self.addCleanup(os.rmdir, folder)
        self.addCleanup(machines.write, f"{hierarchy}{home}/cgroup.procs", pid)
        machines.write(f"{scope}/cgroup.procs", pid)

    def test_an_ordinary_user_sees_the_file(self):
        self.write_file()
        self.move_to_scope("web")
        # The user may be unable to enter the build folder.
        for program in [KESTREL, *second_host.libraries_of(KESTREL)]:
            second_host.copy(program, f"/run/programs/{os.path.basename(program)}")
        status, output, messages = machines.run("setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "env",
                                                "LD_LIBRARY_PATH=/run/programs", "/run/programs/kestrel", "-r",
                                                "vm-stats", "-q")
        self.assertEqual((status, messages), (0, ""))
        [row] = [row for row in machines.rows(output) if row["name"] == "web"]
        self.assertEqual(int(row["ballooned"]), MEMORY - self.host.statistics("web")["actual"])

    def test_ballooning(self):
        self.addCleanup(self.empty_balloon, "web")
        self.host.virsh("setmem", "web", "160M", "--live")
        # QEMU reports changes to libvirt at most once a second.
        ballooned = str(MEMORY - 160 * MB)
        libvirt_host.until(lambda: self.row("vm-stats", "web")["ballooned"] == ballooned, 30, "the balloon is filled")
        self.assertEqual(self.host.statistics("web")["actual"], 160 * MB)
        self.assertEqual(self.row("vm-stats", "web")["b"], "y")
        os.rename("/run/libvirt/qemu/web.xml", "/run/web.xml")
        self.addCleanup(os.rename, "/run/web.xml", "/run/libvirt/qemu/web.xml")
        self.assertEqual(self.row("vm-stats", "web")["ballooned"], UNKNOWN)

    def test_ballooning_by_the_file_alone(self):
        self.addCleanup(self.empty_balloon, "mail")
        self.host.virsh("setmem", "mail", "200M", "--live")
        libvirt_host.until(lambda: guests()["mail"]["balloon-kb"] == MEMORY - 200 * MB, 30, "the balloon is filled")
        self.assertEqual(self.host.statistics("mail")["actual"], 200 * MB)
        self.write_file()
        os.rename("/run/libvirt/qemu/mail.xml", "/run/mail.xml")
        self.addCleanup(os.rename, "/run/mail.xml", "/run/libvirt/qemu/mail.xml")
        row = self.row("vm-stats", "mail")
        self.assertEqual((row["b"], int(row["ballooned"])), ("y", MEMORY - 200 * MB))

    def test_frozen_figures_are_unknown_until_polling_is_on(self):
        self.assertNotIn("guest-total-kb", guests()["mail"])
        self.write_file()
        self.assertEqual(self.row("guest-stats", "mail")["memNeeded"], "-1")
        lines = nodal_guests()[0].splitlines()
        [advice] = [i for i, line in enumerate(lines) if line.startswith("mail: its statistics are not polled.")]
        command = lines[advice + 1].split()
        self.assertEqual(command, "virsh dommemstat --period 10 mail --live".split())
        self.host.virsh(*command[1:])
        self.addCleanup(self.host.virsh, "dommemstat", "--period", "0", "mail", "--live")
        libvirt_host.until(lambda: "guest-total-kb" in guests()["mail"], 30, "the figures of mail are told")

    def test_a_stopped_guest_costs_only_its_own_figures(self):
        pid = self.host.pid("web")
        os.kill(pid, signal.SIGSTOP)
        self.addCleanup(os.kill, pid, signal.SIGCONT)
        self.host.virsh("dommemstat", "--period", "10", "mail", "--live")
        self.addCleanup(self.host.virsh, "dommemstat", "--period", "0", "mail", "--live")
        libvirt_host.until(lambda: self.host.statistics("mail")["last_update"] > time.time() - 5, 30, "mail is polled")
        for run in ("first", "second", "third"):
            remove_file()
            seconds, messages = self.write_file()
            print(f"{run} run with a stopped guest: {seconds:.2f} s", file=sys.stderr)
            self.assertLess(seconds, MOST_SECONDS, run)
            self.assertEqual(messages, "nodal-guests: guest web: its monitor does not answer\n", run)
            self.assertNotEqual(self.row("guest-stats", "mail")["memNeeded"], "-1", run)
            self.assertEqual(self.row("guest-stats", "web")["memNeeded"], "-1", run)


if __name__ == "__main__":
    if IN_NAMESPACES in os.environ:
        machines.main()
    elif os.geteuid() != 0 or subprocess.run(["unshare", "--mount", "--net", "true"], check=False).returncode != 0:
        print("Skipped: requires root, and mounts of its own")
        sys.exit(machines.SKIPPED)
    else:
        os.environ[IN_NAMESPACES] = "yes"
        os.execvp("unshare", ["unshare", "--mount", "--net", "--propagation", "private", sys.executable, "-B", *sys.argv])
