# SPDX-License-Identifier: MIT
"""Faultless packages, as several programs write them: what the variants are made of."""

import io
import os
import shutil
import subprocess
import zipfile

FILES = {"a.m": b"function a\n", "lib/b.m": b"function b\n" * 20, "lib/data.bin": bytes(range(64)),
         "lib/deep/c.m": b"c\n"}
# One has no part name of its own, and one is written in percent codes.
ODD_FILES = {"a.m": b"1\n", "A.m": b"2\n", "lib/end.": b"3\n" * 30, "lib/\u00e9.m": b"4\n"}


TIME = 1700000000


class Unseekable(io.RawIOBase):
    """A file that can only be appended to, so that descriptors have to follow the data."""

    def __init__(self):
        super().__init__()
        self.content = bytearray()

    def writable(self):
        return True

    def write(self, data):
        self.content += bytes(data)
        return len(data)


def created(program, folder, name, files, *words):
    """A package of ours."""
    tree = os.path.join(folder, name)
    for path, content in files.items():
        target = os.path.join(tree, path)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        with open(target, "wb") as file:
            file.write(content)
    package = os.path.join(folder, name + ".kraddon")
    subprocess.run([program, "create", package, tree, "--name", "Zoo", "--timestamp",
                    str(TIME), *words], check=True, stdin=subprocess.DEVNULL)
    with open(package, "rb") as file:
        return file.read()


def with_zipfile(items, to=None, force_zip64=False, folders=(), method=zipfile.ZIP_DEFLATED):
    """What Python's zipfile makes of the items."""
    target = to if to is not None else io.BytesIO()
    with zipfile.ZipFile(target, "w") as archive:
        for name in folders:
            archive.writestr(zipfile.ZipInfo(name), b"")
        for name, content in items.items():
            info = zipfile.ZipInfo(name)
            info.compress_type = method
            with archive.open(info, "w", force_zip64=force_zip64) as entry:
                entry.write(content)
    return bytes(to.content) if to is not None else target.getvalue()


def with_program(folder, name, items, *command):
    """What a program makes of the items; "OUT" in the command is the package."""
    tree, package = os.path.join(folder, name + ".d"), os.path.join(folder, name + ".zip")
    for path, content in items.items():
        os.makedirs(os.path.dirname(os.path.join(tree, path)), exist_ok=True)
        with open(os.path.join(tree, path), "wb") as file:
            file.write(content)
    for path, _, files in os.walk(tree):
        for entry in (".", *files):
            os.utime(os.path.join(path, entry), (TIME, TIME))
    subprocess.run([package if word == "OUT" else word for word in command], cwd=tree, check=True,
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                   env=dict(os.environ, LC_ALL="C.UTF-8", TZ="UTC"))
    with open(package, "rb") as file:
        return file.read()


COMMANDS = {
    "zip": ("zip", "-q", "-r", "OUT", "."),
    "zip without extra fields": ("zip", "-q", "-r", "-X", "-D", "OUT", "."),
    "zip64 by zip": ("zip", "-q", "-r", "-fz", "OUT", "."),
    "bsdtar": ("bsdtar", "-c", "--format", "zip", "-f", "OUT", "[Content_Types].xml", "_rels",
               "metadata", "files"),
    "7z": ("7z", "a", "-tzip", "-bd", "OUT", "./*"),
    "jar": ("jar", "--create", "--no-manifest", "--file", "OUT", "."),
}


def items_of(package):
    with zipfile.ZipFile(io.BytesIO(package)) as archive:
        return {name: archive.read(name) for name in archive.namelist()}


def packages(program, folder):
    """Yields names and packages. `folder` is for files that are made on the way."""
    plain = created(program, folder, "plain", FILES)
    items = items_of(plain)
    yield "ours", plain
    yield "ours with a table", created(program, folder, "odd", ODD_FILES)
    yield "ours, stored", created(program, folder, "stored", FILES, "--level", "0")
    yield "descriptors", with_zipfile(items, Unseekable())
    yield "stored with descriptors", with_zipfile(items, Unseekable(), method=zipfile.ZIP_STORED)
    yield "stored", with_zipfile(items, method=zipfile.ZIP_STORED)
    yield "zip64 fields", with_zipfile(items, force_zip64=True)
    yield "folders", with_zipfile(items, folders=("files/", "files/lib/", "metadata/", "_rels/"))
    for name, command in COMMANDS.items():
        if shutil.which(command[0]):
            yield name, with_program(folder, name, items, *command)
