# SPDX-License-Identifier: MIT
"""The commands that make, check and compare packages, as functions."""
from __future__ import annotations

import dataclasses
import json
import os
import tempfile
from typing import Any

from . import _conversion, _native
from ._errors import Error, make
from ._package import disk_path, timestamp_of, whole_number
from ._records import Properties
from ._types import Paths, Progress, StrPath, Texts

_LONGEST_WAIT = 1_000_000
_LARGEST_CERTIFICATES = 16 << 20


@dataclasses.dataclass(frozen=True)
class Finding:
    """Something that `verify` found. See docs/findings.md for the ids."""

    id: str
    severity: str
    part: str | None
    line: int | None
    message: str
    hint: str | None
    rule: str | None = None
    group: str | None = None
    file: str | None = None
    column: int | None = None


@dataclasses.dataclass(frozen=True)
class BuildEntry:
    """A file of a package, or an empty folder, which has no size."""

    path: str
    size: int | None


@dataclasses.dataclass(frozen=True)
class BuildResult:
    """What `build` and `create` have made."""

    file: str
    written: bool
    size: int | None
    files: int
    folders: int
    bytes: int
    digest: str
    entries: list[BuildEntry]
    findings: list[Finding] | None
    error: dict[str, Any] | None = None


@dataclasses.dataclass(frozen=True)
class Difference:
    """What differs between two packages; the dicts are those of `kraddon diff --json`."""

    same: bool
    properties: list[dict[str, Any]]
    documents: list[dict[str, Any]]
    files: list[dict[str, Any]]


def _texts(name: str, values: Texts) -> list[str]:
    if isinstance(values, (str, bytes)):
        raise TypeError(f"{name}: expected a list of str, not {type(values).__name__}")
    texts = list(values)
    for text in texts:
        if not isinstance(text, str):
            raise TypeError(f"{name}: expected a list of str, not of {type(text).__name__}")
        text.encode()
    return texts


def _text(name: str, value: str) -> str:
    if not isinstance(value, str):
        raise TypeError(f"{name}: expected str, not {type(value).__name__}")
    return value


def _paths(name: str, values: Paths) -> list[StrPath]:
    if isinstance(values, (str, bytes, os.PathLike)):
        raise TypeError(f"{name}: expected a list of paths, not {type(values).__name__}")
    return list(values)


def _certificates(path: StrPath) -> tuple[bytes, bytes]:
    name = disk_path(path)
    try:
        with open(name, "rb") as file:
            return name, file.read(_LARGEST_CERTIFICATES)
    except OSError as error:
        raise _refusal("cannot read", path, error) from error


def _refusal(what: str, path: StrPath, error: OSError) -> Error:
    return make("", f"{what} '{os.fsdecode(path)}': {error.strerror}", error.errno or 0,
                disk_path(path), None)


def _finding(values: dict[str, Any]) -> Finding:
    names = {field.name for field in dataclasses.fields(Finding)}
    return Finding(**{name: value for name, value in values.items() if name in names})


def _build_result(text: str) -> BuildResult:
    values = json.loads(text)
    del values["schema"]
    values["entries"] = [BuildEntry(**entry) for entry in values["entries"]]
    if values["findings"] is not None:
        values["findings"] = [_finding(one) for one in values["findings"]]
    return BuildResult(**values)


def _optional(path: StrPath | None) -> bytes | None:
    return None if path is None else disk_path(path)


def create(package: StrPath, folder: StrPath | None = None, *, name: str, version: str = "1.0",
           summary: str = "", description: str = "", author: str = "", contact: str = "",
           organization: str = "", guid: str | None = None, exclude: Texts = (),
           default_excludes: bool = False, follow: bool = False, force: bool = False,
           timestamp: int | None = None, level: int = 6, lock_timeout: int = 60,
           progress: Progress | None = None) -> BuildResult:
    """Creates a package with everything below a folder, as `kraddon create` does."""
    if not _text("name", name):
        raise ValueError("name: an add-on needs a name")
    seconds = timestamp_of(timestamp)
    if guid is None:
        guid = _native.guid_of_name(name) if seconds is not None else _native.random_guid()
    properties = Properties(name=name, version=version, summary=summary, description=description,
                            author_name=author, author_contact=contact,
                            author_organization=organization, guid=guid)
    return _build_result(_native.create(
        disk_path(package), b"" if folder is None else _folder(folder),
        _conversion.from_python("properties", properties), _texts("exclude", exclude),
        default_excludes, follow, force, seconds, whole_number("level", level, 9),
        whole_number("lock_timeout", lock_timeout, _LONGEST_WAIT), progress))


def _folder(folder: StrPath) -> bytes:
    path = disk_path(folder)
    if not path:
        raise ValueError("folder: the path is empty")
    return path


def build(folder: StrPath = ".", *, output: StrPath | None = None, exclude: Texts = (),
          follow: bool = False, force: bool = False, dry_run: bool = False, strict: bool = False,
          no_verify: bool = False, ignore: Texts = (), error: Texts = (),
          warn: Texts = (), timestamp: int | None = None, level: int | None = None,
          lock_timeout: int = 60, progress: Progress | None = None) -> BuildResult:
    """Builds the package of a project from its kraddon.toml, as `kraddon build` does."""
    if strict and no_verify:
        raise ValueError("strict and no_verify exclude each other")
    return _build_result(_native.build(
        disk_path(folder), _optional(output), _texts("exclude", exclude), follow, force, dry_run,
        strict, not no_verify, _texts("ignore", ignore), _texts("error", error),
        _texts("warn", warn),
        timestamp_of(timestamp), None if level is None else whole_number("level", level, 9),
        whole_number("lock_timeout", lock_timeout, _LONGEST_WAIT), progress))


def verify(package: StrPath, *, ignore: Texts = (), error: Texts = (),
           warn: Texts = (), manifest: StrPath | None = None,
           policy: StrPath | None = None, opc: bool = False, strict: bool = False,
           trust: Paths = (), require_signature: bool = False,
           progress: Progress | None = None) -> list[Finding]:
    """Checks every byte of a package, as `kraddon verify` does, and returns what is wrong. With
    `strict`, warnings are errors. With `trust`, files of certificates, the chain of every signer has
    to reach one of these."""
    found = json.loads(_native.verify(
        disk_path(package), _texts("ignore", ignore), _texts("error", error),
        _texts("warn", warn), _optional(manifest), _optional(policy), opc, strict,
        [_certificates(one) for one in _paths("trust", trust)], require_signature, progress))
    return [_finding(one) for one in found]


def diff(a: StrPath, b: StrPath, *paths: str, glob: bool = False) -> Difference:
    """Compares two packages, or projects, by their content. With paths, only those files are
    compared."""
    with tempfile.TemporaryDirectory(prefix="kraddon-") as scratch:
        found = json.loads(_native.diff(disk_path(a), disk_path(b), _texts("paths", paths), glob,
                                        os.fsencode(scratch)))
    return Difference(found["same"], found["properties"], found["documents"], found["files"])


def preview(package: StrPath, *, output: StrPath | None = None) -> str:
    """The page that presents the add-on, which is also written to `output`."""
    path = disk_path(package)
    stem = os.path.splitext(os.path.basename(path))[0]
    page = _native.preview(path, os.fsdecode(stem).encode(errors="replace").decode())
    text = page.decode()
    if output is not None:
        _replace_file(output, page, path)
    return text


def _replace_file(output: StrPath, content: bytes, package: bytes) -> None:
    """Writes the file in one step, or raises an Error."""
    path = os.path.realpath(disk_path(output))
    folder, name = os.path.split(path)
    part = None
    try:
        if os.path.exists(path) and os.path.samefile(path, package):
            raise Error(f"cannot write '{os.fsdecode(output)}': it is the package itself",
                        path=os.fsdecode(output))
        place = os.path.join(folder, b".%s.%s.tmp" % (name[:200], os.urandom(6).hex().encode()))
        with open(place, "xb") as file:
            part = place
            file.write(content)
        os.replace(part, path)
    except BaseException as error:
        if part is not None and os.path.exists(part):
            os.unlink(part)
        if not isinstance(error, OSError) or isinstance(error, Error):
            raise
        raise _refusal("cannot write", output, error) from error
