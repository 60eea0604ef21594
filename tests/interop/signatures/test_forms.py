#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Signatures of a signer that was written from the standard, in every form that is supported and in
some that are not."""

import datetime
import itertools
import re
import unittest

import lab as laboratory
import checker
import keys
import signer
from lxml import etree
from opc_package import Package
from program import KRADDON, run
from signature_case import SignatureCase
from signer import Form
from xml_signature import C14N, C14N_COMMENTS, DSIG, EXCLUSIVE, RELATIONSHIP_TRANSFORM

XPATH = "http://www.w3.org/TR/1999/REC-xpath-19991116"
XSLT = "http://www.w3.org/TR/1999/REC-xslt-19991116"
SUPPORTED = {
    "of one digest": [Form(digest=digest) for digest in ("sha256", "sha384", "sha512")],
    "of one signing digest": [Form(signing_digest=digest)
                              for digest in ("sha256", "sha384", "sha512")],
    "canonical": [Form(canonicalization=method, object_transform=transform)
                  for method in (C14N, C14N_COMMENTS) for transform in (None, C14N, C14N_COMMENTS)],
    "relationships": [Form(relationships=kind, relationships_c14n=method)
                      for kind in ("types", "ids") for method in (C14N, C14N_COMMENTS)],
    "xml parts": [Form(xml_parts=method) for method in (C14N, C14N_COMMENTS)],
    "certificates": [Form(certificates="parts")],
    "prefix": [Form(prefix="ds")],
    "time": [Form(time_format="YYYY-MM-DDThh:mm:ss.sTZD", time="2026-02-02T02:40:00.5Z"),
             Form(time="2026-02-02T03:40:00+01:00"), Form(time_format="YYYY-MM-DD",
                                                          time="2026-02-02")]}


def break_value(root):
    value = laboratory.find(root, "d:SignatureValue")
    value.text = ("B" if value.text[0] == "A" else "A") + value.text[1:]


def transform(algorithm, *children):
    made = etree.Element(laboratory.D + "Transform", Algorithm=algorithm)
    made.extend(children)
    return lambda part: [made] if part == "/files/data.xml" else []


class Supported(SignatureCase):

    def setUp(self):
        super().setUp()
        self.plain = Package(self.create())
        self.authority = keys.Signer("rsa2048", "Root", is_authority=True)
        self.file("root.pem", self.authority.pem())

    def assert_valid(self, package):
        content = package.bytes()
        self.assertEqual(self.errors(content, "--trust", "root.pem", "--require-signature"), [])
        code, listed = self.signatures(content, "--trust", "root.pem")
        self.assertEqual((code, [(each["state"], each["trusted"]) for each in listed]),
                         (0, [("valid", True)] * len(listed)), listed)
        self.assertTrue(listed)
        return listed

    def test_all_keys(self):
        for kind in ("rsa2048", "rsa3072", "p256", "p384", "p521"):
            for digest in ("sha256", "sha384", "sha512"):
                with self.subTest(kind=kind, digest=digest):
                    ada = keys.Signer(kind, "Ada", self.authority)
                    self.assert_valid(signer.sign(self.plain, ada, Form(signing_digest=digest)))

    def test_all_forms(self):
        for kind, (name, forms) in zip(itertools.cycle(("rsa2048", "p256")), SUPPORTED.items()):
            ada = keys.Signer(kind, "Ada", self.authority)
            for form in forms:
                with self.subTest(name=name, form=form):
                    signed = signer.sign(self.plain, ada, form)
                    made = checker.check(signed)
                    self.assertEqual(checker.uncovered(signed, made), [])
                    self.assert_valid(signed)

    def test_several_signatures(self):
        ada = keys.Signer("rsa2048", "Ada", self.authority)
        bo = keys.Signer("p384", "Bo", self.authority)
        signed = signer.sign(signer.sign(self.plain, ada), bo, name="s2")
        listed = self.assert_valid(signed)
        self.assertEqual(sorted(each["signer"]["subject"] for each in listed), ["CN=Ada", "CN=Bo"])

    def test_a_signature_of_another_maker_beside_that_of_the_program(self):
        ada = keys.Signer("rsa2048", "Ada", self.authority)
        both = self.sign(signer.sign(self.plain, ada).bytes(), ada)
        self.assertEqual(len(self.assert_valid(Package(both))), 2)
        self.assertEqual(len(checker.check(Package(both))), 2)


class Refused(SignatureCase):

    def setUp(self):
        super().setUp()
        self.plain = Package(self.create())
        self.ada = keys.Signer("rsa2048", "Ada")

    def assert_refused(self, package, states, finding):
        content = package.bytes()
        self.assertIn(finding, self.errors(content))
        code, listed = self.signatures(content)
        self.assertEqual(code, 1)
        self.assertIn([each["state"] for each in listed], [[state] for state in states])
        self.assertTrue(listed[0]["reason"])

    def test_unsupported_forms(self):
        foreign = etree.Element("{http://www.w3.org/1999/XSL/Transform}stylesheet", version="1.0")
        forms = {
            "sha-1 digests": Form(digest="sha1"), "sha-1": Form(signing_digest="sha1"),
            "exclusive c14n": Form(canonicalization=EXCLUSIVE),
            "exclusive object": Form(object_transform=EXCLUSIVE),
            "exclusive part": Form(xml_parts=EXCLUSIVE),
            "exclusive relationships": Form(relationships="ids", relationships_c14n=EXCLUSIVE),
            "bare relationships": Form(relationships="ids", relationships_c14n=None),
            "xpath": Form(manifest_transforms=transform(XPATH)),
            "xslt": Form(manifest_transforms=transform(XSLT, foreign)),
            "base64": Form(manifest_transforms=transform(DSIG + "base64")),
            "a comment": Form(comment="a comment"),
            "no such": Form(manifest_transforms=transform("http://example.org/none")),
            "rsa-pss": Form(method="http://www.w3.org/2007/05/xmldsig-more#sha256-rsa-MGF1"),
            "relationships of a file": Form(manifest_transforms=transform(RELATIONSHIP_TRANSFORM))}
        for name, form in forms.items():
            with self.subTest(form=name):
                signed = signer.sign(self.plain, self.ada, form)
                self.assert_refused(signed, ("unsupported", "weak"),
                                    "KR606" if name.startswith("sha-1") and
                                    "KR606" in self.errors(signed.bytes()) else "KR608")

    def test_references_to_outside(self):
        for uri in ("http://127.0.0.1:9/x", "file:///etc/passwd", "/files/none.m", "files/a.m",
                    "/files/../files/a.m?ContentType=text/plain", "//host/files/a.m",
                    "/files/a.m", "/files/a.m?ContentType=text/plain#x",
                    "/files/a.m?contenttype=text/plain", "xfiles/a.m?ContentType=text/plain",
                    "files/a.m?ContentType=text/plain", "?ContentType=text/plain", "/",
                    "/files/a.m?ContentType=text/plain&ContentType=text/plain",
                    "#idPackageObject", "", "pack://a/files/a.m?ContentType=text/plain"):
            def redirect(made, uri=uri):
                for each in made.iter(laboratory.D + "Reference"):
                    if each.get("URI").startswith("/files/a.m"):
                        each.set("URI", uri)
            with self.subTest(uri=uri):
                signed = signer.sign(self.plain, self.ada, Form(change_object=redirect))
                self.assertNotEqual(self.errors(signed.bytes()), [])
                code, listed = self.signatures(signed.bytes())
                self.assertEqual(code, 1)
                self.assertNotEqual([each["state"] for each in listed], ["valid"])

    def test_nothing_is_loaded_by_name(self):
        """Neither files nor addresses that a signature names, wherever it names them."""
        secret = self.file("secret.txt", b"secret")
        for uri in (f"file://{secret}", secret, "http://127.0.0.1:9/x"):
            def name_everywhere(made, uri=uri):
                made.find(laboratory.D + "Manifest")[0].set("URI", uri)

            def name_in_info(info, uri=uri):
                info.append(laboratory.clone(info[-1]))
                info[-1].set("URI", uri)
            signed = signer.sign(self.plain, self.ada, Form(change_object=name_everywhere,
                                                            change_info=name_in_info))
            laboratory.change_signature(signed, lambda root, uri=uri: laboratory.find(
                root, "d:KeyInfo").insert(0, laboratory.element("RetrievalMethod", URI=uri)))
            part = laboratory.signature_parts(signed)[0]
            signed[part] = signed[part].replace(
                b"?>", f'?><!DOCTYPE Signature SYSTEM "{uri}">'.encode(), 1)
            for content in (signed.bytes(), self.without_document_type(signed, part).bytes()):
                self.file("p.kraddon", content)
                for words in (("verify", "p.kraddon"), ("signatures", "p.kraddon")):
                    done = run("strace", "-f", "-e", "trace=%file,%network", KRADDON, *words,
                               cwd=self.folder)
                    self.assertEqual(done.code, 1, str(done))
                    self.assertNotIn(b"secret.txt", done.stderr)
                    self.assertNotIn(b"socket(", done.stderr)

    def without_document_type(self, package, part):
        package = package.copy()
        package[part] = re.sub(b"<!DOCTYPE[^>]*>", b"", package[part])
        return package

    def test_weak_keys(self):
        for kind in ("rsa1024", "rsa1536", "p224"):
            with self.subTest(kind=kind):
                signed = signer.sign(self.plain, keys.Signer(kind, "Weak"))
                self.assert_refused(signed, ("weak", "unsupported"),
                                    "KR606" if kind.startswith("rsa") else
                                    [each for each in self.errors(signed.bytes())
                                     if each in ("KR606", "KR608")][0])

    def test_other_curves(self):
        signed = signer.sign(self.plain, keys.Signer("k256", "Other"))
        self.assertNotEqual(self.errors(signed.bytes()), [])

    def test_certificates_that_are_not_valid_at_the_signing_time(self):
        past = keys.Signer("p256", "Past", until=datetime.datetime(2025, 1, 1))
        future = keys.Signer("p256", "Future", since=datetime.datetime(2027, 1, 1))
        for ada in (past, future):
            signed = signer.sign(self.plain, ada)
            self.assertEqual(self.errors(signed.bytes()), ["KR605"])
            laboratory.change_signature(signed, break_value)
            self.assertEqual(self.errors(signed.bytes()), ["KR601", "KR605"])

    def test_no_certificate(self):
        signed = signer.sign(self.plain, self.ada, Form(certificates="none"))
        self.assertNotEqual(self.errors(signed.bytes()), [])

    def test_a_part_that_is_referenced_twice(self):
        def double(made):
            manifest = made.find(laboratory.D + "Manifest")
            other = laboratory.clone(manifest[0])
            other.find(laboratory.D + "DigestValue").text = signer.text64(bytes(32))
            manifest.append(other)
        signed = signer.sign(self.plain, self.ada, Form(change_object=double))
        self.assertNotEqual(self.errors(signed.bytes()), [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
