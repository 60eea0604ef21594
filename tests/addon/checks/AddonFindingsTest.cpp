// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "addon/checks/AddonFindings.h"
#include "tests/addon/checks/FindingCases.h"

using addon::checks::addonFindings;
using addon::checks::kUntracked;
using opc::checks::FindingInfo;
using test::AddonUnderTest;
using test::FindingCase;

TEST(AddonFindings, ACompleteAddonHasNone) {
  const AddonUnderTest addon;

  const auto report = addon.check();

  EXPECT_THAT(report.findings(), testing::IsEmpty()) << test::describe(report);
}

TEST(AddonFindings, EachOneHasATest) {
  std::set<std::uint16_t> tested{kUntracked.number};  // only 'build' finds it
  for (const auto cases : {test::documentCases(), test::referenceCases(), test::styleCases()}) {
    for (const FindingCase& one : cases) tested.insert(one.number);
  }

  std::set<std::uint16_t> known;
  for (const FindingInfo& info : addonFindings()) known.insert(info.id.number);

  EXPECT_EQ(tested, known);
}

TEST(AddonFindings, TheCatalogueIsSortedFrom301To515) {
  const auto infos = addonFindings();

  EXPECT_TRUE(std::is_sorted(infos.begin(), infos.end(), [](const auto& a, const auto& b) {
    return a.id.number <= b.id.number;
  }));
  EXPECT_EQ(infos.size(), 43u);
  EXPECT_EQ(infos.front().id.number, 301);
  EXPECT_EQ(infos.back().id.number, 515);
}

TEST(AddonFindings, EveryEntryHasATitleAnExplanationAndARemedy) {
  for (const FindingInfo& info : addonFindings()) {
    SCOPED_TRACE(info.id.number);
    EXPECT_FALSE(info.title.empty() || info.title.ends_with('.'));
    EXPECT_GT(info.explanation.size(), info.title.size());
    EXPECT_TRUE(info.explanation.ends_with('.'));
    EXPECT_TRUE(info.remedy.ends_with('.'));
  }
}

TEST(AddonFindings, NoStyleFindingIsAnError) {
  for (const FindingInfo& info : addonFindings()) {
    const bool isError = info.id.severity == opc::checks::Severity::Error;
    EXPECT_FALSE(info.id.number > 500 && isError) << info.id.number;
  }
}
