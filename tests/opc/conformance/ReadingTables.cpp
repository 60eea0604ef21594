// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "tests/opc/conformance/support/Case.h"

namespace test::conformance {
namespace {

/// Opens the case's package as a user would and reads everything.
class ReadingTest : public testing::Test {
 public:
  explicit ReadingTest(Case one) : case_(std::move(one)) {}

  void TestBody() override {
    PackageSpec spec;
    case_.change(spec);

    const ReadPackage read = readPackage(spec.bytes());

    SCOPED_TRACE(read.fault);
    const bool accepted = case_.reading == Reading::Accepted || case_.reading == Reading::Ignored;
    EXPECT_EQ(read.rule, accepted ? "none" : case_.carried ? case_.carried : case_.rule);
    EXPECT_EQ(read.opened, case_.reading != Reading::Refused);
    if (case_.reading == Reading::Ignored) {
      EXPECT_FALSE(read.parts.contains(spec.last().name)) << spec.last().name;
    }
    if (accepted) expectUsualParts(read);
    if (case_.check) case_.check(read);
  }

 private:
  static void expectUsualParts(const ReadPackage& read) {
    ASSERT_TRUE(read.parts.contains("b.m"));
    EXPECT_EQ(read.parts.at("b.m").content, std::string(3000, 'b'));
  }

  Case case_;
};

// Not at start-up: the tables are made of other constants.
void registerTables() {
  for (const Case& one : allCases()) {
    testing::RegisterTest(suiteOf("Rule", one).c_str(), one.name, nullptr, nullptr, __FILE__,
                          __LINE__, [one]() -> testing::Test* { return new ReadingTest(one); });
  }
}

}  // namespace
}  // namespace test::conformance

int main(int count, char** arguments) {
  testing::InitGoogleMock(&count, arguments);
  test::conformance::registerTables();
  return RUN_ALL_TESTS();
}
