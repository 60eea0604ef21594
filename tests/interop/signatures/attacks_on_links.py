# SPDX-License-Identifier: MIT
"""Manipulations of relationships, content types and the origin."""

from attack_list import EVIL, attack
from lab import change_relationships, find, relationship, signature_parts
from signer import ORIGIN_PART
from xml_signature import ORIGIN, ORIGIN_TYPE, SIGNATURE

LICENSE = "http://schemas.pellandry.example/korvan/addon/2014/relationships/license"


# Relationships

@attack
def a_relationship_is_redirected(lab, package):
    package["/files/evil.xml"] = package["/metadata/addonProperties.xml"]
    change_relationships(package, "/", lambda root: root[0].set("Target", "/files/data.xml"))


@attack
def a_relationship_is_redirected_to_outside(lab, package):
    def change(root):
        root[0].set("Target", "http://evil.example/")
        root[0].set("TargetMode", "External")
    change_relationships(package, "/", change)


@attack
def a_relationship_is_added(lab, package):
    change_relationships(package, "/", lambda root: root.append(
        relationship("http://evil.example/run", "/files/a.m")))


@attack
def an_external_relationship_is_added(lab, package):
    change_relationships(package, "/", lambda root: root.append(
        relationship("http://evil.example/run", "http://evil.example/", TargetMode="External")))


@attack
def a_relationship_is_removed(lab, package):
    change_relationships(package, "/", lambda root: root.remove(root[0]))


@attack
def a_relationship_gets_another_type(lab, package):
    change_relationships(package, "/", lambda root: root[0].set("Type", LICENSE))


@attack
def a_relationship_gets_another_id(lab, package):
    change_relationships(package, "/", lambda root: root[0].set("Id", "rOther"))


@attack
def relationships_are_reordered(lab, package):
    change_relationships(package, "/", lambda root: root.append(root[0]))


@attack
def relationships_get_white_space(lab, package):
    package["/_rels/.rels"] += b"\n"


@attack
def a_signed_part_gets_relationships(lab, package):
    package.relate("/files/data.xml", "http://evil.example/run", "/files/b.m", "r1")


@attack
def relationships_lie_beside_no_part(lab, package):
    package.relate("/files/none.m", "http://evil.example/run", "/files/b.m", "r1")


@attack
def a_signature_gets_a_relationship_of_another_type(lab, package):
    package.add("/package/evil.xml", EVIL, "application/xml")
    package.relate(signature_parts(package)[0], "http://evil.example/run", "/package/evil.xml", "r")


@attack
def the_origin_gets_a_relationship_of_another_type(lab, package):
    package.relate(ORIGIN_PART, "http://evil.example/run", "/files/b.m", "rX")


@attack
def the_origin_gets_an_external_relationship(lab, package):
    package.relate(ORIGIN_PART, SIGNATURE, "http://evil.example/s", "rX", "External")


# Content types

@attack
def a_file_gets_another_type(lab, package):
    package.set_type("/files/a.m", "application/x-msdownload")


@attack
def the_default_type_is_changed(lab, package):
    root = package.types()
    for each in root:
        if each.get("Extension") == "m":
            each.set("ContentType", "application/x-evil")
    package.set_types(root)


@attack
def a_type_gets_a_parameter(lab, package):
    package.set_type("/files/a.m", package.type_of("/files/a.m") + ";charset=utf-7")


@attack
def a_file_loses_its_type(lab, package):
    root = package.types()
    for each in root:
        if each.get("Extension") == "m":
            root.remove(each)
    package.set_types(root)


@attack
def relationships_get_another_type(lab, package):
    package.set_type("/_rels/.rels", "application/xml")


# The origin

@attack
def the_origin_holds_bytes(lab, package):
    package[ORIGIN_PART] = EVIL


@attack
def the_origin_gets_another_type(lab, package):
    package.set_type(ORIGIN_PART, "application/xml")


@attack
def there_are_two_origins(lab, package):
    package.add("/o2.psdsor", b"", ORIGIN_TYPE)
    package.relate("/", ORIGIN, "/o2.psdsor", "rOrigin2")


@attack
def the_origin_is_exchanged(lab, package):
    package.add("/files/o2.psdsor", b"", ORIGIN_TYPE)
    package.relate("/files/o2.psdsor", SIGNATURE, signature_parts(package)[0], "r1")
    change_relationships(package, "/", lambda root: find(
        root, f"*[@Type='{ORIGIN}']").set("Target", "/files/o2.psdsor"))


@attack
def the_origin_is_not_related(lab, package):
    change_relationships(package, "/", lambda root: root.remove(
        find(root, f"*[@Type='{ORIGIN}']")))


@attack
def the_signature_is_not_related(lab, package):
    change_relationships(package, ORIGIN_PART, lambda root: root.remove(root[0]))


@attack
def all_that_belongs_to_the_signature_is_removed(lab, package):
    return lab.plain()


@attack
def the_signature_gets_another_type(lab, package):
    package.set_type(signature_parts(package)[0], "application/xml")


@attack
def the_signature_is_missing(lab, package):
    package.remove(signature_parts(package)[0])


@attack
def the_signature_is_empty(lab, package):
    package[signature_parts(package)[0]] = b""


@attack
def the_signature_is_cut_off(lab, package):
    part = signature_parts(package)[0]
    package[part] = package[part][:-30]
