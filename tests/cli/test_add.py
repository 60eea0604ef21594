# SPDX-License-Identifier: MIT
"""kraddon add"""

import os
import zipfile

import kraddontest

FILES = {"a.m": "one", "lib/b.m": "two" * 500, "lib/void/": "", "z.bin": bytes(range(256)) * 40}


class Add(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", FILES)
        self.before = self.path("p.kraddon").read_bytes()
        self.raw = self.raw_entries()

    def assert_unchanged(self):
        self.assertEqual(self.path("p.kraddon").read_bytes(), self.before)
        self.assertEqual([name for name in self.names() if name.startswith("p.kraddon.")],
                         ["p.kraddon.src"])

    def test_a_file_goes_in_under_its_own_name(self):
        self.write("deep/new.m", "content")
        os.utime(self.path("deep/new.m"), (1600000001, 1600000001))
        self.path("deep/new.m").chmod(0o755)

        self.ok("add", "p.kraddon", "deep/new.m")

        self.assert_sound()
        self.assertEqual(self.listing(), ["a.m", "lib/b.m", "lib/void", "new.m", "z.bin"])
        self.assertEqual(self.entries()["files/new.m"], b"content")
        self.assert_entries_kept(self.raw)
        self.ok("extract", "p.kraddon", "new.m", "-d", "out")
        info = self.path("out/new.m").stat()
        self.assertEqual((info.st_mtime, info.st_mode & 0o100), (1600000001, 0o100))

    def test_a_folder_goes_in_under_its_name_with_all_below_it(self):
        self.tree({"x.m": "x", "sub/y.m": "y", "hollow/": ""}, "kit")
        for words, place in ((["kit"], ""), (["kit/", "--into", "lib"], "lib/"),
                             (["./kit//", "--into", "/new/place/"], "new/place/")):
            self.path("p.kraddon").write_bytes(self.before)
            self.ok("add", "p.kraddon", *words)
            self.assertEqual([path for path in self.listing() if "kit" in path],
                             [f"{place}kit/hollow", f"{place}kit/sub/y.m", f"{place}kit/x.m"])
            self.assert_entries_kept(self.raw)
        self.assert_sound()

    def test_a_folder_without_a_name_of_its_own_gives_its_content(self):
        self.tree({"x.m": "x", "sub/y.m": "y"}, "kit")
        self.ok("add", "p.kraddon", "kit/.", "--into", "one")
        self.ok("-C", "kit", "add", "../p.kraddon", ".", "--into", "two")
        self.ok("-C", "kit/sub", "add", "../../p.kraddon", "..", "--into", "three")
        self.assertEqual([path for path in self.listing() if path.endswith(("x.m", "y.m"))],
                         [f"{place}/{name}" for place in ("one", "three", "two")
                          for name in ("sub/y.m", "x.m")])

    def test_an_empty_folder_goes_in_as_one(self):
        self.path("hollow").mkdir()
        self.ok("add", "p.kraddon", "hollow", "--into", "lib")
        self.assertIn("lib/hollow", self.listing())
        before = self.path("p.kraddon").read_bytes()
        self.ok("add", "p.kraddon", "hollow", "--into", "lib")
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)

    def test_one_file_can_get_any_path(self):
        self.write("new.m", "content")
        self.ok("add", "p.kraddon", "new.m", "--as", "lib/deep/other.m")
        self.assertEqual(self.entries()["files/lib/deep/other.m"], b"content")

        self.write("more.m", "")
        self.misused("add", "p.kraddon", "new.m", "more.m", "--as", "x",
                     message="bad option '--as': it needs exactly one FILE")
        self.misused("add", "p.kraddon", "new.m", "--as", "x", "--into", "y",
                     message="bad option '--as': it cannot be combined with --into")
        self.path("kit").mkdir()
        self.fails("add", "p.kraddon", "kit", "--as", "x",
                   message="cannot add 'kit': it is a folder, and --as takes a file",
                   hint="--into adds it to a folder of the package")

    def test_paths_that_no_package_can_hold_are_refused(self):
        self.write("new.m", "content")
        for option in ("--as", "--into"):
            result = self.misused("add", "p.kraddon", "new.m", option, "",
                                  message=f"bad value of {option} '': the path is empty")
            self.assertEqual("hint: '/' is the top of the package\n" in result.errors,
                             option == "--into")
            self.misused("add", "p.kraddon", "new.m", option, b"caf\xe9",
                         message=f"bad value of {option} 'caf\\xe9': it is not UTF-8")
            for path in ("../x", "a/../x", "a//x", "./x"):
                result = self.fails("add", "p.kraddon", "new.m", option, path)
                self.assertIn(path, result.errors)
        self.fails("add", "p.kraddon", "new.m", "--into", "a.m",
                   message="cannot add 'a.m/new.m': 'a.m' is a file")
        self.assert_unchanged()

    def test_a_taken_path_is_an_error_before_anything_is_written(self):
        self.write("new.m", "content")
        self.write("a.m", "other")
        self.fails("add", "p.kraddon", "new.m", "a.m", hint="--replace replaces it",
                   message="cannot add 'a.m': the package has a file with that name")
        self.assert_unchanged()

    def test_replace_gives_a_file_its_new_content(self):
        self.write("a.m", "other")
        self.write("new.m", "content")
        os.utime(self.path("a.m"), (1600000001, 1600000001))

        self.ok("add", "p.kraddon", "a.m", "new.m", "--replace")

        self.assert_sound()
        entries = self.entries()
        self.assertEqual((entries["files/a.m"], entries["files/new.m"]), (b"other", b"content"))
        self.assert_entries_kept(self.raw, "files/a.m")
        with zipfile.ZipFile(self.path("p.kraddon")) as archive:
            self.assertEqual(len(set(archive.namelist())), len(archive.namelist()))
        self.assertEqual(self.ok("list", "p.kraddon", "a.m", "-l", "--json").json["entries"][0]
                         ["time"], "2020-09-13T12:26:41Z")

    def test_a_folder_is_never_replaced_by_a_file_nor_a_file_by_a_folder(self):
        self.write("lib", "a file")
        for words in ([], ["--replace"]):
            self.fails("add", "p.kraddon", "lib", *words,
                       message="cannot add 'lib': the package has a folder with that name")
        self.path("a.m").mkdir()
        self.fails("add", "p.kraddon", "a.m", "--replace",
                   message="cannot create the folder 'a.m': the package has a file with that name")
        self.write("a.m/inner", "x")
        self.fails("add", "p.kraddon", "a.m", "--replace",
                   message="cannot add 'a.m/inner': 'a.m' is a file")
        self.assert_unchanged()

    def test_two_that_go_to_one_path_are_both_named(self):
        self.write("one/x.m", "1")
        self.write("two/x.m", "2")
        self.fails("add", "p.kraddon", "one/x.m", "two/x.m", "--replace",
                   message="cannot add 'two/x.m': 'one/x.m' would also be added as 'x.m'")
        self.tree({"sub/y.m": ""}, "three/x.m")
        self.fails("add", "p.kraddon", "three/x.m", "one/x.m",
                   message="cannot add 'three/x.m/sub/y.m': 'one/x.m' would be added as "
                           "'x.m', which must be a folder")
        self.path("four/x.m").mkdir(parents=True)
        self.fails("add", "p.kraddon", "four/x.m", "one/x.m",
                   message="cannot add 'one/x.m': 'four/x.m' would also be added as 'x.m'")
        self.assert_unchanged()

    def test_two_folders_of_one_name_come_together(self):
        self.tree({"x.m": "1", "void/": ""}, "one/kit")
        self.tree({"y.m": "2", "void/": ""}, "two/kit")
        self.ok("add", "p.kraddon", "one/kit", "two/kit")
        self.assertEqual([path for path in self.listing() if path.startswith("kit")],
                         ["kit/void", "kit/x.m", "kit/y.m"])

    def test_patterns_count_for_paths_in_the_package(self):
        self.tree({"a.log": "", "b.m": "", "sub/a.log": "", "tests/t.m": ""}, "kit")
        self.write("c.log")
        result = self.run_kraddon("add", "p.kraddon", "kit", "c.log", "--into", "lib", "-v",
                                  "--exclude", "*.log", "--exclude", "!/lib/kit/a.log",
                                  "--exclude", "/lib/kit/tests/")
        self.assertEqual((result.code, result.errors),
                         (0, "left out: lib/kit/tests\nleft out: lib/kit/sub/a.log\n"
                             "left out: lib/c.log\nadded: lib/kit/a.log\n"
                             "added: lib/kit/b.m\n"))
        self.assertEqual([path for path in self.listing() if path.startswith("lib/kit")],
                         ["lib/kit/a.log", "lib/kit/b.m"])

    def test_the_ignore_file_of_a_folder_counts_from_there(self):
        self.tree({".kraddonignore": "/build\n*.tmp\nlast.m\n", "build": "", "sub/build": "",
                   "x.tmp": "", "last.m": ""}, "kit")
        self.write("y.tmp")
        self.ok("add", "p.kraddon", "kit", "y.tmp", "--into", "in", "--exclude", "!last.m",
                "--default-excludes")
        self.assertEqual([path for path in self.listing() if path.startswith("in/")],
                         ["in/kit/last.m", "in/kit/sub/build", "in/y.tmp"])

    def test_default_excludes_are_asked_for(self):
        self.tree({".git/config": "", "x.m": "", "x~": ""}, "kit")
        self.ok("add", "-q", "p.kraddon", "kit", "--into", "one")
        self.ok("add", "p.kraddon", "kit", "kit/.git", "kit/x~", "--into", "two",
                "--default-excludes")
        self.assertEqual([path for path in self.listing() if path[:3] in ("one", "two")],
                         ["one/kit/.git/config", "one/kit/x.m", "one/kit/x~", "two/kit/x.m"])

    def test_what_a_killed_run_left_behind_goes_in_only_by_name(self):
        self.tree({".p.kraddon.aB3dE9.tmp": "", "a.m": ""}, "kit")
        before = set(self.listing())
        self.ok("add", "p.kraddon", "kit")
        self.assertEqual(set(self.listing()) - before, {"kit/a.m"})
        self.ok("add", "p.kraddon", "kit/.p.kraddon.aB3dE9.tmp")
        self.assertIn(".p.kraddon.aB3dE9.tmp", self.listing())

    def test_links_are_followed_as_in_create(self):
        self.tree({"real/a.m": "x"}, "kit")
        self.path("kit/link").symlink_to("real")
        self.write("outside.m", "secret")
        self.path("named").symlink_to("outside.m")
        self.ok("add", "p.kraddon", "kit", "named")
        self.assertEqual(self.entries()["files/named"], b"secret")
        self.assertIn("kit/link/a.m", self.listing())

        self.path("kit/out.m").symlink_to("../outside.m")
        self.fails("add", "p.kraddon", "kit", "--into", "two",
                   message="cannot follow the link 'kit/out.m': it leads out of the folder",
                   hint="--follow follows it")
        self.ok("add", "p.kraddon", "kit", "--into", "two", "--follow")
        self.assertIn("two/kit/out.m", self.listing())

    def test_what_cannot_be_added_is_named(self):
        self.path("dangling").symlink_to("nowhere")
        os.mkfifo(self.path("pipe"))
        self.fails("add", "p.kraddon", "none",
                   message="cannot add 'none': No such file or directory")
        self.fails("add", "p.kraddon", "", message="cannot add '': the path is empty")
        self.fails("add", "p.kraddon", "dangling",
                   message="cannot add 'dangling': No such file or directory")
        self.fails("add", "p.kraddon", "pipe",
                   message="cannot add 'pipe': it is neither a file nor a folder")
        self.fails("add", "p.kraddon", "p.kraddon",
                   message="cannot add 'p.kraddon': it is the package itself")
        with open(os.fsencode(self.folder) + b"/caf\xe9.m", "w", encoding="utf-8"):
            pass
        self.fails("add", "p.kraddon", b"caf\xe9.m",
                   message="cannot add 'caf\\xe9.m': the name is not UTF-8")
        self.assert_unchanged()
        self.ok("add", "p.kraddon", b"caf\xe9.m", "--as", "café.m")
        self.assertIn("café.m", self.listing())

    def test_the_package_stays_out_of_the_folder_that_it_lies_in(self):
        self.path("kit").mkdir()
        self.path("p.kraddon").rename(self.path("kit/p.kraddon"))
        self.write("kit/x.m", "")
        self.ok("add", "kit/p.kraddon", "kit")
        self.assertEqual([path for path in self.listing("kit/p.kraddon") if "kit" in path],
                         ["kit/x.m"])

    def test_a_dry_run_changes_nothing_and_fails_alike(self):
        self.tree({"x.m": "x", "void/": ""}, "kit")
        result = self.ok("add", "p.kraddon", "kit", "--dry-run")
        self.assertEqual(result.text, "kit/void/\nkit/x.m\n")
        self.write("a.m", "")
        self.fails("add", "p.kraddon", "kit", "a.m", "--dry-run", hint="--replace replaces it",
                   message="cannot add 'a.m': the package has a file with that name")
        self.assertEqual(self.ok("add", "p.kraddon", "a.m", "--replace", "--dry-run").text, "a.m\n")
        self.assert_unchanged()

    def test_the_time_and_level_of_what_is_added_can_be_set(self):
        self.write("new.m", "x" * 5000)
        self.ok("add", "p.kraddon", "new.m", "--timestamp", "1600000000", "--level", "0")
        entries = {entry["path"]: entry
                   for entry in self.ok("list", "p.kraddon", "-l", "--json").json["entries"]}
        self.assertEqual((entries["new.m"]["time"], entries["new.m"]["method"]),
                         ("2020-09-13T12:26:40Z", "store"))
        self.assertEqual(entries["a.m"]["time"], "2023-11-14T22:13:20Z")
        self.misused("add", "p.kraddon", "new.m", "--level", "x",
                     message="bad value of --level 'x': expected a whole number from 0 to 9")

    def test_awkward_names_come_back(self):
        names = ["A.m", "end.", "_rels/x.rels", "back\\slash", "new\nline", "é", "🌊.m", "a;b.m"]
        self.tree({name: name for name in names}, "kit")
        self.ok("add", "-q", "p.kraddon", "kit/.")
        self.assert_sound()
        listed = self.ok("list", "p.kraddon", "-0").out.decode().split("\0")
        self.assertLessEqual(set(names) | {"a.m"}, set(listed))
        self.ok("extract", "p.kraddon", "-d", "out")
        for name in names:
            self.assertEqual(self.path(f"out/{name}").read_text(), name)

    def test_a_missing_package_is_reported(self):
        self.write("new.m", "")
        result = self.fails("add", "none.kraddon", "new.m")
        self.assertIn("none.kraddon", result.errors)
        self.assertFalse(self.path("none.kraddon").exists())
        self.misused("add", "p.kraddon",
                     message="missing operand 'FILE': files, or folders with everything below them")


if __name__ == "__main__":
    kraddontest.main()
