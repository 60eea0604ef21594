# SPDX-License-Identifier: MIT
"""Access control lists, owners and attributes of files that a command replaces."""

import json
import os
import shutil
import stat
import subprocess
import tempfile
import unittest

import kraddontest
from kraddontest import NOBODY

PIXEL = bytes.fromhex(
    "89504e470d0a1a0a0000000d49484452000000010000000108060000001f15c489"
    "0000000d49444154789c63f8cfc0f01f00050001ff5a9ae1d30000000049454e44ae426082")
PROJECT = """[package]
name = "Wave Tools"
version = "1.2"
summary = "Short-time spectra"
author = "Ada Lind"
"""
LICENSE = json.dumps({"type": "MIT", "text": "terms"})
COMMANDS = {
    "create": ["create", "p.kraddon", "src", "--name", "x", "--force"],
    "build": ["build", "project", "-o", "p.kraddon", "--force", "--no-verify"],
    "set": ["set", "p.kraddon", "properties", "summary=other"],
    "unset": ["unset", "p.kraddon", "license", "-q"],
    "screenshot": ["screenshot", "p.kraddon", "pixel.png"],
    "add": ["add", "p.kraddon", "src/a.m", "--into", "more"],
    "remove": ["remove", "p.kraddon", "a.m", "-q"],
    "mv": ["mv", "p.kraddon", "a.m", "z.m", "-q"],
    "mkdir": ["mkdir", "p.kraddon", "a/new/folder"],
    "call": ["call", "addonSetLicense", "p.kraddon", LICENSE],
}
OUTPUTS = {
    "get": ["get", "p.kraddon", "license", "-o", "out"],
    "screenshot -o": ["screenshot", "p.kraddon", "-o", "out"],
    "preview": ["preview", "p.kraddon", "-o", "out"],
    "sbom": ["sbom", "p.kraddon", "-o", "out"],
}
REPLACING = ([(name, words, "p.kraddon") for name, words in COMMANDS.items()] +
             [(name, words, "out") for name, words in OUTPUTS.items()])


def has_lists(folder):
    """Whether the tools are there, and the file system of the folder has lists."""
    if shutil.which("setfacl") is None:
        return False
    with tempfile.NamedTemporaryFile(dir=folder) as file:
        done = subprocess.run(["setfacl", "-m", f"u:{NOBODY}:r", file.name], capture_output=True,
                              check=False)
    return done.returncode == 0


def has_attributes(folder):
    with tempfile.NamedTemporaryFile(dir=folder) as file:
        try:
            os.setxattr(file.name, "user.kraddon", b"x")
        except OSError:
            return False
    return True


class Replaced:
    """Each test runs on the file system of one folder."""

    parent = None

    def setUp(self):
        if not os.access(self.parent, os.W_OK):
            self.skipTest(f"needs {self.parent}")
        before, tempfile.tempdir = tempfile.tempdir, self.parent
        super().setUp()
        tempfile.tempdir = before
        self.tree({"a.m": "disp(1)"})
        self.write("pixel.png", PIXEL)
        self.write("project/kraddon.toml", PROJECT)
        self.ok("create", "p.kraddon", "src", "--name", "Wave Tools")
        self.ok("set", "p.kraddon", "license", "text=first")
        self.ok("screenshot", "p.kraddon", "pixel.png")
        self.content = self.path("p.kraddon").read_bytes()

    def make(self, mode=0o640):
        for name in ("p.kraddon", "out"):
            self.path(name).unlink(missing_ok=True)
        self.write("p.kraddon", self.content).chmod(mode)
        self.write("out", "old").chmod(mode)

    def need_lists(self):
        if not has_lists(self.folder):
            self.skipTest("needs setfacl, and a file system with access control lists")

    def set_list(self, entries, name, *options):
        subprocess.run(["setfacl", *options, "-m", entries, self.path(name)], check=True)

    def list_of(self, name):
        done = subprocess.run(["getfacl", "-cnE", self.path(name)], capture_output=True, check=True)
        return done.stdout.decode().split()

    def assert_replaced(self, name, inode):
        self.assertNotEqual(self.path(name).stat().st_ino, inode)

    def test_file_keeps_its_list(self):
        self.need_lists()
        for name, words, target in REPLACING:
            with self.subTest(command=name):
                self.make()
                self.set_list(f"u:{NOBODY}:rw,g::-,g:12345:r,m::rw", target)
                before, inode = self.list_of(target), self.path(target).stat().st_ino
                self.assertIn("group::---", before)

                self.ok(*words)

                self.assert_replaced(target, inode)
                self.assertEqual(self.list_of(target), before)

    def test_file_gets_no_list_from_its_folder(self):
        self.need_lists()
        for name, words, target in REPLACING:
            with self.subTest(command=name):
                subprocess.run(["setfacl", "-k", self.folder], check=True)
                self.make(0o660)
                self.set_list(f"u:{NOBODY}:rw,m::rw", ".", "-d")
                before = self.list_of(target)

                self.ok(*words)

                self.assertEqual(self.list_of(target), before)
                self.assertEqual(len(before), 3)

    def test_new_file_gets_the_list_of_its_folder(self):
        self.need_lists()
        self.make()
        self.set_list(f"u:{NOBODY}:rw,g::r,m::rwx", ".", "-d")
        self.write("touched")
        for words, target in ((COMMANDS["create"], "p.kraddon"), (OUTPUTS["get"], "out")):
            with self.subTest(command=words[0]):
                words = ["new" if word == target else word for word in words]
                self.path("new").unlink(missing_ok=True)

                self.ok(*words)

                self.assertEqual(self.list_of("new"), self.list_of("touched"))

    def test_file_keeps_its_attributes(self):
        if not has_attributes(self.folder):
            self.skipTest("needs a file system with attributes of users")
        for name, words, target in REPLACING:
            with self.subTest(command=name):
                self.make(0o440)
                self.path(target).chmod(0o640)
                os.setxattr(self.path(target), "user.origin", b"\0there\xff")
                os.setxattr(self.path(target), "user.large", b"x" * 1000)
                inode = self.path(target).stat().st_ino

                self.ok(*words)

                self.assert_replaced(target, inode)
                found = {name: os.getxattr(self.path(target), name)
                         for name in os.listxattr(self.path(target)) if name.startswith("user.")}
                self.assertEqual(found, {"user.origin": b"\0there\xff", "user.large": b"x" * 1000})

    def as_somebody(self, groups=()):
        """Words for run_kraddon() for a user who does not own the file, but may replace it."""
        if os.geteuid() != 0:
            self.skipTest("needs root, to own files of several users")
        self.folder.chmod(0o777)
        return {**self.without_privilege(), "extra_groups": list(groups)}

    def assert_rights(self, target, mode, owner, group):
        status = self.path(target).stat()
        self.assertEqual((oct(stat.S_IMODE(status.st_mode)), status.st_uid, status.st_gid),
                         (oct(mode), owner, group))

    def test_file_whose_group_cannot_be_kept_widens_nothing(self):
        somebody = self.as_somebody()
        for name, words, target in REPLACING:
            with self.subTest(command=name):
                for mode, expected in ((0o666, 0o666), (0o676, 0o666), (0o606, 0o600),
                                       (0o6777, 0o777)):
                    self.make(mode)
                    os.chown(self.path(target), 12345, 12345)
                    self.path(target).chmod(mode)

                    self.ok(*words, **somebody)

                    self.assert_rights(target, expected, NOBODY, NOBODY)

    def test_file_whose_owner_cannot_be_kept_keeps_the_group(self):
        somebody = self.as_somebody(groups=[12345])
        for name, words, target in REPLACING:
            with self.subTest(command=name):
                self.make()
                os.chown(self.path(target), 1, 12345)
                self.path(target).chmod(0o664)
                self.path("p.kraddon").chmod(0o664)

                self.ok(*words, **somebody)

                self.assert_rights(target, 0o664, NOBODY, 12345)

    def test_list_whose_group_cannot_be_kept_widens_nothing(self):
        self.need_lists()
        somebody = self.as_somebody()
        for name, words, target in REPLACING:
            with self.subTest(command=name):
                self.make()
                self.path("p.kraddon").chmod(0o666)
                self.set_list(f"u::rw,u:{NOBODY}:rw,g::rw,g:54321:r,m::rw,o::-", target)

                self.ok(*words, **somebody)

                self.assertEqual(self.list_of(target),
                                 ["user::rw-", f"user:{NOBODY}:rw-", "group::---", "group:54321:r--",
                                  "mask::rw-", "other::---"])

    def test_file_in_a_folder_that_gives_its_group_keeps_its_own(self):
        if os.geteuid() != 0:
            self.skipTest("needs root, to own files of several groups")
        os.chown(self.folder, 0, 12345)
        self.folder.chmod(0o2755)
        for name, words, target in REPLACING:
            with self.subTest(command=name):
                self.make(0o660)
                os.chown(self.path(target), 0, 0)

                self.ok(*words)

                self.assert_rights(target, 0o660, 0, 0)


class OnDisk(Replaced, kraddontest.CliTest):
    parent = tempfile.gettempdir()


class InMemory(Replaced, kraddontest.CliTest):
    parent = "/dev/shm"


if __name__ == "__main__":
    kraddontest.main()
