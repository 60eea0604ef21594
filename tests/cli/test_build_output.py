# SPDX-License-Identifier: MIT
"""kraddon build: what it prints, which files it replaces, and files that git does not track."""

import os
import subprocess

import kraddontest
import projecttest
from projecttest import LEAST


class Printing(projecttest.ProjectTest):
    def test_name_and_size_are_printed(self):
        self.project(files={"a.m": "a", "b.m": "b" * 300})

        result = self.build()

        size = self.path("Wave-1.0.kraddon").stat().st_size
        self.assertEqual(result.text, f"Wave-1.0.kraddon: {size / 1000:.1f} kB (2 files, 301 B)\n")

    def test_quiet_prints_nothing(self):
        self.project()
        self.assertEqual(self.build("-q").out + self.build("-q").errors.encode(), b"")

    def test_json_stays_one_value(self):
        self.project()
        self.assertTrue(self.build("--json").json["written"])

    def test_nothing_is_printed_of_a_package_that_was_not_built(self):
        self.project("[verify]\nstrict = true\n")
        self.assertEqual(self.run_kraddon("build").out, b"")


class Replacing(projecttest.ProjectTest):
    REFUSAL = ("cannot create 'Wave-1.0.kraddon': it already exists, and is not a package of this "
               "add-on")

    def test_an_earlier_build_is_replaced(self):
        self.project()
        self.build()
        self.write("a.m", "new")
        self.assertEqual(self.build("--dry-run").errors.count("already exists"), 0)
        self.build()
        self.assertEqual(self.entries("Wave-1.0.kraddon")["files/a.m"], b"new")

    def test_an_earlier_build_is_the_same_add_on_whatever_the_form_of_its_guid(self):
        guid = "6f0c1c1e-7d0e-4f0b-9a51-0b6f2d3c4e5f"
        self.project(f'{LEAST}guid = "{guid}"\n')
        self.build()
        self.project(f'{LEAST}guid = "{{{guid.upper()}}}"\n')
        self.build()

    def test_other_files_are_kept(self):
        self.project()
        for make in (lambda: self.write("Wave-1.0.kraddon", "notes"),
                     lambda: self.write("Wave-1.0.kraddon", ""),
                     lambda: self.ok("create", "Wave-1.0.kraddon", "--name", "Wave"),
                     lambda: self.ok("create", "Wave-1.0.kraddon", "--name", "Wave", "--guid", "",
                                     "-q")):
            self.path("Wave-1.0.kraddon").unlink(missing_ok=True)
            make()
            before = self.path("Wave-1.0.kraddon").read_bytes()
            self.fails("build", message=self.REFUSAL, hint="--force replaces it")
            self.assertEqual(self.path("Wave-1.0.kraddon").read_bytes(), before)
            dry = self.run_kraddon("build", "--dry-run")
            self.assertIn(f"kraddon: build: warning: {self.REFUSAL}\n", dry.errors)
        self.build("--force")

    def test_a_build_of_the_add_on_with_another_guid_is_kept(self):
        self.project()
        self.build()
        self.project(f'{LEAST}guid = "6f0c1c1e-7d0e-4f0b-9a51-0b6f2d3c4e5f"\n')
        self.fails("build", message=self.REFUSAL, hint="--force replaces it")

    def test_a_protected_package_is_not_replaced(self):
        self.project()
        self.build()
        self.path("Wave-1.0.kraddon").chmod(0o444)
        self.folder.chmod(0o777)
        self.fails("build", message="cannot replace 'Wave-1.0.kraddon': Permission denied",
                   **self.without_privilege())

    def test_an_earlier_build_stays_if_the_new_one_fails(self):
        self.project()
        self.build()
        before = self.path("Wave-1.0.kraddon").read_bytes()
        self.write(".env", "x")
        self.assertEqual(self.run_kraddon("build").code, 1)
        self.assertEqual(self.path("Wave-1.0.kraddon").read_bytes(), before)


class Untracked(projecttest.ProjectTest):
    def environment(self, extra=None):
        return super().environment({"HOME": str(self.folder), "GIT_CONFIG_NOSYSTEM": "1",
                                    "GIT_CEILING_DIRECTORIES": str(self.folder.parent), **(extra or {})})

    def git(self, *words, folder="."):
        subprocess.run(["git", "-C", self.path(folder), "-c", "user.name=x", "-c", "user.email=x",
                        "-c", "protocol.file.allow=always", *words],
                       check=True, capture_output=True, env=self.environment())

    def found(self, *words, **kw):
        findings = self.build("--json", "-o", "p.kraddon", *words, **kw).json["findings"]
        return [one["part"] for one in findings if one["id"] == "KR515"]

    def test_a_file_that_git_does_not_track_is_a_warning(self):
        self.project(files={"a.m": "a", "sub/b.m": "b", "sub/größe.m": "c"})
        self.git("init", "-q")
        self.git("add", "a.m", "kraddon.toml", "sub/größe.m")
        self.assertEqual(self.found(), ["sub/b.m"])
        self.assertEqual(self.found("--dry-run"), ["sub/b.m"])
        self.assertIn("sub/b.m: warning KR515: git does not track the file\n",
                      self.build("-o", "p.kraddon").errors)
        self.git("add", "sub/b.m")
        self.assertEqual(self.found(), [])

    def test_the_finding_can_be_ignored_and_made_strict(self):
        self.project("[verify]\nignore = ['KR515:sub/**']\n", {"a.m": "a", "sub/b.m": "b"})
        self.git("init", "-q")
        self.git("add", "a.m")
        self.assertEqual(self.found(), [])
        self.write("c.m")
        self.assertEqual(self.found(), ["c.m"])

    def test_files_below_another_root_are_looked_up_there(self):
        self.project("[files]\nroot = './src/'\n", {"src/a.m": "a", "src/b.m": "b", "b.m": "b"},
                     "wave")
        self.git("init", "-q")
        self.git("add", "wave/src/a.m", "wave/b.m")
        self.assertEqual(self.found("wave"), ["b.m"])

    def test_files_that_the_manifest_adds_by_name_are_meant(self):
        self.project("[[files.add]]\nfrom = 'out/w.jar'\nto = 'w.jar'\n[files]\nexclude = ['out/']\n",
                     {"a.m": "a", "out/w.jar": "jar"})
        self.git("init", "-q")
        self.git("add", "a.m")
        self.assertEqual(self.found(), [])

    def test_links_and_submodules_are_tracked(self):
        self.project(files={"a.m": "a", "lib/b.m": "b"})
        self.path("link.m").symlink_to("a.m")
        self.path("more").symlink_to("lib")
        self.tree({"d.m": "d"}, "other")
        self.git("init", "-q", folder="other")
        self.git("add", ".", folder="other")
        self.git("commit", "-q", "-m", "x", folder="other")
        self.git("init", "-q")
        self.git("submodule", "add", "-q", self.path("other"), "module")
        self.git("add", "a.m", "lib", "link.m", "more", ".gitmodules")
        found = self.found("--exclude", "/other/")
        self.assertEqual(found, [])
        self.assertIn("module/d.m", self.listing())
        self.assertIn("more/b.m", self.listing())

    def test_where_git_tracks_nothing_there_is_no_finding(self):
        self.project()
        self.assertEqual(self.found(), [])
        self.git("init", "-q")
        self.assertEqual(self.found(), [])
        self.write("b.m")
        self.git("add", "b.m")
        self.assertEqual(self.found(), ["a.m"])
        self.assertEqual(self.found(env={"PATH": "/nowhere"}), [])
        self.assertEqual(self.found(env={"GIT_DIR": os.devnull}), ["a.m"])


if __name__ == "__main__":
    kraddontest.main()
