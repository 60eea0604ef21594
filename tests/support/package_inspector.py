#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Reads or damages a package: package_inspector.py COMMAND PACKAGE [ARGUMENT...]."""

import os
import sys
import xml.etree.ElementTree as ET
import zipfile

TYPES = "{http://schemas.openxmlformats.org/package/2006/content-types}"
RELATIONSHIPS = "{http://schemas.openxmlformats.org/package/2006/relationships}"
PACKAGE_RELATIONSHIPS = "_rels/.rels"


def read(package, item):
    with zipfile.ZipFile(package) as archive:
        return archive.read(item)


def rewrite(package, change):
    """Rewrites the package; `change` maps a name and its bytes to new bytes, or None."""
    fresh = package + ".new"
    with zipfile.ZipFile(package) as old, zipfile.ZipFile(fresh, "w", zipfile.ZIP_DEFLATED) as new:
        for item in old.infolist():
            data = change(item.filename, old.read(item))
            if data is not None:
                new.writestr(item.filename, data)
    os.replace(fresh, package)


def package_relationships(package):
    return ET.fromstring(read(package, PACKAGE_RELATIONSHIPS))


def names(package):
    with zipfile.ZipFile(package) as archive:
        print("\n".join(sorted(archive.namelist())))


def relationships(package, wanted):
    for relationship in package_relationships(package).iter(RELATIONSHIPS + "Relationship"):
        if relationship.get("Type") == wanted:
            print(relationship.get("Id"), relationship.get("Target"))


def content_type(package, item):
    root = ET.fromstring(read(package, "[Content_Types].xml"))
    by_part = {e.get("PartName"): e.get("ContentType") for e in root.iter(TYPES + "Override")}
    by_extension = {e.get("Extension").lower(): e.get("ContentType")
                    for e in root.iter(TYPES + "Default")}
    extension = item.rpartition(".")[2].lower()
    sys.stdout.write(by_part.get("/" + item, by_extension.get(extension, "")))


def content(package, item):
    sys.stdout.buffer.write(read(package, item))


def canonical(package, item):
    sys.stdout.write(ET.canonicalize(read(package, item).decode("utf-8")))


def canonical_file(file):
    sys.stdout.write(ET.canonicalize(from_file=file))


def remove(package, item):
    rewrite(package, lambda name, data: None if name == item else data)


def replace(package, item, text):
    rewrite(package, lambda name, data: text.encode("utf-8") if name == item else data)


def double_relationship(package, wanted):
    root = package_relationships(package)
    first = next(r for r in root.iter(RELATIONSHIPS + "Relationship") if r.get("Type") == wanted)
    ET.SubElement(root, first.tag, {**first.attrib, "Id": "another"})
    ET.register_namespace("", RELATIONSHIPS[1:-1])
    text = ET.tostring(root, encoding="unicode", xml_declaration=False)
    replace(package, PACKAGE_RELATIONSHIPS, text)


COMMANDS = [names, relationships, content_type, content, canonical, canonical_file, remove,
            replace, double_relationship]

if __name__ == "__main__":
    by_name = {command.__name__.replace("_", "-"): command for command in COMMANDS}
    by_name[sys.argv[1]](*sys.argv[2:])
