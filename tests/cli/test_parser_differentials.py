# SPDX-License-Identifier: MIT
"""The fourteen classes in which parsers of ZIP files are known to differ: what the headers say
twice, how paths are taken, and where the records lie. Each has cases that `kraddon verify` must not
pass in an add-on, and some beside them that all parsers take alike."""

import struct
import zlib

import hostilezip
import test_hostile
import test_hostile_headers
import test_hostile_readers
from hostilezip import DEFLATED, STORED, Entry, addon, build, extra_field, unicode_path
from test_hostile_readers import CONTENT, FOLDER, UTF8

FILE = b"files/a.m"
TWICE = b"content of a file, and then of another one"


class Class(test_hostile_readers.ReadersTest):

    def never_passes(self, *packages):
        for number, package in enumerate(packages):
            with self.subTest(number):
                self.put(package if isinstance(package, bytes) else addon(package))
                found, code = self.findings()
                self.assertEqual(code, 1)
                self.assertTrue([finding for finding in found if finding["severity"] == "error"
                                 and (finding["id"] < "KR300" or finding["id"] == "KR411")], found)
                self.assertTrue([finding for finding in found if finding["id"] == "KR411"]
                                or self.findings("--opc")[0])

    def all_pass(self, *packages):
        for number, package in enumerate(packages):
            with self.subTest(number):
                self.put(package if isinstance(package, bytes) else addon(package))
                self.passed()


class RedundantMetadata(Class):

    def test_compression_methods(self):
        packed = hostilezip.raw_deflate(CONTENT)
        self.never_passes([Entry(FILE, CONTENT, DEFLATED, local_method=STORED)],
                          [Entry(FILE, packed, STORED, local_method=DEFLATED)],
                          [Entry(FILE, CONTENT, 12)], [Entry(FILE, CONTENT, DEFLATED,
                                                             local_method=12)])
        self.all_pass([Entry(FILE, CONTENT, DEFLATED)])

    def test_encryption_flags(self):
        self.never_passes(*([Entry(FILE, CONTENT, flags=flags, local_flags=local)]
                            for flag in (1, 1 << 6, 1 << 13)
                            for flags, local in ((flag, 0), (0, flag), (flag, flag))))

    def test_sizes_and_checksums(self):
        streamed = test_hostile_headers.streamed
        self.never_passes(
            [Entry(FILE, CONTENT, local_size=1)], [Entry(FILE, CONTENT, local_packed_size=1)],
            [Entry(FILE, CONTENT, local_crc=1)], [Entry(FILE, CONTENT, local_crc=0)],
            [Entry(FILE, CONTENT, DEFLATED, local_size=0, local_packed_size=0)],
            [streamed(FILE, CONTENT, local_size=1)],
            [streamed(FILE, CONTENT, descriptor=test_hostile_headers.descriptor(b"other"))],
            [streamed(FILE, CONTENT, descriptor=b"")],
            # More than the stream, in which an item hides.
            [Entry(FILE, CONTENT, DEFLATED, packed=hostilezip.raw_deflate(CONTENT) +
                   test_hostile_headers.record_of(b"files/hidden.m", b"hidden"))])
        self.all_pass([streamed(FILE, CONTENT)], [streamed(FILE, CONTENT, local_size=len(CONTENT))])

    def test_names_in_both_headers(self):
        self.never_passes([Entry(FILE, CONTENT, local_name=b"files/b.m")],
                          [Entry(FILE, CONTENT, local_name=b"files/A.m")],
                          [Entry(FILE, CONTENT, local_name=b"files/a.m/")],
                          [Entry(FILE, CONTENT, local_name=b"")])

    def test_names_in_extra_fields_and_flags(self):
        name = "files/\u00e9.m".encode()
        self.never_passes(
            [Entry(FILE, CONTENT, extra=unicode_path(FILE, b"files/b.m"))],
            [Entry(FILE, CONTENT, local_extra=unicode_path(FILE, b"files/b.m"))],
            [Entry(FILE, CONTENT, extra=unicode_path(b"x", b"files/b.m"))],
            [Entry(name, CONTENT, flags=UTF8, local_flags=0)],
            [Entry(name, CONTENT, flags=0, local_flags=UTF8)], [Entry(name, CONTENT)])
        self.all_pass([Entry(FILE, CONTENT, extra=unicode_path(FILE, FILE))])


class Paths(Class):

    def test_encodings_and_characters(self):
        self.never_passes([Entry(b"files/\xff.m", CONTENT, flags=UTF8)],
                          [Entry(b"files/\x82.m", CONTENT)], [Entry(b"files/a\0.m", CONTENT)],
                          [Entry(b"files/a\x1b.m", CONTENT)], [Entry(b"files/a%0A.m", CONTENT)],
                          [Entry("files/e\u0301.m".encode(), CONTENT, flags=UTF8)])

    def test_canonical_paths(self):
        self.never_passes(*([Entry(FILE, CONTENT), Entry(name, b"other")] for name in (
            b"./files/a.m", b"files/./a.m", b"files//a.m", b"/files/a.m", b"files\\a.m",
            b"x/../files/a.m", b"files/a.m/.", b"files/a.m.", b"C:files/a.m", b"files/a.m;1",
            b"files/%61.m", b"..", b".", b"")))

    def test_names_that_are_equal(self):
        self.never_passes(*([Entry(FILE, CONTENT), Entry(name, b"other")] for name in (
            b"files/a.m", b"files/A.M", b"FILES/a.m", b"files/a.m/b.m", b"files")))
        self.all_pass([Entry(FILE, CONTENT), Entry(b"files/b.m", b"other")])

    def test_kinds_of_items(self):
        link = test_hostile.LINK
        self.never_passes(
            [Entry(b"files/a.m/", b"data")], [Entry(FILE, CONTENT, attributes=FOLDER)],
            [Entry(FILE, CONTENT, attributes=0x10, made_by=20)],
            [Entry(FILE, b"target", attributes=link)],
            [Entry(FILE, b"target", attributes=link, made_by=5 << 8 | 20)])
        self.all_pass([Entry(b"files/", attributes=FOLDER), Entry(FILE, CONTENT)])


class Positions(Class):

    def setUp(self):
        super().setUp()
        self.entries = addon([Entry(FILE, CONTENT)])
        self.whole = build(self.entries)
        self.start = self.whole.index(b"PK\x01\x02")
        self.size = len(self.whole) - 22 - self.start
        self.other = build(addon([Entry(FILE, b"other")]))

    def test_the_end_record(self):
        nowhere = b"PK\x05\x06" + bytes(18)
        self.never_passes(
            build(self.entries, comment=nowhere), build(self.entries, comment=self.whole[-22:]),
            build(self.entries, suffix=nowhere), self.whole + self.other, self.whole[:-1],
            self.whole[:-2] + struct.pack("<H", len(self.other)) + self.other,
            build([*self.entries[:-1], Entry(FILE, CONTENT, comment=nowhere)]))

    def with_zip64(self, *changed):
        end = hostilezip.zip64_end(len(self.entries), self.size, self.start, len(self.whole) - 22)
        for old, new in changed:
            self.assertIn(old, end)
            end = end.replace(old, new)
        return self.whole[:-22] + end

    def test_zip64_records(self):
        count = struct.pack("<2Q", len(self.entries), len(self.entries))
        record = self.with_zip64()[len(self.whole) - 22:][:56]
        self.never_passes(
            self.with_zip64((count, struct.pack("<2Q", 2, 2))),
            self.with_zip64((b"PK\x06\x07", record + b"PK\x06\x07")),
            self.with_zip64((b"PK\x06\x07", b"gap!PK\x06\x07")),
            self.with_zip64((b"\x01\0\0\0PK\x05\x06", b"\0\0\0\0PK\x05\x06")),
            self.with_zip64((b"\xff\xff\xff\xff\xff\xff\xff\xff\0\0",
                             struct.pack("<2LH", self.size, 7, 0))),
            [Entry(FILE, CONTENT, extra=extra_field(1, bytes(8)))],
            [Entry(FILE, CONTENT, local_extra=extra_field(1, bytes(16)))])
        self.all_pass(self.with_zip64())

    def test_the_directory(self):
        self.never_passes(build(self.entries, count=2), build(self.entries, count=4),
                          build(self.entries, directory_size=self.size - 1),
                          build(self.entries, directory_offset=self.start + 1),
                          build(self.entries, gap=self.whole[self.start:-22]))

    def test_local_headers(self):
        hidden = test_hostile_headers.record_of(b"files/hidden.m", b"hidden")
        self.never_passes(
            build(self.entries, prefix=hidden), hidden + self.whole,
            [Entry(FILE, CONTENT, before=hidden)], [Entry(FILE, CONTENT, before=bytes(30))],
            [Entry(FILE, CONTENT), Entry(b"files/b.m", CONTENT, local=False, offset=0)],
            [Entry(FILE, CONTENT, offset=1)])

    def test_reading_from_the_front(self):
        streamed, hidden = test_hostile_headers.streamed, test_hostile_headers.record_of(
            b"files/hidden.m", b"hidden")
        crc = struct.pack("<L", zlib.crc32(b"before"))
        early = b"before" + b"PK\x07\x08" + crc + struct.pack("<2L", 6, 6) + hidden
        self.never_passes(
            [streamed(FILE, early, STORED)], [streamed(FILE, TWICE, STORED, descriptor=crc * 3)],
            [streamed(FILE, CONTENT, flags=0, local_flags=8)],
            [Entry(FILE, CONTENT, flags=8, local_flags=0)],
            [streamed(FILE, CONTENT, local_size=0xFFFFFFFF, local_packed_size=0xFFFFFFFF)])
        self.all_pass([streamed(FILE, early)], [Entry(FILE, early)],
                      [streamed(FILE, CONTENT, STORED)])


if __name__ == "__main__":
    test_hostile.kraddontest.main()
