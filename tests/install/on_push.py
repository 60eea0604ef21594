# SPDX-License-Identifier: MIT
"""The action of action.yml and the hooks of .pre-commit-hooks.yaml, run as their systems run them."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import yaml

KRADDON = pathlib.Path(os.environ["KRADDON"])
TOP = pathlib.Path(__file__).resolve().parents[2]
GUID = "0c3a0d9e-5b7a-4a53-9c58-6f0d2f4f8a11"
OTHER_GUID = "8d1f0f6e-2b43-4c0a-8a55-1b8f3c1d7e22"
MANIFEST = """
[package]
name = "Wave Tools"
version = "{version}"
summary = "Short-time spectra"
description = "Windows, and what is seen through them."
author = "Ada Lind"
contact = "ada@example.org"
guid = "{guid}"
[license]
type = "MIT"
text = "Do with it what you like."
[files]
include = ["*.m"]
[verify]
ignore = {ignore}
"""
# Downloads the packages in the folder 'last' beside it, or fails with the message of a file there.
GH = """#!/bin/sh
test "$GH_TOKEN" = secret
while [ "$1" != --dir ]; do shift; done
cd "$(dirname "$0")/last" || exit
if [ -e message ]; then cat message >&2; exit 1; fi
cp -- *.kraddon "$2"
"""


class Repository(unittest.TestCase):
    """A project in a folder of a repository."""

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kraddon-push-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.bin = self.folder / "bin"
        self.bin.mkdir()
        (self.bin / "kraddon").symlink_to(KRADDON)
        self.work = self.folder / "work"
        (self.work / "wave").mkdir(parents=True)
        self.env = {**os.environ, "HOME": str(self.folder), "GIT_CONFIG_NOSYSTEM": "1",
                    "PATH": f"{self.bin}:{os.environ['PATH']}",
                    **{f"GIT_{who}_{what}": value for who in ("AUTHOR", "COMMITTER")
                       for what, value in (("NAME", "Ada"), ("EMAIL", "ada@example.org"),
                                           ("DATE", "1700000000 +0000"))}}
        self.write("wave/wave.m", "x = 1;\n")
        self.manifest()
        self.run_in_work("git init -q . && git add . && git commit -q -m one")

    def write(self, name, text):
        path = self.folder / "work" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
        return path

    def manifest(self, version="1.0", ignore='["KR504"]', folder="wave"):
        self.write(f"{folder}/kraddon.toml",
                   MANIFEST.format(guid=GUID, version=version, ignore=ignore))

    def run_in_work(self, script, **env):
        return subprocess.run(["bash", "-e", "-c", script], cwd=self.work,
                              env={**self.env, **env}, check=False, capture_output=True, text=True)


class ActionTest(Repository):
    """Runs the steps of the action."""

    def setUp(self):
        super().setUp()
        self.action = yaml.safe_load((TOP / "action.yml").read_text(encoding="utf-8"))
        self.write("../bin/gh", GH).chmod(0o755)
        self.last = self.bin / "last"
        self.last.mkdir()
        self.gh_fails("release not found")

    def gh_fails(self, message):
        (self.last / "message").write_text(message + "\n", encoding="utf-8")

    def release(self, **guids):
        """Publishes packages with these names and GUIDs as the last release."""
        (self.last / "message").unlink(missing_ok=True)
        for name, guid in guids.items():
            done = self.run_in_work(
                f"kraddon create {self.last}/{name}.kraddon --name {name} --guid {guid}")
            self.assertEqual(done.returncode, 0, done.stderr)

    def run_action(self, **given):
        """[(name of the step, its result)], up to the first failure, and the outputs."""
        values = {name: str(each["default"]) for name, each in self.action["inputs"].items()}
        values["token"] = "secret"
        values.update(given)
        outputs, results = self.folder / "outputs", []
        outputs.write_text("")
        for step in self.action["runs"]["steps"]:
            if not self.evaluate(step.get("if", "${{ true }}"), values):
                continue
            env = {name: self.filled(text, values) for name, text in step.get("env", {}).items()}
            done = self.run_in_work(step["run"], **env, GITHUB_ACTION_PATH=str(TOP),
                                    GITHUB_OUTPUT=str(outputs),
                                    GITHUB_STEP_SUMMARY=str(self.folder / "summary"))
            results.append((step["name"], done))
            if done.returncode != 0:
                break
        return results, dict(line.split("=", 1) for line in outputs.read_text().splitlines())

    @staticmethod
    def filled(text, values):
        return re.sub(r"\$\{\{ inputs\.(\w+) \}\}", lambda found: values[found[1]], text)

    @staticmethod
    def evaluate(condition, values):
        inner = re.fullmatch(r"\$\{\{ (.*) \}\}", condition)[1]
        if inner == "true":
            return True
        name, expected = re.fullmatch(r"inputs\.(\w+) == '(\w+)'", inner).groups()
        return values[name] == expected

    def assert_good(self, results):
        for name, done in results:
            self.assertEqual(done.returncode, 0, f"{name}: {done.stdout}{done.stderr}")


class Action(ActionTest):

    def test_it_builds_verifies_and_finds_no_release(self):
        results, outputs = self.run_action(project="wave")

        self.assert_good(results)
        self.assertEqual([name for name, _ in results],
                         ["Install kraddon", "Build", "Verify", "Compare with the last release"])
        self.assertEqual(outputs, {"package": "out/package.kraddon"})
        self.assertEqual(sorted(path.name for path in (self.work / "out").iterdir()),
                         ["findings.sarif", "package.html", "package.kraddon",
                          "package.spdx.json"])
        self.assertFalse((self.folder / "summary").exists())

    def test_a_warning_is_an_annotation_and_fails_unless_it_is_allowed(self):
        self.manifest(ignore="[]")

        results, _ = self.run_action(project="wave")
        self.assertEqual((results[-1][0], results[-1][1].returncode), ("Verify", 1))
        self.assertRegex(results[1][1].stdout, "(?m)^::warning file=wave/kraddon.toml,line=.*KR504")
        self.assertIn("KR504", results[-1][1].stdout)
        self.assertIn("KR504", (self.work / "out/findings.sarif").read_text())

        results, _ = self.run_action(project="wave", strict="false", compare="false")
        self.assert_good(results)
        self.assertEqual(results[-1][0], "Verify")

    def test_the_same_commit_gives_the_same_bytes(self):
        self.run_action(project="wave")
        first = (self.work / "out/package.kraddon").read_bytes()
        os.utime(self.work / "wave/wave.m", (1, 1))

        self.run_action(project="wave", output="again")

        self.assertEqual((self.work / "again/package.kraddon").read_bytes(), first)

    def test_a_folder_is_never_a_command(self):
        name = "a b; touch hit $(touch hit)"
        shutil.move(self.work / "wave", self.work / name)

        results, _ = self.run_action(project=name, output="o $(touch hit)")

        self.assert_good(results)
        self.assertFalse((self.work / "hit").exists())

    def test_without_kraddon_it_says_how_to_get_it(self):
        (self.bin / "kraddon").unlink()
        self.env["PATH"] = f"{self.bin}:/usr/bin:/bin"
        if shutil.which("kraddon", path=self.env["PATH"]):
            return  # a system that has it has nothing to say

        results, _ = self.run_action(project="wave")

        self.assertEqual((len(results), results[0][1].returncode), (1, 1))
        self.assertIn("::error::kraddon is not installed; name its Debian package with 'deb'",
                      results[0][1].stderr)


class LastRelease(ActionTest):

    def compare(self):
        """The result of the last step of a run, the comparison."""
        (name, done), = self.run_action(project="wave")[0][3:]
        self.assertEqual(name, "Compare with the last release")
        return done

    def changes(self):
        return (self.work / "out/changes.txt").read_text(encoding="utf-8")

    def test_what_changed_since_then_is_in_the_summary(self):
        self.run_action(project="wave")
        self.release()
        shutil.move(self.work / "out/package.kraddon", self.last / "wave.kraddon")
        self.write("wave/new.m", "y = 2;\n")
        self.manifest(version="1.1")
        self.run_in_work("git add . && git commit -q -m two")

        done = self.compare()

        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("\n    + new.m", (self.folder / "summary").read_text())
        self.assertIn("+ new.m", self.changes())

    def test_without_a_package_there_is_nothing_to_compare_with(self):
        for message in ("release not found", "no assets match the file pattern",
                        "no assets to download"):
            with self.subTest(message=message):
                self.gh_fails(message)

                done = self.compare()

                self.assertEqual((done.returncode, done.stdout, done.stderr),
                                 (0, "There is no released package to compare with.\n", ""))

    def test_a_release_that_cannot_be_read_is_an_error(self):
        self.gh_fails("HTTP 403: Resource not accessible\n(https://api.github.com/)")

        done = self.compare()

        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (1, "", "::error::cannot fetch the packages of the last release: "
                          "HTTP 403: Resource not accessible (https://api.github.com/)\n"))

    def test_of_several_packages_the_one_of_this_add_on_is_compared(self):
        self.release(alpha=OTHER_GUID, beta=GUID.upper())

        done = self.compare()

        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertRegex(self.changes(), "name.*beta")
        self.assertNotIn("alpha", self.changes())

    def test_several_packages_of_other_add_ons_are_not_compared(self):
        self.release(alpha=OTHER_GUID, beta=OTHER_GUID)

        done = self.compare()

        self.assertEqual((done.returncode, done.stdout),
                         (0, "There is no released package to compare with.\n"), done.stderr)

    def test_several_packages_of_this_add_on_are_an_error(self):
        self.release(alpha=GUID, beta=OTHER_GUID, gamma=GUID)

        done = self.compare()

        self.assertEqual((done.returncode, done.stderr),
                         (1, "::error::cannot compare with the last release: several packages have "
                          f"the GUID '{GUID}': alpha.kraddon gamma.kraddon\n"))

    def test_a_damaged_package_among_several_is_an_error(self):
        self.release(alpha=GUID)
        (self.last / "beta.kraddon").write_bytes(b"no package")

        done = self.compare()

        self.assertNotEqual(done.returncode, 0)
        self.assertIn("beta.kraddon", done.stderr)

    def test_an_output_that_is_empty_is_the_default(self):
        self.release(alpha=GUID)

        results, outputs = self.run_action(project="wave", output="")

        self.assert_good(results)
        self.assertEqual(outputs, {"package": "out/package.kraddon"})
        self.assertIn("alpha", self.changes())


class Hooks(Repository):

    def setUp(self):
        super().setUp()
        hooks = yaml.safe_load((TOP / ".pre-commit-hooks.yaml").read_text(encoding="utf-8"))
        self.hooks = {hook["id"]: hook for hook in hooks}

    def run_hook(self, name, *arguments):
        """As pre-commit does: a script is in the repository of the hooks, the rest in the path."""
        hook = self.hooks[name]
        words = hook["entry"].split()
        if hook["language"] == "script":
            words[0] = str(TOP / words[0])
        words += arguments
        if hook.get("pass_filenames", True):
            tracked = self.run_in_work("git ls-files").stdout.splitlines()
            words += [path for path in tracked if re.search(hook["files"], path)]
        return subprocess.run(words, cwd=self.work, env=self.env, check=False,
                              capture_output=True, text=True)

    def test_every_project_of_the_repository_is_built(self):
        self.manifest(folder="more/deep")
        self.write("more/deep/b.m", "y = 2;\n")
        self.run_in_work("git add .")
        before = sorted(path for path in self.work.rglob("*") if ".git" not in path.parts)

        self.assertEqual(self.run_hook("kraddon-build").returncode, 0)

        self.manifest(version="", folder="more/deep")
        done = self.run_hook("kraddon-build")
        self.assertEqual(done.returncode, 1)
        self.assertIn("more/deep/kraddon.toml", done.stderr)
        self.assertEqual(sorted(path for path in self.work.rglob("*") if ".git" not in path.parts),
                         before)

    def test_options_of_the_hook_reach_the_build(self):
        self.manifest(ignore="[]")

        self.assertEqual(self.run_hook("kraddon-build").returncode, 0)
        self.assertEqual(self.run_hook("kraddon-build", "--strict").returncode, 1)

    def test_a_package_that_is_committed_is_verified(self):
        self.run_in_work("kraddon build wave -o 'good one.kraddon' && git add .")
        self.assertEqual(self.run_hook("kraddon-verify").returncode, 0)

        path = self.work / "good one.kraddon"
        path.write_bytes(path.read_bytes()[:-40])
        done = self.run_hook("kraddon-verify")
        self.assertEqual(done.returncode, 1)
        self.assertIn("good one.kraddon", done.stdout)


if __name__ == "__main__":
    unittest.main()
