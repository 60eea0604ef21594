#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""No manipulation of a signed package passes for the signed one: those that have names, and those
that a generator makes up."""

import collections
import os
import sys
import unittest

import lab as laboratory  # first: it finds the folders of the others
import attacks_on_keys
import attacks_on_links
import attacks_on_parts
import attacks_on_xml
from attack_list import ATTACKS, made
from mutator import Mutator, content_of
from opc_package import Package
from program import KRADDON, run
from signature_case import SignatureCase

SLOW = os.environ.get("KRADDON_SLOW_BUILD") == "1"
VARIANTS = int(os.environ.get("KRADDON_SIGNATURE_VARIANTS", "200" if SLOW else "10000"))
AT_ONCE = 250
MODULES = (attacks_on_keys, attacks_on_links, attacks_on_parts, attacks_on_xml)


TRUSTED = ("--require-signature", "--trust", "root.pem")


class LabCase(SignatureCase):

    def setUp(self):
        super().setUp()
        self.lab = laboratory.Lab(self.folder, self.create, self.sign)


class Attacks(LabCase):

    def test_the_signed_package_itself_is_valid(self):
        self.assertEqual(self.errors(self.lab.signed, *TRUSTED), [])
        self.assertEqual(self.errors(self.lab.package().bytes(), *TRUSTED), [])

    def test_there_are_many(self):
        self.assertGreater(len(ATTACKS), 60)

    def test_none_is_valid_for_an_add_on(self):
        names = {f"{name}.kraddon": made(self.lab, name) for name in ATTACKS}
        for name, content in names.items():
            self.file(name, content)

        verdicts = self.verdicts(list(names), *TRUSTED)

        for name, findings in verdicts.items():
            with self.subTest(attack=name):
                self.assertIn("error", [each["severity"] for each in findings])

    def test_what_is_not_supported_is_not_trusted_in_any_package(self):
        for name in ATTACKS:
            self.file(f"{name}.kraddon", made(self.lab, name))
        names = [f"{name}.kraddon" for name in ATTACKS]
        unsupported = [name for name, findings in self.verdicts(names, *TRUSTED).items()
                       if "KR608" in [each["id"] for each in findings]]
        self.assertGreater(len(unsupported), 40)

        for name, findings in self.verdicts(unsupported, "--opc", *TRUSTED).items():
            with self.subTest(attack=name):
                self.assertIn("error", [each["severity"] for each in findings])

    def test_none_makes_the_list_of_signatures_good(self):
        """What counts is the exit code: of scripts that ask only who signed."""
        for name in list(ATTACKS)[::4 if SLOW else 1]:
            content = made(self.lab, name)
            with self.subTest(attack=name):
                self.file("p.kraddon", content)
                outcome = run(KRADDON, "signatures", "p.kraddon", "--trust", "root.pem",
                              cwd=self.folder)
                self.assertIn(outcome.code, (0, 1), str(outcome))
                if outcome.code == 0:
                    self.assertEqual(content_of(Package(content)),
                                     content_of(self.lab.package()), str(outcome))

    def test_the_reason_names_the_first_part(self):
        package = self.lab.package()
        package["/files/b.m"] = package["/files/a.m"] = b"changed"
        _, [signature] = self.signatures(package.bytes())
        self.assertEqual(signature["reason"], "'/files/a.m' does not match it (the first of 2)")
        self.assertEqual(signature["changed"], ["/files/a.m", "/files/b.m"])

    def test_changes_that_mean_nothing_are_valid(self):
        package = self.lab.package()
        package.items = dict(reversed(package.items.items()))
        package.set_type("/files/a.m", package.type_of("/files/a.m"))
        self.assertEqual(self.errors(package.bytes(), *TRUSTED), [])


class Variants(LabCase):

    def test_what_is_valid_has_the_signed_content(self):
        donors = [self.lab.other, self.lab.by_eve().bytes()]
        mutator = Mutator(self.lab.signed, donors)
        expected = content_of(mutator.signed)
        wrong, valid = {}, 0
        counts = collections.Counter()
        for start in range(0, VARIANTS, AT_ONCE):
            made_now = {}
            for number in range(start, min(start + AT_ONCE, VARIANTS)):
                package, done = mutator.variant(number)
                counts.update(done)
                made_now[f"v{number}.kraddon"] = (package, done)
                self.file(f"v{number}.kraddon", package.bytes())
            for name, findings in self.verdicts(list(made_now), *TRUSTED).items():
                package, done = made_now[name]
                os.unlink(self.path(name))
                if any(each["severity"] == "error" for each in findings):
                    continue
                valid += 1
                if content_of(package) != expected:
                    wrong[name] = done

        self.assertEqual(wrong, {})
        print(f"{VARIANTS} variants, {valid} valid with the signed content", file=sys.stderr)
        # Too many would mean that the changes do not reach what is signed.
        self.assertLess(valid, VARIANTS / 3)
        self.assertGreater(len(counts), 20)


if __name__ == "__main__":
    assert all(MODULES)  # each has added its attacks to the list
    unittest.main(verbosity=2)
