# SPDX-License-Identifier: MIT
"""Type checkers know the module as it is."""
import pathlib

from conftest import check_types

import kraddon


def test_the_stubs_are_those_of_the_module(tmp_path):
    # Most of kraddon.fs is inherited from a class without types.
    (tmp_path / "allowed").write_text("kraddon\\.fs\\..*\n")
    done = check_types("mypy.stubtest", "--allowlist", "allowed", "kraddon", folder=tmp_path)
    assert done.returncode == 0, done.stdout


def test_the_package_is_strictly_typed(tmp_path):
    done = check_types("mypy", "--strict", "-p", "kraddon", folder=tmp_path)
    assert done.returncode == 0, done.stdout


def test_types_that_users_see(tmp_path):
    (tmp_path / "use.py").write_text(
        "import kraddon\n"
        "with kraddon.open('a') as package:\n"
        "    reveal_type(package.properties)\n"
        "    reveal_type(package.license)\n"
        "    reveal_type(package.examples[0].examples[0].images)\n"
        "    reveal_type(kraddon.verify('a'))\n"
        "    package.license = 'MIT'\n")
    done = check_types("mypy", "--strict", "use.py", folder=tmp_path)
    for text in ('"kraddon._records.Properties"', 'Union[kraddon._records.License, None]',
                 '"builtins.list[builtins.str]"', 'list[kraddon._commands.Finding]',
                 'Incompatible types in assignment (expression has type "str"'):
        assert text in done.stdout
    assert "1 error" in done.stdout


def test_the_package_says_that_it_is_typed():
    folder = pathlib.Path(kraddon.__file__).parent
    assert (folder / "py.typed").exists() and (folder / "_records.pyi").exists()
