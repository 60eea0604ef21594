# SPDX-License-Identifier: MIT
"""All constructions."""

import copy

import constructions
import corpus_items
import corpus_structure


def archives(original):
    """The archives that the constructions make of a faultless one, by name."""
    assert corpus_items and corpus_structure  # which register theirs
    made = {}
    for name, change in constructions.CONSTRUCTIONS.items():
        made[name] = copy.deepcopy(original)
        change(made[name])
    return made
