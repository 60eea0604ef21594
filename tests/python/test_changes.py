# SPDX-License-Identifier: MIT
"""Changing and creating packages."""
import hashlib
import os

import pytest
from conftest import FILES, KIT, command, make

import kraddon


def test_a_clean_exit_commits(package):
    with kraddon.open(package, "a") as opened:
        opened.add_bytes(b"new", "new.m")
        opened.remove("lib/deep")
        opened.mkdir("void/inner")
        opened.move("a.m", "main/a.m")
        assert opened.read("new.m") == b"new" and opened.read("main/a.m") == FILES["a.m"]
    with kraddon.open(package) as opened:
        assert opened.namelist() == ["data/empty/", "lib/b.m", "main/a.m", "new.m", "void/inner/"]
        assert opened.read("main/a.m") == FILES["a.m"]


def test_an_exception_discards(package):
    before = package.read_bytes()
    with pytest.raises(ZeroDivisionError):
        with kraddon.open(package, "a") as opened:
            opened.add_bytes(b"new", "new.m")
            raise ZeroDivisionError
    opened = kraddon.open(package, "a")
    opened.remove("a.m")
    opened.discard()
    assert package.read_bytes() == before and os.listdir(package.parent) == [package.name]


def test_a_package_in_which_nothing_changed_is_not_written(package):
    before = os.stat(package)
    with kraddon.open(package, "a") as opened:
        opened.namelist()
    assert os.stat(package) == before or os.stat(package).st_ino == before.st_ino


def test_files_of_the_disk_are_added_with_time_and_bit(package, tmp_path):
    source = tmp_path / "tool.sh"
    source.write_bytes(b"#!/bin/sh\n")
    source.chmod(0o755)
    os.utime(source, (1_600_000_000, 1_600_000_000))
    with kraddon.open(package, "a") as opened:
        opened.add(source, "bin/tool.sh")
    with kraddon.open(package) as opened:
        entry = opened.files / "bin/tool.sh"
        assert entry.executable and entry.modified.timestamp() == 1_600_000_000
        assert entry.read_bytes() == b"#!/bin/sh\n"


def test_nothing_is_replaced_unless_asked(package, tmp_path):
    source = tmp_path / "x.m"
    source.write_bytes(b"from the disk")
    with kraddon.open(package, "a") as opened:
        for add in (lambda **more: opened.add_bytes(b"1", "a.m", **more),
                    lambda **more: opened.add(source, "a.m", **more)):
            with pytest.raises(FileExistsError) as caught:
                add()
            assert caught.value.part == "a.m"
            add(replace=True)
        with pytest.raises(FileExistsError):
            opened.add_bytes(b"1", "lib", replace=True)
        with pytest.raises(FileExistsError):
            opened.move("a.m", "lib")
        opened.mkdir("lib")
        with pytest.raises(FileExistsError):
            opened.mkdir("a.m")
        with pytest.raises(FileNotFoundError):
            opened.remove("nothing")
        with pytest.raises(FileNotFoundError):
            opened.add(tmp_path / "nothing", "n.m")
    with kraddon.open(package) as opened:
        assert opened.read("a.m") == b"from the disk"


def test_a_folder_is_added_without_what_its_ignore_file_names(package, tmp_path):
    folder = tmp_path / "src"
    (folder / "sub/void").mkdir(parents=True)
    (folder / "a.m").write_text("a")
    (folder / "a.bak").write_text("a")
    (folder / ".kraddonignore").write_text("*.bak\n.kraddonignore\n")
    with kraddon.open(package, "a") as opened:
        opened.add_folder(folder, "more")
        assert [name for name in opened if name.startswith("more")] == ["more/a.m",
                                                                       "more/sub/void/"]
    with pytest.raises(kraddon.Error, match="cannot commit"):
        with kraddon.open(package, "a") as opened:
            with pytest.raises(FileExistsError):
                opened.add_folder(folder, "more")


def test_moving_changes_the_documents_that_name_the_file(package):
    with kraddon.open(package, "a") as opened:
        opened.apps = [kraddon.App(name="A", relative_path="lib/b.m")]
        opened.move("lib", "code")
        assert opened.apps[0].relative_path == "code/b.m"


@pytest.mark.parametrize("path", ["", "/", "../a", "a//b", ".", "a/./b", "a\0b"])
def test_a_bad_path_is_refused(package, path):
    with kraddon.open(package, "a") as opened:
        with pytest.raises((kraddon.Error, ValueError)):
            opened.add_bytes(b"", path)
        assert opened.namelist()[0] == "a.m"


def test_reading_mode_refuses_changes(package):
    with kraddon.open(package) as opened:
        for change in (lambda: opened.add_bytes(b"", "x"), lambda: opened.remove("a.m"),
                       lambda: opened.mkdir("x"), lambda: opened.move("a.m", "x"),
                       lambda: delattr(opened, "license"),
                       lambda: setattr(opened, "license", kraddon.License())):
            with pytest.raises(kraddon.Error):
                change()


def test_a_package_that_somebody_else_replaced_is_not_committed(package):
    opened = kraddon.open(package, "a")
    opened.add_bytes(b"mine", "mine.m")
    assert command("remove", package, "a.m").returncode == 0
    theirs = package.read_bytes()
    with pytest.raises(kraddon.Error, match="somebody else|replaced|changed") as caught:
        opened.close()
    assert package.read_bytes() == theirs and opened.closed
    assert caught.value.path == str(package)


def test_two_writers_of_one_process_do_not_overwrite_each_other(package):
    first, second = kraddon.open(package, "a"), kraddon.open(package, "a")
    first.add_bytes(b"1", "first.m")
    second.add_bytes(b"2", "second.m")
    first.close()
    with pytest.raises(kraddon.Error):
        second.close()
    with kraddon.open(package) as opened:
        assert "first.m" in opened and "second.m" not in opened


def test_modes_x_and_w_make_a_package(tmp_path):
    path = tmp_path / "new.kraddon"
    make(path)
    with pytest.raises(FileExistsError):
        kraddon.open(path, "x")
    with kraddon.open(path, "w") as opened:
        opened.properties = kraddon.Properties(name="Other", version="1")
        assert opened.namelist() == []
    with kraddon.open(path) as opened:
        assert opened.properties.name == "Other" and len(opened) == 0 and opened
    with pytest.raises(ZeroDivisionError):
        with kraddon.open(tmp_path / "none.kraddon", "x"):
            raise ZeroDivisionError
    assert os.listdir(tmp_path) == ["new.kraddon"]
    with pytest.raises(FileNotFoundError):
        kraddon.open(tmp_path / "no/folder.kraddon", "x")
    with pytest.raises(IsADirectoryError):
        kraddon.open(tmp_path, "w")


def test_the_same_timestamp_gives_the_same_bytes(tmp_path, monkeypatch):
    sums = set()
    monkeypatch.setenv("SOURCE_DATE_EPOCH", "1770000000")
    for name in ("a", "b"):
        path = make(tmp_path / name, guid="5d9c8f6e-0d3a-4a51-9a52-111111111111")
        sums.add(hashlib.sha256(path.read_bytes()).hexdigest())
    assert len(sums) == 1
    with kraddon.open(tmp_path / "a", "a", timestamp=0, level=0) as opened:
        opened.add_bytes(b"x" * 100, "x")
    with kraddon.open(tmp_path / "a") as opened:
        assert (opened.files / "x").modified.timestamp() == 0
    monkeypatch.setenv("SOURCE_DATE_EPOCH", "soon")
    with pytest.raises(ValueError, match="SOURCE_DATE_EPOCH"):
        kraddon.open(tmp_path / "c", "x")


@pytest.mark.parametrize("arguments, error", [
    ({"mode": "rw"}, ValueError), ({"mode": None}, ValueError), ({"level": 10}, ValueError),
    ({"level": "6"}, TypeError), ({"timestamp": -1}, ValueError), ({"timestamp": 1.5}, TypeError),
    ({"timestamp": 10 ** 30}, ValueError)])
def test_bad_arguments_are_refused(package, arguments, error):
    with pytest.raises(error):
        kraddon.open(package, **arguments)


def test_the_signal_kit_round_trips(tmp_path):
    with kraddon.open(tmp_path / "kit.kraddon", "x") as opened:
        opened.properties = kraddon.Properties(name="Kit", version="1")
        opened.add_folder(KIT)
    with kraddon.open(tmp_path / "kit.kraddon") as opened:
        for source in KIT.rglob("*"):
            if source.is_file():
                assert opened.read(str(source.relative_to(KIT))) == source.read_bytes()


@pytest.mark.parametrize("to", ["a.m/x", "lib/below", "data", "../x"])
def test_a_move_that_is_refused_changes_nothing(package, to):
    with kraddon.open(package, "a") as opened:
        names = opened.namelist()
        with pytest.raises(Exception):
            opened.move("lib", to)
        assert opened.namelist() == names
        opened.add_bytes(b"more", "more.m")
    with kraddon.open(package) as opened:
        assert set(opened.namelist()) == {*names, "more.m"}


@pytest.mark.parametrize("old, new, error, part", [
    ("none", "x", FileNotFoundError, "none"), ("lib", "data", FileExistsError, "data"),
    ("lib", "a.m/x", NotADirectoryError, "lib")])
def test_a_move_that_is_refused_names_the_path_in_the_way(package, old, new, error, part):
    with kraddon.open(package, "a") as opened:
        with pytest.raises(error) as caught:
            opened.move(old, new)
        assert caught.value.part == part
