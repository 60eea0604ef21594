# SPDX-License-Identifier: MIT
"""Follows docs/new-document.md: applies its patches to a copy of the sources that they change, and
tries the document in a program that is linked with them."""

import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import tomllib
import unittest
import zipfile

import jsonschema

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/cli"))
import kraddontest  # noqa: E402  (it lies in another folder)

BUILD = pathlib.Path(os.environ["KRADDON_BUILD"])
PAGE = ROOT / "docs/new-document.md"
LIST = "addon/packaging/Documents.cpp"

CREDITS = [{"name": "A. Lind", "role": "Filters"}, {"name": "B. Weaver", "role": ""}]
MANIFEST = """\
[package]
name = "Wave"
version = "1.0"
[[credit]]
name = "A. Lind"
role = "Filters"
[[credit]]
name = "B. Weaver"
"""


def apply_patches(folder):
    """A patch of the page names the lines around a change, and no line numbers."""
    for patch in re.findall(r"```diff\n(.*?)```", PAGE.read_text(), re.S):
        name = re.search(r"^\+\+\+ b/(.*)$", patch, re.M)[1]
        file = folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        text = (ROOT / name).read_text() if (ROOT / name).exists() else ""
        for hunk in re.split(r"^@@.*@@\n", patch, flags=re.M)[1:]:
            lines = hunk.splitlines(keepends=True)
            old = "".join(line[1:] for line in lines if not line.startswith("+"))
            new = "".join(line[1:] for line in lines if not line.startswith("-"))
            assert text.count(old) == 1 or not text, (name, old)
            text = text.replace(old, new) if text else new
        file.write_text(text)


def build_program(folder):
    """kraddon with the patched sources: what the build did, for the one source of the list."""
    commands = subprocess.run(["ninja", "-t", "commands", "bin/kraddon"], cwd=BUILD, check=True,
                              capture_output=True, text=True).stdout.splitlines()
    words = shlex.split(next(line for line in commands if line.endswith(f"-c {ROOT / LIST}")))
    made = folder / "Documents.o"
    words[words.index("-o") + 1] = str(made)
    words[-1] = str(folder / LIST)
    words[words.index("-MF") + 1] = str(folder / "Documents.d")
    words.insert(words.index(f"-I{ROOT}"), f"-I{folder}")  # the patched headers come first
    subprocess.run(words, cwd=BUILD, check=True)

    words = shlex.split(commands[-1].removeprefix(": && ").removesuffix(" && :"))
    program = folder / "kraddon"
    words[words.index("-o") + 1] = str(program)
    words.insert(words.index("-o"), str(made))  # replaces what is in the library
    words.append(f"-Wl,-rpath,{BUILD / 'lib'}")
    subprocess.run(words, cwd=BUILD, check=True)
    return program


def setUpModule():
    folder = pathlib.Path(tempfile.mkdtemp(prefix="kraddon-document-"))
    unittest.addModuleCleanup(shutil.rmtree, folder)
    apply_patches(folder)
    kraddontest.KRADDON = str(build_program(folder))


class NewDocument(kraddontest.CliTest):
    """What the page promises."""

    def setUp(self):
        super().setUp()
        self.package("p.kraddon")

    def store(self, package="p.kraddon", value=CREDITS):
        self.ok("set", package, "credits", "-", stdin=json.dumps(value).encode())

    def test_it_is_set_and_printed_again(self):
        self.assertEqual(self.ok("get", "p.kraddon", "credits").json, [])
        self.store()
        self.assertEqual(self.ok("get", "p.kraddon", "credits").json, CREDITS)
        self.assertIn("credits", self.ok("info", "p.kraddon", "--field", "documents").text)
        self.ok("unset", "p.kraddon", "credits")
        self.assertEqual(self.ok("get", "p.kraddon", "credits").json, [])

    def test_a_mistake_in_it_is_named(self):
        for value, why in (([{"name": "x"}], "credits[0].role: it is missing"),
                           ([{"name": "x", "role": 1}], "credits[0].role: expected a string"),
                           ([{"nam": "x"}], "credits[0].nam: unknown field, did you mean 'name'?")):
            self.fails("set", "p.kraddon", "credits", "-", stdin=json.dumps(value).encode(),
                       message=f"bad document 'standard input': {why}")

    def test_it_has_a_schema(self):
        validator = jsonschema.Draft202012Validator(self.ok("schema", "credits").json)
        self.assertTrue(validator.is_valid(CREDITS))
        self.assertFalse(validator.is_valid([{"name": "x"}]))
        self.assertFalse(validator.is_valid([{**CREDITS[0], "more": ""}]))

    def test_it_is_built_from_a_manifest(self):
        self.write("wave/kraddon.toml", MANIFEST)
        self.write("wave/a.m", "a")
        self.ok("build", "wave", "-o", "w.kraddon", "-q", "--no-verify")
        self.assertEqual(self.ok("get", "w.kraddon", "credits").json, CREDITS)
        schema = jsonschema.Draft202012Validator(self.ok("schema", "manifest").json)
        self.assertTrue(schema.is_valid(tomllib.loads(MANIFEST)))
        self.write("wave/kraddon.toml", MANIFEST.replace("role", "rloe"))
        self.assertIn("unknown key 'credit[0].rloe': did you mean 'role'?",
                      self.run_kraddon("build", "wave", "--dry-run").errors)

    def test_what_differs_in_it_is_shown(self):
        self.package("q.kraddon")
        self.store()
        self.store("q.kraddon", [CREDITS[1], {**CREDITS[0], "role": "Windows"}])
        report = self.run_kraddon("diff", "p.kraddon", "q.kraddon", "--json").json
        (document,) = report["documents"]
        self.assertEqual((document["document"], document["change"]), ("credits", "changed"))
        self.assertTrue(document["fields"])

    def test_it_is_verified(self):
        self.store()
        self.assertNotIn("credits", self.run_kraddon("verify", "p.kraddon").text)
        with zipfile.ZipFile(self.path("p.kraddon")) as package:
            parts = {name: package.read(name) for name in package.namelist()}
        name = "metadata/credits.xml"
        parts[name] = parts[name].replace(b"role=", b"roll=")
        with zipfile.ZipFile(self.path("p.kraddon"), "w") as package:
            for part, content in parts.items():
                package.writestr(part, content)
        result = self.run_kraddon("verify", "p.kraddon", "--json").json
        found = [finding["message"] for finding in result["packages"][0]["findings"]
                 if finding["part"] == "/" + name]
        self.assertTrue(any("attribute 'roll' of 'credit'" in message for message in found), found)

    def test_it_is_on_the_page(self):
        self.store()
        page = self.ok("preview", "p.kraddon", "-o", "-").text
        self.assertIn('<h2 id="credits">Credits</h2>', page)
        self.assertIn("<bdi>A. Lind</bdi>", page)
        self.assertIn("<bdi>Filters</bdi>", page)


if __name__ == "__main__":
    kraddontest.main()
