// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/opc/conformance/support/Case.h"

namespace test::conformance {
namespace {

using enum Reading;
using enum Verified;

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

auto strays(std::string name) {
  return [name](const ReadPackage& read) { EXPECT_EQ(read.stray, std::vector{name}); };
}

void declareLess(PackageSpec& p) {
  p.last().local.size = p.last().central.size = 2999;
}

void addManyWithEqualBeginnings(PackageSpec& p) {
  const std::string folder(200, 'f');
  for (int i = 0; i < 20000; ++i) p.add(folder + "/" + std::to_string(i) + ".m", "");
  std::string text;
  for (int i = 0; i < 5000; ++i) text += relationXml("r" + std::to_string(i), "b.m");
  p.relationships = text;
}

// Elements of as many different names.
std::string differentElements(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += "<n" + std::to_string(i) + "/>";
  return text;
}

std::string equalElements(std::size_t count) {
  std::string text;
  text.reserve(count * 4);
  for (std::size_t i = 0; i < count; ++i) text += "<y/>";
  return text;
}

std::string attributesXml(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += " xmlns:a" + std::to_string(i) + "=\"urn:a\"";
  return text;
}

// Elements inside each other, in a relationships part that ignores them.
auto nested(std::size_t depth) {
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) text += "<q:x>";
  for (std::size_t i = 0; i < depth; ++i) text += "</q:x>";
  return wholeRelations(
      "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\" "
      "xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\" xmlns:q=\"urn:q\" "
      "mc:Ignorable=\"q\">" +
      text + "</Relationships>");
}

// Relationships that lead from a part to another and back.
void addCircle(PackageSpec& p) {
  p.addRelations("_rels/a.xml.rels", relationXml("rId1", "b.m"));
  p.addRelations("_rels/b.m.rels", relationXml("rId1", "a.xml"));
}

void addDeepFolder(PackageSpec& p) {
  std::string name;
  for (int i = 0; i < 10000; ++i) name += "d/";
  p.add(name + "c.m");
}

void addTwoNamesForOneItem(PackageSpec& p) {
  p.add("c.m").writeLocal = false;
  p.last().central.offset = 0;
}

auto declaredSize(std::uint32_t size) {
  return [=](PackageSpec& p) { p.last().local.size = p.last().central.size = size; };
}

std::vector<Case> limitCases() {
  return {
      {"RB-1", "MoreDataThanDeclaredIsRefused", RefusedOnUse, Error, declareLess, nullptr, "ZP-15"},
      {"RB-1", "XmlOfMoreThan64MebibytesIsRefused", Refused, Error,
       [](PackageSpec& p) {
         p.typesItem.deflate = true;
         p.wholeTypes = typesDocument(kUsualDefaults + std::string(64 * kMebibyte, ' '));
       }},
      {"RB-1", "XmlOfTooManyElementsIsRefused", Refused, Error,
       [](PackageSpec& p) { p.types = equalElements(std::size_t{1} << 22); }},
      {"RB-1", "OtherDataOfMoreIsRead", Accepted, Warning,
       [](PackageSpec& p) { p.add("c.m", std::string(65 * kMebibyte, '\0')).deflate = true; },
       [](const ReadPackage& read) {
         EXPECT_EQ(read.parts.at("c.m").content.size(), 65 * kMebibyte);
       }},
      {"RB-2", "TwoNamesForOneItemAreRefused", Refused, Error, addTwoNamesForOneItem},
      {"RB-2", "DataIntoTheDirectoryAreRefused", RefusedOnUse, Error,
       [](PackageSpec& p) { p.last().local.extraLength = 0xF000; }},
      {"RB-3", "TheSecondOfTwoItemsIsNotOverlooked", Refused, Error, item("b.m", "another"),
       nullptr, "ZP-2"},
      {"RB-4", "AnOffsetBeyondTheFileIsRefused", Refused, Error,
       [](PackageSpec& p) { p.last().central.offset = 0xFFFFFFF0; }, nullptr, "ZP-16"},
      {"RB-4", "AnOffsetWhoseSumOverflowsIsRefused", Refused, Error,
       [](PackageSpec& p) {
         p.last().central.offset = 0xFFFFFFFF;
         p.last().central.extra = extraField(1, le64(~std::uint64_t{0} - 5));
       },
       nullptr, "ZP-16"},
      {"RB-5", "ADirectoryOfCountlessEntriesIsRefused", Refused, Error,
       [](PackageSpec& p) {
         p.zip.zip64 = true;
         p.zip.entries = std::uint64_t{1} << 60;
       },
       nullptr, "ZP-16"},
      {"RB-5", "ASizeBeyondWhatDeflateCanMakeIsRefused", RefusedOnUse, Error,
       declaredSize(1u << 31), nullptr, "ZP-15"},
      {"RB-5", "AnItemOfTwoToThe50BytesIsRefused", RefusedOnUse, Error,
       [](PackageSpec& p) {
         p.last().central.size = 0xFFFFFFFF;
         p.last().central.extra = extraField(1, le64(std::uint64_t{1} << 50));
       },
       nullptr, "ZP-15"},
      {"RB-7", "ManyItemsAndRelationshipsAreRead", Accepted, Silent, addManyWithEqualBeginnings,
       [](const ReadPackage& read) {
         EXPECT_EQ(read.parts.size(), 20002u);
         EXPECT_EQ(read.targets.size(), 5001u);
       }},
      {"RB-7", "XmlThatTheParserWouldSearchForLongIsRefused", Refused, Error,
       [](PackageSpec& p) { p.types = differentElements(70000); }},
      {"RB-8", "RelationshipsInACircleAreRead", Accepted, Silent, addCircle,
       [](const ReadPackage& read) { EXPECT_EQ(read.targetsOfPart.at("rId1"), "/a.xml"); }},
      {"RB-8", "AFolder10000DeepIsRead", Accepted, Warning, addDeepFolder,
       [](const ReadPackage& read) { EXPECT_EQ(read.parts.size(), 3u); }, "RB-15"},
      {"RB-9", "AnEntityIsNotExpanded", Refused, Error,
       wholeTypes("<!DOCTYPE t [<!ENTITY a \"aaaaaaaa\"><!ENTITY b \"&a;&a;&a;\">]>" +
                  typesDocument("&b;").substr(39)),
       nullptr, "XM-2"},
      {"RB-9", "AnEntityThatNobodyDeclaredIsRefused", Refused, Error, types("&b;"), nullptr,
       "XM-3"},
      {"RB-10", "AnElementOfManyAttributesIsRefused", Refused, Error,
       types("<Default" + attributesXml(4097) + " Extension=\"q\" ContentType=\"text/x\"/>")},
      {"RB-10", "AnElementOfAllowedAttributesIsRead", Accepted, Silent,
       types("<Default" + attributesXml(4000) + " Extension=\"q\" ContentType=\"text/x\"/>")},
      {"RB-10", "ALongAttributeIsRefused", Refused, Error,
       relations(relationXml("rId2", std::string(kMebibyte + 1, 'x'), "TargetMode=\"External\""))},
      {"RB-10", "AnAttributeOfAllowedLengthIsRead", Accepted, Silent,
       relations(relationXml("rId2", std::string(kMebibyte - 1, 'x'), "TargetMode=\"External\""))},
      {"RB-11", "XmlThatIsTooDeepIsRefused", Refused, Error, nested(256)},
      {"RB-11", "XmlOfAllowedDepthIsRead", Accepted, Silent, nested(255)},
  };
}

std::vector<Case> namingCases() {
  return {
      {"RB-12", "AParentSegmentIsRefused", Refused, Error, item("../c.m")},
      {"RB-12", "AParentSegmentBehindABackslashIsRefused", Refused, Error, item("x\\..\\c.m")},
      {"RB-12", "AnAbsoluteNameDrawsAWarning", Ignored, Warning, item("/c.m"), strays("/c.m")},
      {"RB-12", "ABackslashDrawsAWarning", Ignored, Warning, item("x\\c.m"), strays("x\\c.m")},
      {"RB-12", "ADriveDrawsAWarning", Accepted, Warning, item("C:c.m")},
      {"RB-13", "ANulInAnItemNameIsRefused", Refused, Error, item(std::string("c\0.m", 4))},
      {"RB-13", "ANameThatIsNoUtf8IsRefused", Refused, Error,
       [](PackageSpec& p) {
         p.add("c\xff.m").central.flags = 1 << 11;
         p.last().local.flags = 1 << 11;
       }},
      {"RB-13", "ANameThatEncodesAControlCharacterDrawsAWarning", Accepted, Warning,
       item("c%0A.m")},
      {"RB-13", "ANameThatEncodesNoUtf8DrawsAWarning", Accepted, Warning, item("c%FF.m")},
      {"RB-13", "AnEmptyNameDrawsAWarning", Ignored, Warning, item(""), nullptr, "PN-11"},
      {"RB-14", "ALinkDrawsAWarning", Ignored, Warning,
       [](PackageSpec& p) { p.add("c.m", "/etc").central.externalAttributes = 0120777u << 16; }},
      {"RB-14", "ALinkThatIsCalledLikeAFolderIsAnError", Ignored, Error,
       [](PackageSpec& p) { p.add("d/", "").central.externalAttributes = 0120777u << 16; }, nullptr,
       "ZP-10"},
      {"RB-14", "ALinkOfDarwinDrawsAWarning", Ignored, Warning,
       [](PackageSpec& p) {
         p.add("c.m", "/etc").central.externalAttributes = 0120777u << 16;
         p.last().central.madeBy = 19 << 8 | 20;
       }},
      {"RB-14", "ADeviceDrawsAWarning", Ignored, Warning,
       [](PackageSpec& p) { p.add("c.m").central.externalAttributes = 0020644u << 16; }},
      {"RB-15", "APartOfAnyNameIsRead", Accepted, Silent, item("CON/nul.m")},
      {"RB-15", "APartWithALongSegmentIsRead", Accepted, Silent,
       item(std::string(256, 'c') + ".m")},
  };
}

}  // namespace

std::vector<Case> robustnessCases() {
  std::vector<Case> all = limitCases();
  const std::vector<Case> more = namingCases();
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

}  // namespace test::conformance
