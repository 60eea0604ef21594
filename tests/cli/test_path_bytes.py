# SPDX-License-Identifier: MIT
"""A package whose path is not UTF-8: every command that takes a package takes it."""

import kraddontest
from kraddontest import CliTest

NAME = b"b\xff.kraddon"
SHOWN = "b\\xff.kraddon"


class PathBytes(CliTest):

    def setUp(self):
        super().setUp()
        self.tree({"a.m": "one", "lib/b.m": "two"})
        self.ok("create", NAME, "src", "--name", "Wave Tools")

    def test_it_is_created(self):
        self.assertEqual(self.names_in_bytes(), [NAME, b"src"])
        self.fails("create", NAME, "src", "--name", "x",
                   message=f"cannot create '{SHOWN}': it already exists",
                   hint="--force replaces it")

    def test_it_is_built(self):
        self.write("kit/kraddon.toml", "[package]\nname = 'Kit'\nversion = '1'\n")
        self.write("kit/a.m", "one")
        self.ok("build", "kit", "-o", b"k\xff.kraddon", "--no-verify")
        self.ok("build", "kit", "-o", b"k\xff.kraddon", "--force", "--dry-run", "--no-verify")
        self.assertIn(b"k\xff.kraddon", self.names_in_bytes())
        self.assertEqual(self.ok("list", b"k\xff.kraddon").text, "a.m\n")

    def test_it_is_read(self):
        self.assertEqual(self.ok("list", NAME).text, "a.m\nlib/b.m\n")
        self.assertIn(b"Wave Tools", self.ok("info", NAME).out)
        self.assertEqual(self.ok("info", NAME, "--json").json["file"], SHOWN)
        self.assertIn("Wave Tools", self.ok("get", NAME, "properties").text)
        self.ok("verify", NAME, "--opc")
        report = self.run_kraddon("verify", NAME, "--json").json
        self.assertEqual(report["packages"][0]["file"], SHOWN)
        self.assertEqual(report["packages"][0]["errors"], 0)
        self.assertNotEqual(report["packages"][0]["findings"], [])
        self.run_kraddon("verify", NAME, "--format", "sarif").json

    def test_it_is_changed(self):
        self.write("c.m", "three")
        self.write("shot.png", b"\x89PNG\r\n\x1a\n" + bytes(100))
        self.ok("add", NAME, "c.m")
        self.ok("mkdir", NAME, "void")
        self.ok("remove", NAME, "a.m")
        self.ok("set", "--no-verify", NAME, "license", "type=MIT")
        self.ok("screenshot", NAME, "shot.png")
        self.ok("screenshot", NAME, "-o", "out.png")
        self.ok("unset", "-q", NAME, "license")
        self.assertEqual(self.ok("list", NAME).text, "c.m\nlib/b.m\nvoid\n")

    def test_it_is_extracted(self):
        self.ok("extract", NAME)
        self.ok("extract", NAME, "-d", b"there\xff")
        self.assertEqual((self.folder / "b\udcff" / "a.m").read_text(), "one")
        self.assertEqual((self.folder / "there\udcff" / "a.m").read_text(), "one")

    def test_it_is_compared(self):
        self.ok("create", b"c\xff.kraddon", "src", "--name", "Wave Tools")
        self.assertEqual(self.run_kraddon("diff", NAME, b"c\xff.kraddon").errors, "")
        self.write("kit/kraddon.toml", "[package]\nname = 'Kit'\nversion = '1'\n")
        result = self.run_kraddon("diff", NAME, "kit", "--json")
        self.assertEqual((result.code, result.errors), (1, ""))
        self.assertIn("files", result.json)

    def test_it_is_previewed(self):
        self.ok("preview", NAME)
        self.assertIn(b"b\xff.html", self.names_in_bytes())

    def test_an_error_names_it(self):
        self.fails("info", b"none\xff.kraddon",
                   message="cannot open package 'none\\xff.kraddon': No such file or directory")

    def names_in_bytes(self):
        return sorted(name.encode(errors="surrogateescape") for name in self.names())


if __name__ == "__main__":
    kraddontest.main()
