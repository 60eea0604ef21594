// SPDX-License-Identifier: MIT
#include "addon/comparison/PackageComparison.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

#include "addon/comparison/Digest.h"
#include "addon/comparison/OtherContent.h"
#include "addon/packaging/Documents.h"
#include "opc/Text.h"

namespace addon::comparison {

namespace {

using addon::packaging::AddonPackage;
using addon::packaging::ConstRecord;
using addon::packaging::DocumentTable;

constexpr std::string_view kProperties = "properties";
constexpr std::string_view kScreenshot = "screenshot";

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

FoundPart findDocumentPart(const DocumentTable& table, AddonPackage& package) {
  for (addon::packaging::PresentDocument& document : addon::packaging::presentDocuments(package)) {
    if (document.name == std::string_view(table.name()))
      return find(std::move(document.partName), package);
  }
  return {};
}

std::vector<FieldDifference> compareFields(const DocumentTable& table, ComparedPackage& a,
                                           ComparedPackage& b, PackageDifferences& differences) {
  const ConstRecord aRecord =
      differences.read.emplace_back(addon::packaging::loadDocument(*a.package, table)).record;
  const ConstRecord bRecord =
      differences.read.emplace_back(addon::packaging::loadDocument(*b.package, table)).record;
  return compareDocuments(table, aRecord, bRecord);
}

/// Whether something is in one of the packages only, and then says so.
bool isInOneOnly(std::string_view name, const FoundPart& a, const FoundPart& b,
                 PackageDifferences& differences) {
  if (a.exists() == b.exists()) return false;
  differences.documents.push_back({name, a.exists() ? Change::Removed : Change::Added, {}});
  return true;
}

void compareProperties(const DocumentTable& table, ComparedPackage& a, ComparedPackage& b,
                       PackageDifferences& differences) {
  const FoundPart aPart = findDocumentPart(table, *a.package);
  const FoundPart bPart = findDocumentPart(table, *b.package);
  // Properties come from the core properties too, so that there are some without the document.
  differences.properties = compareFields(table, a, b, differences);
  for (FieldDifference& field : differences.properties) {
    field.path.erase(0, kProperties.size() + 1);
  }
  if (isInOneOnly(kProperties, aPart, bPart, differences)) return;
  if (differences.properties.empty() && aPart != bPart) {
    differences.documents.push_back({kProperties, Change::Changed, {}});
  }
}

void compareDocument(const DocumentTable& table, ComparedPackage& a, ComparedPackage& b,
                     PackageDifferences& differences) {
  const FoundPart aPart = findDocumentPart(table, *a.package);
  const FoundPart bPart = findDocumentPart(table, *b.package);
  if (isInOneOnly(table.name(), aPart, bPart, differences) || aPart == bPart) return;
  differences.documents.push_back(
      {table.name(), Change::Changed, compareFields(table, a, b, differences)});
}

void compareScreenshots(ComparedPackage& a, ComparedPackage& b, PackageDifferences& differences) {
  const FoundPart aPart = find(addon::packaging::screenshotPart(*a.package), *a.package);
  const FoundPart bPart = find(addon::packaging::screenshotPart(*b.package), *b.package);
  if (isInOneOnly(kScreenshot, aPart, bPart, differences) || aPart == bPart) return;
  DocumentDifference difference{kScreenshot, Change::Changed, {}};
  if (aPart.name != bPart.name) {
    difference.fields.push_back(
        {"screenshot.part", opc::fromUtf8(aPart.name), opc::fromUtf8(bPart.name)});
  }
  if (aPart.hash != bPart.hash) {
    difference.fields.push_back(
        {"screenshot.sha256", opc::fromUtf8(aPart.hash), opc::fromUtf8(bPart.hash)});
  }
  differences.documents.push_back(std::move(difference));
}

/// "TYPE -> TARGET", of a relationship as OtherContent has it.
std::u16string describeRelationship(const std::string& line) {
  const std::size_t mode = line.find('\0');
  const std::size_t target = line.find('\0', mode + 1);
  return opc::fromUtf8(line.substr(0, mode) + " -> " + line.substr(target + 1));
}

void compareTypes(const OtherContent& a, const OtherContent& b, DocumentDifference& difference) {
  std::map<std::string_view, std::string_view> types;
  for (const OtherItem& other : a.items) types.emplace(other.item.path, other.contentType);
  for (const OtherItem& other : b.items) {
    const auto old = types.find(other.item.path);
    if (old == types.end() || old->second == other.contentType) continue;
    difference.fields.push_back({"parts[" + other.item.path + "].contentType",
                                 opc::fromUtf8(old->second), opc::fromUtf8(other.contentType)});
  }
}

void compareRelationships(const OtherContent& a, const OtherContent& b,
                          DocumentDifference& difference) {
  std::set<std::string> sources;
  for (const auto& [source, lines] : a.relationships) sources.insert(source);
  for (const auto& [source, lines] : b.relationships) sources.insert(source);
  const std::vector<std::string> none;
  const auto linesOf = [&](const OtherContent& content,
                           const std::string& source) -> const std::vector<std::string>& {
    const auto found = content.relationships.find(source);
    return found == content.relationships.end() ? none : found->second;
  };
  for (const std::string& source : sources) {
    const auto& aLines = linesOf(a, source);
    const auto& bLines = linesOf(b, source);
    const std::string path = "relationships[" + source + "]";
    std::vector<std::string> alone;
    std::set_difference(aLines.begin(), aLines.end(), bLines.begin(), bLines.end(),
                        std::back_inserter(alone));
    for (const auto& one : alone) {
      difference.fields.push_back({path, describeRelationship(one), {}});
    }
    alone.clear();
    std::set_difference(bLines.begin(), bLines.end(), aLines.begin(), aLines.end(),
                        std::back_inserter(alone));
    for (const auto& one : alone) {
      difference.fields.push_back({path, {}, describeRelationship(one)});
    }
  }
}

void appendItems(const OtherContent& content, std::vector<Item>& items) {
  for (const OtherItem& other : content.items) items.push_back(other.item);
}

}  // namespace

void compareOtherContent(ComparedPackage& a, ComparedPackage& b, PackageDifferences& differences) {
  const OtherContent aContent = readOtherContent(*a.package);
  const OtherContent bContent = readOtherContent(*b.package);
  DocumentDifference types{"parts", Change::Changed, {}};
  compareTypes(aContent, bContent, types);
  if (!types.fields.empty()) differences.documents.push_back(std::move(types));
  DocumentDifference relationships{"relationships", Change::Changed, {}};
  compareRelationships(aContent, bContent, relationships);
  if (!relationships.fields.empty()) differences.documents.push_back(std::move(relationships));
  appendItems(aContent, a.items);
  appendItems(bContent, b.items);
}

void compareDescriptions(ComparedPackage& a, ComparedPackage& b, PackageDifferences& differences) {
  for (const DocumentTable* table : addon::packaging::documents()) {
    if (kProperties == table->name()) {
      compareProperties(*table, a, b, differences);
    } else {
      compareDocument(*table, a, b, differences);
    }
  }
  compareScreenshots(a, b, differences);
}

}  // namespace addon::comparison
