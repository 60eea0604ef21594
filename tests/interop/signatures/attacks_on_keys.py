# SPDX-License-Identifier: MIT
"""Signatures of others, of other packages and by other keys."""

import hashlib
import hmac

import keys
import signer
from attack_list import EVIL, attack, on_signature
from cryptography.hazmat.primitives.serialization import Encoding, PublicFormat
from lab import change_relationships, change_signature, element, find, relationship, signature_parts
from opc_package import Package
from signer import FOLDER, ORIGIN_PART, Form, text64
from xml_signature import DSIG, MORE, SIGNATURE, SIGNATURE_TYPE


# Signatures of other packages, and several

@attack
def the_signature_is_that_of_another_package(lab, package):
    other = Package(lab.other)
    package[signature_parts(package)[0]] = other[signature_parts(other)[0]]


@attack
def the_signature_of_another_package_is_added(lab, package):
    other = Package(lab.other)
    part = FOLDER + "/xml-signature/moved.psdsxs"
    package.add(part, other[signature_parts(other)[0]], SIGNATURE_TYPE)
    package.relate(ORIGIN_PART, SIGNATURE, part, "rMoved")


@attack
def the_content_is_that_of_another_package(lab, package):
    other = Package(lab.other)
    for part in package.parts():
        if part.startswith("/files/"):
            package.remove(part)
    package["/files/other.m"] = other["/files/other.m"]


@attack
def eve_signs_what_she_added(lab, package):
    package["/files/evil.m"] = EVIL
    return lab.by_eve(Form(leave_out=lambda part: "evil" not in part), package)


@attack
def eve_signs_everything_again(lab, package):
    package["/files/evil.m"] = EVIL
    return lab.by_eve(package=package)


@attack
def eve_signs_instead_of_ada(lab, package):
    return lab.by_eve()


@attack
def eve_signs_nothing(lab, package):
    return lab.by_eve(Form(leave_out=lambda part: True))


@attack
def ada_signs_only_a_part_of_it(lab, package):
    return signer.sign(lab.plain(), lab.ada, Form(leave_out=lambda part: part == "/files/a.m"))


@attack
def ada_leaves_out_a_relationships_part(lab, package):
    return signer.sign(lab.plain(), lab.ada, Form(leave_out=lambda part: part == "/_rels/.rels"))


@attack
def ada_signs_relationships_and_one_is_added(lab, package):
    package = signer.sign(lab.plain(), lab.ada, Form(relationships="ids"))
    change_relationships(package, "/", lambda root: root.append(
        relationship("http://evil.example/run", "/files/a.m")))
    return package


@attack
def ada_signs_types_of_relationships_and_one_is_added(lab, package):
    package = signer.sign(lab.plain(), lab.ada, Form(relationships="types"))
    change_relationships(package, "/", lambda root: root.append(
        relationship(root[0].get("Type"), "/files/a.m")))
    return package


# Certificates and keys

@on_signature
def the_certificate_is_that_of_eve(lab, root):
    find(root, "//d:X509Certificate").text = text64(lab.eve.certificate_bytes())


@on_signature
def the_certificate_of_eve_comes_first(lab, root):
    find(root, "//d:X509Certificate").addprevious(
        element("X509Certificate", text64(lab.eve.certificate_bytes())))


@attack
def eve_signs_and_shows_the_certificate_of_ada(lab, package):
    package = lab.by_eve()
    change_signature(package, lambda root: setattr(
        find(root, "//d:X509Certificate"), "text", text64(lab.ada.certificate_bytes())))
    return package


@attack
def eve_signs_and_shows_ada_first(lab, package):
    package = lab.by_eve()
    change_signature(package, lambda root: find(root, "//d:X509Certificate").addprevious(
        element("X509Certificate", text64(lab.ada.certificate_bytes()))))
    return package


@attack
def eve_signs_and_shows_ada_after_herself(lab, package):
    package = lab.by_eve()
    change_signature(package, lambda root: find(root, "//d:X509Certificate").addnext(
        element("X509Certificate", text64(lab.ada.certificate_bytes()))))
    return package


@attack
def eve_signs_with_a_certificate_in_the_name_of_ada(lab, package):
    return signer.sign(lab.plain(), keys.Signer("p256", "Ada Lind", number=1))


@attack
def eve_signs_under_a_root_of_the_same_name(lab, package):
    root = keys.Signer("rsa2048", "Root", number=1, is_authority=True)
    return signer.sign(lab.plain(), keys.Signer("p256", "Ada Lind", root))


@attack
def the_root_of_ada_is_appended_to_the_chain_of_eve(lab, package):
    eve = keys.Signer("p256", "Eve")
    eve.chain = [eve.certificate, lab.authority.certificate]
    return signer.sign(lab.plain(), eve)


@attack
def a_certificate_that_is_no_authority_signs_that_of_eve(lab, package):
    middle = keys.Signer("p256", "Middle", lab.authority)
    return signer.sign(lab.plain(), keys.Signer("p256", "Eve", middle))


@on_signature
def the_key_info_is_removed(lab, root):
    each = find(root, "d:KeyInfo")
    root.remove(each)


def key_value(key):
    numbers = key.public_key().public_numbers()
    whole = [number.to_bytes((number.bit_length() + 7) // 8, "big")
             for number in (numbers.n, numbers.e)]
    return element("KeyValue", None, [element("RSAKeyValue", None, [
        element("Modulus", text64(whole[0])), element("Exponent", text64(whole[1]))])])


def by_eves_rsa(lab):
    return keys.Signer("rsa2048", "Eve", number=2)


@attack
def the_key_is_a_value_in_the_key_info(lab, package):
    eve = by_eves_rsa(lab)
    package = signer.sign(lab.plain(), eve)

    def change(root):
        info = find(root, "d:KeyInfo")
        info[:] = [key_value(eve.key)]
    change_signature(package, change)
    return package


@attack
def the_key_is_a_value_before_the_certificate_of_ada(lab, package):
    eve = by_eves_rsa(lab)
    package = signer.sign(lab.plain(), eve)

    def change(root):
        find(root, "//d:X509Certificate").text = text64(lab.ada.certificate_bytes())
        find(root, "d:KeyInfo").insert(0, key_value(eve.key))
    change_signature(package, change)
    return package


@attack
def the_key_is_a_value_after_the_certificate_of_ada(lab, package):
    package = the_key_is_a_value_before_the_certificate_of_ada(lab, package)

    def change(root):
        info = find(root, "d:KeyInfo")
        info.append(info[0])
    change_signature(package, change)
    return package


@attack
def there_are_two_key_infos(lab, package):
    eve = by_eves_rsa(lab)
    package = signer.sign(lab.plain(), eve)
    ada = element("KeyInfo", None, [element("X509Data", None, [
        element("X509Certificate", text64(lab.ada.certificate_bytes()))])])
    change_signature(package, lambda root: find(root, "d:KeyInfo").addnext(ada))
    return package


@attack
def the_key_info_retrieves_the_key(lab, package):
    def change(root):
        find(root, "d:KeyInfo")[:] = [element("RetrievalMethod", URI="/files/a.m",
                                              Type=DSIG + "rawX509Certificate")]
    change_signature(package, change)


@attack
def the_key_info_names_a_key(lab, package):
    change_signature(package, lambda root: find(root, "d:KeyInfo").__setitem__(
        slice(None), [element("KeyName", "Ada Lind")]))


def by_hmac(lab, secret, length=None):
    """A signature whose 'secret' everybody has."""
    def change(info):
        if length is not None:
            find(info, "d:SignatureMethod").append(element("HMACOutputLength", str(length)))
    return signer.sign(lab.plain(), lab.ada, Form(
        method=MORE + "hmac-sha256", change_info=change,
        sign=lambda content: hmac.new(secret, content, hashlib.sha256).digest()[
            :32 if length is None else (length + 7) // 8]))


@attack
def the_public_key_is_the_secret_of_an_hmac(lab, package):
    return by_hmac(lab, lab.ada.key.public_key().public_bytes(
        Encoding.PEM, PublicFormat.SubjectPublicKeyInfo))


@attack
def the_certificate_is_the_secret_of_an_hmac(lab, package):
    return by_hmac(lab, lab.ada.certificate_bytes())


@attack
def an_hmac_is_cut_to_nothing(lab, package):
    return by_hmac(lab, b"", 0)


@attack
def an_hmac_is_cut_to_eight_bits(lab, package):
    return by_hmac(lab, b"", 8)
