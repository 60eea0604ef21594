# SPDX-License-Identifier: MIT
"""libzip, which is the reader of ziptool and of PHP."""

import ctypes
import os

import protocol

READ_ONLY = 16
LARGEST = 64 << 20

library = ctypes.CDLL("libzip.so.4")
for name, result, *arguments in (
        ("zip_open", ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int, ctypes.POINTER(ctypes.c_int)),
        ("zip_get_num_entries", ctypes.c_int64, ctypes.c_void_p, ctypes.c_uint32),
        ("zip_get_name", ctypes.c_char_p, ctypes.c_void_p, ctypes.c_uint64, ctypes.c_uint32),
        ("zip_fopen_index", ctypes.c_void_p, ctypes.c_void_p, ctypes.c_uint64, ctypes.c_uint32),
        ("zip_fread", ctypes.c_int64, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_uint64),
        ("zip_fclose", ctypes.c_int, ctypes.c_void_p),
        ("zip_discard", None, ctypes.c_void_p)):
    function = getattr(library, name)
    function.restype, function.argtypes = result, arguments


def content_of(archive, index):
    file = library.zip_fopen_index(archive, index, 0)
    if not file:
        raise protocol.Refused("item %d cannot be opened" % index)
    pieces, buffer, total = [], ctypes.create_string_buffer(1 << 16), 0
    try:
        while True:
            size = library.zip_fread(file, buffer, len(buffer))
            total += size
            if size < 0 or total > LARGEST:
                raise protocol.Refused("item %d cannot be read" % index)
            if size == 0:
                return b"".join(pieces)
            pieces.append(buffer.raw[:size])
    finally:
        library.zip_fclose(file)


def read(path):
    code = ctypes.c_int()
    archive = library.zip_open(os.fsencode(path), READ_ONLY, ctypes.byref(code))
    if not archive:
        raise protocol.Refused("error %d" % code.value)
    try:
        for index in range(library.zip_get_num_entries(archive, 0)):
            name = library.zip_get_name(archive, index, 0)
            if name is None:
                raise protocol.Refused("item %d has no name" % index)
            yield protocol.item(name, content_of(archive, index))
    finally:
        library.zip_discard(archive)


protocol.serve(read)
