# SPDX-License-Identifier: MIT
"""What `kraddon verify` says of headers and records of which ZIP readers see different things."""

import struct
import zlib

import hostilezip
import test_hostile
import test_hostile_readers
from hostilezip import DEFLATED, Entry, addon, build, extra_field
from test_hostile_readers import CONTENT

DESCRIPTOR = 1 << 3
ALL = 0xFFFFFFFF
END = b"PK\x05\x06" + bytes(8) + struct.pack("<2LH", 5000, 4, 0)


def descriptor(content, packed=None):
    return b"PK\x07\x08" + struct.pack("<3L", zlib.crc32(content), len(
        content if packed is None else packed), len(content))


def streamed(name, content, method=DEFLATED, **more):
    """An entry whose sizes follow its data."""
    packed = hostilezip.raw_deflate(content) if method == DEFLATED else content
    return Entry(name, content, method, **{
        "flags": DESCRIPTOR, "local_crc": 0, "local_size": 0, "local_packed_size": 0,
        "descriptor": descriptor(content, packed), **more})


def record_of(name, content):
    """A local header and its data, of which no directory knows."""
    whole = build([Entry(name, content)])
    return whole[:whole.index(b"PK\x01\x02")]


class Headers(test_hostile_readers.ReadersTest):

    def test_a_version_that_not_all_readers_know_is_an_error(self):
        for version in (46, 63, 255, 0xFFFF, 3 << 8 | 20):
            with self.subTest(version):
                self.put_file(version=version)
                self.ambiguous("KR118")
                self.put_file(local_version=version)
                self.ambiguous("KR118")
        self.put_file(version=0xFFFF)
        self.refused_on_opening()

    def test_reserved_flags_are_an_error(self):
        for bit in (4, 5, 7, 8, 9, 10, 12, 14, 15):
            with self.subTest(bit):
                self.put_file(flags=1 << bit)
                self.ambiguous("KR118")
                self.refused_on_opening()
                self.put_file(flags=0, local_flags=1 << bit)
                self.ambiguous("KR118")

    def test_a_descriptor_that_one_header_announces_is_an_error(self):
        self.put(addon([streamed(b"files/a.m", CONTENT, flags=0, local_flags=DESCRIPTOR)]))
        self.ambiguous("KR105")
        self.put_file(flags=DESCRIPTOR, local_flags=0)
        self.ambiguous("KR105")

    def test_values_of_which_a_descriptor_holds_only_some_are_an_error(self):
        zeros = extra_field(1, bytes(16))
        for more in ({"local_crc": zlib.crc32(CONTENT)}, {"local_crc": ALL},
                     {"local_crc": zlib.crc32(CONTENT), "local_size": len(CONTENT)},
                     {"local_crc": zlib.crc32(CONTENT), "local_size": ALL,
                      "local_packed_size": ALL, "local_extra": zeros}):
            with self.subTest(more):
                self.put(addon([streamed(b"files/a.m", CONTENT, **more)]))
                self.ambiguous("KR105")
        packed = hostilezip.raw_deflate(CONTENT)
        wide = b"PK\x07\x08" + struct.pack("<L2Q", zlib.crc32(CONTENT), len(packed), len(CONTENT))
        size = extra_field(1, struct.pack("<2Q", len(CONTENT), 0))
        for more in ({"local_size": len(CONTENT)},
                     {"local_size": ALL, "local_packed_size": ALL, "local_extra": zeros,
                      "descriptor": wide},
                     {"local_size": ALL, "local_packed_size": ALL, "local_extra": size,
                      "descriptor": wide}):
            with self.subTest(more):
                self.put(addon([streamed(b"files/a.m", CONTENT, **more)]))
                self.passed()

    def test_local_sizes_that_stand_nowhere_are_an_error(self):
        self.put(addon([streamed(b"files/a.m", CONTENT, local_size=ALL, local_packed_size=ALL)]))
        self.ambiguous("KR109")

    def test_zip64_fields_of_other_values_are_an_error(self):
        size = len(CONTENT).to_bytes(8, "little")
        other = (7).to_bytes(8, "little")
        for more in ({"extra": extra_field(1, other)},
                     {"extra": extra_field(1, size + other)},
                     {"extra": extra_field(1, size) + extra_field(1, other), "size": ALL,
                      "local_size": len(CONTENT)},
                     {"extra": extra_field(1, size), "size": ALL, "local_size": len(CONTENT)},
                     {"local_extra": extra_field(1, other * 2)},
                     {"local_extra": extra_field(1, size * 2) * 2}):
            with self.subTest(more):
                self.put(addon([Entry(b"files/a.m", CONTENT, **more)]))
                self.ambiguous("KR113")
        self.put(addon([Entry(b"files/a.m", CONTENT, extra=extra_field(1, size * 2),
                              local_extra=extra_field(1, size * 2))]))
        self.passed()

    def test_a_descriptor_of_another_width_than_the_local_header_says_is_an_error(self):
        for content, method in ((CONTENT, DEFLATED), (CONTENT, hostilezip.STORED)):
            packed = hostilezip.raw_deflate(content) if method == DEFLATED else content
            wide = b"PK\x07\x08" + struct.pack("<L2Q", zlib.crc32(content), len(packed),
                                               len(content))
            field = extra_field(1, bytes(16))
            with self.subTest((content[:1], method)):
                self.put(addon([streamed(b"files/a.m", content, method, descriptor=wide)]))
                self.ambiguous("KR113")
                self.put(addon([streamed(b"files/a.m", content, method, local_extra=field)]))
                self.ambiguous("KR113")
                self.put(addon([streamed(b"files/a.m", content, method, descriptor=wide,
                                         local_extra=field)]))
                self.passed()

    def test_a_descriptor_with_64_bit_sizes_of_an_empty_file_is_an_error(self):
        packed, field = hostilezip.raw_deflate(b""), extra_field(1, bytes(16))
        for mark in (b"PK\x07\x08", b""):
            wide = mark + struct.pack("<L2Q", 0, len(packed), 0)
            self.put(addon([streamed(b"files/a.m", b"", descriptor=wide, local_extra=field)]))
            self.ambiguous("KR113")
        self.put(addon([streamed(b"files/a.m", b"")]))
        self.passed()

    def test_stored_data_of_unknown_size_that_hold_an_item_are_an_error(self):
        hidden = b"before" + record_of(b"files/hidden.m", b"hidden")
        for content in (hidden, b"PK\x07\x08", bytes(1 << 25) + hidden):
            with self.subTest(len(content)):
                self.put(addon([streamed(b"files/a.m", content, hostilezip.STORED)]))
                self.ambiguous("KR113")
        bare = descriptor(CONTENT)[4:]
        self.put(addon([streamed(b"files/a.m", CONTENT, hostilezip.STORED, descriptor=bare)]))
        self.ambiguous("KR113")
        self.put(addon([streamed(b"files/a.m", CONTENT, hostilezip.STORED)]))
        self.passed()
        self.put(addon([Entry(b"files/a.zip.m", hidden), streamed(b"files/b.m", hidden)]))
        self.passed()


class Structure(test_hostile_readers.ReadersTest):

    def test_a_record_that_the_directory_does_not_name_is_an_error(self):
        hidden = record_of(b"files/hidden.m", b"hidden")
        files = [Entry(b"files/a.m", CONTENT), Entry(b"files/b.m", CONTENT)]
        for options, expected in (({"prefix": hidden}, "KR102"), ({"suffix": hidden}, "KR102"),
                                  ({"gap": hidden}, "KR113")):
            with self.subTest(options):
                self.put(addon(files), **options)
                self.ambiguous(expected)
        self.put(addon([files[0], Entry(b"files/b.m", CONTENT, before=hidden)]))
        self.ambiguous("KR113")
        self.put(addon([files[0], Entry(b"files/b.m", CONTENT, before=bytes(40))]))
        self.ambiguous("KR113")

    def test_zeros_and_line_ends_at_the_end_are_a_warning(self):
        for suffix in (b"\n", b"\r\n", bytes(10000)):
            with self.subTest(suffix[:2]):
                self.put(addon([Entry(b"files/a.m", CONTENT)]), suffix=suffix)
                found, _ = self.findings()
                self.assertEqual([finding["severity"] for finding in found
                                  if finding["id"] == "KR102"], ["warning"])

    def test_a_comment_that_holds_an_end_record_is_an_error(self):
        self.put(addon([Entry(b"files/a.m", CONTENT)]), comment=END)
        self.ambiguous("KR119")
        self.refused_on_opening()
        self.put_file(comment=b"x" + END)
        self.ambiguous("KR119")
        self.refused_on_opening()
        for signature in (b"PK\x05\x06", b"PK\x06\x06", b"PK\x06\x07"):
            with self.subTest(signature):
                self.put(addon([Entry(b"files/a.m", CONTENT)]), comment=signature)
                self.ambiguous("KR119")
                self.put_file(comment=signature)
                self.ambiguous("KR119")

    def test_two_end_records_are_refused(self):
        whole = build(addon([Entry(b"files/a.m", CONTENT)]))
        for content in (whole + whole[-22:], whole[:-2] + b"\x16\0" + whole[-22:]):
            with self.subTest(len(content)):
                self.put(content)
                self.refused_on_opening()
                self.assertEqual(self.findings()[1], 1)

    def test_a_directory_in_the_data_of_an_item_is_an_error(self):
        def package(data):
            return build(addon([Entry(b"files/a.m", CONTENT), Entry(b"files/data.m", data)]))
        small = build([Entry(b"files/hidden.m", CONTENT)])
        start = package(small).index(small)
        self.put(package(build([Entry(b"files/hidden.m", CONTENT)], prefix=bytes(start))[start:]))
        self.ambiguous("KR113")
        self.put(package(small))
        self.passed()

    def test_an_empty_archive_in_the_data_of_an_item_is_an_error_if_headers_disagree(self):
        data = Entry(b"files/data.m", b"PK\x05\x06" + bytes(18))
        for version, local_version in ((20, 20), (21, 20)):
            self.put_file(b"files/a.m", CONTENT, data, version=version, local_version=local_version)
            self.passed()
        for different in ({"local_version": 21}, {
                "local_packed_size": 0xFFFFFFFF,
                "local_extra": extra_field(1, struct.pack("<Q", len(CONTENT)))}, {
                "local_size": 0xFFFFFFFF,
                "local_extra": extra_field(1, struct.pack("<2Q", len(CONTENT), len(CONTENT)))}):
            self.put_file(b"files/a.m", CONTENT, data, **different)
            self.ambiguous("KR105")
            self.put_file(b"files/a.m", CONTENT, **different)
            self.passed()
        # As bsdtar writes it.
        file = streamed(b"files/a.m", CONTENT, local_size=len(CONTENT))
        self.put(addon([file]))
        self.passed()
        self.put(addon([file, data]))
        self.ambiguous("KR105")

    def test_zip64_records_that_not_all_readers_find_are_refused(self):
        whole = build(addon([Entry(b"files/a.m", CONTENT)]))
        start = whole.index(b"PK\x01\x02")
        size = len(whole) - 22 - start
        right = hostilezip.zip64_end(3, size, start, len(whole) - 22)
        other = hostilezip.zip64_end(2, size, start, len(whole) - 22)[:56]
        disks = right.replace(b"\x01\0\0\0PK\x05\x06", b"\0\0\0\0PK\x05\x06")
        for name, records in (("two", right[:56] + other + right[56:]), ("disks", disks)):
            with self.subTest(name):
                self.put(whole[:-22] + records)
                self.refused_on_opening()
                self.assertEqual(self.findings()[1], 1)
        self.put(whole[:-22] + right)
        self.passed()


class Ids(test_hostile_readers.ReadersTest):

    def test_an_error_of_an_addon_can_be_ignored_by_its_id(self):
        self.put_file(comment=b"", before=b"gap")
        self.ambiguous("KR113")
        found, _ = self.findings("--ignore", "KR113")
        self.assertNotIn("KR113", {finding["id"] for finding in found})


if __name__ == "__main__":
    test_hostile.kraddontest.main()
