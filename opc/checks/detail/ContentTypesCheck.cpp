// SPDX-License-Identifier: MIT
#include <string>

#include "opc/checks/detail/Packaging.h"
#include "opc/model/FormatConstants.h"

namespace opc::checks::detail {

using model::ContentType;
using model::ContentTypes;
using model::findContentTypes;
using model::ItemRole;
using model::kContentTypesItem;

namespace {

// Clashing pieces are reported together with those of all parts.
class SilentSink final : public model::FaultSink {
 public:
  void add(const FormatError&, std::string_view) override { isUsed_ = true; }
  bool isUsed() const { return isUsed_; }

 private:
  bool isUsed_ = false;
};

std::string_view wholeName(std::string_view itemName) {
  const auto piece = model::parsePieceName(itemName);
  return piece ? piece->whole : itemName;
}

void checkPartType(Packaging& packaging, model::PartId part) {
  static const ContentType kRelationships = ContentType::fromAscii(model::kRelationshipsType);
  const ContentType* type = packaging.types.find(packaging.index.name(part));
  if (type != nullptr && *type == kRelationships) {
    packaging.add(kRelationshipsType, part,
                  "it has the content type of relationships parts, but not the name of one",
                  "CT-12");
  }
}

void checkOverrides(Packaging& packaging) {
  for (const ContentTypes::Override& entry : packaging.types.overrides()) {
    const auto part = packaging.index.find(entry.itemName);
    if (part) continue;
    packaging.report.addClipped(kOverrideWithoutPart, "/" + entry.itemName,
                                "it has a type override, but is not in the package", "CT-14");
  }
}

}  // namespace

void checkContentTypesStream(Packaging& packaging) {
  SilentSink silent;
  const auto items = findContentTypes(packaging.container, silent);
  if (items.empty()) {
    if (silent.isUsed()) return;
    return packaging.report.addClipped(kBadContentTypes, {}, opc::model::kNoContentTypes, "CT-1");
  }
  const std::string name(wholeName(packaging.container.itemName(items.front())));
  if (name != kContentTypesItem) {
    packaging.report.addClipped(kContentTypesSpelling, name,
                                "it is not spelled '" + std::string(kContentTypesItem) + "'",
                                "CT-1");
  }
  packaging.areTypesKnown = packaging.read(
      items, kBadContentTypes, name,
      [&](auto& stream, auto& faults) { packaging.types = ContentTypes::read(stream, faults); });
  const bool isEmpty = packaging.types.defaults().empty() && packaging.types.overrides().empty();
  packaging.areTypesEmpty = packaging.areTypesKnown && isEmpty;
  if (packaging.areTypesEmpty) {
    packaging.report.addClipped(kEmptyContentTypes, name, "it has no entries", "CT-2");
  }
}

void checkPartTypes(Packaging& packaging) {
  checkOverrides(packaging);
  packaging.index.forEach(ItemRole::Part,
                          [&](model::PartId part) { checkPartType(packaging, part); });
  if (!packaging.areTypesKnown || packaging.areTypesEmpty) return;
  packaging.index.forEach(ItemRole::Relationships, [&](model::PartId part) {
    if (packaging.types.find(packaging.index.name(part)) != nullptr) return;
    packaging.add(kRelationshipsType, part,
                  "the content types have no entry for this relationships part", "CT-12");
  });
}

}  // namespace opc::checks::detail
