# SPDX-License-Identifier: MIT
"""Work that reads."""

import shutil
import subprocess

from contest import Contest, Difference, Goal, Loop, Peer


class Reading:
    def __init__(self, inputs, many):
        self.inputs = inputs
        self.kraddon = inputs.kraddon
        self.many = many

    def real(self):
        """What reads a whole package, or could."""
        inputs = self.inputs
        tree = inputs.headers()
        package, archive = inputs.package(tree), inputs.archive(tree)
        verify = [self.kraddon, "verify", package]
        listing = [self.kraddon, "list", package]
        yield Contest("verify, real", verify,
                      [Peer("unzip -tq", ["unzip", "-tq", archive], Goal(0.22, one=0.42))])
        yield Contest("list --hash, real", [*listing, "--hash"],
                      [Peer("verify", verify, Goal(1.15), own=True)])
        yield Contest("info --digest, real", [self.kraddon, "info", package, "--digest"],
                      [Peer("verify", verify, Goal(1.15), own=True)])
        yield Contest("info, real", [self.kraddon, "info", package],
                      [Peer("list", listing, Goal(0.7), own=True)])
        yield self.module("read all, real", "read", package, Goal(0.3))
        other = shutil.copyfile(package, inputs.path("other.kraddon"))
        subprocess.run([self.kraddon, "add", "-q", other, inputs.small_file()], check=True)
        yield Contest("diff, real, one file differs", [self.kraddon, "diff", package, other],
                      [Peer("verify", verify, Goal(0.15), own=True)], code=1)
        inputs.remove("other.kraddon")

    def many_files(self):
        inputs = self.inputs
        package = inputs.licensed(inputs.package(inputs.texts(self.many)))
        count = format(self.many, ",") + " files"
        yield Contest(
            "list, " + count, [self.kraddon, "list", package],
            [Peer("unzip -Z1", ["unzip", "-Z1", package], Goal(0.30))])
        yield self.get(package, count, Goal(1.2))
        yield self.module("list, " + count, "list", package, Goal(0.1))
        yield self.module("one document, " + count, "document", package, Goal(0.2))

    def module(self, name, work, package, goal):
        """What a script does with the module for Python, against Python's own."""
        ours, theirs = ([*self.inputs.module_calls(module), work, package, "3"]
                        for module in ("kraddon", "zipfile"))
        return Loop("Python: " + name, ours, [Peer("python3 zipfile", theirs, goal)])

    def get(self, package, count, goal):
        return Contest(
            "get one document, " + count, [self.kraddon, "get", package, "license"],
            [Peer("unzip -p", ["unzip", "-p", package, "metadata/license.xml"], goal)])

    def small(self):
        inputs = self.inputs
        package = inputs.licensed(inputs.package(inputs.texts(10)))
        copies = inputs.copies(package, 500)
        yield Contest(
            "verify, 500 packages", [self.kraddon, "verify", *copies],
            [Peer("500 unzip -tq", inputs.shell("for file in copies/*; do unzip -tq $file; done"),
                  Goal(0.33))])
        inputs.remove("copies")
        yield self.get(package, "10 files", Goal(1.5))
        package = inputs.package(inputs.texts(1000))
        yield Contest("list, 1,000 files", [self.kraddon, "list", package],
                      [Peer("unzip -Z1", ["unzip", "-Z1", package], Goal(1.4))])
        package = inputs.package(inputs.texts(6000))
        page = inputs.path("page.html")
        yield Difference("preview, 6,000 files", [self.kraddon, "preview", package, "-o", page],
                         [Peer("/bin/true", ["/bin/true"], Goal(30))])
        inputs.remove("page.html")
