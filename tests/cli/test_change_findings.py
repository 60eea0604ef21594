# SPDX-License-Identifier: MIT
"""What a change brings about that verify would report"""

import json

import kraddontest
import test_secrets

APPS = [{"name": "Viewer", "guid": "11111111-2222-3333-4444-555555555555",
         "relativePath": "a.m", "installByDefault": "true"}]
KEY = test_secrets.key("PRIVATE KEY")


class ChangeFindings(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", {"a.m": "x", "lib/b.m": "y"})

    def finds(self, *words, findings, package="p.kraddon", **kw):
        """Runs it, and expects success and these findings on standard error: a prefix each."""
        result = self.run_kraddon(*words, **kw)
        self.assertEqual((result.code, result.out), (0, b""), result.errors)
        lines = result.errors.splitlines()
        self.assertEqual(len(lines), len(findings), result.errors)
        for line, finding in zip(lines, findings):
            self.assertTrue(line.startswith(f"{package}: {finding}"), line)

    def refuses(self, *words, findings, message, hint, package="p.kraddon", **kw):
        before = self.path(package).read_bytes() if self.path(package).exists() else None
        result = self.run_kraddon(*words, **kw)
        self.assertEqual((result.code, result.out), (1, b""), result.errors)
        lines = result.errors.splitlines()
        self.assertEqual(lines[-2:], [f"kraddon: {words[0]}: {message}", f"hint: {hint}"])
        self.assertEqual(len(lines), len(findings) + 2, result.errors)
        for line, finding in zip(lines, findings):
            self.assertTrue(line.startswith(f"{package}: {finding}"), line)
        after = self.path(package).read_bytes() if self.path(package).exists() else None
        self.assertEqual(after, before)

    def set(self, document, value, *words, **kw):
        return ("set", "p.kraddon", document, "-", *words), {"stdin": json.dumps(value).encode()}

    def test_set_refuses_an_error_that_it_would_bring_about(self):
        self.refuses("set", "p.kraddon", "properties", "name=",
                     findings=["error KR309: the add-on has no name"],
                     message="cannot change 'p.kraddon': it would have 1 new error",
                     hint="--no-verify makes the change anyway")
        self.ok("set", "p.kraddon", "properties", "name=", "--no-verify")
        self.assertEqual(self.ok("get", "p.kraddon", "properties").json["name"], "")
        self.ok("set", "p.kraddon", "properties", "summary=it can be repaired step by step")

    def test_set_refuses_a_document_that_names_what_is_not_there(self):
        words, kw = self.set("apps", [dict(APPS[0], relativePath="none.m")])
        self.refuses(*words, **kw, findings=["error KR401: /metadata/applications.xml:1: "],
                     message="cannot change 'p.kraddon': it would have 1 new error",
                     hint="--no-verify makes the change anyway")
        self.ok(*words, "--no-verify", **kw)
        # The whole document is new, even where it says what it said before.
        worse = [dict(APPS[0], relativePath="none.m"), dict(APPS[0], name="Other", guid="x")]
        words, kw = self.set("apps", worse)
        self.refuses(*words, **kw, findings=["error KR401: /metadata/applications.xml:1: ",
                                             "warning KR505: /metadata/applications.xml:1: "],
                     message="cannot change 'p.kraddon': it would have 1 new error",
                     hint="--no-verify makes the change anyway")
        words, kw = self.set("apps", APPS)
        self.ok(*words, **kw)

    def test_set_prints_the_warnings_that_it_brings_about_and_no_others(self):
        self.finds("set", "p.kraddon", "properties", "GUID=123", "version=one two",
                   findings=["warning KR506: version 'one two'",
                             "warning KR505: /metadata/addonProperties.xml:1: "])
        self.ok("set", "p.kraddon", "properties", "summary=s")
        self.finds("set", "p.kraddon", "license", "type=MIT",
                   findings=["warning KR501: /metadata/license.xml:1: the license has no text"])
        self.ok("set", "p.kraddon", "properties", "GUID=124", "-q")
        words, kw = self.set("revisions", [{"date": "", "version": "3.0", "description": "x"}])
        self.finds(*words, **kw, findings=["warning KR407: /metadata/revisionHistory.xml:1: "])
        self.finds("set", "p.kraddon", "properties", "version=4.0",
                   findings=["warning KR407: /metadata/revisionHistory.xml:1: "])

    def test_create_prints_what_is_wrong_with_what_it_is_given(self):
        self.finds("create", "q.kraddon", "--name", "Q", "--guid", "123", "--version", "one two",
                   package="q.kraddon",
                   findings=["warning KR506: version 'one two'",
                             "warning KR505: /metadata/addonProperties.xml:1: "])
        self.ok("create", "r.kraddon", "--name", "Q", "--guid", "123", "-q")

    def test_create_refuses_what_would_be_an_error(self):
        self.refuses("create", "q.kraddon", "--name", " ", package="q.kraddon",
                     findings=["error KR309: the add-on has no name"],
                     message="cannot create 'q.kraddon': it would have 1 new error",
                     hint="'kraddon verify --explain ID' explains a finding")
        self.assertFalse(self.path("q.kraddon").exists())

    def test_unset_prints_what_is_missing_then(self):
        self.ok("set", "p.kraddon", "license", "type=MIT", "text=Do what you like.")
        self.finds("unset", "p.kraddon", "license",
                   findings=["warning KR501: the add-on has no license"])

    def test_removing_a_file_that_a_document_names_is_reported(self):
        words, kw = self.set("apps", APPS)
        self.ok(*words, **kw)
        words, kw = self.set("configuration", {"korvanPaths": ["lib"], "javaClassPaths": []})
        self.ok(*words, **kw)

        dry = self.run_kraddon("remove", "p.kraddon", "a.m", "lib", "--dry-run")
        self.finds("remove", "p.kraddon", "a.m", "lib",
                   findings=["error KR401: /metadata/applications.xml:1: the app 'Viewer' names",
                             "error KR404: /metadata/configuration.xml:1: the search path names",
                             "warning KR511: the add-on has no files"])
        self.assertEqual((dry.code, dry.text), (0, "a.m\nlib/\nlib/b.m\n"))
        self.assertEqual(len(dry.errors.splitlines()), 3)
        self.write("other.m", "z")
        self.ok("add", "p.kraddon", "other.m")
        self.write("A.m", "z")
        self.finds("add", "p.kraddon", "A.m",
                   findings=["warning KR408: /metadata/applications.xml:1: "])

    def test_add_and_mkdir_report_what_is_wrong_with_new_entries(self):
        self.write("id.pem", KEY)
        self.write("A.M", "x")
        self.write("notes.swp", "x")
        self.finds("add", "p.kraddon", "id.pem", "A.M", "notes.swp",
                   findings=["warning KR514: a.m: ", "warning KR509: id.pem:1: ",
                             "warning KR508: notes.swp: "])
        self.finds("mkdir", "p.kraddon", "aux", "fine", findings=["warning KR507: aux: "])
        self.write("b.m", KEY)
        self.finds("add", "p.kraddon", "b.m", "--into", "lib", "--replace",
                   findings=["warning KR509: lib/b.m:1: "])
        self.finds("add", "p.kraddon", "id.pem", "--as", "c.key",
                   findings=["warning KR509: c.key:1: "])

    def test_a_file_that_is_there_already_is_not_read(self):
        self.write("id.pem", KEY)
        self.run_kraddon("add", "p.kraddon", "id.pem")
        self.ok("mkdir", "p.kraddon", "more")
        self.ok("remove", "p.kraddon", "lib")


if __name__ == "__main__":
    kraddontest.main()
