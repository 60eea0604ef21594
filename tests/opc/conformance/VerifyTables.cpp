// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <utility>

#include "addon/checks/AddonVerification.h"
#include "opc/checks/PackageVerification.h"
#include "tests/opc/conformance/support/Case.h"
#include "tests/support/TemporaryFolder.h"

namespace test::conformance {
namespace {

using opc::checks::Finding;
using opc::checks::Report;
using opc::checks::Severity;

using Verify = decltype(opc::checks::verifyPackage);

Report verified(const std::string& bytes, Verify& verify = opc::checks::verifyPackage) {
  const TemporaryFolder folder;
  writeFile(folder / "p.kraddon", bytes);
  return verify((folder / "p.kraddon").string(), nullptr, {}, nullptr);
}

std::string shown(const Report& report) {
  std::string text;
  for (const Finding& one : report.findings()) {
    text += opc::checks::idOf(one.id.number) + " " + one.rule + " '" + one.part.substr(0, 200) +
            "' " + one.message.substr(0, 400) + "\n";
  }
  return text;
}

// The rules that the findings of the worst kind name.
std::set<std::string> worstRules(const Report& report) {
  const Severity worst = report.errors() != 0 ? Severity::Error : Severity::Warning;
  std::set<std::string> rules;
  for (const Finding& one : report.findings()) {
    if (one.id.severity == worst) rules.insert(one.rule);
  }
  return rules;
}

/// Checks the case's package, and that nothing but its own rule is broken.
class VerifyTest : public testing::Test {
 public:
  explicit VerifyTest(Case one) : case_(std::move(one)) {}

  void TestBody() override {
    PackageSpec spec;
    case_.change(spec);

    const Report report = verified(spec.bytes());

    SCOPED_TRACE(shown(report));
    EXPECT_EQ(report.errors() != 0, case_.verified == Verified::Error);
    if (case_.verified != Verified::Error) {
      EXPECT_EQ(report.warnings() != 0, case_.verified == Verified::Warning);
    }
    if (case_.verified == Verified::Silent) return;
    EXPECT_THAT(worstRules(report), testing::Contains(case_.carried ? case_.carried : case_.rule));
  }

 private:
  Case case_;
};

void registerTables() {
  for (const Case& one : allCases()) {
    testing::RegisterTest(suiteOf("Verify", one).c_str(), one.name, nullptr, nullptr, __FILE__,
                          __LINE__, [one]() -> testing::Test* { return new VerifyTest(one); });
  }
}

}  // namespace

TEST(RuleRB15, AFileThatSomeSystemCannotHoldDrawsAWarning) {
  const std::vector<std::string> names{"CON.m", "a%3Cb.m", "ab:c.m", "a%20/b.m",
                                       std::string(254, 'n') + ".m"};
  for (const std::string& name : names) {
    PackageSpec spec;
    spec.add("files/" + name);

    const Report report = verified(spec.bytes(), addon::checks::verifyAddon);

    EXPECT_EQ(report.count(507), 1u) << name << shown(report);
  }
}

TEST(RuleRB15, AFileThatAllSystemsCanHoldDrawsNone) {
  PackageSpec spec;
  spec.add("files/console.m");
  spec.add("files/" + std::string(253, 'n') + ".m");

  EXPECT_EQ(verified(spec.bytes(), addon::checks::verifyAddon).count(507), 0u);
}

}  // namespace test::conformance

int main(int count, char** arguments) {
  testing::InitGoogleMock(&count, arguments);
  test::conformance::registerTables();
  return RUN_ALL_TESTS();
}
