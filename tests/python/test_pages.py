# SPDX-License-Identifier: MIT
"""Runs the examples of docs/python.md, compares what they print, and checks their types.

python3 test_pages.py --write FOLDER replaces the outputs in the page.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys

from conftest import check_types

TOP = pathlib.Path(__file__).resolve().parents[2]
PAGE = TOP / "docs/python.md"
EXAMPLE = re.compile(r"```python\n(.*?)```\n(?:\n```text\n(.*?)```\n)?", re.DOTALL)


def examples():
    text = PAGE.read_text(encoding="utf-8")
    return [match.groups(default="") for match in EXAMPLE.finditer(text)]


def prepare(folder):
    shutil.copytree(TOP / "examples", folder / "examples",
                    ignore=lambda _, names: {"recordings"} & set(names))
    shutil.copy(TOP / "CHANGELOG.md", folder)


def run(script, folder):
    """What a script prints that is a file of its own, as for processes that start anew."""
    path = folder / "script.py"
    path.write_text(script, encoding="utf-8")
    done = subprocess.run([sys.executable, "-B", "-W", "ignore", path], capture_output=True,
                          text=True, check=False, cwd=folder,
                          env={**os.environ, "SOURCE_DATE_EPOCH": "1770000000"})
    assert done.returncode == 0, script + done.stderr
    return done.stdout


def test_the_examples_print_what_the_page_says(tmp_path):
    prepare(tmp_path)
    assert len(examples()) > 15
    for script, output in examples():
        assert run(script, tmp_path) == output


def test_each_of_the_four_programs_has_about_ten_lines():
    text = PAGE.read_text(encoding="utf-8")
    section = text[text.index("## Four programs"):text.index("## The README")]
    programs = [script.count("\n") for script, _ in EXAMPLE.findall(section)]
    assert len(programs) == 4 and max(programs) <= 10


def test_the_examples_are_strictly_typed(tmp_path):
    names = []
    for number, (script, _) in enumerate(examples()):
        names.append(f"example_{number}.py")
        (tmp_path / names[-1]).write_text(script, encoding="utf-8")
    done = check_types("mypy", "--strict", *names, folder=tmp_path)
    assert done.returncode == 0, done.stdout


def test_the_readme_names_the_page():
    assert "docs/python.md" in (TOP / "README.md").read_text(encoding="utf-8")


if __name__ == "__main__" and sys.argv[1:2] == ["--write"]:
    where = pathlib.Path(sys.argv[2])
    prepare(where)

    def rewritten(match):
        printed = run(match[1], where)
        return f"```python\n{match[1]}```\n" + (f"\n```text\n{printed}```\n" if printed else "")
    PAGE.write_text(EXAMPLE.sub(rewritten, PAGE.read_text(encoding="utf-8")), encoding="utf-8")
