# SPDX-License-Identifier: MIT
"""What is raised, and what it says."""
import errno
import fcntl
import pickle

import pytest
from conftest import command, make

import kraddon
from kraddon import _errors


def test_the_text_is_the_sentence_of_the_command(package, tmp_path):
    missing = tmp_path / "missing.kraddon"
    cut = tmp_path / "cut.kraddon"
    cut.write_bytes(package.read_bytes()[:900])
    (tmp_path / "text.kraddon").write_text("no package at all")
    for path in (missing, cut, tmp_path / "text.kraddon", tmp_path):
        with pytest.raises(kraddon.Error) as caught:
            kraddon.open(path)
        assert command("list", path).stderr.splitlines()[0] == f"kraddon: list: {caught.value}"
        assert caught.value.path == str(path)


def test_what_is_malformed_is_an_invalid_package(package, tmp_path):
    cut = tmp_path / "cut.kraddon"
    cut.write_bytes(package.read_bytes()[:900])
    with pytest.raises(kraddon.InvalidPackage):
        kraddon.open(cut)
    content = package.read_bytes()
    package.write_bytes(content.replace(b"disp(1)\n", b"DISP(1)\n", 1))
    with kraddon.open(package) as opened:
        with pytest.raises(kraddon.InvalidPackage) as caught:
            opened.read("a.m")
        assert caught.value.part == "a.m" and "a.m" in str(caught.value)
        with pytest.raises(kraddon.InvalidPackage):
            (opened.files / "a.m").open("rb").read()


def test_a_package_that_a_command_is_changing_is_waited_for(package):
    lock = package.with_name(f".{package.name}.change.tmp")
    with open(lock, "w", encoding="ascii") as file:
        fcntl.flock(file, fcntl.LOCK_EX)
        with pytest.raises(kraddon.Error, match="cannot lock package") as caught:
            kraddon.create(package, name="x", force=True, lock_timeout=0)
    assert caught.value.path == str(package)


def test_an_error_is_the_error_of_python_too(package):
    with pytest.raises(FileNotFoundError) as caught:
        kraddon.open(str(package) + "x")
    assert isinstance(caught.value, kraddon.Error) and caught.value.errno == errno.ENOENT
    with kraddon.open(package) as opened, pytest.raises(FileNotFoundError) as caught:
        opened.read("lib/c.m")
    assert isinstance(caught.value, kraddon.Error)
    assert (caught.value.path, caught.value.part) == (str(package), "lib/c.m")


def test_a_folder_in_place_of_a_package_is_an_is_a_directory_error(tmp_path):
    for call in (kraddon.open, kraddon.verify, kraddon.preview, lambda path: kraddon.open(path, "a")):
        with pytest.raises(IsADirectoryError) as caught:
            call(tmp_path)
        assert isinstance(caught.value, kraddon.Error) and caught.value.errno == errno.EISDIR
    with pytest.raises(kraddon.Error, match="it is not a regular file"):
        kraddon.open("/dev/null")


def test_a_path_below_a_file_is_a_not_a_directory_error(package, tmp_path):
    (tmp_path / "x.m").touch()
    with kraddon.open(package, "a") as opened:
        for change in (lambda: opened.add_bytes(b"", "a.m/x"), lambda: opened.mkdir("a.m/x"),
                       lambda: opened.add(tmp_path / "x.m", "a.m/x")):
            with pytest.raises(NotADirectoryError, match="'a.m' is a file") as caught:
                change()
            assert isinstance(caught.value, kraddon.Error)
            assert caught.value.errno == errno.ENOTDIR
        opened.add_bytes(b"", "still.m")


@pytest.mark.parametrize("number, kind", [
    (errno.EACCES, PermissionError), (errno.EPERM, PermissionError),
    (errno.EEXIST, FileExistsError),
    (errno.EISDIR, IsADirectoryError), (errno.ENOTDIR, NotADirectoryError),
    (errno.ENOSPC, kraddon.Error)])
def test_refusals_of_the_system_have_their_classes(number, kind):
    error = _errors.make("", "cannot", number, b"path\xff", "part")
    assert isinstance(error, kind) and isinstance(error, kraddon.Error)
    assert (error.errno, error.path, error.part) == (number, "path\udcff", "part")


def test_errors_can_be_pickled(package):
    with pytest.raises(kraddon.Error) as caught:
        kraddon.open(str(package) + "x")
    copy = pickle.loads(pickle.dumps(caught.value))
    assert type(copy) is type(caught.value) and str(copy) == str(caught.value)
    assert vars(copy) == vars(caught.value) and copy.errno == caught.value.errno


@pytest.mark.parametrize("path", [None, 3, 1.5, object(), ["a"]])
def test_a_path_of_a_wrong_type_is_a_type_error(path, package):
    for call in (kraddon.open, kraddon.verify, kraddon.preview, kraddon.build):
        with pytest.raises(TypeError):
            call(path)
    with kraddon.open(package, "a") as opened:
        for change in (opened.read, opened.remove, opened.mkdir,
                       lambda name: opened.add_bytes(b"", name),
                       lambda name: opened.move("a.m", name)):
            with pytest.raises(TypeError):
                change(path)
        with pytest.raises(TypeError):
            opened.add_bytes("text", "t.m")


def test_a_path_with_a_nul_is_a_value_error():
    for call in (kraddon.open, kraddon.verify, kraddon.preview, kraddon.build):
        with pytest.raises(ValueError):
            call("a\0b")
    with pytest.raises(FileNotFoundError):
        kraddon.open("")


def test_a_surrogate_in_a_path_of_the_package_is_a_value_error(tmp_path):
    with kraddon.open(make(tmp_path / "p"), "a") as opened:
        for call in (opened.read, opened.remove, opened.mkdir, opened.files.joinpath):
            with pytest.raises(ValueError):
                call("a\udcff")
