# SPDX-License-Identifier: MIT
"""What every reader of the zoo does: package paths come on standard input, one a line, and for each
one these lines go to standard output:

    = PATH                  the package
    f NAME SIZE SHA256      a file; NAME in hexadecimal digits
    d NAME                  a folder
    l NAME                  a link or anything else
    .                       the end of a package that was read without an error
    ! REASON                the end of a package that was refused, as a whole or in part
"""

import hashlib
import sys


class Refused(Exception):
    """The reader reports an error for the package or one of its items."""


def named(name):
    """Bytes of a name that a reader gives as text."""
    return name if isinstance(name, bytes) else name.encode("utf-8", "surrogateescape")


def file(name, content):
    return "f %s %d %s" % (named(name).hex(), len(content), hashlib.sha256(content).hexdigest())


def folder(name):
    return "d %s" % named(name).hex()


def link(name):
    return "l %s" % named(name).hex()


def item(name, content):
    """A file, or the folder that a name with a slash at its end stands for."""
    name = named(name)
    return folder(name) if name.endswith(b"/") and not content else file(name, content)


def serve(read):
    """Calls `read`, which yields the lines of the items, for every package."""
    for line in sys.stdin:
        path = line.rstrip("\n")
        lines = ["= " + path]
        try:
            lines.extend(read(path))
            lines.append(".")
        except Exception as fault:  # whatever a reader throws is its refusal
            lines.append("! " + ascii(str(fault))[:200])
        print("\n".join(lines), flush=True)
