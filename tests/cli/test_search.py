# SPDX-License-Identifier: MIT
"""Which add-ons kraddon search finds in a site."""

import contextlib
import html
import os
import re
import sqlite3
import unicodedata

import kraddontest
from cataloguetest import CatalogueTest

NAMES = ("Signal & Noise", "Αθήνα Йод", "Ünïon", "がんばる", "한국", "हिन्दी")


class Words(CatalogueTest):

    def setUp(self):
        super().setUp()
        self.index(*[self.addon(f"p{i}.kraddon", name, "1.0", i, summary="", author="Lind")
                     for i, name in enumerate(NAMES)])

    def found(self, *words):
        return [line.split("\t")[0] for line in self.ok("search", "site", *words).text.splitlines()]

    def test_a_word_without_letters_or_digits_is_ignored(self):
        for words in (("Signal & Noise",), ("signal", "-"), ("signal", "name:!"),
                      ("signal", "\U0001f389"), ("&", "sig"), ("name:sig", "author:&", "requires:-")):
            with self.subTest(words):
                self.assertEqual(self.found(*words), ["Signal & Noise"])

    def test_without_a_word_all_are_listed_as_on_the_page(self):
        page = html.unescape(self.path("site/index.html").read_text())
        names = re.findall(r"<h2[^>]*><a[^>]*>([^<]*)", page)
        self.assertEqual(sorted(names), sorted(NAMES))
        for words in (" ", "&", "name:! -", "", "\u3000"):
            with self.subTest(words):
                self.assertEqual(self.found(words), names)
        self.assertEqual(self.found("&", "--limit", "2"), names[:2])

    def test_without_a_word_there_must_still_be_a_site(self):
        for word in (" ", "&", "x"):
            self.fails("search", "nowhere", word, message="cannot read 'nowhere/catalogue.sqlite': "
                                                          "No such file or directory")

    def test_case_and_accents_of_all_scripts_are_ignored(self):
        for words, name in (("αθηνα", NAMES[1]), ("ΑΘΉΝΑ", NAMES[1]), ("иод", NAMES[1]),
                            ("ЙОД", NAMES[1]), ("union", NAMES[2]), ("がんば", NAMES[3]),
                            ("한", NAMES[4]), ("हिन्", NAMES[5]), ("name:αθη author:lin", NAMES[1])):
            for form in ("NFC", "NFD"):
                with self.subTest(words=words, form=form):
                    self.assertEqual(self.found(unicodedata.normalize(form, words)), [name])

    def test_blanks_of_any_script_are_between_words(self):
        self.assertEqual(self.found("がんばる\u3000lind"), ["がんばる"])
        self.assertEqual(self.found("union\u00a0lind"), ["Ünïon"])

    def test_what_was_replaced_is_not_found_any_more(self):
        self.addon("new.kraddon", "Σπάρτη", "2.0", 1, summary="", author="Lind")

        self.index("new.kraddon")

        self.assertEqual(self.found("αθηνα"), [])
        self.assertEqual(self.found("σπαρ"), ["Σπάρτη"])
        with contextlib.closing(sqlite3.connect(self.path("site/catalogue.sqlite"))) as database:
            # Also compares the index with the texts.
            database.execute("INSERT INTO words(words, rank) VALUES('integrity-check', 1)")


class OtherFiles(CatalogueTest):

    def test_a_pipe_or_folder_in_place_of_the_database_is_an_error(self):
        self.index(*self.addons(1))
        path = self.path("site/catalogue.sqlite")
        for make in (os.mkfifo, os.mkdir):
            path.unlink()
            make(path)

            self.fails("search", "site", "kit",
                       message="cannot use database 'site/catalogue.sqlite': it is not a file",
                       prefix=("timeout", "-s", "KILL", "30"))


if __name__ == "__main__":
    kraddontest.main()
