# SPDX-License-Identifier: MIT
"""Changes of single items: of their headers, names, extra fields and data. Each is a function of
the archive and a source of random numbers; it returns what it did, as text."""

import struct
import zlib

import names
from container import (CENTRAL, DEFLATED, DESCRIPTOR, DESCRIPTOR_MARK, END, FULL16, FULL32, LOCAL,
                       STORED, UTF8, clip, content_of, field, item)
from randomness import ATTRIBUTES, CONTENT, MODES, SYSTEMS, number_near, one_or_both, some, where

# --- Fields of the headers

def change_number(archive, pick):
    local, central = some(archive, pick)
    records = one_or_both(local, central, pick)
    name = pick.choice(("need", "method", "crc", "size", "packed_size", "time", "date"))
    value = number_near(getattr(records[0], name) or len(local.data), pick)
    for record in records:
        setattr(record, name, value & FULL16 if name in ("time", "date") else value)
    return "%s of %s of %r is %d" % (name, where(records), central.name, value)


def change_central_number(archive, pick):
    _, central = some(archive, pick)
    name = pick.choice(("made_by", "disk", "internal", "offset", "name_length", "extra_length",
                        "comment_length"))
    present = {"name_length": len(central.name), "extra_length": len(central.extra),
               "comment_length": len(central.comment), "offset": 0}
    value = number_near(present.get(name, getattr(central, name) or 0), pick)
    setattr(central, name, value)
    return "%s of %r is %d" % (name, central.name, value)


def change_local_length(archive, pick):
    local, central = some(archive, pick)
    name = pick.choice(("name", "extra"))
    value = number_near(len(getattr(local, name)), pick)
    setattr(local, name + "_length", value)
    return "local %s_length of %r is %d" % (name, central.name, value)


def flip_flags(archive, pick):
    local, central = some(archive, pick)
    records = one_or_both(local, central, pick)
    bits = 1 << pick.choice((0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 11, 11, 12, 13, 14, 15))
    for record in records:
        record.flags ^= bits
    return "flags %#x of %s of %r" % (bits, where(records), central.name)


def change_attributes(archive, pick):
    _, central = some(archive, pick)
    central.made_by = pick.choice(SYSTEMS) << 8 | pick.choice((0, 10, 20, 63))
    central.external = pick.choice(MODES) << 16 | pick.choice(ATTRIBUTES)
    return "made by %#x with attributes %#x: %r" % (central.made_by, central.external,
                                                     central.name)


def change_mark(archive, pick):
    records = one_or_both(*some(archive, pick), pick)
    mark = pick.choice((LOCAL, CENTRAL, END, DESCRIPTOR_MARK, b"PK00", b"\0\0\0\0", b"PK\3\5"))
    for record in records:
        record.mark = mark
    return "mark of %s is %r" % (where(records), mark)


# --- Names

def change_name(archive, pick):
    local, central = some(archive, pick)
    records = one_or_both(local, central, pick)
    if pick.random() < 0.6:
        records = (local, central)
    others = [other.name for other in archive.centrals()]
    before, name = central.name, names.changed(central.name, others, pick)
    for record in records:
        record.name = name
    if pick.random() < 0.2:
        for record in records:
            record.flags |= UTF8
    return "%s name %r instead of %r" % (where(records), name, before)


def swap_names(archive, pick):
    (local, central), (other_local, other) = some(archive, pick), some(archive, pick)
    kind = pick.randrange(3)
    if kind != 1:
        local.name, other_local.name = other_local.name, local.name
    if kind != 0:
        central.name, other.name = other.name, central.name
    return "names of %r and %r exchanged (%d)" % (central.name, other.name, kind)


# --- Extra fields

def unicode_field(number, name, new_name, pick):
    crc = zlib.crc32(pick.choice((name, name, name, new_name)))
    return field(number, bytes([pick.choice((1, 1, 1, 0, 2))]) + struct.pack("<L", crc) + new_name)


def some_field(archive, local, central, pick):
    kind = pick.randrange(16)
    name = central.name
    others = [other.name for other in archive.centrals()]
    mode = pick.choice(MODES)
    sizes = [struct.pack("<Q", clip(number, 64)) for number in
             (local.size, len(local.data), 0, FULL32, 1 << 40, len(local.data) + 1)]
    if kind < 4:
        return unicode_field(0x7075, name, names.changed(name, others, pick), pick)
    if kind == 4:
        return unicode_field(0x6375, central.comment, b"a comment", pick)
    if kind == 5:
        return field(0x6C78, struct.pack("<BHHL", 7, mode, 0, 0)[:pick.choice((3, 5, 9))])
    if kind == 6:
        return field(0x6C78, struct.pack("<B3HL", 7, 3 << 8 | 20, 0, mode, mode << 16))
    if kind == 7:
        unix = struct.pack("<HLHH", mode, 4, 0, 0) + b"link"
        return field(0x756E, struct.pack("<L", zlib.crc32(unix)) + unix)
    if kind == 8:
        return field(0x000D, struct.pack("<LLHH", 0, 0, 0, 0) + pick.choice((b"", b"target")))
    if kind < 12:
        return field(1, b"".join(pick.choices(sizes, k=pick.randrange(5))))
    if kind == 12:
        return field(0x9901, struct.pack("<H2sBH", 2, b"AE", 3, pick.choice((0, 8))))
    if kind == 13:
        return pick.choice((b"\0", b"\0\0\0", b"\0" * 4, b"\1\0\x20\0", struct.pack("<2H", 1, 0)))
    number = pick.choice((0x5455, 0x000A, 0x7875, 0x7855, 0x5855, 0xCAFE, 0xD935, 0x0017, 0x0008,
                          0x0009, 0x0065, 0x4341, 0x2605, 0x334D, 0x07C8, 0x6542, 0x4453, 0xA220))
    return field(number, pick.randbytes(pick.choice((0, 1, 4, 5, 8, 11, 13, 32))))


def add_field(archive, pick):
    local, central = some(archive, pick)
    records = one_or_both(local, central, pick)
    new = some_field(archive, local, central, pick)
    for record in records:
        record.extra = pick.choice((record.extra + new, new + record.extra, new))
    return "extra field %s in %s of %r" % (new[:40].hex(), where(records), central.name)


def hidden_in_a_field(archive, pick):
    local, central = some(archive, pick)
    records = one_or_both(local, central, pick)
    new = field(pick.choice((0xCAFE, 0xA220, 0x4453)), item(b"files/hidden.m", CONTENT).pack())
    for record in records:
        record.extra += new
    return "an item in an extra field in %s of %r" % (where(records), central.name)


def need_zip64(archive, pick):
    """The sizes, or some of them, in a ZIP64 field: right, but unusual."""
    local, central = some(archive, pick)
    records = one_or_both(local, central, pick)
    wanted = [name for name in ("size", "packed_size") if pick.random() < 0.7]
    for record in records:
        values = b""
        for name in wanted:
            value = getattr(record, name)
            values += struct.pack("<Q", len(local.data) if value is None else value)
            setattr(record, name, FULL32)
        if pick.random() < 0.8:
            record.extra = field(1, values) + record.extra
    return "%s of %s of %r in a ZIP64 field" % (wanted, where(records), central.name)


# --- Data, methods and descriptors

def change_packing(archive, pick):
    local, central = some(archive, pick)
    try:
        content = content_of(local)
    except zlib.error:
        return "no other packing"
    packer = zlib.compressobj(pick.choice((0, 1, 9)), zlib.DEFLATED, -15)
    data = packer.compress(content)
    if pick.random() < 0.5:
        data += packer.flush(zlib.Z_FULL_FLUSH)
    local.data = data + packer.flush() + pick.choice((b"", b"", b"\0", b"more", CONTENT))
    for record in (local, central):
        record.method, record.packed_size = DEFLATED, len(local.data)
    return "other packing of %r" % central.name


def change_content(archive, pick):
    local, central = some(archive, pick)
    content = pick.choice((b"", CONTENT, bytes(70000), item(b"files/hidden.m", CONTENT).pack(),
                           b"PK\3\4", DESCRIPTOR_MARK + bytes(12), END + bytes(18)))
    new = item(central.name, content, pick.choice((STORED, DEFLATED)))
    local.data, local.packed_size = new.data, None
    central.packed_size = len(new.data)
    for record in (local, central):
        record.method, record.crc, record.size = new.method, new.crc, new.size
    return "content of %r" % central.name


def descriptor_of(local, pick):
    packed, crc = len(local.data), clip(local.crc, 32)
    size = clip(local.size, 32)
    kind = pick.randrange(7)
    if kind == 0:
        return struct.pack("<3L", crc, packed, size)
    if kind == 1:
        return DESCRIPTOR_MARK + struct.pack("<L2Q", crc, packed, clip(local.size, 64))
    if kind == 2:
        return struct.pack("<L2Q", crc, packed, clip(local.size, 64))
    if kind == 3:
        return DESCRIPTOR_MARK + struct.pack("<3L", crc ^ 1, packed, size)
    if kind == 4:
        return DESCRIPTOR_MARK + struct.pack("<3L", crc, packed + 1, size)
    return DESCRIPTOR_MARK + struct.pack("<3L", crc, packed, size)


def add_descriptor(archive, pick):
    local, central = some(archive, pick)
    local.descriptor = pick.choice((descriptor_of(local, pick), descriptor_of(local, pick), b""))
    records = one_or_both(local, central, pick)
    if pick.random() < 0.6:
        records = (local, central)
    for record in records:
        record.flags |= DESCRIPTOR
    kind = pick.randrange(5)
    if kind < 3:
        local.crc = local.size = local.packed_size = 0
    elif kind == 3:
        local.size = local.packed_size = FULL32
    if pick.random() < 0.3:
        local.extra += field(1, bytes(16))
    return "descriptor of %r, by %s (%d)" % (central.name, where(records), kind)


def hidden_behind_a_descriptor(archive, pick):
    """A stored item whose data hold the end of its data, as a stream shows them, and an item."""
    local, central = some(archive, pick)
    begin = CONTENT[:pick.randrange(len(CONTENT))]
    content = begin + DESCRIPTOR_MARK + struct.pack(
        "<3L", zlib.crc32(begin), len(begin), len(begin)) + item(b"files/hidden.m", CONTENT).pack()
    whole = item(central.name, content, pick.choice((STORED, STORED, DEFLATED)))
    local.data, local.packed_size = whole.data, 0
    central.packed_size, local.crc, local.size = len(whole.data), 0, 0
    central.crc, central.size = whole.crc, whole.size
    for record in (local, central):
        record.method = whole.method
        record.flags |= DESCRIPTOR
    local.descriptor = DESCRIPTOR_MARK + struct.pack("<3L", whole.crc, len(whole.data), whole.size)
    return "an item in the data of %r, behind a descriptor" % central.name
