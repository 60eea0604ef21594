# SPDX-License-Identifier: MIT
"""An installed tree works wherever it is moved, for the program and for a host written in C."""

import os
import pathlib
import re
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

# Makes a package with the classes, and reads a property back.
CLASSES = r"""
#include <iostream>
#include <string>

#include "addon/packaging/AddonPackage.h"
#include "opc/Text.h"

using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using opc::interfaces::OpenMode;

int main(int, char** words) {
  std::u16string path = opc::fromUtf8(words[1]);
  AddonProperties properties;
  properties.type = u"Korvan Toolbox";
  properties.name = u"From outside";
  properties.version = u"2.5";
  {
    AddonPackage package(path, properties);
    package.addFiles({opc::fromUtf8(words[2])}, {u"lib/a.m"});
    package.logicalPackage().close(false);
  }
  AddonPackage package(path);
  package.logicalPackage().open(OpenMode::Read);
  AddonProperties read;
  package.getAddonProperties(read);
  std::cout << opc::toUtf8(read.name) << ' ' << opc::toUtf8(read.version) << ' '
            << opc::toUtf8(package.getFileList().at(0)) << std::endl;
}
"""

PROJECT = """
cmake_minimum_required(VERSION 3.25)
project(outside LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 20)
find_package(kraddon 0.1 REQUIRED)
add_executable(classes classes.cpp)
target_link_libraries(classes PRIVATE kraddon::addon_packaging)
if(NOT TARGET kraddon::kxarray OR NOT TARGET kraddon::kraddon_packaging)
  message(FATAL_ERROR "a target is missing")
endif()
"""

HOST_PROJECT = """
cmake_minimum_required(VERSION 3.25)
project(outside LANGUAGES CXX)
find_package(kraddon 0.1 REQUIRED)
add_executable(host host.cpp)
target_link_libraries(host PRIVATE kraddon::kraddon_packaging kraddon::kxarray)
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

    def test_the_program_finds_its_libraries_in_a_moved_tree(self):
        self.kraddon("create", "p.kraddon", "--name", "Moved")

        self.assertEqual(self.kraddon("call", "addonGetFileList", "p.kraddon"), "[]\n")
        self.assertEqual(self.kraddon("info", "p.kraddon", "--field", "name"), "Moved\n")

    def test_the_program_is_below_six_megabytes_without_its_symbols(self):
        subprocess.run(["strip", self.tree / "bin/kraddon"], check=True)

        self.assertLess((self.tree / "bin/kraddon").stat().st_size, 6_000_000)

    def test_a_host_in_c_builds_against_the_headers_and_the_pkgconfig_file(self):
        (self.folder / "src").mkdir()
        (self.folder / "src/a.m").write_text("x = 1;\n", encoding="ascii")
        (self.folder / "host.c").write_text(HOST, encoding="ascii")
        self.kraddon("create", "p.kraddon", "src", "--name", "Host")
        subprocess.run([os.environ["CC"], "-std=c11", "host.c", "-o", "host",
                        *self.flags("kraddon_packaging")],
                       cwd=self.folder, check=True)

        listed = subprocess.run([self.folder / "host", "p.kraddon"], cwd=self.folder, check=True,
                                capture_output=True, text=True).stdout

        self.assertEqual(listed, "1\n")

    def hosts_page(self):
        return (self.tree / "share/doc/kraddon/docs/hosts.md").read_text(encoding="utf-8")

    def test_the_include_line_of_the_hosts_page_compiles(self):
        line, = re.findall("^#include.*$", self.hosts_page(), re.MULTILINE)
        for name, compiler in (("line.c", os.environ["CC"]), ("line.cpp", os.environ["CXX"])):
            (self.folder / name).write_text(line + "\n", encoding="ascii")
            subprocess.run([compiler, "-c", name, *self.flags("kraddon_packaging")],
                           cwd=self.folder, check=True)

        source = self.folder / "outside"
        source.mkdir()
        (source / "host.cpp").write_text(line + "\nint main() { return "
                                         "QueryKRFcnTable_kraddon_packaging()->entryPointCount"
                                         " == 20 ? 0 : 1; }\n", encoding="ascii")
        (source / "CMakeLists.txt").write_text(HOST_PROJECT, encoding="ascii")
        self.build(source)
        subprocess.run([source / "build/host"], check=True)

    def test_the_example_of_the_hosts_page_is_there(self):
        link, = re.findall(r"\]\((\S*host\.c)\)", self.hosts_page())
        example = self.tree / "share/doc/kraddon/docs" / link
        subprocess.run([os.environ["CC"], "-std=c11", example, "-o", "host",
                        *self.flags("kraddon_packaging")], cwd=self.folder, check=True)

    def test_the_hosts_page_lists_the_functions_that_the_library_needs(self):
        library = self.tree / "lib/kraddon/host/libkraddon_packaging.so"
        symbols = subprocess.run(["nm", "-DC", "--undefined-only", library], check=True,
                                 capture_output=True, text=True).stdout
        needed = re.findall(r" U (kx\w+|matrix::[\w:]+)", symbols)
        listed, = re.findall("```text\n(.*?)```", self.hosts_page(), re.DOTALL)

        self.assertEqual(sorted(listed.split()), sorted(needed))

    def flags(self, name):
        """The flags of a library in the tree, from pkg-config."""
        return subprocess.run(["pkg-config", "--cflags", "--libs", name], check=True,
                              capture_output=True, text=True,
                              env={**os.environ,
                                   "PKG_CONFIG_PATH": str(self.tree / "lib/pkgconfig")}
                              ).stdout.split()

    def build(self, source):
        """Builds a CMake project that uses the tree."""
        for words in (["-S", source, "-B", source / "build", f"-DCMAKE_PREFIX_PATH={self.tree}",
                       f"-DCMAKE_CXX_COMPILER={os.environ['CXX']}"], ["--build", source / "build"]):
            done = subprocess.run([os.environ["CMAKE"], *words], capture_output=True, text=True,
                                  check=False)
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def check_classes(self, program):
        """Runs the program made from CLASSES."""
        (self.folder / "a.m").write_text("x = 1;\n", encoding="ascii")
        done = subprocess.run([program, "out.kraddon", "a.m"], cwd=self.folder, check=False,
                              capture_output=True, text=True)

        self.assertEqual((done.returncode, done.stdout, done.stderr),
                         (0, "From outside 2.5 lib/a.m\n", ""))
        self.assertEqual(self.kraddon("info", "out.kraddon", "--field", "name"), "From outside\n")

    def test_a_program_that_links_the_classes_builds_with_cmake(self):
        source = self.folder / "outside"
        source.mkdir()
        (source / "classes.cpp").write_text(CLASSES, encoding="ascii")
        (source / "CMakeLists.txt").write_text(PROJECT, encoding="ascii")

        self.build(source)

        self.check_classes(source / "build/classes")

    def test_a_program_that_links_the_classes_builds_with_pkgconfig(self):
        (self.folder / "classes.cpp").write_text(CLASSES, encoding="ascii")

        done = subprocess.run([os.environ["CXX"], "-std=c++20", "classes.cpp", "-o", "classes",
                               *self.flags("kraddon")],
                              cwd=self.folder, capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)

        self.check_classes(self.folder / "classes")

    def test_headers_compile_and_none_is_internal(self):
        root = self.tree / "include/kraddon"
        headers = sorted(str(path.relative_to(root)) for path in root.rglob("*.h"))
        self.assertIn("opc/model/Package.h", headers)
        self.assertEqual([name for name in headers if "/detail/" in name], [])
        done = subprocess.run([os.environ["CXX"], "-std=c++20", "-fsyntax-only", "-x", "c++",
                               f"-I{root}", "-"], text=True, capture_output=True, check=False,
                              input="".join(f'#include "{name}"\n' for name in headers))
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_nothing_in_the_tree_names_the_folders_of_the_build_and_the_first_install(self):
        for file in [*self.tree.glob("lib/pkgconfig/*"), *self.tree.glob("lib/cmake/kraddon/*"),
                     *self.tree.glob("share/man/man1/*")]:
            text = file.read_text(encoding="utf-8")
            self.assertNotIn(os.environ["KRADDON_BUILD"], text, file)
            self.assertNotIn(str(self.folder), text, file)

    def test_pages_and_completions_are_where_programs_look_for_them(self):
        for name in ("man/man1/kraddon.1", "man/man1/kraddon-verify.1", "man/man5/kraddon.toml.5",
                     "kraddon/manifest.schema.json",
                     "bash-completion/completions/kraddon", "zsh/site-functions/_kraddon",
                     "fish/vendor_completions.d/kraddon.fish", "doc/kraddon/LICENSE", "doc/kraddon/copyright"):
            self.assertTrue((self.tree / "share" / name).is_file(), name)


if __name__ == "__main__":
    unittest.main()
