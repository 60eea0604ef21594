# SPDX-License-Identifier: MIT
"""Commands that change one package wait for each other, for a while, and say so."""

import fcntl
import json
import os
import subprocess
import unittest

import kraddontest
from kraddontest import KRADDON

PIXEL = bytes.fromhex(
    "89504e470d0a1a0a0000000d49484452000000010000000108060000001f15c489"
    "0000000d49444154789c63f8cfc0f01f00050001ff5a9ae1d30000000049454e44ae426082")
PROJECT = '[package]\nname = "Wave Tools"\nversion = "1.2"\nauthor = "Ada Lind"\nsummary = "s"\n'
LICENSE = json.dumps({"type": "MIT", "text": "terms"})
COMMANDS = [
    ["create", "p.kraddon", "src", "--name", "x", "--force"],
    ["build", "project", "-o", "p.kraddon", "--force"],
    ["set", "p.kraddon", "properties", "summary=other"],
    ["unset", "p.kraddon", "license"],
    ["screenshot", "p.kraddon", "pixel.png"],
    ["add", "p.kraddon", "src/a.m", "--into", "more"],
    ["remove", "p.kraddon", "a.m"],
    ["mv", "p.kraddon", "a.m", "z.m"],
    ["mkdir", "p.kraddon", "a/new/folder"],
    ["call", "addonSetLicense", "p.kraddon", LICENSE],
]
LOCK = ".p.kraddon.change.tmp"
WAITING = "waiting for package 'p.kraddon': another command is changing it\n"
SET = ("set", "p.kraddon", "properties", "summary=other")


class Locks(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.tree({"a.m": "disp(1)"})
        self.write("pixel.png", PIXEL)
        self.write("project/kraddon.toml", PROJECT)
        self.ok("create", "p.kraddon", "src", "--name", "Wave Tools")
        self.ok("set", "p.kraddon", "license", "text=first")
        self.content = self.path("p.kraddon").read_bytes()

    def hold(self):
        """Holds the lock as another command would; closing the file lets go."""
        lock = open(self.path(LOCK), "wb")
        self.addCleanup(lock.close)
        fcntl.flock(lock, fcntl.LOCK_EX)
        return lock

    def start(self, *words):
        return subprocess.Popen([KRADDON, *words], cwd=self.folder, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, env=self.environment())

    def each(self):
        for words in COMMANDS:
            self.write("p.kraddon", self.content)
            yield words

    def test_command_that_waits_says_for_what(self):
        for words in self.each():
            with self.subTest(command=words[0]):
                lock = self.hold()
                process = self.start(*words)
                line = process.stderr.readline().decode()
                lock.close()

                _, errors = process.communicate(timeout=120)

                self.assertEqual(line, f"kraddon: {words[0]}: {WAITING}")
                self.assertNotIn(b"waiting", errors)
                self.assertEqual(process.returncode, 0, errors)

    def test_command_that_waits_is_silent_if_asked(self):
        self.hold()
        result = self.run_kraddon(*SET, "--quiet", "--lock-timeout", "2")
        self.assertEqual(result.errors.count("\n"), 2, result.errors)
        self.assertNotIn("waiting", result.errors)

    def test_command_fails_after_the_time_that_it_may_wait(self):
        before = self.path("p.kraddon").read_bytes()
        self.hold()
        for words in COMMANDS:
            with self.subTest(command=words[0]):
                self.fails(*words, "--lock-timeout", "0",
                           message="cannot lock package 'p.kraddon': another command is still "
                           "changing it after 0 seconds",
                           hint="--lock-timeout SECONDS waits longer")
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)

    def test_time_to_wait_is_a_number_of_seconds(self):
        for value in ("x", "-1", "1.5", "1000001", ""):
            self.misused(*SET, "--lock-timeout", value, command="set",
                         message=f"bad value of --lock-timeout '{value}': expected a whole number "
                         "from 0 to 1000000")

    def test_command_that_changes_nothing_does_not_wait(self):
        self.hold()
        for words in (("info", "p.kraddon"), ("get", "p.kraddon", "license"),
                      ("extract", "p.kraddon", "-d", "out"), ("verify", "p.kraddon", "-q"),
                      ("remove", "p.kraddon", "a.m", "--dry-run"),
                      ("call", "addonGetLicense", "p.kraddon")):
            self.assertEqual(self.run_kraddon(*words).code, 0, words)

    def test_lock_on_the_package_itself_holds_up_nobody(self):
        with open(self.path("p.kraddon"), "rb") as package:
            fcntl.flock(package, fcntl.LOCK_EX)
            for words in self.each():
                self.assertEqual(self.run_kraddon(*words, "--lock-timeout", "0").code, 0, words)

    def test_commands_leave_no_lock_behind(self):
        before = self.names()
        for words in self.each():
            self.assertEqual(self.run_kraddon(*words).code, 0, words)
        self.assertEqual(self.names(), before)

    def test_lock_that_a_killed_command_left_holds_up_nobody(self):
        self.write(LOCK)
        self.ok(*SET, "--lock-timeout", "0")
        self.assertNotIn(LOCK, self.names())

    def test_lock_is_the_same_through_a_link(self):
        self.path("sub").mkdir()
        self.path("sub/link").symlink_to("../p.kraddon")
        self.hold()
        self.assertIn("cannot lock package 'sub/link'",
                      self.run_kraddon("set", "sub/link", "license", "text=x", "--lock-timeout",
                                       "0").errors)

    def test_lock_in_the_folder_is_not_packed(self):
        self.write("src/.a.m.change.tmp")
        self.ok("create", "src/new.kraddon", "src", "--name", "x")
        self.assertEqual(self.listing("src/new.kraddon"), ["a.m"])

    def test_lock_of_another_user_that_cannot_be_opened_is_named(self):
        self.folder.chmod(0o777)
        self.path("p.kraddon").chmod(0o666)
        lock = self.write(LOCK)
        lock.chmod(0o000)
        message = (f"cannot open lock file '{self.folder.resolve() / LOCK}': Permission denied")
        self.fails(*SET, "--lock-timeout", "0", message=message,
                   hint="remove it if no other command is changing the package",
                   **self.without_privilege())

    @unittest.skipUnless(os.geteuid() == 0, "needs root, to act as two users")
    def test_writers_of_one_group_share_the_lock(self):
        self.folder.chmod(0o777)
        self.path("p.kraddon").chmod(0o664)
        os.chown(self.path("p.kraddon"), 1, 12345)
        somebody = {**self.without_privilege(), "extra_groups": [12345]}
        lock = self.hold()
        os.chown(lock.fileno(), 1, 12345)
        os.chmod(lock.fileno(), 0o220)
        self.fails(*SET, "--lock-timeout", "0", hint="--lock-timeout SECONDS waits longer",
                   message="cannot lock package 'p.kraddon': another command is still changing it "
                   "after 0 seconds", **somebody)
        lock.close()
        self.ok(*SET, "--lock-timeout", "0", **somebody)


if __name__ == "__main__":
    kraddontest.main()
