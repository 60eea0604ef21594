// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <boost/date_time/posix_time/time_formatters.hpp>

#include "opc/Text.h"
#include "tests/opc/conformance/support/Case.h"

namespace test::conformance {
namespace {

using enum Reading;
using enum Verified;
using opc::plservices::CorePropertiesPart;
using opc::plservices::DateProperty;
using opc::plservices::TextProperty;

constexpr const char* kMarkupNamespace =
    "http://schemas.openxmlformats.org/markup-compatibility/2006";

std::string created(std::string_view text, std::string_view attributes = "") {
  return "<dcterms:created xsi:type=\"dcterms:W3CDTF\" " + std::string(attributes) + ">" +
         std::string(text) + "</dcterms:created>";
}

auto textIs(TextProperty property, std::optional<std::u16string> text) {
  return [=](const ReadPackage& read) {
    ASSERT_TRUE(read.core);
    EXPECT_EQ(read.core->text(property), text);
  };
}

auto dateIs(DateProperty property, std::string text) {
  return [=](const ReadPackage& read) {
    ASSERT_TRUE(read.core && read.core->date(property));
    EXPECT_EQ(boost::posix_time::to_iso_extended_string(*read.core->date(property)), text);
  };
}

auto createdIs(std::string text) {
  return dateIs(DateProperty::Created, text);
}

void noDate(const ReadPackage& read) {
  ASSERT_TRUE(read.core);
  EXPECT_FALSE(read.core->date(DateProperty::Created));
}

std::string coreRelation(std::string_view id, std::string_view target, std::string_view more = "") {
  return "<Relationship Id=\"" + std::string(id) + "\" Target=\"" + std::string(target) +
         "\" Type=\"" + std::string(kCoreRelation) + "\" " + std::string(more) + "/>";
}

// A core properties part beside the usual one, which no relationship leads to.
void addSecondPart(PackageSpec& p) {
  p.core = "";
  p.types = overrideXml("/more.xml", kCoreType);
  p.add("more.xml", coreDocument(""));
}

void moveCore(PackageSpec& p) {
  p.types = overrideXml("/c/any.name", kCoreType);
  p.relationships = coreRelation("rId2", "c/any.name");
  p.add("c/any.name", coreDocument("<dc:title>t</dc:title>"));
}

void giveCoreAnotherType(PackageSpec& p) {
  p.relationships = coreRelation("rId2", "core.xml");
  p.add("core.xml", coreDocument(""));
}

const std::string kAllFifteen =
    "<cp:category>a</cp:category><cp:contentStatus>b</cp:contentStatus><cp:keywords>c</cp:keywords>"
    "<cp:lastModifiedBy>d</cp:lastModifiedBy>"
    "<cp:lastPrinted>2020-01-02T03:04:05Z</cp:lastPrinted><cp:revision>e</cp:revision>"
    "<cp:version>f</cp:version><dc:creator>g</dc:creator><dc:description>h</dc:description>"
    "<dc:identifier>i</dc:identifier><dc:language>j</dc:language><dc:subject>k</dc:subject>"
    "<dc:title>l</dc:title>" +
    created("2020-01-02T03:04:05Z") +
    "<dcterms:modified xsi:type=\"dcterms:W3CDTF\">2021-01-02T03:04:05Z</dcterms:modified>";

std::vector<Case> partCases() {
  return {
      {"CP-1", "ASecondRelationshipIsRefused", Refused, Error,
       [](PackageSpec& p) {
         p.core = "";
         p.relationships = coreRelation("rId3", "core.xml");
       }},
      {"CP-2", "AMissingPartIsRefusedOnUse", RefusedOnUse, Error,
       relations(coreRelation("rId2", "missing.xml"))},
      {"CP-2", "AnotherTypeIsRefusedOnUse", RefusedOnUse, Error, giveCoreAnotherType},
      {"CP-2", "AnExternalPartIsRefusedOnUse", RefusedOnUse, Error,
       relations(coreRelation("rId2", "http://x.example", "TargetMode=\"External\""))},
      {"CP-3", "ASecondPartDrawsAWarning", Accepted, Warning, addSecondPart},
      {"CP-4", "AnotherRootIsRefused", RefusedOnUse, Error,
       wholeCore("<properties xmlns=\"http://schemas.openxmlformats.org/package/2006/metadata/"
                 "core-properties\"/>")},
      {"CP-4", "AnotherNamespaceIsRefused", RefusedOnUse, Error,
       wholeCore("<coreProperties xmlns=\"urn:q\"/>")},
      {"CP-4", "AnAttributeOfTheRootIsRefused", RefusedOnUse, Error,
       wholeCore(coreDocument("", "a=\"\""))},
      {"CP-4", "TextBetweenPropertiesIsRefused", RefusedOnUse, Error, core("text")},
      {"CP-4", "WhiteSpaceBetweenPropertiesIsAccepted", Accepted, Silent, core(" \n\t")},
      {"CP-5", "AllFifteenAreAccepted", Accepted, Silent, core(kAllFifteen),
       textIs(TextProperty::Title, u"l")},
      {"CP-5", "AnyOrderIsAccepted", Accepted, Silent,
       core("<dc:title>t</dc:title><cp:category>c</cp:category>"),
       textIs(TextProperty::Category, u"c")},
      {"CP-5", "AForeignElementIsRefused", RefusedOnUse, Error, core("<q xmlns=\"urn:q\"/>")},
      {"CP-5", "AnElementOfAnotherNamespaceIsRefused", RefusedOnUse, Error,
       core("<cp:title>t</cp:title>")},
      {"CP-5", "AnotherDublinCoreElementIsRefused", RefusedOnUse, Error,
       core("<dc:publisher>p</dc:publisher>")},
      {"CP-6", "APropertyTwiceIsRefused", RefusedOnUse, Error,
       core("<dc:title>t</dc:title><dc:title>t</dc:title>")},
      {"CP-6", "AnEmptyPropertyTwiceIsRefused", RefusedOnUse, Error,
       core("<dc:title/><dc:title/>")},
      {"CP-6", "AnEmptyDateTwiceIsRefused", RefusedOnUse, Error, core(created("") + created(""))},
      {"CP-7", "AnAttributeIsRefused", RefusedOnUse, Error, core("<dc:title a=\"\"/>")},
      {"CP-7", "AForeignAttributeIsRefused", RefusedOnUse, Error,
       core("<dc:title xmlns:q=\"urn:q\" q:a=\"\"/>")},
      {"CP-8", "AnotherTermIsRefused", RefusedOnUse, Error, core("<dcterms:issued/>")},
      {"CP-8", "AnotherTermInsideOfAPropertyIsRefused", RefusedOnUse, Error,
       core("<dc:title><dcterms:alternative/></dc:title>")},
      {"CP-15", "AnElementOfTheProductIsRefused", RefusedOnUse, Error,
       core("<cp:friendlyName>n</cp:friendlyName>"), nullptr, "CP-5"},
      {"CP-16", "AMissingPartReadsAsNoProperties", Accepted, Silent, nothing(),
       [](const ReadPackage& read) { EXPECT_FALSE(read.core); }},
      {"CP-16", "AnEmptyPropertyIsPresentAndEmpty", Accepted, Silent, core("<dc:title/>"),
       textIs(TextProperty::Title, u"")},
      {"CP-16", "AMissingPropertyIsAbsent", Accepted, Silent, core("<dc:creator>c</dc:creator>"),
       textIs(TextProperty::Title, std::nullopt)},
      {"CP-17", "ThePartMayHaveAnyName", Accepted, Silent, moveCore,
       textIs(TextProperty::Title, u"t")},
      {"CP-17", "AUsualNameWithoutRelationshipMeansNothing", Accepted, Silent,
       item("docProps/core.xml", coreDocument("<dc:title>t</dc:title>")),
       [](const ReadPackage& read) { EXPECT_FALSE(read.core); }},
  };
}

std::vector<Case> attributeCases() {
  const std::string otherPrefix =
      "<dcterms:created xmlns:t=\"http://purl.org/dc/terms/\" xsi:type=\"t:W3CDTF\">2020"
      "</dcterms:created>";
  return {
      {"CP-9", "ADateWithoutTypeIsRefused", RefusedOnUse, Error,
       core("<dcterms:created>2020</dcterms:created>")},
      {"CP-9", "ADateOfAnotherTypeIsRefused", RefusedOnUse, Error,
       core("<dcterms:created xsi:type=\"dcterms:Period\">2020</dcterms:created>")},
      {"CP-9", "ThePrefixIsResolved", RefusedOnUse, Error,
       core("<dcterms:created xsi:type=\"dc:W3CDTF\">2020</dcterms:created>")},
      {"CP-9", "AnotherPrefixDrawsAWarning", Accepted, Warning, core(otherPrefix),
       createdIs("2020-01-01T00:00:00")},
      {"CP-9", "AnotherPropertyTakesNoType", RefusedOnUse, Error,
       core("<dc:title xsi:type=\"dcterms:W3CDTF\"/>")},
      {"CP-9", "LastPrintedTakesNoType", RefusedOnUse, Error,
       core("<cp:lastPrinted xsi:type=\"dcterms:W3CDTF\">2020-01-02T03:04:05Z</cp:lastPrinted>")},
      {"CP-10", "KeywordsTakeALanguage", Accepted, Silent,
       core("<cp:keywords xml:lang=\"en\">a <cp:value xml:lang=\"fr\">b</cp:value></cp:keywords>"),
       [](const ReadPackage& read) {
         ASSERT_TRUE(read.core && read.core->keywords());
         EXPECT_EQ(read.core->keywords()->language, u"en");
         EXPECT_EQ(read.core->keywords()->pieces.at(1).language, u"fr");
       }},
      {"CP-10", "AnotherPropertyTakesNoLanguage", RefusedOnUse, Error,
       core("<dc:title xml:lang=\"en\">t</dc:title>")},
      {"CP-10", "TheRootTakesNoLanguage", RefusedOnUse, Error,
       wholeCore(coreDocument("", "xml:lang=\"en\""))},
      {"CP-11", "AnElementOfMarkupCompatibilityIsRefused", RefusedOnUse, Error,
       core("<mc:AlternateContent xmlns:mc=\"" + std::string(kMarkupNamespace) + "\"/>")},
      {"CP-11", "AnAttributeOfMarkupCompatibilityIsRefused", RefusedOnUse, Error,
       wholeCore(coreDocument(
           "", "mc:Ignorable=\"\" xmlns:mc=\"" + std::string(kMarkupNamespace) + "\""))},
      {"CP-11", "ADeclarationAloneDrawsAWarning", Accepted, Warning,
       wholeCore(coreDocument("", "xmlns:mc=\"" + std::string(kMarkupNamespace) + "\""))},
  };
}

std::vector<Case> valueCases() {
  return {
      {"CP-12", "AYearIsADate", Accepted, Silent, core(created("2014")),
       createdIs("2014-01-01T00:00:00")},
      {"CP-12", "AMonthIsADate", Accepted, Silent, core(created("2014-05")),
       createdIs("2014-05-01T00:00:00")},
      {"CP-12", "ADayIsADate", Accepted, Silent, core(created("2014-05-06")),
       createdIs("2014-05-06T00:00:00")},
      {"CP-12", "MinutesAreEnough", Accepted, Silent, core(created("2014-05-06T07:08Z")),
       createdIs("2014-05-06T07:08:00")},
      {"CP-12", "AZoneIsTakenIntoAccount", Accepted, Silent,
       core(created("2014-05-06T07:08:09+02:30")), createdIs("2014-05-06T04:38:09")},
      {"CP-12", "AFractionIsDropped", Accepted, Silent,
       core(created("2014-05-06T07:08:09.987-01:00")), createdIs("2014-05-06T08:08:09")},
      {"CP-12", "WhiteSpaceAroundIsDropped", Accepted, Silent, core(created("\n 2014-05-06 ")),
       createdIs("2014-05-06T00:00:00")},
      {"CP-12", "ATimeWithoutZoneIsUtcWithAWarning", Accepted, Warning,
       core(created("2014-05-06T07:08:09")), createdIs("2014-05-06T07:08:09")},
      {"CP-12", "ALeapDayIsADate", Accepted, Silent, core(created("2016-02-29")),
       createdIs("2016-02-29T00:00:00")},
      {"CP-12", "ADayThatIsNoneIsRefused", RefusedOnUse, Error, core(created("2015-02-29"))},
      {"CP-12", "AMonthThatIsNoneIsRefused", RefusedOnUse, Error, core(created("2015-13"))},
      {"CP-12", "TextIsRefused", RefusedOnUse, Error, core(created("yesterday"))},
      {"CP-12", "ATimeWithoutDayIsRefused", RefusedOnUse, Error, core(created("2015-01T00:00Z"))},
      {"CP-12", "AnEmptyDateIsAbsentWithAWarning", Accepted, Warning, core(created("")), noDate},
      {"CP-12", "LastPrintedIsADateAndTime", Accepted, Silent,
       core("<cp:lastPrinted>2020-01-02T03:04:05Z</cp:lastPrinted>"),
       dateIs(DateProperty::LastPrinted, "2020-01-02T03:04:05")},
      {"CP-12", "AYearThatNoClockHereTellsIsAbsentWithAWarning", Accepted, Warning,
       core(created("0001-01-01T00:00:00Z")), noDate},
      {"CP-12", "LastPrintedWithoutSecondsDrawsAWarning", Accepted, Warning,
       core("<cp:lastPrinted>2020-01-02T03:04Z</cp:lastPrinted>"),
       dateIs(DateProperty::LastPrinted, "2020-01-02T03:04:00")},
      {"CP-12", "LastPrintedAsADateDrawsAWarning", Accepted, Warning,
       core("<cp:lastPrinted>2020-01-02</cp:lastPrinted>"),
       dateIs(DateProperty::LastPrinted, "2020-01-02T00:00:00")},
      {"CP-13", "AnElementInsideIsRefused", RefusedOnUse, Error,
       core("<dc:title><b xmlns=\"\">t</b></dc:title>")},
      {"CP-13", "AnElementInsideOfADateIsRefused", RefusedOnUse, Error,
       core(created("<b xmlns=\"\">2020</b>"))},
      {"CP-13", "KeywordsMixTextAndValues", Accepted, Silent,
       core("<cp:keywords>a<cp:value>b</cp:value>c</cp:keywords>"),
       [](const ReadPackage& read) {
         ASSERT_TRUE(read.core && read.core->keywords());
         EXPECT_EQ(read.core->keywords()->pieces.size(), 3u);
       }},
      {"CP-13", "KeywordsHoldNothingElse", RefusedOnUse, Error,
       core("<cp:keywords><cp:other/></cp:keywords>")},
      {"CP-14", "TheContentTypeOfTheFirstEditionIsReadWithAWarning", Accepted, Warning,
       core("<cp:contentType>Add-on</cp:contentType>"),
       textIs(TextProperty::ContentType, u"Add-on")},
  };
}

}  // namespace

std::vector<Case> corePropertyCases() {
  std::vector<Case> all = partCases();
  for (const std::vector<Case>& more : {attributeCases(), valueCases()}) {
    all.insert(all.end(), more.begin(), more.end());
  }
  return all;
}

}  // namespace test::conformance
