# SPDX-License-Identifier: MIT
"""libgsf, which shows a container as a tree."""

import ctypes
import os

import protocol

LARGEST = 64 << 20

objects = ctypes.CDLL("libgobject-2.0.so.0")
library = ctypes.CDLL("libgsf-1.so.114")
for owner, name, result, *arguments in (
        (objects, "g_object_unref", None, ctypes.c_void_p),
        (library, "gsf_init", None),
        (library, "gsf_input_stdio_new", ctypes.c_void_p, ctypes.c_char_p, ctypes.c_void_p),
        (library, "gsf_infile_zip_new", ctypes.c_void_p, ctypes.c_void_p, ctypes.c_void_p),
        (library, "gsf_infile_num_children", ctypes.c_int, ctypes.c_void_p),
        (library, "gsf_infile_child_by_index", ctypes.c_void_p, ctypes.c_void_p, ctypes.c_int),
        (library, "gsf_input_name", ctypes.c_char_p, ctypes.c_void_p),
        (library, "gsf_input_size", ctypes.c_int64, ctypes.c_void_p),
        (library, "gsf_input_read", ctypes.c_void_p, ctypes.c_void_p, ctypes.c_size_t,
         ctypes.c_void_p)):
    function = getattr(owner, name)
    function.restype, function.argtypes = result, arguments


def content_of(file, path):
    size = library.gsf_input_size(file)
    if size == 0:
        return b""
    if not 0 < size <= LARGEST:
        raise protocol.Refused("%r has the size %d" % (path, size))
    data = library.gsf_input_read(file, size, None)
    if not data:
        raise protocol.Refused("%r cannot be read" % path)
    return ctypes.string_at(data, size)


def children(parent, path):
    for index in range(library.gsf_infile_num_children(parent)):
        child = library.gsf_infile_child_by_index(parent, index)
        if not child:
            raise protocol.Refused("item %d of %r cannot be opened" % (index, path))
        try:
            name = path + library.gsf_input_name(child)
            if library.gsf_infile_num_children(child) >= 0:
                yield protocol.folder(name)
                yield from children(child, name + b"/")
            else:
                yield protocol.file(name, content_of(child, name))
        finally:
            objects.g_object_unref(child)


def read(path):
    source = library.gsf_input_stdio_new(os.fsencode(path), None)
    if not source:
        raise protocol.Refused("it cannot be opened")
    container = library.gsf_infile_zip_new(source, None)
    objects.g_object_unref(source)
    if not container:
        raise protocol.Refused("it is not a container")
    try:
        yield from children(container, b"")
    finally:
        objects.g_object_unref(container)


library.gsf_init()
protocol.serve(read)
