# SPDX-License-Identifier: MIT
"""All constructions."""

import copy

import constructions
import corpus_items
import corpus_structure


def packages(original):
    """Yields names and packages, all made from one faultless archive."""
    assert corpus_items and corpus_structure  # which register theirs
    for name, change in constructions.CONSTRUCTIONS.items():
        archive = copy.deepcopy(original)
        change(archive)
        yield name, archive.pack()
