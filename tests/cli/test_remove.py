# SPDX-License-Identifier: MIT
"""kraddon remove, kraddon mkdir"""

import kraddontest

FILES = {"a.m": "one", "lib/b.m": "two" * 500, "lib/c.log": "log", "lib/deep/d.m": "three",
         "void/": "", "end.": "no part name", "_rels/x.rels": "none either"}
TABLE = "metadata/fileTree.xml"


class RemoveTest(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", FILES)
        self.before = self.path("p.kraddon").read_bytes()
        self.raw = self.raw_entries()

    def assert_unchanged(self):
        self.assertEqual(self.path("p.kraddon").read_bytes(), self.before)
        self.assertEqual(self.names(), ["p.kraddon", "p.kraddon.src"])

    def made_up(self):
        return sorted(name for name in self.entries() if name.startswith("metadata/fileTree/"))


class Remove(RemoveTest):

    def test_a_file_goes_and_the_others_stay_as_they_are(self):
        self.ok("remove", "p.kraddon", "lib/b.m")

        self.assert_sound()
        self.assertEqual(self.listing(),
                         ["_rels/x.rels", "a.m", "end.", "lib/c.log", "lib/deep/d.m", "void"])
        self.assertNotIn("files/lib/b.m", self.entries())
        del self.raw["files/lib/b.m"]
        self.assert_entries_kept(self.raw)

    def test_a_folder_goes_with_all_below_it(self):
        self.ok("remove", "p.kraddon", "/lib/", "void")
        self.assertEqual(self.listing(), ["_rels/x.rels", "a.m", "end."])
        self.assert_sound()

    def test_the_folder_of_the_last_file_stays(self):
        self.ok("remove", "p.kraddon", "lib/deep/d.m")
        self.assertIn("lib/deep", self.listing())
        self.ok("extract", "p.kraddon", "-d", "out")
        self.assertEqual(self.names("out/lib/deep"), [])

    def test_the_table_of_the_tree_keeps_what_is_left(self):
        self.assertEqual(len(self.made_up()), 2)
        self.ok("remove", "p.kraddon", "end.")
        self.assertEqual(len(self.made_up()), 1)
        self.assertNotIn(b"end.", self.entries()[TABLE])
        self.ok("remove", "p.kraddon", "_rels", "void")
        entries = self.entries()
        self.assertNotIn(TABLE, entries)
        self.assertEqual(self.made_up(), [])
        self.assertNotIn(b"fileTree", entries["_rels/.rels"])
        self.assertNotIn(b"fileTree", entries["[Content_Types].xml"])
        self.assert_sound()

    def test_a_path_that_is_not_there_changes_nothing(self):
        for path, hint in (("none", None), ("lib/none", None), ("a.m/x", None),
                           ("lib/../a.m", "did you mean 'a.m'?")):
            self.fails("remove", "p.kraddon", "a.m", path,
                       message=f"cannot find '{path}': the package has nothing with that name",
                       hint=hint)
        self.fails("remove", "p.kraddon", "",
                   message="cannot find '': the path is empty", hint="'/' stands for everything")
        self.fails("remove", "p.kraddon", "--glob", "a.m", "*.x",
                   message="cannot find '*.x': the package has nothing with that name")
        self.misused("remove", "p.kraddon",
                     message="missing operand 'PATH': files, or folders with everything below them")
        self.assert_unchanged()

    def test_paths_are_literal_without_glob(self):
        self.fails("remove", "p.kraddon", "*.m",
                   message="cannot find '*.m': the package has nothing with that name",
                   hint="did you mean 'a.m'?")
        self.assert_unchanged()

    def test_what_is_named_twice_goes_once(self):
        self.ok("remove", "p.kraddon", "lib/b.m", "lib", "lib/deep", "a.m", "a.m")
        self.assertEqual(self.listing(), ["_rels/x.rels", "end.", "void"])

    def test_the_root_is_everything(self):
        self.ok("remove", "-q", "p.kraddon", "/")
        self.assertEqual(self.listing(), [])
        self.assert_sound()
        self.assertEqual(self.ok("get", "p.kraddon", "properties").json["name"], "Wave Tools")

    def test_patterns_take_files_and_whole_folders(self):
        self.ok("remove", "p.kraddon", "--glob", "*.m", "!a.m")
        self.assertEqual(self.listing(),
                         ["_rels/x.rels", "a.m", "end.", "lib/c.log", "lib/deep", "void"])
        self.ok("remove", "p.kraddon", "--glob", "lib/", "v*", "!c.log")
        self.assertEqual(self.listing(), ["_rels/x.rels", "a.m", "end.", "lib/c.log"])
        self.ok("remove", "p.kraddon", "--glob", "lib")
        self.assertEqual(self.listing(), ["_rels/x.rels", "a.m", "end."])
        self.ok("remove", "-q", "p.kraddon", "--glob", "**")
        self.assertEqual(self.listing(), [])
        self.assert_sound()

    def test_a_pattern_for_the_content_leaves_the_folder(self):
        self.ok("remove", "p.kraddon", "--glob", "lib/**")
        self.assertIn("lib", self.listing())

    def test_a_dry_run_names_what_would_go(self):
        lib = "lib/\nlib/b.m\nlib/c.log\nlib/deep/\nlib/deep/d.m\n"
        self.assertEqual(self.ok("remove", "p.kraddon", "lib", "a.m", "lib/b.m", "--dry-run").text,
                         lib + "a.m\n")
        self.assertEqual(self.ok("remove", "p.kraddon", "--glob", "lib", "*.m", "--dry-run").text,
                         "a.m\n" + lib)
        self.assertEqual(
            self.ok("remove", "p.kraddon", "--glob", "lib", "!c.log", "--dry-run").text,
            "lib/b.m\nlib/deep/\nlib/deep/d.m\n")
        self.fails("remove", "p.kraddon", "none", "--dry-run",
                   message="cannot find 'none': the package has nothing with that name")
        self.assert_unchanged()

    def test_what_was_removed_can_be_added_again(self):
        self.ok("remove", "p.kraddon", "end.", "lib")
        self.write("new", "fresh")
        self.ok("add", "-q", "p.kraddon", "new", "--as", "end.")
        self.ok("add", "p.kraddon", "new", "--as", "lib")
        self.ok("extract", "p.kraddon", "-d", "out")
        self.assertEqual(self.path("out/end.").read_text(), "fresh")
        self.assertEqual(self.path("out/lib").read_text(), "fresh")
        self.assert_sound()


class Mkdir(RemoveTest):

    def test_folders_and_those_above_come_into_being(self):
        self.ok("mkdir", "-q", "p.kraddon", "new/deep/", "/lib/x", "odd \t.")
        self.assert_sound()
        self.assertEqual([path for path in
                          self.ok("list", "p.kraddon", "-0").text.split("\0")
                          if path not in FILES and path + "/" not in FILES],
                         ["lib/x", "new/deep", "odd \t.", ""])
        self.assert_entries_kept(self.raw)

    def test_an_existing_folder_is_not_an_error_and_nothing_is_written(self):
        self.ok("mkdir", "p.kraddon", "lib", "void", "/", "lib/deep/")
        self.assert_unchanged()

    def test_an_existing_file_is_an_error_and_nothing_is_changed(self):
        self.fails("mkdir", "p.kraddon", "fresh", "a.m",
                   message="cannot create the folder 'a.m': the package has a file with that name")
        self.fails("mkdir", "p.kraddon", "fresh", "a.m/x",
                   message="cannot add 'a.m/x': 'a.m' is a file")
        self.assert_unchanged()

    def test_paths_that_no_package_can_hold_are_refused(self):
        self.fails("mkdir", "p.kraddon", "",
                   message="cannot create the folder '': the path is empty")
        self.fails("mkdir", "p.kraddon", b"caf\xe9",
                   message="cannot create the folder 'caf\\xe9': it is not UTF-8")
        for path in ("..", "a//b", "x/./y"):
            self.assertIn(path, self.fails("mkdir", "p.kraddon", path).errors)
        self.misused("mkdir", "p.kraddon", message="missing operand 'PATH': the folders to create")
        self.assert_unchanged()


if __name__ == "__main__":
    kraddontest.main()
