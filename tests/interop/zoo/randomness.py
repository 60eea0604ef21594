# SPDX-License-Identifier: MIT
"""What the changes pick from: numbers, kinds of items and records."""

import random

from container import FULL16, FULL32, Local

NUMBERS = (0, 1, 2, 8, 9, 10, 12, 20, 45, 46, 63, 99, 0x7F, 0xFF, 0x7FFF, 0x8000, 0xFFFE, FULL16,
           0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, FULL32)
MODES = (0, 0o100644, 0o100755, 0o104755, 0o120777, 0o040755, 0o060600, 0o020600, 0o010600,
         0o140755, 0o644)
ATTRIBUTES = (0, 1, 2, 4, 8, 0x10, 0x18, 0x20, 0x40, 0x80, 0x400, 0x410)
SYSTEMS = (0, 1, 2, 3, 5, 7, 10, 11, 14, 16, 19, 30, 255)
CONTENT = b"function hidden\n"


def number_near(value, pick):
    return pick.choice((value + 1, value - 1, value ^ 1 << pick.randrange(16), 0, FULL32,
                        pick.choice(NUMBERS), pick.randrange(4096)))


def some(archive, pick):
    """A central record and the local one that it leads to."""
    pairs = [central for central in archive.centrals() if central.local is not None]
    if not pairs:
        raise LookupError("no items are left")
    central = pick.choice(pairs)
    return central.local, central


def one_or_both(local, central, pick):
    """Most of what readers disagree about is in one of the headers."""
    return pick.choice(((local,), (central,), (local, central)))


def where(records):
    return " and ".join("local" if isinstance(record, Local) else "central" for record in records)


def source(*seeds):
    """Random numbers that are the same in every run."""
    return random.Random(" ".join(map(str, seeds)))
