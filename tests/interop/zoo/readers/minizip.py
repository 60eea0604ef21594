# SPDX-License-Identifier: MIT
"""minizip, which comes with zlib."""

import ctypes
import os
import struct

import protocol

OK, END_OF_LIST = 0, -100
NAME_SIZE_AT = 64  # of unz_file_info64
LARGEST = 64 << 20

library = ctypes.CDLL("libminizip.so.1")
for name, result, *arguments in (
        ("unzOpen64", ctypes.c_void_p, ctypes.c_char_p),
        ("unzGoToFirstFile", ctypes.c_int, ctypes.c_void_p),
        ("unzGoToNextFile", ctypes.c_int, ctypes.c_void_p),
        ("unzGetCurrentFileInfo64", ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p,
         ctypes.c_char_p, ctypes.c_ulong, ctypes.c_void_p, ctypes.c_ulong, ctypes.c_char_p,
         ctypes.c_ulong),
        ("unzOpenCurrentFile", ctypes.c_int, ctypes.c_void_p),
        ("unzReadCurrentFile", ctypes.c_int, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_uint),
        ("unzCloseCurrentFile", ctypes.c_int, ctypes.c_void_p),
        ("unzClose", ctypes.c_int, ctypes.c_void_p)):
    function = getattr(library, name)
    function.restype, function.argtypes = result, arguments


def require(code):
    if code != OK:
        raise protocol.Refused("error %d" % code)


def content_of(archive):
    require(library.unzOpenCurrentFile(archive))
    pieces, buffer, total = [], ctypes.create_string_buffer(1 << 16), 0
    while True:
        size = library.unzReadCurrentFile(archive, buffer, len(buffer))
        require(min(size, OK))
        total += size
        if size == 0 or total > LARGEST:
            break
        pieces.append(buffer.raw[:size])
    require(library.unzCloseCurrentFile(archive))  # compares the checksum
    return b"".join(pieces)


def current(archive):
    info, name = ctypes.create_string_buffer(256), ctypes.create_string_buffer(1 << 17)
    require(library.unzGetCurrentFileInfo64(archive, info, name, len(name), None, 0, None, 0))
    size, = struct.unpack_from("<L", info.raw, NAME_SIZE_AT)
    return protocol.item(name.raw[:size], content_of(archive))


def read(path):
    archive = library.unzOpen64(os.fsencode(path))
    if not archive:
        raise protocol.Refused("it cannot be opened")
    try:
        code = library.unzGoToFirstFile(archive)
        while code != END_OF_LIST:
            require(code)
            yield current(archive)
            code = library.unzGoToNextFile(archive)
    finally:
        library.unzClose(archive)


protocol.serve(read)
