# SPDX-License-Identifier: MIT
"""Warnings name the command, and --quiet silences them"""

import shutil
import zipfile

import kraddontest
from hostilezip import Entry, addon, build
from test_signed import ORIGIN, TYPES

STRAY = "[trash]/0.dat"
UNREADABLE = "files/a b.m"
CHANGES = (("add", "p.kraddon", "c.m"), ("remove", "p.kraddon", "b.m"),
           ("mkdir", "p.kraddon", "d"), ("mv", "p.kraddon", "b.m", "e.m"),
           ("set", "p.kraddon", "license", "type=MIT"), ("unset", "p.kraddon", "revisions"),
           ("screenshot", "p.kraddon", "shot.png"))


class Warnings(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.write("start.kraddon", build(addon(
            [Entry(b"sig/origin"), Entry(b"files/a.m", b"a"), Entry(b"files/b.m", b"b")], types=TYPES, relationships=ORIGIN)))
        self.run_kraddon("set", "start.kraddon", "license", "type=BSD")
        self.run_kraddon("set", "start.kraddon", "revisions", "-", stdin=b"[]")
        with zipfile.ZipFile(self.path("start.kraddon"), "a") as archive:
            for item in (STRAY, UNREADABLE):
                archive.writestr(item, "added by another program")
        self.write("c.m", "c")
        self.write("shot.png", b"\x89PNG\r\n\x1a\n")

    def warned(self, words, *warnings):
        """Those are all warnings, in order, and there are none when it is quiet."""
        lines = [f"kraddon: {words[0]}: warning: {warning}" for warning in warnings]
        for quiet, expected in (([], lines), (["-q"], []), (["--quiet"], [])):
            with self.subTest(words=words, quiet=quiet):
                shutil.copyfile(self.path("start.kraddon"), self.path("p.kraddon"))
                result = self.run_kraddon(*words, *quiet)
                self.assertEqual((result.code, result.errors.splitlines()), (0, expected))
        shutil.copyfile(self.path("start.kraddon"), self.path("p.kraddon"))
        self.assertEqual(self.run_kraddon("-q", *words).errors, "")

    def test_of_what_a_change_leaves_out_and_makes_void(self):
        for words in CHANGES:
            self.warned(words,
                        *(f"item '{item}': it is not a part of the package and was left out"
                          for item in (STRAY, UNREADABLE)),
                        "package 'p.kraddon': its signature is no longer valid")

    def test_of_items_that_are_not_files_of_the_tree(self):
        warning = f"item '{UNREADABLE}' is not a file of the tree: it is not a part"
        self.warned(("list", "p.kraddon"), warning)
        self.warned(("extract", "p.kraddon", "--dry-run"), warning)
        self.warned(("diff", "p.kraddon", "p.kraddon"), warning, warning)


if __name__ == "__main__":
    kraddontest.main()
