#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Many ZIP readers read packages whose records were changed, as far as verify passes them."""

import os
import unittest

import batches
import readers_of_zip

SEED = 1
SLOW = os.environ.get("KRADDON_SLOW_BUILD") == "1"
BATCHES, SIZE = (2, 200) if SLOW else (8, 1000)


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
