// SPDX-License-Identifier: MIT
#include "tool/Documents.h"

#include <fmt/format.h>

#include <array>
#include <type_traits>

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "addon/packaging/DocumentRemoval.h"
#include "hostarray/standin/testing.h"
#include "opc/Text.h"
#include "opc/plservices/SchemaRoot.h"
#include "text/Suggest.h"
#include "tool/Errors.h"

namespace tool {

namespace {

using addon::packaging::AddonAppInstallList;
using addon::packaging::AddonConfiguration;
using addon::packaging::AddonExamples;
using addon::packaging::AddonLicense;
using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using addon::packaging::AddonRevisionHistory;
using addon::packaging::AddonSystemRequirements;

constexpr bool kOptional = false;  // of a FieldShape's isRequired

constexpr std::array kPropertyFields{FieldShape{"type"},          FieldShape{"name"},
                                     FieldShape{"version"},       FieldShape{"KorvanRelease"},
                                     FieldShape{"summary"},       FieldShape{"authorName"},
                                     FieldShape{"authorContact"}, FieldShape{"authorOrganization"},
                                     FieldShape{"GUID"},          FieldShape{"description"}};

constexpr std::array kLicenseFields{FieldShape{"type"}, FieldShape{"text"}};

constexpr std::array kConfigurationFields{
    FieldShape{"korvanPaths", FieldKind::Texts, kOptional},
    FieldShape{"javaClassPaths", FieldKind::Texts, kOptional}};

constexpr std::array kAppFields{FieldShape{"name"}, FieldShape{"guid"}, FieldShape{"relativePath"},
                                FieldShape{"installByDefault", FieldKind::Flag}};
constexpr std::array<std::string_view, 3> kAppKeys{"guid", "relativePath", "name"};

constexpr std::array kExampleFields{
    FieldShape{"name"}, FieldShape{"type"},      FieldShape{"source"},
    FieldShape{"main"}, FieldShape{"thumbnail"}, FieldShape{"images", FieldKind::Texts, kOptional}};
constexpr std::array<std::string_view, 2> kExampleKeys{"main", "name"};
constexpr RecordShape kExample{kExampleFields, kExampleKeys};
constexpr std::array kCategoryFields{
    FieldShape{"name"}, FieldShape{"examples", FieldKind::Records, kOptional, &kExample}};
constexpr std::array<std::string_view, 1> kCategoryKeys{"name"};

constexpr std::array kRevisionFields{FieldShape{"date"}, FieldShape{"version"},
                                     FieldShape{"description"}};
constexpr std::array<std::string_view, 2> kRevisionKeys{"version", "date"};

constexpr std::array kProductFields{FieldShape{"name"}, FieldShape{"version"},
                                    FieldShape{"identifier"}};
constexpr std::array<std::string_view, 2> kProductKeys{"identifier", "name"};
constexpr RecordShape kProduct{kProductFields, kProductKeys};
constexpr std::array kRequirementFields{
    FieldShape{"productDependency", FieldKind::Records, kOptional, &kProduct},
    FieldShape{"supportPackageDependency", FieldKind::Records, kOptional, &kProduct}};

template <typename Document>
std::u16string relationshipType() {
  return Document().relationshipType;
}

template <typename Document>
HostArrayPointer load(AddonPackage& package) {
  Document document;
  if constexpr (std::is_same_v<Document, AddonProperties>) {
    package.getAddonProperties(document);
  } else {
    package.getXMLPart(document);
  }
  return HostArrayPointer(document.getStructArray());
}

template <typename Document>
void store(AddonPackage& package, const kxArray* array) {
  // Reading nested records makes arrays that belong to the call.
  const hostarray::standin::CallScope scope;
  Document document(array);
  if constexpr (std::is_same_v<Document, AddonProperties>) {
    package.setAddonProperties(document);
  } else {
    package.addXMLPart(document);
  }
}

template <typename Document>
bool remove(AddonPackage& package) {
  return addon::packaging::removeDocument(package.logicalPackage(), Document());
}

template <typename Document>
constexpr DocumentKind describe(std::string_view name, bool isList,
                                std::span<const FieldShape> fields,
                                std::span<const std::string_view> keys = {}) {
  return {{name, isList, {fields, keys}},
          relationshipType<Document>,
          load<Document>,
          store<Document>,
          remove<Document>};
}

constexpr std::array kDocuments{
    describe<AddonProperties>("properties", false, kPropertyFields),
    describe<AddonLicense>("license", false, kLicenseFields),
    describe<AddonConfiguration>("configuration", false, kConfigurationFields),
    describe<AddonAppInstallList>("apps", true, kAppFields, kAppKeys),
    describe<AddonExamples>("examples", true, kCategoryFields, kCategoryKeys),
    describe<AddonRevisionHistory>("revisions", true, kRevisionFields, kRevisionKeys),
    describe<AddonSystemRequirements>("requirements", false, kRequirementFields),
};

constexpr std::u16string_view kScreenshotPath =
    u"/korvan/addon/2014/relationships/primaryScreenShot";

/// The part that the one relationship of that type leads to, as the package spells it, or "". One
/// that is missing is named as the relationship does.
std::string findPart(AddonPackage& package, const std::u16string& type) {
  auto& model = package.logicalPackage();
  const auto found = model.getRelationshipsByType(type);
  const bool isOne =
      found.size() == 1 && found[0].getTargetMode() == opc::model::TargetMode::Internal;
  if (!isOne) return {};
  const opc::model::PartName target(found[0].getTargetURI().toString());
  if (!model.hasPart(target)) return target.canonical();
  return "/" + std::string(model.itemNameOf(model.getPart(target)->id()));
}

}  // namespace

std::span<const DocumentKind> documentKinds() {
  return kDocuments;
}

std::vector<std::string> documentNames() {
  std::vector<std::string> names;
  names.reserve(std::size(kDocuments));
  for (const DocumentKind& kind : kDocuments) names.emplace_back(kind.shape.name);
  return names;
}

const DocumentKind& findDocument(std::string_view name) {
  std::vector<std::string_view> names;
  for (const DocumentKind& kind : kDocuments) {
    if (kind.shape.name == name) return kind;
    names.push_back(kind.shape.name);
  }
  const std::string all = fmt::format("the documents are {}", fmt::join(names, ", "));
  throw UsageError(sentence("unknown document", name, text::suggestion(name, names, all)));
}

bool isPresent(const DocumentKind& kind, AddonPackage& package) {
  return !findPart(package, kind.relationshipType()).empty();
}

std::vector<PresentDocument> presentDocuments(AddonPackage& package) {
  std::vector<PresentDocument> present;
  for (const DocumentKind& kind : kDocuments) {
    std::string part = findPart(package, kind.relationshipType());
    if (!part.empty()) present.push_back({kind.shape.name, std::move(part)});
  }
  return present;
}

std::string screenshotPart(AddonPackage& package) {
  return findPart(package, opc::plservices::SchemaRoot + std::u16string(kScreenshotPath));
}

}  // namespace tool
