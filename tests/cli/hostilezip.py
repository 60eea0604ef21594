# SPDX-License-Identifier: MIT
"""Makes ZIP files entry by entry, with anything in them that a hostile hand could put there."""

import dataclasses
import struct
import typing
import zlib

TYPES = ('<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
         '<Default Extension="rels" '
         'ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
         '<Default Extension="xml" ContentType="application/xml"/>'
         '<Default Extension="m" ContentType="text/plain"/>{}</Types>')
RELATIONSHIPS = ('<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/'
                 'relationships">{}</Relationships>')
SCHEMA = "http://schemas.pellandry.example/korvan/addon/2014"
STORED, DEFLATED = 0, 8


def raw_deflate(data):
    packer = zlib.compressobj(9, zlib.DEFLATED, -15)
    return packer.compress(data) + packer.flush()


@dataclasses.dataclass
class Entry:
    """What is not given is as it should be."""
    name: bytes
    content: bytes = b""
    method: int = STORED
    flags: int = 0
    attributes: int = 0o100644 << 16
    packed: typing.Optional[bytes] = None
    crc: typing.Optional[int] = None
    size: typing.Optional[int] = None
    packed_size: typing.Optional[int] = None
    local_name: typing.Optional[bytes] = None
    local_method: typing.Optional[int] = None
    local_size: typing.Optional[int] = None
    local_crc: typing.Optional[int] = None
    offset: typing.Optional[int] = None
    extra: bytes = b""
    local: bool = True
    before: bytes = b""
    comment: bytes = b""
    descriptor: bytes = b""
    made_by: int = 3 << 8 | 20
    version: int = 20
    local_version: int = 20
    local_flags: typing.Optional[int] = None
    local_packed_size: typing.Optional[int] = None
    local_extra: bytes = b""

    def data(self):
        if self.packed is not None:
            return self.packed
        return raw_deflate(self.content) if self.method == DEFLATED else self.content

    def sizes(self, data, size):
        return (self.packed_size if self.packed_size is not None else len(data),
                size if size is not None else len(self.content))

    def local_bytes(self, data):
        if not self.local:
            return b""
        name = self.name if self.local_name is None else self.local_name
        crc = zlib.crc32(self.content) if self.crc is None else self.crc
        packed_size, size = self.sizes(data, self.size)
        return self.before + struct.pack(
            "<4s5H3L2H", b"PK\x03\x04", self.local_version,
            self.flags if self.local_flags is None else self.local_flags,
            self.method if self.local_method is None else self.local_method, 0, 33,
            crc if self.local_crc is None else self.local_crc,
            packed_size if self.local_packed_size is None else self.local_packed_size,
            size if self.local_size is None else self.local_size, len(name),
            len(self.local_extra)) + name + self.local_extra + data + self.descriptor

    def central_bytes(self, data, offset):
        crc = zlib.crc32(self.content) if self.crc is None else self.crc
        packed_size, size = self.sizes(data, self.size)
        return struct.pack(
            "<4s6H3L5H2L", b"PK\x01\x02", self.made_by, self.version, self.flags, self.method, 0, 33,
            crc, packed_size, size, len(self.name), len(self.extra), len(self.comment), 0, 0,
            self.attributes, offset + len(self.before) if self.offset is None else self.offset
        ) + self.name + self.extra + self.comment


def extra_field(number, data):
    return struct.pack("<2H", number, len(data)) + data


def unicode_path(stored, path):
    return extra_field(0x7075, b"\1" + struct.pack("<L", zlib.crc32(stored)) + path)


def build(entries, count=None, directory_size=None, directory_offset=None, prefix=b"", gap=b"",
          comment=b"", suffix=b""):
    """The bytes of a ZIP file. `gap` lies between the directory and the end record."""
    chunks, directory, at = [prefix], [], len(prefix)
    for entry in entries:
        data = entry.data()
        local = entry.local_bytes(data)
        directory.append(entry.central_bytes(data, at))
        chunks.append(local)
        at += len(local)
    central = b"".join(directory)
    count = min(len(entries), 0xFFFF) if count is None else count
    end = struct.pack("<4s4H2LH", b"PK\x05\x06", 0, 0, count, count,
                      len(central) if directory_size is None else directory_size,
                      at if directory_offset is None else directory_offset, len(comment))
    return b"".join(chunks) + central + gap + end + comment + suffix


def zip64_end(count, size, offset, at):
    """End records for a directory that says of itself what it likes; `at` is where they begin."""
    return (struct.pack("<4sQ2H2L4Q", b"PK\x06\x06", 44, 45, 45, 0, 0, count, count, size, offset) +
            struct.pack("<4sLQL", b"PK\x06\x07", 0, at, 1) +
            struct.pack("<4s4H2LH", b"PK\x05\x06", 0, 0, 0xFFFF, 0xFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0))


def addon(entries=(), types="", relationships="", true_paths=None, **replaced):
    """The entries of a package: content types, relationships, a table of true paths, and more.
    `replaced` holds documents by "types", "relationships", "core" and "table"."""
    extra_types, extra_relationships, documents = types, relationships, []
    if true_paths is not None or "table" in replaced:
        rows = "".join(f'<file part="{part}" path="{path}"/>' for part, path in true_paths or ())
        table = (f'<fileTree xmlns="{SCHEMA}/fileTree">{rows}</fileTree>')
        documents.append(Entry(b"metadata/fileTree.xml",
                               replaced.get("table", table.encode()), DEFLATED))
        extra_relationships += (f'<Relationship Id="t" Type="{SCHEMA}/relationships/fileTree" '
                                'Target="/metadata/fileTree.xml"/>')
        extra_types += ('<Override PartName="/metadata/fileTree.xml" ContentType="application/'
                        'vnd.pellandry.korvan.addon.fileTree+xml"/>')
    if "core" in replaced:
        documents.append(Entry(b"core.xml", replaced["core"], DEFLATED))
        extra_relationships += (
            '<Relationship Id="c" Target="/core.xml" Type="http://schemas.openxmlformats.org/'
            'package/2006/relationships/metadata/core-properties"/>')
        extra_types += ('<Override PartName="/core.xml" ContentType="application/'
                        'vnd.openxmlformats-package.core-properties+xml"/>')
    return [Entry(b"[Content_Types].xml",
                  replaced.get("types", TYPES.format(extra_types).encode()), DEFLATED),
            Entry(b"_rels/.rels", replaced.get(
                "relationships", RELATIONSHIPS.format(extra_relationships).encode()), DEFLATED),
            *documents, *entries]
