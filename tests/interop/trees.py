# SPDX-License-Identifier: MIT
"""Descriptions of file trees on disk, which can be compared. All names are bytes."""

import hashlib
import os
import shutil
import stat


def digest(path):
    sum_of = hashlib.sha256()
    with open(path, "rb") as file:
        for block in iter(lambda: file.read(1 << 20), b""):
            sum_of.update(block)
    return sum_of.hexdigest()


def describe(root, with_times=True):
    """Everything below `root` that a package keeps, by relative path."""
    root = os.fsencode(root)
    found = {}
    for folder, _, files in os.walk(root):
        found[os.path.relpath(folder, root)] = "folder"
        for name in files:
            path = os.path.join(folder, name)
            status = os.lstat(path)
            found[os.path.relpath(path, root)] = (
                stat.S_IFMT(status.st_mode), digest(path), bool(status.st_mode & stat.S_IXUSR),
                int(status.st_mtime) if with_times else None)
    return found


def differences(expected, actual):
    """The first few paths that differ, as text; empty if none do."""
    lines = []
    for path in sorted(set(expected) | set(actual)):
        before, after = expected.get(path), actual.get(path)
        if before != after:
            lines.append("%r: %s, then %s" % (path, before, after))
    return "\n".join(lines[:10])


def _broken_or_special(folder, names):
    """For copytree: the names that cannot be copied as files."""
    skipped = []
    for name in names:
        path = os.path.join(folder, name)
        if not (os.path.isfile(path) or os.path.isdir(path)):
            skipped.append(name)
    return skipped


def copy_resolved(source, destination):
    """Copies a folder with every link resolved, so that only files and folders remain."""
    shutil.copytree(source, destination, symlinks=False, ignore=_broken_or_special)


def copy_some(source, destination, count, largest=1 << 20):
    """Copies the first `count` files of up to `largest` bytes, links resolved; returns how many."""
    copied = 0
    for folder, folders, files in os.walk(source, followlinks=True):
        folders.sort()  # so that every run copies the same files
        target = os.path.join(destination, os.path.relpath(folder, source))
        for name in sorted(files):
            origin = os.path.join(folder, name)
            if not os.path.isfile(origin) or os.path.getsize(origin) > largest:
                continue  # such as a link that leads nowhere
            os.makedirs(target, exist_ok=True)
            shutil.copy2(origin, os.path.join(target, name))
            copied += 1
            if copied == count:
                return copied
    return copied
