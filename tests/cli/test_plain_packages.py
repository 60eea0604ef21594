# SPDX-License-Identifier: MIT
"""What usual programs write is clean to `kraddon verify`: an add-on that they unpacked and packed
again has nothing that readers of ZIP files could disagree on."""

import io
import shutil
import subprocess
import zipfile

import test_hostile
import test_hostile_readers


class PlainPackages(test_hostile_readers.ReadersTest):

    def setUp(self):
        super().setUp()
        for name, content in (("a.m", b"a" * 5000), ("x/b.m", b""), ("x/y/c.bin", bytes(range(256))),
                              ("gr\u00f6\u00dfe.m", b"umlaut"), ("a b.m", b"blank")):
            self.write(f"tree/{name}", content)
        self.ok("create", "made.kraddon", "tree", "--name", "Plain")
        with zipfile.ZipFile(self.folder / "made.kraddon") as container:
            container.extractall(self.folder / "unpacked")
            self.entries = {name: container.read(name) for name in container.namelist()}

    def put_packed(self, *words, **more):
        """By a program that packs what lies in the folder with the unpacked package."""
        target = self.sandbox / "p.kraddon"
        target.unlink(missing_ok=True)
        if not shutil.which(words[0]):
            self.skipTest(f"needs {words[0]}")
        subprocess.run([word.replace("TARGET", str(target)) for word in words], check=True,
                       cwd=self.folder / "unpacked", capture_output=True, **more)

    def test_of_the_program(self):
        self.put((self.folder / "made.kraddon").read_bytes())
        self.passed()

    def test_of_zip(self):
        for options in (("-r",), ("-rD",), ("-r0",), ("-rfd",), ("-rX",), ("-rfz",)):
            with self.subTest(options):
                self.put_packed("zip", "-q", *options, "TARGET", ".")
                self.passed()

    def test_of_zip_in_a_pipe(self):
        for options in ("-r", "-r0"):
            with self.subTest(options):
                self.put_packed("sh", "-c", f"zip -q {options} - . | cat > TARGET")
                self.passed()

    def test_of_7z(self):
        for options in ((), ("-mx=0",)):
            with self.subTest(options):
                self.put_packed("7z", "a", "-tzip", *options, "TARGET", "./*")
                self.passed()

    def test_of_bsdtar(self):
        self.put_packed("sh", "-c", "bsdtar -c --format zip -f TARGET *")
        self.passed()
        for options in ("", "--options zip:compression=store"):
            with self.subTest(options):
                self.put_packed("sh", "-c",
                                f"bsdtar -c --format zip {options} -f - * | cat > TARGET")
                # It fills the last block with zeros.
                found, _ = self.findings()
                self.assertEqual([(finding["id"], finding["severity"]) for finding in found
                                  if finding["id"] < "KR300" or finding["id"] == "KR411"],
                                 [("KR102", "warning")])

    def test_of_jar(self):
        self.put_packed("jar", "cfM", "TARGET", ".")
        self.passed()

    def test_of_zipfile(self):
        for method in (zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED):
            for target in (io.BytesIO, Unseekable):
                for is_wide in (False, True):
                    with self.subTest((method, target, is_wide)):
                        if (method, target, is_wide) == (zipfile.ZIP_DEFLATED, Unseekable, True):
                            del self.entries["files/x/b.m"]  # the next case
                        self.put(self.by_zipfile(target(), method, is_wide))
                        self.passed()

    def test_of_zipfile_with_an_empty_file_in_front_of_64_bit_sizes_is_an_error(self):
        # Java's ZipInputStream loses what follows it.
        self.put(self.by_zipfile(Unseekable(), zipfile.ZIP_DEFLATED, True))
        found, _ = self.findings()
        self.assertEqual([(finding["id"], finding["part"]) for finding in found
                          if finding["severity"] == "error"], [("KR113", "files/x/b.m")])

    def by_zipfile(self, target, method, is_wide):
        with zipfile.ZipFile(target, "w", method) as container:
            container.write(self.folder / "unpacked" / "files", "files")
            for name, content in self.entries.items():
                with container.open(name, "w", force_zip64=is_wide) as entry:
                    entry.write(content)
        return target.getvalue()


class Unseekable:
    """A file that can only be appended to, so that sizes have to follow the content."""

    def __init__(self):
        self.content = bytearray()

    def write(self, content):
        self.content += content
        return len(content)

    def flush(self):
        pass

    def getvalue(self):
        return bytes(self.content)


if __name__ == "__main__":
    test_hostile.kraddontest.main()
