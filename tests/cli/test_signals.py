# SPDX-License-Identifier: MIT
"""Interrupts, and several commands at once."""

import fcntl
import json
import os
import resource
import signal
import subprocess
import time

import kraddontest
from kraddontest import KRADDON


class Signals(kraddontest.CliTest):

    def start(self, *words):
        # Quiet, since on a busy machine a command waits long enough for others to say so.
        return subprocess.Popen([KRADDON, "-q", *words], cwd=self.folder, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, env=self.environment())

    def finish(self, process):
        out, errors = process.communicate(timeout=120)
        return process.returncode, out, errors

    def big_tree(self):
        """Enough to pack that an interrupt comes while it is packed."""
        block = os.urandom(1 << 20)
        for i in range(40):
            self.write(f"src/{i}.bin", block[i:] + os.urandom(64) + bytes(3 << 20))

    def wait_for_temporary(self, process):
        """Waits until the program writes."""
        end = time.monotonic() + 60
        while process.poll() is None and time.monotonic() < end:
            if self.is_writing(process):
                return
            time.sleep(0.001)
        self.assertIsNone(process.poll(), "it was through before it could be interrupted")

    def test_an_interrupted_create_leaves_what_was_there(self):
        self.big_tree()
        self.package("p.kraddon", {"a.m": "x"})
        before = self.path("p.kraddon").read_bytes()
        known = set(os.listdir(self.folder))
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            process = self.start("create", "p.kraddon", "src", "--name", "x", "--force",
                                 "--level", "9")
            self.wait_for_temporary(process)
            process.send_signal(number)
            self.assertEqual(self.finish(process), (-number, b"", b""))
            self.assertEqual(self.path("p.kraddon").read_bytes(), before)
            self.assertEqual(set(os.listdir(self.folder)), known)

    def test_an_interrupted_create_of_a_new_package_leaves_nothing(self):
        self.big_tree()
        known = set(os.listdir(self.folder))
        process = self.start("create", "p.kraddon", "src", "--name", "x", "--level", "9")
        self.wait_for_temporary(process)
        process.send_signal(signal.SIGINT)
        self.assertEqual(self.finish(process)[0], -signal.SIGINT)
        self.assertEqual(set(os.listdir(self.folder)), known)

    def test_an_interrupted_gateway_leaves_what_was_there(self):
        self.big_tree()
        self.package("p.kraddon", {"a.m": "x"})
        before = self.path("p.kraddon").read_bytes()
        files = sorted(os.listdir(self.path("src")))
        self.write("from.json", json.dumps([f"src/{name}" for name in files]))
        self.write("to.json", json.dumps(files))
        known = set(os.listdir(self.folder))
        process = self.start("call", "addonAddFiles", "p.kraddon", "@from.json", "@to.json")
        self.wait_for_temporary(process)
        process.send_signal(signal.SIGINT)
        self.assertEqual(self.finish(process), (-signal.SIGINT, b"", b""))
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)
        self.assertEqual(set(os.listdir(self.folder)), known)

    def test_an_ignored_signal_stays_ignored(self):
        self.big_tree()
        process = subprocess.Popen(
            ["sh", "-c", f"trap '' HUP; exec '{KRADDON}' create p.kraddon src --name x"],
            cwd=self.folder, stderr=subprocess.PIPE, stdout=subprocess.PIPE)
        time.sleep(0.1)
        process.send_signal(signal.SIGHUP)
        self.assertEqual(self.finish(process), (0, b"", b""))
        self.assert_sound()

    def test_an_interrupted_extract_leaves_no_half_file(self):
        self.write("src/big.bin", os.urandom(1 << 20) * 200)
        self.ok("create", "p.kraddon", "src", "--name", "x", "--level", "1")
        process = self.start("extract", "p.kraddon", "-d", "out")
        end = time.monotonic() + 60
        while process.poll() is None and not self.path("out").exists():
            self.assertLess(time.monotonic(), end)
            time.sleep(0.0005)
        process.send_signal(signal.SIGTERM)
        code, _, errors = self.finish(process)
        if code == 0:
            self.skipTest("it was through before it could be interrupted")
        self.assertEqual((code, errors), (-signal.SIGTERM, b""))
        self.assertFalse(self.path("out").exists())

    def test_commands_that_change_one_package_wait_for_each_other(self):
        self.package("p.kraddon", {"a.m": "x"})
        words = [("set", "p.kraddon", "license", "text=terms"),
                 ("set", "p.kraddon", "properties", "summary=short"),
                 ("set", "p.kraddon", "properties", "authorName=Ada"),
                 ("set", "p.kraddon", "license", "type=MIT"),
                 ("set", "p.kraddon", "properties", "description=long"),
                 ("set", "p.kraddon", "properties", "GUID=g")]
        for _ in range(5):
            processes = [self.start(*each) for each in words]
            for process in processes:
                self.assertEqual(self.finish(process), (0, b"", b""))
        self.assertEqual(self.ok("get", "p.kraddon", "license").json,
                         {"type": "MIT", "text": "terms"})
        properties = self.ok("get", "p.kraddon", "properties").json
        self.assertEqual((properties["summary"], properties["authorName"],
                          properties["description"], properties["GUID"]),
                         ("short", "Ada", "long", "g"))
        self.assert_sound()

    def locked(self, name="p.kraddon"):
        """The lock of a package, held until it is closed."""
        lock = open(self.path(f".{name}.change.tmp"), "wb")
        fcntl.flock(lock, fcntl.LOCK_EX)
        return lock

    def test_a_waiting_command_can_be_interrupted(self):
        self.package("p.kraddon", {"a.m": "x"})
        with self.locked():
            process = self.start("set", "p.kraddon", "license", "text=x")
            time.sleep(0.3)
            self.assertIsNone(process.poll())
            process.send_signal(signal.SIGINT)
            self.assertEqual(self.finish(process), (-signal.SIGINT, b"", b""))

    def test_a_waiter_works_on_the_package_that_is_there_when_its_turn_comes(self):
        self.package("p.kraddon", {"a.m": "x"})
        self.package("q.kraddon", {"b.m": "x"})
        with self.locked():
            process = self.start("set", "p.kraddon", "license", "text=x")
            time.sleep(0.3)
            os.replace(self.path("q.kraddon"), self.path("p.kraddon"))
        self.assertEqual(self.finish(process), (0, b"", b""))
        self.assertEqual(self.listing(), ["b.m"])
        self.assertEqual(self.ok("get", "p.kraddon", "license").json["text"], "x")

    def test_two_creates_of_one_new_package_do_not_mix(self):
        self.tree({"a.m": "x" * 100000})
        for _ in range(5):
            processes = [self.start("create", "p.kraddon", "src", "--name", f"n{i}")
                         for i in range(4)]
            codes = sorted(self.finish(process)[0] for process in processes)
            self.assertEqual(codes, [0, 1, 1, 1])
            self.assert_sound()
            self.assertEqual(self.names(), ["p.kraddon", "src"])
            self.path("p.kraddon").unlink()


    def test_every_signal_that_ends_a_program_cleans_up(self):
        self.big_tree()
        known = set(os.listdir(self.folder))
        for number in (signal.SIGQUIT, signal.SIGXCPU, signal.SIGALRM, signal.SIGUSR1):
            process = self.start("create", "p.kraddon", "src", "--name", "x", "--level", "9")
            self.wait_for_temporary(process)
            process.send_signal(number)
            self.assertEqual(self.finish(process)[0], -number)
            self.assertEqual(set(os.listdir(self.folder)), known)

    def test_what_a_killed_run_leaves_behind_is_never_packed(self):
        self.package()
        with open(self.path("big.png"), "wb") as image:
            image.write(b"\x89PNG\r\n\x1a\n")
            image.truncate(1 << 28)
        self.ok("screenshot", "p.kraddon", "big.png", "--level", "1")
        self.path("out").mkdir()
        process = subprocess.Popen([KRADDON, "screenshot", "p.kraddon", "-o", "out/shot.png"],
                                   cwd=self.folder)
        self.addCleanup(process.wait)
        while not self.is_writing(process, "out") and process.poll() is None:
            time.sleep(0.001)
        process.kill()
        process.wait()
        self.assertLessEqual(len(self.names("out")), 1)  # where files must have names
        self.write("out/.shot.png.abc123.tmp", "half")
        self.ok("create", "q.kraddon", "out", "--name", "x")
        self.assertEqual(self.listing("q.kraddon"), [])

    def test_a_limit_on_the_size_of_files_is_an_error_like_a_full_disk(self):
        self.write("src/big.bin", os.urandom(3 << 20))
        self.package("q.kraddon", {"big.bin": os.urandom(3 << 20)})
        known = set(os.listdir(self.folder))

        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 20, 1 << 20))

        created = self.fails("create", "p.kraddon", "src", "--name", "x", preexec_fn=limit)
        self.assertIn("File too large", created.errors)
        self.assertEqual(set(os.listdir(self.folder)), known)
        extracted = self.fails("extract", "q.kraddon", "-d", "out", preexec_fn=limit)
        self.assertIn("big.bin", extracted.errors)
        self.assertFalse(self.path("out/big.bin").exists())


if __name__ == "__main__":
    kraddontest.main()
