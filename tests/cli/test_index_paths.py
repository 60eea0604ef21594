# SPDX-License-Identifier: MIT
"""kraddon index with sites whose records name files that are not of the site."""

import kraddontest
from cataloguetest import GUID, CatalogueTest
from previewing import png

HINT = "'kraddon index --rebuild' rebuilds it from its packages"


class PathsInRecords(CatalogueTest):

    def setUp(self):
        super().setUp()
        self.addons(2)
        self.write("shot.png", png())
        self.ok("screenshot", "p1.kraddon", "shot.png")
        self.index("p0.kraddon", "p1.kraddon")
        [self.record] = self.records()[GUID.format(1)]
        self.write("precious.txt", "mine")

    def put(self, member, path):
        """Gives the record another path, as whoever wrote the site can do."""
        shard = self.rewrite_shard(GUID.format(1), f'"{self.record[member]}"', f'"{path}"')
        return (f"cannot read '{shard}': the member '{member}' of a record names a file that is "
                "not of the site")

    def test_a_page_outside_is_not_written(self):
        message = self.put("page", "../precious.txt")
        self.path("site/terms.js").unlink()

        self.fails("index", "site", message=message, hint=HINT)

        self.assertEqual(self.path("precious.txt").read_text(), "mine")

    def test_a_package_outside_is_not_opened(self):
        message = self.put("package", "../p1.kraddon")
        self.path("site/terms.js").unlink()
        self.path(f"site/{self.record['page']}").unlink()

        self.fails("index", "site", message=message, hint=HINT)

        self.assertFalse(self.path(f"site/{self.record['page']}").exists())

    def test_a_screenshot_outside_stops_collect_before_anything_is_removed(self):
        message = self.put("screenshot", "../precious.txt")
        before = self.tree_of()

        self.fails("index", "site", "--collect", message=message, hint=HINT)

        self.assertEqual(self.tree_of(), before)

    def test_a_rebuild_gives_the_record_its_own_paths(self):
        message = self.put("page", "../precious.txt")

        result = self.run_kraddon("index", "site", "--rebuild")

        self.assertEqual(result.code, 0, result.errors)
        self.assertIn(message, result.errors)
        self.assertEqual(self.records()[GUID.format(1)], [self.record])
        self.assertEqual(self.path("precious.txt").read_text(), "mine")


if __name__ == "__main__":
    kraddontest.main()
