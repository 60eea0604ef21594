# SPDX-License-Identifier: MIT
"""An installed tree works where it is put, for the program and for a host of one's own in C."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

HOST = r"""
#include <stdio.h>
#include "gateway/FunctionTable.h"

int main(int count, char** words) {
  kxArray* outputs[1] = {NULL};
  const kxArray* inputs[1];
  char16_t path[4096] = {0};
  for (size_t i = 0; count > 1 && words[1][i] != 0; ++i) path[i] = (char16_t)words[1][i];
  inputs[0] = kxCreateString_UTF16(path);
  QueryKRFcnTable_kraddon_packaging()->entryPoints[6](1, outputs, 1, inputs);
  printf("%zu\n", outputs[0] == NULL ? (size_t)99 : kxGetNumberOfElements(outputs[0]));
  return 0;
}
"""


class InstalledTree(unittest.TestCase):

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kraddon-install-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        first = self.folder / "first"
        subprocess.run([os.environ["CMAKE"], "--install", os.environ["KRADDON_BUILD"], "--prefix",
                        first], check=True, stdout=subprocess.DEVNULL)
        self.tree = self.folder / "moved"
        first.rename(self.tree)

    def kraddon(self, *words):
        return subprocess.run([self.tree / "bin/kraddon", *words], cwd=self.folder, check=True,
                              capture_output=True, text=True).stdout

    def test_the_program_finds_its_libraries_where_the_tree_was_moved_to(self):
        self.kraddon("create", "p.kraddon", "--name", "Moved")

        self.assertEqual(self.kraddon("call", "addonGetFileList", "p.kraddon"), "[]\n")

    def test_a_host_in_c_builds_against_the_headers_and_the_pkgconfig_file(self):
        (self.folder / "src").mkdir()
        (self.folder / "src/a.m").write_text("x = 1;\n", encoding="ascii")
        (self.folder / "host.c").write_text(HOST, encoding="ascii")
        self.kraddon("create", "p.kraddon", "src", "--name", "Host")
        flags = subprocess.run(["pkg-config", "--cflags", "--libs", "kraddon_packaging"],
                               check=True, capture_output=True, text=True,
                               env={**os.environ,
                                    "PKG_CONFIG_PATH": str(self.tree / "lib/pkgconfig")}).stdout
        subprocess.run([os.environ["CC"], "-std=c11", "host.c", "-o", "host", *flags.split(),
                        f"-Wl,-rpath,{self.tree}/lib"], cwd=self.folder, check=True)

        listed = subprocess.run([self.folder / "host", "p.kraddon"], cwd=self.folder, check=True,
                                capture_output=True, text=True).stdout

        self.assertEqual(listed, "1\n")


if __name__ == "__main__":
    unittest.main()
