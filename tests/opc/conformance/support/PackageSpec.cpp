// SPDX-License-Identifier: MIT
#include "tests/opc/conformance/support/PackageSpec.h"

#include <utility>

namespace test::conformance {
namespace {

constexpr const char* kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

std::string quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

}  // namespace

const std::string kUsualDefaults = defaultXml("rels", kRelationsType) +
                                   defaultXml("xml", "application/xml") +
                                   defaultXml("m", "text/plain");

std::string defaultXml(std::string_view extension, std::string_view type) {
  return "<Default Extension=" + quoted(extension) + " ContentType=" + quoted(type) + "/>";
}

std::string overrideXml(std::string_view name, std::string_view type) {
  return "<Override PartName=" + quoted(name) + " ContentType=" + quoted(type) + "/>";
}

std::string relationXml(std::string_view id, std::string_view target, std::string_view more) {
  return "<Relationship Id=" + quoted(id) + " Type=\"urn:t\" Target=" + quoted(target) + " " +
         std::string(more) + "/>";
}

std::string typesDocument(std::string_view children) {
  return kDeclaration +
         ("<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">" +
          std::string(children) + "</Types>");
}

std::string relationsDocument(std::string_view children) {
  return kDeclaration +
         ("<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">" +
          std::string(children) + "</Relationships>");
}

std::string coreDocument(std::string_view children, std::string_view attributes) {
  return kDeclaration +
         ("<cp:coreProperties "
          "xmlns:cp=\"http://schemas.openxmlformats.org/package/2006/metadata/core-properties\" "
          "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
          "xmlns:dcterms=\"http://purl.org/dc/terms/\" "
          "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" " +
          std::string(attributes) + ">" + std::string(children) + "</cp:coreProperties>");
}

PackageSpec::PackageSpec() {
  typesItem.name = "[Content_Types].xml";
  typesItem.deflate = true;
  relationsItem.name = "_rels/.rels";
  relationsItem.deflate = true;
  add("a.xml", "<a/>");
  add("b.m", std::string(3000, 'b')).deflate = true;
}

ZipItem& PackageSpec::add(std::string name, std::string content) {
  items.push_back({.name = std::move(name), .content = std::move(content)});
  return items.back();
}

ZipItem& PackageSpec::addRelations(std::string name, std::string_view children) {
  return add(std::move(name), relationsDocument(children));
}

std::string PackageSpec::bytes() const {
  const bool hasCore = core || wholeCore;
  ZipBuilder built = zip;
  std::vector<ZipItem> all{typesItem, relationsItem};
  all[0].content = wholeTypes.value_or(
      typesDocument(kUsualDefaults + (hasCore ? overrideXml("/core.xml", kCoreType) : "") + types));
  const std::string coreRelation = "<Relationship Id=\"rIdCore\" Target=\"core.xml\" Type=\"" +
                                   std::string(kCoreRelation) + "\"/>";
  all[1].content = wholeRelations.value_or(relationsDocument(
      relationXml("rId1", "/a.xml") + (hasCore ? coreRelation : "") + relationships));
  all.insert(all.end(), items.begin(), items.end());
  if (hasCore) {
    all.push_back({.name = "core.xml",
                   .content = wholeCore ? *wholeCore : coreDocument(*core),
                   .deflate = true});
  }
  built.items.insert(built.items.begin(), all.begin(), all.end());
  return built.build();
}

}  // namespace test::conformance
