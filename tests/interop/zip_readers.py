# SPDX-License-Identifier: MIT
"""The names and bytes that other programs find in a container, in its order."""

import re
import zipfile

from docx.opc.packuri import PackURI
from docx.opc.phys_pkg import PhysPkgReader

# Type, date and time, size, name.
GSF_FILE = re.compile(rb"^f +(?:\S+ \S+ +)?\d+ (.*)$", re.MULTILINE)


def of_zipfile(_case, package):
    with zipfile.ZipFile(package) as container:
        names = container.namelist()
        return names, b"".join(container.read(name) for name in names)


def of_unzip(case, package):
    case.succeeds("unzip", "-tqq", package)
    listed = case.succeeds("unzip", "-Z1", package).stdout
    return listed.decode("ascii").splitlines(), case.succeeds("unzip", "-p", package).stdout


def of_bsdtar(case, package):
    listed = case.succeeds("bsdtar", "-t", "-f", package).stdout
    content = case.succeeds("bsdtar", "-x", "-O", "-f", package).stdout
    return listed.decode("ascii").splitlines(), content


def of_7z(case, package):
    tested = case.succeeds("7z", "t", package)
    case.assertNotIn(b"WARNING", tested.stdout.upper() + tested.stderr.upper())
    listed = case.succeeds("7z", "l", "-ba", "-slt", package).stdout.decode("ascii")
    names = [line[len("Path = "):] for line in listed.splitlines() if line.startswith("Path = ")]
    return names, case.succeeds("7z", "x", "-so", package).stdout


def of_gsf(case, package):
    listed = case.succeeds("gsf", "list", package).stdout
    found = sorted(name.decode("ascii") for name in GSF_FILE.findall(listed))
    names, _ = of_zipfile(case, package)
    case.assertEqual(found, sorted(names))
    return names, case.succeeds("gsf", "cat", package, *names).stdout


def of_docx(case, package):
    names, _ = of_zipfile(case, package)
    container = PhysPkgReader(package)
    return names, b"".join(container.blob_for(PackURI("/" + name)) for name in names)


READERS = {"zipfile": of_zipfile, "unzip": of_unzip, "bsdtar": of_bsdtar, "7z": of_7z,
           "gsf": of_gsf, "docx": of_docx}
