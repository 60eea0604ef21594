// SPDX-License-Identifier: MIT
#include "addon/comparison/OtherContent.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "addon/packaging/Documents.h"
#include "addon/packaging/ScreenshotPart.h"
#include "opc/Text.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/NameKey.h"
#include "opc/plservices/CorePropertiesManager.h"
#include "opc/plservices/FileTreePart.h"
#include "opc/plservices/HostPropertiesPart.h"

namespace addon::comparison {

using addon::packaging::AddonPackage;
using addon::packaging::ScreenshotPart;
using opc::interfaces::ItemIndex;
using opc::interfaces::ItemKind;
using opc::model::PartId;
using opc::model::PartName;
using opc::model::Relationship;
using opc::model::TargetMode;
using opc::plservices::FileTree;
using opc::plservices::FileTreePart;
using opc::plservices::HostPropertiesPart;
using opc::plservices::NodeId;

namespace {

constexpr std::string_view kSignatureTypes =
    "application/vnd.openxmlformats-package.digital-signature-";
constexpr std::u16string_view kSignatureRelationships =
    u"http://schemas.openxmlformats.org/package/2006/relationships/digital-signature/";

/// The types of the relationships that the format makes, each with the key of the usual target or,
/// of the last two, the beginning of it.
class OwnRelationships {
 public:
  OwnRelationships() {
    add(opc::model::kCorePropertiesRelationship, u"/metadata/coreProperties.xml");
    add(HostPropertiesPart::relationshipType(), HostPropertiesPart::kPartName);
    add(FileTreePart::relationshipType(), FileTreePart::kDefaultName);
    for (const auto* table : addon::packaging::documents()) {
      add(table->relationshipType(), table->partName());
    }
    add(ScreenshotPart::relationshipType(), ScreenshotPart::kNameStem);
    add(opc::model::kThumbnailRelationship, ScreenshotPart::kNameStem);
  }

  /// Whether it is one of them. Of each type there is only one.
  bool take(const Relationship& one) {
    const auto usual = targets_.find(one.getType());
    if (usual == targets_.end() || one.getTargetMode() != TargetMode::Internal) return false;
    const std::string target =
        opc::toLowerAscii(opc::toUtf8ForDisplay(one.getTargetURI().toString()));
    const bool isStem = usual->second.ends_with('.');
    if (isStem ? !target.starts_with(usual->second) : target != usual->second) return false;
    targets_.erase(usual);
    return true;
  }

 private:
  void add(std::u16string_view type, std::u16string_view target) {
    targets_.emplace(type, opc::toLowerAscii(opc::toUtf8(target)));
  }

  std::map<std::u16string, std::string> targets_;
};

std::string lineOf(const Relationship& one) {
  const bool isInternal = one.getTargetMode() == TargetMode::Internal;
  std::string line = opc::toUtf8ForDisplay(one.getType());
  line += '\0';
  line += isInternal ? "Internal" : "External";
  line += '\0';
  line += opc::toUtf8ForDisplay(one.getTargetURI().toString());  // which has room to spare
  return line;
}

class Reader {
 public:
  explicit Reader(AddonPackage& package) : package_(package), model_(package.logicalPackage()) {}

  OtherContent read() {
    findKnownParts();
    readParts();
    readItems();
    std::sort(content_.items.begin(), content_.items.end(),
              [](const OtherItem& a, const OtherItem& b) { return a.item.path < b.item.path; });
    readRelationships();
    return std::move(content_);
  }

 private:
  void findKnownParts() {
    FileTree& tree = package_.fileSystem().nodes();
    for (NodeId node = 0; node < tree.size(); ++node) {
      if (tree.isFile(node) && !tree.isRemoved(node)) addKnown(tree.part(node));
    }
    for (const auto& document : addon::packaging::presentDocuments(package_)) {
      addKnown(PartName(opc::fromUtf8(document.partName)));
    }
    const std::string screenshot = addon::packaging::screenshotPart(package_);
    if (!screenshot.empty()) addKnown(PartName(opc::fromUtf8(screenshot)));
    for (const std::u16string& type :
         {std::u16string(opc::model::kCorePropertiesRelationship),
          HostPropertiesPart::relationshipType(), FileTreePart::relationshipType()}) {
      for (const Relationship& one : model_.getRelationshipsByType(type)) {
        if (one.getTargetMode() == TargetMode::Internal) addKnown(one.targetName());
      }
    }
    if (model_.getRelationshipsByType(FileTreePart::relationshipType()).empty()) {
      addKnown(PartName(FileTreePart::kDefaultName));
    }
  }

  void addKnown(const PartName& name) {
    if (model_.hasPart(name)) addKnown(model_.getPart(name)->id());
  }

  void addKnown(PartId part) {
    if (part >= known_.size()) known_.resize(std::max(part + 1, 2 * known_.size()));
    known_[part] = true;
  }

  void readParts() {
    model_.visitParts("", [&](PartId part) {
      if (part < known_.size() && known_[part]) return;
      const std::string type = model_.contentTypeOf(part).ascii();
      if (opc::toLowerAscii(type).starts_with(kSignatureTypes)) return;
      content_.items.push_back({partItem(package_, part), type});
    });
  }

  /// Items that are not parts: they have names, but no ids.
  void readItems() {
    std::set<std::string, std::less<>> names;
    for (auto& name : model_.strayItems()) names.insert(std::move(name));
    for (auto& name : model_.untypedItems()) names.insert(std::move(name));
    const auto& items = model_.physical();
    for (ItemIndex index = 0; index < items.itemCount() && !names.empty(); ++index) {
      if (items.isRemoved(index) || names.erase(std::string(items.itemName(index))) == 0) continue;
      const opc::interfaces::ItemInfo info = items.itemInfo(index);
      Item item{"/" + std::string(info.name), {}, std::nullopt, std::nullopt, index};
      item.info.itemName = info.name;
      item.info.crc = info.crc;
      item.info.size = info.size;
      item.info.packedSize = info.packedSize;
      content_.items.push_back({std::move(item), ""});
    }
  }

  void readRelationships() {
    OwnRelationships own;
    addRelationships("/", model_, own);
    const auto& items = model_.physical();
    for (ItemIndex index = 0; index < items.itemCount(); ++index) {
      if (items.isRemoved(index) || items.itemKind(index) != ItemKind::File) continue;
      const std::string_view name = items.itemName(index);
      if (!opc::model::isRelationshipsItemName(name)) continue;
      const std::string source = opc::model::sourceOfRelationships(name);
      if (source.empty() || source.ends_with('/')) continue;
      const PartName part = PartName::fromItemName(source);
      if (!model_.hasPart(part)) continue;
      const auto found = model_.getPart(part);
      addRelationships("/" + std::string(model_.itemNameOf(found->id())), *found, own);
    }
  }

  void addRelationships(const std::string& source, opc::model::RelationshipSource& from,
                        OwnRelationships& own) {
    std::vector<std::string> lines;
    from.visitRelationships([&](const Relationship& one) {
      const bool isOwn = source == "/" && own.take(one);
      if (isOwn || one.getType().starts_with(kSignatureRelationships)) return;
      lines.push_back(lineOf(one));
    });
    if (lines.empty()) return;
    std::sort(lines.begin(), lines.end());
    content_.relationships.emplace(source, std::move(lines));
  }

  AddonPackage& package_;
  opc::model::Package& model_;
  std::vector<bool> known_;  // by part
  OtherContent content_;
};

}  // namespace

bool isAddon(AddonPackage& package) {
  const std::u16string type = HostPropertiesPart::relationshipType();
  if (!package.logicalPackage().getRelationshipsByType(type).empty()) return true;
  auto& tree = package.fileSystem();
  return !tree.getChildren(tree.getRoot()).empty();
}

OtherContent readOtherContent(AddonPackage& package) {
  return Reader(package).read();
}

}  // namespace addon::comparison
