# SPDX-License-Identifier: MIT
"""The file tree of a package, as files and folders."""
from __future__ import annotations

import collections.abc
import datetime
import io
import os
from typing import TYPE_CHECKING, Any

from . import _native

if TYPE_CHECKING:
    from importlib.abc import Traversable
else:
    from importlib.resources.abc import Traversable


def text_path(path: str) -> str:
    """A path in a package, checked."""
    if not isinstance(path, str):
        raise TypeError(f"a path in a package is a str, not {type(path).__name__}")
    if not path.isascii():
        path.encode()  # a lone surrogate is a UnicodeEncodeError, which is a ValueError
    return path


class _RawFile(io.RawIOBase):
    """A file of a package, read from front to back; going back begins anew."""

    def __init__(self, package: _native.Package, path: str, size: int) -> None:
        self._package = package
        self._path = path
        self._size = size
        self._position = 0  # where the reader is
        self._reached = 0  # where the stream is
        self._stream = package.open(path)

    def readable(self) -> bool:
        return True

    def seekable(self) -> bool:
        return True

    def tell(self) -> int:
        self._require_open()
        return self._position

    def seek(self, offset: int, whence: int = io.SEEK_SET) -> int:
        self._require_open()
        base = {io.SEEK_SET: 0, io.SEEK_CUR: self._position, io.SEEK_END: self._size}
        if whence not in base:
            raise ValueError(f"invalid whence ({whence}, should be 0, 1 or 2)")
        if base[whence] + offset < 0:
            raise ValueError("negative seek position")
        self._position = base[whence] + offset
        return self._position

    def readinto(self, buffer: Any) -> int:
        self._require_open()
        if self._position >= self._size:
            return 0
        if self._position < self._reached:
            self._stream = self._package.open(self._path)
            self._reached = 0
        while self._reached < self._position:
            skipped = bytearray(min(self._position - self._reached, 1 << 18))
            count = self._stream.readinto(skipped)
            if count == 0:
                return 0
            self._reached += count
        view = memoryview(buffer).cast("B")
        count = self._stream.readinto(view)
        self._reached += count
        self._position = self._reached
        return count

    def _require_open(self) -> None:
        if self.closed:
            raise ValueError("I/O operation on closed file")


class PackagePath(Traversable):
    """A file or folder of a package. It may name something that is not there."""

    def __init__(self, package: _native.Package, path: str) -> None:
        self._package = package
        self._path = path

    def __repr__(self) -> str:
        return f"<PackagePath {self._path!r}>"

    def __str__(self) -> str:
        return self._path

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, PackagePath):
            return NotImplemented
        return self._package is other._package and self._path == other._path

    def __hash__(self) -> int:
        return hash((id(self._package), self._path))

    def __reduce__(self) -> Any:
        if not self._package.read_only:
            raise TypeError("cannot pickle a path in a package that is open for changing")
        return _reopen, (os.path.abspath(self._package.path), self._path)

    @property
    def name(self) -> str:
        """The last component; empty for the root."""
        return self._path.rpartition("/")[2]

    @property
    def size(self) -> int:
        """In bytes; 0 for a folder."""
        return self._status()[1]

    @property
    def modified(self) -> datetime.datetime | None:
        """When the file was changed, in UTC; None for a folder."""
        is_file, _, seconds, _, _ = self._status()
        if not is_file:
            return None
        epoch = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)
        return epoch + datetime.timedelta(seconds=seconds)

    @property
    def executable(self) -> bool:
        return self._status()[3]

    @property
    def crc(self) -> int:
        """The CRC-32 that the package declares; 0 for a folder, and for what is not written yet."""
        return self._status()[4]

    def is_file(self) -> bool:
        status = self._package.status(self._path)
        return status is not None and status[0]

    def is_dir(self) -> bool:
        status = self._package.status(self._path)
        return status is not None and not status[0]

    def iterdir(self) -> collections.abc.Iterator[PackagePath]:
        names = self._package.children(self._path)
        for name in names.split("\0") if names else ():
            yield PackagePath(self._package, self._below(name.rstrip("/")))

    def joinpath(self, *descendants: str) -> PackagePath:
        path = self
        for one in descendants:
            # As pathlib does: what begins with a slash is below the root.
            name = text_path(one).strip("/")
            path = PackagePath(self._package, path._below(name) if name else path._path)
        return path

    def __truediv__(self, child: str) -> PackagePath:
        return self.joinpath(child)

    def open(self, mode: str = "r", buffering: int = -1, encoding: str | None = None,
             errors: str | None = None, newline: str | None = None) -> Any:
        """Opens the file for reading, "r" as text (UTF-8 unless `encoding` says otherwise) or "rb"
        as bytes. The stream ends with the package."""
        if mode not in ("r", "rb", "rt"):
            raise ValueError(f"invalid mode: {mode!r}")
        raw = _RawFile(self._package, self._path, self._status()[1])
        reader = io.BufferedReader(raw, buffering if buffering > 1 else 1 << 16)
        if mode == "rb":
            return reader
        return io.TextIOWrapper(reader, encoding or "utf-8", errors, newline)

    def read_bytes(self) -> bytes:
        return self._package.read(self._path)

    def read_text(self, encoding: str | None = None) -> str:
        return self.read_bytes().decode(encoding or "utf-8")

    def _below(self, name: str) -> str:
        return f"{self._path}/{name}" if self._path else name

    def _status(self) -> tuple[bool, int, int, bool, int]:
        return self._package.require(self._path)


def _reopen(package: bytes, path: str) -> PackagePath:
    return PackagePath(_native.Package(package, "r", None, 6), path)
