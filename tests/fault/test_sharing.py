# SPDX-License-Identifier: MIT
"""File systems that share blocks between files: what does not change is not copied."""

import os
import re
import shutil
import subprocess
import sys
import unittest
import zipfile

from faulttest import TIME, FaultTest

FILES = 4
FILE_SIZE = 10 << 20
IMAGE_SIZE = 400 << 20
# Beginnings and ends of runs, new entries and the directory.
MOST_OWN = 128 << 10
# logical offset: first..last block, physical ones, length, perhaps what was expected, flags
EXTENT = re.compile(r"^ *\d+: .*?: +(\d+): +(?:\d+: *)?([a-z_,]*)$", re.MULTILINE)


class Sharing(FaultTest):
    """A file system in a file, which only this process and its children see."""

    def test_of_blocks_saves_copying_on_btrfs(self):
        self.check_file_system("btrfs", "mkfs.btrfs", "-q")

    def test_of_blocks_saves_copying_on_xfs(self):
        self.check_file_system("xfs", "mkfs.xfs", "-q", "-m", "reflink=1")

    def check_file_system(self, kind, *make):
        if os.environ.get("KRADDON_FAULT_MOUNTED") != "1":
            self.run_in_namespace()
            return
        self.mount(kind, make)
        self.make_package()
        self.change("set", "p.kraddon", "license", "text=A longer text than there was before.")
        self.change("set", "p.kraddon", "license", "text=short", "type=MIT")
        self.change("remove", "p.kraddon", "1.bin")
        self.change("add", "p.kraddon", "one.m")
        self.change("mkdir", "p.kraddon", "empty")

    def run_in_namespace(self):
        if os.geteuid() != 0 or shutil.which("unshare") is None:
            self.skipTest("needs permission to mount: root")
        done = subprocess.run(["unshare", "--mount", "--propagation", "private", sys.executable,
                               "-B", __file__, self.id()[9:]],
                              env={**os.environ, "KRADDON_FAULT_MOUNTED": "1"},
                              capture_output=True, check=False)
        errors = done.stderr.decode()
        self.assertEqual(done.returncode, 0, errors)
        if "skipped=" in errors:
            self.skipTest("needs permission to mount file systems in files")
        self.assertIn("OK", errors)

    def mount(self, kind, make):
        image = self.scratch / "image"
        image.touch()
        os.truncate(image, IMAGE_SIZE)
        if shutil.which(make[0]) is None:
            self.skipTest(f"needs {make[0]}")
        subprocess.run([*make, image], check=True, stdout=subprocess.DEVNULL)
        self.folder = self.scratch / "disk"
        self.folder.mkdir()
        done = subprocess.run(["mount", "-t", kind, "-o", "loop", image, self.folder],
                              capture_output=True, check=False)
        if done.returncode:
            self.skipTest(f"needs permission to mount {kind}: {done.stderr.decode().strip()}")
        self.addCleanup(subprocess.run, ["umount", self.folder], check=True)

    def make_package(self):
        self.data = {f"{number}.bin": os.urandom(FILE_SIZE) for number in range(FILES)}
        for name, data in self.data.items():
            self.write("src/" + name, data)
        self.write("one.m", "x = 1;\n")
        self.ok("create", "p.kraddon", "src", "--name", "x", *TIME)
        shutil.rmtree(self.path("src"))

    def change(self, *words):
        """Runs a command, with the old file kept under another name: else it would not share."""
        package, old = self.path("p.kraddon"), self.path("old")
        os.link(package, old)
        self.ok(*words, *TIME)
        self.assertNotEqual(package.stat().st_ino, old.stat().st_ino)
        self.assertLess(package.stat().st_size - self.shared_bytes(package), MOST_OWN, words)
        old.unlink()
        with zipfile.ZipFile(package) as archive:
            for name in archive.namelist():
                data = archive.read(name)
                expected = self.data.get(name.removeprefix("files/"), data)
                self.assertTrue(data == expected, name)

    def shared_bytes(self, path):
        done = subprocess.run(["filefrag", "-s", "-v", path], check=True, capture_output=True)
        return sum(int(length) * 4096 for length, flags in EXTENT.findall(done.stdout.decode())
                   if "shared" in flags.split(","))


if __name__ == "__main__":
    unittest.main(verbosity=1)
