// SPDX-License-Identifier: MIT
#include "opc/TemporaryFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/TemporaryFolder.h"

namespace {

using opc::isTemporaryName;
using opc::temporaryName;

TEST(TemporaryFile, ANameThatIsMadeIsRecognised) {
  for (const std::string name : {"a", "p.kraddon", "\xC3\xA9", "."}) {
    EXPECT_TRUE(isTemporaryName(temporaryName(name))) << name;
  }
}

TEST(TemporaryFile, NamesOfOtherShapesAreNot) {
  for (const char* name :
       {"", ".tmp", ".abcdef.tmp", "..abcdef.tmp", "a.abcdef.tmp", ".a.abcdefg.tmp",
        ".a.abc_ef.tmp", ".a.abcdef.tmpx", ".kraddon-abcdef"}) {
    EXPECT_FALSE(isTemporaryName(name)) << name;
  }
}

TEST(TemporaryFile, TwoNamesDiffer) {
  EXPECT_NE(temporaryName("a"), temporaryName("a"));
}

TEST(TemporaryFile, ALongNameIsCutAtACharacter) {
  std::string name;
  while (name.size() < 254) name += "\xC3\xA9";

  const std::string made = temporaryName(name);

  EXPECT_LE(made.size(), 255u);
  EXPECT_GE(made.size(), 254u);
  EXPECT_EQ(made.substr(1, made.size() - 12), name.substr(0, made.size() - 12));
  EXPECT_EQ((made.size() - 12) % 2, 0u);
}

TEST(TemporaryFile, ItIsCreatedBesideTheOneThatItIsToBecome) {
  const test::TemporaryFolder folder;
  std::string path = (folder / "a.txt").string();

  const opc::FileDescriptor file = opc::createTemporaryFile(AT_FDCWD, path, O_RDWR, 0600);

  ASSERT_TRUE(file);
  const std::filesystem::path made(path);
  EXPECT_EQ(made.parent_path(), folder.path());
  EXPECT_TRUE(isTemporaryName(made.filename().string()));
  EXPECT_TRUE(std::filesystem::exists(made));
}

}  // namespace
