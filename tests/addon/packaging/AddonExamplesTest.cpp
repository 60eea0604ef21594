// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonExamples.h"

#include <gtest/gtest.h>

#include "hostarray/standin/CallScope.h"
#include "tests/addon/packaging/DocumentXml.h"
#include "tests/support/HostValues.h"

using addon::packaging::AddonExamples;
using addon::packaging::Example;
using addon::packaging::ExampleCategory;
using hostarray::standin::CallScope;
using test::HostArray;

namespace {

const std::u16string kNamespace = u"http://schemas.pellandry.example/korvan/addon/2014/examples";
const std::vector<const char*> kCategoryFields{"name", "examples"};
const std::vector<const char*> kFields{"name", "type", "source", "main", "thumbnail", "images"};
const std::vector<const char*> kTextFields(kFields.begin(), kFields.end() - 1);

std::u16string xmlWith(const std::u16string& children) {
  return u"<examples xmlns='" + kNamespace + u"'>" + children + u"</examples>";
}

std::string canonicalWith(const std::string& children) {
  return "<examples xmlns=\"" + opc::toUtf8(kNamespace) + "\">" + children + "</examples>";
}

AddonExamples golden() {
  Example full;
  full.name = u"Gr\u00f6\u00dfe";
  full.type = u"script";
  full.source = u"ex/one.mlx";
  full.main = u"ex/one.m";
  full.thumbnail = u"ex/one.png";
  full.images = {u"ex/a < b.png", u""};
  AddonExamples document;
  document.categories.resize(2);
  document.categories[0].name = u"First & foremost";
  document.categories[0].examples = {full, Example()};
  return document;
}

std::string described(AddonExamples& document) {
  return test::describe(HostArray(document.getStructArray()).get());
}

/// What becomes of a host struct.
std::string throughDocument(const HostArray& s) {
  const CallScope scope;
  AddonExamples document(s.get());
  return described(document);
}

/// A table of examples whose images are all unset.
HostArray makeExamples(const test::Shape& shape, const test::Texts& names) {
  HostArray examples = test::makeStructArray(shape, kFields);
  for (std::size_t i = 0; i < names.size(); ++i) {
    for (const char* field : kTextFields) test::setField(examples, i, field, test::makeText(u""));
    test::setField(examples, i, "name", test::makeText(names[i]));
  }
  return examples;
}

HostArray makeCategory(HostArray examples) {
  HostArray category = test::makeStructArray({1, 1}, kCategoryFields);
  test::setField(category, 0, "name", test::makeText(u"c"));
  test::setField(category, 0, "examples", std::move(examples));
  return category;
}

/// The struct text of an example with only a name.
std::string bare(const std::string& name) {
  return "(name='" + name + "' type='' source='' main='' thumbnail='' images=-)";
}

/// The only example of a document that holds these files.
std::string readFiles(const std::u16string& files) {
  AddonExamples document;
  document.populateFromXML(
      xmlWith(u"<exampleCategory name='c'><example>" + files + u"</example></exampleCategory>"));
  return described(document);
}

std::string oneExample(const std::string& fields) {
  return "[1x1 (name='c' examples=[1x1 (name='' type='' " + fields + ")])]";
}

TEST(AddonExamples, HasItsIdentities) {
  const AddonExamples document;

  EXPECT_EQ(document.partName, u"/metadata/examples.xml");
  EXPECT_EQ(document.contentType, u"application/vnd.pellandry.korvan.addon.examples+xml");
  EXPECT_EQ(document.namespaceURI, kNamespace);
  EXPECT_EQ(document.relationshipType,
            u"http://schemas.pellandry.example/korvan/addon/2014/relationships/examples");
}

TEST(AddonExamples, WithoutCategoriesIsAnEmptyStructThatKeepsItsFields) {
  const HostArray empty = test::makeStructArray({1, 0}, kCategoryFields);
  AddonExamples document(empty.get());

  EXPECT_EQ(described(document), "[1x0 name examples]");
  EXPECT_EQ(test::canonicalXmlText(document.getAsXMLString()), canonicalWith(""));
}

TEST(AddonExamples, IsWrittenAsTheGoldenFile) {
  EXPECT_EQ(test::canonicalXmlText(golden().getAsXMLString()), test::canonicalData("examples.xml"));
}

TEST(AddonExamples, IsReadFromTheGoldenFile) {
  AddonExamples document;
  AddonExamples expected = golden();

  document.populateFromXML(test::dataText("examples.xml"));

  EXPECT_EQ(described(document), described(expected));
}

TEST(AddonExamples, IsAStructOfStructsInWhichEmptyListsAreUnset) {
  AddonExamples document = golden();

  EXPECT_EQ(described(document),
            "[1x2 (name='First & foremost' examples=[1x2 (name='Gr\u00f6\u00dfe' type='script' "
            "source='ex/one.mlx' main='ex/one.m' thumbnail='ex/one.png' "
            "images={1x2 'ex/a < b.png' ''}) " +
                bare("") + "]) (name='' examples=-)]");
}

TEST(AddonExamples, AreTakenFromTheHostInLinearOrder) {
  const HostArray s = makeCategory(makeExamples({2, 2}, {u"1", u"2", u"3", u"4"}));

  EXPECT_EQ(throughDocument(s), "[1x1 (name='c' examples=[1x4 " + bare("1") + " " + bare("2") +
                                    " " + bare("3") + " " + bare("4") + "])]");
}

TEST(AddonExamples, CategoriesMayHaveAnyShape) {
  const HostArray s = test::makeStructArray({2, 2}, kCategoryFields);
  const test::Texts names{u"1", u"2", u"3", u"4"};
  for (std::size_t i = 0; i < 4; ++i) test::setField(s, i, "name", test::makeText(names[i]));

  EXPECT_EQ(throughDocument(s),
            "[1x4 (name='1' examples=-) (name='2' examples=-) (name='3' examples=-) "
            "(name='4' examples=-)]");
}

TEST(AddonExamples, ImagesMayHaveAnyShape) {
  HostArray examples = makeExamples({1, 1}, {u"e"});
  test::setField(examples, 0, "images", test::makeCell({2, 2}, {u"1", u"", u"3", u"1"}));

  EXPECT_EQ(throughDocument(makeCategory(std::move(examples))),
            "[1x1 (name='c' examples=[1x1 (name='e' type='' source='' main='' thumbnail='' "
            "images={1x4 '1' '' '3' '1'})])]");
}

TEST(AddonExamples, AnEmptyListIsLeftUnset) {
  HostArray examples = makeExamples({1, 1}, {u"e"});
  test::setField(examples, 0, "images", test::makeCell({}));

  EXPECT_EQ(throughDocument(makeCategory(std::move(examples))),
            "[1x1 (name='c' examples=[1x1 " + bare("e") + "])]");
  EXPECT_EQ(throughDocument(makeCategory(makeExamples({0, 3}, {}))), "[1x1 (name='c' examples=-)]");
}

TEST(AddonExamples, ACategoryWithoutANameOrWithExamplesOfAnotherKindIsTheHostsError) {
  const HostArray nameless = test::makeStructArray({1, 1}, kCategoryFields);

  EXPECT_THROW(throughDocument(nameless), matrix::HostError);
  EXPECT_THROW(throughDocument(makeCategory(test::makeNumber(1))), matrix::HostError);
  EXPECT_THROW(throughDocument(makeCategory(test::makeText(u"abc"))), matrix::HostError);
  EXPECT_THROW(throughDocument(makeCategory(test::makeCell({u"a"}))), matrix::HostError);
}

TEST(AddonExamples, ImagesThatAreNotACellOfTextsAreTheHostsError) {
  HostArray text = makeExamples({1, 1}, {u"e"});
  test::setField(text, 0, "images", test::makeText(u"a.png"));
  HostArray number = makeExamples({1, 1}, {u"e"});
  HostArray images = test::makeCell({u"a", u"b"});
  kxSetCell(images.get(), 1, kxCreateDoubleScalar(1));
  test::setField(number, 0, "images", std::move(images));

  EXPECT_THROW(throughDocument(makeCategory(std::move(text))), matrix::HostError);
  EXPECT_THROW(throughDocument(makeCategory(std::move(number))), matrix::HostError);
}

class ExampleTextField : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Fields, ExampleTextField, testing::ValuesIn(kTextFields));

TEST_P(ExampleTextField, IsRequiredAndMustBeText) {
  HostArray unset = makeExamples({1, 2}, {u"a", u"b"});
  kxSetField(unset.get(), 1, GetParam(), nullptr);
  HostArray number = makeExamples({1, 2}, {u"a", u"b"});
  test::setField(number, 1, GetParam(), test::makeNumber(1));

  EXPECT_THROW(throughDocument(makeCategory(std::move(unset))), matrix::HostError);
  EXPECT_THROW(throughDocument(makeCategory(std::move(number))), matrix::HostError);
}

TEST(AddonExamples, FilesMayComeInAnyOrderAndAreWrittenInTheirOwn) {
  AddonExamples document;
  const std::u16string files =
      u"<file type='image'>i</file><file type='thumbnail'>t</file><file type='main'>m</file>"
      u"<file type='source'>s</file>";

  document.populateFromXML(xmlWith(u"<exampleCategory name='c'><example name='' type=''>" + files +
                                   u"</example></exampleCategory>"));

  EXPECT_EQ(described(document), oneExample("source='s' main='m' thumbnail='t' images={1x1 'i'}"));
  EXPECT_EQ(test::canonicalXmlText(document.getAsXMLString()),
            canonicalWith("<exampleCategory name=\"c\"><example name=\"\" type=\"\">"
                          "<file type=\"source\">s</file><file type=\"main\">m</file>"
                          "<file type=\"thumbnail\">t</file><file type=\"image\">i</file>"
                          "</example></exampleCategory>"));
}

TEST(AddonExamples, AFileOfAnUnknownOrNoTypeIsIgnored) {
  EXPECT_EQ(readFiles(u"<file type='Source'>a</file><file type=''>b</file><file>c</file>"
                      u"<file type='images'>d</file><x><file type='main'>e</file></x>"),
            "[1x1 (name='c' examples=[1x1 " + bare("") + "])]");
}

TEST(AddonExamples, OfTwoFilesOfOneTypeTheLastIsKept) {
  EXPECT_EQ(readFiles(u"<file type='main'>1</file><file type='source'>s</file>"
                      u"<file type='main'>2</file><file type='source'/>"),
            oneExample("source='' main='2' thumbnail='' images=-"));
}

TEST(AddonExamples, AnEmptyImageIsAnEntry) {
  EXPECT_EQ(readFiles(u"<file type='image'/><file type='image'>b</file><file type='image'/>"),
            oneExample("source='' main='' thumbnail='' images={1x3 '' 'b' ''}"));
}

TEST(AddonExamples, ReadingReplacesTheCategories) {
  AddonExamples document = golden();

  document.populateFromXML(
      xmlWith(u"<exampleCategory/><x><exampleCategory name='nested'/></x><example name='no'/>"));

  EXPECT_EQ(described(document), "[1x1 (name='' examples=-)]");
}

}  // namespace
