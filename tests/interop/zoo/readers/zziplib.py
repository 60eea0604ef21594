# SPDX-License-Identifier: MIT
"""zziplib."""

import ctypes
import os

import protocol

LARGEST = 64 << 20


class Entry(ctypes.Structure):
    _fields_ = [("method", ctypes.c_int), ("packed_size", ctypes.c_int), ("size", ctypes.c_int),
                ("name", ctypes.c_char_p)]


library = ctypes.CDLL("libzzip-0.so.13")
for name, result, *arguments in (
        ("zzip_dir_open", ctypes.c_void_p, ctypes.c_char_p, ctypes.POINTER(ctypes.c_int)),
        ("zzip_dir_read", ctypes.c_int, ctypes.c_void_p, ctypes.POINTER(Entry)),
        ("zzip_dir_close", ctypes.c_int, ctypes.c_void_p),
        ("zzip_file_open", ctypes.c_void_p, ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int),
        ("zzip_file_read", ctypes.c_ssize_t, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_size_t),
        ("zzip_file_close", ctypes.c_int, ctypes.c_void_p)):
    function = getattr(library, name)
    function.restype, function.argtypes = result, arguments


def content_of(archive, name):
    file = library.zzip_file_open(archive, name, 0)
    if not file:
        raise protocol.Refused("%r cannot be opened" % name)
    pieces, buffer, total = [], ctypes.create_string_buffer(1 << 15), 0
    try:
        while True:
            size = library.zzip_file_read(file, buffer, len(buffer))
            total += size
            if size < 0 or total > LARGEST:
                raise protocol.Refused("%r cannot be read" % name)
            if size == 0:
                return b"".join(pieces)
            pieces.append(buffer.raw[:size])
    finally:
        library.zzip_file_close(file)


def read(path):
    code, entry = ctypes.c_int(), Entry()
    archive = library.zzip_dir_open(os.fsencode(path), ctypes.byref(code))
    if not archive:
        raise protocol.Refused("error %d" % code.value)
    try:
        while library.zzip_dir_read(archive, ctypes.byref(entry)):
            if entry.size < 0 or entry.packed_size < 0:
                raise protocol.Refused("zziplib does not know ZIP64")
            if entry.name.endswith(b"/") and not entry.size:
                yield protocol.folder(entry.name)
            else:
                yield protocol.file(entry.name, content_of(archive, entry.name))
    finally:
        library.zzip_dir_close(archive)


protocol.serve(read)
