# SPDX-License-Identifier: MIT
"""Each sentence of what SECURITY.md promises has its tests in a table of docs/testing.md."""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


def promised():
    """The sentences of the list under "What is promised"."""
    text = (ROOT / "SECURITY.md").read_text()
    section = text.split("## What is promised\n")[1].split("\n## ")[0]
    points = re.findall(r"^- \*\*.*?\*\* (.*?)(?=^- |^$)", section, re.M | re.S)
    joined = " ".join(" ".join(point.split()) for point in points)
    return re.split(r"(?<=\.) (?=[A-Z`])", joined)


def table():
    """The tests by sentence."""
    text = (ROOT / "docs" / "testing.md").read_text()
    section = text.split("## What is promised, and its tests\n")[1].split("\n## ")[0]
    rows = re.findall(r"^\| (.*?) \| (.*?) \|$", section, re.M)[1:]
    return {sentence: re.findall(r"`([^`]+)`", tests) for sentence, tests in rows if "---" not in sentence}


def known_tests():
    names = set()
    for file in (ROOT / "tests").rglob("*.py"):
        names |= {f"{file.stem}.{name}" for name in re.findall(r"def (test_\w+)", file.read_text())}
    for file in (ROOT / "tests").rglob("*.cpp"):
        names |= {".".join(pair) for pair in re.findall(r"TEST(?:_F|_P)?\((\w+),\s*(\w+)\)",
                                                        file.read_text())}
    return names


class Promises(unittest.TestCase):

    def test_are_the_sentences_of_the_table(self):
        self.assertGreater(len(promised()), 20)
        self.assertEqual(list(table()), promised())

    def test_have_tests_that_exist(self):
        known = known_tests()
        for sentence, tests in table().items():
            with self.subTest(sentence=sentence):
                self.assertNotEqual(tests, [])
                self.assertEqual([test for test in tests if test not in known], [])


if __name__ == "__main__":
    unittest.main()
