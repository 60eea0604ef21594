# SPDX-License-Identifier: MIT
"""The readers of the zoo, and how they are run: one process reads many packages."""

import os
import subprocess
import sys

HERE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "readers")
BUILT = os.path.join(HERE, "..", "..", "..", "..", "build", "zoo")
PYTHON = "/usr/bin/python3"
COMMONS = "/usr/share/java/commons-compress.jar"


def python(script, *words):
    return (PYTHON, "-B", os.path.join(HERE, script), *words)


def java(mode):
    return ("java", "-Xshare:auto", "-XX:+UseSerialGC", "-cp", os.path.join(BUILT, "java") + ":" +
            COMMONS, "JavaReaders", mode)


def node(library):
    return ("node", os.path.join(HERE, "node_readers.js"), library, os.path.join(BUILT, "npm"))


# Those of Debian that install in little time.
QUICK = {
    "unzip": python("on_disk.py", "unzip"),
    "busybox": python("on_disk.py", "busybox"),
    "7z": python("seven_zip.py"),
    "bsdtar": python("libarchive.py", "file"),
    "bsdtar from a pipe": python("libarchive.py", "pipe"),
    "zipfile": python("python_zipfile.py"),
    "Archive::Zip": ("perl", os.path.join(HERE, "archive_zip.pl")),
    "IO::Uncompress::Unzip": ("perl", os.path.join(HERE, "uncompress_unzip.pl")),
    "rubyzip": ("ruby", os.path.join(HERE, "ruby_zip.rb")),
    "libgsf": python("libgsf.py"),
    "libzip": python("libzip.py"),
    "minizip": python("minizip.py"),
    "zziplib": python("zziplib.py"),
}
# The others need a compiler of their own or packages of npm: scripts/setup zoo.
ALL = {
    **QUICK,
    "Go": (os.path.join(BUILT, "go_zip"),),
    "ZipFile": java("file"),
    "ZipInputStream": java("stream"),
    "commons-compress": java("commons-file"),
    "commons-compress stream": java("commons-stream"),
    "yauzl": node("yauzl"),
    "jszip": node("jszip"),
    "fflate": node("fflate"),
    "adm-zip": node("adm-zip"),
}


def chosen():
    """The readers for a test: those of scripts/test, or the whole zoo with KRADDON_ZOO=all."""
    return ALL if os.environ.get("KRADDON_ZOO") == "all" else QUICK


class Reading:
    """What a reader found in a package. Names are bytes."""

    def __init__(self):
        self.files = {}  # the SHA-256 by name
        self.folders = set()
        self.odd = []  # links, and names that occur again with other bytes
        self.refusal = None

    def take(self, line):
        kind, name, *rest = line.split(" ")
        name = bytes.fromhex(name)
        if kind == "d":
            self.folders.add(name.rstrip(b"/"))
        elif kind == "l":
            self.odd.append((name, "a link"))
        elif self.files.setdefault(name, rest[1]) != rest[1]:
            self.odd.append((name, "two contents"))


def _parse(output, found):
    """Adds what a reader printed to `found`, by path; returns a path that it did not finish."""
    path, reading = None, None
    for line in output.decode("utf-8", "replace").splitlines():
        if line.startswith("= "):
            path, reading = line[2:], Reading()
        elif line.startswith((".", "!")):
            reading.refusal = line[2:] if line.startswith("!") else None
            found[path], path = reading, None
        elif path is not None and line[:2] in ("f ", "d ", "l "):
            reading.take(line)
    return path


def _crashed():
    reading = Reading()
    reading.refusal = "the reader crashed, or took too long"
    return reading


def read(reader, packages, cwd=None):
    """Runs a reader on packages, again behind one that it does not survive; returns its readings
    by path."""
    found, waiting = {}, list(packages)
    environment = dict(os.environ, TMPDIR=os.path.abspath(cwd)) if cwd else None
    while waiting:
        with subprocess.Popen(reader, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, cwd=cwd, env=environment) as process:
            try:
                output, errors = process.communicate(
                    "".join(path + "\n" for path in waiting).encode(), 60 + 0.2 * len(waiting))
            except subprocess.TimeoutExpired:
                process.kill()
                output, errors = process.communicate()
        _parse(output, found)
        left = [path for path in waiting if path not in found]
        if len(left) == len(waiting) and len(found) == 0:
            # It does not even start, or fails on the first one.
            sys.stderr.write(errors.decode(errors="replace")[-2000:])
            if process.returncode in (1, 2, 127):
                raise RuntimeError("%s does not work" % " ".join(reader))
        if left:
            found[left[0]] = _crashed()
        waiting = left[1:]
    return found
