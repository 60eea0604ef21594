# SPDX-License-Identifier: MIT
"""Constructions with single items: names, kinds, flags, methods and extra fields."""

import copy
import struct
import zlib

from constructions import FILE, HIDDEN, OTHER, WHERE, construction, headers
from container import DEFLATED, FULL16, STORED, UTF8, field

LINK, FOLDER = 0o120777, 0o040755


# --- 1. Two names for one item

def unicode_path(name, new_name, wrong_checksum=False):
    return field(0x7075, b"\1" + struct.pack("<L", zlib.crc32(name) ^ wrong_checksum) + new_name)


@construction(*((where, name) for where in WHERE for name in (
    b"files/autorun.m", b"../../evil.m", b"files/lib/b.m", b"/etc/evil", b"files/\xc3\xa9.m", b"")))
def unicode_path_field_gives_another_name(archive, where, name):
    for header in headers(archive, where):
        header.extra += unicode_path(FILE, name)


@construction(*WHERE)
def unicode_path_field_for_another_name(archive, where):
    for header in headers(archive, where):
        header.extra += unicode_path(FILE, b"files/other.m", True)


@construction(*WHERE)
def unicode_path_fields_exchange_two_files(archive, where):
    for name, other in ((FILE, OTHER), (OTHER, FILE)):
        for header in headers(archive, where, name):
            header.extra += unicode_path(name, other)


@construction(*WHERE)
def two_unicode_path_fields(archive, where):
    for header in headers(archive, where):
        header.extra += unicode_path(FILE, FILE) + unicode_path(FILE, b"files/other.m")


@construction(b"files/b.m", b"files/A.m", b"files/a.M", b"files/a.n", b"other/a.m", b"files/a.m/")
def another_name_in_the_local_header(archive, name):
    headers(archive, "local")[0].name = name


@construction(*((where, name) for where in WHERE for name in (b"files/\xc3\xa9.m", FILE)))
def utf8_flag(archive, where, name):
    for header in headers(archive, "both"):
        header.name = name
    for header in headers(archive, where, name):
        header.flags |= UTF8


# --- 2. Methods, versions and flags

@construction(*((where, need) for where in WHERE for need in (0, 45, 46, 51, 62, 63, 255, 0xFF14,
                                                              FULL16)))
def version_needed(archive, where, need):
    for header in headers(archive, where):
        header.need = need


@construction(*((where, bit) for where in WHERE for bit in range(16) if bit not in (3, 11)))
def flag(archive, where, bit):
    for header in headers(archive, where):
        header.flags |= 1 << bit


@construction(*((where, method) for where in WHERE for method in (0, 1, 8, 9, 12, 14, 93, 95, 99)))
def method(archive, where, method):
    for header in headers(archive, where, OTHER):
        header.method = method


@construction(b"\0", b"more", HIDDEN)
def bytes_behind_the_deflate_stream(archive, more):
    local, central = archive.named(OTHER)
    local.data += more
    local.packed_size = central.packed_size = len(local.data)


@construction(*((where, name) for where in ("local", "central") for name in (
    "crc", "size", "packed_size")))
def headers_differ(archive, where, name):
    header = headers(archive, where)[0]
    setattr(header, name, (getattr(header, name) or len(archive.named(FILE)[0].data)) + 1)


@construction(*WHERE)
def aes_field(archive, where):
    for header in headers(archive, where):
        header.extra += field(0x9901, struct.pack("<H2sBH", 2, b"AE", 3, 0))


# --- 3. Files, folders and links

@construction(*((system << 8 | 20, mode, bits) for system in (0, 3, 7, 10, 11, 14, 19, 30)
                for mode in (0, FOLDER, 0o100644) for bits in (0x10, 0)
                if (mode, bits) not in ((0, 0), (0o100644, 0))))
def marks_of_a_folder_on_a_file(archive, made_by, mode, bits):
    _, central = archive.named(FILE)
    central.made_by, central.external = made_by, mode << 16 | bits


@construction(*((system << 8 | 20, mode) for system in (0, 1, 2, 3, 4, 5, 6, 7, 10, 11, 14, 16, 18,
                                                        19, 20, 30, 255)
                for mode in (LINK, 0o060600, 0o010600, 0o140755, 0o104755, 0o102755)))
def mode_of_another_kind(archive, made_by, mode):
    _, central = archive.named(FILE)
    central.made_by, central.external = made_by, mode << 16


@construction(*((bits, system) for bits in (1, 2, 4, 8, 0x20, 0x40, 0x400)
                for system in (0, 3, 11)))
def attributes(archive, bits, system):
    _, central = archive.named(FILE)
    central.made_by, central.external = system << 8 | 20, bits


@construction(*((where, mode) for where in WHERE for mode in (LINK, FOLDER, 0o100644)))
def field_of_libarchive(archive, where, mode):
    for header in headers(archive, where):
        header.extra += field(0x6C78, struct.pack("<B3HL", 7, 3 << 8 | 20, 0, mode, mode << 16))


@construction(*WHERE)
def field_of_libarchive_with_a_link_s_mode_alone(archive, where):
    for header in headers(archive, where):
        header.extra += field(0x6C78, struct.pack("<BL", 4, LINK << 16))


@construction(*((where, mode) for where in WHERE for mode in (LINK, 0o100644)))
def field_of_asi(archive, where, mode):
    unix = struct.pack("<HLHH", mode, 6, 0, 0) + b"target"
    for header in headers(archive, where):
        header.extra += field(0x756E, struct.pack("<L", zlib.crc32(unix)) + unix)


@construction(*WHERE)
def field_of_pkware_with_a_link(archive, where):
    for header in headers(archive, where):
        header.extra += field(0x000D, struct.pack("<LLHH", 0, 0, 0, 0) + b"target")


@construction(*((name, content, method) for name in (b"files/x.m/", b"files/a.m/", b"x/")
                for content in (b"", HIDDEN) for method in (STORED, DEFLATED)))
def folder(archive, name, content, method):
    _, central = archive.add(name, content, method)
    central.external = FOLDER << 16 | 0x10


@construction(*((name, mode) for name in (b"files/x/", b"x/") for mode in (LINK, 0o100644,
                                                                            0o060600)))
def folder_with_the_mode_of_another_kind(archive, name, mode):
    archive.add(name)[1].external = mode << 16


@construction(b"files", b"files/lib", b"metadata", b"files/new")
def folder_without_a_slash(archive, name):
    archive.add(name)[1].external = FOLDER << 16 | 0x10


# --- 4. Names that are normalised

@construction(b"", b".", b"..", b"/", b"//", b"./", b"\\", b"./files/a.m", b"files//a.m",
              b"files/./a.m", b"/files/a.m", b"//files/a.m", b"x/../files/a.m", b"files\\a.m",
              b"\\files\\a.m", b"C:files/a.m", b"C:/files/a.m", b"c:\\files\\a.m", b"files./a.m",
              b"files/a.m.", b"files/a.m ", b"files /a.m", b" files/a.m", b"files/a.m\0",
              b"files/a.m\0.txt", b"files/a.m::$DATA", b"files/a.m:x", b"files/a.m;1", b"a.m;1",
              b"files/a.m\n", b"files/a.m\r", b"files/A.m", b"FILES/a.m", b"FILES/new.m",
              b"Files/new.m", b"%66iles/a.m", b"files/%61.m", b"files/%2e%2e/a.m", b"files%2Fa.m",
              b"files/a.m/x", b"files/a.m/", b"files/new.m/", b"./files/new.m", b"files//new.m",
              b"/files/new.m", b"files\\new.m", b"C:files/new.m", b"files./new.m", b"files /new.m",
              b"x/../files/new.m", b"../files/new.m", b"..\\files\\new.m", b"files/new.m;1",
              b"files/new.m.", b"files/new.", b"files/new", b"files/.new.m", b"files/new..m",
              b"//server/share/files/new.m", b"\\\\?\\C:\\files\\new.m", b"~/files/new.m",
              b"-files/new.m", b"files/CON.m", b"files/nul", b"files/%C3.m", b"files/%0A.m",
              b"files/%00.m", b"files/%zz.m", b"files/\xc3\xa9.m", b"files/\xe9.m", b"\xe9.txt",
              b"files/\x82.m", b"files/\xff\xfe.m", b"\xef\xbb\xbffiles/new.m", b"files/\x1b[31m.m",
              b"files/\x7f.m", b"files/%C2%85.m", b"files/" + b"n" * 300 + b".m",
              b"n" * 70 + b"/" + b"n" * 300 + b".m", b"files/" + b"d/" * 300 + b"x.m",
              b"files/new.txt", b"new.txt", b"new.m", b"files/x.m/[0].piece",
              b"__MACOSX/files/._a.m",
              b"[trash]/0.dat", b"META-INF/MANIFEST.MF", b"files/_rels/a.m.rels", b"mimetype")
def item_beside_the_others(archive, name):
    archive.add(name, HIDDEN)


@construction(b"\xef\xbb\xbffiles/new.m", b"\xef\xbb\xbf_rels/.rels", b"files/\xef\xbb\xbfnew.m",
              b"files/e\xcc\x81.m", b"files/\xc3\xa9.m", b"\xc3\xa9.txt", b"files/\xed\xa0\x80.m",
              b"files/\xc3.m", b"files/\xe2\x84\xaa.m", b"\xe2\x80\xae.m", b"files/\xe2\x80\xa8.m")
def item_with_a_name_in_utf8(archive, name):
    archive.add(name, HIDDEN, flags=UTF8)


@construction(*((host, need) for host in (0, 6, 10, 11, 14, 19) for need in (20, 25, 50)))
def name_in_utf8_from_another_system(archive, host, need):
    _, central = archive.add(b"files/\xc3\xa9.m", HIDDEN, flags=UTF8)
    central.made_by = host << 8 | need


@construction(b"files/\xc3\xa9.m", b"\xc3\xa9.txt")
def names_in_two_encodings(archive, name):
    archive.add(name, HIDDEN)
    archive.add(name, b"other", flags=UTF8)


# --- 5. Two items of one name

@construction(FILE, b"files/A.m", b"_rels/.rels", b"[Content_Types].xml", b"metadata/license.xml")
def second_item(archive, name):
    archive.add(name, HIDDEN)


@construction()
def two_entries_for_one_record(archive):
    archive.directory.append(copy.copy(archive.named(FILE)[1]))


@construction()
def two_names_for_one_record(archive):
    central = copy.copy(archive.named(FILE)[1])
    central.name = b"files/new.m"
    archive.directory.append(central)


@construction()
def entries_lead_to_each_other_s_records(archive):
    one, other = archive.named(FILE)[1], archive.named(OTHER)[1]
    one.local, other.local = other.local, one.local
