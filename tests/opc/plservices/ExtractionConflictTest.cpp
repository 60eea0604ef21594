// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/opc/plservices/ScratchTree.h"

// What happens when something is there already.

namespace {

namespace fs = std::filesystem;
using opc::plservices::RestoreMode;
using test::errorOf;
using test::readFile;
using test::ScratchTree;
using test::writeFile;
using testing::HasSubstr;

std::vector<std::string> namesIn(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  return names;
}

/// Stands in for a full disk: as long as it lives, no file grows beyond a size.
class SizeLimit {
 public:
  explicit SizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    const struct rlimit limit { bytes, before_.rlim_max };
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~SizeLimit() {
    ::setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  SizeLimit(const SizeLimit&) = delete;
  SizeLimit& operator=(const SizeLimit&) = delete;

 private:
  void (*handler_)(int);
  struct rlimit before_ {};
};

class ExtractionConflict : public testing::TestWithParam<RestoreMode> {
 protected:
  ExtractionConflict() {
    fs::create_directory(target());
    // Never an empty destination, which would be taken without looking.
    writeFile(target() / "bystander", "untouched");
    fs::create_directory(outside());
    tree.addFile("a/b/file", "new");
    tree.addFile("first", "new");
    tree.addFolder("empty");
  }

  fs::path target() const { return tree.folder / "target"; }
  fs::path outside() const { return tree.folder / "outside"; }

  std::string extract(RestoreMode mode) {
    return errorOf([&] { tree.files.extractAll(target().u16string(), mode); });
  }

  // Nothing but what the test put there.
  void expectNothingWritten() {
    EXPECT_FALSE(fs::exists(target() / "first"));
    EXPECT_FALSE(fs::exists(target() / "empty"));
    EXPECT_TRUE(fs::is_empty(outside()));
    EXPECT_EQ(readFile(target() / "bystander"), "untouched");
  }

  ScratchTree tree;
};

INSTANTIATE_TEST_SUITE_P(Modes, ExtractionConflict,
                         testing::Values(RestoreMode::KeepExisting, RestoreMode::ReplaceExisting));

TEST_P(ExtractionConflict, ExistingFoldersAreNotConflicts) {
  fs::create_directories(target() / "a/b");
  fs::create_directories(target() / "empty/with something");

  EXPECT_EQ(extract(GetParam()), "no error");

  EXPECT_EQ(readFile(target() / "a/b/file"), "new");
  EXPECT_TRUE(fs::exists(target() / "empty/with something"));
}

TEST_P(ExtractionConflict, AFolderWhereAFileMustGoIsAnError) {
  fs::create_directories(target() / "a/b/file/inside");

  const std::string error = extract(GetParam());

  EXPECT_THAT(error, HasSubstr("cannot extract 'a/b/file' to '" + target().string() +
                               "/a/b/file': a folder is there, where a file must be"));
  expectNothingWritten();
}

TEST_P(ExtractionConflict, AFileWhereAFolderMustGoIsAnError) {
  fs::create_directory(target() / "a");
  writeFile(target() / "a/b", "mine");

  const std::string error = extract(GetParam());

  EXPECT_THAT(error, HasSubstr("folder 'a/b' cannot be made: a file is in its place"));
  EXPECT_EQ(readFile(target() / "a/b"), "mine");
  expectNothingWritten();
}

TEST_P(ExtractionConflict, APipeWhereAFolderMustGoIsAnError) {
  fs::create_directory(target() / "a");
  ASSERT_EQ(::mkfifo((target() / "a/b").c_str(), 0600), 0);

  const std::string error = extract(GetParam());

  EXPECT_THAT(error, HasSubstr("folder 'a/b' cannot be made: a special file is in its place"));
  expectNothingWritten();
}

TEST_P(ExtractionConflict, AFolderThatComesWhileFilesAreWrittenIsAnErrorAndStays) {
  const auto interfere = [this](const opc::interfaces::Progress&) {
    fs::create_directory(target() / "first");
  };

  const std::string error = errorOf([&] {
    tree.files.extract({tree.files.getRoot()}, target().string(), GetParam(), interfere);
  });

  EXPECT_THAT(error, HasSubstr("cannot extract 'first'"));
  EXPECT_THAT(error, HasSubstr("a folder is there already"));
  EXPECT_TRUE(fs::is_directory(target() / "first"));
  // No temporary file either, and no empty folder of the package.
  EXPECT_THAT(namesIn(target()), testing::UnorderedElementsAre("a", "bystander", "first"));
}

TEST_P(ExtractionConflict, AFileWhereAnEmptyFolderMustGoIsAnError) {
  writeFile(target() / "empty", "mine");

  const std::string error = extract(GetParam());

  EXPECT_THAT(error, HasSubstr("a file is there, where a folder must be"));
  EXPECT_EQ(readFile(target() / "empty"), "mine");
  EXPECT_FALSE(fs::exists(target() / "first"));
}

TEST_P(ExtractionConflict, ALinkToAFolderIsNeverFollowedInTheFirstPlace) {
  fs::create_directory_symlink(outside(), target() / "a");

  EXPECT_THAT(extract(GetParam()), HasSubstr("folder 'a' cannot be made: a symbolic link"));
  expectNothingWritten();
}

TEST_P(ExtractionConflict, ALinkToAFolderIsNeverFollowedFurtherIn) {
  fs::create_directory(target() / "a");
  fs::create_directory_symlink(outside(), target() / "a/b");

  EXPECT_THAT(extract(GetParam()), HasSubstr("folder 'a/b' cannot be made: a symbolic link"));
  expectNothingWritten();
}

TEST_P(ExtractionConflict, ALinkInThePlaceOfAnEmptyFolderIsAnError) {
  fs::create_directory_symlink(outside(), target() / "empty");

  EXPECT_THAT(extract(GetParam()), HasSubstr("a symbolic link is there, where a folder must be"));
  EXPECT_FALSE(fs::exists(target() / "first"));
}

TEST_P(ExtractionConflict, ADanglingLinkInThePlaceOfAFolderIsAnError) {
  fs::create_directory_symlink("nowhere", target() / "a");

  EXPECT_THAT(extract(GetParam()), HasSubstr("a symbolic link"));
  EXPECT_FALSE(fs::exists(target() / "nowhere"));
  expectNothingWritten();
}

using ExtractionKeeping = ExtractionConflict;
INSTANTIATE_TEST_SUITE_P(Mode, ExtractionKeeping, testing::Values(RestoreMode::KeepExisting));

TEST_P(ExtractionKeeping, TheFirstExistingFileIsNamedBeforeAnythingIsWritten) {
  fs::create_directories(target() / "a/b");
  writeFile(target() / "a/b/file", "mine");
  fs::create_directory(target() / "first");

  const std::string error = extract(GetParam());

  EXPECT_EQ(error, "cannot extract 'a/b/file' to '" + target().string() +
                       "/a/b/file': a file is there already");
  EXPECT_EQ(readFile(target() / "a/b/file"), "mine");
  EXPECT_FALSE(fs::exists(target() / "empty"));
}

TEST_P(ExtractionKeeping, ALinkCountsAsAnExistingFile) {
  fs::create_symlink(outside() / "new", target() / "first");

  EXPECT_THAT(extract(GetParam()), HasSubstr("a symbolic link is there already"));
  EXPECT_TRUE(fs::is_empty(outside()));
  EXPECT_FALSE(fs::exists(target() / "a"));
}

using ExtractionReplacing = ExtractionConflict;
INSTANTIATE_TEST_SUITE_P(Mode, ExtractionReplacing, testing::Values(RestoreMode::ReplaceExisting));

TEST_P(ExtractionReplacing, AnExistingFileIsReplaced) {
  fs::create_directories(target() / "a/b");
  writeFile(target() / "a/b/file", "old and longer");

  EXPECT_EQ(extract(GetParam()), "no error");

  EXPECT_EQ(readFile(target() / "a/b/file"), "new");
}

TEST_P(ExtractionReplacing, AnotherNameOfAnExistingFileKeepsItsContent) {
  writeFile(outside() / "precious", "precious");
  fs::create_hard_link(outside() / "precious", target() / "first");

  EXPECT_EQ(extract(GetParam()), "no error");

  EXPECT_EQ(readFile(target() / "first"), "new");
  EXPECT_EQ(readFile(outside() / "precious"), "precious");
}

TEST_P(ExtractionReplacing, ALinkIsReplacedAndItsTargetKeepsItsContent) {
  writeFile(outside() / "precious", "precious");
  fs::create_symlink(outside() / "precious", target() / "first");

  EXPECT_EQ(extract(GetParam()), "no error");

  EXPECT_FALSE(fs::is_symlink(target() / "first"));
  EXPECT_EQ(readFile(target() / "first"), "new");
  EXPECT_EQ(readFile(outside() / "precious"), "precious");
}

TEST_P(ExtractionReplacing, AReadOnlyFileIsReplacedAndItsModeIsNotKept) {
  writeFile(target() / "first", "old");
  ASSERT_EQ(::chmod((target() / "first").c_str(), 0400), 0);

  EXPECT_EQ(extract(GetParam()), "no error");

  EXPECT_EQ(readFile(target() / "first"), "new");
  EXPECT_NE(fs::status(target() / "first").permissions() & fs::perms::owner_write, fs::perms::none);
}

TEST_P(ExtractionReplacing, ADamagedFileLeavesTheOldOneAndNothingElse) {
  for (const std::uint64_t size : {std::uint64_t{10}, std::uint64_t{20} << 20}) {
    ScratchTree damaged;
    damaged.addFailingFile("file", size);
    fs::create_directory(damaged.folder / "target");
    writeFile(damaged.folder / "target" / "file", "old");

    const std::string error = errorOf(
        [&] { damaged.files.extractAll((damaged.folder / "target").u16string(), GetParam()); });

    EXPECT_THAT(error, HasSubstr("checksum"));
    EXPECT_EQ(readFile(damaged.folder / "target" / "file"), "old");
    EXPECT_EQ(namesIn(damaged.folder / "target"), std::vector<std::string>{"file"});
  }
}

TEST_P(ExtractionReplacing, AWriteThatFailsLeavesTheOldOneAndNothingElse) {
  writeFile(target() / "first", "old");
  tree.addFile("first of all", std::string(100000, 'x'));
  writeFile(target() / "first of all", "old");
  const SizeLimit limit(50000);

  const std::string error = extract(GetParam());

  EXPECT_THAT(error, HasSubstr("cannot extract 'first of all'"));
  EXPECT_THAT(error, HasSubstr("cannot write: File too large"));
  EXPECT_EQ(readFile(target() / "first of all"), "old");
  EXPECT_THAT(namesIn(target()), testing::Each(testing::Not(HasSubstr(".tmp"))));
}

TEST_P(ExtractionReplacing, FilesOfTheLongestNamesAreReplacedToo) {
  const std::string ascii(255, 'n');
  std::string umlauts;
  while (umlauts.size() < 254) umlauts += "\xc3\xa9";
  for (const std::string& name : {ascii, umlauts}) {
    tree.addFile(name, "new");
    writeFile(target() / name, "old");
  }

  EXPECT_EQ(extract(GetParam()), "no error");

  EXPECT_EQ(readFile(target() / ascii), "new");
  EXPECT_EQ(readFile(target() / umlauts), "new");
  EXPECT_THAT(namesIn(target()), testing::Each(testing::Not(HasSubstr(".tmp"))));
}

TEST_P(ExtractionReplacing, TwiceInARowGivesTheSame) {
  EXPECT_EQ(extract(GetParam()), "no error");
  EXPECT_EQ(extract(GetParam()), "no error");

  EXPECT_EQ(readFile(target() / "a/b/file"), "new");
}

}  // namespace
