# SPDX-License-Identifier: MIT
"""kraddon help manifest, patterns and findings; the schema of the manifest in editors."""

import os
import pathlib
import re
import subprocess

import kraddontest
from projecttest import FULL

ROOT = pathlib.Path(__file__).resolve().parents[2]
TAPLO = ROOT / "build/editors/node_modules/.bin/taplo"


MISTAKES = [('version = "1.2"', "version = 1.2", "string"), ("[package]", "[pakage]", "pakage"),
            ('name = "Wave Tools"\n', "", "name"), ("[verify]", "[verify]\nstrict = 1", "boolean"),
            ("[license]", "[license]\ntxt = 'x'", "txt")]


class Topics(kraddontest.CliTest):
    def test_each_key_of_the_manifest_is_explained(self):
        text = self.ok("help", "manifest").text

        def visit(schema, path=""):
            for key, value in schema["properties"].items():
                inner = f"{path}.{key}" if path else key
                items = value.get("items", {})
                if "properties" in value:
                    self.assertIn(f"\n[{inner}]\n", text)
                    visit(value, inner)
                elif "properties" in items:
                    self.assertIn(f"\n[[{inner}]]\n", text)
                    visit(items, inner)
                else:
                    self.assertRegex(text, rf"(?m)^  {re.escape(key)}( |$)", inner)

        visit(self.ok("schema", "manifest").json)
        self.assertIn('  name = "Wave Tools"\n', text)
        self.assertLessEqual(max(map(len, text.splitlines())), 80)

    def test_patterns_are_explained(self):
        text = self.ok("help", "patterns").text
        for form in ("docs/**/*.pdf", "!keep.log", "tests/", "[a-z].m"):
            self.assertIn(f"\n  {form} ", text)

    def test_every_finding_is_listed(self):
        text = self.ok("help", "findings").text
        listed = re.findall(r"(?m)^  (KR\d{3})  (error|warning): ", text)
        page = (ROOT / "docs/findings.md").read_text()
        self.assertEqual(listed, re.findall(r"(?m)^\| (KR\d{3}) \| (\w+) ", page))

    def test_the_topics_are_named_and_completed(self):
        self.assertIn("'kraddon help manifest'", self.ok("help").text)
        words = self.ok("completion", "bash", "--", "help", "pat").out.split(b"\0")
        self.assertIn(b"patterns", words)
        self.misused("help", "manfest",
                     message="unknown command or topic 'manfest': did you mean 'manifest'?")
        self.misused("help", "zzzzzz", message="unknown command or topic 'zzzzzz': 'kraddon help' "
                                               "lists the commands and topics")


class Editors(kraddontest.CliTest):
    def test_init_names_the_schema_in_its_first_line(self):
        address = self.ok("schema", "manifest").json["$id"]
        self.assertRegex(address, r"^file:///usr/share/kraddon/[a-z.]+\.json$")
        self.path("wave").mkdir()
        self.ok("init", "wave")
        lines = self.path("wave/kraddon.toml").read_text().splitlines()
        self.assertEqual(lines[0], f"#:schema {address}")

    def test_the_installed_schema_is_the_printed_one(self):
        pages = pathlib.Path(os.environ["KRADDON_PAGES"])
        self.assertEqual((pages / "manifest.schema.json").read_bytes(),
                         self.ok("schema", "manifest").out)

    def lint(self, *texts):
        """The exit code of the linter for these manifests, and what it says of each."""
        self.write("schema.json", self.ok("schema", "manifest").out)
        paths = [self.write(f"{number}.toml", text) for number, text in enumerate(texts)]
        done = subprocess.run([TAPLO, "lint", "--schema", self.path("schema.json").as_uri(), *paths],
                              cwd=self.folder, capture_output=True, text=True, check=False,
                              timeout=100)
        said = done.stdout + done.stderr
        return done.returncode, ["".join(re.findall(rf"(?s)error: (?:(?!error: ).)*?/{number}\.toml.*?"
                                                    r"(?=\n\n|\Z)", said))
                                 for number in range(len(texts))]

    def test_an_editor_accepts_good_manifests_and_refuses_bad_ones(self):
        self.assertTrue(TAPLO.exists(), "'scripts/setup test' fetches taplo")
        self.tree({"README.md": "# Wave\n\nSpectra.\n", "apps/v.m": "", "examples/a.m": "",
                   "CHANGELOG.md": "## 1.0 - 2026-02-01\n\nx\n"}, "wave")
        good = [FULL, self.ok("init", "wave", "--stdout").text]
        self.assertEqual(self.lint(*good), (0, ["", ""]))
        bad = [FULL.replace(old, new, 1) for old, new, _ in MISTAKES]
        code, messages = self.lint(*bad)
        self.assertEqual(code, 1)
        for message, (_, _, what) in zip(messages, MISTAKES):
            self.assertIn(what, message)


if __name__ == "__main__":
    kraddontest.main()
