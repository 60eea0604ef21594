# SPDX-License-Identifier: MIT
"""Packages that the program and the reader of the format both read."""

import json
import os
import zipfile

import format_reader
from program import KRADDON, ScratchCase, run

# If starting the program takes long, only some of the answers are compared for each package.
SLOW = os.environ.get("KRADDON_SLOW_BUILD") == "1"

TYPES, LINKS = "[Content_Types].xml", "_rels/.rels"


class FormatCase(ScratchCase):
    maxDiff = None
    turn = 0

    def program(self):
        return os.path.abspath(KRADDON)

    def write(self, name, content):
        os.makedirs(os.path.dirname(self.path(name)), exist_ok=True)
        with open(self.path(name), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())

    def make_tree(self, root, files, folders=()):
        os.mkdir(self.path(root))
        for name, content in files.items():
            self.write(os.path.join(root, name), content)
        for name in folders:
            os.makedirs(self.path(root, name))

    def make(self, files, folders=()):
        """The package p.kraddon."""
        self.make_tree("tree", files, folders)
        self.kraddon("create", "p.kraddon", "tree", "--name", "N & <é>", "--author", "A")

    def set(self, document, value):
        self.write("value.json", json.dumps(value))
        self.kraddon("set", "--no-verify", "p.kraddon", document, "value.json")

    def entries(self):
        with zipfile.ZipFile(self.path("p.kraddon")) as package:
            return {name: package.read(name) for name in package.namelist()}

    def rewrite(self, changes):
        """Writes q.kraddon: p.kraddon with changed entries. A change is the new content, None to
        remove the entry, or a function of the old content."""
        entries = self.entries()
        for name, change in changes.items():
            entries[name] = change(entries[name].decode()) if callable(change) else change
        with zipfile.ZipFile(self.path("q.kraddon"), "w") as package:
            for name, content in entries.items():
                if content is not None:
                    package.writestr(name, content)

    def says(self, *words):
        return json.loads(self.kraddon(*words).stdout)

    def assert_agree(self, package="p.kraddon"):
        """The reader and the program agree about a package. Returns their result."""
        found = format_reader.read(self.path(package))
        FormatCase.turn += 1
        for at, (name, document) in enumerate(found["documents"].items()):
            if not SLOW or (at + FormatCase.turn) % 3 == 0:
                self.assertEqual(document, self.says("get", package, name), name)
        listed = self.says("list", "-q", "--json", package)["entries"]
        self.assertEqual(found["listing"], [(entry["path"], entry["kind"]) for entry in listed])
        reported = self.says("info", "-q", "--json", "--digest", package)
        self.assertEqual(found["digest"], reported["digest"])
        if not SLOW or FormatCase.turn % 3 == 0:
            self.assert_same_screenshot(package, found["screenshot"], reported["screenshot"])
            self.assert_same_files(package, found)
        return found

    def assert_same_screenshot(self, package, found, reported):
        if found is None:
            self.assertIsNone(reported)
            outcome = run(KRADDON, "screenshot", package, "-o", "-", cwd=self.folder)
            self.assertEqual(outcome.code, 1, outcome)
            return
        self.assertEqual(reported, {"part": found["part"], "type": found["type"],
                                "size": len(found["bytes"])})
        self.assertEqual(found["bytes"],
                         self.kraddon("screenshot", package, "-o", "-").stdout)

    def assert_same_files(self, package, found):
        self.kraddon("extract", "-q", package, "-d", "out", "--force")
        files, folders = {}, []
        for folder, below, names in os.walk(self.path("out")):
            relative = os.path.relpath(folder, self.path("out"))
            for name in names:
                with open(os.path.join(folder, name), "rb") as file:
                    files[os.path.normpath(os.path.join(relative, name))] = file.read()
            if not below and not names and relative != ".":
                folders.append(relative)
        self.succeeds("rm", "-rf", "out")
        self.assertEqual(found["files"], files)
        self.assertEqual({path for path, kind in found["listing"] if kind == "folder"},
                         set(folders))

    def assert_both_refuse(self, *words):
        """The reader refuses q.kraddon, and so does this command of the program."""
        with self.assertRaises(format_reader.Fault):
            format_reader.read(self.path("q.kraddon"))
        outcome = run(KRADDON, *words, cwd=self.folder)
        self.assertEqual(outcome.code, 1, outcome)
