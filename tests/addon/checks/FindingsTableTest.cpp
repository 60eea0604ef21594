// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "addon/checks/Catalogue.h"
#include "tests/support/Paths.h"

using testing::HasSubstr;

TEST(FindingsTable, ThePageOfTheManualMatchesTheCatalogue) {
  std::ifstream page(test::sourcePath("docs/findings.md"), std::ios::binary);
  ASSERT_TRUE(page) << "run scripts/generate-docs";

  const std::string text{std::istreambuf_iterator<char>(page), {}};

  EXPECT_EQ(text, addon::checks::findingsTable()) << "run scripts/generate-docs";
}

TEST(FindingsTable, EveryFindingHasItsRow) {
  const std::string table = addon::checks::findingsTable();

  for (const auto& info : addon::checks::catalogue()) {
    const bool isError = info.id.severity == opc::checks::Severity::Error;
    EXPECT_THAT(table, HasSubstr("\n| " + opc::checks::idOf(info.id.number) +
                                 (isError ? " | error | " : " | warning | ")));
  }
}
