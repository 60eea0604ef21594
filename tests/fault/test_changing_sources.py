# SPDX-License-Identifier: MIT
"""Files that change while they are packed."""

import os

import faulttest
from faulttest import FaultTest, needs_shim, snapshot

SMALL_SIZE = 3 << 20
LARGE_SIZE = 20 << 20


@needs_shim
class Sources(FaultTest):
    """The program stops before its N-th read, the file changes, and the program continues."""

    def stop_at_read(self, number, *words):
        return self.start_stopped(f"read:{number}:SIGSTOP", *words)

    def each_read(self, size):
        """Yields the program stopped before each of its reads, with the original file."""
        number = 0
        while True:
            number += 1 if size == SMALL_SIZE or faulttest.FULL else 9
            self.write("src/changing.bin", os.urandom(size))
            process = self.stop_at_read(number, "create", "new.kraddon", "src", "--name", "x")
            if process.returncode is not None:
                self.assertEqual(process.returncode, 0)
                self.path("new.kraddon").unlink()
                return
            yield number, process

    def check(self, process, allowed, where):
        """Refused by name, leaving nothing, or valid with one of the contents."""
        code, errors = self.go_on(process)
        self.assertNotIn("report", self.names())
        if code == 0:
            packed = self.entries("new.kraddon")["files/changing.bin"]
            self.assertTrue(allowed(packed), f"{where}: {len(packed)} bytes of neither content")
            self.path("new.kraddon").unlink()
        else:
            self.assertEqual(code, 1, errors)
            self.assertIn("changing.bin", errors, where)
        self.assertEqual(self.names(), ["src"], where)

    def change_at_each_read(self, change, allowed):
        for size in (SMALL_SIZE, LARGE_SIZE):
            for number, process in self.each_read(size):
                old = self.path("src/changing.bin").read_bytes()
                change(size)
                new = self.path("src/changing.bin")
                new = new.read_bytes() if new.exists() else b""
                self.check(process, lambda packed, old=old, new=new: allowed(packed, old, new),
                           f"{size} bytes, read {number}")

    def test_that_shrink_are_refused_or_packed_as_they_were_read(self):
        self.change_at_each_read(
            lambda size: os.truncate(self.path("src/changing.bin"), size // 3),
            lambda packed, old, new: old.startswith(packed) and len(packed) >= len(new))

    def test_that_grow_are_refused_or_packed_as_they_were_read(self):
        def grow(size):
            with open(self.path("src/changing.bin"), "ab") as file:
                file.write(os.urandom(size))

        self.change_at_each_read(
            grow, lambda packed, old, new: new.startswith(packed) and len(packed) >= len(old))

    def test_that_vanish_are_refused_or_packed_as_they_were_read(self):
        self.change_at_each_read(
            lambda size: self.path("src/changing.bin").unlink(),
            lambda packed, old, new: packed == old)

    def test_that_are_replaced_are_refused_or_packed_as_either(self):
        def replace(size):
            self.write("other.bin", os.urandom(size // 2))
            os.replace(self.path("other.bin"), self.path("src/changing.bin"))

        self.change_at_each_read(replace, lambda packed, old, new: packed in (old, new))

    def test_an_image_that_shrinks_leaves_the_old_package_or_a_sound_new_one(self):
        self.make_inputs()
        for number in range(1, 20):
            self.write("pixel.png", faulttest.PIXEL + os.urandom(100_000))
            self.before = snapshot(self.folder)
            process = self.stop_at_read(number, "screenshot", "p.kraddon", "pixel.png")
            if process.returncode is not None:
                break
            os.truncate(self.path("pixel.png"), 60_000)
            code, errors = self.go_on(process)
            if code == 0:
                self.assert_sound("p.kraddon")
                self.assertEqual(self.listing(), ["a.m", "big.bin", "empty", "sub/b.m"])
            else:
                self.assertIn("pixel.png", errors)
                self.assertEqual(snapshot(self.folder)["p.kraddon"], self.before["p.kraddon"])
            self.restore()
        self.assertGreater(number, 2)


if __name__ == "__main__":
    faulttest.main()
