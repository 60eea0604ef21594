# SPDX-License-Identifier: MIT
"""Database engines take the records of a site by the statements of docs/catalogue.md, and answer
the question there."""

import glob
import json
import os
import pathlib
import pwd
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
os.environ.setdefault("KRADDON", str(ROOT / "build/release/bin/kraddon"))
sys.path.insert(0, str(ROOT / "tests/cli"))

import kraddontest  # noqa: E402
from cataloguetest import GUID, CatalogueTest  # noqa: E402

POSTGRES = sorted(glob.glob("/usr/lib/postgresql/*/bin/initdb"))
DUCKDB = ROOT / "build/engines/node_modules/@duckdb/node-api"
CLICKHOUSE = ROOT / "build/clickhouse/node_modules/chdb"
COUNT = "SELECT count(*) FROM records"

# Each reads a list of statements, runs them, and prints the rows of the last ones as JSON.
ON_DUCKDB = """
const { DuckDBInstance } = require(process.argv[1]);
(async () => {
  const connection = await (await DuckDBInstance.create(':memory:')).connect();
  for (const statement of JSON.parse(process.argv[2])) {
    const rows = (await connection.runAndReadAll(statement)).getRowsJson();
    console.log(JSON.stringify(rows));
  }
})();
"""
ON_CLICKHOUSE = """
const { Session } = require(process.argv[1]);
const session = new Session();
for (const statement of JSON.parse(process.argv[2])) {
  const rows = session.query(statement, 'JSONCompactStrings');
  console.log(JSON.stringify(rows ? JSON.parse(rows).data : []));
}
session.cleanup();
"""


def statements_for(engine):
    """Those of the page: one that takes the records, and a question."""
    page = (ROOT / "docs/catalogue.md").read_text()
    section = page.split(f"### {engine}\n", 1)[1].split("\n#", 1)[0]
    return [block.strip() for block in re.findall(r"```sql\n(.*?)```", section, re.DOTALL)]


class Engines(CatalogueTest):

    def setUp(self):
        super().setUp()
        product = [{"name": "Signal", "version": "9", "identifier": "SG"}]
        self.write("needs.json", json.dumps({"productDependency": product}))
        odd = "tab\t, \"quoted\" 'it''s' \\. \\n\nnew line, größe \u202e {x}"
        for number, name in ((1, "Wave"), (2, odd), (3, "Chirp"), (4, "Other")):
            self.addon(f"{number}.kraddon", name, "1.0", number, "--description", odd)
            if number != 4:
                self.ok("set", f"{number}.kraddon", "requirements", "needs.json", "-q")
        self.index(*[f"{number}.kraddon" for number in (1, 2, 3, 4)])
        self.index("--yank", f"{GUID.format(3)}@1.0")
        self.answer = sorted([["Wave", "1.0"], [odd, "1.0"]])
        self.folder.chmod(0o755)

    def run_with_node(self, script, library, engine):
        load, question = statements_for(engine)
        load, question = (each.rstrip(";") for each in (load, question))
        done = subprocess.run(["node", "-e", script, library, json.dumps([load, question, COUNT])],
                              cwd=self.folder, capture_output=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        _, answer, [[count]] = map(json.loads, done.stdout.decode().splitlines())
        self.assertEqual((sorted(answer), int(count)), (self.answer, 4))

    @unittest.skipUnless(DUCKDB.is_dir() and shutil.which("node"),
                         "needs DuckDB, which scripts/setup test fetches")
    def test_duckdb(self):
        self.run_with_node(ON_DUCKDB, DUCKDB, "DuckDB")

    @unittest.skipUnless(CLICKHOUSE.is_dir() and shutil.which("node"),
                         "needs ClickHouse, 550 MB that scripts/setup long fetches")
    def test_clickhouse(self):
        self.run_with_node(ON_CLICKHOUSE, CLICKHOUSE, "ClickHouse")

    @unittest.skipUnless(POSTGRES, "needs PostgreSQL, which scripts/setup test installs")
    def test_postgresql(self):
        socket = self.start_postgres(pathlib.Path(POSTGRES[-1]).parent)
        load, question = statements_for("PostgreSQL")
        # As one array, since names have line ends.
        question = f"SELECT json_agg(json_build_array(name, version)) FROM ({question.rstrip(';')}) q;"
        everything = "SELECT json_agg(record) FROM records;"

        done = subprocess.run(
            ["psql", "-X", "-q", "-A", "-t", "-v", "ON_ERROR_STOP=1", "-h", socket, "-U", "tester",
             "postgres"], input="\n".join([load, question, everything]).encode(), cwd=self.folder,
            capture_output=True, check=False)

        self.assertEqual((done.returncode, done.stderr), (0, b""))
        answer, stored = (json.loads(text) for text in self.values(done.stdout.decode()))
        lines = [json.loads(line) for line in self.path("site/records.ndjson").read_text().splitlines()]
        self.assertEqual((sorted(answer), stored), (self.answer, lines))

    @staticmethod
    def values(text):
        """The texts of JSON that follow each other."""
        decoder, found = json.JSONDecoder(strict=False), []
        while text := text.lstrip():
            _, end = decoder.raw_decode(text)
            found.append(text[:end])
            text = text[end:]
        return found

    def start_postgres(self, programs):
        """A server for this test alone, without a port. It refuses to run as root."""
        home = pathlib.Path(tempfile.mkdtemp(prefix="kraddon-postgres-"))
        self.addCleanup(shutil.rmtree, home)
        user = {}
        if os.geteuid() == 0:
            owner = pwd.getpwnam("nobody")
            os.chown(home, owner.pw_uid, owner.pw_gid)
            user = {"user": owner.pw_uid, "group": owner.pw_gid, "extra_groups": []}
        run = dict(cwd=home, check=True, stdout=subprocess.DEVNULL, **user)
        subprocess.run([programs / "initdb", "-D", home / "data", "-A", "trust", "-U", "tester", "-E",
                        "UTF8", "--locale", "C.UTF-8", "--no-sync"], **run)
        control = [programs / "pg_ctl", "-D", home / "data", "-w", "-s"]
        subprocess.run([*control, "-l", home / "log", "-o",
                        f"-c listen_addresses= -c unix_socket_directories={home} -c fsync=off",
                        "start"], **run)
        self.addCleanup(subprocess.run, [*control, "-m", "immediate", "stop"], **run)
        return str(home)


if __name__ == "__main__":
    kraddontest.main(verbosity=2)
