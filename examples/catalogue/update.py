#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Looks for a newer version of an add-on in a catalogue, and fetches what changed of its package.

  update.py URL PACKAGE GUID VERSION    PACKAGE is replaced by that of a newer version
"""

import hashlib
import http.client
import io
import json
import os
import sys
import urllib.parse
import zipfile

TAIL = 64 << 10  # bytes in which the directory of a package is looked for first


class Site:
    """A site on a web server, over one connection."""

    def __init__(self, url):
        parts = urllib.parse.urlsplit(url)
        kind = http.client.HTTPSConnection if parts.scheme == "https" else http.client.HTTPConnection
        self.connection = kind(parts.netloc, timeout=60)
        self.top = parts.path.rstrip("/") + "/"

    def get(self, path, start=None, end=None):
        """The bytes of a file, or those from `start` up to `end`."""
        headers = {} if start is None else {"Range": f"bytes={start}-{end - 1}"}
        self.connection.request("GET", self.top + path, headers=headers)
        answer = self.connection.getresponse()
        content = answer.read()
        if answer.status == 200:  # also from a server without ranges
            return content[start:end]
        if answer.status == 206 and len(content) == end - start:
            return content
        raise OSError(f"cannot read '{path}': {answer.status} {answer.reason}")


def find_newer(site, guid, version):
    """The record of the newest version of an add-on; None if that is installed. Two requests."""
    root = json.loads(site.get("root.json"))
    key = guid.lower()
    shard_hash = root["shards"].get(hashlib.sha256(key.encode()).hexdigest()[:2])
    if shard_hash is None:
        return None
    shard = site.get(f"shards/{shard_hash}.json")
    if hashlib.sha256(shard).hexdigest() != shard_hash:
        raise OSError("the shard is not what its name says")
    for record in json.loads(shard)["addons"].get(key, []):  # the newest first
        if record["version"] == version:
            return None
        if not record["yanked"]:
            return record
    return None


def entries_of(package):
    """Of each entry of a package what shows that it is the same as another one, and where it is;
    and where the directory is."""
    with zipfile.ZipFile(io.BytesIO(package)) as container:
        entries = sorted(container.infolist(), key=lambda entry: entry.header_offset)
        ends = [entry.header_offset for entry in entries[1:]] + [container.start_dir]
        return [((entry.filename, entry.CRC, entry.compress_size, entry.file_size,
                  entry.compress_type, entry.flag_bits, entry.date_time, end - entry.header_offset),
                 entry.header_offset, end) for entry, end in zip(entries, ends)], container.start_dir


def fetch_directory(site, record):
    """The package with nothing but its directory, and zeros in front of it."""
    size, tail = record["size"], TAIL
    while True:
        start = max(0, size - tail)
        package = bytearray(start) + site.get(record["package"], start, size)
        try:
            if start == 0 or entries_of(package)[1] >= start:
                return package
        except zipfile.BadZipFile:
            pass  # The directory begins before what was fetched.
        tail *= 8


def fetch_package(site, record, old):
    """The package of a record, made of an older one and of what differs."""
    package = fetch_directory(site, record)
    known = {identity: (start, end) for identity, start, end in entries_of(old)[0]}
    missing = []
    for identity, start, end in entries_of(package)[0]:
        if identity in known:
            package[start:end] = old[slice(*known[identity])]
        elif missing and missing[-1][1] == start:
            missing[-1][1] = end
        else:
            missing.append([start, end])
    for start, end in missing:
        package[start:end] = site.get(record["package"], start, end)
    if hashlib.sha256(package).hexdigest() != record["sha256"]:
        package = site.get(record["package"])
    if hashlib.sha256(package).hexdigest() != record["sha256"]:
        raise OSError("the package is not what its record says")
    return bytes(package)


def main():
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    url, path, guid, version = sys.argv[1:]
    site = Site(url)
    record = find_newer(site, guid, version)
    if record is None:
        print("nothing newer")
        return
    with open(path, "rb") as file:
        old = file.read()
    with open(path + ".new", "wb") as file:
        file.write(fetch_package(site, record, old))
    os.replace(path + ".new", path)
    print(f"updated to {record['version']}")


if __name__ == "__main__":
    main()
