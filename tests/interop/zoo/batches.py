# SPDX-License-Identifier: MIT
"""Batches of variants. The same numbers make the same variants, on every machine that has the same
programs."""

import collections
import concurrent.futures
import contextlib
import copy
import os
import shutil
import tempfile

import container
import judge
import mutator
import randomness
import seeds

SIZE = 1000  # variants in a batch


def scratch_parent():
    """A file system in memory, if there is one."""
    return "/dev/shm" if os.access("/dev/shm", os.W_OK) else None


@contextlib.contextmanager
def scratch_folder():
    folder = tempfile.mkdtemp(prefix="kraddon-zoo-", dir=scratch_parent())
    try:
        yield folder
    finally:
        shutil.rmtree(folder, ignore_errors=True)


def originals():
    """The faultless packages that can be taken apart, by name."""
    with scratch_folder() as folder:
        return {name: container.parse(package)
                for name, package in seeds.packages(judge.KRADDON, folder)
                if b"PK\6\6" not in package}


def variant(archives, seed, batch, number):
    """The bytes of a variant, and how it was made."""
    pick = randomness.source(seed, batch, number)
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


def run_batch(archives, readers, seed, batch, size=SIZE):
    """Makes the variants of a batch, and has them judged."""
    outcome, made = Outcome(), {}
    with scratch_folder() as folder:
        for number in range(size):
            package, how = variant(archives, seed, batch, number)
            name = "%d.kraddon" % number
            made[name] = how
            with open(os.path.join(folder, name), "wb") as file:
                file.write(package)
        passed, disagreements, refused = judge.judge(list(made), readers, folder)
    outcome.variants, outcome.passed = len(made), len(passed)
    outcome.refused.update(refused)
    for name, texts in disagreements.items():
        outcome.disagreements[batch, int(name.split(".")[0])] = (made[name], texts)
    return outcome


def run(archives, readers, seed, batches, size=SIZE):
    """Runs batches side by side; yields each with its number when it is done."""
    with concurrent.futures.ProcessPoolExecutor(os.cpu_count()) as pool:
        waiting = {pool.submit(run_batch, archives, readers, seed, batch, size): batch
                   for batch in batches}
        for future in concurrent.futures.as_completed(waiting):
            yield waiting[future], future.result()
