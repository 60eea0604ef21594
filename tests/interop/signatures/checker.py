# SPDX-License-Identifier: MIT
"""Checks the signatures of a package: ECMA-376 Part 2, clause 13, and XML Signature."""

import base64
import posixpath
import urllib.parse

from cryptography import x509
from cryptography.exceptions import InvalidSignature
from opc_package import RELATIONSHIPS_TYPE, parse
from xml_signature import (C14N, C14N_COMMENTS, CERTIFICATE, DIGEST_OF, DSIG, MDSSI, ORIGIN,
                           ORIGIN_TYPE, RELATIONSHIP_TRANSFORM, SIGNATURE, SIGNATURE_TYPE,
                           canonical, check_bytes, digest_of, method_uri, relationships_chosen)

NAMES = {"d": DSIG, "m": MDSSI}


class Wrong(Exception):
    """Why a signature is not valid."""


def require(condition, why):
    if not condition:
        raise Wrong(why)


def only(found, what):
    require(len(found) == 1, f"{len(found)} {what}")
    return found[0]


class Checker:
    """One signature part."""

    def __init__(self, package, part):
        self.package, self.part = package, part
        require(package.type_of(part) == SIGNATURE_TYPE, f"type of {part}")
        self.root = parse(package[part])
        require(self.root.getroottree().docinfo.internalDTD is None, "a DTD")
        require(self.root.tag == f"{{{DSIG}}}Signature", "the root")
        ids = self.root.xpath("//@Id")
        require(len(ids) == len(set(ids)), "repeated Ids")
        self.covered, self.whole = {}, set()

    def find(self, path, parent=None):
        return only((self.root if parent is None else parent).xpath(path, namespaces=NAMES), path)

    def certificates(self):
        texts = self.root.xpath("d:KeyInfo/d:X509Data/d:X509Certificate/text()", namespaces=NAMES)
        ders = [base64.b64decode(text) for text in texts]
        ders += [self.package[part] for part in self.package.targets(self.part, CERTIFICATE)]
        return [x509.load_der_x509_certificate(der) for der in ders]

    def check(self):
        info = self.find("d:SignedInfo")
        method = self.find("d:CanonicalizationMethod/@Algorithm", info)
        require(method in (C14N, C14N_COMMENTS), f"canonicalisation {method}")
        key = self.certificates()[0].public_key()
        algorithm = self.find("d:SignatureMethod/@Algorithm", info)
        digest = algorithm.rpartition("-")[2]
        require(digest != "sha1" and algorithm == method_uri(key, digest), algorithm)
        value = base64.b64decode(self.find("d:SignatureValue").text)
        try:
            check_bytes(key, digest, value, canonical(info, method))
        except (InvalidSignature, ValueError) as error:
            raise Wrong("the signature value") from error
        reference = self.find("d:Reference[@URI='#idPackageObject']", info)
        signed = self.find("d:Object[@Id='idPackageObject']")
        methods = reference.xpath("d:Transforms/d:Transform/@Algorithm", namespaces=NAMES)
        require(methods in ([], [C14N], [C14N_COMMENTS]), "transforms of the object")
        self.check_digest(reference, canonical(signed, methods[0] if methods else C14N), "object")
        manifest = self.find("d:Manifest", signed)
        for each in manifest.xpath("d:Reference", namespaces=NAMES):
            self.check_part(each)
        time = self.find("d:SignatureProperties/d:SignatureProperty/m:SignatureTime", signed)
        self.time = self.find("m:Value", time).text
        return self

    def check_digest(self, reference, content, what):
        name = DIGEST_OF[self.find("d:DigestMethod/@Algorithm", reference)]
        require(name != "sha1", "SHA-1")
        expected = base64.b64decode(self.find("d:DigestValue", reference).text)
        require(digest_of(name, content) == expected, f"the digest of {what}")

    def check_part(self, reference):
        part, _, query = reference.get("URI").partition("?")
        require(part.startswith("/") and query.startswith("ContentType="), part)
        content_type = query[len("ContentType="):]
        require(part in self.package, f"missing {part}")
        require(self.package.type_of(part) == content_type, f"the type of {part}")
        require(part not in self.covered, f"{part} twice")
        content = self.package[part]
        transforms = reference.xpath("d:Transforms/d:Transform", namespaces=NAMES)
        methods = [each.get("Algorithm") for each in transforms]
        self.covered[part] = "whole"
        if methods[:1] == [RELATIONSHIP_TRANSFORM]:
            require(content_type == RELATIONSHIPS_TYPE, "the transform of another part")
            ids = transforms[0].xpath("m:RelationshipReference/@SourceId", namespaces=NAMES)
            types = transforms[0].xpath("m:RelationshipsGroupReference/@SourceType",
                                        namespaces=NAMES)
            chosen = relationships_chosen(content, ids, types)
            self.covered[part] = {each.get("Id") for each in chosen}
            methods = methods[1:]
            require(len(methods) == 1, "no canonicalisation after the transform")
            content = canonical(chosen, methods[0])
        elif methods:
            content = canonical(parse(content), only(methods, "transforms"))
        require(not methods or methods[0] in (C14N, C14N_COMMENTS), f"transforms of {part}")
        self.check_digest(reference, content, part)


def origin_of(package):
    origin = only(package.targets("/", ORIGIN), "origins")
    require(package.type_of(origin) == ORIGIN_TYPE and package[origin] == b"", "the origin")
    return origin


def check(package):
    """Checks every signature; returns the checkers. Raises Wrong for one that is not valid."""
    origin = origin_of(package)
    return [Checker(package, part).check() for part in package.targets(origin, SIGNATURE)]


def uncovered(package, checkers):
    """The parts that none of the signatures covers as a whole, and that carry none."""
    origin = origin_of(package)
    exempt = {origin, posixpath.join(posixpath.dirname(origin), "_rels",
                                     posixpath.basename(origin) + ".rels")}
    for part in package.targets(origin, SIGNATURE):
        folder, name = posixpath.split(part)
        exempt |= {part, f"{folder}/_rels/{name}.rels", *package.targets(part, CERTIFICATE)}
    missing = []
    for part in package.parts():
        found = [each.covered[part] for each in checkers if part in each.covered]
        needed = {each.get("Id") for each in package.relationships(source_of(part))
                  if each.get("Type") != ORIGIN} if part.endswith(".rels") else None
        is_covered = "whole" in found or (needed is not None and any(
            needed <= ids for ids in found if ids != "whole"))
        if part not in exempt and not is_covered:
            missing.append(part)
    return missing


def source_of(relationships_part):
    folder, name = posixpath.split(relationships_part)
    return posixpath.join(posixpath.dirname(folder), name[:-len(".rels")])


def is_ascii_uri(part):
    return urllib.parse.quote(urllib.parse.unquote(part), safe="/!$&'()*+,;=:@-._~") == part
