# SPDX-License-Identifier: MIT
"""kraddon init: the GUID that it keeps, and what it reads of README, CHANGELOG and apps."""

import pathlib
import shutil
import tomllib

import kraddontest
from test_init import GUID, InitTest

EXAMPLE = pathlib.Path(__file__).parents[2] / "examples/signal-kit"


class Again(InitTest):
    def test_force_keeps_the_guid(self):
        self.path("wave").mkdir()
        self.ok("init", "wave")
        path = self.path("wave/kraddon.toml")
        guid = tomllib.loads(path.read_text())["package"]["guid"]
        self.ok("init", "wave", "--force")
        self.assertEqual(tomllib.loads(path.read_text())["package"]["guid"], guid)
        self.assertIn("# from the manifest that this one replaced; keep it in all versions of the "
                      "add-on\nguid", path.read_text())

    def test_force_keeps_the_guid_of_a_manifest_with_mistakes(self):
        for text, guid in (('[package]\nguid = "{abc"\nname = 1\n', "{abc"),
                           ("a = \n[package] # x\n  guid='0c0c'\n", "0c0c"),
                           ('package.guid = "d"\n', "d"),
                           ('[license]\nguid = "no"\n[package]\nguid = "a\\u0062"\n', "ab"),
                           ('[[app]]\nguid = "no"\n[package]\nguid = "e"\nx = "\n', "e")):
            path = self.write("wave/kraddon.toml", text)
            self.ok("init", "wave", "--force")
            self.assertEqual(tomllib.loads(path.read_text())["package"]["guid"], guid, text)

    def test_force_keeps_the_guid_that_build_derives(self):
        path = self.write("wave/kraddon.toml", '[package]\nname = "Old"\nversion = "1.0"\n')
        self.ok("build", "wave", "-q", "-o", "p.kraddon")
        self.ok("init", "wave", "--force")
        self.assertEqual(tomllib.loads(path.read_text())["package"]["guid"],
                         self.ok("info", "p.kraddon", "--field", "guid").text.strip())

    def test_force_gives_a_new_guid_if_there_is_none(self):
        for text in ("mine", '[package]\nguid = ""\n', "[package]\nguid = 5\n", b"\xff",
                     '[package]\nname = ""\n'):
            path = self.write("wave/kraddon.toml", text)
            self.ok("init", "wave", "--force")
            self.assertRegex(tomllib.loads(path.read_text())["package"]["guid"], f"^{GUID}$")


class Sources(InitTest):
    def test_the_name_is_the_title_of_the_readme(self):
        for readme in ("# Map Kit\n", "Map Kit\n=======\n", "![a](b)\n# Map *Kit* [![c](d)](e)\n",
                       '<h1 align="center">\n  Map Kit\n</h1>\n', "text\n\n# Map Kit\n# Other\n",
                       "## Map Kit\n\ntext\n", "=======\nMap Kit\n=======\n"):
            self.assertEqual(self.guesses({"README.md": readme})["package"]["name"], "Map Kit",
                             readme)
        self.assertIn('# the title of README.md\nname = "Map Kit"\n', self.text())

    def test_a_readme_without_a_title_leaves_the_folder_s_name(self):
        for readme in ("Map Kit\n", "text\n\n## Install\n", f"# {'x' * 101}\n", "# ...\n", "# \n"):
            self.assertEqual(self.guesses({"README.md": readme})["package"]["name"], "wave", readme)

    def test_without_a_tag_the_version_is_the_newest_of_the_change_log(self):
        for log, version in (("## [Unreleased]\n## [1.2] - 2026-02-01\n## 1.1 - 2025-02-01\n", "1.2"),
                             ("## 1.1 - 2025-02-01\n## 1.2 - 2026-02-01\n", "1.2"),
                             ("## 1.2\n## 1.1\n", "1.2"), ("## 1.9\n## 1.10\n", "1.10"),
                             ("## 2.0-rc1\n", "2.0-rc1"), ("## Unreleased\n", "1.0")):
            self.assertEqual(self.guesses({"CHANGELOG.md": log})["package"]["version"], version, log)
        self.tree({"CHANGELOG.md": "## 1.2\n"}, "wave")
        self.assertIn('# the newest heading of CHANGELOG.md\nversion = "1.2"\n', self.text())
        self.repository("v1.1")
        self.assertEqual(self.guesses()["package"]["version"], "1.1")

    def test_the_m_files_in_apps_are_apps(self):
        found = self.guesses({"apps/viewer.m": "", "apps/editor.m": "", "apps/icon.png": "",
                              "apps/private/x.m": "", "lib/apps/y.m": "", "apps.m": ""})
        self.assertEqual(found["app"], [{"name": "editor", "file": "apps/editor.m"},
                                        {"name": "viewer", "file": "apps/viewer.m"}])
        self.assertIn("\n# a .m file in apps\n[[app]]\n", self.text())
        self.assertNotIn("# [[app]]", self.text())

    def test_an_image_that_build_refuses_is_not_the_screenshot(self):
        none = "it is not a PNG, GIF, TIFF, BMP or JPEG image"
        for content, why in (("", none), ("version 1\nsize 9\n", none),
                             (b"GIF89a", "it is a GIF image, and its name says PNG")):
            with self.subTest(content=content):
                package = self.guesses({"screenshot.png": content})["package"]
                self.assertNotIn("screenshot", package)
                text = self.text()
                self.assertIn(f"# screenshot.png cannot be the screenshot: {why}\n", text)
                self.assertNotIn("no screenshot.png", text)
                self.ok("init", "wave", "--force")
                self.ok("build", "wave", "-q", "--force", "-o", "p.kraddon")

    def test_the_next_image_is_the_screenshot_if_build_refuses_the_first(self):
        found = self.guesses({"screenshot.png": "", "screenshot.gif": b"GIF89a",
                              "images/screenshot.png": "", "art/screenshot.png": ""})
        self.assertEqual(found["package"]["screenshot"], "screenshot.gif")
        self.assertEqual(self.text().count("cannot be the screenshot"), 1)

    def test_an_image_larger_than_any_text_is_the_screenshot(self):
        found = self.guesses({"screenshot.png": b"\x89PNG\r\n\x1a\n" + bytes(5 << 20)})
        self.assertEqual(found["package"]["screenshot"], "screenshot.png")

    def test_an_image_that_cannot_be_read_is_not_the_screenshot(self):
        self.tree({"screenshot.png": b"\x89PNG\r\n\x1a\n"}, "wave")
        self.folder.chmod(0o755)
        self.path("wave/screenshot.png").chmod(0)
        result = self.run_kraddon("init", "wave", "--stdout", **self.without_privilege())
        self.assertEqual(result.code, 0, result.errors)
        self.assertIn("# screenshot.png cannot be the screenshot: it cannot be read\n",
                      result.text)
        self.assertNotIn("screenshot", tomllib.loads(result.text)["package"])

    def test_the_example_builds_with_no_warning_but_of_what_cannot_be_guessed(self):
        shutil.copytree(EXAMPLE, self.path("kit"))
        self.ok("init", "kit")
        package = tomllib.loads(self.path("kit/kraddon.toml").read_text())["package"]
        self.assertEqual((package["name"], package["version"], package["summary"]),
                         ("Signal Kit", "1.2",
                          "Short signals, from making them to looking at them: test signals, "
                          "windows, short-time spectra, simple filters, and a plot that a spectrum "
                          "deserves."))
        found = self.run_kraddon("build", "kit", "--json").json["findings"]
        self.assertEqual([(one["id"], one["message"]) for one in found],
                         [("KR503", "the add-on has no author"),
                          ("KR503", "the add-on has no contact")])
        self.assertEqual([app["relativePath"] for app in
                          self.ok("get", "Signal Kit-1.2.kraddon", "apps").json],
                         ["apps/spectrumViewer.m"])


if __name__ == "__main__":
    kraddontest.main()
