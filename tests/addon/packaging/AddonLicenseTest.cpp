// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonLicense.h"

#include <gtest/gtest.h>

#include "hostarray/matrix.h"
#include "tests/addon/packaging/DocumentXml.h"
#include "tests/support/GatewayCaller.h"

using addon::packaging::AddonLicense;
using test::HostArray;

namespace {

const std::u16string kNamespace = u"http://schemas.pellandry.example/korvan/addon/2014/license";

std::u16string licenseXml(const std::u16string& children) {
  return u"<license xmlns='" + kNamespace + u"'>" + children + u"</license>";
}

TEST(AddonLicense, HasItsIdentities) {
  const AddonLicense license;

  EXPECT_EQ(license.partName, u"/metadata/license.xml");
  EXPECT_EQ(license.contentType, u"application/vnd.pellandry.korvan.addon.license+xml");
  EXPECT_EQ(license.namespaceURI, kNamespace);
  EXPECT_EQ(license.relationshipType,
            u"http://schemas.pellandry.example/korvan/addon/2014/relationships/license");
}

TEST(AddonLicense, WithoutContentItIsAStructOfTwoEmptyTexts) {
  AddonLicense license;

  const HostArray s(license.getStructArray());

  EXPECT_EQ(kxGetNumberOfElements(s.get()), 1u);
  EXPECT_EQ(test::fieldTexts(s.get()), (test::FieldTexts{{"type", u""}, {"text", u""}}));
}

TEST(AddonLicense, GoesFromStructToStructUnchanged) {
  const test::FieldTexts fields{{"type", u"MIT"}, {"text", u"Gr\u00fc\u00dfe \U0001F600\n<&>"}};
  const HostArray in = test::makeStruct(fields);

  AddonLicense license(in.get());
  const HostArray out(license.getStructArray());

  EXPECT_EQ(test::fieldTexts(out.get()), fields);
}

TEST(AddonLicense, AFieldThatIsMissingOrNotTextIsRefused) {
  const HostArray without = test::makeStruct({{"type", u"MIT"}});
  const HostArray number = test::makeStruct({{"type", u"MIT"}, {"text", u""}});
  kxSetField(number.get(), 0, "text", kxCreateDoubleScalar(1));

  EXPECT_THROW(AddonLicense{without.get()}, matrix::HostError);
  EXPECT_THROW(AddonLicense{number.get()}, matrix::HostError);
}

TEST(AddonLicense, IsWrittenAsTheGoldenFile) {
  AddonLicense license;
  license.type = u"\"MIT\" & more";
  license.text = u"Line 1\n\tLine 2: a < b && c > d, \u65e5\u672c \U0001F600\n";

  EXPECT_EQ(test::canonicalXmlText(license.getAsXMLString()), test::canonicalData("license.xml"));
}

TEST(AddonLicense, IsReadFromTheGoldenFile) {
  AddonLicense license;

  license.populateFromXML(test::dataText("license.xml"));

  EXPECT_EQ(license.type, u"\"MIT\" & more");
  EXPECT_EQ(license.text, u"Line 1\n\tLine 2: a < b && c > d, \u65e5\u672c \U0001F600\n");
}

TEST(AddonLicense, EmptyTextsAreWrittenAndReadBack) {
  AddonLicense empty;
  const std::u16string xml = empty.getAsXMLString();
  AddonLicense other;
  other.type = u"old";
  other.text = u"old";

  other.populateFromXML(xml);

  EXPECT_EQ(other.type, u"");
  EXPECT_EQ(other.text, u"");
  EXPECT_EQ(test::canonicalXmlText(xml),
            opc::toUtf8(u"<license xmlns=\"" + kNamespace +
                        u"\"><licenseText type=\"\"></licenseText></license>"));
}

TEST(AddonLicense, LineBreaksMarkupAndOtherScriptsSurviveXml) {
  AddonLicense license;
  license.type = u"tab\there, line\nbreak, cr\rend <&>\"'";
  license.text = u"\r\n \t<a>&amp;]]></a>\r\u00e4\u4e2d\U0010FFFD\n";
  AddonLicense other;

  other.populateFromXML(license.getAsXMLString());

  EXPECT_EQ(other.type, license.type);
  EXPECT_EQ(other.text, license.text);
}

TEST(AddonLicense, TheNameOfTheRootIsNotLookedAt) {
  AddonLicense license;

  license.populateFromXML(u"<other><licenseText type='MIT'>terms</licenseText></other>");

  EXPECT_EQ(license.type, u"MIT");
  EXPECT_EQ(license.text, u"terms");
}

TEST(AddonLicense, UnknownElementsAndAttributesAreIgnored) {
  AddonLicense license;

  license.populateFromXML(
      licenseXml(u"<x><licenseText>no</licenseText></x><licenseText type='A' y='B'>yes"
                 u"</licenseText><licenseText type='C'>second</licenseText>"));

  EXPECT_EQ(license.type, u"A");
  EXPECT_EQ(license.text, u"yes");
}

TEST(AddonLicense, WhatTheXmlLacksKeepsItsValue) {
  AddonLicense license;
  license.type = u"kept";
  license.text = u"old";

  license.populateFromXML(licenseXml(u""));
  EXPECT_EQ(license.text, u"old");
  license.populateFromXML(licenseXml(u"<licenseText>new</licenseText>"));

  EXPECT_EQ(license.type, u"kept");
  EXPECT_EQ(license.text, u"new");
}

}  // namespace
