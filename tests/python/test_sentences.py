# SPDX-License-Identifier: MIT
"""Errors have the words of the command, and the class and the paths that belong to them."""
import os
import shutil

import pytest
from conftest import FILES, command, make

import kraddon


@pytest.fixture(scope="module")
def place(tmp_path_factory):
    """A folder with what the calls need."""
    folder = tmp_path_factory.mktemp("place")
    make(folder / "p.kraddon", {**FILES, "p.kraddon": b"within"})
    (folder / "x.m").write_text("x")
    (folder / "text.png").write_text("no image")
    (folder / "empty").mkdir()
    (folder / "links").mkdir()
    (folder / "links/lib").symlink_to("/tmp")
    (folder / "taken/a.m").mkdir(parents=True)
    (folder / "taken/lib").touch()
    (folder / "bad").mkdir()
    (folder / "bad/kraddon.toml").write_text("[package]\nname = 3\n")
    return folder


def change(method, *words, **options):
    def call():
        package = kraddon.open("p.kraddon", "a")
        try:
            getattr(package, method)(*words, **options)
        finally:
            package.discard()
    return call


def read(method, *words, **options):
    def call():
        with kraddon.open("p.kraddon") as package:
            getattr(package, method)(*words, **options)
    return call


def module(method, *words, **options):
    return lambda: getattr(kraddon, method)(*words, **options)


def release():
    with kraddon.open("p.kraddon", "a") as package:
        package.properties = kraddon.Properties(name="N", version="1", korvan_release="R1")


P = "p.kraddon"
# The command, the call, the class beside kraddon.Error, and the attributes path and part.
CASES = [
    (f"remove {P} none", change("remove", "none"), FileNotFoundError, P, "none"),
    (f"mv {P} none b", change("move", "none", "b"), FileNotFoundError, P, "none"),
    (f"mv {P} a.m lib/b.m", change("move", "a.m", "lib/b.m"), FileExistsError, P, "lib/b.m"),
    (f"mv {P} lib lib/x", change("move", "lib", "lib/x"), ValueError, P, "lib"),
    (f"mv {P} lib a.m/x", change("move", "lib", "a.m/x"), NotADirectoryError, P, "lib"),
    (f"mkdir {P} a.m", change("mkdir", "a.m"), FileExistsError, P, "a.m"),
    (f"mkdir {P} a.m/x", change("mkdir", "a.m/x"), NotADirectoryError, P, "a.m/x"),
    (f"mkdir {P} ../x", change("mkdir", "../x"), ValueError, P, "../x"),
    (f"add {P} x.m --as a.m", change("add", "x.m", "a.m"), FileExistsError, P, "a.m"),
    (f"add {P} x.m --as a.m", change("add_bytes", b"", "a.m"), FileExistsError, P, "a.m"),
    (f"add {P} x.m --as lib --replace", change("add", "x.m", "lib", replace=True),
     FileExistsError, P, "lib"),
    (f"add {P} x.m --as lib --replace", change("add_bytes", b"", "lib", replace=True),
     FileExistsError, P, "lib"),
    (f"add {P} x.m --as a.m/x", change("add", "x.m", "a.m/x"), NotADirectoryError, P, "a.m/x"),
    (f"add {P} x.m --as ../q", change("add", "x.m", "../q"), ValueError, P, "../q"),
    (f"add {P} none --as q", change("add", "none", "q"), FileNotFoundError, "none", "q"),
    (f"add {P} {P} --as q", change("add", P, "q"), OSError, P, "q"),
    (f"add {P} /dev/null --as q", change("add", "/dev/null", "q"), OSError, "/dev/null", "q"),
    (f"add {P} none --into q", change("add_folder", "none", "q"), FileNotFoundError, "none", None),
    (f"extract {P} none -d o", read("extract", "none", "o"), FileNotFoundError, P, "none"),
    (f"extract {P} none --stdout", read("read", "none"), FileNotFoundError, P, "none"),
    (f"extract {P} -d .", read("extract_all", "."), FileExistsError, P, None),
    (f"extract {P} -d links", read("extract_all", "links"), FileExistsError, P, None),
    (f"extract {P} -d taken a.m", read("extract", "a.m", "taken"), FileExistsError, P, "a.m"),
    (f"extract {P} -d taken lib", read("extract", "lib", "taken"), FileExistsError, P, "lib"),
    (f"extract {P} -d x.m", read("extract_all", "x.m"), NotADirectoryError, P, None),
    (f"extract {P} -d . --force", read("extract_all", ".", overwrite=True), OSError, P, None),
    (f"screenshot {P} text.png", change("set_screenshot", "text.png"), OSError, "text.png", None),
    (f"screenshot {P} no.png", change("set_screenshot", "no.png"), FileNotFoundError, "no.png",
     None),
    (f"set {P} properties KorvanRelease=R1", release, ValueError, P, "properties"),
    (f"verify {P} --ignore KR999", module("verify", P, ignore=["KR999"]), ValueError, None, None),
    (f"verify {P} --policy none", module("verify", P, policy="none"), FileNotFoundError, "none",
     None),
    (f"verify {P} --manifest none", module("verify", P, manifest="none"), FileNotFoundError,
     "none", None),
    (f"verify {P} --trust none", module("verify", P, trust=["none"]), FileNotFoundError, "none",
     None),
    (f"verify {P} --trust x.m", module("verify", P, trust=["x.m"]), ValueError, "x.m", None),
    ("verify none", module("verify", "none"), FileNotFoundError, "none", None),
    ("verify empty", module("verify", "empty"), OSError, "empty", None),
    ("list none", module("open", "none"), FileNotFoundError, "none", None),
    ("list x.m", module("open", "x.m"), kraddon.InvalidPackage, "x.m", None),
    ("build bad", module("build", "bad"), OSError, "bad", None),
    ("build empty", module("build", "empty"), FileNotFoundError, "empty", None),
    ("build bad -o none/x.kraddon", module("build", "bad", output="none/x.kraddon"), OSError, "bad",
     None),
    (f"create {P} empty --name x", module("create", P, "empty", name="x"), FileExistsError, P,
     None),
    ("create q none --name x", module("create", "q", "none", name="x"), FileNotFoundError, "q",
     None),
    ("create none/q empty --name x", module("create", "none/q", "empty", name="x"),
     FileNotFoundError, "none/q", None),
    (f"diff {P} none", module("diff", P, "none"), FileNotFoundError, "none", None),
    (f"diff {P} {P} none", module("diff", P, P, "none"), FileNotFoundError, None, None),
    (f"diff {P} {P} --glob x*", module("diff", P, P, "x*", glob=True), FileNotFoundError, None,
     None),
    (f"preview {P} -o {P}", module("preview", P, output=P), OSError, P, None),
    (f"preview {P} -o empty", module("preview", P, output="empty"), IsADirectoryError, "empty",
     None),
    (f"preview {P} -o none/x", module("preview", P, output="none/x"), FileNotFoundError, "none/x",
     None),
    ("preview none", module("preview", "none"), FileNotFoundError, "none", None),
]


@pytest.mark.parametrize("line, call, kind, path, part", CASES,
                         ids=[f"{number}: {case[0]}" for number, case in enumerate(CASES)])
def test_the_command_and_the_module_say_the_same(place, tmp_path, monkeypatch, line, call, kind,
                                                 path, part):
    for name in ("command", "module"):
        shutil.copytree(place, tmp_path / name, symlinks=True)
    words = line.split()
    done = command(*words, cwd=tmp_path / "command")
    monkeypatch.chdir(tmp_path / "module")
    with pytest.raises(kraddon.Error) as caught:
        call()
    assert f"kraddon: {words[0]}: {caught.value}" == done.stderr.splitlines()[0]
    assert isinstance(caught.value, kind)
    assert (caught.value.path, caught.value.part) == (path, part)
    assert sorted(os.listdir()) == sorted(os.listdir(place))
    with open(P, "rb") as after, open(place / P, "rb") as before:
        assert after.read() == before.read()
