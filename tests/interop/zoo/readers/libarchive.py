# SPDX-License-Identifier: MIT
"""libarchive, which is the reader of bsdtar: from a file ("file") or from a pipe ("pipe")."""

import ctypes
import fcntl
import locale
import os
import stat
import sys

import protocol

END, OK = 1, 0
LARGEST = 1 << 20

locale.setlocale(locale.LC_ALL, "C.UTF-8")
library = ctypes.CDLL("libarchive.so.13")
for name in ("archive_read_new", "archive_read_support_filter_all",
             "archive_read_support_format_all", "archive_read_open_filename",
             "archive_read_open_fd", "archive_read_next_header", "archive_read_data",
             "archive_read_free", "archive_error_string", "archive_entry_pathname",
             "archive_entry_pathname_utf8", "archive_entry_filetype", "archive_entry_hardlink"):
    function = getattr(library, name)
    function.argtypes = {
        "archive_read_new": [],
        "archive_read_open_filename": [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_size_t],
        "archive_read_open_fd": [ctypes.c_void_p, ctypes.c_int, ctypes.c_size_t],
        "archive_read_next_header": [ctypes.c_void_p, ctypes.POINTER(ctypes.c_void_p)],
        "archive_read_data": [ctypes.c_void_p, ctypes.c_void_p, ctypes.c_size_t],
    }.get(name, [ctypes.c_void_p])
    function.restype = {
        "archive_read_new": ctypes.c_void_p, "archive_read_data": ctypes.c_ssize_t,
        "archive_error_string": ctypes.c_char_p, "archive_entry_pathname": ctypes.c_char_p,
        "archive_entry_pathname_utf8": ctypes.c_char_p,
        "archive_entry_hardlink": ctypes.c_char_p, "archive_entry_filetype": ctypes.c_uint,
    }.get(name, ctypes.c_int)


def require(archive, code):
    """Warnings make bsdtar fail too."""
    if code < OK:
        raise protocol.Refused(library.archive_error_string(archive) or b"an error")


def content_of(archive):
    pieces, buffer = [], ctypes.create_string_buffer(1 << 16)
    while True:
        size = library.archive_read_data(archive, buffer, len(buffer))
        require(archive, min(size, OK))
        if size == 0:
            return b"".join(pieces)
        pieces.append(buffer.raw[:size])
        if len(pieces) * len(buffer) > 64 * LARGEST:
            raise protocol.Refused("too large")


def items(archive):
    entry = ctypes.c_void_p()
    while True:
        code = library.archive_read_next_header(archive, ctypes.byref(entry))
        if code == END:
            return
        require(archive, code)
        name = library.archive_entry_pathname(entry)
        if name is None:
            name = library.archive_entry_pathname_utf8(entry)
        if name is None:
            raise protocol.Refused("a name that cannot be converted")
        kind = library.archive_entry_filetype(entry)
        content = content_of(archive)
        if stat.S_ISDIR(kind):
            yield protocol.folder(name)
        elif stat.S_ISREG(kind) and not library.archive_entry_hardlink(entry):
            yield protocol.file(name, content)
        else:
            yield protocol.link(name)


def read_all(open_it):
    archive = library.archive_read_new()
    try:
        library.archive_read_support_filter_all(archive)
        library.archive_read_support_format_all(archive)
        require(archive, open_it(archive))
        yield from items(archive)
    finally:
        library.archive_read_free(archive)


def read_file(path):
    return read_all(lambda archive:
                    library.archive_read_open_filename(archive, os.fsencode(path), 10240))


def read_pipe(path):
    with open(path, "rb") as file:
        content = file.read()
    if len(content) > LARGEST:
        raise protocol.Refused("larger than a pipe")
    out, into = os.pipe()
    try:
        fcntl.fcntl(into, fcntl.F_SETPIPE_SZ, LARGEST)
        os.write(into, content)
        os.close(into)
        yield from read_all(lambda archive: library.archive_read_open_fd(archive, out, 10240))
    finally:
        os.close(out)


protocol.serve({"file": read_file, "pipe": read_pipe}[sys.argv[1]])
