#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Many ZIP readers read packages whose records were changed, as far as verify passes them."""

import os
import random
import types
import unittest

import batches
import changes_of_items
import readers_of_zip

SEED = 1
SLOW = os.environ.get("KRADDON_SLOW_BUILD") == "1"
BATCHES, SIZE = (2, 200) if SLOW else (8, 1000)


class Changes(unittest.TestCase):
    def test_descriptors_of_items_over_4_gib_are_made(self):
        large = types.SimpleNamespace(data=b"", crc=1 << 32, size=5 << 30)

        made = [changes_of_items.descriptor_of(large, random.Random(seed)) for seed in range(50)]

        self.assertIn(bytes(8) + (5 << 30).to_bytes(8, "little"), [one[-16:] for one in made])
        self.assertIn(bytes(4) + (1 << 30).to_bytes(4, "little"), [one[-8:] for one in made])


class Variants(unittest.TestCase):
    maxDiff = None

    def test_what_verify_passes_all_readers_unpack_alike(self):
        originals, total = batches.Originals(), batches.Outcome()
        for _, outcome in batches.run(originals, readers_of_zip.chosen(), SEED, range(BATCHES),
                                      SIZE):
            total.add(outcome)

        self.assertEqual(total.disagreements, {})
        # Too few would mean that the changes are too coarse, or that the readers do not work.
        self.assertEqual(total.variants, BATCHES * SIZE)
        self.assertGreater(total.passed, total.variants // 20)
        for reader, count in total.refused.items():
            self.assertLess(count, total.passed // 2, reader)


if __name__ == "__main__":
    unittest.main()
