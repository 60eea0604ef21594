# SPDX-License-Identifier: MIT
"""Opening, listing and reading."""
import datetime
import io
import os
import zipfile
from importlib.resources.abc import Traversable

import pytest
from conftest import FILES, command, make

import kraddon

ALL = ["a.m", "data/empty/", "lib/b.m", "lib/deep/größe.csv"]


def test_names_are_those_of_the_list_command(package):
    with kraddon.open(package) as opened:
        assert opened.namelist() == ALL == list(opened)
        assert len(opened) == 4
    listed = command("list", package).stdout.splitlines()
    assert [name.rstrip("/") for name in ALL] == [name.rstrip("/") for name in listed]


def test_contains_files_and_folders(package):
    with kraddon.open(package) as opened:
        for path in ("a.m", "lib", "lib/", "data/empty/", "lib/deep/größe.csv"):
            assert path in opened
        for path in ("b.m", "a.m/", "lib/b", "", "\0", "\udc80", 3, None):
            assert path not in opened or path == ""


def test_every_file_reads_back(package):
    with kraddon.open(package) as opened:
        for name, content in FILES.items():
            assert opened.read(name) == content
            assert (opened.files / name).read_bytes() == content


def test_reading_into_a_buffer_returns_the_size_and_refuses_a_small_one(package):
    with kraddon.open(package) as opened:
        buffer = bytearray(20)
        assert opened.readinto("a.m", buffer) == 8
        assert buffer == b"disp(1)\n" + bytes(12)
        with pytest.raises(ValueError, match="7 bytes, the file has 8"):
            opened.readinto("a.m", bytearray(7))
        with pytest.raises(ValueError):
            opened.readinto("a.m", memoryview(bytearray(40))[::2])
        with pytest.raises((TypeError, BufferError)):
            opened.readinto("a.m", b"constant bytes")


def test_a_buffer_with_gaps_or_backwards_is_refused_and_stays_as_it_is(package):
    memory = bytearray(b"." * 40)
    whole = memoryview(memory)
    with kraddon.open(package) as opened:
        stream = opened._native.open("a.m")
        for part in (whole[:20][::-1], whole[::2], whole[20:24][::-1]):
            for read in (stream.readinto, lambda part: opened.readinto("a.m", part)):
                with pytest.raises(ValueError, match="^the buffer is not contiguous$"):
                    read(part)
        assert memory == b"." * 40
        assert stream.readinto(whole[4:12]) == 8
    assert memory == b"...." + FILES["a.m"] + b"." * 28


def test_files_are_traversable(package):
    with kraddon.open(package) as opened:
        root = opened.files
        assert isinstance(root, Traversable)
        assert root.is_dir() and not root.is_file() and root.name == ""
        assert [one.name for one in root.iterdir()] == ["a.m", "data", "lib"]
        lib = root / "lib"
        assert lib.is_dir() and lib.joinpath("deep", "größe.csv").read_text() == "1;2\n"
        assert (root / "lib/b.m") == lib / "b.m" and hash(root / "lib/b.m") == hash(lib / "b.m")
        missing = root / "nothing"
        assert not missing.is_file() and not missing.is_dir()
        with pytest.raises(FileNotFoundError):
            missing.read_bytes()
        with pytest.raises(NotADirectoryError):
            list((root / "a.m").iterdir())
        with pytest.raises(IsADirectoryError):
            lib.read_bytes()


def test_a_file_knows_size_time_bit_and_checksum(package):
    with kraddon.open(package) as opened, zipfile.ZipFile(package) as other:
        entry = opened.files / "lib/b.m"
        known = other.getinfo("files/lib/b.m")
        assert entry.size == known.file_size and entry.crc == known.CRC
        assert not entry.executable
        age = datetime.datetime.now(datetime.timezone.utc) - entry.modified
        assert entry.modified.utcoffset() == datetime.timedelta(0)
        assert datetime.timedelta(minutes=-5) < age < datetime.timedelta(days=1)
        assert (opened.files / "lib").size == 0 and (opened.files / "lib").modified is None


def test_a_binary_stream_seeks_like_one_in_memory(package):
    content = FILES["lib/b.m"]
    with kraddon.open(package) as opened:
        with (opened.files / "lib/b.m").open("rb") as stream:
            assert isinstance(stream, io.BufferedIOBase) and stream.seekable()
            memory = io.BytesIO(content)
            for offset, whence, size in ((3, 0, 5), (0, 0, 2), (-9, 2, 9), (-4, 1, 2), (4000, 0, 1),
                                         (10, 0, -1), (0, 2, 5), (1, 0, 3999)):
                assert stream.seek(offset, whence) == memory.seek(offset, whence)
                assert stream.read(size) == memory.read(size)
                assert stream.tell() == memory.tell()
            with pytest.raises(ValueError):
                stream.seek(-1)
        with pytest.raises(ValueError):
            stream.read()


def test_a_text_stream_reads_lines_in_utf8(package):
    with kraddon.open(package) as opened:
        with (opened.files / "lib/b.m").open() as stream:
            assert list(stream) == ["disp(2)\n"] * 500
        with pytest.raises(ValueError, match="invalid mode"):
            (opened.files / "a.m").open("w")


def test_streams_end_with_the_package(package):
    opened = kraddon.open(package)
    stream = (opened.files / "lib/b.m").open("rb")
    stream.read(4000)
    other = (opened.files / "lib/b.m").open("rb", buffering=2)
    entry = opened.files / "a.m"
    opened.close()
    for use in (lambda: other.read(), entry.read_bytes, entry.is_file, opened.namelist,
                lambda: opened.license, opened.digest, lambda: opened.read("a.m"),
                opened.__enter__):
        with pytest.raises(ValueError, match="closed"):
            use()
    opened.close()
    opened.discard()
    assert opened.closed


@pytest.mark.parametrize("kind", ["str", "bytes", "path"])
def test_a_path_is_a_str_bytes_or_a_path(package, kind):
    given = {"str": str(package), "bytes": os.fsencode(package), "path": package}[kind]
    with kraddon.open(given) as opened:
        assert opened.namelist() == ALL


def test_a_path_may_be_any_name_that_the_system_allows(tmp_path):
    path = os.fsencode(tmp_path) + b"/wave\xff\n.kraddon"
    make(path)
    with kraddon.open(path) as opened:
        assert opened.read("a.m") == FILES["a.m"]
    assert kraddon.verify(path)
    with kraddon.open(os.fsdecode(path), "a") as opened:
        opened.remove("a.m")
    assert kraddon.diff(path, path).same
    assert "Wave Tools" in kraddon.preview(path)


def test_info_and_digest_are_those_of_the_command(package):
    import json
    printed = json.loads(command("info", "--json", "--digest", package).stdout)
    with kraddon.open(package) as opened:
        assert opened.info(digest=True) == printed
        assert opened.digest() == printed["digest"]
        assert opened.info()["digest"] is None


def test_extraction_writes_the_tree_with_the_guards_of_the_command(package, tmp_path):
    with kraddon.open(package) as opened:
        opened.extract_all(tmp_path / "out")
        for name, content in FILES.items():
            assert (tmp_path / "out" / name).read_bytes() == content
        assert (tmp_path / "out/data/empty").is_dir()
        with pytest.raises(FileExistsError):
            opened.extract_all(tmp_path / "out")
        opened.extract_all(tmp_path / "out", overwrite=True)
        opened.extract("lib/deep", tmp_path / "some")
        assert [str(one.relative_to(tmp_path / "some")) for one in sorted(
            (tmp_path / "some").rglob("*"))] == ["lib", "lib/deep", "lib/deep/größe.csv"]
        (tmp_path / "links").mkdir()
        (tmp_path / "links/lib").symlink_to(tmp_path)
        with pytest.raises(kraddon.Error):
            opened.extract("lib/b.m", tmp_path / "links")
        assert not (tmp_path / "b.m").exists()


def test_a_package_cannot_be_pickled(package):
    import pickle
    with kraddon.open(package) as opened, pytest.raises(TypeError):
        pickle.dumps(opened)
