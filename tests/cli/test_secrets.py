# SPDX-License-Identifier: MIT
"""Secrets in packages: what 'verify' finds, and what 'build' does about it. The tokens are put
together here, so that this file holds none."""

import pathlib
import random
import shutil
import string
import tempfile

import kraddontest
import projecttest

ROOT = pathlib.Path(__file__).resolve().parents[2]
ALNUM = string.ascii_letters + string.digits
HEX = "0123456789abcdef"
UPPER = string.ascii_uppercase + "234567"
LOWER = string.ascii_lowercase + string.digits
URL = ALNUM + "-_"

chance = random.Random(1)


def some(alphabet, count):
    """Random characters, a letter at both ends."""
    middle = "".join(chance.choice(alphabet) for _ in range(count - 2))
    ends = [one for one in alphabet if one.isalpha()] or alphabet
    return chance.choice(ends) + middle + chance.choice(ends)


def digits(count):
    return "".join(chance.choice("123456789") for _ in range(count))


def key(kind, dashes="-" * 5):
    body = "\n".join(some(ALNUM, 64) for _ in range(4))
    return f"{dashes}BEGIN {kind}{dashes}\n{body}\n{dashes}END {kind}{dashes}\n"


# What the message calls it, and texts that are one.
TOKENS = {
    "private key": [key("RSA PRIVATE " + "KEY"), key("OPENSSH PRIVATE " + "KEY"),
                    key("PRIVATE " + "KEY").replace("\n", "\\n"),
                    key("PGP PRIVATE " + "KEY BLOCK").replace("BLOCK-----\n",
                                                             "BLOCK-----\nVersion: GnuPG v2\n\n"),
                    key("EC PRIVATE " + "KEY").replace("\n", '\\n" \\\n    "')],
    "AWS access key": ["AKIA" + some(UPPER, 16), "ASIA" + some(UPPER, 16)],
    "AWS secret key": ["aws_secret_access_" + "key = " + some(ALNUM + "/+", 40),
                       "AWS_SECRET_ACCESS_" + f"KEY=\"{some(ALNUM, 40)}\""],
    "Google API key": ["AIza" + some(URL, 35)],
    "Google OAuth client secret": ["GOCSPX" + "-" + some(URL, 28)],
    "Google OAuth token": ["ya29" + "." + some(URL, 60)],
    "Azure storage key": ["Account" + "Key=" + some(ALNUM + "/+", 86) + "=="],
    "Azure client secret": [some(ALNUM, 3) + "8Q" + "~" + some(ALNUM, 34)],
    "Azure DevOps token": [some(ALNUM, 76) + "AZ" + "DO" + some(ALNUM, 4)],
    "Alibaba Cloud access key": ["LTAI" + some(ALNUM, 20)],
    "DigitalOcean token": ["dop" + "_v1_" + some(HEX, 64), "doo" + "_v1_" + some(HEX, 64)],
    "Heroku token": ["HRKU" + "-AA" + some(URL, 58)],
    "HashiCorp Vault token": ["hvs" + "." + some(URL, 95)],
    "Terraform Cloud token": [some(ALNUM, 14) + ".atlas" + "v1." + some(URL, 67)],
    "Databricks token": ["dapi" + some(HEX, 32)],
    "GitHub token": [f"gh{kind}_" + some(ALNUM, 36) for kind in "pousr"] +
                    ["github_" + "pat_" + some(ALNUM, 22) + "_" + some(ALNUM, 59)],
    "GitLab token": ["glpat" + "-" + some(URL, 20), "gldt" + "-" + some(URL, 20),
                     "glrt" + "-" + some(URL, 20)],
    "Atlassian token": ["ATAT" + "T3xFfGF0" + some(URL, 180)],
    "Bitbucket app password": ["ATBB" + some(ALNUM, 32)],
    "npm token": ["npm" + "_" + some(ALNUM, 36)],
    "PyPI token": ["pypi" + "-AgEIcHlwaS5vcmc" + some(URL, 120)],
    "RubyGems key": ["rubygems" + "_" + some(HEX, 48)],
    "crates.io token": ["cio" + some(ALNUM, 32)],
    "Docker Hub token": ["dckr_" + "pat_" + some(URL, 27)],
    "NuGet key": ["oy2" + some(LOWER, 43)],
    "Artifactory key": ["AKC" + "p8" + some(ALNUM, 68)],
    "Slack token": ["xox" + "b-" + digits(12) + "-" + digits(13) + "-" + some(ALNUM, 24),
                    "xox" + "p-" + "-".join(digits(12) for _ in range(3)) + "-" + some(HEX, 32),
                    "xapp" + "-1-A" + some(UPPER, 10) + "-" + digits(13) + "-" + some(HEX, 64)],
    "Slack webhook": ["https://hooks.slack." + "com/services/T" + some(UPPER, 8) + "/B"
                      + some(UPPER, 9) + "/" + some(ALNUM, 24)],
    "Discord webhook": ["https://discord." + "com/api/webhooks/" + digits(18) + "/"
                        + some(URL, 68)],
    "Discord bot token": ["MT" + some(ALNUM, 24) + "." + some(URL, 6) + "." + some(URL, 38)],
    "Telegram bot token": [digits(10) + ":A" + "A" + some(URL, 33)],
    "Microsoft Teams webhook": ["https://wave.webhook.office." + "com/webhookb2/"
                                + "-".join(some(HEX, n) for n in (8, 4, 4, 4, 12)) + "@x"],
    "SendGrid key": ["SG" + "." + some(URL, 22) + "." + some(URL, 43)],
    "Stripe key": ["sk" + "_live_" + some(ALNUM, 24), "rk" + "_live_" + some(ALNUM, 24)],
    "OpenAI key": ["sk-" + some(ALNUM, 20) + "T3Blbk" + "FJ" + some(ALNUM, 20)],
    "Anthropic key": ["sk-ant" + "-api03-" + some(URL, 93) + "AA"],
    "Hugging Face token": ["hf" + "_" + some(string.ascii_letters, 34)],
}

HARMLESS = {
    "placeholder": "token = ghp" + "_" + "x" * 36,
    "counting": "token = ghp" + "_" + string.ascii_lowercase + "0123456789",
    "aws": "AKIA" + "IOSFODNN7" + "EXAMPLE",
    "short": "ghp" + "_" + some(ALNUM, 20),
    "long": "AKIA" + some(UPPER, 40),
    "inside": some(ALNUM, 9) + "AKIA" + some(UPPER, 16),
    "header": "-----BEGIN RSA PRIVATE " + "KEY-----\n...\n",
    "pattern": r"-----BEGIN [A-Z ]*PRIVATE " + r"KEY-----[\s\S]{3000,}",
    "public": key("PUBLIC KEY"),
    "variable": "aws_secret_access_" + "key = os.environ['AWS_SECRET_ACCESS_KEY_OF_THIS_MACHINE']",
    "binary": b"\0\1\2" + ("\nghp" + "_" + some(ALNUM, 36)).encode(),
}

# Names that are enough, and files whose content decides.
NAMES = [".env", ".ENV", ".env.local", "a/.env.production", "id_rsa", "id_dsa", "a/id_ecdsa",
         "id_ed25519", "server.pfx", "server.P12", "server.ppk", ".aws/credentials",
         "home/.aws/credentials"]
NO_NAMES = [".env.example", ".env.sample", ".env.template", "env", "id_rsa.pub", "credentials",
            "aws/credentials", ".environment"]
SETTINGS = {
    ".npmrc": ("//registry.npmjs.org/:_authToken=abcdef\n", "registry=https://x/\n"),
    "a/.npmrc": ("_auth = dXNlcjpwYXNz\n", "//r/:_authToken=${NPM_TOKEN}\n"),
    "b/.npmrc": ("//r/:_password=\"c2VjcmV0\"\n", "; _password=c2VjcmV0\n"),
    ".pypirc": ("[pypi]\nusername = a\npassword = b\n", "[pypi]\nusername = a\npassword =\n"),
    ".netrc": ("machine a login b\n  password c\n", "machine a login b\n"),
}


class Secrets(projecttest.ProjectTest):

    def secrets(self, files):
        """{path: [(line, message)]} of the findings in a package of these files."""
        self.package("p.kraddon", files, "--force")
        report = self.run_kraddon("verify", "p.kraddon", "--json").json["packages"][0]
        found = {path: [] for path in files}
        for one in report["findings"]:
            if one["id"] == "KR509":
                found[one["part"]].append((one["line"], one["message"]))
        shutil.rmtree(self.path("p.kraddon.src"))
        return found

    def test_tokens_are_found_in_any_text_file_and_named(self):
        files, names = {}, {}
        for name, tokens in TOKENS.items():
            for i, token in enumerate(tokens):
                path = f"{name}-{i}.m"
                files[path] = f"% one\nx = '{token}';\n"
                names[path] = name

        found = self.secrets(files)

        for path, secrets in found.items():
            with self.subTest(path):
                self.assertEqual([line for line, _ in secrets], [2], secrets)
                self.assertRegex(secrets[0][1], rf"^it contains an? {names[path]}\b")
                # The message goes into logs that others read.
                self.assertLess(len(secrets[0][1]), 80)

    def test_what_only_looks_like_a_token_is_not_reported(self):
        found = self.secrets({f"{name}.txt": text for name, text in HARMLESS.items()})

        self.assertEqual({path: secrets for path, secrets in found.items() if secrets}, {})

    def test_names_of_files_for_secrets_are_enough(self):
        found = self.secrets({**{name: "x" for name in NAMES}, **{name: "x" for name in NO_NAMES}})

        self.assertEqual({path for path, secrets in found.items() if secrets}, set(NAMES))

    def test_settings_are_secret_when_they_hold_a_password(self):
        found = self.secrets({path: bad for path, (bad, _) in SETTINGS.items()})
        self.assertEqual([path for path, secrets in found.items() if len(secrets) != 1], [])

        found = self.secrets({path: good for path, (_, good) in SETTINGS.items()})
        self.assertEqual([path for path, secrets in found.items() if secrets], [])

    def test_a_token_is_found_wherever_it_lies(self):
        token = TOKENS["GitHub token"][0]
        files = {f"{before}.txt": "x" * 79 * (before // 80) + "\n" * (before % 80) + "\n" + token
                 for before in (0, 8190, 65500, 65530, 65535, 131072, 200000)}
        files["wide.ps1"] = ("\n" + token + "\n").encode("utf-16")
        files["many.txt"] = "\n".join(TOKENS["GitHub token"])

        found = self.secrets(files)

        self.assertEqual([path for path, secrets in found.items() if not secrets], [])
        self.assertEqual(found["wide.ps1"][0][0], 2)
        self.assertEqual([line for line, _ in found["many.txt"]], [1, 2, 3, 4, 5, 6])

    def test_headers_of_the_system_have_none(self):
        self.ok("create", "p.kraddon", "/usr/include", "--name", "x", "--level", "0", "--follow")

        report = self.run_kraddon("verify", "p.kraddon", "--format", "github")

        self.assertEqual([line for line in report.text.splitlines() if "KR509" in line], [])

    def test_the_tree_of_this_project_has_none(self):
        with tempfile.TemporaryDirectory() as folder:
            shutil.copytree(ROOT, f"{folder}/tree", symlinks=True, ignore=shutil.ignore_patterns(
                ".git", "build*", "__pycache__"))
            self.ok("create", "p.kraddon", f"{folder}/tree", "--name", "x", "--level", "0")

        report = self.run_kraddon("verify", "p.kraddon", "--format", "github")

        self.assertEqual([line for line in report.text.splitlines() if "KR509" in line], [])


if __name__ == "__main__":
    kraddontest.main()
