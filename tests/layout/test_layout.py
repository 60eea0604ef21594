#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares what the sources include with what their folders link, and both with the picture and
the rules of docs/architecture.md."""
import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOP_FOLDERS = ("opc", "text", "fl", "hostarray", "addon", "gateway", "tool", "python")
MOST_FILES = 40
KEYWORDS = {"SOURCES", "PUBLIC", "PRIVATE", "INTERFACE", "STATIC", "SHARED", "OBJECT"}

# Folders whose sources may include a header of that prefix.
ONLY_IN = {
    "xercesc/": {"opc/model", "opc/plservices", "addon/packaging", "addon/checks"},
    "libdeflate": {"opc/zippackage"},
    "zlib.h": {"opc/zippackage"},
    "openssl/": {"opc/signatures", "opc/xmlsignatures", "text"},
    "libxml/": {"opc/xmlsignatures"},
    "xmlsec/": {"opc/xmlsignatures"},
    "boost/": {"opc/plservices", "opc/checks", "addon/packaging", "addon/checks", "addon/gallery",
               "tool/commands"},
    "cmark": {"text", "addon/gallery"},
    "sqlite3": {"addon/catalogue"},
}
# All that a folder other than opc/zippackage and opc/checks may know of the container.
CONTAINER_FACE = {"opc/zippackage/ZipPhysicalPackage.h"}
# Executables may link any room; they lie in folders of their own or at the top of tool/.
PROGRAMS = {"tool", "tool/manual", "python/stubs"}
# The dotted arrow: 'call' loads the library when it runs, and shares only the record of its table.
LOADED = ("tool/commands", "gateway/FunctionTable.h")
# A nested class, and words that are spelled once, have their own namespace in the folder's.
NESTED = {"opc/model/detail/PackageRelationships", "opc/model/detail/PackageState",
          "opc/model/detail/PartIndexLoader"}


def without_generators(word):
    return re.sub(r"\$<[^<>]*:([^<>]*)>", r"\1", word)


class House:
    """The CMake libraries of the code, by folder."""

    def __init__(self):
        self.library = {}  # folder -> library
        self.folder = {}   # library -> folder
        self.public = {}   # folder -> libraries
        self.private = {}
        for top in TOP_FOLDERS:
            for listing in sorted((ROOT / top).rglob("CMakeLists.txt")):
                self._read(listing)

    def _read(self, listing):
        folder = str(listing.parent.relative_to(ROOT))
        text = re.sub(r"#[^\n]*", "", listing.read_text())
        for call, body in re.findall(r"(kraddon_library|add_library)\(([^()]*)\)", text):
            words = body.split()
            if call == "add_library" and "OBJECT" in words:
                continue
            self.library[folder], self.folder[words[0]] = words[0], folder
            self._links(folder, words)
        for body in re.findall(r"target_link_libraries\(([^()]*)\)", text):
            words = body.split()
            if self.folder.get(words[0]) == folder:
                self._links(folder, words)

    def _links(self, folder, words):
        kind = None
        for word in words[1:]:
            if word in KEYWORDS:
                kind = word
            elif kind in ("PUBLIC", "INTERFACE"):
                self.public.setdefault(folder, set()).add(without_generators(word))
            elif kind == "PRIVATE":
                self.private.setdefault(folder, set()).add(without_generators(word))

    def links(self, folder):
        """The folders that a folder names in its own links."""
        named = self.public.get(folder, set()) | self.private.get(folder, set())
        return {self.folder[library] for library in named if library in self.folder}

    def visible(self, folder):
        """Those whose headers it may include: what it links, and what that links publicly."""
        seen, waiting = set(), list(self.links(folder))
        while waiting:
            other = waiting.pop()
            if other not in seen:
                seen.add(other)
                waiting += [self.folder[library] for library in self.public.get(other, set())
                            if library in self.folder]
        return seen


HOUSE = House()


def folder_of(path):
    """The folder that owns a source: detail/ and folders without a library are their parent's."""
    parts = pathlib.PurePosixPath(path).parent
    while str(parts) not in HOUSE.library and str(parts) not in PROGRAMS and str(parts) != ".":
        parts = parts.parent
    return str(parts)


def sources():
    for top in TOP_FOLDERS:
        for path in sorted((ROOT / top).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield str(path.relative_to(ROOT)), path.read_text()


def includes(text):
    return re.findall(r'^#include ["<]([^">]+)[">]', text, re.MULTILINE)


class Layout(unittest.TestCase):
    maxDiff = None

    def test_a_folder_includes_only_what_it_links(self):
        wrong = []
        for path, text in sources():
            own = folder_of(path)
            if own in PROGRAMS:
                continue
            allowed = HOUSE.visible(own) | {own}
            wrong += [f"{path} includes {name}" for name in includes(text)
                      if (ROOT / name).is_file() and folder_of(name) not in allowed
                      and (own, name) != LOADED]
        self.assertEqual(wrong, [])

    def test_only_the_folder_itself_uses_its_detail(self):
        wrong = [f"{path} includes {name}" for path, text in sources() for name in includes(text)
                 if "/detail/" in name and folder_of(name) != folder_of(path)]
        self.assertEqual(wrong, [])

    def test_the_namespace_is_the_folder(self):
        wrong = []
        for path, text in sources():
            folder = pathlib.PurePosixPath(path).parent
            expected = str(folder).replace("/", "::")
            named = re.findall(r"^namespace ([a-z0-9_:]+) \{", text, re.MULTILINE)
            # The host's own interface has names of its own, and so has the global function table.
            if folder.parts[0] in ("hostarray", "gateway") or expected == "fl::i18n":
                continue
            if path.rsplit(".", 1)[0] in NESTED:
                continue
            if named and not any(n == expected or n.startswith(expected + "::") for n in named):
                wrong.append(f"{path} is in {named[0]}")
        self.assertEqual(wrong, [])

    def test_only_few_folders_know_a_dependency(self):
        wrong = []
        for path, text in sources():
            for prefix, folders in ONLY_IN.items():
                wrong += [f"{path} includes {name}" for name in includes(text)
                          if name.startswith(prefix) and folder_of(path) not in folders]
        self.assertEqual(wrong, [])

    def test_only_the_container_and_its_checks_know_zip_records(self):
        wrong = [f"{path} includes {name}" for path, text in sources() for name in includes(text)
                 if name.startswith("opc/zippackage/") and name not in CONTAINER_FACE
                 and folder_of(path) not in ("opc/zippackage", "opc/checks")]
        self.assertEqual(wrong, [])

    def test_arrows_never_lead_round(self):
        for folder in HOUSE.library:
            behind, waiting = set(), list(HOUSE.links(folder))
            while waiting:
                other = waiting.pop()
                if other not in behind:
                    behind.add(other)
                    waiting += HOUSE.links(other)
            self.assertNotIn(folder, behind)

    def test_no_folder_is_crowded(self):
        count = {}
        for path, _ in sources():
            folder = str(pathlib.PurePosixPath(path).parent)
            count[folder] = count.get(folder, 0) + 1
        self.assertEqual({f: n for f, n in count.items() if n > MOST_FILES}, {})

    def test_tool_holds_main_program_and_rooms(self):
        here = {path.name for path in (ROOT / "tool").iterdir() if path.is_file()}
        self.assertEqual(here, {"CMakeLists.txt", "main.cpp", "Program.h", "Program.cpp"})

    def test_commands_holds_a_file_a_command(self):
        others = [path.name for path in (ROOT / "tool/commands").glob("*.cpp")
                  if not path.name.endswith("Command.cpp")]
        self.assertEqual(others, ["CommandTable.cpp"])

    def test_sources_are_listed_sorted_and_one_a_line(self):
        for folder in HOUSE.library:
            text = (ROOT / folder / "CMakeLists.txt").read_text()
            for body in re.findall(r"SOURCES([^()]*?)(?:PUBLIC|PRIVATE|\))", text):
                names = body.split()
                lines = [line.split() for line in body.splitlines() if line.split()]
                self.assertEqual(names, sorted(names), folder)
                self.assertTrue(len(names) == 1 or all(len(line) == 1 for line in lines), folder)

    def test_no_using_declaration_is_unused(self):
        for path, text in sources():
            code = re.sub(r"//[^\n]*", "", text)
            for name in re.findall(r"^ *using (?:\w+::)+(\w+);", code, re.MULTILINE):
                if path.endswith(".cpp"):
                    self.assertGreater(len(re.findall(rf"\b{name}\b", code)), 1, f"{path}: {name}")

    def test_every_source_belongs_to_a_library_or_program(self):
        for folder in HOUSE.library:
            listed = (ROOT / folder / "CMakeLists.txt").read_text()
            for path in sorted((ROOT / folder).rglob("*.cpp")):
                name = str(path.relative_to(ROOT / folder))
                if folder_of(str(path.relative_to(ROOT))) == folder:
                    self.assertIn(name, listed, folder)


class Picture(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.page = (ROOT / "docs/architecture.md").read_text()

    def arrows(self):
        """The solid arrows of the picture, by the folders that the boxes name."""
        drawing = re.search(r"```mermaid\n(.*?)```", self.page, re.DOTALL).group(1)
        boxes = {box: folder.rstrip("/")
                 for box, folder in re.findall(r'(\w+)\["([\w/]+)', drawing)}
        arrows = set()
        for line in drawing.splitlines():
            line = re.sub(r'\["[^"]*"\]', "", line)
            match = re.fullmatch(r"\s*(\w+) --> ([\w &]+)", line)
            if match:
                arrows |= {(boxes[match[1]], boxes[target])
                           for target in match[2].split(" & ")}
        return arrows

    def test_the_picture_draws_exactly_what_links(self):
        links = {(folder, target) for folder in HOUSE.library for target in HOUSE.links(folder)}
        drawn = {arrow for arrow in self.arrows() if arrow[0] not in PROGRAMS}
        self.assertEqual(sorted(drawn), sorted(links))

    def test_the_table_names_every_folder(self):
        named = set(re.findall(r"^\| `([\w/]+)/` \|", self.page, re.MULTILINE))
        self.assertEqual(named, set(HOUSE.library))


if __name__ == "__main__":
    unittest.main()
