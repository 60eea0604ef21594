# SPDX-License-Identifier: MIT
"""kraddon diff names the fields of documents that differ"""

import hashlib

import kraddontest
from differing import DiffTest

APPS = [{"name": "Viewer", "guid": "g-1", "relativePath": "v.m", "installByDefault": "true"},
        {"name": "Editor", "guid": "g-2", "relativePath": "e.m", "installByDefault": "true"}]
EXAMPLE = {"name": "A chirp", "type": "script", "source": "", "main": "chirp.m", "thumbnail": "",
           "images": ["1.png", "2.png"]}
PNG = (b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\1\0\0\0\1\x08\6\0\0\0\x1f\x15\xc4\x89"
       b"\0\0\0\0IEND\xaeB`\x82")


class Documents(DiffTest):

    def setUp(self):
        super().setUp()
        self.pair({}, {})

    def document(self):
        documents = self.report()["documents"]
        self.assertEqual(len(documents), 1)
        return documents[0]

    def fields(self, document, a, b):
        self.set("a.kraddon", document, a)
        self.set("b.kraddon", document, b)
        found = self.document()
        self.assertEqual((found["document"], found["change"]), (document, "changed"))
        return found["fields"]

    def test_properties_have_their_own_place(self):
        self.ok("set", "b.kraddon", "properties", "version=1.2", "summary=short")
        report = self.report()
        self.assertEqual(report["documents"], [])
        self.assertEqual(report["properties"], [{"field": "version", "a": "1.0", "b": "1.2"},
                                                {"field": "summary", "a": "", "b": "short"}])
        self.assertEqual(self.lines(), ['properties.version: "1.0" -> "1.2"',
                                        'properties.summary: "" -> "short"'])

    def test_times_of_a_package_are_not_a_difference(self):
        self.ok("create", "b.kraddon", "--name", "Wave Tools", "--timestamp", "7", "--force")
        self.assertEqual(self.ok("diff", "a.kraddon", "b.kraddon").out, b"")

    def test_documents_come_and_go(self):
        self.set("a.kraddon", "license", {"type": "MIT", "text": "t"})
        self.set("b.kraddon", "apps", APPS)
        self.assertEqual(self.report()["documents"],
                         [{"document": "license", "change": "removed", "fields": []},
                          {"document": "apps", "change": "added", "fields": []}])
        self.assertEqual(self.lines(), ["license: removed", "apps: added"])

    def test_fields_of_a_record_are_named(self):
        self.assertEqual(self.fields("license", {"type": "MIT", "text": "t"},
                                     {"type": "BSD", "text": "t"}),
                         [{"path": "license.type", "a": "MIT", "b": "BSD"}])

    def test_a_record_that_is_put_in_is_the_only_difference(self):
        new = dict(APPS[0], name="New", guid="g-3", relativePath="n.m")
        self.assertEqual(self.fields("apps", APPS, [new, *APPS]),
                         [{"path": "apps[0]", "a": None, "b": new}])
        self.assertEqual(self.lines()[0][:25], 'apps[0]: added {"name":"N')
        self.assertEqual(self.fields("apps", [new, *APPS], APPS),
                         [{"path": "apps[0]", "a": new, "b": None}])
        self.assertEqual(self.lines()[0][:27], 'apps[0]: removed {"name":"N')

    def test_a_record_is_known_by_its_guid(self):
        renamed = dict(APPS[1], name="Editor 2", installByDefault="false")
        new = dict(APPS[0], guid="g-3", name="New", relativePath="n.m")
        self.assertEqual(self.fields("apps", APPS, [APPS[0], new, renamed]), [
            {"path": "apps[1]", "a": None, "b": new},
            {"path": "apps[2].name", "a": "Editor", "b": "Editor 2"},
            {"path": "apps[2].installByDefault", "a": "true", "b": "false"}])

    def test_another_order_is_a_difference(self):
        self.assertEqual(self.fields("apps", APPS, APPS[::-1]), [
            {"path": "apps[0]", "a": APPS[0], "b": None},
            {"path": "apps[1]", "a": None, "b": APPS[0]}])

    def test_lists_in_lists_are_followed(self):
        other = dict(EXAMPLE, thumbnail="t.png", images=["0.png", "1.png", "3.png"])
        self.assertEqual(
            self.fields("examples", [{"name": "First", "examples": [EXAMPLE]}],
                        [{"name": "Zero", "examples": []}, {"name": "First",
                                                            "examples": [other]}]),
            [{"path": "examples[0]", "a": None, "b": {"name": "Zero", "examples": None}},
             {"path": "examples[1].examples[0].thumbnail", "a": "", "b": "t.png"},
             {"path": "examples[1].examples[0].images[0]", "a": None, "b": "0.png"},
             {"path": "examples[1].examples[0].images[1]", "a": "2.png", "b": None},
             {"path": "examples[1].examples[0].images[2]", "a": None, "b": "3.png"}])

    def test_revisions_are_known_by_their_version(self):
        old = {"version": "1.0", "date": "2026-01-01", "description": "first"}
        new = {"version": "1.1", "date": "2026-02-01", "description": "second"}
        self.assertEqual(self.fields("revisions", [old], [new, dict(old, description="First")]),
                         [{"path": "revisions[0]", "a": None, "b": new},
                          {"path": "revisions[1].description", "a": "first", "b": "First"}])

    def test_configuration_and_requirements(self):
        self.assertEqual(self.fields("configuration", {"korvanPaths": ["/", "lib"]},
                                     {"korvanPaths": ["/", "src"], "javaClassPaths": ["a.jar"]}),
                         [{"path": "configuration.korvanPaths[1]", "a": "lib", "b": "src"},
                          {"path": "configuration.javaClassPaths[0]", "a": None, "b": "a.jar"}])
        self.pair({}, {})
        product = {"name": "Korvan", "version": "9.1", "identifier": "KV"}
        found = self.fields("requirements", {"productDependency": [product]},
                            {"productDependency": [dict(product, version="9.2")],
                             "supportPackageDependency": [product]})
        self.assertEqual(found[0], {"path": "requirements.productDependency[0].version",
                                    "a": "9.1", "b": "9.2"})
        self.assertTrue(found[1]["path"].startswith("requirements.supportPackageDependency"))
        self.assertEqual(len(found), 2)

    def test_the_screenshot_counts(self):
        self.write("one.png", PNG)
        self.write("two.gif", b"GIF89a" + bytes(20))
        self.ok("screenshot", "b.kraddon", "one.png")
        self.assertEqual(self.document(),
                         {"document": "screenshot", "change": "added", "fields": []})
        self.ok("screenshot", "a.kraddon", "one.png")
        self.assertEqual(self.ok("diff", "a.kraddon", "b.kraddon").out, b"")
        self.ok("screenshot", "a.kraddon", "two.gif")
        found = {field["path"]: field for field in self.document()["fields"]}
        self.assertEqual(found["screenshot.sha256"]["b"], hashlib.sha256(PNG).hexdigest())

    def test_long_values_are_cut_where_they_differ(self):
        terms = "Permission is hereby granted, free of charge, to any person. " * 20
        self.set("a.kraddon", "license", {"type": "MIT", "text": terms + "One\nlast é."})
        self.set("b.kraddon", "license", {"type": "MIT", "text": terms + "Two\nlast é."})
        line = self.lines()[0]
        self.assertLess(len(line), 160)
        self.assertTrue(line.startswith("license.text: …"), line)
        self.assertIn('any person. One\\nlast é." -> …', line)
        self.assertTrue(line.endswith('any person. Two\\nlast é."'), line)


if __name__ == "__main__":
    kraddontest.main()
