# SPDX-License-Identifier: MIT
"""What the tests of `kraddon preview` share: packages to show, and a reader of pages."""

import html.parser
import json
import re
import struct
import zlib

import kraddontest

VOID = {"meta", "img", "br", "input"}
ADDRESSES = {"src", "href", "srcset", "data", "action", "poster", "background", "formaction",
             "xlink:href", "cite", "ping", "longdesc", "manifest"}


def png(width=4, height=3, color=(200, 40, 90)):
    """A small picture of one colour."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    row = b"\0" + bytes(color) * width
    return (b"\x89PNG\r\n\x1a\n"
            + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(row * height)) + chunk(b"IEND", b""))


class PageReader(html.parser.HTMLParser):
    """Checks that elements nest, and keeps what a test asks for."""

    def __init__(self, content):
        super().__init__(convert_charrefs=True)
        self.open, self.elements, self.headings, self.ids = [], [], [], set()
        self.texts, self.style = [], ""
        self.feed(content)
        self.close()
        assert not self.open, f"left open: {self.open}"

    def handle_starttag(self, tag, attrs):
        names = [name for name, _ in attrs]
        assert len(names) == len(set(names)), f"repeated attribute in {tag}: {names}"
        self.elements.append((tag, dict(attrs)))
        if "id" in names:
            assert dict(attrs)["id"] not in self.ids, "an id is there twice"
            self.ids.add(dict(attrs)["id"])
        if tag not in VOID:
            self.open.append(tag)
        if re.fullmatch("h[1-6]", tag):
            self.headings.append([int(tag[1]), ""])

    def handle_endtag(self, tag):
        assert self.open and self.open[-1] == tag, f"</{tag}> closes {self.open}"
        self.open.pop()

    def handle_data(self, data):
        if "style" in self.open:
            self.style += data
            return
        self.texts.append((tuple(self.open), data))
        if any(re.fullmatch("h[1-6]", tag) for tag in self.open):
            self.headings[-1][1] += data

    def handle_comment(self, data):
        raise AssertionError(f"a comment: {data}")

    def handle_pi(self, data):
        raise AssertionError(f"a processing instruction: {data}")

    def unknown_decl(self, data):
        raise AssertionError(f"a declaration: {data}")

    def all(self, tag, **attributes):
        return [attrs for name, attrs in self.elements if name == tag
                and all(attrs.get(key) == value for key, value in attributes.items())]

    def text(self, *within):
        """All text in such elements, one in the other."""
        return "".join(data for path, data in self.texts
                       if all(tag in path for tag in within))

    def addresses(self):
        return [value for _, attrs in self.elements for name, value in attrs.items()
                if name in ADDRESSES]


class PreviewTest(kraddontest.CliTest):

    def set(self, document, value, name="p.kraddon"):
        self.write("document.json", json.dumps(value))
        self.ok("set", "--no-verify", name, document, "document.json")

    def page(self, name="p.kraddon", *words):
        """The page of a package, with the checks that every page must pass."""
        result = self.ok("preview", name, "-o", "-", *words)
        page = PageReader(result.text)
        self.assertTrue(result.text.startswith("<!DOCTYPE html>\n<html lang=\"en\">"))
        self.assert_loads_nothing(page)
        self.assert_is_ordered(page)
        return page

    def assert_loads_nothing(self, page):
        for address in page.addresses():
            self.assertRegex(address, r"\A(data:image/(png|jpeg|gif|webp|bmp);base64,[A-Za-z0-9+/]*"
                                      r"=*|#[a-z-]+|mailto:[\w.+-]+@[\w.-]+|https?://[!-~]+)\Z")
        self.assertNotRegex(page.style, r"url\(|@import|expression|<")
        for tag, attrs in page.elements:
            self.assertNotIn(tag, {"script", "link", "iframe", "object", "embed", "base", "form"})
            self.assertFalse([name for name in attrs if name.startswith("on") or name == "style"])
        policy = page.all("meta", **{"http-equiv": "Content-Security-Policy"})[0]["content"]
        self.assertIn("default-src 'none'", policy)

    def assert_is_ordered(self, page):
        levels = [level for level, _ in page.headings]
        self.assertEqual(levels.count(1), 1)
        self.assertEqual(levels[0], 1)
        for above, below in zip(levels, levels[1:]):
            self.assertLessEqual(below, above + 1, page.headings)
        for attrs in page.all("img"):
            self.assertIn("alt", attrs)
        for attrs in page.all("th"):
            self.assertIn(attrs.get("scope"), {"row", "col"})
        for tag in ("main", "header", "footer"):
            self.assertEqual(len(page.all(tag)), 1, tag)
        for attrs in page.all("a"):
            if attrs["href"].startswith("#"):
                self.assertIn(attrs["href"][1:], page.ids)

    def furnish(self, say, name="p.kraddon", paths=None):
        """Gives a package every document, each text made by say(field)."""
        paths = paths or {}
        for field in ("name", "version", "summary", "description", "authorName", "authorContact",
                      "authorOrganization", "GUID"):
            self.ok("set", "--no-verify", name, "properties", f"{field}={say(field)}")
        self.set("license", {"type": say("license type"), "text": say("license text")}, name)
        self.set("configuration", {"korvanPaths": [say("search path")],
                                   "javaClassPaths": [say("class path")]}, name)
        self.set("apps", [{"name": say("app name"), "guid": say("app guid"),
                           "relativePath": say("app path"), "installByDefault": flag}
                          for flag in ("true", "false")], name)
        self.set("examples", [{"name": say("category"), "examples": [
            {"name": say("example name"), "type": say("example type"),
             "source": say("example source"), "main": say("example main"),
             "thumbnail": paths.get("thumbnail", say("thumbnail")),
             "images": paths.get("images", [say("image")])}]}], name)
        self.set("revisions", [{"date": say("date"), "version": say("revision version"),
                                "description": say("revision text")}], name)
        self.set("requirements", {
            "productDependency": [{"name": say("product"), "version": say("product version"),
                                   "identifier": say("product identifier")}],
            "supportPackageDependency": [{"name": say("support"), "version": say("support version"),
                                          "identifier": say("support identifier")}]}, name)
