# SPDX-License-Identifier: MIT
"""Parts, relationships and XML of a package, by OPC and the stricter docs/format-reference.md.

Pieces of parts ("[0].piece") are not joined, since no program writes them any more.
"""

import re
import urllib.parse
import zipfile
from xml.etree import ElementTree

# A segment of a part name: characters that need no escape, or escapes; no dot at the end.
ESCAPE = r"%(?!00|2[DEF]|3\d|4[1-9A-F]|5[0-9ACF]|6[1-9A-F]|7[0-9AE])[0-9A-F]{2}"
PART_NAME = re.compile(r"(/([A-Z0-9._~!$&'()*+,;=:@-]|%s)*([A-Z0-9_~!$&'()*+,;=:@-]|%s))+"
                       % (ESCAPE, ESCAPE), re.IGNORECASE | re.ASCII)
RELATIONSHIPS_PART = re.compile(r"/_rels/[^/]*\.rels$")
DECLARATION = re.compile(
    r"""<\?xml\s+version\s*=\s*["'](.*?)["'](?:\s+encoding\s*=\s*["'](.*?)["'])?""")
LARGEST, DEEPEST = 64 << 20, 256


class Fault(Exception):
    """The input is not a valid package; the text is the reason."""


class Builder(ElementTree.TreeBuilder):
    """Builds a tree of elements, and refuses XML that a package must not have."""

    depth = 0

    def doctype(self, name, public, system):
        raise Fault("document type declaration of %s" % name)

    def start(self, tag, attributes):
        self.depth += 1
        if self.depth > DEEPEST:
            raise Fault("too many levels")
        return super().start(tag, attributes)

    def end(self, tag):
        self.depth -= 1
        return super().end(tag)


def parse(content):
    """The root element of a document."""
    if len(content) > LARGEST:
        raise Fault("document too large")
    usual = "UTF-16" if content[:2] in (b"\xff\xfe", b"\xfe\xff") else "UTF-8"
    try:
        text = content.decode(usual).removeprefix("\ufeff")
        declared = DECLARATION.match(text)
        version, encoding = declared.groups() if declared else ("1.0", None)
        if version != "1.0" or (encoding or usual).upper() != usual:
            raise Fault("XML %s in %s" % (version, encoding))
        return ElementTree.fromstring(text, ElementTree.XMLParser(target=Builder()))
    except (UnicodeDecodeError, ElementTree.ParseError) as error:
        raise Fault(str(error)) from error


def local(element):
    return element.tag.rpartition("}")[2]


def every(element, name):
    """The children with a local name."""
    return [] if element is None else [child for child in element if local(child) == name]


def folded(name):
    """A part name for comparison: ASCII letters in lower case."""
    return name.encode().lower().decode()


def parents(path):
    return {path[:at] for at, character in enumerate(path) if character == "/"}


def encoded(name):
    """A name with characters outside ASCII as escapes."""
    return re.sub("[^\\0-\x7f]+", lambda found: urllib.parse.quote(found[0]), name)


def normal(path):
    """A path without unnecessary escapes."""
    return re.sub("%[0-9A-Fa-f]{2}", lambda found: unescaped(found[0]), encoded(path))


def unescaped(escape):
    character = chr(int(escape[1:], 16))
    return character if re.match("[A-Za-z0-9._~-]", character) else escape


class Package:
    """The parts of a package, and the relationships of the package."""

    def __init__(self, path):
        self.container = zipfile.ZipFile(path)
        if any(".." in re.split(r"[/\\]", name) for name in self.container.namelist()):
            raise Fault("segment '..'")
        names = [encoded("/" + item.filename) for item in self.container.infolist()]
        items = dict(zip(map(folded, names), self.container.infolist()))
        self.types = self._read_types(items)
        self.parts = {folded(name): name for name in names
                      if PART_NAME.fullmatch(name) and self.type_of(name)
                      and not RELATIONSHIPS_PART.search(folded(name))}
        if len(items) < len(names) or any(parents(part) & self.parts.keys() for part in self.parts):
            raise Fault("names of parts")
        self.items = items
        root = parse(self._item("/_rels/.rels")) if "/_rels/.rels" in items else None
        self.links = every(root, "Relationship")
        for link in self.links:
            self.check(link)

    def __enter__(self):
        return self

    def __exit__(self, *failure):
        self.container.close()

    def _item(self, name):
        return self.container.read(self.items[name])

    def _read_types(self, items):
        if "/[content_types].xml" not in items:
            raise Fault("no content types")
        root = parse(self.container.read(items["/[content_types].xml"]))
        found = {folded(entry.get("PartName")): entry.get("ContentType")
                 for entry in every(root, "Override")}
        found.update({"." + folded(entry.get("Extension")): entry.get("ContentType")
                      for entry in every(root, "Default")})
        return found

    def type_of(self, name):
        """The content type of a part; None if it has none."""
        _, dot, extension = folded(name).rpartition("/")[2].rpartition(".")
        return self.types.get(folded(name)) or (self.types.get(dot + extension) if dot else None)

    def read(self, name):
        return self._item(folded(name))

    def check(self, link):
        """Checks every relationship: an invalid one is a fault of the package."""
        name = None if external(link) else folded(resolved(link))
        if name and (not PART_NAME.fullmatch(name)
                     or name in self.items and not self.type_of(name)):
            raise Fault("relationship to %s" % name)

    def others(self):
        """The items that are neither parts nor what makes parts of them, by name."""
        return {"/" + item.filename: name for name, item in self.items.items()
                if name not in self.parts and name != "/[content_types].xml"
                and not self._is_of_source(name) and not item.is_dir()}

    def _is_of_source(self, name):
        """Whether it holds the relationships of the package or of a part that is there."""
        if not RELATIONSHIPS_PART.search(name):
            return False
        folder, _, last = name.rpartition("/")
        source = folder.removesuffix("_rels") + last.removesuffix(".rels")
        return source == "/" or source in self.parts

    def sources(self):
        """The relationships by the name of the part, or "/", that they start from."""
        found = {"/": self.links}
        for name, part in self.parts.items():
            folder, _, last = name.rpartition("/")
            rels = f"{folder}/_rels/{last}.rels"
            if rels in self.items:
                found[part] = every(parse(self._item(rels)), "Relationship")
        return found

    def links_of(self, kind):
        return [link for link in self.links if link.get("Type") == kind]

    def targets(self, kind):
        """The parts that the relationships of a type lead to; None for other targets."""
        return [None if external(link) else self.parts.get(folded(resolved(link)))
                for link in self.links_of(kind)]

    def only(self, kind):
        """The part that the one relationship of a type leads to; None if there is not one."""
        found = self.targets(kind)
        if found == [None]:
            raise Fault("relationship of type %s leads to no part" % kind)
        return found[0] if len(found) == 1 else None


def external(link):
    return link.get("TargetMode") == "External"


def resolved(link, source="/"):
    """The name of the part that a relationship of the package, or of a part, leads to."""
    target = link.get("Target", "")
    reference = urllib.parse.urlsplit(target.replace("\\", "/"))
    if reference.scheme or reference.netloc or not reference.path:
        raise Fault("relationship to %r" % target)
    return normal(urllib.parse.urlsplit(urllib.parse.urljoin("http://p" + source, reference.path)).path)
