# SPDX-License-Identifier: MIT
"""Signs packages in every form that the standard allows, and in some that it does not."""

import base64
import dataclasses
import typing

from cryptography.hazmat.primitives.serialization import Encoding
from lxml import etree
from opc_package import RELATIONSHIPS_TYPE
from xml_signature import (C14N, CERTIFICATE, CERTIFICATE_TYPE, DIGESTS, DSIG, MDSSI, ORIGIN,
                           ORIGIN_TYPE, RELATIONSHIP_TRANSFORM, SIGNATURE, SIGNATURE_TYPE,
                           canonical, digest_of, method_uri, relationships_chosen, sign_bytes)
from opc_package import parse, written

FOLDER = "/package/services/digital-signature"
ORIGIN_PART = FOLDER + "/origin.psdsor"
NAMESPACE = f"{{{DSIG}}}"


def text64(content):
    return base64.b64encode(content).decode()


@dataclasses.dataclass
class Form:
    """How a signature is made."""
    digest: str = "sha256"                 # of the references
    signing_digest: str = "sha256"         # of the signature value
    canonicalization: str = C14N           # of SignedInfo
    object_transform: typing.Optional[str] = None
    relationships: str = "whole"           # "whole", "types" or "ids": by the transform
    relationships_c14n: typing.Optional[str] = C14N  # after the transform
    xml_parts: typing.Optional[str] = None  # a canonicalisation of the XML parts that have types
    certificates: str = "info"             # "info": in KeyInfo; "parts"; "none"
    prefix: typing.Optional[str] = None    # of the namespace of XML Signature
    time: str = "2026-02-02T02:40:00Z"
    time_format: str = "YYYY-MM-DDThh:mm:ssTZD"
    leave_out: typing.Callable = lambda part: False
    comment: typing.Optional[str] = None   # a comment in SignedInfo and in the object
    manifest_transforms: typing.Optional[typing.Callable] = None  # (part) -> list of elements
    change_info: typing.Optional[typing.Callable] = None   # changes SignedInfo before it is signed
    change_object: typing.Optional[typing.Callable] = None  # changes the object before its digest
    method: typing.Optional[str] = None    # the algorithm that SignedInfo names
    sign: typing.Optional[typing.Callable] = None  # makes the value of canonical SignedInfo


class Writer:
    """One signature over a package, which it then adds."""

    def __init__(self, package, signer, form, name):
        self.package, self.signer, self.form, self.name = package, signer, form, name
        self.part = f"{FOLDER}/xml-signature/{name}.psdsxs"

    def element(self, parent, tag, text=None, **attributes):
        made = etree.SubElement(parent, NAMESPACE + tag, {k: v for k, v in attributes.items() if v})
        made.text = text
        return made

    def exempt(self):
        """The parts that carry signatures."""
        package = self.package
        found = {ORIGIN_PART, FOLDER + "/_rels/origin.psdsor.rels", self.part}
        for part in package.targets(ORIGIN_PART, SIGNATURE):
            folder, _, name = part.rpartition("/")
            found |= {part, f"{folder}/_rels/{name}.rels", *package.targets(part, CERTIFICATE)}
        return found

    def reference(self, parent, part):
        content_type = self.package.type_of(part)
        content = self.package[part]
        made = self.element(parent, "Reference", URI=f"{part}?ContentType={content_type}")
        transforms = []
        if self.form.manifest_transforms:
            transforms = self.form.manifest_transforms(part)
        elif content_type == RELATIONSHIPS_TYPE and self.form.relationships != "whole":
            transforms, content = self.chosen(content)
        elif self.form.xml_parts and content_type.endswith("xml"):
            transforms = [etree.Element(NAMESPACE + "Transform", Algorithm=self.form.xml_parts)]
            content = canonical(parse(content), self.form.xml_parts)
        if transforms:
            self.element(made, "Transforms").extend(transforms)
        self.element(made, "DigestMethod", Algorithm=DIGESTS[self.form.digest])
        self.element(made, "DigestValue", text64(digest_of(self.form.digest, content)))

    def chosen(self, content):
        """The transforms and the result for all relationships of a part, but that to the origin."""
        first = etree.Element(NAMESPACE + "Transform", Algorithm=RELATIONSHIP_TRANSFORM)
        all_of_it = [each for each in parse(content) if each.get("Type") != ORIGIN]
        ids = types = ()
        if self.form.relationships == "ids":
            ids = [each.get("Id") for each in all_of_it]
        else:
            types = sorted({each.get("Type") for each in all_of_it})
        for one in ids:
            etree.SubElement(first, f"{{{MDSSI}}}RelationshipReference", SourceId=one,
                             nsmap={"mdssi": MDSSI})
        for one in types:
            etree.SubElement(first, f"{{{MDSSI}}}RelationshipsGroupReference", SourceType=one,
                             nsmap={"mdssi": MDSSI})
        transforms = [first]
        method = self.form.relationships_c14n
        if method:
            transforms.append(etree.Element(NAMESPACE + "Transform", Algorithm=method))
        return transforms, canonical(relationships_chosen(content, ids, types), method or C14N)

    def write_object(self, root):
        made = self.element(root, "Object", Id="idPackageObject")
        if self.form.comment:
            made.append(etree.Comment(self.form.comment))
        manifest = self.element(made, "Manifest")
        exempt = self.exempt()
        for part in sorted(self.package.parts(), key=str.encode):
            if part not in exempt and not self.form.leave_out(part):
                self.reference(manifest, part)
        properties = self.element(made, "SignatureProperties")
        owner = self.element(properties, "SignatureProperty", Id="idSignatureTime",
                             Target="#idPackageSignature")
        time = etree.SubElement(owner, f"{{{MDSSI}}}SignatureTime", nsmap={"mdssi": MDSSI})
        etree.SubElement(time, f"{{{MDSSI}}}Format").text = self.form.time_format
        etree.SubElement(time, f"{{{MDSSI}}}Value").text = self.form.time
        if self.form.change_object:
            self.form.change_object(made)
        return made

    def write_info(self, root, made_object):
        form = self.form
        info = etree.Element(NAMESPACE + "SignedInfo")
        root.insert(0, info)
        if form.comment:
            info.append(etree.Comment(form.comment))
        self.element(info, "CanonicalizationMethod", Algorithm=form.canonicalization)
        self.element(info, "SignatureMethod", Algorithm=form.method or
                     method_uri(self.signer.key, form.signing_digest))
        reference = self.element(info, "Reference", URI="#idPackageObject", Type=DSIG + "Object")
        if form.object_transform:
            self.element(self.element(reference, "Transforms"), "Transform",
                         Algorithm=form.object_transform)
        self.element(reference, "DigestMethod", Algorithm=DIGESTS[form.digest])
        self.element(reference, "DigestValue",
                     text64(digest_of(form.digest, canonical(made_object,
                                                             form.object_transform or C14N))))
        if form.change_info:
            form.change_info(info)
        return info

    def write_certificates(self, root):
        if self.form.certificates == "info":
            info = etree.Element(NAMESPACE + "KeyInfo")
            root.insert(2, info)
            data = self.element(info, "X509Data")
            for each in self.signer.chain:
                self.element(data, "X509Certificate", text64(each.public_bytes(Encoding.DER)))

    def write(self):
        root = etree.Element(NAMESPACE + "Signature", nsmap={self.form.prefix: DSIG},
                             Id="idPackageSignature")
        made_object = self.write_object(root)
        info = self.write_info(root, made_object)
        content = canonical(info, self.form.canonicalization)
        value = (self.form.sign(content) if self.form.sign else
                 sign_bytes(self.signer.key, self.form.signing_digest, content))
        holder = etree.Element(NAMESPACE + "SignatureValue")
        holder.text = text64(value)
        root.insert(1, holder)
        self.write_certificates(root)
        self.package.add(self.part, written(root), SIGNATURE_TYPE)
        if self.form.certificates == "parts":
            for number, each in enumerate(self.signer.chain):
                part = f"{FOLDER}/certificate/{self.name}-{number}.cer"
                self.package.add(part, each.public_bytes(Encoding.DER), CERTIFICATE_TYPE)
                self.package.relate(self.part, CERTIFICATE, part, f"c{number}")


def sign(package, signer, form=None, name="s1"):
    """A signed copy. What it adds to the package's relationships and types is made first."""
    package = package.copy()
    form = form or Form()
    if ORIGIN_PART not in package:
        package.add(ORIGIN_PART, b"", ORIGIN_TYPE)
        package.relate("/", ORIGIN, ORIGIN_PART, "idOrigin")
    part = f"{FOLDER}/xml-signature/{name}.psdsxs"
    package.relate(ORIGIN_PART, SIGNATURE, part, f"id-{name}")
    Writer(package, signer, form, name).write()
    return package
