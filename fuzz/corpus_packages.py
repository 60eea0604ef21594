# SPDX-License-Identifier: MIT
"""The inputs of make_corpus.py that are packages."""

import io
import struct
import zipfile

from corpus_texts import (DOCUMENTS, RELS, ROOT, SCHEMAS, core, created, default, document, override,
                          relationship, relationships, types)

DATE = (2026, 2, 2, 2, 40, 0)
HOST = ROOT.replace("http://schemas.", "application/vnd.").split(".example")[0] + ".korvan.addon."
CORE = SCHEMAS + "relationships/metadata/core-properties"
THUMBNAIL = SCHEMAS + "relationships/metadata/thumbnail"
# The content is not an image, since no target reads it.
IMAGE = b"\x89PNG\r\n\x1a\n" + bytes(8)


class NoSeeking(io.RawIOBase):
    """A file that cannot seek, so that the writer puts sizes after the data."""

    def __init__(self):
        self.bytes = b""

    def writable(self):
        return True

    def write(self, data):
        self.bytes += bytes(data)
        return len(data)


def fill(archive, items, method):
    for name, content in items:
        info = zipfile.ZipInfo(name, DATE)
        info.compress_type = method
        info.create_system = 3
        info.external_attr = 0o644 << 16
        archive.writestr(info, content)


def packed(items, method=zipfile.ZIP_STORED, comment=b"", to=None):
    stream = to or io.BytesIO()
    with zipfile.ZipFile(stream, "w") as archive:
        fill(archive, items, method)
        archive.comment = comment
    return stream.bytes if to else stream.getvalue()


def with_mode(mode):
    stream = io.BytesIO()
    with zipfile.ZipFile(stream, "w") as archive:
        fill(archive, bare(), zipfile.ZIP_STORED)
        info = zipfile.ZipInfo("files/other.m", DATE)
        info.create_system = 3
        info.external_attr = mode << 16
        archive.writestr(info, b"target")
    return stream.getvalue()


def bare(*names, content_types=(), links=()):
    """Content types, relationships, and files."""
    return [("[Content_Types].xml", types(default("rels", RELS), default("m", "text/plain"),
                                          default("xml", "application/xml"), *content_types)),
            ("_rels/.rels", relationships(*links)),
            *((name, f"content of {name}\n") for name in names)]


METADATA = {
    "metadata/coreProperties.xml": (
        "application/vnd.openxmlformats-package.core-properties+xml", CORE,
        core("<dc:creator>Ada Lind</dc:creator>", "<dc:title>Kit</dc:title>",
             "<cp:version>1.2</cp:version>", created("2026-02-02T02:40:00Z"))),
    "metadata/hostProperties.xml": (
        HOST + "hostProperties+xml", ROOT + "relationships/hostProperties",
        document("hostProperties", "<contentType>a/b</contentType><contentTypeFriendlyName>Korvan "
                 "Toolbox</contentTypeFriendlyName><korvanRelease>R2047b</korvanRelease>")),
    "metadata/fileTree.xml": (
        HOST + "fileTree+xml", ROOT + "relationships/fileTree",
        document("fileTree", '<folder path="empty"/><folder path="a%20b/c"/>'
                 '<file part="/metadata/fileTree/1" path="end."/>'
                 '<file part="/metadata/fileTree/2.m" path="lib/A.m"/>')),
}
for _file, _kind in (("properties-full", "addonProperties"), ("license-full", "license"),
                     ("configuration-full", "configuration"),
                     ("applications-full", "applications"), ("examples-full", "examples"),
                     ("revisions-full", "revisionHistory"),
                     ("requirements-full", "systemRequirements")):
    METADATA[f"metadata/{_kind}.xml"] = (
        HOST + ("properties" if _kind == "addonProperties" else _kind) + "+xml",
        f"{ROOT}relationships/{_kind}", DOCUMENTS[_file + ".xml"][1])


def full():
    """Everything that an add-on can have."""
    image = "metadata/primaryScreenShot.png"
    links = [relationship(f"rId{i}", "/" + name, kind)
             for i, (name, (_, kind, _)) in enumerate(METADATA.items(), 1)]
    links += [relationship("rId100", "/" + image, ROOT + "relationships/primaryScreenShot"),
              relationship("rId101", "/" + image, THUMBNAIL)]
    kinds = [override("/" + name, kind) for name, (kind, _, _) in METADATA.items()]
    kinds += [default("png", "image/png"), override("/metadata/fileTree/1", "a/b"),
              override("/files/README", "application/octet-stream")]
    return [*bare("files/README", "files/lib/a.m", "files/gr%C3%B6%C3%9Fe.m", "metadata/fileTree/1",
                  "metadata/fileTree/2.m", content_types=kinds, links=links),
            *((name, text) for name, (_, _, text) in METADATA.items()), (image, IMAGE)]


def zip64():
    """The values are in the ZIP64 end record only."""
    plain = packed(bare("files/a.m"))
    end = plain.rindex(b"PK\5\6")
    count, size, offset = struct.unpack("<HII", plain[end + 10:end + 20])
    large = struct.pack("<4sQHHIIQQQQ", b"PK\6\6", 44, 45, 45, 0, 0, count, count, size, offset)
    locator = struct.pack("<4sIQI", b"PK\6\7", 0, end, 1)
    small = struct.pack("<4sHHHHIIH", b"PK\5\6", 0, 0, 0xFFFF, 0xFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0)
    return plain[:end] + large + locator + small


def with_extra():
    stream = io.BytesIO()
    with zipfile.ZipFile(stream, "w") as archive:
        fill(archive, bare(), zipfile.ZIP_STORED)
        info = zipfile.ZipInfo("files/a.m", DATE)
        info.extra = (struct.pack("<HHBI", 0x5455, 5, 1, 1770000000) +
                      struct.pack("<HHIHHQQQ", 0x000A, 32, 0, 1, 24, 134000000000000000, 0, 0))
        archive.writestr(info, b"timed")
    return stream.getvalue()


def within_extra():
    """One item, header and data, is in a local extra field of another."""
    plain = packed([*bare("files/a.m"), ("files/b.m", "outer"), ("files/c.m", "inner")])
    with zipfile.ZipFile(io.BytesIO(plain)) as archive:
        outer, inner = (info.header_offset for info in archive.infolist()[-2:])
        directory = archive.start_dir
    item = b"x" * 8 + plain[inner:directory]
    extra = b"ww" + struct.pack("<H", len(item)) + item
    name, data = outer + 30, outer + 30 + len("files/b.m")
    items = (plain[:name - 2] + struct.pack("<H", len(extra)) + plain[name:data] + extra +
             plain[data:inner])
    entries = plain[directory:]
    for old, new in ((inner, items.index(plain[inner:directory])), (directory, len(items))):
        entries = entries.replace(struct.pack("<I", old), struct.pack("<I", new))
    return items + entries


PIECES = bare("files/b.m/[0].piece", "files/b.m/[1].piece", "files/b.m/[2].last.piece",
              "files/c.m/[0].piece", "files/c.m/[2].last.piece", "files/a.m")
STRAYS = bare("files/a b.m", "files/c", "files/d/", "files/%zz.m", "other/_rels/x.m.rels",
              "files/%C3.m", "files/%01.m")


def packages():
    plain = packed(bare("files/a.m"))
    yield "bare.kraddon", plain
    yield "full.kraddon", packed(full())
    yield "full-deflated.kraddon", packed(full(), zipfile.ZIP_DEFLATED)
    yield "pieces.kraddon", packed(PIECES)
    yield "strays.kraddon", packed(STRAYS)
    yield "part-relationships.kraddon", packed([
        *bare("files/a.m"), ("files/_rels/a.m.rels", relationships(relationship("a", "b.m")))])
    yield "names-that-differ-in-case.kraddon", packed(bare("files/a.m", "files/A.m"))
    yield "name-below-a-part.kraddon", packed(bare("files/a.m", "files/a.m/b.m"))
    yield "name-outside-ascii.kraddon", packed(bare("files/größe.m"))
    yield "no-content-types.kraddon", packed(bare("files/a.m")[1:])
    yield "comment.kraddon", packed(bare("files/a.m"), comment=b"PK\5\6 is not an end record")
    yield "prefix.kraddon", b"#!/bin/sh\n" + plain
    yield "descriptors.kraddon", packed(bare("files/a.m"), zipfile.ZIP_DEFLATED, to=NoSeeking())
    yield "zip64.kraddon", zip64()
    yield "extra-fields.kraddon", with_extra()
    yield "items-within-an-extra-field.kraddon", within_extra()
    yield "executable.kraddon", with_mode(0o100755)
    yield "symbolic-link.kraddon", with_mode(0o120777)
    yield "device.kraddon", with_mode(0o060600)
    yield "highly-packed.kraddon", packed(
        [*bare(), ("files/a.m", bytes(1 << 20))], zipfile.ZIP_DEFLATED)
    yield "checksum.kraddon", plain.replace(b"content of", b"contents f")
    yield "truncated.kraddon", plain[:-30]
    yield "two-end-records.kraddon", plain + plain[plain.rindex(b"PK\5\6"):]
    yield "relationships-in-utf-16.kraddon", packed([
        bare()[0], ("_rels/.rels", bare()[1][1].replace("UTF-8", "UTF-16").encode("utf-16"))])
    yield "empty.kraddon", packed([])
    yield "no-zip", b"%PDF-1.4"
