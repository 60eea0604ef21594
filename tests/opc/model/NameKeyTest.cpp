// SPDX-License-Identifier: MIT
#include "opc/model/NameKey.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "opc/HashIndex.h"
#include "opc/model/detail/FolderSet.h"

using namespace opc::model;
using opc::HashIndex;
using opc::model::detail::FolderSet;

TEST(NameKey, EqualKeysHaveEqualHashes) {
  const std::pair<const char*, const char*> kPairs[] = {
      {"a", "A"},
      {"Files/Some-Long-Name_With.Extension", "fILES/sOME-lONG-nAME_wITH.eXTENSION"},
      {"\xC3\xA9", "%c3%A9"},
      {"a/\xC3\xA9/abcdefgh", "A/%C3%a9/ABCDEFGH"},
      {"[Content_Types].xml", "[content_types].XML"},
  };
  for (const auto& [a, b] : kPairs) {
    EXPECT_TRUE(equalKeys(a, b)) << a;
    EXPECT_EQ(nameHash(a), nameHash(b)) << a;
  }
}

TEST(NameKey, OtherCharactersThatDifferInOneBitAreNotFolded) {
  EXPECT_FALSE(equalKeys("@", "`"));
  EXPECT_FALSE(equalKeys("[", "{"));
  EXPECT_NE(nameHash("@[^"), nameHash("`{~"));
  EXPECT_NE(nameHash("\xC3\x89"), nameHash("\xC3\xA9"));
}

TEST(NameKey, HashesOfPrefixesAndSplitsDiffer) {
  std::set<std::uint64_t> hashes;
  for (const char* name : {"", "a", "a/", "/a", "ab", "a/b", "a/b/", "abcdefgh", "abcdefg",
                           "abcdefghi", "abcdefgh/i", "abcdefg/hi"}) {
    hashes.insert(nameHash(name));
  }
  EXPECT_EQ(hashes.size(), 12u);
}

TEST(NameKey, HashIsBuiltFromThatOfTheFolder) {
  const std::uint64_t folder = extendHash(extendHash(rootHash(), "files"), "\xC3\xA9");

  EXPECT_EQ(extendHash(folder, "x.m"), nameHash("Files/%C3%A9/X.m"));
}

TEST(NameKey, StartsWithComparesKeys) {
  EXPECT_TRUE(keyStartsWith("Files/a", "files/"));
  EXPECT_TRUE(keyStartsWith("\xC3\xA9/a", "%C3%A9/"));
  EXPECT_TRUE(keyStartsWith("a", ""));
  EXPECT_FALSE(keyStartsWith("file", "files"));
}

TEST(HashIndex, FindsWhatIsLeftAfterManyRemovals) {
  HashIndex<int> index;
  // Few distinct low bits, so that nearly everything lies in one run.
  const auto hashOf = [](int i) { return static_cast<std::uint64_t>(i % 7) | 0x1000u; };
  const auto is = [](int i) { return [i](int other) { return other == i; }; };
  for (int i = 0; i < 500; ++i) index.insert(hashOf(i), i);

  for (int i = 0; i < 500; i += 3) index.erase(hashOf(i), is(i));

  EXPECT_EQ(index.size(), 333u);
  for (int i = 0; i < 500; ++i) {
    EXPECT_EQ(index.find(hashOf(i), is(i)) != nullptr, i % 3 != 0) << i;
  }
}

TEST(HashIndex, KeepsAHashOfZero) {
  HashIndex<int> index;

  index.insert(0, 42);

  ASSERT_NE(index.find(0, [](int) { return true; }), nullptr);
  EXPECT_EQ(*index.find(0, [](int) { return true; }), 42);
}

TEST(FolderSet, FolderStaysUntilTheLastNameInItGoes) {
  FolderSet folders;
  const auto has = [&](const char* path) { return folders.find(nameHash(path), path) != nullptr; };
  folders.add("a/b/1");
  folders.add("A/B/2");
  folders.add("a/3");

  folders.remove("a/b/1");
  EXPECT_TRUE(has("a/b"));
  folders.remove("a/b/2");

  EXPECT_FALSE(has("a/b"));
  EXPECT_TRUE(has("a"));
  folders.remove("a/3");
  EXPECT_FALSE(has("a"));
}

TEST(FolderSet, ManyNamesAtOnceCountEach) {
  FolderSet folders;
  EXPECT_FALSE(folders.addTo(nameHash("a/b"), "a/b", 1));
  folders.add("a/b/1");
  EXPECT_TRUE(folders.addTo(nameHash("A/b"), "A/b", 1));

  folders.remove("a/b/1");
  EXPECT_NE(folders.find(nameHash("a/b"), "a/b"), nullptr);
  folders.remove("a/b/2");

  EXPECT_EQ(folders.find(nameHash("a/b"), "a/b"), nullptr);
  EXPECT_EQ(folders.find(nameHash("a"), "a"), nullptr);
}
