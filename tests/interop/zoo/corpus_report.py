#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Judges the corpus and prints every construction about which readers disagree although verify
finds no error: corpus_report.py [quick|all]"""

import os
import sys

import batches
import corpus
import judge
import readers_of_zip


def main():
    readers = {"quick": readers_of_zip.QUICK, "all": readers_of_zip.ALL}[
        sys.argv[1] if len(sys.argv) > 1 else "quick"]
    original, made = batches.originals()["ours"], {}
    with batches.scratch_folder() as folder:
        for number, (name, package) in enumerate(corpus.packages(original)):
            made["%d.kraddon" % number] = name
            with open(os.path.join(folder, "%d.kraddon" % number), "wb") as file:
                file.write(package)
        passed, disagreements, _ = judge.judge(list(made), readers, folder)
    for package, texts in disagreements.items():
        print("%s\n    verify says %s" % (made[package], " ".join(sorted(passed[package])) or "-"))
        print("".join("    %s\n" % text[:150] for text in texts[:8]), end="")
    print("%d constructions, %d pass, %d disagreements" % (
        len(made), len(passed), len(disagreements)))


main()
