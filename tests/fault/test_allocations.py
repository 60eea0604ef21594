# SPDX-License-Identifier: MIT
"""Every allocation fails once: no crash, nothing half done, and a message."""

import random

import faulttest
from faulttest import FaultTest, needs_shim, snapshot

# How many allocations of each command are tried, and for how many of them all later ones fail too.
POINTS = 25

COMMANDS = ["create", "set-field", "set-file", "screenshot", "call-license", "call-files",
            "extract", "get", "add", "remove", "unset", "preview", "sign", "unsign"]
READERS = [["list", "p.kraddon"], ["info", "p.kraddon", "--json"], ["get", "p.kraddon", "license"],
           ["verify", "p.kraddon"], ["extract", "p.kraddon", "a.m", "--stdout"],
           ["verify", "signed.kraddon", "--trust", "ada.pem"],
           ["signatures", "signed.kraddon", "--trust", "ada.pem"]]


@needs_shim
class Allocations(FaultTest):

    def make_inputs(self):
        self.tree({"a.m": "x", "sub/b.m": "y" * 5000, "big.bin": "z" * 70_000, "empty/": None})
        super().make_small_inputs()

    def numbers(self, total):
        if faulttest.FULL:
            return range(1, total + 2)
        # The first and last ones are those of the program itself.
        chosen = {*range(1, 6), *range(total - 5, total + 2)}
        return sorted(chosen | set(random.sample(range(1, total), POINTS)))

    def memory_of(self, words):
        result = self.run_failing("", *words)
        self.assertEqual(result.code, 0, result.errors)
        self.restore()
        return self.counts["memory"]

    def test_that_fail_leave_the_old_file_or_a_sound_new_one(self):
        self.make_inputs()
        for command in faulttest.known_commands():
            if command.name not in COMMANDS:
                continue
            with self.subTest(command=command.name):
                self.learn(command)
                for number in self.numbers(self.memory_of(command.words)):
                    for lasting in ("", "+"):
                        rule = f"memory:{number}{lasting}:ENOMEM"
                        result = self.run_failing(rule, *command.words)
                        self.assert_memory_outcome(command, result, f"{command.name}, {rule}")

    def assert_memory_outcome(self, command, result, where):
        if not command.is_silent or result.code == 0:
            self.assert_outcome(command, result, where)
        else:
            # For a host, a lack of memory is an error of its own, not a silent failure.
            self.assertEqual(result.code, 1, f"{where}: {result.errors}")
            now = snapshot(self.folder)
            self.restore(now)
            self.assert_old_or_new(command, now, where)
        if result.code != 0:
            self.assertRegex(result.errors, "memory|Cannot allocate|cannot load ", where)

    def test_that_fail_while_reading_are_reported(self):
        self.make_inputs()
        listed = self.ok("help").text
        for words in READERS:
            if f"  {words[0]} " not in listed:
                continue
            with self.subTest(words=words):
                expected = self.run_kraddon(*words).out
                for number in self.numbers(self.memory_of(words)):
                    for lasting in ("", "+"):
                        rule = f"memory:{number}{lasting}:ENOMEM"
                        result = self.run_failing(rule, *words)
                        where = f"{words}, {rule}: {result.errors}"
                        self.assertIn(result.code, (0, 1), where)
                        if result.code == 0:
                            self.assertEqual(result.out, expected, where)
                        else:
                            self.assertRegex(result.errors, "memory|Cannot allocate|cannot load ", where)

    def test_that_fail_while_openssl_starts_are_not_faults_of_certificates(self):
        self.make_inputs()
        if "  signatures " not in self.ok("help").text:
            self.skipTest("needs the library for signatures")
        for number in range(1, 150):
            result = self.run_failing(f"memory:{number}:ENOMEM", "verify", "signed.kraddon",
                                      "--trust", "ada.pem")
            if result.code != 0:
                self.assertRegex(result.errors, "memory|Cannot allocate|cannot load ", number)

    def test_that_fail_while_xerces_starts_are_not_faults_of_the_package(self):
        self.make_inputs()
        failed = []
        for number in range(1, 1500):
            result = self.run_failing(f"memory:{number}:ENOMEM", "verify", "p.kraddon")
            if b"Xerces" in result.out or "Xerces" in result.errors:
                failed.append(result)

        self.assertNotEqual(failed, [], "it starts later; try more numbers")
        for result in failed:
            self.assertEqual((result.code, result.out), (1, b""))
            self.assertIn("cannot start Xerces-C", result.errors)
            self.assertIn("Cannot allocate memory", result.errors)


if __name__ == "__main__":
    faulttest.main()
