// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/DocumentCheck.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/packaging/ImageSignature.h"
#include "addon/packaging/ScreenshotPart.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "opc/model/PartName.h"
#include "opc/plservices/FileTreePart.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::model::PartName;
using opc::plservices::FileTreePart;
using packaging::AddonPackage;
using packaging::DocumentSchema;
using packaging::ScreenshotPart;

namespace {

/// What parts are documents by name or type, and which of them relationships lead to.
class UnreachableParts {
 public:
  UnreachableParts(AddonPackage& package, const std::vector<DocumentSchema>& schemas)
      : package_(package.logicalPackage()) {
    for (const DocumentSchema& schema : schemas) addDocument(schema);
    addTargets(ScreenshotPart::relationshipType());
  }

  void check(Report& report) {
    package_.visitParts("", [&](opc::model::PartId part) {
      const std::string_view itemName = package_.itemNameOf(part);
      if (isFileOfTree(itemName)) return;
      const std::u16string* wanted = relationshipTypeFor(part, itemName);
      if (wanted == nullptr) return;
      const std::string key = PartName::fromItemName(itemName).key();
      if (reached_.contains({*wanted, key})) return;
      report.add(kUnreachableDocument, "/" + std::string(itemName),
                 "no relationship of the type " + quoted(*wanted) +
                     " leads from the package to this part, so it is never found");
    });
  }

 private:
  void addDocument(const DocumentSchema& schema) {
    const std::u16string& type = schema.relationshipType;
    byContentType_.emplace(opc::toLowerAscii(opc::toUtf8(schema.contentType)), type);
    const std::string name = PartName(schema.partName).key();
    byName_.emplace(name, type);
    addTargets(type);
    // It is also found by its name.
    if (type == FileTreePart::relationshipType()) reached_.emplace(type, name);
  }

  void addTargets(const std::u16string& type) {
    for (const auto& relationship : package_.getRelationshipsByType(type)) {
      if (relationship.getTargetMode() != opc::model::TargetMode::Internal) continue;
      reached_.emplace(type, relationship.targetName().key());
    }
  }

  // Everything below these folders is content, whatever its type.
  static bool isFileOfTree(std::string_view itemName) {
    constexpr std::array<std::string_view, 2> kFolders{"files/", "metadata/filetree/"};
    return std::any_of(kFolders.begin(), kFolders.end(), [&](std::string_view folder) {
      return opc::toLowerAscii(itemName.substr(0, folder.size())) == folder;
    });
  }

  // Null for a part that is not a document.
  const std::u16string* relationshipTypeFor(opc::model::PartId part,
                                            std::string_view itemName) const {
    const std::string key = "/" + opc::toLowerAscii(itemName);
    if (const auto found = byName_.find(key); found != byName_.end()) return &found->second;
    if (key.starts_with(screenshotStem_)) return &screenshotType_;
    const std::string type = opc::toLowerAscii(package_.contentTypeOf(part).ascii());
    const auto found = byContentType_.find(type);
    return found == byContentType_.end() ? nullptr : &found->second;
  }

  opc::model::Package& package_;
  const std::u16string screenshotType_ = ScreenshotPart::relationshipType();
  const std::string screenshotStem_ = opc::toLowerAscii(opc::toUtf8(ScreenshotPart::kNameStem));
  std::map<std::string, std::u16string> byContentType_;
  std::map<std::string, std::u16string> byName_;  // by the key of a part name
  std::set<std::pair<std::u16string, std::string>> reached_;
};

}  // namespace

void checkImage(AddonPackage& package, const Destination& image, Report& report) {
  std::string_view found;
  const opc::model::PartId part = image.part->id();
  const auto tell = [&] {
    found = packaging::imageTypeOf(*package.logicalPackage().openPart(part));
  };
  if (!isReadable(tell)) return;
  const std::string type = opc::toLowerAscii(image.part->getContentType().ascii());
  const bool isChecked = packaging::isImageTypeTold(type);
  // Other image formats are not checked.
  if (found == type || (found.empty() && !isChecked && type.starts_with("image/"))) return;
  const std::string content = found.empty() ? "of no known image format" : "of " + quoted(found);
  report.add(kImageMismatch, image.name,
             "the screenshot has the content type " + quoted(type) + ", but its bytes are those " +
                 content);
}

void checkUnreachable(AddonPackage& package, const std::vector<DocumentSchema>& schemas,
                      Report& report) {
  UnreachableParts(package, schemas).check(report);
}

}  // namespace addon::checks::detail
