#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Other programs find the program's signatures valid: a checker written from the standard,
xmlsec1, and Apache POI as far as it goes."""

import os
import re
import subprocess
import unittest
import urllib.parse

import lab as laboratory
import checker
import keys
import signer
from opc_package import Package
from signature_case import SignatureCase

HERE = os.path.dirname(os.path.abspath(__file__))
JARS = [f"/usr/share/java/{name}.jar" for name in (
    "poi", "poi-ooxml", "poi-ooxml-schemas", "xmlbeans", "commons-collections4", "commons-compress",
    "commons-codec", "commons-math3", "slf4j-api", "slf4j-nop", "xmlsec", "bcprov", "bcpkix",
    "bcutil")]
KINDS = ("rsa2048", "rsa3072", "p256", "p384", "p521")
NAMES = {**laboratory.FILES, "größe/日本.m": "a", "a b.m": "b", "50%.m": "c", "end.": "d",
         "A.m": "e", "q?#&.m": "f", "it's.m": "g"}


class WithChecker(SignatureCase):

    def check(self, content):
        package = Package(content)
        made = checker.check(package)
        self.assertEqual(checker.uncovered(package, made), [])
        return made

    def test_every_part_is_covered_with_its_type(self):
        plain = self.create(NAMES)
        for kind in KINDS:
            with self.subTest(kind=kind):
                signed = self.sign(plain, keys.Signer(kind, "Ada"))
                [made] = self.check(signed)
                self.assertEqual(sorted(made.covered),
                                 sorted(part for part in Package(signed).parts()
                                        if not part.startswith(signer.FOLDER)))
                self.assertEqual(made.time, "2026-02-02T02:40:00Z")

    def test_the_references_are_in_the_order_of_the_names(self):
        [made] = self.check(self.sign(self.create(NAMES), keys.Signer("p256", "Ada")))
        self.assertEqual(list(made.covered), sorted(made.covered, key=str.encode))
        self.assertEqual(set(made.covered.values()), {"whole"})

    def test_a_second_signature_keeps_the_first(self):
        once = self.sign(self.create(), keys.Signer("rsa2048", "Ada"))
        twice = self.sign(once, keys.Signer("p384", "Bo"))
        self.assertEqual(len(self.check(twice)), 2)
        before, after = Package(once), Package(twice)
        changed = {name for name in after.items if after.items[name] != before.items.get(name)}
        new = {name for name in changed if name not in before.items}
        self.assertEqual(len(new), 1)
        self.assertLessEqual(changed - new, {"package/services/digital-signature/_rels/"
                                             "origin.psdsor.rels", "[Content_Types].xml"})

    def test_only_what_carries_the_signature_is_added(self):
        plain = self.create(NAMES)
        before, after = Package(plain), Package(self.sign(plain, keys.Signer("p256", "Ada")))
        changed = {name for name in before.items if after.items.get(name) != before.items[name]}
        self.assertLessEqual(changed, {"[Content_Types].xml", "_rels/.rels"})
        self.assertTrue(all(("/" + name).startswith(signer.FOLDER)
                            for name in set(after.items) - set(before.items)))

    def test_unsign_gives_the_package_back(self):
        plain = self.create(NAMES)
        self.file("u.kraddon", self.sign(plain, keys.Signer("p256", "Ada")))
        self.kraddon("unsign", "u.kraddon")
        before, after = Package(plain), Package(self.bytes_of("u.kraddon"))
        self.assertEqual({name: content for name, content in after.items.items()
                          if name not in ("[Content_Types].xml", "_rels/.rels")},
                         {name: content for name, content in before.items.items()
                          if name not in ("[Content_Types].xml", "_rels/.rels")})
        self.assertEqual(checker_relationships(after), checker_relationships(before))
        self.assertEqual({part: after.type_of(part) for part in after.parts()},
                         {part: before.type_of(part) for part in before.parts()})


def checker_relationships(package):
    return sorted(sorted(each.attrib.items()) for each in package.relationships("/"))


class WithXmlsec(SignatureCase):

    def verify(self, content, trusted):
        """The numbers that xmlsec1 prints: (good, all) references, of SignedInfo and manifest."""
        package = Package(content)
        [part] = laboratory.signature_parts(package)
        words = []
        for number, each in enumerate(package.parts()):
            self.file(f"parts/{number}", package[each])
            uri = f"{each}?ContentType={package.type_of(each)}"
            for form in {uri, urllib.parse.unquote(uri)}:  # it looks for both
                words.append(f"--url-map:{form}")
                words.append(self.path(f"parts/{number}"))
        self.file("signature.xml", package[part])
        self.file("trusted.pem", trusted.pem())
        done = subprocess.run(
            ["xmlsec1", "--verify", "--trusted-pem", self.path("trusted.pem"), *words,
             self.path("signature.xml")], capture_output=True, check=False)
        text = done.stderr.decode()
        counts = [tuple(map(int, pair)) for pair in re.findall(r"\(ok/all\): (\d+)/(\d+)", text)]
        return done.returncode, counts, len(package.parts())

    def test_all_references_are_good(self):
        plain = self.create(NAMES)
        for kind in KINDS:
            with self.subTest(kind=kind):
                ada = keys.Signer(kind, "Ada")
                code, counts, parts = self.verify(self.sign(plain, ada), ada)
                self.assertEqual(code, 0)
                self.assertEqual(counts, [(1, 1), (parts - 3, parts - 3)])

    def test_it_notices_a_change(self):
        ada = keys.Signer("p256", "Ada")
        package = Package(self.sign(self.create(NAMES), ada))
        package["/files/a.m"] = b"changed"
        _, counts, parts = self.verify(package.bytes(), ada)
        self.assertNotEqual(counts, [(1, 1), (parts - 3, parts - 3)])


@unittest.skipUnless(all(map(os.path.exists, JARS)), "needs libapache-poi-java")
class WithPoi(SignatureCase):
    """Debian's POI has no relationships transform; of signatures without it, it reads all but the
    core properties, which the test hands to it."""

    def setUp(self):
        super().setUp()
        path = ":".join(JARS)
        self.succeeds("javac", "-proc:none", "-cp", path, "-d", self.folder,
                      os.path.join(HERE, "PoiSignatures.java"))
        self.java = ["java", "-cp", f"{path}:{self.folder}", "PoiSignatures"]

    def poi(self, content):
        return self.succeeds(*self.java, self.file("poi.zip", content)).stdout.decode().split("\n")

    def test_signatures_of_the_program_are_valid(self):
        for kind in ("rsa2048", "p256", "p521"):
            with self.subTest(kind=kind):
                signed = self.sign(self.create(), keys.Signer(kind, "Ada"))
                self.assertEqual(self.poi(signed), ["valid CN=Ada", ""])

    def test_it_notices_a_change(self):
        package = Package(self.sign(self.create(), keys.Signer("p256", "Ada")))
        package["/files/a.m"] = b"changed"
        self.assertEqual(self.poi(package.bytes())[0].split()[0], "broken")


if __name__ == "__main__":
    unittest.main(verbosity=2)
