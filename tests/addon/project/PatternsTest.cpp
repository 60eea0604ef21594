// SPDX-License-Identifier: MIT
#include "addon/project/Patterns.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace {

using addon::project::Pattern;
using addon::project::PatternList;

struct Case {
  const char* pattern;
  const char* path;
  bool isFolder;
  bool matches;
};

class PatternCases : public testing::TestWithParam<Case> {};

TEST_P(PatternCases, MatchAsExpected) {
  const Case& c = GetParam();

  EXPECT_EQ(Pattern(c.pattern).matches(c.path, c.isFolder), c.matches)
      << c.pattern << " against " << c.path;
}

INSTANTIATE_TEST_SUITE_P(
    All, PatternCases,
    testing::Values(Case{"*.m", "a/b/c.m", false, true}, Case{"*.m", "a.mat", false, false},
                    Case{"/*.m", "a/c.m", false, false}, Case{"/*.m", "c.m", false, true},
                    Case{"a/*.m", "a/c.m", false, true}, Case{"a/*.m", "a/b/c.m", false, false},
                    Case{"a/*.m", "x/a/c.m", false, false}, Case{"tests/", "x/tests", true, true},
                    Case{"tests/", "x/tests", false, false}, Case{"**/b", "b", false, true},
                    Case{"**/b", "x/y/b", false, true}, Case{"a/**", "a/x/y", false, true},
                    Case{"a/**", "a", true, false}, Case{"a/**/b", "a/b", false, true},
                    Case{"a/**/b", "a/x/y/b", false, true}, Case{"a/**/b", "a/x/y/c", false, false},
                    Case{"a/**/b/**/c", "a/b/x/b/c", false, true}, Case{"**", "a/b", false, true},
                    Case{"a**b", "axxb", false, true}, Case{"a**b/c", "ax/yb/c", false, false},
                    Case{"?", "é", false, true}, Case{"[à-ï]", "é", false, true},
                    Case{"a?c", "a/c", false, false}, Case{"[a-c]x", "bx", false, true},
                    Case{"[!a-c]x", "bx", false, false}, Case{"[^a-c]x", "dx", false, true},
                    Case{"[]]x", "]x", false, true}, Case{"[a\\]]x", "]x", false, true},
                    Case{"[a-]x", "-x", false, true}, Case{"[b-a]x", "bx", false, true},
                    Case{"[b-a]x", "ax", false, false}, Case{"[[:digit:]]x", "5x", false, true},
                    Case{"[[:alpha:]5]x", "5x", false, true},
                    Case{"[[:nope:]]x", "nx", false, false}, Case{"[ab", "a", false, false},
                    Case{"[ab", "[ab", false, false}, Case{"[a\\", "a", false, false},
                    Case{"[a\\", "[a\\", false, false}, Case{"[a-\\", "a", false, false},
                    Case{"x[a-\\", "x[a-\\", false, false}, Case{"\\*", "*", false, true},
                    Case{"\\*", "x", false, false}, Case{"a\\", "a\\", false, false},
                    Case{"A", "a", false, false}, Case{"", "a", false, false},
                    Case{"/", "a", true, false}));

TEST(PatternList, TheLastMatchDecides) {
  PatternList list;
  list.addLines("*.log\n!keep.log\n");

  EXPECT_TRUE(list.excludes("x/a.log", false));
  EXPECT_FALSE(list.excludes("x/keep.log", false));
  EXPECT_FALSE(list.excludes("a.m", false));
}

TEST(PatternList, CommentsAndBlankLinesAreNotPatterns) {
  PatternList list;
  list.addLines("\xEF\xBB\xBF# *\n\n  \na.txt   \r\n\\#b\nc\\ \nlast");

  EXPECT_TRUE(list.excludes("a.txt", false));
  EXPECT_TRUE(list.excludes("#b", false));
  EXPECT_TRUE(list.excludes("c ", false));
  EXPECT_TRUE(list.excludes("last", false));
  EXPECT_FALSE(list.excludes("c", false));
  EXPECT_FALSE(list.excludes("other", false));
}

TEST(PatternList, LinesOfAFolderApplyBelowIt) {
  PatternList list;
  list.addLines("/build\n*.tmp\n", "lib/kit");
  list.add("!keep.tmp");

  EXPECT_TRUE(list.excludes("lib/kit/build", false));
  EXPECT_TRUE(list.excludes("lib/kit/sub/a.tmp", false));
  EXPECT_FALSE(list.excludes("lib/kit/sub/build", false));
  EXPECT_FALSE(list.excludes("lib/kit/keep.tmp", false));
  for (const char* path : {"build", "a.tmp", "lib/a.tmp", "lib/kits/a.tmp", "lib/kit"}) {
    EXPECT_FALSE(list.excludes(path, false)) << path;
  }
}

TEST(PatternList, TheDefaultsLeaveOutTheFilesOfTools) {
  PatternList list;
  addon::project::addDefaultExcludes(list);

  for (const char* file : {".gitignore", "a/._x", "a~", "x.swp", ".#lock", "sub/kraddon.toml",
                           "old.kraddon", "Thumbs.db", ".kraddonignore"}) {
    EXPECT_TRUE(list.excludes(file, false)) << file;
  }
  for (const char* folder : {".git", "x/.svn", "node_modules", "__pycache__", "__MACOSX"}) {
    EXPECT_TRUE(list.excludes(folder, true)) << folder;
  }
  EXPECT_FALSE(list.excludes("CVS", false));
  EXPECT_FALSE(list.excludes("private/a.m", false));
}

TEST(Pattern, ManyStarsInOnePatternTakeBoundedTime) {
  std::string text;
  for (int i = 0; i < 30; ++i) text += "*a";
  text += "b";
  std::string deep;
  for (int i = 0; i < 30; ++i) deep += "**/a/";
  deep += "b";
  std::string path = "a";
  for (int i = 0; i < 200; ++i) path += "/a";

  EXPECT_FALSE(Pattern(text).matches(std::string(300, 'a'), false));
  EXPECT_FALSE(Pattern(deep).matches(path, false));
}

/// All paths that git leaves out of `folder`, folders whole.
std::set<std::string> ignoredByGit(const std::filesystem::path& folder,
                                   const std::vector<std::string>& paths) {
  std::string list;
  for (const std::string& path : paths) list += path + "\n";
  test::writeFile(folder / "../paths", list);
  const std::string command = "cd '" + folder.string() +
                              "' && git -c core.excludesFile=/dev/null check-ignore --no-index "
                              "--stdin < ../paths > ../ignored";
  (void)!std::system(command.c_str());
  std::istringstream lines(test::readFile(folder / "../ignored"));
  std::set<std::string> ignored;
  for (std::string line; std::getline(lines, line);) ignored.insert(line);
  return ignored;
}

bool isExcludedWithFolders(const PatternList& list, const std::string& path) {
  for (std::size_t slash = path.find('/'); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    if (list.excludes(path.substr(0, slash), true)) return true;
  }
  return list.excludes(path, false);
}

TEST(PatternList, AgreesWithGitOnRandomPatterns) {
  const test::TemporaryFolder folder;
  const std::filesystem::path work = folder / "work";
  std::filesystem::create_directory(work);
  ASSERT_EQ(std::system(("git init -q '" + work.string() + "'").c_str()), 0);
  std::mt19937 random(4711);
  const auto pick = [&](const std::vector<std::string>& from) {
    return from[random() % from.size()];
  };
  const std::vector<std::string> names{"a", "b", "ab", "abc", "a.m", "b.m", "a-b", "]", "x1"};
  std::vector<std::string> paths;
  for (int i = 0; i < 120; ++i) {
    // Names that are folders never end a path, so that no path is both.
    std::string path;
    for (std::size_t depth = random() % 3; depth > 0; --depth) path += "d" + pick(names) + "/";
    path += pick(names);
    std::filesystem::create_directories((work / path).parent_path());
    test::writeFile(work / path, "");
    paths.push_back(path);
  }
  const std::vector<std::string> pieces{
      "a",    "b",    "d",   "*",  "**",    "?",     "/",           "**/", "[ab]",
      "[!a]", ".m",   "\\a", "ab", "[a-c]", "[b-a]", "[[:alpha:]]", "[]]", "x1",
      "/**",  "/**/", "[",   "-",  "da",    "db/",   "d*/"};
  for (int round = 0; round < 150; ++round) {
    std::string rules;
    for (std::size_t count = 1 + random() % 3; count > 0; --count) {
      if (random() % 4 == 0) rules += "!";
      for (std::size_t length = 1 + random() % 4; length > 0; --length) rules += pick(pieces);
      rules += "\n";
    }
    test::writeFile(work / ".gitignore", rules);
    PatternList list;
    list.addLines(rules);

    const std::set<std::string> ignored = ignoredByGit(work, paths);

    for (const std::string& path : paths) {
      EXPECT_EQ(isExcludedWithFolders(list, path), ignored.count(path) != 0)
          << path << " with rules\n"
          << rules;
    }
    if (HasFailure()) return;
  }
}

}  // namespace
