# SPDX-License-Identifier: MIT
"""A full disk, and a standard output that accepts nothing."""

import os
import shutil
import subprocess
import sys
import unittest

import faulttest
from faulttest import KRADDON, FaultTest, needs_shim

SIZE = 2500 << 10


def can_mount():
    done = subprocess.run(["unshare", "-rm", "mount", "-t", "tmpfs", "none", "/mnt"],
                          capture_output=True, check=False)
    return done.returncode == 0


class Disk(FaultTest):
    """A small file system that only this process and its children see."""

    def test_that_is_full_leaves_every_file_as_it_was(self):
        if os.environ.get("KRADDON_FAULT_MOUNTED") != "1":
            self.run_in_namespace()
            return
        self.mount()
        self.make_small_inputs()
        for command in faulttest.known_commands():
            with self.subTest(command=command.name):
                self.fill_step_by_step(command)

    def run_in_namespace(self):
        if shutil.which("unshare") is None or not can_mount():
            self.skipTest("needs permission to mount: root, or user namespaces")
        done = subprocess.run(["unshare", "-rm", sys.executable, "-B", __file__, self.id()[9:]],
                              env={**os.environ, "KRADDON_FAULT_MOUNTED": "1"},
                              capture_output=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        self.assertIn(b"OK", done.stderr)

    def mount(self):
        self.folder = self.scratch / "disk"
        self.folder.mkdir()
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={SIZE}", "none", self.folder],
                       check=True)
        self.addCleanup(subprocess.run, ["umount", self.folder], check=True)

    def make_small_inputs(self):
        big = os.urandom(200_000)
        self.tree({"a.m": b"x", "sub/b.m": b"y" * 5000, "big.bin": big, "empty/": None})
        self.write("other/big.bin", os.urandom(100_000))
        self.write("pixel.png", faulttest.PIXEL + os.urandom(30_000))
        self.write("license.json", faulttest.json.dumps(faulttest.LICENSE))
        self.write("old.png", "an old one")
        self.make_project()
        self.write("there/a.m", "old")
        self.ok("create", "p.kraddon", "src", "--name", "x", *faulttest.TIME)
        self.ok("set", "p.kraddon", "license", "text=first", *faulttest.TIME)
        self.ok("screenshot", "p.kraddon", "pixel.png", *faulttest.TIME)
        self.make_signed()
        self.write("pixel.png", faulttest.PIXEL + os.urandom(30_000))
        self.before = faulttest.snapshot(self.folder)

    def fill_step_by_step(self, command):
        """Leaves no space, then a little more each time, until there is enough."""
        self.learn(command)
        failures = 0
        ballast = self.folder / "ballast"
        for room in range(0, 160 * 4096, 4096 if faulttest.FULL else 11 * 4096):
            free = os.statvfs(self.folder)
            ballast.write_bytes(b"x" * max(0, free.f_bavail * free.f_frsize - room))
            self.before["ballast"] = self.after["ballast"] = (
                ballast.stat().st_mode & 0o7777, ballast.read_bytes())
            result = self.run_kraddon(*command.words)
            failures += result.code != 0
            try:
                self.assert_outcome(command, result, f"{command.name} with {room} bytes free")
            finally:
                del self.before["ballast"], self.after["ballast"]
                ballast.unlink(missing_ok=True)
                self.restore()
        if not command.is_silent:
            self.assertGreater(failures, 0, f"{command.name} needed no room")


@needs_shim
class DiskByFailingCalls(FaultTest):

    def test_that_fills_up_while_a_large_file_is_written_leaves_nothing_of_it(self):
        self.make_huge_inputs()
        for command in faulttest.known_commands(is_huge=True):
            self.learn(command)
            for number in range(1, 20, 1 if faulttest.FULL else 6):
                rule = f"write,copy:{number}+:ENOSPC"
                result = self.run_failing(rule, *command.words)
                if self.hit:
                    self.assertEqual(result.code, 1)
                self.assert_outcome(command, result, f"{command.name} with {rule}",
                                    "No space left on device")


class StandardOutput(FaultTest):

    def test_that_accepts_nothing_is_a_failure(self):
        self.make_inputs()
        self.ok("create", "q.kraddon", "--name", "Another")
        words = [["info", "p.kraddon"], ["info", "p.kraddon", "--json"],
                 ["info", "p.kraddon", "--field", "name"], ["list", "p.kraddon"],
                 ["list", "p.kraddon", "-l"], ["list", "p.kraddon", "--json"],
                 ["get", "p.kraddon", "properties"], ["get", "p.kraddon", "license", "-o", "-"],
                 ["extract", "p.kraddon", "a.m", "--stdout"],
                 ["extract", "p.kraddon", "big.bin", "--stdout"],
                 ["extract", "p.kraddon", "--dry-run"], ["screenshot", "p.kraddon", "-o", "-"],
                 ["call", "addonGetLicense", "p.kraddon"],
                 ["call", "addonGetFileList", "p.kraddon"],
                 ["help"], ["help", "set"], ["set", "--help"], ["--help"], ["--version"]]
        listed = self.ok("help").text
        words += [each for each in (["verify", "p.kraddon"], ["verify", "p.kraddon", "--json"],
                                    ["verify", "--explain", "KR101"],
                                    ["diff", "p.kraddon", "q.kraddon"],
                                    ["preview", "p.kraddon", "-o", "-"],
                                    ["sbom", "p.kraddon"], ["completion", "bash"],
                                    ["schema", "info"], ["init", "src", "--stdout"])
                  if f"  {each[0]} " in listed]
        for each in words:
            with self.subTest(words=each), open("/dev/full", "wb") as full:
                done = self.run_kraddon(*each, stdout=full)
                self.assertIn(done.code, (1, 2) if each[0] == "diff" else (1,), done.errors)
                self.assertRegex(done.errors, r"^kraddon: ([a-z]+: )?cannot write "
                                 r"'standard output': No space left on device\n$")

    def test_that_is_closed_is_a_failure(self):
        self.make_inputs()
        done = subprocess.run(["sh", "-c", f"'{KRADDON}' list p.kraddon >&-"], cwd=self.folder,
                              capture_output=True, check=False)
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"cannot write 'standard output'", done.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=1)
