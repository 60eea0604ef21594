// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/gateway/GatewayFixture.h"

namespace {

using test::FieldTexts;
using test::HostArray;

const std::string kLicenseType =
    "http://schemas.pellandry.example/korvan/addon/2014/relationships/license";
const std::string kLicenseItem = "metadata/license.xml";

class LicenseGateways : public test::GatewayTest {
 protected:
  void SetUp() override { createPackage(); }

  FieldTexts license() const {
    const HostArray output = read(test::kGetLicense);
    return output ? test::fieldTexts(output.get()) : FieldTexts();
  }
};

TEST_F(LicenseGateways, APackageWithoutLicenseGivesTheEmptyOne) {
  EXPECT_EQ(license(), (FieldTexts{{"type", u""}, {"text", u""}}));
}

TEST_F(LicenseGateways, ALicenseComesBackAsItWasSet) {
  const std::u16string text = u"<terms>\r\n\t& \u65e5\u672c \U0001F600 ]]>\n";

  setLicense(u"MIT \"a\"\tb", text);

  EXPECT_EQ(license(), (FieldTexts{{"type", u"MIT \"a\"\tb"}, {"text", text}}));
}

TEST_F(LicenseGateways, SettingTwiceLeavesOnePartWithTheSecondAndTheFirstRelationship) {
  setLicense(u"MIT", u"first");
  const auto first = inspector().relationships(kLicenseType);

  setLicense(u"BSD", u"second");

  const auto names = inspector().names();
  EXPECT_EQ(std::count(names.begin(), names.end(), kLicenseItem), 1);
  ASSERT_EQ(first.size(), 1u);
  EXPECT_EQ(inspector().relationships(kLicenseType), first);
  EXPECT_EQ(license(), (FieldTexts{{"type", u"BSD"}, {"text", u"second"}}));
}

TEST_F(LicenseGateways, WhatWasReadCanBeStoredAgain) {
  setLicense(u"MIT", u"terms");
  const std::string before = inspector().canonical(kLicenseItem);

  write(test::kSetLicense, {read(test::kGetLicense).get()});

  EXPECT_EQ(inspector().canonical(kLicenseItem), before);
}

TEST_F(LicenseGateways, ThePartHasItsTypeItsNamespaceAndBothTexts) {
  setLicense(u"MIT", u"terms");

  EXPECT_EQ(inspector().contentType(kLicenseItem),
            "application/vnd.pellandry.korvan.addon.license+xml");
  EXPECT_EQ(inspector().canonical(kLicenseItem),
            "<license xmlns=\"http://schemas.pellandry.example/korvan/addon/2014/license\">"
            "<licenseText type=\"MIT\">terms</licenseText></license>");
}

TEST_F(LicenseGateways, OtherPartsStayAsTheyWere) {
  const std::string properties = inspector().content("metadata/addonProperties.xml");

  setLicense(u"MIT", u"terms");

  EXPECT_EQ(inspector().content("metadata/addonProperties.xml"), properties);
}

TEST_F(LicenseGateways, TwoRelationshipsOfItsTypeReadAsNone) {
  setLicense(u"MIT", u"terms");

  inspector().doubleRelationship(kLicenseType);

  EXPECT_EQ(license(), (FieldTexts{{"type", u""}, {"text", u""}}));
}

TEST_F(LicenseGateways, ARelationshipToAMissingPartGivesNothing) {
  setLicense(u"MIT", u"terms");

  inspector().remove(kLicenseItem);

  EXPECT_EQ(read(test::kGetLicense), nullptr);
}

TEST_F(LicenseGateways, AMalformedPartGivesNothing) {
  setLicense(u"MIT", u"terms");

  inspector().replace(kLicenseItem, "<license><licenseText>");

  EXPECT_EQ(read(test::kGetLicense), nullptr);
}

TEST_F(LicenseGateways, ARootOfAnotherNameIsStillRead) {
  setLicense(u"MIT", u"terms");

  inspector().replace(kLicenseItem, "<x><y/><licenseText type='T'>found</licenseText></x>");

  EXPECT_EQ(license(), (FieldTexts{{"type", u"T"}, {"text", u"found"}}));
}

TEST_F(LicenseGateways, AFieldThatIsMissingOrNotTextIsTheHostsErrorAndNothingChanges) {
  const std::string before = packageBytes();
  const HostArray missing = test::makeStruct({{"type", u"MIT"}});
  const HostArray number = test::makeStruct({{"type", u"MIT"}, {"text", u""}});
  kxSetField(number.get(), 0, "text", kxCreateDoubleScalar(1));
  const std::size_t none = 0;
  const HostArray empty(kxCreateStructArray(1, &none, 0, nullptr));

  EXPECT_EQ(callCleanly(test::kSetLicense, 0, {path(), missing.get()}).hostError,
            "Korvan:missingValue");
  EXPECT_EQ(callCleanly(test::kSetLicense, 0, {path(), number.get()}).hostError, "Korvan:notText");
  EXPECT_EQ(callCleanly(test::kSetLicense, 0, {path(), empty.get()}).hostError,
            "Korvan:indexOutOfRange");
  EXPECT_EQ(packageBytes(), before);
}

TEST_F(LicenseGateways, TextThatXmlCannotCarryChangesNothing) {
  setLicense(u"MIT", u"terms");
  const std::string before = packageBytes();

  setLicense(u"MIT", u"bell \u0007");
  setLicense(std::u16string(u"a\0b", 3), u"terms");
  setLicense(u"MIT", {u'a', static_cast<char16_t>(0xD83D)});

  EXPECT_EQ(packageBytes(), before);
}

TEST_F(LicenseGateways, AMegabyteOfTermsComesBack) {
  std::u16string text;
  while (text.size() < (1u << 20)) text += u"A line of \u00e4 license & more.\n";

  setLicense(u"long", text);

  EXPECT_EQ(license(), (FieldTexts{{"type", u"long"}, {"text", text}}));
}

}  // namespace
