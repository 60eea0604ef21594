# SPDX-License-Identifier: MIT
"""Constructions with the records of a package: hidden ones, descriptors, ZIP64, comments and end
records."""

import copy
import struct
import zlib

from constructions import FILE, HIDDEN, OTHER, WHERE, construction, headers
from container import (CENTRAL, DEFLATED, DESCRIPTOR, DESCRIPTOR_MARK, END, FULL16, FULL32, LOCAL,
                       STORED, Archive, End, content_of, described, field, item)


# --- 6. Records that the directory does not have

HIDDEN_ITEMS = {"new": item(b"files/hidden.m", HIDDEN), "same name": item(FILE, HIDDEN),
                "deflated": item(b"files/hidden.m", HIDDEN, DEFLATED),
                "folder": item(b"files/a.m/")}
PLACES = ("first", "middle", "last", "behind the directory", "behind the end", "prefix")


def put(archive, place, data):
    if place == "prefix":
        archive.prefix += data
    elif place == "behind the directory":
        archive.end.before += data
    elif place == "behind the end":
        archive.suffix += data
    else:
        at = {"first": 0, "middle": len(archive.body) // 2, "last": len(archive.body)}[place]
        archive.body.insert(at, data)


@construction(*((kind, place) for kind in HIDDEN_ITEMS for place in PLACES))
def record_without_an_entry(archive, kind, place):
    put(archive, place, HIDDEN_ITEMS[kind].pack())


@construction(*((data, place) for place in PLACES for data in (
    b"\0", b"\n", bytes(4), bytes(64), b"#!/bin/sh\n", LOCAL, CENTRAL, DESCRIPTOR_MARK + bytes(12),
    END, b"PK00", b"PK\6\x08\0\0\0\0", b"PK\5\5\0\0", b"MZ" + bytes(62))))
def bytes_of_no_item(archive, data, place):
    put(archive, place, data)


@construction(b"\0", b"junk", described(item(b"files/hidden.m", HIDDEN)).pack(0))
def bytes_within_the_directory(archive, data):
    archive.directory.insert(3, data)


@construction(FILE, b"metadata/license.xml")
def no_entry_for_a_record(archive, name):
    archive.add(b"metadata/license.xml", HIDDEN)
    archive.directory.remove(archive.named(name)[1])


@construction(*((where, number) for where in WHERE for number in (0xCAFE, 0xA220, 0x4453, 0)))
def item_within_an_extra_field(archive, where, number):
    for header in headers(archive, where):
        header.extra += field(number, HIDDEN_ITEMS["new"].pack())


# --- 7. Data descriptors

def described_data(local, marked=True, wide=False):
    return (DESCRIPTOR_MARK if marked else b"") + struct.pack(
        "<L2Q" if wide else "<3L", local.crc, len(local.data), local.size)


@construction(*((where, name, zeros, kind) for where in WHERE for name in (FILE, OTHER)
                for zeros in (True, False) for kind in ("marked", "bare", "wide", "none")))
def descriptor(archive, where, name, zeros, kind):
    local, central = archive.named(name)
    local.descriptor = b"" if kind == "none" else described_data(
        local, kind != "bare", kind == "wide")
    for header in headers(archive, where, name):
        header.flags |= DESCRIPTOR
    if zeros:
        local.crc = local.size = local.packed_size = 0
    assert central.size


@construction(*((name, sizes, kind, method) for name, method in (
    (b"files/lib/", STORED), (b"x/", STORED), (b"files/empty.m", STORED),
    (b"files/empty.m", DEFLATED)) for sizes in ("zero", "field of zeros", "full")
                for kind in ("marked", "bare", "wide", "wide and bare")))
def descriptor_of_an_empty_item(archive, name, sizes, kind, method):
    local, central = archive.add(name, b"", method)
    archive.body.insert(0, archive.body.pop())
    if name.endswith(b"/"):
        central.external = 0o040755 << 16 | 0x10
    local.descriptor = described_data(local, "bare" not in kind, "wide" in kind)
    for header in (local, central):
        header.flags |= DESCRIPTOR
    if sizes != "zero":
        local.extra += field(1, bytes(16))
    if sizes == "full":
        local.size = local.packed_size = FULL32


@construction(*((name, wide, extra, crc) for name in (FILE, OTHER) for wide in (True, False)
                for extra in (True, False) for crc in (True, False)))
def descriptor_with_full_sizes(archive, name, wide, extra, crc):
    local, central = archive.named(name)
    local.descriptor = described_data(local, True, wide)
    for header in (local, central):
        header.flags |= DESCRIPTOR
    local.size = local.packed_size = FULL32
    if not crc:
        local.crc = 0
    if extra:
        local.extra += field(1, bytes(16))


@construction(*((crc, packed, size) for crc in (0, 1) for packed in (0, 1) for size in (0, 1)
                if crc or packed or size))
def descriptor_with_other_values(archive, crc, packed, size):
    local, central = archive.named(OTHER)
    local.descriptor = DESCRIPTOR_MARK + struct.pack(
        "<3L", local.crc ^ crc, len(local.data) + packed, local.size + size)
    for header in (local, central):
        header.flags |= DESCRIPTOR
    local.crc = local.size = local.packed_size = 0


@construction(*((marked, method) for marked in (True, False) for method in (STORED, DEFLATED)))
def item_behind_a_descriptor_in_the_data(archive, marked, method):
    begin = b"function a\n"
    content = begin + (DESCRIPTOR_MARK if marked else b"") + struct.pack(
        "<3L", zlib.crc32(begin), len(begin), len(begin)) + HIDDEN_ITEMS["new"].pack()
    local, central = archive.add(b"files/outer.m", content, method, flags=DESCRIPTOR)
    local.descriptor = described_data(local, marked)
    local.crc = local.size = local.packed_size = 0
    assert central.size


# --- 8. Sizes and ZIP64 fields

@construction(*((where, sizes) for where in WHERE for sizes in (
    (1,), (0,), (0, 0), (FULL32, FULL32), (1 << 40, 1 << 40), ())))
def zip64_field_that_is_not_needed(archive, where, sizes):
    for header in headers(archive, where):
        header.extra += field(1, b"".join(struct.pack("<Q", size) for size in sizes))


@construction(*((where, both) for where in WHERE for both in (True, False)))
def sizes_in_a_zip64_field(archive, where, both):
    local, _ = archive.named(FILE)
    size, packed_size = local.size, len(local.data)
    for header in headers(archive, where):
        header.extra += field(1, struct.pack("<2Q", size, packed_size)[:16 if both else 8])
        header.size = FULL32
        if both:
            header.packed_size = FULL32


@construction(*WHERE)
def two_zip64_fields(archive, where):
    local, _ = archive.named(FILE)
    size, packed_size = local.size, len(local.data)
    for header in headers(archive, where):
        header.extra += (field(1, struct.pack("<2Q", size, packed_size)) +
                         field(1, struct.pack("<2Q", size - 1, packed_size - 1)))
        header.size = header.packed_size = FULL32


@construction(*((where, extra) for where in WHERE for extra in (
    b"\0", b"\0\0\0", b"\0\0\0\0", b"\1\0\x20\0", struct.pack("<2H", 0xCAFE, 100), b"\xff" * 5)))
def malformed_extra_field(archive, where, extra):
    for header in headers(archive, where):
        header.extra += extra


@construction(*((where, value) for where in ("disk", "internal") for value in (1, 2, FULL16)))
def odd_values_of_the_directory(archive, where, value):
    setattr(archive.named(FILE)[1], where, value)


# --- 9. Comments

def small_archive(*items, prefix=b""):
    archive = Archive([], [], End(), prefix)
    for name, content in items:
        archive.add(name, content)
    return archive.pack()


COMMENTS = {
    "text": b"a comment", "empty archive": END + bytes(18),
    "archive": small_archive((b"files/a.m", HIDDEN)),
    "end record that leads nowhere": END + struct.pack("<4H2LH", 0, 0, 5, 5, 230, 99999, 0),
    "end record that ends before the end": END + bytes(18) + b"text",
    "end record that ends behind the end": END + bytes(16) + b"\xff\0",
    "end record that is cut": END + bytes(10), "end record's mark": END,
    "ZIP64 locator": b"PK\6\7" + bytes(16), "ZIP64 records": b"PK\6\6" + bytes(52) + b"PK\6\7" +
    bytes(16) + END + bytes(18), "entry": described(item(b"files/h.m", HIDDEN)).pack(0),
    "record": item(b"files/hidden.m", HIDDEN).pack(), "no text": b"caf\xe9", "long": b"x" * 65535,
}


@construction(*COMMENTS)
def comment_of_the_archive(archive, kind):
    archive.end.comment = COMMENTS[kind]


@construction(*((kind, last) for kind in COMMENTS for last in (True, False)))
def comment_of_an_entry(archive, kind, last):
    archive.directory[-1 if last else 0].comment = COMMENTS[kind][:65000]


@construction(*WHERE)
def comment_field(archive, where):
    for header in headers(archive, where):
        header.extra += field(0x6375, b"\1" + struct.pack("<L", 0) + b"another comment")


# --- 10. End records

@construction(*((name, shift) for name in ("here", "total", "size", "offset") for shift in (-1, 1)))
def end_record(archive, name, shift):
    count, whole = len(archive.directory), archive.pack()
    _, total, size, offset = struct.unpack_from("<2H2L", whole, whole.rindex(END) + 8)
    values = {"here": count, "total": total, "size": size, "offset": offset}
    setattr(archive.end, name, values[name] + shift)


@construction(("here",), ("total",), ("here", "total"))
def fewer_entries_in_the_end_record(archive, *which):
    for name in which:
        setattr(archive.end, name, 3)


@construction("disk", "first_disk")
def end_record_of_another_disk(archive, name):
    setattr(archive.end, name, 1)


@construction("before", "behind", "both orders")
def two_end_records(archive, place):
    whole = archive.pack()
    end = whole[whole.rindex(END):]
    if place == "before":
        archive.end.before = end
    elif place == "behind":
        archive.suffix = end
    else:
        archive.suffix = small_archive((b"files/hidden.m", HIDDEN))[-22:]


@construction("prefix", "suffix", "before the end")
def second_archive(archive, place):
    small = small_archive((b"files/hidden.m", HIDDEN))
    if place == "prefix":
        archive.prefix = small
    elif place == "suffix":
        archive.suffix = small
    else:
        archive.end.before = small


# libzip takes the end record whose directory agrees best with the local headers.
@construction(*((kind, difference) for kind in ("empty", "its own offsets", "offsets of the file")
                for difference in ("none", "time", "date", "need", "one size of two",
                                   "one size too many", "size before a descriptor")))
def archive_in_stored_data(archive, kind, difference):
    name, data = b"files/data.m", small_archive((b"files/hidden.m", HIDDEN))
    if kind == "empty":
        data = END + bytes(18)
    elif kind == "offsets of the file":
        start = sum(len(record.pack()) for record in archive.body) + 30 + len(name)
        data = small_archive((b"files/hidden.m", HIDDEN), prefix=bytes(start))[start:]
    archive.add(name, data)
    header = archive.named(FILE)[0]
    if difference == "one size of two":
        header.packed_size = FULL32
        header.extra += field(1, struct.pack("<Q", len(header.data)))
    elif difference == "one size too many":
        header.extra += field(1, struct.pack("<2Q", header.size, len(header.data)))
        header.size = FULL32
    elif difference == "size before a descriptor":
        header.descriptor = described_data(header)
        header.crc = header.packed_size = 0
        for one in headers(archive, "both"):
            one.flags |= DESCRIPTOR
    elif difference != "none":
        setattr(header, difference, getattr(header, difference) + 1)


@construction("hidden", "shorter")
def second_directory_before_the_true_one(archive, kind):
    if kind == "hidden":
        hidden = HIDDEN_ITEMS["new"]
        archive.body += [hidden, described(hidden).pack(0)]
    else:
        archive.body += [central.pack(0) for central in archive.centrals()[:2]]


# --- 11. ZIP64 end records

@construction(*((full, name, value) for full in (True, False) for name, value in (
    ("need", 45), ("disks", 0), ("disks", 2), ("disks", FULL32), ("locator_disk", 1),
    ("locator_offset", 0), ("total", 3), ("here", 3), ("size", 60), ("offset", 0), ("length", 43),
    ("length", 56), ("need", 255), ("disk", 1), ("more", b"more"),
    ("more", field(0xCAFE, HIDDEN)))))
def zip64_end_record(archive, full, name, value):
    archive.end.zip64 = {name: value}
    if full:
        archive.end.here = archive.end.total = FULL16
        archive.end.size = archive.end.offset = FULL32


@construction(("offset",), ("size",), ("here", "total"))
def zip64_end_record_for_some_values(archive, *which):
    archive.end.zip64 = {}
    for name in which:
        setattr(archive.end, name, FULL16 if name in ("here", "total") else FULL32)


@construction(b"\0", bytes(20), END + bytes(18), b"PK\6\7" + bytes(16))
def bytes_behind_the_zip64_locator(archive, data):
    archive.end.zip64, archive.end.between = {}, data


def with_two_zip64_records(archive, last_is_true):
    """ZIP64 records of which one reader sees the first and one the last."""
    other = copy.deepcopy(archive)
    local = other.named(FILE)[0]
    local.data, local.crc, local.size = HIDDEN, zlib.crc32(HIDDEN), len(HIDDEN)
    archive.end.zip64, archive.end.here, archive.end.total = {}, FULL16, FULL16
    archive.end.size = archive.end.offset = FULL32
    whole = archive.pack()
    records = whole[whole.rindex(b"PK\6\6"):-22]
    changed = bytearray(records)
    struct.pack_into("<2Q", changed, 24, 3, 3)
    archive.end.before = bytes(changed) if last_is_true else records


@construction(True, False)
def two_zip64_end_records(archive, last_is_true):
    with_two_zip64_records(archive, last_is_true)


# --- 12. The order of the records

@construction("body", "directory")
def reversed_order(archive, what):
    getattr(archive, what).reverse()


@construction()
def record_behind_the_directory(archive):
    """The directory leads to a record that lies behind it, as prefix of the comment."""
    local, central = archive.named(FILE)
    archive.body.remove(local)
    archive.end.before = local.pack()
    whole = archive.pack()
    central.offset = whole.rindex(local.pack())


@construction(-1, 1, 4, 30)
def entry_leads_beside_the_record(archive, shift):
    whole = archive.pack()
    local, central = archive.named(OTHER)
    central.offset = whole.index(local.pack()) + shift


@construction()
def record_within_another_s_data(archive):
    inner = HIDDEN_ITEMS["new"]
    local, _ = archive.add(b"files/outer.m", inner.pack() + b"end")
    central = described(inner)
    archive.directory.append(central)
    central.offset = archive.pack().index(local.data)


# --- 13. The pieces of an add-on

def _rewritten(archive, name, old, new):
    local, central = archive.named(name)
    changed = item(name, content_of(local).replace(old, new))
    local.data, local.packed_size, central.packed_size = changed.data, None, changed.size
    for header in (local, central):
        header.method, header.crc, header.size = changed.method, changed.crc, changed.size


@construction((b'<Default Extension="m" ContentType="text/plain"/>', b""),
              (b'Extension="m"', b'Extension="k"'), (b'Extension="m"', b'Extension="M"'))
def file_without_a_content_type(archive, old, new):
    _rewritten(archive, b"[Content_Types].xml", old, new)


@construction(b"[Content_Types].XML", b"[content_types].xml", b"/[Content_Types].xml",
              b"./[Content_Types].xml")
def content_types_under_another_name(archive, name):
    for header in archive.named(b"[Content_Types].xml"):
        header.name = name


@construction(b"files/a.m/[0].last.piece", b"files/a.m/[0].piece")
def file_in_pieces(archive, name):
    for header in archive.named(FILE):
        header.name = name
