# SPDX-License-Identifier: MIT
"""kraddon schema: what it prints, and whether that is true of what the program reads and prints."""

import copy
import datetime
import json
import pathlib
import re
import tomllib
import zipfile

import jsonschema
import kraddontest
import signing
from cataloguetest import GUID, CatalogueTest
from previewing import png
from projecttest import FULL, FULL_FILES

DOCUMENTS = ["properties", "license", "configuration", "apps", "examples", "revisions",
             "requirements"]
NAMES = ["manifest", "info", "list", "verify", "diff", "build", "policy", "infos", "signatures",
         "index-result", "search", "root", "index", "shard", "record", *DOCUMENTS]

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

# Every key there is.
MANIFEST = FULL.replace('root = "toolbox"\n', """\
root = "toolbox"
include = ["**"]
default-excludes = true
empty-folders = false
""") + 'error = ["KR502"]\nwarn = ["KR509"]\nstrict = true\n'
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

    def test_they_are_printed_for_reading(self):
        for name in NAMES:
            out = self.ok("schema", name).text
            self.assertEqual(out, json.dumps(json.loads(out), indent=2) + "\n")

    def test_each_object_but_a_record_is_closed_and_each_value_described(self):
        def visit(schema, place):
            if isinstance(schema, list):
                for i, element in enumerate(schema):
                    visit(element, f"{place}[{i}]")
            if not isinstance(schema, dict):
                return
            if schema.get("type") == "object":
                self.assertTrue(schema.get("title"), place)
                is_open = schema["title"] == "Record of a site"
                self.assertIs(schema.get("additionalProperties"), is_open, place)
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
        result = self.run_kraddon("set", "--no-verify", "p.kraddon", name, "-",
                                  stdin=json.dumps(value).encode())
        self.assertEqual(result.code == 0, is_good, (value, result.errors))
        (self.accept if is_good else self.refuse)(name, value)

    def test_what_get_prints_is_valid(self):
        self.package("p.kraddon")
        for name in DOCUMENTS:
            self.accept(name, self.ok("get", "p.kraddon", name).json)
        for name, value in SAMPLES.items():
            self.ok("set", "--no-verify", "p.kraddon", name, "-", stdin=json.dumps(value).encode())
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
                result = self.run_kraddon("set", "--no-verify", "p.kraddon", name, "-",
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
            self.ok("set", "--no-verify", "p.kraddon", name, "-", stdin=json.dumps(value).encode())
        self.ok("screenshot", "p.kraddon", "shot.png")
        info = self.ok("info", "p.kraddon", "--json", "--digest").json
        self.accept("info", info)
        self.accept("info", {**info, "digest": None})
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
                self.ok("set", "--no-verify", package, name, "-", stdin=json.dumps(value).encode())
        self.ok("set", "--no-verify", "q.kraddon", "apps", "-", stdin=json.dumps(SAMPLES["apps"][1:]).encode())
        self.ok("set", "q.kraddon", "configuration", "-", stdin=b"{}")
        self.ok("set", "q.kraddon", "requirements", "-", stdin=b"{}")
        self.ok("unset", "-q", "q.kraddon", "license")
        self.ok("screenshot", "q.kraddon", "shot.png")
        report = self.run_kraddon("diff", "p.kraddon", "q.kraddon", "--json").json
        self.assertEqual({file["change"] for file in report["files"]},
                         {"added", "removed", "changed", "moved"})
        self.accept("diff", report)
        moved = next(file for file in report["files"] if file["change"] == "moved")
        for wrong in ({**moved, "from": None}, {**moved, "a": None}, {**moved, "change": "copied"},
                      {**moved, "change": "added"}, {**moved, "a": {"size": 1}}, {"path": "x"}):
            self.refuse("diff", {**report, "files": [wrong]})


class Sites(SchemaTest, CatalogueTest):

    def setUp(self):
        super().setUp()
        self.addon("a.kraddon", "Wave Tools", "1.0", 1)
        self.addon("b.kraddon", "Signal Kit", "\u00fc 1/2", 2)
        self.write("shot.png", png())
        self.ok("screenshot", "a.kraddon", "shot.png")
        self.ok("set", "--no-verify", "a.kraddon", "requirements", "-",
                stdin=json.dumps(SAMPLES["requirements"]).encode())
        self.ok("sign", "b.kraddon", *signing.words())

    def test_the_files_of_a_site_are_valid(self):
        self.index("a.kraddon", "b.kraddon")
        root = self.root()
        self.accept("root", root)
        index = json.loads(self.path(f"site/{root['index']['path']}").read_text())
        self.accept("index", index)
        for shard in index["shards"].values():
            self.accept("shard", json.loads(self.path(f"site/{shard['path']}").read_text()))
        lines = [json.loads(line) for line in self.path("site/records.ndjson").read_text().splitlines()]
        self.assertEqual(lines[0]["sequence"], 1)
        self.assertTrue(any(record["screenshot"] for record in lines))
        self.assertTrue(any(record["requirements"] for record in lines))
        self.assertTrue(any(record["signers"] for record in lines))
        for record in lines:
            self.accept("record", record)

    def test_the_outputs_are_valid(self):
        self.write("bad.kraddon", self.path("a.kraddon").read_bytes()[:-9])
        result = self.run_kraddon("index", "site", "a.kraddon", "b.kraddon", "bad.kraddon", "--json").json
        self.assertTrue(result["added"] and result["refused"][0]["findings"])
        self.accept("index-result", result)
        for words in (["--yank", f"{GUID.format(1)}@1.0"], ["--unyank", f"{GUID.format(1)}@1.0"],
                      ["--remove", GUID.format(2)], ["--collect"]):
            self.accept("index-result", self.index(*words))
        results = self.ok("search", "site", "wave", "--json").json
        self.assertEqual(len(results["results"]), 1)
        self.accept("search", results)
        self.accept("search", self.ok("search", "site", "zzz", "--json").json)

    def test_others_are_not(self):
        result = self.index("a.kraddon")
        [record] = result["added"]
        root = self.root()
        index = json.loads(self.path(f"site/{root['index']['path']}").read_text())
        [shard] = index["shards"].values()
        shard = json.loads(self.path(f"site/{shard['path']}").read_text())
        samples = {"record": record, "root": root, "index": index, "shard": shard,
                   "index-result": result, "search": {"schema": "kraddon.search/1", "results": []}}
        for name, sample in samples.items():
            self.accept(name, sample)
            (self.accept if name == "record" else self.refuse)(name, {**sample, "more": 1})
            for key in sample:
                self.refuse(name, {k: v for k, v in sample.items() if k != key})
                self.refuse(name, {**sample, key: 1.5})
        for key, value in (("sha256", "0"), ("sequence", "1"),
                           ("package", "../x.kraddon"), ("page", "pages/x/1"),
                           ("digest", "0" * 64), ("created", "yesterday"), ("size", -1),
                           ("requirements", [{"name": "x"}]), ("signers", ["x"]),
                           ("yanked", None)):
            self.refuse("record", {**record, key: value})
        self.refuse("index", {**index, "shards": {"zz": next(iter(index["shards"].values()))}})
        self.refuse("shard", {**shard, "addons": {GUID.format(1).upper(): [record]}})
        self.refuse("shard", {**shard, "addons": {GUID.format(1): []}})


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

    def agree(self, text, is_good):
        """The program and the schema are of that opinion about a project's manifest."""
        self.write("wave/kraddon.toml", text)
        result = self.run_kraddon("build", "wave", "--dry-run", "-q")
        self.assertEqual(result.code == 0, is_good, result.errors)
        self.assertEqual("bad manifest" not in result.errors, is_good)
        (self.accept if is_good else self.refuse)("manifest", self.load(text))

    ODD = (r"a\u0001b", r"\u000B", r"\f", r"a\u007Fb", r"a\u0080b", r"\u0085", r"a\u009F",
           r"\uFFFE", r"a\uFFFFb")

    def test_both_refuse_the_same_texts(self):
        """One odd text at a time, everywhere in a manifest, two of them for each key."""
        self.tree(FULL_FILES, "wave")
        lines = FULL.replace("[build]", 'include = ["**"]\n[build]').splitlines(keepends=True)
        at = lines.index('include = ["**"]\n')
        lines.insert(lines.index('root = "toolbox"\n'), lines.pop(at))
        self.agree("".join(lines), True)
        may_be_empty = {"summary", "author", "contact", "organization", "guid", "type", "source",
                        "main", "thumbnail", "identifier", "date", "description", "exclude"}
        for at, line in enumerate(lines):
            key, _, value = line.strip().partition(" = ")
            if '"' not in value or (key, value) == ("type", '"Korvan Toolbox"'):
                continue
            is_requirement = '[[requirements' in "".join(lines[at - 2:at])
            form = '{} = ["{}"]\n' if value.startswith("[") else '{} = "{}"\n'
            for odd in ("", *(self.ODD[(2 * at + i) % len(self.ODD)] for i in range(2))):
                is_good = odd == "" and (key in may_be_empty or
                                         (key == "version" and is_requirement))
                if key == "include" and not odd:
                    continue  # nothing would be there for the other keys to name
                with self.subTest(line=line, odd=odd):
                    self.agree("".join([*lines[:at], form.format(key, odd), *lines[at + 1:]]),
                               is_good)

    def test_both_take_the_same_values(self):
        self.write("wave/a.m", "a")
        add = '[[files.add]]\nfrom = "a.m"\nto = "{}"\n'
        ignore, output = '[verify]\nignore = ["{}"]\n', '[build]\noutput = "{}"\n'
        example = '[[category]]\nname = "x"\n[[category.example]]\nname = "y"\n{}\n'
        for text, is_good in (
                ('summary = "a\tb\\r\\n\u00a0\U0001f30a"\n', True),
                (ignore.format("KR501"), True), (ignore.format("KR508:docs/**"), True),
                (ignore.format("kr501"), False), (ignore.format("501"), False),
                (ignore.format("KR501:"), False), (ignore.format("KR501x"), False),
                (ignore.format(r"KR508:a\u0085"), False),
                ('[verify]\nerror = ["KR513", "KR508:docs/**"]\nwarn = ["KR401"]\n', True),
                ('[verify]\nerror = ["501"]\n', False), ('[verify]\nwarn = ["KR501:"]\n', False),
                (example.format('main = ""\nsource = ""\nthumbnail = ""'), True),
                (example.format("images = []"), True), (example.format('images = [""]'), False),
                ('[configuration]\nkorvan-paths = ["."]\n', True),
                ('[configuration]\nkorvan-paths = []\n', True),
                ('[configuration]\nkorvan-paths = [""]\n', False),
                ('[configuration]\njava-class-paths = [""]\n', False),
                ('[files]\nroot = "."\n', True), ('[files]\nroot = ""\n', False),
                ('[files]\nexclude = [""]\n', True),
                (add.format("b/c.m"), True), (add.format(r"b\\c"), True),
                (add.format("..."), True), (add.format(".b/c..d"), True),
                (add.format(""), False), (add.format("/x"), False), (add.format("x/"), False),
                (add.format("x//y"), False), (add.format("."), False), (add.format("../x"), False),
                (add.format("x/./y"), False), (add.format("x/.."), False),
                (output.format("{name}"), True), (output.format("a}-{version}-{name}.x"), True),
                (output.format("{nmae}.x"), False), (output.format("a{"), False),
                (output.format("dist/"), False), (output.format(r"a\u0085"), False),
                ('[[revision]]\nversion = "1"\ndate = "2026-13-45"\n', True),
                ('[[revision]]\nversion = "1"\ndate = 2024-02-29\n', True)):
            with self.subTest(text):
                self.agree(SMALLEST + text, is_good)

    def test_policies_are_alike(self):
        self.package("p.kraddon", {"a.m": "a"})
        for text, is_good in (
                ("", True), ("[verify]\n", True), ('[package]\nname = "x"\n', False),
                ('[verify]\nignore = ["KR501"]\nerror = ["KR508:d/**"]\nwarn = []\n', True),
                ('[verify]\nerror = ["kr501"]\n', False), ("[verify]\nstrict = 1\n", False),
                ('[verify]\nwarn = "KR501"\n', False), ("[verify]\nloose = true\n", False)):
            with self.subTest(text):
                self.write("p.toml", text)
                result = self.run_kraddon("verify", "p.kraddon", "--policy", "p.toml")
                self.assertEqual("bad policy" not in result.errors, is_good, result.errors)
                (self.accept if is_good else self.refuse)("policy", self.load(text))

    def test_both_know_the_same_findings(self):
        page = pathlib.Path(__file__).resolve().parents[2] / "docs/findings.md"
        known = set(re.findall(r"^\| (KR\d{3}) ", page.read_text(), re.M))
        self.assertGreater(len(known), 80)
        rules = ", ".join(f'"{name}"' for name in sorted(known))
        self.write("wave/a.m", "a")
        self.agree(SMALLEST + f"[verify]\nignore = [{rules}]\n", True)
        beside = {f"KR{int(name[2:]) + step}" for name in known for step in (-1, 1)} - known
        for name in sorted(beside | {"KR000", "KR001", "KR999", "KR12", "KR1010", "KR", ""}):
            with self.subTest(name):
                self.agree(SMALLEST + f'[verify]\nignore = ["{name}"]\n', False)


if __name__ == "__main__":
    kraddontest.main()
