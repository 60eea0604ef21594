// SPDX-License-Identifier: MIT
#include "addon/packaging/XMLPartType.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "fl/i18n/codecvt.h"
#include "tests/addon/packaging/DocumentTypes.h"
#include "tests/addon/packaging/DocumentXml.h"

using addon::packaging::AddonLicense;
using addon::packaging::XMLPartType;
using opc::model::InvalidXMLDocument;

namespace {

class EveryDocument : public testing::TestWithParam<test::DocumentType> {};
INSTANTIATE_TEST_SUITE_P(Types, EveryDocument, testing::ValuesIn(test::kDocumentTypes),
                         test::nameOfDocumentType);

TEST_P(EveryDocument, WhenEmptyIsAStandaloneDocumentOfItsRootInItsNamespace) {
  const auto document = GetParam().create();

  const std::u16string xml = document->getAsXMLString();

  const std::string declaration = opc::toUtf8(xml.substr(0, xml.find(u"?>")));
  EXPECT_NE(declaration.find("encoding=\"UTF-8\""), std::string::npos) << declaration;
  EXPECT_NE(declaration.find("standalone=\"yes\""), std::string::npos) << declaration;
  const std::string start = std::string("<") + GetParam().root + " xmlns=\"" +
                            opc::toUtf8(document->namespaceURI) + "\">";
  EXPECT_EQ(test::canonicalXmlText(xml).substr(0, start.size()), start);
}

TEST_P(EveryDocument, ReadsWhatItWrote) {
  const auto document = GetParam().create();
  const std::u16string xml = document->getAsXMLString();

  document->populateFromXML(xml);

  EXPECT_EQ(document->getAsXMLString(), xml);
}

class MalformedXml : public testing::TestWithParam<const char16_t*> {};
INSTANTIATE_TEST_SUITE_P(Texts, MalformedXml,
                         testing::Values(u"", u"no xml", u"<license>", u"<a></b>", u"<a/><b/>",
                                         u"<license><licenseText type='x'>&nothing;</licenseText>"
                                         u"</license>",
                                         u"<!DOCTYPE license><license/>"));

TEST_P(MalformedXml, IsRefusedAndTheDocumentKeepsWhatItHolds) {
  AddonLicense license;
  license.type = u"type";
  license.text = u"text";

  EXPECT_THROW(license.populateFromXML(GetParam()), InvalidXMLDocument);

  EXPECT_EQ(license.type, u"type");
  EXPECT_EQ(license.text, u"text");
}

TEST(XMLPartType, ALoneSurrogateIsRefusedByTheConverterWhenReading) {
  AddonLicense license;
  const std::u16string xml{u'<', u'a', u'>', static_cast<char16_t>(0xDC00)};
  const fl::i18n::codecvt_ustring_to_string converter("UTF-8", true);
  EXPECT_THROW(converter.convert(xml), opc::Exception);

  EXPECT_THROW(license.populateFromXML(xml), opc::Exception);
}

TEST(XMLPartType, TextThatXmlCannotCarryIsRefusedWhenWriting) {
  for (const int code : {0x0, 0x1, 0xB, 0x1F, 0xD800, 0xDC00, 0xFFFF}) {
    const auto unit = static_cast<char16_t>(code);
    AddonLicense license;
    license.text = std::u16string(u"a") + unit + u"b";
    EXPECT_THROW(license.getAsXMLString(), InvalidXMLDocument) << code;

    AddonLicense label;
    label.type = license.text;
    EXPECT_THROW(label.getAsXMLString(), InvalidXMLDocument) << code;
  }
}

TEST(XMLPartType, TheEncodingThatATextDeclaresDoesNotMatter) {
  for (const char16_t* encoding : {u"UTF-8", u"UTF-16", u"ISO-8859-1", u"x-unknown"}) {
    AddonLicense license;

    license.populateFromXML(std::u16string(u"<?xml version=\"1.0\" encoding=\"") + encoding +
                            u"\"?><l><licenseText type=\"t\">\u00E4\u20AC</licenseText></l>");

    EXPECT_EQ(license.text, u"\u00E4\u20AC") << opc::toUtf8(encoding);
  }
}

TEST(XMLPartType, ADocumentTakesOverAnotherOfItsClass) {
  AddonLicense from;
  from.type = u"MIT";
  AddonLicense to;

  to = from;

  EXPECT_EQ(to.type, u"MIT");
  EXPECT_EQ(to.partName, from.partName);
}

/// A document whose two operations fail half-way.
class FailingDocument : public XMLPartType {
 public:
  FailingDocument() : XMLPartType(u"/metadata/x.xml", u"application/xml", u"urn:x", u"urn:r") {}
  void buildDOM(
      std::unique_ptr<xercesc::DOMDocument, opc::model::XercesDeleter>& document) override {
    opc::model::XercesHelper::appendElementNS(document, namespaceURI, u"root");
    throw std::logic_error("build");
  }
  void populateFromDOM(xercesc::DOMDocument*) override {
    populated = true;
    throw std::logic_error("populate");
  }
  bool populated = false;
};

TEST(XMLPartType, WhatASubclassThrowsPasses) {
  FailingDocument document;

  EXPECT_THROW(document.getAsXMLString(), std::logic_error);
  EXPECT_THROW(document.populateFromXML(u"<a/>"), std::logic_error);

  EXPECT_TRUE(document.populated);
}

TEST(XMLPartType, ManyDocumentsMayLiveAtOnceAndEndInAnyOrder) {
  std::vector<std::unique_ptr<AddonLicense>> licenses;
  for (int i = 0; i < 10; ++i) licenses.push_back(std::make_unique<AddonLicense>());
  for (const std::size_t i : {0u, 9u, 4u}) licenses[i].reset();

  licenses[5]->populateFromXML(u"<l><licenseText type='t'>x</licenseText></l>");
  const AddonLicense copy = *licenses[5];
  licenses.clear();

  EXPECT_EQ(copy.type, u"t");
  EXPECT_EQ(copy.text, u"x");
}

}  // namespace
