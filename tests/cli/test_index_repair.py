# SPDX-License-Identifier: MIT
"""kraddon index with sites that somebody changed, folders that cannot be read, and no site."""

import hashlib
import json
import os

import kraddontest
from cataloguetest import GUID, CatalogueTest

HINT = "'kraddon index --rebuild' rebuilds it from its packages"


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

    def rewrite_shard(self, guid, old, new):
        """Changes a text in the shard of an add-on, with all hashes. Returns its path."""
        [path] = [path for path in self.path("site/shards").iterdir() if guid in path.read_text()]
        shard = self.write_hashed("shards", path.read_text().replace(old, new))
        path.unlink()
        root = self.root()
        index = json.loads(self.path(f"site/{root['index']['path']}").read_text())
        name = hashlib.sha256(guid.encode()).hexdigest()[:2]
        index["shards"][name].update(shard)
        root["index"] = self.write_hashed("index", json.dumps(index))
        root["shards"][name] = shard["sha256"]
        self.write("site/root.json", json.dumps(root))
        return f"site/{shard['path']}"

    def write_hashed(self, folder, text):
        sha256 = hashlib.sha256(text.encode()).hexdigest()
        self.write(f"site/{folder}/{sha256}.json", text)
        return {"path": f"{folder}/{sha256}.json", "sha256": sha256, "size": len(text.encode())}

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

    def test_an_empty_folder_is_no_site(self):
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
