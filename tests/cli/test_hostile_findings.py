# SPDX-License-Identifier: MIT
"""What `kraddon verify` calls the faults of hostile packages, what the other commands say of them
in one line, and what hostile documents of an add-on do."""

import os
import zlib

import hostilezip
import test_hostile
from hostilezip import DEFLATED, Entry, addon, build

CONTENT = b"content " * 50
NO_DECLARATION = "a document type declaration is not allowed"
READERS = (("info",), ("list",), ("extract", "-d", "out"))
DOCUMENTS = {
    "properties": "addonProperties properties", "license": "license license",
    "configuration": "configuration configuration", "apps": "applications applications",
    "examples": "examples examples", "revisions": "revisionHistory revisionHistory",
    "requirements": "systemRequirements systemRequirements"}


def wide(size):
    """The extra field that says of an entry that it unpacks to `size` bytes."""
    return b"\x01\0\x08\0" + size.to_bytes(8, "little")


def with_document(command, content):
    """A package whose document that `get` calls `command` is `content`."""
    relationship, media_type = DOCUMENTS[command].split()
    return addon(
        [Entry(b"doc.xml", content, DEFLATED)],
        relationships=f'<Relationship Id="d" Target="/doc.xml" Type="{hostilezip.SCHEMA}'
                      f'/relationships/{relationship}"/>',
        types='<Override PartName="/doc.xml" ContentType="application/'
              f'vnd.pellandry.korvan.addon.{media_type}+xml"/>')


class FindingsTest(test_hostile.HostileTest):

    def ids(self, code):
        report = self.hostile("verify", "p.kraddon", "--opc", "--json")
        found = [finding["id"] for finding in report.json["packages"][0]["findings"]]
        self.assertEqual(report.code, code, found)
        summary = r"\Ap\.kraddon: \d+ errors?, \d+ warnings?\n\Z" if found else r"\A\Z"
        self.assertRegex(report.errors, summary)
        return set(found)

    def one_line(self, result):
        """It failed, and said so in one line."""
        lines = result.errors.splitlines()
        self.assertEqual((result.code, result.out, len(lines)), (1, b"", 1), result.err[-2000:])
        return lines[0]

    def all_readers_refuse(self):
        for words in READERS:
            with self.subTest(words):
                self.one_line(self.hostile(words[0], "p.kraddon", *words[1:]))
        self.assertEqual(self.extracted(), {})


class Container(FindingsTest):

    def test_entries_over_one_local_header_are_refused_on_opening(self):
        self.put(addon([Entry(b"files/a.m", CONTENT),
                        Entry(b"files/a.m.copy", CONTENT, local=False, offset=0)]))
        self.assertIn("KR107", self.ids(1))
        self.all_readers_refuse()

    def test_an_entry_within_the_data_of_another_is_refused_on_opening(self):
        inner = build([Entry(b"files/b.m", CONTENT)])[:30 + len("files/b.m") + len(CONTENT)]
        entries = addon([Entry(b"files/a.m", b"before" + inner)])
        start = build(entries).index(inner)
        self.put(entries + [Entry(b"files/b.m", CONTENT, local=False, offset=start)])
        self.assertIn("KR107", self.ids(1))
        self.all_readers_refuse()

    def test_a_bomb_of_entries_that_overlap_is_refused_on_opening(self):
        entries = addon([Entry(b"files/0.m", bytes(1 << 20), DEFLATED)])
        at = build(entries).index(b"files/0.m") - 30
        self.put(entries + [Entry(b"files/%d.m" % number, entries[-1].content, DEFLATED,
                                  packed=entries[-1].data(), local=False, offset=at)
                            for number in range(1, 50)])
        self.assertIn("KR107", self.ids(1))
        self.all_readers_refuse()

    def test_data_that_reach_into_the_directory_are_refused(self):
        self.put(addon([Entry(b"files/a.m", CONTENT, packed_size=len(CONTENT) + 40)]))
        self.assertIn("KR107", self.ids(1))
        self.all_readers_refuse()

    def test_local_headers_that_differ_are_told_apart(self):
        for different in ({"local_name": b"files/b.m"}, {"local_name": b"../evil.m"},
                          {"local_method": 0}, {"local_size": 1}, {"local_crc": 1}):
            with self.subTest(different):
                self.put(addon([Entry(b"files/a.m", CONTENT, DEFLATED, **different)]))
                self.assertIn("KR105", self.ids(1))
                self.one_line(self.hostile("extract", "p.kraddon", "-d", "out"))
                self.assertEqual(self.extracted(), {})

    def test_wrong_sizes_and_checksums_are_damage(self):
        for wrong in ({"crc": 1}, {"size": 399}, {"size": 401}, {"packed": b"\xff" * 50}):
            with self.subTest(wrong):
                self.put(addon([Entry(b"files/a.m", CONTENT, DEFLATED, **wrong)]))
                self.assertIn("KR106", self.ids(1))
                self.one_line(self.hostile("extract", "p.kraddon", "-d", "out"))
                self.assertEqual(self.extracted(), {})

    def test_encrypted_entries_and_unknown_methods_are_named(self):
        for odd in ({"flags": 1}, {"method": 99}, {"method": 12}, {"method": 65535}):
            with self.subTest(odd):
                self.put(addon([Entry(b"files/a.m", b"x", packed=b"x", **odd)]))
                self.assertIn("KR108", self.ids(1))
                self.one_line(self.hostile("extract", "p.kraddon", "-d", "out"))

    def test_names_that_are_one_name_are_errors(self):
        for other, expected in ((b"files/a.m", "KR103"), (b"files/A.M", "KR205"),
                                (b"files/a.m/b.m", "KR207")):
            with self.subTest(other):
                self.put(addon([Entry(b"files/a.m", b"1"), Entry(other, b"2")]))
                self.assertIn(expected, self.ids(1))
                self.one_line(self.hostile("extract", "p.kraddon", "-d", "out"))
                self.assertEqual(self.extracted(), {})

    def test_names_that_lead_elsewhere_are_named(self):
        for name, expected, code in (
                (b"files/../../evil.m", "KR104", 1), (b"../evil.m", "KR104", 1),
                (b"/evil.m", "KR114", 0), (b"C:/evil.m", "KR114", 0),
                (b"C:\\evil.m", "KR114", 0), (b"files/a\\b.m", "KR114", 0),
                (b"files/a%0Ab.m", "KR114", 0), (b"files/\xc3\xa9.m", "KR111", 0),
                # What no part name may encode makes an item that is not a part.
                (b"files/a%5Cb.m", "KR217", 0), (b"files/%2e%2e/evil.m", "KR217", 0),
                (b"files/..%2Fevil.m", "KR217", 0), (b"files/%67ood.m", "KR217", 0)):
            with self.subTest(name):
                self.put(addon([Entry(name, b"evil"), Entry(b"files/good.m", b"good")]))
                self.assertIn(expected, self.ids(code))

    def test_an_encoded_letter_makes_no_second_file(self):
        self.put(addon([Entry(b"files/a.m", b"1"), Entry(b"files/%61.m", b"2")]))
        self.assertEqual(self.hostile("extract", "p.kraddon", "-d", "out").code, 0)
        self.assertEqual((self.sandbox / "out/a.m").read_bytes(), b"1")
        self.assertEqual(set(self.extracted()), {"a.m"})

    def test_control_characters_of_names_stay_out_of_every_message(self):
        entries = {"item": addon([Entry(b"files/\x1b[2J\nx.m", b"x", method=99)]),
                   "part": addon([Entry(b"files/a%1B%5B2J%0A.m", b"x", crc=1)]),
                   "path": addon([Entry(b"metadata/fileTree/1.m", b"x", crc=1)],
                                 true_paths=[("/metadata/fileTree/1.m", "a%0A%1B%5B2J.m")]),
                   "relationship": addon(relationships='<Relationship Id="r&#10;" Type="urn:t" '
                                                       'Target="&#10;a&#x9b;31m"/>')}
        for kind, package in entries.items():
            for words in (*READERS, ("verify", "--opc")):
                with self.subTest((kind, words)):
                    self.put(package)
                    result = self.hostile(words[0], "p.kraddon", *words[1:])
                    messages = result.err + (result.out if words[0] == "verify" else b"")
                    self.assertNotRegex(messages, rb"[\x00-\x09\x0b-\x1f\x7f]|\xc2[\x80-\x9f]")
                    for line in messages.splitlines():
                        self.assertRegex(line, rb"\A(kraddon: (info|list|extract)|p\.kraddon|hint): ")

    def test_a_link_in_the_package_is_a_warning(self):
        self.put(addon([Entry(b"files/a.m", b"../canary", attributes=test_hostile.LINK)]))
        self.assertIn("KR110", self.ids(0))

    def test_a_package_cut_anywhere_is_one_that_is_cut_off(self):
        whole = build(addon([Entry(b"files/a.m", CONTENT, DEFLATED)]))
        for size in (*range(0, len(whole) - 30, 41), *range(len(whole) - 30, len(whole), 7)):
            with self.subTest(size):
                self.put(whole[:size])
                self.one_line(self.hostile("list", "p.kraddon"))
                self.assertIn("KR101", self.ids(1))


class Size(FindingsTest):

    def test_a_bomb_is_a_warning_and_can_be_limited(self):
        # Eight entries of their own over 100 MiB each, in less than a megabyte.
        packed = hostilezip.raw_deflate(bytes(100 << 20))
        crc = zlib.crc32(bytes(100 << 20))
        self.put(addon([Entry(b"files/%d.m" % number, method=DEFLATED, packed=packed, crc=crc,
                              size=100 << 20) for number in range(8)]))
        self.assertEqual(self.ids(0), {"KR112"})
        for words in (("extract",), ("extract", "-d", "out"), ("extract", "--stdout")):
            line = self.one_line(self.hostile(words[0], "p.kraddon", *words[1:], *(
                ["0.m"] if "--stdout" in words else []), "--max-size", "100000000"))
            self.assertTrue(line.startswith("kraddon: extract: cannot "), line)
        self.assertEqual(os.listdir(self.sandbox), ["p.kraddon"])

    def test_gigantic_declared_sizes_are_damage(self):
        for size in (1 << 40, 1 << 60, (1 << 64) - 2):
            with self.subTest(size):
                self.put(addon([Entry(b"files/a.m", CONTENT, DEFLATED, size=0xFFFFFFFF,
                                      extra=wide(size), local_size=len(CONTENT))]))
                self.assertLessEqual(self.ids(1), {"KR105", "KR106", "KR107", "KR109", "KR112"})
                self.one_line(self.hostile("extract", "p.kraddon", "-d", "out"))
                self.assertEqual(self.extracted(), {})

    def many(self, said_count):
        entries = addon([Entry(b"files/%d.m" % number, b"x") for number in range(70000)])
        whole = build(entries)
        start = whole.index(b"PK\x01\x02")
        directory = whole[start:-22]
        return whole[:start] + directory + hostilezip.zip64_end(
            said_count or len(entries), len(directory), start, start + len(directory))

    def test_seventy_thousand_items_are_read(self):
        self.put(self.many(None))
        self.assertEqual(self.ids(0), set())
        self.assertEqual(len(self.hostile("list", "p.kraddon").text.splitlines()), 70000)

    def test_counts_that_are_not_those_of_the_directory_are_refused(self):
        for count in (70000, 70001, 70003, 70002 & 0xFFFF, 1 << 60, (1 << 64) - 1):
            with self.subTest(count):
                self.put(self.many(count))
                self.assertTrue(self.ids(1) & {"KR101", "KR109"})
                self.one_line(self.hostile("list", "p.kraddon"))

    def test_a_count_that_wrapped_around_is_refused(self):
        # 70002 entries, of which the record at the end can only say 4466.
        entries = addon([Entry(b"files/%d.m" % number, b"x") for number in range(70000)])
        self.put(entries, count=len(entries) & 0xFFFF)
        self.assertIn("KR109", self.ids(1))
        self.one_line(self.hostile("list", "p.kraddon"))


class Documents(FindingsTest):

    def every_document_is_refused(self, content, why):
        for command in DOCUMENTS:
            with self.subTest(command):
                self.put(with_document(command, content))
                verified = self.hostile("verify", "p.kraddon", "--json")
                self.assertEqual(verified.code, 1)
                self.assertIn(why, verified.text)
                self.assertIn(why, self.one_line(self.hostile("get", "p.kraddon", command)))

    def license(self, declaration, text):
        self.put(with_document("license", (
            f'{declaration}<license xmlns="{hostilezip.SCHEMA}/license">'
            f'<licenseText type="MIT">{text}</licenseText></license>').encode()))
        return self.hostile("get", "p.kraddon", "license")

    def test_a_license_is_read_only_without_a_declaration_of_types(self):
        self.assertIn("granted", self.license("", "granted").text)
        canary = self.path("a/b/canary")
        for entity in ('"granted"', f'SYSTEM "{canary}"', f'SYSTEM "file://{canary}"'):
            with self.subTest(entity):
                result = self.license(f"<!DOCTYPE license [<!ENTITY e {entity}>]>", "&e;")
                self.assertIn(NO_DECLARATION, self.one_line(result))

    def test_entities_are_not_expanded(self):
        levels = "".join(f'<!ENTITY e{n} "{f"&e{n - 1};" * 10}">' for n in range(1, 12))
        self.every_document_is_refused(
            f'<!DOCTYPE x [<!ENTITY e0 "aaaaaaaaaa">{levels}]><x>&e11;</x>'.encode(),
            NO_DECLARATION)

    def test_no_document_reads_a_file(self):
        canary, fifo = self.path("a/b/canary"), self.path("a/b/fifo")
        os.mkfifo(fifo)  # whoever opens it waits for ever
        for path in (canary, fifo):
            for document in (f'<!DOCTYPE x [<!ENTITY e SYSTEM "file://{path}">]><x>&e;</x>',
                             f'<!DOCTYPE x [<!ENTITY % e SYSTEM "{path}"> %e;]><x/>',
                             f'<!DOCTYPE x SYSTEM "{path}"><x/>'):
                self.every_document_is_refused(document.encode(), NO_DECLARATION)

    def test_a_declaration_of_types_in_a_document_of_the_package_is_named(self):
        document = b'<!DOCTYPE x [<!ENTITY e "text">]><x>&e;</x>'
        for place in ("types", "relationships", "core"):
            with self.subTest(place):
                self.put(addon(**{place: document}))
                self.assertIn("KR214", self.ids(1))

    def test_ten_thousand_levels_are_refused(self):
        self.every_document_is_refused(b"<x>" * 10000 + b"</x>" * 10000,
                                       "elements are nested more than 256 deep")

    def test_a_million_attributes_are_refused(self):
        attributes = b"".join(b' a%d=""' % number for number in range(1000000))
        self.every_document_is_refused(b"<x" + attributes + b"/>",
                                       "an element has more than 4096 attributes")


if __name__ == "__main__":
    test_hostile.kraddontest.main()
