// SPDX-License-Identifier: MIT
#include "addon/catalogue/Shard.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "addon/catalogue/Root.h"

namespace {

using addon::catalogue::BrokenSite;
using addon::catalogue::currentOf;
using addon::catalogue::Record;
using addon::catalogue::Shard;

Record version(const std::string& version, bool isYanked = false) {
  Record record;
  record.guid = "AB";
  record.version = version;
  record.isYanked = isYanked;
  record.sha256 = std::string(64, 'c');
  record.package = "packages/" + record.sha256 + ".kraddon";
  record.page = "pages/ab/" + version + "/index.html";
  return record;
}

std::vector<std::string> versionsOf(const Shard& shard, const std::string& key) {
  std::vector<std::string> versions;
  for (const Record& record : shard.records(key)) versions.push_back(record.version);
  return versions;
}

TEST(Shard, HasTheNewestVersionFirst) {
  Shard shard;

  shard.setRecords("ab", {version("1.9"), version("1.10"), version("1.2")});

  EXPECT_EQ(versionsOf(shard, "ab"), (std::vector<std::string>{"1.10", "1.9", "1.2"}));
  EXPECT_EQ(shard.versions(), 3u);
}

TEST(Shard, ComesBackAsItWasWritten) {
  Shard shard;
  shard.setRecords("ab", {version("1"), version("2")});
  shard.setRecords("\"\n]}\xC3\xA9", {version("1")});

  const Shard read = Shard::parse(shard.text(), "x");

  EXPECT_EQ(read.addons(), shard.addons());
  EXPECT_EQ(read.text(), shard.text());
  const auto json = text::parseJson(shard.text());
  EXPECT_EQ(json["schema"], "kraddon.shard/1");
  EXPECT_EQ(json["addons"]["ab"][0]["version"], "2");
}

TEST(Shard, AnAddonWithoutRecordsIsGone) {
  Shard shard;
  shard.setRecords("ab", {version("1")});

  shard.setRecords("ab", {});

  EXPECT_TRUE(shard.isEmpty());
  EXPECT_EQ(Shard::parse(shard.text(), "x").versions(), 0u);
}

TEST(Shard, OneThatIsLaidOutInAnotherWayIsRefused) {
  Shard shard;
  shard.setRecords("ab", {version("1")});
  const std::string text = shard.text();

  for (std::size_t size = 0; size < text.size(); ++size) {
    EXPECT_THROW(Shard::parse(text.substr(0, size), "x"), BrokenSite) << size;
  }
  EXPECT_THROW(Shard::parse(text + "\n", "x"), BrokenSite);
}

TEST(Shard, ARecordThatCannotBeReadNamesTheFile) {
  Shard shard;
  shard.setRecords("ab", {version("1")});
  std::string text = shard.text();
  text.replace(text.find("\"license\""), 9, "\"terms\"");
  const Shard broken = Shard::parse(text, "site/shards/x.json");

  try {
    broken.records("ab");
    FAIL();
  } catch (const BrokenSite& error) {
    EXPECT_STREQ(error.what(),
                 "cannot read 'site/shards/x.json': the member 'license' of a record is missing or "
                 "of another kind");
  }
}

TEST(Shard, TheCurrentVersionIsTheNewestThatIsNotYanked) {
  EXPECT_EQ(currentOf({version("2", true), version("1")})->version, "1");
  EXPECT_EQ(currentOf({version("2", true)}), nullptr);
}

}  // namespace
