# SPDX-License-Identifier: MIT
"""The wheel, and what pip makes of it."""
import os
import pathlib
import re
import subprocess
import sys
import zipfile

import pytest
from conftest import TOP

import kraddon


def run(*words, **options):
    done = subprocess.run([str(word) for word in words], capture_output=True, text=True,
                          check=False, **options)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


@pytest.fixture(scope="module")
def wheel(tmp_path_factory):
    folder = tmp_path_factory.mktemp("wheel")
    run(sys.executable, "-B", TOP / "python/wheel_backend.py", folder,
        env={**os.environ, "SOURCE_DATE_EPOCH": "1770000000"})
    return next(folder.iterdir())


def environment():
    """Without the package that this test imports."""
    return {name: value for name, value in os.environ.items() if not name.startswith("PYTHON")}


def test_the_name_says_where_the_wheel_runs(wheel):
    assert wheel.name == f"kraddon-{kraddon.__version__}-cp311-cp311-linux_x86_64.whl"
    with zipfile.ZipFile(wheel) as archive:
        names = archive.namelist()
        metadata = archive.read(next(n for n in names if n.endswith("/METADATA"))).decode()
    for name in ("kraddon/__init__.py", "kraddon/py.typed", "kraddon/_records.pyi",
                 "kraddon/lib/libkraddon_xmlsignatures.so"):
        assert name in names
    assert not [name for name in names if "__pycache__" in name]
    assert f"Version: {kraddon.__version__}\n" in metadata
    assert "Requires-Python: ==3.11.*" in metadata


def test_the_same_time_makes_the_same_wheel(wheel, tmp_path):
    run(sys.executable, "-B", TOP / "python/wheel_backend.py", tmp_path,
        env={**os.environ, "SOURCE_DATE_EPOCH": "1770000000"})
    assert next(tmp_path.iterdir()).read_bytes() == wheel.read_bytes()


def test_pip_installs_it_into_a_new_environment(wheel, package, tmp_path):
    run(sys.executable, "-m", "venv", tmp_path / "venv", env=environment())
    python = tmp_path / "venv/bin/python"
    run(python, "-m", "pip", "install", "--no-index", "--no-deps", "--disable-pip-version-check",
        wheel, env=environment(), cwd=tmp_path)
    script = ("import kraddon, importlib.metadata, sys\n"
              "assert sys.prefix in kraddon.__file__\n"
              "assert importlib.metadata.version('kraddon') == kraddon.__version__\n"
              "print(len(kraddon.verify(sys.argv[1])), kraddon.open(sys.argv[1]).namelist())")
    printed = run(python, "-c", script, package, env=environment(), cwd=tmp_path)
    with kraddon.open(package) as opened:
        assert printed == f"{len(kraddon.verify(package))} {opened.namelist()}\n"
    run(python, "-m", "pip", "check", env=environment(), cwd=tmp_path)


def test_the_build_front_end_makes_the_same_wheel(wheel, tmp_path):
    run(sys.executable, "-m", "build", "--wheel", "--no-isolation", "--outdir", tmp_path, TOP,
        env={**environment(), "KRADDON_BUILD": os.environ["KRADDON_BUILD"],
             "SOURCE_DATE_EPOCH": "1770000000"})
    assert next(tmp_path.iterdir()).read_bytes() == wheel.read_bytes()


def test_the_source_archive_has_what_a_build_needs(tmp_path):
    import tarfile
    run(sys.executable, "-B", "-c",
        "import sys; sys.path.insert(0, sys.argv[1]); import wheel_backend;"
        "wheel_backend.build_sdist(sys.argv[2])", TOP / "python", tmp_path)
    with tarfile.open(next(tmp_path.iterdir())) as archive:
        names = {name.partition("/")[2] for name in archive.getnames()}
    for name in ("CMakeLists.txt", "CMakePresets.json", "pyproject.toml", "PKG-INFO",
                 "python/kraddon/__init__.py", "python/Module.cpp", "opc/Text.h"):
        assert name in names


def test_the_page_names_the_packages_of_the_libraries_that_the_module_needs():
    folder = pathlib.Path(kraddon.__file__).parent
    page = (TOP / "docs/python.md").read_text(encoding="utf-8")
    for module in (kraddon._native.__file__, folder / "lib/libkraddon_xmlsignatures.so"):
        needed = re.findall(r"NEEDED.*\[(.*)\]", run("readelf", "-d", module))
        for name, path in re.findall(r"(\S+) => (/\S+)", run("ldd", module)):
            if name in needed:
                file = pathlib.Path(path).resolve()
                owner = run("dpkg", "-S", f"*/{file.parent.name}/{file.name}").partition(":")[0]
                assert owner in ("libc6", "libgcc-s1", "libstdc++6") or f"`{owner}`" in page, owner


def test_the_program_is_not_needed(package):
    script = "import kraddon, sys; print(len(kraddon.verify(sys.argv[1])))"
    run(sys.executable, "-B", "-c", script, package, env={
        "PATH": "/nowhere", "PYTHONPATH": str(pathlib.Path(kraddon.__file__).parents[1])})
