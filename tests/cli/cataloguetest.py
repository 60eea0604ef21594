# SPDX-License-Identifier: MIT
"""Sites for the tests of kraddon index and kraddon search."""

import contextlib
import hashlib
import json
import os
import pathlib
import re
import sqlite3

import kraddontest

TIME = "1700000000"
GUID = "0c3a0d9e-5b7a-4a53-9c58-6f0d2f4f8a{:02x}"
HASHED = re.compile(r"(?:index|shards|packages|pages/[^/]+/[^/]+)/([0-9a-f]{64})\.[a-z]+")


class CatalogueTest(kraddontest.CliTest):

    def addon(self, file, name="Wave Tools", version="1.0", number=1, *words, content="x",
              summary=None, author="Ada Lind", time=TIME):
        """Makes a package, and returns its name."""
        source = self.path(f"{file}.src")
        source.mkdir(parents=True, exist_ok=True)
        (source / "a.m").write_text(content)
        self.path(file).parent.mkdir(parents=True, exist_ok=True)
        self.ok("create", file, f"{file}.src", "--name", name, "--version", version, "--guid",
                GUID.format(number), "--summary",
                f"Summary of {name}" if summary is None else summary, "--author", author,
                "--timestamp", time, "--quiet", *words)
        return file

    def addons(self, count):
        return [self.addon(f"p{i}.kraddon", f"Kit {i}", "1.0", i) for i in range(count)]

    def index(self, *words, site="site", **kw):
        """The result of a run that succeeds."""
        return self.ok("index", site, *words, "--timestamp", TIME, "--json", **kw).json

    def root(self, site="site"):
        return json.loads(self.path(f"{site}/root.json").read_text())

    def tree_of(self, site="site"):
        """Every file of a site with its bytes; of the database its rows."""
        top = self.path(site)
        files = {}
        for path in sorted(top.rglob("*")):
            if path.is_file():
                name = str(path.relative_to(top))
                files[name] = rows_of(path) if name.endswith(".sqlite") else path.read_bytes()
        return files

    def records(self, site="site", is_complete=True):
        """Follows the root as a reader does, checks every hash and, if it is complete, that all
        that follows the root says the same. Returns the records by GUID."""
        top = self.path(site)
        root = self.root(site)
        self.assertEqual(root["schema"], "kraddon.root/1")
        found = {}
        shards = self.read_named(top, root["index"])["shards"]
        self.assertEqual(root["shards"], {name: shard["sha256"] for name, shard in shards.items()})
        for name, shard in shards.items():
            addons = self.read_named(top, shard)["addons"]
            self.assertEqual(shard["addons"], len(addons))
            for guid, records in addons.items():
                self.assertEqual(hashlib.sha256(guid.encode()).hexdigest()[:2], name)
                self.assertEqual({record["guid"].lower() for record in records}, {guid})
                found[guid] = records
        everything = [record for records in found.values() for record in records]
        self.assertEqual((root["addons"], root["versions"]), (len(found), len(everything)))
        for record in everything:
            package = (top / record["package"]).read_bytes()
            self.assertEqual(hashlib.sha256(package).hexdigest(), record["sha256"])
            self.assertEqual(record["size"], len(package))
            if is_complete:
                self.assertIn(f"package={record['sha256']} ", self.first_line(top / record["page"]))
            if record["screenshot"]:
                self.assertTrue((top / record["screenshot"]).is_file())
        if is_complete:
            self.check_followers(top, root["sequence"], everything)
        return found

    def read_named(self, top, named):
        content = (top / named["path"]).read_bytes()
        self.assertEqual((hashlib.sha256(content).hexdigest(), len(content)),
                         (named["sha256"], named["size"]))
        self.assertIn(named["sha256"], named["path"])
        return json.loads(content)

    def first_line(self, path):
        return path.read_text().split("\n", 1)[0]

    def check_followers(self, top, sequence, records):
        self.assertIn(f" sequence={sequence} ", self.first_line(top / "index.html"))
        self.assertTrue(self.first_line(top / "terms.js").endswith(f" sequence={sequence}"))
        lines = [json.loads(line) for line in (top / "records.ndjson").read_text().splitlines()]
        if lines:
            self.assertEqual(lines[0].pop("sequence"), sequence)
        by_path = lambda record: record["page"]
        self.assertEqual(sorted(lines, key=by_path), sorted(records, key=by_path))
        rows = rows_of(top / "catalogue.sqlite")
        self.assertIn(("sequence", str(sequence)), rows["meta"])
        named = [dict(zip(rows["columns"], row)) for row in rows["versions"]]
        self.assertEqual(sorted((row["sha256"], row["yanked"]) for row in named),
                         sorted((record["sha256"], record["yanked"]) for record in records))

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

    def assert_hashed(self, site="site"):
        """Every file that is named by a hash has it."""
        top = self.path(site)
        for path in top.rglob("*"):
            match = HASHED.fullmatch(str(path.relative_to(top)))
            if match:
                self.assertEqual(hashlib.sha256(path.read_bytes()).hexdigest(), match[1], path)


def rows_of(path):
    """The rows of all tables that are not those of the index of words, and how that answers."""
    with contextlib.closing(sqlite3.connect(f"file:{path}?mode=ro", uri=True)) as database:
        assert database.execute("PRAGMA integrity_check").fetchall() == [("ok",)]
        rows = {table: sorted(database.execute(f"SELECT * FROM {table}"))
                for table in ("meta", "versions", "addons")}
        rows["columns"] = [each[1] for each in database.execute("PRAGMA table_info(versions)")]
        rows["words"] = sorted(database.execute(
            "SELECT rowid FROM words WHERE words MATCH 'kit* OR wave* OR summary*'"))
        return rows


def age(path, days):
    """Makes a file that much older."""
    status = os.stat(path)
    os.utime(path, (status.st_atime - 86400 * days, status.st_mtime - 86400 * days))


def hashed_files(site):
    return {path for path in pathlib.Path(site).rglob("*")
            if HASHED.fullmatch(str(path.relative_to(site)))}
