# SPDX-License-Identifier: MIT
"""kraddon diff with a folder and its manifest on one side or both"""

import os
import signal
import subprocess
import time

import kraddontest
from differing import DiffTest


class Folders(DiffTest):

    MANIFEST = '[package]\nname = "Wave Tools"\nversion = "1.0"\n'

    def setUp(self):
        super().setUp()
        self.project("one", {"lib/a.m": "a\n", "b.m": "b\n"})
        self.scratch = self.path("scratch")
        self.scratch.mkdir()
        self.ok("build", "one", "-o", "one.kraddon", "--no-verify")

    def project(self, name, files, manifest=MANIFEST):
        self.tree(files, name)
        self.write(f"{name}/kraddon.toml", manifest)

    def run_kraddon(self, *words, env=None, **kw):
        return super().run_kraddon(*words, env={"TMPDIR": str(self.path("scratch")), **(env or {})},
                                   **kw)

    def tearDown(self):
        self.assertEqual(os.listdir(self.scratch), [])
        super().tearDown()

    def test_a_folder_is_the_same_as_what_was_built_of_it(self):
        for words in (("one", "one.kraddon"), ("one.kraddon", "one"), ("one", "one/")):
            self.assertEqual(self.ok("diff", *words).out, b"", words)
        report = self.ok("diff", "one.kraddon", "one", "--json").json
        self.assertEqual((report["a"], report["b"], report["same"]), ("one.kraddon", "one", True))

    def test_what_changed_in_the_folder_is_shown(self):
        self.write("one/b.m", "B\n")
        self.write("one/lib/new.m", "n\n")
        self.write("one/kraddon.toml", self.MANIFEST.replace("1.0", "1.1")
                   + '[license]\ntype = "MIT"\ntext = "terms"\n')
        lines = ['properties.version: "1.0" -> "1.1"', "license: added", "~ b.m  2 B",
                 "+ lib/new.m  2 B"]
        self.assertEqual(self.differs("one.kraddon", "one").text.splitlines(), lines)
        self.assertEqual(self.differs("one.kraddon", "one", "b.m", "--text").text.splitlines(),
                         ["~ b.m  2 B", "--- a/b.m", "+++ b/b.m", "@@ -1 +1 @@", "-b", "+B"])

    def test_two_folders_are_compared(self):
        self.project("two", {"lib/a.m": "a\n", "c.m": "b\n"})
        self.assertEqual(self.differs("one", "two").text, "> b.m -> c.m  2 B\n")

    def test_the_folder_stays_as_it_was(self):
        before = sorted(os.listdir(self.path("one")))
        self.ok("diff", "one", "one.kraddon")
        self.assertEqual(sorted(os.listdir(self.path("one"))), before)

    def test_a_folder_without_a_manifest_is_trouble(self):
        self.path("bare").mkdir()
        for words in (("bare", "one.kraddon"), ("one.kraddon", "bare"), ("one", "bare")):
            result = self.run_kraddon("diff", *words)
            self.assertEqual((result.code, result.out), (2, b""))
            line, hint = result.errors.splitlines()
            self.assertTrue(line.startswith("kraddon: diff: ") and "bare" in line, line)
            self.assertTrue(hint.startswith("hint: ") and "kraddon init" in hint, hint)

    def test_a_bad_manifest_is_trouble(self):
        self.write("one/kraddon.toml", "[package]\nname = 1\nversion = \"1\"\n")
        for words in (("one", "one.kraddon"), ("one.kraddon", "one")):
            result = self.run_kraddon("diff", *words)
            self.assertEqual((result.code, result.out), (2, b""))
            self.assertTrue(result.errors.startswith("kraddon: diff: bad manifest "
                                                     "'one/kraddon.toml:2:8': package.name: "),
                            result.errors)

    def test_the_private_file_is_not_part_of_the_folder(self):
        for words in (("one", "one.kraddon"), ("one.kraddon", "one")):
            result = self.ok("diff", *words, env={"TMPDIR": str(self.path("one"))})
            self.assertEqual(result.out, b"", words)

    def test_the_private_file_of_one_folder_is_not_part_of_the_other(self):
        self.project("two", {"lib/a.m": "a\n", "b.m": "b\n"},
                     self.MANIFEST + '[files]\ndefault-excludes = false\n'
                                     'exclude = ["kraddon.toml"]\n')
        for words in (("one", "two"), ("two", "one")):
            result = self.ok("diff", *words, env={"TMPDIR": str(self.path("two"))})
            self.assertEqual(result.out, b"", words)

    def test_no_place_for_a_private_file_is_trouble(self):
        self.trouble("one", "one.kraddon", env={"TMPDIR": "/nowhere"},
                     message="cannot create a folder in '/nowhere': No such file or directory")

    def test_an_interrupt_leaves_nothing_behind(self):
        self.write("one/big.bin", os.urandom(64 << 20))
        for number in (signal.SIGINT, signal.SIGTERM):
            process = subprocess.Popen([kraddontest.KRADDON, "diff", "one", "one"],
                                       cwd=self.folder, stdout=subprocess.PIPE,
                                       stderr=subprocess.PIPE,
                                       env=self.environment({"TMPDIR": str(self.scratch)}))
            while process.poll() is None and not os.listdir(self.scratch):
                time.sleep(0.001)
            process.send_signal(number)
            self.assertEqual((*process.communicate(timeout=60), process.returncode),
                             (b"", b"", -number))
            self.assertEqual(os.listdir(self.scratch), [])


if __name__ == "__main__":
    kraddontest.main()
