// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonConfiguration.h"

#include <gtest/gtest.h>

#include "tests/addon/packaging/DocumentXml.h"
#include "tests/support/HostValues.h"

using addon::packaging::AddonConfiguration;
using test::HostArray;
using test::Texts;

namespace {

const std::u16string kNamespace =
    u"http://schemas.pellandry.example/korvan/addon/2014/configuration";

std::u16string xmlWith(const std::u16string& children) {
  return u"<configuration xmlns='" + kNamespace + u"'>" + children + u"</configuration>";
}

std::string canonicalWith(const std::string& children) {
  return "<configuration xmlns=\"" + opc::toUtf8(kNamespace) + "\">" + children +
         "</configuration>";
}

HostArray structWith(HostArray korvanPaths, HostArray javaClassPaths) {
  HostArray s = test::makeStructArray({1, 1}, {"korvanPaths", "javaClassPaths"});
  test::setField(s, 0, "korvanPaths", std::move(korvanPaths));
  test::setField(s, 0, "javaClassPaths", std::move(javaClassPaths));
  return s;
}

std::string described(AddonConfiguration& configuration) {
  return test::describe(HostArray(configuration.getStructArray()).get());
}

AddonConfiguration golden() {
  AddonConfiguration configuration;
  configuration.korvanPaths = {u"/", u"src/a & b", u"", u"src/a & b"};
  configuration.javaClassPaths = {u"lib/\u65e5\u672c \U0001F600.jar"};
  return configuration;
}

TEST(AddonConfiguration, HasItsIdentities) {
  const AddonConfiguration configuration;

  EXPECT_EQ(configuration.partName, u"/metadata/configuration.xml");
  EXPECT_EQ(configuration.contentType, u"application/vnd.pellandry.korvan.addon.configuration+xml");
  EXPECT_EQ(configuration.namespaceURI, kNamespace);
  EXPECT_EQ(configuration.relationshipType,
            u"http://schemas.pellandry.example/korvan/addon/2014/relationships/configuration");
}

TEST(AddonConfiguration, WithoutPathsIsAStructOfTwoOneByZeroCells) {
  AddonConfiguration configuration;

  EXPECT_EQ(described(configuration), "[1x1 (korvanPaths={1x0} javaClassPaths={1x0})]");
}

TEST(AddonConfiguration, IsWrittenAsTheGoldenFile) {
  EXPECT_EQ(test::canonicalXmlText(golden().getAsXMLString()),
            test::canonicalData("configuration.xml"));
}

TEST(AddonConfiguration, IsReadFromTheGoldenFile) {
  AddonConfiguration configuration;

  configuration.populateFromXML(test::dataText("configuration.xml"));

  EXPECT_EQ(configuration.korvanPaths, golden().korvanPaths);
  EXPECT_EQ(configuration.javaClassPaths, golden().javaClassPaths);
}

TEST(AddonConfiguration, AnEmptyListIsNotWritten) {
  AddonConfiguration none;
  AddonConfiguration java;
  java.javaClassPaths = {u"a.jar"};
  AddonConfiguration korvan;
  korvan.korvanPaths = {u""};

  EXPECT_EQ(test::canonicalXmlText(none.getAsXMLString()), canonicalWith(""));
  EXPECT_EQ(test::canonicalXmlText(java.getAsXMLString()),
            canonicalWith("<javaClassPaths><javaClassPath>a.jar</javaClassPath></javaClassPaths>"));
  EXPECT_EQ(test::canonicalXmlText(korvan.getAsXMLString()),
            canonicalWith("<korvanPaths><korvanPath></korvanPath></korvanPaths>"));
}

TEST(AddonConfiguration, CellsOfAnyShapeAreTakenInLinearOrder) {
  const HostArray s = structWith(test::makeCell({2, 2}, {u"a", u"b", u"c", u"d"}),
                                 test::makeCell({3, 1}, {u"x", u"", u"x"}));

  AddonConfiguration configuration(s.get());

  EXPECT_EQ(described(configuration),
            "[1x1 (korvanPaths={1x4 'a' 'b' 'c' 'd'} javaClassPaths={1x3 'x' '' 'x'})]");
}

TEST(AddonConfiguration, AListThatIsMissingUnsetOrEmptyHasNoEntries) {
  const HostArray missing = test::makeStructArray({1, 1}, {"other"});
  const HostArray unset = test::makeStructArray({1, 1}, {"korvanPaths", "javaClassPaths"});
  const HostArray empty = structWith(test::makeCell({0, 5}, {}), test::makeText(std::u16string()));

  for (const kxArray* s : {missing.get(), unset.get(), empty.get()}) {
    AddonConfiguration configuration(s);
    EXPECT_EQ(described(configuration), "[1x1 (korvanPaths={1x0} javaClassPaths={1x0})]");
  }
}

TEST(AddonConfiguration, OneListDoesNotNeedTheOther) {
  HostArray s = test::makeStructArray({1, 1}, {"javaClassPaths"});
  test::setField(s, 0, "javaClassPaths", test::makeCell({u"a.jar"}));

  AddonConfiguration configuration(s.get());

  EXPECT_EQ(configuration.korvanPaths, Texts());
  EXPECT_EQ(configuration.javaClassPaths, Texts{u"a.jar"});
}

TEST(AddonConfiguration, AListThatIsNotACellOfTextsIsTheHostsError) {
  const HostArray text = structWith(test::makeText(std::u16string(u"a")), test::makeCell({}));
  HostArray mixed = test::makeCell({u"a", u"b"});
  kxSetCell(mixed.get(), 1, kxCreateDoubleScalar(1));
  const HostArray number = structWith(test::makeCell({}), std::move(mixed));
  HostArray hole = test::makeCell({u"a", u"b"});
  kxSetCell(hole.get(), 0, nullptr);
  const HostArray unset = structWith(std::move(hole), test::makeCell({}));

  EXPECT_THROW(AddonConfiguration{text.get()}, matrix::HostError);
  EXPECT_THROW(AddonConfiguration{number.get()}, matrix::HostError);
  EXPECT_THROW(AddonConfiguration{unset.get()}, matrix::HostError);
}

TEST(AddonConfiguration, ReadingReplacesBothLists) {
  AddonConfiguration configuration = golden();

  configuration.populateFromXML(
      xmlWith(u"<korvanPaths><korvanPath>new</korvanPath></korvanPaths>"));

  EXPECT_EQ(configuration.korvanPaths, Texts{u"new"});
  EXPECT_EQ(configuration.javaClassPaths, Texts());
}

TEST(AddonConfiguration, OnlyThePathsOfTheFirstListOfAKindAreRead) {
  AddonConfiguration configuration;

  configuration.populateFromXML(
      xmlWith(u"<korvanPath>outside</korvanPath><javaClassPaths><korvanPath>no</korvanPath>"
              u"<javaClassPath>j</javaClassPath></javaClassPaths><korvanPaths><korvanPath>1"
              u"</korvanPath><other>x</other><korvanPath>2</korvanPath></korvanPaths>"
              u"<korvanPaths><korvanPath>second list</korvanPath></korvanPaths>"));

  EXPECT_EQ(configuration.korvanPaths, (Texts{u"1", u"2"}));
  EXPECT_EQ(configuration.javaClassPaths, Texts{u"j"});
}

}  // namespace
