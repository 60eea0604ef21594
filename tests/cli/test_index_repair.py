# SPDX-License-Identifier: MIT
"""kraddon index with sites that are damaged or that somebody changed, folders that cannot be read,
and no site."""

import contextlib
import os
import sqlite3

import kraddontest
from cataloguetest import GUID, CatalogueTest, age, hashed_files, rows_of

HINT = "'kraddon index --rebuild' rebuilds it from its packages"


class Repairs(CatalogueTest):

    def broken(self, *words):
        result = self.run_kraddon("index", "site", *words)
        self.assertEqual(result.code, 1)
        self.assertIn("--rebuild", result.errors.splitlines()[-1])
        return result.errors

    def site(self):
        self.index(*self.addons(3))
        self.index("--yank", f"{GUID.format(1)}@1.0")
        self.index("--remove", GUID.format(2))
        return self.records()

    def test_a_rebuild_of_a_sound_site_gives_the_same(self):
        self.site()
        before = self.tree_of()

        self.index("--rebuild")

        after = self.tree_of()
        for name in ("root.json", "index.html", "records.ndjson", "catalogue.sqlite"):
            self.assertEqual(after[name], before[name], name)

    def test_a_lost_root_is_an_error_and_rebuilt(self):
        self.site()
        for damage in (lambda path: path.unlink(), lambda path: path.write_text("{"),
                       lambda path: path.write_text("")):
            damage(self.path("site/root.json"))
            packages = self.names("site/packages")
            self.broken("p0.kraddon")
            self.assertEqual(self.names("site/packages"), packages)

            result = self.run_kraddon("index", "site", "--rebuild")

            self.assertEqual(result.code, 0, result.errors)
            self.assertIn("yanked", result.errors)
            self.assertEqual(len(self.records()), 3)  # with the one that was removed
        self.assertGreater(self.root()["sequence"], 3)

    def test_a_broken_index_or_shard_is_an_error_and_rebuilt(self):
        before = self.site()
        for folder in ("index", "shards"):
            with self.subTest(folder):
                named = [path for path in hashed_files(self.path("site"))
                         if path.parent.name == folder]
                for path in named:
                    path.write_bytes(path.read_bytes()[:-1])
                self.broken("--yank", f"{GUID.format(0)}@1.0")

                result = self.run_kraddon("index", "site", "--rebuild")

                self.assertEqual(result.code, 0, result.errors)
                self.assertLessEqual(set(before), set(self.records()))
                self.index(*[f"--remove={GUID.format(2)}"])

    def test_what_follows_the_root_is_repaired_by_the_next_run(self):
        self.site()
        before = self.tree_of()
        [page] = [path for path in self.path("site/pages").rglob("index.html")
                  if GUID.format(0) in str(path)]
        for name in ("index.html", "catalogue.sqlite", "records.ndjson"):
            with self.subTest(name):
                self.path(f"site/{name}").unlink()
                page.unlink()

                self.index()

                after = self.tree_of()
                for other in ("index.html", "catalogue.sqlite", "records.ndjson"):
                    self.assertEqual(after[other], before[other], other)
                self.records()

    def test_a_damaged_database_is_made_anew(self):
        self.site()
        path = self.path("site/catalogue.sqlite")
        path.write_bytes(path.read_bytes()[:5000] + b"x" * 5000)
        self.addon("new.kraddon", number=9)

        self.index("new.kraddon")

        self.records()

    def test_damage_that_only_shows_when_the_list_is_written_is_repaired(self):
        self.index(*self.addons(2))
        with open(self.path("site/catalogue.sqlite"), "r+b") as database:
            database.seek(8200)  # within the table of versions
            database.write(b"\xff" * 60)
        self.addon("new.kraddon", "Kit 50", number=50)

        self.index("new.kraddon")

        self.assertEqual(len(self.records()), 3)

    def test_a_pipe_in_place_of_the_database_is_replaced(self):
        self.site()
        path = self.path("site/catalogue.sqlite")
        for words in ((), ("--unyank", f"{GUID.format(1)}@1.0"), ("--rebuild",)):
            with self.subTest(words):
                path.unlink()
                os.mkfifo(path)

                self.index(*words, prefix=("timeout", "-s", "KILL", "30"))

                self.records()

    def test_a_database_of_an_older_layout_is_made_anew(self):
        self.site()
        path = self.path("site/catalogue.sqlite")
        expected = rows_of(path)
        with contextlib.closing(sqlite3.connect(path)) as database:
            database.executescript("""DROP TABLE words;
                UPDATE meta SET value = 'kraddon.catalogue/1' WHERE key = 'schema'""")

        self.index()

        self.assertEqual(rows_of(path), expected)

    def test_lists_that_became_too_large_to_be_changed_are_made_anew(self):
        self.site()
        for name in ("index.html", "terms.js", "records.ndjson"):
            with self.subTest(name):
                os.truncate(self.path(f"site/{name}"), 300 << 20)

                self.index("--yank" if name == "terms.js" else "--unyank", f"{GUID.format(1)}@1.0")

                after = self.tree_of()[name]
                self.assertLess(len(after), 100000)
                self.index("--rebuild")
                self.assertEqual(self.tree_of()[name], after)

    def test_files_that_nothing_has_named_for_a_day_are_collected(self):
        self.site()
        self.write("site/packages/notes.txt", "mine")
        self.write(f"site/packages/{'0' * 63}.kraddon", "not ours")
        removed = {path for path in self.path("site").rglob("*.html") if GUID.format(2) in str(path)}
        self.assertTrue(removed)

        self.assertEqual(self.index("--collect")["collected"], 0)
        for path in hashed_files(self.path("site")):
            age(path, 2)
        collected = self.index("--collect")["collected"]

        # Two indexes and their shards, a package and its page.
        self.assertGreaterEqual(collected, 5)
        self.assertFalse(any(path.exists() for path in removed))
        self.assertEqual(self.names("site/packages")[-1], "notes.txt")
        self.assertEqual(len(self.names("site/packages")), 4)
        self.assertEqual(len(self.names("site/index")), 1)
        self.records()


class OlderFiles(CatalogueTest):
    """Files of an earlier root that somebody put back."""

    def setUp(self):
        super().setUp()
        self.addons(3)
        self.index("p0.kraddon")
        self.older = self.tree_of()
        self.database = self.path("site/catalogue.sqlite").read_bytes()
        self.index("p1.kraddon")

    def test_an_older_database_lacks_nothing_after_the_next_change(self):
        self.write("site/catalogue.sqlite", self.database)

        self.index("p2.kraddon")

        self.records()
        self.assertIn("Kit 1", self.ok("search", "site", "kit").text)

    def test_each_is_repaired_by_the_next_run_without_a_change(self):
        expected = self.tree_of()
        for name in ("catalogue.sqlite", "records.ndjson", "index.html", "terms.js"):
            with self.subTest(name):
                older = self.database if name == "catalogue.sqlite" else self.older[name]
                self.write(f"site/{name}", older)

                self.index()

                self.assertEqual(self.tree_of()[name], expected[name])

    def test_nothing_is_written_again_in_a_site_without_add_ons(self):
        self.index(f"--remove={GUID.format(0)}", f"--remove={GUID.format(1)}")
        before = os.stat(self.path("site/index.html"))

        self.index()

        self.assertEqual(os.stat(self.path("site/index.html")).st_ino, before.st_ino)


class UnreadableRecords(CatalogueTest):
    """A shard with a record that this version cannot read."""

    def setUp(self):
        super().setUp()
        self.index(*self.addons(2))
        self.shard = self.rewrite_shard(GUID.format(1), '"license":', '"terms":')
        self.message = (f"cannot read '{self.shard}': the member 'license' of a record is missing "
                        "or of another kind")

    def test_are_named_by_their_file_when_the_add_on_changes(self):
        self.fails("index", "site", "--yank", f"{GUID.format(1)}@1.0", message=self.message,
                   hint=HINT)

    def test_are_named_by_their_file_when_pages_are_repaired(self):
        self.path("site/index.html").unlink()

        self.fails("index", "site", message=self.message, hint=HINT)

    def test_stop_collect_before_anything_is_removed(self):
        before = self.tree_of()

        self.fails("index", "site", "--collect", message=self.message, hint=HINT)

        self.assertEqual(self.tree_of(), before)

    def test_are_made_anew_by_a_rebuild(self):
        result = self.run_kraddon("index", "site", "--rebuild")

        self.assertEqual(result.code, 0, result.errors)
        self.assertIn(self.message, result.errors)
        self.assertEqual(sorted(self.records()), [GUID.format(0), GUID.format(1)])


class Folders(CatalogueTest):

    def test_a_folder_below_that_cannot_be_read_is_named(self):
        self.addon("in/a/p.kraddon")
        self.write("in/b/c/d.txt", "x")
        self.folder.chmod(0o777)
        self.path("in/b/c").chmod(0)

        self.fails("index", "site", "in", message="cannot read folder 'in/b/c': Permission denied",
                   **self.without_privilege())

    def test_a_link_to_nothing_is_refused_by_its_name(self):
        self.addon("in/p.kraddon")
        self.path("in/lost.kraddon").symlink_to("nowhere")

        result = self.run_kraddon("index", "site", "in")

        self.assertEqual((result.code, result.errors), (1, (
            "kraddon: index: cannot open package 'in/lost.kraddon': No such file or directory\n")))
        self.assertEqual(len(self.records()), 1)


class NoSite(CatalogueTest):
    MESSAGE = "cannot find site 'new': name packages to create it"

    def test_without_packages_there_must_be_a_site(self):
        for words in ((), ("--collect",), ("--rebuild",), ("--remove", GUID.format(1))):
            with self.subTest(words):
                self.fails("index", "new", *words, message=self.MESSAGE)

                self.assertFalse(self.path("new").exists())

    def test_an_empty_folder_is_not_a_site(self):
        self.path("new").mkdir()

        for words in ((), ("--collect",), ("--rebuild",)):
            with self.subTest(words):
                self.fails("index", "new", *words, message=self.MESSAGE)

                self.assertEqual(self.names("new"), [])

    def test_a_folder_without_packages_gives_an_empty_site(self):
        self.path("in").mkdir()

        self.assertEqual(self.ok("index", "new", "in").text,
                         "0 add-ons, 0 versions, sequence 0, unchanged\n")

    def test_a_site_without_add_ons_is_one(self):
        self.index(*self.addons(1), site="new")
        self.index(f"--remove={GUID.format(0)}", site="new")

        self.assertEqual(self.ok("index", "new").text,
                         "0 add-ons, 0 versions, sequence 2, unchanged\n")


if __name__ == "__main__":
    kraddontest.main()
