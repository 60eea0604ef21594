# SPDX-License-Identifier: MIT
"""Packages as file systems of fsspec, under the protocol "kraddon". Read only."""
from __future__ import annotations

from typing import Any

import fsspec
from fsspec.spec import AbstractFileSystem

from ._package import Package


class PackageFileSystem(AbstractFileSystem):
    """The file tree of a package.

    `path` is the package's; fsspec's own functions name it as `fo`, as in
    fsspec.filesystem("kraddon", fo="wave.kraddon").
    """

    protocol = "kraddon"
    root_marker = ""
    cachable = False

    def __init__(self, path: Any = None, *, fo: Any = None, **options: Any) -> None:
        super().__init__(**options)
        self._package = Package(path if fo is None else fo)

    @classmethod
    def _strip_protocol(cls, path: Any) -> Any:
        if isinstance(path, list):
            return [cls._strip_protocol(one) for one in path]
        return super()._strip_protocol(path).strip("/")

    def close(self) -> None:
        """Closes the package."""
        self._package.discard()

    def info(self, path: str, **options: Any) -> dict[str, Any]:
        name = self._strip_protocol(path)
        entry = self._package.files.joinpath(name)
        if entry.is_dir():
            return {"name": name, "size": 0, "type": "directory"}
        return {"name": name, "size": entry.size, "type": "file", "mtime": entry.modified,
                "executable": entry.executable, "crc": entry.crc}

    def ls(self, path: str, detail: bool = True, **options: Any) -> list[Any]:
        name = self._strip_protocol(path)
        entry = self._package.files.joinpath(name)
        entries = list(entry.iterdir()) if entry.is_dir() else [entry]
        found = [self.info(str(one)) for one in entries]
        return found if detail else [one["name"] for one in found]

    def modified(self, path: str) -> Any:
        return self.info(path)["mtime"]

    def cat_file(self, path: str, start: int | None = None, end: int | None = None,
                 **options: Any) -> bytes:
        return self._package.read(self._strip_protocol(path))[start:end]

    def _open(self, path: str, mode: str = "rb", **options: Any) -> Any:
        if mode != "rb":
            raise ValueError("packages are open for reading only")
        return self._package.files.joinpath(self._strip_protocol(path)).open("rb")


fsspec.register_implementation("kraddon", PackageFileSystem, clobber=True)
