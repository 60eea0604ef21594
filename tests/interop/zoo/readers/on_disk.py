# SPDX-License-Identifier: MIT
"""Programs that unpack to the disk, one run a package: "unzip" or "busybox". What counts is what
lies there afterwards."""

import os
import subprocess
import sys
import tempfile

import disk
import protocol

COMMANDS = {"unzip": ("unzip", "-q", "-o"), "busybox": ("busybox", "unzip", "-q", "-o")}
# Of unzip: 0 is without an error, and 1 "with warnings, but successful anyway".
ACCEPTED = {"unzip": (0, 1), "busybox": (0,)}

program = sys.argv[1]
environment = dict(os.environ, LC_ALL="C.UTF-8")


def read(path):
    with tempfile.TemporaryDirectory(prefix="zoo-") as folder:
        target = os.path.join(folder, "a", "b", "c")
        os.makedirs(target)
        outcome = subprocess.run(
            [*COMMANDS[program], os.path.abspath(path), "-d", target], stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env=environment)
        if outcome.returncode not in ACCEPTED[program]:
            raise protocol.Refused("%d: %r" % (outcome.returncode, outcome.stdout[-150:]))
        yield from disk.items(target)


protocol.serve(read)
