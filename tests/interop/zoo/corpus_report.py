#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Judges the corpus and prints every construction about which readers disagree although verify
finds no error: corpus_report.py [quick|all]"""

import sys

import batches
import corpus
import judge
import readers_of_zip


def main():
    readers = {"quick": readers_of_zip.QUICK, "all": readers_of_zip.ALL}[
        sys.argv[1] if len(sys.argv) > 1 else "quick"]
    archives = corpus.archives(batches.Originals().honest["ours"])
    verdict = judge.judge(((name, archive.pack()) for name, archive in archives.items()), readers)
    for name, texts in verdict.disagreements.items():
        print("%s\n    verify says %s" % (name, " ".join(sorted(verdict.passed[name])) or "-"))
        print("".join("    %s\n" % text[:150] for text in texts[:8]), end="")
    print("%d constructions, %d pass, %d disagreements" % (
        verdict.count, len(verdict.passed), len(verdict.disagreements)))


main()
