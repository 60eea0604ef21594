# SPDX-License-Identifier: MIT
"""set and screenshot on packages that other programs wrote: what was stored comes back"""

import json
import re
import zipfile

import kraddontest
import projecttest

PNG, OTHER = projecttest.png(1), projecttest.png(2)
OLD, NEW = {"type": "OLD", "text": "old terms"}, {"type": "NEW", "text": "new terms"}
SHOT = b"relationships/primaryScreenShot"
LICENSE = b"http://schemas.pellandry.example/korvan/addon/2014/relationships/license"


class Replacing(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", {"a.m": "x", "b.m": "y"})
        self.ok("set", "p.kraddon", "license", "-", stdin=json.dumps(OLD).encode())
        self.write("shot.png", PNG)

    def rewrite(self, change):
        """Another program changes {item: content}."""
        entries = self.entries()
        change(entries)
        with zipfile.ZipFile(self.path("p.kraddon"), "w") as archive:
            for name, content in entries.items():
                archive.writestr(name, content)

    def relate(self, *changes):
        """Replaces text of the package's relationships; b"" appends one."""
        def change(entries):
            rels = entries["_rels/.rels"]
            for old, new in changes:
                if old:
                    self.assertIn(old, rels)
                    rels = rels.replace(old, new)
                else:
                    rels = rels.replace(b"</Relationships>", new + b"</Relationships>")
            entries["_rels/.rels"] = rels
        self.rewrite(change)

    def move_part(self, old, new, kind=None):
        def change(entries):
            entries[new] = entries.pop(old)
            for name in ("[Content_Types].xml", "_rels/.rels"):
                entries[name] = entries[name].replace(f"/{old}".encode(), f"/{new}".encode())
        self.rewrite(change)

    # What other programs do to the license.
    def lead_elsewhere(self):
        self.move_part("metadata/license.xml", "docs/lic.xml")

    def lose_part(self):
        self.rewrite(lambda entries: entries.pop("metadata/license.xml"))

    def relate_twice(self):
        self.relate((b"", b'<Relationship Id="again" Type="' + LICENSE +
                     b'" Target="/metadata/license.xml"/>'))

    def relate_never(self):
        self.relate((LICENSE, b"http://example.org/other"))

    def lead_out(self):
        self.relate((b'Target="/metadata/license.xml"',
                     b'Target="http://example.org/l" TargetMode="External"'))

    def lead_to_a_file(self):
        self.relate((b"/metadata/license.xml", b"/files/a.m"))

    def lose_type(self):
        def change(entries):
            entries["[Content_Types].xml"] = re.sub(
                rb'<Override[^>]*/metadata/license.xml[^>]*>|<Default[^>]*"xml"[^>]*>', b"",
                entries["[Content_Types].xml"])
        self.rewrite(change)

    def test_references_that_mv_renamed_come_back(self):
        app = {"name": "A", "guid": "0c3a0d9e-5b7a-4a53-9c58-6f0d2f4f8a11",
               "relativePath": "a.m", "installByDefault": "true"}
        self.ok("set", "p.kraddon", "apps", "-", "--no-verify", "-q",
                stdin=json.dumps([app]).encode())
        self.move_part("metadata/applications.xml", "docs/apps.xml")

        self.run_kraddon("mv", "p.kraddon", "a.m", "lib/a.m", "-q")

        self.assertEqual(self.ok("get", "p.kraddon", "apps").json,
                         [{**app, "relativePath": "lib/a.m"}])

    def test_a_document_that_was_set_comes_back(self):
        for damage in (self.lead_elsewhere, self.lose_part, self.relate_twice, self.relate_never,
                       self.lead_out, self.lead_to_a_file):
            with self.subTest(damage.__name__):
                self.setUp()
                damage()
                self.ok("set", "p.kraddon", "license", "-", stdin=json.dumps(NEW).encode())
                self.assertEqual(self.ok("get", "p.kraddon", "license").json, NEW)
                self.assertEqual(self.listing(), ["a.m", "b.m"])
                verdict = self.run_kraddon("verify", "p.kraddon", "--json").json["packages"][0]
                self.assertEqual([one["id"] for one in verdict["findings"]
                                  if one["severity"] == "error"], [])

    def test_an_item_without_content_type_is_not_in_the_way(self):
        self.lose_type()
        self.fails("set", "p.kraddon", "license", "-", stdin=json.dumps(NEW).encode())
        self.relate((LICENSE, b"http://example.org/other"), (b"/metadata/license.xml", b"/gone"))
        self.ok("set", "p.kraddon", "license", "-", stdin=json.dumps(NEW).encode())
        self.assertEqual(self.ok("get", "p.kraddon", "license").json, NEW)
        with zipfile.ZipFile(self.path("p.kraddon")) as archive:
            self.assertEqual(archive.namelist().count("metadata/license.xml"), 1)

    def test_fields_of_a_document_that_can_be_read_keep_the_others(self):
        self.lead_elsewhere()
        self.ok("set", "p.kraddon", "license", "type=NEW")
        self.assertEqual(self.ok("get", "p.kraddon", "license").json, dict(OLD, type="NEW"))
        self.assertNotIn("docs/lic.xml", self.entries())

    def test_fields_of_a_document_that_cannot_be_read_are_not_changed(self):
        for damage in (self.lose_part, self.relate_twice, self.relate_never, self.lead_out):
            with self.subTest(damage.__name__):
                self.setUp()
                damage()
                before = self.path("p.kraddon").read_bytes()
                self.fails("set", "p.kraddon", "license", "type=NEW",
                           hint="'kraddon set PACKAGE license FILE.json' replaces the document")
                self.assertEqual(self.path("p.kraddon").read_bytes(), before)

    def test_the_properties_come_back(self):
        kind = b"relationships/addonProperties"
        self.relate((kind, b"relationships/other"))
        properties = self.ok("get", "p.kraddon", "properties").json
        for field in ("summary", "description", "authorName", "authorContact"):
            properties[field] = "new"
        properties["GUID"] = "0c3a0d9e-5b7a-4a53-9c58-6f0d2f4f8a11"
        self.ok("set", "p.kraddon", "properties", "-", stdin=json.dumps(properties).encode())
        self.assertEqual(self.ok("get", "p.kraddon", "properties").json, properties)

    def stored(self):
        return self.ok("screenshot", "p.kraddon", "-o", "-").out

    def test_a_screenshot_under_other_ids_is_replaced(self):
        self.ok("screenshot", "p.kraddon", "shot.png")
        self.relate((b"rId100", b"s1"), (b"rId101", b"s2"))
        self.write("shot.png", OTHER)
        self.ok("screenshot", "p.kraddon", "shot.png")
        self.assertEqual(self.stored(), OTHER)
        self.assertEqual(self.entries()["_rels/.rels"].count(b"primaryScreenShot.png"), 2)

    def test_a_screenshot_of_another_shape_is_replaced(self):
        again = b'<Relationship Id="again" Type="%s" Target="/metadata/primaryScreenShot.png"/>'
        kind = (b"http://schemas.pellandry.example/korvan/addon/2014/relationships/"
                b"primaryScreenShot")
        for changes in ([(b"", again % kind)],
                        [(b'Target="/metadata/primaryScreenShot.png"', b'Target="/gone.png"')],
                        [(b'Target="/metadata/primaryScreenShot.png"', b'Target="/files/a.m"')]):
            with self.subTest(changes=changes):
                self.setUp()
                self.ok("screenshot", "p.kraddon", "shot.png")
                self.relate(*changes)
                self.write("shot.png", OTHER)
                self.ok("screenshot", "p.kraddon", "shot.png")
                self.assertEqual(self.stored(), OTHER)
                self.assertEqual(self.listing(), ["a.m", "b.m"])

    def test_a_part_with_the_name_of_a_screenshot_may_be_something_else(self):
        self.ok("screenshot", "p.kraddon", "shot.png")
        self.relate((SHOT, b"relationships/other"))
        self.ok("unset", "p.kraddon", "screenshot")
        self.fails("screenshot", "p.kraddon", "shot.png",
                   message="cannot store the screenshot in 'p.kraddon': something else uses the "
                           "name of its part",
                   hint="an image of another format gets another name")
        self.write("shot.gif", b"GIF89a....")
        self.ok("screenshot", "p.kraddon", "shot.gif")
        self.assertEqual(self.stored(), b"GIF89a....")
        self.assertEqual(self.entries()["metadata/primaryScreenShot.png"], PNG)

    def test_what_has_the_id_of_a_screenshot_is_never_deleted(self):
        for number, taken in ((b"rId100", "the relationship 'rId100'"),
                              (b"rId101", "the relationship 'rId101'")):
            for kind, target in ((LICENSE, b"/metadata/license.xml"),
                                 (b"http://example.org/x", b"/files/b.m")):
                with self.subTest(number=number, kind=kind):
                    self.setUp()
                    if kind == LICENSE:
                        rels = self.entries()["_rels/.rels"]
                        old = next(one for one in re.findall(rb"<Relationship [^>]*>", rels)
                                   if LICENSE in one)
                        self.relate((old, b""))
                    self.relate((b"", b'<Relationship Id="%s" Type="%s" Target="%s"/>'
                                 % (number, kind, target)))
                    before = self.path("p.kraddon").read_bytes()
                    self.fails("screenshot", "p.kraddon", "shot.png",
                               message=f"cannot store the screenshot in 'p.kraddon': {taken} leads"
                                       f" to '{target.decode()}', which is not a screenshot",
                               hint="'kraddon unset p.kraddon screenshot' gives it another id")
                    self.assertEqual(self.path("p.kraddon").read_bytes(), before)

                    self.ok("unset", "p.kraddon", "screenshot")
                    self.assertEqual(self.ok("get", "p.kraddon", "license").json, OLD)
                    self.assertEqual(self.entries()["_rels/.rels"].count(target), 1)
                    self.ok("screenshot", "p.kraddon", "shot.png")
                    self.assertEqual(self.stored(), PNG)
                    self.assertEqual(self.ok("get", "p.kraddon", "license").json, OLD)
                    self.assertEqual(self.listing(), ["a.m", "b.m"])

    def test_a_part_without_relationship_is_removed_with_the_screenshot(self):
        self.ok("screenshot", "p.kraddon", "shot.png")
        ids = [one for one in re.findall(rb"<Relationship [^>]*>", self.entries()["_rels/.rels"])
               if b"rId10" in one]
        self.relate(*((one, b"") for one in ids))
        orphaned = self.path("p.kraddon").read_bytes()

        self.ok("unset", "p.kraddon", "screenshot")
        self.assertNotIn("metadata/primaryScreenShot.png", self.entries())
        self.path("p.kraddon").write_bytes(orphaned)
        self.write("shot.png", OTHER)
        self.ok("screenshot", "p.kraddon", "shot.png")
        self.assertEqual(self.stored(), OTHER)

    def test_only_images_are_stored(self):
        self.ok("screenshot", "p.kraddon", "shot.png")
        before = self.path("p.kraddon").read_bytes()
        none = "it is not a PNG, GIF, TIFF, BMP or JPEG image"
        for name, content, why in (
                ("README.md", b"# Wave\n", none), ("x.png", b"", none), ("x.svg", b"<svg/>", none),
                ("x.webp", b"RIFF....WEBPVP8 ", none),
                ("x.gif", PNG, "it is a PNG image, and its name says GIF"),
                ("x.png", b"GIF89a....", "it is a GIF image, and its name says PNG"),
                ("x.jpg", PNG, "it is a PNG image, and its name says JPEG"),
                ("x.webp", b"\xff\xd8\xff\xe0", "it is a JPEG image, and its name says WebP"),
                ("x.tif", b"II*\0....", "it is a TIFF image, and its name does not end in .tiff"),
                ("x", PNG, "it is a PNG image, and its name does not end in .png")):
            with self.subTest(name=name, content=content):
                self.write(name, content)
                self.fails("screenshot", "p.kraddon", name,
                           message=f"cannot use the image '{name}': {why}")
                self.assertEqual(self.path("p.kraddon").read_bytes(), before)


class BuiltImages(projecttest.ProjectTest):

    def test_what_is_not_an_image_is_an_error_of_build(self):
        self.refuses("4:14': package.screenshot: cannot use the image 'README.md': it is not a "
                     "PNG, GIF, TIFF, BMP or JPEG image",
                     projecttest.LEAST + 'screenshot = "README.md"\n', {"README.md": "# Wave"})
        self.refuses("4:14': package.screenshot: cannot use the image 'x.gif': it is a PNG image, "
                     "and its name says GIF",
                     projecttest.LEAST + 'screenshot = "x.gif"\n', {"x.gif": PNG})
        example = ('[[category]]\nname = "c"\n[[category.example]]\nname = "e"\nmain = "a.m"\n')
        self.refuses("9:13': category[0].example[0].thumbnail: cannot use the image 't.png': it "
                     "is not a PNG, GIF, TIFF, BMP or JPEG image",
                     example + 'thumbnail = "t.png"\n', {"a.m": "a", "t.png": "text"})
        self.refuses("9:20': category[0].example[0].images[1]: cannot use the image 'i.tif': it "
                     "is a PNG image, and its name says TIFF",
                     example + 'images = ["t.png", "i.tif"]\n',
                     {"a.m": "a", "t.png": PNG, "i.tif": PNG})

    def test_form_feeds_of_texts_are_line_ends_in_build_and_set(self):
        self.project('[license]\ntype = "x"\nfile = "COPYING"\n',
                     {"a.m": "a", "COPYING": "page 1\n\f\npage 2\n"})
        self.build("-o", "built.kraddon")
        self.package("p.kraddon")
        self.ok("set", "p.kraddon", "license", "type=x", "text=@COPYING")
        built = self.ok("get", "built.kraddon", "license").json
        self.assertEqual(built, {"type": "x", "text": "page 1\n\n\npage 2\n"})
        self.assertEqual(self.ok("get", "p.kraddon", "license").json, built)
        self.ok("set", "p.kraddon", "license", "text=one\ftwo")
        self.assertEqual(self.ok("get", "p.kraddon", "license").json["text"], "one\ntwo")

    def test_images_are_built(self):
        self.project('[[category]]\nname = "c"\n[[category.example]]\nname = "e"\nmain = "a.m"\n'
                     'thumbnail = "t.png"\nimages = ["i.tif", "j"]\n',
                     {"a.m": "a", "t.png": PNG, "i.tif": b"II*\0....", "j": PNG})
        self.build()


if __name__ == "__main__":
    kraddontest.main()
