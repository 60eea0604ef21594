// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/Extraction.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "opc/FileDescriptor.h"
#include "opc/plservices/LoadedFileTree.h"
#include "tests/opc/plservices/ScratchTree.h"

namespace {

namespace fs = std::filesystem;
using opc::interfaces::Progress;
using opc::plservices::FileContentSource;
using opc::plservices::FileSystemEntry;
using opc::plservices::RestoreMode;
using test::errorOf;
using test::ScratchTree;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> listDisk(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    names.push_back(fs::relative(entry.path(), folder).string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

class Extraction : public testing::Test {
 protected:
  fs::path target() const { return tree.folder / "target"; }

  void extractAll(RestoreMode mode = RestoreMode::KeepExisting) {
    tree.files.extractAll(target().u16string(), mode);
  }

  void extract(const std::vector<std::string>& paths,
               RestoreMode mode = RestoreMode::KeepExisting) {
    std::vector<FileSystemEntry> entries;
    for (const std::string& path : paths) entries.push_back(*tree.files.find(path));
    tree.files.extract(entries, target().string(), mode, nullptr);
  }

  struct stat statusOf(const fs::path& path) const {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status;
  }

  ScratchTree tree;
};

class Umask {
 public:
  explicit Umask(mode_t mask) : old_(::umask(mask)) {}
  ~Umask() { ::umask(old_); }

 private:
  mode_t old_;
};

TEST_F(Extraction, WritesFilesAndEmptyFolders) {
  tree.addFile("a/x.m", "one");
  tree.addFile("c.m", "");
  tree.addFolder("a/b");
  tree.reopen();

  extractAll();

  EXPECT_THAT(listDisk(target()), ElementsAre("a", "a/b", "a/x.m", "c.m"));
  EXPECT_EQ(test::readFile(target() / "a/x.m"), "one");
  EXPECT_EQ(test::readFile(target() / "c.m"), "");
  EXPECT_TRUE(fs::is_directory(target() / "a/b"));
}

TEST_F(Extraction, OfAnEmptyTreeMakesTheFolder) {
  extractAll();

  EXPECT_THAT(listDisk(target()), IsEmpty());
}

TEST_F(Extraction, KeepsAwkwardNamesAndStaysInside) {
  const std::vector<std::string> names{"back\\slash", "new\nline",   "..\\..\\up",
                                       "trailing. ",  "-rf",         "a",
                                       "A",           "_rels/.rels", std::string(255, 'n')};
  for (const std::string& name : names) tree.addFile(name, name);
  tree.reopen();

  extractAll();

  for (const std::string& name : names) EXPECT_EQ(test::readFile(target() / name), name);
}

TEST_F(Extraction, GivesFilesTheirTimes) {
  const std::string source = tree.diskFile("x");
  const struct timespec times[2] = {{0, 0}, {987'654'321, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, source.c_str(), times, 0), 0);
  tree.files.addFile(std::make_unique<FileContentSource>(source), "a");
  tree.reopen();

  extractAll();

  EXPECT_EQ(statusOf(target() / "a").st_mtim.tv_sec, 987'654'321);
}

TEST_F(Extraction, GivesFilesTheModeThatTheUmaskLeaves) {
  const Umask umask(027);
  const std::string source = tree.diskFile("x");
  ASSERT_EQ(::chmod(source.c_str(), 0700), 0);
  tree.files.addFile(std::make_unique<FileContentSource>(source), "folder/run");
  tree.addFile("folder/plain");
  tree.reopen();

  extractAll();

  EXPECT_EQ(statusOf(target() / "folder/run").st_mode & 07777, 0750u);
  EXPECT_EQ(statusOf(target() / "folder/plain").st_mode & 07777, 0640u);
  EXPECT_EQ(statusOf(target() / "folder").st_mode & 07777, 0750u);
}

TEST_F(Extraction, ChosenEntriesComeUnderTheirFullPaths) {
  for (const char* path : {"a/b/c", "a/d", "e"}) tree.addFile(path);
  tree.addFolder("f");

  extract({"a/b", "f"});

  EXPECT_THAT(listDisk(target()), ElementsAre("a", "a/b", "a/b/c", "f"));
}

TEST_F(Extraction, EntriesThatOverlapAreWrittenOnce) {
  for (const char* path : {"a/b/c", "a/d"}) tree.addFile(path);
  std::vector<Progress> steps;
  std::vector<FileSystemEntry> entries;
  for (const char* path : {"a/b/c", "a", "a/d", "a", "a/b"}) {
    entries.push_back(*tree.files.find(path));
  }

  tree.files.extract(entries, target().string(), RestoreMode::KeepExisting,
                     [&steps](const Progress& step) { steps.push_back(step); });

  EXPECT_EQ(listDisk(target()), (std::vector<std::string>{"a", "a/b", "a/b/c", "a/d"}));
  ASSERT_EQ(steps.size(), 2u);
  EXPECT_EQ(steps[1].itemsDone, 2u);
  EXPECT_EQ(steps[1].itemsTotal, 2u);
}

TEST_F(Extraction, ProgressCountsFilesAndBytes) {
  tree.addFile("a", "12345");
  tree.addFile("b", "123");
  tree.addFolder("c");
  std::vector<std::uint64_t> bytes;

  tree.files.extract({tree.files.getRoot()}, target().string(), RestoreMode::KeepExisting,
                     [&bytes](const Progress& step) {
                       EXPECT_EQ(step.itemsTotal, 2u);
                       EXPECT_EQ(step.bytesTotal, 8u);
                       bytes.push_back(step.bytesDone);
                     });

  EXPECT_THAT(bytes, ElementsAre(5, 8));
}

TEST_F(Extraction, ALargeFileIsWrittenWithProgressOnTheWay) {
  std::string content(18u << 20, 'x');
  for (std::size_t i = 0; i < content.size(); i += 1000) content[i] = static_cast<char>(i);
  tree.addFile("large", content);
  unsigned steps = 0;

  tree.files.extract({tree.files.getRoot()}, target().string(), RestoreMode::KeepExisting,
                     [&steps](const Progress&) { ++steps; });

  EXPECT_TRUE(test::readFile(target() / "large") == content);
  EXPECT_GE(steps, 18u);
}

TEST_F(Extraction, WhatProgressThrowsLeavesNoHalfFile) {
  tree.addFile("a");
  tree.addFile("large", std::string(17u << 20, 'x'));
  const auto stop = [](const Progress& step) {
    if (step.bytesDone > (8u << 20)) throw std::string("stopped");
  };

  EXPECT_THROW(tree.files.extract({tree.files.getRoot()}, target().string(),
                                  RestoreMode::KeepExisting, stop),
               std::string);

  EXPECT_THAT(listDisk(target()), ElementsAre("a"));
}

TEST_F(Extraction, ADestinationMayBeReachedThroughALink) {
  fs::create_directory(tree.folder / "real");
  fs::create_directory_symlink("real", tree.folder / "target");
  tree.addFile("a/b");

  extractAll();

  EXPECT_THAT(listDisk(tree.folder / "real"), ElementsAre("a", "a/b"));
}

TEST_F(Extraction, FoldersAboveTheDestinationAreMadeWhereTheyAreMissing) {
  tree.addFile("a");
  const fs::path destination = tree.folder / "no/such/folder/";

  tree.files.extractAll(destination.u16string(), RestoreMode::KeepExisting);

  EXPECT_THAT(listDisk(tree.folder / "no"), ElementsAre("such", "such/folder", "such/folder/a"));
}

TEST_F(Extraction, WhatWasMadeForADestinationThatCannotBeMadeIsTakenAwayAgain) {
  tree.addFile("a");
  fs::create_directory(tree.folder / "there");
  const std::string destination = (tree.folder / "there/no/such" / std::string(300, 'x')).string();

  const auto action = [&] {
    tree.files.extractAll(opc::fromUtf8(destination), RestoreMode::KeepExisting);
  };

  EXPECT_EQ(errorOf(action), "cannot make folder '" + destination + "': File name too long");
  EXPECT_THAT(listDisk(tree.folder / "there"), testing::IsEmpty());
}

TEST_F(Extraction, ADestinationThatIsAFileIsRefused) {
  test::writeFile(target(), "mine");
  tree.addFile("a");

  EXPECT_THAT(errorOf([this] { extractAll(); }), HasSubstr("Not a directory"));
  EXPECT_EQ(test::readFile(target()), "mine");
}

TEST_F(Extraction, ADestinationWithANulIsRefused) {
  tree.addFile("a");
  const std::u16string destination = target().u16string() + std::u16string(1, u'\0') + u"x";

  const std::string error =
      errorOf([&] { tree.files.extractAll(destination, RestoreMode::KeepExisting); });

  EXPECT_THAT(error, HasSubstr("it holds a NUL"));
  EXPECT_FALSE(fs::exists(target()));
}

TEST_F(Extraction, AFolderThatIsMovedMeanwhileEndsIt) {
  std::string path;
  for (int level = 0; level < 300; ++level) path += "d/";
  tree.addFile(path + "deep");
  tree.addFile("e/late");
  tree.addFile("d/late");
  fs::create_directory(tree.folder / "elsewhere");
  bool isMoved = false;

  const std::string error = errorOf([&] {
    tree.files.extract({tree.files.getRoot()}, target().string(), RestoreMode::KeepExisting,
                       [&](const Progress&) {
                         if (isMoved) return;
                         isMoved = true;
                         fs::rename(target() / "d/d", tree.folder / "elsewhere/d");
                       });
  });

  EXPECT_THAT(error, HasSubstr("folder 'd' was moved meanwhile"));
  EXPECT_FALSE(fs::exists(tree.folder / "elsewhere/late"));
}

TEST_F(Extraction, ANameThatIsTooLongIsNamedBeforeAnythingIsWritten) {
  tree.addFile("a");
  const std::string name = "folder/" + std::string(256, 'n') + "/z";
  tree.addFile(name);

  const std::string error = errorOf([this] { extractAll(); });

  EXPECT_THAT(error, HasSubstr(std::string(256, 'n')));
  EXPECT_THAT(error, HasSubstr("256 bytes, more than 255"));
  EXPECT_FALSE(fs::exists(target()));
}

TEST_F(Extraction, ADamagedFileIsNamedAndLeavesNothingOfItself) {
  for (const std::uint64_t size : {std::uint64_t{100}, std::uint64_t{20} << 20}) {
    ScratchTree damaged;
    damaged.addFailingFile("folder/bad", size);
    damaged.addPart(u"/files/a", "good");
    damaged.addPart(u"/files/z", "never reached");
    const fs::path destination = damaged.folder / "target";

    const std::string error = errorOf(
        [&] { damaged.files.extractAll(destination.u16string(), RestoreMode::ReplaceExisting); });

    EXPECT_THAT(error, HasSubstr("cannot extract 'folder/bad' to '" + destination.string() +
                                 "/folder/bad': "));
    EXPECT_THAT(error, HasSubstr("checksum does not match"));
    EXPECT_THAT(listDisk(destination), ElementsAre("a"));
  }
}

// Memory, if there is a file system in it: a disk takes long over so many folders.
std::string makeRoomyFolder(const fs::path& otherwise) {
  std::string pattern = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm/kraddon-XXXXXX"
                                                        : (otherwise / "deep-XXXXXX").string();
  EXPECT_NE(::mkdtemp(pattern.data()), nullptr);
  return pattern;
}

TEST_F(Extraction, TenThousandLevelsAreWrittenWithFewDescriptors) {
  constexpr int kLevels = 10'000;
  const std::string source = tree.diskFile("bottom");
  std::string path;
  for (int level = 0; level < kLevels; ++level, path += "d/") {
    // On the way up every hundredth folder is needed again.
    if (level % 100 != 0) continue;
    tree.files.addFile(std::make_unique<FileContentSource>(source), path + "z");
  }
  tree.files.addFile(std::make_unique<FileContentSource>(source), path + "x");
  const std::string destination = makeRoomyFolder(tree.folder.path());
  struct rlimit before {};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  struct rlimit few = before;
  few.rlim_cur = 64;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);

  const std::string error = errorOf(
      [&] { tree.files.extractAll(opc::fromUtf8(destination), RestoreMode::KeepExisting); });

  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_EQ(error, "no error");
  opc::FileDescriptor folder(::open(destination.c_str(), O_PATH | O_DIRECTORY));
  for (int level = 0; level < kLevels && folder; ++level) {
    if (level % 100 == 0) {
      EXPECT_EQ(::faccessat(folder.get(), "z", F_OK, 0), 0) << level;
    }
    folder.reset(::openat(folder.get(), "d", O_PATH | O_DIRECTORY));
  }
  EXPECT_EQ(::faccessat(folder.get(), "x", F_OK, 0), 0);
  // Removing so deep a tree takes more than the standard library can, and very long while its last
  // folder is open.
  folder.reset();
  EXPECT_EQ(std::system(("rm -rf " + destination).c_str()), 0);
}

TEST_F(Extraction, ManyFilesOpenEachFolderAndReadEachPartOnce) {
  const std::string source = tree.diskFile("x");
  for (int i = 0; i < 600; ++i) {
    tree.files.addFile(std::make_unique<FileContentSource>(source),
                       "f" + std::to_string(i % 30) + "/n" + std::to_string(i));
  }
  tree.reopen();
  const std::size_t readBefore = tree.physical.itemsRead().size();

  extractAll();

  EXPECT_EQ(listDisk(target()).size(), 630u);
  EXPECT_EQ(tree.physical.itemsRead().size() - readBefore, 600u);
}

// The free space is the test's.
class ExtractionSpace : public Extraction {
 protected:
  std::string extractWith(std::uint64_t freeBytes, RestoreMode mode,
                          std::optional<std::uint64_t> freeInodes = std::nullopt) {
    return errorOf([&] {
      opc::plservices::FileTreePart part(tree.package);
      auto loaded = opc::plservices::loadFileTree(tree.package, part);
      opc::plservices::detail::Extraction extraction(tree.package, loaded.nodes, target().string(),
                                                     mode);
      extraction.setFreeSpaceQuery([&](int) {
        return opc::plservices::detail::FreeSpace{freeBytes, 4096, freeInodes};
      });
      extraction.run({opc::plservices::FileTree::kRoot}, nullptr);
    });
  }
};

TEST_F(ExtractionSpace, IsCountedInWholeBlocks) {
  tree.addFile("a", "1");
  tree.addFile("b", std::string(4097, 'x'));
  tree.addFile("c", "");

  EXPECT_EQ(
      extractWith(3 * 4096 - 1, RestoreMode::KeepExisting),
      "cannot extract to '" + target().string() + "': 12288 bytes are needed and 12287 are free");
  EXPECT_FALSE(fs::exists(target()));
  EXPECT_EQ(extractWith(3 * 4096, RestoreMode::KeepExisting), "no error");
  EXPECT_EQ(listDisk(target()).size(), 3u);
}

TEST_F(ExtractionSpace, HoldsABlockForEachFolder) {
  tree.addFile("a/b/c.m", "1");
  tree.addFile("a/d.m", "1");
  tree.addFolder("a/e/f");

  EXPECT_THAT(extractWith(6 * 4096 - 1, RestoreMode::KeepExisting),
              HasSubstr("24576 bytes are needed"));
  EXPECT_FALSE(fs::exists(target()));
  EXPECT_EQ(extractWith(6 * 4096, RestoreMode::KeepExisting), "no error");
}

TEST_F(ExtractionSpace, HoldsAnInodeForEachFileAndFolder) {
  tree.addFile("a/b/c.m", "1");
  tree.addFolder("a/e/f");

  EXPECT_EQ(extractWith(1u << 30, RestoreMode::KeepExisting, 4),
            "cannot extract to '" + target().string() + "': 5 inodes are needed and 4 are free");
  EXPECT_FALSE(fs::exists(target()));
  EXPECT_EQ(extractWith(1u << 30, RestoreMode::KeepExisting, 5), "no error");
}

TEST_F(ExtractionSpace, IsNotNeededForWhatIsThere) {
  tree.addFile("a/b/c.m", "1");
  tree.addFile("a/g/new.m", "1");
  tree.addFolder("a/e/f");
  fs::create_directories(target() / "a/b");
  fs::create_directories(target() / "a/e/f");
  test::writeFile(target() / "a/b/c.m", "old");

  EXPECT_THAT(extractWith(1u << 30, RestoreMode::ReplaceExisting, 1),
              HasSubstr("2 inodes are needed"));
  EXPECT_EQ(extractWith(1u << 30, RestoreMode::ReplaceExisting, 2), "no error");
}

TEST_F(ExtractionSpace, OfFilesThatAreReplacedCounts) {
  tree.addFile("a", std::string(100'000, 'x'));
  fs::create_directory(target());
  test::writeFile(target() / "a", std::string(200'000, 'y'));
  // Some file systems count blocks only once they are written.
  const opc::FileDescriptor old(::open((target() / "a").c_str(), O_WRONLY));
  ASSERT_EQ(::fsync(old.get()), 0);

  EXPECT_EQ(extractWith(0, RestoreMode::ReplaceExisting), "no error");
  EXPECT_EQ(fs::file_size(target() / "a"), 100'000u);
}

TEST_F(ExtractionSpace, AFolderThatWasThereStaysWhenThereIsNoRoom) {
  tree.addFile("a", "1");
  fs::create_directory(target());

  EXPECT_THAT(extractWith(0, RestoreMode::KeepExisting), HasSubstr("0 are free"));
  EXPECT_THAT(listDisk(target()), IsEmpty());
}

TEST_F(ExtractionSpace, ASumOfSizesThatOverflowsIsTheLargestNumber) {
  opc::plservices::detail::ExtractionPlan plan;
  plan.sizes = {~std::uint64_t{0}, ~std::uint64_t{0}, 1};

  EXPECT_EQ(plan.bytesOnDisk(4096), ~std::uint64_t{0});
}

TEST(FreeSpace, OfARealFolderIsKnown) {
  test::TemporaryFolder folder;
  const opc::FileDescriptor descriptor(::open(folder.path().c_str(), O_PATH | O_DIRECTORY));
  struct statvfs status {};
  ASSERT_EQ(::fstatvfs(descriptor.get(), &status), 0);

  const auto space = opc::plservices::detail::queryFreeSpace(descriptor.get());

  ASSERT_TRUE(space.has_value());
  EXPECT_GT(space->bytes, 0u);
  EXPECT_GE(space->blockSize, 512u);
  EXPECT_NE(space->inodes, 0u);
  EXPECT_EQ(space->inodes.has_value(), status.f_files != 0);
}

}  // namespace
