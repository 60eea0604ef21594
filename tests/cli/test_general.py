# SPDX-License-Identifier: MIT
"""What holds for every command."""

import os
import subprocess

import kraddontest
from kraddontest import KRADDON

COMMANDS = ["create", "info", "list", "extract", "get", "set", "call", "help"]


class General(kraddontest.CliTest):

    def test_the_version_is_printed(self):
        result = self.ok("--version")

        self.assertRegex(result.text, r"\Akraddon \d+\.\d+\.\d+\n\Z")

    def test_help_names_every_command(self):
        for words in (["--help"], ["-h"], ["help"]):
            text = self.ok(*words).text
            for command in COMMANDS:
                self.assertRegex(text, rf"(?m)^  {command} +\S")

    def test_every_command_has_help_by_three_ways(self):
        for command in COMMANDS:
            text = self.ok("help", command).text
            self.assertTrue(text.startswith(f"usage: kraddon {command} "), text)
            self.assertEqual(self.ok(command, "--help").text, text)
            self.assertEqual(self.ok(command, "-h").text, text)
            self.assertIn("--verbose", text)
            self.assertLessEqual(max(map(len, text.splitlines())), 80)

    def test_help_is_given_even_when_words_are_missing_or_wrong(self):
        self.ok("create", "--help")
        self.ok("create", "--help", "--level", "nonsense")

    def test_no_command_is_wrong_usage(self):
        for words in ([], ["-q"], ["-C", "/"], ["--"]):
            result = self.run_kraddon(*words)

            self.assertEqual((result.code, result.out), (2, b""))
            self.assertEqual(result.errors, self.ok("help").text)

    def test_wrong_usage_names_the_help_of_the_command(self):
        result = self.run_kraddon("list", "--nonsense")

        self.assertTrue(result.errors.endswith(
            "\nusage: kraddon list [OPTION...] PACKAGE [PATH...]\n"
            "Run 'kraddon help list' for details.\n"), result.errors)

    def test_an_unknown_command_gets_the_nearest_one(self):
        self.misused("craete", message="unknown command 'craete': did you mean 'create'?",
                     command="")
        self.misused("help", "lst", message="unknown command or topic 'lst': did you mean 'list'?")
        self.misused("zzzzzz", command="",
                     message="unknown command 'zzzzzz': 'kraddon help' lists the commands")

    def test_an_unknown_option_gets_the_nearest_one(self):
        self.misused("list", "p", "--jsno",
                     message="unknown option '--jsno': did you mean '--json'?")
        self.misused("list", "p", "-y", message="unknown option '-y': no option has that letter")
        self.misused("--colour", "never", "list", "p", command="",
                     message="unknown option '--colour': did you mean '--color'?")

    def test_json_is_refused_where_there_is_none(self):
        for words in (["create", "p", "--name", "x"], ["extract", "p"], ["get", "p", "license"],
                      ["set", "p", "license", "-"], ["call", "addonGetFileList"]):
            result = self.run_kraddon(*words, "--json")
            self.assertEqual(result.code, 2, words)
            self.assertIn("unknown option '--json'", result.errors)

    def test_json_is_refused_by_whatever_changes_something(self):
        for words in (["add", "p", "f"], ["remove", "p", "f"], ["mkdir", "p", "f"], ["mv", "p", "f", "g"],
                      ["unset", "p", "license"], ["screenshot", "p"], ["init"], ["help"],
                      ["completion", "bash"]):
            result = self.run_kraddon(*words, "--json")
            self.assertEqual(result.code, 2, words)
            self.assertIn("unknown option '--json'", result.errors)

    CHANGES = [["set", "p.kraddon", "license", "text=x"], ["unset", "p.kraddon", "license", "-q"],
               ["add", "p.kraddon", "f"], ["remove", "p.kraddon", "f", "-q"],
               ["mkdir", "p.kraddon", "d"], ["mv", "p.kraddon", "d", "e"],
               ["screenshot", "p.kraddon", "f.png"]]

    def test_whatever_changes_a_package_takes_level_and_time(self):
        self.write("f")
        self.write("f.png", b"\x89PNG\r\n\x1a\n")
        for words in [["create", "p.kraddon", "--name", "x", "--force"], *self.CHANGES]:
            self.misused(*words, "--level", "10", message="bad value of --level '10': expected a "
                         "whole number from 0 to 9")
            self.misused(*words, "--timestamp", "x", message="bad value of --timestamp 'x': "
                         "expected a whole number from 0 to 253402300799")
            self.ok(*words, "--level", "9", "--timestamp", "1700000000")

    def test_a_changed_package_keeps_its_mode_and_its_link(self):
        self.write("f")
        self.write("f.png", b"\x89PNG\r\n\x1a\n")
        self.package("store/p.kraddon", {"a.m": "x"})
        self.path("p.kraddon").symlink_to("store/p.kraddon")
        self.path("store/p.kraddon").chmod(0o640)
        for words in self.CHANGES:
            before = self.path("store/p.kraddon").stat()
            self.ok(*words)
            now = self.path("store/p.kraddon").stat()
            self.assertNotEqual(now.st_ino, before.st_ino, words)
            self.assertEqual(now.st_mode & 0o7777, 0o640, words)
            self.assertEqual(os.readlink(self.path("p.kraddon")), "store/p.kraddon")

    def test_a_folder_that_may_not_be_listed_takes_a_package(self):
        self.package("drop/p.kraddon", {"a.m": "x"})
        self.path("drop/p.kraddon").chmod(0o666)
        self.path("drop").chmod(0o733)
        self.folder.chmod(0o755)
        user = self.without_privilege()

        self.ok("create", "drop/new.kraddon", "--name", "x", **user)
        self.ok("mkdir", "drop/p.kraddon", "e", **user)

        self.assertEqual(self.listing("drop/p.kraddon"), ["a.m", "e"])
        self.assertEqual(self.names("drop"), ["new.kraddon", "p.kraddon", "p.kraddon.src"])

    def test_a_package_of_somebody_else_loses_what_acts_in_their_name(self):
        if os.geteuid() != 0:
            self.skipTest("no file can be given away")
        self.package("p.kraddon", {"a.m": "x"})
        self.path("p.kraddon").chmod(0o6777)
        self.folder.chmod(0o777)

        self.ok("mkdir", "p.kraddon", "e", **self.without_privilege())

        now = self.path("p.kraddon").stat()
        self.assertEqual((now.st_uid, now.st_mode & 0o7777), (kraddontest.NOBODY, 0o777))
        self.assertEqual(self.listing(), ["a.m", "e"])

    def test_a_package_in_a_folder_that_may_not_be_changed_stays(self):
        before = self.package("store/p.kraddon", {"a.m": "x"}).read_bytes()
        self.path("store/p.kraddon").chmod(0o666)
        self.path("store").chmod(0o755)
        self.folder.chmod(0o755)

        result = self.fails("mkdir", "store/p.kraddon", "e", **self.without_privilege())

        self.assertTrue(result.errors.endswith(": Permission denied\n"), result.errors)
        self.assertEqual(self.path("store/p.kraddon").read_bytes(), before)

    def test_what_cannot_be_read_is_named_once(self):
        self.package("p.kraddon", {"z.bin": b"\0\xff" * 5000}, "--level", "0")
        self.damage("files/z.bin", "p.kraddon")
        self.fails("list", "p.kraddon", "--hash", message="cannot read part '/files/z.bin' of "
                   "'p.kraddon': the checksum is wrong")
        for item, fault in (("[Content_Types].xml", "content types stream"),
                            ("_rels/.rels", "part '/_rels/.rels'")):
            self.package(f"{fault[0]}.kraddon", {"a.m": ""}, "--force")
            self.damage(item, f"{fault[0]}.kraddon")
            result = self.fails("list", f"{fault[0]}.kraddon")
            self.assertRegex(result.errors, rf"cannot open package '\w.kraddon': {fault}: "
                             r"[^':]+\n\Z")

    def damage(self, item, name):
        """Changes a byte of an item's data."""
        raw = self.raw_entries(name)[item]
        content = self.path(name).read_bytes()
        at = content.index(raw) + len(raw) - 3
        self.path(name).write_bytes(content[:at] + bytes([content[at] ^ 1]) + content[at + 1:])

    def test_missing_and_extra_operands_are_named(self):
        self.misused("info", message="missing operand 'PACKAGE': the packages")
        self.misused("preview", "a", "b", message="unexpected operand 'b': the command takes no more")
        self.misused("create", "p", message="missing option '--name': the add-on's name")

    def test_another_folder_can_be_worked_in(self):
        self.path("sub").mkdir()
        self.ok("-C", "sub", "create", "p.kraddon", "--name", "x")
        self.assertEqual(self.names("sub"), ["p.kraddon"])

        result = self.run_kraddon("-C", "nowhere", "list", "p")
        self.assertEqual(result.code, 1)
        self.assertEqual(result.errors, "kraddon: list: cannot enter the folder 'nowhere': "
                                        "No such file or directory\n")

    def test_an_empty_path_is_called_so_whatever_it_is_for(self):
        self.package(files={"a.m": "x"})
        for why, *words in (
                ("cannot open package", "info", ""), ("cannot open package", "list", ""),
                ("cannot open package", "verify", ""),
                ("cannot create package", "create", "", "--name", "x"),
                ("cannot read the folder", "create", "q", "", "--name", "x"),
                ("cannot read the folder", "build", ""), ("cannot read the folder", "init", ""),
                ("cannot read the folder", "init", "", "--force"),
                ("cannot read the folder", "init", "", "--stdout"),
                ("cannot add", "add", "p.kraddon", ""),
                ("cannot read", "set", "p.kraddon", "license", ""),
                ("cannot read", "screenshot", "p.kraddon", ""),
                ("cannot write", "get", "p.kraddon", "properties", "-o", ""),
                ("cannot write", "preview", "p.kraddon", "-o", "")):
            with self.subTest(words=words):
                self.fails(*words, message=f"{why} '': the path is empty")
        self.assertEqual(self.run_kraddon("-C", "", "info", "p.kraddon").errors,
                         "kraddon: info: cannot enter the folder '': the path is empty\n")
        self.assertEqual(self.names(), ["p.kraddon", "p.kraddon.src"])

    def test_a_full_disk_is_a_failure(self):
        self.package(files={"a.m": "x"})
        for words in (["list", "p.kraddon"], ["info", "p.kraddon"], ["--version"], ["help"],
                      ["list", "p.kraddon", "--json"], ["get", "p.kraddon", "properties"],
                      ["extract", "p.kraddon", "a.m", "--stdout"]):
            with open("/dev/full", "wb") as full:
                result = self.run_kraddon(*words, stdout=full)
            self.assertEqual(result.code, 1, words)
            self.assertIn("cannot write 'standard output': No space left on device",
                          result.errors)

    def test_a_closed_output_is_a_failure_and_never_written_into_a_file(self):
        self.package(files={"a.m": "x"})
        before = self.path("p.kraddon").read_bytes()
        done = subprocess.run(f"'{KRADDON}' list p.kraddon >&-", shell=True, cwd=self.folder,
                              stderr=subprocess.PIPE, check=False)
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"cannot write 'standard output'", done.stderr)
        done = subprocess.run(f"'{KRADDON}' set p.kraddon license text=x <&- >&- 2>&-",
                              shell=True, cwd=self.folder, check=False)
        self.assertEqual(done.returncode, 0)
        self.assertNotEqual(self.path("p.kraddon").read_bytes(), before)
        self.assert_sound()

    def test_a_closed_pipe_ends_it_quietly(self):
        self.package(files={f"folder/a-rather-long-name-{i}.m": "" for i in range(3000)})
        process = subprocess.Popen([KRADDON, "list", "p.kraddon", "--json", "-l"],
                                   cwd=self.folder, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE)
        process.stdout.close()
        errors = process.stderr.read()
        process.stderr.close()

        self.assertEqual(process.wait(), -13)
        self.assertEqual(errors, b"")

    def test_messages_show_control_characters_as_escapes(self):
        result = self.fails("info", "no\x1b[31m\nsuch")

        self.assertIn("\\x1b[31m\\nsuch", result.errors)

    def test_names_are_escaped_on_a_terminal_only(self):
        self.package(files={"evil\x1b[31m.m": "x"})
        self.assertEqual(self.listing(), ["evil\x1b[31m.m"])
        self.assertEqual(self.ok("list", "p.kraddon", "-0").out, b"evil\x1b[31m.m\0")
        for words in (["list", "p.kraddon"], ["list", "p.kraddon", "--tree"],
                      ["extract", "p.kraddon", "--dry-run"]):
            self.assertEqual(self.on_terminal(*words), b"evil\\x1b[31m.m\r\n")
        self.assertEqual(self.on_terminal("list", "p.kraddon", "-0"), b"evil\x1b[31m.m\0")

    def test_what_turns_the_direction_of_text_is_escaped_too(self):
        name = "evil\u202egnp.exe"
        self.package(files={name: "x"})
        self.assertEqual(self.listing(), [name])
        self.assertIn("no\\u2066ne", self.fails("info", "no\u2066ne").errors)
        self.assertEqual(self.on_terminal("list", "p.kraddon"), b"evil\\u202egnp.exe\r\n")

    def test_colours_are_for_terminals_unless_told(self):
        self.package(files={"a/b.m": "x"})
        escape = b"\x1b["
        words = ["list", "p.kraddon", "--tree"]
        self.assertNotIn(escape, self.ok(*words).out)
        self.assertIn(escape, self.ok(*words, "--color", "always").out)
        self.assertIn(escape, self.ok("--color", "always", *words).out)
        self.assertIn(escape, self.on_terminal(*words))
        self.assertNotIn(escape, self.on_terminal(*words, env={"NO_COLOR": "1"}))
        self.assertNotIn(escape, self.on_terminal(*words, "--color", "never"))
        self.assertNotIn(escape, self.on_terminal(*words, env={"TERM": "dumb"}))
        self.misused(*words, "--color", "red",
                     message="bad value of --color 'red': expected auto, always or never")

    def test_findings_are_coloured_on_a_terminal(self):
        self.package(files={"a.m": "x"})
        self.write("wave/kraddon.toml", '[package]\nname = "x"\nversion = "1.0"\n')
        warning = b"p.kraddon: \x1b[33mwarning KR501\x1b[0m: "
        self.assertIn(warning, self.on_terminal("verify", "p.kraddon"))
        self.assertIn(warning, self.ok_out("verify", "p.kraddon", "--color", "always"))
        self.assertNotIn(b"\x1b", self.ok_out("verify", "p.kraddon"))
        built = self.run_kraddon("build", "wave", "--color", "always").errors
        self.assertIn("\x1b[33mwarning KR501\x1b[0m: ", built)
        self.assertNotIn("\x1b", self.run_kraddon("build", "wave").errors)
        self.write("bad/kraddon.toml", '[package]\nname = "x"\nversion = "1.0"\n')
        self.write("bad/.env", "x")
        bad = self.run_kraddon("build", "bad", "--color", "always")
        self.assertIn("\x1b[31merror KR509\x1b[0m: ", bad.errors)

    def ok_out(self, *words):
        result = self.run_kraddon(*words)
        self.assertEqual(result.code, 0, result.errors)
        return result.out

    def test_results_do_not_depend_on_locale_or_time_zone(self):
        self.package(files={"é.m": "x", "z.m": "x", "Z.m": "x"})
        for words in (["list", "p.kraddon", "-l"], ["info", "p.kraddon"]):
            expected = self.ok(*words).out
            for env in ({"LC_ALL": "C"}, {"LC_ALL": "de_DE.UTF-8"},
                        {"TZ": "Pacific/Auckland", "LC_ALL": "POSIX"}):
                self.assertEqual(self.ok(*words, env=env).out, expected)

    def test_the_version_starts_no_xml_and_reads_no_package(self):
        self.ok("--version", env={"XERCES_DISABLE_DTD": "1"})

    def test_a_file_that_is_not_a_package_is_reported_in_one_line(self):
        self.write("empty.kraddon")
        self.write("text.kraddon", "no package at all, just some text\n" * 10)
        self.path("folder").mkdir()
        whole = self.package(files={"a.m": "content" * 100}).read_bytes()
        self.write("cut.kraddon", whole[:len(whole) // 2])
        for name in ("missing.kraddon", "empty.kraddon", "text.kraddon", "folder",
                     "cut.kraddon"):
            for command in (["info"], ["list"], ["extract", "-d", "out"], ["get"], ["set"]):
                words = [command[0], name, *command[1:]]
                words += {"get": ["properties"], "set": ["license", "text=x"]}.get(words[0], [])
                result = self.fails(*words)
                self.assertIn(f"'{name}'", result.errors)
        self.assertFalse(self.path("out").exists())
        self.assertFalse(self.path("missing.kraddon").exists())

    def test_a_package_that_may_not_be_read_is_reported(self):
        self.package()
        os.chmod(self.folder, 0o755)
        self.path("p.kraddon").chmod(0)
        done = self.run_kraddon("info", "p.kraddon", **self.without_privilege())
        self.assertEqual(done.code, 1)
        self.assertIn("'p.kraddon': Permission denied", done.errors)

    def libraries(self):
        done = subprocess.run(["ldd", kraddontest.KRADDON], stdout=subprocess.PIPE, check=True)
        return [line.split()[0] for line in done.stdout.decode().splitlines() if " => " in line]

    def test_no_library_is_taken_from_the_current_folder(self):
        names = self.libraries()
        self.assertIn("libz.so.1", names)
        for name in names:
            self.write(name, "planted by whoever sent the folder")
        self.ok("--version")

    def test_no_library_that_could_reach_a_network_is_loaded(self):
        self.assertEqual([name for name in self.libraries() if "curl" in name or "ssl" in name], [])


if __name__ == "__main__":
    kraddontest.main()
