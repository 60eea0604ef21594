#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Has the whole zoo read a million variants. Begins where the last run with the same program ended.

    run_variants.py [COUNT [SEED]]           a million by default, in batches
    run_variants.py --one SEED BATCH NUMBER FILE    writes a variant, and prints how it was made
"""

import hashlib
import json
import os
import sys

import batches
import judge
import readers_of_zip

FINDS = os.path.join(readers_of_zip.BUILT, "finds")


def fingerprint(originals, seed):
    """Differs when another program is tested, or other variants are made."""
    digest = hashlib.sha256(str(seed).encode())
    here = os.path.dirname(os.path.abspath(__file__))
    files = [judge.KRADDON, *(os.path.join(here, name) for name in sorted(os.listdir(here))
                              if name.endswith(".py"))]
    for name in files:
        with open(name, "rb") as file:
            digest.update(hashlib.sha256(file.read()).digest())
    for _, archive in sorted(originals.honest.items()):
        digest.update(archive.pack())
    return digest.hexdigest()[:16]


def keep_finds(originals, seed, outcome):
    os.makedirs(FINDS, exist_ok=True)
    for (batch, number), (how, texts) in sorted(outcome.disagreements.items()):
        base = os.path.join(FINDS, "%s-%d-%d" % (seed, batch, number))
        package, _ = originals.variant(seed, batch, number)
        with open(base + ".kraddon", "wb") as file:
            file.write(package)
        report = "\n".join(["%s, changed:" % how[0], *("  " + text for text in how[1:]),
                            "disagreements:", *("  " + text for text in texts)]) + "\n"
        with open(base + ".txt", "w", encoding="utf-8") as file:
            file.write(report)
        print("%s.kraddon: %s" % (base, report), end="")


def earlier(path):
    """The figures of batches that are done, by number."""
    if not os.path.exists(path):
        return {}
    with open(path, encoding="ascii") as file:
        return {line["batch"]: line for line in map(json.loads, file)}


def run(count, seed):
    originals = batches.Originals()
    os.makedirs(readers_of_zip.BUILT, exist_ok=True)
    log = os.path.join(readers_of_zip.BUILT, "done-%s.jsonl" % fingerprint(originals, seed))
    done = earlier(log)
    left = [batch for batch in range(-(-count // batches.SIZE)) if batch not in done]
    with open(log, "a", encoding="ascii") as file:
        for batch, outcome in batches.run(originals, readers_of_zip.ALL, seed, left):
            keep_finds(originals, seed, outcome)
            done[batch] = {"batch": batch, "variants": outcome.variants, "passed": outcome.passed,
                           "disagreements": len(outcome.disagreements),
                           "refused": outcome.refused}
            print(json.dumps(done[batch]), file=file, flush=True)
    return summary(done)


def summary(done):
    """Prints the figures; returns the exit code."""
    variants, passed, found = (sum(line[name] for line in done.values())
                               for name in ("variants", "passed", "disagreements"))
    print("%d readers, %d variants, %d pass verify, %d disagreements" % (
        len(readers_of_zip.ALL), variants, passed, found))
    for reader in readers_of_zip.ALL:
        refused = sum(line["refused"].get(reader, 0) for line in done.values())
        print("  %s reads %d of them" % (reader, passed - refused))
    return 1 if found else 0


def main(words):
    if words[:1] == ["--one"]:
        package, how = batches.Originals().variant(words[1], int(words[2]), int(words[3]))
        with open(words[4], "wb") as file:
            file.write(package)
        print("\n".join(how))
        return 0
    count, seed = [*words, *("1000000", "1")[len(words):]]
    return run(int(count), seed)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
