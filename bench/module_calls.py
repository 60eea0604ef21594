# SPDX-License-Identifier: MIT
"""Reads a package repeatedly in one process, and prints the seconds of CPU that it took.

    module_calls.py kraddon|zipfile list|read|document PACKAGE COUNT

The works: opening it and listing its files, opening it and reading each of them, opening it and
reading its license.
"""

import sys
import time
import xml.etree.ElementTree as ElementTree
import zipfile


class Module:
    """The module for Python."""

    def __init__(self):
        import kraddon
        self.open = kraddon.open

    def list(self, path):
        with self.open(path) as package:
            return len(package.namelist())

    def read(self, path):
        with self.open(path) as package:
            return sum(len(package.read(name)) for name in package if not name.endswith("/"))

    def document(self, path):
        with self.open(path) as package:
            return package.license.type


class Zipfile:
    """Python's own modules, for the same files."""

    @staticmethod
    def names(package):
        return [name for name in package.namelist() if name.startswith("files/")]

    def list(self, path):
        with zipfile.ZipFile(path) as package:
            return len(self.names(package))

    def read(self, path):
        with zipfile.ZipFile(path) as package:
            return sum(len(package.read(name)) for name in self.names(package))

    def document(self, path):
        with zipfile.ZipFile(path) as package:
            return ElementTree.fromstring(package.read("metadata/license.xml")).findtext("{*}type")


def main():
    side = Module() if sys.argv[1] == "kraddon" else Zipfile()
    work, path, count = getattr(side, sys.argv[2]), sys.argv[3], int(sys.argv[4])
    work(path)
    start = time.process_time()
    for _ in range(count):
        work(path)
    print("%.9f" % (time.process_time() - start))


if __name__ == "__main__":
    main()
