# SPDX-License-Identifier: MIT
"""A reader that was written from docs/format-reference.md reads packages as the program does."""

import os
import random
import re
import unittest
import zipfile

import format_reader
from format_case import FormatCase

DOCS = os.path.join(os.path.dirname(__file__), "..", "..", "docs")

ODD = " a\tb\r\nc\rd\n <x a=\"1\">&amp;'</x> ]]> größe 😀 \u0085\u2028\ufeff%41\\ "
EVERYTHING = {
    "license": {"type": ODD, "text": ODD * 3},
    "configuration": {"korvanPaths": [".", "lib", ODD, ""], "javaClassPaths": ["java/wave.jar"]},
    "apps": [{"name": ODD, "guid": "g", "relativePath": "a.m", "installByDefault": "true"},
             {"name": "", "guid": "", "relativePath": "", "installByDefault": "false"}],
    "examples": [
        {"name": ODD, "examples": [
            {"name": "e", "type": ODD, "source": "s", "main": "m", "thumbnail": "t",
             "images": ["i", "", ODD]},
            {"name": "", "type": "", "source": "", "main": "", "thumbnail": "", "images": []}]},
        {"name": "none", "examples": []}],
    "revisions": [{"date": "2026-02-01", "version": "2", "description": ODD},
                  {"date": "", "version": "", "description": ""}],
    "requirements": {
        "productDependency": [{"name": ODD, "version": "9.1", "identifier": "KV"},
                              {"name": "", "version": "", "identifier": ""}],
        "supportPackageDependency": [{"name": "s", "version": "v", "identifier": ODD}]}}
EMPTY = {
    "license": {"type": "", "text": ""},
    "configuration": {"korvanPaths": [], "javaClassPaths": []}, "apps": [], "examples": [],
    "revisions": [], "requirements": {"productDependency": None, "supportPackageDependency": None}}

NAMES = [
    "README", "readme", "Readme", "end.", "...", "back\\slash", "%41", "%", "%2541", "a b",
    "größe.m", "lib/größe.m", "_rels/x.rels", "_RELS/y.m.rels", "x.rels", "line\nbreak.m", "tab\t",
    "del\x7f",
    "next\u0085line", "[Content_Types].xml", "a^b", "a\"b", "(x)", "a:b", "a;b@c=d,e+f!$&'*~",
    "lib.m", "lib a", "lib-/q", "lib/a.m", "LIB/other", "folder./file", "\uff5e", "\U0001f600/x",
    "cafe\u0301", "café", "\ufffe", "\U0010ffff", "metadata/license.xml", "files/files", "N.EXT"]
FOLDERS = ["empty", "Empty", "empty.", "deep/er/empty", "leer/ä%", "_rels/none", "line\nbreak"]


class WrittenPackages(FormatCase):
    def test_hold_every_document(self):
        self.make({"a.m": "x"})
        self.kraddon("set", "--no-verify", "p.kraddon", "properties", *(name + "=" + ODD for name in (
            "name", "version", "summary", "authorName", "authorContact", "authorOrganization",
            "GUID", "description")))
        for name, value in EVERYTHING.items():
            self.set(name, value)

        found = self.assert_agree()

        self.assertEqual(found["documents"]["license"], EVERYTHING["license"])
        self.assertEqual(found["documents"]["configuration"], EVERYTHING["configuration"])
        self.assertEqual(found["documents"]["properties"]["authorContact"], ODD)

    def test_hold_no_documents(self):
        self.make({})

        found = self.assert_agree()

        del found["documents"]["properties"]
        self.assertEqual(found["documents"], EMPTY)

    def test_hold_empty_documents(self):
        self.make({})
        for name, value in EMPTY.items():
            self.set(name, value)

        found = self.assert_agree()

        del found["documents"]["properties"]
        self.assertEqual(found["documents"], EMPTY)

    def test_hold_files_of_awkward_names_and_empty_folders(self):
        self.make({name: name for name in NAMES}, FOLDERS)

        found = self.assert_agree()

        self.assertEqual(found["files"], {name: name.encode() for name in NAMES})
        self.assertEqual({path for path, kind in found["listing"] if kind == "folder"},
                         set(FOLDERS))

    def test_hold_a_folder_that_lost_its_last_file(self):
        self.make({"a/b/c.m": "x", "a/d.m": "y"})
        self.kraddon("remove", "p.kraddon", "a/b/c.m")

        found = self.assert_agree()

        self.assertEqual(found["listing"], [("a/b", "folder"), ("a/d.m", "file")])

    def test_hold_a_screenshot(self):
        images = {"s.png": b"\x89PNG\r\n\x1a\n", "s.jpg": b"\xff\xd8\xff",
                  "s.jpeg": b"\xff\xd8\xff", "s.gif": b"GIF89a", "s.jpe": b"\xff\xd8\xff",
                  "s.TIFF": b"II*\0", "s.bmp": b"BM" + bytes(8),
                  "S.PNG": b"\x89PNG\r\n\x1a\n"}
        plain = ("png", "gif", "bmp", "tiff")
        self.make({"a.m": "x"})
        for name, content in images.items():
            with self.subTest(name):
                self.write(name, content + bytes(range(256)))
                self.kraddon("screenshot", "p.kraddon", name)

                shot = self.assert_agree()["screenshot"]

                extension = {"jpeg": "jpg", "jpe": "jpg"}.get(name[2:], name[2:])
                kind = extension.lower() if extension.lower() in plain else "jpeg"
                self.assertEqual(shot, {
                    "part": "/metadata/primaryScreenShot." + extension,
                    "type": "image/" + kind,
                    "bytes": content + bytes(range(256))})

    def test_hold_random_content(self):
        chance = random.Random(20260202)
        self.make({"a.m": "x"})
        for _ in range(25):
            documents = some_documents(chance)
            for name, value in documents.items():
                self.set(name, value)

            found = self.assert_agree()["documents"]

            self.assertEqual(without_empty(found["examples"]), without_empty(
                documents["examples"]))
            self.assertEqual(found["license"], documents["license"])
            self.assertEqual(found["revisions"], documents["revisions"])

    def test_hold_random_properties(self):
        chance = random.Random(20260203)
        self.make({})
        for _ in range(25):
            properties = some_record(chance, "name", "version", "summary", "authorName",
                                     "authorContact", "authorOrganization", "GUID", "description")
            self.set("properties", properties | {"type": "Korvan Toolbox",
                                                 "KorvanRelease": "R2047b"})

            found = self.assert_agree()["documents"]["properties"]

            self.assertEqual(found, found | properties)


PIECES = ["a", "Z", "é", "😀", "<", ">", "&", '"', "'", "]]>", "<!--", "-->", "&amp;", "\t", "\n",
          "\r", "\r\n", " ", "  ", "\x7f", "\u0085", "\u00a0", "\u2028", "\ufeff", "\ufdd0",
          "\ue000", "\U0010fffd", "%41", "\\", "/", "\ud7ff"]


def some_text(chance):
    return "".join(chance.choice(PIECES) for _ in range(chance.choice([0, 1, 2, 5, 40])))


def some_record(chance, *names):
    return {name: some_text(chance) for name in names}


def some(chance, maker):
    return [maker() for _ in range(chance.choice([0, 1, 2, 7]))]


def some_documents(chance):
    def text():
        return some_text(chance)

    def product():
        return some_record(chance, "name", "version", "identifier")

    def app():
        return some_record(chance, "name", "guid", "relativePath") | {
            "installByDefault": chance.choice(["true", "false"])}

    def example():
        return some_record(chance, "name", "type", "source", "main", "thumbnail") | {
            "images": some(chance, text)}

    return {
        "license": some_record(chance, "type", "text"),
        "configuration": {"korvanPaths": some(chance, text), "javaClassPaths": some(chance, text)},
        "apps": some(chance, app),
        "examples": some(chance, lambda: {"name": text(), "examples": some(chance, example)}),
        "revisions": some(chance, lambda: some_record(chance, "date", "version", "description")),
        "requirements": {"productDependency": some(chance, product),
                         "supportPackageDependency": some(chance, product)}}


def without_empty(value):
    """The same JSON with None for empty lists."""
    if isinstance(value, list):
        return [without_empty(item) for item in value] or None
    if isinstance(value, dict):
        return {name: without_empty(item) for name, item in value.items()}
    return value


class ThePages(FormatCase):
    """What the pages about the format show is what the program writes."""

    @classmethod
    def setUpClass(cls):
        cls.introduction = page("format.md")
        cls.shown = {}
        for section in page("format-reference.md").split("\n## ")[1:]:
            heading, _, rest = section.partition("\n")
            if "```xml\n" in rest:
                name = heading.split("`")[-2].rpartition("metadata/")[2]
                cls.shown[name] = unbroken(rest.split("```xml\n")[1].split("```")[0])

    def make_sample(self):
        session = re.search(r"```console\n(.*?)\$ TZ=UTC unzip", self.introduction, re.DOTALL)[1]
        session = re.sub(r"(?m)^[$>] ", "", session)
        self.succeeds("sh", "-ec", 'kraddon() { "%s" "$@"; }\n%s' % (self.program(), session))

    def test_shows_the_directory_of_its_sample(self):
        self.make_sample()

        said = self.succeeds("env", "TZ=UTC", "unzip", "-v", "p.kraddon").stdout.decode()

        listing = re.search(r"unzip -v p.kraddon\n(.*?)```", self.introduction, re.DOTALL)[1]
        self.assertEqual(said, listing)

    def test_shows_the_documents_of_its_sample(self):
        self.make_sample()
        with zipfile.ZipFile(self.path("p.kraddon")) as package:
            for name in package.namelist():
                if name.startswith("files/") or "fileTree/" in name:
                    continue
                with self.subTest(name):
                    self.assertEqual(package.read(name).decode(),
                                     self.shown[name.removeprefix("metadata/")])

    def test_shows_documents_as_they_are_written(self):
        self.make({})
        for name, (kind, reader) in format_reader.DOCUMENTS.items():
            with self.subTest(name):
                shown = self.shown[kind + ".xml"]

                self.set(name, reader(format_reader.parse(shown.encode())))

                written = self.entries()["metadata/%s.xml" % kind].decode()
                self.assertEqual(without_declaration(written), without_declaration(shown))


def page(name):
    with open(os.path.join(DOCS, name), encoding="utf-8") as file:
        return file.read()


def without_declaration(document):
    return re.sub(r"^<\?xml.*?\?>", "", document)


def unbroken(shown):
    """XML of a page without the line breaks."""
    return re.sub("\n +", " ", shown).replace("\n", "")


if __name__ == "__main__":
    unittest.main()
