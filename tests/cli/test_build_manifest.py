# SPDX-License-Identifier: MIT
"""kraddon build: faults of the manifest and of what it names, and the page about it."""

import os
import pathlib
import re
import sys
import tomllib

import kraddontest
import projecttest
from projecttest import FULL_FILES, FULL_LISTING, LEAST, PACKAGE

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
import manifest_table  # noqa: E402  (it lies in another folder)


class Faults(projecttest.ProjectTest):

    def test_a_missing_manifest_is_reported_with_a_hint(self):
        self.path("src").mkdir()
        hint = "'kraddon init' writes one"

        self.fails("build", message="cannot read 'kraddon.toml': No such file or directory",
                   hint=hint)
        self.fails("build", "src",
                   message="cannot read 'src/kraddon.toml': No such file or directory", hint=hint)
        self.fails("build", "nope",
                   message="cannot read the folder 'nope': No such file or directory")
        self.fails("build", "", message="cannot read the folder '': the path is empty")

    def test_a_mistake_is_named_by_file_line_key_and_what_was_expected(self):
        for why, manifest in (
                ("2:1': unknown key 'package.nmae': did you mean 'name'?",
                 '[package]\nnmae = "a"\nversion = "1"\n'),
                ("3:11': package.version: expected a string, got a float, which would lose its "
                 'final zeros: write "1.10"', '[package]\nname = "a"\nversion = 1.10\n'),
                ("1:1': package.version: the key is missing, expected a string",
                 '[package]\nname = "a"\n'),
                ("2:8': package.name: it contains the control character U+001B",
                 '[package]\nname = "a\\u001b"\nversion = "1"\n')):
            with self.subTest(why):
                self.refuses(why, manifest)

    def test_the_manifest_is_named_by_its_path_from_here(self):
        self.project("x = 1\n", folder="deep/down")

        self.fails("build", "deep/down",
                   message="bad manifest 'deep/down/kraddon.toml:4:1': unknown key 'package.x': the keys "
                           "are name, version, type, summary, author, contact, organization, "
                           "description, description-file, guid, screenshot")

    def test_files_that_the_manifest_names_have_to_be_there(self):
        for why, manifest in (
                ("4:20': package.description-file: cannot read 'R.md': No such file or directory",
                 LEAST + 'description-file = "R.md"\n'),
                ("5:8': license.file: cannot read 'L': No such file or directory",
                 '[license]\nfile = "L"\n'),
                ("4:14': package.screenshot: cannot open 's.png': No such file or directory",
                 LEAST + 'screenshot = "s.png"\n'),
                ("5:8': files.root: cannot read the folder 'src': No such file or directory",
                 '[files]\nroot = "src"\n'),
                ("5:8': files.root: cannot read the folder 'a.m': Not a directory",
                 '[files]\nroot = "a.m"\n'),
                ("5:8': files.add[0].from: cannot open 'x.jar': No such file or directory",
                 '[[files.add]]\nfrom = "x.jar"\nto = "x.jar"\n'),
                ("6:6': files.add[0].to: path 'a.m' already exists in the package",
                 '[[files.add]]\nfrom = "a.m"\nto = "a.m"\n')):
            with self.subTest(why):
                self.refuses(why, manifest)

    def test_a_file_that_is_not_text_is_refused_as_a_text(self):
        files = {"a.m": "a", "latin": b"\xe4", "bell": b"a\x07", "d/": ""}
        os.mkfifo(self.path("pipe.swp"))
        for name, why in (("latin", "cannot use the text of 'latin': it is not UTF-8"),
                          ("bell", "cannot use the text of 'bell': it contains the control "
                                   "character U+0007"),
                          ("d", "cannot read 'd': Is a directory"),
                          ("pipe.swp", "cannot read 'pipe.swp': it is not a file"),
                          ("-", "cannot read '-': No such file or directory")):
            with self.subTest(name):
                self.refuses(f"5:8': license.file: {why}", f'[license]\nfile = "{name}"\n', files)
                files = {}

    def test_a_manifest_or_ignore_file_that_is_a_pipe_is_not_waited_for(self):
        os.mkfifo(self.path("kraddon.toml"))
        self.fails("build", message="cannot read 'kraddon.toml': it is not a file")
        self.path("kraddon.toml").unlink()
        self.project("", {"a.m": "a"})
        os.mkfifo(self.path(".kraddonignore"))
        self.fails("build", message="cannot read '.kraddonignore': it is not a file")

    def test_a_manifest_or_ignore_file_that_is_too_large_is_not_read(self):
        self.project()
        for name in (".kraddonignore", "kraddon.toml"):
            with open(self.path(name), "wb") as file:
                file.truncate((16 << 20) + 1)
            result = self.fails("build")
            self.assertIn(f"cannot read '{name}': it is larger than 16777216 bytes",
                          result.errors)
        self.assertEqual(self.names(), [".kraddonignore", "a.m", "kraddon.toml"])

    def test_references_are_checked_before_packing(self):
        app = '[[app]]\nname = "V"\nfile = "{}"\n'
        example = '[[category]]\nname = "C"\n[[category.example]]\nname = "E"\n'
        for why, manifest in (
                ("6:8': app[0].file: the app 'V' names 'v.m': it is not in the package",
                 app.format("v.m")),
                ("6:8': app[0].file: the app 'V' names 'd': it is a folder, not a file",
                 app.format("d")),
                ("6:8': app[0].file: the app 'V' names 'A.m': the package has 'a.m', in "
                 "different case", app.format("A.m")),
                ("6:8': app[0].file: the app 'V' names '../a.m': '..' leads out of the package",
                 app.format("../a.m")),
                ("8:8': category[0].example[0].main: the example 'E' names 'e.m': it is not in "
                 "the package", example + 'main = "e.m"\nsource = "a.m"\n'),
                ("8:10': category[0].example[0].source: the example 'E' names 'e.m': it is not in "
                 "the package", example + 'source = "e.m"\n'),
                ("5:22': configuration.korvan-paths[1]: the search path names 'lib': it is not in "
                 "the package", '[configuration]\nkorvan-paths = [".", "lib"]\n'),
                ("5:17': configuration.korvan-paths[0]: expected a non-empty path",
                 '[configuration]\nkorvan-paths = [""]\n'),
                ("5:17': configuration.korvan-paths[0]: the search path names 'a.m': it is a "
                 "file, not a folder", '[configuration]\nkorvan-paths = ["a.m"]\n'),
                ("9:8': app[1].guid: expected a GUID of its own, and app[0] has 'g' too",
                 app.format("a.m") + 'guid = "G"\n' + app.format("d/b.m") + 'guid = "g"\n')):
            with self.subTest(why):
                self.refuses(why.replace("9:8", "11:8"), manifest, {"a.m": "a", "d/b.m": "b"})
                self.refuses(why.replace("9:8", "11:8"), manifest, {}, ["--no-verify"])
                self.refuses(why.replace("9:8", "11:8"), manifest, {}, ["--dry-run"])

    def test_an_excluded_file_is_not_in_the_package(self):
        self.refuses("6:8': app[0].file: the app 'V' names 'tests/v.m': it is not in the package",
                     '[[app]]\nname = "V"\nfile = "tests/v.m"\n[files]\nexclude = ["tests/"]\n',
                     {"tests/v.m": "v"})

    def test_apps_of_one_file_need_guids_of_their_own(self):
        app = '[[app]]\nname = "V"\nfile = "a.m"\n'
        self.refuses("9:8': app[1].file: app[0] has the file 'a.m' too, and so the same GUID, "
                     "expected a 'guid' of its own", app + app)
        self.refuses("6:1': app[0].guid: expected a GUID of its own, as none can be derived from "
                     "package.guid 'wave', which is not a GUID", LEAST + 'guid = "wave"\n\n' + app, {})

    def test_a_reference_that_the_manifest_ignores_may_be_wrong(self):
        self.project('[[app]]\nname = "V"\nfile = "v.m"\n[verify]\nignore = ["KR401"]\n')

        self.build()

        self.assertEqual(self.ok("get", "Wave-1.0.kraddon", "apps").json[0]["relativePath"], "v.m")

    def test_images_and_class_paths_that_are_missing_are_warned_of(self):
        self.project('[configuration]\njava-class-paths = ["x.jar"]\n[[category]]\nname = "C"\n'
                     '[[category.example]]\nname = "E"\nmain = "a.m"\nthumbnail = "t.png"\n')

        result = self.build()

        self.assertIn("warning KR403", result.errors)
        self.assertIn("warning KR405", result.errors)

    def test_an_unknown_finding_cannot_be_ignored(self):
        self.project('[verify]\nignore = ["KR501", "nothing"]\n')
        self.fails("build", message="bad manifest 'kraddon.toml:5:20': verify.ignore[1]: unknown "
                                    "finding 'nothing': 'kraddon help findings' lists the findings")

    def test_a_finding_to_ignore_is_called_by_its_id(self):
        for rule, why in (("kr501", "expected 'KR501', got 'kr501'"),
                          ("501", "expected 'KR501', got '501'"),
                          ("Kr501:a/**", "expected 'KR501:a/**', got 'Kr501:a/**'"),
                          ("KR501:", "expected a pattern after the colon, got 'KR501:'")):
            self.refuses(f"5:11': verify.ignore[0]: {why}", f'[verify]\nignore = ["{rule}"]\n')


class Manual(projecttest.ProjectTest):

    page = (pathlib.Path(__file__).resolve().parents[2] / "docs/manifest.md").read_text()

    def test_its_table_is_that_of_the_program(self):
        schema = self.ok("schema", "manifest").json
        self.assertEqual(manifest_table.with_table(self.page, schema), self.page)

    def test_it_names_every_key(self):
        def keys(schema):
            for name, value in schema.get("properties", {}).items():
                yield name
                yield from keys(value)
                yield from keys(value.get("items", {}))
        for key in keys(self.ok("schema", "manifest").json):
            self.assertRegex(self.page, rf"[`.\[]{key}[`.\]]", key)

    def test_its_example_can_be_built(self):
        example = re.search("```toml\n(.*?)```", self.page, re.S)[1]
        self.project(example, FULL_FILES)
        self.assertIn("category", tomllib.loads(example))

        self.build()

        self.assertEqual(self.listing(PACKAGE), FULL_LISTING)


if __name__ == "__main__":
    kraddontest.main()
