# SPDX-License-Identifier: MIT
"""Reads a document with Python's own modules repeatedly, and prints the seconds of CPU that it took.

    host_peer.py PART PACKAGE COUNT
"""

import sys
import time
import xml.etree.ElementTree as ElementTree
import zipfile


def read(path, part):
    try:
        with zipfile.ZipFile(path) as package:
            root = ElementTree.fromstring(package.read(part))
    except FileNotFoundError:
        return None
    return {element.tag: element.text for element in root}


def main():
    part, path, count = sys.argv[1], sys.argv[2], int(sys.argv[3])
    read(path, part)
    start = time.process_time()
    for _ in range(count):
        read(path, part)
    print("%.9f" % (time.process_time() - start))


if __name__ == "__main__":
    main()
