// SPDX-License-Identifier: MIT
#include <vector>

#include "tests/opc/checks/PackageUnderTest.h"
#include "tests/opc/model/PackageFixture.h"

namespace test {
namespace {

const std::string kRels = "/_rels/.rels";

constexpr const char* kCoreRelationship =
    "http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties";
constexpr const char* kThumbnailRelationship =
    "http://schemas.openxmlformats.org/package/2006/relationships/metadata/thumbnail";

// A relationship of the package besides the usual one.
auto relationship(std::string id, std::string target, std::string more = "") {
  return [=](PackageUnderTest& p) { p.setRelationships(relationshipXml(id, target, more)); };
}

auto external(std::string target) {
  return relationship("r", std::move(target), "TargetMode=\"External\"");
}

auto content(std::string xml) {
  return [xml](PackageUnderTest& p) { p.setRelationships(xml); };
}

std::string typed(std::string_view id, std::string_view type, std::string_view target,
                  std::string_view more = "") {
  return "<Relationship Id=\"" + std::string(id) + "\" Type=\"" + std::string(type) +
         "\" Target=\"" + std::string(target) + "\" " + std::string(more) + "/>";
}

auto ofPart(std::string xml) {
  return [xml](PackageUnderTest& p) { p.add("_rels/a.xml.rels", relationshipsXml(xml)); };
}

void giveRelationshipsAnotherType(PackageUnderTest& p) {
  p.setTypes("<Override PartName=\"/_rels/.rels\" ContentType=\"application/xml\"/>");
}

void relateCoreTwice(PackageUnderTest& p) {
  p.addCore("");
  const std::string& xml = p.relationships().content;
  p.relationships().content = xml.substr(0, xml.size() - std::string("</Relationships>").size()) +
                              typed("again", kCoreRelationship, "/core.xml") + "</Relationships>";
}

}  // namespace

std::span<const PackageCase> relationshipCases() {
  static const std::vector<PackageCase> kCases{
      {208, "Root", "RL-3", kRels, [](auto& p) { p.relationships().content = "<R/>"; }},
      {208, "NotWellFormed", "XM-3", kRels, [](auto& p) { p.relationships().content = "<R>"; }},
      {208, "Element", "RL-3", kRels, content("<Other/>")},
      {208, "Attribute", "RL-3", kRels, relationship("r", "/a.xml", "Other=\"x\"")},
      {208, "Text", "RL-3", kRels, content("text")},
      {208, "NoType", "RL-5", kRels, content("<Relationship Id=\"r\" Target=\"/a.xml\"/>")},
      {208, "Mode", "RL-6", kRels, relationship("r", "/a.xml", "TargetMode=\"internal\"")},
      {208, "Scheme", "RL-7", kRels, relationship("r", "http://x/")},
      {208, "NoTarget", "RL-7", kRels, content("<Relationship Id=\"r\" Type=\"urn:t\"/>")},
      {208, "NotPartName", "RL-8", kRels, relationship("r", "/x.")},
      {208, "Markup", "RL-13", kRels, content("<x:y xmlns:x=\"urn:x\"/>")},
      {208, "Base", "RL-14", kRels, relationship("r", "/a.xml", "xml:base=\"/x\"")},
      {208, "ContentType", "CT-12", kRels, giveRelationshipsAnotherType},
      {208, "OfPart", "RL-5", "/_rels/a.xml.rels",
       ofPart("<Relationship Id=\"r\" Target=\"b.m\"/>")},
      {208, "All", "RL-7", kRels,
       content(relationshipXml("r", "a:b") + relationshipXml("s", "//h/x")), 2},
      {209, "Digit", "RL-4", kRels, relationship("1", "/a.xml")},
      {209, "Missing", "RL-4", kRels, content("<Relationship Type=\"t\" Target=\"/a.xml\"/>")},
      {209, "Twice", "RL-4", kRels, relationship("rId1", "/b.m")},
      {210, "Missing", "RL-11", kRels, relationship("r", "/c.m")},
      {210, "OfPart", "RL-11", "/_rels/a.xml.rels", ofPart(relationshipXml("r", "c.m"))},
      {210, "All", "RL-11", kRels, content(relationshipXml("r", "c.m") + relationshipXml("s", "d")),
       2},
      {211, "Empty", "RL-10", kRels, external("")},
      {211, "Backslash", "RL-10", kRels, external("file:///c:\\x")},
      {211, "Bracket", "RL-10", kRels, external("http://[::1/x")},
      {212, "Two", "CP-1", kRels, relateCoreTwice},
      {213, "External", "CP-2", kRels,
       content(typed("r", kCoreRelationship, "http://x/", "TargetMode=\"External\""))},
      {214, "DoctypeOfRelationships", "XM-2", kRels,
       [](auto& p) { p.relationships().content.insert(0, "<!DOCTYPE r>"); }},
      {215, "Source", "RL-12", "/_rels/c.m.rels",
       [](auto& p) { p.add("_rels/c.m.rels", relationshipsXml("")); }},
      {215, "Unread", "RL-12", "/_rels/c.m.rels", [](auto& p) { p.add("_rels/c.m.rels", "<"); }},
      {218, "To", "RL-9", kRels, relationship("r", "_rels/.rels")},
      {218, "From", "RL-9", "/_rels/_rels/.rels.rels",
       [](auto& p) { p.add("_rels/_rels/.rels.rels", relationshipsXml("")); }},
      {225, "Backslash", "RL-8", kRels, relationship("r", "\\a.xml")},
      {225, "Query", "RL-8", kRels, relationship("r", "/a.xml?x")},
      {225, "Escape", "RL-8", kRels, relationship("r", "/%61.xml")},
      {227, "Thumbnail", "TH-1", kRels, content(typed("r", kThumbnailRelationship, "/a.xml"))},
  };
  return kCases;
}

}  // namespace test
