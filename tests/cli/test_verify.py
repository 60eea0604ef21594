# SPDX-License-Identifier: MIT
"""kraddon verify"""

import json
import os
import zipfile
import zlib

import kraddontest

TYPES = ('<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
         '<Default Extension="rels" '
         'ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
         '<Default Extension="xml" ContentType="application/xml"/>{}</Types>')
RELATIONSHIPS = ('<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/'
                 'relationships"><Relationship Id="r" Type="urn:t" Target="{}"/></Relationships>')


class Verify(kraddontest.CliTest):

    def plain(self, name="plain.docx", types="", target="/a.xml", items=()):
        """A package that is not an add-on."""
        with zipfile.ZipFile(self.path(name), "w", zipfile.ZIP_DEFLATED) as archive:
            archive.writestr("[Content_Types].xml", TYPES.format(types))
            archive.writestr("_rels/.rels", RELATIONSHIPS.format(target))
            archive.writestr("a.xml", "<a/>" * 100)
            for item in items:
                archive.writestr(item, "x")
        return name

    def verify(self, *words, code=0):
        result = self.run_kraddon("verify", *words)
        self.assertEqual(result.code, code, result.text + result.errors)
        return result

    def ids(self, *words, code=0):
        packages = self.verify(*words, "--json", code=code).json["packages"]
        return [[finding["id"] for finding in package["findings"]] for package in packages]

    def damage(self, name):
        """Changes a byte of the data of a.xml."""
        with zipfile.ZipFile(self.path(name)) as archive:
            entry = archive.getinfo("a.xml")
        data = bytearray(self.path(name).read_bytes())
        at = entry.header_offset + 30 + len("a.xml") + entry.compress_size // 2
        data[at] ^= 0xFF
        self.path(name).write_bytes(data)
        with zipfile.ZipFile(self.path(name)) as archive:
            with self.assertRaises((zipfile.BadZipFile, zlib.error, EOFError)):
                archive.read("a.xml")

    def test_a_sound_package_is_met_with_silence(self):
        self.ok("verify", "--opc", self.plain())
        result = self.verify("--opc", "-v", "plain.docx")
        self.assertEqual((result.text, result.errors), ("", "plain.docx: 0 errors, 0 warnings\n"))

    def test_what_the_program_makes_breaks_no_rule_of_packages(self):
        self.package("p.kraddon", {"a.m": "1", "é ü.m": "2", "void/": "", "x/a+b,[1].m": "3",
                                   "line\nbreak": "4", "A.m": "5", "a.M": "6", "trailing.": "7"})
        self.assertEqual([ids for ids in self.ids("p.kraddon", "--opc")[0] if ids != "KR114"], [])
        self.assertEqual([ids for ids in self.ids("p.kraddon")[0] if ids < "KR300"
                          and ids != "KR114"], [])

    def test_a_finding_is_a_line_and_errors_decide_about_the_exit_code(self):
        self.plain("w.docx", target="/gone.xml")
        self.plain("e.docx", target="a:b")

        warned = self.verify("--opc", "w.docx")
        failed = self.verify("--opc", "e.docx", code=1)

        self.assertEqual(warned.text, "w.docx: warning KR210: /_rels/.rels: relationship 'r': its "
                                      "target '/gone.xml' is not in the package\n")
        self.assertEqual(warned.errors, "w.docx: 0 errors, 1 warning\n")
        self.assertEqual(failed.text, "e.docx: error KR208: /_rels/.rels: relationship 'r' of the "
                                      "package: internal target 'a:b': it has a scheme\n")
        self.assertEqual(self.verify("--opc", "-q", "e.docx", code=1).errors, "")

    def test_a_plain_zip_file_is_called_one(self):
        with zipfile.ZipFile(self.path("p.zip"), "w") as archive:
            archive.writestr("a.txt", "a")
        why = "it is a ZIP file, but not a package: it has no [Content_Types].xml"
        result = self.verify("p.zip", code=1)
        self.assertEqual(result.text, f"p.zip: error KR201: {why}\n")
        self.fails("info", "p.zip", message=f"cannot open package 'p.zip': {why}")

    def test_the_line_is_named(self):
        with zipfile.ZipFile(self.path("p.docx"), "w") as archive:
            archive.writestr("[Content_Types].xml", TYPES.format("\n\n<"))
        result = self.verify("--opc", "p.docx", code=1)
        self.assertTrue(result.text.startswith("p.docx: error KR201: [Content_Types].xml:3: not "
                                               "well-formed: "), result.text)

    def test_strict_makes_warnings_count(self):
        self.plain(target="/gone.xml")
        self.verify("--opc", "plain.docx")
        self.verify("--opc", "--strict", "plain.docx", code=1)
        package = self.verify("--opc", "--strict", "--json", "plain.docx", code=1).json
        self.assertFalse(package["packages"][0]["ok"])
        self.assertEqual(package["packages"][0]["findings"][0]["severity"], "warning")

    def test_json_has_all_keys_in_order(self):
        self.plain(target="/gone.xml", items=["b c", "../d"])

        report = self.verify("--opc", "--json", "plain.docx", code=1).json

        self.assertEqual(list(report), ["schema", "packages"])
        self.assertEqual(report["schema"], "kraddon.verify/1")
        package = report["packages"][0]
        self.assertEqual(list(package), ["file", "ok", "errors", "warnings", "ignored",
                                         "findings"])
        self.assertEqual((package["file"], package["ok"], package["errors"], package["warnings"],
                          package["ignored"]), ("plain.docx", False, 1, 2, 0))
        first = package["findings"][0]
        self.assertEqual(list(first), ["id", "rule", "severity", "group", "part", "line",
                                       "message", "hint"])
        self.assertEqual((first["id"], first["rule"], first["severity"], first["group"],
                          first["part"], first["line"]),
                         ("KR104", "RB-12", "error", "container", "../d", None))
        self.assertEqual([finding["group"] for finding in package["findings"][1:]], ["opc", "opc"])

    def test_findings_are_passed_over_by_id(self):
        self.plain(target="/gone.xml", items=["b c", "d e"])
        self.assertEqual(self.ids("--opc", "plain.docx"), [["KR210", "KR217", "KR217"]])
        self.assertEqual(self.ids("--opc", "plain.docx", "--ignore", "KR217"), [["KR210"]])
        self.assertEqual(self.ids("--opc", "plain.docx", "--ignore", "kr217", "--ignore", "210"),
                         [[]])
        report = self.verify("--opc", "plain.docx", "--ignore", "KR217", "--strict", "--json",
                             "--ignore=KR210").json["packages"][0]
        self.assertEqual((report["ok"], report["ignored"]), (True, 3))
        self.assertEqual(self.verify("--opc", "plain.docx", "--ignore", "KR217").errors,
                         "plain.docx: 0 errors, 1 warning, 2 ignored\n")

    def test_findings_are_passed_over_by_place(self):
        self.plain(items=["x y/b", "x y/c", "d e.m"])
        self.assertEqual(self.ids("--opc", "plain.docx", "--ignore", "KR217:*.m"),
                         [["KR217", "KR217"]])
        self.assertEqual(self.ids("--opc", "plain.docx", "--ignore", "KR217:x y/"), [["KR217"]])
        self.assertEqual(self.ids("--opc", "plain.docx", "--ignore", "KR217:/x y/b"),
                         [["KR217", "KR217"]])
        self.assertEqual(self.ids("--opc", "plain.docx", "--ignore", "KR216:**"), [["KR217"] * 3])

    def test_files_that_are_not_in_the_tree_are_passed_over_by_place(self):
        self.plain(items=["files/a%0Ab.xml", "files/sub/c%0Ad.xml", "files/e f.xml"])
        found = [line for line in self.verify("plain.docx", code=1).text.splitlines()
                 if "KR411" in line]
        self.assertEqual(found, [
            "plain.docx: error KR411: /files/a%0Ab.xml: it is not a file of the tree: it holds a "
            "control character",
            "plain.docx: error KR411: /files/sub/c%0Ad.xml: it is not a file of the tree: it holds "
            "a control character",
            "plain.docx: error KR411: /files/e f.xml: it is not a file of the tree: it is not a part"])
        for pattern, left in (("sub/", 2), ("*.xml", 0), ("e f.xml", 2), ("**/c*", 2), ("x", 3)):
            text = self.verify("plain.docx", "--ignore", f"KR411:{pattern}", code=1).text
            self.assertEqual(text.count("KR411"), left, pattern)

    def test_errors_can_be_passed_over_too(self):
        self.plain(items=["../x"])
        self.verify("--opc", "plain.docx", code=1)
        self.verify("--opc", "plain.docx", "--ignore", "KR104")

    def test_an_unknown_id_is_wrong_usage(self):
        self.misused("verify", "p", "--ignore", "KR2122",
                     message="unknown finding 'KR2122': did you mean 'KR212'?")
        self.misused("verify", "p", "--ignore", "KR199:x",
                     message="unknown finding 'KR199': did you mean 'KR109'?")
        for word in ("nonsense", "KR999"):
            self.misused("verify", "p", "--ignore", word, message=f"unknown finding '{word}': "
                         "'kraddon help findings' lists the findings")

    def test_a_colon_without_a_pattern_is_wrong_usage(self):
        for rule in ("KR501:", "501:"):
            self.misused("verify", "p", "--ignore", rule,
                         message=f"bad rule '{rule}': expected a pattern after the "
                                 "colon")

    def test_github_gets_annotations(self):
        self.plain("a,b:c%.docx", target="/gone%20x.xml", items=["../d"])
        self.assertEqual(
            self.verify("--opc", "--format", "github", "a,b:c%.docx", code=1).text,
            "::error file=a%2Cb%3Ac%25.docx,title=KR104::../d: the name of item '../d' has a "
            "segment '..'\n"
            "::warning file=a%2Cb%3Ac%25.docx,title=KR210::/_rels/.rels: relationship 'r': its "
            "target '/gone%2520x.xml' is not in the package\n")

    def test_github_hears_of_what_cannot_be_opened_and_of_findings_that_are_only_counted(self):
        self.plain(items=[f"x {number}" for number in range(1100)])

        result = self.verify("--opc", "--format", "github", "no,ne", "plain.docx", code=1)

        lines = result.text.splitlines()
        self.assertEqual(lines[0], "::error file=no%2Cne::cannot open package 'no,ne': "
                                   "No such file or directory")
        self.assertEqual(len(lines), 1002)
        self.assertEqual(lines[-1], "::warning file=plain.docx,title=KR217::100 more of these are "
                                    "not shown")

    def test_sarif_holds_rules_and_results(self):
        self.plain("a b.docx", target="/gone.xml", items=["../d"])

        log = self.verify("--opc", "--format", "sarif", "a b.docx", code=1).json

        self.assertEqual(log["version"], "2.1.0")
        run = log["runs"][0]
        rules = run["tool"]["driver"]["rules"]
        self.assertEqual(len(rules), len({rule["id"] for rule in rules}))
        self.assertIn("KR514", {rule["id"] for rule in rules})
        self.assertEqual([result["ruleId"] for result in run["results"]], ["KR104", "KR210"])
        for result in run["results"]:
            self.assertEqual(rules[result["ruleIndex"]]["id"], result["ruleId"])
            self.assertEqual(rules[result["ruleIndex"]]["defaultConfiguration"]["level"],
                             result["level"])
            place = result["locations"][0]
            self.assertEqual(place["physicalLocation"]["artifactLocation"]["uri"], "a%20b.docx")
        self.assertEqual(place["logicalLocations"][0]["fullyQualifiedName"], "/_rels/.rels")
        self.assertTrue(run["invocations"][0]["executionSuccessful"])

    def test_findings_are_explained(self):
        texts = {self.ok("verify", "--explain", word).text for word in ("KR101", "kr101", "101")}
        self.assertEqual(len(texts), 1)
        lines = texts.pop().splitlines()
        self.assertEqual(lines[:3], ["KR101: not a ZIP file, or truncated", "severity: error",
                                     "group: container"])
        self.assertEqual(len(lines), 7)
        self.misused("verify", "--explain", "102", "p",
                     message="unexpected operand 'p': --explain takes no package")
        self.misused("verify", "--explain", "102", "--json",
                     message="bad option '--explain': it cannot be combined with --json")

    def test_every_id_in_the_manual_is_explained(self):
        page = os.path.join(os.path.dirname(__file__), "..", "..", "docs", "findings.md")
        with open(page, encoding="utf-8") as file:
            ids = [line.split()[1] for line in file if line.startswith("| KR")]
        self.assertGreater(len(ids), 80)
        for finding in ids:
            text = self.ok("verify", "--explain", finding).text
            self.assertTrue(text.startswith(f"{finding}: "), text)

    def test_several_packages_are_checked_whatever_the_first_is_like(self):
        self.plain("a.docx", target="a:b")
        self.plain("b.docx", target="/gone.xml")
        self.write("c.docx", "no package")

        result = self.verify("--opc", "a.docx", "none.docx", "", ".", "c.docx", "b.docx", code=1)

        self.assertEqual([line.split(": ")[:2] for line in result.text.splitlines()],
                         [["a.docx", "error KR208"], ["c.docx", "error KR101"],
                          ["b.docx", "warning KR210"]])
        self.assertEqual(result.errors.splitlines(), [
            "a.docx: 1 error, 0 warnings",
            "kraddon: verify: cannot open package 'none.docx': No such file or directory",
            "kraddon: verify: cannot open package '': the path is empty",
            "kraddon: verify: cannot open package '.': it is a folder",
            "c.docx: 1 error, 0 warnings",
            "b.docx: 0 errors, 1 warning",
            "total: 6 packages, 2 with errors, 3 not read: 2 errors, 1 warning"])

    def test_a_file_that_cannot_be_opened_leaves_the_json_whole(self):
        self.plain()
        report = self.verify("--opc", "none", "plain.docx", "--json", code=1)
        self.assertEqual([(package["file"], package["ok"]) for package in report.json["packages"]],
                         [("none", False), ("plain.docx", True)])
        self.assertEqual(report.errors, "kraddon: verify: cannot open package 'none': No such file "
                                        "or directory\n"
                                        "total: 2 packages, 1 not read: 0 errors, 0 warnings\n")
        log = self.verify("--opc", b"\xff", "--format", "sarif", code=1).json
        self.assertFalse(log["runs"][0]["invocations"][0]["executionSuccessful"])
        self.assertEqual(log["runs"][0]["results"], [])

    def test_damage_is_found(self):
        self.plain()
        self.damage("plain.docx")
        self.assertEqual(self.ids("--opc", "plain.docx", code=1), [["KR106"]])

        data = self.path(self.plain("cut.docx")).read_bytes()
        self.write("cut.docx", data[:-30])
        self.assertEqual(self.ids("cut.docx", code=1), [["KR101"]])

    def test_an_add_on_is_checked_as_one_unless_told_otherwise(self):
        self.plain()
        self.assertEqual(self.ids("--opc", "plain.docx"), [[]])
        self.assertNotEqual(self.ids("plain.docx", code=1), [[]])
        self.package("p.kraddon", {"a.m": "1"})
        self.assertEqual(self.ids("--opc", "p.kraddon"), [[]])
        self.assertIn("KR501", self.ids("p.kraddon")[0])

    def test_names_cannot_break_the_lines(self):
        self.plain(items=["x\ny\x1b z"])
        result = self.verify("--opc", "plain.docx")
        self.assertEqual(len(result.text.splitlines()), 1)
        self.assertIn("KR114: x\\ny\\x1b z: the name contains a control character", result.text)

    def test_of_very_many_findings_the_rest_is_counted(self):
        self.plain(items=[f"x {number}" for number in range(1100)])
        lines = self.verify("--opc", "plain.docx").text.splitlines()
        self.assertEqual(len(lines), 1001)
        self.assertEqual(lines[-1], "plain.docx: warning KR217: 100 more of these are not shown")
        report = self.verify("--opc", "plain.docx", "--json").json["packages"][0]
        self.assertEqual((report["warnings"], len(report["findings"])), (1100, 1000))
        report = self.verify("--opc", "plain.docx", "--json", "--ignore", "KR217").json
        self.assertEqual(report["packages"][0]["ignored"], 1100)

    def test_wrong_usage_is_reported(self):
        self.misused("verify", message="missing operand 'PACKAGE': the packages to check")
        self.misused("verify", "p", "--format", "xml",
                     message="bad value of --format 'xml': expected text, github or sarif")
        self.misused("verify", "p", "--format", "text", "--json",
                     message="bad option '--json': it cannot be combined with --format")

    def test_the_package_stays_as_it_is(self):
        path = self.package("p.kraddon", {"a.m": "1"})
        before = (path.read_bytes(), path.stat().st_mtime_ns)
        self.verify("p.kraddon")
        self.assertEqual((path.read_bytes(), path.stat().st_mtime_ns), before)
        self.assertEqual(json.loads(self.verify("p.kraddon", "--json").text)["packages"][0]["ok"],
                         True)


if __name__ == "__main__":
    kraddontest.main()
