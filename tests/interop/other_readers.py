# SPDX-License-Identifier: MIT
"""Other programs read our packages."""

import datetime
import os
import shutil
import unittest
import zipfile

import docx  # Registers the class that the OPC reader uses for the core properties part.
from docx.opc.package import OpcPackage
from docx.opc.packuri import PackURI
from docx.opc.phys_pkg import PhysPkgReader
from docx.opc.pkgreader import _ContentTypeMap

import awkward_names
import trees
from program import ScratchCase

EXAMPLE = os.path.join(os.path.dirname(__file__), "..", "..", "examples", "signal-kit")
MOMENT = 1700000000
SCHEMA = "http://schemas.pellandry.example/korvan/addon/2014"


class OtherReaders(ScratchCase):
    def setUp(self):
        super().setUp()
        shutil.copytree(EXAMPLE, self.path("tree"))
        os.makedirs(self.path("tree", "data", "recordings"))
        with open(self.path("tree", "big.bin"), "wb") as file:
            # Larger than what is packed in one piece; half of it is too random to shrink.
            file.write(os.urandom(10 << 20) + bytes(10 << 20))
        with open(self.path("tree", "nothing"), "wb"):
            pass
        self.kraddon("create", "p.kraddon", "tree", "--name", "Signal Kit", "--version", "1.2",
                     "--summary", "Spectra & more", "--author", "Ada Lind",
                     "--timestamp", str(MOMENT))
        self.package = self.path("p.kraddon")

    def assert_tree_in(self, folder):
        """The files as ZIP programs unpack them: ASCII names, and no empty folders."""
        expected = {path: entry[1] for path, entry in trees.describe(self.path("tree")).items()
                    if entry != "folder" and path.isascii()}
        actual = {path: entry[1] for path, entry in trees.describe(folder).items()
                  if entry != "folder"}
        for path, content in expected.items():
            self.assertEqual(actual.get(path), content, path)
        self.assertIn(b"docs/%C3%9Cbersicht.md", actual)


class ZipReaders(OtherReaders):
    def test_gsf_lists_and_unpacks_it(self):
        listed = self.succeeds("gsf", "list", self.package).stdout

        self.assertIn(b"files/README.md", listed)
        with open(self.path("tree", "README.md"), "rb") as file:
            self.assertEqual(
                self.succeeds("gsf", "cat", self.package, "files/README.md").stdout, file.read())

    def test_zipfile_finds_no_wrong_checksum(self):
        with zipfile.ZipFile(self.package) as package:
            self.assertIsNone(package.testzip())
            self.assertEqual(package.namelist()[:2], ["[Content_Types].xml", "_rels/.rels"])

            package.extractall(self.path("out"))

        self.assert_tree_in(self.path("out", "files"))

    def test_zipfile_sees_plain_entries(self):
        with zipfile.ZipFile(self.package) as package:
            entries = package.infolist()

        for entry in entries:
            self.assertEqual(entry.flag_bits & 0x09, 0, "%s: encrypted, or a data descriptor"
                             % entry.filename)
            self.assertIn(entry.compress_type, (zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED))
            self.assertFalse(entry.is_dir())
            self.assertEqual(entry.date_time, (2023, 11, 14, 22, 13, 20))
            self.assertIn(entry.external_attr >> 16 & 0o777, (0o644, 0o755))

    def test_unzip_finds_no_fault(self):
        outcome = self.succeeds("unzip", "-t", self.package)

        self.assertIn(b"No errors detected", outcome.stdout)

    def test_unzip_unpacks_the_tree(self):
        self.succeeds("unzip", "-q", self.package, "-d", self.path("out"))

        self.assert_tree_in(self.path("out", "files"))

    def test_bsdtar_unpacks_the_tree(self):
        os.mkdir(self.path("out"))

        self.succeeds("bsdtar", "-x", "-f", self.package, "-C", self.path("out"))

        self.assert_tree_in(self.path("out", "files"))

    def test_7z_finds_no_fault_and_no_warning(self):
        outcome = self.succeeds("7z", "t", self.package)

        self.assertIn(b"Everything is Ok", outcome.stdout)
        self.assertNotIn(b"WARNING", outcome.stdout.upper() + outcome.stderr.upper())

    def test_all_still_read_it_after_a_change(self):
        self.kraddon("set", "p.kraddon", "properties", "summary=changed")

        self.succeeds("unzip", "-tq", self.package)
        self.succeeds("7z", "t", self.package)
        with zipfile.ZipFile(self.package) as package:
            self.assertIsNone(package.testzip())
            names = package.namelist()
        self.assertEqual(len(names), len(set(names)))


class AwkwardPackages(ScratchCase):
    """Every reader accepts packages that are unusual but valid."""

    def assert_readable(self, package, content):
        """Checks `content`, bytes by item names, which may be some of the items."""
        self.succeeds("unzip", "-tqq", package)
        self.assertNotIn(b"WARNING", self.succeeds("7z", "t", package).stdout.upper())
        listed = set(self.succeeds("bsdtar", "-tf", package).stdout.decode().splitlines())
        by_gsf = {line.split()[-1] for line in
                  self.succeeds("gsf", "list", package).stdout.decode().splitlines()
                  if line.startswith("f ")}
        with zipfile.ZipFile(self.path(package)) as archive:
            self.assertIsNone(archive.testzip())
            names = set(archive.namelist())
        self.assertEqual(listed, names)
        self.assertEqual(by_gsf, names)
        for name, data in content.items():
            self.assertEqual(self.succeeds("gsf", "cat", package, name).stdout, data, name)
            self.assertEqual(self.succeeds("bsdtar", "-xOf", package, name).stdout, data, name)
        parts = {str(part.partname) for part in OpcPackage.open(self.path(package)).iter_parts()}
        self.assertIn("/metadata/addonProperties.xml", parts)

    def create(self, files, *words):
        os.makedirs(self.path("tree"), exist_ok=True)
        for name, data in files.items():
            path = self.path("tree", name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "wb") as file:
                file.write(data)
        self.kraddon("create", "p.kraddon", "tree", "--name", "Awkward", *words)

    def test_awkward_names(self):
        files = {name: name.encode() for name in awkward_names.NAMES}
        self.create(files)

        self.assert_readable("p.kraddon", {"files/50%25": b"50%", "files/%2541": b"%41",
                                           "files/%22double%22": b'"double"'})

    def test_no_files_at_all(self):
        self.create({})

        self.assert_readable("p.kraddon", {})

    def test_only_stored_items(self):
        self.create({"a.m": b"a" * 5000}, "--level", "0")

        self.assert_readable("p.kraddon", {"files/a.m": b"a" * 5000})

    def test_empty_and_large_files(self):
        noise = os.urandom(1 << 20) + bytes(20 << 20)
        self.create({"empty": b"", "large": noise})

        self.assert_readable("p.kraddon", {"files/empty": b"", "files/large": noise})

    def test_more_items_than_the_old_end_record_can_count(self):
        os.mkdir(self.path("tree"))
        for number in range(66000):
            with open(self.path("tree", "f%d.m" % number), "wb"):
                pass
        self.create({"last.m": b"last"})

        self.assert_readable("p.kraddon", {"files/last.m": b"last"})

    def test_a_package_that_was_changed_often(self):
        self.create({"a.m": b"a", "b/c.m": b"c", "d.m": b"d"})
        self.kraddon("remove", "p.kraddon", "a.m")
        self.kraddon("set", "p.kraddon", "properties", "summary=one")
        self.kraddon("mkdir", "p.kraddon", "empty")
        self.kraddon("set", "p.kraddon", "properties", "summary=two", "authorName=Ada")

        self.assert_readable("p.kraddon", {"files/b/c.m": b"c", "files/d.m": b"d"})


class OpcReader(OtherReaders):
    def test_reads_the_core_properties(self):
        properties = OpcPackage.open(self.package).core_properties

        self.assertEqual(properties.title, "Signal Kit")
        self.assertEqual(properties.version, "1.2")
        self.assertEqual(properties.comments, "Spectra & more")
        self.assertEqual(properties.author, "Ada Lind")
        moment = datetime.datetime.fromtimestamp(MOMENT, datetime.timezone.utc)
        self.assertEqual(properties.created, moment.replace(tzinfo=None))
        self.assertEqual(properties.modified, moment.replace(tzinfo=None))

    def test_follows_every_relationship(self):
        package = OpcPackage.open(self.package)

        targets = {relationship.reltype: relationship.target_part.partname
                   for relationship in package.rels.values()}

        self.assertEqual(targets[SCHEMA + "/relationships/addonProperties"],
                         "/metadata/addonProperties.xml")
        self.assertEqual(targets[SCHEMA + "/relationships/fileTree"], "/metadata/fileTree.xml")
        self.assertEqual(
            targets["http://schemas.openxmlformats.org/package/2006/relationships/"
                    "metadata/core-properties"], "/metadata/coreProperties.xml")
        self.assertEqual(len(targets), len(package.rels))

    def test_finds_a_content_type_for_every_file(self):
        container = PhysPkgReader(self.package)
        types = _ContentTypeMap.from_xml(container.content_types_xml)
        with zipfile.ZipFile(self.package) as package:
            names = [PackURI("/" + name) for name in package.namelist()]

        # This reader finds no extension in the last name.
        left_out = ("/[Content_Types].xml", "/_rels/.rels")
        found = {name: types[name] for name in names if name not in left_out}

        self.assertEqual(found["/files/images/screenshot.png"], "image/png")
        self.assertEqual(found["/files/README.md"], "text/markdown")
        self.assertEqual(found["/files/nothing"], "application/octet-stream")
        with open(self.path("tree", "README.md"), "rb") as file:
            self.assertEqual(container.blob_for(PackURI("/files/README.md")), file.read())

    def test_can_write_what_it_read(self):
        OpcPackage.open(self.package).save(self.path("saved.kraddon"))

        outcome = self.kraddon("get", "saved.kraddon", "properties")

        self.assertIn(b'"Signal Kit"', outcome.stdout)


if __name__ == "__main__":
    assert docx is not None
    unittest.main()
