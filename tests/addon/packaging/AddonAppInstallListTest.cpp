// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonAppInstallList.h"

#include <gtest/gtest.h>

#include "tests/addon/packaging/DocumentXml.h"
#include "tests/support/HostValues.h"

using addon::packaging::AddonAppInstall;
using addon::packaging::AddonAppInstallList;
using test::HostArray;

namespace {

const std::u16string kNamespace =
    u"http://schemas.pellandry.example/korvan/addon/2014/applications";
const std::vector<const char*> kFields{"name", "guid", "relativePath", "installByDefault"};

std::u16string xmlWith(const std::u16string& children) {
  return u"<applications xmlns='" + kNamespace + u"'>" + children + u"</applications>";
}

AddonAppInstall app(std::u16string name, std::u16string guid, std::u16string path, bool isDefault) {
  AddonAppInstall result;
  result.name = std::move(name);
  result.guid = std::move(guid);
  result.relativePath = std::move(path);
  result.installByDefault = isDefault;
  return result;
}

AddonAppInstallList golden() {
  AddonAppInstallList list;
  list.apps = {app(u"Curve \"fitter\" <1>", u"g-1", u"apps/fit & go.app", true),
               app(u"", u"g-1", u"", false)};
  return list;
}

std::string described(AddonAppInstallList& list) {
  return test::describe(HostArray(list.getStructArray()).get());
}

TEST(AddonAppInstallList, HasItsIdentities) {
  const AddonAppInstallList list;

  EXPECT_EQ(list.partName, u"/metadata/applications.xml");
  EXPECT_EQ(list.contentType, u"application/vnd.pellandry.korvan.addon.applications+xml");
  EXPECT_EQ(list.namespaceURI, kNamespace);
  EXPECT_EQ(list.relationshipType,
            u"http://schemas.pellandry.example/korvan/addon/2014/relationships/applications");
}

TEST(AddonAppInstallList, WithoutAppsIsAnEmptyStructThatKeepsItsFields) {
  AddonAppInstallList list;
  const HostArray empty = test::makeTable(kFields, {});
  AddonAppInstallList fromEmpty(empty.get());

  EXPECT_EQ(described(list), "[1x0 name guid relativePath installByDefault]");
  EXPECT_EQ(described(fromEmpty), described(list));
  EXPECT_EQ(test::canonicalXmlText(fromEmpty.getAsXMLString()),
            "<applications xmlns=\"" + opc::toUtf8(kNamespace) + "\"></applications>");
}

TEST(AddonAppInstallList, IsWrittenAsTheGoldenFile) {
  EXPECT_EQ(test::canonicalXmlText(golden().getAsXMLString()),
            test::canonicalData("applications.xml"));
}

TEST(AddonAppInstallList, IsReadFromTheGoldenFile) {
  AddonAppInstallList list;
  AddonAppInstallList expected = golden();

  list.populateFromXML(test::dataText("applications.xml"));

  EXPECT_EQ(described(list), described(expected));
}

TEST(AddonAppInstallList, IsReadFromAStructArrayInLinearOrder) {
  const HostArray s = test::makeTable({2, 2}, kFields,
                                      {{u"1", u"g", u"p", u"true"},
                                       {u"2", u"g", u"", u"false"},
                                       {u"3", u"", u"", u"true"},
                                       {u"4", u"", u"", u"false"}});

  AddonAppInstallList list(s.get());

  EXPECT_EQ(described(list),
            "[1x4 (name='1' guid='g' relativePath='p' installByDefault='true') "
            "(name='2' guid='g' relativePath='' installByDefault='false') "
            "(name='3' guid='' relativePath='' installByDefault='true') "
            "(name='4' guid='' relativePath='' installByDefault='false')]");
}

struct FlagCase {
  const char16_t* text;
  bool fromHost;
  bool fromXml;
};
class AddonAppInstallFlag : public testing::TestWithParam<FlagCase> {};
INSTANTIATE_TEST_SUITE_P(
    Texts, AddonAppInstallFlag,
    testing::Values(FlagCase{u"true", true, true}, FlagCase{u"false", false, false},
                    FlagCase{u"", true, false}, FlagCase{u"TRUE", true, false},
                    FlagCase{u"True", true, false}, FlagCase{u"False", true, false},
                    FlagCase{u"yes", true, false}, FlagCase{u"no", true, false},
                    FlagCase{u"1", true, false}, FlagCase{u"0", true, false},
                    FlagCase{u"false ", true, false}, FlagCase{u" true", true, false}));

TEST_P(AddonAppInstallFlag, IsClearedByTheHostAndSetByXmlWithTheExactWordOnly) {
  const HostArray s = test::makeTable(kFields, {{u"a", u"g", u"p", GetParam().text}});
  AddonAppInstallList fromXml;

  const AddonAppInstallList fromHost(s.get());
  fromXml.populateFromXML(xmlWith(u"<application installByDefault='" +
                                  std::u16string(GetParam().text) + u"'><file/></application>"));

  ASSERT_EQ(fromHost.apps.size(), 1u);
  EXPECT_EQ(fromHost.apps[0].installByDefault, GetParam().fromHost);
  ASSERT_EQ(fromXml.apps.size(), 1u);
  EXPECT_EQ(fromXml.apps[0].installByDefault, GetParam().fromXml);
}

TEST(AddonAppInstallList, WhatTheXmlLacksIsEmptyAndNotInstalled) {
  AddonAppInstallList list = golden();

  list.populateFromXML(xmlWith(u"<application/>"));

  EXPECT_EQ(described(list), "[1x1 (name='' guid='' relativePath='' installByDefault='false')]");
}

TEST(AddonAppInstallList, OnlyItsOwnElementsAndAttributesAreRead) {
  AddonAppInstallList list;

  list.populateFromXML(
      xmlWith(u"<app name='no'/><group><application name='nested'/></group>"
              u"<application name='a' x:name='b' xmlns:x='urn:x' Name='c'><other><file>no</file>"
              u"</other><file>1</file><file>2</file></application>"));

  EXPECT_EQ(described(list), "[1x1 (name='a' guid='' relativePath='1' installByDefault='false')]");
}

class AddonAppInstallField : public testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Fields, AddonAppInstallField, testing::Range<std::size_t>(0, 4));

TEST_P(AddonAppInstallField, IsRequiredAndMustBeText) {
  const std::vector<test::Texts> rows{{u"a", u"b", u"c", u"true"}, {u"a", u"b", u"c", u"true"}};
  const HostArray unset = test::makeTable(kFields, rows);
  kxSetField(unset.get(), 1, kFields[GetParam()], nullptr);
  const HostArray number = test::makeTable(kFields, rows);
  test::setField(number, 1, kFields[GetParam()], test::makeNumber(1));

  EXPECT_THROW(AddonAppInstallList{unset.get()}, matrix::HostError);
  EXPECT_THROW(AddonAppInstallList{number.get()}, matrix::HostError);
}

}  // namespace
