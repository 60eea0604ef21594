// SPDX-License-Identifier: MIT
#include "addon/catalogue/Root.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using addon::catalogue::BrokenSite;
using addon::catalogue::Root;
using addon::catalogue::ShardIndex;

Root someRoot() {
  Root root;
  root.sequence = 7;
  root.created = "2026-02-01T10:00:00Z";
  root.index.sha256 = std::string(64, 'a');
  root.index.path = "index/" + root.index.sha256 + ".json";
  root.index.size = 12;
  root.versions = 3;
  return root;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

TEST(Root, ComesBackAsItWasWritten) {
  const Root root = Root::parse(someRoot().text({}));

  EXPECT_EQ(root.text({}), someRoot().text({}));
  EXPECT_EQ(root.sequence, 7u);
  EXPECT_EQ(root.addons, 0u);
}

TEST(Root, ABrokenOneIsRefused) {
  const std::string text = someRoot().text({});
  for (const std::string& broken :
       {std::string(), std::string("{}"), text.substr(0, text.size() / 2),
        replaced(text, "kraddon.root/1", "kraddon.root/2"), replaced(text, "7", "\"7\""),
        replaced(text, "index/", "../in/"), replaced(text, "aaaa", "AAAA")}) {
    EXPECT_THROW(Root::parse(broken), BrokenSite) << broken;
  }
}

TEST(Root, ANumberThatIsNotAWholeOneIsRefused) {
  const std::string text = someRoot().text({});
  for (const char* number : {"-1", "0.5", "7.0", "1e30", "18446744073709551616", "true", "null"}) {
    try {
      Root::parse(replaced(text, "7", number));
      ADD_FAILURE() << number;
    } catch (const BrokenSite& error) {
      EXPECT_STREQ(error.what(),
                   "cannot read 'root.json': the member 'sequence' is not a whole number")
          << number;
    }
  }
}

TEST(Root, HasTheHashesOfTheShards) {
  ShardIndex index;
  const std::string hash(64, 'b');
  index.shards["0f"] = {{"shards/" + hash + ".json", hash, 100}, 4};

  EXPECT_NE(someRoot().text(index).find("\"0f\": \"" + hash + "\""), std::string::npos);
}

TEST(ShardIndex, ComesBackAsItWasWritten) {
  ShardIndex index;
  const std::string hash(64, 'b');
  index.shards["0f"] = {{"shards/" + hash + ".json", hash, 100}, 4};

  EXPECT_EQ(ShardIndex::parse(index.text(), "x").shards, index.shards);
}

TEST(ShardIndex, NamesNoFileOutsideOfItsFolder) {
  ShardIndex index;
  const std::string hash(64, 'b');
  index.shards["0f"] = {{"../" + hash + ".json", hash, 100}, 4};

  EXPECT_THROW(ShardIndex::parse(index.text(), "x"), BrokenSite);
}

}  // namespace
