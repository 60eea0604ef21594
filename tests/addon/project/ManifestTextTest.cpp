// SPDX-License-Identifier: MIT
#include "addon/project/ManifestText.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "addon/project/detail/TomlText.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using addon::project::Guesses;
using addon::project::manifestText;
using addon::project::detail::tomlArray;
using addon::project::detail::tomlBlock;
using addon::project::detail::tomlComment;
using addon::project::detail::tomlString;

/// What an independent reader finds at `where` of a document, as Python writes it.
std::string readBack(const std::string& document, const std::string& where) {
  const test::TemporaryFolder folder;
  test::writeFile(folder / "a.toml", document);
  test::writeFile(folder / "a.py", "import tomllib\ndocument = tomllib.load(open('" +
                                       (folder / "a.toml").string() + "', 'rb'))\nopen('" +
                                       (folder / "out").string() + "', 'w').write(ascii(document" +
                                       where + "))\n");
  const std::string line = "/usr/bin/python3 '" + (folder / "a.py").string() + "'";
  EXPECT_EQ(std::system(line.c_str()), 0) << document;
  return test::readFile(folder / "out");
}

struct Text {
  const char* text;
  const char* back;  // as Python writes it
};

class TomlTexts : public testing::TestWithParam<Text> {};

TEST_P(TomlTexts, ComeBackAsTheyWere) {
  const std::string text = GetParam().text;
  const std::string expected = GetParam().back;

  EXPECT_EQ(readBack("a = " + tomlString(text) + "\n", "['a']"), expected);
  EXPECT_EQ(readBack("a = " + tomlBlock(text) + "\n", "['a']"), expected);
  EXPECT_EQ(readBack("a = " + tomlArray({text, text}) + "\n", "['a'][1]"), expected);
}

INSTANTIATE_TEST_SUITE_P(All, TomlTexts,
                         testing::Values(Text{"", "''"}, Text{"a \"b\" c", "'a \"b\" c'"},
                                         Text{"\\n", "'\\\\n'"},
                                         Text{"\x01\x1f\x7f\t", "'\\x01\\x1f\\x7f\\t'"},
                                         Text{"a\nb \"\"\"\"\" c\n\"", "'a\\nb \"\"\"\"\" c\\n\"'"},
                                         Text{"\n\na\n", "'\\n\\na\\n'"},
                                         Text{"ends in \\\nx\\", "'ends in \\\\\\nx\\\\'"},
                                         Text{"\xC3\xA4\xF0\x9F\x98\x80", "'\\xe4\\U0001f600'"}));

TEST(TomlText, ACarriageReturnIsKeptInALineAndEndsOneInABlock) {
  EXPECT_EQ(readBack("a = " + tomlString("a\rb\r\nc") + "\n", "['a']"), "'a\\rb\\r\\nc'");
  EXPECT_EQ(readBack("a = " + tomlBlock("a\rb\r\nc\r") + "\n", "['a']"), "'a\\nb\\nc\\n'");
}

TEST(TomlText, ACommentStaysOnItsLine) {
  EXPECT_EQ(tomlComment("a\nb = 1\xff"), "# a\\nb = 1\\xff\n");
}

TEST(TomlText, ALongArrayHasALineForEachText) {
  const std::string text(60, 'x');

  EXPECT_EQ(tomlArray({text, text}), "[\n  \"" + text + "\",\n  \"" + text + "\",\n]");
}

TEST(ManifestText, WithoutGuessesItHasOnlyTheRequiredKeys) {
  Guesses guesses;
  guesses.name = {"wave", "the folder's name"};
  guesses.version = {"1.0", ""};
  guesses.guid = {"some-guid", "x"};

  const std::string text = manifestText(guesses);

  EXPECT_EQ(readBack(text, ""),
            "{'package': {'name': 'wave', 'version': '1.0', 'guid': 'some-guid'}}");
}

TEST(ManifestText, EveryGuessComesBackFromIt) {
  Guesses guesses;
  guesses.name = {"a \"b\"", "x\ny"};
  guesses.version = {"2.0", "a tag"};
  guesses.author = {"Ada", "git"};
  guesses.contact = {"ada@example.org", "git"};
  guesses.summary = {"Spectra", "README"};
  guesses.readme = {"README", {"README.txt"}, ""};
  guesses.license = {"COPYING", {}, ""};
  guesses.licenseType = "MIT";
  guesses.screenshot = "art/screenshot.png";
  guesses.korvanPaths = {".", "l\\ib"};
  guesses.javaClassPaths = {"a.jar"};
  guesses.categories = {{"First", "examples", {{"e", "examples/e.m", "examples/e.png"}}}};
  guesses.revisions = {{"2.0", "2026-02-01", "a\nb"}, {"1.0", "", ""}};
  guesses.guid = {"g", "x"};
  guesses.apps = {{"\"v\"", "apps/\"v\".m"}};

  const std::string text = manifestText(guesses);

  EXPECT_EQ(readBack(text, "['package']"),
            "{'name': 'a \"b\"', 'version': '2.0', 'summary': 'Spectra', 'description-file': "
            "'README', 'author': 'Ada', 'guid': 'g', 'screenshot': 'art/screenshot.png'}");
  EXPECT_EQ(readBack(text, "['license']"), "{'type': 'MIT', 'file': 'COPYING'}");
  EXPECT_EQ(readBack(text, "['configuration']"),
            "{'korvan-paths': ['.', 'l\\\\ib'], 'java-class-paths': ['a.jar']}");
  EXPECT_EQ(readBack(text, "['app']"), "[{'name': '\"v\"', 'file': 'apps/\"v\".m'}]");
  EXPECT_EQ(readBack(text, "['category']"),
            "[{'name': 'First', 'example': [{'name': 'e', 'main': 'examples/e.m', 'thumbnail': "
            "'examples/e.png'}]}]");
  EXPECT_EQ(readBack(text, "['revision']"),
            "[{'version': '2.0', 'date': '2026-02-01', 'description': 'a\\nb'}, "
            "{'version': '1.0'}]");
}

TEST(ManifestText, WhatCannotBeUsedIsAComment) {
  Guesses guesses;
  guesses.readme = {"README", {}, "it is not UTF-8"};
  guesses.license = {"LICENSE", {}, "it is not UTF-8"};
  guesses.changelog = {"CHANGELOG", {}, "it is not UTF-8"};
  guesses.remarks = {"'a\nb': no"};
  guesses.guid = {"g", "x"};

  const std::string text = manifestText(guesses);

  EXPECT_EQ(readBack(text, ""), "{'package': {'name': '', 'version': '', 'guid': 'g'}}");
  EXPECT_NE(text.find("# README cannot be the description: it is not UTF-8\n"), text.npos);
  EXPECT_NE(text.find("# LICENSE cannot be the license: it is not UTF-8\n"), text.npos);
  EXPECT_NE(text.find("# CHANGELOG was not read: it is not UTF-8\n"), text.npos);
}

}  // namespace
