# SPDX-License-Identifier: MIT
"""The items of a folder on the disk."""

import os

import protocol


def items(folder, path=b""):
    for entry in os.scandir(os.fsencode(folder)):
        name = path + entry.name
        if entry.is_dir(follow_symlinks=False):
            yield protocol.folder(name)
            yield from items(entry.path, name + b"/")
        elif entry.is_file(follow_symlinks=False):
            with open(entry.path, "rb") as file:
                yield protocol.file(name, file.read())
        else:
            yield protocol.link(name)
