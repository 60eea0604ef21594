# SPDX-License-Identifier: MIT
"""Commands on several packages at once: the total of 'verify', the blocks of 'info'."""

import random

import jsonschema
import kraddontest
import projecttest


class Total(projecttest.ProjectTest):

    def packages(self):
        self.package("good.kraddon", {"a.m": "a"})
        self.project('[configuration]\nkorvan-paths = ["gone"]\n[verify]\nignore = ["KR404"]\n')
        self.build("-o", "bad.kraddon")
        return "good.kraddon", "bad.kraddon"

    def test_verify_ends_with_a_total(self):
        result = self.run_kraddon("verify", *self.packages(), "none.kraddon", "--ignore", "KR504")
        self.assertEqual(result.code, 1)
        self.assertEqual(result.errors.splitlines()[-1],
                         "total: 3 packages, 1 with errors, 1 not read: 1 error, 10 warnings, "
                         "2 ignored")

    def test_what_is_not_there_is_not_counted(self):
        result = self.run_kraddon("verify", *self.packages())
        self.assertEqual(result.errors.splitlines()[-1],
                         "total: 2 packages, 1 with errors: 1 error, 12 warnings")

    def test_strict_counts_packages_with_warnings(self):
        good, _ = self.packages()
        result = self.run_kraddon("verify", good, good, "--strict")
        self.assertEqual(result.errors.splitlines()[-1],
                         "total: 2 packages, 2 with warnings: 0 errors, 12 warnings")

    def test_even_clean_packages_get_one(self):
        good, _ = self.packages()
        words = [word for id in range(501, 515) for word in ("--ignore", f"KR{id}")]
        result = self.run_kraddon("verify", good, good, *words)
        self.assertEqual(result.errors.splitlines()[-1],
                         "total: 2 packages: 0 errors, 0 warnings, 12 ignored")

    def test_one_package_or_quiet_gets_none(self):
        good, bad = self.packages()
        self.assertNotIn("total", self.run_kraddon("verify", good).errors)
        self.assertEqual(self.run_kraddon("verify", good, bad, "--quiet").errors, "")

    def test_results_stay_without_it(self):
        packages = self.packages()
        for format in (["--json"], ["--format", "sarif"]):
            self.assertIsInstance(self.run_kraddon("verify", *packages, *format).json, dict)


class Verdicts(projecttest.ProjectTest):

    def test_findings_come_in_the_order_of_the_operands(self):
        self.package("small.kraddon", {"a.m": "a"})
        # It is too large to be checked ahead.
        self.package("large.kraddon", {"noise.bin": random.Random(1).randbytes(3 << 20)})
        self.write("broken.kraddon", "no package")
        names = [["small", "large", "broken", "none"][i * i % 7 % 4] + ".kraddon"
                 for i in range(40)]

        result = self.run_kraddon("verify", *names)

        alone = {name: self.run_kraddon("verify", name) for name in set(names)}
        self.assertEqual(result.text, "".join(alone[name].text for name in names))
        self.assertEqual(result.errors[:result.errors.index("total:")],
                         "".join(alone[name].errors for name in names))


class Infos(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        for name in ("a.kraddon", "b.kraddon"):
            self.package(name, {"a.m": "a"})

    def test_each_package_gets_a_block(self):
        one, two = (self.ok("info", name).text for name in ("a.kraddon", "b.kraddon"))
        self.assertEqual(self.ok("info", "a.kraddon", "b.kraddon").text, one + "\n" + two)

    def test_json_lists_them(self):
        one, two = (self.ok("info", name, "--json", "--digest").json
                    for name in ("a.kraddon", "b.kraddon"))
        report = self.ok("info", "a.kraddon", "b.kraddon", "--json", "--digest").json
        self.assertEqual(report, {"schema": "kraddon.infos/1", "packages": [one, two]})
        jsonschema.validate(report, self.ok("schema", "infos").json)

    def test_a_field_is_a_line_each(self):
        self.assertEqual(self.ok("info", "a.kraddon", "b.kraddon", "--field", "file").text,
                         "a.kraddon\nb.kraddon\n")

    def test_what_cannot_be_read_does_not_hide_the_others(self):
        error = self.fails("info", "none").errors
        for words in ([], ["--json"], ["--field", "name"]):
            result = self.run_kraddon("info", "a.kraddon", "none", "b.kraddon", *words)
            self.assertEqual((result.code, result.errors), (1, error), words)
        self.assertEqual(result.text, "Wave Tools\nWave Tools\n")
        report = self.run_kraddon("info", "none", "b.kraddon", "--json").json
        self.assertEqual([one["file"] for one in report["packages"]], ["b.kraddon"])


if __name__ == "__main__":
    kraddontest.main()
