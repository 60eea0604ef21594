# SPDX-License-Identifier: MIT
"""We read packages of other makers in full, as Debian ships them or its libraries write them."""

import collections
import hashlib
import io
import os
import re
import unittest
import zipfile
from xml.etree import ElementTree

import docx
import openpyxl
import openpyxl.chart
import xlsxwriter

from program import ScratchCase

SAMPLES = os.path.join(os.path.dirname(__file__), "..", "..", "build", "samples")
TEMPLATE = os.path.join(os.path.dirname(docx.__file__), "templates", "default.docx")
EXTENSIONS = (".docx", ".pptx", ".xlsx", ".xlsm", ".3mf", ".nupkg")

APPLICATION = re.compile(rb"Application>([^<]+)<")
MODEL_METADATA = re.compile(rb'<metadata name="(\w+):version"')
CONTENT_TYPES = "{http://schemas.openxmlformats.org/package/2006/content-types}"
# A part name of ASCII: no segment is empty or ends in a dot.
PART_NAME = re.compile(r"(/([\w.~!$&'()*+,;=:@-]|%[0-9A-F]{2})*[^/.])+", re.ASCII)


def shipped():
    """The files that scripts/setup unpacked, and one of an installed package."""
    found = [TEMPLATE]
    for folder, _, names in os.walk(SAMPLES):
        paths = (os.path.join(folder, name) for name in names if name.endswith(EXTENSIONS))
        found += [path for path in paths if not os.path.islink(path)]
    return sorted(found)


def producer(path):
    """The program that wrote a package, from its metadata."""
    with zipfile.ZipFile(path) as container:
        for name in ("docProps/app.xml", "3D/3dmodel.model"):
            if name in container.namelist():
                content = container.read(name)
                found = APPLICATION.search(content) or MODEL_METADATA.search(content)
                return found.group(1).decode().partition("/")[0] if found else "unknown"
    return "unknown"


def is_relationships_part(name):
    folder, _, base = name.rpartition("/")
    return base.endswith(".rels") and folder.rpartition("/")[2] == "_rels"


def parts_by_zipfile(path):
    """The SHA-256 of every item that is a part with a content type, by part name."""
    with zipfile.ZipFile(path) as container:
        types = ElementTree.fromstring(container.read("[Content_Types].xml"))
        known = {"." + entry.get("Extension").lower() for entry in types.iter(
            CONTENT_TYPES + "Default")}
        known |= {entry.get("PartName").lower() for entry in types.iter(CONTENT_TYPES + "Override")}
        found = {}
        for item in container.namelist():
            name = "/" + item
            extension = os.path.splitext("x" + name.rpartition("/")[2])[1].lower()
            if (PART_NAME.fullmatch(name) and not is_relationships_part(name)
                    and (name.lower() in known or extension in known)):
                found[name] = hashlib.sha256(container.read(item)).hexdigest()
        return found


class PackageReading(ScratchCase):
    def assert_accepted(self, path):
        self.kraddon("verify", "--opc", path)
        self.assert_parts_agree(path)

    def assert_parts_agree(self, path):
        listed = self.kraddon("list", "--all", "--hash", "-0", path).stdout.decode()
        lines = [line.split("  ", 1) for line in listed.split("\0") if line]
        ours = {name: digest for digest, name in lines}
        self.assertEqual(ours, parts_by_zipfile(path), path)


class ShippedPackages(PackageReading):
    def test_are_many_and_of_several_producers(self):
        files = shipped()
        producers = collections.Counter(map(producer, files))

        for name, count in sorted(producers.items()):
            print("  %3d by %s" % (count, name), flush=True)
        self.assertGreaterEqual(len(files), 50, "run 'scripts/setup test'")
        self.assertGreaterEqual(len(set(producers) - {"unknown"}), 5)

    def test_are_read_as_zipfile_reads_them(self):
        for path in shipped():
            with self.subTest(path):
                self.assert_parts_agree(path)


class GeneratedPackages(PackageReading):
    def test_python_docx(self):
        document = docx.Document()
        document.core_properties.title = "Spectra & more – größer"
        document.add_heading("Spectra")
        document.add_picture(os.path.join(os.path.dirname(__file__), "..", "..", "examples",
                                          "signal-kit", "images", "screenshot.png"))
        document.save(self.path("p.docx"))

        self.assert_accepted(self.path("p.docx"))

    def test_openpyxl(self):
        workbook = openpyxl.Workbook()
        for row in range(200):
            workbook.active.append([row, row * row, "größer als %d" % row])
        workbook.active["A1"].comment = openpyxl.comments.Comment("a comment", "Ada Lind")
        chart = openpyxl.chart.LineChart()
        chart.add_data(openpyxl.chart.Reference(workbook.active, 1, 1, 2, 200))
        workbook.active.add_chart(chart, "E2")
        workbook.create_sheet("Übersicht")["A1"].hyperlink = "https://example.org/a?b=c&d"
        workbook.save(self.path("p.xlsx"))

        self.assert_accepted(self.path("p.xlsx"))

    def write_by_xlsxwriter(self, target, options):
        workbook = xlsxwriter.Workbook(target, options)
        sheet = workbook.add_worksheet("Übersicht")
        for row in range(200):
            sheet.write_row(row, 0, [row, row * row])
        chart = workbook.add_chart({"type": "line"})
        chart.add_series({"values": ["Übersicht", 0, 1, 199, 1]})
        sheet.insert_chart("E2", chart)
        sheet.write_comment("C1", "a comment")
        sheet.write_url("D1", "https://example.org/a?b=c&d")
        workbook.close()

    def test_xlsxwriter(self):
        self.write_by_xlsxwriter(self.path("p.xlsx"), {})

        self.assert_accepted(self.path("p.xlsx"))

    def test_xlsxwriter_in_memory(self):
        target = io.BytesIO()
        self.write_by_xlsxwriter(target, {"in_memory": True})
        with open(self.path("p.xlsx"), "wb") as file:
            file.write(target.getvalue())

        self.assert_accepted(self.path("p.xlsx"))


if __name__ == "__main__":
    unittest.main()
