# SPDX-License-Identifier: MIT
"""What reading takes at most: 64 MB and 64 bytes for each byte of the package; 4 bytes for each
unpacked byte of content types, relationships and the table of the file tree; 8 for each of a
document that is asked for, and 256 for each node of its DOM. docs/limits.md has the figures."""

import os
import subprocess
import sys
import unittest

import kraddontest
import worst_inputs

with open(kraddontest.KRADDON, "rb") as program:
    SANITIZED = b"__asan_init" in program.read()

# A process of its own: what a process took before it started the program would count.
MEASURE = """
import os, subprocess, sys
null = open(os.devnull, "w")
child = subprocess.Popen(sys.argv[1:], stdout=null, stderr=null)
_, status, usage = os.wait4(child.pid, 0)
print(os.waitstatus_to_exitcode(status), usage.ru_maxrss << 10,
      round(usage.ru_utime + usage.ru_stime, 2))
"""
EVERY = (("info",), ("set", "properties", "summary=changed"), ("diff", "p.kraddon"))
OF_THE_TREE = (*EVERY, ("list", "--json"), ("preview", "-o", "-"), ("call", "addonGetFileList"),
               ("remove", "a.m"))
# All inputs take minutes; scripts/test-long limits reads them all.
IS_FULL = os.environ.get("KRADDON_ALL_LIMITS") == "1"


@unittest.skipIf(SANITIZED, "the sanitizers need memory of their own")
class Limits(kraddontest.CliTest):

    def measure(self, *words):
        """Exit code, bytes and seconds of CPU."""
        done = subprocess.run([sys.executable, "-I", "-S", "-c", MEASURE, kraddontest.KRADDON,
                               *words], cwd=self.folder, env=self.environment(), check=True,
                              capture_output=True, text=True, timeout=300)
        code, size, seconds = done.stdout.split()
        return int(code), int(size), float(seconds)

    @staticmethod
    def bound(given, words):
        size, tables = len(given.content), given.tables
        # It reads two packages: here, one twice.
        count = 2 if words[0] == "diff" else 1
        bytes_ = 64_000_000 + count * (64 * size + 4 * tables)
        return bytes_ + 8 * given.document + 256 * given.nodes

    def check(self, name, given, commands):
        for words in commands:
            self.path("p.kraddon").write_bytes(given.content)
            operands = ((words[1], "p.kraddon") if words[0] == "call" else
                        ("p.kraddon", *words[1:]))
            code, size, seconds = self.measure(words[0], *operands)
            bound = self.bound(given, words)
            if "KRADDON_FIGURES" in os.environ:
                print(f"{name}: {' '.join(words)}: package {len(given.content)}, tables "
                      f"{given.tables}, document {given.document}: {size / 1e6:.0f} of "
                      f"{bound / 1e6:.0f} MB, {seconds} s", flush=True)
            with self.subTest((name, words)):
                self.assertIn(code, (0, 1, 2) if words[0] == "diff" else (0, 1))
                self.assertLess(size, bound)

    def without_document(self, given):
        """For commands that do not read the table as a document."""
        return worst_inputs.Input(given.content, given.tables)

    def test_tables(self):
        for name, make in worst_inputs.TABLES.items():
            given = make()
            self.check(name, self.without_document(given),
                       OF_THE_TREE if "folders" in name else EVERY)
            self.check(name, given, [("verify",)])

    @unittest.skipUnless(IS_FULL, "takes minutes: scripts/test-long limits")
    def test_markup(self):
        for name, body in worst_inputs.MARKUP.items():
            nodes = worst_inputs.NODES.get(name, 0)
            self.check(f"{name}, types", worst_inputs.packed(worst_inputs.addon(
                [worst_inputs.FILE], types=body)), [("verify",)])
            self.check(f"{name}, relationships", worst_inputs.packed(worst_inputs.addon(
                [worst_inputs.FILE], relationships=body)), [("verify",)])
            table = worst_inputs.tree(body, nodes=nodes)
            self.check(f"{name}, file tree", self.without_document(table), [("list",)])
            self.check(f"{name}, file tree", table, [("verify",)])
            self.check(f"{name}, document", worst_inputs.core(body, nodes),
                       [("verify",), ("get", "properties")])


if __name__ == "__main__":
    kraddontest.main()
