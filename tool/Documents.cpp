// SPDX-License-Identifier: MIT
#include "tool/Documents.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "opc/Text.h"
#include "opc/plservices/SchemaRoot.h"
#include "tool/Errors.h"
#include "tool/Suggest.h"

namespace tool {

namespace {

using addon::packaging::AddonLicense;
using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;

constexpr std::array<std::string_view, 10> kPropertyFields{
    "type",    "name",       "version",       "KorvanRelease",
    "summary", "authorName", "authorContact", "authorOrganization",
    "GUID",    "description"};
constexpr std::array<std::string_view, 2> kLicenseFields{"type", "text"};

HostArrayPointer loadProperties(AddonPackage& package) {
  AddonProperties document;
  package.getAddonProperties(document);
  return HostArrayPointer(document.getStructArray());
}

void storeProperties(AddonPackage& package, const kxArray* array) {
  AddonProperties document(array);
  package.setAddonProperties(document);
}

HostArrayPointer loadLicense(AddonPackage& package) {
  AddonLicense document;
  package.getLicense(document);
  return HostArrayPointer(document.getStructArray());
}

void storeLicense(AddonPackage& package, const kxArray* array) {
  AddonLicense document(array);
  package.setLicense(document);
}

constexpr std::array kDocuments{
    DocumentKind{"properties", kPropertyFields, loadProperties, storeProperties},
    DocumentKind{"license", kLicenseFields, loadLicense, storeLicense},
};

struct RelationshipKind {
  std::string_view document;
  std::u16string_view type;  // below the schema root
};

constexpr std::array<RelationshipKind, 7> kRelationships{{{"properties", u"addonProperties"},
                                                          {"license", u"license"},
                                                          {"configuration", u"configuration"},
                                                          {"apps", u"applications"},
                                                          {"examples", u"examples"},
                                                          {"revisions", u"revisionHistory"},
                                                          {"requirements", u"systemRequirements"}}};

/// The part that the one relationship of that type leads to, or "".
std::string findPart(AddonPackage& package, std::u16string_view type) {
  std::u16string uri = opc::plservices::SchemaRoot + u"/korvan/addon/2014/relationships/";
  uri += type;
  const auto found = package.logicalPackage().getRelationshipsByType(uri);
  const bool isOne =
      found.size() == 1 && found[0].getTargetMode() == opc::model::TargetMode::Internal;
  return isOne ? opc::toUtf8ForDisplay(found[0].getTargetURI().toString()) : std::string();
}

}  // namespace

const DocumentKind& findDocument(std::string_view name) {
  std::vector<std::string_view> names;
  for (const DocumentKind& kind : kDocuments) {
    if (kind.name == name) return kind;
    names.push_back(kind.name);
  }
  const std::string all = fmt::format("the documents are {}", fmt::join(names, ", "));
  throw UsageError(sentence("unknown document", name, suggestion(name, names, all)));
}

void checkDocument(const DocumentKind& kind, const JsonValue& value) {
  if (!value.is_object()) throw JsonError(fmt::format("{}: expected an object", kind.name));
  for (const auto& [name, content] : value.get_ref<const JsonValue::object_t&>()) {
    const bool isKnown =
        std::find(kind.fields.begin(), kind.fields.end(), name) != kind.fields.end();
    if (!isKnown) {
      throw JsonError(fmt::format("{}.{}: unknown field, {}", kind.name, name,
                                  suggestion(name, kind.fields, "there is none of that name")));
    }
    if (!content.is_string()) {
      throw JsonError(fmt::format("{}.{}: expected a text", kind.name, name));
    }
  }
  for (const std::string_view field : kind.fields) {
    if (!value.contains(std::string(field))) {
      throw JsonError(fmt::format("{}.{}: it is missing", kind.name, field));
    }
  }
}

std::string toJson(const kxArray* document, JsonWriter::Layout layout) {
  std::string text;
  JsonWriter writer(text, layout);
  writeHostArray(document, writer);
  return text;
}

std::vector<PresentDocument> presentDocuments(AddonPackage& package) {
  std::vector<PresentDocument> present;
  for (const RelationshipKind& kind : kRelationships) {
    std::string part = findPart(package, kind.type);
    if (!part.empty()) present.push_back({kind.document, std::move(part)});
  }
  return present;
}

std::string screenshotPart(AddonPackage& package) {
  return findPart(package, u"primaryScreenShot");
}

}  // namespace tool
