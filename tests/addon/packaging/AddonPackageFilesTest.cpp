// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonPackage.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/addon/packaging/AddonPackageFixture.h"

using addon::packaging::AddonPackage;
using test::readFile;
using test::writeFile;

namespace {

class AddonPackageFiles : public test::AddonPackageTest {};

TEST_F(AddonPackageFiles, FilesComeBackInTheOrderOfTheTree) {
  create();
  const std::u16string file = diskFile("x.m");

  modify([&](AddonPackage& package) {
    package.addFiles({file, file}, {u"c.m", u"a/x.m"});
    package.addFolders({u"a/b"});
  });

  EXPECT_EQ(list(), (std::vector<std::u16string>{u"a/b", u"a/x.m", u"c.m"}));
}

TEST_F(AddonPackageFiles, APackageWithoutFilesListsNothing) {
  create();

  EXPECT_TRUE(list().empty());
}

TEST_F(AddonPackageFiles, AnExistingFolderIsNotAnErrorAndTheNextOneIsStillMade) {
  create();

  modify([&](AddonPackage& package) { package.addFolders({u"a", u"a", u"b"}); });

  EXPECT_EQ(list(), (std::vector<std::u16string>{u"a", u"b"}));
}

TEST_F(AddonPackageFiles, AnExistingFileEndsAddingAndThoseBeforeItStay) {
  create();
  const std::u16string file = diskFile("x.m");

  modify([&](AddonPackage& package) {
    EXPECT_THROW(package.addFiles({file, file, file}, {u"1.m", u"1.m", u"2.m"}),
                 opc::plservices::FileSystemEntryAlreadyExists);
  });

  EXPECT_EQ(list(), (std::vector<std::u16string>{u"1.m"}));
}

TEST_F(AddonPackageFiles, AnotherFaultThanAnExistingFolderEndsAddingFolders) {
  create();

  modify([&](AddonPackage& package) {
    EXPECT_THROW(package.addFolders({u"a", u"..", u"b"}), opc::Exception);
  });

  EXPECT_EQ(list(), (std::vector<std::u16string>{u"a"}));
}

TEST_F(AddonPackageFiles, AnEmptyFirstListAddsNothingWhateverTheSecondHolds) {
  create();

  modify([&](AddonPackage& package) { package.addFiles({}, {u"a.m", u"b.m"}); });

  EXPECT_TRUE(list().empty());
}

TEST_F(AddonPackageFiles, ASecondListThatIsTooShortEndsAddingWhereItEnds) {
  create();
  const std::u16string file = diskFile("x.m");

  modify([&](AddonPackage& package) {
    EXPECT_THROW(package.addFiles({file, file}, {u"a.m"}), std::out_of_range);
  });

  EXPECT_EQ(list(), (std::vector<std::u16string>{u"a.m"}));
}

TEST_F(AddonPackageFiles, AFolderWithTheNameOfAFileIsSkipped) {
  create();
  const std::u16string file = diskFile("x.m");

  modify([&](AddonPackage& package) {
    package.addFiles({file}, {u"taken"});
    package.addFolders({u"taken", u"next"});
  });

  EXPECT_EQ(list(), (std::vector<std::u16string>{u"next", u"taken"}));
}

TEST_F(AddonPackageFiles, AThousandNestedFoldersAreListed) {
  create();
  std::u16string deep = u"d";
  for (int i = 1; i < 1000; ++i) deep += u"/d";

  modify([&](AddonPackage& package) { package.addFolders({deep}); });

  EXPECT_EQ(list(), (std::vector<std::u16string>{deep}));
}

TEST_F(AddonPackageFiles, ExtractingWritesTheTreeAndReplacesFiles) {
  create();
  const std::u16string file = diskFile("x.m", "new");
  modify([&](AddonPackage& package) {
    package.addFiles({file}, {u"a/x.m"});
    package.addFolders({u"empty"});
  });
  std::filesystem::create_directories(folder() / "out" / "a");
  writeFile(folder() / "out" / "a" / "x.m", "old");

  read([&](AddonPackage& package) {
    package.extractAllFiles((folder() / "out").u16string());
    return 0;
  });

  EXPECT_EQ(readFile(folder() / "out" / "a" / "x.m"), "new");
  EXPECT_TRUE(std::filesystem::is_directory(folder() / "out" / "empty"));
}

}  // namespace
