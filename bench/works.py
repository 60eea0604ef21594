# SPDX-License-Identifier: MIT
"""The work that is timed, the programs for comparison, and the goals. Groups restore their folder."""

import itertools
import os
import shutil

from contest import Contest, Goal, Loop, Peer, Startup

PYTHON_ZIP = """
import os, sys, zipfile
with zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED, compresslevel=6) as archive:
    for folder, folders, names in os.walk(sys.argv[2]):
        for name in names:
            archive.write(os.path.join(folder, name))
"""

PYTHON_CALLS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "host_peer.py")


class Works:
    def __init__(self, inputs):
        self.inputs = inputs
        self.kraddon = inputs.kraddon
        self.many = 10000 if inputs.quick else 100000

    def contests(self):
        yield from self.real()
        yield from self.many_files()
        yield from self.large_file()
        yield from self.changes()
        yield from self.calls()
        yield self.start()

    def create(self, package, tree, *options):
        return [self.kraddon, "create", self.inputs.path(package), tree, "--name", "bench",
                *options]

    def shell(self, command):
        """In the inputs' folder."""
        return ["bash", "-c", "cd '%s' && %s" % (self.inputs.folder, command)]

    def real(self):
        inputs = self.inputs
        tree = inputs.headers()
        results = {kind: inputs.path("new." + kind) for kind in ("kraddon", "zip", "tar", "py",
                                                                 "7z")}
        yield Contest(
            "create, real", self.create("new.kraddon", tree), [
                Peer("zip -q -r -6", self.shell("zip -q -r -6 new.zip headers"),
                     Goal(0.50, 0.43), results["zip"], Goal(1.0)),
                Peer("bsdtar --format zip", self.shell("bsdtar --format zip -cf new.tar headers"),
                     Goal(0.55)),
                Peer("python3 zipfile", self.shell("/usr/bin/python3 -c '%s' new.py headers"
                                                   % PYTHON_ZIP)),
                Peer("7z a -tzip -mx5 -mmt1",
                     self.shell("7z a -tzip -mx5 -mmt1 -bso0 -bsp0 new.7z.zip headers"),
                     Goal(0.20), inputs.path("new.7z.zip"), Goal(1.02))],
            inputs.remover("new.kraddon", "new.zip", "new.tar", "new.py", "new.7z.zip"),
            results["kraddon"])

        package, archive = inputs.package(tree), inputs.archive(tree)
        yield Contest(
            "extract, real", [self.kraddon, "extract", package, "-d", inputs.path("out")], [
                Peer("unzip -q", ["unzip", "-q", archive, "-d", inputs.path("out")],
                     Goal(0.40, 0.30)),
                Peer("cp -r", ["cp", "-r", tree, inputs.path("out")], Goal(1.30, 1.10))],
            inputs.remover("out"))
        inputs.remover("out", "headers", "headers.kraddon", "headers.zip", "new.kraddon", "new.zip",
                       "new.tar", "new.py", "new.7z.zip")()

    def many_files(self):
        inputs = self.inputs
        tree = inputs.texts(self.many)
        name = os.path.basename(tree)
        count = format(self.many, ",") + " files"
        yield Contest(
            "create, " + count, self.create("new.kraddon", tree), [
                Peer("zip -q -r -6", self.shell("zip -q -r -6 new.zip " + name),
                     Goal(0.60, 0.45))],
            inputs.remover("new.kraddon", "new.zip"), memory_goal=Goal(120, 80))
        package = inputs.licensed(inputs.package(tree))
        yield Contest(
            "extract, " + count, [self.kraddon, "extract", package, "-d", inputs.path("out")],
            [Peer("cp -r", ["cp", "-r", tree, inputs.path("out")], Goal(1.20, 0.90))],
            inputs.remover("out"))
        inputs.remover("out")()
        yield Contest(
            "list, " + count, [self.kraddon, "list", package],
            [Peer("unzip -Z1", ["unzip", "-Z1", package], Goal(0.60, 0.40))])
        yield Contest(
            "get one document, " + count, [self.kraddon, "get", package, "license"],
            [Peer("unzip -p", ["unzip", "-p", package, "metadata/license.xml"], Goal(2.0, 1.3))])
        yield self.adding(package, count)
        inputs.remover("new.kraddon", "new.zip")()

    def adding(self, package, count):
        inputs = self.inputs
        copy = inputs.path("copy.kraddon")

        def prepare():
            inputs.remover("copy.kraddon")()
            shutil.copyfile(package, copy)
        return Contest(
            "add one file, " + count, [self.kraddon, "add", copy, inputs.small_file()],
            [Peer("zip -q", self.shell("zip -q copy.kraddon one.m"), Goal(0.80, 0.50))], prepare)

    def large_file(self):
        inputs = self.inputs
        tree = inputs.large_file()
        memory = Goal(96, 48)
        work = "64 MiB file" if inputs.quick else "1 GiB file"
        yield Contest(
            "create, " + work, self.create("new.kraddon", tree), [
                Peer("zip -q -6", self.shell("zip -q -r -6 new.zip large"), Goal(0.95),
                     inputs.path("new.zip"), Goal(1.002))],
            inputs.remover("new.kraddon", "new.zip"), inputs.path("new.kraddon"), memory)
        package, archive = inputs.package(tree), inputs.archive(tree)
        yield Contest(
            "extract, " + work, [self.kraddon, "extract", package, "-d", inputs.path("out")], [
                Peer("bsdtar -xf", self.shell("mkdir out && bsdtar -xf '%s' -C out" % archive),
                     Goal(0.80, 0.50))],
            inputs.remover("out"), memory_goal=memory)
        inputs.remover("out", "large", "large.kraddon", "large.zip", "new.kraddon", "new.zip")()

    def changes(self):
        inputs = self.inputs
        package = inputs.package(inputs.blocks())
        inputs.remover("blocks")()
        peers_own = shutil.copyfile(package, inputs.path("peer.zip"))
        number = itertools.count()
        inputs.small_file()

        def set_another():
            return [self.kraddon, "set", package, "license", "type=MIT",
                    "text=version %d" % next(number)]
        copying = "cp '%s' copy && sync copy" % package
        yield Contest(
            "set one document, %d MB" % (50 if inputs.quick else 300), set_another, [
                Peer("cp and fsync", self.shell(copying), Goal(1.3, 1.1)),
                Peer("zip -q of one file", self.shell("zip -q '%s' one.m" % peers_own), Goal(0.90))],
            inputs.remover("copy"))
        inputs.remover("copy", "peer.zip", os.path.basename(package))()

    def calls(self):
        """What a host calls, against Python's own modules that read the same."""
        inputs = self.inputs
        small = inputs.licensed(inputs.package(inputs.texts(2)))
        large = inputs.licensed(inputs.package(inputs.texts(self.many // 5)))
        for call, part, package, count, goal in (
                ("addonGetLicense, 2 files", "license", small, 2000, Goal(0.6, 0.35)),
                ("addonGetProperties, 2 files", "coreProperties", small, 2000, Goal(0.9, 0.5)),
                ("addonGetLicense, no such file", "license", inputs.path("none"), 2000,
                 Goal(20, 10)),
                ("addonGetLicense, %s files" % format(self.many // 5, ","), "license", large, 20,
                 Goal(0.03))):
            yield Loop(
                call, [inputs.host_calls, call.split(",")[0], package, str(count)],
                [Peer("python3 zipfile, ElementTree",
                      ["/usr/bin/python3", PYTHON_CALLS, "metadata/%s.xml" % part, package,
                       str(count)], goal)])

    def start(self):
        return Startup("--version", [self.kraddon, "--version"],
                       [Peer("/bin/true", ["/bin/true"], Goal(15, 5))])

