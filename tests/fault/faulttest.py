# SPDX-License-Identifier: MIT
"""Commands that write, and runs of the program in which system calls fail."""

import errno
import io
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import unittest
import zipfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "cli"))

import kraddontest  # noqa: E402
import signing  # noqa: E402
from kraddontest import KRADDON  # noqa: E402

SHIM = os.environ.get("KRADDON_FAULT_SHIM", "")
LIBRARY_WRITER = os.environ.get("KRADDON_LIBRARY_WRITER", "")
FULL = os.environ.get("KRADDON_FAULT_FULL") == "1"
LOCK_ENDS = (".change.tmp", ".commit.tmp")
NO_SHIM = "needs a build without sanitizers, which stand in for the same calls"

# Thousands of runs use memory instead of a disk; the full sweep uses the file system of TMPDIR.
if not FULL and os.access("/dev/shm", os.W_OK):
    tempfile.tempdir = "/dev/shm"


def needs_shim(test):
    """For tests that use the shim, which finds the names of open files in /proc."""
    return unittest.skipUnless(SHIM, NO_SHIM)(kraddontest.needs_proc(test))


# A small valid image.
PIXEL = bytes.fromhex(
    "89504e470d0a1a0a0000000d49484452000000010000000108060000001f15c489"
    "0000000d49444154789c63f8cfc0f01f00050001ff5a9ae1d30000000049454e44ae426082")

# Small files, and one larger than the buffers.
SMALL = {"a.m": b"disp(1)\n", "sub/b.m": b"disp(2)\n" * 500, "empty/": None,
         "big.bin": bytes(range(256)) * 1000 + os.urandom(1_100_000)}
# Larger than what is packed and unpacked in one piece; it does not get smaller.
HUGE_SIZE = 17 << 20

PROJECT = """[package]
name = "Wave Tools"
version = "1.2"
summary = "Short-time spectra"
description = "Plots them."
author = "Ada Lind"
contact = "ada@example.org"
screenshot = "shot.png"
[license]
type = "MIT"
text = "As it is."
"""
LICENSE = {"type": "MIT", "text": "terms"}


class Command:
    """A command that writes, and what it writes. A silent one does not report its failure."""

    def __init__(self, name, words, target="p.kraddon", is_silent=False, is_huge=False):
        self.name, self.words, self.target = name, words, target
        self.is_silent, self.is_huge = is_silent, is_huge

    @property
    def verb(self):
        return self.words[0]

    @property
    def makes_package(self):
        return self.target.endswith(".kraddon")

    @property
    def makes_folder(self):
        return self.target.endswith("/")


TIME = ("--timestamp", "1700000000")
PACKAGE_COMMANDS = [
    Command("create", ["create", "new.kraddon", "src", "--name", "x", *TIME], "new.kraddon"),
    Command("create-empty", ["create", "new.kraddon", "--name", "x", *TIME], "new.kraddon"),
    Command("create-huge", ["create", "new.kraddon", "huge", "--name", "x", *TIME], "new.kraddon",
            is_huge=True),
    Command("create-force", ["create", "p.kraddon", "src", "--name", "x", "--force", *TIME]),
    Command("build", ["build", "project", "-o", "new.kraddon", *TIME], "new.kraddon"),
    Command("build-force", ["build", "project", "-o", "p.kraddon", "--force", *TIME]),
    Command("set-file", ["set", "p.kraddon", "license", "license.json", *TIME]),
    Command("set-field", ["set", "p.kraddon", "properties", "summary=other", *TIME]),
    Command("screenshot", ["screenshot", "p.kraddon", "pixel.png", *TIME]),
    Command("add", ["add", "p.kraddon", "src/a.m", "--into", "more", *TIME]),
    Command("add-replace", ["add", "p.kraddon", "other/big.bin", "--replace", *TIME]),
    Command("remove", ["remove", "p.kraddon", "big.bin", *TIME]),
    Command("mv", ["mv", "p.kraddon", "big.bin", "moved/large.bin", *TIME]),
    Command("mkdir", ["mkdir", "p.kraddon", "a/new/folder", *TIME]),
    Command("unset", ["unset", "p.kraddon", "license", "--quiet", *TIME]),
    Command("sign", ["sign", "p.kraddon", "--key", "ada.key", "--certificate", "ada.pem",
                     "--timestamp", str(signing.NOW)]),
    Command("unsign", ["unsign", "signed.kraddon", *TIME], "signed.kraddon"),
    Command("call-license", ["call", "addonSetLicense", "p.kraddon", json.dumps(LICENSE)],
            is_silent=True),
    Command("call-files", ["call", "addonAddFiles", "p.kraddon", '["src/a.m","src/big.bin"]',
                           '["x/a.m","x/big.bin"]'], is_silent=True),
    Command("call-screenshot", ["call", "addonSetScreenshot", "p.kraddon", "pixel.png"],
            is_silent=True),
]
OUTPUT_COMMANDS = [
    Command("extract", ["extract", "p.kraddon", "-d", "out"], "out/"),
    Command("extract-huge", ["extract", "h.kraddon", "-d", "out"], "out/",
            is_huge=True),
    Command("extract-force", ["extract", "p.kraddon", "-d", "there", "--force"], "there/"),
    Command("call-extract", ["call", "addonExtractAllFiles", "p.kraddon", "out"], "out/",
            is_silent=True),
    Command("screenshot-new", ["screenshot", "p.kraddon", "-o", "shot.png"], "shot.png"),
    Command("screenshot-old", ["screenshot", "p.kraddon", "-o", "old.png"], "old.png"),
    Command("preview", ["preview", "p.kraddon", "-o", "page.html"], "page.html"),
    Command("sbom", ["sbom", "p.kraddon", "-o", "bill.json"], "bill.json"),
    Command("get", ["get", "p.kraddon", "properties", "-o", "props.json"], "props.json"),
    Command("get-old", ["get", "p.kraddon", "properties", "-o", "license.json"], "license.json"),
]


def known_commands(is_huge=False):
    """Those that the program under test has."""
    listed = subprocess.run([KRADDON, "help"], capture_output=True, check=True).stdout.decode()
    names = set(re.findall(r"^  ([a-z]+) ", listed, re.MULTILINE))
    return [command for command in PACKAGE_COMMANDS + OUTPUT_COMMANDS
            if command.verb in names and command.is_huge == is_huge]


def content_of(data):
    """The content of a package, without the times and identifiers that differ between runs."""
    with zipfile.ZipFile(io.BytesIO(data)) as archive:
        bad = archive.testzip()
        if bad is not None:
            raise AssertionError(f"{bad} is damaged")
        return {entry.filename: _timeless_part(entry.filename, archive.read(entry))
                for entry in archive.infolist()}


def timeless(data):
    data = re.sub(rb"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[.\d]*Z", b"TIME", data)
    return re.sub(rb"[0-9a-fA-F]{8}(-[0-9a-fA-F]{4}){3}-[0-9a-fA-F]{12}", b"GUID", data)


def _timeless_part(name, data):
    return data if name.startswith("files/") else timeless(data)


def snapshot(folder):
    """Every file below the folder with mode and bytes, and the folders and links."""
    found = {}
    for place, folders, files in os.walk(folder):
        for name in folders + files:
            path = os.path.join(place, name)
            key = os.path.relpath(path, folder)
            info = os.lstat(path)
            if os.path.islink(path):
                found[key] = ("link", os.readlink(path))
            elif os.path.isdir(path):
                found[key] = ("folder", None)
            else:
                with open(path, "rb") as file:
                    found[key] = (info.st_mode & 0o7777, file.read())
    return found


class FaultTest(kraddontest.CliTest):
    """Each run works on a copy of the same files."""

    def setUp(self):
        super().setUp()
        self.folder = self.folder.resolve()
        self.scratch = self.folder
        self.report = self.scratch / "report"
        self.folder = self.scratch / "work"
        self.folder.mkdir()
        self.hit = False
        self.counts = {}
        self.before = {}

    def make_huge_inputs(self):
        self.write("huge/huge.bin", os.urandom(HUGE_SIZE))
        self.ok("create", "h.kraddon", "huge", "--name", "Huge", *TIME)
        self.before = snapshot(self.folder)

    def make_inputs(self):
        self.tree(SMALL)
        self.make_small_inputs()

    def make_small_inputs(self):
        self.write("other/big.bin", os.urandom(400_000))
        self.write("pixel.png", PIXEL)
        self.write("license.json", json.dumps(LICENSE))
        self.make_project()
        self.write("old.png", "an old one")
        self.ok("create", "p.kraddon", "src", "--name", "Wave Tools",
                "--description", "# Waves\n\n|*a*|\n|-|\n", *TIME)
        self.ok("set", "p.kraddon", "license", "text=first", *TIME)
        self.ok("screenshot", "p.kraddon", "pixel.png", *TIME)
        self.make_signed()
        self.write("pixel.png", PIXEL + b"\0")
        self.write("there/a.m", "old and longer than the new one")
        self.path("p.kraddon").chmod(0o640)
        self.before = snapshot(self.folder)

    def make_signed(self):
        keys = signing.material()
        self.write("ada.key", (keys / "rsa.key").read_bytes()).chmod(0o600)
        self.write("ada.pem", (keys / "chain.crt").read_bytes())
        self.write("signed.kraddon", self.path("p.kraddon").read_bytes())
        self.ok("sign", "signed.kraddon", *signing.words())

    def make_project(self):
        self.write("project/kraddon.toml", PROJECT)
        self.write("project/shot.png", PIXEL)
        self.write("project/lib/c.m", "disp(3)\n" * 9000)

    def restore(self, current=None):
        """Restores what make_inputs made, writing only files that differ."""
        current = snapshot(self.folder) if current is None else current
        for name in sorted(current.keys() - self.before.keys(), reverse=True):
            path = self.path(name)
            path.rmdir() if current[name][0] == "folder" else path.unlink()
        for name, (mode, data) in sorted(self.before.items()):
            if current.get(name) == (mode, data):
                continue
            if mode == "folder":
                self.path(name).mkdir()
            else:
                self.path(name).unlink(missing_ok=True)
                self.write(name, data).chmod(mode)

    def shim_environment(self, rules):
        self.report.unlink(missing_ok=True)
        return {"LD_PRELOAD": SHIM, "KRADDON_FAULT": rules,
                "KRADDON_FAULT_FOLDER": str(self.folder),
                "KRADDON_FAULT_REPORT": str(self.report)}

    def run_failing(self, rules, *words, **kw):
        """Runs it with calls that fail; sets `hit`, whether one did, and `counts` of the calls."""
        result = self.run_kraddon(*words, env=self.shim_environment(rules), **kw)
        lines = self.report.read_text().splitlines() if self.report.exists() else []
        self.hit = "hit" in lines
        self.counts = {}
        for line in lines:
            if line.startswith("counts"):
                self.counts = {key: int(number) for key, number in
                               (pair.split("=") for pair in line.split()[1:])}
        return result

    def start_stopped(self, rules, *words, program=KRADDON):
        """Starts it and waits until a rule has stopped it; `returncode` is set if none did."""
        process = subprocess.Popen([program, *words], cwd=self.folder, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE,
                                   env=self.environment(self.shim_environment(rules)))
        _, status = os.waitpid(process.pid, os.WUNTRACED)
        if not os.WIFSTOPPED(status):
            process.returncode = os.waitstatus_to_exitcode(status)
            process.communicate()
        return process

    def go_on(self, process):
        """Lets a stopped program run to its end; returns exit code and messages."""
        process.send_signal(signal.SIGCONT)
        _, errors = process.communicate(timeout=120)
        return process.returncode, errors.decode()

    # ---- the valid results --------------------------------------------------------------------

    def learn(self, command):
        """The result of the command if nothing fails."""
        self.restore()
        result = self.run_kraddon(*command.words)
        self.assertEqual((result.code, result.errors), (0, ""), command.name)
        self.after = snapshot(self.folder)
        self.restore(self.after)
        return self.after

    def is_new(self, command, now, path):
        """Whether the file at `path` has the content that the command writes there."""
        if path not in now or path not in self.after:
            return False
        if now[path][0] != self.after[path][0]:
            return False
        if now[path] == self.after[path]:
            return True
        if path != command.target:
            return False
        compared = content_of if command.makes_package else timeless
        return compared(now[path][1]) == compared(self.after[path][1])

    def differing(self, now, reference):
        return sorted(key for key in now.keys() | reference.keys()
                      if now.get(key) != reference.get(key))

    def assert_old(self, now, where):
        self.assertEqual(self.differing(now, self.before), [], f"{where}: not as before")

    def assert_new(self, command, now, where):
        differing = [key for key in self.differing(now, self.after)
                     if not self.is_new(command, now, key)]
        self.assertEqual(differing, [], f"{where}: not what it should be")

    def assert_verified(self, command, where):
        """Runs 'verify' on what the program wrote."""
        self.assertEqual(self.run_kraddon("verify", command.target).code, 0, where)

    def assert_whole(self, command, now, where):
        """For commands that write many files: each is complete or as before, with no others."""
        for key in self.differing(now, self.before):
            self.assertTrue(self.is_new(command, now, key), f"{where}: {key} is half-done")

    def assert_old_or_new(self, command, now, where):
        if command.makes_folder:
            self.assert_whole(command, now, where)
        elif self.differing(now, self.before):
            self.assert_new(command, now, where)

    def assert_message(self, command, result, where, why=None):
        if why is None and result.errors == "kraddon: out of memory\n":
            return  # it failed before the name of the command was known
        lines = result.errors.splitlines()
        self.assertIn(len(lines), (1, 2), f"{where}: {result.errors}")
        self.assertTrue(lines[0].startswith(f"kraddon: {command.verb}: "), f"{where}: {lines[0]}")
        if len(lines) == 2:
            self.assertTrue(lines[1].startswith("hint: "), f"{where}: {lines[1]}")
        if why:
            self.assertIn(why, lines[0], where)

    @staticmethod
    def own_errors(result):
        """The messages without those of the libraries that 'call' loads."""
        lines = result.errors.splitlines(keepends=True)
        return "".join(line for line in lines if not line.startswith("Error in GnuTLS "))

    def assert_outcome(self, command, result, where, why=None):
        """It failed with a message and changed nothing, or the result is as without the fault."""
        everything = now = snapshot(self.folder)
        if "unlink" in where:  # what cannot be removed stays
            now = {name: value for name, value in now.items() if not name.endswith(LOCK_ENDS)}
        try:
            if command.is_silent:
                self.assertEqual(result.code, 0, f"{where}: {result.errors}")
                self.assertEqual((result.out, self.own_errors(result)), (b"", ""), where)
                self.assert_old_or_new(command, now, where)
            elif result.code == 0:
                self.assertEqual(result.errors, "", where)
                self.assert_new(command, now, where)
                if FULL and command.makes_package:
                    self.assert_verified(command, where)
            else:
                self.assertEqual(result.code, 1, f"{where}: {result.errors}")
                self.assert_message(command, result, where, why)
                if "in place" in result.errors:
                    self.assert_new(command, now, where)
                elif command.makes_folder:
                    self.assert_whole(command, now, where)
                else:
                    self.assert_old(now, where)
        finally:
            self.restore(everything)


def reason(how):
    """The system's text for an error."""
    number = getattr(errno, how, None)
    return os.strerror(number) if number else None


def main():
    kraddontest.main(verbosity=2)
