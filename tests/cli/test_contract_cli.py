# SPDX-License-Identifier: MIT
"""What users and their scripts rely on, whatever the command."""

import os
import shutil
import signal
import subprocess
import zipfile

import kraddontest
import projecttest
from kraddontest import KRADDON
from projecttest import png

# A line for each command, with a package p.kraddon and a project in src to work on.
EVERY_COMMAND = [
    ["create", "new.kraddon", "src", "--name", "New"], ["build", "src", "-o", "b.kraddon"],
    ["init", "src", "--force"], ["info", "p.kraddon"], ["list", "p.kraddon"],
    ["extract", "p.kraddon"], ["add", "p.kraddon", "shot.png"], ["remove", "p.kraddon", "a.m"],
    ["mkdir", "p.kraddon", "new"], ["mv", "p.kraddon", "new", "newer"], ["get", "p.kraddon", "properties"],
    ["set", "p.kraddon", "license", "text=terms"], ["unset", "p.kraddon", "license"],
    ["screenshot", "p.kraddon", "shot.png"], ["screenshot", "p.kraddon"],
    ["verify", "p.kraddon"], ["diff", "p.kraddon", "p.kraddon"], ["preview", "p.kraddon"],
    ["sbom", "p.kraddon"], ["index", "site", "p.kraddon"],
    ["call", "addonGetFileList", "p.kraddon"], ["completion", "bash"], ["schema", "info"],
    ["help"]]

WRITERS = [
    ["add", "p.kraddon", "text.m"], ["set", "p.kraddon", "license", "text=" + "a long text " * 99],
    ["screenshot", "p.kraddon", "long.png"], ["create", "p.kraddon", "src", "--name", "W",
                                              "--force", "--guid", "g"],
    ["build", "src", "-o", "p.kraddon", "--force"]]


class EveryCommand(projecttest.ProjectTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", {"a.m": "a"})
        self.project(files={"a.m": "a"}, folder="src")
        self.write("shot.png", png())

    def test_none_waits_for_what_is_typed(self):
        # Nobody ever writes to this input, and it does not end.
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)
        for words in EVERY_COMMAND:
            with self.subTest(words=words):
                done = subprocess.run([KRADDON, *words], cwd=self.folder, stdin=reader,
                                      stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                                      env=self.environment(), timeout=60, check=False)
                self.assertEqual(done.returncode, 0, done.stderr)

    def test_none_needs_an_input_at_all(self):
        for words in EVERY_COMMAND:
            with self.subTest(words=words):
                done = subprocess.run(["/bin/sh", "-c", 'exec "$0" "$@" <&-', KRADDON, *words],
                                      cwd=self.folder, stdout=subprocess.DEVNULL,
                                      stderr=subprocess.PIPE, env=self.environment(),
                                      timeout=60, check=False)
                self.assertEqual(done.returncode, 0, done.stderr)

    def test_each_answers_wrong_usage_with_a_line_and_its_own_usage(self):
        before = self.names()
        for words in EVERY_COMMAND:
            with self.subTest(words=words):
                result = self.misused(*words, "--zzzz", message="unknown option '--zzzz': no "
                                                                "option has that name")
                self.assertEqual(len([line for line in result.errors.splitlines()
                                      if line.startswith("kraddon: ")]), 1)
        self.assertEqual(self.names(), before)

    def test_each_works_in_the_folder_that_it_is_sent_to(self):
        elsewhere = self.path("elsewhere")
        elsewhere.mkdir()
        for words in EVERY_COMMAND:
            with self.subTest(words=words):
                done = subprocess.run([KRADDON, "-C", "..", *words], cwd=elsewhere,
                                      stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                                      env=self.environment(), timeout=60, check=False)
                self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(self.names("elsewhere"), [])


class Output(projecttest.ProjectTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", {"a.m": "a"})
        self.write("shot.png", png())
        self.ok("screenshot", "p.kraddon", "shot.png")
        self.package("q.kraddon", {"b.m": "b"})
        self.project(files={"a.m": "a"}, folder="src")
        self.before = self.path("p.kraddon").read_bytes()

    PRINTERS = [
        ["add", "p.kraddon", "shot.png", "--dry-run"], ["remove", "p.kraddon", "a.m", "--dry-run"],
        ["build", "src", "--dry-run"], ["build", "src", "--dry-run", "--json"],
        ["build", "src", "-o", "p.kraddon", "--force", "--json"],
        ["init", "src", "--stdout"], ["extract", "p.kraddon", "--dry-run"],
        ["screenshot", "p.kraddon", "-o", "-"], ["preview", "p.kraddon", "-o", "-"],
        ["sbom", "p.kraddon"],
        ["verify", "p.kraddon"], ["verify", "p.kraddon", "--json"], ["verify", "--explain", "101"],
        ["verify", "p.kraddon", "--format", "sarif"], ["call", "addonGetFileList", "p.kraddon"],
        ["diff", "p.kraddon", "q.kraddon"], ["completion", "bash"], ["schema", "info"],
        ["create", "--help"]]

    def test_what_cannot_be_written_is_a_failure_of_each_that_prints(self):
        for words in self.PRINTERS:
            with self.subTest(words=words), open("/dev/full", "wb") as full:
                result = self.run_kraddon(*words, stdout=full)
                self.assertEqual(result.code, 2 if words[0] == "diff" else 1)
                self.assertIn(f"kraddon: {words[0]}: cannot write 'standard output': No space "
                              "left on device\n", result.errors)
        self.assertEqual(self.path("p.kraddon").read_bytes(), self.before)

    def on_broken_pipe(self, name, *words):
        """Runs it with an output whose reader is gone."""
        reader, writer = os.pipe()
        os.close(reader)
        try:
            return subprocess.run([KRADDON, *words], cwd=self.folder, env=self.environment(),
                                  timeout=60, check=False, **{
                                      "stdout": subprocess.PIPE, "stderr": subprocess.PIPE,
                                      name: writer})
        finally:
            os.close(writer)

    def test_a_closed_pipe_ends_each_that_prints_and_nothing_is_left(self):
        names = self.names()
        for words in self.PRINTERS:
            with self.subTest(words=words):
                done = self.on_broken_pipe("stdout", *words)
                self.assertEqual(done.returncode, -signal.SIGPIPE)
                self.assertNotIn(b"standard output", done.stderr)
        self.assertEqual(self.names(), names)
        self.assertEqual(self.path("p.kraddon").read_bytes(), self.before)

    def test_files_of_a_package_are_never_written_over_it(self):
        self.path("out").mkdir()
        self.package("out/own.kraddon", {"a.m": "new", "own.kraddon": "I am the one"})
        self.write("out/a.m", "old")
        self.path("link.kraddon").symlink_to("out/own.kraddon")
        before = self.path("out/own.kraddon").read_bytes()
        for package in ("out/own.kraddon", "link.kraddon"):
            for more in ([], ["--dry-run"]):
                self.fails("extract", package, "-d", "out", "--force", *more, message="cannot "
                           "extract 'out/own.kraddon': it is the package itself")
        self.assertEqual(self.path("out/own.kraddon").read_bytes(), before)
        self.assertEqual(self.path("out/a.m").read_text(), "old")
        self.ok("extract", "out/own.kraddon", "a.m", "-d", "out", "--force")
        self.assertEqual(self.path("out/a.m").read_text(), "new")

    def test_messages_that_nobody_reads_stop_no_work(self):
        for words in (["create", "p.kraddon", "src", "--name", "x", "--force"],
                      ["build", "src", "-o", "p.kraddon", "--force"],
                      ["add", "p.kraddon", "src/."]):
            with self.subTest(words=words):
                done = self.on_broken_pipe("stderr", *words, "-v", "--exclude", "*.toml",
                                           *(["--replace"] if words[0] == "add" else []))
                self.assertEqual(done.returncode, 0)
                self.assertEqual(done.stdout.count(b"\n"), 1 if words[0] == "build" else 0)
                self.assertIn("a.m", self.listing())


class Writers(projecttest.ProjectTest):

    def setUp(self):
        super().setUp()
        text = "".join(f"{i * i % 977} " for i in range(20000))
        self.project(files={"text.m": text}, folder="src")
        self.write("text.m", text)
        self.write("long.png", png() + text.encode())

    def written(self, words, *more):
        """What is in the package that the words change, packed as it is."""
        self.path("p.kraddon").unlink(missing_ok=True)
        self.ok("create", "p.kraddon", "--name", "W", "--timestamp", "5")
        result = self.run_kraddon(*words, "--timestamp", "5", *more)
        self.assertEqual(result.code, 0, result.errors)
        return self.path("p.kraddon").read_bytes()

    def test_the_level_is_six_unless_told(self):
        for words in WRITERS:
            with self.subTest(words=words[0]):
                asked = self.written(words, "--level", "6")

                self.assertEqual(self.written(words), asked)
                self.assertNotEqual(self.written(words, "--level", "1"), asked)

    def test_level_zero_stores_whatever_is_written(self):
        for words in WRITERS:
            with self.subTest(words=words[0]):
                self.written(words, "--level", "0")

                with zipfile.ZipFile(self.path("p.kraddon")) as archive:
                    packed = {entry.filename for entry in archive.infolist()
                              if entry.file_size > 500 and entry.compress_type}
                self.assertEqual(packed & {"files/text.m", "metadata/license.xml",
                                           "metadata/primaryScreenShot.png"}, set())

    def test_what_is_replaced_keeps_its_mode_and_its_link(self):
        self.path("store").mkdir()
        self.path("link.kraddon").symlink_to("store/p.kraddon")
        self.ok("create", "store/p.kraddon", "--name", "W")
        for words in (["create", "link.kraddon", "src", "--name", "W"],
                      ["build", "src", "-o", "link.kraddon"]):
            with self.subTest(words=words):
                self.path("store/p.kraddon").chmod(0o604)
                self.assertEqual(self.run_kraddon(*words, "--force").code, 0)
                self.assertEqual(self.path("store/p.kraddon").stat().st_mode & 0o7777, 0o604)
                self.assertEqual(os.readlink(self.path("link.kraddon")), "store/p.kraddon")
                self.assertEqual(self.names("store"), ["p.kraddon"])
                self.assertIn("text.m", self.listing("store/p.kraddon"))

    def test_the_time_is_that_of_what_is_written_only(self):
        self.ok("create", "p.kraddon", "src", "--name", "W", "--timestamp", "1700000000")

        self.ok("add", "p.kraddon", "text.m", "--as", "new.m", "--timestamp", "1600000000")

        times = {entry["path"]: entry["time"] for entry in
                 self.ok("list", "p.kraddon", "-l", "--json").json["entries"]}
        self.assertEqual(times["text.m"], "2023-11-14T22:13:20Z")
        self.assertEqual(times["new.m"], "2020-09-13T12:26:40Z")


class Paths(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", {"a[b].m": "brackets", "ab.m": "plain", "lib/x.m": "x"})

    def test_each_command_takes_them_as_they_are(self):
        self.ok("extract", "p.kraddon", "a[b].m", "-d", "out")
        self.assertEqual(self.names("out"), ["a[b].m"])
        self.assertEqual(self.listing("p.kraddon", "a[b].m"), ["a[b].m"])
        self.ok("remove", "p.kraddon", "a[b].m")
        self.assertEqual(self.listing(), ["ab.m", "lib/x.m"])

    def test_each_command_takes_them_as_patterns_when_told(self):
        self.ok("extract", "p.kraddon", "--glob", "a[b].m", "-d", "out")
        self.assertEqual(self.names("out"), ["ab.m"])
        self.assertEqual(self.listing("p.kraddon", "--glob", "*.m", "!lib/**"), ["a[b].m", "ab.m"])
        self.ok("remove", "p.kraddon", "--glob", "a[b].m")
        self.assertEqual(self.listing(), ["a[b].m", "lib/x.m"])

    def test_of_patterns_the_last_that_matches_an_item_or_a_folder_above_it_decides(self):
        self.package("q.kraddon", {"f": "", "n/g": "", "n/h": "", "n/sub/g": "", "n/sub/i": ""})
        self.package("empty.kraddon")
        everything = ["n/g", "n/h", "n/sub/g", "n/sub/i"]
        cases = [(["!n/g", "n/"], everything), (["!g", "n"], everything),
                 (["!g", "n/**"], everything), (["!n/sub/g", "n/sub/", "n/"], everything),
                 (["n/", "!n/g"], ["n/h", "n/sub/g", "n/sub/i"]),
                 (["n", "!g"], ["n/h", "n/sub/i"]),
                 (["n/", "!sub/", "g"], ["n/g", "n/h", "n/sub/g"]),
                 (["**", "!n"], ["f"]), (["n/sub/g", "!n/", "f"], ["f"])]
        for patterns, chosen in cases:
            with self.subTest(patterns=patterns):
                self.assertEqual(self.listing("q.kraddon", "--glob", *patterns), chosen)
                removed = self.ok("remove", "-q", "q.kraddon", "--glob", *patterns, "--dry-run").text
                self.assertEqual([path for path in removed.splitlines() if path[-1] != "/"],
                                 chosen)
                self.ok("extract", "q.kraddon", "--glob", *patterns, "-d", "out")
                self.assertEqual(sorted(str(path.relative_to(self.path("out")))
                                        for path in self.path("out").rglob("*")
                                        if path.is_file()), chosen)
                shutil.rmtree(self.path("out"))
                compared = self.run_kraddon("diff", "q.kraddon", "empty.kraddon", "--glob",
                                            *patterns, "--json").json
                self.assertEqual([file["path"] for file in compared["files"]], chosen)

    def test_one_that_names_nothing_is_an_error_in_each_command(self):
        before = self.path("p.kraddon").read_bytes()
        for words in (["*.m"], ["?b.m"], ["lib/x"], ["LIB"], ["lib/x.m", "none"],
                      ["--glob", "*.q"], ["--glob", "*.m", "*.q"]):
            which = "none" if "none" in words else words[-1]
            message = f"cannot find '{which}': the package has nothing with that name"
            for command in ("list", "remove", "extract"):
                with self.subTest(command=command, words=words):
                    result = self.run_kraddon(command, "p.kraddon", *words)
                    self.assertEqual((result.code, result.out), (1, b""), words)
                    self.assertEqual(result.errors.splitlines()[0], f"kraddon: {command}: {message}")
            result = self.run_kraddon("diff", "p.kraddon", "p.kraddon", *words)
            self.assertEqual((result.code, result.out), (2, b""), words)
            self.assertIn(f"kraddon: diff: cannot find '{which}': ", result.errors)
        self.assertEqual(self.names(), ["p.kraddon", "p.kraddon.src"])
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)


class Json(projecttest.ProjectTest):

    def test_it_is_utf8_whatever_the_locale(self):
        self.package("p.kraddon", {"é\u4e2d.m": "x"}, "--summary", "größer")
        for env in ({"LC_ALL": "C"}, {"LC_ALL": "de_DE.ISO-8859-1"}):
            listed = self.ok("list", "p.kraddon", "--json", env=env)
            self.assertEqual(listed.json["entries"][0]["path"], "é\u4e2d.m")
            self.assertIn("é\u4e2d.m".encode(), listed.out)
            self.assertEqual(self.ok("info", "p.kraddon", "--json", env=env).json["summary"],
                             "größer")

    def test_nothing_else_is_on_standard_output(self):
        self.project()
        self.build("-o", "p.kraddon")
        for words in (["info", "p.kraddon"], ["list", "p.kraddon"], ["verify", "p.kraddon"],
                      ["diff", "p.kraddon", "."], ["build", "-o", "q.kraddon", "--dry-run"]):
            with self.subTest(command=words[0]):
                value = self.run_kraddon(*words, "--json", "-v", "--color", "always").json
                self.assertEqual(list(value)[0], "schema")
                self.assertEqual(value["schema"], f"kraddon.{words[0]}/1")


if __name__ == "__main__":
    kraddontest.main()
