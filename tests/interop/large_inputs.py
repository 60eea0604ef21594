# SPDX-License-Identifier: MIT
"""Inputs that are too large for the regular tests."""

import os
import shutil
import subprocess
import unittest
import zipfile

import trees
from program import ScratchCase

MEMORY_LIMIT_KIB = 300 * 1024
GIB = 1 << 30


class LargeCase(ScratchCase):
    def measured(self, *words):
        outcome = self.kraddon(*words)
        self.assertLess(outcome.peak_kib, MEMORY_LIMIT_KIB, "memory of kraddon %s" % words[0])
        print("  %-8s %6.1f MiB at most" % (words[0], outcome.peak_kib / 1024), flush=True)
        return outcome

    def round_trip(self):
        self.measured("create", "p.kraddon", "tree", "--name", "Large")
        self.succeeds("unzip", "-tqq", "p.kraddon")
        self.measured("extract", "p.kraddon", "-d", "out")
        before, after = trees.describe(self.path("tree")), trees.describe(self.path("out"))
        self.assertEqual(trees.differences(before, after), "")
        return before


class SystemFolders(LargeCase):
    def test_usr_include_comes_back(self):
        trees.copy_resolved("/usr/include", self.path("tree"))

        found = self.round_trip()

        self.assertGreater(len(found), 1000)

    def test_usr_share_doc_comes_back(self):
        trees.copy_resolved("/usr/share/doc", self.path("tree"))

        self.round_trip()


class ManyFiles(LargeCase):
    def make_files(self, count, per_folder):
        for number in range(count):
            folder = self.path("tree", "f%d" % (number // per_folder))
            if number % per_folder == 0:
                os.makedirs(folder)
            with open(os.path.join(folder, "file%d.m" % number), "w", encoding="ascii") as file:
                file.write("x = %d;\n" % number)

    def test_a_hundred_thousand_files_come_back(self):
        self.make_files(100000, 250)

        self.round_trip()

        listed = self.measured("list", "p.kraddon").stdout
        self.assertEqual(listed.count(b"\n"), 100000)

    def test_seventy_thousand_in_one_folder_come_back(self):
        # More than 65,535 entries need the ZIP64 end record.
        self.make_files(70000, 70000)

        self.round_trip()

        with zipfile.ZipFile(self.path("p.kraddon")) as package:
            self.assertGreater(len(package.namelist()), 70000)

    def test_seventy_thousand_empty_folders_come_back(self):
        for number in range(70000):
            os.makedirs(self.path("tree", "g%d" % (number // 500), "e%d" % number))

        self.round_trip()


class LargeFile(LargeCase):
    def setUp(self):
        super().setUp()
        os.mkdir(self.path("tree"))
        with open(self.path("tree", "large.bin"), "wb") as file:
            for offset in range(0, 5 * GIB, 256 << 20):
                file.seek(offset)
                file.write(os.urandom(1 << 20))
            file.truncate(5 * GIB)
        with open(self.path("tree", "zz-behind.m"), "w", encoding="ascii") as file:
            file.write("% begins beyond 4 GiB when nothing is packed\n")

    def assert_comes_back(self):
        self.measured("extract", "p.kraddon", "-d", "out")
        for name in ("large.bin", "zz-behind.m"):
            subprocess.run(["cmp", self.path("tree", name), self.path("out", name)], check=True)
        shutil.rmtree(self.path("out"))

    def test_comes_back_packed(self):
        self.measured("create", "p.kraddon", "tree", "--name", "Large")

        self.assertLess(os.path.getsize(self.path("p.kraddon")), GIB)
        self.assert_comes_back()
        self.succeeds("unzip", "-tqq", "p.kraddon")

    def test_comes_back_stored(self):
        self.measured("create", "p.kraddon", "tree", "--name", "Large", "--level", "0")

        self.assertGreater(os.path.getsize(self.path("p.kraddon")), 5 * GIB)
        self.assert_comes_back()
        self.measured("set", "p.kraddon", "properties", "summary=changed")
        self.succeeds("7z", "t", "p.kraddon")
        self.assert_comes_back()


if __name__ == "__main__":
    unittest.main()
