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

import kraddontest
from hostilezip import DEFLATED, Entry, addon, build

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


turns = itertools.count()


def sample(commands):
    """All of them; under the sanitizers, which are slow to start, some in turn."""
    if not SANITIZED:
        return commands
    turn = next(turns)
    return [words for at, words in enumerate(commands)
            if (at + turn) % 3 == 0 or words[0] == "verify"]


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

    def test_what_is_not_a_regular_file_is_refused(self):
        (self.sandbox / "folder.kraddon").mkdir()
        os.mkfifo(self.sandbox / "fifo.kraddon")
        (self.sandbox / "loop.kraddon").symlink_to("loop.kraddon")
        for name in ("folder.kraddon", "fifo.kraddon", "loop.kraddon", "/dev/zero", "/dev/null"):
            for words in EVERY_COMMAND:
                self.refused(words[0], name, *words[1:])


if __name__ == "__main__":
    kraddontest.main()
