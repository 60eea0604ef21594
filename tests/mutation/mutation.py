# SPDX-License-Identifier: MIT
"""Changes the code in many places, one at a time, and counts how many changes the tests notice.

    mutation.py [--count N] [--seed N] [--folder FOLDER]... [--seconds N]

All changes are compiled into one build; the environment selects one. A change is tried with the
cases that reach its place, the quickest first: those of the unit and gateway tests, then the
scripts. The result of each change is kept in build/mutation, so that a run that was
stopped goes on where it ended. Prints the score, and each change that no test noticed.
"""

import argparse
import collections
import concurrent.futures
import json
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading

import sites

ROOT = pathlib.Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "mutation"
SOURCE = WORK / "source"
BUILD = SOURCE / "build" / "release"
FOLDERS = ["opc/zippackage", "opc/model", "opc/plservices", "addon/packaging"]
PROGRAMS = {"unit", "gateway"}  # labels of the tests that are programs ...
SCRIPTS = {"cli", "fault", "interop"}  # ... and of those that are scripts
PROCESSORS = len(os.sched_getaffinity(0))
# More are chosen than are wanted, since some do not compile.
SPARE = 1.3
# Cases that one process runs. If none of them notices a change, the next ones are run.
CASES_AT_ONCE = 60


class Case:
    """A case of a test program or of a script, the CPU seconds that it takes, and what it reaches."""

    def __init__(self, words, name, environment, seconds=0.0, reached=()):
        self.words, self.name, self.environment = words, name, environment
        self.seconds, self.reached = seconds, set(reached)

    def is_scenario(self):
        return len(self.words) > 1

    def stored(self):
        return [self.words, self.name, self.environment, self.seconds, sorted(self.reached)]


def command(cases):
    """What runs these cases, which are of one program, and stops at the first failure."""
    first = cases[0]
    names = [case.name for case in cases]
    if first.is_scenario():
        return [*first.words, "-f", *names]
    return [*first.words, "--gtest_fail_fast", "--gtest_filter=" + ":".join(names)]


def run(words, environment, seconds):
    """The exit code, negative for a signal, and the CPU seconds. Ends the run after that many."""
    def limit():
        resource.setrlimit(resource.RLIMIT_CPU, (int(seconds) + 1, int(seconds) + 2))
        resource.setrlimit(resource.RLIMIT_FSIZE, (8 << 30, 8 << 30))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    with tempfile.TemporaryDirectory(dir=WORK, ignore_cleanup_errors=True) as folder:
        os.chmod(folder, 0o755)
        process = subprocess.Popen(
            words, cwd=folder, env={**os.environ, **environment, "TMPDIR": folder},
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            start_new_session=True, preexec_fn=limit)
        # A run that waits for something takes no CPU time.
        end = threading.Timer(300 + 10 * seconds, os.killpg, (process.pid, signal.SIGKILL))
        end.start()
        _, status, usage = os.wait4(process.pid, 0)
        end.cancel()
        process.returncode = os.waitstatus_to_exitcode(status)
        return process.returncode, usage.ru_utime + usage.ru_stime


def copy_sources():
    shutil.rmtree(SOURCE, ignore_errors=True)
    SOURCE.mkdir(parents=True)
    files = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, check=True, capture_output=True).stdout
    subprocess.run(["cp", "--parents", "-t", SOURCE, *filter(None, files.split(b"\0"))], cwd=ROOT,
                   check=True)
    for folder in FOLDERS:
        lists = SOURCE / folder / "CMakeLists.txt"
        lists.write_text("add_compile_options(-w)\n" + lists.read_text())


def build(chosen):
    """Builds until all sources compile, without the changes that do not. Returns the number of these."""
    subprocess.run(["cmake", "--preset", "release-tests"], cwd=SOURCE, check=True,
                   stdout=subprocess.DEVNULL)
    left_out = 0
    while True:
        sites.write(ROOT, SOURCE, chosen)
        done = subprocess.run(["ninja", "-C", BUILD, "-k", "0"], capture_output=True, text=True, check=False)
        if done.returncode == 0:
            return left_out
        wrong = {(os.path.relpath(os.path.join(BUILD, file), SOURCE), int(line)) for file, line in
                 re.findall(r"^(\S+?):(\d+):\d+: error", done.stdout, re.M)}
        numbers = [number for number, site in enumerate(chosen) if site is not None and
                   (site.file, site.line) in wrong]
        if not numbers:
            sys.exit(done.stdout[-5000:])
        for file in {chosen[number].file for number in numbers}:
            shutil.copy(ROOT / file, SOURCE / file)
        for number in numbers:
            chosen[number] = None
        left_out += len(numbers)


def output(words, environment):
    return subprocess.run(words, env={**os.environ, **environment}, check=True, capture_output=True,
                          text=True).stdout


def cases_of(words, environment):
    """The names of the cases of a program or a script."""
    if len(words) > 1:
        listing = ("import sys, unittest; sys.path.insert(0, sys.argv[1]);"
                   "suites = [unittest.defaultTestLoader.loadTestsFromName(sys.argv[2])]\n"
                   "for suite in suites:\n"
                   "  if isinstance(suite, unittest.TestSuite): suites.extend(suite)\n"
                   "  else: print(suite.id().partition('.')[2])")
        script = pathlib.Path(words[-1])
        yield from output([words[0], "-B", "-c", listing, script.parent, script.stem], environment).split()
        return
    suite = ""
    for line in output([*words, "--gtest_list_tests"], environment).splitlines():
        name = line.split("#")[0].strip()
        if line.startswith(" "):
            yield suite + name
        else:
            suite = name


def all_cases():
    for test in json.loads(output(["ctest", "--test-dir", BUILD, "--show-only=json-v1"], {}))["tests"]:
        properties = {entry["name"]: entry["value"] for entry in test.get("properties", [])}
        labels = set(properties.get("LABELS", []))
        words = [word for word in test["command"] if word not in ("--gtest_brief=1", "-v")]
        is_script = words[-1].endswith(".py")
        if not labels & (SCRIPTS if is_script else PROGRAMS) or len(words) > 1 and not is_script:
            continue
        if test["name"].startswith("install."):  # they build or install a copy
            continue
        environment = dict(pair.split("=", 1) for pair in properties.get("ENVIRONMENT", []))
        for name in cases_of(words, environment):
            yield Case(words, name, environment)


def learn(case):
    """Runs it without a change; returns it if it passes."""
    with tempfile.NamedTemporaryFile(dir=WORK, mode="r") as reached:
        os.chmod(reached.name, 0o666)
        code, case.seconds = run(command([case]), {**case.environment, "MUTANTS_REACHED": reached.name}, 300)
        case.reached = {int(line) for line in reached}
    return case if code == 0 else None


def groups(cases, seconds):
    """What one process runs, in the order to try: quick ones first, in all at most that many seconds."""
    programs = collections.defaultdict(list)
    for case in sorted(cases, key=lambda case: case.seconds):
        programs[tuple(case.words)].append(case)
    parts = [part[at:at + CASES_AT_ONCE] for part in programs.values()
             for at in range(0, len(part), CASES_AT_ONCE)]
    parts.sort(key=lambda part: (part[0].is_scenario(), sum(case.seconds for case in part)))
    for part in parts:
        seconds -= sum(case.seconds for case in part)
        if seconds < 0:
            return
        yield part


def is_noticed(number, cases, seconds):
    for part in groups([case for case in cases if number in case.reached], seconds):
        environment = {**part[0].environment, "MUTANT": str(number)}
        code, _ = run(command(part), environment, 20 + 10 * sum(case.seconds for case in part))
        if code not in (0, 77):
            return True
    return False


class Results:
    """What a run has found so far. A run with other changes or other sources begins anew."""

    def __init__(self, key):
        self.file, self.lock = WORK / "results.json", threading.Lock()
        self.data = json.loads(self.file.read_text()) if self.file.exists() else {}
        if self.data.get("key") != key:
            self.data = {"key": key, "noticed": {}}

    def save(self):
        with self.lock:
            new = self.file.with_suffix(".new")
            new.write_text(json.dumps(self.data))
            new.rename(self.file)

    def add(self, number, noticed):
        with self.lock:
            self.data["noticed"][str(number)] = noticed
        self.save()


def report(chosen, found, results):
    noticed = {int(number): value for number, value in results["noticed"].items()}
    reached = set().union(*(case[4] for case in results["cases"]))
    missed = [number for number in noticed if not noticed[number]]
    yield (f"{found} places; {len(noticed)} changed ({results['left_out']} more do not compile); "
           f"{len(results['cases'])} cases")
    yield f"noticed: {sum(noticed.values())} of {len(noticed)} ({100 * sum(noticed.values()) / max(1, len(noticed)):.1f} %)"
    yield "\nNot noticed:"
    for number in sorted(missed, key=lambda number: (chosen[number].file, chosen[number].line)):
        site = chosen[number]
        source = (ROOT / site.file).read_text().splitlines()[site.line - 1].strip()
        where = "" if number in reached else " (no test reaches it)"
        yield f"{number}: {site.file}:{site.line}: {site.kind}: {site.describe}{where}: {source}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--count", type=int, default=500)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--folder", action="append")
    parser.add_argument("--seconds", type=int, default=120, help="CPU time for one change, at most")
    options = parser.parse_args()

    WORK.mkdir(parents=True, exist_ok=True)
    found = sites.find_sites(ROOT, options.folder or FOLDERS, ROOT / "build" / "release")
    chosen = sites.choose(found, int(options.count * SPARE), random.Random(options.seed))
    results = Results([options.count, options.seed, sites.fingerprint(ROOT, chosen)])
    with concurrent.futures.ThreadPoolExecutor(PROCESSORS) as pool:
        if "cases" not in results.data:
            copy_sources()
            results.data["left_out"] = build(chosen)
            results.data["numbers"] = [number for number, site in enumerate(chosen) if site is not None]
            learned = [case for case in pool.map(learn, list(all_cases())) if case]
            results.data["cases"] = [case.stored() for case in learned]
            results.save()
        cases = [Case(*stored) for stored in results.data["cases"]]

        def try_one(number):
            if str(number) not in results.data["noticed"]:
                results.add(number, is_noticed(number, cases, options.seconds))
        list(pool.map(try_one, results.data["numbers"][:options.count]))

    print("\n".join(report(chosen, len(found), results.data)))


if __name__ == "__main__":
    main()
