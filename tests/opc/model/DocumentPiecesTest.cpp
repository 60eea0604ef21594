// SPDX-License-Identifier: MIT
#include "opc/model/DocumentPieces.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "opc/Streams.h"
#include "opc/model/InvalidXMLDocument.h"
#include "opc/model/XercesHelper.h"

// Documents that the parser hands over child by child.

namespace {

// What a document gives in pieces: "<name>" for the root and for children, texts as they are.
class WrittenPieces final : public opc::model::DocumentPieces {
 public:
  void startRoot(const opc::model::XmlNode& root) override { add(root); }
  void takeChild(const opc::model::XmlNode& child) override { add(child); }
  std::string text;

 private:
  void add(const opc::model::XmlNode& node) {
    text += node.isElement() ? "<" + node.name.shown() + ">" : opc::toUtf8(node.text);
    if (node.firstChild != nullptr) add(*node.firstChild);
  }
};

std::string piecesOf(std::string_view xml) {
  const opc::model::XercesGuard guard;
  opc::MemoryInputStream stream(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
  WrittenPieces pieces;
  opc::model::parsePieces(stream, pieces);
  return pieces.text;
}

std::string ruleOfPieces(std::string_view xml) {
  try {
    return piecesOf(xml);
  } catch (const opc::model::InvalidXMLDocument& fault) {
    return fault.rule();
  }
}

TEST(DocumentPieces, ComeInOrderWithAllThatIsInThem) {
  EXPECT_EQ(piecesOf("<r><a><b>x</b></a>t<!-- -->u<c/><![CDATA[v]]></r>"), "<r><a><b>xtu<c>v");
  EXPECT_EQ(piecesOf("<r/>"), "<r>");
}

TEST(DocumentPieces, OfADocumentOfAnyNumberAreRead) {
  std::string xml = "<r>";
  std::string expected = "<r>";
  for (int i = 0; i < 100'000; ++i) {
    xml += "<a x='0123456789'/>";
    expected += "<a>";
  }
  EXPECT_EQ(piecesOf(xml + "</r>"), expected);
}

TEST(DocumentPieces, OfLongTextComeWhole) {
  const std::string text(3'000'000, 'x');
  EXPECT_EQ(piecesOf("<r>" + text + "</r>"), "<r>" + text);
}

TEST(DocumentPieces, BeyondTheirLimitsAreRefused) {
  const std::string text(5u << 20, 'x');
  EXPECT_EQ(ruleOfPieces("<r><a>" + text + "</a></r>"), "RB-1");
  EXPECT_EQ(ruleOfPieces("<r><!--" + text + "--></r>"), "RB-1");
  EXPECT_EQ(ruleOfPieces("<r><![CDATA[" + text + "]]></r>"), "RB-1");
  std::string attributes;
  for (int i = 0; i < 5; ++i) {
    attributes += " a" + std::to_string(i) + "='" + std::string(1u << 20, 'x') + "'";
  }
  EXPECT_EQ(ruleOfPieces("<r><a" + attributes + "/></r>"), "RB-1");
  EXPECT_EQ(ruleOfPieces("<r" + attributes + "/>"), "RB-1");
  std::string elements;
  for (int i = 0; i < 70'000; ++i) elements += "<b/>";
  EXPECT_EQ(ruleOfPieces("<r><a>" + elements + "</a></r>"), "RB-1");
  EXPECT_EQ(ruleOfPieces("<r>" + elements + "</r>").substr(0, 6), "<r><b>");
}

TEST(DocumentPieces, OfADocumentThatIsNotWellFormedEndInItsFault) {
  EXPECT_EQ(ruleOfPieces("<r><a/><b></r>"), "XM-3");
  EXPECT_EQ(ruleOfPieces(""), "XM-3");
}

}  // namespace
