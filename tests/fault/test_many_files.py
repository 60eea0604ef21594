# SPDX-License-Identifier: MIT
"""Calls and allocations that fail while two threads share the work."""

import random
import signal

import faulttest
from faulttest import TIME, Command, FaultTest, needs_shim, reason, snapshot

POINTS = 300 if faulttest.FULL else 8
FILES = 300

COMMANDS = [
    Command("create", ["create", "new.kraddon", "src", "--name", "x", *TIME], "new.kraddon"),
    Command("extract", ["extract", "p.kraddon", "-d", "out"], "out/"),
]
FAULTS = [("memory", "ENOMEM"), ("read", "EIO"), ("read", "short"), ("open", "EIO"),
          ("open", "EINTR"), ("write", "ENOSPC"), ("close", "EIO"),
          ("read,write,open,close,status,sync", "SIGTERM")]


@needs_shim
class ManyFiles(FaultTest):

    def test_leave_the_old_file_or_a_sound_new_one(self):
        chance = random.Random(7)
        self.tree({f"d{i % 7}/f{i}.m": chance.randbytes(3000) * 7 for i in range(FILES)})
        self.ok("create", "p.kraddon", "src", "--name", "x", *TIME)
        self.before = snapshot(self.folder)
        for command in COMMANDS:
            self.learn(command)
            self.run_failing("", *command.words)
            counts = self.counts
            self.restore()
            for families, how in FAULTS:
                total = sum(counts[family] for family in families.split(","))
                for number in random.sample(range(1, total + 1), min(total, POINTS)):
                    with self.subTest(command=command.name, families=families, how=how, at=number):
                        self.fail_at(command, f"{families}:{number}:{how}", how)

    def fail_at(self, command, rule, how):
        result = self.run_failing(rule, *command.words)
        where = f"{command.name} with {rule}"
        if how != "SIGTERM":
            why = None if how == "ENOMEM" else reason(how)
            self.assert_outcome(command, result, where, why)
            return
        now = snapshot(self.folder)
        self.restore(now)
        self.assertIn(result.code, (-signal.SIGTERM, 0), where)
        self.assertEqual(result.errors, "", where)
        self.assert_old_or_new(command, now, where)


if __name__ == "__main__":
    faulttest.main()
