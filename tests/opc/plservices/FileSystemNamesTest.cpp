// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/opc/plservices/ScratchTree.h"

// Names that part names cannot express, and what other programs put into packages.

namespace {

using test::errorOf;
using test::ScratchTree;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::vector<std::string> awkwardPaths() {
  std::vector<std::string> paths{"plain.m",
                                 "with space.m",
                                 " ",
                                 "trailing space ",
                                 "trailing.",
                                 "folder./a",
                                 "...",
                                 "new\nline.m",
                                 "tab\t",
                                 "\x01\x02\x7f",
                                 "c1\xc2\x85",
                                 "quote'\"`.m",
                                 "100%.m",
                                 "%41.m",
                                 "%2e%2e/%2F",
                                 "back\\slash.m",
                                 "..\\..\\evil.m",
                                 "br[ack]{et}s",
                                 "a&b<c>d.m",
                                 "#?;:@!$()*+,=|^",
                                 "\xc3\xa9.m",
                                 "e\xcc\x81.m",
                                 "\xf0\x9f\x98\x80",
                                 "\xef\xbf\xbe",
                                 "_rels/.rels",
                                 "_rels/a.m.rels",
                                 "[Content_Types].xml",
                                 "sub/_rels/x.rels",
                                 "metadata/license.xml",
                                 "files/files/a",
                                 "CON",
                                 "C:/x",
                                 "-rf",
                                 "~",
                                 ".hidden",
                                 "x.rels"};
  paths.push_back(std::string(255, 'n'));
  paths.push_back("long/" + std::string(85, 'x') + std::string(170, '\n'));
  return paths;
}

class FileSystemNames : public testing::TestWithParam<std::string> {};

TEST_P(FileSystemNames, AFileOfThatNameComesBackAsItWent) {
  ScratchTree tree;
  tree.addFile(GetParam(), "the content");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre(GetParam()));
  EXPECT_EQ(tree.content(GetParam()), "the content");
  EXPECT_THAT(tree.files.unreadable(), IsEmpty());
}

TEST_P(FileSystemNames, AnEmptyFolderOfThatNameComesBackAsItWent) {
  ScratchTree tree;
  tree.addFolder(GetParam());
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre(GetParam()));
  EXPECT_FALSE(tree.files.find(GetParam())->isFile());
}

INSTANTIATE_TEST_SUITE_P(Awkward, FileSystemNames, testing::ValuesIn(awkwardPaths()));

TEST(FileSystemNamesTogether, AllOfThemGoIntoOneTree) {
  ScratchTree tree;
  for (const std::string& path : awkwardPaths()) tree.addFile(path, "<" + path + ">");
  tree.reopen(ScratchTree::OpenMode::Modify);
  tree.addFile("one more.");
  tree.reopen();

  EXPECT_EQ(tree.list().size(), awkwardPaths().size() + 1);
  for (const std::string& path : awkwardPaths()) {
    EXPECT_EQ(tree.content(path), "<" + path + ">");
  }
}

TEST(FileSystemNamesTogether, NamesThatDifferOnlyInCaseAreTwo) {
  ScratchTree tree;
  for (const char* path : {"a.m", "A.m", "A.M", "dir/x", "DIR/x", "Dir/y"}) {
    tree.addFile(path, path);
  }
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("A.M", "A.m", "DIR/x", "Dir/y", "a.m", "dir/x"));
  for (const std::string& path : tree.list()) EXPECT_EQ(tree.content(path), path);
}

TEST(FileSystemNamesTogether, AFileBesideAFolderThatDiffersInCaseIsTaken) {
  for (const bool fileFirst : {true, false}) {
    ScratchTree tree;
    if (fileFirst) tree.addFile("A", "file");
    tree.addFile("a/x", "inside");
    if (!fileFirst) tree.addFile("A", "file");
    tree.reopen();

    EXPECT_THAT(tree.list(), ElementsAre("A", "a/x"));
    EXPECT_EQ(tree.content("A"), "file");
    EXPECT_EQ(tree.content("a/x"), "inside");
  }
}

TEST(FileSystemNamesTogether, ComposedAndDecomposedAreTwo) {
  ScratchTree tree;
  tree.addFile("\xc3\xa9", "composed");
  tree.addFile("e\xcc\x81", "decomposed");
  tree.reopen();

  EXPECT_EQ(tree.content("\xc3\xa9"), "composed");
  EXPECT_EQ(tree.content("e\xcc\x81"), "decomposed");
}

TEST(FileSystemNamesTogether, AMadeUpPartKeepsAPlainExtensionAndWithItItsType) {
  ScratchTree tree;
  tree.addFile("a\\b.m");
  tree.addFile("a\\b.x y");
  tree.reopen();

  EXPECT_EQ(tree.itemName("a\\b.m"), "metadata/fileTree/1.m");
  EXPECT_EQ(tree.itemName("a\\b.x y"), "metadata/fileTree/2");
}

TEST(FileSystemNamesTogether, MadeUpNamesGoOnAfterThoseThatAreThere) {
  ScratchTree tree;
  tree.addFile("a\\1.m");
  tree.reopen(ScratchTree::OpenMode::Modify);

  tree.addFile("a\\2.m");

  EXPECT_EQ(tree.itemName("a\\2.m"), "metadata/fileTree/2.m");
}

TEST(FileSystemNamesTogether, TenThousandLevelsComeBack) {
  ScratchTree tree;
  std::string deep;
  for (int level = 0; level < 10'000; ++level) deep += "d/";
  tree.addFile(deep + "x.m", "deep");
  tree.addFile(deep + "y.", "in the table");
  tree.addFolder(deep + "empty");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre(deep + "empty", deep + "x.m", deep + "y."));
  EXPECT_EQ(tree.content(deep + "x.m"), "deep");
  EXPECT_EQ(tree.content(deep + "y."), "in the table");
}

TEST(FileSystemNamesTogether, APathTooLongForAnItemGoesIntoTheTable) {
  ScratchTree tree;
  std::string path;
  while (path.size() < 70'000) path += std::string(200, 'x') + "/";
  path += "a.m";
  tree.addFile(path, "far");
  tree.reopen();

  EXPECT_EQ(tree.itemName(path), "metadata/fileTree/1.m");
  EXPECT_EQ(tree.content(path), "far");
}

TEST(FileSystemNamesTogether, APathTooLongForTheTableIsRefused) {
  ScratchTree tree;
  std::string path;
  while (path.size() < 600'000) path += std::string(200, 'x') + "/";
  path += "a.m";

  EXPECT_THAT(errorOf([&] { tree.addFile(path); }), HasSubstr("path is too long"));
  EXPECT_THAT(errorOf([&] { tree.addFolder(path); }), HasSubstr("path is too long"));
  EXPECT_THAT(tree.list(), IsEmpty());
}

TEST(FileSystemNamesTogether, AFileThatNoPartNameIsLeftForIsRefused) {
  ScratchTree tree;
  tree.addPart(u"/metadata/fileTree", "in the way of every name below it");

  EXPECT_THAT(errorOf([&] { tree.addFile("a."); }),
              HasSubstr("cannot add 'a.': no part name is left for it"));
  EXPECT_THAT(tree.list(), IsEmpty());
}

struct StrangePart {
  const char16_t* name;
  const char* why;
};
class FileSystemForeignNames : public testing::TestWithParam<StrangePart> {};

TEST_P(FileSystemForeignNames, AreReportedAndNotInTheTree) {
  ScratchTree tree;
  tree.addFile("good.m");
  tree.addPart(GetParam().name, "x");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("good.m"));
  ASSERT_EQ(tree.files.unreadable().size(), 1u);
  EXPECT_THAT(tree.files.unreadable()[0].line, StartsWith("part '" + opc::toUtf8(GetParam().name) +
                                                          "' is not a file of the tree: "));
  EXPECT_THAT(tree.files.unreadable()[0].line, HasSubstr(GetParam().why));
}

INSTANTIATE_TEST_SUITE_P(Parts, FileSystemForeignNames,
                         testing::Values(StrangePart{u"/files/a%0Ab.m", "control character"},
                                         StrangePart{u"/files/a%7f", "control character"},
                                         StrangePart{u"/files/%C2%85", "control character"},
                                         StrangePart{u"/files/a%01/b.m", "control character"},
                                         StrangePart{u"/files/%FF.m", "UTF-8"},
                                         StrangePart{u"/files/%C3/%A9", "UTF-8"},
                                         StrangePart{u"/files/%ED%A0%80", "UTF-8"}));

TEST(FileSystemForeignNamesTogether, ItemsBelowTheFolderThatAreNotPartsAreReported) {
  ScratchTree tree;
  tree.addFile("good.m");
  tree.package.close(false);
  tree.disk.add("files/a b.m", "a space")
      .add("FILES/no.type", "no type")
      .add("other place/a b", "x");
  tree.package.open(ScratchTree::OpenMode::Read);

  EXPECT_THAT(tree.list(), ElementsAre("good.m"));
  ASSERT_EQ(tree.files.unreadable().size(), 2u);
  EXPECT_EQ(tree.files.unreadable()[0].line,
            "item 'files/a b.m' is not a file of the tree: it is not a part");
  EXPECT_EQ(tree.files.unreadable()[0].name, "/files/a b.m");
  EXPECT_EQ(tree.files.unreadable()[0].why, "it is not a file of the tree: it is not a part");
  EXPECT_EQ(tree.files.unreadable()[1].line,
            "item 'FILES/no.type' is not a file of the tree: it has no content type");
}

TEST(FileSystemForeignNamesTogether, TwoSpellingsOfOnePathAreOneFileAndOneReport) {
  ScratchTree tree;
  tree.addPart(u"/files/a!", "first");
  tree.addPart(u"/files/a%21", "second");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("a!"));
  ASSERT_EQ(tree.files.unreadable().size(), 1u);
  EXPECT_THAT(tree.files.unreadable()[0].line, HasSubstr("'a!'"));
}

TEST(FileSystemForeignNamesTogether, APathThatIsAFileAndAFolderIsReported) {
  for (const bool fileFirst : {true, false}) {
    ScratchTree tree;
    if (fileFirst) tree.addPart(u"/files/a!", "file");
    tree.addPart(u"/files/a%21/b", "inside");
    if (!fileFirst) tree.addPart(u"/files/a!", "file");
    tree.reopen();

    EXPECT_THAT(tree.list(), ElementsAre(fileFirst ? "a!" : "a!/b"));
    EXPECT_EQ(tree.files.unreadable().size(), 1u);
  }
}

TEST(FileSystemForeignNamesTogether, PartsOutsideTheFilesFolderAreNotFiles) {
  ScratchTree tree;
  tree.addPart(u"/filesystem/a", "x");
  tree.addPart(u"/b/files/c", "x");
  tree.reopen();

  EXPECT_THAT(tree.list(), IsEmpty());
}

TEST(FileSystemForeignNamesTogether, TheFilesFolderIsKnownInAnyCase) {
  ScratchTree tree;
  tree.addPart(u"/FILES/Sub/a.m", "x");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("Sub/a.m"));
}

TEST(FileSystemForeignNamesTogether, AFileWhosePathAReportedPartSpellsCanBeAdded) {
  ScratchTree tree;
  tree.addPart(u"/files/a%0A", "theirs");
  tree.reopen(ScratchTree::OpenMode::Modify);
  tree.addFile("a\n", "ours");
  tree.reopen();

  EXPECT_THAT(tree.list(), ElementsAre("a\n"));
  EXPECT_EQ(tree.content("a\n"), "ours");
  EXPECT_EQ(tree.files.unreadable().size(), 1u);
}

}  // namespace
