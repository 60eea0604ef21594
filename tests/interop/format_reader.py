#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""A reader of packages, written from docs/format-reference.md alone, without any code of the
program.

format_reader.py PACKAGE prints what is in a package as JSON.
"""

import hashlib
import json
import re
import sys
import urllib.parse
from xml.etree import ElementTree

from opc_parts import Fault, Package, every, external, folded, local, parents, parse, resolved

ROOT = "http://schemas.pellandry.example/korvan/addon/2014"
RELATIONSHIPS = ROOT + "/relationships/"
SCREENSHOT = RELATIONSHIPS + "primaryScreenShot"
TREE = "{%s/fileTree}fileTree" % ROOT

METADATA = "http://schemas.openxmlformats.org/package/2006/%smetadata/core-properties"
CORE = METADATA % "relationships/"
CP = "{%s}" % (METADATA % "")
DC = "{http://purl.org/dc/elements/1.1/}"
DCTERMS = "{http://purl.org/dc/terms/}"
CORE_NAMES = {
    CP: "category contentStatus contentType keywords lastModifiedBy lastPrinted revision version",
    DC: "creator description identifier language subject title",
    DCTERMS: "created modified"}
CORE_ELEMENTS = {space + name for space, names in CORE_NAMES.items() for name in names.split()}

IMAGE = "/metadata/primaryScreenShot."
PACKAGE = "http://schemas.openxmlformats.org/package/2006/relationships/"
THUMBNAIL = PACKAGE + "metadata/thumbnail"
SIGNATURES = PACKAGE + "digital-signature/"
SIGNATURE_TYPES = "application/vnd.openxmlformats-package.digital-signature-"

CONTROL = re.compile("[\0-\x1f\x7f-\x9f]")


def first(element, name):
    return next(iter(every(element, name)), None)


def text_of(element):
    return "" if element is None else "".join(element.itertext())


def text(element, name):
    return text_of(first(element, name))


def attributes(element, *names):
    return {name: "" if element is None else element.get(name, "") for name in names}


def core_properties(package):
    found = package.targets(CORE)
    if len(found) > 1 or None in found:
        raise Fault("relationships to core properties")
    if not found:
        return {}
    root = parse(package.read(found[0]))
    tags = [child.tag for child in root]
    if (root.tag != CP + "coreProperties" or not CORE_ELEMENTS.issuperset(tags)
            or len(set(tags)) < len(tags)):
        raise Fault("core properties")
    return {child.tag: text_of(child) for child in root}


def document(package, name):
    """The root of a document; None if it is absent."""
    part = package.only(RELATIONSHIPS + name)
    return parse(package.read(part)) if part else None


def properties(package):
    core = core_properties(package)
    host = next(filter(None, package.targets(RELATIONSHIPS + "hostProperties")), None)
    host = parse(package.read(host)) if host else None
    rest = document(package, "addonProperties")
    author = first(first(rest, "authors"), "author")
    named = first(author, "name")
    return {
        "type": text(host, "contentTypeFriendlyName"),
        "name": core.get(DC + "title", ""),
        "version": core.get(CP + "version", ""),
        "KorvanRelease": text(host, "korvanRelease"),
        "summary": core.get(DC + "description", ""),
        "authorName": core.get(DC + "creator", "") if named is None else text_of(named),
        "authorContact": text(author, "contact"),
        "authorOrganization": text(author, "organization"),
        "GUID": text(rest, "identifier"),
        "description": text(rest, "description")}


def license_of(root):
    return attributes(first(root, "licenseText"), "type") | {"text": text(root, "licenseText")}


def configuration(root):
    return {name + "s": [text_of(item) for item in every(first(root, name + "s"), name)]
            for name in ("korvanPath", "javaClassPath")}


def apps(root):
    return [attributes(app, "name", "guid") | {
        "relativePath": text(app, "file"),
        "installByDefault": "true" if app.get("installByDefault") == "true" else "false"}
            for app in every(root, "application")]


def example(element):
    found = attributes(element, "name", "type") | {"source": "", "main": "", "thumbnail": ""}
    files = [(file.get("type"), text_of(file)) for file in every(element, "file")]
    found.update((kind, path) for kind, path in files if kind in ("source", "main", "thumbnail"))
    return found | {"images": [path for kind, path in files if kind == "image"] or None}


def examples(root):
    return [attributes(category, "name") | {
        "examples": [example(element) for element in every(category, "example")] or None}
            for category in every(root, "exampleCategory")]


def revisions(root):
    return [attributes(revision, "date", "version") | {
        "description": text(revision, "description")} for revision in every(root, "revision")]


def requirements(root):
    lists = {"productDependency": ("requiredProducts", "product"),
             "supportPackageDependency": ("requiredSupportPackages", "supportPackage")}
    return {name: [attributes(item, "name", "version", "identifier")
                   for item in every(first(root, above), element)] or None
            for name, (above, element) in lists.items()}


# The name of a document for `kraddon get`, its name in the format, and the function that reads it.
DOCUMENTS = {
    "license": ("license", license_of), "configuration": ("configuration", configuration),
    "apps": ("applications", apps), "examples": ("examples", examples),
    "revisions": ("revisionHistory", revisions),
    "requirements": ("systemRequirements", requirements)}


def screenshot(package):
    if any(map(external, package.links_of(SCREENSHOT))):
        return None
    part = package.only(SCREENSHOT)
    return part and {"part": part, "type": package.type_of(part), "bytes": package.read(part)}


def path_of(encoded):
    """A path, decoded once; None if the result is not a path."""
    if re.search("%(?![0-9A-Fa-f]{2})", encoded):
        return None
    try:
        path = urllib.parse.unquote(encoded, errors="strict")
    except UnicodeDecodeError:
        return None
    return None if set(path.split("/")) & {"", ".", ".."} or "\0" in path else path


def table(package):
    """The entries of the file tree document: kind, path, and the part of a file."""
    by_name = [package.parts[name] for name in ["/metadata/filetree.xml"] if name in package.parts]
    found = package.targets(RELATIONSHIPS + "fileTree") or by_name
    if len(found) > 1 or None in found:
        raise Fault("relationships to the file tree")
    root = parse(package.read(found[0])) if found else ElementTree.Element(TREE)
    if root.tag != TREE:
        raise Fault("root of the file tree")
    for entry in root:
        path = path_of(entry.get("path", ""))
        if local(entry) not in ("file", "folder") or path is None:
            raise Fault("entry of the file tree")
        yield local(entry), path, folded(entry.get("part", ""))


class Tree:
    """The files, part by path, and the empty folders."""

    def __init__(self, package):
        self.files, self.above, listed = {}, set(), []
        for kind, path, part in table(package):
            if kind == "folder":
                listed.append(path)
            elif part not in package.parts or part in self.files.values() or self._clashes(path):
                raise Fault("file %r of the table" % path)
            else:
                self._add(path, part)
        self._add_parts(package)
        if len(set(listed)) < len(listed) or any(self._is_at_file(path) for path in listed):
            raise Fault("folders of the table")
        self.folders = set(listed) - self.above.union(*map(parents, listed))

    def _add_parts(self, package):
        listed = set(self.files.values())
        for part, name in package.parts.items():
            path = path_of(name[len("/files/"):]) if part.startswith("/files/") else None
            if path and part not in listed and not CONTROL.search(path) and not self._clashes(path):
                self._add(path, part)

    def _is_at_file(self, path):
        return not self.files.keys().isdisjoint(parents(path) | {path})

    def _clashes(self, path):
        return path in self.above or self._is_at_file(path)

    def _add(self, path, part):
        self.files[path] = part
        self.above |= parents(path)

    def listing(self):
        """The paths in the order of the listing."""
        return sorted([*self.files, *self.folders],
                      key=lambda path: [name.encode("utf-16-be") for name in path.split("/")])


def other_parts(package, known):
    """The parts and items that are not of the format."""
    for kind in (CORE, RELATIONSHIPS + "hostProperties", RELATIONSHIPS + "fileTree"):
        known |= {folded(part) for part in package.targets(kind) if part}
    if not package.links_of(RELATIONSHIPS + "fileTree"):
        known.add("/metadata/filetree.xml")
    types = {name: package.type_of(name) for part, name in package.parts.items()
             if part not in known}
    found = {f"{name}?ContentType={kind}": package.read(name) for name, kind in types.items()
             if not kind.lower().startswith(SIGNATURE_TYPES)}
    found.update({f"{name}?ContentType=": package.read(folded_name)
                  for name, folded_name in package.others().items()})
    return found


def other_relationships(package):
    """The relationships that are not of the format, by their source."""
    usual = {RELATIONSHIPS + kind: f"/metadata/{kind}.xml" for kind in (
        "hostProperties", "fileTree", "addonProperties", *(kind for kind, _ in DOCUMENTS.values()))}
    usual |= {CORE: "/metadata/coreProperties.xml", SCREENSHOT: IMAGE, THUMBNAIL: IMAGE}
    found = {}
    for source, links in package.sources().items():
        lines = []
        for link in links:
            kind, target = link.get("Type"), link.get("Target", "")
            target = target if external(link) else resolved(link, source)
            own = usual.get(kind) if source == "/" and not external(link) else None
            if own and (folded(target).startswith(folded(own)) if own == IMAGE
                        else folded(target) == folded(own)):
                del usual[kind]
            elif not kind.startswith(SIGNATURES):
                mode = "External" if external(link) else "Internal"
                lines.append(f"{kind}\0{mode}\0{target}\n".encode())
        if lines:
            found[source + "#relationships"] = b"".join(sorted(lines))
    return found


def digest(package, tree):
    contents = {path: package.read(part) for path, part in tree.files.items()}
    contents.update({folder + "/": b"" for folder in tree.folders})
    found = [package.only(RELATIONSHIPS + kind)
             for kind in ("addonProperties", *(kind for kind, _ in DOCUMENTS.values()))]
    contents.update({part: package.read(part) for part in found if part})
    shot = screenshot(package)
    contents.update({shot["part"]: shot["bytes"]} if shot else {})
    if package.links_of(RELATIONSHIPS + "hostProperties") or tree.files or tree.folders:
        said = json.dumps(properties(package), ensure_ascii=False, separators=(",", ":"))
        contents["/properties"] = said.encode()
    known = {folded(part) for part in found if part} | set(tree.files.values())
    known |= {folded(shot["part"])} if shot else set()
    contents.update(other_parts(package, known))
    contents.update(other_relationships(package))
    lines = [path.encode() + b"\0" + hashlib.sha256(content).hexdigest().encode() + b"\n"
             for path, content in sorted(contents.items(), key=lambda item: item[0].encode())]
    return "sha256:" + hashlib.sha256(b"".join(lines)).hexdigest()


def read(path):
    """The whole content of a package, with the bytes of its files and of the screenshot."""
    with Package(path) as package:
        tree = Tree(package)
        documents = {"properties": properties(package)}
        for name, (kind, reader) in DOCUMENTS.items():
            documents[name] = reader(document(package, kind))
        return {"documents": documents, "screenshot": screenshot(package),
                "files": {path: package.read(part) for path, part in tree.files.items()},
                "listing": [(path, "file" if path in tree.files else "folder")
                            for path in tree.listing()],
                "digest": digest(package, tree)}


def main():
    found = read(sys.argv[1])
    del found["files"]
    if found["screenshot"]:
        content = found["screenshot"].pop("bytes")
        found["screenshot"]["sha256"] = hashlib.sha256(content).hexdigest()
    json.dump(found, sys.stdout, ensure_ascii=False, indent=2)
    print()


if __name__ == "__main__":
    main()
