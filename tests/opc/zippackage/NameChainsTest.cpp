// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/NameChains.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "opc/CommonLength.h"
#include "tests/opc/zippackage/DirectoryFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using detail::NameChains;
using Names = std::vector<std::string>;

class ChainsOfNames {
 public:
  explicit ChainsOfNames(const Names& names)
      : directory_(directoryWith(names)), chains_(directory_, names.size()) {
    std::string_view before;
    for (std::uint32_t entry = 0; entry < names.size() && areInOrder_; ++entry) {
      const std::string_view name = directory_.name(entry);
      areInOrder_ = chains_.add(entry, name, commonLength(before, name));
      before = name;
    }
  }

  bool areInOrder() const { return areInOrder_; }
  bool areDistinct() const { return chains_.areDistinct(); }

 private:
  static ZipDirectory directoryWith(const Names& names) {
    test::ZipBuilder builder;
    for (const std::string& name : names) builder.add({.name = name});
    return test::directoryOf(builder);
  }

  ZipDirectory directory_;
  NameChains chains_;
  bool areInOrder_ = true;
};

Names ascending(const std::string& folder) {
  Names names;
  for (int i = 100; i < 200; ++i) names.push_back(folder + "/" + std::to_string(i));
  return names;
}

Names operator+(Names names, const Names& more) {
  names.insert(names.end(), more.begin(), more.end());
  return names;
}

TEST(NameChains, FollowNamesInAFewAscendingSequences) {
  const Names sorted = ascending("a") + ascending("b") + ascending("c");
  const Names threeSequences = ascending("c") + Names{"b/1", "b/2"} + Names{"a/1", "a/2"};

  for (const Names& names : {sorted, threeSequences}) {
    const ChainsOfNames chains(names);

    EXPECT_TRUE(chains.areInOrder()) << names[0];
    EXPECT_TRUE(chains.areDistinct()) << names[0];
  }
}

TEST(NameChains, GiveUpOnUnsortedNames) {
  Names names = ascending("a");
  std::reverse(names.begin(), names.end());

  EXPECT_FALSE(ChainsOfNames(names).areInOrder());
}

TEST(NameChains, DoNotTakeDuplicatesForDistinct) {
  const Names names = ascending("a") + Names{"a/150"};
  const ChainsOfNames chains(names);

  EXPECT_TRUE(chains.areInOrder());
  EXPECT_FALSE(chains.areDistinct());
}

}  // namespace
}  // namespace opc::zippackage
