# SPDX-License-Identifier: MIT
"""Compares the table of rules in docs/conformance.md with the tests that exist.

    check_table.py TABLE TEST_PROGRAM...

Every rule has a row, every row names tests that exist, and every rule has a test that carries its
id, in each program in which rules have tests.
"""

import re
import subprocess
import sys

# How many rules each family has.
FAMILIES = {"PN": 14, "CT": 15, "RL": 18, "CP": 17, "TH": 1, "DS": 1, "XM": 5, "ZP": 16, "IL": 4,
            "RB": 16}
RULES = [f"{family}-{number}" for family, count in FAMILIES.items()
         for number in range(1, count + 1)]


def rows_of(table):
    """The cells of each row of the chapter on the rules, by the id of the rule."""
    rows, chapter = {}, ""
    with open(table, encoding="utf-8") as file:
        for line in file:
            if line.startswith("## "):
                chapter = line.strip()
            if chapter != "## The rules":
                continue
            cells = [cell.strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]]
            if cells and re.fullmatch(r"[A-Z]{2}-\d+", cells[0]):
                if cells[0] in rows:
                    sys.exit(f"{table}: {cells[0]} has two rows")
                rows[cells[0]] = cells
    return rows


def tests_of(program):
    """All tests as suite.name; what stands behind a # is the value of a parameter."""
    tests, suite = set(), ""
    listed = subprocess.run([program, "--gtest_list_tests"], check=True, capture_output=True,
                            encoding="utf-8").stdout
    for line in listed.splitlines():
        name = line.split("#")[0].rstrip()
        if name.endswith(".") and not name.startswith(" "):
            suite = name
        elif name.startswith("  "):
            tests.add(suite + name.strip())
    return tests


def faults(rows, tests):
    for rule in RULES:
        if rule not in rows:
            yield f"{rule} has no row"
        own = f"Rule{rule.replace('-', '')}."
        if not any(test.startswith(own) for test in tests):
            yield f"{rule} has no test {own}*"
    for rule, cells in rows.items():
        if rule not in RULES:
            yield f"{rule} is not a rule"
        named = re.findall(r"`([A-Za-z0-9/]+\.[A-Za-z0-9/]+)`", cells[2])
        if not named:
            yield f"{rule} names no test"
        for test in named:
            if test not in tests:
                yield f"{rule} names '{test}', which does not exist"


def main():
    table, *programs = sys.argv[1:]
    tests = set().union(*(tests_of(program) for program in programs))
    found = list(faults(rows_of(table), tests))
    for fault in found:
        print(f"{table}: {fault}")
    print(f"{len(RULES)} rules, {len(tests)} tests, {len(found)} faults")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
