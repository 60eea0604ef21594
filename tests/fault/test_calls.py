# SPDX-License-Identifier: MIT
"""Every system call of every command that writes fails, or transfers less, one at a time."""

import shutil

import faulttest
from faulttest import FaultTest, needs_shim, reason

# Families of calls and how they fail. The result shows whether the command failed as well.
FAULTS = [
    ("open", ["EIO", "EMFILE"]),
    ("nameless", ["EIO", "EOPNOTSUPP"]),
    ("read", ["EIO"]),
    ("write", ["ENOSPC", "EDQUOT", "EIO"]),
    ("copy", ["ENOSPC", "EDQUOT", "EIO"]),
    ("sync", ["EIO", "ENOSPC"]),
    ("foldersync", ["EIO"]),
    ("rename", ["EIO", "ENOSPC"]),
    ("renamekeeping", ["EIO", "ENOSPC"]),
    ("link", ["EIO"]),
    ("truncate", ["EIO", "ENOSPC"]),
    ("close", ["EIO", "EDQUOT"]),
    ("unlink", ["EIO"]),
    ("attribute", ["EIO"]),
    ("extended", ["EIO", "ENOSPC"]),
    ("folder", ["EIO", "ENOSPC"]),
    ("listing", ["EIO"]),
    ("status", ["EIO"]),
]

# Effects of signal handlers and busy disks, which a user must not notice.
HARMLESS = [
    ("open", "EINTR"), ("nameless", "EINTR"), ("read", "EINTR"), ("write", "EINTR"),
    ("copy", "EINTR"), ("sync", "EINTR"), ("foldersync", "EINTR"), ("rename", "EINTR"),
    ("renamekeeping", "EINTR"), ("truncate", "EINTR"), ("close", "EINTR"), ("attribute", "EINTR"),
    ("extended", "EINTR"), ("folder", "EINTR"), ("read", "short"), ("write", "short"),
    ("copy", "short"),
]

# Permanent failures.
LASTING = [("read,copy", "EIO"), ("write,copy", "ENOSPC"), ("write,copy,truncate", "EDQUOT"),
           ("sync", "EIO"), ("open", "EMFILE")]


@needs_shim
class EveryCall(FaultTest):

    def setUp(self):
        super().setUp()
        self.runs = {}
        self.counts_of = {}
        self.started = 0

    def points(self, command, families, how, lasting=False):
        """Runs the command with the first call failing, then the second, and so on, until none
        fails; yields the result of each. Without the full sweep, fewer of them."""
        total = sum(self.counts_of[command.name][family] for family in families.split(","))
        stride = 1 if faulttest.FULL else 11 if command.is_huge else 5
        number = 1 + (self.started % stride if total > 3 else 0)
        self.started += 1
        while number <= total or faulttest.FULL:
            rule = f"{families}:{number}{'+' if lasting else ''}:{how}"
            result = self.run_failing(rule, *command.words)
            if number > total and not self.hit:
                self.assertEqual(result.code, 0, result.errors)
                self.restore()
                break
            self.assertTrue(self.hit, rule)
            key = (command.name, families)
            self.runs[key] = self.runs.get(key, 0) + 1
            yield f"{command.name} with {rule}", result
            number += stride if total > 3 else 1

    def sweep(self, faults, check, lasting=False):
        self.make_inputs()
        for command in faulttest.known_commands():
            self.sweep_one(command, faults, check, lasting)
        for path in list(self.folder.iterdir()):
            shutil.rmtree(path) if path.is_dir() else path.unlink()
        self.make_huge_inputs()
        for command in faulttest.known_commands(is_huge=True):
            self.sweep_one(command, faults, check, lasting)
        self.tell()

    def sweep_one(self, command, faults, check, lasting):
        self.learn(command)
        self.run_failing("", *command.words)
        self.counts_of[command.name] = self.counts
        self.restore()
        for families, how in faults:
            with self.subTest(command=command.name, families=families, how=how):
                for where, result in self.points(command, families, how, lasting):
                    check(command, result, where, how)

    def tell(self):
        total = sum(self.runs.values())
        self.assertGreater(total, 100)
        print(f"{self.id()}: {total} faults")
        for name in dict.fromkeys(name for name, _ in self.runs):
            each = {families: number for (who, families), number in self.runs.items()
                    if who == name and number}
            print(f"  {name}:", " ".join(f"{key}={value}" for key, value in each.items()))

    def test_that_fails_leaves_the_old_file_or_a_sound_new_one(self):
        faults = [(family, how) for family, errors in FAULTS
                  for how in (errors if faulttest.FULL else errors[:1])]
        self.sweep(faults, lambda command, result, where, how:
                   self.assert_outcome(command, result, where, reason(how)))

    def test_that_keeps_failing_leaves_the_old_file(self):
        self.sweep(LASTING, lambda command, result, where, how:
                   self.assert_outcome(command, result, where, reason(how)), lasting=True)

    def test_that_is_interrupted_or_short_is_resumed(self):
        def check(command, result, where, _):
            self.assertEqual((result.code, result.errors), (0, ""), where)
            now = faulttest.snapshot(self.folder)
            try:
                self.assert_new(command, now, where)
            finally:
                self.restore(now)
        self.sweep(HARMLESS, check)

    def test_that_reports_lost_bytes_only_on_closing_is_a_failure(self):
        self.make_inputs()
        for command in faulttest.known_commands():
            if command.name not in ("screenshot-old", "get", "extract"):
                continue
            with self.subTest(command=command.name):
                self.learn(command)
                reported = 0
                for where, result in self.all_points(command, "close", "EDQUOT"):
                    reported += "Disk quota exceeded" in result.errors
                    self.assert_outcome(command, result, where)
                self.assertGreater(reported, 0)

    def all_points(self, command, families, how):
        self.run_failing("", *command.words)
        self.restore()
        for number in range(1, sum(self.counts[family] for family in families.split(",")) + 1):
            rule = f"{families}:{number}:{how}"
            yield f"{command.name} with {rule}", self.run_failing(rule, *command.words)

    def test_that_succeeds_but_reports_an_interruption_counts_as_done(self):
        self.make_inputs()
        for command in faulttest.known_commands():
            if not command.makes_package:
                continue
            self.learn(command)
            for rules in ("rename,renamekeeping:1:lost", "renamekeeping:1+:ENOSYS;link:1:lost",
                          "renamekeeping:1+:ENOSYS;link:1+:EPERM;rename:1:lost"):
                with self.subTest(command=command.name, rules=rules):
                    result = self.run_failing(rules, *command.words)
                    now = faulttest.snapshot(self.folder)
                    self.restore(now)
                    self.assertEqual((result.code, result.errors), (0, ""))
                    self.assert_new(command, now, rules)

    def test_that_examines_files_and_fails_does_not_overwrite_a_package(self):
        self.make_inputs()
        words = ["get", "p.kraddon", "properties", "-o", "p.kraddon"]
        self.fails(*words, message="cannot write 'p.kraddon': it is the package itself")
        self.run_failing("", *words)
        for number in range(1, self.counts["status"] + 1):
            for how in ("", "+"):
                rule = f"status:{number}{how}:EIO"
                result = self.run_failing(rule, *words)
                self.assertEqual(result.code, 1, rule)
                self.assert_old(faulttest.snapshot(self.folder), rule)

    def test_that_flushes_the_folder_and_fails_is_reported_with_the_new_file_in_place(self):
        self.make_inputs()
        for command in faulttest.known_commands():
            if not command.makes_package or command.is_silent:
                continue
            with self.subTest(command=command.name):
                self.learn(command)
                result = self.run_failing("foldersync:1:EIO", *command.words)
                self.assertTrue(self.hit)
                self.assertEqual(result.code, 1)
                self.assert_message(command, result, command.name, "Input/output error")
                self.assertIn("is in place, but its folder could not be flushed", result.errors)
                self.assert_new(command, faulttest.snapshot(self.folder), command.name)


if __name__ == "__main__":
    faulttest.main()
