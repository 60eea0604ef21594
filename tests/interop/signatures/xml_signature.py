# SPDX-License-Identifier: MIT
"""What signer and checker share of XML Signature and of ECMA-376 Part 2, clause 13: names,
canonicalisation, the relationships transform, algorithms."""

import copy
import hashlib

from cryptography.hazmat.primitives import hashes
from cryptography.hazmat.primitives.asymmetric import ec, padding, rsa, utils
from lxml import etree
from opc_package import RELATIONSHIPS, parse

DSIG = "http://www.w3.org/2000/09/xmldsig#"
MORE = "http://www.w3.org/2001/04/xmldsig-more#"
XMLENC = "http://www.w3.org/2001/04/xmlenc#"
MDSSI = "http://schemas.openxmlformats.org/package/2006/digital-signature"
RELATED = "http://schemas.openxmlformats.org/package/2006/relationships/digital-signature/"
MEDIA = "application/vnd.openxmlformats-package.digital-signature-"
ORIGIN, SIGNATURE, CERTIFICATE = RELATED + "origin", RELATED + "signature", RELATED + "certificate"
ORIGIN_TYPE, SIGNATURE_TYPE = MEDIA + "origin", MEDIA + "xmlsignature+xml"
CERTIFICATE_TYPE = MEDIA + "certificate"
RELATIONSHIP_TRANSFORM = ("http://schemas.openxmlformats.org/package/2006/"
                          "RelationshipTransform")
C14N = "http://www.w3.org/TR/2001/REC-xml-c14n-20010315"
C14N_COMMENTS = C14N + "#WithComments"
EXCLUSIVE = "http://www.w3.org/2001/10/xml-exc-c14n#"
XML = "http://www.w3.org/XML/1998/namespace"

DIGESTS = {"sha1": DSIG + "sha1", "sha256": XMLENC + "sha256", "sha384": MORE + "sha384",
           "sha512": XMLENC + "sha512"}
DIGEST_OF = {uri: name for name, uri in DIGESTS.items()}
HASHES = {"sha1": hashes.SHA1, "sha256": hashes.SHA256, "sha384": hashes.SHA384,
          "sha512": hashes.SHA512}


def method_uri(key, digest):
    kind = "rsa" if isinstance(key, (rsa.RSAPrivateKey, rsa.RSAPublicKey)) else "ecdsa"
    return (DSIG if (kind, digest) == ("rsa", "sha1") else MORE) + f"{kind}-{digest}"


def sign_bytes(key, digest, content):
    """The signature value as XML Signature has it: of ECDSA the two numbers, of equal length."""
    if isinstance(key, rsa.RSAPrivateKey):
        return key.sign(content, padding.PKCS1v15(), HASHES[digest]())
    size = (key.curve.key_size + 7) // 8
    numbers = utils.decode_dss_signature(key.sign(content, ec.ECDSA(HASHES[digest]())))
    return b"".join(number.to_bytes(size, "big") for number in numbers)


def check_bytes(key, digest, value, content):
    """Raises InvalidSignature or ValueError unless the value is that of the content."""
    if isinstance(key, rsa.RSAPublicKey):
        key.verify(value, content, padding.PKCS1v15(), HASHES[digest]())
        return
    size = (key.curve.key_size + 7) // 8
    if len(value) != 2 * size:
        raise ValueError("a signature value of another length")
    der = utils.encode_dss_signature(int.from_bytes(value[:size], "big"),
                                     int.from_bytes(value[size:], "big"))
    key.verify(der, content, ec.ECDSA(HASHES[digest]()))


def canonical(element, method=C14N):
    """An element of a document in canonical form, with what it inherits."""
    if element.getparent() is not None and method in (C14N, C14N_COMMENTS):
        top = etree.Element(element.tag, nsmap=element.nsmap)
        inherited = [each for each in element.iterancestors()][::-1] + [element]
        for each in inherited:
            for name, value in each.attrib.items():
                if each is element or name.startswith(f"{{{XML}}}"):
                    top.set(name, value)
        top.text = element.text
        top.extend(copy.deepcopy(child) for child in element)
        element = top
    return etree.tostring(element.getroottree() if element.getparent() is None else element,
                          method="c14n", exclusive=method == EXCLUSIVE,
                          with_comments=method == C14N_COMMENTS)


def relationships_chosen(content, ids, types):
    """The relationships transform: the chosen relationships alone, in the order of their Ids."""
    chosen = []
    for each in parse(content).iterchildren(f"{{{RELATIONSHIPS}}}Relationship"):
        if each.get("Id") in ids or each.get("Type") in types:
            attributes = {name: each.get(name) for name in ("Id", "Target", "TargetMode", "Type")
                          if each.get(name) is not None}
            chosen.append({"TargetMode": "Internal", **attributes})
    root = etree.Element(f"{{{RELATIONSHIPS}}}Relationships", nsmap={None: RELATIONSHIPS})
    for attributes in sorted(chosen, key=lambda each: each["Id"]):
        etree.SubElement(root, f"{{{RELATIONSHIPS}}}Relationship", attributes)
    return root


def digest_of(name, content):
    return hashlib.new(name, content).digest()
