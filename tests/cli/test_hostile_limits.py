# SPDX-License-Identifier: MIT
"""Packages made to take more memory, time or disk than there is, and documents made to do harm."""

import os
import subprocess
import unittest

import kraddontest
import test_hostile
from hostilezip import DEFLATED, SCHEMA, Entry, addon, build, zip64_end
from test_hostile import EVERY_COMMAND, SANITIZED, SECONDS

# What is large is given to one that reads everything, one that reads little, and one that writes.
FEW_COMMANDS = (("info",), ("verify",), ("set", "properties", "summary=changed"))

# What these are about is memory, which says nothing under the sanitizers.
about_memory = unittest.skipIf(SANITIZED, "the sanitizers need memory of their own")


class Size(test_hostile.HostileTest):

    def test_a_bomb_is_reported(self):
        self.put(addon([Entry(b"files/a.m", bytes(200 << 20), DEFLATED)]))
        self.assertIn("KR112", self.hostile("verify", "p.kraddon", "--opc").text)
        self.every_command()

    def test_what_cannot_fit_on_the_disk_is_refused_before_the_first_byte(self):
        # The packed data are a hole in the file: as much as deflate could make so much of.
        packed, size = 4 * 10**9, 4 * 10**12
        entries = addon([Entry(b"files/good.m", b"good")])
        hole = Entry(b"files/hole.m", method=DEFLATED, packed=b"", size=0xFFFFFFFF,
                     packed_size=packed, extra=b"\x01\0\x08\0" + size.to_bytes(8, "little"))
        whole = build([*entries, hole])
        directory = whole.index(b"PK\x01\x02")
        with open(self.sandbox / "p.kraddon", "wb") as file:
            file.write(whole[:directory])
            file.seek(packed, os.SEEK_CUR)
            file.write(self.wide_end(whole[directory:-22], len(entries) + 1, file.tell()))

        # Not through hostile(), which would read the whole file.
        done = subprocess.run([kraddontest.KRADDON, "extract", "p.kraddon", "-d", "out"],
                              cwd=self.sandbox, capture_output=True, timeout=SECONDS, check=False)

        self.assertEqual(done.returncode, 1, done)
        self.assertIn(b"free", done.stderr)
        self.assertEqual(self.extracted(), {})

    def put_folders(self, paths, depth):
        """A table of so many folders, each that deep."""
        rows = "".join(f'<folder path="{n}{"/a" * (depth - 1)}"/>' for n in range(paths))
        self.put(addon([Entry(b"files/a.m", b"x")],
                       table=f'<fileTree xmlns="{SCHEMA}/fileTree">{rows}</fileTree>'.encode()))

    def test_a_small_package_of_countless_folders_is_refused(self):
        for paths, depth in ((16, 6000), (1000, 3000), (2, 249000)):
            with self.subTest((paths, depth)):
                self.put_folders(paths, depth)
                codes = self.every_command()
                self.assertEqual(codes["verify"], 1)
                self.refused("list", "p.kraddon", saying="files and folders, the limit for")
                self.assertIn("KR314", self.hostile("verify", "p.kraddon").text)
                self.refused("extract", "p.kraddon", "-d", "out", "--max-size", "1")
                self.assertFalse((self.sandbox / "out").exists())

    def test_folders_that_are_allowed_are_counted_before_they_are_made(self):
        self.put_folders(1, 900)
        self.assertNotIn("KR314", self.hostile("verify", "p.kraddon").text)
        self.refused("extract", "p.kraddon", "-d", "out", "--max-files", "900", saying="--max-fil")
        self.refused("extract", "p.kraddon", "-d", "out", "--max-size", "1000000",
                     saying="--max-size")
        self.assertFalse((self.sandbox / "out").exists())
        self.assertEqual(self.hostile("extract", "p.kraddon", "-d", "out", "--max-files", "901",
                                      "--max-size", "4000000").code, 0)

    @staticmethod
    def wide_end(directory, count, start, said_count=None, said_size=None):
        """A directory that begins at `start`, and end records of ZIP64 behind it."""
        return directory + zip64_end(said_count or count, said_size or len(directory), start,
                                     start + len(directory))

    def test_declared_sizes_are_not_believed(self):
        for size in (1 << 40, 1 << 50, (1 << 63) - 1, (1 << 64) - 2):
            extra = b"\x01\x00\x08\x00" + size.to_bytes(8, "little")
            for name in (b"files/a.m", b"core.xml", b"metadata/fileTree.xml"):
                with self.subTest((size, name)):
                    entries = [entry for entry in addon(core=b"<x/>", true_paths=[])
                               if entry.name != name]
                    entries.append(Entry(name, b"x" * 100, DEFLATED, size=0xFFFFFFFF, extra=extra,
                                         local_size=100))
                    self.put(entries)
                    codes = self.every_command()
                    self.assertEqual(codes["verify --opc"], 1)
                    self.assertEqual(self.extracted(), {})

    def test_a_directory_of_countless_entries_is_refused(self):
        whole = build(addon([Entry(b"files/a.m", b"x")]))
        start = whole.index(b"PK\x01\x02")
        for count, size in ((1 << 60, None), (1 << 60, 1 << 62), (None, (1 << 64) - 1),
                            ((1 << 64) - 1, None)):
            self.put(whole[:start] + self.wide_end(whole[start:-22], 3, start, count, size))
            codes = self.every_command()
            self.assertEqual(set(codes.values()), {1}, codes)

    @about_memory
    def test_very_many_items_take_little(self):
        entries = addon([Entry(b"files/%d/%d.m" % (n % 7, n)) for n in range(300000)])
        whole = build(entries)
        start = whole.index(b"PK\x01\x02")
        self.put(whole[:start] + self.wide_end(whole[start:-22], len(entries), start))
        for words in (("info",), ("list",), ("verify", "--opc")):
            self.assertEqual(self.hostile(words[0], "p.kraddon", *words[1:]).code, 0)


class Documents(test_hostile.HostileTest):

    def documents(self, document):
        """Packages with a document in every place where one is read."""
        for place in ("types", "relationships", "core", "table"):
            yield place, addon([Entry(b"files/a.m", b"x")], **{place: document})

    def every_place(self, document, commands=EVERY_COMMAND):
        for place, entries in self.documents(document):
            with self.subTest(place):
                self.put(entries)
                codes = self.every_command(commands=commands)
                self.assertEqual(codes["verify"], 1, codes)
                if place in ("types", "relationships"):
                    self.assertEqual(set(codes.values()), {1}, codes)

    def test_entities_are_not_expanded(self):
        levels = "".join(f'<!ENTITY e{n} "{f"&e{n - 1};" * 10}">' for n in range(1, 12))
        self.every_place(f'<!DOCTYPE x [<!ENTITY e0 "aaaaaaaaaa">{levels}]><x>&e11;</x>'.encode())

    def test_a_file_outside_is_not_read(self):
        canary = self.path("a/b/canary")
        fifo = self.path("a/b/fifo")
        os.mkfifo(fifo)  # whoever opens it waits for ever
        for path in (canary, fifo, "../canary"):
            for document in (f'<!DOCTYPE x [<!ENTITY e SYSTEM "{path}">]><x>&e;</x>',
                             f'<!DOCTYPE x SYSTEM "{path}"><x/>',
                             f'<!DOCTYPE x [<!ENTITY % e SYSTEM "file://{path}"> %e;]><x/>',
                             f'<!DOCTYPE x PUBLIC "-//X//Y" "{path}"><x/>',
                             '<x xmlns:i="http://www.w3.org/2001/XMLSchema-instance" '
                             f'i:noNamespaceSchemaLocation="{path}"/>',
                             f'<x xmlns:i="http://www.w3.org/2001/XInclude"><i:include '
                             f'href="{path}"/></x>'):
                for place, entries in self.documents(document.encode()):
                    self.put(entries)
                    for words in (("get", "properties"), ("list",), ("verify",)):
                        with self.subTest((place, document, words)):
                            self.hostile(words[0], "p.kraddon", *words[1:])

    def test_no_file_but_the_package_is_opened_and_no_socket(self):
        if SANITIZED:
            self.skipTest("the sanitizers open files of their own")
        self.put(addon(core=b'<!DOCTYPE x [<!ENTITY e SYSTEM "http://127.0.0.1:9/x">]><x>&e;</x>'))
        trace = self.path("trace")
        trace.write_bytes(b"")
        self.hostile("get", "p.kraddon", "properties", kept=(b"trace",),
                     prefix=("strace", "-f", "-e", "trace=network", "-o", trace))
        calls = [line for line in trace.read_text().splitlines() if "socket(" in line]
        self.assertEqual(calls, [])

    def test_ten_thousand_levels_are_refused(self):
        self.every_place(b"<x>" * 10000 + b"</x>" * 10000)

    def test_a_million_attributes_are_refused(self):
        attributes = b"".join(b' a%d=""' % number for number in range(1000000))
        self.every_place(b"<x" + attributes + b"/>", FEW_COMMANDS)

    def test_a_hundred_thousand_namespaces_are_refused(self):
        names = b"".join(b' xmlns:a%d="urn:a%d"' % (number, number) for number in range(100000))
        self.every_place(b"<x" + names + b"/>")

    @about_memory
    def test_a_long_attribute_and_a_long_name_are_refused(self):
        self.every_place(b'<x a="' + b"a" * (8 << 20) + b'"/>', FEW_COMMANDS)
        self.every_place(b"<" + b"a" * (8 << 20) + b"/>", FEW_COMMANDS)

    @about_memory
    def test_a_document_of_most_elements_takes_little(self):
        self.every_place(b"<x>" + b"<y/>" * (15 << 20) + b"</x>", FEW_COMMANDS)

    @about_memory
    def test_a_large_document_is_refused(self):
        self.every_place(b"<x>" + b" " * (65 << 20) + b"</x>", FEW_COMMANDS)

    def test_other_encodings_are_refused(self):
        text = '<?xml version="1.0" encoding="{}"?><x/>'
        for encoding in ("utf-7", "cp037", "utf-32", "iso-8859-1", "utf-16-le"):
            with self.subTest(encoding):
                self.every_place(text.format(encoding).encode(encoding))

    @about_memory
    def test_very_many_relationships_take_little(self):
        many = "".join(f'<Relationship Id="r{n}" Type="urn:t" Target="files/a.m"/>'
                       for n in range(200000))
        self.put(addon([Entry(b"files/a.m", b"x")], relationships=many))
        self.every_command(commands=FEW_COMMANDS)

    @about_memory
    def test_very_many_content_types_take_little(self):
        many = "".join(f'<Override PartName="/x{n}" ContentType="text/x"/>' for n in range(200000))
        self.put(addon([Entry(b"files/a.m", b"x")], types=many))
        self.every_command(commands=FEW_COMMANDS)


if __name__ == "__main__":
    kraddontest.main()
