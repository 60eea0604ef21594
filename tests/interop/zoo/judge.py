# SPDX-License-Identifier: MIT
"""Whether all readers see in a package what kraddon sees."""

import contextlib
import dataclasses
import json
import os
import re
import shutil
import subprocess
import tempfile

import readers_of_zip

KRADDON = os.environ.get("KRADDON") or os.path.join(
    os.path.dirname(os.path.abspath(__file__)), "..", "..", "..", "build", "release", "bin",
    "kraddon")
# Items that every package has, and that are not parts.
OWN_ITEMS = re.compile(rb"(\[content_types\]\.xml|(.*/)?_rels/[^/]*\.rels)", re.IGNORECASE)


def verified(packages, cwd=None):
    """Those of the packages in which verify finds no error, with the ids that it found in each."""
    outcome = subprocess.run([KRADDON, "verify", "--json", *packages], cwd=cwd,
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, check=False)
    if outcome.returncode not in (0, 1):
        raise RuntimeError("verify ends with %d: %s" % (outcome.returncode, outcome.stderr[-500:]))
    passed, reports = {}, json.loads(outcome.stdout)["packages"]
    assert [report["file"] for report in reports] == list(packages)
    for report in reports:
        if report["ok"]:
            passed[report["file"]] = {finding["id"] for finding in report["findings"]
                                      if finding["group"] in ("container", "opc", "reference")}
    return passed


def parts_of(package, cwd=None):
    """SHA-256 by the names of the items that kraddon takes for parts; None if it fails."""
    outcome = subprocess.run([KRADDON, "list", "--all", "--hash", "--json", package], cwd=cwd,
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                             stderr=subprocess.PIPE, check=False)
    if outcome.returncode != 0:
        return None
    return {entry["path"][1:].encode(): entry["sha256"]
            for entry in json.loads(outcome.stdout)["entries"] if entry["kind"] == "file"}


def normalised(name):
    """The folders and the file that some reader could make of a name."""
    name = re.sub(rb"^[a-z]:", b"", name.replace(b"\\", b"/").lower())
    return [piece for piece in (segment.rstrip(b". ") for segment in name.split(b"/")) if piece]


def complaints_about(parts, reading):
    """What is wrong with one reader's view of a package."""
    for name, why in reading.odd:
        yield "%r: %s" % (name, why)
    left = dict(parts)
    for name, digest in reading.files.items():
        expected = left.pop(name, None)
        if expected is None:
            if normalised(name)[:1] == [b"files"] and not OWN_ITEMS.fullmatch(name):
                yield "%r: a file that kraddon does not have" % name
        elif expected != digest:
            yield "%r: other bytes" % name
    for name in left:
        yield "%r: missing" % name


def complaints(parts, readings):
    """The disagreements about a package, as texts; none if all readers that accept it agree.
    `parts` is what kraddon finds in it, `readings` what the readers find, by reader."""
    if parts is None:
        return ["kraddon: list fails, though verify finds no error"]
    found, views = [], {}
    for reader, reading in readings.items():
        if reading.refusal is not None:
            continue
        found += ["%s: %s" % (reader, text) for text in complaints_about(parts, reading)]
        views.setdefault(frozenset(reading.files.items()), []).append(reader)
    if len(views) > 1 and not found:
        names = {name for name, _ in frozenset.union(*views) - frozenset.intersection(*views)}
        found.append("%s differ about %s" % (
            " and ".join("/".join(group) for group in views.values()), sorted(names)[:5]))
    return found


@dataclasses.dataclass
class Verdict:
    """Packages are known by the names that the caller gives them."""
    count: int
    passed: dict  # the ids that verify finds in a package without an error
    disagreements: dict  # texts
    refusals: list  # pairs of a package that passed and a reader


@contextlib.contextmanager
def scratch_folder():
    """A folder in memory, if there is such a file system."""
    parent = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    folder = tempfile.mkdtemp(prefix="kraddon-zoo-", dir=parent)
    try:
        yield folder
    finally:
        shutil.rmtree(folder, ignore_errors=True)


def written(folder, packages):
    """Writes packages, given as pairs of a name and bytes; returns the names by file."""
    names = {}
    for number, (name, package) in enumerate(packages):
        file = "%d.kraddon" % number
        names[file] = name
        with open(os.path.join(folder, file), "wb") as stream:
            stream.write(package)
    return names


def passing(packages):
    """The names of the packages in which verify finds no error."""
    with scratch_folder() as folder:
        names = written(folder, packages)
        return [names[file] for file in verified(list(names), folder)]


def judge(packages, readers):
    """Verifies packages, given as pairs of a name and bytes, and has the readers read those without
    an error."""
    with scratch_folder() as folder:
        names = written(folder, packages)
        passed = verified(list(names), folder)
        readings = {reader: readers_of_zip.read(command, passed, folder)
                    for reader, command in readers.items()}
        verdict = Verdict(len(names), {names[file]: ids for file, ids in passed.items()}, {}, [])
        for file in passed:
            of_package = {reader: found[file] for reader, found in readings.items()}
            texts = complaints(parts_of(file, folder), of_package)
            if texts:
                verdict.disagreements[names[file]] = texts
            verdict.refusals += [(names[file], reader) for reader, reading in of_package.items()
                                 if reading.refusal is not None]
        return verdict
