# SPDX-License-Identifier: MIT
"""Runs docs/tutorial.md and compares what it shows.

With --write it writes the page anew, with the output that there is now.
"""

import os
import pathlib
import re
import subprocess
import sys

import kraddontest

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs" / "tutorial.md"
END = "-- end of the output --"


class Shell:
    """One shell in which all commands run, one after the other."""

    def __init__(self, folder):
        program = pathlib.Path(kraddontest.KRADDON).resolve()
        environment = {"PATH": f"{program.parent}:/usr/bin:/bin", "HOME": str(folder),
                       "LC_ALL": "C.UTF-8", "GIT_CONFIG_GLOBAL": "/dev/null",
                       "GIT_CONFIG_SYSTEM": "/dev/null", "GIT_CEILING_DIRECTORIES": str(folder),
                       "TMPDIR": str(folder / "tmp")}
        for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS", "GCOV_PREFIX"):
            if name in os.environ:
                environment[name] = os.environ[name]
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


class Tutorial(kraddontest.CliTest):

    def shell(self):
        shell = Shell(self.folder)
        self.addCleanup(shell.close)
        return shell

    def test_every_command_prints_what_the_page_shows(self):
        shell = self.shell()
        count = 0
        for start, lines in blocks_of(PAGE.read_text(encoding="utf-8")):
            for at, command, shown in commands_of(lines):
                with self.subTest(line=start + at + 1, command=command):
                    self.assertEqual(shell.output_of(command), shown)
                count += 1
        self.assertGreater(count, 40)


def write(folder):
    """The page with the output of today."""
    shell = Shell(folder)
    text = PAGE.read_text(encoding="utf-8").splitlines()
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
    PAGE.write_text("\n".join(text) + "\n", encoding="utf-8")


if __name__ == "__main__":
    if sys.argv[1:] == ["--write"]:
        import tempfile
        with tempfile.TemporaryDirectory() as scratch:
            write(pathlib.Path(scratch))
    else:
        kraddontest.main()
