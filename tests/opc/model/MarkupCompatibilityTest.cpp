// SPDX-License-Identifier: MIT
#include "opc/model/detail/MarkupCompatibility.h"

#include <gtest/gtest.h>

#include <ostream>

#include "opc/Text.h"
#include "opc/model/RelationshipSet.h"
#include "opc/model/XercesHelper.h"
#include "tests/opc/model/PackageFixture.h"

using test::faultOf;

namespace {

// The ids that are left of relationships below a root with the prefixes mc, r (relationships), x
// and y, and `attributes`.
std::string idsOf(std::string_view attributes, std::string_view content) {
  const std::string xml =
      "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\""
      " xmlns:r=\"http://schemas.openxmlformats.org/package/2006/relationships\""
      " xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\""
      " xmlns:x=\"urn:x\" xmlns:y=\"urn:y\" " +
      std::string(attributes) + ">" + std::string(content) + "</Relationships>";
  opc::MemoryInputStream stream(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
  std::string ids;
  const auto set = opc::model::RelationshipSet::read({}, stream);
  for (const auto& entry : set.entries()) ids += opc::toUtf8(entry.relationship.getId());
  return ids;
}

struct MarkupCase {
  const char* attributes;
  const char* content;  // "{a}" stands for a relationship with the id a
  const char* ids;      // what is left, or a rule
};

void PrintTo(const MarkupCase& c, std::ostream* out) {
  *out << c.attributes << " " << c.content;
}

std::string expand(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '{') {
      result += "<Relationship Type=\"t\" Target=\"/a\" Id=\"";
    } else if (c == '}') {
      result += "\"/>";
    } else {
      result += c;
    }
  }
  return result;
}

class Markup : public testing::TestWithParam<MarkupCase> {};

const MarkupCase kCases[] = {
    // Ignorable.
    {"", "{a}", "a"},
    {"", "<x:e/>", "RL-13"},
    {"x:a=''", "{a}", "RL-13"},
    {"mc:Ignorable='x'", "{a}<x:e>{b}text<y:z/></x:e>{c}", "ac"},
    {"mc:Ignorable='x' x:a=''", "<Relationship x:b='' Id='a' Type='t' Target='/a'/>", "a"},
    {"mc:Ignorable=' x\ty '", "<x:e/><y:e/>{a}", "a"},
    {"mc:Ignorable='x'", "<y:e/>", "RL-13"},
    {"mc:Ignorable='z'", "{a}", "RL-13"},
    {"mc:Ignorable='r'", "{a}", "a"},
    {"", "<x:e mc:Ignorable='x'/>{a}", "a"},
    {"", "<Relationship mc:Ignorable='x' x:b='' Id='a' Type='t' Target='/a'/>", "a"},
    {"", "<Relationship mc:Ignorable='x' Id='a' Type='t' Target='/a'/><x:e/>", "RL-13"},
    {"", "<z:e xmlns:z='urn:z' mc:Ignorable='z'/>{a}", "a"},
    {"mc:Ignorable='x'", "<z:e xmlns:z='urn:x'/>{a}", "a"},
    {"mc:Ignorable='x'", "<x:e xmlns:x='urn:y'/>", "RL-13"},
    // ProcessContent.
    {"mc:Ignorable='x' mc:ProcessContent='x:e'", "<x:e>{a}<x:f>{b}</x:f></x:e>{c}", "ac"},
    {"mc:Ignorable='x' mc:ProcessContent='x:*'", "<x:e>{a}<x:f>{b}</x:f></x:e>", "ab"},
    {"mc:Ignorable='x' mc:ProcessContent='x:e'", "<x:e>text</x:e>", "RL-3"},
    {"mc:Ignorable='x' mc:ProcessContent='e'", "{a}", "RL-13"},
    {"mc:Ignorable='x' mc:ProcessContent='x'", "{a}", "RL-13"},
    {"mc:Ignorable='x' mc:ProcessContent='x:'", "{a}", "RL-13"},
    {"mc:Ignorable='x' mc:ProcessContent=':e'", "{a}", "RL-13"},
    {"mc:Ignorable='x' mc:ProcessContent='z:e'", "{a}", "RL-13"},
    {"mc:ProcessContent='x:e'", "<x:e>{a}</x:e>", "RL-13"},
    // MustUnderstand.
    {"mc:MustUnderstand='r'", "{a}", "a"},
    {"mc:MustUnderstand='x'", "{a}", "RL-13"},
    {"mc:MustUnderstand='z'", "{a}", "RL-13"},
    {"mc:Ignorable='x'", "<x:e mc:MustUnderstand='y'/>{a}", "a"},
    {"mc:Ignorable='x' mc:ProcessContent='x:e'", "<x:e mc:MustUnderstand='y'>{a}</x:e>", "RL-13"},
    // AlternateContent.
    {"", "<mc:AlternateContent><mc:Choice Requires='x'>{a}</mc:Choice></mc:AlternateContent>{b}",
     "b"},
    {"",
     "<mc:AlternateContent><mc:Choice Requires='x'>{a}</mc:Choice>"
     "<mc:Choice Requires='r'>{b}</mc:Choice><mc:Choice Requires='r'>{c}</mc:Choice>"
     "<mc:Fallback>{d}</mc:Fallback></mc:AlternateContent>",
     "b"},
    {"",
     "<mc:AlternateContent><mc:Choice Requires='r x'>{a}</mc:Choice>"
     "<mc:Fallback>{d}</mc:Fallback></mc:AlternateContent>",
     "d"},
    {"",
     "{a}<mc:AlternateContent> <!-- c --> <mc:Choice Requires='r'>"
     "<mc:AlternateContent><mc:Choice Requires='x'/><mc:Fallback>{b}</mc:Fallback>"
     "</mc:AlternateContent>{c}</mc:Choice></mc:AlternateContent>{d}",
     "abcd"},
    {"",
     "<mc:AlternateContent><mc:Choice Requires='z' "
     "xmlns:z='http://schemas.openxmlformats.org/package/2006/relationships'>{a}</mc:Choice>"
     "</mc:AlternateContent>",
     "a"},
    {"mc:Ignorable='x'",
     "<mc:AlternateContent><x:e/><mc:Choice Requires='r'>{a}</mc:Choice></mc:AlternateContent>",
     "a"},
    {"", "<mc:AlternateContent/>", "RL-13"},
    {"", "<mc:AlternateContent><mc:Fallback/></mc:AlternateContent>", "RL-13"},
    {"", "<mc:AlternateContent><mc:Choice/></mc:AlternateContent>", "RL-13"},
    {"", "<mc:AlternateContent><mc:Choice Requires=''/></mc:AlternateContent>", "RL-13"},
    {"", "<mc:AlternateContent><mc:Choice Requires='z'/></mc:AlternateContent>", "RL-13"},
    {"", "<mc:AlternateContent><mc:Choice Requires='r' a=''/></mc:AlternateContent>", "RL-13"},
    {"", "<mc:AlternateContent a=''><mc:Choice Requires='r'/></mc:AlternateContent>", "RL-13"},
    {"", "<mc:AlternateContent>x<mc:Choice Requires='r'/></mc:AlternateContent>", "RL-13"},
    {"", "<mc:AlternateContent>{a}<mc:Choice Requires='r'/></mc:AlternateContent>", "RL-13"},
    {"",
     "<mc:AlternateContent><mc:Choice Requires='r'/><mc:Fallback/><mc:Fallback/>"
     "</mc:AlternateContent>",
     "RL-13"},
    {"",
     "<mc:AlternateContent><mc:Choice Requires='r'/><mc:Fallback/><mc:Choice Requires='r'/>"
     "</mc:AlternateContent>",
     "RL-13"},
    {"", "<mc:Choice Requires='r'>{a}</mc:Choice>", "RL-13"},
    // Nothing else of that namespace.
    {"", "<mc:Other/>", "RL-13"},
    {"mc:Other=''", "{a}", "RL-13"},
    // What is left is looked at like anything else, what is dropped is not.
    {"", "<mc:AlternateContent><mc:Choice Requires='x'><Bad/></mc:Choice></mc:AlternateContent>",
     ""},
    {"", "<mc:AlternateContent><mc:Choice Requires='r'><Bad/></mc:Choice></mc:AlternateContent>",
     "RL-3"},
    {"mc:Ignorable='x'", "<x:e xml:base='/z'/>{a}", "a"},
};

TEST_P(Markup, IsProcessed) {
  const MarkupCase& c = GetParam();
  std::string ids;

  const test::Fault fault = faultOf([&] { ids = idsOf(c.attributes, expand(c.content)); });

  EXPECT_EQ(fault.rule == "none" ? ids : fault.rule, c.ids) << fault.text;
}

INSTANTIATE_TEST_SUITE_P(Cases, Markup, testing::ValuesIn(kCases));

}  // namespace

TEST(MarkupCompatibility, DeepNestingIsWalkedWithoutRecursion) {
  std::string content = expand("{a}");
  for (int i = 0; i < 120; ++i) {
    content = "<mc:AlternateContent><mc:Choice Requires='r'>" + content +
              "</mc:Choice></mc:AlternateContent>";
  }

  EXPECT_EQ(idsOf("", content), "a");
}
