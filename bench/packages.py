# SPDX-License-Identifier: MIT
"""Thousands of packages that differ in their names: add-ons, RPMs and .debs of the same files.

One of each is made by the usual program; the others are copies of it with another number.
"""

import io
import os
import random
import struct
import subprocess
import tarfile
import zipfile
import zlib

from inputs import WORDS

NUMBER = "900000"  # in the names of the first package
FILES = 10


def fill(folder, size):
    """Text files that together have about that many bytes, packed."""
    source = random.Random(size)
    os.makedirs(folder)
    for number in range(FILES):
        with open(os.path.join(folder, "step%d.m" % number), "w", encoding="ascii") as file:
            while file.tell() * 2 < size * 5 // FILES:
                file.write("%s %d\n" % (" ".join(source.choices(WORDS, k=6)), source.getrandbits(40)))


class Addons:
    """Add-ons. What has the number is stored, so that it can be replaced in place."""

    extension = ".kraddon"

    def __init__(self, kraddon, folder, source):
        made = os.path.join(folder, "first.kraddon")
        subprocess.run([kraddon, "create", made, source, "--name", "Kit " + NUMBER, "--guid",
                        "0c3a0d9e-5b7a-4a53-9c58-000000" + NUMBER, "--summary",
                        "Signals of kit " + NUMBER, "--author", "Ada Lind", "--timestamp",
                        "1700000000"], check=True)
        packed = io.BytesIO()
        with zipfile.ZipFile(made) as old, zipfile.ZipFile(packed, "w") as new:
            for entry in old.infolist():
                data = old.read(entry)
                entry.extra = b""
                entry.compress_type = (zipfile.ZIP_STORED if NUMBER.encode() in data
                                       else zipfile.ZIP_DEFLATED)
                new.writestr(entry, data)
        self.first = packed.getvalue()
        os.remove(made)
        with zipfile.ZipFile(packed) as package:
            self.numbered = [self.place(package, entry) for entry in package.infolist()
                             if entry.compress_type == zipfile.ZIP_STORED]

    def place(self, package, entry):
        """Of the local header, of the data, and of the entry in the directory."""
        start = entry.header_offset + 30 + len(entry.filename)
        directory = self.first.index(entry.filename.encode(), package.start_dir) - 46
        return entry.header_offset, start, start + entry.file_size, directory

    def make(self, number):
        package = bytearray(self.first)
        for header, start, end, directory in self.numbered:
            data = self.first[start:end].replace(NUMBER.encode(), b"%06d" % number)
            package[start:end] = data
            check = struct.pack("<I", zlib.crc32(data))
            package[header + 14:header + 18] = package[directory + 16:directory + 20] = check
        return package


class Rpms:
    """RPMs. Their names are in the lead and in the headers."""

    extension = ".rpm"
    spec = """Name: kit-%(number)s
Version: 1.0
Release: 1
Summary: Signals of kit %(number)s
License: MIT
BuildArch: noarch
%%description
Signals of kit %(number)s.
%%install
mkdir -p %%{buildroot}/usr/share
cp -r %(source)s %%{buildroot}/usr/share/kit
%%files
/usr/share/kit
"""

    def __init__(self, _, folder, source):
        spec = os.path.join(folder, "kit.spec")
        with open(spec, "w", encoding="ascii") as file:
            file.write(self.spec % {"number": NUMBER, "source": source})
        top = os.path.join(folder, "rpmbuild")
        subprocess.run(["rpmbuild", "--quiet", "-bb", "--define", "_topdir " + top, spec], check=True,
                       stdout=subprocess.DEVNULL)
        [made] = [os.path.join(place, name) for place, _, names in os.walk(os.path.join(top, "RPMS"))
                  for name in names]
        with open(made, "rb") as file:
            self.first = file.read()

    def make(self, number):
        return self.first.replace(NUMBER.encode(), b"%06d" % number)


class Debs:
    """.debs. All have the same data, and a control file of their own."""

    extension = ".deb"
    control = ("Package: kit-%06d\nVersion: 1.0\nArchitecture: all\nMaintainer: Ada Lind <a@b.example>"
               "\nDescription: Signals of kit %06d\n")

    def __init__(self, _, folder, source):
        tree = os.path.join(folder, "deb")
        os.makedirs(os.path.join(tree, "DEBIAN"))
        subprocess.run(["cp", "-r", source, os.path.join(tree, "kit")], check=True)
        with open(os.path.join(tree, "DEBIAN", "control"), "w", encoding="ascii") as file:
            file.write(self.control % (int(NUMBER), int(NUMBER)))
        made = os.path.join(folder, "first.deb")
        subprocess.run(["dpkg-deb", "-Zgzip", "--root-owner-group", "-b", tree, made], check=True,
                       stdout=subprocess.DEVNULL)
        with open(made, "rb") as file:
            first = file.read()
        self.data = first[first.index(b"data.tar.gz "):]

    @staticmethod
    def member(name, content):
        header = "%-16s%-12d%-6d%-6d%-8o%-10d`\n" % (name, 0, 0, 0, 0o100644, len(content))
        return header.encode() + content + b"\n" * (len(content) % 2)

    def make(self, number):
        packed = io.BytesIO()
        with tarfile.open(fileobj=packed, mode="w:gz", compresslevel=1) as archive:
            text = (self.control % (number, number)).encode()
            entry = tarfile.TarInfo("./control")
            entry.size = len(text)
            archive.addfile(entry, io.BytesIO(text))
        return (b"!<arch>\n" + self.member("debian-binary", b"2.0\n")
                + self.member("control.tar.gz", packed.getvalue()) + self.data)


def make_packages(kind, kraddon, folder, count, size):
    """Makes so many packages of about that size."""
    os.makedirs(folder)
    work = os.path.abspath(folder) + ".work"
    os.makedirs(work)
    source = os.path.join(work, "source")
    fill(source, size)
    maker = kind(kraddon, work, source)
    for number in range(count):
        with open(os.path.join(folder, "kit-%06d%s" % (number, kind.extension)), "wb") as file:
            file.write(maker.make(number))
    subprocess.run(["rm", "-r", work], check=True)
