# SPDX-License-Identifier: MIT
"""What manifests, patterns, findings and printed values mean from one release to the next."""

import hashlib
import json
import os
import zipfile

import kraddontest
import projecttest
from projecttest import FULL, FULL_FILES, png

OUT_BY_DEFAULT = [
    ".git/config", ".gitignore", ".gitattributes", ".gitmodules", ".svn/entries", ".hg/store",
    ".bzr/branch", "CVS/Root", ".DS_Store", "._a.m", "__MACOSX/a.m", "Thumbs.db", "ehthumbs.db",
    "desktop.ini", "a.m~", ".a.m.swp", "a.swo", ".#a.m", ".idea/a.xml", ".vscode/a.json",
    "__pycache__/a.pyc", "node_modules/a.js", ".venv/bin/a", "kraddon.toml", ".kraddonignore",
    "old.kraddon"]

# Much alike, or a file where only a folder of that name stays out, or the other case.
IN_BY_DEFAULT = [
    "CVS2/a", "DESKTOP.INI", "THUMBS.DB", "_a.m", "a.swpx", "a.~b", "files/.bzr", "files/.hg",
    "files/.idea", "files/.svn", "files/.venv", "files/.vscode", "files/CVS", "files/__MACOSX",
    "files/__pycache__", "files/node_modules", "git/a", "kraddon.toml2", "old.KRADDON",
    "svn/env.m", "venv/a"]

ERRORS = {101, *range(103, 110), *range(116, 120), 201, 202, *range(204, 210), 212, 213, 214, 218,
          219, 301, 303, 305, 306, 307, 308, 309, 314, 316, 317, 401, 402, 404, 409}
NUMBERS = {*range(101, 120), *range(201, 229), *range(301, 318), *range(401, 411),
           *range(501, 515)}


class DefaultExcludes(projecttest.ProjectTest):

    def setUp(self):
        super().setUp()
        files = {**{name: "" for name in IN_BY_DEFAULT},
                 **{name: "" for name in OUT_BY_DEFAULT},
                 **{f"sub/deep/{name}": "" for name in OUT_BY_DEFAULT}}
        self.tree(files)
        self.write("src/.kraddonignore", "")
        self.write("src/kraddon.toml", projecttest.LEAST)

    def test_they_are_the_same_wherever_they_count(self):
        self.build("src", "-o", "built.kraddon")
        self.ok("create", "created.kraddon", "src", "--name", "x", "--default-excludes")
        self.ok("create", "added.kraddon", "--name", "x")
        self.ok("add", "added.kraddon", "src/.", "--default-excludes")
        for name in ("built.kraddon", "created.kraddon", "added.kraddon"):
            self.assertEqual(self.listing(name), sorted(IN_BY_DEFAULT), name)

    def test_each_can_be_taken_back(self):
        self.write("src/.kraddonignore", "!*\n")

        self.build("src", "-o", "p.kraddon")

        self.assertEqual(set(OUT_BY_DEFAULT) - set(self.listing()), set())

    def test_verify_names_what_they_would_leave_out(self):
        self.ok("create", "p.kraddon", "src", "--name", "x")

        findings = self.run_kraddon("verify", "p.kraddon", "--json").json["packages"][0]["findings"]

        named = {finding["part"] for finding in findings if finding["id"] == "KR508"}
        self.assertEqual(named & set(IN_BY_DEFAULT), set())
        for name in OUT_BY_DEFAULT:
            self.assertTrue(any(part == name or name.startswith(part.rstrip("/") + "/")
                                for part in named), name)


class Order(projecttest.ProjectTest):
    FILES = {".DS_Store": "", "1.a": "", "2.a": "", "3.a": "", "f.m": ""}

    def test_of_patterns_is_defaults_file_manifest_option(self):
        self.project('[files]\nexclude = ["!1.a", "!2.a", ".DS_Store"]\n', self.FILES)
        self.write(".kraddonignore", "!.DS_Store\n*.a\n")
        self.build("-o", "p.kraddon", "--exclude", "2.a")
        self.assertEqual(self.listing(), ["1.a", "f.m"])
        self.build("-o", "q.kraddon", "--exclude", "!3.a", "--exclude", "!.DS_Store")
        self.assertEqual(self.listing("q.kraddon"), [".DS_Store", "1.a", "2.a", "3.a", "f.m"])

    def test_what_git_ignores_goes_in(self):
        self.project(files={"f.m": "", "g.m": "", ".gitignore": "f.m\n"})

        self.build("-o", "p.kraddon")

        self.assertEqual(self.listing(), ["f.m", "g.m"])


class Links(projecttest.ProjectTest):
    """A link means the same to all three that read folders."""

    def outcomes(self, target, *more):
        """What each of the three does with a folder that holds such a link."""
        self.project(files={"in/f.m": "x"}, folder="src")
        self.write("outside/o.m", "o")
        self.path("src/link").unlink(missing_ok=True)
        os.symlink(target, self.path("src/link"))
        self.ok("create", "added.kraddon", "--name", "x", "--force")
        for name, words in (
                ("created.kraddon", ["create", "created.kraddon", "src", "--name", "x", "--force"]),
                ("built.kraddon", ["build", "src", "-o", "built.kraddon", "--force"]),
                ("added.kraddon", ["add", "added.kraddon", "src/"])):
            yield name, self.run_kraddon(*words, *more, "-q")

    def test_one_that_stays_inside_is_followed(self):
        for target in ("in/f.m", "in", str(self.path("src/in"))):
            with self.subTest(target=target):
                for name, result in self.outcomes(target):
                    self.assertEqual((result.code, result.errors), (0, ""))
                    path = "link" if target == "in/f.m" else "link/f.m"
                    self.assertIn(path, [entry.removeprefix("src/")
                                         for entry in self.listing(name)])

    def test_one_that_leads_out_is_followed_when_told(self):
        for name, result in self.outcomes("../outside"):
            self.assertEqual(result.code, 1, name)
            self.assertIn("cannot follow the link 'src/link': it leads out of the folder\n"
                          "hint: --follow follows it\n", result.errors)
        for name, result in self.outcomes("../outside", "--follow"):
            self.assertEqual((result.code, result.errors), (0, ""))
            self.assertIn("link/o.m", [entry.removeprefix("src/") for entry in self.listing(name)])

    def test_one_that_leads_nowhere_or_in_a_circle_is_an_error_even_then(self):
        for target in ("none", ".", "link", "../src"):
            with self.subTest(target=target):
                for _, result in self.outcomes(target, "--follow"):
                    self.assertEqual(result.code, 1)
                    self.assertIn("cannot follow the link 'src/link': ", result.errors)


class Findings(kraddontest.CliTest):

    def test_their_severity_and_group_never_change(self):
        groups = ["container", "opc", "document", "reference", "style"]
        for number in sorted(NUMBERS):
            lines = self.ok("verify", "--explain", f"KR{number}").text.splitlines()
            severity = "error" if number in ERRORS else "warning"
            self.assertEqual(lines[1:3], [f"severity: {severity}",
                                          f"group: {groups[number // 100 - 1]}"], number)

    def test_without_the_addons_rules_only_those_of_packages_are_left(self):
        self.package("p.kraddon", {"x.log": "", ".env": "", "a b.m": ""})
        self.ok("set", "--no-verify", "p.kraddon", "properties", "name=")
        everything = self.run_kraddon("verify", "p.kraddon", "--json")
        self.assertEqual(everything.code, 1)

        left = self.run_kraddon("verify", "--opc", "p.kraddon", "--json")

        self.assertEqual(left.code, 0)
        self.assertEqual([finding["id"] for finding in left.json["packages"][0]["findings"]
                          if finding["id"] >= "KR300"], [])


class Printed(projecttest.ProjectTest):

    def digest_by_hand(self, name):
        with zipfile.ZipFile(self.path(name)) as archive:
            entries = {entry: archive.read(entry) for entry in archive.namelist()}
        lines = {entry.removeprefix("files/"): content for entry, content in entries.items()
                 if entry.startswith("files/")}
        apart = {"coreProperties.xml", "hostProperties.xml", "fileTree.xml"}
        lines.update({f"/{entry}": content for entry, content in entries.items()
                      if entry.startswith("metadata/") and entry.split("/")[1] not in apart})
        lines["empty/"] = b""
        properties = self.ok("get", name, "properties").json
        lines["/properties"] = json.dumps(properties, ensure_ascii=False,
                                          separators=(",", ":")).encode()
        listing = b"".join(path.encode() + b"\0" + hashlib.sha256(lines[path]).hexdigest().encode()
                           + b"\n" for path in sorted(lines, key=str.encode))
        return "sha256:" + hashlib.sha256(listing).hexdigest()

    def test_the_digest_is_over_every_document_and_the_screenshot(self):
        self.project(FULL, FULL_FILES)

        built = self.build("-o", "p.kraddon", "--json").json

        self.assertEqual(built["digest"], self.digest_by_hand("p.kraddon"))
        info = self.ok("info", "p.kraddon", "--json", "--digest").json
        self.assertEqual(info["digest"], built["digest"])
        self.assertEqual(info["documents"], ["properties", "license", "configuration", "apps",
                                             "examples", "revisions", "requirements"])
        self.assertEqual(info["screenshot"], {"part": "/metadata/primaryScreenShot.png",
                                              "type": "image/png", "size": len(png())})

    def test_times_are_whole_seconds_in_utc_however_they_are_stored(self):
        self.package("p.kraddon", {"a.m": ""})
        for stored, printed in {
                "2020-05-06T07:08:09.987+02:00": "2020-05-06T05:08:09Z",
                "2020-12-31T23:30:00-01:00": "2021-01-01T00:30:00Z",
                "2020-05-06T07:08Z": "2020-05-06T07:08:00Z", "2020-05-06": "2020-05-06T00:00:00Z",
                "2020-05": "2020-05-01T00:00:00Z", "2020": "2020-01-01T00:00:00Z",
                "": None}.items():
            with zipfile.ZipFile(self.path("q.kraddon"), "w") as archive:
                for name, content in self.entries().items():
                    if name == "metadata/coreProperties.xml":
                        content = content.replace(b"2023-11-14T22:13:20Z", stored.encode(), 1)
                    archive.writestr(name, content)

            info = self.ok("info", "q.kraddon", "--json").json

            self.assertEqual((info["created"], info["modified"]), (printed, "2023-11-14T22:13:20Z"))


if __name__ == "__main__":
    kraddontest.main()
