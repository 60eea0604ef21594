# SPDX-License-Identifier: MIT
"""kraddon preview"""

import base64
import zipfile

import kraddontest
import previewing
from previewing import png

HOSTILE = ("\"'><script>document.title=\"gone\"</script><img src=x onerror=alert(1)>--></style>"
           "</title></textarea>&amp;&lt;\u202egnp.exe שלום ")


class Preview(previewing.PreviewTest):

    def test_a_page_is_written_to_the_current_folder(self):
        self.package("p.kraddon", {"a.m": "x"})
        self.path("deep").mkdir()
        self.path("p.kraddon").rename(self.path("deep/kit.v1.kraddon"))

        self.assertEqual(self.ok("preview", "deep/kit.v1.kraddon").out, b"")

        self.assertEqual(self.names("deep"), ["kit.v1.kraddon"])
        page = self.path("kit.v1.html").read_bytes()
        self.assertEqual(self.ok("preview", "deep/kit.v1.kraddon", "-o", "-").out, page)
        self.ok("preview", "deep/kit.v1.kraddon", "-o", "deep/x")
        self.assertEqual(self.path("deep/x").read_bytes(), page)

    def test_an_empty_package_has_a_page(self):
        self.package("p.kraddon")
        page = self.page()
        self.assertEqual([title for level, title in page.headings], ["Wave Tools", "About"])
        self.assertEqual(page.text("head", "title"), "Wave Tools 1.0")
        self.assertIn("This add-on has no description.", page.text("main"))
        self.assertEqual(page.all("img"), [])

    def test_the_page_shows_everything_in_the_package(self):
        self.package("p.kraddon", {"code/a.m": "x" * 1000, "thumb.png": png(), "code/empty/": ""})
        self.write("shot.png", png(40, 30))
        self.ok("screenshot", "p.kraddon", "shot.png")
        self.furnish(lambda field: f"The {field}, so", paths={"thumbnail": "thumb.png",
                                                             "images": ["thumb.png", "none.png"]})
        page = self.page()
        self.assertEqual([title for level, title in page.headings if level == 2],
                         ["About", "Requirements", "Examples", "Apps", "Revisions", "Search path",
                          "License", "Files"])
        shown = page.text("body")
        for field in ("name", "version", "summary", "description", "authorName", "authorContact",
                      "authorOrganization", "GUID", "license type", "license text", "search path",
                      "class path", "app name", "app guid", "app path", "category", "example name",
                      "example type", "example source", "example main", "date",
                      "revision version", "revision text", "product", "product version",
                      "product identifier", "support", "support version", "support identifier"):
            self.assertIn(f"The {field}, so", shown)
        for words in ("Installed by default", "Installed on request", "none.png: not in the package",
                      "2 files, 1 empty folder", "2023-11-14"):
            self.assertIn(words, shown)
        images = [base64.b64decode(image["src"].split(",")[1]) for image in page.all("img")]
        self.assertEqual(images, [png(40, 30), png(), png()])
        self.assertEqual(page.all("img")[0]["alt"], "Screenshot of The name, so")
        self.assertEqual(page.all("meta", name="description")[0]["content"], "The summary, so")

    def test_an_example_without_a_name_is_named_after_its_file(self):
        self.package("p.kraddon")
        fields = {"name": "", "type": "", "thumbnail": "", "images": None}
        self.set("examples", [
            {"name": "Full", "examples": [dict(fields, source="src/a.src", main="run/chirp.m"),
                                          dict(fields, source="src/b.src", main=""),
                                          dict(fields, source="", main="")]},
            {"name": "Bare", "examples": []}])

        page = self.page()

        self.assertEqual([title for level, title in page.headings if level == 4],
                         ["chirp.m", "b.src", "Example without a name"])
        self.assertIn("BareThere are no examples in this category.", page.text("main"))

    @kraddontest.needs_proc
    def test_a_page_can_go_to_a_device(self):
        self.package("p.kraddon")
        self.ok("preview", "p.kraddon", "-o", "/dev/null")
        page = self.ok("preview", "p.kraddon", "-o", "/dev/stdout").out
        self.assertEqual(page, self.ok("preview", "p.kraddon", "-o", "-").out)

    def test_hostile_texts_are_shown_as_texts(self):
        self.package("p.kraddon", {"\"><img src=x onerror=alert(1)>/&amp;.m": "x",
                                   "--><b>.m": "y" * 300, "\u202egpj.m": "z"})
        self.furnish(lambda field: HOSTILE + field)
        page = self.page()
        shown = page.text("body")
        for field in ("name", "summary", "authorName", "GUID", "license type", "license text",
                      "search path", "class path", "app name", "app guid", "app path", "category",
                      "example name", "example type", "example source", "example main", "image",
                      "date", "revision version", "product version", "support"):
            self.assertIn(HOSTILE + field, shown)
        # In CommonMark a character may be written as an entity, and HTML is left out.
        for field in ("description", "revision text"):
            self.assertIn("\"'>document.title=\"gone\"-->&<\u202egnp.exe שלום " + field, shown)
        for name in ("\"><img src=x onerror=alert(1)>", "&amp;.m", "--><b>.m", "\u202egpj.m"):
            self.assertIn(name, page.text("details"))
            self.assertTrue(any(name in data for path, data in page.texts if path[-1:] == ("title",)))
        self.assertEqual(page.text("head", "title"), f"{HOSTILE}name {HOSTILE}version")
        self.assertEqual(page.all("img"), [])
        self.assertEqual(len(page.all("title")), 4)

    def test_characters_that_html_excludes_are_replaced(self):
        self.package("p.kraddon", {"tab\there\x01\x7f.m": "x"})
        result = self.ok("preview", "p.kraddon", "-o", "-")
        self.assertIn("tab\there\ufffd\ufffd.m", result.text)
        self.assertNotRegex(result.text, r"[\x00-\x08\x0b-\x1f\x7f-\x9f]")

    def test_a_description_keeps_its_paragraphs_and_headings(self):
        self.package("p.kraddon", {}, "--description",
                     "First\nsecond line\n\nNext\n\n# Head\n- one\n- two\n\n```\n<b>\n```")
        page = self.page()
        self.assertIn("First\nsecond line", page.text("main", "p"))
        self.assertEqual(page.headings[-1], [3, "Head"])
        self.assertEqual(page.text("ul", "li").count("one"), 1)
        self.assertEqual(page.text("pre", "code"), "<b>\n")

    def test_a_description_shows_images_of_the_package(self):
        self.package("p.kraddon", {"images/a b.png": png(), "images/c.svg": "<svg/>"},
                     "--description", "\n\n".join(f"![{i}]({address})" for i, address in enumerate((
                         "<images/a b.png>", "./images/a%20b.png?raw=true", "https://x.org/a.png",
                         "images/c.svg", "images", "", ".", "..", "../p.kraddon", "/images/a%20b.png",
                         "images//a%20b.png", "a%00b", "a%FF", "a%", "file:///etc/passwd", "c:\\a",
                         "data:image/png;base64,AAAA"))))
        page = self.page()
        self.assertEqual([image["alt"] for image in page.all("img")], ["0", "1", "9"])
        self.assertEqual([link["href"] for link in page.all("a", rel="noopener nofollow")],
                         ["https://x.org/a.png"])
        self.assertEqual([data for path, data in page.texts if "p" in path and data.isdigit()],
                         [str(i) for i in range(2, 17) if i != 9])

    def test_images_of_a_description_are_limited(self):
        self.package("p.kraddon", {"big.png": png() + bytes(5 << 20),
                                   "large.png": png() + bytes(3 << 20)},
                     "--description", "![big](big.png)\n" + "![large](large.png)\n" * 12)
        page = self.page()
        self.assertEqual(len(page.all("img")), 10)
        self.assertEqual([span["title"][:15] for span in page.all("span") if "title" in span],
                         ["left out: 5.2 M", "left out: all i", "left out: all i"])

    def test_a_contact_is_a_link_only_if_it_is_a_plain_address(self):
        for contact, link in (("ada@example.org", "mailto:ada@example.org"),
                              ("https://example.org/a?b=c", "https://example.org/a?b=c"),
                              ("javascript:alert(1)", None), ("ada@example.org?bcc=x@y.zz", None),
                              ("data:text/html,<script>", None), ("Ada <ada@example.org>", None)):
            with self.subTest(contact):
                self.package("p.kraddon", {}, "--contact", contact, "--force")
                page = self.page()
                links = [a for a in page.all("a") if not a["href"].startswith("#")]
                self.assertEqual([a["href"] for a in links], [link] if link else [])
                self.assertEqual([a["rel"] for a in links], ["noopener nofollow"] * len(links))
                self.assertIn(contact, page.text("dl"))

    def test_an_image_is_recognised_by_its_bytes(self):
        self.package("p.kraddon", {"fake.png": "<html><script>alert(1)</script>",
                                   "real.txt": png(), "shot.svg": "<svg/>"})
        examples = [{"name": name, "type": "", "source": "", "main": "", "thumbnail": name,
                     "images": None} for name in ("fake.png", "real.txt", "shot.svg", "gone.png")]
        self.set("examples", [{"name": "", "examples": examples}])
        page = self.page()
        self.assertEqual([image["src"][:15] for image in page.all("img")], ["data:image/png;"])
        self.assertEqual(page.text("main").count("Thumbnail not an image that a page can show"), 2)
        self.assertEqual(page.text("main").count("Thumbnail not in the package"), 1)

    def test_the_download_is_as_large_as_the_file(self):
        self.package("p.kraddon", {"a.m": "x" * 1000})
        self.write("shot.png", png() + bytes(700_000))
        self.ok("screenshot", "p.kraddon", "shot.png")
        size = self.path("p.kraddon").stat().st_size
        self.assertGreater(size, 1000)
        facts = self.page().text("dl").split("\n")
        self.assertIn(f"Download{size / 1000:.1f} kB", facts)
        self.assertIn("Content1 file, 1.0 kB", facts)

    def test_an_image_that_is_too_large_is_left_out_with_a_note(self):
        self.package("p.kraddon", {"big.png": png() + bytes(5 << 20),
                                   "large.png": png() + bytes(3 << 20)})
        examples = [{"name": str(i), "type": "", "source": "", "main": "", "images": None,
                     "thumbnail": "big.png" if i == 0 else "large.png"} for i in range(12)]
        self.set("examples", [{"name": "All", "examples": examples}])
        self.ok("screenshot", "p.kraddon", "p.kraddon.src/big.png")
        page = self.page()
        self.assertEqual(len(page.all("img")), 10)
        self.assertEqual(page.text("main").count("5.2 MB, and an image may have at most 4.2 MB"), 1)
        self.assertEqual(page.text("main").count("all images together may have at most 34 MB"), 1)
        self.assertIn("Screenshot left out: 5.2 MB", page.text("header"))

    def test_the_sizes_are_in_a_table_and_in_a_map(self):
        self.package("p.kraddon", {"big/a.m": "x" * 9000, "small/b.m": "y" * 900,
                                   "c.m": "z" * 100})
        page = self.page()
        table = page.text("table").replace("\n", "")
        self.assertIn("big/19.0 kB90.0%", table)
        self.assertIn("small/1900 B9.0%", table)
        self.assertIn("Files in no folder1100 B1.0%", table)
        titles = [data for path, data in page.texts if path[-1:] == ("title",) and "svg" in path]
        self.assertEqual(titles, ["big/a.m, 9.0 kB", "small/b.m, 900 B", "c.m, 100 B"])

    def test_the_same_package_gives_the_same_bytes(self):
        self.package("p.kraddon", {"code/a.m": "x" * 1000, "größe.csv": "1"})
        self.furnish(lambda field: f"The {field}, so")
        page = self.ok("preview", "p.kraddon", "-o", "-").out
        for env in ({"LC_ALL": "tr_TR.UTF-8"}, {"TZ": "Asia/Tokyo"}, {"LC_ALL": "C", "LANG": "C"}):
            self.assertEqual(self.ok("preview", "p.kraddon", "-o", "-", env=env).out, page)
        self.path("p.kraddon").rename(self.path("other.kraddon"))
        self.assertEqual(self.ok("preview", "other.kraddon", "-o", "-").out, page)

    def many(self, name, paths):
        """A package with a great many files, made without creating them on the disk."""
        self.package(name)
        entries = self.entries(name)
        types = entries["[Content_Types].xml"].decode()
        entries["[Content_Types].xml"] = types.replace(
            "</Types>", '<Default Extension="m" ContentType="text/plain"/></Types>')
        with zipfile.ZipFile(self.path(name), "w") as archive:
            for entry, content in entries.items():
                archive.writestr(entry, content)
            for number, path in enumerate(paths):
                archive.writestr(f"files/{path}", b"x" * (number % 50))

    def test_the_page_of_a_hundred_thousand_files_is_limited(self):
        self.many("p.kraddon", [f"d{i % 317}/e{i % 7}/f{i}.m" for i in range(100000)])
        page = self.page()
        self.assertLess(len(page.elements), 30000)
        self.assertIn("File tree: 100,000 files, 2.5 MB", page.text("summary"))
        self.assertIn("There are too many files to list all of them", page.text("details"))
        self.assertIn("308 other folders", page.text("table"))

    def test_a_flat_or_deep_tree_does_not_grow_the_page(self):
        self.many("flat.kraddon", [f"f{i}.m" for i in range(20000)])
        page = self.page("flat.kraddon")
        self.assertIn("and 19,500 more files", page.text("details"))
        self.many("deep.kraddon", ["/".join(["d"] * 3000) + "/f.m"])
        page = self.page("deep.kraddon")
        self.assertLess(page.text("details").count("d/"), 40)

    def test_a_thousand_examples_are_shown(self):
        self.package("p.kraddon", {f"e{i}.png": png(4, 4, (i % 256, 9, 9)) for i in range(50)})
        self.set("examples", [{"name": f"Category {c}", "examples": [
            {"name": f"Example {i}", "type": "script", "source": "", "main": f"e{i}.m",
             "thumbnail": f"e{i % 50}.png", "images": None} for i in range(c * 100, c * 100 + 100)]}
            for c in range(10)])
        page = self.page()
        self.assertEqual(len(page.all("img")), 1000)
        self.assertEqual(len([1 for level, _ in page.headings if level == 4]), 1000)

    def test_a_file_that_was_not_named_is_not_replaced(self):
        self.package("p.kraddon")
        self.write("p.html", "precious")
        self.fails("preview", "p.kraddon", message="cannot write 'p.html': it already exists",
                   hint="-o p.html replaces it")
        self.assertEqual(self.path("p.html").read_text(), "precious")
        self.ok("preview", "p.kraddon", "-o", "p.html")
        self.assertIn("Wave Tools", self.path("p.html").read_text())

    def test_a_protected_file_is_not_replaced(self):
        self.package("p.kraddon")
        self.write("page.html", "precious").chmod(0o444)
        self.folder.chmod(0o777)
        self.fails("preview", "p.kraddon", "-o", "page.html",
                   message="cannot replace 'page.html': Permission denied",
                   **self.without_privilege())
        self.assertEqual(self.path("page.html").read_text(), "precious")

    def test_a_failure_leaves_no_page(self):
        self.package("p.kraddon", {"thumb.png": png()}, "--level", "0")
        self.set("examples", [{"name": "", "examples": [
            {"name": "x", "type": "", "source": "", "main": "", "thumbnail": "thumb.png",
             "images": None}]}])
        known = self.names()
        content = self.path("p.kraddon").read_bytes()
        self.path("p.kraddon").write_bytes(content.replace(png(), png()[:-1] + b"x"))
        self.fails("preview", "p.kraddon")
        self.fails("preview", "p.kraddon", "-o", "page.html")
        self.path("p.kraddon").write_bytes(content)
        self.fails("preview", "none.kraddon",
                   message="cannot open package 'none.kraddon': No such file or directory")
        self.fails("preview", "p.kraddon", "-o", "p.kraddon",
                   message="cannot write 'p.kraddon': it is the package itself")
        self.fails("preview", "p.kraddon", "-o", "/dev/full",
                   message="cannot write '/dev/full': No space left on device")
        self.assertEqual((self.names(), self.path("p.kraddon").read_bytes()), (known, content))

    def test_a_document_that_cannot_be_read_is_an_error_that_names_it(self):
        self.package("p.kraddon")
        self.set("license", {"type": "MIT", "text": "x"})
        entries = self.entries()
        entries["metadata/license.xml"] = b"<license>"
        with zipfile.ZipFile(self.path("p.kraddon"), "w") as archive:
            for name, content in entries.items():
                archive.writestr(name, content)
        result = self.fails("preview", "p.kraddon")
        self.assertIn("/metadata/license.xml", result.errors)

    def test_wrong_operands_are_wrong_usage(self):
        self.misused("preview", message="missing operand 'PACKAGE': the package")
        self.misused("preview", "a", "b", message="unexpected operand 'b': the command takes no more")
        result = self.run_kraddon("preview", "p.kraddon", "--json")
        self.assertEqual(result.code, 2)


if __name__ == "__main__":
    kraddontest.main()
