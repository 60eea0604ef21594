# SPDX-License-Identifier: MIT
"""kraddon create"""

import datetime
import os
import re
import uuid
import zipfile

import kraddontest


class Create(kraddontest.CliTest):

    def create(self, *words, **kw):
        return self.ok("create", *words, "--name", "Wave Tools", **kw)

    def properties(self, name="p.kraddon"):
        return self.ok("get", name, "properties").json

    def test_files_and_empty_folders_keep_their_paths(self):
        self.tree({"a.m": "one", "lib/b c.m": "two", "lib/empty/": "", "é/z.m": "three"})

        self.create("p.kraddon", "src")

        self.assert_sound()
        self.assertEqual(self.listing(), ["a.m", "lib/b c.m", "lib/empty", "é/z.m"])
        self.ok("extract", "p.kraddon", "-d", "out")
        self.assertEqual(self.path("out/lib/b c.m").read_text(), "two")
        self.assertTrue(self.path("out/lib/empty").is_dir())

    def test_a_package_may_hold_no_files(self):
        self.create("p.kraddon")

        self.assert_sound()
        self.assertEqual(self.listing(), [])

    def test_all_properties_arrive(self):
        self.create("p.kraddon", "--version", "2.5", "--summary", "short", "--description",
                    "long\ntext", "--author", "Ada Lind", "--contact", "ada@example.org",
                    "--organization", "Lind & Co", "--guid", "{3f8a}", "-q")

        self.assertEqual(self.properties(), {
            "type": "Korvan Toolbox", "name": "Wave Tools", "version": "2.5",
            "KorvanRelease": "R2047b", "summary": "short", "authorName": "Ada Lind",
            "authorContact": "ada@example.org", "authorOrganization": "Lind & Co",
            "GUID": "{3f8a}", "description": "long\ntext"})

    def test_the_version_is_1_0_and_the_guid_fresh_by_default(self):
        self.create("p.kraddon")
        self.create("q.kraddon")

        first, second = self.properties(), self.properties("q.kraddon")
        self.assertEqual(first["version"], "1.0")
        self.assertEqual(uuid.UUID(first["GUID"]).version, 4)
        self.assertNotEqual(first["GUID"], second["GUID"])

    def test_a_fixed_time_makes_the_same_bytes_twice(self):
        self.tree({"b.m": "two", "a.m": "one" * 1000, "sub/x.bin": os.urandom(100), "e/": ""})
        self.create("p.kraddon", "src", "--timestamp", "1700000000")
        first = self.path("p.kraddon").read_bytes()
        # Another order on the disk, other times, another place, user settings and spelling.
        self.path("src").rename(self.path("old"))
        self.path("src/sub").mkdir(parents=True)
        self.path("src/e").mkdir()
        for name in ("sub/x.bin", "a.m", "b.m"):
            self.write(f"src/{name}", self.path(f"old/{name}").read_bytes())
            os.utime(self.path(f"src/{name}"), (1, 1))
        os.umask(0o077)
        self.addCleanup(os.umask, 0o022)

        self.create("q.kraddon", "src", env={"SOURCE_DATE_EPOCH": "1700000000", "TZ": "Asia/Tokyo",
                                             "LC_ALL": "C"})

        self.assertEqual(self.path("q.kraddon").read_bytes(), first)
        self.assertEqual(self.properties()["GUID"],
                         str(uuid.uuid5(uuid.NAMESPACE_URL, "kraddon:Wave Tools")))
        info = self.ok("info", "p.kraddon", "--json").json
        self.assertEqual((info["created"], info["modified"]), ("2023-11-14T22:13:20Z",) * 2)
        with zipfile.ZipFile(self.path("p.kraddon")) as archive:
            self.assertEqual({entry.date_time for entry in archive.infolist()},
                             {(2023, 11, 14, 22, 13, 20)})

    def test_the_option_counts_more_than_the_environment(self):
        self.create("p.kraddon", "--timestamp", "86400", env={"SOURCE_DATE_EPOCH": "1700000000"})

        self.assertEqual(self.ok("info", "p.kraddon", "--field", "created").text,
                         "1970-01-02T00:00:00Z\n")

    def test_bad_times_and_levels_are_refused(self):
        for value in ("x", "-1", "1.5", "", "253402300800"):
            self.misused("create", "p.kraddon", "--name", "x", "--timestamp", value,
                         message=f"bad value of --timestamp '{value}': expected a whole number "
                                 "from 0 to 253402300799")
        self.fails("create", "p.kraddon", "--name", "x", env={"SOURCE_DATE_EPOCH": "soon"},
                   message="bad value of SOURCE_DATE_EPOCH 'soon': expected a whole number from "
                           "0 to 253402300799")
        self.misused("create", "p.kraddon", "--name", "x", "--level", "10",
                     message="bad value of --level '10': expected a whole number from 0 to 9")
        self.assertEqual(self.names(), [])

    def test_without_a_fixed_time_files_keep_theirs(self):
        self.tree({"a.m": "x"})
        os.utime(self.path("src/a.m"), (1600000001, 1600000001))
        before = datetime.datetime.now(datetime.timezone.utc).replace(microsecond=0)

        self.create("p.kraddon", "src")

        entry = self.ok("list", "p.kraddon", "-l", "--json").json["entries"][0]
        self.assertEqual(entry["time"], "2020-09-13T12:26:41Z")
        created = self.ok("info", "p.kraddon", "--field", "created").text.strip()
        moment = datetime.datetime.fromisoformat(created.replace("Z", "+00:00"))
        self.assertLessEqual(abs((moment - before).total_seconds()), 60)

    def test_the_level_decides_how_hard_to_pack(self):
        self.tree({"a.m": "".join(f"{i * i % 977} " for i in range(20000))})
        sizes = []
        for level in ("0", "1", "9"):
            self.create("p.kraddon", "src", "--level", level, "--force")
            self.assert_sound()
            entry = self.ok("list", "p.kraddon", "-l", "--json").json["entries"][0]
            sizes.append(entry["packed"])
            self.assertEqual(entry["method"], "store" if level == "0" else "deflate")
        self.assertEqual(sizes[0], self.path("src/a.m").stat().st_size)
        self.assertGreater(sizes[0], sizes[1])
        self.assertGreater(sizes[1], sizes[2])

    def test_an_existing_file_is_replaced_only_by_force(self):
        self.write("p.kraddon", "precious")

        self.fails("create", "p.kraddon", "--name", "x",
                   message="cannot create 'p.kraddon': it already exists",
                   hint="--force replaces it")
        self.assertEqual(self.path("p.kraddon").read_text(), "precious")

        self.path("p.kraddon").chmod(0o640)
        self.create("p.kraddon", "--force")
        self.assert_sound()
        self.assertEqual(self.path("p.kraddon").stat().st_mode & 0o777, 0o640)
        self.assertEqual(self.names(), ["p.kraddon"])

    def test_force_does_not_replace_what_may_not_be_written(self):
        self.write("p.kraddon", "precious")
        self.path("p.kraddon").chmod(0o444)
        self.folder.chmod(0o777)
        self.fails("create", "p.kraddon", "--name", "x", "--force",
                   message="cannot replace 'p.kraddon': Permission denied",
                   **self.without_privilege())
        self.assertEqual(self.path("p.kraddon").read_text(), "precious")
        self.assertEqual(self.names(), ["p.kraddon"])

    def test_a_link_to_a_package_stays_a_link(self):
        self.path("store").mkdir()
        self.write("store/real.kraddon", "old")
        self.path("p.kraddon").symlink_to("store/real.kraddon")

        self.create("p.kraddon", "--force")

        self.assertTrue(self.path("p.kraddon").is_symlink())
        self.assert_sound("store/real.kraddon")

    def test_a_folder_or_device_is_never_replaced(self):
        self.path("folder").mkdir()
        self.fails("create", "folder", "--name", "x", "--force",
                   message="cannot create 'folder': it is a folder")
        os.mkfifo(self.path("pipe"))
        self.fails("create", "pipe", "--name", "x", "--force",
                   message="cannot create 'pipe': it is not a file")
        self.fails("create", "no/where.kraddon", "--name", "x")
        self.assertEqual(self.names(), ["folder", "pipe"])

    def test_the_output_inside_the_folder_stays_out(self):
        self.tree({"a.m": "x"})
        self.create("src/p.kraddon", "src")
        self.create("src/p.kraddon", "src", "--force")

        self.assertEqual(self.listing("src/p.kraddon"), ["a.m"])
        self.assertEqual(self.names("src"), ["a.m", "p.kraddon"])

    def test_a_folder_for_nothing_but_the_output_stays_out_every_time(self):
        self.tree({"a.m": "x", "dist/": ""})
        for left_out in ("dist", "dist/p.kraddon"):
            result = self.run_kraddon("create", "src/dist/p.kraddon", "src", "--force", "-v",
                                      "--name", "x")
            self.assertEqual((result.code, result.errors), (0, f"left out: {left_out}\nadded: a.m\n"))
            self.assertEqual(self.listing("src/dist/p.kraddon"), ["a.m"])

    def test_patterns_leave_files_out(self):
        self.tree({"a.m": "", "a.log": "", "keep.log": "", "tests/t.m": "", "lib/b.log": "",
                   "lib/c.m": ""})
        self.create("p.kraddon", "src", "--exclude", "*.log", "--exclude", "!keep.log",
                    "--exclude", "tests/")

        self.assertEqual(self.listing(), ["a.m", "keep.log", "lib/c.m"])

    def test_the_ignore_file_comes_before_the_options(self):
        self.tree({"a.m": "", "b.m": "", "c.m": "", ".kraddonignore": "# no b\nb.m\nc.m\n"})
        self.create("p.kraddon", "src", "--exclude", "!c.m")

        self.assertEqual(self.listing(), [".kraddonignore", "a.m", "c.m"])

    def test_default_excludes_are_asked_for(self):
        files = {"a.m": "", ".git/config": "", ".gitignore": "", "x~": "", "sub/.DS_Store": "",
                 "__pycache__/x.pyc": "", "old.kraddon": "", "kraddon.toml": "",
                 ".kraddonignore": "", "._a": "", "Thumbs.db": "", "ehthumbs.db": "",
                 "desktop.ini": "", ".a.swp": "", ".a.swo": "", ".#a": "",
                 **{f"{folder}/x": "" for folder in (
                     ".svn", ".hg", ".bzr", "CVS", "__MACOSX", ".idea", ".vscode",
                     "node_modules", ".venv")}}
        self.tree(files)
        self.create("p.kraddon", "src")
        self.create("q.kraddon", "src", "--default-excludes")

        self.assertEqual(len(self.listing()), len(files))
        self.assertEqual(self.listing("q.kraddon"), ["a.m"])

    def test_verbose_names_what_stays_out(self):
        self.tree({"a.m": "", "b.log": ""})
        result = self.run_kraddon("create", "p.kraddon", "src", "--name", "x", "--exclude",
                                  "*.log", "-v")

        self.assertEqual((result.code, result.errors),
                         (0, "left out: b.log\nadded: a.m\n"))

    def test_what_a_killed_run_left_behind_stays_out(self):
        left = [".p.kraddon.aB3dE9.tmp", "sub/.x.000000.tmp"]
        others = [".kraddon.ab.tmp", ".p.abcdefg.tmp", "p.abcdef.tmp", ".abcdef.tmp",
                  ".p.abc_ef.tmp", ".p.abcdef.tmpx", "dir/.p.abcdef.tmp/x"]
        self.tree({name: "" for name in left + others})
        result = self.run_kraddon("create", "p.kraddon", "src", "--name", "x", "-v")

        self.assertEqual((result.code, result.errors),
                         (0, "".join([f"left out: {name}\n" for name in left] +
                                     [f"added: {name}\n" for name in sorted(others)])))
        self.assertEqual(sorted(self.listing()), sorted(others))

    def test_links_inside_are_followed_and_others_are_not(self):
        self.tree({"real/a.m": "x"})
        self.path("src/link").symlink_to("real")
        self.write("outside.m", "secret")
        self.create("p.kraddon", "src")
        self.assertEqual(self.listing(), ["link/a.m", "real/a.m"])

        self.path("src/out.m").symlink_to("../outside.m")
        self.fails("create", "q.kraddon", "src", "--name", "x",
                   message="cannot follow the link 'src/out.m': it leads out of the folder",
                   hint="--follow follows it")
        self.create("q.kraddon", "src", "--follow")
        self.assertEqual(self.listing("q.kraddon"), ["link/a.m", "out.m", "real/a.m"])

    def test_what_cannot_be_packed_is_named_before_anything_is_written(self):
        cases = {
            "dangling": (lambda path: path.symlink_to("nowhere"),
                         "cannot follow the link 'src/dangling': No such file or directory"),
            "circle": (lambda path: path.symlink_to("."),
                       "cannot follow the link 'src/circle': it leads to a folder that contains it"),
            "pipe": (os.mkfifo, "cannot pack 'src/pipe': it is neither a file nor a folder"),
        }
        for name, (make, message) in cases.items():
            self.tree({"a.m": "x"})
            make(self.path(f"src/{name}"))
            self.fails("create", "p.kraddon", "src", "--name", "x", message=message)
            self.path(f"src/{name}").unlink()
            self.assertEqual(self.names(), ["src"])
        bad = os.fsencode(self.path("src")) + b"/caf\xe9.m"
        with open(bad, "w", encoding="utf-8"):
            pass
        self.fails("create", "p.kraddon", "src", "--name", "x",
                   message="cannot pack 'src/caf\\xe9.m': the name is not UTF-8")
        os.unlink(bad)
        self.fails("create", "p.kraddon", "nowhere", "--name", "x",
                   message="cannot read the folder 'nowhere': No such file or directory")
        self.fails("create", "p.kraddon", "src/a.m", "--name", "x",
                   message="cannot read the folder 'src/a.m': Not a directory")
        self.assertEqual(self.names(), ["src"])

    def test_a_failed_create_leaves_the_old_package(self):
        self.create("p.kraddon")
        before = self.path("p.kraddon").read_bytes()
        self.tree({"a.m": "x"})
        self.path("src/link").symlink_to("nowhere")

        self.fails("create", "p.kraddon", "src", "--name", "x", "--force")

        self.assertEqual(self.path("p.kraddon").read_bytes(), before)

    def test_texts_that_xml_cannot_carry_are_refused(self):
        for option in ("name", "version", "summary", "description", "author", "contact",
                       "organization", "guid"):
            name = [] if option == "name" else ["--name", "x"]
            self.misused("create", "p.kraddon", *name, f"--{option}", "a\x01b",
                         message=f"bad value of --{option} 'a\\x01b': it contains the control "
                                 "character U+0001")
            self.misused("create", "p.kraddon", *name, f"--{option}", b"caf\xe9",
                         message=f"bad value of --{option} 'caf\\xe9': it is not UTF-8")
        self.assertEqual(self.names(), [])

    def test_odd_names_come_back_exactly(self):
        names = ["a%b.m", "[x].m", "end.", "UP.m", "up.m", "_rels/x.rels", "back\\slash",
                 "new\nline", " ", "#.m", "é", "e\u0301", "🌊.m", "a;b=c.m", "-x"]
        self.tree({name: name for name in names})

        self.create("p.kraddon", "src")

        self.assert_sound()
        listed = self.ok("list", "p.kraddon", "-0").out.decode().split("\0")[:-1]
        self.assertEqual(sorted(listed), sorted(names))
        self.ok("extract", "p.kraddon", "-d", "out")
        for name in names:
            self.assertEqual(self.path(f"out/{name}").read_text(), name)

    def test_the_executable_bit_is_kept(self):
        self.tree({"run.sh": "x", "plain.m": "x"})
        self.path("src/run.sh").chmod(0o755)
        self.create("p.kraddon", "src")
        self.ok("extract", "p.kraddon", "-d", "out")

        self.assertTrue(self.path("out/run.sh").stat().st_mode & 0o100)
        self.assertFalse(self.path("out/plain.m").stat().st_mode & 0o100)

    def test_the_package_begins_as_other_readers_expect(self):
        self.package(files={"a.m": "x"})
        with zipfile.ZipFile(self.path("p.kraddon")) as archive:
            names = archive.namelist()

        self.assertEqual(names[:2], ["[Content_Types].xml", "_rels/.rels"])
        self.assertIn("files/a.m", names)
        self.assertTrue(any(re.match("metadata/", name) for name in names))

    def test_quiet_prints_nothing(self):
        self.tree({"a.m": "x"})
        for option in ("-q", "--quiet"):
            result = self.create("p.kraddon", "src", "--force", option)
            self.assertEqual(result.out, b"")


    def test_an_empty_name_is_refused(self):
        self.misused("create", "p.kraddon", "--name", "",
                     message="bad value of --name '': an add-on needs a name")
        self.assertFalse(self.path("p.kraddon").exists())

    def test_what_is_left_out_is_named_in_the_order_of_the_tree(self):
        names = [f"{number}.log" for number in (2, 5, 1, 7, 3, 9, 4, 8, 6)]
        self.tree({name: "x" for name in names})
        result = self.run_kraddon("create", "p.kraddon", "src", "--name", "x", "-v",
                                  "--exclude", "*.log")

        self.assertEqual(result.errors.splitlines(),
                         [f"left out: {name}" for name in sorted(names)])


if __name__ == "__main__":
    kraddontest.main()
