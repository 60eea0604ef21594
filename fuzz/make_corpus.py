#!/usr/bin/python3 -B
# SPDX-License-Identifier: MIT
"""Writes the committed inputs of the fuzzers, fuzz/corpus/TARGET/NAME, the same every time."""

import pathlib
import shutil

import corpus_packages
from corpus_texts import (CONTENT_TYPES, CORE_PROPERTIES, DOCUMENTS, HOST_JSON, MANIFEST,
                          PART_NAMES, RELATIONSHIPS)

FOLDER = pathlib.Path(__file__).parent / "corpus"


def documents():
    """The first byte chooses the document; seven more read the rest as UTF-16 code units."""
    for name, (choice, text) in DOCUMENTS.items():
        yield name, bytes([choice]) + text.encode()
    choice, text = DOCUMENTS["examples-full.xml"]
    yield "examples-in-code-units", bytes([choice + 7]) + text.encode("utf-16-le")
    choice, text = DOCUMENTS["license-full.xml"]
    yield "license-lone-surrogate", bytes([choice + 7]) + (
        text.replace("MIT", "\ud800").encode("utf-16-le", "surrogatepass"))


def encoded(texts):
    return ((name, text if isinstance(text, bytes) else text.encode())
            for name, text in texts.items())


def relationships():
    """The first byte chooses the source: the package, a part at the top, a part further down."""
    for name, (source, text) in RELATIONSHIPS.items():
        yield name, bytes([source]) + text.encode()


def write(target, inputs):
    folder = FOLDER / target
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for name, content in inputs:
        (folder / name).write_bytes(content)


def main():
    write("package", corpus_packages.packages())
    write("content_types", encoded(CONTENT_TYPES))
    write("relationships", relationships())
    write("core_properties", encoded(CORE_PROPERTIES))
    write("documents", documents())
    write("part_names", encoded(PART_NAMES))
    write("host_json", encoded(HOST_JSON))
    write("manifest", encoded(MANIFEST))


if __name__ == "__main__":
    main()
