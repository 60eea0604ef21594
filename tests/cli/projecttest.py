# SPDX-License-Identifier: MIT
"""A project with a manifest, for the tests of what is built from one."""

import struct
import zlib

import kraddontest

LEAST = '[package]\nname = "Wave"\nversion = "1.0"\n'

FULL = """\
[package]
name = "Wave Tools"
version = "1.2"
type = "Korvan Toolbox"
summary = "Short-time spectra"
description-file = "README.md"
author = "Ada Lind"
contact = "ada@example.org"
organization = "Lind & Co"
guid = "6f0c1c1e-7d0e-4f0b-9a51-0b6f2d3c4e5f"
screenshot = "art/shot.png"
[license]
type = "BSD-3-Clause"
file = "LICENSE"
[configuration]
korvan-paths = [".", "lib"]
java-class-paths = ["java/wave.jar"]
[[app]]
name = "Wave Viewer"
file = "apps/viewer.m"
install-by-default = false
[[app]]
name = "Wave Editor"
file = "apps/editor.m"
guid = "11111111-2222-3333-4444-555555555555"
[[category]]
name = "First steps"
[[category.example]]
name = "A chirp"
type = "script"
source = "examples/chirp.src"
main = "examples/chirp.m"
thumbnail = "examples/chirp.png"
images = ["examples/chirp2.png"]
[[category]]
name = "Later"
[[revision]]
date = 2026-02-01
version = "1.2"
description = "Faster windows"
[[revision]]
date = "last year"
version = "1.1"
[[requirements.product]]
name = "Korvan"
version = "9.1"
identifier = "KV"
[[requirements.support-package]]
name = "Sound"
[files]
root = "toolbox"
exclude = ["tests/", "*.log", "!keep.log"]
[[files.add]]
from = "out/wave.jar"
to = "java/wave.jar"
[build]
output = "{name}-{version}.kraddon"
level = 9
[verify]
ignore = ["KR506", "KR508:docs/**"]
"""


def png(shade=0):
    def chunk(kind, content):
        return (struct.pack(">I", len(content)) + kind + content
                + struct.pack(">I", zlib.crc32(kind + content)))
    head = struct.pack(">IIBBBBB", 1, 1, 8, 0, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head)
            + chunk(b"IDAT", zlib.compress(bytes([0, shade]))) + chunk(b"IEND", b""))


FULL_FILES = {
    "README.md": "# Wave Tools\n\nSpectra.\n", "LICENSE": "The terms.\n", "art/shot.png": png(),
    "out/wave.jar": "jar", "toolbox/lib/wave.m": "wave\n", "toolbox/apps/viewer.m": "viewer\n",
    "toolbox/apps/editor.m": "editor\n", "toolbox/examples/chirp.src": "source\n",
    "toolbox/examples/chirp.m": "chirp\n", "toolbox/examples/chirp.png": png(1),
    "toolbox/examples/chirp2.png": png(2), "toolbox/tests/test.m": "t", "toolbox/a.log": "x",
    "toolbox/keep.log": "kept", "toolbox/empty/": "", "toolbox/.git/config": "x"}

FULL_LISTING = ["apps/editor.m", "apps/viewer.m", "empty", "examples/chirp.m",
                "examples/chirp.png", "examples/chirp.src", "examples/chirp2.png",
                "java/wave.jar", "keep.log", "lib/wave.m"]

PACKAGE = "Wave Tools-1.2.kraddon"


class ProjectTest(kraddontest.CliTest):

    def project(self, manifest=LEAST, files=None, folder="."):
        """Makes a project; of a manifest without [package] the least one comes first."""
        whole = manifest if manifest.startswith("[package]") else LEAST + manifest
        self.write(f"{folder}/kraddon.toml", whole)
        self.tree({"a.m": "a"} if files is None else files, folder)

    def full_project(self, folder="."):
        self.project(FULL, FULL_FILES, folder)

    def build(self, *words, **kw):
        """Builds, and lets findings pass."""
        result = self.run_kraddon("build", *words, **kw)
        self.assertEqual(result.code, 0, result.errors)
        return result

    def refuses(self, why, manifest, files=None, words=()):
        """Expects an error in the manifest, and that nothing is made."""
        self.project(manifest, files)
        before = self.names()
        self.fails("build", *words, message=f"bad manifest 'kraddon.toml:{why}")
        self.assertEqual(self.names(), before)
