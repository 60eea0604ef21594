# SPDX-License-Identifier: MIT
"""kraddon index when packages compete for a version, and how a version is named."""

import os
import shutil

import kraddontest
from cataloguetest import GUID, TIME, CatalogueTest

VERSION = f"{GUID.format(1)}@1.0"


class Replacing(CatalogueTest):

    def refused(self, *words, site="site"):
        """What a run refuses, by file."""
        result = self.run_kraddon("index", site, *words, "--timestamp", TIME, "--json")
        self.assertEqual(result.code, 1, result.errors)
        return {each["file"]: each["reason"] for each in result.json["refused"]}

    def hashes(self, number=1):
        return [record["sha256"] for record in self.records().get(GUID.format(number), [])]

    def site(self):
        self.addon("old.kraddon", summary="one")
        self.addon("new.kraddon", summary="two")
        self.index("old.kraddon")
        return self.hashes()

    def test_a_version_stays_if_its_replacement_is_refused(self):
        old = self.site()
        self.path("broken.kraddon").write_bytes(self.path("new.kraddon").read_bytes()[:500])

        refused = self.refused("broken.kraddon", "--remove", VERSION)

        self.assertEqual(refused[VERSION],
                         "it is not removed, since a package of the same run is refused")
        self.assertEqual(self.hashes(), old)
        self.assertEqual(self.root()["sequence"], 1)

    def test_a_version_is_replaced_although_another_package_is_refused(self):
        old = self.site()
        self.path("broken.kraddon").write_bytes(b"no package")

        self.assertEqual(list(self.refused("broken.kraddon", "new.kraddon", "--remove", VERSION)),
                         ["broken.kraddon"])

        self.assertNotEqual(self.hashes(), old)

    def test_a_rebuild_keeps_the_version_that_the_site_has(self):
        old = self.site()

        self.assertEqual(self.refused("--rebuild", "new.kraddon"), {
            "new.kraddon": "the site has another package with version 1.0 of 'Wave Tools'"})

        self.assertEqual(self.hashes(), old)

    def test_a_rebuild_without_root_takes_the_package_that_was_modified_last(self):
        for first, second in (("1700000000", "1800000000"), ("1800000000", "1700000000")):
            with self.subTest(first=first):
                shutil.rmtree(self.path("site"), ignore_errors=True)
                for name, time in (("old", first), ("new", second)):
                    self.addon(f"{name}.kraddon", "Wave Tools", "1.0", 1, "--force", summary=name,
                               time=time)
                self.index("old.kraddon")
                self.index("new.kraddon", "--remove", VERSION)
                self.path("site/root.json").unlink()

                refused = self.refused("--rebuild")

                self.assertEqual(list(refused.values()), [
                    "another package of the site has version 1.0 of 'Wave Tools', and was modified "
                    "later"])
                [record] = self.records()[GUID.format(1)]
                self.assertEqual(record["summary"], "old" if first > second else "new")

    def test_a_rebuild_names_a_package_that_is_missing(self):
        self.site()
        self.index(self.addon("other.kraddon", "Other", number=2))
        [record] = self.records()[GUID.format(1)]
        package = f"site/{record['package']}"
        self.path(package).unlink()

        self.assertEqual(self.refused("--rebuild"), {package: "it is missing"})
        self.assertEqual(list(self.records()), [GUID.format(2)])

    def test_a_rebuild_takes_a_missing_package_that_is_given(self):
        old = self.site()
        [record] = self.records()[GUID.format(1)]
        self.path(f"site/{record['package']}").unlink()

        self.index("--rebuild", "old.kraddon")

        self.assertEqual(self.hashes(), old)

    def test_a_rebuild_of_a_sound_site_leaves_its_pages(self):
        self.site()
        self.index(self.addon("other.kraddon", "Other", number=2))
        before = self.tree_of()

        self.index("--rebuild")

        self.assertEqual(self.tree_of(), before)

    def test_a_rebuild_repairs_a_page_that_does_not_say_its_sequence(self):
        self.site()
        [record] = self.records()[GUID.format(1)]
        page = self.path(f"site/{record['page']}")
        page.write_text(page.read_text().replace("sequence=1", "sequence=", 1))

        self.index("--rebuild")

        self.assertIn(" sequence=2 ", self.first_line(page))

    def test_packages_of_the_site_itself_are_not_taken_again(self):
        self.path("releases").mkdir()
        for number in (1, 2):
            self.addon(f"releases/{number}.kraddon", f"Kit {number}", number=number)
        self.index("releases", site="releases/site")
        os.remove(self.path("releases/1.kraddon"))
        self.index("--remove", GUID.format(1), site="releases/site")

        for folder in ("releases", "releases/site", "releases/../releases"):
            self.assertEqual(self.index(folder, site="releases/site")["added"], [])


class Names(CatalogueTest):

    def test_versions_and_guids_may_have_an_at_sign(self):
        self.addon("a.kraddon", "A", "1@2", 1)
        self.addon("b.kraddon", "B", "1.0", 2)
        self.ok("set", "b.kraddon", "properties", "GUID=a@b", "--quiet")
        self.index("a.kraddon", "b.kraddon")

        result = self.index("--yank", f"{GUID.format(1)}@1@2", "--yank", "a@b@1.0")

        self.assertEqual(result["yanked"], [{"guid": GUID.format(1), "version": "1@2"},
                                            {"guid": "a@b", "version": "1.0"}])
        result = self.index("--remove", f"{GUID.format(1)}@1@2", "--remove", "a@b")
        self.assertEqual(len(result["removed"]), 2)
        self.assertEqual(self.root()["versions"], 0)


if __name__ == "__main__":
    kraddontest.main()
