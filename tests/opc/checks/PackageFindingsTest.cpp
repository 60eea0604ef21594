// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "opc/checks/PackageFindings.h"
#include "tests/opc/checks/PackageUnderTest.h"

using opc::checks::Finding;
using opc::checks::FindingInfo;
using opc::checks::packageFindings;
using opc::checks::Report;
using opc::checks::Severity;
using test::PackageCase;
using test::PackageUnderTest;

namespace {

std::vector<PackageCase> allCases() {
  std::vector<PackageCase> all;
  for (const auto cases : {test::containerCases(), test::ambiguityCases(), test::packagingCases(),
                           test::relationshipCases()}) {
    all.insert(all.end(), cases.begin(), cases.end());
  }
  return all;
}

std::string shown(const Report& report) {
  std::string text;
  for (const Finding& one : report.findings()) {
    text += std::to_string(one.id.number) + " " + one.rule + " '" + one.part + "' " + one.message +
            "\n";
  }
  return text;
}

std::string nameOfCase(const testing::TestParamInfo<PackageCase>& tested) {
  return opc::checks::idOf(tested.param.number) + tested.param.name;
}

bool isOfError(std::uint16_t number) {
  const auto infos = packageFindings();
  return std::any_of(infos.begin(), infos.end(), [number](const FindingInfo& info) {
    return info.id.number == number && info.id.severity == Severity::Error;
  });
}

class PackageFinding : public testing::TestWithParam<PackageCase> {};

}  // namespace

TEST_P(PackageFinding, IsTheOnlyOne) {
  const PackageCase& tested = GetParam();
  PackageUnderTest package;
  tested.change(package);

  const Report report = package.check();

  ASSERT_EQ(report.findings().size(), tested.count) << shown(report);
  for (const Finding& finding : report.findings()) EXPECT_EQ(finding.id.number, tested.number);
  EXPECT_EQ(report.findings().front().rule, tested.rule) << shown(report);
  EXPECT_EQ(report.findings().front().part, tested.part) << shown(report);
  const bool isError = isOfError(tested.number);
  EXPECT_EQ(report.errors(), isError ? tested.count : 0);
  EXPECT_EQ(report.warnings(), isError ? 0 : tested.count);
}

INSTANTIATE_TEST_SUITE_P(All, PackageFinding, testing::ValuesIn(allCases()), nameOfCase);

TEST(PackageFindings, EachOneHasATest) {
  std::set<std::uint16_t> tested;
  for (const PackageCase& one : allCases()) tested.insert(one.number);

  std::set<std::uint16_t> known;
  for (const FindingInfo& info : packageFindings()) known.insert(info.id.number);

  EXPECT_EQ(tested, known);
}

TEST(PackageFindings, TheirSeveritiesAreThePublishedOnes) {
  const std::set<std::uint16_t> errors{101, 103, 104, 105, 106, 107, 108, 109, 116,
                                       117, 118, 119, 201, 202, 204, 205, 206, 207,
                                       208, 209, 212, 213, 214, 218, 219};
  std::set<std::uint16_t> found;
  for (const FindingInfo& info : packageFindings()) {
    if (info.id.severity == Severity::Error) found.insert(info.id.number);
  }

  EXPECT_EQ(found, errors);
  EXPECT_EQ(packageFindings().size(), 19u + 28u);
}

TEST(PackageFindings, EveryEntryHasATitleAnExplanationAndARemedy) {
  for (const FindingInfo& info : packageFindings()) {
    SCOPED_TRACE(info.id.number);
    EXPECT_FALSE(info.title.empty() || info.title.ends_with('.'));
    EXPECT_GT(info.explanation.size(), info.title.size());
    EXPECT_TRUE(info.explanation.ends_with('.'));
    EXPECT_TRUE(info.remedy.ends_with('.'));
  }
}

TEST(PackageFindings, AStrayPieceSaysWhyItBelongsToNoPart) {
  const auto messageOf = [](const char* name) {
    PackageUnderTest package;
    package.add(name);
    const Report report = package.check();
    return report.findings().size() == 1 ? report.findings().front().message : shown(report);
  };
  const std::string ofTheName = "the name before the piece is not a valid part name: ";

  EXPECT_EQ(messageOf("c.m/[00].piece"), "the number of the piece does not complete a part");
  EXPECT_EQ(messageOf("c%2em/[0].last.piece").substr(0, ofTheName.size()), ofTheName);
  EXPECT_EQ(messageOf("c./[0].last.piece"), ofTheName + "a segment ends in a dot");
}
