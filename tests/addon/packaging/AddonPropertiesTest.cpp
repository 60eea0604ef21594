// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonProperties.h"

#include <gtest/gtest.h>

#include "hostarray/matrix.h"
#include "tests/addon/packaging/DocumentXml.h"
#include "tests/support/GatewayCaller.h"

using addon::packaging::AddonProperties;
using test::HostArray;

namespace {

const std::u16string kNamespace =
    u"http://schemas.pellandry.example/korvan/addon/2014/addonProperties";

const test::FieldTexts kFields{
    {"type", u"Korvan Toolbox"},
    {"name", u"Curves"},
    {"version", u"1.2"},
    {"KorvanRelease", u"R1"},
    {"summary", u"one line"},
    {"authorName", u"Ada"},
    {"authorContact", u"a@b.c"},
    {"authorOrganization", u"O"},
    {"GUID", u"g-1"},
    {"description", u"at \U0001F600 length"},
};

std::string rootWith(const std::string& children) {
  return "<addonProperties xmlns=\"" + opc::toUtf8(kNamespace) + "\">" + children +
         "</addonProperties>";
}

std::u16string xmlWith(const std::string& children) {
  return opc::fromUtf8(rootWith(children));
}

TEST(AddonProperties, HasItsIdentities) {
  const AddonProperties properties;

  EXPECT_EQ(properties.partName, u"/metadata/addonProperties.xml");
  EXPECT_EQ(properties.contentType, u"application/vnd.pellandry.korvan.addon.properties+xml");
  EXPECT_EQ(properties.namespaceURI, kNamespace);
  EXPECT_EQ(properties.relationshipType,
            u"http://schemas.pellandry.example/korvan/addon/2014/relationships/addonProperties");
  EXPECT_FALSE(properties.lastModifiedTime);
}

TEST(AddonProperties, GoesFromStructToStructWithTheDescriptionLast) {
  const HostArray in = test::makeStruct(kFields);

  AddonProperties properties(in.get());
  const HostArray out(properties.getStructArray());

  EXPECT_EQ(kxGetNumberOfElements(out.get()), 1u);
  EXPECT_EQ(test::fieldTexts(out.get()), kFields);
  EXPECT_EQ(properties.GUID, u"g-1");
  EXPECT_EQ(properties.authorOrganization, u"O");
}

class AddonPropertiesField : public testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Fields, AddonPropertiesField, testing::Range<std::size_t>(0, 10));

TEST_P(AddonPropertiesField, IsRequiredAndMustBeText) {
  test::FieldTexts without = kFields;
  without.erase(without.begin() + static_cast<std::ptrdiff_t>(GetParam()));
  const HostArray missing = test::makeStruct(without);
  const HostArray number = test::makeStruct(kFields);
  kxSetField(number.get(), 0, kFields[GetParam()].first.c_str(), kxCreateDoubleScalar(1));

  EXPECT_THROW(AddonProperties{missing.get()}, matrix::HostError);
  EXPECT_THROW(AddonProperties{number.get()}, matrix::HostError);
}

TEST(AddonProperties, OnlyTheIdentifierAndTheDescriptionAreAlwaysWritten) {
  AddonProperties properties;
  properties.GUID = u"abc";

  EXPECT_EQ(test::canonicalXmlText(properties.getAsXMLString()),
            rootWith("<identifier type=\"GUID\">abc</identifier><description></description>"));
}

TEST(AddonProperties, AnyOfTheThreeAuthorTextsBringsAllOfThem) {
  AddonProperties properties;
  properties.authorContact = u"a@b.c";

  EXPECT_EQ(test::canonicalXmlText(properties.getAsXMLString()),
            rootWith("<identifier type=\"GUID\"></identifier><description></description>"
                     "<authors><author><name></name><contact>a@b.c</contact>"
                     "<organization></organization></author></authors>"));
}

TEST(AddonProperties, IsWrittenAsTheGoldenFile) {
  AddonProperties properties;
  properties.GUID = u"0f8fad5b-d9cb-469f-a165-70867728950e";
  properties.description = u"Curves & surfaces: fits a < b, f\u00fcr alle \U0001F600.";
  properties.authorName = u"Ada M\u00fcller";
  properties.authorContact = u"ada@example.org";
  properties.name = u"is not in the part";

  EXPECT_EQ(test::canonicalXmlText(properties.getAsXMLString()),
            test::canonicalData("addonProperties.xml"));
}

TEST(AddonProperties, IsReadFromTheGoldenFile) {
  AddonProperties properties;
  properties.authorOrganization = u"replaced by nothing";
  properties.name = u"kept";
  properties.summary = u"kept";

  properties.populateFromXML(test::dataText("addonProperties.xml"));

  EXPECT_EQ(properties.GUID, u"0f8fad5b-d9cb-469f-a165-70867728950e");
  EXPECT_EQ(properties.description, u"Curves & surfaces: fits a < b, f\u00fcr alle \U0001F600.");
  EXPECT_EQ(properties.authorName, u"Ada M\u00fcller");
  EXPECT_EQ(properties.authorContact, u"ada@example.org");
  EXPECT_EQ(properties.authorOrganization, u"");
  EXPECT_EQ(properties.name, u"kept");
  EXPECT_EQ(properties.summary, u"kept");
}

TEST(AddonProperties, OfSeveralAuthorsTheFirstIsRead) {
  AddonProperties properties;

  properties.populateFromXML(
      xmlWith("<authors><author><name>1</name><contact>2</contact><organization>3</organization>"
              "</author><author><name>4</name><contact>5</contact></author></authors>"));

  EXPECT_EQ(properties.authorName + properties.authorContact + properties.authorOrganization,
            u"123");
}

struct LeavesAuthor {
  const char* name;
  const char* children;
};
class AddonPropertiesWithoutAuthor : public testing::TestWithParam<LeavesAuthor> {};
INSTANTIATE_TEST_SUITE_P(
    Cases, AddonPropertiesWithoutAuthor,
    testing::Values(LeavesAuthor{"NoAuthors", "<identifier>g</identifier>"},
                    LeavesAuthor{"NoAuthor", "<authors/>"},
                    LeavesAuthor{"EmptyAuthor", "<authors><author/></authors>"},
                    LeavesAuthor{"AuthorElsewhere", "<author><name>x</name></author>"}),
    [](const auto& test) { return test.param.name; });

TEST_P(AddonPropertiesWithoutAuthor, KeepsTheThreeAuthorTexts) {
  AddonProperties properties;
  properties.authorName = u"1";
  properties.authorContact = u"2";
  properties.authorOrganization = u"3";

  properties.populateFromXML(xmlWith(GetParam().children));

  EXPECT_EQ(properties.authorName + properties.authorContact + properties.authorOrganization,
            u"123");
}

TEST(AddonProperties, WithoutIdentifierAndDescriptionBothStay) {
  AddonProperties properties;
  properties.GUID = u"1";
  properties.description = u"2";

  properties.populateFromXML(xmlWith("<unknown>x</unknown>"));

  EXPECT_EQ(properties.GUID + properties.description, u"12");
}

}  // namespace
