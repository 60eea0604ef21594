# SPDX-License-Identifier: MIT
"""kraddon init: each guess from a folder."""

import json
import os
import re
import subprocess
import tomllib

import kraddontest

GUID = r"[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}"


class InitTest(kraddontest.CliTest):
    def environment(self, extra=None):
        # Neither the settings nor a repository of whoever runs the tests.
        return super().environment({
            "HOME": str(self.folder), "XDG_CONFIG_HOME": str(self.folder),
            "GIT_CONFIG_NOSYSTEM": "1", "GIT_CEILING_DIRECTORIES": str(self.folder),
            **(extra or {})})

    def git(self, *words, folder="wave"):
        subprocess.run(["git", "-C", self.path(folder), *words], check=True, capture_output=True,
                       env=self.environment())

    def repository(self, *tags, folder="wave"):
        self.path(folder).mkdir(exist_ok=True)
        self.git("init", "-q", folder=folder)
        self.git("-c", "user.name=x", "-c", "user.email=x", "commit", "-q", "--allow-empty",
                 "-m", "x", folder=folder)
        for tag in tags:
            self.git("tag", tag, folder=folder)

    def text(self, *words, folder="wave", **kw):
        self.path(folder).mkdir(exist_ok=True)
        return self.ok("init", folder, "--stdout", *words, **kw).text

    def guesses(self, files=None, **kw):
        """The manifest that is guessed from a folder with these files."""
        self.tree(files or {}, "wave")
        return tomllib.loads(self.text(**kw))


class Writing(InitTest):
    def test_the_manifest_is_written_into_the_folder(self):
        self.tree({"a.m": ""}, "wave")
        self.assertEqual(self.ok("init", "wave").out, b"")
        manifest = tomllib.loads(self.path("wave/kraddon.toml").read_text())
        self.assertEqual(manifest["package"]["name"], "wave")
        self.assertEqual(self.names("wave"), ["a.m", "kraddon.toml"])

    def test_the_current_folder_is_the_default(self):
        self.path("wave").mkdir()
        self.ok("-C", "wave", "init")
        self.assertEqual(self.names("wave"), ["kraddon.toml"])

    def test_an_existing_file_is_not_overwritten(self):
        self.write("wave/kraddon.toml", "mine")
        self.fails("init", "wave",
                   message="cannot write 'wave/kraddon.toml': it already exists",
                   hint="--force replaces it")
        result = self.run_kraddon("-C", "wave", "init")
        self.assertEqual(result.errors, "kraddon: init: cannot write 'kraddon.toml': it already "
                                        "exists\nhint: --force replaces it\n")
        self.assertEqual(self.path("wave/kraddon.toml").read_text(), "mine")

    def test_a_folder_of_that_name_is_not_said_to_be_replaceable(self):
        self.path("wave/kraddon.toml").mkdir(parents=True)
        self.fails("init", "wave", message="cannot write 'wave/kraddon.toml': it is a folder")

    def test_a_dangling_link_is_not_written_through(self):
        self.path("wave").mkdir()
        self.path("wave/kraddon.toml").symlink_to("../elsewhere")
        self.fails("init", "wave", hint="--force replaces it")
        self.assertFalse(self.path("elsewhere").exists())

    def test_force_replaces_it(self):
        self.write("wave/kraddon.toml", "mine")
        self.ok("init", "wave", "--force")
        self.assertIn('name = "wave"', self.path("wave/kraddon.toml").read_text())
        self.assertEqual(self.names("wave"), ["kraddon.toml"])

    def test_force_does_not_replace_a_protected_file(self):
        self.write("wave/kraddon.toml", "precious").chmod(0o444)
        self.path("wave").chmod(0o777)
        self.folder.chmod(0o755)
        self.fails("init", "wave", "--force",
                   message="cannot replace 'wave/kraddon.toml': Permission denied",
                   **self.without_privilege())
        self.assertEqual(self.path("wave/kraddon.toml").read_text(), "precious")
        self.assertEqual(self.names("wave"), ["kraddon.toml"])

    def test_force_that_fails_names_what_was_given(self):
        self.write("wave/kraddon.toml", "mine").chmod(0o666)
        self.path("alias").symlink_to("wave")
        self.path("wave").chmod(0o555)
        self.folder.chmod(0o755)
        for where, words, shown in ((".", ["wave"], "wave/kraddon.toml"),
                                    (".", ["alias"], "alias/kraddon.toml"),
                                    (".", ["./wave/"], "./wave/kraddon.toml"),
                                    ("wave", [], "kraddon.toml")):
            result = self.run_kraddon("-C", where, "init", *words, "--force",
                                      **self.without_privilege())
            self.assertEqual(result.errors,
                             f"kraddon: init: cannot write '{shown}': Permission denied\n")
        self.assertEqual(self.path("wave/kraddon.toml").read_text(), "mine")

    def test_force_does_not_replace_a_folder(self):
        self.path("wave/kraddon.toml").mkdir(parents=True)
        self.fails("init", "wave", "--force",
                   message="cannot write 'wave/kraddon.toml': Is a directory")

    def test_force_creates_a_file(self):
        self.path("wave").mkdir()
        self.ok("init", "wave", "--force")
        self.assertEqual(self.names("wave"), ["kraddon.toml"])

    def test_stdout_does_not_write_a_file(self):
        self.write("wave/kraddon.toml", "mine")
        self.assertIn('name = "wave"', self.text())
        self.assertEqual(self.path("wave/kraddon.toml").read_text(), "mine")
        self.assertEqual(self.names("wave"), ["kraddon.toml"])

    def test_force_and_stdout_cannot_be_combined(self):
        self.path("wave").mkdir()
        self.misused("init", "wave", "--force", "--stdout",
                     message="bad option '--force': it cannot be combined with --stdout")

    def test_json_is_wrong_usage(self):
        self.assertEqual(self.run_kraddon("init", "--json").code, 2)

    def test_a_missing_folder_is_an_error(self):
        self.fails("init", "nowhere",
                   message="cannot read the folder 'nowhere': No such file or directory")

    def test_a_file_is_not_a_folder(self):
        self.write("f", "x")
        self.fails("init", "f", message="cannot read the folder 'f': Not a directory")

    def test_a_folder_that_takes_no_files_is_an_error(self):
        self.path("wave").mkdir()
        self.folder.chmod(0o755)
        result = self.fails("init", "wave", **self.without_privilege_here())
        self.assertEqual(result.errors, "kraddon: init: cannot write 'wave/kraddon.toml': "
                                        "Permission denied\n")
        self.assertEqual(self.names("wave"), [])

    def without_privilege_here(self):
        self.path("wave").chmod(0o555)
        return self.without_privilege()

    def test_an_empty_folder_gives_the_required_keys(self):
        package = self.guesses()["package"]
        self.assertRegex(package.pop("guid"), f"^{GUID}$")
        self.assertEqual(package, {"name": "wave", "version": "1.0"})


class Properties(InitTest):
    def test_the_name_is_the_real_name_of_the_folder(self):
        self.path("wave/sub").mkdir(parents=True)
        self.path("alias").symlink_to("wave")
        for words in (("-C", "wave", "init", "."), ("-C", "wave/sub", "init", ".."),
                      ("init", "wave/"), ("init", "alias"), ("init", "wave/sub/..")):
            text = self.ok(*words, "--stdout").text
            self.assertEqual(tomllib.loads(text)["package"]["name"], "wave", words)

    def test_odd_folder_names_give_valid_manifests(self):
        for name, expected in (('a "b" \\c', 'a "b" \\c'), ("a\nb = 1", "a b = 1"),
                               (b"a\xff".decode(errors="surrogateescape"), "Untitled"),
                               ("'''", "'''"), ("a#b", "a#b")):
            text = self.text(folder=os.fsencode(name).decode(errors="surrogateescape"))
            self.assertEqual(tomllib.loads(text)["package"]["name"], expected)

    def test_the_version_is_the_newest_tag(self):
        self.repository("v1.9", "v1.10", "v0.99.1", "latest")
        self.assertEqual(self.guesses()["package"]["version"], "1.10")
        self.assertIn("# the newest git tag, v1.10\n", self.text())

    def test_a_repository_above_says_so(self):
        self.repository("2.0", folder=".")
        self.assertEqual(self.guesses()["package"]["version"], "1.0")  # the ceiling
        text = self.text(env={"GIT_CEILING_DIRECTORIES": ""})
        self.assertIn("# the newest git tag, 2.0, in the repository that contains the folder\n"
                      'version = "2.0"\n', text)

    def test_without_git_the_version_is_1_0(self):
        self.repository("v1.9")
        package = self.guesses(env={"PATH": "/nowhere"})["package"]
        self.assertEqual(package["version"], "1.0")

    def test_a_failure_of_git_is_not_an_error(self):
        self.repository("v1.9")
        git = self.write("bin/git", "#!/bin/sh\necho noise\nexit 1\n")
        git.chmod(0o755)
        env = {"PATH": f"{self.path('bin')}:{os.environ['PATH']}"}
        self.assertEqual(self.guesses(env=env)["package"]["version"], "1.0")

    def test_the_author_is_gits_and_the_address_stays_a_comment(self):
        self.repository()
        self.git("config", "user.name", 'Ada "L" Lind')
        self.git("config", "user.email", "ada@example.org")
        package = self.guesses()["package"]
        self.assertEqual(package["author"], 'Ada "L" Lind')
        self.assertNotIn("contact", package)
        self.assertIn('# contact = "ada@example.org"\n', self.text())

    def test_without_a_name_in_git_there_is_no_author(self):
        self.assertNotIn("author", self.guesses()["package"])

    def test_each_guid_is_new(self):
        found = {re.search(GUID, self.text()).group() for _ in range(3)}
        self.assertEqual(len(found), 3)

    def test_summary_and_description_come_from_the_readme(self):
        package = self.guesses({"README.md": "# Wave\n\n[![b](c)](d)\n\n**Short-time** spectra\n"}
                               )["package"]
        self.assertEqual(package["summary"], "Short-time spectra")
        self.assertEqual(package["description-file"], "README.md")
        self.assertIn("# the first sentence of README.md\nsummary", self.text())

    def test_readme_md_comes_before_other_languages(self):
        package = self.guesses({"README.de.md": "de", "README.md": "en", "sub/README": "x"}
                               )["package"]
        self.assertEqual(package["description-file"], "README.md")
        self.assertIn("# Not used: README.de.md\n", self.text())

    def test_a_readme_elsewhere_or_with_another_name_is_ignored(self):
        package = self.guesses({"sub/README.md": "x", "READMEFIRST": "x", "readme.m": "x"}
                               )["package"]
        self.assertNotIn("summary", package)
        self.assertNotIn("description-file", package)

    def test_a_readme_that_is_not_text_is_not_used(self):
        for content, why in ((b"\xff\xfeR", "it is not UTF-8"),
                             (b"a\x1b[1m", "it contains the control character U+001B"),
                             (b"a" * (5 << 20), "it cannot be read, or is larger than 4 MiB")):
            package = self.guesses({"README": content})["package"]
            self.assertNotIn("description-file", package)
            self.assertIn(f"# README cannot be the description: {why}\n", self.text())

    def test_a_readme_behind_a_link_out_of_the_folder_is_ignored(self):
        self.write("secret", "secret")
        self.tree({"docs/readme.txt": "inside"}, "wave")
        self.path("wave/README").symlink_to("../secret")
        self.path("wave/README.md").symlink_to("docs/readme.txt")
        package = self.guesses()["package"]
        self.assertEqual(package["summary"], "inside")
        self.assertNotIn("secret", self.text())

    def test_the_screenshot_at_the_top_comes_first(self):
        for path, image in (("art/screenshot.png", b"\x89PNG\r\n\x1a\n"),
                            ("images/Screenshot.JPG", b"\xff\xd8\xff"),
                            ("screenshot.gif", b"GIF89a")):
            self.assertEqual(self.guesses({path: image})["package"]["screenshot"], path)

    def test_other_images_and_folders_are_not_screenshots(self):
        png = b"\x89PNG\r\n\x1a\n"
        package = self.guesses({"shot.png": png, "screenshot.svg": "<svg/>",
                                "screenshot.tif": b"II*\0", "docs/screenshot.png": png,
                                "art/a/screenshot.png": png, "screenshot.bmp/x": png})["package"]
        self.assertNotIn("screenshot", package)
        self.assertIn("# no screenshot.png or similar at the top, in images/ or in art/\n",
                      self.text())


class License(InitTest):
    def test_the_type_is_recognised_from_the_text(self):
        text = ("Permission is hereby granted, free of charge, to any person obtaining a copy\n"
                "The above copyright notice and this permission notice shall be included\n")
        for name in ("LICENSE", "licence.txt", "COPYING.md"):
            found = self.guesses({name: text})
            self.assertEqual(found["license"], {"type": "MIT", "file": name})
            self.assertIn(f"# by the text of {name}\n", self.text())
            self.path(f"wave/{name}").unlink()

    def test_an_unknown_text_is_other(self):
        self.assertEqual(self.guesses({"LICENSE": "All rights reserved."})["license"]["type"],
                         "Other")

    def test_form_feeds_between_pages_are_allowed(self):
        text = "GNU LESSER GENERAL PUBLIC LICENSE\n\fVersion 2.1, February 1999\n"
        self.assertEqual(self.guesses({"COPYING": text})["license"]["type"], "LGPL-2.1")

    def test_without_a_license_file_there_is_none(self):
        self.assertNotIn("license", self.guesses({"license.m": "x", "licensed.txt": "x",
                                                  "sub/LICENSE": "x"}))

    def test_a_license_that_is_not_text_is_not_used(self):
        self.assertNotIn("license", self.guesses({"LICENSE": b"\xff"}))
        self.assertIn("# LICENSE cannot be the license: it is not UTF-8\n", self.text())


class Lists(InitTest):
    def test_korvan_paths_are_the_folders_with_m_files(self):
        found = self.guesses({"a.m": "", "lib/b.m": "", "lib/deep/er/c.m": "", "data/d.txt": ""})
        self.assertEqual(found["configuration"], {"korvan-paths": [".", "lib", "lib/deep/er"]})

    def test_some_folders_are_never_korvan_paths(self):
        files = {f"{folder}/a.m": "" for folder in
                 ("examples", "demos", "tests", "docs", "private", "Tests", "lib/private",
                  "lib/tests/unit", ".git", "node_modules/x", "__pycache__")}
        self.assertNotIn("configuration", self.guesses(files))

    def test_hidden_folders_are_neither_korvan_paths_nor_examples(self):
        found = self.guesses({".hidden/a.m": "", "lib/.cache/b.m": "", ".hidden/sub/c.m": "",
                              "examples/.old/d.m": "", "lib/e.m": "", ".f.m": ""})
        self.assertEqual(found["configuration"], {"korvan-paths": [".", "lib"]})
        self.assertNotIn("category", found)

    def test_nothing_is_guessed_from_what_is_left_out_by_default(self):
        folders = (".git", ".github", ".svn", ".hg", ".bzr", "CVS", "__MACOSX", ".idea", ".vscode",
                   "__pycache__", "node_modules", ".venv", "old~", "._x", ".#x", "a.swp")
        files = {f"{place}{folder}/{name}": "" for folder in folders for place in ("", "examples/")
                 for name in ("a.m", "b.jar", "sub/c.m")}
        files.update({f"{name}{end}": "x" for name in ("README.md", "LICENSE", "CHANGELOG", "a.m",
                                                       "b.jar") for end in ("~", ".swp", ".swo")})
        files.update({f"._{name}": "x" for name in ("README.md", "a.m", "b.jar")})
        self.assertEqual(set(self.guesses(files)), {"package"})
        self.assertEqual(set(self.guesses()["package"]), {"name", "version", "guid"})

    def test_class_paths_are_the_jar_files(self):
        found = self.guesses({"java/a.jar": "", "b.jar": "", "c.jar.txt": "", ".git/d.jar": ""})
        self.assertEqual(found["configuration"], {"java-class-paths": ["b.jar", "java/a.jar"]})

    def test_a_folder_of_examples_is_a_category(self):
        found = self.guesses({"examples/first/chirp.m": "", "examples/first/chirp.png": "",
                              "examples/first/tone.m": "", "examples/first/notes.txt": "",
                              "examples/first/private/helper.m": "",
                              "demos/second/third/x.m": "", "examples/data/x.csv": "",
                              "lib/examples/y.m": ""})
        self.assertEqual(found["category"], [
            {"name": "second/third", "example": [
                {"name": "x", "main": "demos/second/third/x.m"}]},
            {"name": "first", "example": [
                {"name": "chirp", "main": "examples/first/chirp.m",
                 "thumbnail": "examples/first/chirp.png"},
                {"name": "tone", "main": "examples/first/tone.m"}]}])

    def test_files_right_in_examples_are_a_category_too(self):
        found = self.guesses({"examples/a.m": "", "examples/a.jpg": "", "demos/b.m": ""})
        self.assertEqual([(one["name"], len(one["example"])) for one in found["category"]],
                         [("Demos", 1), ("Examples", 1)])

    def test_without_examples_there_is_no_category(self):
        self.assertNotIn("category", self.guesses({"a.m": "", "example/b.m": ""}))

    def test_revisions_are_the_headings_of_the_change_log(self):
        found = self.guesses({"CHANGELOG.md": "# Changes\n\n## [Unreleased]\n\nx\n\n"
                                              '## [1.2] - 2026-02-01\n\n- "a" \\b """\n- c\n\n'
                                              "## v1.1 (2025-02-01)\n"})
        self.assertEqual(found["revision"], [
            {"version": "1.2", "date": "2026-02-01", "description": '- "a" \\b """\n- c'},
            {"version": "1.1", "date": "2025-02-01"}])

    def test_an_invalid_date_is_left_out(self):
        found = self.guesses({"CHANGELOG.md": "## [1.1] - 2026-13-45\n\nmore\n\n"
                                              "## [1.0] - 2026-02-29\n"})
        self.assertEqual(found["revision"], [{"version": "1.1", "description": "more"},
                                             {"version": "1.0"}])

    def test_a_change_log_without_versions_gives_no_revision(self):
        self.assertNotIn("revision", self.guesses({"CHANGELOG": "## Notes\n### 1.2\n",
                                                   "docs/CHANGELOG.md": "## 1.2\n"}))


class Building(InitTest):
    """A package can be built from the guesses."""

    def build(self, files=None):
        self.tree(files or {}, "wave")
        self.path("wave").mkdir(exist_ok=True)
        self.ok("init", "wave", "--force")
        result = self.run_kraddon("build", "wave", "-o", "p.kraddon", "--force")
        self.assertEqual(result.code, 0, result.errors)
        return lambda document: self.ok("get", "p.kraddon", document).json

    def test_an_empty_folder_can_be_built(self):
        self.assertEqual(self.build()("properties")["name"], "wave")

    def test_all_guesses_arrive_in_the_package(self):
        get = self.build({"README.md": "# Wave\n\nShort-time spectra\n", "lib/a.m": "x",
                          "LICENSE": "GNU LESSER GENERAL PUBLIC LICENSE\n\fVersion 2.1\n",
                          "screenshot.png": b"\x89PNG\r\n\x1a\n", "java/a.jar": "",
                          'examples/first/"a\\b.m': "x",
                          "CHANGELOG.md": '## [1.0] - 2026-02-01\n\n- "a" \\b """\n'})
        properties = get("properties")
        self.assertEqual((properties["summary"], properties["description"]),
                         ("Short-time spectra", "# Wave\n\nShort-time spectra\n"))
        self.assertEqual(get("license"), {
            "type": "LGPL-2.1", "text": "GNU LESSER GENERAL PUBLIC LICENSE\n\nVersion 2.1\n"})
        self.assertEqual(get("configuration"), {"korvanPaths": ["lib"],
                                                "javaClassPaths": ["java/a.jar"]})
        self.assertIn(json.dumps('examples/first/"a\\b.m'), json.dumps(get("examples")))
        self.assertEqual(get("revisions")[0]["description"], '- "a" \\b """')
        self.assertEqual(self.ok("screenshot", "p.kraddon", "-o", "-").out,
                         b"\x89PNG\r\n\x1a\n")


class OddFolders(InitTest):
    def test_names_that_a_manifest_cannot_contain_are_reported(self):
        self.path("wave").mkdir()
        for name in (b"a\xff.m", b"b\nc.m", b"d\x01.jar", b"sub\xfe/x.m"):
            path = os.path.join(os.fsencode(self.path("wave")), name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            with open(path, "wb"):
                pass
        result = self.run_kraddon("init", "wave", "--stdout")
        self.assertEqual(result.code, 0)
        self.assertNotIn("configuration", tomllib.loads(result.text))
        for name in (r"a\xff.m", r"b\nc.m", r"d\x01.jar", r"sub\xfe"):
            why = f"'{name}': the name is not UTF-8, or has control characters"
            self.assertIn(f"# {why}\n", result.text)
            self.assertIn(f"kraddon: init: warning: skipped: {why}\n", result.errors)
        self.assertEqual(self.run_kraddon("init", "wave", "--stdout", "-q").errors, "")

    def test_quotes_and_backslashes_come_back(self):
        found = self.guesses({'a"b\\/c.m': "", 'examples/q"\\.m': "", 'README"': "x"})
        self.assertEqual(found["configuration"]["korvan-paths"], ['a"b\\'])
        self.assertEqual(found["category"][0]["example"][0]["main"], 'examples/q"\\.m')

    def test_links_to_folders_are_not_followed(self):
        self.tree({"lib/a.m": ""}, "wave")
        self.path("wave/lib/loop").symlink_to("..")
        self.path("wave/root").symlink_to("/")
        self.path("wave/gone.m").symlink_to("nowhere")
        self.assertEqual(self.guesses()["configuration"]["korvan-paths"], ["lib"])

    def test_what_is_not_a_file_is_skipped(self):
        self.path("wave").mkdir()
        for name in ("README", "LICENSE", "CHANGELOG", ".kraddonignore", "a.m"):
            os.mkfifo(self.path(f"wave/{name}"))
        self.assertEqual(set(self.guesses()), {"package"})

    def test_what_the_ignore_file_leaves_out_is_not_guessed_from(self):
        found = self.guesses({".kraddonignore": "old/\n*.jar\n", "old/a.m": "", "b.jar": "",
                              "c.m": ""})
        self.assertEqual(found["configuration"], {"korvan-paths": ["."]})

    def test_an_unreadable_folder_is_reported(self):
        self.tree({"shut/a.m": "", "b.m": ""}, "wave")
        self.folder.chmod(0o755)
        self.path("wave/shut").chmod(0)
        result = self.run_kraddon("init", "wave", "--stdout", **self.without_privilege())
        self.path("wave/shut").chmod(0o755)
        self.assertEqual(result.code, 0, result.errors)
        self.assertIn("# 'shut': Permission denied\n", result.text)
        self.assertEqual(tomllib.loads(result.text)["configuration"]["korvan-paths"], ["."])

    def test_the_order_on_the_disk_does_not_matter(self):
        names = [f"f{at}/x.m" for at in range(40)]
        self.tree({name: "" for name in names}, "one/wave")
        self.tree({name: "" for name in reversed(names)}, "two/wave")
        one, two = (re.sub(GUID, "", self.text(folder=f"{folder}/wave"))
                    for folder in ("one", "two"))
        self.assertEqual(one, two)

    def test_every_one_of_many_folders_is_a_search_path(self):
        for at in range(100):
            self.tree({f"d{at}/f{i}.m": "" for i in range(50)}, "wave")
        found = self.guesses()
        self.assertEqual(len(found["configuration"]["korvan-paths"]), 100)


if __name__ == "__main__":
    kraddontest.main()
