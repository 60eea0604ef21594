# SPDX-License-Identifier: MIT
"""Runs one file of tests by pytest, in an interpreter with the runtime of the sanitizers if there
is one."""
import os
import pathlib
import sys

HERE = pathlib.Path(__file__).resolve().parent

preload = os.environ.pop("KRADDON_PRELOAD", "")
if preload:
    os.environ["LD_PRELOAD"] = preload
    os.environ["ASAN_OPTIONS"] = os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"
os.chdir(HERE)
os.execv(sys.executable, [sys.executable, "-B", "-m", "pytest", "-q", "-p", "no:cacheprovider",
                          *sys.argv[1:]])
