// SPDX-License-Identifier: MIT
#include "opc/model/ContentTypes.h"

#include <gtest/gtest.h>

#include <ostream>

#include "opc/model/InvalidXMLDocument.h"
#include "opc/model/XercesHelper.h"
#include "opc/model/detail/DocumentSize.h"
#include "tests/opc/model/PackageFixture.h"

using opc::model::ContentType;
using opc::model::ContentTypes;
using test::faultOf;

namespace {

ContentTypes parse(std::string_view xml) {
  opc::MemoryInputStream stream(reinterpret_cast<const unsigned char*>(xml.data()), xml.size());
  return ContentTypes::read(stream);
}

ContentType type(const char* text) {
  return ContentType::fromAscii(text);
}

std::string typeOf(const ContentTypes& types, std::string_view itemName) {
  const ContentType* found = types.find(itemName);
  return found == nullptr ? "none" : found->ascii();
}

// `@` stands for the namespace declaration, `^` for a good Default.
struct StreamCase {
  const char* xml;
  const char* rule;
};

void PrintTo(const StreamCase& c, std::ostream* out) {
  *out << c.xml;
}

std::string expand(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '@') {
      result += "xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\"";
    } else if (c == '^') {
      result += "<Default Extension=\"a\" ContentType=\"x/y\"/>";
    } else {
      result += c;
    }
  }
  return result;
}

class ContentTypesStream : public testing::TestWithParam<StreamCase> {};

const StreamCase kStreams[] = {
    // The root, and what lies directly in it.
    {"<Types @>^</Types>", ""},
    {"<Types @/>", ""},
    {"<t:Types xmlns:t='http://schemas.openxmlformats.org/package/2006/content-types'>"
     "<t:Default Extension='a' ContentType='x/y'/></t:Types>",
     ""},
    {"<Types @ xmlns:x='urn:x'> \n^<!-- c --><?p i?><![CDATA[ ]]>&#9;</Types>", ""},
    {"<Types>^</Types>", "CT-2"},
    {"<types @>^</types>", "CT-2"},
    {"<Types xmlns='http://schemas.openxmlformats.org/package/2005/06/content-types'/>", "CT-2"},
    {"<Types @ a='b'>^</Types>", "CT-2"},
    {"<Types @>x^</Types>", "CT-2"},
    {"<Types @>^<![CDATA[x]]></Types>", "CT-2"},
    {"<Types @><Other/></Types>", "CT-2"},
    {"<Types @><default Extension='a' ContentType='x/y'/></Types>", "CT-2"},
    // Entries.
    {"<Types @><Override PartName='/a' ContentType='x/y'></Override></Types>", ""},
    {"<Types @><Default Extension='a'/></Types>", "CT-3"},
    {"<Types @><Default ContentType='x/y'/></Types>", "CT-3"},
    {"<Types @><Default extension='a' ContentType='x/y'/></Types>", "CT-3"},
    {"<Types @><Default PartName='/a' ContentType='x/y'/></Types>", "CT-3"},
    {"<Types @><Default Extension='a' ContentType='x/y' More=''/></Types>", "CT-3"},
    {"<Types @><Override PartName='/a'/></Types>", "CT-3"},
    {"<Types @><Override Extension='a' ContentType='x/y'/></Types>", "CT-3"},
    {"<Types @><Default Extension='a' ContentType='x/y'>text</Default></Types>", "CT-3"},
    {"<Types @><Default Extension='a' ContentType='x/y'>^</Default></Types>", "CT-3"},
    {"<Types @><Override PartName='/a' ContentType='x/y'>text</Override></Types>", "CT-3"},
    {"<Types @><Override PartName='/a' ContentType='x/y'>^</Override></Types>", "CT-3"},
    {"<Types @><Override PartName='/a' ContentType='x/y'> </Override></Types>", "CT-3"},
    {"<Types @><Override PartName='/a' ContentType='x/y'><!-- c --></Override></Types>", ""},
    {"<Types @><Default Extension='a' ContentType='x/y'><!-- c --></Default></Types>", ""},
    {"<Types @><Default Extension='a' ContentType='x/y'><!-- c --><?p?></Default></Types>", ""},
    {"<Types @><Default Extension='a' ContentType='x/y'>\n</Default></Types>", "CT-3"},
    {"<Types @><Default Extension='a' ContentType='x/y'><![CDATA[ ]]></Default></Types>", "CT-3"},
    {"<Types @><Default Extension='a' ContentType='x/y'> <!-- c -->text</Default></Types>", "CT-3"},
    // Extensions.
    {"<Types @><Default Extension=\"!$&amp;'()*+,:=-_~09azAZ\" ContentType='x/y'/></Types>", ""},
    {"<Types @><Default Extension='&#64;' ContentType='x/y'/></Types>", ""},
    {"<Types @><Default Extension='%C3%a9' ContentType='x/y'/></Types>", ""},
    {"<Types @><Default Extension='' ContentType='x/y'/></Types>", "CT-4"},
    {"<Types @><Default Extension='.xml' ContentType='x/y'/></Types>", "CT-4"},
    {"<Types @><Default Extension='tar.gz' ContentType='x/y'/></Types>", "CT-4"},
    {"<Types @><Default Extension='a/b' ContentType='x/y'/></Types>", "CT-4"},
    {"<Types @><Default Extension='a b' ContentType='x/y'/></Types>", "CT-4"},
    {"<Types @><Default Extension='a;b' ContentType='x/y'/></Types>", "CT-4"},
    {"<Types @><Default Extension='%4' ContentType='x/y'/></Types>", "CT-4"},
    {"<Types @><Default Extension='%4G' ContentType='x/y'/></Types>", "CT-4"},
    {"<Types @><Default Extension='&#xE9;' ContentType='x/y'/></Types>", "CT-4"},
    // Part names.
    {"<Types @><Override PartName='/&#xE9;' ContentType='x/y'/></Types>", ""},
    {"<Types @><Override PartName='a' ContentType='x/y'/></Types>", "CT-5"},
    {"<Types @><Override PartName='' ContentType='x/y'/></Types>", "CT-5"},
    {"<Types @><Override PartName='/a/' ContentType='x/y'/></Types>", "CT-5"},
    {"<Types @><Override PartName='/a b' ContentType='x/y'/></Types>", "CT-5"},
    {"<Types @><Override PartName='/[Content_Types].xml' ContentType='x/y'/></Types>", "CT-5"},
    // Duplicates.
    {"<Types @>^<Default Extension='A' ContentType='x/y'/></Types>", "CT-6"},
    {"<Types @>^<Override PartName='/a' ContentType='x/y'/></Types>", ""},
    {"<Types @><Override PartName='/a' ContentType='x/y'/>"
     "<Override PartName='/A' ContentType='x/z'/></Types>",
     "CT-6"},
    {"<Types @><Override PartName='/&#xE9;' ContentType='x/y'/>"
     "<Override PartName='/%c3%A9' ContentType='x/y'/></Types>",
     "CT-6"},
    // Types.
    {"<Types @><Default Extension='a' ContentType=''/></Types>", "CT-7"},
    {"<Types @><Default Extension='a' ContentType=' x/y'/></Types>", "CT-7"},
    {"<Types @><Override PartName='/a' ContentType='x'/></Types>", "CT-7"},
    {"<Types @><Default Extension='rels' "
     "ContentType='application/vnd.openxmlformats-package.relationships+xml;a=b'/></Types>",
     "CT-8"},
    // Nothing foreign.
    {"<Types @><x:a xmlns:x='urn:x'/></Types>", "CT-13"},
    {"<Types @ xmlns:x='urn:x' x:a=''/>", "CT-13"},
    {"<Types @ xmlns:m='http://schemas.openxmlformats.org/markup-compatibility/2006' "
     "m:Ignorable=''/>",
     "CT-13"},
    {"<Types @><Default Extension='a' ContentType='x/y' xmlns:x='urn:x' x:b=''/></Types>", "CT-13"},
    {"<Types @ xml:lang='en'/>", "XM-4"},
    {"<Types @><Default Extension='a' ContentType='x/y' xml:space='default'/></Types>", "XM-4"},
    {"<Types @ xmlns:i='http://www.w3.org/2001/XMLSchema-instance' i:schemaLocation='a b'/>",
     "XM-4"},
};

TEST_P(ContentTypesStream, IsReadStrictly) {
  const StreamCase& c = GetParam();

  const test::Fault fault = faultOf([&] { parse(expand(c.xml)); });

  EXPECT_EQ(fault.rule, *c.rule == '\0' ? "none" : c.rule) << fault.text;
}

INSTANTIATE_TEST_SUITE_P(Streams, ContentTypesStream, testing::ValuesIn(kStreams));

}  // namespace

TEST(ContentTypes, WhatIsNotXmlIsRefused) {
  EXPECT_THROW(parse("<Types"), opc::model::InvalidXMLDocument);
  EXPECT_THROW(parse(expand("<!DOCTYPE Types><Types @/>")), opc::model::InvalidXMLDocument);
}

TEST(ContentTypes, TheErrorNamesTheEntry) {
  const test::Fault fault =
      faultOf([] { parse(expand("<Types @><Override PartName='/a' ContentType='x'/></Types>")); });

  EXPECT_EQ(fault.text,
            "type override for '/a': invalid content type 'x': it does not read 'type/subtype'");
  EXPECT_EQ(fault.code, opc::ErrorCode::InvalidPackage);
}

TEST(ContentTypes, AreUnchangedUntilAnEntryComesOrGoes) {
  ContentTypes types;
  EXPECT_FALSE(types.isChanged());

  types.addOverride("a", type("x/y"));
  EXPECT_TRUE(types.isChanged());
  types.setUnchanged();
  types.removeOverride("b");
  EXPECT_FALSE(types.isChanged());
  types.removeOverride("a");
  EXPECT_TRUE(types.isChanged());
}

TEST(ContentTypes, OverrideWinsOverTheDefaultOfTheExtension) {
  const ContentTypes types =
      parse(expand("<Types @>^<Override PartName='/x/b.A' ContentType='o/o'/>"
                   "<Default Extension='gitignore' ContentType='g/g'/></Types>"));

  EXPECT_EQ(typeOf(types, "x/B.a"), "o/o");
  EXPECT_EQ(typeOf(types, "x/c.A"), "x/y");
  EXPECT_EQ(typeOf(types, ".gitignore"), "g/g");
  EXPECT_EQ(typeOf(types, "x.a/c"), "none");
  EXPECT_EQ(typeOf(types, "a"), "none");
  EXPECT_EQ(typeOf(types, "x.a.b"), "none");
}

TEST(ContentTypes, ExtensionOutsideAsciiIsFoundInBothSpellings) {
  const ContentTypes types =
      parse(expand("<Types @><Default Extension='%c3%A9' ContentType='x/y'/></Types>"));

  EXPECT_EQ(typeOf(types, "a.\xC3\xA9"), "x/y");
  EXPECT_EQ(typeOf(types, "a.%C3%a9"), "x/y");
}

TEST(ContentTypes, AFittingDefaultNeedsNothingNew) {
  ContentTypes types = parse(expand("<Types @>^</Types>"));

  types.assign("b.A", type("X/Y"), true);

  EXPECT_FALSE(types.isChanged());
  EXPECT_EQ(typeOf(types, "b.A"), "x/y");
}

TEST(ContentTypes, AnotherTypeBecomesAnOverrideAndOthersKeepTheirs) {
  ContentTypes types = parse(expand("<Types @>^</Types>"));

  types.assign("b.a", type("o/o"), true);

  EXPECT_TRUE(types.isChanged());
  EXPECT_EQ(typeOf(types, "b.a"), "o/o");
  EXPECT_EQ(typeOf(types, "c.a"), "x/y");
}

TEST(ContentTypes, ANewExtensionBecomesADefaultInLowerCase) {
  ContentTypes types;

  types.assign("b.PNG", type("image/png"), true);

  ASSERT_EQ(types.defaults().size(), 1u);
  EXPECT_EQ(types.defaults()[0].extension, "png");
  EXPECT_EQ(typeOf(types, "other.png"), "image/png");
}

TEST(ContentTypes, OverrideWhereNoDefaultMayStand) {
  ContentTypes types;

  types.assign("readme", type("text/plain"), true);
  types.assign("a.b;c", type("text/plain"), true);
  types.assign("p.xml", type("application/vnd.acme.p+xml"), true);
  types.assign("q.xml", type("application/xml"), false);

  EXPECT_TRUE(types.defaults().empty());
  EXPECT_EQ(types.overrides().size(), 4u);
  EXPECT_EQ(typeOf(types, "a.b;c"), "text/plain");
}

TEST(ContentTypes, AnOverrideThatWasLeftBehindDoesNotWin) {
  ContentTypes types =
      parse(expand("<Types @>^<Override PartName='/old.a' ContentType='o/o'/></Types>"));

  types.assign("OLD.a", type("x/y"), true);

  EXPECT_EQ(typeOf(types, "old.a"), "x/y");
  EXPECT_TRUE(types.overrides().empty());
}

TEST(ContentTypes, RemovingOverridesLeavesTheOthers) {
  ContentTypes types;
  for (int i = 0; i < 100; ++i) types.addOverride("p" + std::to_string(i), type("o/o"));

  for (int i = 0; i < 100; i += 2) types.removeOverride("P" + std::to_string(i));

  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(typeOf(types, "p" + std::to_string(i)), i % 2 == 0 ? "none" : "o/o") << i;
  }
}

TEST(ContentTypes, TextIsTheSameInWhateverOrderEntriesCame) {
  const std::pair<const char*, const char*> kParts[] = {
      {"b.m", "text/plain"}, {"a.xml", "application/xml"}, {"Z", "z/z; p=\"<&>\""}, {"y", "y/y"}};
  ContentTypes forward;
  ContentTypes backward;
  for (const auto& [name, text] : kParts) forward.assign(name, type(text), true);
  for (auto part = std::rbegin(kParts); part != std::rend(kParts); ++part) {
    backward.assign(part->first, type(part->second), true);
  }

  const std::string xml = forward.toXml();

  EXPECT_EQ(xml, backward.toXml());
  EXPECT_EQ(xml,
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"
            "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
            "<Default Extension=\"m\" ContentType=\"text/plain\"/>"
            "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
            "<Override PartName=\"/y\" ContentType=\"y/y\"/>"
            "<Override PartName=\"/Z\" ContentType=\"z/z;p=&quot;&lt;&amp;&gt;&quot;\"/>"
            "</Types>");
  EXPECT_EQ(typeOf(parse(xml), "z"), "z/z;p=\"<&>\"");
}

TEST(ContentTypes, NameOutsideAsciiIsWrittenEncoded) {
  ContentTypes types;

  types.addOverride("\xC3\xA9", type("x/y"));

  EXPECT_NE(types.toXml().find("PartName=\"/%C3%A9\""), std::string::npos);
}

TEST(ContentTypes, AsManyEntriesAreTakenAsAreRead) {
  ContentTypes types;
  // The root takes two nodes, each of these three.
  const std::size_t room = (opc::model::XercesHelper::kMaxNodes - 2) / 3;
  for (std::size_t i = 2; i < room; ++i) types.addOverride("p" + std::to_string(i), type("o/o"));

  types.assign("a.m", type("x/y"), true);
  types.assign("b", type("x/y"), true);
  const test::Fault fault = faultOf([&] { types.assign("c", type("x/y"), true); });

  EXPECT_EQ(fault.code, opc::ErrorCode::TooLarge);
  EXPECT_EQ(types.defaults().size() + types.overrides().size(), room);
  EXPECT_NO_THROW(opc::model::detail::requireReadableDocument(types.toXml(), "content types"));
}
