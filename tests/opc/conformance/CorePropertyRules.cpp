// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/date_time/gregorian/gregorian_types.hpp>

#include "opc/model/XercesHelper.h"
#include "opc/plservices/CorePropertiesManager.h"
#include "tests/opc/conformance/support/PackageSpec.h"
#include "tests/opc/conformance/support/ReadPackage.h"
#include "tests/opc/conformance/support/WrittenZip.h"

namespace test::conformance {
namespace {

using opc::model::Package;
using opc::plservices::CoreProperties;
using opc::plservices::CorePropertiesManager;
using testing::HasSubstr;
using testing::Not;

CoreProperties someProperties() {
  CoreProperties properties(u"Add-on", u"Friendly", u"R1");
  properties.setTitle(u"A & B");
  properties.setCreatedTime({boost::gregorian::date(2024, 5, 6), {7, 8, 9}});
  return properties;
}

std::string withProperties() {
  return writtenPackage(
      [](Package& package) { CorePropertiesManager(package).setCoreProperties(someProperties()); });
}

std::string writtenCore() {
  return WrittenZip(withProperties()).content("metadata/coreProperties.xml");
}

}  // namespace

TEST(RuleCP1, StoringTwiceMakesOneRelationship) {
  const std::string bytes = changedPackage(withProperties(), [](Package& package) {
    CorePropertiesManager(package).setCoreProperties(someProperties());
  });

  const std::string relations = WrittenZip(bytes).content("_rels/.rels");
  const std::size_t first = relations.find(kCoreRelation);
  ASSERT_NE(first, std::string::npos);
  EXPECT_EQ(relations.find(kCoreRelation, first + 1), std::string::npos);
}

TEST(RuleCP1, ASecondRelationshipIsNotAdded) {
  const auto add = [] {
    changedPackage(withProperties(), [](Package& package) {
      const std::u16string type(kCoreRelation.begin(), kCoreRelation.end());
      package.createInternalRelationship(type, opc::model::URI(u"/other.xml"), u"");
    });
  };

  EXPECT_EQ(refusalOf(add), "CP-1");
}

TEST(RuleCP2, ThePartHasItsTypeAndItsRelationship) {
  const ReadPackage read = readPackage(withProperties());

  EXPECT_EQ(read.parts.at("metadata/coreProperties.xml").type, kCoreType);
  EXPECT_TRUE(read.core);
}

TEST(RuleCP2, AnExternalPartIsNotWritten) {
  const auto add = [] {
    writtenPackage([](Package& package) {
      const std::u16string type(kCoreRelation.begin(), kCoreRelation.end());
      package.createExternalRelationship(type, opc::model::URI(u"http://host.example/"), u"");
    });
  };

  EXPECT_EQ(refusalOf(add), "CP-2");
}

TEST(RuleCP9, DatesAreWrittenWithTheirType) {
  EXPECT_THAT(writtenCore(), HasSubstr("<dcterms:created xsi:type=\"dcterms:W3CDTF\">"));
}

TEST(RuleCP10, ALanguageIsNeverWritten) {
  EXPECT_THAT(writtenCore(), Not(HasSubstr("xml:lang")));
}

TEST(RuleCP12, DatesAreWrittenInWholeSecondsOfUtc) {
  EXPECT_THAT(writtenCore(), HasSubstr(">2024-05-06T07:08:09Z<"));
}

TEST(RuleCP14, TheTypeOfTheFirstEditionIsNotWritten) {
  EXPECT_THAT(writtenCore(), Not(HasSubstr("contentType")));
}

TEST(RuleCP15, WhatTheSchemaHasNoRoomForIsInAPartOfItsOwn) {
  const WrittenZip zip(withProperties());

  EXPECT_THAT(zip.content("metadata/coreProperties.xml"), Not(HasSubstr("Friendly")));
  EXPECT_THAT(zip.content("metadata/hostProperties.xml"), HasSubstr("Friendly"));
  EXPECT_EQ(readPackage(withProperties()).rule, "none");
}

TEST(RuleCP16, APackageWithoutThePartHasNoProperties) {
  changedPackage(PackageSpec().bytes(), [](Package& package) {
    const CoreProperties properties = CorePropertiesManager(package).getCoreProperties();

    EXPECT_FALSE(properties.getTitle());
    EXPECT_EQ(properties.getContentType(), u"");
  });
}

TEST(RuleCP17, ChangingKeepsWhatTheProductDoesNotKnow) {
  PackageSpec spec;
  spec.core =
      "<cp:category>a</cp:category><cp:contentStatus>b</cp:contentStatus>"
      "<cp:keywords xml:lang=\"en\">c<cp:value xml:lang=\"fr\">d</cp:value></cp:keywords>"
      "<cp:lastModifiedBy>e</cp:lastModifiedBy>"
      "<cp:lastPrinted>2020-01-02T03:04:05Z</cp:lastPrinted><cp:revision>f</cp:revision>"
      "<dc:identifier>g</dc:identifier><dc:language>h</dc:language><dc:subject>i</dc:subject>";

  const std::string bytes = changedPackage(spec.bytes(), [](Package& package) {
    CorePropertiesManager(package).setCoreProperties(someProperties());
  });

  const ReadPackage read = readPackage(bytes);
  ASSERT_TRUE(read.core) << read.fault;
  using opc::plservices::TextProperty;
  EXPECT_EQ(read.core->text(TextProperty::Title), u"A & B");
  EXPECT_EQ(read.core->text(TextProperty::Category), u"a");
  EXPECT_EQ(read.core->text(TextProperty::ContentStatus), u"b");
  EXPECT_EQ(read.core->text(TextProperty::LastModifiedBy), u"e");
  EXPECT_EQ(read.core->text(TextProperty::Revision), u"f");
  EXPECT_EQ(read.core->text(TextProperty::Identifier), u"g");
  EXPECT_EQ(read.core->text(TextProperty::Language), u"h");
  EXPECT_EQ(read.core->text(TextProperty::Subject), u"i");
  EXPECT_TRUE(read.core->date(opc::plservices::DateProperty::LastPrinted));
  ASSERT_TRUE(read.core->keywords());
  EXPECT_EQ(read.core->keywords()->pieces.size(), 2u);
  EXPECT_FALSE(read.parts.contains("metadata/coreProperties.xml"));
}

}  // namespace test::conformance
