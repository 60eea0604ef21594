# SPDX-License-Identifier: MIT
"""'kraddon diff' compares files as they are packed before it unpacks them"""

import zlib

import kraddontest
from differing import DiffTest
from hostilezip import DEFLATED, STORED, Entry, addon, build

TEXT = b"".join(b"line %d of a text\n" % i for i in range(300))
# Two texts of one length and one CRC-32.
TWINS = (b"plumless", b"buckeroo")
LARGE = 3 << 20


def deflate(data, level):
    packer = zlib.compressobj(level, zlib.DEFLATED, -15)
    return packer.compress(data) + packer.flush()


def flipped(data, at):
    return data[:at] + bytes([data[at] ^ 1]) + data[at + 1:]


class PackedAlike(DiffTest):

    def put(self, a, b):
        """The packages a.kraddon and b.kraddon, each with this file of the tree."""
        for name, entry in (("a.kraddon", a), ("b.kraddon", b)):
            self.path(name).write_bytes(build(addon([entry])))

    def same(self):
        self.assertEqual(self.ok("diff", "a.kraddon", "b.kraddon", "--json").json["files"], [])

    def damaged(self, which="b.kraddon"):
        result = self.run_kraddon("diff", "a.kraddon", "b.kraddon")
        self.assertEqual((result.code, result.out), (2, b""))
        self.assertIn("'/files/x.m'", result.errors)
        self.assertIn(which, result.errors)
        return result.errors

    def entry(self, content, **kw):
        return Entry(b"files/x.m", content, **{"method": DEFLATED, **kw})

    def test_other_packed_bytes_of_the_same_content_are_the_same(self):
        variants = [self.entry(TEXT, method=STORED), self.entry(TEXT, packed=deflate(TEXT, 1)),
                    self.entry(TEXT, packed=deflate(TEXT, 9)),
                    self.entry(TEXT, packed=deflate(TEXT, 0))]
        for a in variants:
            for b in variants:
                self.put(a, b)
                self.same()

    def test_other_packed_bytes_of_one_length_may_be_other_content(self):
        for method in (STORED, DEFLATED):
            a, b = (self.entry(text, method=method, packed=text if method == STORED else
                               deflate(text, 0)) for text in TWINS)
            self.assertEqual(len(a.data()), len(b.data()))
            self.put(a, b)
            self.assertEqual(self.lines(), ["~ x.m  8 B"])

    def test_a_difference_behind_a_forged_checksum_is_found(self):
        for method in (STORED, DEFLATED):
            for size in (len(TEXT), LARGE):
                text = (TEXT * (size // len(TEXT) + 1))[:size]
                other = flipped(text, size - 5)
                self.put(self.entry(text, method=method, packed=deflate(text, 0) if method else
                                    text),
                         self.entry(other, method=method, packed=deflate(other, 0) if method else
                                    other, crc=zlib.crc32(text)))
                self.assertIn("the checksum is wrong", self.damaged())

    def test_the_same_bytes_packed_in_another_way_are_unpacked(self):
        stream = deflate(TEXT, 0)
        # As content, and as the packed form of something else.
        self.put(self.entry(stream, method=STORED),
                 self.entry(TEXT, packed=stream, size=len(stream), crc=zlib.crc32(stream)))
        self.damaged()

    def test_headers_that_lie_are_found_although_the_packed_bytes_are_the_same(self):
        for lie in ({"local_name": b"files/y.m"}, {"local_size": 1}, {"local_crc": 1},
                    {"local_method": STORED}, {"local_packed_size": 1}, {"local_flags": 2048 ^ 8}):
            for text in (TEXT, TEXT * (LARGE // len(TEXT))):
                with self.subTest(lie, size=len(text)):
                    self.put(self.entry(text, packed=deflate(text, 0)),
                             self.entry(text, packed=deflate(text, 0), **lie))
                    self.damaged()

    def test_sizes_that_nothing_unpacks_to_are_found_although_both_declare_them(self):
        entry = self.entry(TEXT, size=0xFFFFFFF0)
        self.put(entry, entry)
        self.assertIn("more than its data can unpack to", self.damaged("a.kraddon"))

    def test_stored_sizes_that_differ_are_found_although_both_declare_them(self):
        entry = self.entry(TEXT, method=STORED, size=len(TEXT) - 1)
        self.put(entry, entry)
        result = self.run_kraddon("diff", "a.kraddon", "b.kraddon")
        self.assertEqual((result.code, result.out), (2, b""))

    def test_files_of_several_pieces_are_compared_to_their_end(self):
        data = bytes(range(256)) * (LARGE // 256)
        for method in (STORED, DEFLATED):
            with self.subTest(method):
                packed = deflate(data, 0) if method == DEFLATED else data
                self.put(self.entry(data, method=method, packed=packed),
                         self.entry(data, method=method, packed=packed))
                self.same()
                self.assertEqual(self.ok("diff", "a.kraddon", "b.kraddon", "--stat").text
                                 .splitlines()[-2:], ["files       1 same", "content     3.1 MB"])

    def test_damage_that_both_have_is_not_a_difference(self):
        entry = self.entry(TEXT, crc=1)
        self.put(entry, entry)
        self.same()

    def test_empty_files_are_the_same(self):
        for a in (self.entry(b""), self.entry(b"", method=STORED)):
            for b in (self.entry(b""), self.entry(b"", method=STORED)):
                self.put(a, b)
                self.same()


if __name__ == "__main__":
    kraddontest.main()
