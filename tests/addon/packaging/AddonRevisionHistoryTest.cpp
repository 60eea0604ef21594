// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonRevisionHistory.h"

#include <gtest/gtest.h>

#include "tests/addon/packaging/DocumentXml.h"
#include "tests/support/HostValues.h"

using addon::packaging::AddonRevision;
using addon::packaging::AddonRevisionHistory;
using test::HostArray;

namespace {

const std::u16string kNamespace =
    u"http://schemas.pellandry.example/korvan/addon/2014/revisionHistory";
const std::vector<const char*> kFields{"date", "version", "description"};

std::u16string xmlWith(const std::u16string& children) {
  return u"<revisionHistory xmlns='" + kNamespace + u"'>" + children + u"</revisionHistory>";
}

AddonRevision revision(std::u16string date, std::u16string version, std::u16string description) {
  AddonRevision result;
  result.date = std::move(date);
  result.version = std::move(version);
  result.description = std::move(description);
  return result;
}

AddonRevisionHistory golden() {
  AddonRevisionHistory history;
  history.revisions = {revision(u"the day after", u"2.0-\u03b2", u"Two lines:\n\ta < b && c"),
                       revision(u"2015-13-45", u"", u"")};
  return history;
}

std::string described(AddonRevisionHistory& history) {
  return test::describe(HostArray(history.getStructArray()).get());
}

TEST(AddonRevisionHistory, HasItsIdentities) {
  const AddonRevisionHistory history;

  EXPECT_EQ(history.partName, u"/metadata/revisionHistory.xml");
  EXPECT_EQ(history.contentType, u"application/vnd.pellandry.korvan.addon.revisionHistory+xml");
  EXPECT_EQ(history.namespaceURI, kNamespace);
  EXPECT_EQ(history.relationshipType,
            u"http://schemas.pellandry.example/korvan/addon/2014/relationships/revisionHistory");
}

TEST(AddonRevisionHistory, WithoutRevisionsIsAnEmptyStructThatKeepsItsFields) {
  const HostArray empty = test::makeTable(kFields, {});

  AddonRevisionHistory history(empty.get());

  EXPECT_EQ(described(history), "[1x0 date version description]");
  EXPECT_EQ(test::canonicalXmlText(history.getAsXMLString()),
            "<revisionHistory xmlns=\"" + opc::toUtf8(kNamespace) + "\"></revisionHistory>");
}

TEST(AddonRevisionHistory, IsWrittenAsTheGoldenFile) {
  EXPECT_EQ(test::canonicalXmlText(golden().getAsXMLString()),
            test::canonicalData("revisionHistory.xml"));
}

TEST(AddonRevisionHistory, IsReadFromTheGoldenFile) {
  AddonRevisionHistory history;
  AddonRevisionHistory expected = golden();

  history.populateFromXML(test::dataText("revisionHistory.xml"));

  EXPECT_EQ(described(history), described(expected));
}

TEST(AddonRevisionHistory, KeepsTheOrderAndTheDatesOfTheHost) {
  const HostArray s = test::makeTable({3, 1}, kFields,
                                      {{u"2020-01-02", u"2", u"new"},
                                       {u"2015-13-45", u"1", u"old"},
                                       {u"2020-01-02", u"2", u"new"}});

  AddonRevisionHistory history(s.get());

  EXPECT_EQ(described(history),
            "[1x3 (date='2020-01-02' version='2' description='new') "
            "(date='2015-13-45' version='1' description='old') "
            "(date='2020-01-02' version='2' description='new')]");
}

TEST(AddonRevisionHistory, WhatTheXmlLacksIsEmpty) {
  AddonRevisionHistory history = golden();

  history.populateFromXML(
      xmlWith(u"<revision version='1'><description>d</description></revision>"
              u"<revision date='2'/>"));

  EXPECT_EQ(described(history),
            "[1x2 (date='' version='1' description='d') (date='2' version='' description='')]");
}

TEST(AddonRevisionHistory, OnlyItsOwnElementsAreRead) {
  AddonRevisionHistory history;

  history.populateFromXML(
      xmlWith(u"<release date='no'/><x><revision date='nested'/></x><description>no</description>"
              u"<revision date='1'><x><description>no</description></x><description>first"
              u"</description><description>second</description></revision>"));

  EXPECT_EQ(described(history), "[1x1 (date='1' version='' description='first')]");
}

class AddonRevisionField : public testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Fields, AddonRevisionField, testing::Range<std::size_t>(0, 3));

TEST_P(AddonRevisionField, IsRequiredAndMustBeText) {
  const HostArray unset = test::makeTable(kFields, {{u"a", u"b", u"c"}});
  kxSetField(unset.get(), 0, kFields[GetParam()], nullptr);
  const HostArray cell = test::makeTable(kFields, {{u"a", u"b", u"c"}});
  test::setField(cell, 0, kFields[GetParam()], test::makeCell({u"a"}));

  EXPECT_THROW(AddonRevisionHistory{unset.get()}, matrix::HostError);
  EXPECT_THROW(AddonRevisionHistory{cell.get()}, matrix::HostError);
}

}  // namespace
