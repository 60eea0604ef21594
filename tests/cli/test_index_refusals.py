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

    def test_a_text_of_several_lines_is_printed_on_one(self):
        evil = "A\nadded: B\r\nyanked:\tC"
        self.addon("p.kraddon", evil, "1\n2", 1)
        name = f"{GUID.format(1)}@1\n2"

        for words, line in ((["p.kraddon"], "added: A added: B  yanked: C 1 2"),
                            (["--yank", name], f"yanked: {GUID.format(1)}@1 2"),
                            (["--unyank", name], f"unyanked: {GUID.format(1)}@1 2"),
                            (["--remove", name], f"removed: {GUID.format(1)}@1 2")):
            with self.subTest(words):
                self.assertEqual(self.ok("index", "site", *words).text.splitlines()[:-1], [line])


class Contradictions(CatalogueTest):
    """Options of one command that say opposite things of one version."""

    def refused(self, *words, message):
        before = self.tree_of()
        self.misused("index", "site", *words, message=message)
        self.assertEqual(self.tree_of(), before)

    def test_are_refused_before_anything_is_changed(self):
        self.index(*self.addons(1))
        addon = GUID.format(0)
        version = f"{addon}@1.0"
        for first, one, second, other in (
                ("yank", version, "unyank", version), ("yank", version.upper(), "unyank", version),
                ("remove", version, "yank", version), ("remove", version, "unyank", version),
                ("remove", addon, "yank", version), ("remove", addon, "unyank", version.upper())):
            with self.subTest((first, one, second, other)):
                self.refused(f"--{second}", other, f"--{first}", one, message=(
                    f"bad option --{second} '{other}': it cannot be combined with "
                    f"--{first} '{one}'"))

    def test_are_refused_when_the_version_is_replaced(self):
        self.index(*self.addons(1))
        self.addon("new.kraddon", "Kit 0", "1.0", 0, content="new")
        version = f"{GUID.format(0)}@1.0"

        self.refused("new.kraddon", "--remove", version, "--yank", version, message=(
            f"bad option --yank '{version}': it cannot be combined with --remove '{version}'"))

    def test_are_not_options_for_other_versions(self):
        self.addon("a.kraddon", version="1.0")
        self.addon("b.kraddon", version="2.0")
        self.addon("c.kraddon", version="3.0")
        self.index("a.kraddon", "b.kraddon", "c.kraddon")
        guid = GUID.format(1)
        self.index("--yank", f"{guid}@3.0")

        result = self.index("--remove", f"{guid}@1.0", "--yank", f"{guid}@2.0",
                            "--unyank", f"{guid}@3.0")

        self.assertEqual([[each["version"] for each in result[verb]]
                          for verb in ("removed", "yanked", "unyanked")],
                         [["1.0"], ["2.0"], ["3.0"]])


class LostRoots(CatalogueTest):

    def test_a_site_that_keeps_one_derived_file_is_no_new_site(self):
        self.index(*self.addons(2))
        derived = ("index.html", "terms.js", "catalogue.sqlite", "records.ndjson")
        kept = {name: self.path(f"site/{name}").read_bytes() for name in derived}
        self.path("site/root.json").unlink()
        for name in derived:
            with self.subTest(name):
                for other in derived:
                    self.path(f"site/{other}").unlink(missing_ok=True)
                self.write(f"site/{name}", kept[name])

                self.fails("index", "site", "p0.kraddon",
                           message="cannot read 'site/root.json': it is missing",
                           hint="'kraddon index --rebuild' rebuilds it from its packages")

                self.assertFalse(self.path("site/root.json").exists())


if __name__ == "__main__":
    kraddontest.main()
