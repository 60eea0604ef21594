# SPDX-License-Identifier: MIT
"""kraddon index: what a site holds, and how it changes."""

import fcntl
import json
import os
import re
import shutil
import sqlite3
import subprocess

import kraddontest
from cataloguetest import GUID, TIME, CatalogueTest, age, hashed_files, rows_of

PIXEL = bytes.fromhex(
    "89504e470d0a1a0a0000000d49484452000000010000000108060000001f15c489"
    "0000000d49444154789c63f8cfc0f01f00050001ff5a9ae1d30000000049454e44ae426082")


class NewSites(CatalogueTest):

    def test_a_reader_finds_everything_from_the_root(self):
        self.write("shot.png", PIXEL)
        self.addon("one.kraddon", "Wave Tools", "1.0", 1)
        self.ok("screenshot", "one.kraddon", "shot.png", "--timestamp", TIME)
        product = {"name": "Signal", "version": "9", "identifier": "SG"}
        requirements = self.ok("get", "one.kraddon", "requirements").json
        self.write("needs.json", json.dumps({**requirements, next(iter(requirements)): [product]}))
        self.ok("set", "one.kraddon", "requirements", "needs.json", "--timestamp", TIME)
        self.ok("set", "one.kraddon", "license", "type=MIT", "text=terms", "--timestamp", TIME)
        self.addon("two.kraddon", "Other", "1.0", 2)

        result = self.index("one.kraddon", "two.kraddon")

        found = self.records()
        self.assertEqual((result["sequence"], self.root()["sequence"]), (1, 1))
        self.assertEqual(result["added"], [found[GUID.format(1)][0], found[GUID.format(2)][0]])
        record = found[GUID.format(1)][0]
        info = self.ok("info", "one.kraddon", "--json", "--digest").json
        for key in ("guid", "name", "version", "release", "summary", "size", "digest", "files",
                    "folders", "bytes", "created", "modified"):
            self.assertEqual(record[key], info[key], key)
        self.assertEqual(record["author"], info["author"]["name"])
        self.assertEqual((record["license"], record["yanked"], record["signers"]), ("MIT", False, []))
        self.assertEqual(record["requirements"], [{"kind": "product", **product}])
        self.assertEqual(self.path(f"site/{record['screenshot']}").read_bytes(), PIXEL)
        self.assertIsNone(found[GUID.format(2)][0]["screenshot"])
        self.assertIn('href="../../../index.html"', self.path(f"site/{record['page']}").read_text())
        self.assert_hashed()

    def test_packages_below_folders_are_found(self):
        self.addon("in/deep/a.kraddon", number=1)
        self.addon("in/b.kraddon", number=2)
        self.write("in/notes.txt", "no package")

        self.index("in")

        self.assertEqual(self.root()["versions"], 2)

    def test_text_says_what_was_done(self):
        self.addon("p.kraddon")

        self.assertEqual(self.ok("index", "site", "p.kraddon").text,
                         "added: Wave Tools 1.0\n1 add-on, 1 version, sequence 1\n")
        self.assertEqual(self.ok("index", "site", "p.kraddon").text,
                         "1 add-on, 1 version, sequence 1, unchanged\n")

    def test_a_folder_with_other_things_is_left_alone(self):
        self.addon("p.kraddon")
        self.write("docs/thesis.txt", "mine")

        self.fails("index", "docs", "p.kraddon",
                   message="cannot make site 'docs': it has other things, such as 'thesis.txt'")

        self.assertEqual(self.names("docs"), ["thesis.txt"])

    def test_the_environment_does_not_change_the_site(self):
        for i in range(4):
            self.addon(f"p{i}.kraddon", f"Kit {i}", "1.0", i)
        names = [f"p{i}.kraddon" for i in range(4)]
        self.index(*names)
        first = self.tree_of()

        for site, order, env, mask in (("b", names[::-1], {"TZ": "Asia/Kolkata"}, 0o077),
                                       ("c", names[2:] + names[:2], {"LC_ALL": "C"}, 0o022),
                                       ("d", ["."], {"LC_ALL": "tr_TR.UTF-8"}, 0o002)):
            with self.subTest(site):
                os.chmod(self.folder, 0o755)
                folder = self.path(f"in-{site}")
                folder.mkdir()
                for name in names:
                    shutil.copy(self.path(name), folder / name)
                given = [f"in-{site}/{name}" if name != "." else f"in-{site}" for name in order]
                self.index(*given, site=site, env=env, umask=mask)
                self.assertEqual(self.tree_of(site), first)

    def test_the_order_in_which_add_ons_came_does_not_show_in_the_records(self):
        self.addons(2)
        self.index("p0.kraddon")
        self.index("p1.kraddon")
        self.index("p1.kraddon", site="b")
        self.index("p0.kraddon", site="b")

        one, two = self.tree_of(), self.tree_of("b")

        for name in ("root.json", "records.ndjson", "index.html", "catalogue.sqlite"):
            self.assertEqual(one[name], two[name], name)


class Changes(CatalogueTest):

    def test_a_package_that_is_there_changes_nothing(self):
        self.index(*self.addons(3))
        before = {path: os.stat(path).st_mtime_ns for path in self.path("site").rglob("*")}

        result = self.index(*[f"p{i}.kraddon" for i in range(3)])

        self.assertEqual((result["added"], result["sequence"]), ([], 1))
        after = {path: os.stat(path).st_mtime_ns for path in self.path("site").rglob("*")}
        self.assertEqual({p: t for p, t in after.items() if p != self.path("site")},
                         {p: t for p, t in before.items() if p != self.path("site")})

    def test_versions_are_in_order_of_their_numbers(self):
        for version in ("1.9", "1.10", "1.2"):
            self.addon(f"{version}.kraddon", version=version)
            self.index(f"{version}.kraddon")

        self.assertEqual([each["version"] for each in self.records()[GUID.format(1)]],
                         ["1.10", "1.9", "1.2"])
        self.assertEqual(self.root()["sequence"], 3)
        self.assertIn("1.10", self.path("site/index.html").read_text())

    def test_adding_one_writes_as_many_files_in_a_large_site(self):
        written = []
        self.addon("new.kraddon", "New", "9.9", 200)
        for count in (2, 40):
            site = f"site{count}"
            self.index(*[self.addon(f"{count}-{i}.kraddon", f"Kit {i}", f"1.{i}", i % 7)
                         for i in range(count)], site=site)
            before = hashed_files(self.path(site))
            self.index("new.kraddon", site=site)
            written.append(len(hashed_files(self.path(site)) - before))

        self.assertEqual(written, [3, 3])  # the package, its shard, the index

    def test_files_that_are_changed_in_part_are_as_if_written_anew(self):
        names = ["Kit", "kit", "KIT b", "Ärger", "<li class=\"card\">", "a|`); b", "Zeta", " x", "0"]
        steps = [[self.addon(f"{i}.kraddon", name, "1.0", i, "--description", "x\n</ul>")]
                 for i, name in enumerate(names)]
        steps += [[self.addon("renamed.kraddon", "Alpha\nnew line", "2.0", 6)],
                  [self.addon("last.kraddon", "zzz", "2.0", 0), f"--remove={GUID.format(3)}"],
                  [f"--yank={GUID.format(0)}@2.0", f"--yank={GUID.format(1)}@1.0"],
                  [f"--unyank={GUID.format(1)}@1.0", f"--remove={GUID.format(6)}@2.0"],
                  [f"--remove={GUID.format(i)}" for i in (8, 7, 5)],
                  [f"--remove={GUID.format(i)}" for i in (0, 1, 2, 4, 6)], ["0.kraddon"]]
        for words in steps:
            with self.subTest(words):
                self.index(*words)
                shutil.rmtree(self.path("anew"), ignore_errors=True)
                shutil.copytree(self.path("site"), self.path("anew"))
                for name in ("index.html", "terms.js", "records.ndjson", "catalogue.sqlite"):
                    self.path(f"anew/{name}").unlink()
                self.index(site="anew")

                self.assertEqual(self.tree_of("anew"), self.tree_of())

    def test_old_files_that_somebody_changed_are_written_anew(self):
        self.index(*self.addons(3))
        self.index(self.addon("new.kraddon", "New", "1.0", 9))
        expected = self.tree_of()
        for name in ("index.html", "terms.js", "records.ndjson"):
            with self.subTest(name):
                self.index("--remove", GUID.format(9))
                path = self.path(f"site/{name}")
                first, rest = path.read_bytes().split(b"\n", 1)
                path.write_bytes(first + b"\n" + rest[:len(rest) // 9])
                self.index("new.kraddon")

                after = self.tree_of()
                for other in ("index.html", "terms.js", "records.ndjson"):
                    self.assertEqual(re.sub(rb"sequence\W+\d+|\(\d+,", b"", after[other]),
                                     re.sub(rb"sequence\W+\d+|\(\d+,", b"", expected[other]), other)

    def test_a_yanked_version_stays_but_is_not_found(self):
        for version in ("1.0", "2.0"):
            self.addon(f"{version}.kraddon", version=version)
        self.index("1.0.kraddon", "2.0.kraddon")
        name = f"{GUID.format(1)}@2.0"

        result = self.index("--yank", name)

        self.assertEqual(result["yanked"], [{"guid": GUID.format(1), "version": "2.0"}])
        self.assertEqual([each["yanked"] for each in self.records()[GUID.format(1)]], [True, False])
        found = self.ok("search", "site", "wave", "--json").json["results"]
        self.assertEqual([each["version"] for each in found], ["1.0"])
        self.assertEqual(self.index("--yank", name)["sequence"], 2)
        self.index("--yank", f"{GUID.format(1)}@1.0")
        self.assertEqual(self.ok("search", "site", "wave").text, "")
        self.index("--unyank", name.upper())
        self.assertEqual(self.ok("search", "site", "wave").text.split("\t")[1], "2.0")
        self.records()

    def test_a_removed_add_on_is_no_longer_named(self):
        self.index(*self.addons(3))
        self.addon("newer.kraddon", version="2.0", number=0)
        self.index("newer.kraddon")

        result = self.index("--remove", GUID.format(1), "--remove", f"{GUID.format(0)}@1.0")

        self.assertEqual(sorted(each["guid"] for each in result["removed"]),
                         [GUID.format(0), GUID.format(1)])
        found = self.records()
        self.assertEqual(sorted(found), [GUID.format(0), GUID.format(2)])
        self.assertEqual([each["version"] for each in found[GUID.format(0)]], ["2.0"])
        for i in (2, 0):
            self.index("--remove", GUID.format(i))
        self.assertEqual((self.records(), self.root()["versions"]), ({}, 0))

    def test_a_version_is_replaced_by_removing_it_in_the_same_run(self):
        self.addon("old.kraddon", content="old")
        self.addon("new.kraddon", content="new")
        self.index("old.kraddon")

        self.index("new.kraddon", "--remove", f"{GUID.format(1)}@1.0")

        [record] = self.records()[GUID.format(1)]
        self.assertEqual(self.path(f"site/{record['package']}").read_bytes(),
                         self.path("new.kraddon").read_bytes())

    def test_names_that_the_site_does_not_have_change_nothing(self):
        self.index(*self.addons(1))
        before = self.tree_of()

        for option, word in (("--remove", "ab"), ("--yank", "ab@1.0"), ("--unyank", "ab@1.0"),
                             ("--yank", f"{GUID.format(0)}@7")):
            self.fails("index", "site", option, word,
                       message=f"unknown add-on '{word}': the site does not have it")
        self.misused("index", "site", "--yank", "ab",
                     message="bad value of --yank 'ab': expected GUID@VERSION")
        self.assertEqual(self.tree_of(), before)

    def test_links_share_the_bytes(self):
        self.addon("p.kraddon")

        self.index("p.kraddon", "--link")

        [record] = self.records()[GUID.format(1)]
        self.assertTrue(os.path.samefile(self.path("p.kraddon"),
                                         self.path(f"site/{record['package']}")))


class Search(CatalogueTest):

    def test_matches_are_lines(self):
        self.index(self.addon("p.kraddon"))

        self.assertEqual(self.ok("search", "site", "wav", "author:li").text,
                         "Wave Tools\t1.0\tAda Lind\tSummary of Wave Tools\n")
        self.assertEqual(self.ok("search", "site", "nothing").text, "")
        self.assertEqual(self.ok("search", "site", "\"", "NEAR(", "*").text, "")
        self.misused("search", "site", message="missing operand 'WORDS': what to look for")

    def test_json_is_the_records(self):
        self.index(*self.addons(3))

        found = self.ok("search", "site", "kit", "--json", "--limit", "2").json

        self.assertEqual((found["schema"], len(found["results"])), ("kraddon.search/1", 2))
        for record in found["results"]:
            self.assertEqual([record], self.records()[record["guid"]])

    def test_no_site_is_an_error(self):
        self.assertEqual(self.fails("search", "nowhere", "x").errors,
                         "kraddon: search: cannot read 'nowhere/catalogue.sqlite': No such file or "
                         "directory\n")

    def test_characters_that_control_a_terminal_do_not_reach_it(self):
        self.index(self.addon("p.kraddon", "Wave \u202e\u009b31m"))

        self.assertNotIn("\u202e".encode(), self.on_terminal("-C", str(self.folder), "search", "site", "wave"))


class Together(CatalogueTest):

    def test_one_processor_gives_the_same_as_two(self):
        packages = [self.addon(f"p{i}.kraddon", f"Kit {i % 9}", "1.0", i % 9, content=str(i))
                    for i in range(12)]
        self.write("bad.kraddon", self.path("p4.kraddon").read_bytes()[:-5])
        words = ["--timestamp", TIME, "--json", "bad.kraddon", *packages, "missing.kraddon"]

        results = [self.run_kraddon("index", site, *words, prefix=prefix) for site, prefix in
                   (("one", ["taskset", "-c", str(min(os.sched_getaffinity(0)))]), ("two", []))]

        self.assertEqual([result.code for result in results], [1, 1])
        one, two = ({**result.json, "site": ""} for result in results)
        self.assertEqual(one, two)
        self.assertEqual(self.tree_of("one"), self.tree_of("two"))
        self.assertEqual(len(one["refused"]), 8)  # three pairs, and the two bad ones
        self.assertEqual(len(self.records("two")), 6)

    def test_a_user_who_may_write_to_all_folders_can_change_a_site_of_another(self):
        if os.geteuid() != 0:
            self.skipTest("needs another user: root")
        self.index(*self.addons(2))
        old = self.path(f"site/{self.root()['index']['path']}")
        age(old, 30)
        content = old.read_bytes()
        for path in (self.folder, self.path("site"), *self.path("site").rglob("*")):
            if path.is_dir():
                path.chmod(0o777)
        user = self.without_privilege()

        self.index("--remove", f"{GUID.format(1)}@1.0", **user)
        collected = self.index("--collect", **user)["collected"]

        self.assertEqual(collected, 0)  # what the old root names is still being fetched
        self.assertEqual(old.read_bytes(), content)
        self.assertEqual(list(self.records()), [GUID.format(0)])

    def test_messages_about_the_lock_name_the_site(self):
        self.index(*self.addons(1))
        lock = open(self.path("site/.root.json.change.tmp"), "wb")
        self.addCleanup(lock.close)
        fcntl.flock(lock, fcntl.LOCK_EX)

        result = self.run_kraddon("index", "site", "p0.kraddon", "--lock-timeout", "2")

        self.assertEqual(result.errors.splitlines()[:2], [
            "kraddon: index: waiting for site 'site': another command is changing it",
            "kraddon: index: cannot lock site 'site': another command is still changing it after 2 "
            "seconds"])

    def test_the_index_of_words_fits_its_texts_after_changes(self):
        self.index(*self.addons(3))
        self.addon("newer.kraddon", "Renamed", "2.0", 1)
        self.index("newer.kraddon")
        self.index("--remove", GUID.format(2))
        shutil.copy(self.path("site/catalogue.sqlite"), self.path("copy.sqlite"))

        with sqlite3.connect(self.path("copy.sqlite")) as database:
            database.execute("INSERT INTO words(words) VALUES('integrity-check')")

        self.index("--rebuild", site="site")
        self.assertEqual(rows_of(self.path("site/catalogue.sqlite")), rows_of(self.path("copy.sqlite")))

    def test_two_commands_wait_for_each_other(self):
        self.addons(6)
        processes = [subprocess.Popen([kraddontest.KRADDON, "index", "site", f"p{i}.kraddon"],
                                      cwd=self.folder, stdout=subprocess.DEVNULL,
                                      env=self.environment()) for i in range(6)]

        self.assertEqual([process.wait(60) for process in processes], [0] * 6)
        self.assertEqual((len(self.records()), self.root()["sequence"]), (6, 6))


if __name__ == "__main__":
    kraddontest.main()
