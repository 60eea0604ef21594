# SPDX-License-Identifier: MIT
"""kraddon extract"""

import os
import shutil
import zipfile

import kraddontest
from hostilezip import Entry, addon, build

FILES = {"a.m": "one", "lib/b.m": "two", "lib/void/": "", "z.bin": b"\0\xff" * 5000}


class Extract(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", FILES)

    def found(self, folder):
        result = {}
        for base, folders, files in os.walk(self.path(folder)):
            relative = os.path.relpath(base, self.path(folder))
            for name in files:
                path = os.path.normpath(os.path.join(relative, name))
                result[path] = self.path(f"{folder}/{path}").read_bytes()
            if not folders and not files:
                result[relative + "/"] = b""
        return result

    def expected(self, *names):
        return {name: FILES[name] if isinstance(FILES[name], bytes) else FILES[name].encode()
                for name in names}

    def test_everything_goes_below_the_base_name(self):
        result = self.ok("extract", "p.kraddon")

        self.assertEqual(result.out, b"")
        self.assertEqual(self.found("p"), self.expected(*FILES))

    def test_the_base_name_is_looked_for_in_the_current_folder(self):
        self.path("sub").mkdir()
        self.ok("-C", "sub", "extract", "../p.kraddon")
        self.assertEqual(self.names("sub"), ["p"])

    def test_a_package_without_extension_needs_a_folder(self):
        self.path("p.kraddon").rename(self.path("plain"))
        self.fails("extract", "plain", hint="-d names the folder to write to",
                   message="cannot extract 'plain': the name has no extension")

    def test_chosen_paths_keep_their_place(self):
        self.ok("extract", "p.kraddon", "lib", "-d", "one")
        self.assertEqual(self.found("one"), self.expected("lib/b.m", "lib/void/"))
        self.ok("extract", "p.kraddon", "--glob", "*.m", "--directory=two")
        self.assertEqual(self.found("two"), self.expected("a.m", "lib/b.m"))
        self.fails("extract", "p.kraddon", "a.m", "nothing", "-d", "three",
                   message="cannot find 'nothing': the package has nothing with that name")
        self.assertFalse(self.path("three").exists())

    def test_an_existing_file_stops_it_before_anything_is_written(self):
        self.write("out/lib/b.m", "mine")
        self.fails("extract", "p.kraddon", "-d", "out",
                   message="cannot extract 'out/lib/b.m': it already exists",
                   hint="--force replaces files, --skip-existing leaves them")
        self.assertEqual(self.found("out"), {"lib/b.m": b"mine"})

    def test_a_folder_that_may_not_be_searched_stops_it_before_anything_is_written(self):
        self.path("out/lib").mkdir(parents=True)
        self.path("out/lib").chmod(0o744)
        self.path("out").chmod(0o777)
        self.folder.chmod(0o755)
        self.fails("extract", "p.kraddon", "-d", "out", **self.without_privilege(),
                   message="cannot extract 'lib/b.m' to 'out/lib/b.m': cannot access: "
                           "Permission denied")
        self.assertEqual(self.found("out"), {"lib/": b""})

    def test_existing_files_can_be_left_or_replaced(self):
        self.write("out/lib/b.m", "mine")
        self.ok("extract", "p.kraddon", "-d", "out", "--skip-existing")
        self.assertEqual(self.found("out"),
                         dict(self.expected(*FILES), **{"lib/b.m": b"mine"}))
        self.ok("extract", "p.kraddon", "-d", "out", "--force")
        self.assertEqual(self.found("out"), self.expected(*FILES))

    def test_force_replaces_a_link_and_not_what_it_leads_to(self):
        self.write("precious", "mine")
        self.path("out").mkdir()
        self.path("out/a.m").symlink_to("../precious")

        self.ok("extract", "p.kraddon", "-d", "out", "--force")

        self.assertEqual(self.path("precious").read_text(), "mine")
        self.assertFalse(self.path("out/a.m").is_symlink())

    def test_a_link_in_the_way_is_not_followed(self):
        self.path("elsewhere").mkdir()
        self.path("out").mkdir()
        self.path("out/lib").symlink_to("../elsewhere")
        for option in ([], ["--force"], ["--skip-existing"]):
            self.fails("extract", "p.kraddon", "-d", "out", *option)
            self.assertEqual(self.names("elsewhere"), [])

    def assert_in_the_way(self, what, folder, path):
        """Of all ways to extract each says that, and none writes anything."""
        before = self.found("out")
        for option in ([], ["--force"], ["--skip-existing"]):
            for dry in ([], ["--dry-run"]):
                with self.subTest(option + dry):
                    self.fails("extract", "q.kraddon", "-d", "out", *option, *dry,
                               message=f"cannot extract '{path}' to 'out/{path}': folder "
                                       f"'{folder}' cannot be made: {what} is in its place")
                    self.assertEqual(self.found("out"), before)

    def test_what_lies_behind_a_link_does_not_exist(self):
        for link, target in (("d", "../victim/d"), ("d/e", "../../victim/d/e")):
            for files in ({"b.m": "1", "d/e/x.m": "2"}, {"b.m": "1", "d/e/void/": ""}):
                with self.subTest(link=link, files=files):
                    self.package("q.kraddon", files, "--force")
                    self.tree({**files, "d/e/x.m": "mine"}, "victim")
                    (self.path("out") / link).parent.mkdir(parents=True)
                    (self.path("out") / link).symlink_to(target)
                    self.assert_in_the_way("a symbolic link", link, [*files][1].rstrip("/"))
                    self.assertEqual(self.path("victim/d/e/x.m").read_text(), "mine")
                    for folder in ("out", "victim", "q.kraddon.src"):
                        shutil.rmtree(self.path(folder))

    def test_a_file_in_the_way_of_a_folder_is_never_replaced(self):
        self.package("q.kraddon", {"b.m": "1", "d/x.m": "2"})
        self.write("out/d", "mine")
        self.assert_in_the_way("a file", "d", "d/x.m")

    def test_a_folder_in_the_way_of_a_file_is_never_replaced(self):
        self.write("out/a.m/mine", "mine")
        for option in ([], ["--force"], ["--skip-existing"], ["--dry-run"]):
            with self.subTest(option):
                self.fails("extract", "p.kraddon", "-d", "out", *option,
                           message="cannot extract 'a.m' to 'out/a.m': a folder is in the "
                                   "way", hint=None)
        self.assertEqual(self.found("out"), {"a.m/mine": b"mine"})

    def test_a_link_in_the_way_of_what_is_not_chosen_does_no_harm(self):
        self.write("victim/b.m", "mine")
        self.path("out").mkdir()
        self.path("out/lib").symlink_to("../victim")
        self.ok("extract", "p.kraddon", "a.m", "-d", "out", "--skip-existing")
        self.assertEqual(self.path("out/a.m").read_text(), "one")

    def test_the_destination_itself_may_be_a_link(self):
        self.write("there/lib/b.m", "mine")
        self.path("out").symlink_to("there")
        self.ok("extract", "p.kraddon", "-d", "out", "--skip-existing")
        self.assertEqual(self.found("there"),
                         dict(self.expected(*FILES), **{"lib/b.m": b"mine"}))

    def test_what_exists_is_found_below_more_folders_than_a_path_can_name(self):
        path = "/".join(["f" * 200] * 40 + ["x.m"])
        for content, option in ((b"first", []), (b"second", ["--skip-existing"])):
            self.write("q.kraddon", build(addon([Entry(f"files/{path}".encode(), content)])))
            self.ok("extract", "q.kraddon", "-d", "out", *option)
        self.fails("extract", "q.kraddon", "-d", "out",
                   message=f"cannot extract 'out/{path}': it already exists",
                   hint="--force replaces files, --skip-existing leaves them")
        self.ok("extract", "q.kraddon", "-d", "out", "--force")

    def test_a_dry_run_writes_nothing(self):
        result = self.ok("extract", "p.kraddon", "-d", "out", "--dry-run")
        self.assertEqual(result.text, "a.m\nlib/b.m\nlib/void/\nz.bin\n")
        self.assertFalse(self.path("out").exists())
        self.write("out/a.m", "mine")
        self.fails("extract", "p.kraddon", "-d", "out", "--dry-run",
                   hint="--force replaces files, --skip-existing leaves them",
                   message="cannot extract 'out/a.m': it already exists")
        result = self.ok("extract", "p.kraddon", "-d", "out", "--dry-run", "--skip-existing")
        self.assertEqual(result.text, "lib/b.m\nlib/void/\nz.bin\n")

    def test_one_file_goes_to_standard_output(self):
        self.assertEqual(self.ok("extract", "p.kraddon", "z.bin", "--stdout").out,
                         FILES["z.bin"])
        self.assertEqual(self.ok("extract", "p.kraddon", "--glob", "z*", "--stdout").out,
                         FILES["z.bin"])
        self.package("q.kraddon", {"void/": "", "empty/": ""})
        for name, words, found in (("p", [], "3 files"), ("p", ["lib"], "1 file and 1 folder"),
                                   ("p", ["lib/void"], "a folder"), ("q", [], "2 folders"),
                                   ("p", ["a.m", "z.bin"], "2 files")):
            self.fails("extract", f"{name}.kraddon", *words, "--stdout",
                       message="cannot write to standard output: --stdout needs exactly one file, "
                               f"not {found}")
        self.misused("extract", "p.kraddon", "a.m", "--stdout", "-d", "x",
                     message="bad option '--stdout': it cannot be combined with --directory")

    TOO_LARGE = "cannot extract 'p.kraddon': the total exceeds the {} bytes of --max-size"

    def test_the_size_can_be_limited(self):
        whole = 10006 + 2 * 4096  # of the files, and two folders
        for words in ((), ("--dry-run",)):
            self.fails("extract", "p.kraddon", "--max-size", str(whole - 1), *words,
                       message=self.TOO_LARGE.format(whole - 1))
        self.assertFalse(self.path("p").exists())
        self.ok("extract", "p.kraddon", "a.m", "-d", "some", "--max-size", "3")
        self.ok("extract", "p.kraddon", "--max-size", str(whole))
        self.write("part/z.bin", "mine")
        left = 6 + 2 * 4096
        self.fails("extract", "p.kraddon", "-d", "part", "--force", "--max-size", str(left),
                   message=self.TOO_LARGE.format(left))
        self.ok("extract", "p.kraddon", "-d", "part", "--skip-existing", "--max-size", str(left))
        self.fails("extract", "p.kraddon", "z.bin", "--stdout", "--max-size", "6",
                   message=self.TOO_LARGE.format(6))
        for bad in ("1T", "K", "-1", "1.5M", "1KB", "", "9223372036854775807K", "10 K"):
            self.misused("extract", "p.kraddon", f"--max-size={bad}",
                         message=f"bad value of --max-size '{bad}': expected a size such as 4096, "
                                 "10K, 10M or 2G")
        self.misused("extract", "p.kraddon", "--max-files", "1k",
                     message="bad value of --max-files '1k': expected a whole number from 0 to "
                             "9223372036854775807")

    def test_the_size_may_have_a_unit(self):
        for text, size in (("10K", 10240), ("10k", 10240), ("18k", 18432), ("4096", 4096)):
            result = self.run_kraddon("extract", "p.kraddon", "--dry-run", "--max-size", text)
            self.assertEqual(result.code, 0 if size >= 18198 else 1, text)
            self.assertTrue(result.code == 0 or self.TOO_LARGE.format(size) in result.errors)
        for text in ("1M", "1m", "2G", "2g"):
            self.ok("extract", "p.kraddon", "--dry-run", "--max-size", text)

    def test_folders_that_exist_do_not_count(self):
        self.path("out/lib/void").mkdir(parents=True)
        self.fails("extract", "p.kraddon", "-d", "out", "--max-size", "10005",
                   message=self.TOO_LARGE.format(10005))
        self.fails("extract", "p.kraddon", "-d", "out", "--max-files", "2",
                   message="cannot extract 'p.kraddon': there are more files and folders than the "
                           "2 of --max-files")
        self.ok("extract", "p.kraddon", "-d", "out", "--max-size", "10006", "--max-files", "3")

    def test_the_number_of_files_and_folders_can_be_limited(self):
        message = ("cannot extract 'p.kraddon': there are more files and folders than the {} of "
                   "--max-files")
        for words in ((), ("--dry-run",)):
            self.fails("extract", "p.kraddon", "--max-files", "4", *words,
                       message=message.format(4))
        self.assertFalse(self.path("p").exists())
        self.ok("extract", "p.kraddon", "--dry-run", "--max-files", "5")
        self.ok("extract", "p.kraddon", "--max-files", "5")
        self.ok("extract", "p.kraddon", "a.m", "-d", "some", "--max-files", "1")
        self.fails("extract", "p.kraddon", "lib/b.m", "-d", "other", "--max-files", "1",
                   message=message.format(1))
        self.ok("extract", "p.kraddon", "lib/b.m", "-d", "other", "--max-files", "2")
        self.misused("extract", "p.kraddon", "--max-files", "-1",
                     message="bad value of --max-files '-1': expected a whole number from 0 to "
                             "9223372036854775807")

    def test_a_damaged_file_is_named_and_removed(self):
        path = self.path("p.kraddon")
        content = path.read_bytes()
        at = content.index(b"\0\xff" * 10) if b"\0\xff" * 10 in content else None
        if at is None:
            self.package("q.kraddon", {"z.bin": b"\0\xff" * 5000}, "--level", "0")
            path = self.path("q.kraddon")
            content = path.read_bytes()
            at = content.index(b"\0\xff" * 10)
        path.write_bytes(content[:at] + b"X" + content[at + 1:])

        result = self.fails("extract", path.name, "-d", "out")

        self.assertIn("z.bin", result.errors)
        self.assertFalse(self.path("out/z.bin").exists())

    def damaged(self, files):
        """The package 'd.kraddon', in which the file that holds DAMAGED cannot be read."""
        path = self.package("d.kraddon", files, "--level", "0")
        content = path.read_bytes()
        path.write_bytes(content.replace(b"DAMAGED", b"damaged"))

    def test_a_failed_one_leaves_none_of_its_folders_behind(self):
        self.damaged({"a/b/void/": "", "a/b/c/x.m": "DAMAGED", "z.m": ""})
        self.path("there").mkdir()

        for folder in ("out", "x/y/out", "there", "there/x/out"):
            self.assertIn("x.m", self.fails("extract", "d.kraddon", "-d", folder).errors)

        self.assertFalse(self.path("out").exists())
        self.assertFalse(self.path("x").exists())
        self.assertEqual(os.listdir(self.path("there")), [])

    def test_a_failed_one_leaves_whole_files_and_what_was_there(self):
        self.damaged({"a/one.m": "whole", "b/c/void/": "", "b/x.m": "DAMAGED"})
        self.path("out/b/old").mkdir(parents=True)

        self.fails("extract", "d.kraddon", "-d", "out")

        self.assertEqual(self.found("out"), {"a/one.m": b"whole", "b/old/": b""})

    def test_a_failed_one_leaves_nothing_of_folders_that_cannot_be_entered(self):
        os.chmod(self.folder, 0o777)
        self.path("there").mkdir()
        os.chmod(self.path("there"), 0o777)

        for folder in ("x/out", "there"):
            self.fails("extract", "p.kraddon", "-d", folder, umask=0o777,
                       **self.without_privilege())

        self.assertFalse(self.path("x").exists())
        self.assertEqual(os.listdir(self.path("there")), ["a.m"])

    def test_a_failed_one_leaves_nothing_of_very_deep_folders(self):
        self.damaged({"/".join(["d"] * 120) + "/x.m": "DAMAGED"})

        self.fails("extract", "d.kraddon", "-d", "out")

        self.assertFalse(self.path("out").exists())

    def test_new_files_follow_the_umask(self):
        old = os.umask(0o027)
        self.addCleanup(os.umask, old)
        self.ok("extract", "p.kraddon", "-d", "out")
        self.assertEqual(self.path("out/a.m").stat().st_mode & 0o777, 0o640)

    def test_times_come_back(self):
        self.ok("extract", "p.kraddon", "-d", "out")
        self.assertEqual(self.path("out/a.m").stat().st_mtime, 1700000000)

    def test_the_destination_may_be_a_path_that_begins_with_a_dash(self):
        self.ok("extract", "p.kraddon", "-d", "-out")
        self.assertEqual(self.found("-out"), self.expected(*FILES))


    def test_the_name_of_the_package_cannot_choose_the_folder_above(self):
        for name in ("...kraddon", "..kraddon"):
            self.path("in").mkdir(exist_ok=True)
            self.path("p.kraddon").rename(self.path("in") / name)
            self.fails("extract", f"in/{name}",
                       message=f"cannot extract 'in/{name}': "
                               "its base name cannot be the name of a folder",
                       hint="-d names the folder to write to")
            self.path(f"in/{name}").rename(self.path("p.kraddon"))
        self.assertFalse(self.path("a.m").exists())

    def test_an_empty_path_is_not_everything(self):
        self.fails("extract", "p.kraddon", "", "-d", "out",
                   message="cannot find '': the path is empty",
                   hint="'/' stands for everything")
        self.assertFalse(self.path("out").exists())


class Parts(kraddontest.CliTest):
    """--all, and packages that are not add-ons"""

    def setUp(self):
        super().setUp()
        self.parts = {"a.xml": b"<a/>", "word/document.xml": b"<d/>", "word/media/i%C3%A9.xml": b"<i/>"}
        with zipfile.ZipFile(self.path("m.docx"), "w") as archive:
            archive.writestr("[Content_Types].xml", (
                '<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
                '<Default Extension="xml" ContentType="application/xml"/></Types>'))
            for name, content in self.parts.items():
                archive.writestr(name, content)

    def extracted(self, folder):
        top = self.path(folder)
        return {str(path.relative_to(top)): path.read_bytes()
                for path in top.rglob("*") if path.is_file()}

    def test_what_is_not_an_add_on_is_refused(self):
        for words in ((), ("-d", "out"), ("-q",), ("--dry-run",), ("a.xml", "--stdout")):
            self.fails("extract", "m.docx", *words,
                       message="cannot extract 'm.docx': it is not an add-on",
                       hint="--all extracts every part")
        self.assertEqual(self.names(), ["m.docx"])

    def test_all_parts_are_extracted(self):
        self.ok("extract", "m.docx", "--all")
        self.assertEqual(self.extracted("m"), self.parts)
        self.assertEqual(sorted("/" + name for name in self.extracted("m")),
                         self.listing("m.docx", "--all"))
        self.fails("extract", "m.docx", "--all",
                   message="cannot extract 'm/a.xml': it already exists",
                   hint="--force replaces files, --skip-existing leaves them")
        self.write("m/a.xml", "other")
        self.ok("extract", "m.docx", "--all", "--force")
        self.assertEqual(self.extracted("m"), self.parts)

    def test_some_parts_are_extracted(self):
        self.ok("extract", "m.docx", "--all", "/word/media", "-d", "out")
        self.ok("extract", "m.docx", "--all", "--glob", "a.*", "-d", "out")
        self.assertEqual(set(self.extracted("out")), {"a.xml", "word/media/i%C3%A9.xml"})
        self.assertEqual(self.ok("extract", "m.docx", "--all", "a.xml", "--stdout").out, b"<a/>")
        self.assertEqual(self.ok("extract", "m.docx", "--all", "--dry-run").text,
                         "".join(f"{name}\n" for name in sorted(self.parts)))
        self.fails("extract", "m.docx", "--all", "--max-files", "1", "-d", "more")

    def test_the_parts_of_an_add_on_are_extracted(self):
        self.package("p.kraddon", {"a.m": "x", "end.": "y"})
        self.ok("extract", "p.kraddon", "--all")
        entries = {name: content for name, content in self.entries().items()
                   if name not in ("[Content_Types].xml", "_rels/.rels")}
        self.assertEqual(self.extracted("p"), entries)

    def test_an_add_on_without_files_is_extracted(self):
        self.package("p.kraddon")
        self.ok("extract", "p.kraddon", "-d", "out")
        self.assertEqual(self.names("out"), [])


if __name__ == "__main__":
    kraddontest.main()
