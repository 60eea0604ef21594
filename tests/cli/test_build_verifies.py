# SPDX-License-Identifier: MIT
"""'kraddon build' does not unpack what it has just packed, and still finds what 'verify' finds"""

import collections
import os

import kraddontest
import projecttest

# Put together here, so that this file holds none.
TOKEN = "gh" + "p_" + "A1b2C3d4E5f6G7h8I9j0" * 2
KEY = "-----BEGIN RSA PRIVATE " + "KEY-----\n" + "MIIEpAIBAAKCAQEA7bq3" * 3 + "\n"
TEXT = "a line of text\n" * 10000
LARGE = 17 << 20  # more than is packed in memory


class BuildVerifies(projecttest.ProjectTest):

    def found(self, report):
        findings = report["findings"] if "findings" in report else report["packages"][0]["findings"]
        return collections.Counter((one["id"], one["part"], one["message"]) for one in findings)

    def both(self, files, *words):
        """What 'build' finds, which 'verify' must find, too."""
        self.project(files=files, folder="proj")
        for name in ("built", "made"):
            self.path(name + ".kraddon").unlink(missing_ok=True)
        built = self.run_kraddon("build", "proj", "-o", "built.kraddon", "--json", *words)
        self.ok("build", "proj", "-o", "made.kraddon", "--no-verify", "--quiet", *words)
        verified = self.run_kraddon("verify", "made.kraddon", "--json")
        found = self.found(verified.json)
        self.assertEqual(self.found(built.json), found)
        self.assertEqual(built.code, 1 if any(one[0] == "KR509" for one in found) else 0)
        return {one[:2] for one in found}

    def test_in_files_of_every_kind(self):
        found = self.both({
            "plain.m": "x = 1;\n", "token.m": f"t = '{TOKEN}';\n", "again.m": f"t = '{TOKEN}';\n",
            "wide.txt": ("\ufeff" + TOKEN + "\n").encode("utf-16-le"), "k.m": KEY,
            "binary.bin": b"\0" + TOKEN.encode(), "noise.bin": os.urandom(5000),
            "large.txt": "x" * LARGE + "\n" + TOKEN + "\n", "largest.bin": bytes(LARGE),
            "secret/.npmrc": "//r/:_authToken=abcdefgh\n", "id_rsa": "empty\n",
            "server.key": "-----BEGIN RSA PRIVATE " + "KEY-----\n", "empty.m": "",
            "one.txt": TEXT, "two.txt": TEXT, "three.txt": TEXT[:-1] + "x", "what?.m": "q"})

        secrets = {part for identifier, part in found if identifier == "KR509"}
        self.assertEqual(secrets, {"token.m", "again.m", "wide.txt", "k.m", "large.txt",
                                   "secret/.npmrc", "id_rsa", "server.key"})
        self.assertEqual({part for identifier, part in found if identifier == "KR512"},
                         {"two.txt"})

    def test_whatever_the_level(self):
        for level in ("0", "1", "9"):
            found = self.both({"token.m": TOKEN, "one.txt": TEXT, "two.txt": TEXT},
                              "--level", level)
            self.assertIn(("KR509", "token.m"), found)

    def test_among_many_files(self):
        files = {f"d{i % 7}/f{i}.m": f"text {i % 500} " * (i % 90) for i in range(2000)}
        files["d6/f1000.m"] += TOKEN
        files["d2/f1500.m"] += TOKEN
        found = self.both(files)
        self.assertEqual({part for identifier, part in found if identifier == "KR509"},
                         {"d6/f1000.m", "d2/f1500.m"})


if __name__ == "__main__":
    kraddontest.main()
