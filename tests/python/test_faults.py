# SPDX-License-Identifier: MIT
"""Whatever happens to the process, the package on the disk is the old one or the new one."""
import os

import pytest
from conftest import python

import kraddon

CHANGE = """
import sys
import kraddon
with kraddon.open(sys.argv[1], "a") as package:
    package.add_bytes(bytes(range(256)) * 5000, "new.bin")
    package.license = kraddon.License(type="MIT", text="text")
    package.remove("a.m")
"""
ENDS = {
    "exception": "import sys, kraddon\npackage = kraddon.open(sys.argv[1], 'a')\n"
                 "package.add_bytes(b'x', 'x')\nraise RuntimeError\n",
    "exit": "import sys, os, kraddon\npackage = kraddon.open(sys.argv[1], 'a')\n"
            "package.add_bytes(b'x', 'x')\nsys.exit(3)\n",
    "hard exit": "import sys, os, kraddon\npackage = kraddon.open(sys.argv[1], 'a')\n"
                 "package.add_bytes(b'x', 'x')\nos._exit(3)\n",
    "kill": "import sys, os, kraddon\npackage = kraddon.open(sys.argv[1], 'a')\n"
            "package.add_bytes(b'x', 'x')\nos.kill(os.getpid(), 9)\n",
    "new": "import sys, os, kraddon\npackage = kraddon.open(sys.argv[1] + '2', 'x')\n"
           "package.add_bytes(b'x', 'x')\nos.kill(os.getpid(), 9)\n",
}
FAMILIES = ("open", "nameless", "write", "copy", "sync", "foldersync", "link", "rename",
            "renamekeeping", "read", "attribute")
SHIM = os.environ.get("KRADDON_FAULT_SHIM", "")


@pytest.mark.parametrize("end", ENDS)
def test_an_end_without_close_changes_nothing(package, end):
    before = package.read_bytes()
    assert python(ENDS[end], package).returncode != 0
    assert package.read_bytes() == before
    assert os.listdir(package.parent) == [package.name]


def digest(path):
    with kraddon.open(path) as opened:
        return opened.digest()


@pytest.fixture
def outcomes(package):
    """The digests of the old and the new package, and a function that puts the old one back."""
    old = package.read_bytes()
    before = digest(package)
    assert python(CHANGE, package).returncode == 0
    after = digest(package)

    def reset():
        for path in package.parent.iterdir():
            path.unlink()
        package.write_bytes(old)
    return before, after, reset


def run_with_fault(package, rule):
    report = package.parent.parent / f"{package.parent.name}.report"
    report.unlink(missing_ok=True)
    done = python(CHANGE, package, env={
        **os.environ, "LD_PRELOAD": SHIM, "KRADDON_FAULT": rule,
        "KRADDON_FAULT_FOLDER": str(package.parent.resolve()),
        "KRADDON_FAULT_REPORT": str(report)})
    return done, report.exists() and "hit" in report.read_text()


if SHIM:
    @pytest.mark.parametrize("how", ["EIO", "SIGKILL"])
    @pytest.mark.parametrize("family", FAMILIES)
    def test_a_failing_call_leaves_the_old_package_or_the_new_one(package, outcomes, family, how):
        before, after, reset = outcomes
        for number in range(1, 3):
            reset()
            done, is_hit = run_with_fault(package, f"{family}:{number}:{how}")
            assert digest(package) in (before, after)
            if done.returncode == 0:
                assert digest(package) == after
            elif how != "SIGKILL":
                assert "kraddon._errors" in done.stderr or "kraddon.Error" in done.stderr
            if not is_hit and done.returncode == 0:
                break


    def test_a_failed_flush_is_an_error_and_leaves_the_old_package(package, outcomes):
        before, _, reset = outcomes
        reset()
        done, is_hit = run_with_fault(package, "sync:1:EIO")
        assert is_hit and done.returncode == 1 and "Input/output error" in done.stderr
        assert digest(package) == before and os.listdir(package.parent) == [package.name]


def test_a_full_file_leaves_the_old_package(package):
    before = package.read_bytes()
    script = ("import resource, signal\nsignal.signal(signal.SIGXFSZ, signal.SIG_IGN)\n"
              "resource.setrlimit(resource.RLIMIT_FSIZE, (5000, 5000))\n" + CHANGE.replace(
                  "bytes(range(256)) * 5000", "__import__('os').urandom(100000)"))
    done = python(script, package)
    assert done.returncode != 0 and "File too large" in done.stderr
    assert package.read_bytes() == before and os.listdir(package.parent) == [package.name]


def test_no_memory_is_a_memory_error_and_leaves_the_old_package(package):
    before = package.read_bytes()
    script = ("import sys, resource, kraddon\n"
              "package = kraddon.open(sys.argv[1], 'a')\n"
              "package.add_bytes(b'x', 'x')\n"
              "data = bytearray(64 << 20)\n"
              "used = int(open('/proc/self/statm').read().split()[0]) * 4096\n"
              "resource.setrlimit(resource.RLIMIT_AS, (used + (1 << 20),) * 2)\n"
              "try:\n    package.add_bytes(data, 'y')\nexcept MemoryError:\n    sys.exit(5)\n")
    if SHIM:
        assert python(script, package).returncode == 5
    assert package.read_bytes() == before
