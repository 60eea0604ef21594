# SPDX-License-Identifier: MIT
"""kraddon sbom"""

import hashlib
import json
import pathlib
import re
import unittest

import jsonschema
import kraddontest
import projecttest
import signing
from hostilezip import Entry, addon, build

SCHEMAS = (pathlib.Path(__file__).resolve().parents[2] /
           "build/editors/node_modules/@cyclonedx/cyclonedx-library/res/schema")
NAMES = ["a.m", "größe.m", "end.", "A.m", "50%.m", "a#b?.m", "lib/\U0001f600.m", "\u202egnp.m", "x\ty.m",
         'q"\\uote.m', "empty"]
ID = re.compile(r"SPDXRef-[A-Za-z0-9.-]+")


def sha(kind, content):
    return hashlib.new(kind, content).hexdigest()


def check_spdx(test, document):
    """What SPDX 2.3 requires of a document; its official schema is neither in Debian nor in npm."""
    test.assertEqual([document[key] for key in ("spdxVersion", "dataLicense", "SPDXID")],
                     ["SPDX-2.3", "CC0-1.0", "SPDXRef-DOCUMENT"])
    test.assertRegex(document["documentNamespace"], r"^urn:uuid:[0-9a-f-]{36}$")
    test.assertRegex(document["creationInfo"]["created"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
    for creator in document["creationInfo"]["creators"]:
        test.assertRegex(creator, r"^(Person|Organization|Tool): .")
    elements = [document, *document["packages"], *document["files"]]
    ids = [element["SPDXID"] for element in elements]
    test.assertEqual(len(ids), len(set(ids)))
    for each in ids:
        test.assertTrue(ID.fullmatch(each), each)
    for package in document["packages"]:
        test.assertIsInstance(package["name"], str)
        test.assertEqual(package["downloadLocation"], "NOASSERTION")
        test.assertEqual(package["filesAnalyzed"], "packageVerificationCode" in package)
        test.assertRegex(package.get("supplier", "NOASSERTION"),
                         r"^(NOASSERTION$|Person: .|Organization: .)")
    for file in document["files"]:
        test.assertEqual([sum["algorithm"] for sum in file["checksums"]], ["SHA1", "SHA256"])
    for relationship in document["relationships"]:
        test.assertIn(relationship["spdxElementId"], ids)
        test.assertIn(relationship["relatedSpdxElement"], ids)
        test.assertIn(relationship["relationshipType"], ("DESCRIBES", "CONTAINS", "DEPENDS_ON"))
    known = {info["licenseId"] for info in document.get("hasExtractedLicensingInfos", [])}
    named = set(re.findall(r"LicenseRef-[\w.-]+", document["packages"][0]["licenseDeclared"]))
    test.assertEqual(known, named)
    for info in document.get("hasExtractedLicensingInfos", []):
        test.assertTrue(info["extractedText"] or info["licenseId"] == "LicenseRef-license")


def strings_of(value):
    if isinstance(value, str):
        yield value
    elif isinstance(value, (dict, list)):
        for each in value.values() if isinstance(value, dict) else value:
            yield from strings_of(each)


class Sbom(projecttest.ProjectTest):

    def spdx(self, name="p.kraddon", *words):
        document = self.ok("sbom", name, *words).json
        check_spdx(self, document)
        return document

    def cyclonedx(self, name="p.kraddon"):
        return self.ok("sbom", name, "--format", "cyclonedx").json

    def with_license(self, *fields):
        self.package("p.kraddon", {"a.m": "a"}, "--force")
        self.run_kraddon("set", "p.kraddon", "license", *fields, "--no-verify")
        return self.spdx()

    def full_package(self):
        self.project(projecttest.FULL, projecttest.FULL_FILES, "full")
        self.ok("build", "full", "-o", "full.kraddon", "--timestamp", "1700000000", "--no-verify")
        return "full.kraddon"


class Contents(Sbom):

    def test_every_file_is_named_as_list_does_with_its_sums(self):
        files = {name: f"content of {name}" for name in NAMES}
        self.package("p.kraddon", {**files, "folder/": ""})

        spdx, cyclone = self.spdx(), self.cyclonedx()

        listed = [each["path"] for each in self.ok("list", "p.kraddon", "--json").json["entries"]
                  if each["kind"] == "file"]
        self.assertEqual(sorted(listed), sorted(files))
        self.assertEqual([file["fileName"] for file in spdx["files"]], listed)
        for file in spdx["files"]:
            content = files[file["fileName"]].encode()
            self.assertEqual([sum["checksumValue"] for sum in file["checksums"]],
                             [sha("sha1", content), sha("sha256", content)])
        self.assertEqual(
            [(file["name"], file["hashes"]) for file in cyclone["metadata"]["component"]["components"]],
            [(name, [{"alg": "SHA-256", "content": sha("sha256", files[name].encode())}])
             for name in listed])

    def test_the_verification_code_is_the_sum_of_the_sorted_sums(self):
        files = {f"{i}.m": str(i) for i in range(20)}
        self.package("p.kraddon", files)
        sums = "".join(sorted(sha("sha1", content.encode()) for content in files.values()))
        self.assertEqual(self.spdx()["packages"][0]["packageVerificationCode"],
                         {"packageVerificationCodeValue": sha("sha1", sums.encode())})

    def test_a_package_without_files_has_a_bill(self):
        self.package("p.kraddon")
        document = self.spdx()
        self.assertEqual(document["files"], [])
        self.assertEqual(self.cyclonedx()["metadata"]["component"]["components"], [])

    def test_the_add_on_and_its_requirements_are_described(self):
        name = self.full_package()

        spdx, cyclone = self.spdx(name), self.cyclonedx(name)

        package = spdx["packages"][0]
        self.assertEqual([package[key] for key in ("name", "versionInfo", "supplier", "originator",
                                                   "licenseDeclared", "summary")],
                         ["Wave Tools", "1.2", "Organization: Lind & Co", "Person: Ada Lind",
                          "BSD-3-Clause", "Short-time spectra"])
        self.assertEqual([(each["name"], each.get("versionInfo"), each.get("comment"))
                          for each in spdx["packages"][1:]],
                         [("Korvan", "9.1", "identifier KV"), ("Sound", None, None)])
        self.assertEqual([each["relatedSpdxElement"] for each in spdx["relationships"]
                          if each["relationshipType"] == "DEPENDS_ON"],
                         [each["SPDXID"] for each in spdx["packages"][1:]])
        component = cyclone["metadata"]["component"]
        self.assertEqual([component[key] for key in ("name", "version", "supplier", "authors",
                                                     "licenses")],
                         ["Wave Tools", "1.2", {"name": "Lind & Co"}, [{"name": "Ada Lind"}],
                          [{"expression": "BSD-3-Clause"}]])
        self.assertEqual([(each["name"], each.get("version")) for each in cyclone["components"]],
                         [("Korvan", "9.1"), ("Sound", None)])
        self.assertEqual(cyclone["dependencies"], [{"ref": "addon", "dependsOn": [
            each["bom-ref"] for each in cyclone["components"]]}])
        self.assertIn({"name": "kraddon:digest",
                       "value": self.ok("info", name, "--field", "digest").text.strip()},
                      component["properties"])

    def test_hostile_texts_stay_texts(self):
        hostile = "a\"\\\n\u202e\x7f</script>\U0001f600"
        self.package("p.kraddon", {"a.m": "a"})
        self.write("new.json", json.dumps({"productDependencies": [
            {"name": hostile, "version": hostile, "identifier": hostile}],
            "supportPackageDependencies": []}))
        self.run_kraddon("set", "p.kraddon", "requirements", "new.json")
        self.run_kraddon("set", "p.kraddon", "properties", f"name={hostile}",
                         f"authorName={hostile}", "--no-verify")
        self.run_kraddon("set", "p.kraddon", "license", f"type={hostile}", "--no-verify")
        for form in ("spdx", "cyclonedx"):
            result = self.ok("sbom", "p.kraddon", "--format", form)
            self.assertNotIn("\u202e", result.text)
            self.assertNotIn("\x7f", result.text)
            self.assertGreaterEqual(list(strings_of(result.json)).count(hostile), 4, form)
        check_spdx(self, self.ok("sbom", "p.kraddon").json)


class Licenses(Sbom):

    def test_expressions_of_spdx_are_taken_in_their_usual_spelling(self):
        for label, expected in (
                ("mit", "MIT"), ("GPL-2.0+", "GPL-2.0+"), ("apache-2.0+", "Apache-2.0+"),
                ("(MIT  OR bsd-3-clause)AND Zlib", "(MIT OR BSD-3-Clause) AND Zlib"),
                ("GPL-3.0-only WITH classpath-exception-2.0",
                 "GPL-3.0-only WITH Classpath-exception-2.0"),
                ("MIT OR LicenseRef-house-rules", "MIT OR LicenseRef-house-rules")):
            with self.subTest(label=label):
                document = self.with_license(f"type={label}", "text=Terms.")
                self.assertEqual(document["packages"][0]["licenseDeclared"], expected)

    def test_other_labels_become_references_with_the_text(self):
        for label, expected in (
                ("My own terms, 2nd", "LicenseRef-My-own-terms-2nd"), ("MIT OR", "LicenseRef-MIT-OR"),
                ("(MIT", "LicenseRef-MIT"), ("MIT)", "LicenseRef-MIT"), ("MIT Zlib", "LicenseRef-MIT-Zlib"),
                ("MIT WITH MIT", "LicenseRef-MIT-WITH-MIT"), ("()", "LicenseRef-license"),
                ("(MIT) WITH LLVM-exception", "LicenseRef-MIT-WITH-LLVM-exception"),
                ("Bedingungen für alle", "LicenseRef-Bedingungen-f-r-alle"), ("自由", "LicenseRef-license"),
                ("LicenseRef-", "LicenseRef-LicenseRef"), ("x" * 5000, "LicenseRef-" + "x" * 100)):
            with self.subTest(label=label):
                document = self.with_license(f"type={label}", "text=Terms.")
                self.assertEqual(document["packages"][0]["licenseDeclared"], expected)
                self.assertEqual(document["hasExtractedLicensingInfos"],
                                 [{"licenseId": expected, "extractedText": "Terms.", "name": label}])
                self.assertEqual(self.cyclonedx()["metadata"]["component"]["licenses"],
                                 [{"license": {"name": label, "text": {"content": "Terms."}}}])

    def test_without_license_nothing_is_asserted(self):
        self.package("p.kraddon", {"a.m": "a"})
        self.assertEqual(self.spdx()["packages"][0]["licenseDeclared"], "NOASSERTION")
        self.assertNotIn("licenses", self.cyclonedx()["metadata"]["component"])

    def test_a_long_expression_is_read_in_a_moment(self):
        label = "(" * 20000 + "MIT" + ")" * 20000
        self.assertEqual(self.with_license("text=t", f"type={label}")["packages"][0]["licenseDeclared"],
                         label)


class Bytes(Sbom):

    def test_the_same_content_gives_the_same_bytes(self):
        name = self.full_package()
        for form in ("spdx", "cyclonedx"):
            first = self.ok("sbom", name, "--format", form).out
            self.write("copy.kraddon", self.path(name).read_bytes())
            self.assertEqual(self.ok("sbom", "copy.kraddon", "--format", form,
                                     env={"TZ": "Asia/Tokyo", "LC_ALL": "C"}).out, first)
            self.ok("sbom", name, "--format", form, "-o", "bill.json")
            self.assertEqual(self.path("bill.json").read_bytes(), first)

    def test_signing_changes_nothing_in_it(self):
        self.package("p.kraddon", {"a.m": "a", "b/c.m": "c"})
        self.ok("set", "p.kraddon", "license", "type=MIT", "text=Terms.", "--no-verify")
        before = {form: self.ok("sbom", "p.kraddon", "--format", form).out
                  for form in ("spdx", "cyclonedx")}
        self.ok("sign", "p.kraddon", *signing.words())
        self.assertIn(signing.ORIGIN, self.entries())
        for form, bill in before.items():
            self.assertEqual(self.ok("sbom", "p.kraddon", "--format", form).out, bill)

    def test_other_content_has_other_identifiers(self):
        self.package("p.kraddon", {"a.m": "a"})
        self.package("q.kraddon", {"a.m": "b"})
        self.assertNotEqual(self.spdx()["documentNamespace"],
                            self.spdx("q.kraddon")["documentNamespace"])
        self.assertNotEqual(self.cyclonedx()["serialNumber"],
                            self.cyclonedx("q.kraddon")["serialNumber"])

    def test_the_time_is_that_of_the_last_change(self):
        self.package("p.kraddon", {"a.m": "a"})
        self.assertEqual(self.spdx()["creationInfo"]["created"], "2023-11-14T22:13:20Z")
        self.assertEqual(self.cyclonedx()["metadata"]["timestamp"], "2023-11-14T22:13:20Z")

    def test_a_package_without_times_has_that_of_1970(self):
        self.write("p.kraddon", build(addon([Entry(b"files/a.m", b"a")])))
        self.assertEqual(self.spdx()["creationInfo"]["created"], "1970-01-01T00:00:00Z")


class Failures(Sbom):

    def test_what_is_not_an_add_on_is_refused(self):
        self.write("p.docx", build([entry for entry in addon([]) if b"metadata" not in entry.name]))
        self.fails("sbom", "p.docx", message="cannot describe 'p.docx': it is not an add-on")

    def test_an_unknown_format_is_wrong_usage(self):
        self.misused("sbom", "p.kraddon", "--format", "spdxx",
                     message="unknown format 'spdxx': did you mean 'spdx'?")

    def test_damaged_bytes_leave_no_document(self):
        self.package("p.kraddon", {"a.m": "content of a"}, "--level", "0")
        content = self.path("p.kraddon").read_bytes()
        self.write("p.kraddon", content.replace(b"content of a", b"content of b"))
        self.assertEqual(self.run_kraddon("sbom", "p.kraddon", "-o", "bill.json").code, 1)
        self.assertFalse(self.path("bill.json").exists())


@unittest.skipUnless(SCHEMAS.is_dir(), "needs the schemas that scripts/setup test fetches")
class OfficialSchema(Sbom):

    def valid(self, document):
        schema = json.loads((SCHEMAS / "bom-1.6.SNAPSHOT.schema.json").read_text())
        store = {}
        for path in SCHEMAS.glob("*.json"):
            each = json.loads(path.read_text())
            store[each.get("$id", path.name)] = each
        resolver = jsonschema.RefResolver(schema["$id"], schema, store=store)
        jsonschema.Draft7Validator(schema, resolver,
                                   format_checker=jsonschema.FormatChecker()).validate(document)

    def test_bills_of_cyclonedx_are_valid(self):
        self.valid(self.cyclonedx(self.full_package()))
        self.package("p.kraddon", {name: name for name in NAMES})
        self.valid(self.cyclonedx())
        for fields in (("type=Own terms", "text=t"), ("text=t",), ("type=MIT",)):
            self.with_license(*fields)
            self.valid(self.cyclonedx())

    def test_the_validator_refuses_what_is_wrong(self):
        self.package("p.kraddon", {"a.m": "a"})
        for change in ({"serialNumber": "1"}, {"specVersion": 1.6}, {"components": [{"name": "x"}]}):
            with self.assertRaises(jsonschema.ValidationError):
                self.valid({**self.cyclonedx(), **change})


if __name__ == "__main__":
    kraddontest.main()
