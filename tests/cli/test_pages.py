# SPDX-License-Identifier: MIT
"""Runs README.md and docs/tutorial.md and compares what they show.

With --write it writes the pages anew, with the output that there is now.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

import kraddontest

TOP = pathlib.Path(__file__).resolve().parents[2]
README = TOP / "README.md"
TUTORIAL = TOP / "docs" / "tutorial.md"
END = "-- end of the output --"


class Shell:
    """One shell in which all commands run, one after the other."""

    def __init__(self, page, folder):
        program = pathlib.Path(kraddontest.KRADDON).resolve()
        environment = {"PATH": f"{program.parent}:/usr/bin:/bin", "HOME": str(folder),
                       "LC_ALL": "C.UTF-8", "GIT_CONFIG_GLOBAL": "/dev/null",
                       "GIT_CONFIG_SYSTEM": "/dev/null", "GIT_CEILING_DIRECTORIES": str(folder),
                       "TMPDIR": str(folder / "tmp")}
        for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS", "GCOV_PREFIX"):
            if name in os.environ:
                environment[name] = os.environ[name]
        if page == README:
            environment["SOURCE_DATE_EPOCH"] = "1770000000"
            prepare_top(folder)
        (folder / "tmp").mkdir()
        self.process = subprocess.Popen(["bash", "--norc"], cwd=folder, env=environment, text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.STDOUT)

    def output_of(self, command):
        self.process.stdin.write(f"{command}\necho '{END}'\n")
        self.process.stdin.flush()
        lines = []
        for line in self.process.stdout:
            line = line.rstrip("\n")
            if line == END:
                return lines
            lines.append(line)
        raise AssertionError(f"the shell ended at: {command}")

    def close(self):
        self.process.stdin.close()
        self.process.stdout.close()
        self.process.wait()


def prepare_top(folder):
    """What the README takes from the top of the project, as version control keeps it."""
    shutil.copytree(TOP / "examples", folder / "examples",
                    ignore=lambda _, names: {"recordings"} & set(names))
    shutil.copy(TOP / "CHANGELOG.md", folder)


def blocks_of(text):
    """The console blocks: the number of the first line, and the lines."""
    lines = text.splitlines()
    start = None
    for number, line in enumerate(lines):
        if line == "```console":
            start = number + 1
        elif line == "```" and start is not None:
            yield start, lines[start:number]
            start = None


def commands_of(lines):
    """Commands, with where they begin and what they are shown to print."""
    commands = []
    for at, line in enumerate(lines):
        if line.startswith("$ "):
            commands.append((at, [line[2:]], []))
        elif re.match(r"^>( |$)", line) and not commands[-1][2]:
            commands[-1][1].append(line[2:])
        else:
            commands[-1][2].append(line)
    return [(at, "\n".join(words), shown) for at, words, shown in commands]


class Pages(kraddontest.CliTest):

    def check(self, page, least):
        shell = Shell(page, self.folder)
        self.addCleanup(shell.close)
        count = 0
        for start, lines in blocks_of(page.read_text(encoding="utf-8")):
            for at, command, shown in commands_of(lines):
                with self.subTest(line=start + at + 1, command=command):
                    self.assertEqual(shell.output_of(command), shown)
                count += 1
        self.assertGreater(count, least)

    def test_every_command_of_the_readme_prints_what_it_shows(self):
        self.check(README, 25)

    def test_every_command_of_the_tutorial_prints_what_it_shows(self):
        self.check(TUTORIAL, 40)


def write(page, folder):
    """The page with the output of today."""
    shell = Shell(page, folder)
    text = page.read_text(encoding="utf-8").splitlines()
    moved = 0
    for start, lines in list(blocks_of("\n".join(text))):
        new = []
        for _, command, _ in commands_of(lines):
            first, *more = command.split("\n")
            new += [f"$ {first}", *(f"> {line}".rstrip() for line in more)]
            new += shell.output_of(command)
        text[start + moved:start + moved + len(lines)] = new
        moved += len(new) - len(lines)
    shell.close()
    page.write_text("\n".join(text) + "\n", encoding="utf-8")


if __name__ == "__main__":
    if sys.argv[1:] == ["--write"]:
        for each in (README, TUTORIAL):
            with tempfile.TemporaryDirectory() as scratch:
                write(each, pathlib.Path(scratch))
    else:
        kraddontest.main()
