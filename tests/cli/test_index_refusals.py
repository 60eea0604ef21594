# SPDX-License-Identifier: MIT
"""kraddon index: packages that it refuses, and hostile texts of those that it adds."""

import kraddontest
import signing
from cataloguetest import GUID, TIME, CatalogueTest


class Refusals(CatalogueTest):

    def refused(self, *words, site="site"):
        result = self.run_kraddon("index", site, *words, "--timestamp", TIME, "--json")
        self.assertEqual(result.code, 1, result.errors)
        return result.json

    def test_a_package_with_an_error_is_refused_and_the_others_are_added(self):
        self.addons(2)
        self.write("bad.kraddon", self.path("p0.kraddon").read_bytes()[:-9])
        self.write("text.kraddon", "no package")

        result = self.refused("p0.kraddon", "bad.kraddon", "text.kraddon", "missing.kraddon")

        self.assertEqual([each["file"] for each in result["refused"]],
                         ["bad.kraddon", "missing.kraddon", "text.kraddon"])
        self.assertTrue(result["refused"][0]["findings"])
        self.assertIn("No such file", result["refused"][1]["reason"])
        self.assertEqual(list(self.records()), [GUID.format(0)])

    def test_another_package_with_a_version_that_is_there_is_refused(self):
        self.addon("old.kraddon", content="old")
        self.addon("new.kraddon", content="new")
        self.index("old.kraddon")
        before = self.tree_of()

        result = self.refused("new.kraddon")

        self.assertEqual(result["refused"][0]["reason"],
                         "the site has another package with version 1.0 of 'Wave Tools'")
        self.assertEqual(self.tree_of(), before)

    def test_two_packages_with_one_version_are_both_refused(self):
        self.addon("a.kraddon", content="a")
        self.addon("b.kraddon", content="b")
        self.addon("c.kraddon", number=2)

        result = self.refused("a.kraddon", "b.kraddon", "c.kraddon")

        self.assertEqual([each["file"] for each in result["refused"]], ["a.kraddon", "b.kraddon"])
        self.assertEqual(list(self.records()), [GUID.format(2)])

    def test_messages_name_the_file_and_never_that_of_a_copy(self):
        self.write("text.kraddon", "no package")

        result = self.run_kraddon("index", "site", "text.kraddon")

        self.assertEqual(result.code, 1)
        self.assertTrue(result.errors.startswith("kraddon: index: cannot add 'text.kraddon': "),
                        result.errors)
        self.assertNotIn("/proc", result.errors)
        self.assertNotIn(".tmp", result.errors)

    def test_a_package_that_is_too_large_is_refused(self):
        self.addon("wordy.kraddon", "Wordy", "1.0", 1)
        self.write("words.txt", "word " * 60_000)
        self.ok("set", "wordy.kraddon", "properties", "description=@words.txt")
        self.addon("kit.kraddon", "Kit", "1.0", 2)
        with open(self.path("huge.kraddon"), "wb") as file:
            file.truncate(2_000_000_001)

        result = self.refused("wordy.kraddon", "huge.kraddon", "kit.kraddon")

        self.assertEqual([each["reason"] for each in result["refused"]],
                         ["cannot add 'huge.kraddon': a package may have at most 2.0 GB",
                          "its texts take 301 kB, and a record may have at most 256 kB"])
        self.assertEqual(list(self.records()), [GUID.format(2)])

    def test_signatures_can_be_required(self):
        self.addon("plain.kraddon", number=1)
        self.addon("signed.kraddon", number=2)
        self.ok("sign", "signed.kraddon", *signing.words())

        result = self.refused("plain.kraddon", "signed.kraddon", "--require-signature",
                              *signing.trust("root"))

        self.assertEqual([each["file"] for each in result["refused"]], ["plain.kraddon"])
        [record] = self.records()[GUID.format(2)]
        self.assertRegex(record["signers"][0], "^[0-9a-f]{64}$")

    def test_hostile_texts_stay_texts(self):
        evil = '<script>alert(1)</script>"\'--></style>\u202e'
        self.addon("p.kraddon", evil, "../../1", 1, "--description", evil, "--organization", evil)

        self.index("p.kraddon")

        [record] = self.records()[GUID.format(1)]
        self.assertEqual((record["name"], record["version"]), (evil, "../../1"))
        self.assertRegex(record["page"], f"^pages/{GUID.format(1)}/[0-9a-f]{{64}}/index.html$")
        for page in ("index.html", record["page"]):
            self.assertNotIn("<script>alert", self.path(f"site/{page}").read_text())
        self.assertIn("\\u202e", self.path("site/records.ndjson").read_text())


if __name__ == "__main__":
    kraddontest.main()
