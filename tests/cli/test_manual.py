# SPDX-License-Identifier: MIT
"""The manual pages as the formatters see them."""

import os
import pathlib
import re
import shutil
import subprocess
import unittest

import kraddontest

PAGES = pathlib.Path(os.environ["KRADDON_PAGES"])


class Manual(kraddontest.CliTest):

    def pages(self):
        found = sorted([*PAGES.glob("*.1"), *PAGES.glob("*.5")])
        self.assertGreater(len(found), 10)
        return found

    def need(self, program):
        if shutil.which(program) is None:
            self.skipTest(f"there is no {program}; scripts/setup test installs it")

    def formatted(self, page):
        done = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", page], check=True,
                              env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "80",
                                   "MAN_KEEP_FORMATTING": "", "PAGER": "cat"}, capture_output=True)
        self.assertEqual(done.stderr, b"", page)
        return re.sub(r".\x08", "", done.stdout.decode())

    def test_every_command_has_a_page(self):
        commands = re.findall(r"(?m)^  ([a-z]+)  ", self.ok("help").text)

        self.assertEqual(sorted(page.stem for page in self.pages()),
                         sorted(["kraddon", "kraddon.toml"]
                                + [f"kraddon-{command}" for command in commands]))

    def test_mandoc_has_nothing_to_say(self):
        self.need("mandoc")
        for page in self.pages():
            done = subprocess.run(["mandoc", "-Tlint", page], capture_output=True, check=False)
            # Where the page is not installed, neither are those that it refers to.
            complaints = [line for line in done.stdout.decode().splitlines()
                          if "referenced manual not found" not in line]
            self.assertEqual(complaints, [], page)

    def test_man_formats_them_without_warnings(self):
        self.need("man")
        for page in self.pages():
            text = self.formatted(page)
            self.assertIn("SEE ALSO" if page.suffix == ".5" else "EXIT STATUS", text)

    def test_the_page_of_the_manifest_says_what_the_help_says(self):
        self.need("man")
        text = " ".join(self.formatted(PAGES / "kraddon.toml.5").split())
        self.assertIn("KRADDON.TOML(5) File Formats KRADDON.TOML(5)", text)
        for key in ("korvan-paths", "install-by-default", "[[files.add]]", "[verify]", "docs/**/*.pdf"):
            self.assertIn(f" {key} ", text)
        self.assertIn('name = "Wave Tools" version = "1.2"', text)

    def test_a_page_says_what_the_help_says(self):
        self.need("man")
        text = " ".join(self.formatted(PAGES / "kraddon-list.1").split())
        for line in re.findall(r"(?m)^  (kraddon list .*)$", self.ok("help", "list").text):
            self.assertIn(line, text)
        self.assertIn("-0, --null end each path with NUL instead of a newline", text)


if __name__ == "__main__":
    kraddontest.main()
