# SPDX-License-Identifier: MIT
"""Completion: what the program proposes, and what comes of it in the real shells."""

import os
import pathlib
import pty
import select
import shutil
import subprocess
import unittest

import kraddontest
from kraddontest import KRADDON

# What a shell could trip over, each the only name that begins with its first letter.
AWKWARD = ["a b.m", "c$HOME.m", "d'q\".m", "e\nf.m", "g`id`.m", "h*?[x].m", "i:j=k.m", "l;m&.m",
           "né.m", "o\\p.m", "~q.m", "r!s.m", "t\tu.m", "#v.m", "-w.m", "(x).m", "{y,z}.m"]


class Proposals(kraddontest.CliTest):

    def records(self, *words, shell="bash", **kw):
        items = self.ok("completion", shell, "--", *words, **kw).out.split(b"\0")
        self.assertEqual(items.pop(), b"")
        return items[0].decode(), items[1].decode(), [item.decode() for item in items[2:]]

    def proposed(self, *words, **kw):
        kind, prefix, items = self.records(*words, **kw)
        if kind == "words":
            items = [item.split("\t")[0] for item in items]
        return [prefix + item for item in items]

    def test_commands_come_with_what_they_do(self):
        kind, prefix, items = self.records("")

        self.assertEqual((kind, prefix), ("words", ""))
        self.assertIn("remove\tremoves files and folders", items)
        self.assertIn("completion", self.proposed("-q", "-C", ".", "com"))

    def test_options_are_those_of_the_command_and_of_all(self):
        options = self.proposed("list", "p.kraddon", "-")

        for option in ("--tree", "-l", "-0", "--quiet", "-h"):
            self.assertIn(option, options)
        self.assertNotIn("--force", options)
        self.assertIn("--version", self.proposed("-"))
        self.assertEqual(self.proposed("list", "--", "p.kraddon", "-"), [])

    def test_values_of_fixed_sets_are_proposed_however_they_are_written(self):
        formats = ["text", "github", "sarif"]

        self.assertEqual(self.proposed("verify", "--format", ""), formats)
        self.assertEqual(self.proposed("verify", "--format=gi"),
                         ["--format=" + name for name in formats])
        self.assertEqual(self.proposed("--color", "n"), ["auto", "always", "never"])
        self.assertIn("KR101", self.proposed("verify", "--explain", "KR1"))
        self.assertIn("digest", self.proposed("info", "p", "--field", ""))
        self.assertEqual(self.proposed("completion", ""), ["bash", "zsh", "fish"])
        self.assertIn("addonGetFileList", self.proposed("call", "addon"))
        self.assertIn("verify", self.proposed("help", ""))
        self.assertEqual(self.proposed("schema", "")[:3], ["manifest", "info", "list"])
        self.assertIn("apps", self.proposed("get", "p.kraddon", ""))
        self.assertIn("screenshot", self.proposed("unset", "p.kraddon", "license", ""))

    def test_fields_are_those_of_the_document(self):
        fields = ["name=", "version=", "summary=", "authorName=", "authorContact=",
                  "authorOrganization=", "GUID=", "description="]

        self.assertEqual(self.proposed("set", "p.kraddon", "properties", "v"), fields)
        self.assertEqual(self.proposed("set", "p.kraddon", "properties", "name=x", ""), fields)
        self.assertEqual(self.proposed("set", "p.kraddon", "license", ""), ["type=", "text="])
        for document in ("apps", "configuration", "nonsense"):
            self.assertEqual(self.proposed("set", "p.kraddon", document, ""), [], document)
        self.write("apps.json")
        self.assertEqual(self.proposed("set", "p.kraddon", "apps", ""), ["apps.json"])

    def test_files_and_folders_are_proposed_where_they_fit(self):
        for name in ("a.kraddon", "b.txt", ".hidden", "sub/c.kraddon", "sub/d/e.txt"):
            self.write(name)

        self.assertEqual(self.proposed("info", ""), ["a.kraddon", "sub/"])
        self.assertEqual(self.proposed("info", "sub/c"), ["sub/c.kraddon", "sub/d/"])
        self.assertEqual(self.proposed("verify", "a.kraddon", "sub/d/"), ["sub/d/e.txt"])
        self.assertEqual(self.proposed("add", "a.kraddon", ""), ["a.kraddon", "b.txt", "sub/"])
        self.assertEqual(self.proposed("add", "a.kraddon", "."), [".hidden", "a.kraddon", "b.txt",
                                                                  "sub/"])
        self.assertEqual(self.proposed("create", "x.kraddon", "sub/"), ["sub/d/"])
        self.assertEqual(self.proposed("extract", "a.kraddon", "-dsu"), ["-dsub/"])
        for words in (["-C", "sub"], ["-Csub"], ["--directory", "sub"], ["--directory=sub"],
                      ["-qC", "sub"], ["-qCsub"], ["--color", "-C", "-C", "sub"],
                      ["--color=auto", "--quiet", "-C", "./sub"]):
            self.assertEqual(self.proposed(*words, "info", ""), ["c.kraddon", "d/"], words)
        self.assertEqual(self.proposed("--directory=", "info", "sub/c"), ["sub/c.kraddon", "sub/d/"])
        self.assertEqual(self.proposed("-C~/", "info", "", env={"HOME": str(self.path("sub"))}),
                         ["c.kraddon", "d/"])
        self.assertEqual(self.proposed("info", "~/", env={"HOME": str(self.path("sub"))}),
                         ["~/c.kraddon", "~/d/"])
        self.assertEqual(self.proposed("info", "nowhere/"), [])

    def test_paths_in_the_package_are_proposed_folder_by_folder(self):
        self.package(files={"a/b/c.m": "", "a/d.m": "", "empty/": "", "e.m": ""})

        self.assertEqual(self.records("list", "p.kraddon", ""),
                         ("paths", "", ["a/", "e.m", "empty/"]))
        self.assertEqual(self.proposed("extract", "-d", "out", "p.kraddon", "e.m", "a/"),
                         ["a/b/", "a/d.m"])
        self.assertEqual(self.proposed("remove", "p.kraddon", "a/b/x"), ["a/b/c.m"])
        self.assertEqual(self.proposed("add", "p.kraddon", "x", "--into=a/"),
                         ["--into=a/b/", "--into=a/d.m"])
        self.assertEqual(self.proposed("list", "p.kraddon", "e.m/"), [])
        self.assertEqual(self.proposed("diff", "p.kraddon", "x.kraddon", "a/b/"), ["a/b/c.m"])
        self.assertEqual(self.proposed("diff", "p.kraddon.src", "p.kraddon", "a/"),
                         ["a/b/", "a/d.m"])

    def test_nothing_is_proposed_and_nothing_said_where_nothing_can_be_read(self):
        self.write("broken.kraddon", "no package")

        for words in (["list", "missing.kraddon", ""], ["list", "broken.kraddon", ""],
                      ["list", "\x01", "../"], ["nonsense", ""], ["get", "a", "b", "c"], ["list", "--glob=x"],
                      ["-C", "nowhere", "info", ""], ["list", "--tree=x"], ["verify", "--no="],
                      ["create", "--level", ""], ["info", b"\xff/"], ["add", "--into="]):
            self.assertEqual(self.proposed(*words), [], words)

    def test_one_folder_of_twenty_thousand_files_is_proposed_alone(self):
        self.path("src").mkdir()
        for folder in range(20):
            self.path(f"src/{folder}").mkdir()
            for name in range(1000):
                self.write(f"src/{folder}/{name}.m")
        self.ok("create", "p.kraddon", "src", "--name", "x")

        self.assertEqual(len(self.proposed("list", "p.kraddon", "7/")), 1000)

    def test_an_unknown_shell_gets_the_nearest_one(self):
        self.misused("completion", "fihs", message="bad value of SHELL 'fihs': did you mean 'fish'?")
        self.misused("completion", "powershell",
                     message="bad value of SHELL 'powershell': expected bash, zsh or fish")


class Shell(kraddontest.CliTest):
    """Lines typed into a shell that runs in a terminal."""

    def setUp(self):
        super().setUp()
        self.path("bin").mkdir()
        os.symlink(KRADDON, self.path("bin/kraddon"))
        self.env = self.environment({
            "PATH": f"{self.path('bin')}:{os.environ['PATH']}", "HOME": str(self.folder),
            "XDG_CONFIG_HOME": str(self.folder), "TERM": "dumb", "PS1": "", "INPUTRC": "/dev/null",
            "LC_ALL": "C.UTF-8", "HISTFILE": ""})

    def need(self, shell):
        if shutil.which(shell) is None:
            self.skipTest(f"there is no {shell}; scripts/setup test installs it")

    def script(self, shell):
        path = self.write(f"script.{shell}", self.ok("completion", shell).out)
        subprocess.run([shell, "-n", path], check=True)
        return path

    def typed(self, command, *lines):
        """Runs `command` in a terminal, types the lines (a tab completes), and waits for its end."""
        try:
            pid, master = pty.fork()
        except OSError as error:
            self.skipTest(f"needs a terminal: {error}")
        if pid == 0:
            os.chdir(self.folder)
            os.execvpe(command[0], command, self.env)
        try:
            for line in lines:
                os.write(master, line.encode() + b"\n")
                self.drain(master, 0.05)
            os.write(master, b"exit\n")
            self.drain(master, 30)
        finally:
            os.close(master)
            os.waitpid(pid, 0)

    def drain(self, master, patience):
        """Reads what the terminal shows until it is quiet for that long, or closed."""
        try:
            while select.select([master], [], [], patience)[0] and os.read(master, 65536):
                pass
        except OSError:  # the other end is gone
            pass

    def awkward_package(self):
        self.package(files={**{name: f"<{name}>" for name in AWKWARD},
                            "folder/inner/deep file.m": "deep"})
        self.path("p.kraddon").rename(self.path("my $pkg.kraddon"))
        shutil.rmtree(self.path("p.kraddon.src"))

    def lines_for_awkward_names(self):
        package = "'my $pkg.kraddon'"
        return [f"kraddon extract {package} --stdout -- {start}\t > out.{index}"
                for index, start in enumerate(self.starts())]

    def starts(self):
        """What one types of each name, before the tab."""
        quoted = {"~": "\\~", "#": "\\#", "(": "\\(", "{": "\\{"}
        return [quoted.get(name[0], name[0]) for name in AWKWARD]

    def lines_in_quotes(self):
        """An open quote is closed, and the home folder stays what it is."""
        return ["kraddon extract my\t --stdout \"c\t > out.double",
                "kraddon extract my\t --stdout 'd\t > out.single",
                "kraddon extract my\t --stdout 'g\t > out.back",
                "kraddon extract ~/my\t --stdout n\t > out.home"]

    def check_quotes(self):
        for name, content in (("double", "<c$HOME.m>"), ("single", "<d'q\".m>"),
                              ("back", "<g`id`.m>"), ("home", "<né.m>")):
            self.assertEqual(self.path(f"out.{name}").read_text(), content)

    def check_awkward_names(self):
        for index, name in enumerate(AWKWARD):
            self.assertEqual(self.path(f"out.{index}").read_text(), f"<{name}>", name)


@kraddontest.needs_proc  # for process substitution
class Bash(Shell):
    COMMAND = ["bash", "--norc", "--noprofile", "-i"]

    def setUp(self):
        super().setUp()
        self.need("bash")

    def replies(self, *words, line=None):
        """What the function answers for the words of a line, the cursor behind the last."""
        code = """source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
            COMP_LINE=$LINE COMP_POINT=${#LINE}
            _kraddon kraddon "${!#}"; printf '%s\\0' "${COMPREPLY[@]}" """
        done = subprocess.run(["bash", "-c", code, "bash", self.script("bash"), "kraddon", *words],
                              cwd=self.folder, env={**self.env, "LINE": line or ""}, check=True,
                              capture_output=True)
        self.assertEqual(done.stderr, b"")
        return [word for word in done.stdout.decode().split("\0") if word]

    def test_what_begins_with_the_word_is_left(self):
        self.assertEqual(self.replies("scr"), ["screenshot"])
        self.assertEqual(self.replies("verify", "--format", "g"), ["github"])
        self.assertEqual(self.replies("verify", "--format", "=", "g"), ["github"])
        self.assertEqual(self.replies("verify", "--format", "="), ["text", "github", "sarif"])
        self.assertEqual(self.replies("zzz"), [])

    def test_quotes_are_understood_and_nothing_is_run(self):
        self.package(files={"a b.m": "", "sub/c'd.m": ""})
        self.path("p.kraddon").rename(self.path("it's.kraddon"))
        for package in ("it\\'s.kraddon", "\"it's.kraddon\"", "$'it\\'s.kraddon'"):
            self.assertEqual(self.replies("list", package, "a"), ["a b.m"], package)
            self.assertEqual(self.replies("list", package, "'a b"), ["a b.m"], package)
            self.assertEqual(self.replies("list", package, "sub/c\\'"), ["sub/c'd.m"], package)
        self.replies("list", "$(touch ran)`touch ran`", "\"$(touch ran)")
        self.assertFalse(self.path("ran").exists())

    def test_words_that_bash_takes_apart_are_put_together(self):
        self.package(files={"i:j=k.m": "", "i:x": ""})

        self.assertEqual(self.replies("list", "p.kraddon", "i", ":", "j",
                                      line="kraddon list p.kraddon i:j"), ["j=k.m"])
        self.assertEqual(self.replies("list", "p.kraddon", "i", ":", "",
                                      line="kraddon list p.kraddon i: "), ["i:j=k.m", "i:x"])
        self.assertEqual(self.replies("add", "p.kraddon", "x", "--into", "=", "i", ":", "j",
                                      line="kraddon add p.kraddon x --into=i:j"), ["j=k.m"])

    def test_awkward_names_come_out_as_they_are(self):
        self.awkward_package()

        self.typed(self.COMMAND, f". ./{self.script('bash').name}", "set +H",
                   *self.lines_for_awkward_names(), *self.lines_in_quotes(),
                   "kraddon extract my\tfo\tin\tde\t --stdout > out.deep 2> err")

        self.check_awkward_names()
        self.check_quotes()
        self.assertEqual(self.path("out.deep").read_text(), "deep", self.path("err").read_text())

    def folders_in_quotes(self, *begin):
        self.package(files={"Erste Schritte/über sicht.m": "1", "Erste Schritte/b $x.m": "2",
                            "only/one/x y.m": "3", "a'b/c d.m": "4", "a'b/e.m": "5",
                            "in/Zwei Teile/ein stück.m": "6", "in/x": ""})
        self.path("a disk folder/sub").mkdir(parents=True)
        self.write("a disk folder/x y.kraddon", self.path("p.kraddon").read_bytes())
        start = "kraddon extract p.kraddon --stdout"
        lines = {"single": f"{start} 'Er\t\tü\t", "double": f'{start} "Er\t\tb\t',
                 "descending": f"{start} 'on\t", "plain": f"{start} Er\tü\t",
                 "twice": f"{start} 'in/Zw\t\t", "more": f'{start} "in/Zw\t\t',
                 "closed": f"{start} 'Er\tüber sicht.m'", "ended": f'{start} "Er\tüber sicht.m"',
                 "apostrophe": f'{start} "a\'\t\tc\t',
                 "disk": "kraddon extract 'a d\t\tx\t --stdout 'Er\t\tü\t"}
        self.typed(self.COMMAND, *begin, "set +H",
                   *(f"{line} > out.{name} 2> err.{name}" for name, line in lines.items()))
        for name, content in (("single", "1"), ("double", "2"), ("descending", "3"),
                              ("plain", "1"), ("twice", "6"), ("more", "6"),
                              ("closed", "1"), ("ended", "1"),
                              ("apostrophe", "4"), ("disk", "1")):
            self.assertEqual(self.path(f"out.{name}").read_text(), content,
                             (name, self.path(f"err.{name}").read_text()))

    def test_folders_leave_quotes_open(self):
        self.folders_in_quotes(f". ./{self.script('bash').name}")

    def test_folders_leave_quotes_open_with_bash_completion(self):
        library = pathlib.Path("/usr/share/bash-completion/bash_completion")
        self.assertTrue(library.exists(), "'scripts/setup test' installs bash-completion")
        folder = self.path("data/bash-completion/completions")
        folder.mkdir(parents=True)
        shutil.copy(self.script("bash"), folder / "kraddon")
        self.env["XDG_DATA_HOME"] = str(self.path("data"))
        self.folders_in_quotes(f". {library}")

    def test_folders_of_the_disk_are_named_without_a_second_slash(self):
        self.path("mapkit").mkdir()
        self.path("mapkat").mkdir()
        self.assertEqual(sorted(self.replies("build", "mapk")), ["mapkat", "mapkit"])


class Zsh(Shell):
    COMMAND = ["zsh", "-f", "-i"]

    def setUp(self):
        super().setUp()
        self.need("zsh")

    def type(self, *lines):
        self.script("zsh")
        self.typed(self.COMMAND, "autoload -Uz compinit; compinit -D -u; unsetopt bang_hist",
                   "setopt no_beep; LISTMAX=0", ". ./script.zsh", *lines)

    def test_commands_options_and_values_are_completed(self):
        self.package(files={"a.m": ""})

        self.type("kraddon ver\t --form\tgi\t p.kra\t> out.format; echo $? > code",
                  "kraddon inf\tp\t --field na\t > out.name", "kraddon verify --format=gi\tp\t> out")

        self.assertEqual(self.path("out.name").read_text(), "Wave Tools\n")
        self.assertEqual(self.path("code").read_text(), "0\n")
        self.assertIn("::warning", self.path("out.format").read_text())
        self.assertIn("::warning", self.path("out").read_text())

    def test_awkward_names_come_out_as_they_are(self):
        self.awkward_package()

        self.type(*self.lines_for_awkward_names(), *self.lines_in_quotes(),
                  "kraddon extract my\tfo\tin\tde\t --stdout > out.deep 2> err")

        self.check_awkward_names()
        self.check_quotes()
        self.assertEqual(self.path("out.deep").read_text(), "deep", self.path("err").read_text())


class Fish(Shell):

    def setUp(self):
        super().setUp()
        self.need("fish")

    def completed(self, line):
        """What fish would put in the place of the line's last word, NUL-separated."""
        code = "source script.fish; complete -C $argv[1]"
        done = subprocess.run(["fish", "--no-config", "-c", code, line], cwd=self.folder,
                              env=self.env, check=True, capture_output=True)
        self.assertEqual(done.stderr, b"")
        return done.stdout.decode().splitlines()

    def test_commands_options_and_values_are_completed(self):
        self.script("fish")
        self.package(files={"a.m": "", "sub/b c.m": ""})

        self.assertEqual(self.completed("kraddon scr"),
                         ["screenshot\tstores or extracts the screenshot"])
        self.assertIn("--format\tthe output format: text, github or sarif", self.completed("kraddon verify --f"))
        self.assertEqual(self.completed("kraddon verify --format g"), ["github"])
        self.assertEqual(self.completed("kraddon verify --format=g"), ["--format=github"])
        self.assertEqual(self.completed("kraddon list p"), ["p.kraddon", "p.kraddon.src/"])
        self.assertEqual(self.completed("kraddon list p.kraddon sub/"), ["sub/b c.m"])
        self.assertEqual(self.completed("kraddon list p.kraddon 'sub/b "), ["sub/b c.m"])
        self.assertEqual(self.completed("kraddon list p.kraddon sub/b\\ c"), ["sub/b c.m"])
        self.assertEqual(self.completed("kraddon list broken.kraddon "), [])

    def test_awkward_names_come_out_as_they_are(self):
        self.script("fish")
        self.awkward_package()

        found = self.completed("kraddon list 'my $pkg.kraddon' ")

        # Of the two that are left out this list is not the place to tell.
        for name in AWKWARD:
            if not set(name) & set("\n\t"):
                self.assertIn(name, found)
        self.assertEqual(self.completed("kraddon list my\\ \\$pkg.kraddon folder/in"),
                         ["folder/inner/"])


if __name__ == "__main__":
    kraddontest.main()
