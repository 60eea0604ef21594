# SPDX-License-Identifier: MIT
"""The pipeline of docs/pipeline.md does what the page says: the tests run its steps as one shell
script, from start to end, or one after the other where a step is to fail."""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

KRADDON = pathlib.Path(os.environ["KRADDON"])
PAGE = pathlib.Path(__file__).parents[2] / "docs/pipeline.md"
# They download things that do not exist here, and are left out.
FOREIGN = ("Install what is needed", "Install kraddon", "Fetch the last release")

MANIFEST = """
[package]
name = "Wave Tools"
version = "{version}"
summary = "Short-time spectra"
description = "Windows, and what is seen through them."
author = "Ada Lind"
contact = "ada@example.org"
screenshot = "shot.png"
[license]
type = "MIT"
text = "Do with it what you like."
[files]
exclude = ["out/", "last/", "home/", "summary"]
"""
# One grey dot.
PNG = bytes.fromhex("89504e470d0a1a0a0000000d49484452000000010000000108000000003a7e9b55000000"
                    "0a49444154789c636000000002000148afa4710000000049454e44ae426082")


def steps():
    """[(name, shell lines)], in the order of the page."""
    text = PAGE.read_text(encoding="utf-8")
    yaml = re.search(r"```yaml\n(.*?)\n```\n", text, re.DOTALL).group(1)
    found = []
    for item in re.split(r"(?m)^      - ", yaml)[1:]:
        name = re.match(r"name: (.*)", item)
        block = re.search(r"(?m)^        run: \|\n((?:          .*\n|\n)+)", item + "\n")
        line = re.search(r"(?m)^        run: ([^|\n].*)$", item)
        if block:
            found.append((name.group(1), re.sub(r"(?m)^          ", "", block.group(1))))
        elif line:
            found.append((name.group(1), line.group(1)))
    return found


def commands():
    text = subprocess.run([KRADDON, "help"], check=True, capture_output=True, text=True).stdout
    return set(re.findall(r"(?m)^  ([a-z]+)  ", text))


class Pipeline(unittest.TestCase):

    def setUp(self):
        missing = {"build", "verify", "diff", "preview"} - commands()
        if missing:
            self.skipTest(f"the program has no {sorted(missing)} yet")
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kraddon-pipeline-"))
        self.addCleanup(shutil.rmtree, self.folder)
        (self.folder / "home").mkdir()
        (self.folder / "home/bin").mkdir()
        os.symlink(KRADDON, self.folder / "home/bin/kraddon")
        self.env = {**os.environ, "HOME": str(self.folder / "home"), "GIT_CONFIG_NOSYSTEM": "1",
                    "PATH": f"{self.folder}/home/bin:{os.environ['PATH']}",
                    "GITHUB_STEP_SUMMARY": str(self.folder / "summary"),
                    **{f"GIT_{who}_{what}": value for who in ("AUTHOR", "COMMITTER")
                       for what, value in (("NAME", "Ada"), ("EMAIL", "ada@example.org"),
                                           ("DATE", "1700000000 +0000"))}}
        self.write("shot.png", PNG)
        self.write("wave.m", "x = 1;\n")
        self.write("kraddon.toml", MANIFEST.format(version="1.0"))
        self.shell("git init -q . && git add kraddon.toml wave.m shot.png && git commit -q -m one")

    def write(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())

    def shell(self, lines):
        """Runs lines as the pipeline does: stops at the first that fails."""
        return subprocess.run(["sh", "-e", "-c", lines], cwd=self.folder, env=self.env, check=False,
                              capture_output=True, text=True)

    def run_script(self):
        """The result of all steps as one script."""
        script = "\n".join(f"{lines}\necho 'done: {name}'" for name, lines in steps()
                           if name not in FOREIGN)
        return self.shell(script + "\n")

    def run_steps(self):
        """{name: result} of all steps; continues after a failure, as with 'always'."""
        return {name: self.shell(lines) for name, lines in steps() if name not in FOREIGN}

    def assert_good(self, results):
        for name, done in results.items():
            self.assertEqual(done.returncode, 0, f"{name}: {done.stdout}{done.stderr}")

    def test_it_builds_verifies_and_compares(self):
        done = self.run_script()
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertEqual(re.findall("(?m)^done: (.*)$", done.stdout),
                         [name for name, _ in steps() if name not in FOREIGN])
        first = (self.folder / "out/package.kraddon").read_bytes()
        self.assertFalse((self.folder / "summary").exists())  # nothing to compare with

        (self.folder / "last").mkdir()
        shutil.move(self.folder / "out/package.kraddon", self.folder / "last/one.kraddon")
        shutil.rmtree(self.folder / "out")
        self.write("kraddon.toml", MANIFEST.format(version="1.1"))
        self.write("wave.m", "x = 2;\n")
        self.assertEqual(self.run_script().returncode, 0)

        self.assertNotEqual((self.folder / "out/package.kraddon").read_bytes(), first)
        # Indented, so that no name of a file can end the block.
        self.assertRegex((self.folder / "summary").read_text(), r"(?m)^    ~ wave\.m")
        self.assertTrue((self.folder / "out/package.html").stat().st_size > 1000)
        self.assertIn('"version": "2.1.0"', (self.folder / "out/findings.sarif").read_text())

    def test_the_same_commit_gives_the_same_bytes(self):
        self.assert_good(self.run_steps())
        first = (self.folder / "out/package.kraddon").read_bytes()
        shutil.rmtree(self.folder / "out")
        os.utime(self.folder / "wave.m", (1, 1))

        self.assert_good(self.run_steps())

        self.assertEqual((self.folder / "out/package.kraddon").read_bytes(), first)

    def fetch(self, message):
        """The result of fetching the last release with a gh that fails with this message."""
        gh = self.folder / "home/bin/gh"
        gh.write_text(f"#!/bin/sh\necho '{message}' >&2\nexit 1\n", encoding="utf-8")
        gh.chmod(0o755)
        return self.shell(dict(steps())["Fetch the last release"])

    def test_only_a_release_that_is_missing_is_none(self):
        for message in ("release not found", "no assets match the file pattern"):
            with self.subTest(message=message):
                self.assertEqual(self.fetch(message).returncode, 0)

        done = self.fetch("HTTP 403: Resource not accessible")
        self.assertEqual(done.returncode, 1)
        self.assertIn("HTTP 403", done.stdout)

    def without_screenshot(self, rules=""):
        manifest = MANIFEST.format(version="1.0").replace('screenshot = "shot.png"\n', "")
        self.write("kraddon.toml", manifest + rules)

    def test_a_warning_fails_the_job_and_leads_to_the_manifest(self):
        self.without_screenshot()

        results = self.run_steps()

        build = results["Build"]
        self.assertEqual(build.returncode, 1)
        self.assertEqual(build.stdout, "::warning file=kraddon.toml,line=2,col=1,title=KR504::the "
                                       "add-on has no screenshot\n")
        self.assertEqual(results["Write the findings down"].returncode, 0)
        log = json.loads((self.folder / "out/findings.sarif").read_text())
        self.assertEqual([one["ruleId"] for one in log["runs"][0]["results"]], ["KR504"])
        self.assertEqual(self.run_script().returncode, 1)

    def test_what_the_manifest_ignores_does_not_fail_the_job(self):
        self.without_screenshot('[verify]\nignore = ["KR504"]\n')

        done = self.run_script()

        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertNotIn("::", done.stdout)

    def test_a_bad_manifest_fails_the_job_at_its_line(self):
        self.write("kraddon.toml", MANIFEST.format(version="1.0").replace("summary", "sumary"))

        results = self.run_steps()

        self.assertEqual(results["Build"].returncode, 1)
        self.assertTrue(results["Build"].stdout.startswith(
            "::error file=kraddon.toml,line=5,col=1::bad manifest 'kraddon.toml:5:1': unknown key"),
            results["Build"].stdout)
        self.assertEqual(results["Write the findings down"].returncode, 0)
        log = json.loads((self.folder / "out/findings.sarif").read_text())
        self.assertEqual(log["runs"][0]["results"][0]["locations"][0]["physicalLocation"]["region"],
                         {"startLine": 5, "startColumn": 1})


class Page(unittest.TestCase):

    def test_the_steps_are_found(self):
        names = [name for name, _ in steps()]

        self.assertEqual([name for name in names if name not in FOREIGN],
                         ["Build", "Verify", "Write the findings down",
                          "Compare with the last release", "Show it as a gallery would",
                          "Write a bill of materials"])
        self.assertLessEqual(set(FOREIGN), set(names))
        for name, lines in steps():
            checked = subprocess.run(["sh", "-n", "-c", lines], capture_output=True, check=False)
            self.assertEqual(checked.returncode, 0, name)


def main():
    result = unittest.main(exit=False).result
    if result.wasSuccessful() and result.skipped:
        print("\n".join(f"left out: {reason}" for _, reason in result.skipped))
        sys.exit(77)
    sys.exit(not result.wasSuccessful())


if __name__ == "__main__":
    main()
