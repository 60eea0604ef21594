# SPDX-License-Identifier: MIT
"""Runs the program under test and other programs in a temporary folder."""

import os
import shutil
import subprocess
import tempfile
import unittest

KRADDON = os.environ.get("KRADDON") or os.path.join(
    os.path.dirname(__file__), "..", "..", "build", "release", "bin", "kraddon")


class Outcome:
    """The result of a program. Output is bytes, since names in it may not be text."""

    def __init__(self, code, stdout, stderr, peak_kib):
        self.code = code
        self.stdout = stdout
        self.stderr = stderr
        self.peak_kib = peak_kib

    def __str__(self):
        return "exit code %d\n%s%s" % (
            self.code, self.stdout[-4000:].decode(errors="replace"),
            self.stderr[-4000:].decode(errors="replace"))


def run(*words, cwd=None, env=None):
    """Runs a program to its end. Does not raise an exception if the program fails."""
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
        child = subprocess.Popen(words, cwd=cwd, env=env, stdin=subprocess.DEVNULL,
                                 stdout=out, stderr=err)
        _, status, usage = os.wait4(child.pid, 0)
        child.returncode = os.waitstatus_to_exitcode(status)
        out.seek(0)
        err.seek(0)
        return Outcome(child.returncode, out.read(), err.read(), usage.ru_maxrss)


class ScratchCase(unittest.TestCase):
    """A test case with a folder of its own and functions that run programs there."""

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="kraddon-interop-", dir=os.environ.get("TMPDIR"))
        self.addCleanup(shutil.rmtree, self.folder)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def kraddon(self, *words, **options):
        """Runs kraddon, which must succeed."""
        outcome = run(KRADDON, *words, cwd=self.folder, **options)
        self.assertEqual(outcome.code, 0, "kraddon %s: %s" % (" ".join(map(str, words)), outcome))
        return outcome

    def succeeds(self, *words):
        """Runs another program, which must succeed."""
        outcome = run(*words, cwd=self.folder)
        self.assertEqual(outcome.code, 0, "%s: %s" % (words[0], outcome))
        return outcome
