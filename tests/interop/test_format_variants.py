# SPDX-License-Identifier: MIT
"""What docs/format-reference.md allows and refuses beyond what the program writes: the independent
reader and the program agree."""

import re
import unittest
import zlib

import format_reader
from format_case import LINKS, TYPES, FormatCase

LICENSE, TABLE = "metadata/license.xml", "metadata/fileTree.xml"
HOST, ADDON = "metadata/hostProperties.xml", "metadata/addonProperties.xml"
EXTERNAL = 'TargetMode="External"'
KINDS = ("addonProperties", "license", "configuration", "applications", "examples",
         "revisionHistory", "systemRequirements", "primaryScreenShot")


def xml(body, encoding="UTF-8", version="1.0"):
    return '<?xml version="%s" encoding="%s"?>%s' % (version, encoding, body)


def terms(text="ö😀"):
    return '<license><licenseText type="ä">%s</licenseText></license>' % text


def nested(depth):
    return "<a>" * depth + "</a>" * depth


def link(kind, target, more=""):
    kind = kind if ":" in kind else format_reader.RELATIONSHIPS + kind
    return '<Relationship Id="%s" Type="%s" Target="%s" %s/>' % (
        "x%d" % zlib.crc32((kind + target).encode()), kind, target, more)


def without(links, *kinds):
    for kind in kinds:
        links = re.sub(r'<Relationship [^>]*/%s"[^>]*/>' % kind, "", links)
    return links


def added(links, *more):
    return links.replace("</Relationships>", "".join(more) + "</Relationships>")


class VariantCase(FormatCase):
    """A package with one of everything, and changed copies of it."""

    def setUp(self):
        super().setUp()
        self.make({"README": "hi", "lib/a.m": "x", "lib/größe.m": "y"}, ["empty"])
        self.set("license", {"type": "MIT", "text": "terms"})
        self.set("configuration", {"korvanPaths": ["."], "javaClassPaths": []})
        self.set("apps", [{"name": "n", "guid": "g", "relativePath": "a",
                           "installByDefault": "true"}])
        self.set("examples", [{"name": "c", "examples": []}])
        self.set("revisions", [{"date": "d", "version": "v", "description": "x"}])
        self.set("requirements", {"productDependency": [
            {"name": "n", "version": "v", "identifier": "i"}]})
        self.write("s.png", b"\x89PNG\r\n\x1a\n")
        self.kraddon("screenshot", "p.kraddon", "s.png")

    def agree(self, changes):
        self.rewrite(changes)
        return self.assert_agree("q.kraddon")

    def refuse(self, changes, *words):
        self.rewrite(changes)
        self.assert_both_refuse(*(words or ("info", "q.kraddon", "--digest")))

    def relinked(self, change):
        return {LINKS: lambda links: change(links).encode()}


class Documents(VariantCase):
    def license_of(self, content):
        return self.agree({LICENSE: content})["documents"]["license"]

    def test_are_read_in_utf_8_and_utf_16(self):
        for content in (terms().encode(), xml(terms()).encode("utf-8-sig"),
                        xml(terms(), "utf-8").encode(), terms().encode("utf-16"),
                        xml(terms(), "UTF-16").encode("utf-16"),
                        b"\xfe\xff" + xml(terms(), "utf-16").encode("utf-16-be")):
            with self.subTest(content[:60]):
                self.assertEqual(self.license_of(content), {"type": "ä", "text": "ö😀"})

    def test_are_refused_in_other_encodings_and_versions(self):
        for content in (xml(terms("o"), "ISO-8859-1").encode("latin-1"),
                        xml("<a/>", "US-ASCII").encode(), xml("<a/>", "UTF-16").encode(),
                        xml("<a/>", "utf8").encode(), xml("<a/>").encode("utf-16"),
                        xml("<a/>", "UTF-16LE").encode("utf-16"), b"<a>\xff</a>",
                        xml("<a/>", version="1.1").encode(), b"<!DOCTYPE a><a/>", b"", b"<a>",
                        b"<a>&b;</a>", b"<q:a/>", b"<a>&#0;</a>", b"<a>&#xFFFE;</a>"):
            with self.subTest(content[:60]):
                self.refuse({LICENSE: content}, "get", "q.kraddon", "license")

    def test_may_be_256_levels_deep(self):
        self.license_of(terms(nested(254)).encode())

        self.refuse({LICENSE: terms(nested(255)).encode()}, "get", "q.kraddon", "license")

    def test_are_read_by_local_names_and_by_all_of_their_text(self):
        content = (b'<!--c--><p:q xmlns:p="u" xmlns:o="v"><o:z/>\n<p:licenseText o:type="no" '
                   b'type=" t\t\r\nu&#9;v&#10;">a<!-- c --><![CDATA[<b>\r\n&]]><?pi x?><i>n'
                   b'<licenseText>m</licenseText></i>\r\ne\r</p:licenseText>'
                   b'<licenseText type="2">second</licenseText></p:q>\n<!-- end -->')

        found = self.license_of(content)

        self.assertEqual(found, {"type": " t  u\tv\n", "text": "a<b>\n&nm\ne\n"})

    def test_are_read_with_missing_values_as_empty(self):
        for content in ("<l/>", "<l><licenseText/></l>", "<l>text</l>",
                        '<l xmlns:o="v"><licenseText o:type="no"/></l>',
                        '<l><g><licenseText type="deeper">x</licenseText></g></l>'):
            with self.subTest(content):
                self.assertEqual(self.license_of(content), {"type": "", "text": ""})

    def test_have_flags_that_are_true_only_for_the_text_true(self):
        flags = ["true", "false", "TRUE", "True", "1", " true", "true ", "yes", ""]
        content = "<a>%s<application/></a>" % "".join(
            '<application installByDefault="%s"><file>1</file><file>2</file></application>' % flag
            for flag in flags)

        found = self.agree({"metadata/applications.xml": content})["documents"]["apps"]

        self.assertEqual([app["installByDefault"] for app in found], ["true"] + ["false"] * 9)
        self.assertEqual([app["relativePath"] for app in found], ["1"] * 9 + [""])

    def test_have_examples_whose_last_file_of_a_type_counts(self):
        files = [("main", "1"), ("main", "2"), ("source", "3"), ("source", ""), ("image", "4"),
                 ("Image", "5"), ("other", "6"), ("image", ""), ("thumbnail", "7")]
        content = ('<e><exampleCategory><example name="e"><file>0</file>%s</example><example/>'
                   "</exampleCategory><exampleCategory/><example/></e>" % "".join(
                       '<file type="%s">%s</file>' % file for file in files))

        found = self.agree({"metadata/examples.xml": content})["documents"]["examples"]

        self.assertEqual(found[0]["examples"][0], {
            "name": "e", "type": "", "source": "", "main": "2", "thumbnail": "7",
            "images": ["4", ""]})

    def test_have_lists_of_which_the_first_counts(self):
        content = ("<c><korvanPath>0</korvanPath><korvanPaths><korvanPath/><z/><korvanPath>a"
                   "</korvanPath></korvanPaths>"
                   "<korvanPaths><korvanPath>b</korvanPath></korvanPaths>"
                   "<javaClassPaths/><javaClassPaths><javaClassPath>c</javaClassPath>"
                   "</javaClassPaths></c>")
        needs = ('<s><requiredSupportPackages><product name="no"/><supportPackage name="s" x="1"/>'
                 "</requiredSupportPackages><requiredProducts/>"
                 '<requiredProducts><product name="p"/></requiredProducts></s>')

        found = self.agree({"metadata/configuration.xml": content,
                            "metadata/systemRequirements.xml": needs})["documents"]

        self.assertEqual(found["configuration"], {"korvanPaths": ["", "a"], "javaClassPaths": []})
        self.assertEqual(found["requirements"], {
            "productDependency": None,
            "supportPackageDependency": [{"name": "s", "version": "", "identifier": ""}]})

    def test_have_an_author_by_the_first_element_that_names_one(self):
        cases = {
            "<authors><author><name>1</name><name>x</name><contact>c</contact></author>"
            "<author><organization>o</organization></author></authors><authors/>": "1",
            "<authors><author><name/></author></authors>": "",
            "<authors><author><contact>x</contact></author></authors>": "A",
            "<authors/><authors><author><name>3</name></author></authors>": "A",
            "<author><name>q</name></author>": "A", "": "A"}
        for content, author in cases.items():
            with self.subTest(content):
                found = self.agree({ADDON: "<a>%s</a>" % content})["documents"]["properties"]

                self.assertEqual(found["authorName"], author)


class Relationships(VariantCase):
    def test_that_are_missing_leave_documents_empty(self):
        for kind in (*KINDS, "hostProperties", "core-properties", "thumbnail"):
            with self.subTest(kind):
                self.agree(self.relinked(lambda links, kind=kind: without(links, kind)))

        self.agree({LINKS: None})

    def test_of_one_type_leave_the_document_empty(self):
        others = ("/files/README", "/metadata/license.xml", "/nowhere")
        for kind in KINDS:
            for target in others:
                with self.subTest(kind, target=target):
                    found = self.agree(self.relinked(
                        lambda links, new=link(kind, target): added(links, new)))

                    if kind == "license":
                        self.assertEqual(found["documents"]["license"], {"type": "", "text": ""})

    def test_that_lead_nowhere_are_refused(self):
        for kind in KINDS:
            for target, more in (("/nowhere", ""), ("http://example.org/", EXTERNAL)):
                if (kind, more) == ("primaryScreenShot", EXTERNAL):
                    continue
                with self.subTest(kind, target=target):
                    self.refuse(self.relinked(lambda links, kind=kind, new=link(
                        kind, target, more): added(without(links, kind), new)),
                        *(("info", "q.kraddon", "--digest") if kind in ("addonProperties", "primaryScreenShot")
                          else ("get", "q.kraddon", {
                              "applications": "apps", "revisionHistory": "revisions",
                              "systemRequirements": "requirements"}.get(kind, kind))))

    def test_to_an_external_screenshot_are_ignored(self):
        self.agree(self.relinked(lambda links: added(
            without(links, "primaryScreenShot"),
            link("primaryScreenShot", "http://example.org/", EXTERNAL))))

    def test_to_host_properties_count_from_the_first_that_leads_to_a_part(self):
        host = '<h><korvanRelease>%s</korvanRelease></h>'
        for first in (link("hostProperties", "/nowhere"),
                      link("hostProperties", "http://example.org/", EXTERNAL)):
            found = self.agree({
                HOST: host % "second",
                **self.relinked(lambda links, first=first: links.replace(
                    "<Relationship ", first + "<Relationship ", 1))})

            self.assertEqual(found["documents"]["properties"]["KorvanRelease"], "second")

    def test_to_core_properties_are_refused_if_there_are_two(self):
        self.refuse(self.relinked(lambda links: added(
            links, link(format_reader.CORE, "/metadata/coreProperties.xml"))))

    def test_have_targets_that_are_references(self):
        for target in ("metadata/license.xml", "./metadata/license.xml",
                       "/x/../metadata/license.xml", "../metadata/license.xml",
                       "/METADATA/License.XML", "/metadata/license.xml#f",
                       "/metadata/license.xml?q", "/metadata/%6Cicense.xml",
                       "/metadata\\license.xml"):
            with self.subTest(target):
                found = self.agree(self.relinked(lambda links, new=link("license", target): added(
                    without(links, "license"), new)))

                self.assertEqual(found["documents"]["license"], {"type": "MIT", "text": "terms"})

    def test_of_any_type_are_refused_if_the_target_is_not_a_part_name(self):
        for target in ("", "//host/metadata/license.xml", "file:///metadata/license.xml",
                       "%2Fmetadata/license.xml"):
            with self.subTest(target):
                self.refuse(self.relinked(
                    lambda links, new=link("urn:other", target): added(links, new)))

    def test_lead_to_documents_under_any_name(self):
        entries = self.entries()
        moves = {LICENSE: "files/lib/gr%C3%B6%C3%9Fe.m", "metadata/applications.xml": "Apps.XML",
                 "metadata/primaryScreenShot.png": "a/b/gr%C3%BCn.PNG", TABLE: "t/able.xml"}

        def moved(text):
            for old, new in moves.items():
                text = text.replace('"/%s"' % old, '"/%s"' % new)
            return text.encode()

        found = self.agree({**dict.fromkeys(moves), TYPES: moved, LINKS: moved,
                            **{new: entries[old] for old, new in moves.items()}})

        self.assertEqual(found["documents"]["license"]["text"], "terms")
        self.assertEqual(found["screenshot"]["part"], "/a/b/gr%C3%BCn.PNG")


class FileTrees(VariantCase):
    def table(self, body):
        return {TABLE: '<fileTree xmlns="%s/fileTree">%s</fileTree>' % (format_reader.ROOT, body)}

    def test_are_read_from_tables_in_other_spellings(self):
        for body in ('\n <!-- c --> text <folder path="e2" x="1"><y/></folder>',
                     '<folder path="a%20b/%41/%25"/><folder path="ä b"/>',
                     '<folder path="a%0Ab"/><folder path="a%2Fb"/><folder path="a\\b"/>',
                     '<folder path="a"/><folder path="a/b"/><folder path="lib"/>',
                     '<folder xmlns="" path="a"/><u:folder xmlns:u="u" path="b"/>',
                     '<file path="x y" part="/FILES/readme"/>', '<file path="README" '
                     'part="/files/lib/a.m"/>', '<file path="lib" part="/metadata/license.xml"/>',
                     '<file path="README/x" part="/metadata/fileTree.xml"/>'):
            with self.subTest(body):
                self.agree(self.table(body))

    def test_are_refused_when_the_table_has_a_fault(self):
        folders = ["", "/a", "a/", "a//b", ".", "a/..", "%00", "%C3", "%zz", "%", "README",
                   "README/x"]
        file = '<file path="%s" part="/files/%s"/>'
        for body in (*('<folder path="%s"/>' % path for path in folders), "<folder/>",
                     '<folder path="a"/>' * 2, '<other path="a"/>', '<o xmlns="u"/>',
                     file % ("a", "nothing"), file % ("a", "%52EADME"), '<file path="a"/>',
                     '<file part="/files/README"/>', '<file path="a" part="/_rels/.rels"/>',
                     file % ("a", "README") + file % ("b", "readme"),
                     file % ("a", "README") + file % ("a", "lib/a.m"),
                     file % ("a", "README") + file % ("a/b", "lib/a.m"),
                     file % ("a", "README") + '<folder path="a/b"/>'):
            with self.subTest(body):
                self.refuse(self.table(body), "list", "q.kraddon")

    def test_are_refused_when_the_table_has_another_root(self):
        for root in ("<fileTree/>", '<tree xmlns="%s/fileTree"/>' % format_reader.ROOT):
            self.refuse({TABLE: root}, "list", "q.kraddon")

    def test_have_a_table_by_name_when_no_relationship_leads_to_one(self):
        found = self.agree(self.relinked(lambda links: without(links, "fileTree")))

        self.assertIn(("empty", "folder"), found["listing"])

    def test_are_refused_when_relationships_lead_to_two_tables_or_to_none(self):
        table = link("fileTree", "/metadata/fileTree.xml")
        nowhere, outside = link("fileTree", "/no"), link("fileTree", "http://a/", EXTERNAL)
        for links in (lambda old: added(old, table), lambda old: added(old, nowhere),
                      lambda old: added(without(old, "fileTree"), nowhere),
                      lambda old: added(without(old, "fileTree"), outside)):
            self.refuse(self.relinked(links), "list", "q.kraddon")

    def parts(self, *names):
        return {**{name: name.encode() for name in names}, TYPES: lambda types: types.replace(
            "<Default ", '<Default Extension="q" ContentType="text/q"/><Default ', 1).encode()}

    def test_have_the_files_that_are_parts(self):
        for name, path in (
                ("ä.q", "ä.q"), ("a%20b.q", "a b.q"), ("%2541.q", "%41.q"), ("x%c3%b6.q", "xö.q"),
                ("(x).q", "(x).q"), ("%28x%29.q", "(x).q"), ("...q", "...q"), ("X.Q", "X.Q"),
                ("_rels/x.q", "_rels/x.q"), ("a%E2%80%A8.q", "a\u2028.q"),
                ("%EF%BF%BE.q", "\ufffe.q")):
            for folder in ("files/", "FILES/"):
                with self.subTest(folder + name):
                    found = self.agree(self.parts(folder + name))

                    self.assertEqual(found["files"][path], (folder + name).encode())

    def test_do_not_include_other_entries(self):
        for name in (
                "a%0A.q", "a%7F.q", "a%C2%85.q", "%41.q", "a b.q", "%25%34%31.q", "a%5Cb.q",
                "a%2Fb.q", "%C3.q", "%ED%A0%80.q", "%00.q", "x/", "/y.q", "./y.q",
                "%2E.q", "d./x.q", "x[0].q", "x%7e.q", "x.unknown", "x", "_rels/x.q.rels",
                "_RELS/.RELS", "x%.q", "a\"b.q", "x.q ", "[Content_Types].q"):
            with self.subTest(name):
                found = self.agree(self.parts("files/" + name))

                self.assertEqual(len(found["files"]), 3)

    def test_are_refused_with_a_segment_of_two_dots(self):
        for name in ("files/../y.q", "../y.q", "..", "files\\..\\y.q"):
            with self.subTest(name):
                self.refuse(self.parts(name), "list", "q.kraddon")

    def test_have_the_first_of_two_parts_with_one_path(self):
        for names in (("files/(.q", "files/%28.q"), ("files/%28.q", "files/(.q"),
                      ("files/(.q/x.q", "files/%28.q"), ("files/(.q", "files/%28.q/x.q")):
            with self.subTest(names):
                found = self.agree(self.parts(*names))

                self.assertIn(names[0].encode(), found["files"].values())
                self.assertNotIn(names[1].encode(), found["files"].values())

    def test_are_refused_when_part_names_are_the_same_or_extend_each_other(self):
        for names in (("files/n.q", "files/N.Q"), ("files/n.q", "files/N.q/m.q"),
                      ("metadata/license.xml/x.q",)):
            with self.subTest(names):
                self.refuse(self.parts(*names), "list", "q.kraddon")


if __name__ == "__main__":
    unittest.main()
