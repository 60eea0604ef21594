// SPDX-License-Identifier: MIT
#include "addon/catalogue/Search.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "addon/catalogue/SiteUpdate.h"
#include "addon/packaging/AddonPackage.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using addon::catalogue::Record;
using addon::catalogue::searchSite;

/// A site with three add-ons.
class Search : public testing::Test {
 protected:
  Search() {
    add("Wave Tools", "Short-time spectra", "Plots what a WAVELET would hide.", "Ada Lind");
    add("Plotting", "Figures for waves", "", "Bo Ek");
    add("Gr\xC3\xB6\xC3\x9F"
        "enmesser",
        "Measures; \"quoted\" AND more", "NEAR(a b)", "Cy OR");
    addon::catalogue::prepareSite(site());
    addon::catalogue::updateSite(
        {.site = site(), .packages = {folder_.path().string()}, .time = "2026-02-01T10:00:00Z"});
  }

  std::vector<std::string> find(const std::vector<std::string>& words, std::uint64_t limit = 100) {
    std::vector<std::string> names;
    for (const Record& record : searchSite(site(), words, limit)) names.push_back(record.name);
    return names;
  }

  std::string site() const { return folder_ / "site"; }

 private:
  void add(const std::string& name, const std::string& summary, const std::string& description,
           const std::string& author) {
    addon::packaging::AddonProperties properties;
    properties.type = u"Korvan Toolbox";
    properties.name = opc::fromUtf8(name);
    properties.version = u"1.0";
    properties.KorvanRelease = u"R2047b";
    properties.summary = opc::fromUtf8(summary);
    properties.description = opc::fromUtf8(description);
    properties.authorName = opc::fromUtf8(author);
    const std::string number = std::to_string(++count_);
    properties.GUID = opc::fromUtf8("0c3a0d9e-5b7a-4a53-9c58-6f0d2f4f8a1" + number);
    std::u16string path = opc::fromUtf8((folder_ / (number + ".kraddon")).string());
    addon::packaging::AddonPackage package(path, properties);
    package.logicalPackage().close(false);
  }

  test::TemporaryFolder folder_;
  int count_ = 0;
};

using Names = std::vector<std::string>;

TEST_F(Search, WordsAreBeginningsAndAllMustBeThere) {
  EXPECT_EQ(find({"wav"}), (Names{"Wave Tools", "Plotting"}));
  EXPECT_EQ(find({"wav", "fig"}), Names{"Plotting"});
  EXPECT_EQ(find({"wav fig"}), Names{"Plotting"});
  EXPECT_EQ(find({"ave"}), Names{});
  EXPECT_EQ(find({"GROSSENM"}), Names{});
  EXPECT_EQ(find({"GR\xC3\x96\xC3\x9F"
                  "ENM"}),
            Names{"Gr\xC3\xB6\xC3\x9F"
                  "enmesser"});
}

TEST_F(Search, ANameCountsMoreThanADescription) {
  EXPECT_EQ(find({"plot"}), (Names{"Plotting", "Wave Tools"}));
  EXPECT_EQ(find({"plot"}, 1), Names{"Plotting"});
}

TEST_F(Search, AWordCanBeNarrowed) {
  EXPECT_EQ(find({"name:plot"}), Names{"Plotting"});
  EXPECT_EQ(find({"author:li"}), Names{"Wave Tools"});
  EXPECT_EQ(find({"author:wave"}), Names{});
  EXPECT_EQ(find({"name:plot", "wav"}), Names{"Plotting"});
}

TEST_F(Search, NothingElseIsSyntax) {
  const Names measure{
      "Gr\xC3\xB6\xC3\x9F"
      "enmesser"};
  EXPECT_EQ(find({"\"quoted\""}), measure);
  EXPECT_EQ(find({"and", "more"}), measure);
  EXPECT_EQ(find({"near(a"}), measure);
  for (const std::string word :
       {"*",       "\"",           "a\"b",        "NOT",   "wave OR", "NEAR(",
        "^wave",   "summary:wave", "{name}:wave", "-wave", "name:",   "'",
        ";",       "--",           "+",           "(",     ")",       "\xFF\xFE",
        "name:\"", "author:*"}) {
    EXPECT_NO_THROW(find({word})) << word;
  }
  EXPECT_EQ(find({""}).size(), 3u);
}

TEST_F(Search, ASiteWithoutDatabaseIsAnError) {
  EXPECT_THROW(searchSite(site() + "/packages", {"x"}, 1), opc::Exception);
}

}  // namespace
