# SPDX-License-Identifier: MIT
"""The list of a site in a real browser: search, order, and what it does not do"""

import contextlib
import os
import re
import shutil
import subprocess
import sys
import unittest

import kraddontest
from browser import CONTRASTS, OUTSIDE, WIDTH, Browser
from cataloguetest import GUID, TIME, CatalogueTest
from previewing import png

MANY = 3000
SHOWN = """[...document.querySelectorAll('.card')].filter(each => each.checkVisibility())
           .map(each => each.querySelector('h2').textContent)"""
COUNT = "document.getElementById('count').textContent"
SEARCHES = "/[0-9] of|None/.test(document.getElementById('count').textContent)"
HIT = "document.documentElement.setAttribute('data-hit', '1')"
EVIL = (f"</script></style>--><script>{HIT}</script>\"'><img src=x onerror=\"{HIT}\">`);{HIT};"
        f"${{{HIT}}}\\` \u202ereversed \u2066")
SCREENS = [(width, scheme) for width in (390, 1280) for scheme in ("light", "dark")]


@contextlib.contextmanager
def serving(folder):
    """The address of a web server that knows nothing of sites."""
    words = [sys.executable, "-u", "-m", "http.server", "0", "--bind", "127.0.0.1", "-d", folder]
    with subprocess.Popen(words, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as server:
        try:
            port = re.search(rb"port (\d+)", server.stdout.readline())[1].decode()
            yield f"http://127.0.0.1:{port}"
        finally:
            server.terminate()


@kraddontest.needs_proc
@unittest.skipUnless(shutil.which("chromium"), "needs chromium")
class FrontPageInBrowser(CatalogueTest):

    @classmethod
    def setUpClass(cls):
        cls.browser = cls.enterClassContext(Browser())

    def evaluate(self, expression):
        return self.browser.evaluate(expression)

    def few(self):
        """A site of three, one with a screenshot and one of a stranger who means harm."""
        self.addon("a.kraddon", "Wave Tools", "1.0", 1, summary="Draws Ελλάδα waves")
        self.addon("b.kraddon", "Signal Café", "2.0", 2, author="Zoë Åberg", summary="")
        self.addon("c.kraddon", EVIL, "3.0", 3, summary=EVIL, author=EVIL)
        self.write("shot.png", png(80, 50))
        self.ok("screenshot", "a.kraddon", "shot.png", "--timestamp", str(int(TIME) + 86400))
        self.index("a.kraddon", "b.kraddon", "c.kraddon")
        return self.path("site/index.html")

    def many(self):
        self.path("many").mkdir()
        subprocess.run([os.environ["KRADDON_FRONT_PAGE_WRITER"], self.path("many"), "7",
                        str(MANY)], check=True)
        return self.path("many/index.html")

    def search(self, words):
        """The names that are shown for words that are typed."""
        self.evaluate("document.getElementById('words').select()")
        self.browser.type(words)
        self.browser.wait(SEARCHES)
        return self.evaluate(SHOWN)

    def choose(self, order):
        """Sorts as a reader with a keyboard does."""
        self.evaluate("document.getElementById('order').focus()")
        self.browser.press(order, ord(order))

    def assert_quiet(self, own):
        """Nothing but files of the site was asked for, and nothing went wrong or was said."""
        self.assertEqual([address for address in self.browser.requested()
                          if not address.startswith(own)], [])
        self.assertEqual([event for event in self.browser.events
                          if event["method"] in ("Page.javascriptDialogOpening", "Log.entryAdded",
                                                 "Runtime.consoleAPICalled",
                                                 "Runtime.exceptionThrown")
                          and "favicon" not in str(event)], [])
        self.assertEqual(self.evaluate("document.documentElement.getAttribute('data-hit')"), None)

    def terms_requested(self):
        return sum(address.endswith("/terms.js") for address in self.browser.requested())

    def check_search(self, address, own):
        names = ["</script></style>", "Signal Café", "Wave Tools"]
        for has_policy in (True, False):
            self.browser.open(address, has_policy=has_policy)
            self.assertEqual([name[:17] for name in self.evaluate(SHOWN)],
                             [name[:17] for name in names])
            self.assertEqual(self.evaluate(COUNT), "3 add-ons")
            self.evaluate("document.getElementById('words').focus()")
            self.assertEqual(self.terms_requested(), 0)
            for words, expected in (("w", ["Wave Tools"]), ("TOO wav", ["Wave Tools"]),
                                    ("cafe", ["Signal Café"]), ("CAFÉ aberg", ["Signal Café"]),
                                    ("ελλαδα", ["Wave Tools"]), ("ave", []), ("wave aberg", []),
                                    ("toBe", [])):
                self.assertEqual(self.search(words), expected, words)
            self.assertEqual(self.evaluate(COUNT), "None of 3 add-ons has these words")
            self.assertEqual(len(self.search("reversed")), 1)
            self.assertEqual(self.evaluate(COUNT), "1 of 3 add-ons")
            self.assertEqual(self.terms_requested(), 1)
            self.assert_quiet(own)

    def test_search_finds_what_is_typed_in_files_and_from_a_server(self):
        page = self.few()
        self.check_search(page, f"file://{self.path('site')}/")
        with serving(self.path("site")) as address:
            self.check_search(f"{address}/index.html", f"{address}/")

    def test_terms_of_another_list_are_not_used(self):
        page = self.few()
        terms = self.path("site/terms.js")
        own = terms.read_text()
        for content in (own.replace("kraddonTerms(1,", "kraddonTerms(2,").replace(" wave", " zzz"),
                        own.replace(" wave", " zzz\n wave"), "kraddonTerms(", "", None):
            with self.subTest(content):
                terms.unlink(missing_ok=True)
                if content is not None:
                    terms.write_text(content)
                self.browser.open(page)
                self.assertEqual(self.search("lind wave"), ["Wave Tools"])
                self.assertEqual(self.search("zzz"), [])
                self.assertEqual(self.search("ελλαδα"), ["Wave Tools"])

    def test_a_policy_stands_behind_the_escaping(self):
        page = self.few()
        content = page.read_text().replace("<h1>", f"<script>{HIT}</script><style>h1 {{ color: red "
                                           "}</style><img src=http://127.0.0.1:9/image><h1>")
        for has_policy, hit in ((True, None), (False, "1")):
            page.write_text(content)
            self.browser.open(page, has_policy=has_policy)
            self.assertEqual(self.evaluate("document.documentElement.getAttribute('data-hit')"),
                             hit)
            self.assertEqual(self.evaluate("getComputedStyle(document.querySelector('h1')).color")
                             == "rgb(255, 0, 0)", not has_policy)
            blocked = [event["params"].get("blockedReason") for event in self.browser.events
                       if event["method"] == "Network.loadingFailed"]
            self.assertEqual(blocked, ["csp"] if has_policy else [None])

    def test_the_list_can_be_sorted(self):
        self.browser.open(self.many())
        names = self.evaluate(SHOWN)
        self.assertEqual(len(names), MANY)
        dates = "[...document.querySelectorAll('.card:not([hidden]) time')].map(each => each.dateTime)"

        self.choose("D")

        shown = self.evaluate(dates)
        self.assertEqual(shown, sorted(shown, reverse=True))
        self.assertEqual(sorted(self.evaluate(SHOWN)), sorted(names))
        found = self.search("orbit aberg")
        self.assertGreater(len(found), 10)
        self.assertTrue(all("Orbit" in name for name in found))
        shown = self.evaluate(dates)
        self.assertEqual(shown, sorted(shown, reverse=True))
        self.choose("N")
        self.assertEqual(self.evaluate(SHOWN), [name for name in names if name in set(found)])

    def test_many_add_ons_fit_every_screen_and_are_found(self):
        page = self.many()
        for width, scheme in SCREENS:
            with self.subTest(width=width, scheme=scheme):
                self.browser.open(page, width=width, scheme=scheme)
                self.assertLessEqual(self.evaluate(WIDTH), width)
                self.assertEqual(self.search(f"wave {MANY - 4}"), ["Wave Kit 2996"])
                self.assertEqual(self.evaluate(COUNT), "1 of 3,000 add-ons")
                self.assert_quiet(f"file://{self.path('many')}/")

    def test_few_add_ons_fit_every_screen_and_are_readable(self):
        long = "Donaudampfschifffahrtsgesellschaft" * 5
        page = self.few()
        self.addon("long.kraddon", long, long, 4, "--organization", long, summary=long, author=long)
        self.index("long.kraddon")
        for width, scheme in SCREENS + [(320, "light")]:
            with self.subTest(width=width, scheme=scheme):
                self.browser.open(page, width=width, scheme=scheme)
                self.assertLessEqual(self.evaluate(WIDTH), width)
                outside = self.evaluate(OUTSIDE)
                # What is cut off has its full width.
                self.assertEqual([each for each in outside if not each.startswith("<bdi>")], [])
                contrasts = self.evaluate(CONTRASTS)
                self.assertGreater(len(contrasts), 15)
                self.assertGreaterEqual(contrasts[0][0], 4.5, contrasts[0])
                heights = self.evaluate("[...document.querySelectorAll('.card')]"
                                        ".map(each => each.offsetHeight)")
                self.assertEqual(len(set(heights)), 1, "a card without image is as high")

    def test_it_is_whole_without_scripts(self):
        page = self.few()
        self.browser.open(page, scripts=False)
        self.assertEqual(len(self.evaluate(SHOWN)), 3)
        self.assertEqual(self.evaluate("document.querySelector('.controls').checkVisibility()"),
                         False)
        self.assertEqual(self.evaluate("[...document.images].map(each => each.naturalWidth)"), [80])
        self.assertEqual(self.evaluate(COUNT), "3 add-ons")

    def test_links_lead_to_the_page_of_a_version_and_back(self):
        self.browser.open(self.few())
        page = self.evaluate("document.querySelector('.card:last-child a').href")
        self.assertEqual(page, f"file://{self.path('site')}/pages/{GUID.format(1)}/1.0/index.html")
        self.browser.open(page.removeprefix("file://"))
        self.assertEqual(self.evaluate("document.querySelector('h1').textContent"), "Wave Tools")
        self.assertEqual(self.evaluate("document.querySelector('a[href$=\"index.html\"]').href"),
                         f"file://{self.path('site')}/index.html")

    def test_a_keyboard_and_a_screen_reader_suffice(self):
        self.browser.open(self.few())
        focused = []
        for _ in range(4):
            self.browser.press("Tab", 9)
            focused.append(self.evaluate("document.activeElement.id "
                                         "|| document.activeElement.textContent"))
        self.assertEqual(focused[:3], ["Skip to the add-ons", "words", "order"])
        self.assertTrue(focused[3].startswith("</script>"))
        nodes = [(node["role"]["value"], node.get("name", {}).get("value", ""))
                 for node in self.browser.call("Accessibility.getFullAXTree")["nodes"]
                 if not node.get("ignored") and "role" in node]
        roles = [role for role, _ in nodes]
        for role in ("banner", "search", "main", "contentinfo", "status", "list"):
            self.assertEqual(roles.count(role), 1, role)
        for node in (("searchbox", "Search"), ("combobox", "Sort by"), ("heading", "Wave Tools"),
                     ("link", "Signal Café")):
            self.assertIn(node, nodes)


if __name__ == "__main__":
    kraddontest.main()
