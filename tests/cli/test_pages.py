# SPDX-License-Identifier: MIT
"""Runs the console examples of the pages, compares the outputs that they show, and follows links.

--write replaces the outputs in the pages by those of the program as it is.
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
PAGES = [README, *(TOP / f"{name}.md" for name in ("CONTRIBUTING", "SECURITY", "CHANGELOG")),
         *sorted((TOP / "docs").glob("*.md"))]
FOLDERS = "addon|bench|cmake|docs|examples|fl|fuzz|gateway|hostarray|opc|python|scripts|tests|text|tool"
END = "-- end of the output --"


class Shell:
    """One shell that runs all commands of a page, one after the other."""

    def __init__(self, page, folder):
        program = pathlib.Path(kraddontest.KRADDON).resolve()
        environment = {"PATH": f"{program.parent}:/usr/bin:/bin", "HOME": str(folder),
                       "LC_ALL": "C.UTF-8", "GIT_CONFIG_GLOBAL": "/dev/null",
                       "GIT_CONFIG_SYSTEM": "/dev/null", "GIT_CEILING_DIRECTORIES": str(folder),
                       "TMPDIR": str(folder / "tmp")}
        for name in ("ASAN_OPTIONS", "UBSAN_OPTIONS", "GCOV_PREFIX", "LD_LIBRARY_PATH"):
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
    """The files of the project that the README uses, as version control keeps them."""
    shutil.copytree(TOP / "examples", folder / "examples",
                    ignore=lambda _, names: {"recordings"} & set(names))
    shutil.copy(TOP / "CHANGELOG.md", folder)


def blocks_of(text):
    """The console blocks: the index of the first line, and the lines."""
    lines = text.splitlines()
    start = None
    for number, line in enumerate(lines):
        if line == "```console":
            start = number + 1
        elif line == "```" and start is not None:
            yield start, lines[start:number]
            start = None


def commands_of(lines):
    """Commands, with the line where each begins and the output that is shown for it."""
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
    """A test for each page with examples is added below."""

    def check(self, page):
        shell = Shell(page, self.folder)
        self.addCleanup(shell.close)
        count = 0
        for start, lines in blocks_of(page.read_text(encoding="utf-8")):
            for at, command, shown in commands_of(lines):
                with self.subTest(line=start + at + 1, command=command):
                    self.assertEqual(shell.output_of(command), shown)
                count += 1
        self.assertGreater(count, {"README": 25, "tutorial": 40}.get(page.stem, 0))

    def test_every_example_is_in_a_console_block(self):
        for page in PAGES:
            text = page.read_text(encoding="utf-8")
            console = {start + at for start, lines in blocks_of(text) for at in range(len(lines))}
            for number, line in enumerate(text.splitlines()):
                if re.match(r"\s*\$ ", line):
                    self.assertIn(number, console, f"{page}: {line}")

    def test_every_link_leads_to_a_file_and_a_heading(self):
        for page in PAGES:
            for path, _, heading in links_of(page.read_text(encoding="utf-8")):
                target = page.parent / path if path else page
                self.assertTrue(target.is_file(), f"{page}: {path}")
                if heading:
                    self.assertIn(heading, anchors_of(target.read_text(encoding="utf-8")), page)

    def test_every_path_in_the_project_exists(self):
        for page in PAGES:
            if page.stem != "new-document":  # it names files that its reader makes
                text = re.sub(r"(?ms)^```.*?^```", "", page.read_text(encoding="utf-8"))
                for path in re.findall(rf"`((?:{FOLDERS})/[\w./-]*)`", text):
                    self.assertTrue((TOP / path).exists(), f"{page}: {path}")


def links_of(text):
    return [link.partition("#") for link in re.findall(r"\]\(([^)\s]+)\)", text)
            if "://" not in link]


def anchors_of(text):
    """The anchors that a Markdown viewer makes of the headings."""
    titles = re.findall(r"(?m)^#+ (.*)$", text)
    return [re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles]


def pages_with_examples():
    return [page for page in PAGES if any(blocks_of(page.read_text(encoding="utf-8")))]


for each in pages_with_examples():
    setattr(Pages, f"test_every_command_of_{each.stem.lower()}_prints_what_it_shows",
            lambda self, page=each: self.check(page))


def write(page, folder):
    """Puts the outputs of the program as it is into the page."""
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
        for each in pages_with_examples():
            with tempfile.TemporaryDirectory() as scratch:
                write(each, pathlib.Path(scratch))
    else:
        kraddontest.main()
