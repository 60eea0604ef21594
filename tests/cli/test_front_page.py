# SPDX-License-Identifier: MIT
"""The list of a site: what is in its page, and in the words of its search."""

import contextlib
import re
import sqlite3

import kraddontest
from cataloguetest import GUID, TIME, CatalogueTest
from previewing import PageReader, png

LINE = re.compile(r" [^|]*\|[^|]*\|[^|]*")


class FrontPageTest(CatalogueTest):

    def page(self):
        """The page without the comment in front."""
        text = self.path("site/index.html").read_text()
        return PageReader(text.split("\n", 1)[1])

    def terms(self):
        """The lines of words, one for each card."""
        text = self.path("site/terms.js").read_text()
        match = re.fullmatch(r"// kraddon\.terms/1 sequence=(\d+)\nkraddonTerms\((\d+),`\n"
                             r"((?:[^`\\$]*\n)*)`\);\n", text)
        self.assertTrue(match, text[:200])
        sequence = self.root()["sequence"]
        self.assertEqual((match[1], match[2]), (str(sequence), str(sequence)))
        self.assertEqual(self.page().all("body")[0]["data-sequence"], str(sequence))
        lines = match[3].splitlines()
        self.assertEqual(len(lines), len(self.page().all("li")))
        return lines


class Page(FrontPageTest):

    def test_a_card_shows_the_newest_version_that_is_not_yanked(self):
        for version in ("1.0", "1.1", "2.0"):
            self.addon(f"{version}.kraddon", version=version)
        self.index("1.0.kraddon", "1.1.kraddon", "2.0.kraddon")

        self.index("--yank", f"{GUID.format(1)}@2.0")

        page = self.page()
        self.assertEqual(page.headings, [[1, "Add-ons"], [2, "Wave Tools"]])
        self.assertIn("Version 1.1", page.text("li"))
        self.assertIn("Summary of Wave Tools", page.text("li"))
        self.assertIn("Ada Lind", page.text("li"))
        self.assertEqual([each["href"] for each in page.all("a")],
                         ["#main", f"pages/{GUID.format(1)}/1.1/index.html"])
        self.assertIn("1 add-on", page.text("header"))

    def test_a_card_has_a_screenshot_or_an_initial(self):
        self.addon("a.kraddon", "Älter", "1.0", 1)
        self.addon("b.kraddon", "Bare", "1.0", 2)
        self.write("shot.png", png(80, 50))
        self.ok("screenshot", "b.kraddon", "shot.png", "--timestamp", TIME)

        self.index("a.kraddon", "b.kraddon")

        page = self.page()
        [image] = page.all("img")
        self.assertEqual((image["loading"], image["alt"]), ("lazy", ""))
        self.assertTrue(self.path(f"site/{image['src']}").is_file())
        self.assertEqual([each["data-initial"] for each in page.all("div")
                          if "data-initial" in each], ["A"])

    def test_nothing_of_the_policy_allows_anything_else(self):
        self.index(*self.addons(1))

        page = self.page()

        [policy] = [each["content"] for each in page.all("meta")
                    if each.get("http-equiv") == "Content-Security-Policy"]
        words = dict(part.strip().split(" ", 1) for part in policy.split(";"))
        self.assertRegex(words.pop("script-src"), r"\A'sha256-[\w+/]{43}=' 'self' file:\Z")
        self.assertRegex(words.pop("style-src"), r"\A'sha256-[\w+/]{43}='\Z")
        self.assertEqual(words, {"default-src": "'none'", "img-src": "'self' file:",
                                 "base-uri": "'none'", "form-action": "'none'"})
        self.assertEqual(len(page.all("script")), 1)
        self.assertNotIn("src", page.all("script")[0])
        self.assertNotRegex(page.style, r"url\(|@import|<")

    def test_texts_that_are_too_long_are_cut(self):
        self.addon("p.kraddon", "n" * 2000, "1.0", 1, summary="word " * 5000)

        self.index("p.kraddon")

        self.assertLess(self.path("site/index.html").stat().st_size, 30_000)
        self.assertLess(self.path("site/terms.js").stat().st_size, 2000)
        self.assertTrue(self.page().headings[1][1].endswith("n\u2026"))

    def test_an_empty_site_has_an_empty_list(self):
        self.index(*self.addons(1))

        self.index("--remove", GUID.format(0))

        self.assertIn("0 add-ons", self.page().text("header"))
        self.assertEqual(self.terms(), [])


class Terms(FrontPageTest):

    NAMES = ["Wave Tools", "Ökologie der Flüsse", "C++/CLI-Bridge 2.0", "ΟΔΟΣ Αθήνα", "İstanbul Café",
             "Ångström", "山田 フィルタ", "naïve—façade", "Straße", "Łódź", "ǅungla", "snake_case",
             "x²+y²", "Ⅷ chapters", "tab\tbetween", "𝔘nicode 𐐀"]

    def test_the_words_are_those_of_the_database(self):
        names = [self.addon(f"{i}.kraddon", name, "1.0", i, summary="", author="")
                 for i, name in enumerate(self.NAMES)]
        self.index(*names)

        found = {word for line in self.terms() for word in line.split("|")[0].split()}

        with contextlib.closing(sqlite3.connect(self.path("site/catalogue.sqlite"))) as database:
            database.execute("CREATE VIRTUAL TABLE temp.v USING fts5vocab('main', 'words', 'row')")
            expected = {word for [word] in database.execute("SELECT term FROM v")}
        self.assertEqual(found, expected)

    def test_a_line_holds_the_words_of_name_summary_and_author(self):
        self.addon("p.kraddon", "Wave-Tools", "1.0", 1, "--organization", "Lab 7",
                   summary="Short, loud", author="Zoë Åberg")

        self.index("p.kraddon")

        self.assertEqual(self.terms(), [" wave tools| short loud| zoe aberg lab 7"])

    def test_hostile_texts_are_words(self):
        evil = "`); alert(1); ${alert(2)} \\` </script> \u2028 \u202e|' \"\n"
        self.addon("p.kraddon", evil, "1.0", 1, summary=evil, author=evil)

        self.index("p.kraddon")

        words = " alert 1 alert 2 script"
        self.assertEqual(self.terms(), [f"{words}|{words}|{words}"])

    def test_they_are_repaired_by_the_next_run(self):
        self.index(*self.addons(2))
        before = self.tree_of()
        path = self.path("site/terms.js")
        for damage in (path.unlink, lambda: path.write_text(""),
                       lambda: path.write_text("// kraddon.terms/1 sequence=7\n")):
            damage()

            self.index()

            self.assertEqual(self.tree_of(), before)


if __name__ == "__main__":
    kraddontest.main()
