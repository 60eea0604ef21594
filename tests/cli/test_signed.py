# SPDX-License-Identifier: MIT
"""Packages with a signature, which a change makes void"""

import kraddontest
from hostilezip import Entry, addon, build

ORIGIN = ('<Relationship Id="s" Target="/sig/origin" Type="http://schemas.openxmlformats.org/'
          'package/2006/relationships/digital-signature/origin"/>')
TYPES = ('<Override PartName="/sig/origin" ContentType="application/'
         'vnd.openxmlformats-package.digital-signature-origin"/>')
WARNING = ("kraddon: {}: warning: package 'p.kraddon': its signature is no longer "
           "valid\n")


class Signed(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.write("p.kraddon", build(addon([Entry(b"sig/origin"), Entry(b"files/a.m", b"a")],
                                            types=TYPES, relationships=ORIGIN)))

    def test_a_change_warns_that_the_signature_is_void(self):
        self.write("b.m", "b")
        self.run_kraddon("set", "p.kraddon", "properties", "GUID=g")
        for words in (("set", "p.kraddon", "properties", "summary=changed"),
                      ("add", "p.kraddon", "b.m"), ("mkdir", "p.kraddon", "c"),
                      ("remove", "p.kraddon", "b.m")):
            result = self.run_kraddon(*words)
            self.assertEqual((result.code, result.errors), (0, WARNING.format(words[0])), words)
        self.assertIn("sig/origin", self.entries())

    def test_reading_it_says_nothing(self):
        for words in (("info", "p.kraddon"), ("list", "p.kraddon"),
                      ("extract", "p.kraddon", "-d", "out")):
            self.ok(*words)

    def test_a_change_that_changes_nothing_says_nothing(self):
        self.run_kraddon("set", "p.kraddon", "properties", "summary=same")
        before = self.path("p.kraddon").read_bytes()

        result = self.run_kraddon("remove", "p.kraddon", "nothing")

        self.assertNotIn("signed", result.errors)
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)

    def test_a_package_without_signature_says_nothing(self):
        self.package("q.kraddon", {"a.m": "a"})
        self.ok("set", "q.kraddon", "properties", "summary=changed")


if __name__ == "__main__":
    kraddontest.main()
