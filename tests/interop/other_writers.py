# SPDX-License-Identifier: MIT
"""We read our packages after other programs have repacked them."""

import os
import unittest
import zipfile

import trees
from all_packages import PackageCase
from program import run


class Unseekable:
    """A file that can only be appended to, so that sizes have to follow the content."""

    def __init__(self, file):
        self.file = file

    def write(self, content):
        return self.file.write(content)

    def flush(self):
        self.file.flush()


class OtherWriters(PackageCase):
    def setUp(self):
        super().setUp()
        self.create_example()
        self.fill_in()
        self.parts = self.parts_by_our_list()
        self.before = trees.describe(self.tree, with_times=False)
        with zipfile.ZipFile(self.package) as container:
            self.entries = {name: container.read(name) for name in container.namelist()}
            container.extractall(self.path("unpacked"))
        self.tops = sorted(os.listdir(self.path("unpacked")))
        os.remove(self.package)

    def packs(self, *words):
        """Runs a program in the folder with the unpacked container."""
        outcome = run(*words, cwd=self.path("unpacked"))
        self.assertEqual(outcome.code, 0, "%s: %s" % (words[0], outcome))

    def assert_is_ours(self):
        self.kraddon("verify", "p.kraddon")
        self.assertEqual(self.parts_by_our_list(), self.parts)
        self.assert_comes_out()
        self.kraddon("set", "p.kraddon", "properties", "summary=changed")
        self.assert_all_agree()
        self.assert_comes_out("--force")

    def assert_comes_out(self, *options):
        self.kraddon("extract", "p.kraddon", "-d", "out", *options)
        after = trees.describe(self.path("out"), with_times=False)
        self.assertEqual(trees.differences(self.before, after), "")

    def test_zip(self):
        self.packs("zip", "-q", "-r", "../p.kraddon", ".")

        self.assert_is_ours()

    def test_7z(self):
        self.packs("7z", "a", "-tzip", "-bd", "../p.kraddon", "./*")

        self.assert_is_ours()

    def test_bsdtar(self):
        self.packs("bsdtar", "-c", "--format", "zip", "-f", "../p.kraddon", *self.tops)

        self.assert_is_ours()

    def test_gsf(self):
        self.packs("gsf", "createzip", "../p.kraddon", *self.tops)

        self.assert_is_ours()

    def test_zipfile_where_it_cannot_seek(self):
        with open(self.package, "wb") as file, \
                zipfile.ZipFile(Unseekable(file), "w", zipfile.ZIP_DEFLATED) as container:
            for name, content in self.entries.items():
                container.writestr(name, content)

        self.assert_is_ours()

    def test_zipfile_with_zip64_fields_in_every_entry(self):
        with zipfile.ZipFile(self.package, "w", zipfile.ZIP_DEFLATED) as container:
            for name, content in reversed(self.entries.items()):
                with container.open(name, "w", force_zip64=True) as entry:
                    entry.write(content)

        self.assert_is_ours()


if __name__ == "__main__":
    unittest.main()
