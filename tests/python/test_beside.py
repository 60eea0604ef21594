# SPDX-License-Identifier: MIT
"""The module beside the library that a host loads, in one process."""
import os
import pathlib
import subprocess

from conftest import python

import kraddon

LIBRARY = os.environ["KRADDON_LIBRARY"]
SCRIPT = """
import ctypes, sys, kraddon

class Table(ctypes.Structure):
    _fields_ = [("entries", ctypes.POINTER(ctypes.c_void_p))]

def load():
    arrays = ctypes.CDLL(sys.argv[3], mode=ctypes.RTLD_GLOBAL)
    library = ctypes.CDLL(sys.argv[2], mode=ctypes.RTLD_GLOBAL)
    query = library.QueryKRFcnTable_kraddon_packaging
    query.restype = ctypes.POINTER(Table)
    return arrays, query().contents.entries

def count_of_files(arrays, entries):
    gateway = ctypes.CFUNCTYPE(None, ctypes.c_int, ctypes.POINTER(ctypes.c_void_p), ctypes.c_int,
                               ctypes.POINTER(ctypes.c_void_p))(entries[6])
    arrays.kxCreateString_UTF16.restype = ctypes.c_void_p
    arrays.kxGetNumberOfElements.argtypes = [ctypes.c_void_p]
    text = (sys.argv[1] + "\\0").encode("utf-16-le")
    given = (ctypes.c_void_p * 1)(arrays.kxCreateString_UTF16(text))
    results = (ctypes.c_void_p * 1)()
    gateway(1, results, 1, given)
    return arrays.kxGetNumberOfElements(results[0])

def count_of_names():
    kraddon.verify(sys.argv[1])
    with kraddon.open(sys.argv[1]) as package:
        assert package.properties.name and package.apps == []
        return len(package)

if sys.argv[4] == "library first":
    host = load()
    counts = [count_of_files(*host), count_of_names(), count_of_files(*host), count_of_names()]
else:
    counts = [count_of_names()]
    host = load()
    counts += [count_of_files(*host), count_of_names(), count_of_files(*host)]
assert counts == [4] * 4, counts
"""


def test_both_work_whichever_comes_first(package):
    arrays = pathlib.Path(LIBRARY).with_name("libkxarray.so")
    for order in ("library first", "module first"):
        done = python(SCRIPT, package, LIBRARY, arrays, order)
        assert done.returncode == 0, done.stderr


def test_the_module_exports_only_its_beginning():
    names = subprocess.run(["nm", "-D", "--defined-only", kraddon._native.__file__],
                           capture_output=True, text=True, check=True).stdout.split("\n")
    assert [line.split()[-1] for line in names if line and "asan" not in line
            and "ubsan" not in line] == ["PyInit__native"]


def test_the_module_needs_no_library_of_the_project():
    needed = subprocess.run(["readelf", "-d", kraddon._native.__file__], capture_output=True,
                            text=True, check=True).stdout
    assert "kxarray" not in needed and "[/" not in needed


def test_importing_starts_no_thread_and_opens_nothing():
    script = ("import os\nbefore = os.listdir('/proc/self/fd'), os.listdir('/proc/self/task')\n"
              "import kraddon\n"
              "after = os.listdir('/proc/self/fd'), os.listdir('/proc/self/task')\n"
              "raise SystemExit([len(one) for one in before] != [len(one) for one in after])")
    assert python(script).returncode == 0
