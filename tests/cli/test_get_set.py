# SPDX-License-Identifier: MIT
"""kraddon get and kraddon set"""

import json
import os
import zipfile

import kraddontest

FIELDS = ["type", "name", "version", "KorvanRelease", "summary", "authorName", "authorContact",
          "authorOrganization", "GUID", "description"]


class GetSet(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", {"a.m": "x"}, "--guid", "0c3a0d9e-5b7a-4a53-9c58-6f0d2f4f8a11")

    def get(self, document):
        return self.ok("get", "p.kraddon", document).json

    def test_get_prints_the_host_struct(self):
        text = self.ok("get", "p.kraddon", "properties").text
        self.assertEqual(list(json.loads(text)), FIELDS)
        self.assertEqual(text, json.dumps(json.loads(text), indent=2, ensure_ascii=False) + "\n")
        self.assertEqual(self.get("license"), {"type": "", "text": ""})

    def test_get_agrees_with_the_gateway(self):
        self.ok("set", "p.kraddon", "license", "type=MIT", "text=line one\nline two\t\u00e9")
        for document, gateway in (("properties", "addonGetProperties"),
                                  ("license", "addonGetLicense")):
            self.assertEqual(self.get(document), self.ok("call", gateway, "p.kraddon").json)

    def test_what_get_prints_set_takes(self):
        for document in ("properties", "license"):
            before = self.get(document)
            self.ok("get", "p.kraddon", document, "-o", "d.json")
            self.ok("set", "--no-verify", "p.kraddon", document, "d.json")
            self.assertEqual(self.get(document), before)
            self.assert_sound()

    def test_set_stores_from_file_input_and_words(self):
        document = {"type": "BSD", "text": "a\r\nb\U0001f30a<&>\"]]>"}
        self.write("l.json", json.dumps(document))
        self.ok("set", "p.kraddon", "license", "l.json")
        self.assertEqual(self.get("license"), document)

        document["type"] = "MIT"
        self.ok("set", "p.kraddon", "license", "-", stdin=json.dumps(document).encode())
        self.assertEqual(self.get("license"), document)

        self.ok("set", "p.kraddon", "license", "text=a=b")
        self.assertEqual(self.get("license"), {"type": "MIT", "text": "a=b"})

    def test_changed_fields_leave_the_others(self):
        before = self.get("properties")
        self.ok("set", "--no-verify", "p.kraddon", "properties", "summary=new", "authorName=Ada", "GUID=")
        self.assertEqual(self.get("properties"),
                         dict(before, summary="new", authorName="Ada", GUID=""))
        self.assertEqual(self.ok("info", "p.kraddon", "--field", "modified").text,
                         "2023-11-14T22:13:20Z\n")

    def test_type_and_release_cannot_change(self):
        before = self.path("p.kraddon").read_bytes()
        for field, value in (("type", "Korvan Toolbox"), ("KorvanRelease", "R2047b")):
            self.fails("set", "p.kraddon", "properties", f"{field}=other",
                       message=f"cannot change 'properties.{field}': it is '{value}' and cannot "
                               "change")
            document = dict(self.get("properties"), **{field: "other"})
            self.fails("set", "p.kraddon", "properties", "-", stdin=json.dumps(document).encode(),
                       message=f"cannot change 'properties.{field}': it is '{value}' and cannot "
                               "change")
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)
        self.ok("set", "p.kraddon", "properties", "type=Korvan Toolbox", "summary=x")

    def test_bad_documents_are_named_before_the_package_is_looked_at(self):
        license = {"type": "a", "text": "b"}
        cases = [
            ("license", dict(license, txt="c"),
             "license.txt: unknown field, did you mean 'text'?"),
            ("license", dict(license, qqqqqqqq="c"),
             "license.qqqqqqqq: unknown field, no field has that name"),
            ("license", dict(license, text=1), "license.text: expected a string"),
            ("license", dict(license, text=None), "license.text: expected a string"),
            ("license", dict(license, text=["x"]), "license.text: expected a string"),
            ("license", {"type": "a"}, "license.text: it is missing"),
            ("license", [license], "license: expected an object"),
            ("license", "text", "license: expected an object"),
            ("properties", {}, "properties.type: it is missing"),
        ]
        for document, value, why in cases:
            self.write("d.json", json.dumps(value))
            self.fails("set", "missing.kraddon", document, "d.json",
                       message=f"bad document 'd.json': {why}")
        self.write("d.json", '{"type": "a", "text": "b", "type": "c"}')
        self.fails("set", "missing.kraddon", "license", "d.json",
                   message="bad document 'd.json': license.type: it is given twice")
        result = self.fails("set", "missing.kraddon", "license", "-", stdin=b"{nonsense")
        self.assertTrue(result.errors.startswith(
            "kraddon: set: bad document 'standard input': parse error at line 1, column 3"))
        self.fails("set", "p.kraddon", "license", "none.json",
                   message="cannot read 'none.json': No such file or directory")
        self.fails("set", "p.kraddon", "license", ".",
                   message="cannot read '.': Is a directory")

    def test_deep_json_does_not_crash(self):
        self.write("d.json", "[" * 200000)
        self.fails("set", "p.kraddon", "license", "d.json",
                   message="bad document 'd.json': it is more than 256 levels deep")

    def test_wrong_words_are_wrong_usage(self):
        self.misused("set", "p.kraddon", "license", "txt=x",
                     message="unknown field 'license.txt': did you mean 'text'?")
        self.misused("set", "p.kraddon", "license", "text=x", "text=y",
                     message="repeated field 'license.text': it is given twice")
        self.misused("set", "p.kraddon", "license", "text=x", "d.json",
                     message="bad value 'd.json': expected FIELD=VALUE")
        self.misused("set", "p.kraddon", "licence", "text=x",
                     message="unknown document 'licence': did you mean 'license'?")
        self.misused("get", "p.kraddon", "zzz",
                     message="unknown document 'zzz': the documents are properties, license, "
                             "configuration, apps, examples, revisions, requirements")
        self.misused("set", "p.kraddon", "license",
                     message="missing operand 'VALUE': FILE.json, - for standard input, or "
                             "FIELD=VALUE...")

    def test_a_file_with_an_equals_sign_is_a_file(self):
        self.write("a=b.json", json.dumps({"type": "t", "text": "u"}))
        self.ok("set", "p.kraddon", "license", "./a=b.json")
        self.assertEqual(self.get("license")["type"], "t")

    def test_a_file_that_looks_like_a_field_is_hinted_at(self):
        self.write("a=b.json", json.dumps({"type": "t", "text": "u"}))
        for document in ("license", "properties"):
            result = self.misused(
                "set", "p.kraddon", document, "a=b.json",
                message=f"unknown field '{document}.a': the fields are "
                        + ("type, text" if document == "license" else
                           "type, name, version, KorvanRelease, summary, authorName, "
                           "authorContact, authorOrganization, GUID, description"))
            self.assertEqual(result.errors.splitlines()[1],
                             "hint: './a=b.json' is the file with that name")
        self.assertNotIn("hint", self.run_kraddon("set", "p.kraddon", "license", "a=c").errors)

    def test_text_that_xml_cannot_carry_changes_nothing(self):
        before = self.path("p.kraddon").read_bytes()
        self.fails("set", "p.kraddon", "license", "text=a\x01b",
                   message="bad value of 'license.text': it contains the control character U+0001")
        self.fails("set", "p.kraddon", "properties", "name=\uffff",
                   message="bad value of 'properties.name': it contains U+FFFF, which XML cannot "
                           "carry")
        self.fails("set", "p.kraddon", "license", "-",
                   stdin=b'{"type": "a\\u0000b", "text": "x"}',
                   message="bad document 'standard input': license.type: it contains the control "
                           "character U+0000")
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)
        self.assertEqual(self.names(), ["p.kraddon", "p.kraddon.src"])

    def test_control_characters_that_xml_has_come_back(self):
        license = {"type": "a\x7fb", "text": "\t\r\n\x80\x9f"}
        self.ok("set", "p.kraddon", "license", "-", stdin=json.dumps(license).encode())
        self.assertEqual(self.get("license"), license)
        self.ok("set", "p.kraddon", "properties", "summary=a\x7f\x85")
        self.assertEqual(self.get("properties")["summary"], "a\x7f\x85")

    def test_bytes_that_are_not_utf8_are_refused(self):
        before = self.path("p.kraddon").read_bytes()
        self.fails("set", "p.kraddon", "license", b"text=caf\xe9",
                   message="bad value of 'license.text': it is not UTF-8")
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)

    def test_set_keeps_everything_else(self):
        before = self.entries()
        self.path("p.kraddon").chmod(0o604)

        self.ok("set", "p.kraddon", "license", "text=terms")

        after = self.entries()
        self.assertEqual(set(after) - set(before), {"metadata/license.xml"})
        self.assertEqual(after["files/a.m"], before["files/a.m"])
        self.assertEqual(self.path("p.kraddon").stat().st_mode & 0o777, 0o604)
        self.assert_sound()

    def test_what_is_stored_already_is_not_written_again(self):
        self.ok("set", "p.kraddon", "license", "type=MIT", "text=terms")
        before = self.path("p.kraddon").stat()
        for document, *words in (("license", "text=terms"), ("license", "type=MIT", "text=terms"),
                                 ("properties", "version=1.0")):
            self.ok("set", "p.kraddon", document, *words)
        for document in ("license", "properties"):
            stored = self.ok("get", "p.kraddon", document).out
            self.ok("set", "p.kraddon", document, "-", stdin=stored)
        after = self.path("p.kraddon").stat()
        self.assertEqual((after.st_ino, after.st_mtime_ns), (before.st_ino, before.st_mtime_ns))

        # An empty document is another thing than none.
        empty = self.ok("get", "p.kraddon", "revisions").out
        self.ok("set", "p.kraddon", "revisions", "-", stdin=empty)
        self.assertIn("revisions", self.ok("info", "p.kraddon", "--json").json["documents"])

    def test_the_time_of_what_is_written_can_be_set(self):
        self.ok("set", "p.kraddon", "license", "text=terms", "--timestamp", "1000000000",
                "--level", "0")
        entries = {entry["path"]: entry for entry in
                   self.ok("list", "p.kraddon", "--all", "-l", "--json").json["entries"]}
        self.assertEqual(entries["/metadata/license.xml"]["time"], "2001-09-09T01:46:40Z")
        self.assertEqual(entries["/metadata/license.xml"]["method"], "store")
        self.assertEqual(entries["/files/a.m"]["time"], "2023-11-14T22:13:20Z")

    def test_get_writes_a_file_whole_or_not_at_all(self):
        self.write("d.json", "old")
        self.path("d.json").chmod(0o600)
        self.ok("get", "p.kraddon", "license", "-o", "d.json")
        self.assertEqual(json.loads(self.path("d.json").read_text()), {"type": "", "text": ""})
        self.assertEqual(self.path("d.json").stat().st_mode & 0o777, 0o600)
        self.fails("get", "p.kraddon", "license", "-o", "no/where.json",
                   message="cannot write 'no/where.json': No such file or directory")
        self.fails("get", "p.kraddon", "license", "-o", "/dev/full",
                   message="cannot write '/dev/full': No space left on device")
        self.assertEqual(self.ok("get", "p.kraddon", "license", "-o", "-").json,
                         {"type": "", "text": ""})
        self.assertTrue(os.path.exists("/dev/full"))

    def test_get_never_overwrites_the_package(self):
        before = self.path("p.kraddon").read_bytes()
        self.path("link").symlink_to("p.kraddon")
        for name in ("p.kraddon", "link"):
            self.fails("get", "p.kraddon", "license", "-o", name,
                       message=f"cannot write '{name}': it is the package itself")
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)

    def test_an_item_that_is_not_a_part_is_dropped_with_a_warning(self):
        self.package("q.kraddon", {"a.m": "x"})
        with zipfile.ZipFile(self.path("q.kraddon"), "a") as archive:
            archive.writestr("files/my file.m", "added by another program")

        listed = self.run_kraddon("list", "q.kraddon")
        stored = self.run_kraddon("set", "q.kraddon", "properties", "version=9")

        self.assertEqual(listed.text, "a.m\n")
        self.assertIn("files/my file.m", listed.errors)
        self.assertEqual(stored.code, 0)
        self.assertIn("item 'files/my file.m': it is not a part of the package and was left out",
                      stored.errors)
        self.assertNotIn("files/my file.m", self.entries("q.kraddon"))

    def test_an_item_that_is_not_a_part_stays_when_nothing_is_written(self):
        self.package("q.kraddon", {"a.m": "x"})
        with zipfile.ZipFile(self.path("q.kraddon"), "a") as archive:
            archive.writestr("files/my file.m", "added by another program")
        self.ok("set", "q.kraddon", "properties", "version=1.0")
        self.assertIn("files/my file.m", self.entries("q.kraddon"))


if __name__ == "__main__":
    kraddontest.main()
