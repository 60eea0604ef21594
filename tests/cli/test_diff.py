# SPDX-License-Identifier: MIT
"""kraddon diff"""

import os
import subprocess
import zipfile

import kraddontest
from differing import DiffTest, side

# Two texts of one length and one CRC-32.
TWINS = ("plumless", "buckeroo")


class Outcomes(DiffTest):

    def rewrite(self, name, changed):
        """Has another program write the package, with these entries added or replaced."""
        entries = {**self.entries(name), **changed}
        with zipfile.ZipFile(self.path(name), "w") as archive:
            for entry, content in entries.items():
                archive.writestr(entry, content)

    def test_packages_that_say_the_same_are_the_same(self):
        self.package("a.kraddon", {"x.m": "x" * 2000, "void/": ""})
        self.ok("create", "b.kraddon", "a.kraddon.src", "--name", "Wave Tools", "--level", "0",
                "--timestamp", "5")
        self.assertNotEqual(self.path("a.kraddon").read_bytes(),
                            self.path("b.kraddon").read_bytes())

        self.assertEqual(self.ok("diff", "a.kraddon", "b.kraddon").out, b"")
        report = self.ok("diff", "a.kraddon", "b.kraddon", "--json").json

        self.assertEqual(report, {"schema": "kraddon.diff/1", "a": "a.kraddon", "b": "b.kraddon",
                                  "same": True, "properties": [], "documents": [], "files": []})
        self.assertEqual(list(report), ["schema", "a", "b", "same", "properties", "documents",
                                        "files"])

    def test_same_goes_with_the_digest(self):
        self.package("a.kraddon", {"x.m": "x"})
        original = self.path("a.kraddon").read_bytes()
        changes = [("set", "b.kraddon", "properties", "summary=s"),
                   ("set", "b.kraddon", "properties", "GUID=other", "--no-verify"),
                   ("set", "b.kraddon", "license", "text=t"),
                   ("mkdir", "b.kraddon", "void"),
                   ("remove", "b.kraddon", "x.m", "-q"),
                   ("set", "b.kraddon", "properties", "version=1.0")]
        for change in changes:
            self.path("b.kraddon").write_bytes(original)
            self.ok(*change)
            digests = {self.ok("info", name, "--field", "digest").text
                       for name in ("a.kraddon", "b.kraddon")}
            report = self.run_kraddon("diff", "a.kraddon", "b.kraddon", "--json")
            self.assertEqual(report.json["same"], len(digests) == 1, change)
            self.assertEqual(report.code, len(digests) - 1, change)

    def test_a_document_that_says_the_same_in_other_words_is_named(self):
        self.pair({}, {})
        for name in ("a.kraddon", "b.kraddon"):
            self.set(name, "license", {"type": "MIT", "text": "terms"})
        self.rewrite("b.kraddon", {
            "metadata/license.xml":
            self.entries("b.kraddon")["metadata/license.xml"] + b"<!-- reviewed -->"})

        self.assertEqual(self.lines(), ["license: the part differs, its fields are the same"])
        self.assertEqual(self.report()["documents"],
                         [{"document": "license", "change": "changed", "fields": []}])

    def test_properties_that_say_the_same_in_other_words_are_named(self):
        self.pair({}, {})
        self.rewrite("b.kraddon", {
            "metadata/addonProperties.xml":
            self.entries("b.kraddon")["metadata/addonProperties.xml"] + b"<!-- reviewed -->"})

        self.assertEqual(self.lines(), ["properties: the part differs, its fields are the same"])
        self.assertEqual(self.lines("--stat")[:2], ["properties  same", "documents   1 changed"])
        self.assertEqual(self.report()["documents"],
                         [{"document": "properties", "change": "changed", "fields": []}])

    def test_files_that_are_not_in_the_tree_are_warned_of(self):
        self.pair({"a.m": "x"}, {"a.m": "x"})
        self.rewrite("b.kraddon", {"files/a b.m": b"x", "files/c%01.m": b"x"})

        for words in (("a.kraddon", "b.kraddon"), ("b.kraddon", "a.kraddon", "--json")):
            result = self.run_kraddon("diff", *words)
            self.assertEqual(result.code, 1)
            self.assertEqual(result.errors.splitlines(), [
                "kraddon: diff: warning: part '/files/c%01.m' is not a file of the tree: it holds a "
                "control character",
                "kraddon: diff: warning: item 'files/a b.m' is not a file of the tree: it is not a part"])
        quiet = self.run_kraddon("diff", "a.kraddon", "b.kraddon", "--quiet")
        self.assertEqual((quiet.code, quiet.errors), (1, ""))

    def test_failures_are_trouble(self):
        self.pair({}, {})
        self.write("broken.kraddon", "no package")
        self.trouble("a.kraddon", "missing.kraddon",
                     message="cannot open package 'missing.kraddon': No such file or directory")
        for words in (("a.kraddon", "broken.kraddon"), ("broken.kraddon", "a.kraddon")):
            result = self.run_kraddon("diff", *words)
            self.assertEqual((result.code, result.out), (2, b""))
            self.assertIn("'broken.kraddon'", result.errors)

    def test_output_that_cannot_be_written_is_trouble(self):
        self.pair({"x": ""}, {})
        with open("/dev/full", "wb") as full:
            result = self.run_kraddon("diff", "a.kraddon", "b.kraddon", stdout=full)
        self.assertEqual(result.code, 2)
        self.assertEqual(result.errors, "kraddon: diff: cannot write 'standard output': "
                                        "No space left on device\n")

    def test_damaged_content_is_trouble_and_not_a_difference(self):
        content = os.urandom(5000)
        self.pair({"x.bin": content}, {"x.bin": content})
        raw = self.path("b.kraddon").read_bytes()
        at = raw.index(content[:64])
        self.path("b.kraddon").write_bytes(raw[:at + 4000] + bytes([raw[at + 4000] ^ 1])
                                           + raw[at + 4001:])
        for words in ([], ["--json"]):
            result = self.run_kraddon("diff", "a.kraddon", "b.kraddon", *words)
            self.assertEqual((result.code, result.out), (2, b""))
            self.assertIn("x.bin", result.errors)

    def test_wrong_usage(self):
        self.misused("diff", "a.kraddon",
                     message="missing operand 'B': the package or folder to compare it with")
        for one, other in (("stat", "json"), ("text", "json"), ("text", "stat")):
            self.misused("diff", "a", "b", f"--{one}", f"--{other}",
                         message=f"bad option '--{one}': it cannot be combined with --{other}")

    def test_quiet_still_answers(self):
        self.pair({"x": ""}, {})
        self.assertEqual(self.lines("--quiet"), ["- x  0 B"])

    def test_examples_stand_in_the_help(self):
        self.assertIn("kraddon diff ", self.ok("diff", "--help").text.split("examples:")[1])


class Files(DiffTest):

    def test_each_change_has_its_mark(self):
        self.pair({"gone.m": "gone", "lib/a.m": "a" * 1234, "same.m": "s", "old/name.m": "moved",
                   "void/": ""},
                  {"lib/a.m": "b" * 1340, "lib/new.m": "", "same.m": "s", "new/name.m": "moved",
                   "bare/": ""})
        self.assertEqual(self.lines(), [
            "+ bare/",
            "- gone.m  4 B",
            "~ lib/a.m  1.2 kB -> 1.3 kB",
            "+ lib/new.m  0 B",
            "> old/name.m -> new/name.m  5 B",
            "- void/"])

    def test_sizes_that_look_alike_are_given_in_bytes(self):
        self.pair({"a": "x" * 1234, "b": "x"}, {"a": "x" * 1235, "b": "y"})
        self.assertEqual(self.lines(), ["~ a  1234 B -> 1235 B", "~ b  1 B"])

    def test_json_has_sizes_and_hashes(self):
        self.pair({"c.m": "old", "from.m": "moved", "r.m": "removed", "void/": ""},
                  {"a.m": "added", "bare/": "", "c.m": "newer", "to.m": "moved"})
        folder = {"size": None, "sha256": None}
        self.assertEqual(self.report()["files"], [
            {"path": "a.m", "change": "added", "from": None, "a": None, "b": side("added")},
            {"path": "bare/", "change": "added", "from": None, "a": None, "b": folder},
            {"path": "c.m", "change": "changed", "from": None, "a": side("old"),
             "b": side("newer")},
            {"path": "r.m", "change": "removed", "from": None, "a": side("removed"), "b": None},
            {"path": "to.m", "change": "moved", "from": "from.m", "a": side("moved"),
             "b": side("moved")},
            {"path": "void/", "change": "removed", "from": None, "a": folder, "b": None}])
        self.assertEqual(list(self.report()["files"][0]), ["path", "change", "from", "a", "b"])

    def test_files_with_equal_checksums_are_still_compared(self):
        self.pair({"x": TWINS[0]}, {"x": TWINS[1]})
        self.assertEqual(self.lines(), ["~ x  8 B"])
        self.assertEqual(self.report()["files"][0]["b"], side(TWINS[1]))
        self.pair({"x": TWINS[0]}, {"y": TWINS[1]})
        self.assertEqual(self.lines(), ["- x  8 B", "+ y  8 B"])

    def test_empty_files_move_only_with_their_name(self):
        self.pair({"a/e.m": "", "gone.m": "", "x": "1"}, {"b/e.m": "", "new.m": "", "x": "1"})
        self.assertEqual(self.lines(),
                         ["> a/e.m -> b/e.m  0 B", "- gone.m  0 B", "+ new.m  0 B"])

    def test_of_copies_the_one_that_kept_its_name_moved(self):
        self.pair({"1/a.m": "same", "1/b.m": "same"},
                  {"2/b.m": "same", "2/c.m": "same", "3/a.m": "same", "3/d.m": "same"})
        self.assertEqual(self.lines(), ["> 1/b.m -> 2/b.m  4 B", "+ 2/c.m  4 B",
                                        "> 1/a.m -> 3/a.m  4 B", "+ 3/d.m  4 B"])

    def test_of_copies_without_a_name_in_common_the_first_ones_moved(self):
        self.pair({"a": "same", "b": "same", "c": "same"}, {"x": "same", "y": "same"})
        self.assertEqual(self.lines(), ["- c  4 B", "> a -> x  4 B", "> b -> y  4 B"])

    def test_a_copy_of_what_stayed_is_added(self):
        self.pair({"a": "same"}, {"a": "same", "b": "same"})
        self.assertEqual(self.lines(), ["+ b  4 B"])

    def test_a_file_that_became_a_folder_is_two_changes(self):
        self.pair({"x": "f"}, {"x/": ""})
        self.assertEqual(self.lines(), ["- x  1 B", "+ x/"])

    def test_paths_of_any_kind_are_told_apart(self):
        names = ["é", "e\u0301", "A.M", "a.m", "-x", "[a]", "a\nb", "a b", "\U0001f30a", "\uffee"]
        self.pair({name: "1" for name in names}, {name: "2" for name in names})
        paths = [file["path"] for file in self.report()["files"]]
        self.assertEqual(paths, sorted(names, key=str.encode))

    def test_stat_counts(self):
        self.pair({"gone": "1", "old": "moved", "c": "1", "s": "s", "t": "t"},
                  {"new": "moved", "c": "22", "s": "s", "t": "t", "add": "", "void/": ""})
        self.ok("set", "--no-verify", "b.kraddon", "properties", "summary=x", "version=2")
        self.ok("set", "b.kraddon", "license", "text=t")
        self.assertEqual(self.lines("--stat"), [
            "properties  2 changed",
            "documents   1 added",
            "files       2 added, 1 removed, 1 changed, 1 moved, 2 same",
            "content     9 B"])

    def test_stat_of_the_same(self):
        self.pair({"a": "1"}, {"a": "1"})
        self.assertEqual(self.ok("diff", "a.kraddon", "b.kraddon", "--stat").text.splitlines(),
                         ["properties  same", "documents   same", "files       1 same",
                          "content     1 B"])

    def test_many_files_are_compared_soon(self):
        count = 30000
        for name, odd in (("a.kraddon", -1), ("b.kraddon", 777)):
            self.package(name, {"seed.m": ""})
            with zipfile.ZipFile(self.path(name), "a") as archive:
                for i in range(count):
                    archive.writestr(f"files/d{i % 100}/f{i}.m", f"content {i == odd} {i}")
        self.assertEqual(self.lines(), ["~ d77/f777.m  17 B -> 16 B"])

    def test_large_files_take_little_memory(self):
        # Not written from this process: what it has used would count for those that it starts.
        for name, end in (("a.kraddon", ""), ("b.kraddon", "x")):
            self.write(f"{name}.src/end", end)
            subprocess.run("truncate -s 200M big; cat big end > whole; rm big", shell=True,
                           cwd=self.path(f"{name}.src"), check=True)
            self.package(name, {}, "--level", "1")
        # The same size and checksum is read to the end on both sides.
        for words, code in ((("a.kraddon", "a.kraddon"), 0), (("a.kraddon", "b.kraddon"), 1)):
            process = subprocess.Popen([kraddontest.KRADDON, "diff", "--json", *words],
                                       cwd=self.folder, stdout=subprocess.DEVNULL)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            self.assertEqual(process.returncode, code)
            self.assertLess(usage.ru_maxrss, 150 << 10)  # in kB


class Selections(DiffTest):

    def setUp(self):
        super().setUp()
        self.pair({"a.m": "1", "lib/b.m": "1", "lib/c.txt": "1", "only/x.m": ""},
                  {"a.m": "2", "lib/b.m": "2", "lib/c.txt": "2", "new/y.m": "y"})
        self.ok("set", "b.kraddon", "properties", "summary=s")

    def test_paths_choose_files_and_nothing_else(self):
        self.assertEqual(self.lines("lib"), ["~ lib/b.m  1 B", "~ lib/c.txt  1 B"])
        self.assertEqual(self.lines("/a.m", "lib/b.m"), ["~ a.m  1 B", "~ lib/b.m  1 B"])
        report = self.report("a.m")
        self.assertEqual((report["properties"], len(report["files"])), ([], 1))

    def test_a_path_may_be_on_either_side(self):
        self.assertEqual(self.lines("only"), ["- only/x.m  0 B"])
        self.assertEqual(self.lines("new/y.m"), ["+ new/y.m  1 B"])

    def test_what_is_chosen_may_be_the_same(self):
        self.ok("remove", "b.kraddon", "a.m")
        self.ok("add", "b.kraddon", "a.kraddon.src/a.m")
        self.assertEqual(self.ok("diff", "a.kraddon", "b.kraddon", "a.m").out, b"")

    def test_stat_counts_what_was_chosen(self):
        self.assertEqual(self.lines("--stat", "lib"),
                         ["files       2 changed", "content     2 B"])

    def test_patterns_choose(self):
        self.assertEqual(self.lines("--glob", "*.m", "!only/**"),
                         ["~ a.m  1 B", "~ lib/b.m  1 B", "+ new/y.m  1 B"])

    def test_a_path_that_names_nothing_is_trouble(self):
        self.trouble("a.kraddon", "b.kraddon", "lib", "*.m",
                     message="cannot find '*.m': neither of the two has anything with that name")
        self.trouble("a.kraddon", "b.kraddon", "--glob", "*.m", "*.q",
                     message="cannot find '*.q': neither of the two has anything with that name")


class Lines(DiffTest):

    def patched(self, a, b):
        """The text of --text, having checked that patch makes b's files of a's with it."""
        self.pair(a, b)
        text = self.differs("a.kraddon", "b.kraddon", "--text").out
        done = subprocess.run(["patch", "-p1", "-s", "-E"], input=text, capture_output=True,
                              cwd=self.path("a.kraddon.src"), check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        for name, content in b.items():
            expected = content if isinstance(content, bytes) else content.encode()
            self.assertEqual(self.path(f"a.kraddon.src/{name}").read_bytes(), expected, name)
        for name in set(a) - set(b):
            self.assertFalse(self.path(f"a.kraddon.src/{name}").exists(), name)
        return text.decode(errors="surrogateescape")

    def test_lines_that_differ_are_shown(self):
        text = self.patched({"lib/a.m": "1\n2\n3\n4\n5\n6\n"},
                            {"lib/a.m": "1\n2\n3\n4\nfive\n6\n"})
        self.assertEqual(text.splitlines(), [
            "~ lib/a.m  12 B -> 15 B", "--- a/lib/a.m", "+++ b/lib/a.m", "@@ -2,5 +2,5 @@", " 2",
            " 3", " 4", "-5", "+five", " 6"])

    def test_patch_takes_the_output_whatever_the_files(self):
        self.patched(
            {"gone.m": "x\n", "a b.m": "1\n2\n", 'q"u\\o.m': "1\n", "tab\there.m": "1\n",
             "é.m": "1\n", "blank ": "1\n", "no end": "x", "crlf": "a\r\nb\r\n", "latin": b"\xe9\n\xe8\n",
             "marks": "--- a\n+++ b\n@@ -1 +1 @@\n- x\n"},
            {"new.m": "y\nz\n", "a b.m": "1\n3\n", 'q"u\\o.m': "2\n", "tab\there.m": "2\n",
             "é.m": "2\n", "blank ": "2\n", "no end": "x\n", "crlf": "a\r\nc\r\n", "latin": b"\xe9\n\xe7\n",
             "marks": "--- a\n+++ c\n@@ -1 +1 @@\n- y\n"})

    def test_a_name_with_line_ends_does_not_become_part_of_the_patch(self):
        name = "x\n--- /dev/null\n+++ b/evil\n@@ -0,0 +1 @@\n+evil"
        text = self.patched({name: "1\n", "a.m": "1\n"}, {"a.m": "2\n"})
        self.assertIn("\n- x\\n--- /dev/null\\n+++ b/evil", text)
        self.assertFalse(self.path("a.kraddon.src/evil").exists())

    def test_binary_files_are_only_said_to_differ(self):
        self.pair({"a.bin": b"\0\1\n", "new.bin": b"\0", "t": "x\n"},
                  {"a.bin": b"\0\2\n", "b.bin": b"\0\0", "t": b"x\0"})
        self.ok("remove", "a.kraddon", "new.bin")
        self.assertEqual(self.lines("--text"), [
            "~ a.bin  3 B", "Binary files a/a.bin and b/a.bin differ",
            "+ b.bin  2 B", "Binary files /dev/null and b/b.bin differ",
            "~ t  2 B", "Binary files a/t and b/t differ"])

    def test_very_large_texts_are_not_taken_apart(self):
        self.pair({"big": "line\n" * (4 << 20), "many": "\n" * (2 << 20)},
                  {"big": "line\n" * (4 << 20) + "x\n", "many": "\n" * (2 << 20) + "x"})
        lines = self.lines("--text")
        self.assertEqual([lines[1], lines[3]], [
            f"Files a/{name} and b/{name} differ, too large to show their lines"
            for name in ("big", "many")])

    def test_moved_and_empty_files_have_no_lines(self):
        self.pair({"a": "same\n", "void/": ""}, {"b": "same\n", "new": ""})
        self.assertEqual(self.lines("--text"), ["> a -> b  5 B", "+ new  0 B", "- void/"])

    def test_a_text_made_to_take_long_is_done_soon(self):
        twist = [("a\n" if (i * i) % 7 < 3 else "b\n") for i in range(400000)]
        self.pair({"t": "".join(twist)}, {"t": "".join(twist[::-1][:399990])})
        self.assertEqual(self.lines("--text")[1:3], ["--- a/t", "+++ b/t"])


class Colours(DiffTest):

    def setUp(self):
        super().setUp()
        self.pair({"a": "1\n", "r": "", "m": "moved"}, {"a": "2\n", "n": "new", "x": "moved"})

    def test_colours_are_on_request(self):
        plain = self.lines("--text")
        coloured = self.differs("a.kraddon", "b.kraddon", "--text", "--color", "always").text
        for code, line in (("33", "~ a  2 B"), ("36", "@@ -1 +1 @@"), ("31", "-1"), ("32", "+2"),
                           ("32", "+ n  3 B"), ("31", "- r  0 B"), ("36", "> m -> x  5 B")):
            self.assertIn(line, plain)
            self.assertIn(f"\x1b[{code}m{line}\x1b[0m\n", coloured)
        self.assertNotIn("\x1b", "".join(plain))

    def shown_on_terminal(self, *words, env=None):
        text = self.on_terminal("diff", "a.kraddon", "b.kraddon", *words, env=env, code=1)
        return text.replace(b"\r\n", b"\n").decode()

    def test_a_terminal_is_coloured_unless_told_not_to(self):
        self.assertIn("\x1b[33m~ a", self.shown_on_terminal())
        self.assertNotIn("\x1b", self.shown_on_terminal(env={"NO_COLOR": "1"}))
        self.assertNotIn("\x1b", self.shown_on_terminal("--color", "never"))

    def test_nothing_controls_a_terminal(self):
        self.pair({"a\x1bb": "x\ty\x1b[2J\n"}, {"a\x1bb": "x\tz\x1b[2J\n"})
        text = self.shown_on_terminal("--text", "--color", "never")
        self.assertNotIn("\x1b", text)
        self.assertIn("+x\tz\\x1b[2J\n", text.replace("       ", "\t"))


if __name__ == "__main__":
    kraddontest.main()
