# SPDX-License-Identifier: MIT
"""Kernels and file systems that lack a feature: the commands work without it."""

import os
import pathlib
import shutil
import time

import faulttest
from faulttest import KRADDON, FaultTest, needs_shim, snapshot

LACKING = [
    ("renamekeeping:1+:ENOSYS", "a rename that keeps what is there"),
    ("renamekeeping:1+:EINVAL", "a rename that keeps what is there"),
    ("renamekeeping:1+:EINVAL;link:1+:EPERM", "that, and links"),
    ("renamekeeping:1+:ENOSYS;link:1+:EOPNOTSUPP", "that, and links"),
    ("renamekeeping:1+:ENOSYS;link:1+:ENOSYS", "that, and links"),
    ("link:1+:EPERM", "links"),
    ("nameless:1+:EOPNOTSUPP;renamekeeping:1+:ENOSYS", "files without a name, and that"),
    ("nameless:1+:EISDIR;renamekeeping:1+:EINVAL;link:1+:EPERM", "all three"),
    ("copy:1+:ENOSYS", "copying within the kernel"),
    ("copy:1+:EXDEV", "copying within the kernel"),
    ("copy:1+:EOPNOTSUPP", "copying within the kernel"),
    ("copy:1+:EINVAL", "copying within the kernel"),
    ("copy:1+:EPERM", "copying within the kernel"),
    ("copy:2+:EIO", "copying within the kernel, after a while"),
    ("nameless:1+:EOPNOTSUPP", "files without a name"),
    ("nameless:1+:EINVAL", "files without a name"),
    ("foldersync:1+:EINVAL", "flushing of folders"),
    ("foldersync:1+:EOPNOTSUPP", "flushing of folders"),
    ("extended:1+:EOPNOTSUPP", "access control lists and attributes"),
    ("extended:1+:ENOSYS", "access control lists and attributes"),
    ("read,write,copy:1+:short", "long transfers"),
]


@needs_shim
class Lacking(FaultTest):

    def test_features_are_not_needed(self):
        self.make_inputs()
        for command in faulttest.known_commands():
            self.learn(command)
            for rules, what in LACKING:
                with self.subTest(command=command.name, rules=rules, lacking=what):
                    result = self.run_failing(rules, *command.words)
                    now = snapshot(self.folder)
                    self.restore(now)
                    self.assertEqual((result.code, result.errors), (0, ""))
                    self.assert_new(command, now, rules)

    def test_proc_is_not_needed(self):
        if shutil.which("unshare") is None or os.geteuid() != 0:
            self.skipTest("needs permission to mount")
        self.make_inputs()
        # The loader finds the program's folder in /proc, too.
        env = {"LD_LIBRARY_PATH": str(pathlib.Path(KRADDON).parent.parent / "lib")}
        for command in faulttest.known_commands():
            self.learn(command)
            with self.subTest(command=command.name):
                result = self.run_kraddon(*command.words, env=env, prefix=[
                    "unshare", "-m", "sh", "-c", 'mount -t tmpfs none /proc && exec "$@"', "sh"])
                now = snapshot(self.folder)
                self.restore(now)
                self.assertEqual((result.code, result.errors), (0, ""))
                self.assert_new(command, now, command.name)

    def test_what_a_kill_leaves_of_a_nameless_file_is_not_packed(self):
        # It has a name until it is removed, right after it was made.
        self.write("shot.png", faulttest.PIXEL + bytes(faulttest.HUGE_SIZE))
        self.path("kit").mkdir()
        self.ok("create", "kit/p.kraddon", "--name", "Wave Tools")
        self.run_failing("nameless:1+:EOPNOTSUPP;unlink:1:SIGKILL", "screenshot", "kit/p.kraddon",
                         "shot.png")
        left = [name for name in self.names("kit") if name != "p.kraddon"]
        self.assertEqual(len(left), 2)
        self.assertIn(".p.kraddon.change.tmp", left)

        self.ok("create", "q.kraddon", "kit", "--name", "x")
        self.assertEqual(self.ok("list", "q.kraddon").text, "p.kraddon\n")

    def test_what_a_killed_commit_left_is_removed_after_a_day(self):
        self.make_inputs()
        left, other = ".p.kraddon.abc123.tmp", ".q.kraddon.abc123.tmp"
        lacking = "nameless:1+:EOPNOTSUPP"
        self.run_failing(f"{lacking};rename:1:SIGKILL", "set", "p.kraddon", "license", "text=a")
        new = set(self.names()) - set(self.before) - {".p.kraddon.change.tmp",
                                                      ".p.kraddon.commit.tmp"}
        self.assertEqual(len(new), 1)
        os.rename(self.path(new.pop()), self.path(left))
        self.write(other)
        for name, days in ((left, 0.9), (other, 2)):
            os.utime(self.path(name), (0, time.time() - days * 86400))

        self.run_failing(lacking, "set", "p.kraddon", "license", "text=b")
        self.assertIn(left, self.names(), "it may be in use")
        os.utime(self.path(left), (0, time.time() - 1.1 * 86400))
        result = self.run_failing(lacking, "set", "p.kraddon", "license", "text=c")

        self.assertEqual((result.code, result.errors), (0, ""))
        self.assertEqual(set(self.names()) - set(self.before), {other})

    def test_renames_still_keep_a_file_that_appeared_meanwhile(self):
        self.make_inputs()
        for rules in ("", "renamekeeping:1+:ENOSYS", "renamekeeping:1+:ENOSYS;link:1+:EPERM"):
            with self.subTest(rules=rules):
                stop = ";".join(filter(None, (rules, "sync:1:SIGSTOP")))
                first = self.start_stopped(stop, "create", "new.kraddon", "src", "--name", "first")
                # No other command makes the file while this one holds the lock.
                second = self.path("p.kraddon").read_bytes()
                self.write("new.kraddon", second)
                code, errors = self.go_on(first)
                self.assertEqual(code, 1)
                self.assertIn("it already exists", errors)
                self.assertEqual(self.path("new.kraddon").read_bytes(), second)
                self.path("new.kraddon").unlink()
                self.assert_old(snapshot(self.folder), rules)


if __name__ == "__main__":
    faulttest.main()
