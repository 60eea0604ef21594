// SPDX-License-Identifier: MIT
#include "opc/model/detail/XmlLimits.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "opc/model/DocumentPieces.h"
#include "opc/model/XercesHelper.h"
#include "tests/opc/model/TextBeforeNothing.h"
#include "tests/opc/model/XmlTestSupport.h"

// Where the limits of documents lie, to the byte and the node.

namespace opc::model::detail {
namespace {

using test::repeat;

// "" for a document within the limits.
std::string ruleOf(std::string_view xml, PieceLimits pieces = PieceLimits::None) {
  try {
    checkXmlLimits(xml, pieces);
    return "";
  } catch (const InvalidXMLDocument& fault) {
    return fault.rule();
  }
}

struct Reference {
  const char* text;
  std::size_t bytes;  // of what it stands for
};

void PrintTo(const Reference& reference, std::ostream* out) {
  *out << reference.text;
}

class ReferencesInAValue : public testing::TestWithParam<Reference> {};

TEST_P(ReferencesInAValue, CountAsWhatTheyStandFor) {
  const std::size_t most = XercesHelper::kMaxAttributeLength / GetParam().bytes;
  const std::string values = "<a b='" + repeat(GetParam().text, most);

  EXPECT_EQ(ruleOf(values + "'/>"), "");
  EXPECT_EQ(ruleOf(values + GetParam().text + "'/>"), "RB-10");
}

INSTANTIATE_TEST_SUITE_P(References, ReferencesInAValue,
                         testing::Values(Reference{"&lt;", 1}, Reference{"&#65;", 1},
                                         Reference{"&#x7F;", 1}, Reference{"&#128;", 2},
                                         Reference{"&#x7FF;", 2}, Reference{"&#x800;", 3},
                                         Reference{"&#65533;", 3}, Reference{"&#x10000;", 4},
                                         Reference{"&#x10FFFF;", 4}));

TEST(XmlLimits, APieceMayHaveFourMebibytes) {
  const std::string start = "<a>";
  const std::string end = "</a>";
  const std::string text(kMaxPieceSize - start.size() - end.size(), 'x');

  EXPECT_EQ(ruleOf("<r>" + start + text + end + "</r>", PieceLimits::Checked), "");
  EXPECT_EQ(ruleOf("<r>" + start + text + "x" + end + "</r>", PieceLimits::Checked), "RB-1");
}

TEST(XmlLimits, AllThatIsInAPieceCountsAsItsBytes) {
  const std::string child = "<b>" + std::string(1u << 20, 'x') + "</b>";

  EXPECT_EQ(ruleOf("<r>" + repeat(child, 5) + "</r>", PieceLimits::Checked), "");
  EXPECT_EQ(ruleOf("<r><a>" + repeat(child, 5) + "</a></r>", PieceLimits::Checked), "RB-1");
}

TEST(XmlLimits, ElementsAndAttributesOfAPieceAreItsNodes) {
  // The piece itself, with all but one of the nodes that it may have.
  const std::string content = "<a>" + repeat("<b c=''/>", kMaxPieceNodes / 2 - 1);
  static_assert(kMaxPieceNodes % 2 == 0);

  EXPECT_EQ(ruleOf("<r>" + content + "<b/></a><a/></r>", PieceLimits::Checked), "");
  EXPECT_EQ(ruleOf("<r>" + content + "<b/><b/></a></r>", PieceLimits::Checked), "RB-1");
  EXPECT_EQ(ruleOf("<r>" + content + "<b c=''/></a></r>", PieceLimits::Checked), "RB-1");
}

TEST(XmlLimits, ElementsAndAttributesAreTheNodesOfADocument) {
  // All but one of the nodes that it may have.
  const std::string content = "<r>" + repeat("<b c=''/>", XercesHelper::kMaxNodes / 2 - 1);
  static_assert(XercesHelper::kMaxNodes % 2 == 0);

  EXPECT_EQ(ruleOf(content + "<b/></r>"), "");
  EXPECT_EQ(ruleOf(content + "<b/><b/></r>"), "RB-1");
  EXPECT_EQ(ruleOf(content + "<b c=''/></r>"), "RB-1");
}

TEST(XmlLimits, EmptyMarkupHidesNothing) {
  const std::string tooDeep = repeat("<a>", 10'000);
  ASSERT_NE(ruleOf(tooDeep), "");

  for (const char* empty : {"<!---->", "<![CDATA[]]>", "<?p?>", "<b/>", "<b></b>"}) {
    EXPECT_EQ(ruleOf("<r>" + std::string(empty) + tooDeep), ruleOf(tooDeep)) << empty;
  }
}

TEST(XmlLimits, RepeatedNamesCountOnce) {
  EXPECT_EQ(ruleOf("<r>" + repeat("<a b='x'/>", 35'000) + "</r>"), "");
}

TEST(XmlLimits, ATruncatedDocumentPassesAndNothingBeyondItIsRead) {
  const std::string xml =
      "<?xml version='1.0'?><!-- c --><a xmlns='urn:a' b = \"&lt;\"><c d='1' >x</c><![CDATA[y]]>"
      "<e/></a>\n";

  for (std::size_t size = 0; size <= xml.size(); ++size) {
    const test::TextBeforeNothing cut(std::string_view(xml).substr(0, size));

    EXPECT_EQ(ruleOf(cut.view(), PieceLimits::Checked), "") << size;
  }
}

}  // namespace
}  // namespace opc::model::detail
