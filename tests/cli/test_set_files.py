# SPDX-License-Identifier: MIT
"""kraddon set: the texts of fields from files, and what -v names in commands that change."""

import kraddontest


class Texts(kraddontest.CliTest):
    def setUp(self):
        super().setUp()
        self.package(files={"a.m": "a"})

    def set(self, *words, **kw):
        result = self.run_kraddon("set", "p.kraddon", *words, **kw)
        self.assertEqual((result.code, result.out), (0, b""), result.errors)

    def text(self):
        return self.ok("get", "p.kraddon", "license").json["text"]

    def test_a_field_takes_the_text_of_a_file(self):
        self.write("sub/LICENSE", "\ufeffGrüße\n\n\tbye\n")
        self.set("license", "type=MIT", "text=@sub/LICENSE")
        self.assertEqual(self.text(), "Grüße\n\n\tbye\n")

    def test_a_field_takes_standard_input(self):
        self.set("license", "type=MIT", "text=@-", stdin=b"terms\n")
        self.assertEqual(self.text(), "terms\n")

    def test_two_at_signs_are_one_in_the_text(self):
        self.set("properties", "authorContact=@@ada")
        self.assertEqual(self.ok("get", "p.kraddon", "properties").json["authorContact"], "@ada")
        self.set("properties", "authorContact=ada@x.org")

    def test_form_feeds_become_line_ends(self):
        self.write("LICENSE", "one\ftwo")
        self.set("license", "type=x", "text=@LICENSE")
        self.assertEqual(self.text(), "one\ntwo")
        self.set("license", "text=a\fb")
        self.assertEqual(self.text(), "a\nb")

    def test_what_cannot_be_read_or_stored_changes_nothing(self):
        before = self.path("p.kraddon").read_bytes()
        self.fails("set", "p.kraddon", "properties", "authorContact=@ada",
                   message="cannot read 'ada': No such file or directory",
                   hint="'@@ada' is the text '@ada'")
        self.write("bad", b"\xff")
        self.fails("set", "p.kraddon", "license", "text=@bad",
                   message="bad value of 'license.text': it is not UTF-8")
        self.misused("set", "p.kraddon", "license", "text=@-", "type=@-",
                     message="bad value '@-': standard input can be read only once")
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)


class Verbose(kraddontest.CliTest):
    def lines(self, verb, *words):
        result = self.run_kraddon(*words, "-v")
        self.assertEqual((result.code, result.out), (0, b""), result.errors)
        return [line for line in result.errors.splitlines() if line.startswith(f"{verb}: ")]

    def test_each_command_names_what_it_did(self):
        self.tree({"a.m": "a", "lib/b.m": "b", "lib/void/": "", "x\x1b.m": "x"})
        added = ["added: a.m", "added: lib/b.m", "added: lib/void/", r"added: x\x1b.m"]
        self.assertEqual(self.lines("added", "create", "p.kraddon", "src", "--name", "x"), added)
        self.assertEqual(self.lines("added", "add", "p.kraddon", "src/.", "--into", "more"),
                         [line.replace(": ", ": more/") for line in added])
        self.assertEqual(self.lines("removed", "remove", "p.kraddon", "more/lib"),
                         ["removed: more/lib/", "removed: more/lib/b.m", "removed: more/lib/void/"])
        self.assertEqual(self.lines("extracted", "extract", "p.kraddon", "-d", "out", "lib", "a.m"),
                         ["extracted: out/a.m", "extracted: out/lib/b.m", "extracted: out/lib/void/"])
        self.assertEqual(self.lines("set", "set", "p.kraddon", "properties", "version=2.0",
                                    "summary=s"),
                         ["set: properties.summary", "set: properties.version"])
        self.assertEqual(self.lines("set", "set", "p.kraddon", "properties", "version=2.0"), [])
        self.write("r.json", '[{"date": "", "version": "2.0", "description": "d"}]')
        self.assertEqual(self.lines("set", "set", "p.kraddon", "revisions", "r.json"),
                         ["set: revisions"])

    def test_without_it_nothing_is_named(self):
        self.tree({"a.m": "a"})
        self.assertNotIn("a.m", self.run_kraddon("create", "p.kraddon", "src", "--name",
                                                 "x").errors)


if __name__ == "__main__":
    kraddontest.main()
