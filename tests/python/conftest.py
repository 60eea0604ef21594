# SPDX-License-Identifier: MIT
"""What the tests of several subjects need."""
import os
import pathlib
import subprocess
import sys

import pytest

import kraddon

TOP = pathlib.Path(__file__).resolve().parents[2]
KIT = TOP / "examples/signal-kit"
FILES = {"a.m": b"disp(1)\n", "lib/b.m": b"disp(2)\n" * 500, "lib/deep/größe.csv": b"1;2\n"}


def make(path, files=None, **properties):
    """A package with these files."""
    properties = {"name": "Wave Tools", "version": "1.2", **properties}
    with kraddon.open(path, "x") as package:
        package.properties = kraddon.Properties(**properties)
        for name, content in (FILES if files is None else files).items():
            if content is None:
                package.mkdir(name)
            else:
                package.add_bytes(content, name)
    return path


def command(*words, **options):
    """Runs the program, and returns what it did."""
    environment = {name: value for name, value in os.environ.items() if name != "LD_PRELOAD"}
    return subprocess.run([os.environ["KRADDON"], *map(str, words)], capture_output=True, text=True,
                          check=False, env=environment, **options)


def python(script, *words, **options):
    """Runs a script in another interpreter."""
    return subprocess.run([sys.executable, "-B", "-c", script, *map(str, words)],
                          capture_output=True, text=True, check=False, **options)


def check_types(*words, folder):
    """Runs a type checker that knows the module, and what is used of modules without types."""
    paths = os.pathsep.join([os.environ["PYTHONPATH"], str(TOP / "tests/python/stubs")])
    return subprocess.run([sys.executable, "-B", "-m", *words], capture_output=True, text=True,
                          check=False, cwd=folder, env={**os.environ, "MYPYPATH": paths})


@pytest.fixture
def package(tmp_path):
    """The path of a small package."""
    return make(tmp_path / "wave.kraddon", {**FILES, "data/empty": None})
