// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/opc/plservices/ScratchTree.h"

// The file tree in real ZIP files.

namespace {

namespace fs = std::filesystem;
using opc::interfaces::OpenMode;
using opc::plservices::FileContentSource;
using opc::plservices::FileSystemManager;
using opc::plservices::RestoreMode;
using test::errorOf;
using testing::HasSubstr;

class FileSystemZip : public testing::Test {
 protected:
  FileSystemZip() { package.open(OpenMode::Create); }

  void addFile(const std::string& path, const std::string& content) {
    const fs::path source = folder / ("source" + std::to_string(++sources_));
    test::writeFile(source, content);
    const struct timespec times[2] = {{0, 0}, {1'500'000'001, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, source.c_str(), times, 0), 0);
    files.addFile(std::make_unique<FileContentSource>(source.string()), path);
  }

  std::string extractAll() {
    return errorOf([this] { files.extractAll(target().u16string(), RestoreMode::KeepExisting); });
  }

  fs::path target() const { return folder / "target"; }

  test::TemporaryFolder folder;
  fs::path packagePath = folder / "tree.kraddon";
  opc::zippackage::ZipPhysicalPackage physical{packagePath.u16string(), true, u""};
  opc::model::Package package{physical, true};
  FileSystemManager files{package};

 private:
  int sources_ = 0;
};

// Standard output of a Python program that gets the package as its argument.
std::string runPython(const std::string& program, const fs::path& package) {
  const std::string command = "/usr/bin/python3 -c '" + program + "' " + package.string();
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
  std::string output;
  for (int c = std::fgetc(pipe.get()); c != EOF; c = std::fgetc(pipe.get())) {
    output += static_cast<char>(c);
  }
  return output;
}

TEST_F(FileSystemZip, AwkwardNamesComeBackOnTheDisk) {
  const std::vector<std::string> names{
      "plain/a.m",   "new\nline",  "back\\slash.m",       "case",     "CASE",
      "Case/inside", "trailing. ", "trailing.",           "100%25.m", "\xf0\x9f\x98\x80",
      "_rels/.rels", "e\xcc\x81",  "[Content_Types].xml", "\xc3\xa9", std::string(255, 'n')};
  for (const std::string& name : names) addFile(name, "<" + name + ">");
  files.createFolder(u"empty\tfolder");
  package.close(false);
  package.open(OpenMode::Read);

  EXPECT_EQ(extractAll(), "no error");

  for (const std::string& name : names) {
    EXPECT_EQ(test::readFile(target() / name), "<" + name + ">");
  }
  EXPECT_TRUE(fs::is_directory(target() / "empty\tfolder"));
}

TEST_F(FileSystemZip, OtherProgramsSeeAReadableTreeOfAsciiNames) {
  addFile("My Files/a.m", "1");
  addFile("\xc3\xa9.m", "2");
  addFile("x\\y.m", "3");
  package.close(false);

  const std::string output = runPython(
      "import sys, zipfile; z = zipfile.ZipFile(sys.argv[1]); "
      "print(z.testzip(), *sorted(n for n in z.namelist() if not n.startswith((\"[\", \"_\"))))",
      packagePath);

  EXPECT_EQ(output,
            "None files/%C3%A9.m files/My%20Files/a.m metadata/fileTree.xml "
            "metadata/fileTree/1.m\n");
}

TEST_F(FileSystemZip, TimesAreExactToTheSecond) {
  addFile("a", "1");
  package.close(false);
  package.open(OpenMode::Read);

  EXPECT_EQ(extractAll(), "no error");

  struct stat status {};
  ASSERT_EQ(::stat((target() / "a").c_str(), &status), 0);
  EXPECT_EQ(status.st_mtim.tv_sec, 1'500'000'001);
}

TEST_F(FileSystemZip, WhatIsRemovedOrReplacedLeavesTheOtherEntriesAsTheyLie) {
  for (const char* path : {"a.m", "lib/b.m", "lib/end.", "lib/Lib.m", "lib/lib.m", "z/y/x.m"}) {
    addFile(path, std::string(300, 'x') + path);
  }
  package.close(false);
  const std::string digests =
      "import sys, zipfile, hashlib\n"
      "data = open(sys.argv[1], \"rb\").read()\n"
      "archive = zipfile.ZipFile(sys.argv[1])\n"
      "assert archive.testzip() is None\n"
      "for e in sorted(archive.infolist(), key=lambda e: e.filename):\n"
      "    if not e.filename.startswith((\"files/\", \"metadata/fileTree/\")): continue\n"
      "    at = e.header_offset\n"
      "    size = 30 + data[at + 26] + data[at + 28] + e.compress_size\n"
      "    print(e.filename, hashlib.sha256(data[at:at + size]).hexdigest())\n";
  const auto linesOf = [](const std::string& text) {
    std::map<std::string, std::string> lines;
    std::istringstream stream(text);
    for (std::string name, digest; stream >> name >> digest;) lines[name] = digest;
    return lines;
  };
  auto expected = linesOf(runPython(digests, packagePath));
  ASSERT_EQ(expected.size(), 6u);
  package.open(OpenMode::Modify);
  const std::string madeUp(files.find("lib/end.")->info().itemName);
  const std::string replaced(files.find("a.m")->info().itemName);

  files.remove(*files.find("lib/end."));
  files.remove(*files.find("z/y/x.m"));
  test::writeFile(folder / "new", "new");
  files.replaceFile(*files.find("a.m"),
                    std::make_unique<FileContentSource>((folder / "new").string()));
  package.close(false);

  auto found = linesOf(runPython(digests, packagePath));
  expected.erase(madeUp);
  expected.erase("files/z/y/x.m");
  EXPECT_NE(found[replaced], expected[replaced]);
  found.erase(replaced);
  expected.erase(replaced);
  EXPECT_EQ(found, expected);
  package.open(OpenMode::Read);
  EXPECT_EQ(extractAll(), "no error");
  EXPECT_EQ(test::readFile(target() / "a.m"), "new");
  EXPECT_TRUE(fs::is_empty(target() / "z/y"));
  EXPECT_EQ(test::readFile(target() / "lib/lib.m"), std::string(300, 'x') + "lib/lib.m");
  EXPECT_FALSE(fs::exists(target() / "lib/end."));
}

class FileSystemZipDamage : public FileSystemZip,
                            public testing::WithParamInterface<std::size_t> {};

TEST_P(FileSystemZipDamage, IsFoundTheFileNamedAndNothingOfItLeft) {
  std::string noise(GetParam(), '\0');
  std::uint32_t state = 1;
  for (char& c : noise) c = static_cast<char>((state = state * 1664525u + 1013904223u) >> 24);
  addFile("a", "good");
  addFile("folder/bad", noise);
  addFile("z", "good");
  package.close(false);
  std::string bytes = test::readFile(packagePath);
  const std::size_t at = bytes.find(noise.substr(noise.size() - 50));
  ASSERT_NE(at, std::string::npos) << "the noise is not stored as it is";
  bytes[at] = static_cast<char>(bytes[at] ^ 1);
  test::writeFile(packagePath, bytes);
  package.open(OpenMode::Read);

  const std::string error = extractAll();

  EXPECT_THAT(error,
              HasSubstr("cannot extract 'folder/bad' to '" + target().string() + "/folder/bad': "));
  EXPECT_FALSE(fs::exists(target() / "folder"));
  EXPECT_EQ(test::readFile(target() / "a"), "good");
}

INSTANTIATE_TEST_SUITE_P(Sizes, FileSystemZipDamage, testing::Values(1000, 17u << 20));

// Deflated, these would take a hundred bytes, and the package could not be read back.
TEST_F(FileSystemZip, AThousandNestedFoldersAndMoreComeBack) {
  std::string deep = "d";
  for (int level = 0; level < 20'000; ++level) deep += "/d";
  files.createFolder(opc::fromUtf8(deep));
  package.close(false);
  EXPECT_GT(fs::file_size(packagePath), 20'000u);
  package.open(OpenMode::Read);

  EXPECT_TRUE(files.find(deep));
}

TEST_F(FileSystemZip, WhatARemovedFileAllowedTheTableToMakeComesBackToo) {
  std::string noise(40'000, ' ');
  std::uint32_t state = 1;
  for (char& c : noise) c = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  addFile("noise.bin", noise);
  std::string table =
      "<fileTree xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/fileTree\">"
      "<folder path=\"d";
  for (int level = 0; level < 20'000; ++level) table += "/d";
  const auto part = package.createPart(
      opc::model::PartName(u"/metadata/fileTree.xml"), opc::model::ContentType(u"text/xml"),
      opc::model::StandardPartInfo(opc::interfaces::CompressionType::Normal, 0));
  table += "\"/></fileTree>";
  part->getOutputStream()->write(reinterpret_cast<const unsigned char*>(table.data()),
                                 table.size());
  package.close(false);
  package.open(OpenMode::Modify);
  files.remove(*files.find("noise.bin"));
  package.close(false);
  package.open(OpenMode::Read);

  EXPECT_EQ(errorOf([this] { files.getRoot(); }), "no error");
}

}  // namespace
