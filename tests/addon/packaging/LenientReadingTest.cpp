// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <regex>

#include "fl/i18n/codecvt.h"
#include "opc/Streams.h"
#include "opc/Text.h"
#include "tests/addon/packaging/DocumentTypes.h"
#include "tests/addon/packaging/DocumentXml.h"
#include "tests/support/Paths.h"

// The seven documents read from XML that says the same, or nothing, in another way.

using addon::packaging::XMLPartType;
using opc::model::XercesHelper;

namespace {

std::string replaceAll(const std::string& text, const char* pattern, const char* with) {
  return std::regex_replace(text, std::regex(pattern), with);
}

// The golden files have text only in elements without children, write empty elements as <a/>, and
// keep their declaration on a line of its own.

std::string withoutDeclaration(const std::string& xml) {
  return xml.substr(xml.find('\n') + 1);
}

std::string withAPrefix(const std::string& xml) {
  return replaceAll(replaceAll(replaceAll(xml, "</", "</p:"), "<([A-Za-z])", "<p:$1"),
                    "xmlns=", "xmlns:p=");
}

std::string withoutNamespace(const std::string& xml) {
  return replaceAll(xml, " xmlns=\"[^\"]*\"", "");
}

std::string inAnotherNamespace(const std::string& xml) {
  return replaceAll(xml, "xmlns=\"[^\"]*\"", "xmlns=\"urn:other\"");
}

std::string withAnotherRoot(const std::string& xml) {
  return replaceAll(replaceAll(xml, "<[A-Za-z]+ xmlns=", "<other xmlns="), "</[A-Za-z]+>\\s*$",
                    "</other>");
}

std::string withUnknownElements(const std::string& xml) {
  const char* unknown = "<unknown a=\"1\"><deep>text</deep></unknown>";
  return replaceAll(xml, "><(?!/)", (std::string(">") + unknown + "<").c_str());
}

std::string withUnknownAttributes(const std::string& xml) {
  return replaceAll(xml, "<([A-Za-z]+)",
                    "<$1 unknown=\"x\" q:name=\"no\" q:type=\"no\" xmlns:q=\"urn:q\"");
}

std::string withCommentsAndInstructions(const std::string& xml) {
  return replaceAll(withoutDeclaration(xml), "(<[A-Za-z/][^>]*>)",
                    "<!-- before --><?pi before?>$1<!-- after <x/> --><?pi after?>")
      .substr(std::string("<!-- before --><?pi before?>").size());
}

std::string withWhiteSpaceBetweenElements(const std::string& xml) {
  return replaceAll(xml, "><", ">\n\t <");
}

std::string withCdata(const std::string& xml) {
  std::string result = replaceAll(withoutDeclaration(xml), ">([^<]+)<", "><![CDATA[$1]]><");
  for (const auto& [escape, plain] : {std::pair("&lt;", "<"), {"&gt;", ">"}, {"&amp;", "&"}}) {
    // Only inside the sections: the attributes of the golden files keep theirs.
    std::string before;
    do {
      before = result;
      result = std::regex_replace(
          result, std::regex("(<!\\[CDATA\\[(?:(?!\\]\\]>)[^])*?)" + std::string(escape)),
          std::string("$1") + plain);
    } while (before != result);
  }
  return result;
}

std::string withCharacterReferences(const std::string& xml) {
  return replaceAll(replaceAll(withoutDeclaration(xml), "e(?=[^<>]*</)", "&#x65;"), "&amp;",
                    "&#38;");
}

std::string inUtf16(const std::string& xml, const char* encoding, const char* mark) {
  const fl::i18n::codecvt_ustring_to_string convert(encoding, true);
  return mark + convert.convert(opc::fromUtf8(withoutDeclaration(xml)));
}

std::string inLittleEndianUtf16(const std::string& xml) {
  return inUtf16(xml, "UTF-16LE", "\xFF\xFE");
}

std::string inBigEndianUtf16(const std::string& xml) {
  return inUtf16(xml, "UTF-16BE", "\xFE\xFF");
}

std::string withAByteOrderMark(const std::string& xml) {
  return "\xEF\xBB\xBF" + xml;
}

struct Wording {
  const char* name;
  std::string (*reword)(const std::string&);
};

constexpr Wording kWordings[] = {
    {"Prefix", withAPrefix},
    {"NoNamespace", withoutNamespace},
    {"AnotherNamespace", inAnotherNamespace},
    {"AnotherRoot", withAnotherRoot},
    {"UnknownElements", withUnknownElements},
    {"UnknownAttributes", withUnknownAttributes},
    {"Comments", withCommentsAndInstructions},
    {"WhiteSpace", withWhiteSpaceBetweenElements},
    {"Cdata", withCdata},
    {"CharacterReferences", withCharacterReferences},
    {"LittleEndianUtf16", inLittleEndianUtf16},
    {"BigEndianUtf16", inBigEndianUtf16},
    {"ByteOrderMark", withAByteOrderMark},
};

void read(XMLPartType& document, const std::string& bytes) {
  opc::MemoryInputStream stream(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  const auto parser = XercesHelper::createParser();
  document.populateFromDOM(XercesHelper::readDocumentFromStream(parser, stream, false, u"", u""));
}

std::string goldenBytes(const test::DocumentType& type) {
  return test::readFile(test::sourcePath(std::string("tests/data/") + type.root + ".xml"));
}

class EveryWording : public testing::TestWithParam<std::tuple<test::DocumentType, Wording>> {};
INSTANTIATE_TEST_SUITE_P(Documents, EveryWording,
                         testing::Combine(testing::ValuesIn(test::kDocumentTypes),
                                          testing::ValuesIn(kWordings)),
                         [](const auto& test) {
                           return std::string(std::get<0>(test.param).root) +
                                  std::get<1>(test.param).name;
                         });

TEST_P(EveryWording, IsReadAsTheSameDocument) {
  const auto& [type, wording] = GetParam();
  const std::string golden = goldenBytes(type);
  const std::string reworded = wording.reword(golden);
  ASSERT_NE(reworded, golden);
  const auto expected = type.create();
  read(*expected, golden);

  const auto document = type.create();
  read(*document, reworded);

  EXPECT_EQ(document->getAsXMLString(), expected->getAsXMLString()) << reworded;
}

class EveryDocumentRead : public testing::TestWithParam<test::DocumentType> {};
INSTANTIATE_TEST_SUITE_P(Types, EveryDocumentRead, testing::ValuesIn(test::kDocumentTypes),
                         test::nameOfDocumentType);

TEST_P(EveryDocumentRead, IsTheEmptyOneWhenItsElementsAreOneLevelTooDeep) {
  const std::string root = GetParam().root;
  std::string xml = withoutNamespace(withoutDeclaration(goldenBytes(GetParam())));
  ASSERT_EQ(xml.find("<" + root + ">"), 0u);

  const auto document = GetParam().create();
  read(*document, "<outer>" + xml + "</outer>");

  EXPECT_EQ(document->getAsXMLString(), GetParam().create()->getAsXMLString());
}

TEST_P(EveryDocumentRead, IsTheEmptyOneWhenTheRootHasNothing) {
  for (const char* xml : {"<x/>", "<x>text only</x>", "<x><a/><b/></x>"}) {
    const auto document = GetParam().create();
    read(*document, xml);
    EXPECT_EQ(document->getAsXMLString(), GetParam().create()->getAsXMLString()) << xml;
  }
}

TEST_P(EveryDocumentRead, TwiceIsTheSameAsOnce) {
  const auto once = GetParam().create();
  read(*once, goldenBytes(GetParam()));

  const auto twice = GetParam().create();
  read(*twice, goldenBytes(GetParam()));
  read(*twice, goldenBytes(GetParam()));

  EXPECT_EQ(twice->getAsXMLString(), once->getAsXMLString());
}

TEST_P(EveryDocumentRead, IsWrittenAsItsGoldenFileInEveryNameNamespaceAndText) {
  const auto document = GetParam().create();

  read(*document, goldenBytes(GetParam()));

  EXPECT_EQ(test::canonicalXmlText(document->getAsXMLString()),
            test::canonicalData(std::string(GetParam().root) + ".xml"));
}

}  // namespace
