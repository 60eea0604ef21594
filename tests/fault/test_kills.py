# SPDX-License-Identifier: MIT
"""Signals at any moment leave the old file or the new one, never anything else."""

import os
import pathlib
import random
import shutil
import signal
import subprocess
import tempfile
import time

ON_DISK = tempfile.gettempdir()  # before faulttest chooses memory

import faulttest  # noqa: E402
from faulttest import KRADDON, FaultTest, needs_shim, snapshot  # noqa: E402

MOMENTS = 300 if faulttest.FULL else 8
GENTLE = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
FAMILIES = ("open,nameless,read,write,copy,sync,foldersync,rename,renamekeeping,truncate,close,"
            "unlink,attribute,extended,folder,listing,status")


class Kills(FaultTest):

    def is_stray(self, command, name):
        """A temporary file of the command, which only SIGKILL may leave."""
        target = command.target.rstrip("/")
        return (name.startswith((f".{target}.", f"{target}.", ".kraddon."))
                or (command.makes_folder and "/." in name)) and name not in self.after

    def without_strays(self, command, now):
        return {name: value for name, value in now.items() if not self.is_stray(command, name)}

    def assert_killed(self, command, code, errors, number, where):
        now = snapshot(self.folder)
        try:
            self.assertIn(code, (-number, 0), f"{where}: {errors}")
            if code == 0:
                self.assert_new(command, now, where)
            elif number == signal.SIGKILL and command.makes_folder:
                # The killed process could not remove the file that it was writing.
                self.assert_all_but_one_whole(command, now, where)
            elif number == signal.SIGKILL:
                self.assert_old_or_new(command, self.without_strays(command, now), where)
            else:
                self.assertEqual(errors, b"", where)
                self.assert_old_or_new(command, now, where)
            if number == signal.SIGKILL:
                self.assert_undisturbed(command, where)
        finally:
            self.restore()

    def assert_all_but_one_whole(self, command, now, where):
        odd = [key for key in self.differing(self.without_strays(command, now), self.before)
               if not self.is_new(command, now, key)]
        self.assertLessEqual(len(odd), 1, f"{where}: {odd} are half-done")

    def assert_undisturbed(self, command, where):
        """The same command works although the killed one left its file."""
        if command.makes_folder:
            shutil.rmtree(self.path(command.target), ignore_errors=True)
        else:
            self.path(command.target).unlink(missing_ok=True)
        if command.target in self.before:
            mode, data = self.before[command.target]
            self.write(command.target, data).chmod(mode)
        again = self.run_kraddon(*command.words)
        self.assertEqual((again.code, again.errors), (0, ""), f"{where}, then once more")


@needs_shim
class AtEveryCall(Kills):
    """The signal arrives just before the first system call, before the second, and so on."""

    def test_leave_the_old_file_or_the_new_one(self):
        self.make_inputs()
        stride = 1 if faulttest.FULL else 17
        for command in faulttest.known_commands():
            self.learn(command)
            if command.makes_folder:
                continue  # tested below, with a large file
            for number in (signal.SIGKILL, *GENTLE):
                with self.subTest(command=command.name, signal=number.name):
                    self.sweep(command, number, stride)

    def test_leave_no_half_file_of_an_extraction(self):
        self.make_huge_inputs()
        for command in faulttest.known_commands(is_huge=True):
            self.learn(command)
            for number in (signal.SIGKILL, signal.SIGTERM):
                with self.subTest(command=command.name, signal=number.name):
                    self.sweep(command, number, 1 if faulttest.FULL else 23)

    def sweep(self, command, number, stride):
        at = random.randrange(stride) + 1
        while True:
            where = f"{command.name}, {number.name} at call {at}"
            result = self.run_failing(f"{FAMILIES}:{at}:{number.name}", *command.words)
            if not self.hit:
                self.assertEqual(result.code, 0, where)
                self.restore()
                return
            self.assert_killed(command, result.code, result.err, number, where)
            at += stride


class AtRandomMoments(Kills):

    def make_inputs(self):
        super().make_inputs()
        # Large enough to take a while.
        self.write("src/large.bin", bytes(range(256)) * 20000 + self.random_bytes(6 << 20))
        self.ok("create", "p.kraddon", "src", "--name", "x", "--force", *faulttest.TIME)
        self.ok("set", "p.kraddon", "license", "text=first", *faulttest.TIME)
        self.ok("screenshot", "p.kraddon", "first.png", *faulttest.TIME)
        self.before = snapshot(self.folder)

    def random_bytes(self, size):
        return random.Random(1).randbytes(size)

    def test_leave_the_old_file_or_the_new_one(self):
        self.write("first.png", faulttest.PIXEL)
        self.make_inputs()
        for command in faulttest.known_commands():
            with self.subTest(command=command.name):
                self.shoot(command)

    def shoot(self, command):
        self.learn(command)
        began = time.monotonic()
        self.run_kraddon(*command.words)
        lasts = time.monotonic() - began
        self.restore()
        for moment in range(MOMENTS):
            number = (signal.SIGKILL, *GENTLE)[moment % 4]
            delay = random.uniform(0, lasts)
            process = subprocess.Popen([KRADDON, *command.words], cwd=self.folder,
                                       stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                       env=self.environment())
            time.sleep(delay)
            process.send_signal(number)
            _, errors = process.communicate(timeout=120)
            self.assert_killed(command, process.returncode, errors, number,
                               f"{command.name}, {number.name} after {delay:.4f} s")


class Left(FaultTest):
    """What stays of killed commands: at most the names that existed for a moment."""

    COMMANDS = (["create", "p.kraddon", "src", "--name", "x", "--force"],
                ["set", "p.kraddon", "properties", "summary=other"],
                ["add", "p.kraddon", "src/a.m", "--replace"],
                ["get", "p.kraddon", "properties", "-o", "first.png"],
                ["call", "addonSetLicense", "p.kraddon", '{"type":"MIT","text":"t"}'])

    def test_of_many_kills_are_few_names(self):
        kills = 1000 if faulttest.FULL else 100
        for folder in {tempfile.gettempdir(), ON_DISK}:
            with self.subTest(folder=folder):
                if not can_be_nameless(folder):
                    self.skipTest("needs a file system with files without a name")
                self.folder = pathlib.Path(tempfile.mkdtemp(dir=folder))
                self.addCleanup(shutil.rmtree, self.folder)
                self.make_inputs()
                self.assertLessEqual(self.kill(kills), 5)
                self.ok("verify", "p.kraddon", "-q")

    def kill(self, kills):
        """Kills commands at random moments; returns the number of names that were not there."""
        lasts = {}
        for words in self.COMMANDS:
            began = time.monotonic()
            self.ok(*words)
            lasts[words[0]] = time.monotonic() - began
        known = set(self.names())
        for number in range(kills):
            words = self.COMMANDS[number % len(self.COMMANDS)]
            process = subprocess.Popen([KRADDON, *words], cwd=self.folder, env=self.environment())
            time.sleep(random.uniform(0, lasts[words[0]]))
            process.kill()
            process.wait()
        return len(set(self.names()) - known)


def can_be_nameless(folder):
    try:
        os.close(os.open(folder, os.O_TMPFILE | os.O_RDWR))
    except OSError:
        return False
    return os.path.isdir("/proc/self/fd")


if __name__ == "__main__":
    faulttest.main()
