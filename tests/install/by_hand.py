# SPDX-License-Identifier: MIT
"""The project builds by the lines that the README shows, with what 'scripts/setup' installs."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

CMAKE = os.environ["CMAKE"]
TOP = pathlib.Path(__file__).resolve().parents[2]
# What only 'scripts/setup test' installs.
TEST_PACKAGES = ("GTest", "rapidcheck", "benchmark")


class ByHand(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="kraddon-by-hand-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)

    def configure(self, preset):
        """A build folder for the preset, as on a machine without the packages of the tests."""
        build = self.folder / preset
        absent = [f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in TEST_PACKAGES]
        done = subprocess.run([CMAKE, "--preset", preset, "-B", build, *absent], cwd=TOP,
                              capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return build

    def test_release_and_debug_are_configured_without_the_packages_of_the_tests(self):
        for preset in ("release", "debug"):
            with self.subTest(preset=preset):
                self.configure(preset)

    def test_what_the_demo_builds_is_all_that_an_install_copies(self):
        build = self.configure("release")
        line = re.search(r"(?m)^cmake --build --preset release --target (.*)$",
                         (TOP / "scripts/demo").read_text(encoding="utf-8"))
        steps = subprocess.run(["ninja", "-C", build, "-n", *line.group(1).split()],
                               capture_output=True, text=True, check=True).stdout
        built = set(re.split(r",?\s+(?:\.\./)*", steps))

        copied = set()
        for script in build.rglob("cmake_install.cmake"):
            copied.update(re.findall(rf'"{build}/((?:bin|lib|pages)/[^"]+|[^"]+\.a)"',
                                     script.read_text(encoding="utf-8")))

        self.assertGreater(len(copied), 10)
        self.assertEqual(sorted(copied - built), [])


if __name__ == "__main__":
    unittest.main()
