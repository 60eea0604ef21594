// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <span>
#include <string>

#include "opc/checks/Finding.h"
#include "tests/addon/checks/AddonUnderTest.h"

namespace test {

/// For every finding of a group, ways to cause it and no other.
std::span<const FindingCase> documentCases();
std::span<const FindingCase> referenceCases();
std::span<const FindingCase> styleCases();

inline std::string nameOfCase(const testing::TestParamInfo<FindingCase>& test) {
  return opc::checks::idOf(test.param.number) + test.param.name;
}

inline void expectOnly(const FindingCase& tested) {
  AddonUnderTest addon;
  tested.change(addon);

  const opc::checks::Report report = addon.check();

  EXPECT_EQ(numbersIn(report), std::set<std::uint16_t>{tested.number}) << describe(report);
  EXPECT_EQ(report.count(tested.number), tested.count) << describe(report);
}

}  // namespace test
