// SPDX-License-Identifier: MIT
#include "opc/plservices/CorePropertiesPart.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "opc/Exception.h"
#include "opc/model/InvalidXMLDocument.h"
#include "opc/plservices/W3cDateTime.h"
#include "tests/opc/model/XmlTestSupport.h"

namespace opc::plservices {
namespace {

using testing::HasSubstr;

CorePropertiesPart read(const std::string& xml) {
  MemoryInputStream stream(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
  return CorePropertiesPart::read(stream);
}

std::string write(const CorePropertiesPart& part) {
  test::StringOutputStream stream;
  part.write(stream);
  return stream.text;
}

// A whole part around `children`, with the usual prefixes and mc for markup compatibility.
std::string part(const std::string& children, const std::string& attributes = "") {
  return "<cp:coreProperties"
         " xmlns:cp='http://schemas.openxmlformats.org/package/2006/metadata/core-properties'"
         " xmlns:dc='http://purl.org/dc/elements/1.1/'"
         " xmlns:dcterms='http://purl.org/dc/terms/'"
         " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' " +
         attributes + ">" + children + "</cp:coreProperties>";
}

constexpr const char* kCompatibility =
    "xmlns:mc='http://schemas.openxmlformats.org/markup-compatibility/2006'";

std::string created(const std::string& date) {
  return part("<dcterms:created xsi:type='dcterms:W3CDTF'>" + date + "</dcterms:created>");
}

std::optional<std::u16string> dateOf(const CorePropertiesPart& properties, DateProperty property) {
  const auto& date = properties.date(property);
  return date ? std::optional(formatW3cDateTime(*date)) : std::nullopt;
}

TEST(CorePropertiesPart, ReadsAllFifteenProperties) {
  const CorePropertiesPart properties = read(
      part("<cp:category>a</cp:category><cp:contentStatus>b</cp:contentStatus>"
           "<dc:creator>c</dc:creator><dc:description>d</dc:description>"
           "<dc:identifier>e</dc:identifier><dc:language>f</dc:language>"
           "<cp:lastModifiedBy>g</cp:lastModifiedBy><cp:revision>h</cp:revision>"
           "<dc:subject>i</dc:subject><dc:title>j</dc:title><cp:version>k</cp:version>"
           "<dcterms:created xsi:type='dcterms:W3CDTF'>2014-05-06T07:08:09Z</dcterms:created>"
           "<dcterms:modified xsi:type='dcterms:W3CDTF'>2015</dcterms:modified>"
           "<cp:lastPrinted>2016-01-01T00:00:00+01:00</cp:lastPrinted>"
           "<cp:keywords xml:lang='en'>one <cp:value xml:lang='de'>zwei</cp:value></cp:keywords>"));

  std::u16string texts;
  for (const TextProperty property :
       {TextProperty::Category, TextProperty::ContentStatus, TextProperty::Creator,
        TextProperty::Description, TextProperty::Identifier, TextProperty::Language,
        TextProperty::LastModifiedBy, TextProperty::Revision, TextProperty::Subject,
        TextProperty::Title, TextProperty::Version}) {
    texts += properties.text(property).value_or(u"?");
  }
  EXPECT_EQ(texts, u"abcdefghijk");
  EXPECT_EQ(dateOf(properties, DateProperty::Created), u"2014-05-06T07:08:09Z");
  EXPECT_EQ(dateOf(properties, DateProperty::Modified), u"2015-01-01T00:00:00Z");
  EXPECT_EQ(dateOf(properties, DateProperty::LastPrinted), u"2015-12-31T23:00:00Z");
  ASSERT_TRUE(properties.keywords().has_value());
  EXPECT_EQ(properties.keywords()->language, u"en");
  ASSERT_EQ(properties.keywords()->pieces.size(), 2u);
  EXPECT_EQ(properties.keywords()->pieces[0].text, u"one ");
  EXPECT_FALSE(properties.keywords()->pieces[0].isValue);
  EXPECT_EQ(properties.keywords()->pieces[1].text, u"zwei");
  EXPECT_TRUE(properties.keywords()->pieces[1].isValue);
  EXPECT_EQ(properties.keywords()->pieces[1].language, u"de");
  EXPECT_TRUE(properties.warnings().empty());
}

TEST(CorePropertiesPart, WhatWasReadIsWrittenAgain) {
  const std::string xml = write(read(part(
      "<cp:keywords xml:lang='en'>one<cp:value xml:lang='de'>zwei</cp:value>&amp;"
      "<cp:value/></cp:keywords><dc:title>a &lt; b\r\n&#13;</dc:title><dc:subject/>"
      "<cp:lastPrinted>2016-01-01T00:00:00Z</cp:lastPrinted>"
      "<dcterms:created xsi:type='dcterms:W3CDTF'>2014-05-06T07:08:09+02:00</dcterms:created>")));

  EXPECT_EQ(xml,
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>"
            "<cp:coreProperties"
            " xmlns:cp=\"http://schemas.openxmlformats.org/package/2006/metadata/core-properties\""
            " xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
            " xmlns:dcterms=\"http://purl.org/dc/terms/\""
            " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">"
            "<dc:subject/><dc:title>a &lt; b\n&#xD;</dc:title>"
            "<cp:keywords xml:lang=\"en\">one<cp:value xml:lang=\"de\">zwei</cp:value>&amp;"
            "<cp:value/></cp:keywords>"
            "<dcterms:created xsi:type=\"dcterms:W3CDTF\">2014-05-06T05:08:09Z</dcterms:created>"
            "<cp:lastPrinted>2016-01-01T00:00:00Z</cp:lastPrinted></cp:coreProperties>");
}

TEST(CorePropertiesPart, WhatIsWrittenReadsWithoutWarnings) {
  CorePropertiesPart properties;
  properties.setText(TextProperty::ContentType, u"old");
  properties.setText(TextProperty::Title, u"");
  properties.setDate(DateProperty::Created, parseW3cDateTime(u"2014").time);
  properties.setDate(DateProperty::LastPrinted, parseW3cDateTime(u"2014").time);

  const CorePropertiesPart again = read(write(properties));

  EXPECT_TRUE(again.warnings().empty());
  EXPECT_EQ(again.text(TextProperty::Title), u"");
  EXPECT_EQ(again.text(TextProperty::ContentType), std::nullopt);
  EXPECT_EQ(again.text(TextProperty::Subject), std::nullopt);
  EXPECT_EQ(again.date(DateProperty::Created), properties.date(DateProperty::Created));
}

TEST(CorePropertiesPart, EmptyAndMissingTextsDiffer) {
  const CorePropertiesPart properties = read(part("<dc:title/>"));

  EXPECT_EQ(properties.text(TextProperty::Title), u"");
  EXPECT_EQ(properties.text(TextProperty::Creator), std::nullopt);
}

TEST(CorePropertiesPart, OtherSpellingsOfTheSameContentAreTheSame) {
  const CorePropertiesPart properties = read(
      "<?xml version='1.0'?><!-- c --><coreProperties"
      " xmlns='http://schemas.openxmlformats.org/package/2006/metadata/core-properties'>\n"
      " <?pi?> <x:title xmlns:x='http://purl.org/dc/elements/1.1/'>a<![CDATA[<b]]>&#99;<!-- "
      "--></x:title>"
      "\n<version>1</version></coreProperties>");

  EXPECT_EQ(properties.text(TextProperty::Title), u"a<bc");
  EXPECT_EQ(properties.text(TextProperty::Version), u"1");
}

struct Case {
  const char* rule;
  std::string xml;
};

void PrintTo(const Case& broken, std::ostream* out) {
  *out << broken.rule << ' ' << broken.xml;
}

class RefusedPart : public testing::TestWithParam<Case> {};

TEST_P(RefusedPart, NamesItsRule) {
  try {
    read(GetParam().xml);
    FAIL() << "it was read";
  } catch (const FormatError& fault) {
    EXPECT_EQ(fault.rule(), GetParam().rule) << fault.what();
    EXPECT_EQ(fault.code(), ErrorCode::InvalidPackage);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Rules, RefusedPart,
    testing::Values(
        Case{"CP-4", "<coreProperties/>"},
        Case{"CP-4",
             "<a xmlns='http://schemas.openxmlformats.org/package/2006/metadata/"
             "core-properties'/>"},
        Case{"CP-4", part("", "a='b'")}, Case{"CP-4", part("text")},
        Case{"CP-4", part("<![CDATA[text]]>")}, Case{"CP-5", part("<cp:unknown/>")},
        Case{"CP-5", part("<title/>")}, Case{"CP-5", part("<dc:version/>")},
        Case{"CP-5", part("<cp:title/>")}, Case{"CP-5", part("<dc:Title/>")},
        Case{"CP-5", part("<cp:value/>")}, Case{"CP-5", part("<dc:created/>")},
        Case{"CP-6", part("<dc:title>a</dc:title><dc:title/>")},
        Case{"CP-6", part("<cp:keywords/><cp:keywords/>")},
        Case{"CP-6", part("<cp:lastPrinted/><cp:lastPrinted/>")},
        Case{"CP-7", part("<dc:title a='b'/>")}, Case{"CP-7", part("<cp:keywords a='b'/>")},
        Case{"CP-7", part("<cp:keywords><cp:value dc:a='b'/></cp:keywords>")},
        Case{"CP-7", part("<dcterms:created a='b' xsi:type='dcterms:W3CDTF'/>")},
        Case{"CP-8", part("<dcterms:issued/>")},
        Case{"CP-8", part("<dc:title><dcterms:alternative/></dc:title>")},
        Case{"CP-8", part("<cp:keywords><dcterms:issued/></cp:keywords>")},
        Case{"CP-9", part("<dcterms:created>2014</dcterms:created>")},
        Case{"CP-9", part("<dcterms:created xsi:type='W3CDTF'>2014</dcterms:created>")},
        Case{"CP-9", part("<dcterms:created xsi:type='dc:W3CDTF'>2014</dcterms:created>")},
        Case{"CP-9", part("<dcterms:created xsi:type='x:W3CDTF'>2014</dcterms:created>")},
        Case{"CP-9", part("<dcterms:created xsi:type='dcterms:Date'>2014</dcterms:created>")},
        Case{"CP-9", part("<dcterms:created xsi:type=''>2014</dcterms:created>")},
        Case{"CP-9", part("<x:created xmlns:x='http://purl.org/dc/terms/' xmlns:dcterms='urn:other'"
                          " xsi:type='dcterms:W3CDTF'>2014</x:created>")},
        Case{"CP-9", part("<dc:title xsi:type='dcterms:W3CDTF'/>")},
        Case{"CP-9", part("<cp:lastPrinted xsi:type='dcterms:W3CDTF'>2014</cp:lastPrinted>")},
        Case{"CP-10", part("<dc:title xml:lang='en'/>")}, Case{"CP-10", part("", "xml:lang='en'")},
        Case{"CP-10", part("<dcterms:created xml:lang='en' xsi:type='dcterms:W3CDTF'/>")},
        Case{"XM-4", part("<dc:title xml:space='preserve'/>")},
        Case{"XM-4", part("<dc:title xsi:nil='true'/>")},
        Case{"XM-4", part("", "xsi:schemaLocation='a b'")},
        Case{"CP-11", part("<mc:AlternateContent/>", kCompatibility)},
        Case{"CP-11", part("<dc:title><mc:x/></dc:title>", kCompatibility)},
        Case{"CP-11", part("", std::string(kCompatibility) + " mc:Ignorable='dc'")},
        Case{"CP-12", created("yesterday")}, Case{"CP-12", created("2014-02-30")},
        Case{"CP-12", part("<cp:lastPrinted>now</cp:lastPrinted>")},
        Case{"CP-13", part("<dc:title><dc:creator/></dc:title>")},
        Case{"CP-13", part("<cp:keywords><dc:title/></cp:keywords>")},
        Case{"CP-13", part("<cp:keywords><cp:value><cp:value/></cp:value></cp:keywords>")},
        Case{"CP-13", part("<dcterms:created xsi:type='dcterms:W3CDTF'>2014<dc:title/>"
                           "</dcterms:created>")}));

class WarnedPart : public testing::TestWithParam<Case> {};

TEST_P(WarnedPart, IsReadWithOneWarning) {
  const CorePropertiesPart properties = read(GetParam().xml);

  ASSERT_EQ(properties.warnings().size(), 1u);
  EXPECT_EQ(properties.warnings()[0].rule, GetParam().rule);
  EXPECT_THAT(properties.warnings()[0].text, HasSubstr("element '"));
}

INSTANTIATE_TEST_SUITE_P(
    Rules, WarnedPart,
    testing::Values(
        Case{"CP-9", part("<x:created xmlns:x='http://purl.org/dc/terms/' xsi:type='x:W3CDTF'>2014"
                          "</x:created>")},
        Case{"CP-9", part("<created xmlns='http://purl.org/dc/terms/' xsi:type='W3CDTF'>2014"
                          "</created>")},
        Case{"CP-11", part("<dc:title/>", kCompatibility)},
        Case{"CP-12", created("2014-05-06T07:08:09")}, Case{"CP-12", created("")},
        Case{"CP-12", created(" \n ")},
        Case{"CP-12", part("<cp:lastPrinted>2014-05-06</cp:lastPrinted>")},
        Case{"CP-12", part("<cp:lastPrinted>2014-05-06T07:08:09</cp:lastPrinted>")},
        Case{"CP-14", part("<cp:contentType>application/x</cp:contentType>")}));

TEST(CorePropertiesPart, SpaceAroundADateIsDropped) {
  const CorePropertiesPart properties = read(created("\n 2014-05-06T07:08:09Z\t"));

  EXPECT_EQ(dateOf(properties, DateProperty::Created), u"2014-05-06T07:08:09Z");
  EXPECT_TRUE(properties.warnings().empty());
}

TEST(CorePropertiesPart, AnEmptyDateReadsAsAbsent) {
  EXPECT_EQ(dateOf(read(created("")), DateProperty::Created), std::nullopt);
}

TEST(CorePropertiesPart, ADistantDateTakesThePlaceOfADate) {
  CorePropertiesPart properties = read(created("2014-05-06T07:08:09Z"));

  properties.setDistantDate(DateProperty::Created, u"12014-05-06T07:08:09Z");

  EXPECT_EQ(properties.date(DateProperty::Created), std::nullopt);
  EXPECT_EQ(properties.distantDate(DateProperty::Created), u"12014-05-06T07:08:09Z");
}

TEST(CorePropertiesPart, TheOldContentTypeIsRead) {
  EXPECT_EQ(read(part("<cp:contentType>x/y</cp:contentType>")).text(TextProperty::ContentType),
            u"x/y");
}

TEST(CorePropertiesPart, ABadDateIsNamedWithItsElement) {
  try {
    read(created("yesterday"));
    FAIL() << "it was read";
  } catch (const FormatError& fault) {
    EXPECT_STREQ(fault.what(),
                 "element 'dcterms:created': invalid date 'yesterday': dates are written as in "
                 "2014-05-06T07:08:09Z");
  }
}

TEST(CorePropertiesPart, XmlThatIsNotWellFormedIsRefused) {
  EXPECT_THROW(read("<cp:coreProperties/>"), model::InvalidXMLDocument);
  EXPECT_THROW(read("<!DOCTYPE a><a/>"), model::InvalidXMLDocument);
  EXPECT_THROW(read(""), model::InvalidXMLDocument);
}

TEST(CorePropertiesPart, TextThatXmlCannotCarryIsNotWritten) {
  for (const std::u16string& text : {std::u16string(u"a\u0001"), std::u16string(u"a\0b", 3)}) {
    CorePropertiesPart properties;
    properties.setText(TextProperty::Title, text);
    test::StringOutputStream stream;

    try {
      properties.write(stream);
      ADD_FAILURE() << "it was written";
    } catch (const model::InvalidXMLDocument& fault) {
      EXPECT_THAT(fault.what(), HasSubstr("'dc:title'"));
    }
    EXPECT_EQ(stream.writes, 0);
  }
}

TEST(CorePropertiesPart, KeywordsWithANulAreNotWritten) {
  const std::u16string text(u"a\0b", 3);
  for (const Keywords& keywords :
       {Keywords{{{text}}, std::nullopt}, Keywords{{{text, true}}, std::nullopt},
        Keywords{{{u"a", true, text}}, std::nullopt}, Keywords{{{u"a"}}, text}}) {
    CorePropertiesPart properties;
    properties.setKeywords(keywords);
    test::StringOutputStream stream;

    EXPECT_THROW(properties.write(stream), model::InvalidXMLDocument);
    EXPECT_EQ(stream.writes, 0);
  }
}

TEST(CorePropertiesPart, ASpecialTimeIsNotWritten) {
  CorePropertiesPart properties;
  properties.setDate(DateProperty::Created, boost::posix_time::ptime());
  test::StringOutputStream stream;

  EXPECT_THROW(properties.write(stream), Exception);
  EXPECT_EQ(stream.writes, 0);
}

}  // namespace
}  // namespace opc::plservices
