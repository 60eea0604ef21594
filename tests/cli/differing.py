# SPDX-License-Identifier: MIT
"""What tests of 'kraddon diff' share."""

import hashlib
import json
import shutil

import kraddontest


def sha256(content):
    return hashlib.sha256(content.encode()).hexdigest()


def side(content):
    return {"size": len(content), "sha256": sha256(content)}


class DiffTest(kraddontest.CliTest):

    def differs(self, *words, **kw):
        """Runs it, expects exit code 1 and silence on standard error."""
        result = self.run_kraddon("diff", *words, **kw)
        self.assertEqual((result.code, result.errors), (1, ""))
        return result

    def trouble(self, *words, message, **kw):
        result = self.run_kraddon("diff", *words, **kw)
        self.assertEqual((result.code, result.out), (2, b""))
        self.assertEqual(result.errors.splitlines()[0], f"kraddon: diff: {message}")
        self.assertNotIn("usage:", result.errors)
        return result

    def pair(self, a, b):
        """The packages a.kraddon and b.kraddon of these files, whatever there was before."""
        for name, files in (("a.kraddon", a), ("b.kraddon", b)):
            shutil.rmtree(self.path(f"{name}.src"), ignore_errors=True)
            self.path(name).unlink(missing_ok=True)
            self.package(name, files)

    def lines(self, *words):
        return self.differs("a.kraddon", "b.kraddon", *words).text.splitlines()

    def report(self, *words):
        return self.differs("a.kraddon", "b.kraddon", "--json", *words).json

    def set(self, package, document, value):
        self.ok("set", "--no-verify", package, document, "-", stdin=json.dumps(value).encode())
