# SPDX-License-Identifier: MIT
"""Changes the records of a package, a few at a time."""

import zlib

import changes_of_items as items
import changes_of_structure as structure

# Those that verify seldom passes have a smaller weight.
CHANGES = (
    (items.change_number, 4), (items.change_central_number, 3), (items.change_local_length, 1),
    (items.flip_flags, 5), (items.change_attributes, 5), (items.change_mark, 1),
    (items.change_name, 8), (items.swap_names, 1), (items.add_field, 8),
    (items.hidden_in_a_field, 1), (items.need_zip64, 3), (items.change_packing, 3),
    (items.change_content, 2), (items.add_descriptor, 5), (items.hidden_behind_a_descriptor, 1),
    (structure.insert_bytes, 4), (structure.add_item, 6), (structure.add_folder, 5),
    (structure.drop_record, 1), (structure.repeat_record, 2), (structure.move_records, 2),
    (structure.lead_elsewhere, 1), (structure.comment_archive, 2), (structure.comment_item, 2),
    (structure.change_end, 2), (structure.end_in_zip64, 4), (structure.second_directory, 1),
    (structure.flip_bits, 2), (structure.change_types, 1), (structure.change_table, 1),
)
FUNCTIONS, WEIGHTS = zip(*CHANGES)


def mutate(archive, pick):
    """Makes one to three changes; returns what they are."""
    done = []
    for _ in range(pick.choice((1, 1, 2, 2, 3))):
        change = pick.choices(FUNCTIONS, WEIGHTS)[0]
        try:
            done.append(change(archive, pick))
        except (LookupError, StopIteration, zlib.error):
            done.append("%s: nothing to change" % change.__name__)
    return done
