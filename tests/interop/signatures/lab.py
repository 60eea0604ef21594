# SPDX-License-Identifier: MIT
"""A signed package and what an attacker has: other keys, other signed packages, tools to change
parts, relationships, types and the signature itself."""

import copy
import os
import pathlib
import sys

from lxml import etree

sys.path[:0] = [str(pathlib.Path(__file__).resolve().parents[1]),
                str(pathlib.Path(__file__).resolve().parents[2] / "cli")]

import keys
import signer
from opc_package import RELATIONSHIPS, Package, parse, relationships_of, written
from xml_signature import DSIG, SIGNATURE

D = f"{{{DSIG}}}"
NAMES = {"d": DSIG}
FILES = {"a.m": "x = 1;\n", "b.m": "y = 2;\n", "lib/größe.m": "z = 3;\n", "data.xml": "<a>1</a>",
         "lib/run.txt": "a text\n" * 50}


def rels(package, source):
    return parse(package[relationships_of(source)])


class Lab:
    """`sign(package bytes) -> package bytes` signs as Ada, whom the tests trust."""

    def __init__(self, folder, create, sign):
        self.authority = keys.Signer("rsa2048", "Root", is_authority=True)
        self.ada = keys.Signer("rsa2048", "Ada Lind", self.authority)
        self.eve = keys.Signer("p256", "Eve")
        self.folder = pathlib.Path(folder)
        (self.folder / "root.pem").write_bytes(self.authority.pem())
        (self.folder / "ada.pem").write_bytes(self.ada.pem(self.ada.chain[:1]))
        (self.folder / "ada.key").write_bytes(self.ada.key_pem())
        os.chmod(self.folder / "ada.key", 0o600)
        self.unsigned = create(FILES, "Wave Tools")
        self.signed = sign(self.unsigned)
        self.other = sign(create({"other.m": "other\n"}, "Other"))

    def package(self):
        return Package(self.signed)

    def plain(self):
        return Package(self.unsigned)

    def by_eve(self, form=None, package=None, name="eve"):
        return signer.sign(package or self.plain(), self.eve, form, name)


def signature_parts(package):
    return package.targets(package.targets("/", signer.ORIGIN)[0], SIGNATURE)


def change_relationships(package, source, change):
    root = rels(package, source)
    change(root)
    package[relationships_of(source)] = written(root)


def change_signature(package, change, part=None):
    """Changes the XML of the (first) signature; `change` gets its root, and may return another."""
    part = part or signature_parts(package)[0]
    root = parse(package[part])
    made = change(root)
    package[part] = written(root if made is None else made)


def find(root, path):
    return root.xpath(path, namespaces=NAMES)[0]


def element(tag, text=None, children=(), **attributes):
    made = etree.Element(D + tag, attributes)
    made.text = text
    made.extend(children)
    return made


def relationship(kind, target, identifier="rEvil", **more):
    return etree.Element(f"{{{RELATIONSHIPS}}}Relationship", Id=identifier, Type=kind,
                         Target=target, **more)


def clone(node):
    return copy.deepcopy(node)
