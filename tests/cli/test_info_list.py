# SPDX-License-Identifier: MIT
"""kraddon info and kraddon list"""

import hashlib
import json
import os
import zipfile
import zlib

import kraddontest

ONE_PROCESSOR = ("taskset", "-c", str(min(os.sched_getaffinity(0))))
FILES = {"a.m": "aaaa" * 500, "lib/b.m": "b", "lib/deep/c.m": "", "lib/void/": "", "z.bin": "zz"}


class Info(kraddontest.CliTest):

    def test_json_has_all_keys_in_order(self):
        path = self.package("p.kraddon", FILES, "--summary", "short", "--author", "Ada")
        info = self.ok("info", "p.kraddon", "--json").json

        self.assertEqual(list(info), [
            "schema", "file", "size", "type", "release", "name", "version", "summary",
            "description", "author", "guid", "created", "modified", "documents", "screenshot",
            "files", "folders", "bytes", "packed", "signatures", "digest"])
        self.assertEqual(info["schema"], "kraddon.info/1")
        self.assertEqual(info["file"], "p.kraddon")
        self.assertEqual(info["size"], path.stat().st_size)
        self.assertEqual(info["type"], "Korvan Toolbox")
        self.assertEqual(info["release"], "R2047b")
        self.assertEqual(info["name"], "Wave Tools")
        self.assertEqual(info["description"], None)
        self.assertEqual(info["author"], {"name": "Ada", "contact": None, "organization": None})
        self.assertEqual(info["created"], "2023-11-14T22:13:20Z")
        self.assertEqual(info["documents"], ["properties"])
        self.assertIsNone(info["screenshot"])
        self.assertEqual((info["files"], info["folders"], info["bytes"]), (4, 1, 2003))
        with zipfile.ZipFile(path) as archive:
            packed = sum(entry.compress_size for entry in archive.infolist()
                         if entry.filename.startswith("files/"))
        self.assertEqual(info["packed"], packed)

    def expected_digest(self, name, files):
        with zipfile.ZipFile(self.path(name)) as archive:
            parts = {"/" + entry: archive.read(entry) for entry in archive.namelist()
                     if entry in ("metadata/license.xml", "metadata/addonProperties.xml")}
        lines = {path: content.encode() for path, content in files.items()}
        lines.update(parts)
        properties = self.ok("get", name, "properties").json
        lines["/properties"] = json.dumps(properties, ensure_ascii=False,
                                          separators=(",", ":")).encode()
        listing = b"".join(path.encode() + b"\0" + hashlib.sha256(content).hexdigest().encode()
                           + b"\n" for path, content in
                           sorted(lines.items(), key=lambda line: line[0].encode()))
        return "sha256:" + hashlib.sha256(listing).hexdigest()

    def test_the_digest_is_computed_as_documented(self):
        files = dict(FILES, **{"é \"x\".m": "quoted", "\U0001f30a": "wave", "\uffee": "wide"})
        self.package("p.kraddon", files, "--description", "two\nlines\t\"quoted\" é")
        self.ok("set", "p.kraddon", "license", "type=MIT", "text=terms")
        self.assertEqual(self.ok("info", "p.kraddon", "--field", "digest").text.strip(),
                         self.expected_digest("p.kraddon", files))

    def test_the_digest_does_not_see_packing_and_times(self):
        self.package("p.kraddon", FILES)
        self.package("q.kraddon", FILES, "--level", "0", "--force")
        self.ok("create", "r.kraddon", "p.kraddon.src", "--name", "Wave Tools", "--timestamp", "5")
        digests = {self.ok("info", name, "--field", "digest").text
                   for name in ("p.kraddon", "q.kraddon", "r.kraddon")}
        self.assertEqual(len(digests), 1)
        self.assertNotEqual(self.path("p.kraddon").read_bytes(),
                            self.path("q.kraddon").read_bytes())

    def test_the_digest_sees_every_kind_of_content(self):
        self.package("p.kraddon", FILES)
        digests = [self.ok("info", "p.kraddon", "--field", "digest").text]
        for words in (["license", "text=x"], ["properties", "summary=y"]):
            self.ok("set", "p.kraddon", *words)
            digests.append(self.ok("info", "p.kraddon", "--field", "digest").text)
        self.package("q.kraddon", {"a.m": "other"})
        digests.append(self.ok("info", "q.kraddon", "--field", "digest").text)
        self.assertEqual(len(set(digests)), len(digests))

    def test_documents_are_named(self):
        self.package()
        self.ok("set", "p.kraddon", "license", "text=terms")

        info = self.ok("info", "p.kraddon", "--json").json

        self.assertEqual(info["documents"], ["properties", "license"])
        self.assertEqual(self.ok("info", "p.kraddon", "--field", "documents").text,
                         "properties\nlicense\n")

    def test_text_shows_the_same(self):
        self.package("p.kraddon", FILES, "--description", "two\n\nlines")
        info = self.ok("info", "p.kraddon", "--json").json

        text = self.ok("info", "p.kraddon").text

        self.assertEqual(text, "".join(f"{line}\n" for line in [
            "file          p.kraddon",
            f"size          {info['size']} bytes",
            "type          Korvan Toolbox",
            "release       R2047b",
            "name          Wave Tools",
            "version       1.0",
            "description   two",
            "",
            "              lines",
            f"guid          {info['guid']}",
            "created       2023-11-14T22:13:20Z",
            "modified      2023-11-14T22:13:20Z",
            "documents     properties",
            "files         4",
            "empty folders 1",
            f"content       2003 bytes, {info['packed']} packed"]))

    def test_the_digest_is_computed_only_where_it_is_asked_for(self):
        path = self.package("p.kraddon", FILES)
        digest = self.ok("info", "p.kraddon", "--field", "digest").text.strip()
        plain = self.ok("info", "p.kraddon", "--json").json
        self.assertIsNone(plain["digest"])
        self.assertEqual(self.ok("info", "p.kraddon", "--json", "--digest").json,
                         {**plain, "digest": digest})
        self.assertEqual(self.ok("info", "p.kraddon", "--digest").text,
                         self.ok("info", "p.kraddon").text + f"digest        {digest}\n")
        self.misused("info", "p.kraddon", "--field", "name", "--digest",
                     message="bad option '--field': it cannot be combined with --digest")

        # Without it no file is read: damage does not matter.
        content = path.read_bytes()
        name_end = content.index(b"files/z.bin") + len(b"files/z.bin")
        at = content.index(b"zz", name_end)
        path.write_bytes(content[:at] + b"Z" + content[at + 1:])
        self.ok("info", "p.kraddon")
        for words in (("--digest",), ("--json", "--digest"), ("--field", "digest")):
            self.assertIn("z.bin", self.fails("info", "p.kraddon", *words).errors)

    def test_every_field_stands_alone(self):
        self.package("p.kraddon", FILES, "--author", "Ada")
        info = self.ok("info", "p.kraddon", "--json", "--digest").json
        for key, value in info.items():
            if key in ("schema", "author", "documents", "screenshot"):
                continue
            expected = "" if value is None else str(value)
            self.assertEqual(self.ok("info", "p.kraddon", "--field", key).text, expected + "\n")
        self.assertEqual(self.ok("info", "p.kraddon", "--field", "author.name").text, "Ada\n")
        self.misused("info", "p.kraddon", "--field", "verson",
                     message="unknown field 'verson': did you mean 'version'?")
        self.misused("info", "p.kraddon", "--field", "name", "--json",
                     message="bad option '--field': it cannot be combined with --json")

    def test_another_package_of_the_conventions_is_shown_as_far_as_it_goes(self):
        with zipfile.ZipFile(self.path("plain.docx"), "w") as archive:
            archive.writestr("[Content_Types].xml", (
                '<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
                '<Default Extension="xml" ContentType="application/xml"/></Types>'))
            archive.writestr("a.xml", "<a/>")

        info = self.ok("info", "plain.docx", "--json").json

        self.assertIsNone(info["name"])
        self.assertIsNone(info["created"])
        self.assertEqual(info["documents"], [])
        warning = ("package 'plain.docx': it is not an add-on; 'kraddon list --all' lists its parts\n")
        for words in (["list"], ["list", "--json"], ["list", "--tree"]):
            result = self.run_kraddon(*words, "plain.docx")
            self.assertEqual((result.code, result.errors),
                             (0, f"kraddon: {words[0]}: warning: {warning}"))
            self.ok(*words, "plain.docx", "-q")
        self.package(files={})
        self.assertEqual(self.listing("p.kraddon"), [])
        self.assertEqual(self.listing("plain.docx", "--all"), ["/a.xml"])


class List(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", FILES)

    def test_paths_come_in_tree_order(self):
        self.assertEqual(self.listing(), ["a.m", "lib/b.m", "lib/deep/c.m", "lib/void", "z.bin"])

    def test_the_order_is_that_of_the_gateway(self):
        self.package("q.kraddon", {"é": "", "\uffee": "", "\U0001f30a": "", "a b/c": "", "a/": "",
                                   "a.m": "", "B": ""})
        gateway = self.ok("call", "addonGetFileList", "q.kraddon").json

        self.assertEqual(self.listing("q.kraddon"), gateway)

    def test_paths_choose(self):
        self.assertEqual(self.listing("p.kraddon", "lib"),
                         ["lib/b.m", "lib/deep/c.m", "lib/void"])
        self.assertEqual(self.listing("p.kraddon", "z.bin", "/lib/deep/"),
                         ["lib/deep/c.m", "z.bin"])
        self.assertEqual(self.listing("p.kraddon", "lib", "lib/b.m"),
                         ["lib/b.m", "lib/deep/c.m", "lib/void"])
        self.fails("list", "p.kraddon", "a.m", "*.m",
                   message="cannot find '*.m': the package has nothing with that name",
                   hint="did you mean 'a.m'?")
        self.fails("list", "p.kraddon", "lib/b",
                   message="cannot find 'lib/b': the package has nothing with that name",
                   hint="did you mean 'lib/b.m'?")

    def test_a_path_that_names_nothing_gets_the_nearest_one(self):
        for path, near in (("LIB", "lib"), ("./z.bin", "z.bin"), ("lib\\b.m", "lib/b.m"),
                           ("lib/depe/c.m", "lib/deep/c.m"), ("c.m", "lib/deep/c.m"),
                           ("lib/viod", "lib/void"), ("deep", "lib/deep"), ("other/Z.BIN", "z.bin")):
            for command in ("list", "extract", "remove"):
                self.fails(command, "p.kraddon", path,
                           message=f"cannot find '{path}': the package has nothing with that name",
                           hint=f"did you mean '{near}'?")
        self.fails("list", "p.kraddon", "elsewhere",
                   message="cannot find 'elsewhere': the package has nothing with that name")
        self.fails("list", "p.kraddon", "--all", "/files/A.m",
                   message="cannot find '/files/A.m': the package has nothing with that name",
                   hint="did you mean '/files/a.m'?")

    def test_globs_choose(self):
        self.assertEqual(self.listing("p.kraddon", "--glob", "*.m"),
                         ["a.m", "lib/b.m", "lib/deep/c.m"])
        self.assertEqual(self.listing("p.kraddon", "--glob", "lib/*.m"), ["lib/b.m"])
        self.assertEqual(self.listing("p.kraddon", "--glob", "lib", "!deep"),
                         ["lib/b.m", "lib/void"])
        self.assertEqual(self.listing("p.kraddon", "--glob", "void/"), ["lib/void"])
        self.assertEqual(self.listing("p.kraddon", "--glob", "lib/**", "!tests/**", "!*.q"),
                         ["lib/b.m", "lib/deep/c.m", "lib/void"])
        self.fails("list", "p.kraddon", "--glob", "*.m", "*.q",
                   message="cannot find '*.q': the package has nothing with that name")

    def test_names_like_patterns_are_literal(self):
        self.package("q.kraddon", {"[a].m": "", "a.m": "", "-x": ""})
        self.assertEqual(self.listing("q.kraddon", "[a].m"), ["[a].m"])
        self.assertEqual(self.listing("q.kraddon", "--", "-x"), ["-x"])

    def test_long_shows_sizes_share_and_time(self):
        entries = {entry["path"]: entry
                   for entry in self.ok("list", "p.kraddon", "-l", "--json").json["entries"]}
        packed = entries["a.m"]["packed"]
        width = len(str(packed))
        time = "2023-11-14T22:13:20Z"

        text = self.ok("list", "p.kraddon", "-l").text

        self.assertEqual(text.splitlines(), [
            f"2000  {packed}  {round(packed / 20):>3}%  {time}  a.m",
            f"   1  {1:>{width}}  100%  {time}  lib/b.m",
            f"   0  {0:>{width}}     -  {time}  lib/deep/c.m",
            f"   -  {'-':>{width}}     -  {'-':20}  lib/void",
            f"   2  {2:>{width}}  100%  {time}  z.bin"])

    def test_the_tree_names_each_folder_once(self):
        self.assertEqual(self.ok("list", "p.kraddon", "--tree").text,
                         "a.m\nlib/\n  b.m\n  deep/\n    c.m\n  void/\nz.bin\n")

    def test_nul_ends_paths(self):
        self.assertEqual(self.ok("list", "p.kraddon", "-0").out,
                         b"a.m\0lib/b.m\0lib/deep/c.m\0lib/void\0z.bin\0")

    def test_hashes_are_those_of_the_files(self):
        rows = [(line[:64], line[66:]) for line in self.listing("p.kraddon", "--hash")]
        for digest, path in rows:
            expected = "-" if path == "lib/void" else hashlib.sha256(
                FILES[path].encode()).hexdigest()
            self.assertEqual(digest.strip(), expected, path)
        entries = self.ok("list", "p.kraddon", "--hash", "--json").json["entries"]
        self.assertEqual(entries[1]["sha256"], hashlib.sha256(b"b").hexdigest())
        self.assertIsNone(entries[3]["sha256"])

    def test_hashes_and_digest_are_the_same_with_one_processor_and_more(self):
        files = {f"{i}.txt": f"{i} " * 5000 for i in range(300)}
        files["large.bin"] = "0123456789abcdef" * (17 << 16)
        files["empty"] = ""
        self.package("many.kraddon", files)

        for prefix in ((), ONE_PROCESSOR):
            hashed = self.ok("list", "many.kraddon", "--hash", prefix=prefix).text
            rows = [(line[:64], line[66:]) for line in hashed.splitlines()]
            self.assertEqual(sorted(path for _, path in rows), sorted(files))
            for digest, path in rows:
                self.assertEqual(digest, hashlib.sha256(files[path].encode()).hexdigest(), path)
        digests = [self.ok("info", "many.kraddon", "--field", "digest", prefix=prefix).text
                   for prefix in ((), ONE_PROCESSOR)]
        self.assertEqual(digests[0], digests[1])

    def test_a_damaged_file_is_named_with_one_processor_and_more(self):
        path = self.package("many.kraddon", {f"{i}.txt": f"{i} " * 5000 for i in range(300)})
        with zipfile.ZipFile(path) as archive:
            places = [archive.getinfo(f"files/{i}.txt").header_offset for i in (70, 200)]
        content = bytearray(path.read_bytes())
        for place in places:
            content[place + 60] ^= 0xFF
        path.write_bytes(content)

        for words in (("list", "--hash"), ("info", "--digest")):
            for prefix in ((), ONE_PROCESSOR):
                self.fails(words[0], "many.kraddon", *words[1:], prefix=prefix,
                           message="cannot read part '/files/200.txt' of 'many.kraddon': "
                                   "the packed data are damaged")

    def test_all_names_every_part(self):
        parts = self.listing("p.kraddon", "--all")
        with zipfile.ZipFile(self.path("p.kraddon")) as archive:
            expected = sorted("/" + name for name in archive.namelist()
                              if not name.endswith(".rels") and name != "[Content_Types].xml")
        self.assertEqual(parts, expected)
        self.assertEqual(self.listing("p.kraddon", "--all", "/metadata/addonProperties.xml"),
                         ["/metadata/addonProperties.xml"])

    def test_json_adds_what_is_asked_for(self):
        plain = self.ok("list", "p.kraddon", "--json").json
        self.assertEqual(plain["entries"][0], {"path": "a.m", "kind": "file"})
        self.assertEqual(plain["entries"][3], {"path": "lib/void", "kind": "folder"})
        self.assertEqual(list(plain), ["schema", "entries", "files", "folders", "bytes",
                                       "packed"])
        self.assertEqual((plain["schema"], plain["files"], plain["folders"], plain["bytes"]),
                         ("kraddon.list/1", 4, 1, 2003))

        entry = self.ok("list", "p.kraddon", "--json", "-l", "--hash", "a.m").json["entries"][0]
        content = FILES["a.m"].encode()
        self.assertEqual(list(entry), ["path", "kind", "size", "packed", "method", "crc", "time",
                                       "sha256"])
        self.assertEqual(entry["crc"], f"{zlib.crc32(content):08x}")
        self.assertEqual((entry["size"], entry["method"]), (2000, "deflate"))

    def test_an_empty_listing_is_still_json(self):
        self.package("q.kraddon")
        result = self.ok("list", "q.kraddon", "--json").json
        self.assertEqual((result["entries"], result["files"]), ([], 0))

    def test_options_that_contradict_are_refused(self):
        self.misused("list", "p.kraddon", "--tree", "--json",
                     message="bad option '--tree': it cannot be combined with --json")
        self.misused("list", "p.kraddon", "-0", "-l",
                     message="bad option '--null': it cannot be combined with --long")

    def test_a_negative_number_is_a_path(self):
        self.package("q.kraddon", {"-5": "", "-0.5": "", "-07": ""})
        for path in ("-5", "-0.5", "-07"):
            self.assertEqual(self.listing("q.kraddon", path), [path])
        self.ok("extract", "q.kraddon", "-0.5", "-d", "out")
        self.misused("list", "q.kraddon", "-0l",
                     message="bad option '--null': it cannot be combined with --long")


if __name__ == "__main__":
    kraddontest.main()
