# SPDX-License-Identifier: MIT
"""Work that writes."""

import itertools
import os
import shutil
import subprocess

from contest import Contest, Goal, Peer

PYTHON_ZIP = """
import os, sys, zipfile
with zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED, compresslevel=6) as archive:
    for folder, folders, names in os.walk(sys.argv[2]):
        for name in names:
            archive.write(os.path.join(folder, name))
"""


class Writing:
    def __init__(self, inputs, many):
        self.inputs = inputs
        self.kraddon = inputs.kraddon
        self.many = many

    def create(self, package, tree, *options):
        return [self.kraddon, "create", self.inputs.path(package), tree, "--name", "bench",
                *options]

    def real(self):
        inputs = self.inputs
        tree = inputs.headers()
        new = {kind: inputs.path("new." + kind) for kind in ("kraddon", "zip", "7z.zip", "fast")}
        clean = inputs.remover("new.kraddon", "new.zip", "new.tar", "new.py", "new.7z.zip",
                               "new.fast")
        yield Contest(
            "create, real", self.create("new.kraddon", tree), [
                Peer("zip -q -r -6", inputs.shell("zip -q -r -6 new.zip headers"),
                     Goal(0.24, one=0.44), new["zip"], Goal(1.0)),
                Peer("bsdtar --format zip",
                     inputs.shell("bsdtar --format zip -cf new.tar headers"), Goal(0.55)),
                Peer("python3 zipfile", inputs.shell("/usr/bin/python3 -c '%s' new.py headers"
                                                     % PYTHON_ZIP)),
                Peer("7z a -tzip -mx5 -mmt1",
                     inputs.shell("7z a -tzip -mx5 -mmt1 -bso0 -bsp0 new.7z.zip headers"),
                     Goal(0.20), new["7z.zip"], Goal(1.02))],
            clean, new["kraddon"])
        yield Contest(
            "create --level 1, real", self.create("new.fast", tree, "--level", "1"),
            [Peer("--level 6", self.create("new.kraddon", tree), Goal(0.5), new["kraddon"],
                  Goal(1.12), own=True)],
            clean, new["fast"])
        yield Contest(
            "build, real", [self.kraddon, "build", inputs.project(tree), "-o", new["kraddon"]],
            [Peer("create", self.create("new.fast", tree), Goal(1.25), own=True)], clean)
        inputs.remove("project")

        package, archive = inputs.package(tree), inputs.archive(tree)
        yield Contest(
            "extract, real", [self.kraddon, "extract", package, "-d", inputs.path("out")], [
                Peer("unzip -q", ["unzip", "-q", archive, "-d", inputs.path("out")],
                     Goal(0.40, 0.30)),
                Peer("cp -r", ["cp", "-r", tree, inputs.path("out")], Goal(1.30, 1.10))],
            inputs.remover("out"))
        clean()
        inputs.remove("out")

    def many_files(self):
        inputs = self.inputs
        tree = inputs.texts(self.many)
        name = os.path.basename(tree)
        count = format(self.many, ",") + " files"
        yield Contest(
            "create, " + count, self.create("new.kraddon", tree), [
                Peer("zip -q -r -6", inputs.shell("zip -q -r -6 new.zip " + name),
                     Goal(0.38, one=0.55))],
            inputs.remover("new.kraddon", "new.zip"), memory_goal=Goal(120, 80))
        package = inputs.licensed(inputs.package(tree))
        yield Contest(
            "extract, " + count, [self.kraddon, "extract", package, "-d", inputs.path("out")],
            [Peer("cp -r", ["cp", "-r", tree, inputs.path("out")], Goal(1.20, 0.90))],
            inputs.remover("out"))
        yield self.adding(package, count)
        inputs.remove("out", "copy.kraddon", "new.kraddon", "new.zip")

    def adding(self, package, count):
        inputs = self.inputs
        copy = inputs.path("copy.kraddon")

        def prepare():
            inputs.remove("copy.kraddon")
            shutil.copyfile(package, copy)
        return Contest(
            "add one file, " + count, [self.kraddon, "add", copy, inputs.small_file()],
            [Peer("zip -q", inputs.shell("zip -q copy.kraddon one.m"), Goal(0.80, 0.50))], prepare)

    def large_file(self):
        inputs = self.inputs
        tree = inputs.large_file()
        memory = Goal(96, 48)
        work = "64 MiB file" if inputs.quick else "1 GiB file"
        yield Contest(
            "create, " + work, self.create("new.kraddon", tree), [
                Peer("zip -q -6", inputs.shell("zip -q -r -6 new.zip large"), Goal(0.95),
                     inputs.path("new.zip"), Goal(1.002))],
            inputs.remover("new.kraddon", "new.zip"), inputs.path("new.kraddon"), memory)
        package, archive = inputs.package(tree), inputs.archive(tree)
        yield Contest(
            "extract, " + work, [self.kraddon, "extract", package, "-d", inputs.path("out")], [
                Peer("bsdtar -xf", inputs.shell("mkdir out && bsdtar -xf '%s' -C out" % archive),
                     Goal(0.80, 0.50))],
            inputs.remover("out"), memory_goal=memory)
        inputs.remove("out", "large", "large.kraddon", "large.zip", "new.kraddon", "new.zip")

    def changes(self):
        inputs = self.inputs
        package = inputs.package(inputs.blocks())
        inputs.remove("blocks")
        peers_own = shutil.copyfile(package, inputs.path("peer.zip"))
        number = itertools.count()
        size = "%d MB" % (50 if inputs.quick else 300)
        add = [self.kraddon, "add", package, inputs.small_file()]
        remove = [self.kraddon, "remove", package, "one.m"]

        def set_another():
            return [self.kraddon, "set", package, "license", "type=MIT",
                    "text=version %d" % next(number)]

        def copying():
            return Peer("cp and fsync", inputs.shell("cp '%s' copy && sync copy" % package),
                        Goal(1.25))

        def after(command):
            """Undoes the last run, if there was one."""
            def prepare():
                inputs.remove("copy")
                subprocess.run([*command, "-q"], check=False, stderr=subprocess.DEVNULL)
            return prepare
        yield Contest(
            "set one document, " + size, set_another, [
                copying(), Peer("zip -q of one file", inputs.shell("zip -q '%s' one.m" % peers_own),
                                Goal(0.90))],
            inputs.remover("copy"))
        yield Contest("add one file, " + size, add, [copying()], after(remove))
        yield Contest("remove one file, " + size, remove, [copying()], after(add))
        inputs.remove("copy", "peer.zip", os.path.basename(package))
