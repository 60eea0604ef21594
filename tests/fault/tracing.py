# SPDX-License-Identifier: MIT
"""Records of the system calls of a program, made with strace."""

import re
import shutil
import subprocess


def can_trace():
    if shutil.which("strace") is None:
        return False
    done = subprocess.run(["strace", "-e", "trace=none", "true"], capture_output=True, check=False)
    return done.returncode == 0


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
