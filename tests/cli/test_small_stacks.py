# SPDX-License-Identifier: MIT
"""Every command with a small stack, and inputs that are nested deeply."""

import os
import resource
import subprocess
import unittest
import zipfile

import kraddontest

NESTED = 250  # what the parser of manifests accepts
IMAGE = b"\x89PNG\r\n\x1a\n" + bytes(100)


@unittest.skipIf("ASAN_OPTIONS" in os.environ, "sanitizers need a larger stack")
class SmallStacks(kraddontest.CliTest):

    def run_kraddon(self, *words, stack=128, **kw):
        """As ever, but with a stack of so many KiB."""
        def limit():
            resource.setrlimit(resource.RLIMIT_STACK, (stack << 10, stack << 10))
        return super().run_kraddon(*words, preexec_fn=limit, **kw)

    def ends(self, *words, codes=(0,), **kw):
        """Runs it, and expects that it ends by itself, with one of these codes."""
        result = self.run_kraddon(*words, **kw)
        self.assertIn(result.code, codes, (words[0], result.errors[:300]))
        return result

    def replace(self, item, content):
        entries = self.entries()
        entries[item] = content
        with zipfile.ZipFile(self.path("p.kraddon"), "w", zipfile.ZIP_DEFLATED) as archive:
            for name, text in entries.items():
                archive.writestr(name, text)

    def test_every_command_works(self):
        self.tree({"a.m": "one", "lib/b.m": "two\n", "README.md": "# Waves\n"})
        self.write("shot.png", IMAGE)
        self.ends("create", "p.kraddon", "src", "--name", "Waves")
        self.ends("create", "q.kraddon", "src", "--name", "Other")
        for words in (("add", "p.kraddon", "shot.png"), ("mkdir", "p.kraddon", "x/y"),
                      ("remove", "p.kraddon", "x"), ("set", "p.kraddon", "license", "text=x"),
                      ("get", "p.kraddon", "license"), ("info", "p.kraddon", "--json"),
                      ("screenshot", "p.kraddon", "shot.png"), ("screenshot", "p.kraddon"),
                      ("list", "p.kraddon", "-l"), ("list", "p.kraddon", "--hash"),
                      ("extract", "p.kraddon", "-d", "out"), ("verify", "p.kraddon"),
                      ("preview", "p.kraddon", "-o", "-"), ("sbom", "p.kraddon"),
                      ("index", "site", "p.kraddon"), ("search", "site", "waves"),
                      ("init", "src"), ("build", "src"),
                      ("call", "addonGetFileList", "p.kraddon"), ("schema", "manifest"),
                      ("unset", "p.kraddon", "license"), ("completion", "bash"), ("help",)):
            self.ends(*words)
        self.ends("diff", "p.kraddon", "q.kraddon", "--text", codes=(1,))

    def test_a_description_with_many_addresses_does_no_harm(self):
        for text in ("@" * 60000, "a@b.cc " * 8000, "http://a.b " * 5000, "~a" * 30000):
            self.package("p.kraddon", {}, "--description", text, "--force")
            self.ends("preview", "p.kraddon", "-o", "-")

    def test_deep_json_does_no_harm(self):
        self.package()
        for depth in (100, 100_000):
            text = "[" * depth + "]" * depth
            self.write("deep.json", text)
            self.write("object.json", '{"type":' * depth + "1" + "}" * depth)
            for name in ("deep.json", "object.json"):
                self.ends("set", "p.kraddon", "license", name, codes=(1,))
                self.ends("call", "addonSetLicense", "p.kraddon", "@" + name, codes=(0, 1))

    def test_a_deep_manifest_does_no_harm(self):
        for depth in (NESTED, 100_000):
            for opening, closing in (("[", "]"), ("{a=", "}")):
                self.write("project/kraddon.toml", "[package]\nname = 'n'\nversion = '1'\nx = "
                           + opening * depth + "1" + closing * depth + "\n")
                self.ends("build", "project", "--force", codes=(0, 1))
            self.write("project/kraddon.toml", "[" + ".".join("a" * depth) + "]\nx = 1\n")
            self.ends("build", "project", "--force", codes=(0, 1))

    def test_deep_documents_do_no_harm(self):
        self.package()
        for depth in (250, 5000):
            for item in ("metadata/addonProperties.xml", "_rels/.rels", "[Content_Types].xml",
                         "metadata/coreProperties.xml", "metadata/fileTree.xml"):
                self.package("p.kraddon", {}, "--force")
                self.replace(item, "<x>" * depth + "</x>" * depth)
                for words in (("verify",), ("info",), ("list",), ("preview", "-o", "-"),
                              ("get", "properties"), ("call", "addonGetProperties")):
                    words = ((words[0], words[1], "p.kraddon") if words[0] == "call" else
                             (words[0], "p.kraddon", *words[1:]))
                    self.ends(*words, codes=(0, 1))

    def test_deep_folders_do_no_harm(self):
        path = "/".join(["d"] * 5000) + "/x.m"
        self.package()
        self.write("x.m", "x")
        self.ends("add", "p.kraddon", "x.m", "--as", path)
        for words in (("list",), ("list", "--tree"), ("list", "--json"), ("verify",), ("info",),
                      ("extract", "-d", "out"), ("preview", "-o", "-")):
            self.ends(words[0], "p.kraddon", *words[1:])
        subprocess.run(["rm", "-rf", self.path("out")], check=True)  # too deep for Python
        self.ends("call", "addonGetFileList", "p.kraddon")
        self.ends("list", "p.kraddon", "**/" * 200 + "x.m", "--glob", codes=(0, 1))
        self.ends("diff", "p.kraddon", "p.kraddon")
        self.ends("remove", "p.kraddon", "d")

    def test_deep_markdown_does_no_harm(self):
        for text in (">" * 900 + " x", "- " * 400 + "x", "*" * 100_000 + "x", "[" * 50_000,
                     "![" * 20_000 + "](" * 20_000):
            self.write("text", text)
            self.package("p.kraddon", {}, "--force")
            self.ends("set", "p.kraddon", "properties", "description=@text")
            self.ends("preview", "p.kraddon", "-o", "-")

    def test_with_half_of_that_every_command_fails(self):
        self.package()
        for words in (("info", "p.kraddon"), ("--version",), ("build", "src")):
            result = self.ends(*words, stack=64, codes=(1,))
            self.assertEqual(result.errors,
                             "kraddon: cannot run with a stack of '64 KiB': 128 KiB are needed\n"
                             "hint: 'ulimit -s' shows and sets the limit\n")


if __name__ == "__main__":
    kraddontest.main()
