# SPDX-License-Identifier: MIT
"""Batches of variants. The same numbers make the same variants, as long as the programs that write
the originals stay the same."""

import collections
import concurrent.futures
import copy
import os

import container
import corpus
import judge
import mutator
import randomness
import seeds

SIZE = 5000  # variants in a batch; small ones are mostly the start of readers


class Originals:
    """What the variants are made of: the packages of honest programs, and the constructions in
    which verify finds no error."""

    def __init__(self):
        with judge.scratch_folder() as folder:
            self.honest = {name: container.parse(package)
                           for name, package in seeds.packages(judge.KRADDON, folder)}
        constructed = corpus.archives(self.honest["ours"])
        self.constructed = {name: constructed[name] for name in judge.passing(
            (name, archive.pack()) for name, archive in constructed.items())}

    def variant(self, seed, batch, number):
        """The bytes of a variant, and how it was made."""
        pick = randomness.source(seed, batch, number)
        archives = self.honest if pick.random() < 0.7 else self.constructed
        name = pick.choice(sorted(archives))
        archive = copy.deepcopy(archives[name])
        done = mutator.mutate(archive, pick)
        return archive.pack(), [name, *done]


class Outcome:
    """What became of a batch, or of several."""

    def __init__(self):
        self.variants = 0
        self.passed = 0
        self.refused = collections.Counter()
        self.disagreements = {}  # (how it was made, complaints) by batch and number

    def add(self, other):
        self.variants += other.variants
        self.passed += other.passed
        self.refused.update(other.refused)
        self.disagreements.update(other.disagreements)


def run_batch(originals, readers, seed, batch, size):
    """Makes the variants of a batch, and has them judged."""
    made = {number: originals.variant(seed, batch, number) for number in range(size)}
    verdict = judge.judge(((number, package) for number, (package, _) in made.items()), readers)
    outcome = Outcome()
    outcome.variants, outcome.passed = verdict.count, len(verdict.passed)
    outcome.refused.update(reader for _, reader in verdict.refusals)
    for number, texts in verdict.disagreements.items():
        outcome.disagreements[batch, number] = (made[number][1], texts)
    return outcome


def run(originals, readers, seed, batches, size=SIZE):
    """Runs batches side by side; yields each with its number when it is done."""
    with concurrent.futures.ProcessPoolExecutor(os.cpu_count()) as pool:
        waiting = {pool.submit(run_batch, originals, readers, seed, batch, size): batch
                   for batch in batches}
        for future in concurrent.futures.as_completed(waiting):
            yield waiting[future], future.result()
