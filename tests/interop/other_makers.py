# SPDX-License-Identifier: MIT
"""We read packages of other makers: office documents, 3D models, code packages."""

import os
import shutil
import unittest
import zipfile

import docx
import openpyxl
import xlsxwriter

from program import KRADDON, ScratchCase, run

SAMPLES = os.path.join(os.path.dirname(__file__), "..", "..", "build", "samples")
EXTENSIONS = (".docx", ".pptx", ".xlsx", ".xlsm", ".3mf", ".nupkg")

# This file was repacked with an archiver that adds files named like relationships parts.
BROKEN = {"skip_empty_lines.xlsx": b"KR214"}


def samples():
    """The files of other makers that scripts/setup unpacked, without copies."""
    found = {}
    for folder, _, names in os.walk(SAMPLES):
        for name in names:
            path = os.path.join(folder, name)
            if name.endswith(EXTENSIONS) and not os.path.islink(path):
                with open(path, "rb") as file:
                    found.setdefault(file.read(), path)
    return sorted(found.values())


def is_part(entry):
    name = entry.filename
    return not (entry.is_dir() or name.startswith("[") or
                (name.endswith(".rels") and "_rels" in name.split("/")))


class OtherMakers(ScratchCase):
    def verify(self, path):
        return run(KRADDON, "verify", "--opc", path, cwd=self.folder)

    def assert_accepted(self, path):
        outcome = self.verify(path)
        self.assertEqual(outcome.code, 0, "%s: %s" % (path, outcome))
        no_parts = [line.split(b": warning KR217: ")[1].split(b": ")[0].lstrip(b"/").decode()
                    for line in outcome.stdout.splitlines() if b": warning KR217: " in line]
        self.assert_same_parts(path, no_parts)

    def assert_same_parts(self, path, no_parts):
        """Both see the same parts and sizes, except for items that drew a warning."""
        listed = self.kraddon("list", "--all", "-l", path).stdout.decode().splitlines()
        with zipfile.ZipFile(path) as package:
            self.assertIsNone(package.testzip())
            expected = [entry for entry in package.infolist()
                        if is_part(entry) and entry.filename not in no_parts]
        self.assertEqual(len(listed), len(expected), path)
        for entry in expected:
            line = next((line for line in listed if line.endswith(" /" + entry.filename)), "")
            self.assertIn(str(entry.file_size), line.split(), entry.filename)

    def test_files_of_other_makers_are_accepted(self):
        paths = [path for path in samples() if os.path.basename(path) not in BROKEN]
        kinds = {os.path.splitext(path)[1] for path in paths}
        self.assertEqual(kinds, set(EXTENSIONS), "run 'scripts/setup test'")
        self.assertGreater(len(paths), 45)

        for path in paths:
            with self.subTest(path):
                self.assert_accepted(path)

    def test_broken_files_of_other_makers_are_refused_with_the_reason(self):
        broken = [path for path in samples() if os.path.basename(path) in BROKEN]
        self.assertEqual(len(broken), len(BROKEN))

        for path in broken:
            outcome = self.verify(path)
            errors = [line for line in outcome.stdout.splitlines() if b": error " in line]
            self.assertEqual(outcome.code, 1, outcome)
            for line in errors:
                self.assertIn(b": error %s:" % BROKEN[os.path.basename(path)], line)

    def test_a_document_that_another_program_writes_is_accepted(self):
        document = docx.Document()
        document.add_heading("Title & <more>")
        document.core_properties.title = "Title & <more>"
        document.core_properties.author = "Ada Lind"
        document.save(self.path("d.docx"))

        self.assert_accepted(self.path("d.docx"))

    def test_a_workbook_that_another_program_writes_is_accepted(self):
        workbook = openpyxl.Workbook()
        workbook.create_sheet("zweites Blatt äöü")
        workbook.active["A1"] = "=1+1"
        workbook.active["A2"].hyperlink = "http://host.example/a b?c=d#e"
        workbook.save(self.path("w.xlsx"))

        self.assert_accepted(self.path("w.xlsx"))

    def test_a_workbook_of_two_thousand_sheets_is_accepted(self):
        workbook = xlsxwriter.Workbook(self.path("w.xlsx"))
        for number in range(2000):
            workbook.add_worksheet().write_url(0, 0, "mailto:a%d@host.example" % number)
        workbook.close()

        self.assert_accepted(self.path("w.xlsx"))

    def test_a_copy_of_each_stays_valid_with_another_file(self):
        for number, path in enumerate(samples()):
            if os.path.basename(path) in BROKEN:
                continue
            with self.subTest(path):
                copy = self.path("%d.zip" % number)
                shutil.copy(path, copy)
                with open(self.path("new.m"), "w", encoding="ascii") as file:
                    file.write("x = 1;\n")

                self.kraddon("add", copy, "new.m")

                self.assertEqual(self.verify(copy).code, 0)
                self.assert_kept(path, copy)

    def assert_kept(self, before, after):
        """Every part is as it was, except those that list other parts."""
        with zipfile.ZipFile(before) as old, zipfile.ZipFile(after) as new:
            self.assertIsNone(new.testzip())
            names = set(new.namelist())
            for entry in old.infolist():
                if entry.is_dir() or entry.filename in ("[Content_Types].xml", "_rels/.rels"):
                    continue
                self.assertIn(entry.filename, names)
                self.assertEqual(old.read(entry), new.read(entry.filename), entry.filename)


if __name__ == "__main__":
    unittest.main()
