#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Many ZIP readers read plain packages, and packages that are made to be read differently."""

import unittest

import batches
import corpus
import judge
import readers_of_zip
import seeds

READERS = readers_of_zip.chosen()
# What these readers cannot read, though it is valid.
LACKING = {
    ("zip64 by zip", "busybox"), ("zip64 by zip", "zziplib"),
    ("stored with descriptors", "ZipInputStream"),
    ("stored with descriptors", "commons-compress stream"),
}


class PlainPackages(unittest.TestCase):
    def test_all_readers_agree_about_what_honest_programs_write(self):
        with judge.scratch_folder() as folder:
            packages = dict(seeds.packages(judge.KRADDON, folder))

        verdict = judge.judge(packages.items(), READERS)

        self.assertGreaterEqual(len(packages), 13)
        self.assertEqual(verdict.passed, {name: set() for name in packages})
        self.assertEqual(verdict.disagreements, {})
        self.assertEqual(set(verdict.refusals) - LACKING, set())


class Corpus(unittest.TestCase):
    maxDiff = None

    def test_verify_finds_an_error_or_all_readers_agree(self):
        archives = corpus.archives(batches.Originals().honest["ours"])

        verdict = judge.judge(((name, archive.pack()) for name, archive in archives.items()),
                              READERS)

        self.assertEqual(verdict.disagreements, {})
        self.assertGreater(verdict.count, 700)
        self.assertGreater(len(verdict.passed), 100)


if __name__ == "__main__":
    unittest.main()
