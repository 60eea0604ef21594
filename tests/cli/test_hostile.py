# SPDX-License-Identifier: MIT
"""Packages made to do harm, given to the real program. Whatever it says, it neither crashes nor
hangs, takes no more than 1 GiB, and writes nothing outside the destination."""

import hashlib
import itertools
import os
import resource
import stat
import subprocess
import tempfile
import threading
import unittest

import kraddontest
from hostilezip import DEFLATED, SCHEMA, Entry, addon, build, zip64_end

GIB = 1 << 30
SECONDS = 60
LINK = 0o120777 << 16

with open(kraddontest.KRADDON, "rb") as program:
    # It reserves more address space than any limit would allow.
    SANITIZED = b"__asan_init" in program.read()

EVERY_COMMAND = (("info",), ("list",), ("list", "--all"), ("get", "properties"), ("verify",),
                 ("verify", "--opc"), ("preview", "-o", "-"), ("sbom",),
                 ("extract", "-d", "out", "--force"),
                 ("set", "properties", "summary=changed"), ("remove", "files/nothing"))
# What is large is given to one that reads everything, one that reads little, and one that writes.
FEW_COMMANDS = (("info",), ("verify",), ("set", "properties", "summary=changed"))


turns = itertools.count()


def sample(commands):
    """All of them; under the sanitizers, which are slow to start, some in turn."""
    if not SANITIZED:
        return commands
    turn = next(turns)
    return [words for at, words in enumerate(commands)
            if (at + turn) % 3 == 0 or words[0] == "verify"]


# What these are about is memory, which says nothing under the sanitizers.
about_memory = unittest.skipIf(SANITIZED, "the sanitizers need memory of their own")


def limit_memory():
    if not SANITIZED:
        resource.setrlimit(resource.RLIMIT_AS, (GIB, GIB))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


class HostileTest(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        # A world of its own around the destination: what leaves it shows here.
        self.sandbox = self.folder / "a" / "b" / "work"
        self.sandbox.mkdir(parents=True)
        self.write("a/b/canary", "CANARY-OF-THE-TEST")

    def put(self, entries, name="p.kraddon", **options):
        content = entries if isinstance(entries, bytes) else build(entries, **options)
        (self.sandbox / name).write_bytes(content)

    def outside(self, *kept):
        """Everything in the test's folder but for what lies under out/ and what `kept` names."""
        found = {}
        for base, folders, files in os.walk(os.fsencode(self.folder)):
            if base == os.fsencode(self.sandbox):
                folders[:] = [name for name in folders if name != b"out"]
            for name in folders + files:
                path = os.path.join(base, name)
                status = os.lstat(path)
                if stat.S_ISREG(status.st_mode) and os.path.basename(path) not in kept:
                    with open(path, "rb") as file:
                        found[path] = hashlib.sha256(file.read()).hexdigest()
                else:
                    found[path] = stat.S_IFMT(status.st_mode)
        return found

    def hostile(self, *words, kept=(), prefix=()):
        """Runs the program, and checks what holds whatever it is given."""
        before = self.outside(*kept)
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
            child = subprocess.Popen([*prefix, kraddontest.KRADDON, *words], cwd=self.sandbox,
                                     stdin=subprocess.DEVNULL, stdout=out, stderr=err,
                                     env=self.environment(), preexec_fn=limit_memory)
            alarm = threading.Timer(SECONDS, child.kill)
            alarm.start()
            try:
                _, status, usage = os.wait4(child.pid, 0)
            finally:
                alarm.cancel()
            child.returncode = os.waitstatus_to_exitcode(status)
            out.seek(0), err.seek(0)
            result = kraddontest.Result(child.returncode, out.read(), err.read())
        shown = f"{words}: {result.code} {result.out[-2000:]!r} {result.err[-2000:]!r}"
        self.assertIn(result.code, (0, 1), shown)
        if result.code == 1 and words[0] != "verify":
            self.assertTrue(result.err.startswith(b"kraddon: " + words[0].encode()), shown)
        if not SANITIZED:
            self.assertLess(usage.ru_maxrss << 10, GIB, shown)
        self.assertEqual(self.outside(*kept), before, shown)
        self.assertNotIn(b"CANARY", result.out + result.err)
        return result

    def every_command(self, name="p.kraddon", commands=EVERY_COMMAND):
        """Commands on one package; the ones that change it work on a fresh copy each."""
        content = (self.sandbox / name).read_bytes()
        codes = {}
        for words in sample(commands):
            (self.sandbox / name).write_bytes(content)
            codes[" ".join(words)] = self.hostile(
                words[0], name, *words[1:], kept=(os.fsencode(name),)).code
        (self.sandbox / name).write_bytes(content)
        return codes

    def refused(self, *words, saying=None):
        result = self.hostile(*words)
        self.assertEqual(result.code, 1, result)
        if saying:
            self.assertIn(saying, result.out.decode() + result.errors)
        return result

    def extracted(self):
        found = {}
        for base, folders, files in os.walk(self.sandbox / "out"):
            for name in folders + files:
                path = os.path.join(base, name)
                if not os.path.isdir(path) or os.path.islink(path):
                    found[os.path.relpath(path, self.sandbox / "out")] = os.lstat(path).st_mode
        return found


class Traversal(HostileTest):

    NAMES = [b"files/../../evil.m", b"files/../evil.m", b"../evil.m", b"../../evil.m",
             b"files/%2e%2e/evil.m", b"files/%2E%2E/%2E%2E/evil.m", b"files/..%2fevil.m",
             b"files/..%2F..%2Fevil.m", b"files/%2e%2e%2fevil.m", b"files/..%5cevil.m",
             b"files/..%5C..%5Cevil.m", b"files\\..\\..\\evil.m", b"files/..\\evil.m",
             b"files/x/..\\..\\..\\evil.m", b"/evil.m", b"//evil.m", b"files//evil.m",
             b"files///tmp/evil.m", b"/files/../../evil.m", b"C:\\evil.m", b"C:/evil.m",
             b"files/C:\\evil.m", b"\\\\host\\share\\evil.m", b"files/./../../evil.m",
             b"files/%00/../evil.m", b"files/..\0/evil.m", b"files/%C0%AE%C0%AE/evil.m",
             b"files/%c0%ae%c0%ae%c0%af/evil.m",
             b"files/%EF%BC%8E%EF%BC%8E/../../evil.m", b"files/..;/evil.m/../../../evil.m",
             b"files/a/../../../../../../../../../../../../evil.m", b"files/.../../../evil.m"]

    def test_no_disguise_leaves_the_destination(self):
        for name in self.NAMES:
            with self.subTest(name):
                self.put(addon([Entry(name, b"evil"), Entry(b"files/good.m", b"good")]))
                self.hostile("extract", "p.kraddon", "-d", "out", "--force")
                self.assertEqual(set(self.extracted()) - {"good.m"}, set())

    def test_all_at_once_leave_the_good_file_alone(self):
        self.put(addon([*(Entry(name, b"evil") for name in self.NAMES if b"\0" not in name),
                        Entry(b"files/good.m", b"good")]))
        self.hostile("extract", "p.kraddon", "-d", "out")
        self.assertLessEqual(set(self.extracted()), {"good.m"})

    def test_what_only_looks_like_a_parent_stays_inside(self):
        self.put(addon([Entry(b"files/%252e%252e/a.m", b"once"), Entry(b"files/..b/c.m", b"dots"),
                        Entry(b"files/%EF%BC%8E%EF%BC%8E/d.m", b"wide")]))
        self.assertEqual(self.hostile("extract", "p.kraddon", "-d", "out").code, 0)
        self.assertEqual(set(self.extracted()), {"%2e%2e/a.m", "..b/c.m", "\uff0e\uff0e/d.m"})

    def test_overlong_dots_are_refused_or_taken_for_other_characters(self):
        self.put(addon([Entry(b"files/\xc0\xae\xc0\xae/evil.m", b"evil", flags=1 << 11)]))
        self.refused("extract", "p.kraddon", "-d", "out", saying="UTF-8")
        # Without the flag the bytes are of another code page, in which they are not dots.
        self.put(addon([Entry(b"files/\xc0\xae\xc0\xae/a.m", b"a")]))
        self.assertEqual(self.hostile("extract", "p.kraddon", "-d", "out").code, 0)
        self.assertEqual(set(self.extracted()), {b"\xc0\xae".decode("cp437") * 2 + "/a.m"})

    def test_no_true_path_leaves_the_destination(self):
        for path in ("../evil.m", "../../evil.m", "/evil.m", "a/../../evil.m", "%2E%2E/evil.m",
                     "..%2Fevil.m", "%2Fevil.m", "a/%2E%2E/%2E%2E/evil.m", "a%2F..%2F..%2Fevil.m",
                     "..", ".", "", "/", "a//evil.m", "./evil.m", "%00", "a%00/../../evil.m",
                     "%C0%AE%C0%AE/evil.m", "&#46;&#46;/evil.m", "..&#47;evil.m"):
            with self.subTest(path):
                self.put(addon([Entry(b"metadata/fileTree/1.m", b"evil")],
                               true_paths=[("/metadata/fileTree/1.m", path)]))
                self.hostile("extract", "p.kraddon", "-d", "out", "--force")
                self.assertEqual(self.extracted(), {})

    def test_a_true_path_reaches_no_part_outside_of_the_tree(self):
        for part in ("/core.xml", "/metadata/fileTree.xml", "/_rels/.rels", "/missing.m",
                     "/[Content_Types].xml", "/metadata/../core.xml", "core.xml", ""):
            with self.subTest(part):
                self.put(addon([Entry(b"files/good.m", b"good")], true_paths=[(part, "a.m")]))
                self.every_command()

    def test_folders_of_the_table_do_not_leave_the_destination(self):
        for path in ("..", "../evil", "/evil", "%2E%2E/evil", "a/../../evil", "..%2Fevil"):
            with self.subTest(path):
                table = ('<fileTree xmlns="http://schemas.pellandry.example/korvan/addon/2014/'
                         f'fileTree"><folder path="{path}"/></fileTree>')
                self.put(addon(table=table.encode()))
                self.hostile("extract", "p.kraddon", "-d", "out", "--force")

    def test_a_link_in_the_package_is_not_made_and_not_followed(self):
        for target in (b"..", b"/", b"../../canary", os.fsencode(self.folder)):
            with self.subTest(target):
                self.put(addon([Entry(b"files/link", target, attributes=LINK),
                                Entry(b"files/link/evil.m", b"evil"),
                                Entry(b"files/link.m", target, attributes=LINK)]))
                self.hostile("extract", "p.kraddon", "-d", "out", "--force")
                for path, mode in self.extracted().items():
                    self.assertFalse(stat.S_ISLNK(mode), path)

    def test_a_link_in_the_destination_is_not_followed(self):
        for force in ((), ("--force",)):
            for link, target in (("x", ".."), ("x", self.folder), ("x/y", ".."),
                                 ("x/y.m", "../../canary")):
                with self.subTest((force, link, target)):
                    subprocess.run(["rm", "-rf", self.sandbox / "out"], check=True)
                    path = self.sandbox / "out" / link
                    path.parent.mkdir(parents=True)
                    path.symlink_to(target)
                    self.put(addon([Entry(b"files/x/y.m", b"new"),
                                    Entry(b"files/x/y/z.m", b"new")]))
                    self.hostile("extract", "p.kraddon", "-d", "out", *force)

    def test_special_files_are_not_made(self):
        kinds = {b"fifo.m": 0o010666, b"device.m": 0o020666, b"block.m": 0o060666,
                 b"socket.m": 0o140777, b"setuid.m": 0o104755}
        self.put(addon([Entry(b"files/" + name, b"x", attributes=mode << 16)
                        for name, mode in kinds.items()]))
        self.hostile("extract", "p.kraddon", "-d", "out")
        for path, mode in self.extracted().items():
            self.assertTrue(stat.S_ISREG(mode), path)
            self.assertEqual(mode & 0o7022, 0, path)


class Container(HostileTest):

    def test_names_that_occur_twice_are_refused(self):
        for one, other in ((b"files/a.m", b"files/a.m"), (b"files/a.m", b"files/A.M"),
                           (b"files/%C3%A9.m", b"files/%c3%a9.m")):
            self.put(addon([Entry(one, b"1"), Entry(other, b"2")]))
            self.refused("extract", "p.kraddon", "-d", "out")
            self.every_command()
            self.assertEqual(self.extracted(), {})

    def test_a_file_that_is_a_folder_too_is_refused(self):
        self.put(addon([Entry(b"files/a.m", b"1"), Entry(b"files/a.m/b.m", b"2")]))
        self.refused("extract", "p.kraddon", "-d", "out")
        self.every_command()

    def with_true_path(self, path):
        self.put(addon([Entry(b"files/a.m", b"0"), Entry(b"metadata/fileTree/1.m", b"1"),
                        Entry(b"metadata/fileTree/2.m", b"2")],
                       true_paths=[("/metadata/fileTree/1.m", "b.m"),
                                   ("/metadata/fileTree/2.m", path)]))

    def test_a_true_path_that_is_there_twice_is_refused(self):
        for path in ("b.m", "b.m/c.m"):
            self.with_true_path(path)
            self.refused("extract", "p.kraddon", "-d", "out", saying="b.m")
            self.every_command()
            self.assertEqual(self.extracted(), {})

    def test_a_file_that_a_true_path_hides_is_named(self):
        for path in ("a.m", "a.m/c.m"):
            self.with_true_path(path)
            result = self.hostile("extract", "p.kraddon", "-d", "out", "--force")
            self.assertIn("part '/files/a.m' is not a file of the tree", result.errors)
            self.assertEqual(set(self.extracted()), {"b.m", path})
            subprocess.run(["rm", "-rf", self.sandbox / "out"], check=True)

    def test_entries_that_overlap_are_refused_on_opening(self):
        self.put(addon([Entry(b"files/a.m", b"a" * 100),
                        Entry(b"files/b.m", b"a" * 100, local=False, offset=0)]))
        self.refused("info", "p.kraddon")
        self.every_command()

    def test_one_kernel_for_a_thousand_names_is_refused(self):
        kernel = addon([Entry(b"files/0.m", bytes(1 << 18), DEFLATED)])
        at = len(build(kernel[:-1])) - 22 - sum(46 + len(entry.name) for entry in kernel[:-1])
        names = [Entry(b"files/%d.m" % number, bytes(1 << 18), DEFLATED, packed=kernel[-1].data(),
                       local=False, offset=at) for number in range(1, 1000)]
        self.put(kernel + names)
        self.refused("list", "p.kraddon")
        self.every_command()

    def test_local_headers_that_differ_are_refused(self):
        content = b"content " * 50
        for different in ({"local_name": b"files/b.m"}, {"local_method": 0}, {"local_size": 1},
                          {"local_crc": 1}, {"local_name": b"../evil.m"}):
            with self.subTest(different):
                self.put(addon([Entry(b"files/a.m", content, DEFLATED, **different)]))
                self.refused("extract", "p.kraddon", "-d", "out", "--force")
                self.assertEqual(self.extracted(), {})
                self.refused("verify", "p.kraddon", "--opc")
                self.every_command()

    def test_wrong_sizes_and_checksums_are_refused(self):
        content = b"content " * 50
        for wrong in ({"crc": 1}, {"size": 399}, {"size": 401}, {"size": 0}, {"size": 0xFFFFFFF0},
                      {"packed_size": 1}, {"packed_size": 0x7FFFFFFF}, {"packed": b"\xff" * 50},
                      {"packed": b""}):
            with self.subTest(wrong):
                self.put(addon([Entry(b"files/a.m", content, DEFLATED, **wrong)]))
                self.refused("extract", "p.kraddon", "-d", "out", "--force")
                self.assertEqual(self.extracted(), {})
                self.refused("verify", "p.kraddon", "--opc")
                self.every_command()

    def test_encrypted_entries_and_unknown_methods_are_refused(self):
        for odd in ({"flags": 1}, {"flags": 64}, {"flags": 1 << 13}, {"method": 99}, {"method": 12},
                    {"method": 95}, {"method": 14}, {"method": 65535}):
            with self.subTest(odd):
                self.put(addon([Entry(b"files/a.m", b"x", packed=b"x", **odd)]))
                self.refused("extract", "p.kraddon", "-d", "out")
                self.every_command()

    def test_a_package_cut_anywhere_is_refused(self):
        whole = build(addon([Entry(b"files/a.m", b"content " * 20, DEFLATED)]))
        for size in [*range(0, len(whole), 13), *range(len(whole) - 30, len(whole))]:
            self.put(whole[:size])
            self.refused("extract", "p.kraddon", "-d", "out")
            self.refused("verify", "p.kraddon")
        self.assertEqual(self.extracted(), {})

    def test_a_package_with_any_byte_changed_gets_an_answer(self):
        whole = build(addon([Entry(b"files/a.m", b"content " * 20, DEFLATED)]))
        for at in range(0, len(whole), 7):
            changed = bytearray(whole)
            changed[at] ^= 0xFF
            self.put(bytes(changed))
            self.hostile("extract", "p.kraddon", "-d", "out", "--force")
            self.hostile("verify", "p.kraddon")

    def test_what_is_no_file_is_refused(self):
        (self.sandbox / "folder.kraddon").mkdir()
        os.mkfifo(self.sandbox / "fifo.kraddon")
        (self.sandbox / "loop.kraddon").symlink_to("loop.kraddon")
        for name in ("folder.kraddon", "fifo.kraddon", "loop.kraddon", "/dev/zero", "/dev/null"):
            for words in EVERY_COMMAND:
                self.refused(words[0], name, *words[1:])


class Size(HostileTest):

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


class Documents(HostileTest):

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
