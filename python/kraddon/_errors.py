# SPDX-License-Identifier: MIT
"""What the module raises."""
from __future__ import annotations

import errno as _errno
import os
from typing import Any


class Error(OSError):
    """Something failed. The text is the sentence that the command prints.

    `path` is the file on disk that the call was about, `part` the path or document in the
    package; either may be None.
    """

    path: str | None
    part: str | None

    def __init__(self, message: str, *, errno: int | None = None, path: str | None = None,
                 part: str | None = None) -> None:
        super().__init__(message)
        if errno is not None:
            self.errno = errno
        self.path = path
        self.part = part

    def __str__(self) -> str:
        return str(self.args[0])

    def __reduce__(self) -> tuple[Any, ...]:
        return (_restore, (type(self), self.args[0], self.errno, self.path, self.part))


class InvalidPackage(Error):
    """The package is malformed or damaged."""


class _NotFound(Error, FileNotFoundError):
    pass


class _AlreadyExists(Error, FileExistsError):
    pass


class _NotPermitted(Error, PermissionError):
    pass


class _IsFolder(Error, IsADirectoryError):
    pass


class _NotFolder(Error, NotADirectoryError):
    pass


class _BadValue(Error, ValueError):
    pass


_CLASSES: dict[int, type[Error]] = {
    _errno.ENOENT: _NotFound,
    _errno.EEXIST: _AlreadyExists,
    _errno.EACCES: _NotPermitted,
    _errno.EPERM: _NotPermitted,
    _errno.EISDIR: _IsFolder,
    _errno.ENOTDIR: _NotFolder,
}
_KINDS: dict[str, type[Error]] = {"malformed": InvalidPackage, "value": _BadValue}


def _restore(kind: type[Error], message: str, errno: int | None, path: str | None,
             part: str | None) -> Error:
    return kind(message, errno=errno, path=path, part=part)


def make(kind: str, message: str, number: int, path: bytes, part: str | None) -> Error:
    """The error of a failure that the native module reports; `number` is an errno value or 0."""
    error = _KINDS[kind] if kind else _CLASSES.get(number, Error)
    return error(message, errno=number or None, path=os.fsdecode(path) if path else None,
                 part=part)
