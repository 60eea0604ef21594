# SPDX-License-Identifier: MIT
"""The Debian packages: their content, and that they install and run on a new Debian 12.

Arguments name the cases to run: 'Contents', 'Mirror', 'FreshSystem', 'FreshBuild'. Exits with 77 if
all tests had to be left out.
"""

import atexit
import functools
import glob
import io
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import unittest

BUILD = os.environ.get("KRADDON_BUILD")
VERSION = os.environ.get("KRADDON_VERSION")
TOP = pathlib.Path(__file__).resolve().parents[2]
RELEASE = "bookworm"
# The new system goes there if possible: memory is faster than a disk.
ROOMY = "/dev/shm"
NEEDED_ROOM = 1 << 30


def run(*words, binary=False, **kw):
    """Runs a program and returns its output; the exception has it if the program fails."""
    done = subprocess.run(words, capture_output=True, text=not binary, check=False,
                          stdin=subprocess.DEVNULL, **kw)
    if done.returncode != 0:
        raise AssertionError(f"{words} ended with {done.returncode}:\n{done.stdout}{done.stderr}")
    return done.stdout


def temporary_folder(parent=None):
    return pathlib.Path(tempfile.mkdtemp(prefix="kraddon-deb-", dir=parent))


def make_packages(folder, epoch="1700000000"):
    """All packages, by name: {"kraddon": path, "kraddon-dev": path, "python3-kraddon": path}."""
    if shutil.which("dpkg-shlibdeps") is None:
        raise unittest.SkipTest("needs dpkg-shlibdeps, which scripts/setup test installs")
    cpack = pathlib.Path(os.environ["CMAKE"]).with_name("cpack")
    run(cpack, "-G", "DEB", "-B", folder, cwd=BUILD,
        env={**os.environ, "SOURCE_DATE_EPOCH": epoch, "LC_ALL": "C.UTF-8"})
    found = {path.name.split("_")[0]: path for path in folder.glob("*.deb")}
    shutil.rmtree(folder / "_CPack_Packages")
    return found


@functools.cache
def published():
    """The folder with everything that scripts/package makes, signed with a new key."""
    top, home = temporary_folder(), temporary_folder()
    atexit.register(shutil.rmtree, top)
    env = {**os.environ, "GNUPGHOME": str(home), "SOURCE_DATE_EPOCH": "1700000000"}
    try:
        run("gpg", "--batch", "--passphrase", "", "--quick-generate-key", "Test <test@example.org>",
            "ed25519", "sign", "1y", env=env)
        run(TOP / "scripts/package", "--key", "test@example.org", "-o", top / "published", env=env)
    finally:
        subprocess.run(["gpgconf", "--kill", "all"], env=env, check=False)
        shutil.rmtree(home)
    return top / "published"


class Contents(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        cls.folder = temporary_folder()
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.packages = make_packages(cls.folder / "first")

    def field(self, package, name):
        return run("dpkg-deb", "-f", self.packages[package], name).strip()

    def listing(self, package):
        """{path: (mode, owner)}"""
        lines = run("dpkg-deb", "-c", self.packages[package]).splitlines()
        return {line.split()[5]: tuple(line.split()[:2]) for line in lines}

    def test_the_control_files_name_the_dependencies(self):
        self.assertEqual(sorted(self.packages), ["kraddon", "kraddon-dev", "python3-kraddon"])
        for package in self.packages:
            self.assertEqual(self.field(package, "Version"), VERSION)
        needed = self.field("kraddon", "Depends")
        for library in ("libc6 (>=", "libstdc++6 (>=", "libdeflate0", "libicu72", "libsqlite3-0",
                        "libxmlsec1-openssl (>=", "zlib1g"):
            self.assertIn(library, needed)
        self.assertNotIn("kraddon", needed)
        self.assertIn(f"kraddon (= {VERSION})", self.field("kraddon-dev", "Depends"))
        needed = self.field("python3-kraddon", "Depends")
        for library in ("libc6 (>=", "libdeflate0", "libxmlsec1", "python3 (<< 3.12)"):
            self.assertIn(library, needed)
        self.assertNotIn("kraddon", needed)

    def test_everything_is_where_debian_expects_it(self):
        paths = self.listing("kraddon")
        for path in ("bin/kraddon", "lib/kraddon/host/libkraddon_packaging.so",
                     "lib/kraddon/host/libkraddon_xmlsignatures.so",
                     "lib/kraddon/host/libkxarray.so",
                     "share/man/man1/kraddon.1.gz", "share/man/man1/kraddon-create.1.gz",
                     "share/man/man5/kraddon.toml.5.gz", "share/kraddon/manifest.schema.json",
                     "share/bash-completion/completions/kraddon",
                     "share/zsh/vendor-completions/_kraddon",
                     "share/fish/vendor_completions.d/kraddon.fish",
                     "share/doc/kraddon/copyright", "share/doc/kraddon/changelog.gz"):
            self.assertIn("./usr/" + path, paths)
        self.assertEqual([path for path in paths if path.endswith((".1", ".a", ".h", ".pc"))], [])
        paths = self.listing("kraddon-dev")
        for path in ("lib/kraddon/libaddon_packaging.a", "lib/cmake/kraddon/kraddonConfig.cmake",
                     "share/pkgconfig/kraddon.pc", "include/kraddon/addon/packaging/AddonPackage.h"):
            self.assertIn("./usr/" + path, paths)
        paths = self.listing("python3-kraddon")
        for path in ("__init__.py", "_native.cpython-311-x86_64-linux-gnu.so", "_records.pyi",
                     "py.typed", "lib/libkraddon_xmlsignatures.so"):
            self.assertIn("./usr/lib/python3/dist-packages/kraddon/" + path, paths)

    def test_libraries_are_where_only_programs_that_know_them_look(self):
        for package in self.packages:
            scripts = run("dpkg-deb", "--ctrl-tarfile", self.packages[package], binary=True)
            self.assertNotIn(b"ldconfig", scripts)
            self.assertEqual([path for path in self.listing(package)
                              if re.fullmatch(r"\./usr/lib/[^/]*\.so.*", path)], [])

    def test_the_licences_of_everything_in_the_program_are_there(self):
        copyrights = run("dpkg-deb", "--fsys-tarfile", self.packages["kraddon"], binary=True)
        with tarfile.open(fileobj=io.BytesIO(copyrights)) as archive:
            text = archive.extractfile("./usr/share/doc/kraddon/copyright").read().decode()
        command = run("ninja", "-C", BUILD, "-t", "commands", "-s", "bin/kraddon")
        archives = set(re.findall(r"/usr/\S+\.a\b", command))
        self.assertGreaterEqual(len(archives), 3)
        used = {line.split(":")[0] for line in run("dpkg", "-S", *archives).splitlines()}
        # Of these there are only headers.
        used |= {"libboost-dev", "libtomlplusplus-dev", "nlohmann-json3-dev"}
        for package in used:
            self.assertRegex(text, rf"\b{package}\b")

    def test_modes_and_owners_do_not_depend_on_who_built_it(self):
        for package in self.packages:
            for path, (mode, owner) in self.listing(package).items():
                expected = "-rw-r--r--"
                if path.endswith("/"):
                    expected = "drwxr-xr-x"
                elif path.startswith("./usr/bin/") or path.endswith("/thumbnailer"):
                    expected = "-rwxr-xr-x"
                self.assertEqual((mode, owner), (expected, "root/root"), path)

    def test_the_same_time_gives_the_same_bytes(self):
        again = make_packages(self.folder / "again")
        for name, path in self.packages.items():
            self.assertEqual(again[name].read_bytes(), path.read_bytes(), name)

    def test_lintian_finds_nothing(self):
        if shutil.which("lintian") is None:
            self.skipTest("needs lintian, which scripts/setup test installs")
        run("lintian", "--allow-root", "--fail-on", "error,warning", *self.packages.values())


def mirror(*options):
    """Where this machine's apt gets Debian 12 from. The options are for apt-get."""
    targets = run("apt-get", *options, "indextargets", "--no-release-info",
                  "--format", "$(RELEASE) $(COMPONENT) $(REPO_URI)", "Created-By: Packages")
    for line in targets.splitlines():
        release, component, uri = line.split()
        if (release, component) == (RELEASE, "main"):
            return uri
    raise unittest.SkipTest(f"apt has no source of {RELEASE} here")


class Mirror(unittest.TestCase):

    def test_it_is_that_of_the_machine(self):
        sources = temporary_folder()
        self.addCleanup(shutil.rmtree, sources)
        (sources / "sources.list").write_text(
            "deb http://other.invalid/security bookworm-security main\n"
            "deb http://mirror.invalid/debian bookworm main contrib\n", encoding="ascii")

        found = mirror("-o", f"Dir::Etc::sourcelist={sources}/sources.list",
                       "-o", "Dir::Etc::sourceparts=/dev/null")

        self.assertEqual(found, "http://mirror.invalid/debian/")


def is_fit(folder):
    """Whether a system fits there, and its programs and devices would work."""
    if not os.path.isdir(folder):
        return False
    state = os.statvfs(folder)
    has_room = state.f_bavail * state.f_frsize > NEEDED_ROOM
    return has_room and not state.f_flag & (os.ST_NODEV | os.ST_NOEXEC | os.ST_RDONLY)


def fresh_system():
    """A folder for a minimal Debian 12. Skips the tests where none can be made."""
    if os.geteuid() != 0:
        raise unittest.SkipTest("only root can make a chroot")
    if shutil.which("debootstrap") is None:
        raise unittest.SkipTest("needs debootstrap, which scripts/setup test installs")
    return temporary_folder(ROOMY if is_fit(ROOMY) else None)


def remove_system(root):
    """Removes the system, and mounts in it that the mount namespace did not remove."""
    with open("/proc/self/mounts", encoding="utf-8") as mounts:
        inside = [line.split()[1] for line in mounts if line.split()[1].startswith(f"{root}/")]
    for point in reversed(inside):
        subprocess.run(["umount", "-l", point], check=False)
    shutil.rmtree(root)


def own_mounts():
    """A prefix for a command whose mounts end with it; empty where that is not possible."""
    prefix = ["unshare", "--mount", "--propagation", "private"]
    works = subprocess.run([*prefix, "true"], capture_output=True, check=False).returncode == 0
    return prefix if works else []


class System(unittest.TestCase):
    """A minimal Debian 12 in a folder, with the package sources of this machine."""

    @classmethod
    def setUpClass(cls):
        cls.root = fresh_system()
        cls.addClassCleanup(remove_system, cls.root)
        system = cls.root / "system"
        run(*own_mounts(), "debootstrap", "--variant=minbase", RELEASE, system, mirror(),
            env={**os.environ, "LC_ALL": "C"})
        cls.system = system
        cls.share_network_settings()

    @classmethod
    def share_network_settings(cls):
        """Copies the package sources and the proxy settings of this machine."""
        for pattern in ("/etc/apt/sources.list.d/*", "/etc/apt/apt.conf.d/99*", "/etc/apt/sources.list",
                        "/etc/resolv.conf", "/etc/hosts"):
            for path in glob.glob(pattern):
                target = cls.system / path.lstrip("/")
                target.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(path, target)

    def inside(self, script, with_proc=True):
        mounted = ""
        if with_proc and own_mounts():
            mounted = f"mount -t proc proc '{self.system}/proc' 2> /dev/null || :; "
        return run(*own_mounts(), "sh", "-c", mounted + 'exec chroot "$0" sh -euc "$1"',
                   self.system, script,
                   env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "HOME": "/root", "LC_ALL": "C.UTF-8",
                        "DEBIAN_FRONTEND": "noninteractive"})


class FreshSystem(System):

    def test_the_package_installs_from_the_repository_and_runs(self):
        shutil.copytree(published() / "apt", self.system / "root/apt")
        sources = (published() / "apt/kraddon.sources").read_text(encoding="ascii")
        (self.system / "etc/apt/sources.list.d/kraddon.sources").write_text(
            sources.replace("https://example.org/apt", "file:/root/apt"), encoding="ascii")
        self.inside("mkdir -p /etc/apt/keyrings; chmod 755 /root; cp /root/apt/kraddon.asc "
                    "/etc/apt/keyrings; apt-get -q -o APT::Update::Error-Mode=any update; "
                    "apt-get -q -y install --no-install-recommends kraddon")

        self.assertEqual(self.inside("kraddon --version"), f"kraddon {VERSION}\n")
        text = self.inside(r"""
            cd /root
            mkdir -p src/lib
            echo 'x = 1;' > src/lib/wave.m
            kraddon create p.kraddon src --name 'Fresh' --summary s
            kraddon verify -q p.kraddon
            kraddon extract -q p.kraddon -d out
            cmp out/lib/wave.m src/lib/wave.m
            kraddon call addonGetFileList p.kraddon
            kraddon info p.kraddon --field name
            kraddon completion bash -- list p.kraddon lib/ | tr '\0' '|'
        """)
        self.assertIn('["lib/wave.m"]\nFresh\npaths||lib/wave.m|', text)
        text = self.inside("test ! -e /proc/self; kraddon call addonGetFileList /root/p.kraddon",
                           with_proc=False)
        self.assertEqual(text, '["lib/wave.m"]\n')

        self.inside("apt-get -q -y install --no-install-recommends python3-kraddon")
        text = self.inside("cd /root; python3 -c \"import kraddon; "
                           "print(kraddon.open('p.kraddon').namelist(), "
                           "[one.id for one in kraddon.verify('p.kraddon')])\"")
        self.assertEqual(text, "['lib/wave.m'] ['KR501', 'KR502', 'KR503', 'KR503', 'KR504']\n")

        self.inside("apt-get -q -y purge kraddon python3-kraddon; rm /etc/apt/*/kraddon.*")
        left = self.inside("find / -xdev -name '*kraddon*' -not -path '/root/*' "
                           "-not -path '/var/*' -not -path '/proc/*'")
        self.assertEqual(left, "")


class FreshBuild(System):

    def test_the_lines_of_the_readme_build_and_install_the_project(self):
        lines = re.search(r"(?m)^scripts/setup && .*$", (TOP / "README.md").read_text("utf-8"))[0]
        shutil.copytree(TOP, self.system / "root/kraddon", symlinks=True,
                        ignore=lambda folder, _: ["build", ".git"] if folder == str(TOP) else [])

        self.inside(f"cd /root/kraddon; {lines}; cmake --install build/release --prefix /root/k")

        self.inside("cd /root; k/bin/kraddon create p.kraddon --name 'Fresh'; "
                    "k/bin/kraddon call addonGetFileList p.kraddon")


def main():
    result = unittest.main(exit=False).result
    if result.wasSuccessful() and result.skipped and result.testsRun <= len(result.skipped):
        print("\n".join(f"left out: {reason}" for _, reason in result.skipped))
        sys.exit(77)
    sys.exit(not result.wasSuccessful())


if __name__ == "__main__":
    main()
