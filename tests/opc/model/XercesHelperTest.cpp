// SPDX-License-Identifier: MIT
#include "opc/model/XercesHelper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "tests/opc/model/XmlTestSupport.h"
#include "tests/support/TemporaryFolder.h"

namespace opc::model {
namespace {

using test::ParsedXml;
using test::StringOutputStream;
using testing::HasSubstr;
using testing::StartsWith;

std::string serialise(const DocumentPointer& document) {
  StringOutputStream stream;
  XercesHelper::writeDocumentToStream(XercesHelper::createWriter(), document, stream);
  return stream.text;
}

class XercesHelperTest : public testing::Test {
 protected:
  // What serialising the document throws; nothing must have been handed to the stream.
  std::string refusal() {
    StringOutputStream stream;
    try {
      XercesHelper::writeDocumentToStream(XercesHelper::createWriter(), document_, stream);
    } catch (const InvalidXMLDocument& fault) {
      EXPECT_EQ(stream.writes, 0);
      return fault.what();
    }
    return "it was written";
  }

  xercesc::DOMElement* append(const char16_t* name) {
    return XercesHelper::appendElementNS(root_, kNamespace, name);
  }

  const std::u16string kNamespace = u"urn:n";
  DocumentPointer document_ = XercesHelper::createDocument();
  xercesc::DOMElement* root_ = XercesHelper::appendElementNS(document_, kNamespace, u"root");
};

TEST_F(XercesHelperTest, WritesUtf8WithADeclarationAndNoAddedSpace) {
  document_->setXmlStandalone(true);
  XercesHelper::setElementText(append(u"child"), u"\u00E9\U0001F600");

  EXPECT_EQ(serialise(document_),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>"
            "<root xmlns=\"urn:n\"><child>\xC3\xA9\xF0\x9F\x98\x80</child></root>");
}

TEST_F(XercesHelperTest, ADocumentWithoutAnElementIsRefused) {
  const DocumentPointer empty = XercesHelper::createDocument();
  StringOutputStream stream;

  EXPECT_THROW(XercesHelper::writeDocumentToStream(XercesHelper::createWriter(), empty, stream),
               InvalidXMLDocument);
  EXPECT_EQ(stream.writes, 0);
}

TEST_F(XercesHelperTest, AWriterServesSeveralDocumentsAndComesBackFromAFailure) {
  const WriterPointer writer = XercesHelper::createWriter();
  const DocumentPointer empty = XercesHelper::createDocument();
  StringOutputStream first;
  StringOutputStream second;

  XercesHelper::writeDocumentToStream(writer, document_, first);
  EXPECT_THROW(XercesHelper::writeDocumentToStream(writer, empty, second), InvalidXMLDocument);
  XercesHelper::writeDocumentToStream(writer, document_, second);

  EXPECT_EQ(first.text, second.text);
}

class CarriedText : public testing::TestWithParam<std::u16string> {};

TEST_P(CarriedText, ComesBackFromElementsAndAttributes) {
  const DocumentPointer document = XercesHelper::createDocument();
  xercesc::DOMElement* root = XercesHelper::appendElementNS(document, u"urn:n", u"root");
  XercesHelper::setElementText(root, GetParam());
  XercesHelper::setElementAttribute(root, u"a", GetParam());

  const ParsedXml parsed(serialise(document));

  std::u16string value;
  EXPECT_TRUE(XercesHelper::getElementAttribute(parsed.root(), u"a", value));
  EXPECT_EQ(value, GetParam());
  EXPECT_EQ(parsed.text(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CarriedText,
    testing::Values(u"", u" ", u"  two  words  ", u"\r", u"\n", u"\t", u"a\r\nb\rc\nd\te",
                    u"\r\n\r\n", u"<&>\"'", u"]]>", u"<![CDATA[x]]>", u"<!-- -->", u"&amp;",
                    u"&#13;", u"\u007F\u0080\u0085\u009F", u"\u2028\u2029", u"\uD7FF\uE000\uFFFD",
                    u"\uFEFFmark", u"\uFDD0", u"\U00010000\U0001FFFE\U0010FFFF", u"\u00E9e\u0301",
                    std::u16string(100000, u'\u00E9'), std::u16string(20000, u'\r')));

struct Refused {
  const char16_t* text;
  const char* name;
};

class RefusedText : public testing::TestWithParam<Refused> {
 protected:
  DocumentPointer document_ = XercesHelper::createDocument();
  xercesc::DOMElement* root_ = XercesHelper::appendElementNS(document_, u"urn:n", u"root");

  std::string refusal() {
    StringOutputStream stream;
    try {
      XercesHelper::writeDocumentToStream(XercesHelper::createWriter(), document_, stream);
    } catch (const InvalidXMLDocument& fault) {
      EXPECT_EQ(stream.text, "");
      return fault.what();
    }
    return "it was written";
  }
};

TEST_P(RefusedText, IsNamedWithItsElement) {
  XercesHelper::setElementText(XercesHelper::appendElementNS(root_, u"urn:n", u"title"),
                               std::u16string(u"abc") + GetParam().text);

  EXPECT_EQ(refusal(), std::string("cannot write XML: element 'title' holds ") + GetParam().name +
                           ", which XML cannot carry");
}

TEST_P(RefusedText, IsNamedWithItsAttribute) {
  XercesHelper::setElementAttribute(root_, u"name", std::u16string(u"abc") + GetParam().text);

  EXPECT_EQ(refusal(), std::string("cannot write XML: attribute 'name' of element 'root' holds ") +
                           GetParam().name + ", which XML cannot carry");
}

TEST_P(RefusedText, IsSeenInCdataCommentsInstructionsAndNamespaces) {
  const std::u16string text = std::u16string(u"abc") + GetParam().text;
  const auto refuses = [&](xercesc::DOMNode* node) {
    root_->appendChild(node);
    const std::string why = refusal();
    root_->removeChild(node)->release();
    return why;
  };

  EXPECT_THAT(refuses(document_->createCDATASection(text.c_str())), HasSubstr(GetParam().name));
  EXPECT_THAT(refuses(document_->createComment(text.c_str())), HasSubstr(GetParam().name));
  EXPECT_THAT(refuses(document_->createProcessingInstruction(u"pi", text.c_str())),
              HasSubstr(GetParam().name));
  EXPECT_THAT(refuses(document_->createElementNS(text.c_str(), u"e")), HasSubstr(GetParam().name));
}

constexpr char16_t kLoneHigh[] = {0xD83D, 0};
constexpr char16_t kLoneLow[] = {0xDE00, 0};
constexpr char16_t kHighBeforeLetter[] = {0xD83D, u'x', 0};
constexpr char16_t kReversed[] = {0xDE00, 0xD83D, 0};

INSTANTIATE_TEST_SUITE_P(Texts, RefusedText,
                         testing::Values(Refused{u"\u0001", "U+0001"}, Refused{u"\u0008", "U+0008"},
                                         Refused{u"\u000B", "U+000B"}, Refused{u"\u001F", "U+001F"},
                                         Refused{u"\uFFFE", "U+FFFE"}, Refused{u"\uFFFF", "U+FFFF"},
                                         Refused{kLoneHigh, "U+D83D"}, Refused{kLoneLow, "U+DE00"},
                                         Refused{kHighBeforeLetter, "U+D83D"},
                                         Refused{kReversed, "U+DE00"}));

TEST_F(XercesHelperTest, AWriterNeverCutsAtANull) {
  const std::u16string text(u"a\0b", 3);

  EXPECT_THROW(XercesHelper::setElementText(root_, text), InvalidXMLDocument);
  EXPECT_THROW(XercesHelper::setElementAttribute(root_, u"a", text), InvalidXMLDocument);
  EXPECT_THROW(XercesHelper::setElementAttribute(root_, text, u"a"), InvalidXMLDocument);
  EXPECT_THROW(XercesHelper::appendElementNS(root_, u"urn:n", text), InvalidXMLDocument);
  EXPECT_THROW(XercesHelper::appendElementNS(root_, text, u"e"), InvalidXMLDocument);

  EXPECT_THAT(serialise(document_), HasSubstr("<root xmlns=\"urn:n\"/>"));
}

TEST_F(XercesHelperTest, MarkupThatWouldEndItsOwnNodeIsRefused) {
  root_->appendChild(document_->createComment(u"a--b"));
  EXPECT_THAT(refusal(), HasSubstr("comment"));
  root_->replaceChild(document_->createComment(u"a-"), root_->getFirstChild())->release();
  EXPECT_THAT(refusal(), HasSubstr("comment"));
  root_
      ->replaceChild(document_->createProcessingInstruction(u"pi", u"a?>b"), root_->getFirstChild())
      ->release();
  EXPECT_THAT(refusal(), HasSubstr("'pi'"));
  root_->replaceChild(document_->createCDATASection(u"a\rb"), root_->getFirstChild())->release();
  EXPECT_THAT(refusal(), HasSubstr("U+000D"));
}

TEST_F(XercesHelperTest, APrefixWithoutNamespaceIsRefused) {
  root_->setAttribute(u"q:a", u"1");

  EXPECT_THAT(refusal(), HasSubstr("'q:a'"));
}

TEST_F(XercesHelperTest, WhatCouldNotBeReadIsNotWritten) {
  xercesc::DOMElement* deepest = root_;
  for (unsigned depth = 1; depth < XercesHelper::kMaxDepth; ++depth) {
    deepest = XercesHelper::appendElementNS(deepest, kNamespace, u"e");
  }
  EXPECT_THAT(serialise(document_), StartsWith("<?xml"));

  XercesHelper::appendElementNS(deepest, kNamespace, u"e");

  EXPECT_THAT(refusal(), HasSubstr("256 deep"));
}

TEST_F(XercesHelperTest, AnElementWithMoreAttributesThanAreReadIsNotWritten) {
  for (unsigned i = 0; i <= XercesHelper::kMaxAttributes; ++i) {
    const std::string name = "a" + std::to_string(i);
    root_->setAttribute(std::u16string(name.begin(), name.end()).c_str(), u"");
  }

  EXPECT_THAT(refusal(), HasSubstr("element 'root' has more than 4096 attributes"));
}

TEST_F(XercesHelperTest, ADocumentWithMoreNodesThanAreReadIsNotWritten) {
  for (std::uint64_t i = 0; i < XercesHelper::kMaxNodes; ++i) {
    root_->appendChild(document_->createElement(u"e"));
  }

  EXPECT_THAT(refusal(), HasSubstr("more than 2097152 elements and attributes"));
}

TEST_F(XercesHelperTest, ANodeOfAnotherKindIsNotWritten) {
  root_->appendChild(document_->createEntityReference(u"amp"));

  EXPECT_THAT(refusal(), HasSubstr("a node of kind 5 in"));
}

TEST_F(XercesHelperTest, AnAttributeIsWrittenUpToTheLimitOfReading) {
  const std::u16string most(XercesHelper::kMaxAttributeLength, u'<');
  XercesHelper::setElementAttribute(root_, u"a", most);
  const ParsedXml parsed(serialise(document_));
  std::u16string value;
  EXPECT_TRUE(XercesHelper::getElementAttribute(parsed.root(), u"a", value));
  EXPECT_EQ(value, most);

  XercesHelper::setElementAttribute(root_, u"a", most + u"x");

  EXPECT_THAT(refusal(), HasSubstr("attribute 'a' of element 'root' is longer than 1048576 bytes"));
}

TEST_F(XercesHelperTest, ADocumentBeyondTheSizeLimitIsNotWritten) {
  XercesHelper::setElementText(root_, std::u16string(XercesHelper::kMaxDocumentSize, u'x'));

  EXPECT_THAT(refusal(), HasSubstr("67108864 bytes"));
}

TEST_F(XercesHelperTest, BadNamesAreRefused) {
  EXPECT_THROW(XercesHelper::appendElementNS(root_, u"urn:n", u"a b"), InvalidXMLDocument);
  EXPECT_THROW(XercesHelper::appendElementNS(root_, u"urn:n", u""), InvalidXMLDocument);
  EXPECT_THROW(XercesHelper::appendElementNS(root_, u"", u"p:a"), InvalidXMLDocument);
  EXPECT_THROW(XercesHelper::setElementAttribute(root_, u"a b", u""), InvalidXMLDocument);
  EXPECT_THROW(XercesHelper::setElementAttribute(root_, u"xmlns", u""), InvalidXMLDocument);
  EXPECT_THROW(XercesHelper::appendElementNS(document_, u"urn:n", u"second"), InvalidXMLDocument);
}

TEST_F(XercesHelperTest, ANullElementIsAnErrorWhenItShouldChange) {
  xercesc::DOMElement* none = nullptr;

  EXPECT_THROW(XercesHelper::appendElementNS(none, u"urn:n", u"a"), Exception);
  EXPECT_THROW(XercesHelper::setElementText(none, u"a"), Exception);
  EXPECT_THROW(XercesHelper::setElementAttribute(none, u"a", u"b"), Exception);
}

TEST_F(XercesHelperTest, FindsChildrenByLocalNameInDocumentOrder) {
  const ParsedXml parsed(
      "<r xmlns:p='urn:p'>text<a n='1'/><!-- --><p:a n='2'><a n='inner'/></p:a><b/><a n='3'/></r>");

  std::u16string order;
  for (const xercesc::DOMElement* element : XercesHelper::getElements(parsed.root(), u"a")) {
    std::u16string n;
    EXPECT_TRUE(XercesHelper::getElementAttribute(element, u"n", n));
    order += n;
  }

  EXPECT_EQ(order, u"123");
  EXPECT_EQ(XercesHelper::getElement(parsed.root(), u"a"),
            XercesHelper::getElements(parsed.root(), u"a").front());
  EXPECT_EQ(XercesHelper::getElement(parsed.root(), u"c"), nullptr);
  EXPECT_EQ(XercesHelper::getElement(nullptr, u"a"), nullptr);
  EXPECT_TRUE(XercesHelper::getElements(nullptr, u"a").empty());
}

TEST_F(XercesHelperTest, TextIsThatOfTheWholeElementWithoutComments) {
  const ParsedXml parsed("<a>one<!-- no --> two<b>three<c/></b><![CDATA[<four>]]><?no no?></a>");

  EXPECT_EQ(parsed.text(), u"one twothree<four>");
}

TEST_F(XercesHelperTest, MissingTextAndAttributesLeaveTheStringAlone) {
  const ParsedXml parsed("<a xmlns:p='urn:p' p:n='prefixed' e=''/>");
  std::u16string value = u"before";

  EXPECT_FALSE(XercesHelper::getElementText(nullptr, value));
  EXPECT_FALSE(XercesHelper::getElementAttribute(nullptr, u"n", value));
  EXPECT_FALSE(XercesHelper::getElementAttribute(parsed.root(), u"n", value));
  EXPECT_EQ(value, u"before");

  EXPECT_TRUE(XercesHelper::getElementAttribute(parsed.root(), u"e", value));
  EXPECT_EQ(value, u"");
  value = u"before";
  EXPECT_TRUE(XercesHelper::getElementText(parsed.root(), value));
  EXPECT_EQ(value, u"");
}

TEST_F(XercesHelperTest, EmptyTextMakesAnEmptyTag) {
  XercesHelper::setElementText(root_, u"before");
  XercesHelper::setElementText(root_, u"");

  EXPECT_THAT(serialise(document_), HasSubstr("<root xmlns=\"urn:n\"/>"));
}

TEST_F(XercesHelperTest, TextReplacesWhatWasThere) {
  XercesHelper::setElementText(root_, u"first");
  XercesHelper::setElementText(root_, u"second");
  XercesHelper::setElementAttribute(root_, u"a", u"first");
  XercesHelper::setElementAttribute(root_, u"a", u"second");

  std::u16string value;
  EXPECT_TRUE(XercesHelper::getElementText(root_, value));
  EXPECT_EQ(value, u"second");
  EXPECT_TRUE(XercesHelper::getElementAttribute(root_, u"a", value));
  EXPECT_EQ(value, u"second");
}

TEST(XercesGuard, XercesOutlivesIt) {
  std::make_unique<XercesGuard>().reset();

  const DocumentPointer document = XercesHelper::createDocument();

  EXPECT_NE(XercesHelper::appendElementNS(document, u"urn:n", u"a"), nullptr);
}

// Another parser is the judge of what is written.
TEST_F(XercesHelperTest, PythonReadsTheSameText) {
  const test::TemporaryFolder folder;
  const std::u16string text = u"\r\n\t <&>\"']]> \u0085\u2028\U0001F600 ";
  XercesHelper::setElementText(root_, text);
  XercesHelper::setElementAttribute(root_, u"a", text);
  test::writeFile(folder / "document.xml", serialise(document_));
  test::writeFile(folder / "text", toUtf8(text));
  const std::string command =
      "cd '" + folder.path().string() +
      "' && /usr/bin/python3 -c \"import xml.dom.minidom as m\n"
      "root = m.parse('document.xml').documentElement\n"
      "text = open('text', newline='', encoding='utf-8').read()\n"
      "assert root.namespaceURI == 'urn:n', root.namespaceURI\n"
      "assert root.firstChild.data == text, ascii(root.firstChild.data)\n"
      "assert root.getAttribute('a') == text, ascii(root.getAttribute('a'))\n\"";

  EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST(XercesHelper, AHundredThousandRecordsAreWrittenAndRead) {
  const DocumentPointer document = XercesHelper::createDocument();
  xercesc::DOMElement* root = XercesHelper::appendElementNS(document, u"urn:n", u"revisions");
  for (int i = 0; i < 100000; ++i) {
    xercesc::DOMElement* record = XercesHelper::appendElementNS(root, u"urn:n", u"revision");
    XercesHelper::setElementAttribute(record, u"version", u"1.0");
    XercesHelper::setElementText(record, u"what changed & why");
  }

  const ParsedXml parsed(serialise(document));
  const auto records = XercesHelper::getElements(parsed.root(), u"revision");

  EXPECT_EQ(records.size(), 100000u);
}

}  // namespace
}  // namespace opc::model
