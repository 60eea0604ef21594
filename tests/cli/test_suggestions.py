# SPDX-License-Identifier: MIT
"""A mistyped word gets the nearest one that would do."""

import kraddontest

# The words, and what the message says; the first word names the command that speaks.
NEAR = [
    (["help", "verfy"], "unknown command or topic 'verfy': did you mean 'verify'?"),
    (["list", "p.kraddon", "--tre"], "unknown option '--tre': did you mean '--tree'?"),
    (["list", "p.kraddon", "--quite"], "unknown option '--quite': did you mean '--quiet'?"),
    (["list", "p.kraddon", "--color", "nevr"],
     "bad value of --color 'nevr': did you mean 'never'?"),
    (["verify", "p.kraddon", "--format=sariff"],
     "bad value of --format 'sariff': did you mean 'sarif'?"),
    (["verify", "p.kraddon", "--ignore", "KR5O1"], "unknown finding 'KR5O1': did you mean 'KR501'?"),
    (["verify", "--explain", "KR10"], "unknown finding 'KR10': did you mean 'KR101'?"),
    (["info", "p.kraddon", "--field", "sumary"], "unknown field 'sumary': did you mean 'summary'?"),
    (["get", "p.kraddon", "licence"], "unknown document 'licence': did you mean 'license'?"),
    (["set", "p.kraddon", "revision", "x.json"],
     "unknown document 'revision': did you mean 'revisions'?"),
    (["set", "p.kraddon", "properties", "auhtorName=x"],
     "unknown field 'properties.auhtorName': did you mean 'authorName'?"),
    (["unset", "p.kraddon", "screenshto"],
     "unknown document 'screenshto': did you mean 'screenshot'?"),
    (["call", "addonGetFileLists", "p.kraddon"],
     "unknown gateway 'addonGetFileLists': did you mean 'addonGetFileList'?"),
    (["completion", "bsh"], "bad value of SHELL 'bsh': did you mean 'bash'?"),
]

# Too far from everything: what there is, or where that stands.
FAR = [
    (["verify", "p.kraddon", "--format", "yaml"],
     "bad value of --format 'yaml': expected text, github or sarif"),
    (["list", "p.kraddon", "--zzz"], "unknown option '--zzz': no option has that name"),
    (["call", "nonsense"], "unknown gateway 'nonsense': 'kraddon help call' lists the gateways"),
]


class Suggestions(kraddontest.CliTest):

    def test_the_nearest_word_is_named(self):
        self.package()
        for words, message in NEAR:
            with self.subTest(words=words):
                self.misused(*words, message=message)

    def test_a_word_that_is_near_none_gets_no_wild_guess(self):
        self.package()
        for words, message in FAR:
            with self.subTest(words=words):
                self.misused(*words, message=message)

    def test_a_field_in_a_file_is_found_too(self):
        self.package()
        self.write("apps.json", '[{"name": "a", "giud": "b", "relativePath": "c"}]')

        self.assertIn("did you mean 'guid'?", self.fails("set", "p.kraddon", "apps",
                                                         "apps.json").errors)

    def test_nothing_was_changed(self):
        before = self.package().read_bytes()
        for words, _ in NEAR:
            self.run_kraddon(*words)

        self.assertEqual(self.path("p.kraddon").read_bytes(), before)


if __name__ == "__main__":
    kraddontest.main()
