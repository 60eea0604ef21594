# SPDX-License-Identifier: MIT
"""Packages that are open."""
from __future__ import annotations

import collections.abc
import json
import os
import types
import typing
from typing import Any, Literal, Self, TypeVar, overload

from . import _conversion, _native
from ._records import (App, Configuration, ExampleCategory, License, Properties, Requirements,
                       Revision)
from ._tree import PackagePath, text_path
from ._types import Progress, StrPath

_Read = TypeVar("_Read")
_Written = TypeVar("_Written")

_LAST_SECOND = 253402300799  # of the year 9999


def disk_path(path: StrPath) -> bytes:
    """The system's bytes for a path."""
    found = os.fsencode(path)
    if b"\0" in found:
        raise ValueError("embedded null byte")
    return found


def timestamp_of(timestamp: int | None) -> int | None:
    """`timestamp` or, without it, SOURCE_DATE_EPOCH."""
    if timestamp is None:
        given = os.environ.get("SOURCE_DATE_EPOCH")
        if not given:
            return None
        if not (given.isascii() and given.isdigit()):
            raise ValueError(f"bad value of SOURCE_DATE_EPOCH '{given}': expected a whole number")
        timestamp = int(given)
    return whole_number("timestamp", timestamp, _LAST_SECOND)


def whole_number(name: str, value: int, most: int) -> int:
    if not isinstance(value, int) or isinstance(value, bool):
        raise TypeError(f"{name}: expected int, not {type(value).__name__}")
    if not 0 <= value <= most:
        raise ValueError(f"{name}: expected a whole number from 0 to {most}, got {value}")
    return value


class _Document(typing.Generic[_Read, _Written]):
    """A document of a package, as an attribute. None or `del` removes it."""

    def __init__(self, text: str) -> None:
        self.__doc__ = text

    def __set_name__(self, owner: type[Package], name: str) -> None:
        self._name = name

    @overload
    def __get__(self, package: None, owner: type[Package]) -> Self: ...

    @overload
    def __get__(self, package: Package, owner: type[Package]) -> _Read: ...

    def __get__(self, package: Package | None, owner: type[Package]) -> Any:
        if package is None:
            return self
        return _conversion.to_python(self._name, package._native.document(self._name))

    def __set__(self, package: Package, value: _Written) -> None:
        package._native.set_document(self._name, _conversion.from_python(self._name, value))

    def __delete__(self, package: Package) -> None:
        package._native.set_document(self._name, _conversion.from_python(self._name, None))


class Package:
    """An open package, as returned by kraddon.open().

    As a context manager, a clean exit commits what was changed, an exception discards it.
    """

    def __init__(self, path: StrPath, mode: Literal["r", "a", "x", "w"] = "r", *,
                 timestamp: int | None = None, level: int = 6) -> None:
        if mode not in ("r", "a", "x", "w"):
            raise ValueError(f"invalid mode: {mode!r}")
        self._path = os.fsdecode(path)
        self._mode = mode
        self._native = _native.Package(disk_path(path), mode, timestamp_of(timestamp),
                                       whole_number("level", level, 9))

    def __repr__(self) -> str:
        state = " closed" if self.closed else ""
        return f"<kraddon.Package {self._path!r} mode={self._mode!r}{state}>"

    def __reduce__(self) -> str:
        raise TypeError("cannot pickle a package")

    def __enter__(self) -> Self:
        if self.closed:
            raise ValueError("I/O operation on closed package")
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: types.TracebackType | None) -> None:
        if kind is None:
            self.close()
        else:
            self.discard()

    def close(self) -> None:
        """Commits the changes and closes the package. If the commit fails, the package is closed
        too, and the file is unchanged."""
        self._native.close()

    def discard(self) -> None:
        """Drops the changes and closes the package."""
        self._native.discard()

    @property
    def closed(self) -> bool:
        """Whether the package is closed."""
        return self._native.closed

    # The documents.

    properties = _Document[Properties, Properties](
        "What the add-on is. `type` and `korvan_release` never change.")
    license = _Document[License | None, License | None](
        "The license, or None. Assign a License to store it.")
    configuration = _Document[Configuration | None, Configuration | None](
        "The search paths, or None.")
    apps = _Document[list[App], typing.Iterable[App] | None]("The apps; [] if there are none.")
    examples = _Document[list[ExampleCategory], typing.Iterable[ExampleCategory] | None](
        "The example categories; [] if there are none.")
    revisions = _Document[list[Revision], typing.Iterable[Revision] | None](
        "The revisions; [] if there are none.")
    requirements = _Document[Requirements | None, Requirements | None](
        "The requirements, or None.")

    @property
    def screenshot(self) -> bytes | None:
        """The bytes of the image. set_screenshot() stores one, `del` removes it."""
        return self._native.screenshot()

    @screenshot.setter
    def screenshot(self, value: bytes | None) -> None:
        if value is not None:
            raise TypeError("set_screenshot() stores an image file")
        self._native.remove_screenshot()

    @screenshot.deleter
    def screenshot(self) -> None:
        self._native.remove_screenshot()

    def set_screenshot(self, path: StrPath) -> None:
        """Stores an image file as the screenshot. Its extension must match its format."""
        self._native.set_screenshot(disk_path(path))

    # The file tree.

    @property
    def files(self) -> PackagePath:
        """The root folder."""
        return PackagePath(self._native, "")

    def namelist(self) -> list[str]:
        """The paths of all files and of the empty folders, which end with a slash."""
        return self._native.names()

    def __iter__(self) -> collections.abc.Iterator[str]:
        return iter(self.namelist())

    def __len__(self) -> int:
        return self._native.count()

    def __bool__(self) -> bool:
        return True

    def __contains__(self, path: object) -> bool:
        """Whether the tree has a file or folder at the path."""
        if not isinstance(path, str):
            return False
        try:
            text_path(path)
        except ValueError:
            return False
        status = self._native.status(path.rstrip("/"))
        return status is not None and not (status[0] and path.endswith("/"))

    def read(self, path: str) -> bytes:
        """The content of a file."""
        return self._native.read(text_path(path))

    def readinto(self, path: str, buffer: Any) -> int:
        """Reads a file into a buffer, and returns how many bytes it has. Raises ValueError for a
        buffer that is too small."""
        return self._native.readinto(text_path(path), buffer)

    def add(self, source: StrPath, path: str, replace: bool = False) -> None:
        """Adds a file on disk, which is read when the package is closed."""
        self._native.add(disk_path(source), text_path(path), replace)

    def add_bytes(self, data: bytes | bytearray | memoryview, path: str,
                  replace: bool = False) -> None:
        """Adds a file with these bytes."""
        if not isinstance(data, (bytes, bytearray, memoryview)):
            raise TypeError(f"data: expected bytes, not {type(data).__name__}")
        self._native.add_bytes(bytes(data), text_path(path), replace)

    def add_folder(self, source: StrPath, into: str = "") -> None:
        """Adds all files and empty folders below a folder on disk, without those that its
        .kraddonignore names."""
        self._native.add_folder(disk_path(source), text_path(into).strip("/"))

    def mkdir(self, path: str) -> None:
        """Makes a folder, and those above it. One that already exists is not an error."""
        self._native.mkdir(text_path(path).strip("/"))

    def remove(self, path: str) -> None:
        """Removes a file, or a folder with everything below it."""
        self._native.remove(text_path(path).rstrip("/"))

    def move(self, old: str, new: str) -> None:
        """Gives a file or folder another path, also in the documents that name it."""
        self._native.move(text_path(old).rstrip("/"), text_path(new).rstrip("/"))

    def extract_all(self, destination: StrPath, overwrite: bool = False, *,
                    progress: Progress | None = None) -> None:
        """Writes the file tree below a folder on disk, which is made if it is missing."""
        self._native.extract("", disk_path(destination), overwrite, progress)

    def extract(self, path: str, destination: StrPath, overwrite: bool = False, *,
                progress: Progress | None = None) -> None:
        """Writes a file, or a folder with everything below it, under its full path below a folder
        on disk."""
        self._native.extract(text_path(path).rstrip("/"), disk_path(destination), overwrite,
                             progress)

    # The whole.

    def digest(self) -> str:
        """The digest of the content: the same however and whenever it was packed."""
        return self._native.digest()

    def info(self, *, digest: bool = False) -> dict[str, Any]:
        """What `kraddon info --json` prints."""
        found = json.loads(self._native.info(digest))
        assert isinstance(found, dict)
        return found


def open(path: StrPath, mode: Literal["r", "a", "x", "w"] = "r", *, timestamp: int | None = None,
         level: int = 6) -> Package:
    """Opens a package: "r" to read it, "a" to change it, "x" to create a new file, "w" to create
    one or replace an existing one.

    `timestamp`, in seconds since 1970, is used for everything that is written; the default is
    `SOURCE_DATE_EPOCH`, if set. `level` is the compression level, 0 to 9.
    """
    return Package(path, mode, timestamp=timestamp, level=level)
