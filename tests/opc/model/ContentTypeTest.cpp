// SPDX-License-Identifier: MIT
#include "opc/model/ContentType.h"

#include <gtest/gtest.h>

#include <ostream>

#include "opc/Text.h"
#include "tests/opc/model/PackageFixture.h"

using opc::model::ContentType;
using test::faultOf;

namespace {

struct TypeCase {
  const char16_t* type;
  const char* rule;
};

void PrintTo(const TypeCase& c, std::ostream* out) {
  *out << opc::toUtf8ForDisplay(c.type) << " " << c.rule;
}

class ContentTypeRules : public testing::TestWithParam<TypeCase> {};

const TypeCase kTypeCases[] = {
    {u"text/plain", ""},
    {u"application/vnd.a.b+xml", ""},
    {u"a/b", ""},
    {u"text/plain;charset=utf-8", ""},
    {u"text/plain; charset=utf-8", ""},
    {u"text/plain ; a=b\t;\tc=d", ""},
    {u"text/plain;a=\"x; y\\\" \t\"", ""},
    {u"text/plain;a=\"\"", ""},
    {u"", "CT-7"},
    {u"text", "CT-7"},
    {u"text/", "CT-7"},
    {u"/plain", "CT-7"},
    {u"text//plain", "CT-7"},
    {u"text/plain/x", "CT-7"},
    {u" text/plain", "CT-7"},
    {u"text/plain ", "CT-7"},
    {u"text /plain", "CT-7"},
    {u"text/ plain", "CT-7"},
    {u"te xt/plain", "CT-7"},
    {u"text/pla(in", "CT-7"},
    {u"text/pla)in", "CT-7"},
    {u"te<xt/plain", "CT-7"},
    {u"te>xt/plain", "CT-7"},
    {u"te@xt/plain", "CT-7"},
    {u"text/a,b", "CT-7"},
    {u"text/a:b", "CT-7"},
    {u"text/a\\b", "CT-7"},
    {u"text/a\"b", "CT-7"},
    {u"text/a[b]", "CT-7"},
    {u"text/a?b", "CT-7"},
    {u"text/a=b", "CT-7"},
    {u"text/a{b}", "CT-7"},
    {u"text/a\u0001b", "CT-7"},
    {u"text/a\u007Fb", "CT-7"},
    {u"text/pl\u00E4in", "CT-7"},
    {u"text/plain;", "CT-7"},
    {u"text/plain;a", "CT-7"},
    {u"text/plain;a=", "CT-7"},
    {u"text/plain;=b", "CT-7"},
    {u"text/plain;a =b", "CT-7"},
    {u"text/plain;a= b", "CT-7"},
    {u"text/plain;a=\"x", "CT-7"},
    {u"text/plain;a=\"x\\", "CT-7"},
    {u"text/plain;a=\"x\ny\"", "CT-7"},
    {u"text/plain;a=b;", "CT-7"},
    {u"text/plain;a=b ", "CT-7"},
    {u"text/plain;;a=b", "CT-7"},
    {u"text/plain (comment)", "CT-7"},
    {u"application/vnd.openxmlformats-package.relationships+xml", ""},
    {u"application/vnd.openxmlformats-package.relationships+xml;a=b", "CT-8"},
    {u"Application/VND.openxmlformats-package.core-properties+xml; a=b", "CT-8"},
    {u"application/vnd.openxmlformats-officedocument.x;a=b", ""},
};

TEST_P(ContentTypeRules, Hold) {
  const TypeCase& c = GetParam();

  const test::Fault fault = faultOf([&] { ContentType type{c.type}; });

  EXPECT_EQ(fault.rule, *c.rule == '\0' ? "none" : c.rule) << fault.text;
  if (*c.rule != '\0') {
    EXPECT_EQ(fault.code, opc::ErrorCode::InvalidArgument);
  }
}

INSTANTIATE_TEST_SUITE_P(Types, ContentTypeRules, testing::ValuesIn(kTypeCases));

ContentType type(const char* text) {
  return ContentType::fromAscii(text);
}

}  // namespace

TEST(ContentType, ComparesWithoutCaseAndWithParameters) {
  EXPECT_EQ(type("text/plain"), type("Text/PLAIN"));
  EXPECT_EQ(type("text/plain; charset=utf-8"), type("text/plain;charset=UTF-8"));
  EXPECT_FALSE(type("text/plain") == type("text/plain;charset=utf-8"));
  EXPECT_FALSE(type("text/plain") == type("text/html"));
  EXPECT_FALSE(type("a/b;c=\"x y\"") == type("a/b;c=\"xy\""));
}

TEST(ContentType, KeepsWhatWasGiven) {
  EXPECT_EQ(type("Text/Plain; a=B").ascii(), "Text/Plain; a=B");
  EXPECT_EQ(ContentType(u"Text/Plain").toString(), u"Text/Plain");
}

TEST(ContentType, WithoutBlanksKeepsThoseInQuotes) {
  EXPECT_EQ(type("a/b ; c=\"x ; \\\" y\" ;\td=e").withoutSpaces(), "a/b;c=\"x ; \\\" y\";d=e");
}

TEST(ContentType, OfOneProductIsParticular) {
  EXPECT_TRUE(type("application/vnd.acme.thing+xml").isParticular());
  EXPECT_TRUE(type("image/PRS.btif").isParticular());
  EXPECT_TRUE(type("application/x.own").isParticular());
  EXPECT_FALSE(type("application/xml").isParticular());
  EXPECT_FALSE(type("text/x-c").isParticular());
}

TEST(ContentType, TheErrorShowsTheType) {
  EXPECT_EQ(faultOf([] { type("text"); }).text,
            "invalid content type 'text': it does not read 'type/subtype'");
}
