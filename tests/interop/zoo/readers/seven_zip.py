# SPDX-License-Identifier: MIT
"""7z, which unpacks many packages to the disk in one run."""

import os
import re
import subprocess
import sys
import tempfile

import disk

AT_ONCE = 200
BEGIN = re.compile(rb"^Extracting archive: (.*)$", re.MULTILINE)
FAILURE = b"ERROR"  # warnings are none


def unpack(paths, target):
    """Returns what 7z says of each package, by its number."""
    list_file = os.path.join(target, "list")
    for number, path in enumerate(paths):
        os.symlink(os.path.abspath(path), os.path.join(target, "%d.kraddon" % number))
    with open(list_file, "w", encoding="ascii") as file:
        file.writelines("%d.kraddon\n" % number for number in range(len(paths)))
    outcome = subprocess.run(
        ["7z", "x", "-y", "-bse1", "-bd", "-an", "-ai@list", "-oout/*"], cwd=target,
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
        env=dict(os.environ, LC_ALL="C.UTF-8"))
    pieces = BEGIN.split(outcome.stdout)
    return dict(zip((int(name.split(b".")[0]) for name in pieces[1::2]), pieces[2::2]))


def answer(paths):
    with tempfile.TemporaryDirectory(prefix="zoo-") as target:
        said = unpack(paths, target)
        for number, path in enumerate(paths):
            text = said.get(number, b"ERROR: it was not opened")
            lines = ["= " + path]
            if FAILURE not in text:
                folder = os.path.join(target, "out", str(number))
                lines += disk.items(folder) if os.path.isdir(folder) else []
                lines.append(".")
            else:
                lines.append("! " + ascii(text[-150:]))
            print("\n".join(lines))
    sys.stdout.flush()


waiting = [line.rstrip("\n") for line in sys.stdin]
for begin in range(0, len(waiting), AT_ONCE):
    answer(waiting[begin:begin + AT_ONCE])
