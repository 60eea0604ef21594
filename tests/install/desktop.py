# SPDX-License-Identifier: MIT
"""What file managers know of packages: their type, its icon, and their thumbnails."""

import os
import pathlib
import shutil
import struct
import subprocess
import tempfile
import time
import unittest
import xml.etree.ElementTree
import zipfile
import zlib

TYPE = "application/vnd.pellandry.korvan.toolbox"


def png(width, height):
    """A grey image."""
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    packer = zlib.compressobj(1)
    row = b"\0" + b"\x80" * width
    packed = b"".join(packer.compress(row) for _ in range(height)) + packer.flush()
    return (b"\x89PNG\r\n\x1a\n"
            + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0))
            + chunk(b"IDAT", packed) + chunk(b"IEND", b""))


class Desktop(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="kraddon-desktop-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.tree = cls.folder / "tree"
        subprocess.run([os.environ["CMAKE"], "--install", os.environ["KRADDON_BUILD"], "--prefix",
                        cls.tree], check=True, stdout=subprocess.DEVNULL)
        subprocess.run(["update-mime-database", cls.tree / "share/mime"], check=True,
                       capture_output=True)
        cls.package = cls.folder / "p.kraddon"
        (cls.folder / "src").mkdir()
        (cls.folder / "src/a.m").write_text("x = 1;\n", encoding="ascii")
        cls.kraddon("create", cls.package, cls.folder / "src", "--name", "Thumb")

    @classmethod
    def kraddon(cls, *words):
        subprocess.run([cls.tree / "bin/kraddon", *words], check=True, stdout=subprocess.DEVNULL)

    def type_of(self, name):
        """As a file manager determines it, by name and content."""
        shown = subprocess.run(
            ["gio", "info", "-a", "standard::content-type", self.folder / name], check=True,
            capture_output=True, text=True,
            env={**os.environ, "XDG_DATA_HOME": str(self.folder / "none"),
                 "XDG_DATA_DIRS": f"{self.tree}/share:/usr/share"}).stdout
        return shown.split("standard::content-type: ")[1].strip()

    def test_packages_are_recognised_by_name_and_by_their_first_entries(self):
        (self.folder / "empty.kraddon").write_bytes(b"")
        shutil.copy(self.package, self.folder / "unnamed")
        with zipfile.ZipFile(self.folder / "plain", "w") as archive:
            archive.writestr("_rels/.rels", "x")
            archive.writestr("word/document.xml", "metadata")

        self.assertEqual(self.type_of("p.kraddon"), TYPE)
        self.assertEqual(self.type_of("unnamed"), TYPE)
        self.assertEqual(self.type_of("plain"), "application/zip")

    def test_the_type_is_that_which_packages_name(self):
        with zipfile.ZipFile(self.package) as archive:
            self.assertIn(f"<contentType>{TYPE}</contentType>".encode(),
                          archive.read("metadata/hostProperties.xml"))

    def test_the_icon_is_that_of_the_type_and_needs_nothing_else(self):
        icon = (self.tree / "share/icons/hicolor/scalable/mimetypes"
                / f"{TYPE.replace('/', '-')}.svg")
        root = xml.etree.ElementTree.parse(icon).getroot()
        self.assertEqual(root.get("viewBox"), "0 0 128 128")
        names = {element.tag.split("}")[1] for element in root.iter()}
        self.assertLessEqual(names, {"svg", "path"})
        self.assertNotIn("href", icon.read_text(encoding="ascii"))

    def test_the_thumbnailer_is_for_the_type(self):
        lines = (self.tree / "share/thumbnailers/kraddon.thumbnailer").read_text().splitlines()
        self.assertIn(f"MimeType={TYPE};", lines)
        self.assertIn("Exec=/usr/lib/kraddon/thumbnailer %s %i %o", lines)

    def thumbnail(self, package, size="128"):
        """(exit code, the first bytes of the thumbnail, seconds)"""
        image = self.folder / "thumbnail.png"
        image.unlink(missing_ok=True)
        temporary = self.folder / "tmp"
        temporary.mkdir(exist_ok=True)
        begin = time.monotonic()
        done = subprocess.run([self.tree / "lib/kraddon/thumbnailer", size, package, image],
                              capture_output=True, check=False,
                              env={**os.environ, "TMPDIR": str(temporary)})
        took = time.monotonic() - begin
        self.assertEqual(list(temporary.iterdir()), [])
        return done.returncode, image.read_bytes()[:24] if image.exists() else b"", took

    def with_screenshot(self, image):
        (self.folder / "shot.png").write_bytes(image)
        package = self.folder / "shown.kraddon"
        shutil.copy(self.package, package)
        self.kraddon("screenshot", package, self.folder / "shot.png")
        return package

    def test_a_thumbnail_is_the_screenshot_made_smaller(self):
        code, image, _ = self.thumbnail(self.with_screenshot(png(400, 200)))
        self.assertEqual((code, image[:8]), (0, b"\x89PNG\r\n\x1a\n"))
        self.assertEqual(struct.unpack(">II", image[16:]), (128, 64))

    def test_a_package_without_screenshot_or_with_damage_has_none(self):
        code, image, _ = self.thumbnail(self.package)
        self.assertEqual((code != 0, image), (True, b""))
        package = self.with_screenshot(png(400, 200))
        content = package.read_bytes()
        package.write_bytes(content[:-30])
        code, image, _ = self.thumbnail(package)
        self.assertEqual((code != 0, image), (True, b""))

    def test_an_image_that_takes_too_much_has_none(self):
        # Small as a file, but 1.2 GB as pixels.
        code, image, took = self.thumbnail(self.with_screenshot(png(20000, 20000)))
        self.assertEqual((code != 0, image), (True, b""))
        self.assertLess(took, 30)


if __name__ == "__main__":
    unittest.main()
