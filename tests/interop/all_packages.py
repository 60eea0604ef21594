# SPDX-License-Identifier: MIT
"""Every reader sees the same in every kind of package that we write, before and after changes."""

import hashlib
import os
import shutil
import unittest
import zipfile

from docx.opc.package import OpcPackage

import awkward_names
import trees
from program import ScratchCase
from zip_readers import READERS

EXAMPLE = os.path.join(os.path.dirname(__file__), "..", "..", "examples", "signal-kit")
SCREENSHOT = os.path.join(EXAMPLE, "images", "screenshot.png")


class PackageCase(ScratchCase):
    def setUp(self):
        super().setUp()
        self.tree = self.path("tree")
        self.package = self.path("p.kraddon")

    def create(self, *options):
        self.kraddon("create", "p.kraddon", "tree", "--name", "Signal Kit", *options)

    def create_example(self, *options):
        shutil.copytree(EXAMPLE, self.tree)
        os.makedirs(self.path("tree", "data", "recordings"))
        with open(self.path("tree", "nothing"), "wb"):
            pass
        self.create(*options)

    def fill_in(self):
        """Everything that a package can hold."""
        self.kraddon("set", "p.kraddon", "properties", "summary=Spectra & more")
        self.kraddon("set", "p.kraddon", "license", "type=MIT", "text=In the file LICENSE.")
        for document in ("configuration", "apps", "examples", "revisions", "requirements"):
            self.kraddon("set", "p.kraddon", document,
                         os.path.join(EXAMPLE + ".metadata", document + ".json"))
        self.kraddon("screenshot", "p.kraddon", SCREENSHOT)

    def parts_by_our_list(self):
        """The SHA-256 of every part except relationships, by its name without the slash."""
        listed = self.kraddon("list", "--all", "--hash", "-0", "p.kraddon").stdout.decode()
        lines = [line.split("  ", 1) for line in listed.split("\0") if line]
        return {name[1:]: digest for digest, name in lines}

    def parts_by_zipfile(self):
        with zipfile.ZipFile(self.package) as container:
            return {name: hashlib.sha256(container.read(name)).hexdigest()
                    for name in container.namelist()
                    if name != "[Content_Types].xml" and "_rels/" not in name}

    def assert_all_agree(self):
        names, content = READERS["zipfile"](self, self.package)
        self.assertEqual(len(names), len(set(names)))
        for reader, read in READERS.items():
            found, read_content = read(self, self.package)
            self.assertEqual(found, names, reader)
            self.assertTrue(read_content == content, "%s reads other bytes" % reader)

    def assert_tree_is_in_it(self):
        self.kraddon("extract", "p.kraddon", "-d", "out")
        before, after = trees.describe(self.tree), trees.describe(self.path("out"))
        self.assertEqual(trees.differences(before, after), "")
        shutil.rmtree(self.path("out"))


class NewPackages(PackageCase):
    def test_one_without_files(self):
        os.mkdir(self.tree)
        self.create()

        self.assert_all_agree()

    def test_a_plain_one(self):
        self.create_example()

        self.assert_all_agree()
        self.assertEqual(self.parts_by_our_list(), self.parts_by_zipfile())

    def test_one_that_is_stored(self):
        self.create_example("--level", "0")

        self.assert_all_agree()

    def test_one_with_awkward_names(self):
        tree = os.fsencode(self.tree)
        for name in map(str.encode, awkward_names.NAMES):
            awkward_names.write_file(os.path.join(tree, name), name)
        for name in map(str.encode, awkward_names.EMPTY_FOLDERS):
            os.makedirs(os.path.join(tree, b"folders", name))
        self.create()

        self.assert_all_agree()


class FilledPackages(PackageCase):
    def setUp(self):
        super().setUp()
        self.create_example()
        self.fill_in()

    def test_all_documents_and_the_screenshot(self):
        self.assert_all_agree()
        self.assertEqual(self.parts_by_our_list(), self.parts_by_zipfile())
        self.assert_tree_is_in_it()

    def test_an_opc_reader_reaches_every_document(self):
        package = OpcPackage.open(self.package)

        reached = {part.partname[1:]: part for part in package.iter_parts()}

        self.assertEqual(package.core_properties.comments, "Spectra & more")
        expected = {name for name in self.parts_by_zipfile() if name.startswith("metadata/")}
        self.assertGreaterEqual(len(expected), 9)
        self.assertEqual(expected - set(reached), set())
        for name, part in reached.items():
            self.assertRegex(part.content_type, r"^[a-z]+/[\w.+-]+$", name)


class ChangedPackages(PackageCase):
    def setUp(self):
        super().setUp()
        self.create_example()
        self.fill_in()
        self.before = self.parts_by_zipfile()

    def add(self, path, content, *options):
        with open(self.path("tree", *path.split("/")), "wb") as file:
            file.write(content)
        self.kraddon("add", "p.kraddon", os.path.join("tree", *path.split("/")), "--as", path,
                     *options)

    def assert_sound(self):
        self.assert_all_agree()
        self.assertEqual(self.parts_by_our_list(), self.parts_by_zipfile())
        self.assert_tree_is_in_it()
        self.kraddon("verify", "p.kraddon")

    def test_by_add(self):
        self.add("docs/straße.md", b"# a name\n" * 1000)
        self.add("large.bin", os.urandom(3 << 20))

        self.assert_sound()
        now = self.parts_by_zipfile()
        self.assertEqual(set(now) - set(self.before),
                         {"files/docs/stra%C3%9Fe.md", "files/large.bin"})

    def test_by_add_replacing_a_file(self):
        self.add("README.md", b"another text", "--replace")

        self.assert_sound()
        now = self.parts_by_zipfile()
        self.assertEqual({name for name in now if now[name] != self.before.get(name)
                          and name.startswith("files/")}, {"files/README.md"})

    def test_by_remove(self):
        for name in ("filters", "windows"):
            shutil.rmtree(self.path("tree", name))
        self.kraddon("set", "p.kraddon", "configuration", self.configuration_without_folders())

        self.kraddon("remove", "p.kraddon", "filters", "windows")

        self.assert_sound()
        self.assertTrue(any(name.startswith("files/filters/") for name in self.before))
        for name in self.parts_by_zipfile():
            self.assertFalse(name.startswith(("files/filters/", "files/windows/")), name)

    def configuration_without_folders(self):
        with open(self.path("configuration.json"), "w", encoding="ascii") as file:
            file.write('{"korvanPaths": ["generate"], "javaClassPaths": []}')
        return "configuration.json"

    def test_by_several_in_turn(self):
        self.kraddon("set", "p.kraddon", "properties", "summary=" + "longer " * 500)
        self.add("nothing", b"no longer", "--replace")
        self.kraddon("remove", "p.kraddon", "nothing")
        os.remove(self.path("tree", "nothing"))
        self.kraddon("unset", "p.kraddon", "revisions")
        self.add("nothing-new", b"")

        self.assert_sound()
        package = OpcPackage.open(self.package)
        self.assertEqual(package.core_properties.comments, "longer " * 500)


if __name__ == "__main__":
    unittest.main()
