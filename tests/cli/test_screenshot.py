# SPDX-License-Identifier: MIT
"""kraddon screenshot"""

import fcntl
import os
import signal
import subprocess
import time
import zipfile

import kraddontest

PNG = b"\x89PNG\r\n\x1a\n" + bytes(range(256)) * 9
JPEG = b"\xff\xd8\xff\xe0" + bytes(range(255, -1, -1)) * 7


class Screenshot(kraddontest.CliTest):

    def setUp(self):
        super().setUp()
        self.package("p.kraddon", {"a.m": "x"})
        self.write("shot.png", PNG)
        self.write("shot.JPEG", JPEG)

    def info(self):
        return self.ok("info", "p.kraddon", "--json").json["screenshot"]

    def test_the_image_comes_back_byte_for_byte(self):
        before = self.entries()
        self.assertEqual(self.ok("screenshot", "p.kraddon", "shot.png").out, b"")
        after = self.entries()
        self.assertEqual(after["metadata/primaryScreenShot.png"], PNG)
        self.assertEqual(after["files/a.m"], before["files/a.m"])

        self.assertEqual(self.ok("screenshot", "p.kraddon", "-o", "-").out, PNG)
        self.assertEqual(self.ok("screenshot", "p.kraddon", "-o", "x.bin").out, b"")
        self.assertEqual(self.path("x.bin").read_bytes(), PNG)
        self.ok("screenshot", "p.kraddon")
        self.assertEqual(self.path("p.png").read_bytes(), PNG)
        self.assert_sound()

    def test_the_default_name_is_in_the_current_folder(self):
        self.path("deep").mkdir()
        self.path("p.kraddon").rename(self.path("deep/kit.v1.kraddon"))
        self.ok("screenshot", "deep/kit.v1.kraddon", "shot.JPEG")
        self.ok("screenshot", "deep/kit.v1.kraddon")
        self.assertEqual(self.path("kit.v1.jpg").read_bytes(), JPEG)
        self.assertEqual(self.names("deep"), ["kit.v1.kraddon"])

    def with_part(self, name, content, kind="image/png"):
        """The package 'q.kraddon', whose screenshot is that part."""
        self.ok("screenshot", "p.kraddon", "shot.png")
        entries = {"metadata/" + name if "ScreenShot" in item else item:
                   content if "ScreenShot" in item else text.replace(
                       b"/metadata/primaryScreenShot.png", f"/metadata/{name}".encode()).replace(
                       b"</Types>", f'<Override PartName="/metadata/{name}" ContentType="{kind}"/>'
                       "</Types>".encode())
                   for item, text in self.entries().items()}
        with zipfile.ZipFile(self.path("q.kraddon"), "w") as archive:
            for item, text in entries.items():
                archive.writestr(item, text)

    def test_the_default_suffix_is_that_of_the_bytes(self):
        for suffix, content in (("png", PNG), ("jpg", JPEG), ("gif", b"GIF89a...."),
                                ("bmp", b"BM....\0\0\0\0...."), ("tiff", b"II*\0...."),
                                ("webp", b"RIFF....WEBPVP8 ")):
            self.with_part("x.desktop", content)
            self.ok("screenshot", "q.kraddon")
            self.assertEqual(self.path(f"q.{suffix}").read_bytes(), content)
        self.assertFalse(self.path("q.desktop").exists())

    def test_what_is_not_an_image_is_written_only_to_a_named_file(self):
        for name in ("x.desktop", "x.png"):
            for content in (b"[Desktop Entry]", b"", b"\x89PNG"):
                self.with_part(name, content)
                known = self.names()
                self.fails("screenshot", "q.kraddon",
                           message="cannot write the screenshot of 'q.kraddon': it is not an image",
                           hint="-o FILE writes its bytes all the same")
                self.assertEqual(self.names(), known)
                self.ok("screenshot", "q.kraddon", "-o", "shot.bin")
                self.assertEqual(self.path("shot.bin").read_bytes(), content)
                self.assertEqual(self.ok("screenshot", "q.kraddon", "-o", "-").out, content)
                self.path("shot.bin").unlink()

    def test_info_shows_part_type_and_size(self):
        self.assertIsNone(self.info())
        for name, part, kind, image in (
                ("a.png", "png", "png", PNG), ("b.GIF", "GIF", "gif", b"GIF89a"),
                ("c.tiff", "tiff", "tiff", b"II*\0"), ("d.bmp", "bmp", "bmp", b"BM...." + bytes(8)),
                ("e.jpeg", "jpg", "jpeg", JPEG), ("f.jpe", "jpg", "jpeg", JPEG),
                ("none", "jpg", "jpeg", JPEG)):
            self.write(name, image + name.encode())
            self.ok("screenshot", "p.kraddon", name)
            self.assertEqual(self.info(), {"part": f"/metadata/primaryScreenShot.{part}",
                                           "type": f"image/{kind}",
                                           "size": len(image) + len(name)})
            self.assertEqual(self.ok("screenshot", "p.kraddon", "-o-").out, image + name.encode())
        self.assertIn("screenshot    /metadata/primaryScreenShot.jpg, image/jpeg, 1800 bytes\n",
                      self.ok("info", "p.kraddon").text)

    def test_the_part_is_spelled_as_the_package_has_it(self):
        self.ok("screenshot", "p.kraddon", "shot.png")
        entries = self.entries()
        entries["_rels/.rels"] = entries["_rels/.rels"].replace(b"/metadata/primaryScreenShot.png",
                                                                b"/Metadata/PRIMARYScreenShot.png")
        with zipfile.ZipFile(self.path("p.kraddon"), "w") as archive:
            for name, content in entries.items():
                archive.writestr(name, content)

        self.assertEqual(self.info()["part"], "/metadata/primaryScreenShot.png")
        self.assertEqual(self.ok("screenshot", "p.kraddon", "-o", "-").out, PNG)
        self.ok("unset", "-q", "p.kraddon", "screenshot")
        self.assertNotIn("metadata/primaryScreenShot.png", self.entries())

    def test_a_jpg_takes_the_place_of_a_png(self):
        self.ok("screenshot", "p.kraddon", "shot.png")
        self.ok("screenshot", "p.kraddon", "shot.JPEG")
        images = {name: content for name, content in self.entries().items()
                  if "ScreenShot" in name}
        self.assertEqual(images, {"metadata/primaryScreenShot.jpg": JPEG})
        self.assertEqual(self.ok("screenshot", "p.kraddon", "-o", "-").out, JPEG)
        self.assert_sound()

    def test_the_gateway_stores_the_same(self):
        self.path("q.kraddon").write_bytes(self.path("p.kraddon").read_bytes())
        self.ok("screenshot", "p.kraddon", "shot.png", "--timestamp", "1000000000")
        self.ok("call", "addonSetScreenshot", "q.kraddon", "shot.png")
        self.assertEqual(self.entries("p.kraddon"), self.entries("q.kraddon"))

    def test_a_package_without_one_is_an_error(self):
        for words in ((), ("-o", "x.png"), ("-o", "-")):
            self.fails("screenshot", "p.kraddon", *words,
                       message="cannot write the screenshot of 'p.kraddon': it has none",
                       hint="'kraddon screenshot PACKAGE IMAGE' stores one")
        self.assertEqual(self.names(), ["p.kraddon", "p.kraddon.src", "shot.JPEG", "shot.png"])

    def test_a_bad_image_is_reported_before_the_package_is_looked_at(self):
        self.path("folder.png").mkdir()
        os.mkfifo(self.path("pipe.png"))
        for image, why in (("none.png", "No such file or directory"),
                           ("folder.png", "Is a directory"), ("pipe.png", "it is not a file"),
                           ("shot.png/x", "Not a directory")):
            self.fails("screenshot", "missing.kraddon", image,
                       message=f"cannot read '{image}': {why}")
        self.fails("screenshot", "missing.kraddon", b"caf\xe9.png")

    def test_an_image_that_may_not_be_read_is_reported(self):
        self.path("shot.png").chmod(0)
        if os.access(self.path("shot.png"), os.R_OK):
            self.skipTest("nothing is unreadable to this user")
        self.fails("screenshot", "missing.kraddon", "shot.png",
                   message="cannot read 'shot.png': Permission denied")

    def test_a_failure_changes_nothing(self):
        self.ok("screenshot", "p.kraddon", "shot.png")
        before = self.path("p.kraddon").read_bytes()
        self.fails("screenshot", "p.kraddon", "none.png")
        self.fails("screenshot", "missing.kraddon", "shot.png",
                   message="cannot open package 'missing.kraddon': No such file or directory")
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)

    def test_wrong_words_are_wrong_usage(self):
        self.misused("screenshot", "p.kraddon", "shot.png", "-o", "x.png",
                     message="bad option '--output': it cannot be combined with IMAGE")
        self.misused("screenshot", "p.kraddon", "-",
                     message="bad value '-': IMAGE is a file; -o - is standard output")
        self.misused("screenshot", "p.kraddon", "--level", "3",
                     message="bad option '--level': it needs IMAGE")
        self.misused("screenshot", "p.kraddon", "--timestamp", "3",
                     message="bad option '--timestamp': it needs IMAGE")
        self.misused("screenshot", "p.kraddon", "shot.png", "--level", "12",
                     message="bad value of --level '12': expected a whole number from 0 to 9")
        self.misused("screenshot", "p.kraddon", "a.png", "b.png",
                     message="unexpected operand 'b.png': the command takes no more")
        self.misused("screenshot", message="missing operand 'PACKAGE': the package")

    def test_a_file_that_nobody_named_is_not_replaced(self):
        self.ok("screenshot", "p.kraddon", "shot.png")
        self.write("p.png", "precious")
        self.fails("screenshot", "p.kraddon", message="cannot write 'p.png': it already exists",
                   hint="-o p.png replaces it")
        self.assertEqual(self.path("p.png").read_text(), "precious")
        self.ok("screenshot", "p.kraddon", "-o", "p.png")
        self.assertEqual(self.path("p.png").read_bytes(), PNG)

    def test_what_is_not_a_file_is_not_said_to_be_replaceable(self):
        self.ok("screenshot", "p.kraddon", "shot.png")
        for command, name in (("screenshot", "p.png"), ("preview", "p.html")):
            self.path(name).mkdir()
            self.fails(command, "p.kraddon", message=f"cannot write '{name}': it is a folder")
        self.path("p.png").rmdir()
        os.mkfifo(self.path("p.png"))
        self.fails("screenshot", "p.kraddon", message="cannot write 'p.png': it already exists")

    def test_an_existing_output_is_replaced_whole(self):
        self.ok("screenshot", "p.kraddon", "shot.png")
        self.write("x.png", "old" * 10000)
        self.path("x.png").chmod(0o600)
        self.path("link.png").symlink_to("x.png")
        self.ok("screenshot", "p.kraddon", "-o", "link.png")
        self.assertEqual(self.path("x.png").read_bytes(), PNG)
        self.assertEqual(self.path("x.png").stat().st_mode & 0o777, 0o600)
        self.assertTrue(self.path("link.png").is_symlink())

    def test_output_that_cannot_be_written_is_a_failure(self):
        self.ok("screenshot", "p.kraddon", "shot.png")
        known = self.names()
        before = self.path("p.kraddon").read_bytes()
        self.fails("screenshot", "p.kraddon", "-o", "p.kraddon",
                   message="cannot write 'p.kraddon': it is the package itself")
        self.fails("screenshot", "p.kraddon", "-o", "no/x.png",
                   message="cannot write 'no/x.png': No such file or directory")
        self.fails("screenshot", "p.kraddon", "-o", "/dev/full",
                   message="cannot write '/dev/full': No space left on device")
        self.assertEqual((self.names(), self.path("p.kraddon").read_bytes()), (known, before))

    def test_a_damaged_image_leaves_no_output(self):
        self.ok("screenshot", "p.kraddon", "shot.png", "--level", "0")
        content = self.path("p.kraddon").read_bytes()
        self.path("p.kraddon").write_bytes(content.replace(PNG, PNG[:-1] + b"x"))
        known = self.names()
        self.fails("screenshot", "p.kraddon")
        self.assertEqual(self.names(), known)

    def test_time_and_level_are_those_asked_for(self):
        self.ok("screenshot", "p.kraddon", "shot.png", "--timestamp", "1000000000",
                "--level", "0")
        entry = [each for each in
                 self.ok("list", "p.kraddon", "--all", "-l", "--json").json["entries"]
                 if each["path"] == "/metadata/primaryScreenShot.png"][0]
        self.assertEqual((entry["time"], entry["method"], entry["size"]),
                         ("2001-09-09T01:46:40Z", "store", len(PNG)))

    def test_it_waits_its_turn_and_can_be_interrupted_meanwhile(self):
        before = self.path("p.kraddon").read_bytes()
        with open(self.path(".p.kraddon.change.tmp"), "wb") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            process = subprocess.Popen([kraddontest.KRADDON, "screenshot", "p.kraddon",
                                        "shot.png"], cwd=self.folder)
            time.sleep(0.3)
            self.assertIsNone(process.poll())
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(60), -signal.SIGINT)
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)

    def test_an_interrupt_while_it_is_written_leaves_what_was_there(self):
        block = os.urandom(1 << 20)
        self.write("big.png", PNG + block * 120)
        before = self.path("p.kraddon").read_bytes()
        known = set(self.names())
        process = subprocess.Popen([kraddontest.KRADDON, "screenshot", "p.kraddon", "big.png",
                                    "--level", "9"], cwd=self.folder)
        end = time.monotonic() + 60
        while process.poll() is None and not self.is_writing(process):
            self.assertLess(time.monotonic(), end)
            time.sleep(0.001)
        self.assertIsNone(process.poll(), "it was through before it could be interrupted")
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(60), -signal.SIGTERM)
        self.assertEqual(self.path("p.kraddon").read_bytes(), before)
        self.assertEqual(set(self.names()), known)

    def test_an_interrupt_while_it_is_written_out_leaves_no_half_file(self):
        self.write("big.png", PNG + os.urandom(1 << 20) * 250)
        self.ok("screenshot", "p.kraddon", "big.png", "--level", "1")
        known = set(self.names())
        process = subprocess.Popen([kraddontest.KRADDON, "screenshot", "p.kraddon"],
                                   cwd=self.folder)
        end = time.monotonic() + 60
        while process.poll() is None and not self.is_writing(process):
            self.assertLess(time.monotonic(), end)
            time.sleep(0.0005)
        process.send_signal(signal.SIGINT)
        if process.wait(60) == 0:
            self.skipTest("it was through before it could be interrupted")
        self.assertEqual(process.returncode, -signal.SIGINT)
        self.assertEqual(set(self.names()), known)


if __name__ == "__main__":
    kraddontest.main()
