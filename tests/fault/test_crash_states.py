# SPDX-License-Identifier: MIT
"""Whatever a power cut leaves on the disk, a package is the old one or the new one, whole."""

import itertools
import unittest

import crash_model
import faulttest
from crash_model import Event
from faulttest import FaultTest
from tracing import can_trace, strace

# Ways in which a package is written on file systems that lack something.
WAYS = ("", "nameless:1+:EOPNOTSUPP", "link:1+:EPERM",
        "nameless:1+:EOPNOTSUPP;renamekeeping:1+:ENOSYS")


class CrashTest(FaultTest):

    def record(self, command, rules=""):
        """Runs the command; sets `recording`, `old` and `new`."""
        log = self.scratch / "trace"
        prefix = strace(log, crash_model.CALLS, self.shim_environment(rules) if rules else {})
        files = {name: value for name, value in self.before.items()
                 if value[0] != "folder" and "/" not in name}
        result = self.run_kraddon(*command.words, prefix=prefix)
        self.assertEqual((result.code, result.errors), (0, ""), command.name)
        path = self.path(command.target)
        self.old = self.before.get(command.target)
        self.new = (path.stat().st_mode & 0o7777, path.read_bytes())
        self.recording = crash_model.Recording(self.folder, files).read(log.read_text())
        self.assertEqual(bytes(self.recording.content[self.recording.names[command.target]]),
                         self.new[1], "the recording differs from the run")
        self.assertNotEqual(self.old, self.new)
        self.restore()

    def violations(self, command, events):
        return crash_model.violations(self.recording, events, command.target, self.old, self.new,
                                      derives(command))


def derives(command):
    """Whether the new package is made from the old one."""
    return command.verb not in ("create", "build")


def package_commands():
    return [command for command in faulttest.known_commands() if command.makes_package]


@unittest.skipUnless(can_trace(), "needs strace, and permission to trace")
class States(CrashTest):

    def test_of_every_command_hold_the_old_package_or_the_new_one(self):
        self.make_inputs()
        for command in package_commands():
            with self.subTest(command=command.name):
                self.record(command)
                found, count = self.violations(command, self.recording.events)
                self.assertEqual(found, [])
                self.assertGreater(count, 10)

    @faulttest.needs_shim
    def test_of_every_way_to_write_hold_the_old_package_or_the_new_one(self):
        self.make_inputs()
        for command, way in itertools.product(package_commands(), WAYS):
            if command.name not in ("create", "set-field", "call-license"):
                continue
            with self.subTest(command=command.name, way=way):
                self.record(command, way)
                self.assertEqual(self.violations(command, self.recording.events)[0], [])

    def test_do_not_disturb_the_next_command(self):
        self.make_inputs()
        for command in package_commands():
            if command.name not in ("create", "set-field"):
                continue
            self.record(command)
            states = self.all_states()
            self.assertGreater(len(states), 5)
            for state in states:
                with self.subTest(command=command.name, state=[name for name, _ in state]):
                    self.assert_usable(command, dict(state))

    def all_states(self):
        """Every set of names and files that a crash may leave."""
        disk = crash_model.Disk(self.recording)
        found = set()
        for event in self.recording.events:
            disk.add(event)
            changing = sorted(name for name in disk.all_names() if len(disk.choices(name)) > 1)
            kept = [name for name in disk.all_names() if name not in changing]
            for files in itertools.product(*(disk.choices(name) for name in changing)):
                pairs = [*zip(changing, files), *((name, disk.names.get(name)) for name in kept)]
                found.add(frozenset((name, file) for name, file in pairs if file is not None))
        return found

    def assert_usable(self, command, state):
        for name in self.names():
            if self.path(name).is_file():
                self.path(name).unlink()
        for name, file in state.items():
            self.write(name, bytes(self.recording.content[file]))
            self.path(name).chmod(self.recording.modes[file])
        words = command.words
        if command.target in state:
            words = ["set", command.target, "license", "text=after the crash"]
        self.ok(*words, "--lock-timeout", "0")
        self.ok("verify", command.target, "-q")
        left = set(self.names()) - set(self.before) - {command.target}
        self.assertTrue(all(name in state for name in left), left)


NEITHER = "neither the old nor the new file"
NOT_CERTAIN = "at the end not certainly the new file"
NO_LOCK = "named without a lock"


@unittest.skipUnless(can_trace(), "needs strace, and permission to trace")
class Faults(CrashTest):

    def test_that_are_planted_into_a_sound_record_are_noticed(self):
        self.make_inputs()
        for command in package_commands():
            self.record(command)
            self.file = self.recording.names[command.target]
            self.lock = f".{command.target}.commit.tmp"
            plants = [(self.no_flush, NEITHER), (self.name_before_flush, NEITHER),
                      (self.no_flush_of_the_folder, NOT_CERTAIN),
                      (self.flush_of_the_folder_before_the_name, NOT_CERTAIN),
                      (self.lock_released_early, NO_LOCK)]
            if self.old is not None:
                plants.append((self.truncation_in_place, NEITHER))
            if derives(command):
                plants.append((self.look_before_the_lock, NO_LOCK))
            for plant, expected in plants:
                with self.subTest(command=command.name, fault=plant.__name__):
                    planted = plant(list(self.recording.events), command.target)
                    found = self.violations(command, planted)[0]
                    self.assertTrue(any(expected in each for each in found), found)

    def is_flush(self, event):
        return event.kind == "flush" and event.file == self.file

    def is_release(self, event):
        return event.kind == "unlock" and event.name == self.lock

    @staticmethod
    def naming(events, target):
        """Where the file gets its name."""
        return [event.kind == "name" and event.name == target for event in events].index(True)

    def moved(self, events, is_meant, target, after):
        """The events with those that are meant just before, or after, the naming."""
        meant = [event for event in events if is_meant(event)]
        rest = [event for event in events if not is_meant(event)]
        at = self.naming(rest, target) + after
        return rest[:at] + meant + rest[at:]

    def no_flush(self, events, _):
        return [event for event in events if not self.is_flush(event)]

    def name_before_flush(self, events, target):
        return self.moved(events, self.is_flush, target, after=1)

    def no_flush_of_the_folder(self, events, _):
        return [event for event in events if event.kind != "flush-folder"]

    def flush_of_the_folder_before_the_name(self, events, target):
        return self.moved(events, lambda event: event.kind == "flush-folder", target, after=0)

    def lock_released_early(self, events, target):
        return self.moved(events, self.is_release, target, after=0)

    def look_before_the_lock(self, events, target):
        lock = [event.kind == "lock" and event.name == self.lock for event in events].index(True)
        return [event for number, event in enumerate(events)
                if number < lock or event.kind != "look" or event.name != target]

    def truncation_in_place(self, events, target):
        old = self.recording.first[target]
        planted = []
        for event in events:
            if event.kind == "create" and event.file == self.file:
                planted.append(Event("size", old, size=0))
            elif event.file != self.file:
                planted.append(event)
            elif event.kind in ("write", "size", "flush"):
                planted.append(event.with_file(old))
        return planted


if __name__ == "__main__":
    faulttest.main()
