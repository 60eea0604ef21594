# SPDX-License-Identifier: MIT
"""kraddon get and kraddon set for the documents that are more than a few texts"""

import json
import pathlib
import zipfile

import kraddontest

METADATA = pathlib.Path(__file__).resolve().parents[2] / "examples/signal-kit.metadata"

APP = {"name": "Viewer <&>", "guid": "g", "relativePath": "apps/vi\u00e9w.m",
       "installByDefault": "false"}
EXAMPLE = {"name": "A chirp", "type": "script", "source": "s.m", "main": "m.m",
           "thumbnail": "t.png", "images": ["a.png", "b.png"]}
REVISION = {"date": "2026-02-01", "version": "1.2", "description": "a\nb\t\U0001f30a"}
PRODUCT = {"name": "Korvan", "version": "9.1", "identifier": "KV"}

DOCUMENTS = {
    "configuration": [
        {"korvanPaths": [".", "lib", "lib"], "javaClassPaths": ["java/wave.jar"]},
        {"korvanPaths": ["", "x"], "javaClassPaths": []},
        {"korvanPaths": [], "javaClassPaths": []},
    ],
    "apps": [[APP], [APP, dict(APP, name="", guid="", installByDefault="true")], []],
    "examples": [
        [{"name": "c", "examples": [EXAMPLE]}],
        [{"name": "c", "examples": [EXAMPLE, dict(EXAMPLE, images=None, thumbnail="")]},
         {"name": "", "examples": None},
         {"name": "d", "examples": [dict(EXAMPLE, images=["one.png"])]}],
        [],
    ],
    "revisions": [[REVISION], [dict(REVISION, date=""), REVISION, REVISION], []],
    "requirements": [
        {"productDependency": [PRODUCT], "supportPackageDependency": None},
        {"productDependency": [PRODUCT, dict(PRODUCT, version="")],
         "supportPackageDependency": [PRODUCT]},
        {"productDependency": None, "supportPackageDependency": None},
    ],
}
EMPTY = {name: values[-1] for name, values in DOCUMENTS.items()}
GATEWAYS = {"configuration": "Configuration", "apps": "AppInstallList", "examples": "Examples",
            "revisions": "RevisionHistory", "requirements": "SystemRequirements"}


class Documents(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", {"a.m": "x"})

    def get(self, document, package="p.kraddon"):
        return self.ok("get", package, document).json

    def set(self, document, value, *words, package="p.kraddon"):
        self.ok("set", "--no-verify", package, document, "-", *words, stdin=json.dumps(value).encode())

    def refuses(self, document, value, why):
        text = value if isinstance(value, str) else json.dumps(value)
        self.write("x.json", text)
        self.fails("set", "missing.kraddon", document, "x.json",
                   message=f"bad document 'x.json': {why}")

    def test_a_document_that_is_not_there_is_printed_empty(self):
        for document, empty in EMPTY.items():
            self.assertEqual(self.get(document), empty)
        self.assertEqual(self.ok("get", "p.kraddon", "apps").text, "[]\n")

    def test_every_document_comes_back_as_it_was_set(self):
        for document, values in DOCUMENTS.items():
            for value in values:
                self.set(document, value)
                text = self.ok("get", "p.kraddon", document).text
                self.assertEqual(text, json.dumps(value, indent=2, ensure_ascii=False) + "\n")
        self.assert_sound()

    def test_what_get_prints_set_takes(self):
        for document, values in DOCUMENTS.items():
            for value in values:
                self.set(document, value)
                self.ok("get", "p.kraddon", document, "-o", "d.json")
                self.set(document, values[0])
                self.ok("set", "--no-verify", "p.kraddon", document, "d.json")
                self.assertEqual(self.get(document), value)

    def test_get_agrees_with_the_gateway(self):
        for document, values in DOCUMENTS.items():
            for value in values[:2]:
                self.set(document, value)
                read = self.ok("call", f"addonGet{GATEWAYS[document]}", "p.kraddon").json
                if document in ("configuration", "apps", "revisions"):
                    single = isinstance(value, list) and len(value) == 1
                    self.assertEqual(read, value[0] if single else value)
                self.ok("call", f"addonSet{GATEWAYS[document]}", "p.kraddon", json.dumps(read))
                self.assertEqual(self.get(document), value)

    def test_optional_lists_may_be_left_out_or_null(self):
        cases = [
            ("configuration", {}, EMPTY["configuration"]),
            ("configuration", {"javaClassPaths": None, "korvanPaths": ["a"]},
             {"korvanPaths": ["a"], "javaClassPaths": []}),
            ("requirements", {"supportPackageDependency": [], "productDependency": None},
             EMPTY["requirements"]),
            ("examples", [{"name": "c"}, {"name": "d", "examples": []}],
             [{"name": "c", "examples": None}, {"name": "d", "examples": None}]),
        ]
        for document, value, stored in cases:
            self.set(document, value)
            self.assertEqual(self.get(document), stored)

    def test_bad_documents_are_named_before_the_package_is_looked_at(self):
        flag = 'expected the string "true" or "false"'
        cases = [
            ("apps", APP, "apps: expected an array of objects"),
            ("apps", [APP, dict(APP, gudi="")],
             "apps[1].gudi: unknown field, did you mean 'guid'?"),
            ("apps", [dict(APP, installByDefault=True)], f"apps[0].installByDefault: {flag}"),
            ("apps", [dict(APP, installByDefault="no")], f"apps[0].installByDefault: {flag}"),
            ("apps", [APP, APP, {"name": "x"}], "apps[2].guid: it is missing"),
            ("configuration", [], "configuration: expected an object"),
            ("configuration", {"korvanPath": []},
             "configuration.korvanPath: unknown field, did you mean 'korvanPaths'?"),
            ("configuration", {"korvanPaths": [None]},
             "configuration.korvanPaths[0]: expected a string"),
            ("examples",
             [{"name": "a"}, {"name": "b"},
              {"name": "c", "examples": [dict(EXAMPLE, images="x")]}],
             "examples[2].examples[0].images: expected an array of texts"),
            ("examples", [{"name": "a", "examples": EXAMPLE}],
             "examples[0].examples: expected an array of objects"),
            ("examples", [{"examples": []}], "examples[0].name: it is missing"),
            ("revisions", [dict(REVISION, date=20260201)],
             "revisions[0].date: expected a string"),
            ("revisions", [REVISION, 7], "revisions[1]: expected an object"),
            ("requirements", {"productDependency": [dict(PRODUCT, version=9.1)]},
             "requirements.productDependency[0].version: expected a string"),
            ("requirements", '{"productDependency": [{"name": "a", "name": "b"}]}',
             "requirements.productDependency[0].name: it is given twice"),
            ("apps", '[{}, {"guid": "a", "name": "b", "guid": "c"}]',
             "apps[1].guid: it is given twice"),
        ]
        for document, value, why in cases:
            self.refuses(document, value, why)

    def test_fields_cannot_be_set_one_by_one(self):
        self.misused("set", "p.kraddon", "configuration", "korvanPaths=lib",
                     message="bad value 'korvanPaths=lib': configuration takes one FILE.json, or "
                             "- for standard input")
        self.misused("set", "p.kraddon", "apps", "a.json", "b.json",
                     message="bad value 'b.json': apps takes one FILE.json, or - for standard "
                             "input")

    def test_a_file_may_be_called_as_fields_are_set(self):
        for document in ("apps", "configuration", "examples", "revisions", "requirements"):
            self.write("text=x.json", json.dumps(DOCUMENTS[document][0]))
            self.ok("set", "--no-verify", "p.kraddon", document, "text=x.json")
            self.assertEqual(self.get(document), DOCUMENTS[document][0])

    def test_text_that_xml_cannot_carry_changes_nothing(self):
        before = self.path("p.kraddon").read_bytes()
        image = [{"name": "c", "examples": [dict(EXAMPLE, images=["\uffff"])]}]
        for document, value, why in (
                ("apps", [APP, dict(APP, name="a\x01")],
                 "apps[1].name: it contains the control character U+0001"),
                ("configuration", {"korvanPaths": ["a\x00b"]},
                 "configuration.korvanPaths[0]: it contains the control character U+0000"),
                ("examples", image,
                 "examples[0].examples[0].images[0]: it contains U+FFFF, which XML cannot carry")):
            self.fails("set", "p.kraddon", document, "-", stdin=json.dumps(value).encode(),
                       message=f"bad document 'standard input': {why}")
            self.assertEqual(self.path("p.kraddon").read_bytes(), before)
        self.assertEqual(self.names(), ["p.kraddon", "p.kraddon.src"])

    def test_a_stored_document_that_cannot_be_read_can_be_replaced(self):
        self.set("apps", [APP])
        entries = self.entries()
        entries["metadata/applications.xml"] = b"<broken"
        with zipfile.ZipFile(self.path("p.kraddon"), "w") as archive:
            for name, content in entries.items():
                archive.writestr(name, content)
        self.fails("get", "p.kraddon", "apps")
        self.set("apps", [APP, APP])
        self.assertEqual(self.get("apps"), [APP, APP])

    def test_time_and_level_hold_for_every_document(self):
        for document, values in DOCUMENTS.items():
            self.set(document, values[0], "--timestamp", "1000000000", "--level", "0")
        entries = {entry["path"]: entry for entry in
                   self.ok("list", "p.kraddon", "--all", "-l", "--json").json["entries"]}
        for name in ("configuration", "applications", "examples", "revisionHistory",
                     "systemRequirements"):
            entry = entries[f"/metadata/{name}.xml"]
            self.assertEqual((entry["time"], entry["method"]),
                             ("2001-09-09T01:46:40Z", "store"))

    def test_info_names_what_is_there(self):
        self.assertEqual(self.ok("info", "p.kraddon", "--json").json["documents"], ["properties"])
        names = ["properties"]
        for document, values in DOCUMENTS.items():
            before = self.ok("info", "p.kraddon", "--field", "digest").text
            self.set(document, values[0])
            names.append(document)
            info = self.ok("info", "p.kraddon", "--json", "--digest").json
            self.assertEqual(info["documents"], names)
            self.assertNotEqual(info["digest"] + "\n", before)
        self.ok("set", "--no-verify", "p.kraddon", "license", "type=MIT")
        names.insert(1, "license")
        self.assertEqual(self.ok("info", "p.kraddon", "--field", "documents").text,
                         "".join(name + "\n" for name in names))

    def test_a_hundred_thousand_records_can_be_set_and_printed(self):
        value = [{"name": "c", "examples": [dict(EXAMPLE, name=str(i)) for i in range(100000)]}]
        self.set("examples", value)
        self.assertEqual(self.get("examples"), value)
        self.write("x.json", json.dumps([APP] * 100000 + [dict(APP, guid=None)]))
        self.fails("set", "missing.kraddon", "apps", "x.json",
                   message="bad document 'x.json': apps[100000].guid: expected a string")

    def test_the_examples_of_this_project_are_taken(self):
        for document in DOCUMENTS:
            file = METADATA / f"{document}.json"
            self.ok("set", "--no-verify", "p.kraddon", document, file)
            self.assertEqual(self.get(document), json.loads(file.read_text()))


if __name__ == "__main__":
    kraddontest.main()
