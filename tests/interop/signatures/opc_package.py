# SPDX-License-Identifier: MIT
"""A package in memory, as the Open Packaging Conventions describe it: items with names, content
types, relationships. Written from the standard, without the program's help."""

import io
import posixpath
import zipfile

from lxml import etree

TYPES = "http://schemas.openxmlformats.org/package/2006/content-types"
RELATIONSHIPS = "http://schemas.openxmlformats.org/package/2006/relationships"
RELATIONSHIPS_TYPE = "application/vnd.openxmlformats-package.relationships+xml"


def is_types_item(name):
    return name.lower() == "[content_types].xml"


def parse(content):
    """The root of an XML document, in which nothing is expanded or loaded."""
    return etree.fromstring(content, etree.XMLParser(resolve_entities=False, no_network=True,
                                                     load_dtd=False, huge_tree=False))


def written(root):
    """A document in one line: there are readers that leave line ends out of relationships."""
    return (b'<?xml version="1.0" encoding="UTF-8" standalone="yes"?>' +
            etree.tostring(root, encoding="UTF-8", xml_declaration=False))


def relationships_of(source):
    """The name of the relationships part of a part, or of the package ("/")."""
    folder, name = posixpath.split(source)
    return posixpath.join(folder, "_rels", name + ".rels")


class Package:
    """The items in their order; a part's name is that of its item, with '/' in front."""

    def __init__(self, content):
        with zipfile.ZipFile(io.BytesIO(content)) as archive:
            self.items = {info.filename: archive.read(info) for info in archive.infolist()}

    def copy(self):
        other = object.__new__(Package)
        other.items = dict(self.items)
        return other

    def bytes(self):
        """A ZIP file that depends on the items only."""
        buffer = io.BytesIO()
        with zipfile.ZipFile(buffer, "w", zipfile.ZIP_DEFLATED) as archive:
            for name, content in self.items.items():
                info = zipfile.ZipInfo(name, (2026, 2, 2, 2, 40, 0))
                info.compress_type = zipfile.ZIP_DEFLATED
                info.create_system, info.external_attr = 3, 0o100644 << 16
                archive.writestr(info, content)
        return buffer.getvalue()

    def __getitem__(self, part):
        return self.items[part[1:]]

    def __setitem__(self, part, content):
        self.items[part[1:]] = content

    def __contains__(self, part):
        return part[1:] in self.items

    def remove(self, part):
        del self.items[part[1:]]

    def parts(self):
        return ["/" + name for name in self.items
                if not is_types_item(name) and self.type_of("/" + name) is not None]

    # Content types

    def types_item(self):
        """Its name, in which case does not count."""
        return next(name for name in self.items if is_types_item(name))

    def types(self):
        return parse(self.items[self.types_item()])

    def set_types(self, root):
        self.items[self.types_item()] = written(root)

    def type_of(self, part):
        by_extension = None
        for each in self.types():
            if each.tag == f"{{{TYPES}}}Override":
                if each.get("PartName", "").lower() == part.lower():
                    return each.get("ContentType")
            elif part.rpartition("/")[2].lower().endswith("." + each.get("Extension", "?").lower()):
                by_extension = each.get("ContentType")
        return by_extension

    def set_type(self, part, content_type):
        root = self.types()
        for each in root:
            if each.get("PartName", "").lower() == part.lower():
                root.remove(each)
        etree.SubElement(root, f"{{{TYPES}}}Override", PartName=part, ContentType=content_type)
        self.set_types(root)

    def add(self, part, content, content_type):
        self[part] = content
        if self.type_of(part) != content_type:
            self.set_type(part, content_type)

    # Relationships

    def relationships(self, source):
        part = relationships_of(source)
        return list(parse(self[part])) if part in self else []

    def targets(self, source, kind):
        """The names of the parts that relationships of a type lead to."""
        return [posixpath.normpath(posixpath.join(posixpath.dirname(source), each.get("Target")))
                for each in self.relationships(source)
                if each.get("Type") == kind and each.get("TargetMode", "Internal") == "Internal"]

    def relate(self, source, kind, target, identifier, mode=None):
        part = relationships_of(source)
        root = parse(self[part]) if part in self else etree.Element(
            f"{{{RELATIONSHIPS}}}Relationships", nsmap={None: RELATIONSHIPS})
        attributes = {"TargetMode": mode} if mode else {}
        etree.SubElement(root, f"{{{RELATIONSHIPS}}}Relationship", Id=identifier, Type=kind,
                         Target=target, **attributes)
        self.add(part, written(root), RELATIONSHIPS_TYPE)
