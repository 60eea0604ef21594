// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "opc/model/ContentType.h"
#include "tests/opc/conformance/support/PackageSpec.h"
#include "tests/opc/conformance/support/ReadPackage.h"
#include "tests/opc/conformance/support/WrittenZip.h"

namespace test::conformance {
namespace {

using opc::model::Package;
using opc::model::PartName;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kStream = "[Content_Types].xml";

std::string streamOf(const std::string& bytes) {
  return WrittenZip(bytes).content(kStream);
}

std::string writtenStream(const std::function<void(Package&)>& fill) {
  return streamOf(writtenPackage(fill));
}

std::size_t countOf(const std::string& text, const std::string& wanted) {
  std::size_t count = 0;
  for (auto at = text.find(wanted); at != std::string::npos; at = text.find(wanted, at + 1)) {
    ++count;
  }
  return count;
}

}  // namespace

TEST(RuleCT1, TheStreamIsTheFirstItem) {
  const WrittenZip zip(writtenPackage([](Package& package) { addPart(package, u"/a.m"); }));

  EXPECT_EQ(zip.names().front(), kStream);
}

TEST(RuleCT1, ChangingAStreamInAnotherCaseLeavesOne) {
  PackageSpec spec;
  spec.typesItem.name = "[content_types].XML";

  const WrittenZip zip(
      changedPackage(spec.bytes(), [](Package& package) { addPart(package, u"/new.q"); }));

  EXPECT_THAT(zip.names(), testing::Contains(kStream));
  EXPECT_THAT(zip.names(), Not(testing::Contains("[content_types].XML")));
}

TEST(RuleCT2, AFreshStreamIsPlain) {
  const std::string stream = writtenStream([](Package& package) { addPart(package, u"/a.m"); });

  EXPECT_THAT(stream, HasSubstr("<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/"
                                "content-types\"><Default "));
}

TEST(RuleCT4, AnExtensionThatDoesNotFitGetsAnOverride) {
  const std::string stream = writtenStream([](Package& package) { addPart(package, u"/a.x;y"); });

  EXPECT_THAT(stream, HasSubstr(overrideXml("/a.x;y", "text/plain")));
  EXPECT_THAT(stream, Not(HasSubstr("Extension=\"x;y\"")));
}

TEST(RuleCT7, AMalformedTypeIsNeverMade) {
  for (const auto* type :
       {u"", u"text", u"text/", u"/x", u"text/plain ", u"a b/c", u"text/pl\u00e9", u"text/plain;",
        u"text/plain;a", u"text/plain;a=\"", u"text//x"}) {
    EXPECT_EQ(refusalOf([&] { const opc::model::ContentType made(type); }), "CT-7");
  }
}

TEST(RuleCT7, ParametersAreWrittenWithoutBlanks) {
  const std::string stream = writtenStream(
      [](Package& package) { addPart(package, u"/a.txt", u"text/plain ; charset=utf-8"); });

  EXPECT_THAT(stream, HasSubstr("\"text/plain;charset=utf-8\""));
}

TEST(RuleCT8, AParameterOfAPackageTypeIsNeverMade) {
  const auto make = [] {
    const opc::model::ContentType made(
        u"application/vnd.openxmlformats-package.relationships+xml;a=b");
  };

  EXPECT_EQ(refusalOf(make), "CT-8");
}

TEST(RuleCT11, AFittingDefaultIsEnough) {
  const std::string stream = writtenStream([](Package& package) {
    addPart(package, u"/a.m");
    addPart(package, u"/b.M", u"TEXT/Plain");
  });

  EXPECT_EQ(countOf(stream, "text/plain"), 1u);
  EXPECT_EQ(countOf(stream, "<Override"), 0u);
}

TEST(RuleCT11, AnotherTypeGetsAnOverrideAndBothKeepTheirs) {
  const std::string bytes = writtenPackage([](Package& package) {
    addPart(package, u"/a.m");
    addPart(package, u"/b.m", u"text/other");
    addPart(package, u"/noextension", u"text/third");
  });

  const ReadPackage read = readPackage(bytes);

  EXPECT_EQ(read.parts.at("a.m").type, "text/plain");
  EXPECT_EQ(read.parts.at("b.m").type, "text/other");
  EXPECT_EQ(read.parts.at("noextension").type, "text/third");
  EXPECT_EQ(countOf(streamOf(bytes), "<Override"), 2u);
}

TEST(RuleCT11, ATypeOfOnePartOnlyMakesNoDefault) {
  const std::string stream = writtenStream(
      [](Package& package) { addPart(package, u"/a.xml", u"application/vnd.example.own+xml"); });

  EXPECT_THAT(stream, HasSubstr(overrideXml("/a.xml", "application/vnd.example.own+xml")));
  EXPECT_THAT(stream, Not(HasSubstr("Extension=\"xml\"")));
}

TEST(RuleCT11, RemovingAPartRemovesItsOverride) {
  PackageSpec spec;
  spec.types = overrideXml("/A.XML", "text/own");

  const std::string stream = streamOf(changedPackage(
      spec.bytes(), [](Package& package) { package.deletePart(PartName(u"/a.xml")); }));

  EXPECT_THAT(stream, Not(HasSubstr("<Override")));
}

TEST(RuleCT11, TheOrderOfAddingDoesNotShow) {
  const std::vector<std::u16string> names{u"/b.x", u"/a.y", u"/c.z", u"/B1", u"/d.rels", u"/a1"};
  const auto streamOfOrder = [&](bool reversed) {
    return writtenStream([&](Package& package) {
      for (std::size_t i = 0; i < names.size(); ++i) {
        addPart(package, names[reversed ? names.size() - 1 - i : i]);
      }
    });
  };

  const std::string stream = streamOfOrder(false);

  EXPECT_EQ(stream, streamOfOrder(true));
  EXPECT_LT(stream.find("Extension=\"x\""), stream.find("Extension=\"y\""));
  EXPECT_LT(stream.rfind("<Default"), stream.find("<Override"));
  EXPECT_LT(stream.find("/a1"), stream.find("/B1"));
}

TEST(RuleCT12, TheTypeOfRelationshipsIsAlwaysSaid) {
  const std::string relations = defaultXml("rels", kRelationsType);

  for (const auto* name : {u"/a.m", u"/a.rels", u"/b/.RELS"}) {
    EXPECT_THAT(writtenStream([&](Package& package) { addPart(package, name); }),
                HasSubstr(relations));
  }
}

}  // namespace test::conformance
