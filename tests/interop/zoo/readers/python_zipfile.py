# SPDX-License-Identifier: MIT
"""Python's zipfile."""

import zipfile

import protocol


def read(path):
    with zipfile.ZipFile(path) as archive:
        for info in archive.infolist():
            content = archive.read(info)
            # Names that are not marked as UTF-8 were decoded from code page 437.
            if info.is_dir() and not content:
                yield protocol.folder(info.filename)
            else:
                yield protocol.file(info.filename, content)


protocol.serve(read)
