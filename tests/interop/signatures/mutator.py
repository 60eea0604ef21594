# SPDX-License-Identifier: MIT
"""Makes up manipulations of a signed package: one to three changes of its items, relationships,
types and of the XML of its signature. The number of a variant determines it, for one package."""

import copy
import random

from lxml import etree
from lab import D, change_relationships, change_signature, rels, signature_parts
from opc_package import Package, is_types_item, parse
from signer import FOLDER, ORIGIN_PART
from xml_signature import C14N, C14N_COMMENTS, EXCLUSIVE, MEDIA, MORE, RELATIONSHIP_TRANSFORM

NAMES = ["files/evil.m", "files/A.m", "files/%61.m", "files/a.m.", "files/a.m/b.m", "evil",
         "metadata/evil.xml", FOLDER[1:] + "/evil.xml", "files/a.m/[0].last.piece",
         "_rels/evil.rels", "files/_rels/a.m.rels", "files/a.m%20", "files\\a.m", "files/a.M"]
ALGORITHMS = [C14N, C14N_COMMENTS, EXCLUSIVE, RELATIONSHIP_TRANSFORM, MORE + "rsa-sha512",
              MORE + "hmac-sha256", "http://www.w3.org/TR/1999/REC-xpath-19991116",
              "http://www.w3.org/TR/1999/REC-xslt-19991116",
              "http://www.w3.org/2000/09/xmldsig#base64",
              "http://www.w3.org/2000/09/xmldsig#enveloped-signature",
              "http://www.w3.org/2000/09/xmldsig#sha1"]
VALUES = ["", "#idPackageObject", "#idSignatureTime", "/files/a.m?ContentType=text/plain",
          "/files/evil.m?ContentType=text/plain", "http://127.0.0.1:9/", "file:///etc/passwd",
          "\u202e", "idPackageObject", "idPackageSignature", "External", "Internal", "text/plain",
          MEDIA + "origin", MEDIA + "certificate", "../a.m", "/FILES/a.m", "AAAA", "0"]


class Mutator:
    """`donors` are packages of others, whose elements and parts are mixed in."""

    def __init__(self, signed, donors):
        self.signed = Package(signed)
        self.donors = [Package(each) for each in donors]
        self.elements = [element for donor in [self.signed, *self.donors]
                         for part in signature_parts(donor)
                         for element in parse(donor[part]).iter("{*}*")]

    def variant(self, number):
        """The package and what was done to it."""
        chance = random.Random(number)
        package, done = self.signed.copy(), []
        for _ in range(chance.randint(1, 3)):
            change = chance.choice(CHANGES)
            try:
                change(self, package, chance)
                done.append(change.__name__)
            except (KeyError, IndexError, StopIteration, ValueError, etree.XMLSyntaxError):
                done.append(f"({change.__name__})")  # an earlier change left nothing for it
        return package, done

    # Items

    def flip_byte(self, package, chance):
        name = chance.choice(list(package.items))
        content = bytearray(package.items[name])
        content[chance.randrange(len(content))] ^= 1 << chance.randrange(8)
        package.items[name] = bytes(content)

    def cut_or_grow(self, package, chance):
        name = chance.choice(list(package.items))
        content = package.items[name]
        package.items[name] = chance.choice([content[:len(content) // 2], b"", content + b"\n",
                                             content + content, b" " + content])

    def add_item(self, package, chance):
        package.items[chance.choice(NAMES)] = chance.choice([b"evil", b"", b"<a/>"])

    def remove_item(self, package, chance):
        del package.items[chance.choice(list(package.items))]

    def rename_item(self, package, chance):
        name = chance.choice(list(package.items))
        other = chance.choice([name.upper(), name + ".x", name.replace("files", "Files"),
                               name.replace("a", "%61", 1), chance.choice(NAMES)])
        package.items[other] = package.items.pop(name)

    def copy_item(self, package, chance):
        package.items[chance.choice(NAMES)] = package.items[chance.choice(list(package.items))]

    def exchange_items(self, package, chance):
        one, other = chance.sample(list(package.items), 2)
        package.items[one], package.items[other] = package.items[other], package.items[one]

    def reorder_items(self, package, chance):
        order = list(package.items.items())
        chance.shuffle(order)
        package.items = dict(order)

    def take_item(self, package, chance):
        donor = chance.choice(self.donors)
        name = chance.choice(list(donor.items))
        package.items[name] = donor.items[name]

    # Relationships and types

    def change_relationship(self, package, chance):
        source = chance.choice(["/", ORIGIN_PART])

        def change(root):
            each = chance.choice(root)
            each.set(chance.choice(["Id", "Type", "Target", "TargetMode"]), self.value(chance))
        change_relationships(package, source, change)

    def edit_relationships(self, package, chance):
        def change(root):
            kind = chance.randrange(3)
            each = chance.choice(root)
            if kind == 0:
                root.remove(each)
            elif kind == 1:
                root.append(copy.deepcopy(each))
            else:
                made = copy.deepcopy(each)
                made.set("Id", "rNew")
                made.set("Target", chance.choice(["/files/a.m", "/files/evil.m", "/none"]))
                root.append(made)
        change_relationships(package, chance.choice(["/", ORIGIN_PART]), change)

    def relate_anything(self, package, chance):
        source = chance.choice(["/", *package.parts()])
        known = [each.get("Type") for each in [*rels(package, "/"), *rels(package, ORIGIN_PART)]]
        package.relate(source, chance.choice([*known, "http://evil.example/"]),
                       chance.choice(package.parts()), "rAny")

    def change_type(self, package, chance):
        root = package.types()
        each = chance.choice(root)
        each.set(chance.choice(list(each.attrib)), chance.choice(
            [self.value(chance), *(other.get("ContentType") for other in root)]))
        package.set_types(root)

    def set_type(self, package, chance):
        part = chance.choice(package.parts())
        package.set_type(part, package.type_of(chance.choice(package.parts())))

    # The XML of the signature

    def value(self, chance):
        return chance.choice(VALUES)

    def on_signature(self, package, change):
        change_signature(package, change, signature_parts(package)[0])

    def remove_element(self, package, chance):
        def change(root):
            each = chance.choice(list(root.iterdescendants("{*}*")))
            each.getparent().remove(each)
        self.on_signature(package, change)

    def double_element(self, package, chance):
        def change(root):
            each = chance.choice(list(root.iterdescendants("{*}*")))
            each.addnext(copy.deepcopy(each))
        self.on_signature(package, change)

    def move_element(self, package, chance):
        def change(root):
            each, place = chance.sample(list(root.iterdescendants("{*}*")), 2)
            if each not in place.iterancestors():
                place.insert(chance.randint(0, len(place)), each)
        self.on_signature(package, change)

    def wrap_element(self, package, chance):
        def change(root):
            each = chance.choice(list(root.iterdescendants("{*}*")))
            wrapper = etree.Element(D + chance.choice(["Object", "Manifest", "Signature"]))
            if chance.random() < 0.5:
                wrapper.set("Id", each.get("Id", "idPackageObject"))
            each.addprevious(wrapper)
            wrapper.append(each)
        self.on_signature(package, change)

    def take_element(self, package, chance):
        def change(root):
            taken = copy.deepcopy(chance.choice(self.elements))
            same = [each for each in root.iterdescendants("{*}*") if each.tag == taken.tag]
            if same and chance.random() < 0.7:
                old = chance.choice(same)
                old.getparent().replace(old, taken)
            else:
                chance.choice(list(root.iter("{*}*"))).append(taken)
        self.on_signature(package, change)

    def change_attribute(self, package, chance):
        def change(root):
            each = chance.choice([each for each in root.iter("{*}*") if each.attrib])
            name = chance.choice(list(each.attrib))
            each.set(name, chance.choice(ALGORITHMS) if name == "Algorithm" else
                     chance.choice([self.value(chance), each.get(name) + chance.choice("x &/#?")]))
        self.on_signature(package, change)

    def exchange_attributes(self, package, chance):
        def change(root):
            name = chance.choice(["URI", "Algorithm", "Id"])
            one, other = chance.sample([each for each in root.iter("{*}*") if each.get(name)], 2)
            first, second = one.get(name), other.get(name)
            one.set(name, second)
            other.set(name, first)
        self.on_signature(package, change)

    def exchange_texts(self, package, chance):
        def change(root):
            one, other = chance.sample([each for each in root.iter("{*}*") if each.text], 2)
            one.text, other.text = other.text, one.text
        self.on_signature(package, change)

    def change_text(self, package, chance):
        def change(root):
            each = chance.choice([each for each in root.iter("{*}*") if each.text])
            at = chance.randrange(len(each.text))
            each.text = chance.choice([each.text[:at], each.text[:at] + " " + each.text[at:],
                                       each.text[:at] + "A" + each.text[at + 1:], "",
                                       each.text * 2])
        self.on_signature(package, change)

    def insert_markup(self, package, chance):
        def change(root):
            each = chance.choice(list(root.iter("{*}*")))
            mark = chance.choice([etree.Comment("x"), etree.ProcessingInstruction("x", "y")])
            if each.text and chance.random() < 0.5:
                at = chance.randrange(len(each.text))
                each.text, mark.tail = each.text[:at], each.text[at:]
            each.insert(0, mark)
        self.on_signature(package, change)

    def rename_element(self, package, chance):
        def change(root):
            each = chance.choice(list(root.iter("{*}*")))
            local = etree.QName(each).localname
            each.tag = chance.choice([D + local.lower(), "{http://evil.example/}" + local, local,
                                      D + "Object", D + "Reference", D + "KeyValue"])
        self.on_signature(package, change)

    def change_bytes_of_xml(self, package, chance):
        part = signature_parts(package)[0]
        content = package[part]
        at = chance.randrange(len(content))
        package[part] = chance.choice([
            content[:at] + content[at + 1:], content[:at] + b"&#65;" + content[at:],
            content.replace(b"?>", b"?><!DOCTYPE Signature>", 1), content[:at] + content[at - 9:],
            content.replace(b"UTF-8", b"UTF-16", 1), content[:at] + b"\0" + content[at:]])


CHANGES = [value for name, value in vars(Mutator).items()
           if not name.startswith("_") and name not in ("variant", "value", "on_signature")]


def content_of(package):
    """What a signature promises of a package: each item but those that carry signatures, with its
    type and its bytes; and the same of the relationships."""
    found = {}
    for name, content in package.items.items():
        part = "/" + name
        if is_types_item(name) or is_carrier(package, part):
            continue
        found[name] = (package.type_of(part), content)
    return found


def is_carrier(package, part):
    """Whether it carries signatures, and lies where it may. No signature covers its name, whose case
    does not count."""
    part = part.lower()
    if part.startswith(("/files/", "/metadata/")):
        return False
    return (package.type_of(part) or "").startswith(MEDIA) or (
        part.startswith(FOLDER + "/") and part.endswith(".rels"))
