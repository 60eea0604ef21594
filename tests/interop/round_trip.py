# SPDX-License-Identifier: MIT
"""Real folders go into a package and come out unchanged."""

import os
import shutil
import tempfile
import unittest

import trees
from program import ScratchCase


class RealTree(ScratchCase):
    @classmethod
    def setUpClass(cls):
        cls.parent = tempfile.mkdtemp(prefix="kraddon-interop-")
        cls.addClassCleanup(shutil.rmtree, cls.parent)
        cls.source = os.path.join(cls.parent, "tree")
        copied = trees.copy_some("/usr/include", cls.source, 2500)
        # Headers are text; programs are binary and executable.
        copied += trees.copy_some("/usr/bin", os.path.join(cls.source, "bin"), 100, 1 << 16)
        if copied < 500:
            raise AssertionError("only %d files to try with" % copied)
        for name in ("empty", "deep/er/empty"):
            os.makedirs(os.path.join(cls.source, name))
        cls.before = trees.describe(cls.source)

    def make_and_unpack(self, *options):
        self.kraddon("create", "p.kraddon", self.source, "--name", "A tree", *options)
        self.kraddon("extract", "p.kraddon", "-d", "out")

    def assert_same_trees(self):
        after = trees.describe(self.path("out"))
        self.assertEqual(trees.differences(self.before, after), "")

    def test_comes_back_byte_for_byte_with_folders_bits_and_times(self):
        self.make_and_unpack()

        self.assert_same_trees()

    def test_comes_back_when_nothing_is_compressed(self):
        self.make_and_unpack("--level", "0")

        self.assert_same_trees()

    def test_is_listed_completely(self):
        self.kraddon("create", "p.kraddon", self.source, "--name", "A tree")

        listed = self.kraddon("list", "-0", "p.kraddon").stdout.split(b"\0")

        folders_in_use = {os.path.dirname(path) or b"." for path in self.before}
        expected = [path for path, entry in self.before.items()
                    if entry != "folder" or path not in folders_in_use]
        self.assertEqual(sorted(name for name in listed if name), sorted(expected))

    def test_gives_the_same_bytes_in_any_environment(self):
        words = (self.source, "--name", "A tree", "--timestamp", "1700000000")
        self.kraddon("create", "a.kraddon", *words, env={"TZ": "UTC", "LC_ALL": "C"})
        self.addCleanup(os.umask, os.umask(0o077))

        self.kraddon("create", "b.kraddon", *words,
                     env={"TZ": "Asia/Kathmandu", "LC_ALL": "C.UTF-8", "HOME": "/nonexistent"})

        self.assertEqual(trees.digest(self.path("a.kraddon")), trees.digest(self.path("b.kraddon")))


class Times(ScratchCase):
    def test_odd_seconds_and_far_years_come_back(self):
        os.mkdir(self.path("tree"))
        moments = [1, 86399, 315532799, 315532801, 1234567891, 2000000001, 2147483647]
        for moment in moments:
            with open(self.path("tree", str(moment)), "w", encoding="ascii") as file:
                file.write("x")
            os.utime(self.path("tree", str(moment)), (moment, moment))

        self.kraddon("create", "p.kraddon", "tree", "--name", "Times")
        self.kraddon("extract", "p.kraddon", "-d", "out")

        for moment in moments:
            self.assertEqual(int(os.stat(self.path("out", str(moment))).st_mtime), moment)


if __name__ == "__main__":
    unittest.main()
