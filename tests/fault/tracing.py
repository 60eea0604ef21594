# SPDX-License-Identifier: MIT
"""Records of the system calls of a program, made with strace."""

import os
import re
import shutil
import subprocess


def can_trace():
    if shutil.which("strace") is None:
        return False
    done = subprocess.run(["strace", "-e", "trace=none", "true"], capture_output=True, check=False)
    return done.returncode == 0


def strace(log, calls, variables=()):
    """The beginning of a command whose system calls go to `log` with all their bytes. `variables`
    are those of the environment of the program alone."""
    leaks = os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"
    prefix = ["strace", "-f", "-X", "raw", "-xx", "-s", "4000000", "-E", f"ASAN_OPTIONS={leaks}",
              "-e", f"trace={calls}", "-o", log]
    for key, value in dict(variables).items():
        prefix += ["-E", f"{key}={value}"]
    return prefix


def whole_lines(log):
    """Joins calls that strace split because of another thread, in the order of their ends."""
    begun = {}
    for line in log.splitlines():
        thread = line.split(" ", 1)[0]
        if line.endswith(" <unfinished ...>"):
            begun[thread] = line.removesuffix(" <unfinished ...>")
            continue
        resumed = re.match(r"^\d+ +<\.\.\. \w+ resumed>", line)
        yield begun.pop(thread) + line[resumed.end():] if resumed else line
