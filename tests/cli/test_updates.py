# SPDX-License-Identifier: MIT
"""An installed add-on is brought up to date from a site that a web server serves, and a site is
copied to a store, as docs/catalogue.md says."""

import functools
import hashlib
import http.server
import pathlib
import random
import re
import shlex
import shutil
import subprocess
import sys
import threading

import kraddontest
from cataloguetest import GUID, TIME, CatalogueTest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "examples/catalogue"))
import update  # noqa: E402


class Handler(http.server.SimpleHTTPRequestHandler):
    """Serves files, and pieces of them unless the server has none; notes how much."""

    protocol_version = "HTTP/1.1"

    def do_GET(self):
        content = pathlib.Path(self.translate_path(self.path)).read_bytes()
        piece = re.fullmatch(r"bytes=(\d+)-(\d+)", self.headers.get("Range", ""))
        if piece and self.server.has_ranges:
            start, last = map(int, piece.groups())
            self.send_response(206)
            self.send_header("Content-Range", f"bytes {start}-{last}/{len(content)}")
            content = content[start:last + 1]
        else:
            self.send_response(200)
        self.send_header("Content-Length", str(len(content)))
        self.end_headers()
        # Before the client can have it all.
        self.server.requests.append((self.path, len(content)))
        self.wfile.write(content)

    def log_message(self, *_):
        pass


class Updates(CatalogueTest):

    def setUp(self):
        super().setUp()
        source = random.Random(1)
        for i in range(20):
            self.write(f"src/data{i}.bin", source.randbytes(20_000))
        self.ok("create", "1.0.kraddon", "src", "--name", "Kit", "--version", "1.0", "--guid",
                GUID.format(1), "--timestamp", TIME, "-q")
        shutil.copy(self.path("1.0.kraddon"), self.path("2.0.kraddon"))
        self.write("src/data3.bin", source.randbytes(25_000))
        self.write("src/new.bin", source.randbytes(5_000))
        self.ok("add", "2.0.kraddon", "src/data3.bin", "src/new.bin", "--replace", "-q")
        self.ok("set", "2.0.kraddon", "properties", "version=2.0", "-q")
        self.index("1.0.kraddon", *[self.addon(f"p{i}.kraddon", number=i) for i in range(2, 6)])

    def serve(self, has_ranges=True):
        handler = functools.partial(Handler, directory=str(self.folder))
        server = http.server.HTTPServer(("127.0.0.1", 0), handler)
        server.has_ranges, server.requests = has_ranges, []
        thread = threading.Thread(target=server.serve_forever, args=(0.01,))
        thread.start()
        self.addCleanup(thread.join)
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        site = update.Site(f"http://127.0.0.1:{server.server_port}/site/")
        self.addCleanup(site.connection.close)
        return server, site

    def test_a_newer_version_is_found_with_two_requests(self):
        server, site = self.serve()
        self.assertIsNone(update.find_newer(site, GUID.format(1), "1.0"))
        self.index("2.0.kraddon")
        server.requests.clear()

        record = update.find_newer(site, GUID.format(1).upper(), "1.0")

        self.assertEqual(record, self.records()[GUID.format(1)][0])
        self.assertEqual([path.split("/")[2] for path, _ in server.requests], ["root.json", "shards"])
        self.assertIsNone(update.find_newer(site, GUID.format(1), "2.0"))
        self.assertIsNone(update.find_newer(site, GUID.format(9), "1.0"))
        self.index("--yank", f"{GUID.format(1)}@2.0")
        self.assertIsNone(update.find_newer(site, GUID.format(1), "1.0"))

    def fetched(self, old, **kw):
        """The share of the new package's bytes that is fetched when there is an old one."""
        self.index("2.0.kraddon")
        server, site = self.serve(**kw)
        record = update.find_newer(site, GUID.format(1), "1.0")
        server.requests.clear()

        package = update.fetch_package(site, record, old)

        self.assertEqual(hashlib.sha256(package).hexdigest(), record["sha256"])
        self.assertEqual(package, self.path("2.0.kraddon").read_bytes())
        return sum(size for _, size in server.requests) / record["size"]

    def test_only_the_entries_that_changed_are_fetched(self):
        share = self.fetched(self.path("1.0.kraddon").read_bytes())

        print(f"fetched: {share:.1%} of the package")
        self.assertLess(share, 0.25)

    def test_any_other_package_leads_to_the_same(self):
        other = self.path("p2.kraddon").read_bytes()

        self.assertGreater(self.fetched(other), 0.9)

    def test_a_server_without_ranges_leads_to_the_same(self):
        self.assertGreaterEqual(self.fetched(self.path("1.0.kraddon").read_bytes(),
                                             has_ranges=False), 1)

    def test_the_program_replaces_the_file(self):
        self.index("2.0.kraddon")
        server, _ = self.serve()

        done = subprocess.run(
            [sys.executable, "-B", update.__file__, f"http://127.0.0.1:{server.server_port}/site",
             self.path("1.0.kraddon"), GUID.format(1), "1.0"], capture_output=True, check=True)

        self.assertEqual(done.stdout, b"updated to 2.0\n")
        self.assertEqual(self.path("1.0.kraddon").read_bytes(), self.path("2.0.kraddon").read_bytes())


class Stores(CatalogueTest):
    """A folder stands for the store, and a reader looks after every file."""

    def test_no_reader_of_a_store_sees_a_torn_state(self):
        seen = []
        self.addons(3)
        for words in (["p0.kraddon", "p1.kraddon"], ["p2.kraddon", "--remove", GUID.format(0)],
                      [self.addon("other.kraddon", "Kit 1", "1.0", 1, content="other"), "--remove",
                       f"{GUID.format(1)}@1.0"]):
            self.index(*words)
            for _ in self.copied():
                if self.path("store/root.json").exists():
                    seen.append(self.read_store())
            self.assertEqual(self.records("store"), self.records())

        self.assertEqual(len({str(records) for records in seen}), 3)

    def read_store(self):
        found = self.records("store", is_complete=False)
        for record in (record for records in found.values() for record in records):
            self.assertTrue(self.path(f"store/{record['page']}").is_file())
        return found

    def copied(self):
        """Does what the page says, one file after the other."""
        page = (ROOT / "docs/catalogue.md").read_text()
        commands = re.findall(r"^rclone (.*)$", page, re.MULTILINE)
        self.assertGreater(len(commands), 3)
        for command in commands:
            verb, source, target, *options = shlex.split(command)
            target = target.replace("store:", "store/")
            whole = self.path(source)
            # As if it took the last ones first.
            files = [whole] if verb == "copyto" else sorted(whole.rglob("*"), reverse=True)
            for file in filter(pathlib.Path.is_file, files):
                place = self.path(target) / file.relative_to(whole)
                if place.exists() and ("--ignore-existing" in options
                                       or place.read_bytes() == file.read_bytes()):
                    continue
                place.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(file, place)
                yield place


if __name__ == "__main__":
    kraddontest.main()
