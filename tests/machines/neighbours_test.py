"""Compares the running host's figures with free, ps, slabtop and the files of control groups.

    neighbours_test.py KESTREL
"""

import glob
import os
import subprocess
import sys
import unittest

import machines

KESTREL = sys.argv[1]
MB = 1024  # in KB, the unit of the reports

# The tolerance for changes between two reads of the host.
DRIFT = 256 * MB


def report(name, *words):
    status, output, errors = machines.run(KESTREL, "-r", name, "-q", *words)
    if status != 0 or errors:
        raise AssertionError(f"{name}: {status}: {errors}")
    return machines.rows(output)


def free():
    """The host's total and free memory in KB."""
    _, output, _ = machines.run("free", "-k")
    words = next(line for line in output.splitlines() if line.startswith("Mem:")).split()
    return int(words[1]), int(words[3])


def slabtop():
    """The sizes of the kernel's caches in KB by name, largest first."""
    _, output, _ = machines.run("slabtop", "-o", "-s", "c")
    lines = [line.split() for line in output.splitlines()]
    start = next(i for i, words in enumerate(lines) if words[-1:] == ["NAME"]) + 1
    return {words[7]: int(words[6].rstrip("K")) for words in lines[start:]}


class Neighbours(machines.TestCase):
    def test_free(self):
        [host], readings = machines.around(free, lambda: report("comp-stats"))
        self.assertEqual(int(host["managedByMemMap"]), readings[0][0])
        self.assertBetween(host["free"], [amount for _, amount in readings], DRIFT, "free")

    def test_ps(self):
        # A sleeping process, whose figures do not change.
        with subprocess.Popen(["sleep", "60"]) as sleeper:
            try:
                _, output, _ = machines.run("ps", "-o", "rss=", "-p", str(sleeper.pid))
                resident = int(output)
                with open(f"/proc/{sleeper.pid}/status", encoding="utf-8") as status:
                    figures = machines.fields(status.read())
                rows = {row["schedGrp"]: row for row in report("uw-stats")}
            finally:
                sleeper.kill()
        row = rows[str(sleeper.pid)]
        self.assertEqual(row["name"], "sleep")
        self.assertEqual(int(row["memSize"]), figures["VmData"] + figures["VmStk"])
        self.assertNear(row["mapped"], resident, 1 * MB, "mapped")

    @unittest.skipUnless(os.geteuid() == 0, "the caches of kernel objects are root's to read")
    def test_slabtop(self):
        rows, readings = machines.around(slabtop, lambda: report("heap-stats", "-u", "kb"))
        heaps = {row["name"]: row for row in rows}
        for name in list(readings[0])[:10]:
            sizes = [reading[name] for reading in readings]
            self.assertBetween(heaps[name]["size"], sizes, max(sizes) // 4 + 1 * MB, name)

    def test_control_groups(self):
        groups = {row["name"]: row for row in report("group-stats")}
        found = 0
        for file in glob.glob("/sys/fs/cgroup/**/memory.*", recursive=True):
            folder, name = os.path.split(file)
            if name not in ("memory.max", "memory.limit_in_bytes") or os.path.basename(folder) not in groups:
                continue
            if len(glob.glob(f"/sys/fs/cgroup/**/{os.path.basename(folder)}/{name}", recursive=True)) > 1:
                continue  # several groups have this name
            with open(file, encoding="utf-8") as text:
                limit = text.read().strip()
            if limit.isdigit() and int(limit) < 1 << 62:
                self.assertEqual(int(groups[os.path.basename(folder)]["max"]), int(limit) // 1024, folder)
                found += 1
        if found == 0:
            self.skipTest("no control group here has a limit")


if __name__ == "__main__":
    machines.main()
