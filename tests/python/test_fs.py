# SPDX-License-Identifier: MIT
"""Packages as file systems of fsspec."""
import fsspec
import pytest
from conftest import FILES

import kraddon
import kraddon.fs


def test_the_file_system_lists_and_reads(package):
    files = kraddon.fs.PackageFileSystem(package)
    assert sorted(files.find("")) == sorted(FILES)
    assert files.ls("lib", detail=False) == ["lib/b.m", "lib/deep"]
    assert files.info("a.m")["size"] == 8 and files.info("lib")["type"] == "directory"
    assert files.isdir("data/empty") and files.isfile("a.m") and not files.exists("none")
    assert files.glob("**/*.csv") == ["lib/deep/größe.csv"]
    for name, content in FILES.items():
        assert files.cat(name) == content
        with files.open(name) as stream:
            assert stream.read() == content
    assert files.cat_file("a.m", 2, 4) == b"sp"
    with pytest.raises(ValueError):
        files.open("a.m", "wb")
    with pytest.raises(FileNotFoundError):
        files.open("none")
    files.close()
    with pytest.raises(ValueError):
        files.ls("")


def test_the_protocol_is_registered(package):
    files = fsspec.filesystem("kraddon", path=package)
    assert files.cat("a.m") == FILES["a.m"]
    with fsspec.open("kraddon://lib/b.m", path=package) as stream:
        assert stream.read() == FILES["lib/b.m"]
    with pytest.raises(kraddon.Error):
        fsspec.filesystem("kraddon", path=str(package) + "x")
