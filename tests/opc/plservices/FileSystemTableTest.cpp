// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "opc/model/Relationship.h"
#include "opc/plservices/LoadedFileTree.h"
#include "tests/opc/plservices/ScratchTree.h"

// When the table of the file tree is written, and what is made of one that is read.

namespace {

using test::errorOf;
using test::ScratchTree;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char16_t* kTable = u"/metadata/fileTree.xml";
constexpr const char16_t* kType =
    u"http://schemas.pellandry.example/korvan/addon/2014/relationships/fileTree";

std::size_t countRelationships(ScratchTree& tree) {
  return tree.package.getRelationshipsByType(kType).size();
}

std::string readPart(ScratchTree& tree, const char16_t* name) {
  opc::ByteBuffer buffer;
  const auto id = tree.package.getPart(opc::model::PartName(name))->id();
  tree.package.readPart(id, buffer, 1u << 20);
  return {reinterpret_cast<const char*>(buffer.data()), buffer.size()};
}

TEST(FileSystemTable, IsNotThereForPlainFiles) {
  ScratchTree tree;
  tree.addFile("a/b.m");
  tree.reopen();

  EXPECT_FALSE(tree.hasPart(kTable));
  EXPECT_EQ(countRelationships(tree), 0u);
}

TEST(FileSystemTable, IsThereForAnEmptyFolderWithItsTypeAndRelationship) {
  ScratchTree tree;
  tree.addFolder("a b");
  tree.reopen();

  ASSERT_TRUE(tree.hasPart(kTable));
  EXPECT_EQ(tree.package.getPart(opc::model::PartName(kTable))->getContentType().ascii(),
            "application/vnd.pellandry.korvan.addon.fileTree+xml");
  ASSERT_EQ(countRelationships(tree), 1u);
  EXPECT_EQ(tree.package.getRelationshipsByType(kType)[0].getTargetURI().toString(), kTable);
  EXPECT_THAT(readPart(tree, kTable), HasSubstr("<folder path=\"a%20b\"/>"));
}

TEST(FileSystemTable, HoldsEverythingThatWasAddedAfterItWasMade) {
  ScratchTree tree;
  tree.addFolder("first");
  tree.addFolder("second");
  tree.addFile("third.");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("first", "second", "third."));
}

TEST(FileSystemTable, GoesWhenTheOnlyEmptyFolderGetsAFile) {
  ScratchTree tree;
  tree.addFolder("a");
  tree.addFile("a/x.m");
  tree.reopen();

  EXPECT_FALSE(tree.hasPart(kTable));
  EXPECT_EQ(countRelationships(tree), 0u);
  EXPECT_THAT(tree.list(), ElementsAre("a/x.m"));
}

TEST(FileSystemTable, OfAPackageOnDiskGoesWhenNothingIsLeftForIt) {
  ScratchTree tree;
  tree.addFolder("a");
  tree.reopen(ScratchTree::OpenMode::Modify);
  tree.addFile("a/x.m");
  tree.reopen();

  EXPECT_FALSE(tree.hasPart(kTable));
  EXPECT_EQ(countRelationships(tree), 0u);
}

TEST(FileSystemTable, ComesAndGoesAndComesWithinOneTransaction) {
  ScratchTree tree;
  for (int i = 0; i < 50; ++i) {
    const std::string folder = "f" + std::to_string(i);
    tree.addFolder(folder);
    tree.addFile(folder + "/x");
  }
  tree.addFolder("last");
  tree.reopen();

  EXPECT_EQ(tree.list().size(), 51u);
  EXPECT_EQ(countRelationships(tree), 1u);
}

TEST(FileSystemTable, NamesOnlyTheInnermostOfNestedEmptyFolders) {
  ScratchTree tree;
  tree.addFolder("a");
  tree.addFolder("a/b");
  tree.addFolder("a/b/c");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("a/b/c"));
  EXPECT_THAT(readPart(tree, kTable), Not(HasSubstr("path=\"a/b\"")));
}

TEST(FileSystemTable, KeepsItsOldEntriesAndItsRelationshipWhenOneIsAdded) {
  ScratchTree tree;
  tree.addFolder("old");
  tree.addFile("old.", "1");
  tree.reopen(ScratchTree::OpenMode::Modify);
  const auto id = tree.package.getRelationshipsByType(kType)[0].getId();
  tree.addFolder("new");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("new", "old", "old."));
  EXPECT_EQ(tree.content("old."), "1");
  ASSERT_EQ(countRelationships(tree), 1u);
  EXPECT_EQ(tree.package.getRelationshipsByType(kType)[0].getId(), id);
}

TEST(FileSystemTable, IsUntouchedWhenPlainFilesAreAdded) {
  ScratchTree tree;
  tree.addFolder("empty");
  tree.reopen(ScratchTree::OpenMode::Modify);
  tree.addFile("plain.m");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("empty", "plain.m"));
}

TEST(FileSystemTable, SurvivesItsManager) {
  ScratchTree tree;
  {
    opc::plservices::FileSystemManager files(tree.package);
    files.createFolder(u"made by another");
  }
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("made by another"));
}

TEST(FileSystemTable, IsFoundThroughItsRelationshipWhereverItLies) {
  ScratchTree tree;
  tree.addPart(u"/elsewhere/tree.xml",
               "<fileTree xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/fileTree\">"
               "<folder path=\"a\"/></fileTree>");
  tree.package.createInternalRelationship(kType, opc::model::URI(u"/elsewhere/tree.xml"), u"");
  tree.reopen(ScratchTree::OpenMode::Modify);
  EXPECT_THAT(tree.list(), ElementsAre("a"));

  tree.addFolder("b");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("a", "b"));
  EXPECT_FALSE(tree.hasPart(kTable));
  EXPECT_EQ(countRelationships(tree), 1u);
}

TEST(FileSystemTable, IsReadByItsNameWithoutARelationship) {
  ScratchTree tree;
  tree.addPart(kTable,
               "<fileTree xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/fileTree\">"
               "<folder path=\"a\"/></fileTree>");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("a"));
}

TEST(FileSystemTable, AFolderThatIsNotEmptyAfterAllIsNotAnError) {
  ScratchTree tree;
  tree.addFolder("a");
  tree.addPart(u"/files/a/b", "put there by another program");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("a/b"));
}

TEST(FileSystemTable, AFileMayLieInTheFilesFolderUnderAnotherName) {
  ScratchTree tree;
  tree.addPart(u"/files/a%0Ab", "text");
  tree.addPart(kTable,
               "<fileTree xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/fileTree\">"
               "<file path=\"a%0Ab\" part=\"/files/a%0Ab\"/></fileTree>");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("a\nb"));
  EXPECT_TRUE(tree.files.unreadable().empty());
}

struct BadTable {
  const char* entries;
  const char* why;
};
class FileSystemTableRefused : public testing::TestWithParam<BadTable> {};

TEST_P(FileSystemTableRefused, NamesThePartAndTheEntry) {
  ScratchTree tree;
  tree.addPart(u"/p/1", "one");
  tree.addPart(u"/p/2", "two");
  tree.addPart(u"/files/taken/x", "plain");
  tree.addPart(kTable,
               "<fileTree xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/fileTree\">" +
                   std::string(GetParam().entries) + "</fileTree>");
  tree.reopen();

  const std::string error = errorOf([&tree] { tree.list(); });

  EXPECT_THAT(error, HasSubstr("/metadata/fileTree.xml"));
  EXPECT_THAT(error, HasSubstr(GetParam().why));
}

INSTANTIATE_TEST_SUITE_P(
    Entries, FileSystemTableRefused,
    testing::Values(
        BadTable{"<file path=\"a\" part=\"/p/3\"/>", "'/p/3' is not in the package"},
        BadTable{"<file path=\"a\" part=\"/p/1\"/><file path=\"a\" part=\"/p/2\"/>", "'a'"},
        BadTable{"<file path=\"a\" part=\"/p/1\"/><file path=\"b\" part=\"/P/1\"/>", "'/P/1'"},
        BadTable{"<file path=\"a\" part=\"/p/1\"/><file path=\"a/b\" part=\"/p/2\"/>",
                 "'a' is a file"},
        BadTable{"<file path=\"a\" part=\"/p/1\"/><folder path=\"a\"/>", "'a' is a file"},
        BadTable{"<file path=\"a\" part=\"p/1\"/>", "p/1"},
        BadTable{"<folder path=\"a\"/><folder path=\"a\"/>", "twice"},
        BadTable{"<folder path=\"taken/x\"/>", "'taken/x' is a file"},
        BadTable{"<folder path=\"../a\"/>", "'../a'"}));

TEST(FileSystemTable, ABrokenOneIsRefusedEachTimeItIsAskedFor) {
  ScratchTree tree;
  tree.addPart(kTable, "<fileTree");
  tree.reopen();

  EXPECT_THROW(tree.list(), opc::Exception);
  EXPECT_THROW(tree.list(), opc::Exception);
}

TEST(FileSystemTable, TwoRelationshipsToOneAreRefused) {
  ScratchTree tree;
  tree.addFolder("a");
  tree.package.createInternalRelationship(kType, opc::model::URI(u"/elsewhere"), u"");
  tree.reopen();

  EXPECT_THAT(errorOf([&tree] { tree.list(); }), HasSubstr("2 relationships"));
}

TEST(FileSystemTable, ARelationshipThatLeadsOutsideIsRefused) {
  ScratchTree tree;
  tree.package.createExternalRelationship(kType, opc::model::URI(u"http://x.example/"), u"");
  tree.reopen();

  EXPECT_THAT(errorOf([&tree] { tree.list(); }),
              HasSubstr("to the file tree leads out of the package"));
}

TEST(FileSystemTable, AFileWhoseEntryCannotBeStoredIsNotThere) {
  ScratchTree tree;
  tree.addPart(u"/metadata/fileTree.xml/in.the.way", "x");

  EXPECT_THAT(errorOf([&tree] { tree.addFile("a."); }), HasSubstr("'/metadata/fileTree.xml'"));

  EXPECT_FALSE(tree.files.find("a."));
  EXPECT_FALSE(tree.hasPart(u"/metadata/fileTree/1"));
  tree.reopen();
  EXPECT_TRUE(tree.list().empty());
}

// A table that makes so many folders, one inside the other.
void addDeepTable(ScratchTree& tree, std::size_t folders) {
  std::string path = "d";
  for (std::size_t made = 1; made < folders; ++made) path += "/d";
  tree.addPart(kTable,
               "<fileTree xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/fileTree\">"
               "<folder path=\"" +
                   path + "\"/></fileTree>");
  tree.reopen();
}

TEST(FileSystemTable, MayMakeAThousandFoldersAndOneForEachByteOfThePackage) {
  ScratchTree tree;
  addDeepTable(tree, 3000);
  tree.physical.pretendFileSize(2000);
  EXPECT_EQ(tree.list().size(), 1u);

  tree.reopen();
  tree.physical.pretendFileSize(1999);

  EXPECT_THAT(errorOf([&tree] { tree.list(); }),
              AllOf(HasSubstr("/metadata/fileTree.xml"), HasSubstr("more than 2999")));
}

TEST(FileSystemTable, CountsFoldersAboveItsFilesAndTheFilesThemselves) {
  ScratchTree tree;
  tree.addPart(u"/p/1", "one");
  std::string path;
  for (int level = 0; level < 1000; ++level) path += "d/";
  tree.addPart(kTable,
               "<fileTree xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/fileTree\">"
               "<file path=\"" +
                   path + "x\" part=\"/p/1\"/></fileTree>");
  tree.reopen();
  tree.physical.pretendFileSize(1);
  EXPECT_EQ(tree.list().size(), 1u);

  tree.reopen();
  tree.physical.pretendFileSize(0);

  EXPECT_THAT(errorOf([&tree] { tree.list(); }), HasSubstr("more than 1000"));
}

TEST(FileSystemTable, CountsFoldersAboveSeveralEntriesOnce) {
  opc::plservices::LoadedFileTree tree;
  tree.nodes.reachFolder("a/b/c");
  tree.nodes.reachFolder("a/b/d");
  tree.nodes.addFile(opc::plservices::FileTree::kRoot, "e", 0);

  EXPECT_EQ(tree.tableNodes(), 4u);
}

TEST(FileSystemTable, MakesNoMoreThanTwoMillionFoldersHoweverLargeThePackage) {
  ScratchTree tree;
  std::string entries;
  for (int entry = 0; entry < 9; ++entry) {
    entries += "<folder path=\"" + std::to_string(entry);
    for (int level = 0; level < 240'000; ++level) entries += "/d";
    entries += "\"/>";
  }
  tree.addPart(kTable,
               "<fileTree xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/fileTree\">" +
                   entries + "</fileTree>");
  tree.reopen();
  tree.physical.pretendFileSize(1u << 30);

  EXPECT_THAT(errorOf([&tree] { tree.list(); }), HasSubstr("more than 2000000"));
}

TEST(FileSystemTable, DoesNotCountFoldersThatFilesMakeAnyway) {
  ScratchTree tree;
  std::string path = "d";
  for (int level = 0; level < 1500; ++level) path += "/d";
  tree.addFile(path + "/plain.m");
  tree.addFolder(path + "/empty");
  tree.reopen();
  tree.physical.pretendFileSize(0);

  EXPECT_EQ(tree.list().size(), 2u);
}

TEST(FileSystemTable, ARelationshipThatLeadsNowhereIsRefused) {
  ScratchTree tree;
  tree.package.createInternalRelationship(kType, opc::model::URI(u"/gone.xml"), u"");
  tree.reopen();

  EXPECT_THAT(errorOf([&tree] { tree.list(); }), HasSubstr("'/gone.xml'"));
}

}  // namespace
