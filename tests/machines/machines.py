"""Common code of the tests with QEMU: runs programs, and starts machines that end with their test."""

import csv
import os
import subprocess
import sys
import unittest

QEMU = "qemu-system-x86_64"

# The exit status of a skipped test in ctest.
SKIPPED = 77


def start_qemu(words, **streams):
    """Starts QEMU with only the given devices. The kernel kills it when this process ends for any reason."""
    command = ["setpriv", "--pdeathsig", "KILL", QEMU, "-nodefaults", "-display", "none", *words]
    return subprocess.Popen(command, **streams)


def run(*words):
    """Runs a program and returns its exit status, its output and its messages."""
    # The environment contains only PATH, because other variables could affect the loader.
    done = subprocess.run(words, capture_output=True, text=True, timeout=60, env={"PATH": os.environ["PATH"]})
    return done.returncode, done.stdout, done.stderr


def rows(text):
    """The rows of CSV output, as dictionaries by column."""
    return list(csv.DictReader(text.splitlines()))


def fields(text):
    """Parses a text like /proc/meminfo, without unit conversion: {"MemTotal": 16000000}."""
    found = {}
    for line in text.splitlines():
        words = line.replace(":", " ").split()
        if len(words) > 1 and words[1].isdigit():
            found[words[0]] = int(words[1])
    return found


def write(path, value):
    with open(path, "w", encoding="utf-8") as file:
        file.write(str(value))


def memory_hierarchy(pid):
    """The mount point of the control groups that account for memory, and the path of a process's group below it."""
    with open("/proc/self/mountinfo", encoding="utf-8") as mounts:
        lines = [line.split() for line in mounts]
    mounted = {words[-3]: words[4] for words in lines if words[-3] == "cgroup2" or "memory" in words[-1].split(",")}
    with open(f"/proc/{pid}/cgroup", encoding="utf-8") as groups:
        paths = dict(line.rstrip("\n").split(":", 2)[1:] for line in groups)
    return (mounted["cgroup"], paths["memory"]) if "cgroup" in mounted else (mounted["cgroup2"], paths[""])


def around(read, act):
    """Returns the result of `act`, and the results of `read` before and after it."""
    before = read()
    done = act()
    return done, [before, read()]


class TestCase(unittest.TestCase):
    """Tests that compare figures with a tolerance."""

    def assertNear(self, value, expected, tolerance, what):
        self.assertBetween(value, [expected], tolerance, what)

    def assertBetween(self, value, readings, tolerance, what):
        """Expects a changing figure to be between its values before and after, or near one of them."""
        low, high = min(readings) - tolerance, max(readings) + tolerance
        if not low <= int(value) <= high:
            self.fail(f"{what}: {value}, not from {low} to {high}")


def main():
    """Runs the tests of the program. Exits with SKIPPED if all were skipped."""
    ran = unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result
    if ran.wasSuccessful() and ran.skipped and len(ran.skipped) >= max(ran.testsRun, 1):
        sys.exit(SKIPPED)
    sys.exit(not ran.wasSuccessful())
