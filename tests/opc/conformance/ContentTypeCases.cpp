// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/opc/conformance/support/Case.h"

namespace test::conformance {
namespace {

using enum Reading;
using enum Verified;

auto typeIs(std::string name, std::string type) {
  return [=](const ReadPackage& read) {
    ASSERT_TRUE(read.parts.contains(name)) << name;
    EXPECT_EQ(read.parts.at(name).type, type);
  };
}

auto untyped(std::string name) {
  return [=](const ReadPackage& read) {
    EXPECT_FALSE(read.parts.contains(name));
    EXPECT_EQ(read.untyped, std::vector{name});
  };
}

auto itemOfType(std::string name, std::string children) {
  return [=](PackageSpec& p) {
    p.types = children;
    p.add(name);
  };
}

// The whole stream with other attributes of the root.
auto rootAttributes(std::string attributes) {
  return wholeTypes(
      "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\" " +
      attributes + ">" + kUsualDefaults + "</Types>");
}

auto extension(std::string text) {
  return types(defaultXml(text, "text/x"));
}

auto type(std::string text) {
  return types(overrideXml("/a.xml", text));
}

constexpr const char* kForeignTypes =
    "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-type\"/>";

void loseTypes(PackageSpec& p) {
  p.typesItem.name = "types.m";
}

std::vector<Case> streamCases() {
  return {
      {"CT-1", "APackageWithoutTheStreamIsRefused", Refused, Error, loseTypes},
      {"CT-1", "ANameInAnotherCaseIsAccepted", Accepted, Warning,
       [](PackageSpec& p) { p.typesItem.name = "[content_types].XML"; }},
      {"CT-1", "TheStreamIsNoPart", Accepted, Silent, nothing(),
       [](const ReadPackage& read) { EXPECT_EQ(read.parts.size(), 2u); }},
      {"CT-1", "AStreamInAFolderIsNone", Refused, Error,
       [](PackageSpec& p) { p.typesItem.name = "c/[Content_Types].xml"; }},
      {"CT-1", "TwoStreamsAreRefused", Refused, Error,
       item("[CONTENT_TYPES].XML", typesDocument(""))},
      {"CT-2", "AnyPrefixIsAccepted", Accepted, Silent,
       wholeTypes("<c:Types xmlns:c=\"http://schemas.openxmlformats.org/package/2006/"
                  "content-types\"><c:Default Extension=\"xml\" ContentType=\"application/xml\"/>"
                  "<c:Default Extension=\"m\" ContentType=\"text/plain\"/><c:Default "
                  "Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package."
                  "relationships+xml\"/></c:Types>"),
       typeIs("b.m", "text/plain")},
      {"CT-2", "AnotherNamespaceIsRefused", Refused, Error, wholeTypes(kForeignTypes)},
      {"CT-2", "AnotherRootIsRefused", Refused, Error,
       wholeTypes("<Type xmlns=\"http://schemas.openxmlformats.org/package/2006/"
                  "content-types\"/>")},
      {"CT-2", "AnAttributeOfTheRootIsRefused", Refused, Error, rootAttributes("Version=\"1\"")},
      {"CT-2", "ANamespaceDeclarationIsNoAttribute", Accepted, Silent,
       rootAttributes("xmlns:q=\"urn:q\"")},
      {"CT-2", "TextIsRefused", Refused, Error, types("text")},
      {"CT-2", "WhiteSpaceIsAccepted", Accepted, Silent, types(" \n\t")},
      {"CT-2", "AnotherChildIsRefused", Refused, Error, types("<Other/>")},
      {"CT-2", "OverrideMayStandBeforeDefault", Accepted, Silent,
       wholeTypes(typesDocument(overrideXml("/a.xml", "text/x") + kUsualDefaults)),
       typeIs("a.xml", "text/x")},
      {"CT-3", "ADefaultWithoutTypeIsRefused", Refused, Error, types("<Default Extension=\"q\"/>")},
      {"CT-3", "AnOverrideWithoutTypeIsRefused", Refused, Error,
       types("<Override PartName=\"/a.xml\"/>")},
      {"CT-3", "AnAttributeNameInAnotherCaseIsRefused", Refused, Error,
       types("<Default extension=\"q\" ContentType=\"text/x\"/>")},
      {"CT-3", "AnotherAttributeIsRefused", Refused, Error,
       types("<Default Extension=\"q\" ContentType=\"text/x\" Other=\"\"/>")},
      {"CT-3", "AnAttributeOfTheOtherElementIsRefused", Refused, Error,
       types("<Default Extension=\"q\" PartName=\"/q\" ContentType=\"text/x\"/>")},
      {"CT-3", "ContentIsRefused", Refused, Error,
       types("<Default Extension=\"q\" ContentType=\"text/x\">text</Default>")},
      {"CT-3", "WhiteSpaceInsideIsRefused", Refused, Error,
       types("<Default Extension=\"q\" ContentType=\"text/x\"> </Default>")},
      {"CT-4", "AnEmptyExtensionIsRefused", Refused, Error, extension("")},
      {"CT-4", "AnExtensionWithADotIsRefused", Refused, Error, extension(".q")},
      {"CT-4", "AnExtensionOfTwoPartsIsRefused", Refused, Error, extension("tar.gz")},
      {"CT-4", "AnExtensionWithASlashIsRefused", Refused, Error, extension("q/q")},
      {"CT-4", "AnExtensionWithASpaceIsRefused", Refused, Error, extension("q q")},
      {"CT-4", "AnExtensionWithASemicolonIsRefused", Refused, Error, extension("q;")},
      {"CT-4", "AnExtensionWithHalfAnEscapeIsRefused", Refused, Error, extension("q%2")},
      {"CT-4", "TheOtherCharactersAreAccepted", Accepted, Silent,
       extension("az09!$&amp;'()*+,:=@-_~%20")},
      {"CT-5", "AnOverrideOfNoPartNameIsRefused", Refused, Error,
       types(overrideXml("/c d.m", "text/x"))},
      {"CT-5", "AnOverrideMatchesBothSpellings", Accepted, Silent,
       itemOfType("%C3%A9.m", overrideXml("/\xc3\xa9.m", "text/x")), typeIs("%C3%A9.m", "text/x")},
      {"CT-6", "TwoDefaultsOfAnExtensionAreRefused", Refused, Error,
       types(defaultXml("XML", "application/xml"))},
      {"CT-6", "TwoOverridesOfANameAreRefused", Refused, Error,
       types(overrideXml("/a.xml", "text/x") + overrideXml("/A.xml", "text/x"))},
      {"CT-6", "TwoSpellingsOfANameAreRefused", Refused, Error,
       types(overrideXml("/\xc3\xa9", "text/x") + overrideXml("/%c3%a9", "text/x"))},
  };
}

std::vector<Case> typeCases() {
  return {
      {"CT-7", "AnEmptyTypeIsRefused", Refused, Error, type("")},
      {"CT-7", "ATypeWithoutSubtypeIsRefused", Refused, Error, type("text")},
      {"CT-7", "ASeparatorInATokenIsRefused", Refused, Error, type("text/p@t")},
      {"CT-7", "ABlankInFrontIsRefused", Refused, Error, type(" text/plain")},
      {"CT-7", "ABlankAtTheEndIsRefused", Refused, Error, type("text/plain ")},
      {"CT-7", "ABlankAroundTheSlashIsRefused", Refused, Error, type("text / plain")},
      {"CT-7", "ABlankAroundTheEqualSignIsRefused", Refused, Error, type("text/plain;a= b")},
      {"CT-7", "ACommentIsRefused", Refused, Error, type("text/plain(comment)")},
      {"CT-7", "ASemicolonAloneIsRefused", Refused, Error, type("text/plain;")},
      {"CT-7", "BeyondAsciiIsRefused", Refused, Error, type("text/pl\xc3\xa9")},
      {"CT-7", "ParametersAreAccepted", Accepted, Silent,
       type("text/plain ; charset=utf-8;a=&quot;b \\&quot; c&quot;"),
       typeIs("a.xml", "text/plain ; charset=utf-8;a=\"b \\\" c\"")},
      {"CT-8", "AParameterOfAPackageTypeIsRefused", Refused, Error,
       type("application/vnd.openxmlformats-package.digital-signature-origin;a=b")},
      {"CT-8", "TheCaseOfAPackageTypeDoesNotMatter", Refused, Error,
       type("Application/VND.openxmlformats-package.x;a=b")},
      {"CT-9", "AnOverrideWins", Accepted, Silent, type("text/x"), typeIs("a.xml", "text/x")},
      {"CT-9", "AnOverrideIsFoundByTheKey", Accepted, Silent, types(overrideXml("/A.XML", "t/x")),
       typeIs("a.xml", "t/x")},
      {"CT-9", "AnExtensionIsFoundInAnyCase", Accepted, Silent, item("c.XmL"),
       typeIs("c.XmL", "application/xml")},
      {"CT-9", "ADotFileHasAnExtension", Accepted, Silent,
       itemOfType("c/.gitignore", defaultXml("gitignore", "text/x")),
       typeIs("c/.gitignore", "text/x")},
      {"CT-9", "TheDotOfAFolderMakesNoExtension", Accepted, Warning, item("c.xml/d"),
       untyped("c.xml/d"), "CT-10"},
      {"CT-9", "OnlyTheLastExtensionCounts", Accepted, Silent, item("c.xml.m"),
       typeIs("c.xml.m", "text/plain")},
      {"CT-10", "AnItemWithoutTypeIsNoPart", Ignored, Warning, item("c.q"), untyped("c.q")},
      {"CT-10", "ARelationshipToAnItemWithoutTypeIsRefused", Refused, Error,
       [](PackageSpec& p) {
         p.add("c.q");
         p.relationships = relationXml("rId2", "c.q");
       }},
      {"CT-10", "RelationshipsOfAnItemWithoutTypeAreRefused", Refused, Error,
       [](PackageSpec& p) {
         p.add("c.q");
         p.addRelations("_rels/c.q.rels", "");
       }},
      {"CT-10", "AnEmptyStreamHidesNoRelationship", Refused, Error, wholeTypes(typesDocument(""))},
      {"CT-12", "ARelationshipsPartWithoutTypeIsAccepted", Accepted, Warning,
       wholeTypes(typesDocument(defaultXml("xml", "text/xml") + defaultXml("m", "text/plain"))),
       [](const ReadPackage& read) { EXPECT_EQ(read.targets.size(), 1u); }},
      {"CT-12", "ARelationshipsPartOfAnotherTypeIsRefused", Refused, Error,
       types(overrideXml("/_rels/.rels", "application/xml"))},
      {"CT-12", "APartElsewhereWithTheRelationshipsTypeIsAnOrdinaryPart", Accepted, Warning,
       item("c.rels"), typeIs("c.rels", std::string(kRelationsType))},
      {"CT-13", "AForeignElementIsRefused", Refused, Error, types("<q xmlns=\"urn:q\"/>")},
      {"CT-13", "AForeignAttributeIsRefused", Refused, Error,
       types("<Default xmlns:q=\"urn:q\" q:q=\"\" Extension=\"q\" ContentType=\"text/x\"/>")},
      {"CT-13", "MarkupCompatibilityIsRefused", Refused, Error,
       rootAttributes("xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\" "
                      "mc:Ignorable=\"\"")},
      {"CT-14", "ADefaultThatNobodyUsesIsAccepted", Accepted, Silent, extension("q")},
      {"CT-14", "AnOverrideForAMissingPartIsAccepted", Accepted, Warning,
       types(overrideXml("/missing", "text/x"))},
      {"CT-15", "AnOverrideForTheStreamIsRefused", Refused, Error,
       types(overrideXml("/[Content_Types].xml", "text/xml")), nullptr, "CT-5"},
  };
}

}  // namespace

std::vector<Case> contentTypeCases() {
  std::vector<Case> all = streamCases();
  const std::vector<Case> more = typeCases();
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

}  // namespace test::conformance
