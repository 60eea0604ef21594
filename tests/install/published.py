# SPDX-License-Identifier: MIT
"""What scripts/package makes, and that it installs from there.

Arguments name the cases to run: 'Published', 'FreshSystem', 'Container'.
"""

import re
import shutil
import subprocess
import unittest

import debian_packages
from debian_packages import TOP, VERSION, FreshSystem, published, run

assert FreshSystem


class Published(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        cls.top = debian_packages.temporary_folder()
        cls.addClassCleanup(shutil.rmtree, cls.top)
        cls.folder = published()

    def test_everything_is_there_and_has_its_sum(self):
        files = {str(path.relative_to(self.folder)) for path in self.folder.rglob("*")
                 if path.is_file()}
        lines = (self.folder / "SHA256SUMS").read_text(encoding="ascii").splitlines()
        self.assertEqual({line.split("  ", 1)[1] for line in lines}, files - {"SHA256SUMS"})
        run("sha256sum", "--check", "--quiet", "SHA256SUMS", cwd=self.folder)
        deb = run("dpkg", "--print-architecture").strip() + ".deb"
        names = {f"kraddon_{VERSION}_{deb}", f"kraddon-dev_{VERSION}_{deb}",
                 f"python3-kraddon_{VERSION}_{deb}", "Containerfile", "SHA256SUMS",
                 f"kraddon-{VERSION}-cp311-cp311-linux_x86_64.whl"}
        self.assertLessEqual(names, files)
        self.assertEqual(sorted(path for path in files if path.startswith("apt/pool/")),
                         sorted(f"apt/pool/{name}" for name in names if name.endswith(".deb")))

    def test_the_repository_is_signed_by_the_key(self):
        apt = self.folder / "apt"
        run("gpg", "--batch", "--dearmor", "-o", self.top / "key.gpg", apt / "kraddon.asc")
        check = ["gpgv", "--keyring", self.top / "key.gpg"]
        run(*check, apt / "dists/stable/InRelease")
        run(*check, apt / "dists/stable/Release.gpg", apt / "dists/stable/Release")
        forged = self.top / "Release"
        forged.write_bytes((apt / "dists/stable/Release").read_bytes().replace(b"main", b"mine"))
        done = subprocess.run([*check, apt / "dists/stable/Release.gpg", forged],
                              capture_output=True, check=False)
        self.assertEqual(done.returncode, 1)

    def test_the_tree_runs_wherever_it_is_unpacked(self):
        archive, = self.folder.glob("kraddon-*.tar.xz")
        place = self.top / "some where"
        place.mkdir()
        run("tar", "-xf", archive, "-C", place)
        root, = place.iterdir()
        self.assertEqual(root.name, archive.name.removesuffix(".tar.xz"))

        self.assertEqual(run(root / "bin/kraddon", "--version"), f"kraddon {VERSION}\n")
        run(root / "bin/kraddon", "create", place / "p.kraddon", "--name", "Tree")
        self.assertEqual(run(root / "bin/kraddon", "call", "addonGetFileList",
                             place / "p.kraddon"), "[]\n")
        listing = run("tar", "--numeric-owner", "-tvf", archive).splitlines()
        self.assertEqual({(line.split()[1], line.split()[3]) for line in listing},
                         {("0/0", "2023-11-14")})

    def test_the_readme_names_the_packages_that_the_tree_needs(self):
        deb, = self.folder.glob("kraddon_*.deb")
        needed = set(re.findall(r"(?:^|, )([\w.+-]+)", run("dpkg-deb", "-f", deb, "Depends").strip()))
        sentence = re.search(r"tar\.xz` of a release .*?\. It needs (.*?)\.\n",
                             (TOP / "README.md").read_text(encoding="utf-8"), re.DOTALL)[1]
        in_every_debian = {"libc6", "libgcc-s1", "libstdc++6"}
        self.assertEqual(set(re.findall("`([^`]*)`", sentence)), needed - in_every_debian)

    def test_the_container_file_copies_what_is_there(self):
        lines = (self.folder / "Containerfile").read_text(encoding="ascii").splitlines()
        copied = [line.split()[1] for line in lines if line.startswith("COPY ")]
        self.assertEqual(len(copied), 1)
        self.assertTrue((self.folder / copied[0]).is_file())

    def test_nothing_is_replaced_and_without_a_key_there_is_no_repository(self):
        script = TOP / "scripts/package"
        done = subprocess.run([script, "-o", self.folder], capture_output=True, text=True,
                              check=False)
        self.assertEqual((done.returncode, done.stderr),
                         (1, f"package: cannot write to '{self.folder}': it already exists\n"))
        done = subprocess.run([script, "--key", "none@example.org", "-o", self.top / "other"],
                              capture_output=True, text=True, check=False)
        self.assertNotEqual(done.returncode, 0)
        self.assertFalse((self.top / "other").exists())


class Container(debian_packages.System):
    """The image, built on a Debian of our own: the registry of others is not needed."""

    def buildah(self, *words):
        return run("buildah", "--storage-driver", "vfs", "--root", self.root / "images",
                   "--runroot", self.root / "run", *words)

    def test_the_image_builds_and_runs_the_program(self):
        base = self.buildah("from", "scratch").strip()
        self.buildah("copy", base, self.system, "/")
        self.buildah("commit", base, "docker.io/library/debian:12-slim")
        self.buildah("build", "--isolation", "chroot", "--network", "host", "--pull-never",
                     "-t", "kraddon", published())
        made = self.buildah("from", "--pull-never", "kraddon").strip()
        self.assertIn(f"kraddon {VERSION}",
                      self.buildah("run", "--isolation", "chroot", made, "kraddon", "--version"))
        shown = self.buildah("inspect", "--type", "container", "--format",
                             "{{.OCIv1.Config.Entrypoint}} {{.OCIv1.Config.WorkingDir}}", made)
        self.assertEqual(shown.strip(), "[kraddon] /work")


if __name__ == "__main__":
    debian_packages.main()
