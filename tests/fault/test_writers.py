# SPDX-License-Identifier: MIT
"""Several commands at the same time on one package."""

import fcntl
import json
import subprocess
import time
import zipfile

import faulttest
from faulttest import KRADDON, FaultTest

ROUNDS = 20 if faulttest.FULL else 3
FIELDS = ("name", "version", "summary", "description", "authorName", "authorContact",
          "authorOrganization", "GUID")


class Writers(FaultTest):

    def start(self, *words):
        # Quiet, since on a busy machine a command waits long enough for others to say so.
        return subprocess.Popen([KRADDON, "-q", *words], cwd=self.folder, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, env=self.environment())

    def finish(self, process):
        out, errors = process.communicate(timeout=120)
        return process.returncode, out, errors

    def test_of_different_fields_lose_none(self):
        self.package("p.kraddon", {"a.m": "x" * 100_000})
        for turn in range(ROUNDS):
            words = [("set", "p.kraddon", "properties", f"{field}={field} {turn}")
                     for field in FIELDS]
            words += [("set", "p.kraddon", "license", f"text=terms {turn}"),
                      ("set", "p.kraddon", "license", f"type=kind {turn}")]
            for process in [self.start(*each) for each in words]:
                self.assertEqual(self.finish(process), (0, b"", b""))
            properties = self.ok("get", "p.kraddon", "properties").json
            self.assertEqual({field: properties[field] for field in FIELDS},
                             {field: f"{field} {turn}" for field in FIELDS})
            self.assertEqual(self.ok("get", "p.kraddon", "license").json,
                             {"type": f"kind {turn}", "text": f"terms {turn}"})
        self.assert_sound()
        self.assertEqual(self.names(), ["p.kraddon", "p.kraddon.src"])

    def test_of_different_gateways_lose_none(self):
        self.package("p.kraddon", {"a.m": "x"})
        self.write("b.m", "y")
        words = [("call", "addonSetLicense", "p.kraddon", '{"type":"MIT","text":"t"}'),
                 ("call", "addonAddFiles", "p.kraddon", '["b.m"]', '["one/b.m"]'),
                 ("call", "addonAddFiles", "p.kraddon", '["b.m"]', '["two/b.m"]'),
                 ("set", "p.kraddon", "properties", "summary=s")]
        for process in [self.start(*each) for each in words]:
            self.assertEqual(self.finish(process), (0, b"", b""))
        self.assertEqual(self.listing(), ["a.m", "one/b.m", "two/b.m"])
        self.assertEqual(self.ok("get", "p.kraddon", "license").json["text"], "t")
        self.assertEqual(self.ok("get", "p.kraddon", "properties").json["summary"], "s")

    def test_that_replace_a_package_leave_the_package_of_one(self):
        self.package("p.kraddon", {"a.m": "x"})
        for number in range(6):
            self.tree({f"only{number}.m": str(number) * 300_000}, f"src{number}")
        before = set(self.names())
        for _ in range(ROUNDS):
            processes = [self.start("create", "p.kraddon", f"src{number}", "--name", "x", "--force")
                         for number in range(6)]
            for process in processes:
                code, _, errors = self.finish(process)
                self.assertEqual((code, errors), (0, b""))
            self.assert_sound()
            self.assertIn(self.listing(), [[f"only{number}.m"] for number in range(6)])
            self.assertEqual(set(self.names()), before)

    def test_leave_readers_the_old_package_or_the_new_one(self):
        self.package("p.kraddon", {"a.m": "x", "big.bin": faulttest.os.urandom(1_500_000)})
        self.ok("set", "p.kraddon", "license", "text=0", "type=0")
        end = time.monotonic() + (20 if faulttest.FULL else 3)
        number = reads = 0
        while time.monotonic() < end:
            number += 1
            writer = self.start("set", "p.kraddon", "license", f"text={number}", f"type={number}")
            while writer.poll() is None:
                self.read_once(number)
                reads += 1
            self.assertEqual(self.finish(writer), (0, b"", b""))
        self.assertGreater(reads, 10)

    @faulttest.needs_shim
    def test_through_the_library_lose_no_change_of_others(self):
        self.package("p.kraddon", {"a.m": "x"})
        for moment in ("sync:1:SIGSTOP", "rename:1:SIGSTOP"):
            with self.subTest(moment=moment):
                self.ok("set", "p.kraddon", "properties", "summary=old")
                host = self.start_stopped(moment, "p.kraddon", moment,
                                          program=faulttest.LIBRARY_WRITER)
                self.assertIsNone(host.returncode, "it was not stopped")
                # The command is not through before the host goes on, or the host fails.
                command = self.start("set", "p.kraddon", "properties", "summary=new")
                try:
                    command.wait(2)
                except subprocess.TimeoutExpired:
                    pass
                self.go_on(host)
                code, _, errors = self.finish(command)
                self.assert_kept(code, errors, moment)
        self.assertEqual(self.names(), ["p.kraddon", "p.kraddon.src"])

    def assert_kept(self, code, errors, text):
        """A command that succeeded left its change, and one that failed says why."""
        summary = self.ok("get", "p.kraddon", "properties").json["summary"]
        license_text = self.ok("get", "p.kraddon", "license").json["text"]
        if code == 0:
            self.assertEqual(summary, "new")
        else:
            self.assertEqual(errors, b"kraddon: set: cannot write package 'p.kraddon': it was "
                             b"replaced since it was opened\n")
            self.assertEqual((summary, license_text), ("old", text))

    def test_that_find_another_commit_in_progress_wait_for_it_and_then_fail(self):
        self.package("p.kraddon", {"a.m": "x"})
        before = self.path("p.kraddon").read_bytes()
        with open(self.path(".p.kraddon.commit.tmp"), "wb") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            self.fails("set", "p.kraddon", "properties", "summary=new",
                       message="cannot write package 'p.kraddon': another program has been "
                       "replacing it for 10 seconds")
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)
        self.ok("set", "p.kraddon", "properties", "summary=new")

    def read_once(self, number):
        readers = [self.start("get", "p.kraddon", "license"), self.start("list", "p.kraddon"),
                   self.start("extract", "p.kraddon", "a.m", "--stdout")]
        with zipfile.ZipFile(self.path("p.kraddon")) as archive:
            self.assertIsNone(archive.testzip())
        (code, license_text, errors), listed, extracted = map(self.finish, readers)
        self.assertEqual((code, errors), (0, b""))
        found = json.loads(license_text)
        self.assertEqual(found["text"], found["type"])
        self.assertIn(int(found["text"]), (number - 1, number))
        self.assertEqual(listed, (0, b"a.m\nbig.bin\n", b""))
        self.assertEqual(extracted, (0, b"x", b""))


if __name__ == "__main__":
    faulttest.main()
