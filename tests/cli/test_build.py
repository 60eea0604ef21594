# SPDX-License-Identifier: MIT
"""kraddon build: from a manifest to a package, and findings that stop it."""

import os
import signal
import subprocess
import time
import uuid
import xml.etree.ElementTree
import zipfile

import kraddontest
import projecttest
from kraddontest import KRADDON
from projecttest import FULL_FILES, FULL_LISTING, PACKAGE


class Documents(projecttest.ProjectTest):

    def get(self, document, name=PACKAGE):
        return self.ok("get", name, document).json

    def test_every_key_ends_in_its_document(self):
        self.full_project()

        self.ok("build")

        guid = "6f0c1c1e-7d0e-4f0b-9a51-0b6f2d3c4e5f"
        self.assertEqual(self.get("properties"), {
            "type": "Korvan Toolbox", "name": "Wave Tools", "version": "1.2",
            "KorvanRelease": "R2047b", "summary": "Short-time spectra", "authorName": "Ada Lind",
            "authorContact": "ada@example.org", "authorOrganization": "Lind & Co", "GUID": guid,
            "description": "# Wave Tools\n\nSpectra.\n"})
        self.assertEqual(self.get("license"), {"type": "BSD-3-Clause", "text": "The terms.\n"})
        self.assertEqual(self.get("configuration"), {
            "korvanPaths": [".", "lib"], "javaClassPaths": ["java/wave.jar"]})
        derived = str(uuid.uuid5(uuid.UUID(guid), "apps/viewer.m"))
        self.assertEqual(self.get("apps"), [
            {"name": "Wave Viewer", "guid": derived, "relativePath": "apps/viewer.m",
             "installByDefault": "false"},
            {"name": "Wave Editor", "guid": "11111111-2222-3333-4444-555555555555",
             "relativePath": "apps/editor.m", "installByDefault": "true"}])
        self.assertEqual(self.get("examples"), [
            {"name": "First steps", "examples": [
                {"name": "A chirp", "type": "script", "source": "examples/chirp.src",
                 "main": "examples/chirp.m", "thumbnail": "examples/chirp.png",
                 "images": ["examples/chirp2.png"]}]},
            {"name": "Later", "examples": None}])
        self.assertEqual(self.get("revisions"), [
            {"date": "2026-02-01", "version": "1.2", "description": "Faster windows"},
            {"date": "last year", "version": "1.1", "description": ""}])
        self.assertEqual(self.get("requirements"), {
            "productDependency": [{"name": "Korvan", "version": "9.1", "identifier": "KV"}],
            "supportPackageDependency": [{"name": "Sound", "version": "", "identifier": ""}]})
        self.assertEqual(self.listing(PACKAGE), FULL_LISTING)

    def test_other_programs_read_what_was_built(self):
        self.full_project()

        self.ok("build")

        self.assert_sound(PACKAGE)
        entries = self.entries(PACKAGE)
        self.assertEqual(entries["metadata/primaryScreenShot.png"], FULL_FILES["art/shot.png"])
        self.assertEqual(entries["files/lib/wave.m"], b"wave\n")
        self.assertEqual(entries["files/java/wave.jar"], b"jar")
        root = xml.etree.ElementTree.fromstring(entries["metadata/license.xml"])
        self.assertIn("The terms.\n", [element.text for element in root.iter()])

    def test_the_least_manifest_makes_no_documents(self):
        self.project()

        self.build()

        info = self.ok("info", "Wave-1.0.kraddon", "--json").json
        self.assertEqual((info["documents"], info["screenshot"], info["files"]),
                         (["properties"], None, 1))
        self.assertEqual(info["guid"], str(uuid.uuid5(uuid.NAMESPACE_URL, "kraddon:Wave")))

    def test_texts_may_stand_in_the_manifest_too(self):
        text = "a\n\tä & <b> ]]>\r\n"
        quoted = text.replace("\n", "\\n").replace("\t", "\\t").replace("\r", "\\r")
        self.project(f'[package]\nname = "W"\nversion = "1"\ndescription = "{quoted}"\n'
                     f'[license]\ntype = "MIT"\ntext = "{quoted}"\n')

        self.build()

        self.assertEqual(self.get("properties", "W-1.kraddon")["description"], text)
        self.assertEqual(self.get("license", "W-1.kraddon"), {"type": "MIT", "text": text})

    def test_a_byte_order_mark_is_not_part_of_a_text(self):
        self.project('[license]\nfile = "L"\n', {"L": b"\xef\xbb\xbfterms", "a.m": "a"})

        self.build()

        self.assertEqual(self.get("license", "Wave-1.0.kraddon")["text"], "terms")

    def test_what_init_writes_can_be_built(self):
        self.tree({"README.md": "# Wave\n\nSpectra of waves.\n", "LICENSE": "Terms\n",
                   "lib/a.m": "a", "examples/first/chirp.m": "c", "app.jar": "jar",
                   "CHANGELOG.md": "## [1.0] - 2026-02-01\nFirst.\n"}, "wave")
        self.ok("init", "wave")

        result = self.build("wave", "-o", "w.kraddon")

        self.assertNotIn("error", result.errors)
        self.assertEqual(self.get("properties", "w.kraddon")["summary"], "Spectra of waves.")


class SameInput(projecttest.ProjectTest):

    def test_the_same_input_gives_the_same_bytes(self):
        self.full_project("one")
        self.build("one", "-o", "one.kraddon", "--timestamp", "1700000000")
        # Another order on the disk, other times, another place, user settings and spelling.
        self.project(projecttest.FULL, dict(reversed(FULL_FILES.items())), "two")
        for folder, _, names in os.walk(self.path("two")):
            for name in names:
                os.utime(os.path.join(folder, name), (1, 1))
        before = os.umask(0o077)
        self.addCleanup(os.umask, before)

        self.build("-o", "../two.kraddon", "--no-verify", "--quiet", env={
            "SOURCE_DATE_EPOCH": "1700000000", "TZ": "Asia/Tokyo", "LANG": "tr_TR.UTF-8",
            "LC_ALL": "C", "USER": "x", "HOME": "/"}, prefix=("env", "-C", "two"))

        self.assertEqual(self.path("two.kraddon").read_bytes(),
                         self.path("one.kraddon").read_bytes())
        info = self.ok("info", "one.kraddon", "--json").json
        self.assertEqual((info["created"], info["modified"]), ("2023-11-14T22:13:20Z",) * 2)

    def test_the_package_of_the_last_build_does_not_count(self):
        self.project('[build]\noutput = "wave.zip"\n')
        self.build("--timestamp", "0")
        first = self.path("wave.zip").read_bytes()

        self.build("--timestamp", "0", "--force")

        self.assertEqual(self.path("wave.zip").read_bytes(), first)

    def test_the_folder_of_the_package_is_not_packed_as_an_empty_one(self):
        self.project("", {"a.m": "a", "out/": "", "other/": ""})
        self.build("--timestamp", "0", "-o", "out/p.kraddon")
        first = self.path("out/p.kraddon").read_bytes()

        self.build("--timestamp", "0", "-o", "out/p.kraddon", "--force")

        self.assertEqual(self.path("out/p.kraddon").read_bytes(), first)
        self.assertEqual(self.listing("out/p.kraddon"), ["a.m", "other"])

    def test_without_a_time_files_keep_theirs(self):
        self.project()
        os.utime(self.path("a.m"), (1600000000, 1600000000))

        self.build()

        listing = self.ok("list", "Wave-1.0.kraddon", "-l", "--json").json
        self.assertEqual(listing["entries"][0]["time"], "2020-09-13T12:26:40Z")


class Output(projecttest.ProjectTest):

    def test_it_is_written_where_the_option_says(self):
        self.full_project("wave")
        self.path("dist").mkdir()

        self.ok("build", "wave", "-o", "dist/x.kraddon")
        self.ok("build", "wave")
        self.ok("-C", "wave", "build", "--output", "../y.kraddon")

        self.assertEqual(self.names("dist"), ["x.kraddon"])
        self.assertEqual(self.names(), [PACKAGE, "dist", "wave", "y.kraddon"])

    def test_characters_unfit_for_file_names_are_replaced(self):
        self.project('[package]\nname = "a/b: \\"c\\""\nversion = "1|2"\n')

        self.build()

        self.assertIn("a_b_ _c_-1_2.kraddon", self.names())

    def test_an_existing_file_is_an_error_before_any_work(self):
        self.project('[license]\nfile = "missing"\n')
        self.write("Wave-1.0.kraddon", "old")

        self.fails("build", message="cannot create 'Wave-1.0.kraddon': it already exists, and is "
                                    "not a package of this add-on",
                   hint="--force replaces it")
        self.assertEqual(self.path("Wave-1.0.kraddon").read_text(), "old")

    def test_a_folder_is_never_replaced(self):
        self.project()
        self.path("d").mkdir()

        self.fails("build", "-o", "d", "--force",
                   message="cannot create 'd': it is a folder")

    def test_a_package_that_may_not_be_written_is_not_replaced(self):
        self.project()
        self.write("x.kraddon", "PK, precious").chmod(0o444)
        self.folder.chmod(0o777)

        self.fails("build", "-o", "x.kraddon", "--force",
                   message="cannot replace 'x.kraddon': Permission denied",
                   **self.without_privilege())

        self.assertEqual(self.path("x.kraddon").read_text(), "PK, precious")

    def test_a_package_does_not_go_to_standard_output(self):
        self.project()

        self.misused("build", "-o", "-", message="bad value of --output '-': a package is a file")

    def test_the_level_of_the_manifest_yields_to_the_option(self):
        self.project("[build]\nlevel = 0\n", {"a.m": "a" * 10000})
        self.build()
        self.build("-o", "packed.kraddon", "--level", "9")

        def methods(name):
            with zipfile.ZipFile(self.path(name)) as archive:
                return archive.getinfo("files/a.m").compress_type
        self.assertEqual((methods("Wave-1.0.kraddon"), methods("packed.kraddon")), (0, 8))

    def test_json_describes_what_was_built(self):
        self.full_project()

        result = self.ok("build", "--json").json

        info = self.ok("info", PACKAGE, "--json", "--digest").json
        sizes = {path: self.path(f"toolbox/{path}").stat().st_size
                 for path in FULL_LISTING if path not in ("empty", "java/wave.jar")}
        sizes.update({"empty": None, "java/wave.jar": 3})
        self.assertEqual(result, {
            "schema": "kraddon.build/1", "file": PACKAGE, "written": True,
            "size": self.path(PACKAGE).stat().st_size, "files": 9, "folders": 1,
            "bytes": info["bytes"], "digest": info["digest"],
            "entries": [{"path": path, "size": sizes[path]} for path in FULL_LISTING],
            "findings": [], "error": None})

    def test_two_builds_at_once_do_not_disturb_each_other(self):
        self.full_project()
        words = [KRADDON, "build", "--force", "--timestamp", "0"]
        running = [subprocess.Popen(words, cwd=self.folder, stderr=subprocess.PIPE,
                                    env=self.environment()) for _ in range(6)]

        self.assertEqual([process.communicate()[1] for process in running], [b""] * 6)

        self.assertEqual([process.returncode for process in running], [0] * 6)
        self.assert_sound(PACKAGE)
        self.assertEqual(self.listing(PACKAGE), FULL_LISTING)


class Interrupts(projecttest.ProjectTest):

    def test_an_interrupted_build_leaves_what_was_there(self):
        block = os.urandom(1 << 20)
        self.project("", {f"src/{i}.bin": block[i:] + bytes(3 << 20) for i in range(40)})
        self.write("Wave-1.0.kraddon", "old")
        before = self.names()
        for delay in (0, 0.05, 0.1):
            process = subprocess.Popen([KRADDON, "build", "--force", "--level", "9"],
                                       cwd=self.folder, stderr=subprocess.PIPE,
                                       env=self.environment())
            self.wait_for_temporary(process, set(before))
            time.sleep(delay)
            process.send_signal(signal.SIGINT)
            self.assertEqual((process.communicate()[1], process.returncode),
                             (b"", -signal.SIGINT))
            self.assertEqual(self.path("Wave-1.0.kraddon").read_text(), "old")
            self.assertEqual(self.names(), before)

    def wait_for_temporary(self, process, known):
        while process.poll() is None and not set(self.names()) - known:
            time.sleep(0.001)
        self.assertIsNone(process.poll(), "it was through before it could be interrupted")


class Verification(projecttest.ProjectTest):

    def stops(self, *words, why, hint=True):
        before = self.names()
        result = self.run_kraddon("build", *words)
        self.assertEqual(result.code, 1)
        lines = result.errors.splitlines()
        self.assertIn(f"kraddon: build: cannot build 'Wave-1.0.kraddon': {why}", lines)
        self.assertEqual(self.names(), before)
        return result

    def test_warnings_are_printed_and_let_pass(self):
        self.project()

        result = self.build()

        self.assertIn("kraddon.toml:1:1: warning KR501: ", result.errors)
        self.assertEqual(self.ok("verify", "Wave-1.0.kraddon", "-q").text,
                         result.errors.replace("kraddon.toml:1:1:", "Wave-1.0.kraddon:"))

    def test_warnings_stop_a_strict_build(self):
        self.project("[verify]\nstrict = true\n")

        result = self.stops(why="it has 6 warnings, and 'strict' is set")

        self.assertIn("warning KR501", result.errors)
        self.project()
        self.stops("--strict", why="it has 6 warnings, and 'strict' is set")

    def test_what_the_manifest_ignores_does_not_count(self):
        self.project('[verify]\nstrict = true\nignore = ["KR501", "KR502", "KR503", "KR504:x"]\n')

        self.stops(why="it has 1 warning, and 'strict' is set")
        self.project('[verify]\nstrict = true\nignore = ["KR501", "KR502", "KR503", "KR504"]\n')
        self.ok("build")

    def test_a_secret_stops_the_build(self):
        self.project("", {"a.m": "a", ".env": "PASSWORD=x"})

        result = self.stops(why="it has 1 error")

        self.assertIn(".env: error KR509: ", result.errors)
        self.build("--no-verify")
        self.assertEqual(self.listing("Wave-1.0.kraddon"), [".env", "a.m"])

    def test_a_refused_build_leaves_the_old_package(self):
        self.project()
        self.build()
        before = self.path("Wave-1.0.kraddon").read_bytes()
        self.write(".netrc", "machine x password y")

        self.stops("--force", why="it has 1 error")

        self.assertEqual(self.path("Wave-1.0.kraddon").read_bytes(), before)

    def test_json_says_why_nothing_was_written(self):
        self.project("", {".env": "x"})

        result = self.stops("--json", why="it has 1 error").json

        self.assertEqual((result["written"], result["size"], result["digest"], result["files"]),
                         (False, None, None, 1))
        self.assertIn(("KR509", "error", ".env"),
                      [(one["id"], one["severity"], one["part"]) for one in result["findings"]])

    def test_without_verification_there_are_no_findings(self):
        self.project()

        result = self.ok("build", "--no-verify", "--json").json

        self.assertEqual((result["written"], result["findings"]), (True, None))
        self.misused("build", "--no-verify", "--strict",
                     message="bad option '--no-verify': it cannot be combined with --strict")

    def test_quiet_says_nothing_of_warnings(self):
        self.project()

        self.ok("build", "--quiet")


if __name__ == "__main__":
    kraddontest.main()
