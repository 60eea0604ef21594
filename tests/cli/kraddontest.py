# SPDX-License-Identifier: MIT
"""Runs the real program in a folder of its own and compares what comes out."""

import itertools
import json
import os
import pathlib
import pty
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

KRADDON = os.environ["KRADDON"]
NOBODY = 65534
RUNS = itertools.count()
needs_proc = unittest.skipUnless(os.path.isdir(f"/proc/{os.getpid()}"), "needs /proc")


class Result:
    """What a run left: exit code, and both outputs as bytes."""

    def __init__(self, code, out, err):
        self.code, self.out, self.err = code, out, err

    @property
    def text(self):
        return self.out.decode()

    @property
    def errors(self):
        return self.err.decode()

    @property
    def json(self):
        return json.loads(self.out, object_pairs_hook=_refuse_repeated)


def _refuse_repeated(pairs):
    names = [name for name, _ in pairs]
    assert len(names) == len(set(names)), f"repeated member in {names}"
    return dict(pairs)


class CliTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kraddon-cli-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)

    def environment(self, extra=None):
        env = {key: value for key, value in os.environ.items()
               if key not in ("SOURCE_DATE_EPOCH", "NO_COLOR", "TERM")}
        env.update(extra or {})
        # Looking for leaks takes longer than most commands do: one run in four is looked at.
        if next(RUNS) % 4 and "ASAN_OPTIONS" in env:
            env["ASAN_OPTIONS"] += ":detect_leaks=0"
        return env

    def without_privilege(self):
        """Words for run_kraddon() that make it run as a user whom file permissions bind."""
        if os.geteuid() != 0:
            return {}
        # A build that measures coverage writes its counters wherever it may, as that user too.
        counters = tempfile.TemporaryDirectory(prefix="kraddon-counters-")
        self.addCleanup(counters.cleanup)
        os.chmod(counters.name, 0o777)
        return {"user": NOBODY, "group": NOBODY, "extra_groups": [],
                "env": {"GCOV_PREFIX": counters.name}}

    def run_kraddon(self, *words, stdin=b"", env=None, stdout=subprocess.PIPE, prefix=(), **kw):
        done = subprocess.run([*prefix, KRADDON, *map(os.fsencode, words)], cwd=self.folder,
                              input=stdin, stdout=stdout, stderr=subprocess.PIPE,
                              env=self.environment(env), timeout=120, check=False, **kw)
        return Result(done.returncode, done.stdout, done.stderr)

    def ok(self, *words, **kw):
        """Runs it, expects success and silence on standard error."""
        result = self.run_kraddon(*words, **kw)
        self.assertEqual((result.code, result.errors), (0, ""))
        return result

    def fails(self, *words, message=None, hint=None, **kw):
        """Runs it, expects exit code 1, one line of error, nothing on standard output."""
        result = self.run_kraddon(*words, **kw)
        self.assertEqual(result.code, 1, result.errors)
        self.assertEqual(result.out, b"")
        lines = result.errors.splitlines()
        self.assertEqual(len(lines), 2 if hint else 1, result.errors)
        self.assertTrue(lines[0].startswith(f"kraddon: {words[0]}: "), lines[0])
        if message is not None:
            self.assertEqual(lines[0], f"kraddon: {words[0]}: {message}")
        if hint:
            self.assertEqual(lines[1], f"hint: {hint}")
        return result

    def misused(self, *words, message, command=None, **kw):
        """Runs it, expects exit code 2, the line and then the usage of the command."""
        result = self.run_kraddon(*words, **kw)
        self.assertEqual((result.code, result.out), (2, b""), result.errors)
        lines = result.errors.splitlines()
        command = words[0] if command is None else command
        self.assertEqual(lines[0], f"kraddon: {command + ': ' if command else ''}{message}")
        self.assertTrue(any(line.startswith(f"usage: kraddon {command}") for line in lines))
        return result

    def open_terminal(self):
        """Both ends of a new terminal. A bare container has none: the test is left out there."""
        try:
            return pty.openpty()
        except OSError as error:
            self.skipTest(f"needs a terminal: {error}")

    def on_terminal(self, *words, env=None, code=0):
        """What the program prints when its standard output is a terminal."""
        master, slave = self.open_terminal()
        process = subprocess.Popen([KRADDON, *words], cwd=self.folder, stdout=slave,
                                   stderr=subprocess.DEVNULL, env=self.environment(env))
        os.close(slave)
        text = b""
        try:
            while chunk := os.read(master, 65536):
                text += chunk
        except OSError:  # the other end is closed
            pass
        os.close(master)
        self.assertEqual(process.wait(60), code)
        return text

    def path(self, name):
        return self.folder / name

    def write(self, name, content=""):
        path = self.path(name)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def tree(self, files, folder="src"):
        """Makes files ({path: content}; a path that ends in '/' is an empty folder)."""
        for name, content in files.items():
            if name.endswith("/"):
                self.path(f"{folder}/{name}").mkdir(parents=True)
            else:
                self.write(f"{folder}/{name}", content)

    def package(self, name="p.kraddon", files=None, *words):
        """A package with the given files."""
        self.tree(files or {}, f"{name}.src")
        self.path(f"{name}.src").mkdir(exist_ok=True)
        self.ok("create", name, f"{name}.src", "--name", "Wave Tools", "--timestamp", "1700000000",
                *words)
        return self.path(name)

    def listing(self, name="p.kraddon", *words):
        return self.ok("list", name, *words).text.splitlines()

    def entries(self, name="p.kraddon"):
        with zipfile.ZipFile(self.path(name)) as archive:
            self.assertIsNone(archive.testzip())
            return {entry.filename: archive.read(entry) for entry in archive.infolist()}

    def raw_entries(self, name="p.kraddon"):
        """Every entry as it lies in the file: local header, name, extra field and packed data."""
        found = {}
        content = self.path(name).read_bytes()
        with zipfile.ZipFile(self.path(name)) as archive:
            for entry in archive.infolist():
                start = entry.header_offset
                sizes = [int.from_bytes(content[start + at:start + at + 2], "little")
                         for at in (26, 28)]
                end = start + 30 + sum(sizes) + entry.compress_size
                found[entry.filename] = content[start:end]
        return found

    def assert_entries_kept(self, before, *changed, name="p.kraddon"):
        """The entries of `before` (raw_entries) are there, byte for byte, but for those that are
        named and those that speak of others."""
        now = self.raw_entries(name)
        free = {"[Content_Types].xml", "_rels/.rels", "metadata/fileTree.xml", *changed}
        for entry, raw in before.items():
            if entry not in free:
                self.assertEqual(now.get(entry), raw, entry)

    def assert_sound(self, name="p.kraddon"):
        done = subprocess.run(["unzip", "-tqq", self.path(name)], capture_output=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.entries(name)

    def is_writing(self, process, folder="."):
        """Whether the program has a file in the making in the folder: one without a name or, where
        there are none, one with a temporary name."""
        place = os.path.realpath(self.path(folder))
        try:
            files = [os.readlink(f"/proc/{process.pid}/fd/{each}")
                     for each in os.listdir(f"/proc/{process.pid}/fd")]
        except OSError:  # it is over, or there is no /proc
            files = []
        if any(os.path.dirname(file) == place and file.endswith(" (deleted)") for file in files):
            return True
        return any(name.startswith(".") and name.endswith(".tmp") and
                   not name.endswith(".change.tmp") for name in self.names(folder))

    def names(self, folder="."):
        return sorted(os.listdir(self.path(folder)))


def main(verbosity=1):
    """Runs the tests, and names those that were left out; exits with 77 if all were."""
    result = unittest.main(exit=False, verbosity=verbosity).result
    for test, reason in result.skipped:
        print(f"left out: {test.id()}: {reason}")
    if not result.wasSuccessful():
        sys.exit(1)
    sys.exit(77 if 0 < result.testsRun <= len(result.skipped) else 0)
