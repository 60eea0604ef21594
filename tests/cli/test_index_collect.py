# SPDX-License-Identifier: MIT
"""kraddon index --collect: what it removes, and what recent readers still need."""

import ctypes
import os
import shutil

import kraddontest
from cataloguetest import GUID, CatalogueTest, age, hashed_files

LETTERS = "aB3dE6"


class Recent(CatalogueTest):
    """Four add-ons, of which the last root names only the first."""

    def setUp(self):
        super().setUp()
        self.index(*self.addons(4))
        self.old = self.records()
        self.index(*[f"--remove={GUID.format(i)}" for i in (1, 2, 3)])
        shutil.copytree(self.path("site"), self.path("kept"))

    def packages(self, *numbers):
        return {self.old[GUID.format(i)][0]["package"].split("/")[1] for i in numbers}

    def shard_of(self, number):
        guid = GUID.format(number)
        [path] = [path for path in self.path("site/shards").iterdir() if guid in path.read_text()]
        return path

    def test_files_of_a_recent_root_stay_when_one_of_its_shards_is_missing(self):
        for number in (1, 2, 3):
            with self.subTest(number):
                shutil.rmtree(self.path("site"))
                shutil.copytree(self.path("kept"), self.path("site"))
                self.shard_of(number).unlink()

                self.index("--collect")

                others = {0, 1, 2, 3} - {number}
                self.assertLessEqual(self.packages(*others), set(self.names("site/packages")))

    def test_files_of_a_recent_root_stay_when_its_index_is_behind_a_link(self):
        self.path("site/index").rename(self.path("elsewhere"))
        self.path("site/index").symlink_to(self.path("elsewhere"))

        self.index("--collect")

        self.assertEqual(set(self.names("site/packages")), self.packages(0, 1, 2, 3))

    def test_files_of_an_old_root_go(self):
        for path in hashed_files(self.path("site")):
            age(path, 2)

        self.index("--collect")

        self.assertEqual(set(self.names("site/packages")), self.packages(0))


class Temporary(CatalogueTest):

    def setUp(self):
        super().setUp()
        self.index(*self.addons(2))
        self.page = f"site/pages/{GUID.format(0)}/1.0"

    def leave(self, *paths):
        for path in paths:
            self.write(path, "half a file")

    def hidden(self):
        top = self.path("site")
        return sorted(str(path.relative_to(top)) for path in top.rglob(".*"))

    def test_files_of_killed_runs_are_collected(self):
        self.leave(*[f"{folder}/.name.{LETTERS}.tmp" for folder in (
            "site", "site/index", "site/shards", "site/packages", self.page)])
        gone = f"site/pages/{GUID.format(7)}/1.0"
        self.leave(f"{gone}/.index.html.{LETTERS}.tmp")

        result = self.index("--collect")

        self.assertEqual((self.hidden(), result["collected"]), ([], 6))
        self.assertFalse(self.path(gone).exists())
        self.records()

    def test_hidden_files_of_others_stay(self):
        theirs = ["packages/.htaccess", "packages/.notes.tmp", "pages/.hidden/1.0/index.html",
                  f"theirs/.name.{LETTERS}.tmp", f"{self.page[5:]}/.htaccess"]
        self.leave(*[f"site/{path}" for path in theirs])
        hidden = self.hidden()

        self.assertEqual(self.index("--collect")["collected"], 0)

        self.assertEqual(self.hidden(), hidden)
        for path in theirs:
            self.assertTrue(self.path(f"site/{path}").exists(), path)

    def test_a_database_that_was_left_half_done_for_a_day_goes_with_the_next_change(self):
        self.leave(f"site/.catalogue.sqlite.{LETTERS}.tmp", "site/.catalogue.sqlite.aaaaaa.tmp")
        age(self.path(f"site/.catalogue.sqlite.{LETTERS}.tmp"), 2)

        self.index("--yank", f"{GUID.format(1)}@1.0")

        self.assertEqual(self.hidden(), [".catalogue.sqlite.aaaaaa.tmp"])

    def test_a_journal_that_a_killed_run_left_goes_with_the_next_change(self):
        self.leave(f"site/.catalogue.sqlite.{LETTERS}.tmp-journal", "site/.htaccess-journal",
                   f"site/.other.{LETTERS}.tmp-journal")

        self.index("--yank", f"{GUID.format(1)}@1.0")

        self.assertEqual(self.hidden(), [".htaccess-journal", f".other.{LETTERS}.tmp-journal"])

    def test_the_database_is_changed_without_a_journal(self):
        created = 0x100
        system = ctypes.CDLL(None)
        watch = system.inotify_init1(os.O_NONBLOCK | os.O_CLOEXEC)
        self.addCleanup(os.close, watch)
        self.assertGreater(system.inotify_add_watch(watch, bytes(self.path("site")), created), 0)

        self.index("--yank", f"{GUID.format(1)}@1.0")

        names = os.read(watch, 1 << 16)
        self.assertIn(b".catalogue.sqlite.", names)
        self.assertNotIn(b"-journal", names)


if __name__ == "__main__":
    kraddontest.main()
