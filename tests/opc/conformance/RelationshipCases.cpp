// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/opc/conformance/support/Case.h"

namespace test::conformance {
namespace {

using enum Reading;
using enum Verified;

constexpr const char* kMarkup =
    "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\" "
    "xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\" xmlns:q=\"urn:q\" ";

auto target(std::string text) {
  return relations(relationXml("rId2", text));
}

// A relationship of "b.m" in its own part.
auto ofPart(std::string text) {
  return [text](PackageSpec& p) { p.addRelations("_rels/b.m.rels", relationXml("rId2", text)); };
}

auto targetIs(std::string text) {
  return [text](const ReadPackage& read) { EXPECT_EQ(read.targets.at("rId2"), text); };
}

auto ofPartIs(std::string text) {
  return [text](const ReadPackage& read) { EXPECT_EQ(read.targetsOfPart.at("rId2"), text); };
}

// A relationship with these attributes besides the namespace's.
auto attributes(std::string text) {
  return relations("<Relationship " + text + "/>");
}

auto external(std::string text) {
  return relations(relationXml("rId2", text, "TargetMode=\"External\""));
}

// The package's relationships with markup compatibility: attributes of the root, and content.
auto markup(std::string rootAttributes, std::string children) {
  return wholeRelations(kMarkup + rootAttributes + ">" + relationXml("rId1", "a.xml") + children +
                        "</Relationships>");
}

auto relationCount(std::size_t count) {
  return [count](const ReadPackage& read) { EXPECT_EQ(read.targets.size(), count); };
}

// A part in a folder, with a relationship to the part beside it.
void addDeepSource(PackageSpec& p) {
  p.add("c/d.m");
  p.add("c/e.m");
  p.addRelations("c/_rels/d.m.rels", relationXml("rId2", "e.m"));
}

std::vector<Case> structureCases() {
  return {
      {"RL-1", "ThePackagesAreInRels", Accepted, Silent, target("b.m"), targetIs("/b.m")},
      {"RL-1", "APartsAreBesideIt", Accepted, Silent, ofPart("a.xml"), ofPartIs("/a.xml")},
      {"RL-1", "APackageWithoutAnyIsSound", Accepted, Silent,
       [](PackageSpec& p) { p.relationsItem.name = "c.m"; }, relationCount(0)},
      {"RL-1", "TheCorePropertiesPartMayHaveSome", Accepted, Silent,
       [](PackageSpec& p) {
         p.core = "";
         p.addRelations("_rels/core.xml.rels", relationXml("rId1", "a.xml"));
       }},
      {"RL-2", "APartsMustHaveTheRightTypeToo", Refused, Error,
       [](PackageSpec& p) {
         p.types = overrideXml("/_rels/b.m.rels", "application/xml");
         p.addRelations("_rels/b.m.rels", "");
       },
       nullptr, "CT-12"},
      {"RL-2", "AnotherEncodingIsRefused", Refused, Error,
       wholeRelations("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><Relationships "
                      "xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\"/>"),
       nullptr, "XM-1"},
      {"RL-3", "ZeroAreFine", Accepted, Silent, wholeRelations(relationsDocument("")),
       relationCount(0)},
      {"RL-3", "AnotherRootIsRefused", Refused, Error,
       wholeRelations("<Relations xmlns=\"http://schemas.openxmlformats.org/package/2006/"
                      "relationships\"/>")},
      {"RL-3", "AnotherNamespaceIsRefused", Refused, Error,
       wholeRelations("<Relationships xmlns=\"urn:q\"/>")},
      {"RL-3", "AnAttributeOfTheRootIsRefused", Refused, Error,
       wholeRelations("<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/"
                      "relationships\" a=\"\"/>")},
      {"RL-3", "AnotherElementIsRefused", Refused, Error, relations("<Relation/>")},
      {"RL-3", "TextBetweenRelationshipsIsRefused", Refused, Error, relations("text")},
      {"RL-3", "TextInsideOfARelationshipIsIgnored", Accepted, Silent,
       relations("<Relationship Id=\"rId2\" Type=\"urn:t\" Target=\"b.m\">text</Relationship>"),
       targetIs("/b.m")},
      {"RL-3", "AnElementInsideOfARelationshipIsRefused", Refused, Error,
       relations("<Relationship Id=\"rId2\" Type=\"urn:t\" Target=\"b.m\"><Relationship "
                 "Id=\"rId3\" Type=\"urn:t\" Target=\"b.m\"/></Relationship>")},
      {"RL-3", "AnUnknownAttributeIsRefused", Refused, Error,
       relations(relationXml("rId2", "b.m", "Other=\"\""))},
      {"RL-4", "ARelationshipWithoutIdIsRefused", Refused, Error,
       attributes("Type=\"urn:t\" Target=\"b.m\"")},
      {"RL-4", "AnIdThatBeginsWithADigitIsRefused", Refused, Error,
       relations(relationXml("2", "b.m"))},
      {"RL-4", "AnIdWithAColonIsRefused", Refused, Error, relations(relationXml("r:2", "b.m"))},
      {"RL-4", "AnEmptyIdIsRefused", Refused, Error, relations(relationXml("", "b.m"))},
      {"RL-4", "ASecondIdIsRefused", Refused, Error, relations(relationXml("rId1", "b.m"))},
      {"RL-4", "WhiteSpaceAroundAnIdIsDropped", Accepted, Silent,
       relations(relationXml(" rId2&#9;", "b.m")), targetIs("/b.m")},
      {"RL-4", "WhiteSpaceHidesNoSecondId", Refused, Error, relations(relationXml(" rId1", "b.m"))},
      {"RL-4", "IdsAreCaseSensitive", Accepted, Silent, relations(relationXml("RID1", "b.m")),
       relationCount(2)},
      {"RL-4", "TheSameIdInAnotherPartIsFine", Accepted, Silent,
       [](PackageSpec& p) { p.addRelations("_rels/b.m.rels", relationXml("rId1", "a.xml")); }},
      {"RL-4", "AnIdMayBeginWithAnUnderscoreOrBeyondAscii", Accepted, Silent,
       relations(relationXml("_", "b.m") + relationXml("\xc3\xa9", "b.m")), relationCount(3)},
      {"RL-5", "ARelationshipWithoutTypeIsRefused", Refused, Error,
       attributes("Id=\"rId2\" Target=\"b.m\"")},
      {"RL-5", "AnEmptyTypeIsRefused", Refused, Error,
       attributes("Id=\"rId2\" Type=\"\" Target=\"b.m\"")},
      {"RL-5", "AnyUriIsAType", Accepted, Silent,
       attributes("Id=\"rId2\" Type=\"mailto:a@b.example?x#y\" Target=\"b.m\"")},
      {"RL-6", "InternalMayBeSaid", Accepted, Silent,
       relations(relationXml("rId2", "b.m", "TargetMode=\"Internal\"")), targetIs("/b.m")},
      {"RL-6", "AModeInAnotherCaseIsRefused", Refused, Error,
       relations(relationXml("rId2", "b.m", "TargetMode=\"external\""))},
      {"RL-6", "AnEmptyModeIsRefused", Refused, Error,
       relations(relationXml("rId2", "b.m", "TargetMode=\"\""))},
  };
}

std::vector<Case> targetCases() {
  return {
      {"RL-7", "ARelationshipWithoutTargetIsRefused", Refused, Error,
       attributes("Id=\"rId2\" Type=\"urn:t\"")},
      {"RL-7", "AnEmptyTargetOfThePackageIsRefused", Refused, Error, target("")},
      {"RL-7", "AnEmptyTargetOfAPartIsThePart", Accepted, Silent, ofPart(""), ofPartIs("/b.m")},
      {"RL-7", "ASchemeIsRefused", Refused, Error, target("http://host.example/b.m")},
      {"RL-7", "ADriveIsRefused", Refused, Error, target("c:/b.m")},
      {"RL-7", "AHostIsRefused", Refused, Error, target("//host.example/b.m")},
      {"RL-7", "AColonInALaterSegmentIsNoScheme", Accepted, Silent,
       [](PackageSpec& p) {
         p.add("cc:d.m");
         p.relationships = relationXml("rId2", "./cc:d.m");
       },
       targetIs("/cc:d.m")},
      {"RL-8", "ATargetIsResolvedAgainstTheSource", Accepted, Silent, addDeepSource},
      {"RL-8", "DotsAreResolved", Accepted, Silent,
       [](PackageSpec& p) {
         p.add("c/d.m");
         p.relationships = relationXml("rId2", "c/./x/../d.m");
       },
       targetIs("/c/d.m")},
      {"RL-8", "DotsAboveTheRootStayAtTheRoot", Accepted, Silent, target("../../b.m"),
       targetIs("/b.m")},
      {"RL-8", "AnAbsoluteTargetIsTakenAsItIs", Accepted, Silent, ofPart("/a.xml"),
       ofPartIs("/a.xml")},
      {"RL-8", "WhiteSpaceAroundIsDropped", Accepted, Silent, target(" b.m&#10;"),
       targetIs("/b.m")},
      {"RL-8", "TheCaseOfATargetDoesNotMatter", Accepted, Silent, target("B.M")},
      {"RL-8", "ATargetBeyondAsciiFindsItsEncodedSpelling", Accepted, Silent,
       [](PackageSpec& p) {
         p.add("%C3%A9.m");
         p.relationships = relationXml("rId2", "\xc3\xa9.m");
       },
       targetIs("/%C3%A9.m")},
      {"RL-8", "ABackslashIsReadAsASlash", Accepted, Warning,
       [](PackageSpec& p) {
         p.add("c/d.m");
         p.relationships = relationXml("rId2", "c\\d.m");
       },
       targetIs("/c/d.m")},
      {"RL-8", "ASpaceIsReadEncoded", Accepted, Warning,
       [](PackageSpec& p) {
         p.add("c%20d.m");
         p.relationships = relationXml("rId2", "c d.m");
       },
       targetIs("/c%20d.m")},
      {"RL-8", "ANeedlessEscapeIsDecoded", Accepted, Warning, target("%62.m"), targetIs("/b.m")},
      {"RL-8", "AQueryIsCutOff", Accepted, Warning, target("b.m?q=1"), targetIs("/b.m")},
      {"RL-8", "ATargetThatIsNoPartNameIsRefused", Refused, Error, target("c[1].m")},
      {"RL-9", "ARelationshipsPartIsNoTarget", Refused, Error, target("_rels/b.m.rels")},
      {"RL-9", "InAnyCase", Refused, Error, target("/_RELS/.Rels")},
      {"RL-9", "ARelationshipsPartIsNoSource", Refused, Error,
       [](PackageSpec& p) { p.addRelations("_rels/_rels/.rels.rels", ""); }},
      {"RL-10", "AnExternalTargetIsKeptAsText", Accepted, Silent, external("../x/./%41.m?q#f"),
       targetIs("../x/./%41.m?q#f")},
      {"RL-10", "AMailAddressIsFine", Accepted, Silent, external("mailto:a@b.example"),
       targetIs("mailto:a@b.example")},
      {"RL-10", "AnEmptyOneDrawsAWarning", Accepted, Warning, external(""), targetIs("")},
      {"RL-10", "OneThatIsNoIriDrawsAWarning", Accepted, Warning, external("file:///c:\\x y"),
       targetIs("file:///c:\\x y")},
      {"RL-10", "APortIsANumber", Accepted, Warning, external("http://host:x/")},
      {"RL-10", "PrivateUseDrawsAWarning", Accepted, Warning, external("http://host/&#xE000;")},
      {"RL-10", "PrivateUseIsFineInAQuery", Accepted, Silent,
       external("http://host:80/&#x10000;?&#xE000;&#x10FFFD;")},
      {"RL-10", "ANoncharacterDrawsAWarning", Accepted, Warning, external("http://host/&#x1FFFE;")},
      {"RL-10", "OneThatLooksLikeRelationshipsIsFine", Accepted, Silent, external("/_rels/.rels"),
       targetIs("/_rels/.rels")},
      {"RL-11", "AMissingTargetDrawsAWarning", Accepted, Warning, target("missing.m"),
       targetIs("/missing.m")},
      {"RL-12", "RelationshipsOfAMissingPartAreIgnored", Ignored, Warning,
       [](PackageSpec& p) { p.addRelations("_rels/c.m.rels", relationXml("rId1", "a.xml")); },
       [](const ReadPackage& read) {
         EXPECT_EQ(read.stray, std::vector<std::string>{"_rels/c.m.rels"});
       }},
      {"RL-15", "AFragmentTakesNoPartInFindingThePart", Accepted, Silent, target("b.m#f/.."),
       targetIs("/b.m")},
      {"RL-15", "AFragmentAloneIsTheSource", Accepted, Silent, ofPart("#f"), ofPartIs("/b.m")},
      {"RL-15", "AFragmentAloneOfThePackageIsRefused", Refused, Error, target("#f"), nullptr,
       "RL-7"},
      {"RL-16", "ATypeThatDiffersInOneLetterIsAnother", Accepted, Silent,
       attributes("Id=\"rId2\" Target=\"b.m\" Type=\"http://schemas.openxmlformats.org/package/"
                  "2006/relationships/metadata/Core-properties\""),
       [](const ReadPackage& read) { EXPECT_FALSE(read.core); }},
  };
}

std::vector<Case> markupCases() {
  const std::string choice =
      "<mc:Choice Requires=\"q\">" + relationXml("rId2", "b.m") + "</mc:Choice>";
  const std::string fallback = "<mc:Fallback>" + relationXml("rId3", "b.m") + "</mc:Fallback>";
  return {
      {"RL-13", "IgnorableElementsAreDroppedWithTheirContent", Accepted, Silent,
       markup("mc:Ignorable=\"q\"", "<q:x>" + relationXml("rId2", "b.m") + "</q:x>"),
       relationCount(1)},
      {"RL-13", "IgnorableAttributesAreDropped", Accepted, Silent,
       markup("mc:Ignorable=\"q\"", relationXml("rId2", "b.m", "q:x=\"\"")), targetIs("/b.m")},
      {"RL-13", "ProcessContentKeepsTheContent", Accepted, Silent,
       markup("mc:Ignorable=\"q\" mc:ProcessContent=\"q:x\"",
              "<q:x>" + relationXml("rId2", "b.m") + "</q:x>"),
       targetIs("/b.m")},
      {"RL-13", "AnUnknownNamespaceThatMustBeUnderstoodIsRefused", Refused, Error,
       markup("mc:MustUnderstand=\"q\"", "")},
      {"RL-13", "TheFirstChoiceThatIsUnderstoodIsTaken", Accepted, Silent,
       markup("xmlns:r=\"http://schemas.openxmlformats.org/package/2006/relationships\"",
              "<mc:AlternateContent>" + choice + "<mc:Choice Requires=\"r\">" +
                  relationXml("rId4", "b.m") + "</mc:Choice>" + fallback +
                  "</mc:AlternateContent>"),
       [](const ReadPackage& read) {
         EXPECT_EQ(read.targets.size(), 2u);
         EXPECT_TRUE(read.targets.contains("rId4"));
       }},
      {"RL-13", "TheFallbackIsTakenWithoutChoice", Accepted, Silent,
       markup("", "<mc:AlternateContent>" + choice + fallback + "</mc:AlternateContent>"),
       [](const ReadPackage& read) { EXPECT_TRUE(read.targets.contains("rId3")); }},
      {"RL-13", "NothingIsTakenWithoutFallback", Accepted, Silent,
       markup("", "<mc:AlternateContent>" + choice + "</mc:AlternateContent>"), relationCount(1)},
      {"RL-13", "AForeignElementIsRefused", Refused, Error, markup("", "<q:x/>")},
      {"RL-13", "AForeignAttributeIsRefused", Refused, Error,
       markup("", relationXml("rId2", "b.m", "q:x=\"\""))},
      {"RL-13", "ThePrefixOfXmlNeedsNoDeclaration", Accepted, Silent,
       markup("mc:Ignorable=\"xml\"", ""), relationCount(1)},
      {"RL-13", "AnUndeclaredPrefixIsRefused", Refused, Error,
       markup("mc:Ignorable=\"undeclared\"", "")},
      {"RL-14", "ABaseOfTheRootIsRefused", Refused, Error, markup("xml:base=\"/c\"", "")},
      {"RL-14", "ABaseOfARelationshipIsRefused", Refused, Error,
       relations(relationXml("rId2", "b.m", "xml:base=\"/c\""))},
      {"RL-14", "ABaseOfAnIgnoredElementIsIgnored", Accepted, Silent,
       markup("mc:Ignorable=\"q\"", "<q:x xml:base=\"/c\"/>"), relationCount(1)},
  };
}

}  // namespace

std::vector<Case> relationshipCases() {
  std::vector<Case> all = structureCases();
  for (const std::vector<Case>& more : {targetCases(), markupCases()}) {
    all.insert(all.end(), more.begin(), more.end());
  }
  return all;
}

}  // namespace test::conformance
