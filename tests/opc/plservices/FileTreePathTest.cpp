// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "opc/Exception.h"
#include "opc/plservices/TreePath.h"

namespace {

using namespace std::string_view_literals;
using opc::plservices::extensionOf;
using opc::plservices::findPathFault;
using opc::plservices::hasControlCharacter;
using opc::plservices::lastComponent;
using opc::plservices::requireTreePath;
using testing::HasSubstr;

struct RefusedPath {
  std::string_view path;
  const char* why;
};

class FileTreePathRefused : public testing::TestWithParam<RefusedPath> {};

TEST_P(FileTreePathRefused, SaysWhy) {
  const char* fault = findPathFault(GetParam().path);

  ASSERT_NE(fault, nullptr);
  EXPECT_THAT(fault, HasSubstr(GetParam().why));
}

INSTANTIATE_TEST_SUITE_P(
    Paths, FileTreePathRefused,
    testing::Values(RefusedPath{"", "empty"}, RefusedPath{"/a", "empty comp"},
                    RefusedPath{"a/", "empty component"}, RefusedPath{"a//b", "empty component"},
                    RefusedPath{"/", "empty component"}, RefusedPath{".", "'.'"},
                    RefusedPath{"..", "'..'"}, RefusedPath{"a/./b", "'.'"},
                    RefusedPath{"a/../b", "'..'"}, RefusedPath{"a/..", "'..'"},
                    RefusedPath{"../a", "'..'"}, RefusedPath{"a\0b"sv, "NUL"},
                    RefusedPath{"a\xff", "UTF-8"}, RefusedPath{"a\xed\xa0\x80", "UTF-8"},
                    RefusedPath{"\xc0\xaf", "UTF-8"}));

class FileTreePathTaken : public testing::TestWithParam<std::string_view> {};

TEST_P(FileTreePathTaken, HasNoFault) {
  EXPECT_EQ(findPathFault(GetParam()), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Paths, FileTreePathTaken,
                         testing::Values("a", "a/b/c", "...", "..a", "a..", "a.", " ", "a b", "-",
                                         "\\", "..\\a", "a\nb", "\x01", "C:", "%2e%2e", "\"'<>&|?*",
                                         "_rels/.rels", "[Content_Types].xml",
                                         "\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"));

TEST(FileTreePath, OneLeadingSlashIsDropped) {
  EXPECT_EQ(requireTreePath("/a/b"), "a/b");
}

TEST(FileTreePath, ASecondLeadingSlashIsAnEmptyComponent) {
  EXPECT_THROW(requireTreePath("//a"), opc::Exception);
}

TEST(FileTreePath, ARefusalNamesThePath) {
  try {
    requireTreePath("a/../b");
    FAIL() << "taken";
  } catch (const opc::Exception& error) {
    EXPECT_EQ(error.code(), opc::ErrorCode::InvalidName);
    EXPECT_STREQ(error.what(), "path 'a/../b' is not valid in a package: it has a component '..'");
  }
}

TEST(FileTreePath, ControlCharactersAreThoseOfAsciiAndLatin1) {
  EXPECT_TRUE(hasControlCharacter("a\nb"));
  EXPECT_TRUE(hasControlCharacter("a\x7f"));
  EXPECT_TRUE(hasControlCharacter("\xc2\x80"));
  EXPECT_TRUE(hasControlCharacter("\xc2\x9f"));
  EXPECT_FALSE(hasControlCharacter("\xc2\xa0"));
  EXPECT_FALSE(hasControlCharacter("a b~\xc3\x82\xc3\x80"));
}

TEST(FileTreePath, ExtensionIsThatOfTheLastComponent) {
  EXPECT_EQ(extensionOf("a.b/c.tar.gz"), "gz");
  EXPECT_EQ(extensionOf("a.b/c"), "");
  EXPECT_EQ(extensionOf("a/.profile"), "");
  EXPECT_EQ(extensionOf("a/c."), "");
}

TEST(FileTreePath, LastComponentOfASingleNameIsTheName) {
  EXPECT_EQ(lastComponent("a"), "a");
  EXPECT_EQ(lastComponent("a/b/c"), "c");
}

}  // namespace
