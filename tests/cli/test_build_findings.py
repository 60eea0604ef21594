# SPDX-License-Identifier: MIT
"""Where 'kraddon build' says that a finding comes from: the manifest's line or the project's file,
by a path from the current folder."""

import os

import jsonschema
import kraddontest
import projecttest
from projecttest import LEAST, png

PEOPLE = 'summary = "s"\ndescription = "d"\nauthor = "a"\ncontact = "c"\nscreenshot = "s.png"\n'
GOOD = LEAST + PEOPLE + '[license]\ntext = "t"\n'
EXAMPLE = '[[category]]\nname = "C"\n[[category.example]]\nname = "E"\nmain = "a.m"\n'
BROKEN = "[package]\nname = 'x'\nversion = 1.10\n"
WHY = ("package.version: expected a string, got a float, which would lose its final zeros: write "
       '"1.10"')


class BuildFindings(projecttest.ProjectTest):

    def wave(self, manifest, files=None, folder="proj"):
        self.project(manifest, {"a.m": "a", "s.png": png(), **(files or {})}, folder)

    def findings(self, *words, code=0, folder="proj", **kw):
        """[(place, severity, id)] of the text, JSON, annotations and SARIF, which must agree."""
        text = self.run_kraddon("build", folder, *words, "-o", "t.kraddon", **kw)
        self.assertEqual(text.code, code, text.errors)
        lines = [line.split(": ") for line in text.errors.splitlines()]
        found = [(place, *what.split(" ")) for place, what, *_ in lines if " KR" in what]

        report = self.run_kraddon("build", folder, *words, "-o", "j.kraddon", "--json", **kw).json
        def place(one):
            numbers = [one[key] for key in ("file", "line", "column") if one[key] is not None]
            return ":".join(map(str, numbers))
        self.assertEqual([(place(one) or "j.kraddon", one["severity"], one["id"])
                          for one in report["findings"]], [
            (one.replace("t.kraddon", "j.kraddon"), *rest) for one, *rest in found])

        notes = self.run_kraddon("build", folder, *words, "-o", "g.kraddon", "--format", "github",
                                 **kw).text.splitlines()
        self.assertEqual(len(notes), len(found))
        for note, (where, severity, identifier) in zip(notes, found):
            file, *numbers = where.replace("t.kraddon", "g.kraddon").split(":")
            keys = "".join(f",{key}={number}" for key, number in zip(("line", "col"), numbers))
            self.assertTrue(note.startswith(f"::{severity} file={file}{keys},title={identifier}::"),
                            note)

        log = self.run_kraddon("build", folder, *words, "-o", "s.kraddon", "--format", "sarif",
                               **kw).json
        places = []
        for one in log["runs"][0]["results"]:
            physical = one["locations"][0]["physicalLocation"]
            region = physical.get("region", {})
            numbers = [region[key] for key in ("startLine", "startColumn") if key in region]
            places.append((":".join(map(str, [physical["artifactLocation"]["uri"], *numbers])),
                           one["level"], one["ruleId"]))
        self.assertEqual(places, [(one.replace("t.kraddon", "s.kraddon"), *rest)
                                  for one, *rest in found])
        return found

    def test_what_is_missing_is_missing_in_the_table_of_the_manifest(self):
        self.wave("[package]\nname = 'W'\nversion = '1.0'\n")
        self.assertEqual(self.findings(), [
            ("proj/kraddon.toml:1:1", "warning", id) for id in
            ("KR501", "KR502", "KR502", "KR503", "KR503", "KR504")])

    def test_what_is_given_but_empty_is_named_by_its_key(self):
        self.wave("[package]\nname = 'W'\nversion = 'one'\nsummary = ''\ndescription = ' '\n"
                  "author = ' '\ncontact = ''\nscreenshot = 's.png'\nguid = 'x'\n"
                  "[license]\n  text = ' '\n")
        self.assertEqual(self.findings(), [
            (f"proj/kraddon.toml:{place}", "warning", id) for place, id in
            (("11:10", "KR501"), ("4:11", "KR502"), ("5:15", "KR502"), ("6:10", "KR503"),
             ("7:11", "KR503"), ("3:11", "KR506"), ("9:8", "KR505"))])

    def test_a_reference_is_named_by_its_key(self):
        self.wave(GOOD + '[configuration]\njava-class-paths = ["a.m", "x.jar"]\n' + EXAMPLE +
                  'thumbnail = "t.png"\nimages = ["s.png",\n  "u.png"]\n[[category.example]]\n'
                  'name = "F"\nmain = "a.m"\nthumbnail = "t.png"\n')
        self.assertEqual([(place, id) for place, _, id in self.findings()], [
            ("proj/kraddon.toml:18:13", "KR403"), ("proj/kraddon.toml:20:3", "KR403"),
            ("proj/kraddon.toml:24:13", "KR403"), ("proj/kraddon.toml:12:28", "KR405")])

    def test_revisions_and_guids_are_named_by_their_keys(self):
        guid = "6f0c1c1e-7d0e-4f0b-9a51-0b6f2d3c4e5f"
        self.wave(LEAST + PEOPLE + f'guid = "{guid}"\n[license]\ntext = "t"\n[[app]]\nname = "V"\n'
                  f'file = "a.m"\nguid = "{guid}"\n[[app]]\nname = "U"\nfile = "s.png"\nguid = "u"\n'
                  '[[revision]]\nversion = "2.0"\ndate = 2026-01-01\n')
        self.assertEqual([(place, id) for place, _, id in self.findings()], [
            ("proj/kraddon.toml:21:11", "KR407"), ("proj/kraddon.toml:15:8", "KR410"),
            ("proj/kraddon.toml:19:8", "KR505")])

    def test_a_file_is_named_as_it_lies_in_the_project(self):
        token = "gh" + "p_" + "Ab3dEf9hIj2kLm5nOp8qRs1tUv4wXy7zAc6e"
        self.wave(GOOD + '[files]\nroot = "src"\n[[files.add]]\nfrom = "out/lib.m"\nto = "lib/x.m"\n'
                  '[verify]\nwarn = ["KR509"]\n',
                  {"src/a b?.m": "b", "src/t.m": f"1\n2\n{token}\n", "out/lib.m": token,
                   "src/sub/con.m": "n"})
        report = self.run_kraddon("build", "proj", "--json").json
        found = [(one["file"], one["line"], one["column"], one["part"], one["id"])
                 for one in report["findings"]]
        self.assertEqual(sorted(found, key=str), [
            ("proj/out/lib.m", 1, None, "lib/x.m", "KR509"),
            ("proj/src/a b?.m", None, None, "a b?.m", "KR507"),
            ("proj/src/sub/con.m", None, None, "sub/con.m", "KR507"),
            ("proj/src/t.m", 3, None, "t.m", "KR509")])

    def test_paths_start_at_the_current_folder(self):
        self.wave(GOOD + '[files]\nroot = "../src"\n', {"../src/con.m": "c", "../src/a.m": "a"},
                  "deep/proj")
        self.assertEqual(self.findings(folder="deep/proj")[0][0], "deep/src/con.m")
        self.assertEqual(self.findings(folder=str(self.path("deep/proj")))[0][0],
                         "deep/src/con.m")
        self.wave(LEAST)
        self.assertEqual(self.findings("--force", folder=str(self.path("proj")))[0][0],
                         "proj/kraddon.toml:1:1")
        result = self.run_kraddon("-C", "proj", "build")
        self.assertTrue(result.errors.startswith("kraddon.toml:1:1: warning KR501: "),
                        result.errors)

    def test_a_linked_project_is_named_by_a_path_that_exists(self):
        self.wave(GOOD + '[files]\nroot = "../src"\n', {"../src/con.m": "c", "../src/a.m": "a"},
                  "deep/proj")
        os.symlink("deep/proj", self.path("link"))
        file = self.findings(folder="link")[0][0]
        self.assertTrue(os.path.exists(self.path(file)), file)

    def test_a_dry_run_names_places_too(self):
        self.wave(LEAST)
        result = self.run_kraddon("build", "proj", "--dry-run", "--format", "github")
        self.assertTrue(result.text.startswith("::warning file=proj/kraddon.toml,line=1,col=1,"),
                        result.text)
        self.assertNotIn("a.m", result.text)

    def test_sarif_of_a_build_is_nothing_but_sarif(self):
        self.wave(GOOD)
        result = self.run_kraddon("build", "proj", "--format", "sarif")
        self.assertEqual((result.code, result.errors), (0, ""))
        self.assertEqual(result.json["runs"][0]["results"], [])
        self.assertTrue(result.json["runs"][0]["invocations"][0]["executionSuccessful"])
        self.assertEqual(self.run_kraddon("build", "proj", "--format", "github").text, "")

    def test_formats_are_checked(self):
        self.misused("build", "--format", "xml", message="bad value of --format 'xml': expected text, "
                     "github or sarif")
        self.misused("build", "--format", "github", "--json",
                     message="bad option '--json': it cannot be combined with --format")


class BadManifest(projecttest.ProjectTest):

    def setUp(self):
        super().setUp()
        self.project(BROKEN, folder="proj")

    def test_it_is_named_by_a_path_from_the_current_folder(self):
        self.fails("build", "proj", message=f"bad manifest 'proj/kraddon.toml:3:11': {WHY}")
        self.fails("build", "proj", "--dry-run",
                   message=f"bad manifest 'proj/kraddon.toml:3:11': {WHY}")

    def test_annotations_and_sarif_lead_to_it(self):
        result = self.run_kraddon("build", "proj", "--format", "github")
        self.assertEqual((result.code, result.text), (
            1, f"::error file=proj/kraddon.toml,line=3,col=11::bad manifest "
               f"'proj/kraddon.toml:3:11': {WHY}\n"))
        result = self.run_kraddon("build", "proj", "--format", "sarif")
        self.assertEqual(result.code, 1)
        run = result.json["runs"][0]
        one = run["results"][0]
        self.assertEqual((one["level"], one["locations"][0]["physicalLocation"]), ("error", {
            "artifactLocation": {"uri": "proj/kraddon.toml"},
            "region": {"startLine": 3, "startColumn": 11}}))
        self.assertFalse(run["invocations"][0]["executionSuccessful"])

    def test_json_is_printed_with_the_error(self):
        result = self.run_kraddon("build", "proj", "--json")
        message = f"bad manifest 'proj/kraddon.toml:3:11': {WHY}"
        self.assertEqual((result.code, result.errors), (1, f"kraddon: build: {message}\n"))
        self.assertEqual(result.json, {
            "schema": "kraddon.build/1", "file": None, "written": False, "size": None, "files": 0,
            "folders": 0, "bytes": 0, "digest": None, "entries": [], "findings": None,
            "error": {"message": message, "file": "proj/kraddon.toml", "line": 3, "column": 11,
                      "hint": None}})
        jsonschema.validate(result.json, self.ok("schema", "build").json)


class Errors(projecttest.ProjectTest):

    def error(self, *words):
        result = self.run_kraddon("build", *words, "--json")
        self.assertEqual(result.code, 1)
        jsonschema.validate(result.json, self.ok("schema", "build").json)
        self.assertIn(result.json["error"]["message"], result.errors)
        return result.json

    def test_json_says_why_a_build_failed(self):
        report = self.error("none")
        self.assertEqual(report["error"], {
            "message": "cannot read the folder 'none': No such file or directory", "file": None,
            "line": None, "column": None, "hint": None})
        self.path("empty").mkdir()
        self.assertEqual(self.error("empty")["error"]["hint"], "'kraddon init' writes one")

    def test_json_of_a_refused_build_has_findings_and_error(self):
        self.project("", {".env": "x", "a.m": "a"})
        report = self.error()
        self.assertEqual(report["error"]["message"],
                         "cannot build 'Wave-1.0.kraddon': it has 1 error")
        self.assertIn("KR509:.env", report["error"]["hint"])
        self.assertIn(("KR509", ".env"), [(one["id"], one["file"]) for one in report["findings"]])
        self.assertEqual(report["files"], 2)

    def test_a_missing_app_has_its_place(self):
        self.project('[[app]]\nname = "V"\nfile = "v.m"\n')
        error = self.error()["error"]
        self.assertEqual((error["file"], error["line"], error["column"]), ("kraddon.toml", 6, 8))

    def test_a_good_build_has_no_error(self):
        self.project()
        self.assertIsNone(self.build("--json").json["error"])

    def test_a_wrong_command_line_prints_no_json(self):
        self.misused("build", "--json", "--level", "12", message="bad value of --level '12': "
                     "expected a whole number from 0 to 9")


if __name__ == "__main__":
    kraddontest.main()
