// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonSystemRequirements.h"

#include <gtest/gtest.h>

#include "hostarray/standin/CallScope.h"
#include "tests/addon/packaging/DocumentXml.h"
#include "tests/support/HostValues.h"

using addon::packaging::AddonSystemRequirements;
using addon::packaging::ProductDependency;
using hostarray::standin::CallScope;
using test::HostArray;

namespace {

const std::u16string kNamespace =
    u"http://schemas.pellandry.example/korvan/addon/2014/systemRequirements";
const std::vector<const char*> kLists{"productDependency", "supportPackageDependency"};
const std::vector<const char*> kFields{"name", "version", "identifier"};
const std::string kNone = "[1x1 (productDependency=- supportPackageDependency=-)]";

std::u16string xmlWith(const std::u16string& children) {
  return u"<systemRequirements xmlns='" + kNamespace + u"'>" + children + u"</systemRequirements>";
}

std::string canonicalWith(const std::string& children) {
  return "<systemRequirements xmlns=\"" + opc::toUtf8(kNamespace) + "\">" + children +
         "</systemRequirements>";
}

ProductDependency dependency(std::u16string name, std::u16string version, std::u16string id) {
  ProductDependency result;
  result.name = std::move(name);
  result.version = std::move(version);
  result.identifier = std::move(id);
  return result;
}

AddonSystemRequirements golden() {
  AddonSystemRequirements requirements;
  requirements.productDependencies = {dependency(u"Korvan & more", u"9.1", u"KV"),
                                      dependency(u"Gr\u00f6\u00dfen", u"", u"")};
  requirements.supportPackageDependencies = {dependency(u"USB \"3\"", u"any", u"SP-1")};
  return requirements;
}

std::string described(AddonSystemRequirements& requirements) {
  return test::describe(HostArray(requirements.getStructArray()).get());
}

/// What becomes of a host struct.
std::string throughDocument(const HostArray& s) {
  const CallScope scope;
  AddonSystemRequirements requirements(s.get());
  return described(requirements);
}

TEST(AddonSystemRequirements, HasItsIdentities) {
  const AddonSystemRequirements requirements;

  EXPECT_EQ(requirements.partName, u"/metadata/systemRequirements.xml");
  EXPECT_EQ(requirements.contentType,
            u"application/vnd.pellandry.korvan.addon.systemRequirements+xml");
  EXPECT_EQ(requirements.namespaceURI, kNamespace);
  EXPECT_EQ(requirements.relationshipType,
            u"http://schemas.pellandry.example/korvan/addon/2014/relationships/systemRequirements");
}

TEST(AddonSystemRequirements, IsWrittenAsTheGoldenFile) {
  EXPECT_EQ(test::canonicalXmlText(golden().getAsXMLString()),
            test::canonicalData("systemRequirements.xml"));
}

TEST(AddonSystemRequirements, IsReadFromTheGoldenFile) {
  AddonSystemRequirements requirements;
  AddonSystemRequirements expected = golden();

  requirements.populateFromXML(test::dataText("systemRequirements.xml"));

  EXPECT_EQ(described(requirements), described(expected));
}

TEST(AddonSystemRequirements, AnEmptyListIsNeitherWrittenNorSet) {
  AddonSystemRequirements none;
  AddonSystemRequirements packages;
  packages.supportPackageDependencies = {dependency(u"a", u"", u"")};

  EXPECT_EQ(test::canonicalXmlText(none.getAsXMLString()), canonicalWith(""));
  EXPECT_EQ(described(none), kNone);
  EXPECT_EQ(test::canonicalXmlText(packages.getAsXMLString()),
            canonicalWith("<requiredSupportPackages><supportPackage identifier=\"\" name=\"a\" "
                          "version=\"\"></supportPackage></requiredSupportPackages>"));
}

TEST(AddonSystemRequirements, AListThatIsMissingUnsetOrEmptyHasNoEntries) {
  const HostArray missing = test::makeStructArray({1, 1}, {"other"});
  const HostArray unset = test::makeStructArray({1, 1}, kLists);
  const HostArray empty = test::makeStructArray({1, 1}, kLists);
  test::setField(empty, 0, kLists[0], test::makeTable(kFields, {}));
  test::setField(empty, 0, kLists[1], test::makeCell({}));

  EXPECT_EQ(throughDocument(missing), kNone);
  EXPECT_EQ(throughDocument(unset), kNone);
  EXPECT_EQ(throughDocument(empty), kNone);
}

TEST(AddonSystemRequirements, OnlyTheFirstElementOfTheHostsStructIsRead) {
  const HostArray s = test::makeStructArray({1, 2}, kLists);
  test::setField(
      s, 0, kLists[0],
      test::makeTable({2, 2}, kFields,
                      {{u"1", u"", u""}, {u"2", u"", u""}, {u"3", u"", u""}, {u"4", u"v", u"i"}}));
  test::setField(s, 1, kLists[1], test::makeTable(kFields, {{u"5", u"", u""}}));

  EXPECT_EQ(throughDocument(s),
            "[1x1 (productDependency=[1x4 (name='1' version='' identifier='') "
            "(name='2' version='' identifier='') (name='3' version='' identifier='') "
            "(name='4' version='v' identifier='i')] supportPackageDependency=-)]");
}

TEST(AddonSystemRequirements, AListThatIsNotAStructOfTextsIsTheHostsError) {
  const HostArray text = test::makeStructArray({1, 1}, kLists);
  test::setField(text, 0, kLists[1], test::makeText(std::u16string(u"abc")));
  const HostArray number = test::makeStructArray({1, 1}, kLists);
  HostArray table = test::makeTable(kFields, {{u"a", u"b", u"c"}, {u"a", u"b", u"c"}});
  test::setField(table, 1, "identifier", test::makeNumber(1));
  test::setField(number, 0, kLists[0], std::move(table));
  const HostArray nothing = test::makeStructArray({1, 0}, kLists);

  EXPECT_THROW(throughDocument(text), matrix::HostError);
  EXPECT_THROW(throughDocument(number), matrix::HostError);
  EXPECT_THROW(throughDocument(nothing), matrix::HostError);
}

TEST(AddonSystemRequirements, ReadingReplacesBothLists) {
  AddonSystemRequirements requirements = golden();

  requirements.populateFromXML(xmlWith(u"<requiredProducts/>"));

  EXPECT_EQ(described(requirements), kNone);
  EXPECT_EQ(test::canonicalXmlText(requirements.getAsXMLString()), canonicalWith(""));
}

TEST(AddonSystemRequirements, AnElementInTheOtherListIsNotRead) {
  AddonSystemRequirements requirements;

  requirements.populateFromXML(
      xmlWith(u"<product name='outside'/><requiredSupportPackages><product name='wrong'/>"
              u"<supportPackage name='s'/></requiredSupportPackages><requiredProducts>"
              u"<supportPackage name='wrong'/><product version='1'/></requiredProducts>"
              u"<requiredProducts><product name='second list'/></requiredProducts>"));

  EXPECT_EQ(described(requirements),
            "[1x1 (productDependency=[1x1 (name='' version='1' identifier='')] "
            "supportPackageDependency=[1x1 (name='s' version='' identifier='')])]");
}

}  // namespace
