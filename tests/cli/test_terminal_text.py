# SPDX-License-Identifier: MIT
"""What a terminal would act on, and what cannot be seen, in the texts and names of a package."""

import json
import subprocess

import kraddontest

ACTED_ON = [0x7F, *range(0x80, 0xA0), 0x061C, 0x200E, 0x200F, *range(0x202A, 0x202F),
            *range(0x2066, 0x206A)]
UNSEEN = [0x2028, 0x2029, 0xAD, *range(0x200B, 0x2010), 0x2060, 0xFEFF, 0xE0001, 0xE0041, 0xE007F]
DIGEST = "sha256:e5b25df7e3b2180d45a548942783e66779c68dc65b91e9cfe324c069e323b51f"
EVIL = "T\x9b31m\u202e" + "".join(map(chr, ACTED_ON))


class JsonOnTerminals(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", {"a\u202e.m": "x", "b\x9b.m": ""}, "--description", EVIL)
        self.package("q.kraddon", {"a\u202e.m": "y"}, "--description", "plain \u202d")

    def escaped(self, *words, code=0):
        result = self.run_kraddon(*words)
        self.assertEqual(result.code, code, result.errors)
        raw = [hex(point) for point in ACTED_ON if chr(point) in result.text]
        self.assertEqual(raw, [], words)
        return json.loads(result.out)

    def test_get_escapes_what_a_terminal_acts_on(self):
        self.assertEqual(self.escaped("get", "p.kraddon", "properties")["description"], EVIL)

    def test_info_escapes_it(self):
        self.assertEqual(self.escaped("info", "p.kraddon", "--json")["description"], EVIL)

    def test_call_escapes_it(self):
        self.assertEqual(self.escaped("call", "addonGetProperties", "p.kraddon")["description"],
                         EVIL)
        self.assertIn("a\u202e.m", self.escaped("call", "addonGetFileList", "p.kraddon"))

    def test_list_diff_verify_and_build_escape_it(self):
        self.escaped("list", "p.kraddon", "--json")
        self.escaped("diff", "p.kraddon", "q.kraddon", "--json", code=1)
        self.escaped("verify", "p.kraddon", "--json")
        self.escaped("verify", "p.kraddon", "--format", "sarif")
        self.write("project/kraddon.toml", '[package]\nname = "a\u202e"\nversion = "1"\n')
        self.write("project/x\u202e.m", "x")
        self.escaped("build", "project", "-o", "b.kraddon", "--json")

    def test_what_get_printed_can_be_set(self):
        self.ok("get", "p.kraddon", "properties", "-o", "properties.json")
        self.ok("set", "--no-verify", "q.kraddon", "properties", "properties.json")

        self.assertEqual(self.ok("get", "q.kraddon", "properties").json["description"], EVIL)

    def test_the_digest_hashes_the_text_itself(self):
        self.ok("create", "g.kraddon", "--name", "n", "--description", EVIL, "--timestamp", "0")

        self.assertEqual(self.ok("info", "g.kraddon", "--field", "digest").text.strip(), DIGEST)


class NamesOnTerminals(kraddontest.CliTest):

    def test_list_shows_what_cannot_be_seen(self):
        names = [f"a{chr(point)}.m" for point in UNSEEN]
        self.package("p.kraddon", {name: "" for name in names})

        shown = self.on_terminal("list", "p.kraddon").decode()
        self.assertEqual([hex(point) for point in UNSEEN if chr(point) in shown], [])
        self.assertIn("a\\u200b.m", shown)
        self.assertIn("a\\xad.m", shown)
        self.assertIn("a\\U000e0001.m", shown)
        self.assertEqual(self.ok("list", "p.kraddon").text.split("\n")[:-1],
                         sorted(names, key=lambda name: name.encode("utf-16-be")))


if __name__ == "__main__":
    kraddontest.main()
