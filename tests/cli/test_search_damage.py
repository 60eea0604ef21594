# SPDX-License-Identifier: MIT
"""kraddon search in a site whose database is damaged."""

import contextlib
import sqlite3

import kraddontest
from cataloguetest import CatalogueTest

DATABASE = "site/catalogue.sqlite"


class DamagedDatabase(CatalogueTest):

    def setUp(self):
        super().setUp()
        self.index(*self.addons(2))

    def refused(self, why):
        self.fails("search", "site", "kit", message=f"cannot use database '{DATABASE}': {why}")

    def test_a_list_that_cannot_be_read_is_named_by_its_column(self):
        mark = "parse error at line 1, column 2: syntax error while parsing "
        for column, value, why in (
                ("requirements", "{", f"{mark}object key - unexpected end of input; "
                                      "expected string literal"),
                ("requirements", "[1]", "the member 'kind' of a record is missing or of another "
                                        "kind"),
                ("signers", "no", f"{mark}value - invalid literal; last read: 'no'"),
                ("signers", "{}", "the member 'signers' of a record is missing or of another kind")):
            with self.subTest(column=column, value=value):
                with contextlib.closing(sqlite3.connect(self.path(DATABASE))) as database:
                    database.execute(f"UPDATE versions SET {column} = ?", (value,))
                    database.commit()

                self.refused(f"column '{column}': {why}")

                self.index("--rebuild")
                self.assertIn("Kit 0", self.ok("search", "site", "kit").text)

    def test_another_file_is_an_error_of_the_same_kind(self):
        self.write(DATABASE, b"x" * 5000)

        self.refused("file is not a database")


if __name__ == "__main__":
    kraddontest.main()
