# SPDX-License-Identifier: MIT
"""The worst known input of each kind: packages that are small and take much to read."""

import dataclasses
import random

from hostilezip import DEFLATED, SCHEMA, Entry, addon, build, zip64_end

CORE = ('<coreProperties xmlns="http://schemas.openxmlformats.org/package/2006/metadata/'
        'core-properties">{}</coreProperties>')
FILE = Entry(b"files/a.m", b"x")


@dataclasses.dataclass
class Input:
    content: bytes  # of the package
    tables: int = 0  # bytes of content types, relationships and the table of the file tree
    document: int = 0  # bytes of the document that the commands ask for
    nodes: int = 0  # of its DOM


def packed(entries, document=0, nodes=0):
    """A package of any number of entries."""
    whole = build(entries)
    start = int.from_bytes(whole[-6:-2], "little")
    directory = whole[start:-22]
    content = whole[:start] + directory + zip64_end(len(entries), len(directory), start,
                                                    start + len(directory))
    tables = sum(len(entry.content) for entry in entries if entry.name in (
        b"[Content_Types].xml", b"_rels/.rels", b"metadata/fileTree.xml"))
    return Input(content, tables, document, nodes)


def tree(rows, *more, nodes=0):
    table = f'<fileTree xmlns="{SCHEMA}/fileTree">{rows}</fileTree>'.encode()
    return packed(addon([FILE, *more], table=table), len(table), nodes)


def core(body, nodes):
    document = CORE.format(body).encode()
    return packed(addon([FILE], core=document), len(document), nodes)


def noise(size):
    return Entry(b"noise", random.Random(1).randbytes(size))


def relationships(count, target="f", mode=""):
    return packed(addon([FILE], relationships="".join(
        f'<Relationship Id="r{n}" Type="t" Target="{target}"{mode}/>' for n in range(count))))


def overrides(count, tail=""):
    return packed(addon([FILE], types="".join(
        f'<Override PartName="/x{n}{tail}" ContentType="t/x"/>' for n in range(count))))


def entries(name, count):
    return packed(addon([Entry(name % n) for n in range(count)]))


EXTERNAL = ' TargetMode="External"'
# Markup of all kinds, up to what is read of a document.
MARKUP = {
    "elements": "<y/>" * 1_999_000,
    "elements with text": ("<y>" + "z" * 26 + "</y>") * 1_900_000,
    "attributes": '<y a=""/>' * 990_000,
    "long attributes": ('<y a="' + "x" * 1_000_000 + '"/>') * 60,
    "text": "x" * (60 << 20),
    "CDATA sections": "<![CDATA[x]]>" * 1_900_000,
    "a comment": "<!--" + "x" * (60 << 20) + "-->",
    "references": "&#65;" * (11 << 20),
    "nested elements": ("<y>" * 250 + "</y>" * 250) * 7_900,
    "one long child": "<y>" + "<z/>" * 1_990_000 + "</y>",
}
NODES = {"elements": 2_000_000, "elements with text": 4_000_000, "attributes": 2_000_000,
         "nested elements": 2_000_000, "CDATA sections": 2_000_000, "one long child": 2_000_000}

TABLES = {
    "relationships": lambda: relationships(399_000),
    "relationships with long targets": lambda: relationships(60_000, "x" * 1000, EXTERNAL),
    "content types": lambda: overrides(600_000),
    "content types with long names": lambda: overrides(55_000, "y" * 1000),
    "folders": lambda: tree("".join(f'<folder path="{n}"/>' for n in range(1_000_000)),
                            nodes=2_000_000),
    "folders with long names": lambda: tree("".join(
        f'<folder path="{n}/{"p" * 200}"/>' for n in range(200_000)), nodes=400_000),
    "folders inside each other": lambda: tree("".join(
        f'<folder path="{n}{"/a" * 400}"/>' for n in range(4500)), noise(1_900_000), nodes=9000),
    "a path of folders": lambda: tree(f'<folder path="a{"/a" * 240_000}"/>', noise(240_000)),
    "entries": lambda: entries(b"files/%d.m", 100_000),
    "entries without type": lambda: entries(b"files/%d.q", 100_000),
    "entries that are no parts": lambda: entries(b"files/%%zz%d", 100_000),
    "entries in pieces": lambda: entries(b"files/%d.m/[0].piece", 100_000),
    "an entry that unpacks to 256 MiB": lambda: packed(addon(
        [Entry(b"files/a.m", bytes(256 << 20), DEFLATED)])),
}
