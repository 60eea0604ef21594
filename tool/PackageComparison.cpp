// SPDX-License-Identifier: MIT
#include "tool/PackageComparison.h"

#include <algorithm>

#include "opc/Text.h"
#include "tool/Digest.h"
#include "tool/Documents.h"

namespace tool {

namespace {

using addon::packaging::AddonPackage;

constexpr std::string_view kProperties = "properties";
constexpr std::string_view kScreenshot = "screenshot";

JsonValue read(const DocumentKind& kind, AddonPackage& package) {
  const HostArrayPointer document = kind.load(package);
  return parseJson(toJson(kind.shape, document.get(), JsonWriter::Layout::Compact));
}

/// A part that stands for something in the package, or no part.
struct FoundPart {
  std::string name;
  std::string hash;

  bool exists() const { return !name.empty(); }
  friend bool operator==(const FoundPart&, const FoundPart&) = default;
};

FoundPart find(std::string partName, AddonPackage& package) {
  if (partName.empty()) return {};
  std::string hash = hashOfPart(package, partName);
  return {std::move(partName), std::move(hash)};
}

FoundPart findDocumentPart(const DocumentKind& kind, AddonPackage& package) {
  for (PresentDocument& document : presentDocuments(package)) {
    if (document.name == kind.shape.name) return find(std::move(document.partName), package);
  }
  return {};
}

/// Whether something is in one of the packages only, and then says so.
bool isInOneOnly(std::string_view name, const FoundPart& a, const FoundPart& b,
                 PackageDifferences& differences) {
  if (a.exists() == b.exists()) return false;
  differences.documents.push_back({name, a.exists() ? Change::Removed : Change::Added, {}});
  return true;
}

void compareProperties(const DocumentKind& kind, ComparedPackage& a, ComparedPackage& b,
                       PackageDifferences& differences) {
  const FoundPart aPart = findDocumentPart(kind, *a.package);
  const FoundPart bPart = findDocumentPart(kind, *b.package);
  // Properties come from the core properties too, so that there are some without the document.
  differences.properties =
      compareDocuments(kind.shape, read(kind, *a.package), read(kind, *b.package));
  for (FieldDifference& field : differences.properties) {
    field.path.erase(0, kProperties.size() + 1);
  }
  if (isInOneOnly(kProperties, aPart, bPart, differences)) return;
  if (differences.properties.empty() && aPart != bPart) {
    differences.documents.push_back({kProperties, Change::Changed, {}});
  }
}

void compareDocument(const DocumentKind& kind, ComparedPackage& a, ComparedPackage& b,
                     PackageDifferences& differences) {
  const FoundPart aPart = findDocumentPart(kind, *a.package);
  const FoundPart bPart = findDocumentPart(kind, *b.package);
  if (isInOneOnly(kind.shape.name, aPart, bPart, differences) || aPart == bPart) return;
  differences.documents.push_back(
      {kind.shape.name, Change::Changed,
       compareDocuments(kind.shape, read(kind, *a.package), read(kind, *b.package))});
}

void compareScreenshots(ComparedPackage& a, ComparedPackage& b, PackageDifferences& differences) {
  const FoundPart aPart = find(screenshotPart(*a.package), *a.package);
  const FoundPart bPart = find(screenshotPart(*b.package), *b.package);
  if (isInOneOnly(kScreenshot, aPart, bPart, differences) || aPart == bPart) return;
  DocumentDifference difference{kScreenshot, Change::Changed, {}};
  if (aPart.name != bPart.name) {
    difference.fields.push_back({"screenshot.part", aPart.name, bPart.name});
  }
  if (aPart.hash != bPart.hash) {
    difference.fields.push_back({"screenshot.sha256", aPart.hash, bPart.hash});
  }
  differences.documents.push_back(std::move(difference));
}

}  // namespace

void compareDescriptions(ComparedPackage& a, ComparedPackage& b, PackageDifferences& differences) {
  for (const DocumentKind& kind : documentKinds()) {
    if (kind.shape.name == kProperties) {
      compareProperties(kind, a, b, differences);
    } else {
      compareDocument(kind, a, b, differences);
    }
  }
  compareScreenshots(a, b, differences);
}

}  // namespace tool
