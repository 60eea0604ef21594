# SPDX-License-Identifier: MIT
"""Parts, items and relationships that the format of add-ons does not know: digest and diff"""

import hashlib
import zipfile

import kraddontest

TYPES = ('<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
         '<Default Extension="xml" ContentType="application/xml"/>'
         '<Default Extension="rels" '
         'ContentType="application/vnd.openxmlformats-package.relationships+xml"/>%s</Types>')
RELS = '<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">%s' \
       '</Relationships>'


def relationship(number, kind, target, mode=""):
    mode = f' TargetMode="{mode}"' if mode else ""
    return f'<Relationship Id="{number}" Type="{kind}" Target="{target}"{mode}/>'


class OtherParts(kraddontest.CliTest):

    def foreign(self, name, parts, rels="", types=""):
        """A package that is not an add-on."""
        with zipfile.ZipFile(self.path(name), "w") as archive:
            archive.writestr("[Content_Types].xml", TYPES % types)
            if rels:
                archive.writestr("_rels/.rels", RELS % rels)
            for item, content in parts.items():
                archive.writestr(item, content)

    def changed(self, name="q.kraddon", change=lambda entries: None):
        entries = self.entries()
        change(entries)
        with zipfile.ZipFile(self.path(name), "w") as archive:
            for item, content in entries.items():
                archive.writestr(item, content)

    def digest(self, name):
        return self.ok("info", name, "--field", "digest").text.strip()

    def differs(self, a, b, *words, warns=True):
        result = self.run_kraddon("diff", a, b, *words)
        self.assertEqual(result.code, 1, result.errors)
        expected = "".join(f"kraddon: diff: warning: package '{name}': it is not an add-on; all of "
                           "its parts are compared\n" for name in (a, b)) if warns else ""
        self.assertEqual(result.errors, expected)
        self.assertNotEqual(self.digest(a), self.digest(b))
        return result.text

    def test_packages_with_different_parts_differ(self):
        self.foreign("m.docx", {"a.xml": "<a/>", "same.xml": "<s/>"})
        self.foreign("n.docx", {"c.xml": "<b>other</b>", "same.xml": "<s/>"})
        self.assertEqual(self.differs("m.docx", "n.docx"), "- /a.xml  4 B\n+ /c.xml  12 B\n")
        self.assertEqual(self.run_kraddon("diff", "m.docx", "m.docx").code, 0)

    def test_the_content_type_counts(self):
        self.foreign("m.docx", {"a.xml": "<a/>"})
        self.foreign("n.docx", {"a.xml": "<a/>"},
                     types='<Override PartName="/a.xml" ContentType="text/xml"/>')
        self.assertEqual(self.differs("m.docx", "n.docx"),
                         'parts[/a.xml].contentType: "application/xml" -> "text/xml"\n')

    def test_relationships_count_but_not_their_ids_and_order(self):
        one, two = ("rId1", "http://x.org/1", "a.xml"), ("rId2", "http://x.org/2", "/a.xml")
        out = ("rId3", "http://x.org/3", "http://x.org/", "External")
        self.foreign("m.docx", {"a.xml": "<a/>"}, relationship(*one) + relationship(*two))
        self.foreign("n.docx", {"a.xml": "<a/>"},
                     relationship("x", *two[1:]) + relationship("y", *one[1:]))
        self.assertEqual(self.digest("m.docx"), self.digest("n.docx"))
        self.assertEqual(self.run_kraddon("diff", "m.docx", "n.docx").code, 0)

        self.foreign("n.docx", {"a.xml": "<a/>"}, relationship(*one) + relationship(*out))
        self.assertEqual(
            self.differs("m.docx", "n.docx"),
            'relationships[/]: removed "http://x.org/2 -> /a.xml"\n'
            'relationships[/]: added "http://x.org/3 -> http://x.org/"\n')

    def test_relationships_of_parts_count(self):
        for name, target in (("m.docx", "b.xml"), ("n.docx", "c.xml")):
            self.foreign(name, {"d/a.xml": "<a/>", "d/_rels/a.xml.rels":
                                RELS % relationship("r", "http://x.org/1", target)})
        self.assertEqual(self.differs("m.docx", "n.docx"),
                         'relationships[/d/a.xml]: removed "http://x.org/1 -> /d/b.xml"\n'
                         'relationships[/d/a.xml]: added "http://x.org/1 -> /d/c.xml"\n')

    def test_the_digest_is_computed_as_documented(self):
        self.foreign("m.docx", {"a.xml": "<a/>", "item": "no part"},
                     relationship("r", "http://x.org/1", "a.xml")
                     + relationship("s", "http://x.org/2", "http://x.org/", "External"))
        relationships = (b"http://x.org/1\0Internal\0/a.xml\n"
                         b"http://x.org/2\0External\0http://x.org/\n")
        content = {b"/a.xml?ContentType=application/xml": b"<a/>", b"/item?ContentType=": b"no part",
                   b"/#relationships": relationships}
        lines = b"".join(path + b"\0" + hashlib.sha256(content[path]).hexdigest().encode() + b"\n"
                         for path in sorted(content))
        self.assertEqual(self.digest("m.docx"), "sha256:" + hashlib.sha256(lines).hexdigest())

    def test_what_is_added_to_an_add_on_is_seen(self):
        self.package("p.kraddon", {"a.m": "x"})
        plain = self.digest("p.kraddon")

        self.changed(change=lambda entries: entries.update({"other/payload.bin": b"evil"}))
        self.assertEqual(self.differs("p.kraddon", "q.kraddon", warns=False),
                         "+ /other/payload.bin  4 B\n")
        self.changed(change=lambda entries: entries.update({"_rels/.rels": entries[
            "_rels/.rels"].replace(b"</Relationships>", relationship(
                "x", "http://x.org/1", "/files/a.m").encode() + b"</Relationships>")}))
        self.assertEqual(self.differs("p.kraddon", "q.kraddon", warns=False),
                         'relationships[/]: added "http://x.org/1 -> /files/a.m"\n')
        self.changed()
        self.assertEqual(self.digest("q.kraddon"), plain)
        self.assertEqual(self.run_kraddon("diff", "p.kraddon", "q.kraddon").code, 0)

    def test_the_digest_of_a_plain_add_on_stays(self):
        self.tree({"a.m": "x", "end.": "y", "lib/empty/": ""})
        self.write("shot.png", b"\x89PNG\r\n\x1a\n")
        self.ok("create", "p.kraddon", "src", "--name", "Wave", "--guid",
                "0c3a0d9e-5b7a-4a53-9c58-6f0d2f4f8a11", "--timestamp", "0")
        self.ok("set", "p.kraddon", "license", "type=MIT", "text=terms")
        self.ok("screenshot", "p.kraddon", "shot.png")
        self.assertEqual(self.digest("p.kraddon"), "sha256:739406fa0302b9896db8583ffe07da6f9adb6822d80160dc51e3a6dc2626f696")

    def test_text_output_holds_only_files(self):
        self.foreign("m.docx", {"a.xml": "<a/>\n"})
        self.foreign("n.docx", {"a.xml": "<b/>\n"})
        self.assertEqual(self.differs("m.docx", "n.docx", "--text"), "~ /a.xml  5 B\n")


if __name__ == "__main__":
    kraddontest.main()
