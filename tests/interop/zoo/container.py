# SPDX-License-Identifier: MIT
"""A ZIP file as its records, each of which can be changed by itself. Values that are None are
computed when the file is written."""

import dataclasses
import struct
import typing
import zlib

STORED, DEFLATED = 0, 8
UTF8, DESCRIPTOR = 1 << 11, 1 << 3
FULL16, FULL32 = 0xFFFF, 0xFFFFFFFF
LOCAL, CENTRAL, END = b"PK\3\4", b"PK\1\2", b"PK\5\6"
END64, LOCATOR, DESCRIPTOR_MARK = b"PK\6\6", b"PK\6\7", b"PK\7\x08"


def deflated(content):
    packer = zlib.compressobj(9, zlib.DEFLATED, -15)
    return packer.compress(content) + packer.flush()


def field(number, data):
    """An extra field."""
    return struct.pack("<2H", number, len(data)) + data


def clip(value, bits):
    return value & ((1 << bits) - 1)


@dataclasses.dataclass(eq=False)
class Local:
    """A local header, its data, and what follows them."""
    name: bytes
    data: bytes
    method: int = STORED
    crc: int = 0
    size: int = 0
    packed_size: typing.Optional[int] = None
    need: int = 20
    flags: int = 0
    time: int = 0
    date: int = 33
    extra: bytes = b""
    name_length: typing.Optional[int] = None
    extra_length: typing.Optional[int] = None
    descriptor: bytes = b""
    mark: bytes = LOCAL

    def pack(self):
        def given(value, otherwise):
            return otherwise if value is None else value
        return struct.pack(
            "<4s5H3L2H", self.mark, clip(self.need, 16), clip(self.flags, 16),
            clip(self.method, 16), self.time, self.date, clip(self.crc, 32),
            clip(given(self.packed_size, len(self.data)), 32), clip(self.size, 32),
            clip(given(self.name_length, len(self.name)), 16),
            clip(given(self.extra_length, len(self.extra)), 16)
        ) + self.name + self.extra + self.data + self.descriptor


@dataclasses.dataclass(eq=False)
class Central:
    """An entry of the directory."""
    name: bytes
    local: typing.Optional[Local]  # where it leads
    method: int = STORED
    crc: int = 0
    size: int = 0
    packed_size: int = 0
    made_by: int = 3 << 8 | 20
    need: int = 20
    flags: int = 0
    time: int = 0
    date: int = 33
    disk: int = 0
    internal: int = 0
    external: int = 0o100644 << 16
    extra: bytes = b""
    comment: bytes = b""
    offset: typing.Optional[int] = None
    name_length: typing.Optional[int] = None
    extra_length: typing.Optional[int] = None
    comment_length: typing.Optional[int] = None
    mark: bytes = CENTRAL

    def pack(self, offset):
        def length(value, text):
            return clip(len(text) if value is None else value, 16)
        return struct.pack(
            "<4s6H3L5H2L", self.mark, clip(self.made_by, 16), clip(self.need, 16),
            clip(self.flags, 16), clip(self.method, 16), self.time, self.date,
            clip(self.crc, 32), clip(self.packed_size, 32), clip(self.size, 32),
            length(self.name_length, self.name), length(self.extra_length, self.extra),
            length(self.comment_length, self.comment), clip(self.disk, 16),
            clip(self.internal, 16), clip(self.external, 32),
            clip(offset if self.offset is None else self.offset, 32)
        ) + self.name + self.extra + self.comment


@dataclasses.dataclass(eq=False)
class End:
    """The end record, with or without those of ZIP64 before it. `shift` is added to a computed
    value."""
    disk: int = 0
    first_disk: int = 0
    here: typing.Optional[int] = None
    total: typing.Optional[int] = None
    size: typing.Optional[int] = None
    offset: typing.Optional[int] = None
    comment: bytes = b""
    comment_length: typing.Optional[int] = None
    zip64: typing.Optional[dict] = None  # its values by name, or none of them
    before: bytes = b""  # between the directory and the end records
    between: bytes = b""  # between the ZIP64 records and the end record

    def pack64(self, count, size, offset, at):
        values = {"length": 44, "made_by": 45, "need": 45, "disk": 0, "first_disk": 0,
                  "here": count, "total": count, "size": size, "offset": offset, "more": b"",
                  "locator_disk": 0, "locator_offset": at, "disks": 1, **self.zip64}
        return struct.pack(
            "<4sQ2H2L4Q", END64, clip(values["length"] + len(values["more"]), 64),
            clip(values["made_by"], 16), clip(values["need"], 16), clip(values["disk"], 32),
            clip(values["first_disk"], 32), clip(values["here"], 64), clip(values["total"], 64),
            clip(values["size"], 64), clip(values["offset"], 64)
        ) + values["more"] + struct.pack(
            "<4sLQL", LOCATOR, clip(values["locator_disk"], 32),
            clip(values["locator_offset"], 64), clip(values["disks"], 32))

    def pack(self, count, size, offset):
        def given(value, otherwise, bits):
            return clip(otherwise if value is None else value, bits)
        at = offset + size + len(self.before)
        records = b""
        if self.zip64 is not None:
            records = self.pack64(count, size, offset, at) + self.between
        return self.before + records + struct.pack(
            "<4s4H2LH", END, clip(self.disk, 16), clip(self.first_disk, 16),
            given(self.here, count, 16), given(self.total, count, 16), given(self.size, size, 32),
            given(self.offset, offset, 32), given(self.comment_length, len(self.comment), 16)
        ) + self.comment


@dataclasses.dataclass(eq=False)
class Archive:
    """`body` and `directory` hold records, or bytes that are none."""
    body: list
    directory: list
    end: End
    prefix: bytes = b""
    suffix: bytes = b""

    def pack(self):
        chunks, offsets, at = [self.prefix], {}, len(self.prefix)
        for record in self.body:
            if isinstance(record, Local):
                offsets.setdefault(id(record), at)
            chunk = record if isinstance(record, bytes) else record.pack()
            chunks.append(chunk)
            at += len(chunk)
        directory = [record if isinstance(record, bytes) else
                     record.pack(offsets.get(id(record.local), 0)) for record in self.directory]
        size = sum(map(len, directory))
        count = sum(1 for record in self.directory if isinstance(record, Central))
        return b"".join([*chunks, *directory, self.end.pack(count, size, at), self.suffix])

    def locals(self):
        return [record for record in self.body if isinstance(record, Local)]

    def centrals(self):
        return [record for record in self.directory if isinstance(record, Central)]

    def named(self, name):
        """The records of the item with that name."""
        central = next(record for record in self.centrals() if record.name == name)
        return central.local, central

    def add(self, name, content=b"", method=STORED, **values):
        """Adds an item; `values` are for both headers."""
        local = item(name, content, method, **values)
        central = described(local)
        self.body.append(local)
        self.directory.append(central)
        return local, central


def item(name, content=b"", method=STORED, **values):
    data = deflated(content) if method == DEFLATED else content
    return Local(name, data, method, zlib.crc32(content), len(content), **values)


def described(local, **values):
    """The entry of the directory for a local record."""
    return Central(local.name, local, local.method, local.crc, local.size,
                   len(local.data) if local.packed_size is None else local.packed_size,
                   **{"need": local.need, "flags": local.flags, "extra": local.extra, **values})


def content_of(local):
    """What is packed in a record, which must be faultless."""
    return zlib.decompress(local.data, -15) if local.method == DEFLATED else local.data


def parse(data):
    """The records of a faultless file."""
    at = data.rindex(END)
    here, total, size, start, length = struct.unpack_from("<2H2LH", data, at + 8)
    end = End(comment=data[at + 22:at + 22 + length])
    archive = Archive([], [], end)
    if data[at - 20:at - 16] == LOCATOR:
        wide, = struct.unpack_from("<Q", data, at - 12)
        end.zip64, end.here, end.total, end.size, end.offset = {}, here, total, size, start
        end.zip64["made_by"], end.zip64["need"] = struct.unpack_from("<2H", data, wide + 12)
        total, _, start = struct.unpack_from("<3Q", data, wide + 32)
    position, places = start, []
    for _ in range(total):
        central, offset, position = _parse_entry(data, position)
        archive.directory.append(central)
        places.append((offset, central))
    places.sort(key=lambda place: place[0])
    for (offset, central), next_offset in zip(places, [*(at for at, _ in places[1:]), start]):
        central.local = _parse_record(data, offset, next_offset, central)
        archive.body.append(central.local)
    return archive


def wide_values(extra, *values):
    """The values, from the ZIP64 field where they are full."""
    while len(extra) >= 4:
        number, length = struct.unpack_from("<2H", extra)
        if number == 1:
            places = iter(struct.iter_unpack("<Q", extra[4:4 + length // 8 * 8]))
            return [next(places)[0] if value == FULL32 else value for value in values]
        extra = extra[4 + length:]
    return list(values)


def _parse_entry(data, position):
    """An entry of the directory, where it leads, and where the next one begins."""
    values = struct.unpack_from("<4s6H3L5H2L", data, position)
    (_, made_by, need, flags, method, time, date, crc, packed_size, size, names, extras, comments,
     disk, internal, external, offset) = values
    name_at = position + 46
    extra_at, end = name_at + names, name_at + names + extras + comments
    central = Central(data[name_at:extra_at], None, method, crc, size, packed_size, made_by, need,
                      flags, time, date, disk, internal, external,
                      data[extra_at:extra_at + extras], data[extra_at + extras:end])
    if offset == FULL32:
        central.offset = offset
    return central, wide_values(central.extra, size, packed_size, offset)[2], end


def _parse_record(data, at, end, central):
    (_, need, flags, method, time, date, crc, packed_size, size, names,
     extras) = struct.unpack_from("<4s5H3L2H", data, at)
    name_at = at + 30
    data_at = name_at + names + extras
    data_end = data_at + wide_values(central.extra, central.size, central.packed_size)[1]
    local = Local(data[name_at:name_at + names], data[data_at:data_end], method, crc, size,
                  packed_size, need, flags, time, date, data[name_at + names:data_at],
                  descriptor=data[data_end:end])
    if packed_size == len(local.data):
        local.packed_size = None
    return local
