# SPDX-License-Identifier: MIT
"""'init' ignores what it cannot read; what it writes is complete."""

import faulttest
from faulttest import Command, FaultTest, needs_shim, reason

WRITING = [("write", "ENOSPC"), ("sync", "EIO"), ("rename", "EIO"), ("write", "short"),
           ("write", "EINTR")]
COMMANDS = [Command("init", ["init", "src"], "src/kraddon.toml"),
            Command("init-force", ["init", "project", "--force"], "project/kraddon.toml")]


@needs_shim
class Init(FaultTest):

    def test_writing_that_fails_leaves_the_old_file_or_none(self):
        self.make_inputs()
        for command in COMMANDS:
            self.learn(command)
            self.run_failing("", *command.words)
            counts = self.counts
            self.restore()
            for family, how in WRITING:
                for number in range(1, counts[family] + 1):
                    rule = f"{family}:{number}:{how}"
                    with self.subTest(command=command.name, rule=rule):
                        result = self.run_failing(rule, *command.words)
                        why = None if how in ("short", "EINTR") else reason(how)
                        self.assert_outcome(command, result, f"{command.name}, {rule}", why)

    def test_a_folder_that_cannot_be_read_is_reported(self):
        self.make_inputs()
        self.run_failing("", "init", "src")
        counts = self.counts
        self.restore()
        for number in range(1, counts["listing"] + 1):
            with self.subTest(number=number):
                result = self.run_failing(f"listing:{number}:EIO", "init", "src")
                self.restore()
                self.assertIn("Input/output error", result.errors)


if __name__ == "__main__":
    faulttest.main()
