# SPDX-License-Identifier: MIT
"""A package of a million files, and one of 20 GB: every command that reads or changes one."""

import os
import shutil
import time
import unittest

from program import ScratchCase

GB = 1000 ** 3
MIB = 1 << 20


class HugeCase(ScratchCase):
    NEEDED = 0        # bytes of free space
    MOST_MEMORY = 0   # bytes

    def setUp(self):
        super().setUp()
        free = shutil.disk_usage(self.folder).free
        if free < self.NEEDED:
            self.skipTest("needs %d GB of free space in TMPDIR, where there are %d"
                          % (self.NEEDED // GB, free // GB))

    def measured(self, *words):
        started = time.monotonic()
        outcome = self.kraddon(*words)
        print("  %-8s %7.1f MiB at most, %6.1f s" % (
            words[0], outcome.peak_kib / 1024, time.monotonic() - started), flush=True)
        self.assertLess(outcome.peak_kib * 1024, self.MOST_MEMORY,
                        "memory of kraddon %s" % words[0])
        return outcome

    def use(self, count, *options):
        """Runs all commands on the package of the folder 'tree', which has so many files."""
        self.measured("create", "p.kraddon", "tree", "--name", "Huge", *options)
        listed = self.measured("list", "p.kraddon").stdout
        self.assertEqual(listed.count(b"\n"), count)
        self.measured("set", "p.kraddon", "license", "type=MIT", "text=As it is.")
        found = self.measured("get", "p.kraddon", "license").stdout
        self.assertIn(b"As it is.", found)
        self.measured("verify", "p.kraddon")
        self.measured("extract", "p.kraddon", "-d", "out")
        self.succeeds("diff", "-rq", "tree", "out")
        shutil.rmtree(self.path("out"))


class MillionFiles(HugeCase):
    COUNT = 1000000
    NEEDED = 10 * GB
    MOST_MEMORY = 1200 * COUNT

    def test_come_back(self):
        for number in range(self.COUNT):
            folder = self.path("tree", "f%d" % (number // 1000))
            if number % 1000 == 0:
                os.makedirs(folder)
            with open(os.path.join(folder, "file%d.m" % number), "w", encoding="ascii") as file:
                file.write("x = %d;\n" % number)

        self.use(self.COUNT)

        self.succeeds("7z", "t", "p.kraddon")


class TwentyGigabytes(HugeCase):
    """Stored, so that the package is as large as its files, which are mostly holes."""

    FILES = 20
    NEEDED = 42 * GB
    MOST_MEMORY = 100 * MIB

    def test_come_back(self):
        os.mkdir(self.path("tree"))
        for number in range(self.FILES):
            with open(self.path("tree", "%d.bin" % number), "wb") as file:
                for offset in range(0, GB, 100 * 1000 ** 2):
                    file.seek(offset)
                    file.write(os.urandom(MIB))
                file.truncate(GB)

        self.use(self.FILES, "--level", "0")

        self.assertGreater(os.path.getsize(self.path("p.kraddon")), self.FILES * GB)
        self.succeeds("7z", "t", "p.kraddon")


if __name__ == "__main__":
    unittest.main()
