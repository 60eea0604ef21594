// SPDX-License-Identifier: MIT
#include "addon/comparison/FileHashes.h"

#include <algorithm>
#include <string>
#include <vector>

#include "tests/addon/comparison/ManyFilesFixture.h"
#include "tests/opc/model/PackageFixture.h"
#include "text/Sha256.h"

namespace addon::comparison {
namespace {

using opc::interfaces::Progress;

class FileHashes : public ManyFiles, public testing::WithParamInterface<test::Starter> {
 protected:
  static Hashes hash(AddonPackage& package, const std::vector<Item>& items,
                     const opc::interfaces::ProgressFunction& progress = nullptr) {
    return hashFiles(package, items, progress, GetParam().starter);
  }

  Hashes hashTree(const opc::interfaces::ProgressFunction& progress = nullptr) const {
    return read([&](AddonPackage& package) { return hash(package, readTree(package), progress); });
  }

  static Hashes expectedHashes() {
    Hashes hashes;
    for (std::uint32_t file = 0; file < kFiles; ++file) {
      hashes.push_back(text::sha256Of(contentOf(file)));
    }
    return hashes;
  }
};

TEST_P(FileHashes, ComeInTheOrderOfTheFiles) {
  createMany();

  EXPECT_EQ(hashTree(), expectedHashes());
}

TEST_P(FileHashes, OfFoldersAreEmpty) {
  create();
  modify([](AddonPackage& package) {
    package.addFolders({u"b", u"d"});
    add(package, "a", "1");
    add(package, "c", "2");
  });

  EXPECT_EQ(hashTree(), (Hashes{text::sha256Of("1"), "", text::sha256Of("2"), ""}));
}

TEST_P(FileHashes, OfAnEmptyTreeAreEmpty) {
  create();

  EXPECT_EQ(hashTree(), Hashes());
}

TEST_P(FileHashes, OfAPartInPiecesAreThoseOfTheWhole) {
  const std::string text = test::randomText(3000000);
  test::makePackage(
      file_, {"[Content_Types].xml", test::typesXml(), "a.m", text, "b.m/[0].piece",
              text.substr(0, 1000000), "b.m/[1].last.piece", text.substr(1000000), "c.m", "last"});

  const Hashes hashes =
      read([](AddonPackage& package) { return hash(package, readParts(package)); });

  EXPECT_EQ(hashes, (Hashes{text::sha256Of(text), text::sha256Of(text), text::sha256Of("last")}));
}

TEST_P(FileHashes, OfAFileThatIsTooLargeToBeHeldAreReadInPieces) {
  const std::string large(std::size_t{17} << 20, 'x');
  createMany();
  modify([&](AddonPackage& package) { add(package, "large", large); });
  std::size_t mostAtOnce = 0;
  std::uint64_t before = 0;

  const Hashes hashes = hashTree([&](const Progress& progress) {
    mostAtOnce = std::max<std::size_t>(mostAtOnce, progress.bytesDone - before);
    before = progress.bytesDone;
  });

  EXPECT_EQ(hashes.back(), text::sha256Of(large));
  EXPECT_LT(mostAtOnce, large.size());
}

TEST_P(FileHashes, OfAPackageThatIsOpenForChangesAreThoseOfTheChanges) {
  createMany();
  AddonPackage package(path());
  package.logicalPackage().open(opc::interfaces::OpenMode::Modify);
  package.fileSystem().remove(*package.fileSystem().find(pathOf(7)));
  add(package, pathOf(7), "other");
  Hashes expected = expectedHashes();
  expected[7] = text::sha256Of("other");

  EXPECT_EQ(hash(package, readTree(package)), expected);
}

TEST_P(FileHashes, OfADamagedFileAreTheSameErrorWithAndWithoutAThread) {
  createMany();
  damage(200);
  Progress last;

  const std::string error =
      test::errorOf([&] { hashTree([&](const Progress& progress) { last = progress; }); });

  EXPECT_EQ(error, "cannot read part '/files/" + pathOf(200) + "' of '" + file_.string() +
                       "': the checksum is wrong");
  EXPECT_EQ(last.itemsDone, 200u);
}

TEST_P(FileHashes, CountWhatWasRead) {
  createMany();
  std::uint64_t size = 0;
  for (std::uint32_t file = 0; file < kFiles; ++file) size += contentOf(file).size();
  Progress last;
  bool isOrdered = true;

  hashTree([&](const Progress& progress) {
    isOrdered &= last.bytesDone <= progress.bytesDone && last.itemsDone <= progress.itemsDone;
    last = progress;
  });

  EXPECT_TRUE(isOrdered);
  EXPECT_EQ(last.itemsDone, kFiles);
  EXPECT_EQ(last.itemsTotal, kFiles);
  EXPECT_EQ(last.bytesDone, size);
  EXPECT_EQ(last.bytesTotal, size);
}

struct Stop {};

TEST_P(FileHashes, EndWithWhatTheProgressThrows) {
  createMany();

  EXPECT_THROW(hashTree([&](const Progress& progress) {
                 if (progress.itemsDone == 10) throw Stop();
               }),
               Stop);
}

INSTANTIATE_TEST_SUITE_P(, FileHashes, testing::ValuesIn(test::starters()),
                         [](const auto& test) { return test.param.name; });

class FileHashesThreads : public ManyFiles {
 protected:
  /// Whether a thread is started for the files of the package.
  bool isThreaded(opc::interfaces::OpenMode mode) const {
    bool isStarted = false;
    AddonPackage package(path());
    package.logicalPackage().open(mode);
    hashFiles(package, readTree(package), nullptr, [&](std::function<void()> work) {
      isStarted = true;
      return std::make_unique<test::ThreadTask>(std::move(work));
    });
    return isStarted;
  }
};

TEST_F(FileHashesThreads, AreNotStartedForAPackageThatIsOpenForChanges) {
  createMany();

  EXPECT_TRUE(isThreaded(opc::interfaces::OpenMode::Read));
  EXPECT_FALSE(isThreaded(opc::interfaces::OpenMode::Modify));
}

TEST_F(FileHashesThreads, AreNotStartedForLittle) {
  create();
  modify([](AddonPackage& package) {
    add(package, "a", "1");
    add(package, "b", "2");
  });

  EXPECT_FALSE(isThreaded(opc::interfaces::OpenMode::Read));
}

}  // namespace
}  // namespace addon::comparison
