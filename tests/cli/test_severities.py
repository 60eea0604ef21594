# SPDX-License-Identifier: MIT
"""What counts as an error and what as a warning: options, the manifest, and policies."""

import json

import kraddontest
import projecttest

BAD_APP = '[[app]]\nname = "V"\nfile = "v.m"\n'


class Severities(projecttest.ProjectTest):

    def verdict(self, *words, code):
        """{id: severity} of the findings, and the counts."""
        result = self.run_kraddon("verify", *words, "--json")
        self.assertEqual(result.code, code, result.errors)
        package = result.json["packages"][0]
        counts = [package[name] for name in ("errors", "warnings", "ignored")]
        return {one["id"]: one["severity"] for one in package["findings"]}, counts

    def plain(self):
        """A package without license, texts and screenshot."""
        self.package("p.kraddon", {"a.m": "a", "docs/b c?.m": "b", "c?.m": "c"})
        return "p.kraddon"


class Options(Severities):

    def test_a_warning_becomes_an_error(self):
        found, counts = self.verdict(self.plain(), "--error", "KR501", code=1)

        self.assertEqual((found["KR501"], found["KR502"]), ("error", "warning"))
        self.assertEqual(counts, [1, 7, 0])
        result = self.run_kraddon("verify", "p.kraddon", "--error=501")
        self.assertIn("p.kraddon: error KR501: the add-on has no license\n", result.text)
        self.assertEqual(result.errors, "p.kraddon: 1 error, 7 warnings\n")

    def test_an_error_becomes_a_warning(self):
        self.project(BAD_APP + '[verify]\nwarn = ["KR401"]\n')
        self.build("-o", "p.kraddon")

        self.assertEqual(self.verdict("p.kraddon", code=1)[0]["KR401"], "error")
        self.assertEqual(self.verdict("p.kraddon", "--warn", "KR401", code=0)[0]["KR401"],
                         "warning")
        self.assertIn("::warning file=p.kraddon,title=KR401::", self.run_kraddon(
            "verify", "p.kraddon", "--warn", "KR401", "--format", "github").text)

    def test_a_pattern_restricts_it_to_paths(self):
        self.plain()
        result = self.run_kraddon("verify", "p.kraddon", "--json", "--error", "KR507:docs/**",
                                  "--warn", "KR507")
        self.assertEqual({one["part"]: one["severity"] for one in
                          result.json["packages"][0]["findings"] if one["id"] == "KR507"},
                         {"c?.m": "warning", "docs/b c?.m": "error"})

    def test_ignore_goes_before_error_and_error_before_warn(self):
        self.plain()
        self.assertNotIn("KR501", self.verdict("p.kraddon", "--error", "KR501", "--ignore",
                                               "KR501", code=0)[0])
        self.assertEqual(self.verdict("p.kraddon", "--warn", "KR501", "--error", "KR501",
                                      code=1)[0]["KR501"], "error")

    def test_findings_that_are_only_counted_have_the_severity_of_their_id(self):
        self.package("p.kraddon", {f"{i}?": str(i) for i in range(1010)})
        _, counts = self.verdict("p.kraddon", "--error", "KR507", code=1)
        self.assertEqual(counts[0], 1010)
        text = self.run_kraddon("verify", "p.kraddon", "--error", "KR507").text
        self.assertIn("p.kraddon: error KR507: 10 more of these are not shown\n", text)

    def test_sarif_has_the_severity_of_the_finding(self):
        log = self.run_kraddon("verify", self.plain(), "--error", "KR501", "--format", "sarif").json
        levels = {one["ruleId"]: one["level"] for one in log["runs"][0]["results"]}
        self.assertEqual((levels["KR501"], levels["KR502"]), ("error", "warning"))

    def test_unknown_ids_are_wrong_usage(self):
        for option in ("--error", "--warn"):
            self.misused("verify", "p", option, "KR2122",
                         message="unknown finding 'KR2122': did you mean 'KR212'?")
            self.misused("build", option, "KR501:",
                         message="bad rule 'KR501:': expected a pattern after the colon")


class Policies(Severities):

    def test_a_policy_has_all_rules_in_one_file(self):
        self.plain()
        self.write("gallery.toml", '[verify]\nerror = ["KR501", "KR504"]\nignore = ["KR507:docs/"]\n'
                                   'warn = ["KR502"]\nstrict = false\n')

        found, counts = self.verdict("p.kraddon", "--policy", "gallery.toml", code=1)

        self.assertEqual({id for id, severity in found.items() if severity == "error"},
                         {"KR501", "KR504"})
        self.assertEqual(counts, [2, 5, 1])

    def test_a_strict_policy_fails_on_warnings(self):
        self.write("strict.toml", "[verify]\nstrict = true\n")
        result = self.run_kraddon("verify", self.plain(), "--policy", "strict.toml", "--json")
        self.assertEqual((result.code, result.json["packages"][0]["ok"]), (1, False))

    def test_options_add_to_a_policy(self):
        self.plain()
        self.write("gallery.toml", '[verify]\nerror = ["KR501"]\n')
        found, _ = self.verdict("p.kraddon", "--policy", "gallery.toml", "--error", "KR504",
                                code=1)
        self.assertEqual((found["KR501"], found["KR504"]), ("error", "error"))

    def test_what_is_wrong_with_a_policy_is_said_with_its_place(self):
        self.plain()
        for text, why in (("[verify]\nerorr = []\n", "2:1': unknown key 'verify.erorr': did you "
                                                     "mean 'error'?"),
                          ("[package]\nname = 'x'\n", "1:2': unknown key 'package': the keys are "
                                                      "verify"),
                          ('[verify]\nerror = ["KR99"]\n', "2:10': verify.error[0]: unknown "
                                                          "finding 'KR99': 'kraddon help "
                                                          "findings' lists the findings"),
                          ('[verify]\nwarn = ["kr501"]\n', "2:9': verify.warn[0]: expected 'KR501',"
                                                          " got 'kr501'")):
            self.write("d/p.toml", text)
            self.fails("verify", "p.kraddon", "--policy", "d/p.toml",
                       message=f"bad policy 'd/p.toml:{why}")
        self.fails("verify", "p.kraddon", "--policy", "none.toml",
                   message="cannot read 'none.toml': No such file or directory")


class OfTheManifest(Severities):

    def test_verify_applies_the_rules_of_a_manifest(self):
        self.project('[verify]\nignore = ["KR502"]\nerror = ["KR501"]\nstrict = true\n',
                     folder="proj")
        self.run_kraddon("build", "proj", "-o", "p.kraddon", "--no-verify")

        result = self.run_kraddon("verify", "p.kraddon", "--manifest", "proj", "--json",
                                  "--ignore", "KR501", "--ignore", "KR503", "--ignore", "KR504")

        package = result.json["packages"][0]
        self.assertEqual((package["findings"], package["ok"]), ([], True))
        found, _ = self.verdict("p.kraddon", "--manifest", "proj", code=1)
        self.assertEqual(found, {"KR501": "error", "KR503": "warning", "KR504": "warning"})
        package = self.run_kraddon("verify", "p.kraddon", "--manifest", "proj", "--json",
                                   "--ignore", "KR501").json["packages"][0]
        self.assertEqual((package["errors"], package["ok"]), (0, False))  # it is strict

    def test_a_manifest_and_a_policy_come_together(self):
        self.project('[verify]\nignore = ["KR502"]\n', folder="proj")
        self.write("gallery.toml", '[verify]\nerror = ["KR501"]\n')
        self.run_kraddon("build", "proj", "-o", "p.kraddon")
        found, _ = self.verdict("p.kraddon", "--manifest", "proj", "--policy", "gallery.toml",
                                code=1)
        self.assertEqual((found["KR501"], "KR502" in found), ("error", False))

    def test_a_bad_manifest_is_named_by_its_path(self):
        self.plain()
        self.project("x = 1\n", folder="proj")
        self.fails("verify", "p.kraddon", "--manifest", "proj",
                   message="bad manifest 'proj/kraddon.toml:4:1': unknown key 'package.x': the "
                           "keys are name, version, type, summary, author, contact, organization, "
                           "description, description-file, guid, screenshot")
        self.fails("verify", "p.kraddon", "--manifest", "none",
                   message="cannot read the folder 'none': No such file or directory")

    def test_an_error_of_the_manifest_stops_the_build(self):
        self.project('[verify]\nerror = ["KR501"]\n')
        before = self.names()

        result = self.run_kraddon("build")

        self.assertEqual((result.code, self.names()), (1, before))
        self.assertIn("error KR501: ", result.errors)
        self.assertIn("cannot build 'Wave-1.0.kraddon': it has 1 error\n", result.errors)

    def test_options_of_build_add_to_the_manifest(self):
        self.project('[verify]\nerror = ["KR501"]\n')

        self.assertEqual(self.run_kraddon("build", "--error", "KR502").code, 1)
        result = self.build("--ignore", "KR501", "--warn", "KR502", "-o", "p.kraddon")
        self.assertNotIn("KR501", result.errors)

    def test_a_missing_file_that_is_only_warned_of_lets_the_build_pass(self):
        self.project(BAD_APP)
        self.assertIn("app[0].file", self.run_kraddon("build").errors)
        self.assertIn("warning KR401: ", self.build("--warn", "KR401").errors)


class Secrets(Severities):

    def test_a_secret_that_stops_the_build_is_an_error_and_says_how_to_allow_it(self):
        self.project("", {"a.m": "a", "lib/.env": "PASSWORD=x"})

        result = self.run_kraddon("build")

        self.assertEqual(result.code, 1)
        self.assertRegex(result.errors, r"error KR509: .*\.env")
        lines = result.errors.splitlines()
        self.assertEqual(lines[-2:], [
            "kraddon: build: cannot build 'Wave-1.0.kraddon': it has 1 error",
            "hint: if the secret is meant to be public, ignore = [\"KR509:lib/.env\"] under "
            "[verify] in the manifest allows it"])

    def test_it_can_be_allowed(self):
        self.project('[verify]\nignore = ["KR509:lib/.env"]\n', {"lib/.env": "x"})
        self.assertNotIn("KR509", self.build().errors)
        self.project('[verify]\nwarn = ["KR509"]\n')
        self.assertIn("warning KR509: ", self.build("-o", "q.kraddon").errors)
        self.project("")
        self.assertIn("warning KR509: ", self.build("--warn", "KR509", "-o", "r.kraddon").errors)
        self.assertIn("warning KR509: ", self.run_kraddon("verify", "r.kraddon").text)

    def test_json_calls_it_an_error_too(self):
        self.project("", {".env": "x"})
        self.assertEqual([one["severity"] for one in json.loads(
            self.run_kraddon("build", "--json").out)["findings"] if one["id"] == "KR509"],
            ["error"])


if __name__ == "__main__":
    kraddontest.main()
