# SPDX-License-Identifier: MIT
"""What another ZIP program would unpack differently is an error of `kraddon verify` in an add-on,
and at least a warning with --opc; what no honest program writes is refused when it is opened."""

import struct
import zipfile

import hostilezip
import test_hostile
from hostilezip import DEFLATED, Entry, addon, extra_field, unicode_path

LINK = test_hostile.LINK
DOS_FOLDER, DOS_LABEL = 0x10, 0x08
FOLDER = 0o040755 << 16
UTF8 = 1 << 11
CONTENT = b"content " * 50


def link_field(attributes=LINK):
    """The field in which attributes stand next to the data."""
    return extra_field(0x6C78, b"\x05" + struct.pack("<HL", 3 << 8 | 20, attributes))


class ReadersTest(test_hostile.HostileTest):

    def findings(self, *options):
        report = self.hostile("verify", "p.kraddon", "--json", *options)
        return report.json["packages"][0]["findings"], report.code

    def put_file(self, name=b"files/a.m", content=CONTENT, *others, **more):
        self.put(addon([Entry(name, content, **more), *others]))

    def ambiguous(self, expected):
        """The package is one that `verify` does not pass, for that reason."""
        found, code = self.findings()
        errors = {finding["id"] for finding in found if finding["severity"] == "error"}
        self.assertEqual(code, 1, found)
        self.assertIn(expected, errors, found)
        # Any package may have what only an add-on's file tree has not.
        if expected != "KR411":
            self.assertTrue(self.findings("--opc")[0])

    def refused_on_opening(self):
        for words in (("list",), ("info",), ("extract", "-d", "out")):
            result = self.hostile(words[0], "p.kraddon", *words[1:])
            self.assertEqual((result.code, result.out), (1, b""), words)

    def passed(self):
        """Apart from what any package without properties has."""
        found, _ = self.findings()
        self.assertEqual([finding for finding in found
                          if finding["id"] < "KR300" or finding["id"] == "KR411"], [])


class Names(ReadersTest):

    def test_a_unicode_path_with_another_name_is_an_error(self):
        for path in (b"files/b.m", b"../../evil.m", "files/\u00e9.m".encode(), b"files/a.m/", b""):
            for place in ("extra", "local_extra"):
                with self.subTest((path, place)):
                    self.put_file(**{place: unicode_path(b"files/a.m", path)})
                    self.ambiguous("KR116")

    def test_names_exchanged_by_unicode_paths_are_refused_on_opening(self):
        self.put(addon([
            Entry(b"files/a.m", b"1", extra=unicode_path(b"files/a.m", b"files/b.m")),
            Entry(b"files/b.m", b"2", extra=unicode_path(b"files/b.m", b"files/a.m"))]))
        self.refused_on_opening()
        self.ambiguous("KR116")

    def test_a_unicode_path_with_the_same_name_is_fine(self):
        field = unicode_path(b"files/a.m", b"files/a.m")
        self.put_file(extra=field, local_extra=field)
        self.passed()

    def test_a_name_that_one_header_marks_as_utf8_is_refused_when_it_is_read(self):
        for flags, local in ((UTF8, 0), (0, UTF8)):
            with self.subTest(flags):
                self.put_file("files/\u00e9.m".encode(), flags=flags, local_flags=local)
                self.ambiguous("KR105")
                self.refused("extract", "p.kraddon", "-d", "out", saying="UTF-8")

    def test_a_name_outside_ascii_is_an_error_unless_it_is_marked_as_utf8(self):
        self.put_file("files/\u00e9.m".encode())
        self.ambiguous("KR111")
        for name in ("files/e\u0301.m", "\ufefffiles/a.m"):
            self.put_file(name.encode(), flags=UTF8)
            self.ambiguous("KR111")
        self.put_file("files/\u00e9.m".encode(), flags=UTF8, made_by=20)
        self.ambiguous("KR111")
        self.put_file("files/\u00e9.m".encode(), flags=UTF8)
        self.assertEqual({finding["severity"] for finding in self.findings()[0]
                          if finding["id"] == "KR111"}, {"warning"})

    def test_a_name_that_programs_take_for_another_is_an_error(self):
        for name, expected in (
                (b"/files/a.m", "KR114"), (b"C:/files/a.m", "KR114"), (b"C:files/a.m", "KR114"),
                (b"files\\a.m", "KR114"), (b"\\files\\a.m", "KR114"), (b"files/\x01a.m", "KR114"),
                (b"files/a.m;1", "KR114"), (b"files/a.m;", "KR114"),
                (b"files/" + b"n/" * 2500 + b"a.m", "KR114"),
                (b"./files/a.m", "KR217"), (b".//files/a.m", "KR217"), (b"files./a.m", "KR217"),
                (b"x/./y.m", "KR217"), (b"x//y.m", "KR217"), (b"x/y.m.", "KR217"),
                (b"x/y.m ", "KR217"), (b"", "KR217"), (b".", "KR217"), (b"files/.", "KR217"),
                (b"files//a.m", "KR411"), (b"files/./a.m", "KR411"), (b"files/a.m.", "KR411"),
                (b"files/a.m ", "KR411"), (b"FILES/a.m.", "KR411")):
            with self.subTest(name):
                self.put(addon([Entry(name, b"evil"), Entry(b"files/good.m", b"good")]))
                self.ambiguous(expected)

    def test_an_item_beside_the_tree_that_all_see_alike_is_a_warning(self):
        for name in (b"docs/a b.m", b"[trash]/0000.dat", b"docs/readme.unknown", b"x%0Ay.m"):
            with self.subTest(name):
                self.put(addon([Entry(name, b"text"), Entry(b"files/good.m", b"good")]))
                found, _ = self.findings()
                self.assertEqual([finding["severity"] for finding in found
                                  if finding["id"] in ("KR114", "KR217")], ["warning"])

    def test_an_item_of_no_type_that_files_lie_below_is_an_error(self):
        for name in (b"files", b"FILES", b"files/x"):
            with self.subTest(name):
                self.put(addon([Entry(name, b"file"), Entry(b"files/x/a.m", b"a")]))
                self.ambiguous("KR217")

    def test_an_item_below_a_file_is_an_error(self):
        self.put(addon([Entry(b"doc.xml", b"<a/>"), Entry(b"doc.xml/a b", b"1")]))
        self.ambiguous("KR217")

    def test_items_that_are_not_parts_and_share_a_path_are_an_error(self):
        for first, second in ((b"a b", b"A b"), (b"a b", b"a b/c"), (b"a b/c", b"a b"),
                              (b"x", b"x/y")):
            with self.subTest((first, second)):
                self.put(addon([Entry(first, b"1"), Entry(second, b"2")]))
                self.ambiguous("KR217")


class Files(ReadersTest):

    def test_an_item_among_the_files_that_is_not_a_file_is_an_error(self):
        for name in (b"files/a b.m", b"files/a%0Ab.m", b"files/%FF.m", b"files/x.unknown",
                     b"files/%61.m", b"FILES/b.m", b"Files/b.m"):
            with self.subTest(name):
                self.put(addon([Entry(b"files/good.m", b"good"), Entry(name, b"other")]))
                self.ambiguous("KR411")

    def test_relationships_of_a_file_are_a_file_to_others(self):
        self.put(addon([Entry(b"files/a.m", b"a"), Entry(
            b"files/_rels/a.m.rels", hostilezip.RELATIONSHIPS.format("").encode())]))
        self.ambiguous("KR411")

    def test_pieces_of_a_file_are_files_to_others(self):
        self.put(addon([Entry(b"files/a.m/[0].piece", b"1"),
                        Entry(b"files/a.m/[1].last.piece", b"2")]))
        self.ambiguous("KR411")

    def test_a_file_that_the_table_gives_another_path_is_an_error(self):
        self.put(addon([Entry(b"files/a.m", b"a"), Entry(b"files/b.m", b"b")],
                       true_paths=[("/files/a.m", "b.m"), ("/files/b.m", "a.m")]))
        self.ambiguous("KR411")

    def test_made_up_parts_of_the_table_are_fine(self):
        self.put(addon([Entry(b"files/a.m", b"a"), Entry(b"metadata/fileTree/1.m", b"b")],
                       true_paths=[("/metadata/fileTree/1.m", "A.m")]))
        self.passed()

    def test_the_program_writes_no_name_that_others_change(self):
        for name in ("a.m;1", "b.m;", "c/d.m;23"):
            self.write(f"tree/{name}", name)
        self.write("tree/e;1/f.m", "kept")
        self.ok("create", self.sandbox / "p.kraddon", "tree", "--name", "Odd")
        with zipfile.ZipFile(self.sandbox / "p.kraddon") as container:
            self.assertEqual([name for name in container.namelist() if ";" in name],
                             ["files/e;1/f.m"])
        self.passed()
        self.assertEqual(self.hostile("extract", "p.kraddon", "-d", "out").code, 0)
        self.assertEqual(set(self.extracted()), {"a.m;1", "b.m;", "c/d.m;23", "e;1/f.m"})

    def test_long_names_come_back(self):
        path = "/".join(["n" * 200] * 25)
        self.write("short.m", "content")
        self.ok("create", self.sandbox / "p.kraddon", "--name", "Long")
        self.ok("add", self.sandbox / "p.kraddon", "short.m", "--as", path)
        self.passed()
        self.assertIn(path, self.hostile("list", "p.kraddon").text)


class Marks(ReadersTest):

    def test_marks_that_contradict_each_other_are_an_error(self):
        for attributes, made_by in (
                (FOLDER, 3), (FOLDER, 0), (DOS_FOLDER, 0), (DOS_FOLDER, 3), (DOS_FOLDER, 10),
                (LINK, 0), (LINK, 2), (LINK, 5), (LINK, 16), (LINK, 30), (DOS_LABEL, 3),
                (0o104755 << 16, 1)):
            with self.subTest((hex(attributes), made_by)):
                self.put_file(attributes=attributes, made_by=made_by << 8 | 20)
                self.ambiguous("KR117")

    def test_links_and_devices_are_an_error(self):
        for attributes, made_by in ((LINK, 3), (LINK, 19), (0o010644 << 16, 3),
                                    (0o020644 << 16, 3), (DOS_LABEL, 0), (DOS_LABEL, 10)):
            with self.subTest((hex(attributes), made_by)):
                self.put_file(attributes=attributes, made_by=made_by << 8 | 20)
                self.ambiguous("KR110")

    def test_a_folder_entry_that_holds_data_is_an_error(self):
        for name in (b"files/x/", b"files/x.m/", b"x/"):
            with self.subTest(name):
                self.put(addon([Entry(b"files/a.m", b"a"), Entry(name, b"payload")]))
                self.ambiguous("KR117")

    def test_a_folder_entry_over_a_file_is_an_error_in_an_addon(self):
        for name in (b"files/a.m/", b"files/A.m/", b"files/a.m/b/", b"files/./a.m/",
                     b"files/a.m./", b"[Content_Types].xml/", b"_rels/.rels/"):
            with self.subTest(name):
                self.put(addon([Entry(b"files/a.m", b"a"), Entry(name, attributes=FOLDER)]))
                found, code = self.findings()
                self.assertEqual(code, 1)
                self.assertIn("KR117", {finding["id"] for finding in found})
                self.assertEqual(self.findings("--opc"), ([], 0))

    def test_a_folder_entry_with_the_mode_of_a_file_is_an_error_in_an_addon(self):
        self.put(addon([Entry(b"files/x/", attributes=0o100644 << 16)]))
        self.assertIn("KR117", {finding["id"] for finding in self.findings()[0]})
        self.assertEqual(self.findings("--opc"), ([], 0))

    def test_folder_entries_without_data_are_fine(self):
        self.put(addon([Entry(b"files/", attributes=FOLDER | DOS_FOLDER),
                        Entry(b"files/x/", attributes=0, made_by=20),
                        Entry(b"files/x/a.m", b"a"),
                        Entry(b"files/y/", b"", DEFLATED, attributes=DOS_FOLDER, made_by=20)]))
        self.passed()

    def test_a_type_in_an_extra_field_is_an_error(self):
        asi = struct.pack("<LHLHH", 0, 0o120777, 0, 0, 0) + b"../x"
        for field in (link_field(), link_field(FOLDER), link_field(DOS_FOLDER),
                      extra_field(0x6C78, b""), extra_field(0x756E, asi)):
            for place in ("extra", "local_extra"):
                with self.subTest((field, place)):
                    self.put_file(**{place: field})
                    self.ambiguous("KR117")
        self.put_file(local_extra=link_field(0o100644 << 16))
        self.passed()


if __name__ == "__main__":
    test_hostile.kraddontest.main()
