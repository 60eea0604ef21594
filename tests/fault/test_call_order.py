# SPDX-License-Identifier: MIT
"""The order in which data reaches the disk: a power cut leaves the old package or the new one."""

import os
import re
import unittest

import faulttest
from faulttest import FaultTest
from tracing import can_trace, whole_lines

CALLS = ("openat,open,creat,write,pwrite64,copy_file_range,ftruncate,fsync,fdatasync,"
         "sync_file_range,rename,renameat,renameat2,link,linkat")
WRITES = ("write", "pwrite64", "copy_file_range", "ftruncate")
# "12345 fsync(5</folder/file>) = 0"
LINE = re.compile(r"^\d+ +(\w+)\((.*)\) += (-?\d+)")


class Call:
    def __init__(self, name, arguments):
        self.name, self.arguments = name, arguments
        self.files = re.findall(r"\d+<([^>]*)>", arguments)
        self.texts = re.findall(r'"([^"]*)"', arguments)


@faulttest.kraddontest.needs_proc  # for the names of open files
@unittest.skipUnless(can_trace(), "needs strace, and permission to trace")
class Order(FaultTest):

    def trace(self, *words):
        log = self.scratch / "trace"
        env = {"ASAN_OPTIONS": os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"}
        result = self.run_kraddon(*words, env=env,
                                  prefix=["strace", "-f", "-y", "-s", "4096", "-e",
                                          f"trace={CALLS}", "-o", log])
        self.assertEqual((result.code, result.errors), (0, ""))
        calls = []
        for line in whole_lines(log.read_text(errors="replace")):
            match = LINE.match(line)
            if match and int(match[3]) >= 0:
                calls.append(Call(match[1], match[2]))
        return calls

    def positions(self, calls, names, file):
        """The positions of these calls on an open file (for copying: those that write to it)."""
        return [i for i, call in enumerate(calls)
                if call.name in names and call.files and call.files[-1 if
                call.name == "copy_file_range" else 0] == str(file)]

    def temporary(self, calls, move, folder=None):
        """What the file was called that this call gave its name: it had none, or a temporary one."""
        folder = folder or self.folder
        name = calls[move].texts[0]
        for call in calls[:move]:
            if call.name == "linkat" and call.texts[-1] == name:
                name = call.texts[0]
        if not name.startswith("/proc/self/fd/"):
            self.assertEqual((self.folder / name).parent, folder)
            return self.folder / name
        found = {file for call in calls[:move] if call.name in WRITES for file in call.files
                 if re.fullmatch(re.escape(str(folder)) + r"/#\d+", file)}
        self.assertEqual(len(found), 1)
        return found.pop()

    def test_of_a_package_is_data_then_name_then_folder(self):
        self.make_inputs()
        for command in faulttest.known_commands():
            if not command.makes_package:
                continue
            with self.subTest(command=command.name):
                calls = self.trace(*command.words)
                self.check_order(calls, command.target)
                self.restore()

    def check_order(self, calls, target):
        moves = [i for i, call in enumerate(calls)
                 if call.name.startswith(("rename", "link")) and call.texts[-1] == target]
        self.assertEqual(len(moves), 1, "the package got its name once")
        temporary = self.temporary(calls, moves[0])
        writes = self.positions(calls, WRITES, temporary)
        flushes = self.positions(calls, ("fsync", "fdatasync"), temporary)
        folder = self.positions(calls, ("fsync",), self.folder)
        self.assertTrue(writes and flushes and folder)
        self.assertLess(max(writes), flushes[-1], "the last write was not flushed")
        self.assertLess(flushes[-1], moves[0], "it got its name before it was flushed")
        self.assertLess(moves[0], folder[-1], "the folder was not flushed after that")

    def test_of_files_beside_packages_is_content_then_name(self):
        self.make_inputs()
        for words, target in ((["screenshot", "p.kraddon", "-o", "old.png"], "old.png"),
                              (["get", "p.kraddon", "license", "-o", "license.json"],
                               "license.json")):
            calls = self.trace(*words)
            moves = [i for i, call in enumerate(calls)
                     if call.name.startswith("rename") and call.texts[-1].endswith(target)]
            self.assertEqual(len(moves), 1)
            writes = self.positions(calls, WRITES, self.temporary(calls, moves[0]))
            self.assertTrue(writes)
            self.assertLess(max(writes), moves[0])

    def test_of_an_extraction_does_not_wait_for_the_disk(self):
        """Files that can be extracted again are not flushed."""
        self.make_inputs()
        calls = self.trace("extract", "p.kraddon", "-d", "there", "--force")
        self.assertEqual([call.name for call in calls if "sync" in call.name], [])
        moves = [i for i, call in enumerate(calls)
                 if call.name.startswith("rename") and call.texts[-1] == "a.m"]
        self.assertEqual(len(moves), 1, "an existing file is replaced in one step")
        writes = self.positions(calls, WRITES,
                                self.temporary(calls, moves[0], self.path("there")))
        self.assertTrue(writes)
        self.assertLess(max(writes), moves[0])

    def test_of_a_package_that_does_not_change_writes_nothing(self):
        self.make_inputs()
        self.ok("set", "p.kraddon", "license", "license.json")
        calls = self.trace("set", "p.kraddon", "license", "license.json")
        written = [call.files for call in calls if call.name in WRITES
                   and call.files and call.files[-1].startswith(str(self.folder))]
        self.assertEqual(written, [])
        self.assertEqual([call.name for call in calls if call.name.startswith("rename")], [])


if __name__ == "__main__":
    faulttest.main()
