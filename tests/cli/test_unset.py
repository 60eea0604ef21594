# SPDX-License-Identifier: MIT
"""kraddon unset"""

import json
import zipfile

import kraddontest

DOCUMENTS = {
    "license": {"type": "MIT", "text": "Do what you like."},
    "configuration": {"korvanPaths": ["lib"], "javaClassPaths": []},
    "apps": [{"name": "Viewer", "guid": "g", "relativePath": "a.m", "installByDefault": "true"}],
    "examples": [{"name": "First", "examples": []}],
    "revisions": [{"date": "2026-01-01", "version": "1.0", "description": "first"}],
    "requirements": {"productDependency": [{"name": "K", "version": "1", "identifier": "k"}],
                     "supportPackageDependency": []},
}
PNG = b"\x89PNG\r\n\x1a\n" + bytes(100)


class Unset(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", {"a.m": "one", "lib/b.m": "two"})

    def fill(self):
        for name, value in DOCUMENTS.items():
            self.ok("set", "--no-verify", "p.kraddon", name, "-", stdin=json.dumps(value).encode())
        self.write("shot.png", PNG)
        self.ok("screenshot", "p.kraddon", "shot.png")

    def change(self, entry, replace):
        """Rewrites one entry with another program."""
        entries = self.entries()
        entries[entry] = replace(entries[entry])
        with zipfile.ZipFile(self.path("p.kraddon"), "w") as archive:
            for name, content in entries.items():
                archive.writestr(name, content)

    def documents(self):
        return self.ok("info", "p.kraddon", "--json").json["documents"]

    def test_each_document_goes_with_its_part_and_relationship(self):
        plain = self.entries()
        self.fill()
        for name in DOCUMENTS:
            before, raw = self.documents(), self.raw_entries()
            self.ok("unset", "-q", "p.kraddon", name)
            self.assertEqual(self.documents(), [other for other in before if other != name])
            gone = set(raw) - set(self.raw_entries())
            self.assertEqual(len(gone), 1)
            self.assert_entries_kept(raw, *gone)
        self.ok("unset", "-q", "p.kraddon", "screenshot")
        self.assert_sound()
        self.assertEqual(set(self.entries()), set(plain))
        self.assertEqual(self.entries()["_rels/.rels"].count(b"<Relationship "),
                         plain["_rels/.rels"].count(b"<Relationship "))

    def test_several_go_at_once(self):
        self.fill()
        self.ok("unset", "-q", "p.kraddon", *DOCUMENTS, "screenshot", "license")
        self.assertEqual(self.documents(), ["properties"])
        self.assertIsNone(self.ok("info", "p.kraddon", "--json").json["screenshot"])
        self.assertEqual(self.ok("get", "p.kraddon", "license").json, {"type": "", "text": ""})

    def test_the_screenshot_goes_with_its_thumbnail_and_can_be_set_again(self):
        self.fill()
        self.ok("unset", "-q", "p.kraddon", "screenshot")
        entries = self.entries()
        self.assertNotIn("metadata/primaryScreenShot.png", entries)
        self.assertNotIn(b"thumbnail", entries["_rels/.rels"])
        self.assertNotIn(b"rId10", entries["_rels/.rels"])
        self.ok("screenshot", "p.kraddon", "shot.png")
        self.assertEqual(self.entries()["metadata/primaryScreenShot.png"], PNG)

    def test_a_document_that_is_not_there_is_named_and_nothing_is_changed(self):
        self.ok("set", "--no-verify", "p.kraddon", "license", "type=MIT")
        before = self.path("p.kraddon").read_bytes()
        for name in [name for name in DOCUMENTS if name != "license"] + ["screenshot"]:
            self.fails("unset", "p.kraddon", "license", name,
                       message=f"cannot remove '{name}': the package has none")
            self.assertEqual(self.path("p.kraddon").read_bytes(), before)

    def test_properties_and_unknown_names_are_wrong_usage(self):
        self.misused("unset", "p.kraddon", "properties",
                     message="cannot remove 'properties': a package always has them")
        self.misused("unset", "p.kraddon", "licence",
                     message="unknown document 'licence': did you mean 'license'?")
        self.misused("unset", "p.kraddon", "nonsense-name",
                     message="unknown document 'nonsense-name': the documents are license, "
                             "configuration, apps, examples, revisions, requirements, screenshot")
        self.misused("unset", "p.kraddon", message="missing operand 'DOCUMENT': license, configuration, "
                     "apps, examples, revisions, requirements or screenshot")

    def test_a_file_that_a_document_points_at_stays(self):
        self.ok("set", "--no-verify", "p.kraddon", "license", "type=MIT")
        self.change("_rels/.rels", lambda rels: rels.replace(b"/metadata/license.xml",
                                                             b"/files/a.m"))
        self.ok("unset", "-q", "p.kraddon", "license")
        entries = self.entries()
        self.assertEqual(entries["files/a.m"], b"one")
        self.assertNotIn(b"files/a.m", entries["_rels/.rels"])
        self.assertNotIn("metadata/license.xml", entries)

    def test_a_part_that_something_else_points_at_stays(self):
        self.ok("set", "--no-verify", "p.kraddon", "license", "type=MIT")
        extra = (b'<Relationship Id="other" Type="http://example.org/other" '
                 b'Target="/metadata/LICENSE.xml"/></Relationships>')
        self.change("_rels/.rels", lambda rels: rels.replace(b"</Relationships>", extra))
        self.ok("unset", "--no-verify", "p.kraddon", "license")
        self.assertIn("metadata/license.xml", self.entries())
        self.assertEqual(self.documents(), ["properties"])

    def test_one_whose_relationship_names_more_than_a_part_goes_altogether(self):
        for target in (b"/a?b", b"/metadata/license.xml#top"):
            self.ok("set", "--no-verify", "p.kraddon", "license", "type=MIT")
            self.change("_rels/.rels", lambda rels: rels.replace(b"/metadata/license.xml", target))

            self.ok("unset", "-q", "p.kraddon", "license")

            self.assertNotIn(b"license", self.entries()["_rels/.rels"])
            self.assertNotIn("metadata/license.xml", self.entries())

    def test_one_with_two_relationships_goes_altogether(self):
        self.ok("set", "--no-verify", "p.kraddon", "license", "type=MIT")

        def double(rels):
            start = rels.index(b"<Relationship ", rels.index(b"license") - 300)
            start = rels.rindex(b"<Relationship ", 0, rels.index(b"relationships/license"))
            end = rels.index(b"/>", start) + 2
            one = rels[start:end]
            identifier = one[one.index(b'Id="') + 4:].split(b'"')[0]
            return rels[:end] + one.replace(identifier, b"second", 1) + rels[end:]
        self.change("_rels/.rels", double)
        self.assertEqual(self.documents(), ["properties"])
        self.ok("unset", "-q", "p.kraddon", "license")
        self.assertNotIn(b"license", self.entries()["_rels/.rels"])
        self.assertNotIn("metadata/license.xml", self.entries())


if __name__ == "__main__":
    kraddontest.main()
