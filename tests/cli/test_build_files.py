# SPDX-License-Identifier: MIT
"""Which files kraddon build packs, and what --dry-run says of them."""

import os

import kraddontest
import projecttest

PACKAGE = "Wave-1.0.kraddon"


class Patterns(projecttest.ProjectTest):

    def packs(self, expected, manifest, files=None, *words):
        self.project(manifest, files or {})
        self.build("--force", *words)
        self.assertEqual(self.listing(PACKAGE), expected)

    def test_include_names_what_goes_in(self):
        files = {"a.m": "", "a.txt": "", "lib/b.m": "", "lib/b.txt": "", "lib/deep/c.m": "",
                 "docs/d.txt": "", "empty/": "", "lib/empty/": ""}
        self.packs(["a.m", "lib/b.m", "lib/deep/c.m"], '[files]\ninclude = ["*.m"]\n', files)
        self.packs(["lib/b.m", "lib/b.txt", "lib/deep/c.m", "lib/empty"],
                   '[files]\ninclude = ["lib/"]\n')
        self.packs(["lib/b.m", "lib/b.txt", "lib/empty"],
                   '[files]\ninclude = ["lib", "!deep/"]\n')
        self.packs(["docs/d.txt", "lib/b.m"], '[files]\ninclude = ["/docs/**", "lib/*.m"]\n')
        self.packs(["a.m", "lib/b.m"],
                   '[files]\ninclude = ["*.m"]\nexclude = ["deep"]\n')

    def test_of_includes_for_a_folder_and_for_what_is_in_it_the_last_decides(self):
        files = {"examples/chirp.m": "", "examples/deep/d.m": "", "other.m": ""}
        self.packs(["examples/chirp.m", "examples/deep/d.m"],
                   '[files]\ninclude = ["!examples/chirp.m", "examples/"]\n', files)
        self.packs(["examples/deep/d.m"],
                   '[files]\ninclude = ["examples/", "!examples/chirp.m"]\n')
        self.packs(["other.m"], '[files]\ninclude = ["examples/deep/", "!examples", "other.m"]\n')
        self.packs(["examples/deep/d.m"], '[files]\ninclude = ["!examples", "examples/deep/"]\n')

    def test_an_included_pattern_that_matches_nothing_is_an_error(self):
        why = "5:19': files.include: the pattern 'srx/**' matches nothing, or only what is excluded"
        for files in ({"a.m": "a"}, {"a.m": "a", "src/b.m": "b"}):
            self.refuses(why, '[files]\ninclude = ["a.m", "srx/**", "!none"]\n', files)
        self.refuses("5:12': files.include: the pattern '*.log' matches nothing, or only what is "
                     "excluded", '[files]\ninclude = ["*.log"]\nexclude = ["*.log"]\n',
                     {"x.log": "x"})

    def test_what_is_not_included_need_not_be_fit_for_a_package(self):
        self.project('[files]\ninclude = ["*.m"]\n', {"a.m": "a"})
        os.mkfifo(self.path("pipe"))
        os.symlink("nowhere", self.path("dangling"))

        self.build()

        self.assertEqual(self.listing(PACKAGE), ["a.m"])

    def test_later_patterns_count_more(self):
        files = {".kraddonignore": "*.txt\n", "a.txt": "", "b.txt": "", "c.txt": "", "x.swp": "",
                 "keep~": "", "a.m": ""}
        self.packs(["a.m"], "", files)
        self.packs(["a.m", "b.txt"], '[files]\nexclude = ["!b.txt"]\n')
        self.packs(["a.m", "c.txt"], '[files]\nexclude = ["!b.txt", "!c.txt"]\n', None,
                   "--exclude", "b.*")
        self.packs(["a.m", "keep~"], '[files]\nexclude = ["!keep~"]\n')
        self.packs(["a.m", "b.txt"], "", None, "--exclude", "!b.txt")

    def test_the_ignore_file_is_that_of_the_project(self):
        self.packs([".kraddonignore", "a.m", "b.log"],
                   '[files]\nroot = "src"\ndefault-excludes = false\n',
                   {".kraddonignore": "lib/\n", "src/a.m": "", "src/lib/x.m": "",
                    "src/.kraddonignore": "*.log", "src/b.log": ""})

    def test_without_default_excludes_everything_goes_in(self):
        self.packs([".git/x", "a.m", "kraddon.toml"], "[files]\ndefault-excludes = false\n",
                   {".git/x": "", "a.m": ""})

    def test_empty_folders_stay_out_when_told(self):
        self.packs(["a.m"], "[files]\nempty-folders = false\n", {"a.m": "", "e/f/": ""})

    def test_files_from_elsewhere_are_added_whatever_the_patterns_say(self):
        self.project('[files]\nroot = "src"\nexclude = ["*.log"]\n[[files.add]]\n'
                     'from = "out/x.log"\nto = "lib/x.log"\n',
                     {"src/a.m": "", "out/x.log": "x"}, "wave")

        self.build("wave")

        self.assertEqual(self.listing(PACKAGE), ["a.m", "lib/x.log"])

    def test_a_path_of_a_package_cannot_leave_it(self):
        self.project('[[files.add]]\nfrom = "a.m"\nto = "../x"\n')
        result = self.fails("build")
        self.assertTrue(result.errors.startswith(
            "kraddon: build: bad manifest 'kraddon.toml:6:6': files.add[0].to: "), result.errors)
        self.assertIn("../x", result.errors)

    def test_an_absolute_path_in_the_package_is_refused(self):
        self.refuses("6:6': files.add[0].to: expected a path in the package, without a '/' in "
                     "front, got '/x'", '[[files.add]]\nfrom = "a.m"\nto = "/x"\n')

    def test_a_backslash_in_a_name_is_kept_and_warned_of_wherever_the_file_comes_from(self):
        self.project("", {"b\\c": "x"}, "found")
        self.project('[[files.add]]\nfrom = "../found/b\\\\c"\nto = "b\\\\c"\n', {}, "added")

        results = [self.build(folder, "-o", "p.kraddon", "--force") for folder in ("found",
                                                                                    "added")]

        self.assertEqual(self.listing("p.kraddon"), ["b\\c"])
        self.assertEqual(results[0].errors.replace("found/kraddon", "added/kraddon"),
                         results[1].errors)
        self.assertIn("found/b\\c: warning KR507: ", results[0].errors)

    def test_verbose_names_what_is_left_out_and_why(self):
        self.project('[files]\ninclude = ["!x.txt", "**", "!y.txt"]\nempty-folders = false\n'
                     'exclude = ["tests/"]\n',
                     {"a.m": "", "tests/t.m": "", "e/": "", ".git/x": "", "y.txt": ""})

        result = self.build("--dry-run", "-v")

        self.assertEqual([line for line in result.errors.splitlines() if "left out" in line], [
            "left out: .git (pattern '.git*')", "left out: kraddon.toml (pattern 'kraddon.toml')",
            "left out: tests (pattern 'tests/')", "left out: y.txt (not in files.include)",
            "left out: e (an empty folder)"])

    def test_verbose_names_the_package_itself_and_the_folder_for_it(self):
        self.project("[files]\ndefault-excludes = false\nexclude = [\"kraddon.toml\"]\n",
                     {"a.m": "", "dist/": ""})

        for why in ("dist (where the package goes)", "dist/p.bin (the package itself)"):
            result = self.build("-o", "dist/p.bin", "--force", "-v")
            self.assertEqual([line for line in result.errors.splitlines() if "left out" in line],
                             ["left out: kraddon.toml (pattern 'kraddon.toml')",
                              "left out: " + why])


class Links(projecttest.ProjectTest):

    def test_a_link_may_lead_anywhere_inside_the_project(self):
        self.project('[files]\nroot = "src"\n', {"src/a.m": "a", "common/b.m": "b"})
        os.symlink("../common", self.path("src/lib"))

        self.build()

        self.assertEqual(self.listing(PACKAGE), ["a.m", "lib/b.m"])

    def test_a_link_that_leads_out_is_followed_when_told(self):
        self.project("", {"a.m": "a"}, "wave")
        self.write("b.m", "b")
        os.symlink("../b.m", self.path("wave/b.m"))

        self.fails("build", "wave",
                   message="cannot follow the link 'wave/b.m': it leads out of the folder",
                   hint="--follow follows it")
        self.build("wave", "--follow")

        self.assertEqual(self.listing(PACKAGE), ["a.m", "b.m"])

    def test_what_cannot_be_packed_is_named(self):
        self.project("", {"d/a.m": "a"})
        os.symlink("..", self.path("d/up"))
        self.fails("build", message="cannot follow the link 'd/up': it leads to a folder that "
                                    "contains it")
        self.path("d/up").unlink()
        os.mkfifo(self.path("pipe"))
        self.fails("build", message="cannot pack 'pipe': it is neither a file nor a folder")
        self.assertEqual(self.names(), ["d", "kraddon.toml", "pipe"])

    def test_a_file_is_called_the_same_whatever_is_wrong_with_it(self):
        """As the folder was named, with one slash behind it, and '.' not shown."""
        self.folder.chmod(0o777)
        self.project("", {"d/f.m": ""}, "wave")
        file = self.path("wave/d/f.m")
        wrongs = [("cannot open", "Permission denied", lambda: file.write_text("x") and
                   file.chmod(0)),
                  ("cannot follow the link", "No such file or directory",
                   lambda: file.symlink_to("nowhere")),
                  ("cannot pack", "it is neither a file nor a folder", lambda: os.mkfifo(file))]
        for what, why, spoil in wrongs:
            file.unlink()
            spoil()
            for where, folder, shown in (("wave", ".", ""), ("wave", "./", "./"), (".", "wave/",
                                         "wave/"), (".", "wave", "wave/"), ("wave/d", "..",
                                         "../")):
                for words in (["build", folder, "-o", self.path("p.kraddon")],
                              ["create", self.path("p.kraddon"), folder, "--name", "x"]):
                    with self.subTest(what=what, words=words):
                        result = self.run_kraddon("-C", where, *words, **self.without_privilege())
                        self.assertEqual(result.errors, f"kraddon: {words[0]}: {what} "
                                                        f"'{shown}d/f.m': {why}\n")


class Output(projecttest.ProjectTest):

    def test_the_manifest_is_not_replaced(self):
        self.project("", {"a.m": "a"})
        os.symlink("kraddon.toml", self.path("link"))
        before = self.path("kraddon.toml").read_bytes()

        for words in (("kraddon.toml", "--force"), ("./link", "--force"),
                      ("kraddon.toml", "--dry-run")):
            self.fails("build", "-o", *words,
                       message=f"cannot create '{words[0]}': it is the manifest of the project")

        self.assertEqual(self.path("kraddon.toml").read_bytes(), before)

    def test_a_source_file_is_not_replaced(self):
        self.project('[files]\nroot = "../src"\n', {"notes.txt": "n"}, "wave")
        self.write("src/lib/a.m", "the only copy")
        os.symlink("../src/lib/a.m", self.path("wave/link"))

        for output in ("src/lib/a.m", "wave/notes.txt", "wave/link"):
            for words in (["--force"], ["--force", "--dry-run"]):
                self.fails("build", "wave", "-o", output, *words,
                           message=f"cannot create '{output}': it is a file of the project, "
                                   "not a package")

        self.assertEqual(self.path("src/lib/a.m").read_text(), "the only copy")
        self.assertEqual(self.path("wave/notes.txt").read_text(), "n")

    def test_an_older_package_of_any_name_and_an_empty_file_are_replaced(self):
        self.project("", {"a.m": "a", "empty.bin": "", "broken.kraddon": "cut off"})

        for output in ("dist.bin", "dist.bin", "empty.bin", "broken.kraddon"):
            self.build("-o", output, "--force")
            self.assertEqual(self.listing(output)[0], "a.m")

    def test_a_file_elsewhere_is_replaced(self):
        self.project("", {"a.m": "a"}, "wave")
        self.write("notes.txt", "n")

        self.build("wave", "-o", "notes.txt", "--force")

        self.assertEqual(self.listing("notes.txt"), ["a.m"])


class DryRun(projecttest.ProjectTest):

    def test_it_prints_what_would_go_in_and_writes_nothing(self):
        self.full_project()
        before = {path: path.stat().st_mtime_ns for path in [self.folder,
                                                             *self.folder.rglob("*")]}

        result = self.ok("build", "--dry-run")

        self.assertEqual(result.text.splitlines(), [
            " 7  apps/editor.m", " 7  apps/viewer.m", " -  empty/", " 6  examples/chirp.m",
            "67  examples/chirp.png", " 7  examples/chirp.src", "67  examples/chirp2.png",
            " 3  java/wave.jar", " 4  keep.log", " 5  lib/wave.m",
            "Wave Tools-1.2.kraddon: 9 files, 1 empty folder, 173 B"])
        after = {path: path.stat().st_mtime_ns for path in [self.folder,
                                                            *self.folder.rglob("*")]}
        self.assertEqual(after, before)

    def test_its_json_is_that_of_the_build_but_for_the_package(self):
        self.full_project()

        plan = self.ok("build", "--dry-run", "--json").json

        built = self.ok("build", "--json").json
        self.assertEqual(plan, {**built, "written": False, "size": None})

    def test_it_finds_what_would_stop_the_build(self):
        self.project("", {".env": "x"})

        result = self.run_kraddon("build", "--dry-run", "--json")

        self.assertEqual(result.code, 1)
        self.assertIn("cannot build 'Wave-1.0.kraddon': it has 1 error", result.errors)
        self.assertIn("KR509", [one["id"] for one in result.json["findings"]])

    def test_it_warns_of_a_package_that_is_there(self):
        self.full_project()
        self.write("Wave Tools-1.2.kraddon", "notes")

        result = self.run_kraddon("build", "--dry-run")

        self.assertEqual((result.code, result.errors), (
            0, "kraddon: build: warning: cannot create 'Wave Tools-1.2.kraddon': it already "
               "exists, and is not a package of this add-on\n"))
        self.ok("build", "--dry-run", "--force")
        self.ok("build", "--dry-run", "--quiet")


if __name__ == "__main__":
    kraddontest.main()
