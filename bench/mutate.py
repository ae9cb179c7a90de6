"""Runs the tests on mutants of the sources; scripts/mutate describes the options.

build/mutate contains a copy of the tracked files (source), its build (build), and a copy of both without a mutant
(pristine). After each mutant, files that differ from pristine are restored with their time stamps. For the next mutant,
ninja then compiles only the mutated file, and earlier mutants have no effect.
"""

import argparse
import ctypes
import fcntl
import filecmp
import os
import re
import resource
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import time

import mutants

WORK = "build/mutate"
SOURCE = f"{WORK}/source"
BUILD = f"{WORK}/build"
PRISTINE = f"{WORK}/pristine"
RESULTS = f"{WORK}/results.tsv"
LOG = f"{WORK}/tests.log"
# The daily tests. The first failure ends the run.
TESTS = f"ctest --test-dir {BUILD} -LE slow -j2 --stop-on-failure"
FLAGS = "-O1 -g0 -DNDEBUG"
COMPILE_SECONDS = 600
# The time limit of a mutant: these seconds plus a multiple of the time of the tests without mutants.
EXTRA_SECONDS, SLOWER = 30, 3
# An endless allocation must fail before the machine runs out of memory.
MEMORY_BYTES = 4 << 30
KILLED = ("killed", "hang")
COUNTED = KILLED + ("survived",)
PR_SET_CHILD_SUBREAPER = 36


class Stop(Exception):
    """An error to show without a traceback."""


def parse_arguments():
    parser = argparse.ArgumentParser(prog="scripts/mutate", description="Measures how much the tests notice.")
    parser.add_argument("--seed", type=int, default=1, metavar="N", help="which mutants to draw (default: 1)")
    parser.add_argument("--count", type=int, default=100, metavar="N", help="how many mutants (default: 100)")
    parser.add_argument("--tests", default=TESTS, metavar="COMMAND", help=f"runs the tests (default: {TESTS})")
    parser.add_argument("--targets", default="daily_tests", metavar="NAMES", help="what the tests need built (default: daily_tests)")
    parser.add_argument("--only", metavar="FILE", help="run the mutants that this file names")
    parser.add_argument("--list", action="store_true", help="print the names of the drawn mutants, run nothing")
    parser.add_argument("--compare", nargs=2, metavar=("OLD", "NEW"), help="compare two files of results")
    arguments = parser.parse_args()
    if arguments.count < 1:
        parser.error(f"--count {arguments.count}: must be at least 1")
    return arguments


# Results


def read_results(path):
    results = {}
    try:
        with open(path, encoding="utf-8") as lines:
            for number, line in enumerate(lines, 1):
                fields = line.rstrip("\n").split("\t")
                if line.startswith("#") or fields == [""]:
                    continue
                if len(fields) != 4:
                    raise Stop(f"{path}:{number}: {len(fields)} fields (expected 4)")
                results[fields[0]] = fields[1]
    except OSError as error:
        raise Stop(f"{path}: {error.strerror}") from error
    return results


def compare(old_path, new_path):
    old, new = read_results(old_path), read_results(new_path)
    lost = [name for name in old if old[name] in KILLED and new.get(name) == "survived"]
    both = [name for name in old if old[name] == "survived" and new.get(name) == "survived"]
    for title, names in ((f"killed in {old_path}, survived in {new_path}", lost), ("survived in both", both)):
        print(f"{len(names)} {title}")
        print("".join(f"  {name}\n" for name in names), end="")
    alone = len(set(old) ^ set(new))
    if alone:
        print(f"{alone} in only one of the files")
    return 1 if lost else 0


# The copy


def run_quietly(command, what, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)
    if done.returncode != 0:
        raise Stop(f"{done.stdout}\nscripts/mutate: {what} failed")
    return done.stdout


def tracked_files():
    names = run_quietly(["git", "ls-files", "-z"], "git ls-files").split("\0")
    return [name for name in names if name and os.path.lexists(name)]


def copy_source(names):
    """Brings the copy up to date. A file that has not changed keeps its time stamp, a changed one gets a new one."""
    wanted = set(names)
    for folder, _, files in os.walk(SOURCE):
        for file in files:
            path = os.path.join(folder, file)
            if os.path.relpath(path, SOURCE) not in wanted:
                os.remove(path)
    for name in names:
        target = os.path.join(SOURCE, name)
        if os.path.lexists(target):
            if os.path.islink(name) or os.path.islink(target):
                same = os.path.islink(name) and os.path.islink(target) and os.readlink(name) == os.readlink(target)
            else:
                same = os.path.isfile(target) and filecmp.cmp(name, target, shallow=False)
                same = same and os.stat(name).st_mode == os.stat(target).st_mode
            if same:
                continue
            os.remove(target)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        shutil.copy(name, target, follow_symlinks=False)


def entries_of(top):
    """Maps the files and folders of a tree to values that differ if one has changed."""
    entries = {}
    waiting = [""]
    while waiting:
        folder = waiting.pop()
        with os.scandir(os.path.join(top, folder)) as found:
            for entry in found:
                name = os.path.join(folder, entry.name)
                about = entry.stat(follow_symlinks=False)
                if stat.S_ISDIR(about.st_mode):
                    entries[name] = ("folder",)
                    waiting.append(name)
                elif stat.S_ISLNK(about.st_mode):
                    entries[name] = ("link", os.readlink(entry.path))
                elif stat.S_ISREG(about.st_mode):
                    entries[name] = ("file", about.st_mode, about.st_size, about.st_mtime_ns)
                else:
                    entries[name] = ("other",)
    return entries


def mirror(source, target):
    """Makes a tree equal to another one, with time stamps. Returns how many entries differed."""
    os.makedirs(target, exist_ok=True)
    wanted, present = entries_of(source), entries_of(target)
    differing = 0
    for name in sorted(present, reverse=True):  # what is in a folder comes before the folder
        if present[name] != wanted.get(name):
            differing += 1
            path = os.path.join(target, name)
            os.rmdir(path) if present[name] == ("folder",) else os.remove(path)
    for name in sorted(wanted):
        if wanted[name] == present.get(name) or wanted[name] == ("other",):
            continue
        differing += 1
        path = os.path.join(target, name)
        if wanted[name] == ("folder",):
            os.mkdir(path)
        else:
            shutil.copy2(os.path.join(source, name), path, follow_symlinks=False)
    return differing


def configure():
    """Configures the build, again if the compilers or the flags have changed since the last time."""
    command = ["cmake", "-S", SOURCE, "-B", BUILD, "-G", "Ninja", "-D", "CMAKE_BUILD_TYPE=RelWithDebInfo"]
    for language in ("C", "CXX"):
        command += ["-D", f"CMAKE_{language}_FLAGS_RELWITHDEBINFO={FLAGS}"]
    said = "\n".join(command + [f"{name}={os.environ.get(name, '')}" for name in ("CC", "CXX", "CFLAGS", "CXXFLAGS")])
    stamp = f"{WORK}/configured"
    try:
        with open(stamp, encoding="utf-8") as file:
            if file.read() == said and os.path.exists(f"{BUILD}/build.ninja"):
                return
    except FileNotFoundError:
        pass
    shutil.rmtree(BUILD, ignore_errors=True)
    run_quietly(command, "configuring")
    with open(stamp, "w", encoding="utf-8") as file:
        file.write(said)


def dependants(targets):
    """Maps each source file to the targets' object files that include it, as ninja knows after a build."""
    needed = set(run_quietly(["ninja", "-C", BUILD, "-t", "inputs", *targets], "ninja -t inputs").splitlines())
    found, target = {}, None
    root = os.path.realpath(SOURCE)
    for line in run_quietly(["ninja", "-C", BUILD, "-t", "deps"], "ninja -t deps").splitlines():
        if line.startswith("    "):
            path = os.path.realpath(os.path.join(BUILD, line.strip()))
            if target in needed:
                found.setdefault(os.path.relpath(path, root), []).append(target)
        elif ": #deps" in line:
            target = line.split(": #deps")[0]
    return found


# Running


def end_descendants():
    """Kills the processes that a test left behind. They are children of this process, which is their subreaper."""
    while True:
        with open(f"/proc/self/task/{os.getpid()}/children", encoding="ascii") as file:
            children = [int(word) for word in file.read().split()]
        for child in children:
            try:
                os.kill(child, signal.SIGKILL)
            except ProcessLookupError:
                pass
        try:
            while os.waitpid(-1, 0):
                pass
        except ChildProcessError:
            return


def run(command, log, seconds, **options):
    """Runs a command in a process group of its own. Returns its exit status, or None if it took too long."""
    with open(log, "wb") as output:
        process = subprocess.Popen(
            command,
            stdin=subprocess.DEVNULL,
            stdout=output,
            stderr=subprocess.STDOUT,
            start_new_session=True,
            **options,
        )
        try:
            return process.wait(seconds)
        except subprocess.TimeoutExpired:
            return None
        finally:
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.wait()
            end_descendants()


def limit_memory():
    resource.setrlimit(resource.RLIMIT_DATA, (MEMORY_BYTES, MEMORY_BYTES))


def ninja(targets, log, seconds):
    return run(["ninja", "-C", BUILD, "-j", str(os.cpu_count()), *targets], log, seconds, preexec_fn=limit_memory)


def run_tests(command, seconds):
    # Tests keep their files in TMPDIR, so removing it also removes the files of a killed test.
    with tempfile.TemporaryDirectory(prefix="mutate.", ignore_cleanup_errors=True) as scratch:
        os.chmod(scratch, 0o755)  # some tests run programs as another user
        environment = dict(os.environ, TMPDIR=scratch, GTEST_FAIL_FAST="1")
        return run(["sh", "-c", command], LOG, seconds, env=environment, preexec_fn=limit_memory)


def read_text(path):
    try:
        with open(path, encoding="utf-8", errors="replace") as file:
            return file.read()
    except FileNotFoundError:
        return ""


def name_killer():
    """The test that failed, by ctest's output, and the case of Google Test in it, by ctest's log."""
    failed = re.search(r"^\s+\d+ - (\S+) .*\(\w[^()]*\)", read_text(LOG), re.M)
    if not failed:
        return "the tests' command"
    output = read_text(f"{BUILD}/Testing/Temporary/LastTest.log").partition(f" Testing: {failed[1]}")[2]
    case = re.search(r"^\[  FAILED  \] (\w[\w/.]*)", output, re.M)
    if not case or case[1] == failed[1]:
        return failed[1]
    return f"{failed[1]} ({case[1]})"


def put_quick_tests_first():
    """Reverses the costs in ctest's records, because ctest starts with the most expensive test."""
    path = f"{BUILD}/Testing/Temporary/CTestCostData.txt"
    lines = read_text(path).split("\n")
    if "---" not in lines:
        return
    costs = [line.rsplit(" ", 2) for line in lines[: lines.index("---")]]
    highest = max((float(cost[2]) for cost in costs), default=0) + 1
    with open(path, "w", encoding="utf-8") as file:
        for name, runs, cost in costs:
            file.write(f"{name} {runs} {highest - float(cost):f}\n")
        file.write("---\n")


class Runner:
    def __init__(self, tests, targets):
        self.tests = tests
        self.targets = targets
        self.limit = None
        self.objects = {}

    def prepare(self, names):
        os.makedirs(SOURCE, exist_ok=True)
        copy_source(names)
        configure()
        print("Building without a mutant", flush=True)
        log = f"{WORK}/build.log"
        if ninja(self.targets, log, None) != 0:
            raise Stop(f"{read_text(log)}\nscripts/mutate: building without a mutant failed")
        self.objects = dependants(self.targets)
        print(f"Testing without a mutant: {self.tests}", flush=True)
        begin = time.monotonic()
        if run_tests(self.tests, None) != 0:
            raise Stop(f"{read_text(LOG)}\nscripts/mutate: the tests fail without a mutant")
        if "No tests were found" in read_text(LOG):
            raise Stop(f"scripts/mutate: no tests found by: {self.tests}")
        seconds = time.monotonic() - begin
        self.limit = EXTRA_SECONDS + SLOWER * seconds
        print(f"Passed in {seconds:.0f} s. Each mutant may take {self.limit:.0f} s.", flush=True)
        put_quick_tests_first()
        mirror(SOURCE, f"{PRISTINE}/source")
        mirror(BUILD, f"{PRISTINE}/build")

    def restore(self):
        # Restores the build first. In the other order, if the run ended between the two steps, the object of the mutant
        # would be newer than the restored source, and would stay in the build.
        mirror(f"{PRISTINE}/build", BUILD)
        mirror(f"{PRISTINE}/source", SOURCE)

    def try_mutant(self, mutant, source):
        """Returns the result, and what killed the mutant."""
        objects = self.objects.get(mutant.path, [])
        if not objects:
            return "equivalent", "nothing includes the file"
        with open(os.path.join(SOURCE, mutant.path), "w", encoding="utf-8") as file:
            file.write(mutant.apply(source))
        log = f"{WORK}/build.log"
        if ninja(objects, log, COMPILE_SECONDS) != 0:
            return "uncompilable", ""
        if all(filecmp.cmp(f"{BUILD}/{name}", f"{PRISTINE}/build/{name}", shallow=False) for name in objects):
            return "equivalent", "same objects"
        # The build runs some of the programs that it builds, for samples and manual pages.
        status = ninja(self.targets, log, self.limit)
        if status != 0:
            return ("hang" if status is None else "killed"), "the build"
        status = run_tests(self.tests, self.limit)
        if status is None:
            return "hang", "time limit"
        return ("killed", name_killer()) if status else ("survived", "")


def read_names(path, known):
    chosen = []
    try:
        with open(path, encoding="utf-8") as lines:
            for number, line in enumerate(lines, 1):
                name = line.split("\t")[0].strip()
                if not name or name.startswith("#"):
                    continue
                if name not in known:
                    raise Stop(f"{path}:{number}: no such mutant in this tree: {name}")
                chosen.append(known[name])
    except OSError as error:
        raise Stop(f"{path}: {error.strerror}") from error
    return chosen


def run_all(chosen, count, sources, arguments, names):
    runner = Runner(arguments.tests, arguments.targets.split())
    runner.prepare(names)
    tally, survivors, done = {}, [], 0
    begin = time.monotonic()
    with open(RESULTS, "w", encoding="utf-8") as results:
        results.write(f"# tests: {arguments.tests}\n#mutant\tresult\tby\tseconds\n")
        for mutant in chosen:
            if done == count:
                break
            start = time.monotonic()
            try:
                result, by = runner.try_mutant(mutant, sources[mutant.path])
            finally:
                runner.restore()
            seconds = time.monotonic() - start
            tally[result] = tally.get(result, 0) + 1
            done += result in COUNTED
            if result == "survived":
                survivors.append(mutant)
            place = f"{done}/{count}" if result in COUNTED else "-"
            print(f"{place:>9} {result:<12} {seconds:6.1f} s  {mutant.id}" + (f"  by {by}" if by else ""), flush=True)
            results.write(f"{mutant.id}\t{result}\t{by}\t{seconds:.1f}\n")
            results.flush()
    killed = sum(tally.get(result, 0) for result in KILLED)
    print(f"\n{done} mutants in {(time.monotonic() - begin) / 60:.1f} minutes:", end=" ")
    print(f"{killed} killed ({tally.get('hang', 0)} of them by the time limit), {len(survivors)} survived.")
    print(f"Not counted: {tally.get('uncompilable', 0)} do not compile, {tally.get('equivalent', 0)} change no object.")
    if done:
        print(f"Kill ratio: {100 * killed / done:.1f} %")
    for mutant in survivors:
        before, after = mutant.diff(sources[mutant.path])
        print(f"\n{mutant.id}\n{before}\n{after}")
    print(f"\nResults: {RESULTS}")


def main():
    arguments = parse_arguments()
    if arguments.compare:
        return compare(*arguments.compare)
    names = tracked_files()
    sources, found = {}, []
    for name in names:
        if name.startswith(("src/", "platkit/")) and name.endswith((".cc", ".h")):
            with open(name, encoding="utf-8", newline="") as file:
                sources[name] = file.read()
            found += mutants.find_mutants(name, sources[name])
    if arguments.only:
        chosen = read_names(arguments.only, {mutant.id: mutant for mutant in found})
        count = len(chosen)
    else:
        chosen, count = mutants.draw(found, arguments.seed), arguments.count
    if arguments.list:
        for mutant in chosen[:count]:
            print(mutant.id)
        return 0
    os.makedirs(WORK, exist_ok=True)
    with open(f"{WORK}/lock", "w", encoding="ascii") as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            raise Stop(f"scripts/mutate: another run works in {WORK}") from None
        ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
        signal.signal(signal.SIGTERM, lambda *_: sys.exit(128 + signal.SIGTERM))
        run_all(chosen, count, sources, arguments, names)
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (Stop, mutants.Unreadable) as error:
        sys.exit(str(error))
    except BrokenPipeError:
        sys.exit(1)
    except KeyboardInterrupt:
        sys.exit(128 + signal.SIGINT)
