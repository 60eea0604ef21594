// SPDX-License-Identifier: MIT
#include "opc/plservices/FileSystemManager.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/opc/plservices/ScratchTree.h"
#include "tests/support/Threads.h"

namespace {

using opc::plservices::FileContentSource;
using opc::plservices::FileSystemEntry;
using opc::plservices::FileSystemEntryAlreadyExists;
using opc::plservices::FileSystemManager;
using opc::plservices::RestoreMode;
using test::errorOf;
using test::ScratchTree;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> namesOf(const std::vector<FileSystemEntry>& entries) {
  std::vector<std::string> names;
  for (const FileSystemEntry& entry : entries) names.push_back(entry.name());
  return names;
}

TEST(FileSystemManager, ANewPackageHasAnEmptyRoot) {
  ScratchTree tree;

  const FileSystemEntry root = tree.files.getRoot();

  EXPECT_FALSE(root.isFile());
  EXPECT_EQ(root.getPathName(), u"");
  EXPECT_THAT(tree.files.getChildren(root), IsEmpty());
  EXPECT_THAT(tree.list(), IsEmpty());
}

TEST(FileSystemManager, FilesAndEmptyFoldersAreListedInOrderAndFoldersWithChildrenAreNot) {
  ScratchTree tree;
  tree.addFile("c.m");
  tree.addFile("a/x.m");
  tree.addFolder("a/b");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("a/b", "a/x.m", "c.m"));
}

TEST(FileSystemManager, ChildrenAreEntriesWithFullPaths) {
  ScratchTree tree;
  tree.addFile("a/x.m");
  tree.addFolder("a/b");

  const auto children = tree.files.getChildren(*tree.files.find("a"));

  ASSERT_EQ(children.size(), 2u);
  EXPECT_EQ(children[0].getPathName(), u"a/b");
  EXPECT_FALSE(children[0].isFile());
  EXPECT_EQ(children[1].path(), "a/x.m");
  EXPECT_TRUE(children[1].isFile());
  EXPECT_THAT(tree.files.getChildren(children[1]), IsEmpty());
}

TEST(FileSystemManager, ChildrenComeInTheOrderOfCodeUnits) {
  ScratchTree tree;
  const std::string emoji = "\xf0\x9f\x98\x80";
  const std::string fullwidth = "\xef\xbd\x81";
  for (const auto& name : {fullwidth, emoji, std::string("z"), std::string("Z")}) {
    tree.addFile(name);
  }
  tree.reopen();

  EXPECT_THAT(namesOf(tree.files.getChildren(tree.files.getRoot())),
              ElementsAre("Z", "z", emoji, fullwidth));
}

TEST(FileSystemManager, AnAddedFileIsReturnedAndFound) {
  ScratchTree tree;
  const auto entry = tree.files.addFile(opc::fromUtf8(tree.diskFile("hello")), u"/a/b.m");

  EXPECT_EQ(entry->getPathName(), u"a/b.m");
  EXPECT_TRUE(entry->isFile());
  EXPECT_EQ(entry->info().size, 5u);
  EXPECT_EQ(tree.content("a/b.m"), "hello");
  EXPECT_FALSE(tree.files.find("a")->isFile());
}

TEST(FileSystemManager, FindKnowsTheRootAndNothingThatIsNotThere) {
  ScratchTree tree;
  tree.addFile("a/b");

  EXPECT_EQ(tree.files.find("")->path(), "");
  EXPECT_EQ(tree.files.find("/a")->path(), "a");
  for (const char* path : {"b", "a/c", "a/b/c", "A", "a/", "a//b", "a/./b", ".."}) {
    EXPECT_EQ(tree.files.find(path), nullptr) << path;
  }
}

TEST(FileSystemManager, TimeAndExecutableBitOfAFileSurvive) {
  ScratchTree tree;
  const std::string source = tree.diskFile("#!/bin/sh");
  const struct timespec times[2] = {{0, 0}, {1'000'000'007, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, source.c_str(), times, 0), 0);
  ASSERT_EQ(::chmod(source.c_str(), 0755), 0);
  tree.files.addFile(std::make_unique<FileContentSource>(source), "run.sh");
  tree.addFile("plain");
  tree.reopen();

  EXPECT_EQ(tree.files.find("run.sh")->info().modified, 1'000'000'007);
  EXPECT_TRUE(tree.files.find("run.sh")->info().executable);
  EXPECT_FALSE(tree.files.find("plain")->info().executable);
}

TEST(FileSystemManager, AFileIsAPartOfItsEncodedPathAndItsExtensionsType) {
  ScratchTree tree;
  tree.addFile("My Files/100%.M");
  tree.addFile("unknown.zzz");
  tree.reopen();

  EXPECT_EQ(tree.itemName("My Files/100%.M"), "files/My%20Files/100%25.M");
  const auto part = tree.package.getPart(opc::model::PartName(u"/files/My%20Files/100%25.M"));
  EXPECT_EQ(part->getContentType().ascii(), "text/plain");
  EXPECT_EQ(
      tree.package.getPart(opc::model::PartName(u"/files/unknown.zzz"))->getContentType().ascii(),
      "application/octet-stream");
}

struct TakenPath {
  const char* path;
  bool isFolder;
};
class FileSystemManagerTaken : public testing::TestWithParam<TakenPath> {};

TEST_P(FileSystemManagerTaken, ThrowsTheExceptionOfItsOwnAndNamesThePath) {
  ScratchTree tree;
  tree.addFile("a/file");
  tree.addFolder("a/empty");
  const auto before = tree.list();

  const auto add = [&tree] {
    GetParam().isFolder ? tree.addFolder(GetParam().path) : tree.addFile(GetParam().path);
  };

  EXPECT_THROW(add(), FileSystemEntryAlreadyExists);
  EXPECT_THAT(errorOf(add), HasSubstr("'" + std::string(GetParam().path) + "'"));
  EXPECT_EQ(tree.list(), before);
}

INSTANTIATE_TEST_SUITE_P(Paths, FileSystemManagerTaken,
                         testing::Values(TakenPath{"a/file", false}, TakenPath{"a/file", true},
                                         TakenPath{"a/empty", false}, TakenPath{"a/empty", true},
                                         TakenPath{"a", false}, TakenPath{"a", true}));

TEST(FileSystemManager, AParentThatIsAFileIsAnErrorThatNamesIt) {
  ScratchTree tree;
  tree.addFile("a/file");

  for (const auto& add : std::vector<std::function<void()>>{
           [&tree] { tree.addFile("a/file/x"); }, [&tree] { tree.addFolder("a/file/x"); }}) {
    try {
      add();
      FAIL() << "added";
    } catch (const FileSystemEntryAlreadyExists&) {
      FAIL() << "the path itself was free";
    } catch (const opc::Exception& error) {
      EXPECT_STREQ(error.what(), "cannot add 'a/file/x': 'a/file' is a file");
    }
  }
  EXPECT_THAT(tree.list(), ElementsAre("a/file"));
}

TEST(FileSystemManager, AMissingSourceChangesNothing) {
  ScratchTree tree;

  EXPECT_THROW(tree.files.addFile(u"/nonexistent/file", u"a/b"), opc::Exception);

  EXPECT_THAT(tree.list(), IsEmpty());
  EXPECT_EQ(tree.files.find("a"), nullptr);
  EXPECT_FALSE(tree.hasPart(u"/files/a/b"));
}

TEST(FileSystemManager, InvalidPathsAreRefused) {
  ScratchTree tree;
  const std::u16string source = opc::fromUtf8(tree.diskFile("x"));

  for (const char16_t* path : {u"", u"/", u"a/", u"a//b", u"a/../b", u".", u"//a", u"\xD800"}) {
    EXPECT_THROW(tree.files.addFile(source, path), opc::Exception);
    EXPECT_THROW(tree.files.createFolder(path), opc::Exception);
  }
  EXPECT_THAT(errorOf([&tree] { tree.addFile("a\xff"); }), HasSubstr("not UTF-8"));
  EXPECT_THAT(tree.list(), IsEmpty());
}

TEST(FileSystemManager, AddingToAPackageThatIsOpenForReadingChangesNothing) {
  ScratchTree tree;
  tree.addFile("a");
  tree.reopen(ScratchTree::OpenMode::Read);

  EXPECT_THROW(tree.addFile("b"), opc::Exception);
  EXPECT_THROW(tree.addFile("b."), opc::Exception);
  EXPECT_THROW(tree.addFolder("c"), opc::Exception);

  EXPECT_THAT(tree.list(), ElementsAre("a"));
}

TEST(FileSystemManager, AClosedPackageHasNoTree) {
  ScratchTree tree;
  tree.package.close(true);

  EXPECT_THROW(tree.files.getRoot(), opc::Exception);
  EXPECT_THROW(tree.addFile("a"), opc::Exception);
}

TEST(FileSystemManager, DiscardedAdditionsAreGoneWhenThePackageIsOpenedAgain) {
  ScratchTree tree;
  tree.addFile("a");
  tree.reopen(ScratchTree::OpenMode::Modify);
  tree.addFile("b");
  tree.addFolder("c");

  tree.package.close(true);
  tree.package.open(ScratchTree::OpenMode::Read);

  EXPECT_THAT(tree.list(), ElementsAre("a"));
}

TEST(FileSystemManager, AnEntryOfAnotherPackageIsRefused) {
  ScratchTree one;
  ScratchTree other;

  EXPECT_THROW(one.files.getChildren(other.files.getRoot()), opc::Exception);
}

TEST(FileSystemManager, AnEntryOfAFileThatWasDiscardedIsRefused) {
  ScratchTree tree;
  tree.addFile("a");
  tree.reopen(ScratchTree::OpenMode::Modify);
  tree.addFile("b");
  const FileSystemEntry entry = *tree.files.find("b");
  tree.package.close(true);
  tree.package.open(ScratchTree::OpenMode::Read);
  ASSERT_THAT(tree.list(), ElementsAre("a"));

  EXPECT_THAT(errorOf([&] { entry.path(); }), HasSubstr("its package was closed"));
}

TEST(FileSystemManager, AFolderCannotBeOpenedAsAFile) {
  ScratchTree tree;
  tree.addFolder("a");

  EXPECT_THAT(errorOf([&tree] { tree.files.openFile(*tree.files.find("a")); }),
              HasSubstr("'a': it is a folder"));
}

TEST(FileSystemManager, ExtractsWithTheThreadThatItIsGiven) {
  ScratchTree tree;
  tree.addFile("a", "content");
  tree.reopen();
  int started = 0;
  tree.files.setBackground([&started](std::function<void()> work) {
    ++started;
    return std::make_unique<test::ThreadTask>(std::move(work));
  });

  tree.files.extract({tree.files.getRoot()}, (tree.folder / "new").string(),
                     RestoreMode::KeepExisting, nullptr);

  EXPECT_EQ(started, 1);
  EXPECT_EQ(test::readFile(tree.folder / "new" / "a"), "content");
}

TEST(FileSystemManager, ManyFilesAreAddedAndComeBack) {
  ScratchTree tree;
  const std::string source = tree.diskFile("x");
  constexpr int kCount = 20'000;
  for (int i = 0; i < kCount; ++i) {
    tree.files.addFile(std::make_unique<FileContentSource>(source),
                       "folder" + std::to_string(i / 100) + "/file" + std::to_string(i) + ".m");
  }
  tree.reopen();

  EXPECT_EQ(tree.list().size(), static_cast<std::size_t>(kCount));
  EXPECT_EQ(tree.content("folder199/file19999.m"), "x");
}

}  // namespace
