# SPDX-License-Identifier: MIT
"""The page of `kraddon preview` in a real browser"""

import http.server
import pathlib
import shutil
import threading
import unittest

import kraddontest
import previewing
from browser import CONTRASTS, HEADINGS, OUTSIDE, WIDTH, Browser
from previewing import png

OPEN_ALL = "document.querySelectorAll('details').forEach(each => each.open = true)"


# What descriptions consist of: the README of this project, and what it lacks.
README = (pathlib.Path(__file__).parents[2] / "README.md").read_text(encoding="utf-8") + """
## A wide table

| Word | """ + " | ".join(f"Column {i}" for i in range(20)) + """ |
|:---|""" + "---:|" * 20 + """
| Donaudampfschifffahrtsgesellschaft | """ + " | ".join("1234567.89" for _ in range(20)) + """ |

#### Deep heading

- [x] a task that is ~~open~~ done
- [ ] another, at https://example.org/""" + "long/" * 60 + """

> A quotation with `""" + "x" * 200 + """`

![A picture](thumb.png) ![Another](https://example.org/other.png) [![Badge](x.svg)](https://x.org)
"""


class CountingServer:
    """Counts what is asked of it."""

    def __enter__(self):
        self.asked = asked = []

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                asked.append(self.path)
                self.send_response(200)
                self.end_headers()

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._thread = threading.Thread(target=self._server.serve_forever)
        self._thread.start()
        self.address = f"http://127.0.0.1:{self._server.server_address[1]}"
        return self

    def __exit__(self, *_):
        self._server.shutdown()
        self._thread.join()
        self._server.server_close()


@kraddontest.needs_proc
@unittest.skipUnless(shutil.which("chromium"), "needs chromium")
class PreviewInBrowser(previewing.PreviewTest):

    @classmethod
    def setUpClass(cls):
        cls.browser = cls.enterClassContext(Browser())

    def write_page(self, say, files=None):
        """page.html, of a package with everything in it."""
        self.package("p.kraddon", {"code/a.m": "x" * 9000, "code/b.m": "y" * 5000,
                                   "thumb.png": png(30, 20), **(files or {})})
        self.write("shot.png", png(80, 50, (20, 90, 160)))
        self.ok("screenshot", "p.kraddon", "shot.png")
        self.furnish(say, paths={"thumbnail": "thumb.png", "images": ["thumb.png", "none.png"]})
        self.ok("preview", "p.kraddon", "-o", "page.html")
        return self.path("page.html")

    def assert_nothing_happened(self, title):
        evaluate = self.browser.evaluate
        self.assertEqual(evaluate("document.title"), title)
        self.assertEqual(evaluate("document.documentElement.getAttribute('data-hit')"), None)
        self.assertEqual(evaluate("document.querySelectorAll('script,iframe,form,b,textarea,link')"
                                  ".length"), 0)
        happened = [event["method"] for event in self.browser.events
                    if event["method"] in ("Page.javascriptDialogOpening", "Log.entryAdded",
                                           "Runtime.consoleAPICalled", "Runtime.exceptionThrown")]
        self.assertEqual(happened, [])
        self.assertEqual([address for address in self.browser.requested()
                          if not address.startswith(("file:///", "data:image/png;base64,"))], [])
        self.assertEqual(len([address for address in self.browser.requested()
                              if address.startswith("file:")]), 1)

    def test_hostile_texts_do_nothing_and_nothing_is_loaded(self):
        with CountingServer() as server:
            hit = "document.documentElement.setAttribute('data-hit','1')"
            hostile = (f"\"'><script>{hit}</script><img src=x onerror=\"{hit}\">"
                       f"<img src={server.address}/image><link rel=stylesheet "
                       f"href={server.address}/sheet>--></style></title></textarea><b>"
                       f"<iframe src=\"javascript:{hit}\"></iframe>`{{{{x}}}}`\n"
                       f"<style>@import '{server.address}/import';</style>\n"
                       f"[a](javascript:{hit}) ![a]({server.address}/picture) "
                       f"[![a](data:text/html,<script>{hit}</script>)](<data:text/html,x>) "
                       f"{server.address}/bare <{server.address}/angle> www.x.invalid\n\n")
            page = self.write_page(lambda field: hostile + field, {
                f"\"><img src=x onerror={hit}>.m": "x" * 4000,
                "</title></svg><script>alert(1)<": "y" * 4000})
            # Once as it is, and once as if the policy of the page were not there: what is escaped
            # must do no harm by itself.
            for has_policy in (True, False):
                self.browser.open(page, has_policy=has_policy)
                self.browser.evaluate(OPEN_ALL)
                title = " ".join((hostile + "name " + hostile + "version").split())
                self.assert_nothing_happened(title)
            self.assertEqual(server.asked, [])

    def test_a_policy_stands_behind_the_escaping(self):
        page = self.write_page(lambda field: field)
        content = page.read_text()
        for has_policy, hit in ((True, None), (False, "1")):
            with CountingServer() as server:
                page.write_text(content.replace(
                    "<h1 ", "<script>document.documentElement.setAttribute('data-hit','1')"
                            f"</script><img src={server.address}/image><h1 "))
                self.browser.open(page, has_policy=has_policy)
                self.assertEqual(self.browser.evaluate(
                    "document.documentElement.getAttribute('data-hit')"), hit)
                self.assertEqual(server.asked, [] if has_policy else ["/image"])

    def test_no_width_needs_sideways_scrolling(self):
        long = "Donaudampfschifffahrtsgesellschaft" * 9
        page = self.write_page(lambda field: f"{field} {long}\n\n```\n{long}\n```\n",
                               {f"{'n' * 200}/{'m' * 200}.m": "x"})
        for width in (320, 390, 820, 1280):
            self.browser.open(page, width=width)
            self.assertLessEqual(self.browser.evaluate(WIDTH), width)
            self.browser.evaluate(OPEN_ALL)
            self.assertLessEqual(self.browser.evaluate(WIDTH), width)

    def write_readme(self):
        page = self.write_page(lambda field: README if field == "description" else f"The {field}",
                               {f"data/{i:03}/measured_{j}.csv": "x" * j
                                for i in range(3) for j in range(150)})
        return page

    def test_a_long_readme_needs_no_sideways_scrolling_and_is_readable(self):
        page = self.write_readme()
        for width, scheme in ((390, "light"), (390, "dark"), (1280, "light"), (1280, "dark")):
            with self.subTest(width=width, scheme=scheme):
                self.browser.open(page, width=width, scheme=scheme)
                self.browser.evaluate(OPEN_ALL)
                self.assertLessEqual(self.browser.evaluate(WIDTH), width)
                self.assertEqual(self.browser.evaluate(OUTSIDE), [])
                contrasts = self.browser.evaluate(CONTRASTS)
                self.assertGreaterEqual(contrasts[0][0], 4.5, contrasts[0])
                levels = [level for level, _ in self.browser.evaluate(HEADINGS)]
                self.assertEqual(levels[0], 1)
                for above, below in zip(levels, levels[1:]):
                    self.assertLessEqual(below, above + 1)

    def test_words_in_a_wide_table_stay_whole(self):
        self.browser.open(self.write_readme(), width=390)
        lines = self.browser.evaluate("""[...document.querySelectorAll('.prose td')]
            .map(each => each.getClientRects()[0].height)""")
        self.assertEqual(len(lines), 21)
        self.assertLess(max(lines), 60)

    def test_a_long_list_of_files_scrolls_by_itself(self):
        self.browser.open(self.write_readme(), width=390)
        self.browser.evaluate(OPEN_ALL)
        height, whole = self.browser.evaluate("""(() => {
            const list = document.querySelector('.tree > ul');
            return [list.clientHeight, list.scrollHeight];
        })()""")
        self.assertGreater(whole, 5000)
        self.assertLessEqual(height, 720)

    def test_it_is_whole_without_scripts(self):
        page = self.write_page(lambda field: f"The {field}, so")
        expected = previewing.PageReader(page.read_text()).headings
        self.browser.open(page, scripts=False)
        self.assertEqual(self.browser.evaluate(HEADINGS), expected)
        self.assertEqual(self.browser.evaluate(
            "[...document.images].map(each => each.complete && each.naturalWidth)"), [80, 30, 30])

    def test_all_text_has_enough_contrast_in_both_schemes(self):
        page = self.write_page(lambda field: f"The {field}, `code` and **more**, so")
        backgrounds = set()
        for scheme in ("light", "dark"):
            self.browser.open(page, scheme=scheme)
            self.browser.evaluate(OPEN_ALL)
            contrasts = self.browser.evaluate(CONTRASTS)
            self.assertGreater(len(contrasts), 100)
            self.assertGreaterEqual(contrasts[0][0], 4.5, contrasts[0])
            backgrounds.add(self.browser.evaluate(
                "getComputedStyle(document.body).backgroundColor"))
        self.assertEqual(len(backgrounds), 2)

    def test_a_screen_reader_finds_landmarks_headings_and_names(self):
        page = self.write_page(lambda field: f"The {field}, so")
        self.browser.open(page)
        nodes = [(node["role"]["value"], node.get("name", {}).get("value", ""))
                 for node in self.browser.call("Accessibility.getFullAXTree")["nodes"]
                 if not node.get("ignored") and "role" in node]
        roles = [role for role, _ in nodes]
        for role in ("banner", "navigation", "main", "contentinfo"):
            self.assertEqual(roles.count(role), 1, role)
        self.assertIn(("heading", "The name, so"), nodes)
        self.assertIn(("image", "Screenshot of The name, so"), nodes)
        self.assertIn(("region", "Requirements"), nodes)
        self.assertIn(("table", "By folder"), nodes)
        self.assertTrue(any(role == "image" and name.startswith("Map of the sizes")
                            for role, name in nodes))
        self.assertEqual([name for role, name in nodes if role == "link" and not name], [])

    def test_it_can_be_printed(self):
        page = self.write_page(lambda field: f"The {field}, so")
        self.browser.open(page)
        self.assertTrue(self.browser.pdf().startswith(b"%PDF-"))


if __name__ == "__main__":
    kraddontest.main()
