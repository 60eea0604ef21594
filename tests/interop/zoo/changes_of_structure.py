# SPDX-License-Identifier: MIT
"""Changes of what holds the items together: the order of the records, the end records and the
documents of an add-on. Each is a function of the archive and a source of random numbers; it returns
what it did, as text."""

import struct
import zlib

import names
from container import (CENTRAL, DEFLATED, DESCRIPTOR_MARK, END, FULL16, FULL32, LOCAL, LOCATOR,
                       STORED, UTF8, Archive, End, Local, content_of, described, field, item)
from randomness import CONTENT, SYSTEMS, number_near, some, where

# --- Records that are added, removed and moved

def bytes_of_kind(pick):
    return pick.choice((
        b"\0", b"\n", b"\0" * 16, b"junk", item(b"files/hidden.m", CONTENT).pack(),
        item(b"files/a.m", CONTENT).pack(), LOCAL, CENTRAL, DESCRIPTOR_MARK, DESCRIPTOR_MARK +
        bytes(12), END + bytes(18), LOCATOR + bytes(16), b"PK\5\5\0\0", b"PK\6\x08" + bytes(4),
        b"PK00", described(item(b"files/hidden.m", CONTENT)).pack(0)))


def insert_bytes(archive, pick):
    new, kind = bytes_of_kind(pick), pick.randrange(6)
    if kind == 0:
        archive.prefix = new + archive.prefix
    elif kind == 1:
        archive.suffix += new
    elif kind == 2:
        archive.end.before += new
    elif kind == 3:
        archive.directory.insert(pick.randrange(len(archive.directory) + 1), new)
    else:
        archive.body.insert(pick.randrange(len(archive.body) + 1), new)
    return "%r inserted (%d)" % (new[:20], kind)


def add_item(archive, pick):
    others = [central.name for central in archive.centrals()]
    name = pick.choice((b"files/new.m", b"new.txt", b"new.xml", b"other/new.m", b"new",
                        names.changed(pick.choice(others), others, pick),
                        names.changed(b"files/new.m", others, pick)))
    local, central = archive.add(name, pick.choice((b"", CONTENT)), pick.choice((STORED, DEFLATED)))
    if pick.random() < 0.5:
        archive.body.remove(local)
        archive.body.insert(pick.randrange(len(archive.body) + 1), local)
    for record in (local, central):
        record.flags |= pick.choice((0, 0, UTF8))
    return "item %r added" % name


def add_folder(archive, pick):
    others = [central.name for central in archive.centrals()]
    name = pick.choice(others)
    for _ in range(pick.randrange(3)):
        name = name.rpartition(b"/")[0] or name
    name += pick.choice((b"/", b"/", b"/", b"//", b"\\", b""))
    content = pick.choice((b"", b"", b"", CONTENT))
    local, central = archive.add(name, content, pick.choice((STORED, STORED, DEFLATED)))
    central.external = pick.choice((0o040755 << 16 | 0x10, 0o040755 << 16, 0x10, 0,
                                    0o100644 << 16, 0o120777 << 16))
    central.made_by = pick.choice(SYSTEMS) << 8 | 20
    if pick.random() < 0.3:
        archive.body.insert(0, archive.body.pop())
        archive.directory.insert(0, archive.directory.pop())
    return "folder %r with %d bytes, attributes %#x" % (name, len(local.data), central.external)


def drop_record(archive, pick):
    records = archive.body if pick.random() < 0.5 else archive.directory
    if not records:
        return "nothing dropped"
    gone = records.pop(pick.randrange(len(records)))
    return "dropped %s" % (where([gone]) if not isinstance(gone, bytes) else "bytes")


def repeat_record(archive, pick):
    local, central = some(archive, pick)
    kind = pick.randrange(4)
    copy = Local(local.name, CONTENT, STORED, zlib.crc32(CONTENT), len(CONTENT))
    if kind == 0:
        archive.body.insert(pick.randrange(len(archive.body) + 1), copy)
    elif kind == 1:
        archive.directory.append(central)
    else:
        archive.body.insert(pick.randrange(len(archive.body) + 1), copy)
        twin = described(copy, external=pick.choice((0, 0o100644 << 16, 0o120777 << 16)))
        twin.name = names.changed(central.name, [central.name], pick)
        if kind == 3:
            copy.name = twin.name
        archive.directory.insert(pick.randrange(len(archive.directory) + 1), twin)
    return "second record of %r (%d)" % (central.name, kind)


def move_records(archive, pick):
    kind = pick.randrange(3)
    if kind != 1:
        pick.shuffle(archive.body)
    if kind != 0:
        pick.shuffle(archive.directory)
    return "other order (%d)" % kind


def lead_elsewhere(archive, pick):
    (_, central), (other, _) = some(archive, pick), some(archive, pick)
    central.local = other
    return "%r leads to another item" % central.name


# --- Comments and end records

def hidden_archive(pick):
    """A whole archive of one item, or of none, or its directory alone."""
    small = Archive([], [], End())
    if pick.random() < 0.5:
        small.add(b"files/hidden.m", CONTENT)
    return small.pack()


def some_comment(archive, pick):
    kind = pick.randrange(8)
    if kind == 0:
        return b"a comment"
    if kind == 1:
        return hidden_archive(pick)
    if kind == 2:
        return END + bytes(18)
    if kind == 3:
        return LOCATOR + bytes(8) + struct.pack("<L", 1)
    if kind == 4:
        return item(b"files/hidden.m", CONTENT).pack()
    if kind == 5:
        return b"caf\xe9"
    if kind == 6:
        whole = archive.pack()
        return whole[whole.rindex(END):][:22]
    return b"PK\6\6" + bytes(52) + LOCATOR + bytes(16) + END + bytes(18)


def comment_archive(archive, pick):
    archive.end.comment = some_comment(archive, pick)
    return "archive comment %r" % archive.end.comment[:30]


def comment_item(archive, pick):
    _, central = some(archive, pick)
    central.comment = some_comment(archive, pick)
    return "comment %r of %r" % (central.comment[:30], central.name)


def change_end(archive, pick):
    end, whole = archive.end, archive.pack()
    name = pick.choice(("disk", "first_disk", "here", "total", "size", "offset", "comment_length"))
    count = len(archive.centrals())
    present = {"here": count, "total": count, "size": len(whole) // 4, "offset": len(whole) // 2,
               "comment_length": len(end.comment)}
    value = number_near(present.get(name, 0), pick)
    setattr(end, name, value)
    return "%s of the end record is %d" % (name, value)


def end_in_zip64(archive, pick):
    end = archive.end
    end.zip64 = {}
    for name in ("here", "total", "size", "offset"):
        if pick.random() < 0.6:
            setattr(end, name, FULL32)
    if pick.random() < 0.5:
        name = pick.choice(("length", "made_by", "need", "disk", "first_disk", "here", "total",
                            "size", "offset", "locator_disk", "locator_offset", "disks"))
        end.zip64[name] = pick.choice((0, 1, 2, 45, 255, FULL16, FULL32, len(archive.centrals())))
    if pick.random() < 0.2:
        end.zip64["more"] = pick.choice((bytes(4), field(0xCAFE, b"more"), CONTENT))
    if pick.random() < 0.15:
        end.between = bytes_of_kind(pick)
    return "ZIP64 end records %r" % end.zip64


def second_directory(archive, pick):
    """Another directory with its end record, before, behind or in the comment of the true one."""
    kind = pick.randrange(4)
    small = hidden_archive(pick)
    if kind == 0:
        archive.prefix = small
    elif kind == 1:
        archive.suffix = small
    elif kind == 2:
        archive.end.before = small
    else:
        archive.end.comment = archive.pack()[-22 - len(archive.end.comment):]
    return "second directory (%d)" % kind


def flip_bits(archive, pick):
    local, central = some(archive, pick)
    record = pick.choice((local, central))
    name = pick.choice(("need", "flags", "method", "name_length", "extra_length"))
    before = getattr(record, name)
    if before is None:
        before = len(record.name if name == "name_length" else record.extra)
    setattr(record, name, before ^ 1 << pick.randrange(16))
    return "a bit of %s in %s of %r" % (name, where([record]), central.name)


# --- What belongs to an add-on

def rewrite(archive, name, change):
    local, central = archive.named(name)
    new = item(name, change(content_of(local)), DEFLATED)
    local.data, local.packed_size, central.packed_size = new.data, None, len(new.data)
    for record in (local, central):
        record.method, record.crc, record.size = new.method, new.crc, new.size


def change_types(archive, pick):
    old, new = pick.choice(((b'Extension="m"', b'Extension="k"'), (b"/files/", b"/Files/"),
                            (b'<Default Extension="m" ContentType="text/plain"/>', b""),
                            (b'Extension="rels"', b'Extension="RELS"'),
                            (b"</Types>", b'<Default Extension="m" ContentType="a/b"/></Types>'),
                            (b"</Types>", b'<Default Extension="txt" ContentType="a/b"/></Types>'),
                            (b"</Types>", b'<Override PartName="/new" ContentType="a/b"/>'
                             b"</Types>")))
    rewrite(archive, b"[Content_Types].xml", lambda content: content.replace(old, new))
    return "%r instead of %r in the content types" % (new, old)


def change_table(archive, pick):
    old, new = pick.choice(((b'path="', b'path="x/'), (b'path="lib/', b'path="'),
                            (b"</fileTree>", b'<folder path="files/new"/></fileTree>'),
                            (b'path="lib/', b'path="LIB/'), (b"metadata/fileTree", b"files/lib"),
                            (b'path="', b'path="..%2f'), (b'path="', b'path="a.m;1"')))
    rewrite(archive, b"metadata/fileTree.xml", lambda content: content.replace(old, new))
    return "%r instead of %r in the table of files" % (new, old)
