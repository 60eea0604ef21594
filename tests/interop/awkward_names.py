# SPDX-License-Identifier: MIT
"""Names that are difficult for a ZIP file, an OPC package or a shell."""

import os
import unittest
import zipfile

import trees
from program import KRADDON, ScratchCase, run

NAMES = [
    "n" * 255,
    "ä" * 127 + "x",  # 255 bytes
    "line\nbreak", "carriage\rreturn", "tab\there", "bell\x07", "delete\x7f", "next\u0085line",
    "'single'", '"double"', "back`tick", "$HOME", "a;b", "a|b", "a&b", "a*b", "a?b", "a<b>c",
    "50%", "%41", "%2F", "%00", "%", "%zz", "a%5Cb",
    "back\\slash", "\\", "\\\\server\\share", "C:", "c:drive",
    "[brackets]", "[", "]", "[Content_Types].xml", "[content_types].XML", "[0].piece",
    "[0].last.piece", "{braces}", "(round)",
    "dot.", "two..", "...", ".hidden", "..parent", " leading", "trailing ", " ",
    "case", "CASE", "Case", "sTRASSE", "straße",
    "caf\u00e9", "cafe\u0301", "\u212b", "\u00c5",  # pairs that look the same
    "-", "--", "-rf", "--help", "#hash", "@file", "~", "~user", "a=b", "a+b", "a,b", "!",
    "_rels/.rels", "_rels/a.m.rels", "_RELS/b.rels", "x/_rels/y.rels", ".rels", "a.rels",
    "metadata/coreProperties.xml", "files/files", "con", "NUL.txt", "aux",
    "\U0001f600", "\U0010ffff", "\ue000private", "\ufeffmark", "\ufdd0", "\u202eright to left",
    "no extension", "a.b.c.d", "odd.ext;x", "ext.ä", "x.M", "y.m", "a.m", "a.m.m",
    "/".join("deep%d" % level for level in range(60)) + "/leaf",
    "folder./file", "folder /file", "Folder/x", "FOLDER/y",
]
EMPTY_FOLDERS = ["empty", "Empty", "empty.", "empty\\", "e m p t y", "%", "_rels/empty", "leer/ä",
                 "one/two/three", "line\nbreak folder", "[x]"]


def write_file(path, content):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(content)


class AwkwardNames(ScratchCase):
    def setUp(self):
        super().setUp()
        self.tree = os.fsencode(self.path("tree"))
        for name in NAMES:
            write_file(os.path.join(self.tree, name.encode()), name.encode())
        for name in EMPTY_FOLDERS:
            os.makedirs(os.path.join(self.tree, b"folders", name.encode()))
        self.kraddon("create", "p.kraddon", "tree", "--name", "Names")

    def test_all_come_back(self):
        self.kraddon("extract", "p.kraddon", "-d", "out")

        before, after = trees.describe(self.tree), trees.describe(self.path("out"))
        self.assertEqual(trees.differences(before, after), "")

    def test_are_listed_as_they_are(self):
        listed = self.kraddon("list", "-0", "p.kraddon").stdout.split(b"\0")

        for name in NAMES:
            self.assertIn(name.encode(), listed)
        for name in EMPTY_FOLDERS:
            self.assertIn(("folders/" + name).encode(), listed)

    def test_select_one_file_each(self):
        for name in NAMES:
            outcome = self.kraddon("extract", "--stdout", "p.kraddon", "--", name)
            self.assertEqual(outcome.stdout, name.encode(), repr(name))

    def test_are_ascii_in_the_container(self):
        with zipfile.ZipFile(self.path("p.kraddon")) as package:
            names = [entry.filename for entry in package.infolist()]

        self.assertEqual(len(names), len(set(name.lower() for name in names)))
        for name in names:
            self.assertTrue(name.isascii() and name.isprintable(), repr(name))
            self.assertNotIn("\\", name)
            self.assertNotIn("..", name.split("/"))

    def test_do_not_prevent_a_change(self):
        before = self.kraddon("list", "-0", "p.kraddon").stdout

        self.kraddon("set", "p.kraddon", "properties", "summary=changed")

        self.assertEqual(self.kraddon("list", "-0", "p.kraddon").stdout, before)
        self.kraddon("extract", "p.kraddon", "-d", "out")
        self.assertEqual(trees.differences(trees.describe(self.tree),
                                           trees.describe(self.path("out"))), "")


class NamesThatAreNoText(ScratchCase):
    def test_are_refused_by_name_before_anything_is_written(self):
        tree = os.fsencode(self.path("tree"))
        write_file(os.path.join(tree, b"good"), b"x")
        write_file(os.path.join(tree, b"folder", b"caf\xe9.m"), b"x")

        outcome = run(KRADDON, "create", "p.kraddon", "tree", "--name", "N", cwd=self.folder)

        self.assertEqual(outcome.code, 1)
        self.assertEqual(outcome.stderr.count(b"\n"), 1, outcome.stderr)
        self.assertTrue(outcome.stderr.startswith(b"kraddon: create: "), outcome.stderr)
        self.assertIn(b"caf\\xe9.m", outcome.stderr)
        self.assertEqual(os.listdir(self.folder), ["tree"])


if __name__ == "__main__":
    unittest.main()
