# SPDX-License-Identifier: MIT
"""kraddon mv: files and folders, and the paths in documents that name them."""

import json
import os
import zipfile

import kraddontest

TREE = {"a.m": "a", "lib/b.m": "b", "lib/deep/c.m": "c", "lib/void/": "", "library.m": "d",
        "docs/x.txt": "x"}


class MvTest(kraddontest.CliTest):
    def setUp(self):
        super().setUp()
        self.package(files=TREE)
        for document, value in (
                ("apps", [{"name": "V", "guid": "6f0c1c1e-7d0e-4f0b-9a51-0b6f2d3c4e5f",
                           "relativePath": "lib/b.m", "installByDefault": "true"}]),
                ("examples", [{"name": "First", "examples": [
                    {"name": "e", "type": "", "source": "lib/deep/c.m", "main": "a.m",
                     "thumbnail": "library.m", "images": ["lib/b.m", "docs/x.txt"]}]}]),
                ("configuration", {"korvanPaths": [".", "lib", "lib/deep/"],
                                   "javaClassPaths": ["/lib/b.m"]})):
            self.write(f"{document}.json", json.dumps(value))
            self.run_kraddon("set", "p.kraddon", document, f"{document}.json")
        self.before = self.path("p.kraddon").read_bytes()

    def mv(self, *words):
        result = self.run_kraddon("mv", "p.kraddon", *words)
        self.assertEqual((result.code, result.out), (0, b""), result.errors)

    def get(self, document):
        return self.ok("get", "p.kraddon", document).json

    def refused(self, *words, message, hint=None):
        self.fails("mv", "p.kraddon", *words, message=message, hint=hint)
        self.assertEqual(self.path("p.kraddon").read_bytes(), self.before)

    def edit(self, name, changes):
        with zipfile.ZipFile(self.path(name)) as archive:
            entries = [(info, archive.read(info)) for info in archive.infolist()]
        with zipfile.ZipFile(self.path(name), "w") as archive:
            for info, content in entries:
                archive.writestr(info.filename, changes.get(info.filename, content))


class Files(MvTest):
    def test_a_file_gets_another_name(self):
        self.mv("a.m", "new/name.m")
        self.assertEqual(self.listing(), ["docs/x.txt", "lib/b.m", "lib/deep/c.m", "lib/void",
                                          "library.m", "new/name.m"])
        self.assertEqual(self.entries()["files/new/name.m"], b"a")
        self.assert_sound()

    def test_a_folder_moves_with_all_below_it(self):
        self.mv("lib", "src/core")
        self.assertEqual(self.listing(), ["a.m", "docs/x.txt", "library.m", "src/core/b.m",
                                          "src/core/deep/c.m", "src/core/void"])
        self.assertEqual(self.ok("extract", "p.kraddon", "src/core/deep/c.m", "--stdout").out, b"c")
        self.assert_sound()

    def test_an_existing_folder_takes_it(self):
        self.mv("a.m", "docs")
        self.mv("lib/", "/docs/")
        self.mv("docs/x.txt", "/")
        self.mv("library.m", "fresh/")
        self.assertEqual(self.listing(), ["docs/a.m", "docs/lib/b.m", "docs/lib/deep/c.m",
                                          "docs/lib/void", "fresh/library.m", "x.txt"])

    def test_the_folder_above_stays(self):
        self.mv("docs/x.txt", "x.txt")
        self.assertIn("docs", self.listing())

    def test_only_the_case_can_change(self):
        self.mv("lib", "Lib")
        self.mv("a.m", "A.m")
        self.assertEqual(self.listing(), ["A.m", "Lib/b.m", "Lib/deep/c.m", "Lib/void",
                                          "docs/x.txt", "library.m"])
        self.assertIn("files/A.m", self.entries())

    def test_a_type_of_its_own_stays_while_the_extension_does(self):
        types = self.entries()["[Content_Types].xml"]
        for old, new, moved in (("a.m", "b.m", "b.m"), ("a.m", "A.m", "A.m"),
                                ("a.m", "a.M", "a.M"), ("a.m", "x/b.M", "x/b.M"),
                                ("lib/b.m", "lib/B.m", "lib/B.m"), ("lib", "LIB", "LIB/b.m")):
            with self.subTest(old=old, new=new):
                part = "lib/b.m" if old == "lib" else old
                own = '<Override PartName="/files/{}" ContentType="text/x-own"/>'
                self.write("p.kraddon", self.before)
                self.edit("p.kraddon", {"[Content_Types].xml": types.replace(
                    b"</Types>", own.format(part).encode() + b"</Types>")})
                self.mv(old, new)
                stored = self.entries()["[Content_Types].xml"].decode()
                self.assertIn(own.format(moved), stored)
                self.assertEqual(stored.count("text/x-own"), 1)
                self.assert_sound()

    def test_time_mode_and_type_stay(self):
        self.write("run.sh", "#!/bin/sh\n").chmod(0o755)
        os.utime(self.path("run.sh"), (1600000000, 1600000000))
        self.ok("add", "p.kraddon", "run.sh")
        self.mv("run.sh", "bin/go.sh")
        self.ok("extract", "p.kraddon", "bin/go.sh", "-d", "out")
        status = self.path("out/bin/go.sh").stat()
        self.assertEqual((status.st_mtime, status.st_mode & 0o111), (1600000000, 0o111))

    def test_a_large_file_keeps_its_content(self):
        big = os.urandom(1 << 20) * 9
        self.write("big.bin", big)
        self.ok("add", "p.kraddon", "big.bin")
        self.mv("big.bin", "lib/large.bin")
        self.assertEqual(self.ok("extract", "p.kraddon", "lib/large.bin", "--stdout").out, big)

    def test_nothing_is_replaced(self):
        self.refused("a.m", "lib/b.m", message="path 'lib/b.m' already exists in the package")
        self.refused("a.m", "a.m", message="path 'a.m' already exists in the package")
        self.refused("lib/b.m", "lib", message="path 'lib/b.m' already exists in the package")
        self.refused("a.m", "library.m/x",
                     message="cannot add 'library.m/x': 'library.m' is a file")

    def test_impossible_moves_are_refused(self):
        self.refused("lib", "lib/deep", message="cannot move 'lib': 'lib/deep/lib' lies below it")
        self.refused("lib", "lib/new", message="cannot move 'lib': 'lib/new' lies below it")
        self.refused("/", "x", message="cannot move '/': it is the top of the package")
        self.refused("a.m", "", message="cannot move to '': the path is empty",
                     hint="'/' is the top of the package")
        self.refused("LIB/b.m", "x", hint="did you mean 'lib/b.m'?",
                     message="cannot find 'LIB/b.m': the package has nothing with that name")
        self.assertEqual(self.run_kraddon("mv", "p.kraddon", "a.m", "../x").code, 1)
        self.misused("mv", "p.kraddon", "a.m",
                     message="missing operand 'TO': its new path, or an existing folder to move it "
                             "into")


class References(MvTest):
    def test_documents_follow_a_folder(self):
        self.mv("lib", "src")
        self.assertEqual(self.get("apps")[0]["relativePath"], "src/b.m")
        example = self.get("examples")[0]["examples"][0]
        self.assertEqual([example[name] for name in ("source", "main", "thumbnail", "images")],
                         ["src/deep/c.m", "a.m", "library.m", ["src/b.m", "docs/x.txt"]])
        self.assertEqual(self.get("configuration"), {"korvanPaths": [".", "src", "src/deep/"],
                                                     "javaClassPaths": ["/src/b.m"]})

    def test_documents_follow_a_file(self):
        self.mv("lib/b.m", "docs")
        self.assertEqual(self.get("apps")[0]["relativePath"], "docs/b.m")
        self.assertEqual(self.get("configuration"), {"korvanPaths": [".", "lib", "lib/deep/"],
                                                     "javaClassPaths": ["/docs/b.m"]})

    def test_other_documents_stay_as_they_are(self):
        before = self.entries()
        self.mv("library.m", "other.m")
        after = self.entries()
        for name, content in before.items():
            if name.startswith("metadata/") and "example" not in name and "Properties" not in name:
                self.assertEqual(after[name], content, name)

    def test_references_can_be_kept(self):
        before = self.get("apps"), self.get("examples"), self.get("configuration")
        self.mv("lib", "src", "--keep-references")
        self.assertEqual((self.get("apps"), self.get("examples"), self.get("configuration")),
                         before)

    def test_a_dry_run_and_verbose_name_what_changes(self):
        lines = ["lib/b.m -> x/y.m", "configuration.javaClassPaths[0]: /lib/b.m -> /x/y.m",
                 "apps[0].relativePath: lib/b.m -> x/y.m",
                 "examples[0].examples[0].images[0]: lib/b.m -> x/y.m"]
        dry = self.run_kraddon("mv", "p.kraddon", "lib/b.m", "x/y.m", "--dry-run")
        self.assertEqual((dry.code, dry.text.splitlines()), (0, lines))
        self.assertEqual(self.path("p.kraddon").read_bytes(), self.before)
        done = self.run_kraddon("mv", "p.kraddon", "lib/b.m", "x/y.m", "-v")
        self.assertEqual([line for line in done.errors.splitlines() if line.startswith("moved: ")],
                         [f"moved: {line}" for line in lines])

    def test_a_document_that_cannot_be_read_stops_it(self):
        self.edit("p.kraddon", {"metadata/applications.xml": b"<a"})
        self.before = self.path("p.kraddon").read_bytes()
        self.assertEqual(self.run_kraddon("mv", "p.kraddon", "a.m", "b.m").code, 1)
        self.assertEqual(self.path("p.kraddon").read_bytes(), self.before)
        self.mv("a.m", "b.m", "--keep-references")


if __name__ == "__main__":
    kraddontest.main()
