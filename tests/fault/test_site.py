# SPDX-License-Identifier: MIT
"""A site whose change is killed, or fails, at any moment: the old one or the new one, whole."""

import os
import random
import shutil
import signal
import subprocess
import sys

import faulttest
from cataloguetest import GUID, CatalogueTest
from faulttest import FaultTest, needs_shim

FAMILIES = ("open,nameless,write,copy,sync,foldersync,rename,renamekeeping,link,truncate,close,"
            "unlink,attribute,folder")
FAILING = [("nameless", "EIO"), ("write", "ENOSPC"),
           ("copy", "EIO"), ("sync", "EIO"), ("foldersync", "EIO"), ("rename", "EIO"),
           ("link", "ENOSPC"), ("folder", "ENOSPC")]


class SiteTest(CatalogueTest, FaultTest):

    def make_packages(self):
        for i in range(3):
            self.addon(f"p{i}.kraddon", f"Kit {i}", "1.0", i)
        self.addon("other.kraddon", "Kit 0", "1.0", 0, content="other")
        self.write("pixel.png", faulttest.PIXEL)
        self.ok("screenshot", "other.kraddon", "pixel.png", *faulttest.TIME)

    def commands(self):
        """Each with whether there is a site before."""
        return [(False, ["p0.kraddon", "p1.kraddon"]),
                (True, ["p2.kraddon", "other.kraddon", "--remove", f"{GUID.format(0)}@1.0",
                        "--yank", f"{GUID.format(1)}@1.0"])]

    def restore_site(self, is_there):
        shutil.rmtree(self.path("site"), ignore_errors=True)
        if is_there:
            shutil.copytree(self.path("old"), self.path("site"))

    def learn_sites(self):
        self.make_packages()
        self.index("p0.kraddon", "p1.kraddon", site="old")

    def expected(self, is_there, words):
        self.restore_site(is_there)
        old = self.records() if is_there else {}
        self.index(*words)
        return old, self.records()

    def words(self, words):
        return ["index", "site", *words, *faulttest.TIME, "--quiet"]

    def assert_old_or_new(self, old, new, where):
        """What the root names is whole, and that of the old root or the new one."""
        if not self.path("site/root.json").exists():
            self.assertEqual(old, {}, where)
            return
        self.assertIn(self.records(is_complete=False), (old, new), where)

    def assert_goes_on(self, words, new, where):
        again = self.run_kraddon(*self.words(words))
        self.assertEqual((again.code, again.errors), (0, ""), f"{where}, then once more")
        self.assertEqual(self.records(), new, where)
        self.assert_hashed()


@needs_shim
class AtEveryCall(SiteTest):

    def sweep(self, families, how, stride, check):
        for is_there, words in self.commands():
            old, new = self.expected(is_there, words)
            at = random.randrange(stride) + 1
            while True:
                where = f"{words[0]}, {how} at {families}:{at}"
                self.restore_site(is_there)
                result = self.run_failing(f"{families}:{at}:{how}", *self.words(words))
                if not self.hit:
                    self.assertEqual(result.code, 0, f"{where}: {result.errors}")
                    break
                self.assert_old_or_new(old, new, where)
                check(result, where)
                self.assert_goes_on(words, new, where)
                at += stride

    def test_a_kill_leaves_the_old_site_or_the_new_one(self):
        self.learn_sites()
        stride = 1 if faulttest.FULL else 13
        for number in (signal.SIGKILL, signal.SIGTERM):
            with self.subTest(signal=number.name):
                self.sweep(FAMILIES, number.name, stride, lambda result, where: self.assertIn(
                    result.code, (-number, 0), f"{where}: {result.errors}"))

    def test_a_call_that_fails_leaves_the_old_site_or_the_new_one(self):
        def check(result, where):
            self.assertIn(result.code, (0, 1), f"{where}: {result.errors}")
            if result.code == 1:
                self.assertTrue(result.errors.startswith("kraddon: index: "), where)

        self.learn_sites()
        for families, how in FAILING:
            with self.subTest(families=families):
                self.sweep(families, how, 1 if faulttest.FULL else 9, check)

    def test_a_package_that_cannot_be_read_is_refused_alone(self):
        self.learn_sites()
        refused = 0
        for families in ("open", "read", "status"):
            at = 1
            while True:
                self.restore_site(False)
                result = self.run_failing(f"{families}:{at}:EIO", "index", "site", "p0.kraddon",
                                          "p1.kraddon", *faulttest.TIME)
                if not self.hit:
                    break
                refused += "kraddon: index: cannot" in result.errors
                if self.path("site/root.json").exists():
                    self.records(is_complete=False)
                at += 1 if faulttest.FULL else 5
        self.assertGreater(refused, 0)


class Disk(SiteTest):
    """A small file system that only this process and its children see."""

    def test_that_is_full_leaves_the_old_site_or_the_new_one(self):
        if os.environ.get("KRADDON_FAULT_MOUNTED") != "1":
            self.run_in_namespace()
            return
        self.folder = self.scratch / "disk"
        self.folder.mkdir()
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=2000K", "none", self.folder], check=True)
        self.addCleanup(subprocess.run, ["umount", self.folder], check=True)
        self.learn_sites()
        for is_there, words in self.commands():
            old, new = self.expected(is_there, words)
            failures = 0
            for room in range(0, 400 << 10, (4 if faulttest.FULL else 28) << 10):
                self.restore_site(is_there)
                free = os.statvfs(self.folder)
                self.write("ballast", b"x" * max(0, free.f_bavail * free.f_frsize - room))
                failures += self.run_kraddon(*self.words(words)).code != 0
                self.path("ballast").unlink()
                self.assert_old_or_new(old, new, f"{room} bytes free")
                self.assert_goes_on(words, new, f"{room} bytes free")
            self.assertGreater(failures, 1)

    def run_in_namespace(self):
        mount = ["unshare", "-rm", "mount", "-t", "tmpfs", "none", "/mnt"]
        if shutil.which("unshare") is None or subprocess.run(mount, capture_output=True,
                                                             check=False).returncode != 0:
            self.skipTest("needs permission to mount: root, or user namespaces")
        done = subprocess.run(["unshare", "-rm", sys.executable, "-B", __file__, self.id()[9:]],
                              env={**os.environ, "KRADDON_FAULT_MOUNTED": "1"},
                              capture_output=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr.decode())
        self.assertIn(b"OK", done.stderr)


if __name__ == "__main__":
    faulttest.main()
