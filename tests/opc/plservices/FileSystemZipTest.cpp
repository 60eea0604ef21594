// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
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
  EXPECT_TRUE(fs::is_empty(target() / "folder"));
  EXPECT_EQ(test::readFile(target() / "a"), "good");
}

INSTANTIATE_TEST_SUITE_P(Sizes, FileSystemZipDamage, testing::Values(1000, 17u << 20));

}  // namespace
