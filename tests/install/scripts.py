# SPDX-License-Identifier: MIT
"""The scripts of the project, run on a project of no sources with the same presets."""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import unittest

TOP = pathlib.Path(__file__).resolve().parents[2]
# Each test of it leaves a file in its build folder.
PROJECT = """
cmake_minimum_required(VERSION 3.25)
project(kraddon NONE)
option(KRADDON_PYTHON "" OFF)
option(KRADDON_TESTS "" OFF)
add_custom_target(installed)
add_custom_target(kraddon_python_package)
enable_testing()
foreach(name addon_comparison gateway_threads opc_interfaces zippackage_read)
  add_custom_target(${name}_test)
  add_test(NAME ${name}_test COMMAND ${CMAKE_COMMAND} -E touch ${CMAKE_BINARY_DIR}/${name}.ran)
endforeach()
"""


def options_of(build):
    """The options of CMake that a build folder has."""
    return dict(re.findall(r"(?m)^(\w+):\w+=(.*)$", (build / "CMakeCache.txt").read_text()))


class Scripts(unittest.TestCase):

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kraddon-scripts-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.work = self.folder / "work"
        self.temporary = self.folder / "temporary"
        for folder in (self.work / "scripts", self.temporary, self.folder / "bin"):
            folder.mkdir(parents=True)
        (self.work / "CMakeLists.txt").write_text(PROJECT)
        shutil.copy(TOP / "CMakePresets.json", self.work)
        self.env = {**os.environ, "TMPDIR": str(self.temporary), "SOURCE_DATE_EPOCH": "1700000000",
                    "PATH": f"{self.folder}/bin:{os.environ['PATH']}"}
        self.program("work/scripts/setup")

    def program(self, path, script=""):
        """Writes a program that runs this script of sh."""
        place = self.folder / path
        place.write_text(f"#!/bin/sh\n{script}\n")
        place.chmod(0o755)

    def run_script(self, name, *words, **env):
        shutil.copy(TOP / "scripts" / name, self.work / "scripts")
        return subprocess.run([f"scripts/{name}", *words], cwd=self.work, env={**self.env, **env},
                              capture_output=True, text=True, check=False, start_new_session=True,
                              stdin=subprocess.DEVNULL)


class Package(Scripts):

    def setUp(self):
        super().setUp()
        self.program("bin/cpack", "echo the build is done; exit 1")
        self.build = self.folder / "other"

    def options_after_packaging(self):
        done = self.run_script("package", KRADDON_BUILD=str(self.build))
        self.assertEqual(done.returncode, 1)
        self.assertTrue(done.stderr.endswith("the build is done\n"), done.stdout + done.stderr)
        return options_of(self.build)

    def test_it_configures_the_folder_that_it_is_told(self):
        options = self.options_after_packaging()

        self.assertEqual((options["KRADDON_PYTHON"], options["CMAKE_BUILD_TYPE"]),
                         ("ON", "RelWithDebInfo"))
        self.assertFalse((self.work / "build/release").exists())

    def test_a_folder_that_is_configured_keeps_its_options(self):
        subprocess.run(["cmake", "--preset", "debug-tests", "-B", self.build], cwd=self.work,
                       check=True, capture_output=True)

        options = self.options_after_packaging()

        self.assertEqual([options[name] for name in ("KRADDON_PYTHON", "KRADDON_TESTS",
                                                     "CMAKE_BUILD_TYPE")], ["ON", "ON", "Debug"])


class Wheel(Scripts):

    def options_after_building(self):
        (self.work / "python").mkdir()
        shutil.copy(TOP / "python/wheel_backend.py", self.work / "python")
        env = {name: value for name, value in self.env.items() if name != "KRADDON_BUILD"}
        subprocess.run(["/usr/bin/python3", "-c", "import wheel_backend; wheel_backend._build()"],
                       cwd=self.work / "python", env=env, check=True, capture_output=True)
        return options_of(self.work / "build/release")

    def test_the_folder_is_configured_by_the_preset(self):
        options = self.options_after_building()

        self.assertEqual((options["KRADDON_PYTHON"], options["CMAKE_BUILD_TYPE"]),
                         ("ON", "RelWithDebInfo"))

    def test_a_folder_with_tests_keeps_them(self):
        subprocess.run(["cmake", "--preset", "release-tests"], cwd=self.work, check=True,
                       capture_output=True)

        options = self.options_after_building()

        self.assertEqual((options["KRADDON_PYTHON"], options["KRADDON_TESTS"]), ("ON", "ON"))


class Test(Scripts):

    def setUp(self):
        super().setUp()
        for name in ("format", "fuzz", "tidy"):
            self.program(f"work/scripts/{name}")

    def run_tests(self, *words):
        """The result, and which tests ran in which build folder."""
        done = self.run_script("test", *words)
        ran = (self.work / "build").glob("*/*.ran")
        return done, sorted(f"{path.parent.name}/{path.stem}" for path in ran)

    def test_options_select_among_the_tests_of_threads(self):
        done, ran = self.run_tests("--tsan", "-R", "interfaces|zippackage")

        self.assertEqual((done.returncode, ran), (0, ["tsan/opc_interfaces"]), done.stderr)

    def test_without_options_all_tests_of_threads_run(self):
        done, ran = self.run_tests("--tsan")

        self.assertEqual((done.returncode, ran), (0, [
            "tsan/addon_comparison", "tsan/gateway_threads", "tsan/opc_interfaces"]), done.stderr)

    def test_no_test_to_run_is_an_error(self):
        for part in ("--quick", "--asan", "--tsan"):
            with self.subTest(part=part):
                done, ran = self.run_tests(part, "-R", "none")

                self.assertEqual(ran, [])
                self.assertNotEqual(done.returncode, 0)
                self.assertIn("No tests were found", done.stdout + done.stderr)

    def test_a_test_that_some_parts_do_not_have_runs_in_the_others(self):
        done, ran = self.run_tests("-R", "zippackage")

        self.assertEqual((done.returncode, ran),
                         (0, ["asan/zippackage_read", "release/zippackage_read"]), done.stderr)


class LongTest(Scripts):

    def compare_packages(self, reprotest):
        """The result of a run in which this script is the program that compares."""
        self.program("bin/git", "tar -c --files-from=/dev/null")
        self.program("bin/reprotest", f'touch "$TMPDIR/of-reprotest"; {reprotest}')
        return self.run_script("test-long", "packages")

    def test_nothing_is_left_of_packages_that_differ(self):
        done = self.compare_packages("exit 3")

        self.assertEqual(done.returncode, 3, done.stderr)
        self.assertEqual(list(self.temporary.iterdir()), [])

    def test_nothing_is_left_of_an_interrupted_comparison(self):
        done = self.compare_packages("kill -INT 0; sleep 10")

        self.assertEqual(done.returncode, -signal.SIGINT, done.stderr)
        self.assertEqual(list(self.temporary.iterdir()), [])

    def test_nothing_is_left_of_a_comparison_that_succeeds(self):
        done = self.compare_packages("exit 0")

        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(list(self.temporary.iterdir()), [])


if __name__ == "__main__":
    unittest.main()
