# SPDX-License-Identifier: MIT
"""kraddon schema: what it prints, and whether that is true of what the program reads and prints."""

import copy
import datetime
import json
import pathlib
import tomllib
import zipfile

import jsonschema
import kraddontest

DOCUMENTS = ["properties", "license", "configuration", "apps", "examples", "revisions",
             "requirements"]
NAMES = ["manifest", "info", "list", "verify", "diff", "build", *DOCUMENTS]

EXAMPLE = {"name": "A chirp", "type": "script", "source": "", "main": "chirp.m", "thumbnail": "",
           "images": ["1.png", "2.png"]}
PRODUCT = {"name": "Korvan", "version": "9.1", "identifier": "KV"}
SAMPLES = {
    "license": {"type": "MIT", "text": "terms\n\tand conditions\r\n"},
    "configuration": {"korvanPaths": ["/", "lib"], "javaClassPaths": None},
    "apps": [{"name": "Viewer", "guid": "g-1", "relativePath": "v.m", "installByDefault": "true"},
             {"name": "Editor", "guid": "", "relativePath": "e.m", "installByDefault": "false"}],
    "examples": [{"name": "First", "examples": [EXAMPLE]}, {"name": "Empty"}],
    "revisions": [{"date": "2026-01-01", "version": "1.0", "description": "first"}],
    "requirements": {"productDependency": [PRODUCT], "supportPackageDependency": [PRODUCT]},
}

MANIFEST = """
[package]
name = "Wave Tools"
version = "1.2"
type = "Korvan Toolbox"
summary = "Short-time spectra"
description-file = "README.md"
author = "Ada Lind"
contact = "ada@example.org"
organization = "Institute"
guid = "6f0c1c1e-7d0e-4f0b-9a51-0b6f2d3c4e5f"
screenshot = "art/shot.png"
[license]
type = "BSD-3-Clause"
file = "LICENSE"
[configuration]
korvan-paths = [".", "lib"]
java-class-paths = ["java/wave.jar"]
[[app]]
name = "Wave Viewer"
file = "apps/viewer.m"
guid = "g"
install-by-default = false
[[category]]
name = "First steps"
[[category.example]]
name = "A chirp"
type = "script"
source = "examples/chirp.src"
main = "examples/chirp.m"
thumbnail = "examples/chirp.png"
images = ["examples/chirp2.png"]
[[category]]
name = "Empty"
[[revision]]
date = 2026-02-01
version = "1.2"
description = "Faster windows"
[[revision]]
date = "last year"
version = "1.1"
[[requirements.product]]
name = "Korvan"
version = "9.1"
identifier = "KV"
[[requirements.support-package]]
name = "Sound"
[files]
root = "toolbox"
include = ["**"]
exclude = ["tests/", "*.log", "!keep.log"]
default-excludes = true
empty-folders = false
[[files.add]]
from = "build/wave.jar"
to = "java/wave.jar"
[build]
output = "out/{name}.kraddon"
level = 9
[verify]
ignore = ["KR506", "KR508:docs/**"]
strict = true
"""
SMALLEST = '[package]\nname = "x"\nversion = "1"\n'


class SchemaTest(kraddontest.CliTest):

    def schema(self, name):
        return self.ok("schema", name).json

    def validator(self, name):
        return jsonschema.Draft202012Validator(self.schema(name))

    def accept(self, name, value):
        errors = [error.message for error in self.validator(name).iter_errors(value)]
        self.assertEqual(errors, [], value)

    def refuse(self, name, value):
        self.assertFalse(self.validator(name).is_valid(value), value)


class Schemas(SchemaTest):

    def test_each_is_a_schema(self):
        for name in NAMES:
            schema = self.schema(name)
            jsonschema.Draft202012Validator.check_schema(schema)
            self.assertEqual(schema["$schema"], "https://json-schema.org/draft/2020-12/schema")
            self.assertTrue(schema["title"] and schema["description"], name)

    def test_what_is_printed_is_the_source_to_the_byte(self):
        sources = pathlib.Path(__file__).resolve().parents[2] / "tool/schemas"
        self.assertEqual({path.stem for path in sources.iterdir()}, set(NAMES))
        for name in NAMES:
            self.assertEqual(self.ok("schema", name).out, (sources / f"{name}.json").read_bytes())

    def test_each_object_is_closed_and_each_value_described(self):
        def visit(schema, place):
            if isinstance(schema, list):
                for i, element in enumerate(schema):
                    visit(element, f"{place}[{i}]")
            if not isinstance(schema, dict):
                return
            if schema.get("type") == "object":
                self.assertIs(schema.get("additionalProperties"), False, place)
                self.assertTrue(schema.get("title"), place)
            for key, value in schema.items():
                if key not in ("if", "then", "else", "allOf"):
                    visit(value, f"{place}.{key}")
        for name in NAMES:
            visit(self.schema(name), name)

    def test_an_unknown_name_is_wrong_usage(self):
        self.misused("schema", "manifst",
                     message="unknown schema 'manifst': did you mean 'manifest'?")
        self.misused("schema", "zzzzzzzz",
                     message=f"unknown schema 'zzzzzzzz': the schemas are {', '.join(NAMES)}")
        self.misused("schema", "info", "--json",
                     message="unknown option '--json': no option has that name")
        result = self.run_kraddon("schema")
        self.assertEqual(result.code, 2)
        self.assertTrue(result.errors.startswith("kraddon: schema: missing operand 'NAME': "))

    def test_examples_stand_in_the_help(self):
        self.assertIn("kraddon schema ", self.ok("schema", "--help").text.split("examples:")[1])


class Documents(SchemaTest):

    def samples(self, name):
        self.package("p.kraddon")
        properties = self.ok("get", "p.kraddon", "properties").json
        return {"properties": properties, **SAMPLES}[name]

    def agree(self, name, value, is_good):
        """The program and the schema are of that opinion."""
        result = self.run_kraddon("set", "p.kraddon", name, "-",
                                  stdin=json.dumps(value).encode())
        self.assertEqual(result.code == 0, is_good, (value, result.errors))
        (self.accept if is_good else self.refuse)(name, value)

    def test_what_get_prints_is_valid(self):
        self.package("p.kraddon")
        for name in DOCUMENTS:
            self.accept(name, self.ok("get", "p.kraddon", name).json)
        for name, value in SAMPLES.items():
            self.ok("set", "p.kraddon", name, "-", stdin=json.dumps(value).encode())
            self.accept(name, self.ok("get", "p.kraddon", name).json)

    def test_what_set_takes_is_valid(self):
        for name in DOCUMENTS:
            self.path("p.kraddon").unlink(missing_ok=True)
            self.agree(name, self.samples(name), True)

    def test_empty_lists_and_unset_fields_are_valid(self):
        self.package("p.kraddon")
        for name in ("apps", "examples", "revisions"):
            self.agree(name, [], True)
        for name in ("configuration", "requirements"):
            self.agree(name, {}, True)

    def records(self, value):
        """Each record of a document, as the way to change it in a copy."""
        places = [[]]
        while places:
            place = places.pop()
            record = value
            for key in place:
                record = record[key]
            if isinstance(record, dict):
                yield place, record
            children = record.items() if isinstance(record, dict) else enumerate(record)
            places += [[*place, key] for key, child in children if isinstance(child, (dict, list))]

    def changed(self, value, place, change):
        value = copy.deepcopy(value)
        record = value
        for key in place:
            record = record[key]
        change(record)
        return value

    def test_both_refuse_the_same(self):
        """Unknown, missing and mistyped fields, one at a time, everywhere in every document."""
        wrong = [None, 1, True, "text", "true", "\x01", ["text"], [1], [None], {}, [{}]]
        for name in DOCUMENTS:
            self.path("p.kraddon").unlink(missing_ok=True)
            sample = self.samples(name)
            validator = self.validator(name)
            seen = set()
            values = [None, 1, "x", [1], {"x": 1}, [[]]]
            for place, record in self.records(sample):
                if tuple(record) in seen:
                    continue
                seen.add(tuple(record))
                values.append(self.changed(sample, place, lambda it: it.update(unknown="x")))
                for field in record:
                    if field in ("type", "KorvanRelease") and name == "properties":
                        continue  # an update must not change them, which no schema can say
                    values.append(self.changed(sample, place, lambda it: it.pop(field)))
                    values += [self.changed(sample, place, lambda it: it.update({field: other}))
                               for other in wrong]
            for value in values:
                result = self.run_kraddon("set", "p.kraddon", name, "-",
                                          stdin=json.dumps(value).encode())
                self.assertEqual(validator.is_valid(value), result.code == 0,
                                 (name, value, result.errors))

    def test_characters_that_xml_cannot_carry_are_refused_by_both(self):
        self.package("p.kraddon")
        for character, is_good in (("\t", True), ("\n", True), ("\r", True), ("\x7f", True),
                                   ("\0", False), ("\x1f", False), ("\ufffe", False),
                                   ("\U0001f30a", True)):
            self.agree("license", {"type": "x", "text": f"a{character}b"}, is_good)
            self.agree("license", {"type": "x", "text": f"a{character}"}, is_good)


class Outputs(SchemaTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", {"a.m": "a" * 500, "lib/b.m": "b", "void/": ""})
        self.write("shot.png", b"\x89PNG\r\n\x1a\n")

    def test_info_is_valid(self):
        self.accept("info", self.ok("info", "p.kraddon", "--json").json)
        for name, value in SAMPLES.items():
            self.ok("set", "p.kraddon", name, "-", stdin=json.dumps(value).encode())
        self.ok("screenshot", "p.kraddon", "shot.png")
        info = self.ok("info", "p.kraddon", "--json").json
        self.accept("info", info)
        self.refuse("info", {**info, "more": 1})
        for key in info:
            self.refuse("info", {k: value for k, value in info.items() if k != key})
        for key, value in (("digest", "sha256:0"), ("created", "yesterday"), ("size", -1),
                           ("size", "1"), ("documents", ["licence"]), ("schema", "x"),
                           ("author", None), ("name", "")):
            self.refuse("info", {**info, key: value})

    def test_info_of_another_kind_of_package_is_valid(self):
        with zipfile.ZipFile(self.path("plain.docx"), "w") as archive:
            archive.writestr("[Content_Types].xml", (
                '<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
                '<Default Extension="xml" ContentType="application/xml"/></Types>'))
            archive.writestr("a.xml", "<a/>")
        self.accept("info", self.ok("info", "plain.docx", "--json").json)

    def test_list_is_valid_with_all_options(self):
        for words in ([], ["-l"], ["--hash"], ["--all"], ["-l", "--hash"],
                      ["-l", "--hash", "--all"]):
            self.accept("list", self.ok("list", "p.kraddon", "--json", *words).json)
        listing = self.ok("list", "p.kraddon", "--json", "-l", "--hash").json
        file, folder = listing["entries"][0], listing["entries"][-1]
        self.assertEqual((file["kind"], folder["kind"]), ("file", "folder"))
        wrong = [{k: v for k, v in file.items() if k != "crc"}, {**file, "size": None},
                 {**file, "sha256": "00"}, {**file, "method": "lzma"}, {**file, "extra": 1},
                 {**folder, "size": 0}, {**file, "kind": "link"}, {"path": "x"}]
        for entry in wrong:
            self.refuse("list", {**listing, "entries": [entry]})

    def test_verify_is_valid(self):
        self.write("broken.kraddon", "x")
        report = self.run_kraddon("verify", "p.kraddon", "broken.kraddon", "--json").json
        self.assertTrue(all(package["findings"] for package in report["packages"]))
        self.accept("verify", report)
        package = report["packages"][0]
        finding = package["findings"][0]
        for wrong in ({**finding, "id": "KR1"}, {**finding, "severity": "note"},
                      {**finding, "line": 0}, {**finding, "group": "other"},
                      {**finding, "extra": 1}, {"id": "KR101"}):
            self.refuse("verify", {**report, "packages": [{**package, "findings": [wrong]}]})

    def test_diff_is_valid(self):
        self.accept("diff", self.ok("diff", "p.kraddon", "p.kraddon", "--json").json)
        self.package("q.kraddon", {"c.m": "a" * 500, "lib/b.m": "c", "bare/": "", "new": ""})
        self.ok("set", "q.kraddon", "properties", "summary=s")
        for name, value in SAMPLES.items():
            for package in ("p.kraddon", "q.kraddon"):
                self.ok("set", package, name, "-", stdin=json.dumps(value).encode())
        self.ok("set", "q.kraddon", "apps", "-", stdin=json.dumps(SAMPLES["apps"][1:]).encode())
        self.ok("set", "q.kraddon", "configuration", "-", stdin=b"{}")
        self.ok("set", "q.kraddon", "requirements", "-", stdin=b"{}")
        self.ok("unset", "q.kraddon", "license")
        self.ok("screenshot", "q.kraddon", "shot.png")
        report = self.run_kraddon("diff", "p.kraddon", "q.kraddon", "--json").json
        self.assertEqual({file["change"] for file in report["files"]},
                         {"added", "removed", "changed", "moved"})
        self.accept("diff", report)
        moved = next(file for file in report["files"] if file["change"] == "moved")
        for wrong in ({**moved, "from": None}, {**moved, "a": None}, {**moved, "change": "copied"},
                      {**moved, "change": "added"}, {**moved, "a": {"size": 1}}, {"path": "x"}):
            self.refuse("diff", {**report, "files": [wrong]})


class Manifests(SchemaTest):

    def load(self, text):
        """As JSON: a date becomes the text that it stands for."""
        def plain(value):
            if isinstance(value, dict):
                return {key: plain(member) for key, member in value.items()}
            if isinstance(value, list):
                return [plain(element) for element in value]
            return value.isoformat() if isinstance(value, datetime.date) else value
        return plain(tomllib.loads(text))

    def test_manifests_are_valid(self):
        self.accept("manifest", self.load(MANIFEST))
        self.accept("manifest", self.load(SMALLEST))
        self.accept("manifest", self.load(SMALLEST + 'description = "two\\nlines"\n'
                                          '[license]\ntext = "terms"\n'))

    def test_mistaken_manifests_are_not(self):
        for text in [
                "", "[package]\n", '[package]\nname = "x"\n', '[package]\nversion = "1"\n',
                'name = "x"\nversion = "1"\n',
                SMALLEST.replace('"1"', "1.10"), SMALLEST + 'sumary = "typing mistake"\n',
                SMALLEST + 'type = "Toolbox"\n', SMALLEST + 'summary = ["x"]\n',
                SMALLEST + 'summary = "\\u0001"\n',
                SMALLEST + 'description = "x"\ndescription-file = "y"\n',
                SMALLEST + '[license]\ntext = "x"\nfile = "y"\n',
                SMALLEST + '[licence]\ntext = "x"\n',
                SMALLEST + '[configuration]\nkorvan-paths = "lib"\n',
                SMALLEST + '[configuration]\nkorvanPaths = ["lib"]\n',
                SMALLEST + '[app]\nname = "x"\nfile = "y"\n',
                SMALLEST + '[[app]]\nname = "x"\n', SMALLEST + '[[app]]\nfile = "x"\n',
                SMALLEST + '[[app]]\nname = "x"\nfile = "y"\ninstall-by-default = "false"\n',
                SMALLEST + '[[category]]\n', SMALLEST + '[[category]]\nname = 1\n',
                SMALLEST + '[[category]]\nname = "x"\n[[category.example]]\nmain = "y"\n',
                (SMALLEST + '[[category]]\nname = "x"\n[[category.example]]\nname = "y"\n'
                 + 'images = 1\n'),
                SMALLEST + '[[revision]]\ndate = 2026-02-01\n',
                SMALLEST + '[[revision]]\nversion = 1.0\n',
                SMALLEST + '[[requirements.product]]\nversion = "1"\n',
                SMALLEST + '[[requirements.toolbox]]\nname = "x"\n',
                SMALLEST + '[files]\ninclude = "**"\n', SMALLEST + '[files]\nempty-folders = 1\n',
                SMALLEST + '[[files.add]]\nfrom = "x"\n',
                SMALLEST + '[build]\nlevel = 10\n', SMALLEST + '[build]\nlevel = -1\n',
                SMALLEST + '[build]\nlevel = "6"\n', SMALLEST + '[build]\nlevel = 1.5\n',
                SMALLEST + '[verify]\nignore = ["506"]\n', SMALLEST + '[verify]\nstrict = "yes"\n']:
            with self.subTest(text):
                self.refuse("manifest", self.load(text))

    def test_required_texts_are_not_empty(self):
        whole = ('[[app]]\nname = "x"\nfile = "y"\n[[revision]]\nversion = "1"\n'
                 '[[category]]\nname = "x"\n[[category.example]]\nname = "x"\n'
                 '[[requirements.product]]\nname = "x"\n'
                 '[[requirements.support-package]]\nname = "x"\n[build]\noutput = "x"\n')
        lines = (SMALLEST + whole).splitlines(keepends=True)
        self.accept("manifest", self.load("".join(lines)))
        for at, line in enumerate(lines):
            if " = " in line:
                text = "".join([*lines[:at], line.split(" = ")[0] + ' = ""\n', *lines[at + 1:]])
                self.refuse("manifest", self.load(text))


if __name__ == "__main__":
    kraddontest.main()
