# SPDX-License-Identifier: MIT
"""What the tests of signatures share: packages, signatures of the program, its verdicts."""

import json
import os

import lab as laboratory  # first: it finds the folders of the others
from program import KRADDON, ScratchCase, run


class SignatureCase(ScratchCase):
    maxDiff = None

    def setUp(self):
        super().setUp()
        self.count = 0

    def file(self, name, content=b""):
        path = self.path(name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)
        return path

    def bytes_of(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def create(self, files=None, name="Wave Tools"):
        """The bytes of a package."""
        self.count += 1
        for path, content in (laboratory.FILES if files is None else files).items():
            self.file(f"src{self.count}/{path}", content.encode())
        self.kraddon("create", "new.kraddon", f"src{self.count}", "--name", name, "--force",
                     "--timestamp", "1770000000", "--author", "Ada")
        return self.bytes_of("new.kraddon")

    def sign(self, content, signer=None, *words):
        """The package as the program signs it, with the key of `signer`."""
        self.file("sign.kraddon", content)
        if signer is not None:
            self.write_keys(signer)
        self.kraddon("sign", "sign.kraddon", "--key", "ada.key", "--certificate", "ada.pem",
                     "--timestamp", "1770000000", *words)
        return self.bytes_of("sign.kraddon")

    def write_keys(self, signer):
        self.file("ada.key", signer.key_pem())
        os.chmod(self.path("ada.key"), 0o600)
        self.file("ada.pem", signer.pem())

    def verdicts(self, names, *words):
        """The findings of each package, by name."""
        outcome = run(KRADDON, "verify", "--json", *words, *names, cwd=self.folder)
        self.assertIn(outcome.code, (0, 1), str(outcome))
        verdicts = json.loads(outcome.stdout)
        verdicts = verdicts["packages"] if "packages" in verdicts else [verdicts]
        self.assertEqual([each["file"] for each in verdicts], list(names))
        return {each["file"]: each["findings"] for each in verdicts}

    def errors(self, content, *words):
        """The ids of the errors that verify finds in a package."""
        self.file("p.kraddon", content)
        findings = self.verdicts(["p.kraddon"], *words)["p.kraddon"]
        return sorted({each["id"] for each in findings if each["severity"] == "error"})

    def signatures(self, content, *words):
        """The exit code and the signatures that the program lists."""
        self.file("p.kraddon", content)
        outcome = run(KRADDON, "signatures", "p.kraddon", "--json", *words, cwd=self.folder)
        self.assertIn(outcome.code, (0, 1), str(outcome))
        return outcome.code, json.loads(outcome.stdout)["signatures"]
