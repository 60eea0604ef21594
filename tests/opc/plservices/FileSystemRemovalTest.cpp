// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/opc/plservices/ScratchTree.h"

// Removing files and folders, and replacing the content of files.

namespace {

using opc::plservices::FileContentSource;
using opc::plservices::FileSystemEntry;
using test::errorOf;
using test::ScratchTree;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using OpenMode = opc::interfaces::OpenMode;

constexpr const char16_t* kTable = u"/metadata/fileTree.xml";

void remove(ScratchTree& tree, std::string_view path) {
  tree.files.remove(*tree.files.find(path));
}

void replace(ScratchTree& tree, std::string_view path, std::string_view content) {
  tree.files.replaceFile(*tree.files.find(path),
                         std::make_unique<FileContentSource>(tree.diskFile(content)));
}

TEST(FileSystemRemoval, AFileGoesWithItsPart) {
  ScratchTree tree;
  tree.addFile("a.m");
  tree.addFile("lib/b.m");
  tree.addFile("lib/c.m", "kept");
  tree.reopen(OpenMode::Modify);

  remove(tree, "lib/b.m");

  EXPECT_THAT(tree.list(), ElementsAre("a.m", "lib/c.m"));
  EXPECT_EQ(tree.files.find("lib/b.m"), nullptr);
  tree.reopen();
  EXPECT_THAT(tree.list(), ElementsAre("a.m", "lib/c.m"));
  EXPECT_FALSE(tree.hasPart(u"/files/lib/b.m"));
  EXPECT_EQ(tree.content("lib/c.m"), "kept");
}

TEST(FileSystemRemoval, AFolderGoesWithAllBelowIt) {
  ScratchTree tree;
  for (const char* path : {"a/x", "a/b/y", "a/b/z.", "ab"}) tree.addFile(path);
  tree.addFolder("a/void");
  tree.reopen(OpenMode::Modify);

  remove(tree, "a");

  EXPECT_THAT(tree.list(), ElementsAre("ab"));
  tree.reopen();
  EXPECT_THAT(tree.list(), ElementsAre("ab"));
  EXPECT_FALSE(tree.hasPart(kTable));
}

TEST(FileSystemRemoval, AFolderThatLosesItsLastEntryStaysEmpty) {
  ScratchTree tree;
  tree.addFile("a/b/c.m");
  tree.reopen(OpenMode::Modify);

  remove(tree, "a/b/c.m");
  tree.reopen(OpenMode::Modify);

  EXPECT_THAT(tree.list(), ElementsAre("a/b"));
  remove(tree, "a/b");
  tree.reopen(OpenMode::Modify);
  EXPECT_THAT(tree.list(), ElementsAre("a"));
  remove(tree, "a");
  tree.reopen();
  EXPECT_THAT(tree.list(), IsEmpty());
  EXPECT_FALSE(tree.hasPart(kTable));
}

TEST(FileSystemRemoval, FilesWithMadeUpNamesLeaveNothingBehind) {
  ScratchTree tree;
  for (const char* path : {"one.", "two.", "READ", "read"}) tree.addFile(path, path);
  tree.reopen(OpenMode::Modify);
  const std::string gone = tree.itemName("one.");

  remove(tree, "one.");
  remove(tree, "READ");
  tree.reopen(OpenMode::Modify);

  EXPECT_THAT(tree.list(), ElementsAre("read", "two."));
  EXPECT_EQ(tree.content("two."), "two.");
  EXPECT_EQ(tree.content("read"), "read");
  EXPECT_FALSE(tree.hasPart(opc::fromUtf8("/" + gone)));
  remove(tree, "two.");
  remove(tree, "read");
  tree.reopen();
  EXPECT_FALSE(tree.hasPart(kTable));
  EXPECT_THAT(tree.package.getRelationships(), IsEmpty());
}

TEST(FileSystemRemoval, WhatWasRemovedCanBeAddedAgain) {
  ScratchTree tree;
  tree.addFile("a", "old");
  tree.addFile("b/c", "old");
  tree.addFile("d.", "old");

  for (const char* path : {"a", "b", "d."}) remove(tree, path);
  tree.addFile("a/x", "new");
  tree.addFile("b", "new");
  tree.addFile("d.", "new");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("a/x", "b", "d."));
  for (const char* path : {"a/x", "b", "d."}) EXPECT_EQ(tree.content(path), "new") << path;
}

TEST(FileSystemRemoval, AnAdditionFillsTheFolderThatARemovalLeftEmpty) {
  ScratchTree tree;
  tree.addFile("a/x");

  remove(tree, "a/x");
  tree.addFile("a/y");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("a/y"));
  EXPECT_FALSE(tree.hasPart(kTable));
}

TEST(FileSystemRemoval, EntriesOfWhatIsGoneAreRefused) {
  ScratchTree tree;
  tree.addFile("a/x");
  const FileSystemEntry folder = *tree.files.find("a");
  const FileSystemEntry file = *tree.files.find("a/x");

  tree.files.remove(folder);

  for (const FileSystemEntry& entry : {folder, file}) {
    EXPECT_THAT(errorOf([&] { entry.path(); }), HasSubstr("after it was removed"));
    EXPECT_THAT(errorOf([&] { tree.files.remove(entry); }), HasSubstr("after it was removed"));
    EXPECT_THAT(errorOf([&] { tree.files.getChildren(entry); }), HasSubstr("after it was removed"));
  }
}

TEST(FileSystemRemoval, TheRootStays) {
  ScratchTree tree;
  tree.addFile("a");

  EXPECT_EQ(errorOf([&] { tree.files.remove(tree.files.getRoot()); }),
            "cannot remove the root of the file tree");
  EXPECT_THAT(tree.list(), ElementsAre("a"));
}

TEST(FileSystemRemoval, NothingChangesInAPackageOpenedForReading) {
  ScratchTree tree;
  tree.addFile("a/x", "old");
  tree.addFile("end.", "old");
  tree.addFolder("void");
  tree.reopen();

  for (const char* path : {"a", "a/x", "end.", "void"}) {
    EXPECT_THAT(errorOf([&] { remove(tree, path); }), HasSubstr("opened for reading")) << path;
  }
  EXPECT_THAT(errorOf([&] { replace(tree, "a/x", "new"); }), HasSubstr("opened for reading"));
  EXPECT_THAT(tree.list(), ElementsAre("a/x", "end.", "void"));
  EXPECT_EQ(tree.content("a/x"), "old");
}

TEST(FileSystemRemoval, AFullTableKeepsTheLastFileOfAFolder) {
  ScratchTree tree;
  // Entries of the table, 60 MiB in all, with few long paths.
  const std::string folder = std::string(2'000, 'n') + "/";
  std::string deep;
  for (int i = 0; i < 240; ++i) deep += folder;
  for (int i = 0; i < 130; ++i) tree.addFolder(deep + std::to_string(i));
  tree.addFile("last/x.m");
  std::string error = "no error";
  for (int i = 0; error == "no error" && i < 200'000; ++i) {
    error = errorOf([&] { tree.addFolder("f" + std::to_string(i)); });
  }
  ASSERT_THAT(error, HasSubstr("the table of the file tree is full"));

  EXPECT_EQ(errorOf([&] { remove(tree, "last/x.m"); }),
            "cannot keep the empty folder 'last': the table of the file tree is full");
  EXPECT_NE(tree.files.find("last/x.m"), nullptr);
}

TEST(FileSystemReplacement, AFileGetsTheContentOfAnotherAndKeepsItsPart) {
  ScratchTree tree;
  tree.addFile("a.m", "old");
  tree.addFile("end.", "old");
  tree.addFile("other", "other");
  tree.reopen(OpenMode::Modify);
  const std::string madeUp = tree.itemName("end.");

  replace(tree, "a.m", "new");
  replace(tree, "end.", "newer");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("a.m", "end.", "other"));
  EXPECT_EQ(tree.content("a.m"), "new");
  EXPECT_EQ(tree.content("end."), "newer");
  EXPECT_EQ(tree.content("other"), "other");
  EXPECT_EQ(tree.itemName("end."), madeUp);
}

TEST(FileSystemReplacement, TheContentTypeStays) {
  ScratchTree tree;
  tree.addPart(u"/files/a.m", "old");
  tree.reopen(OpenMode::Modify);

  replace(tree, "a.m", "new");
  tree.reopen();

  const auto part = tree.package.getPart(opc::model::PartName(u"/files/a.m"));
  EXPECT_EQ(part->getContentType().ascii(), "application/octet-stream");
  EXPECT_EQ(tree.content("a.m"), "new");
}

TEST(FileSystemReplacement, AFolderHasNoContent) {
  ScratchTree tree;
  tree.addFolder("a");

  EXPECT_EQ(errorOf([&] { replace(tree, "a", "new"); }), "cannot replace 'a': it is a folder");
}

}  // namespace
