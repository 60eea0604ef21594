// SPDX-License-Identifier: MIT
#include <vector>

#include "tests/opc/checks/PackageUnderTest.h"
#include "tests/opc/model/PackageFixture.h"

namespace test {
namespace {

constexpr const char* kOrigin = "application/vnd.openxmlformats-package.digital-signature-origin";
constexpr const char* kCoreType = "application/vnd.openxmlformats-package.core-properties+xml";

std::string overrideXml(std::string_view name, std::string_view type) {
  return "<Override PartName=\"" + std::string(name) + "\" ContentType=\"" + std::string(type) +
         "\"/>";
}

std::string defaultXml(std::string_view extension, std::string_view type) {
  return "<Default Extension=\"" + std::string(extension) + "\" ContentType=\"" +
         std::string(type) + "\"/>";
}

auto types(std::string more) {
  return [more](PackageUnderTest& p) { p.setTypes(more); };
}

// The whole content types.
auto stream(std::string xml) {
  return [xml](PackageUnderTest& p) { p.types().content = xml; };
}

auto item(std::string name) {
  return [name](PackageUnderTest& p) { p.add(name); };
}

auto core(std::string properties) {
  return [properties](PackageUnderTest& p) { p.addCore(properties); };
}

void repeatCore(PackageUnderTest& p) {
  p.addCore("");
  p.types().content =
      typesXml(overrideXml("/core.xml", kCoreType) + overrideXml("/more.xml", kCoreType));
  p.add("more.xml");
}

void giveCoreAnotherType(PackageUnderTest& p) {
  p.addCore("");
  p.setTypes("");
}

void removeCore(PackageUnderTest& p) {
  p.addCore("");
  p.setTypes("");
  p.zip.items.pop_back();
}

void breakTypesIntoPieces(PackageUnderTest& p) {
  p.types().name += "/[0].piece";
  p.add("[Content_Types].xml/[0].last.piece", p.types().content);
}

void dropRelsType(PackageUnderTest& p) {
  p.types().content = std::string(kTypesStart) + defaultXml("xml", "application/xml") +
                      defaultXml("m", "text/plain") + "</Types>";
}

const std::string kTypesXml = "[Content_Types].xml";
const std::string kNone = std::string(kTypesStart) + "</Types>";

// Without types there are no parts that a relationship could lead to.
void emptyTypes(PackageUnderTest& p) {
  p.types().content = kNone;
  p.relationships().content = relationshipsXml("");
}

}  // namespace

std::span<const PackageCase> packagingCases() {
  static const std::vector<PackageCase> kCases{
      {201, "Missing", "CT-1", "", [](auto& p) { p.zip.items.erase(p.zip.items.begin()); }},
      {201, "TwoCases", "CT-1", "[content_types].xml",
       [](auto& p) { p.add("[content_types].xml", typesXml()); }},
      {201, "Root", "CT-2", kTypesXml, stream("<Types/>")},
      {201, "RootAttribute", "CT-2", kTypesXml,
       [](auto& p) { p.types().content.replace(6, 0, " a=\"b\" "); }},
      {201, "Text", "CT-2", kTypesXml, types("text")},
      {201, "Child", "CT-2", kTypesXml, types("<Other/>")},
      {201, "Attribute", "CT-3", kTypesXml,
       types("<Default Extension=\"q\" ContentType=\"a/b\" x=\"\"/>")},
      {201, "NoAttribute", "CT-3", kTypesXml, types("<Default Extension=\"q\"/>"), 1},
      {201, "Foreign", "CT-13", kTypesXml, types("<x:y xmlns:x=\"urn:x\"/>")},
      {201, "NotWellFormed", "XM-3", kTypesXml, stream("<Types>")},
      {201, "All", "CT-3", kTypesXml,
       types("<Default Extension=\"q\"/><Override PartName=\"/q\"/>"), 2},
      {202, "Target", "CT-10", "/c.q",
       [](auto& p) { p.add("c.q"), p.setRelationships(relationshipXml("r", "/c.q")); }},
      {202, "TargetOfTwo", "CT-10", "/c.q",
       [](auto& p) {
         p.add("c.q");
         p.setRelationships(relationshipXml("r", "/c.q") + relationshipXml("s", "/c.q"));
       }},
      {202, "Source", "CT-10", "/c.q",
       [](auto& p) { p.add("c.q"), p.add("_rels/c.q.rels", relationshipsXml("")); }},
      {203, "Override", "CT-14", "/q.xml", types(overrideXml("/q.xml", "a/b"))},
      {204, "Default", "CT-6", kTypesXml, types(defaultXml("XML", "application/xml"))},
      {204, "Override", "CT-6", kTypesXml,
       types(overrideXml("/a.xml", "a/b") + overrideXml("/A.xml", "a/b"))},
      {205, "Case", "PN-8", "/A.xml", item("A.xml")},
      {206, "Extension", "CT-4", kTypesXml, types(defaultXml(".q", "a/b"))},
      {206, "PartName", "CT-5", kTypesXml, types(overrideXml("a.xml", "a/b"))},
      {206, "MediaType", "CT-7", kTypesXml, types(defaultXml("q", "a"))},
      {206, "Parameters", "CT-8", kTypesXml,
       types(defaultXml("q", std::string(kRelationshipsTypeName) + ";a=b"))},
      {206, "All", "CT-4", kTypesXml, types(defaultXml("", "a/b") + defaultXml("a.b", "a/b")), 2},
      {207, "Derived", "PN-9", "/a.xml/c.m", item("a.xml/c.m")},
      {214, "Doctype", "XM-2", kTypesXml,
       [](auto& p) { p.types().content = "<!DOCTYPE Types>" + p.types().content; }},
      {214, "Encoding", "XM-1", kTypesXml,
       [](auto& p) {
         p.types().content = "<?xml version='1.0' encoding='us-ascii'?>" + p.types().content;
       }},
      {216, "Origin", "DS-1", "/origin.xml",
       [](auto& p) { p.setTypes(overrideXml("/origin.xml", kOrigin)), p.add("origin.xml"); }},
      {217, "Space", "PN-11", "a b.m", item("a b.m")},
      {217, "Dot", "PN-11", "x./b.m", item("x./b.m")},
      {217, "Trash", "PN-11", "[trash]/0000.dat", item("[trash]/0000.dat")},
      {217, "Empty", "PN-11", "", item("")},
      {217, "Untyped", "CT-10", "/c.q", item("c.q")},
      {217, "All", "CT-10", "/c.q", [](auto& p) { p.add("c.q"), p.add("d.q"), p.add("e"); }, 3},
      {219, "Number", "IL-3", "/c.m",
       [](auto& p) { p.add("c.m/[0].piece"), p.add("c.m/[0].last.piece"); }},
      {219, "Whole", "IL-3", "/b.m", item("b.m/[0].last.piece")},
      {219, "ContentTypes", "IL-3", kTypesXml, breakTypesIntoPieces},
      {220, "Two", "CP-3", "/more.xml", repeatCore},
      {221, "Composition", "PN-7", "/e%CC%81.m",
       [](auto& p) { p.add("%C3%A9.m"), p.add("e%CC%81.m"); }},
      {221, "Kelvin", "PN-7", "/%E2%84%AA.m", [](auto& p) { p.add("k.m"), p.add("%E2%84%AA.m"); }},
      {222, "Case", "CT-1", "[CONTENT_TYPES].xml",
       [](auto& p) { p.types().name = "[CONTENT_TYPES].xml"; }},
      {223, "Empty", "CT-2", kTypesXml, emptyTypes},
      {224, "Missing", "CT-12", "/_rels/.rels", dropRelsType},
      {224, "Elsewhere", "CT-12", "/x.rels", item("x.rels")},
      {228, "NoLast", "IL-4", "c.m/[0].piece", item("c.m/[0].piece")},
      {228, "Zeros", "IL-4", "c.m/[00].piece", item("c.m/[00].piece")},
      {228, "NotPartName", "IL-4", "c%2em/[0].last.piece", item("c%2em/[0].last.piece")},
      {228, "Gap", "IL-4", "c.m/[0].piece",
       [](auto& p) { p.add("c.m/[0].piece"), p.add("c.m/[2].last.piece"); }, 2},
      {213, "Type", "CP-2", "/core.xml", giveCoreAnotherType},
      {213, "Missing", "CP-2", "/_rels/.rels", removeCore},
      {213, "Root", "CP-4", "/core.xml",
       [](auto& p) { p.addCore(""), p.last().content = "<core/>"; }},
      {213, "Unknown", "CP-5", "/core.xml", core("<cp:other/>")},
      {213, "Twice", "CP-6", "/core.xml", core("<dc:title/><dc:title/>")},
      {213, "Terms", "CP-8", "/core.xml", core("<dcterms:issued/>")},
      {213, "Date", "CP-12", "/core.xml", core("<cp:lastPrinted>now</cp:lastPrinted>")},
      {213, "Untyped", "CP-9", "/core.xml", core("<dcterms:created>2020</dcterms:created>")},
      {213, "All", "CP-5", "/core.xml", core("<cp:a/><cp:b/><cp:c/>"), 3},
      {226, "EmptyDate", "CP-12", "/core.xml", core("<cp:lastPrinted/>")},
      {226, "FirstEdition", "CP-14", "/core.xml", core("<cp:contentType>x</cp:contentType>")},
      {214, "DoctypeOfCore", "XM-2", "/core.xml",
       [](auto& p) { p.addCore(""), p.last().content = "<!DOCTYPE a><a/>"; }},
  };
  return kCases;
}

}  // namespace test
