"""What the tests with QEMU share: the programs under test, and machines that end with their test."""

import csv
import os
import subprocess
import sys
import unittest

QEMU = "qemu-system-x86_64"

# ctest's name for a test that could not be run.
SKIPPED = 77


def start_qemu(words, **streams):
    """Starts QEMU with no devices but those asked for. The kernel ends it with this process, however that ends."""
    command = ["setpriv", "--pdeathsig", "KILL", QEMU, "-nodefaults", "-display", "none", *words]
    return subprocess.Popen(command, **streams)


def run(*words):
    """Runs a program, and gives what it said: its status, its output and its messages."""
    # Without LANG and the like, which the programs do not look at but the loader might.
    done = subprocess.run(words, capture_output=True, text=True, timeout=60, env={"PATH": os.environ["PATH"]})
    return done.returncode, done.stdout, done.stderr


def rows(text):
    """The rows of a report in CSV, by column."""
    return list(csv.DictReader(text.splitlines()))


def fields(text):
    """The fields of a text like /proc/meminfo, in its own unit: {"MemTotal": 16000000}."""
    found = {}
    for line in text.splitlines():
        words = line.replace(":", " ").split()
        if len(words) > 1 and words[1].isdigit():
            found[words[0]] = int(words[1])
    return found


def around(read, act):
    """What a function returns, and what another one read before it and after it."""
    before = read()
    done = act()
    return done, [before, read()]


class TestCase(unittest.TestCase):
    """Tests of figures that need not be as exact as those that they are compared with."""

    def assertNear(self, value, expected, tolerance, what):
        self.assertBetween(value, [expected], tolerance, what)

    def assertBetween(self, value, readings, tolerance, what):
        """A figure that moves by itself is between what it was before and after, or near to one of these."""
        low, high = min(readings) - tolerance, max(readings) + tolerance
        if not low <= int(value) <= high:
            self.fail(f"{what}: {value}, not from {low} to {high}")


def main():
    """Runs the tests of the program; ends with SKIPPED if none could be run."""
    ran = unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result
    if ran.wasSuccessful() and ran.skipped and len(ran.skipped) >= max(ran.testsRun, 1):
        sys.exit(SKIPPED)
    sys.exit(not ran.wasSuccessful())
