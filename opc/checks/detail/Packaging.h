// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "opc/checks/PackageFindings.h"
#include "opc/checks/detail/CheckedContainer.h"
#include "opc/checks/detail/FaultFindings.h"
#include "opc/model/ContentTypes.h"
#include "opc/model/PartIndex.h"
#include "opc/model/PieceStream.h"
#include "opc/model/RelationshipSet.h"

namespace opc::checks::detail {

/// What the checks of the packaging rules work on, and find out for those that follow.
struct Packaging {
  Packaging(CheckedContainer& checked, Report& findings)
      : container(checked), report(findings), index(checked) {}

  CheckedContainer& container;
  Report& report;
  model::ContentTypes types;
  /// Whether the content types are sound. Else nothing can be said about what they lack.
  bool areTypesKnown = false;
  /// That nothing has a type: said once, and not for every item.
  bool areTypesEmpty = false;
  model::PartIndex index;
  /// Items without content type that relationships lead to or start from.
  std::set<model::PartId> relatedUntyped;
  /// That of the package to its core properties, when there is one.
  std::optional<model::Relationship> coreProperties;

  /// "/a/b.xml"
  std::string partName(model::PartId part) const { return "/" + std::string(index.name(part)); }
  std::vector<interfaces::ItemIndex> itemsOf(model::PartId part) const {
    if (index.isInPieces(part)) return index.pieces(part);
    return {index.item(part)};
  }
  bool isDamaged(const std::vector<interfaces::ItemIndex>& items) const;
  bool isPart(model::PartId part) const { return index.role(part) == model::ItemRole::Part; }
};

/// Turns the faults of one document of the package, or of its names, into findings.
class FindingSink final : public model::FaultSink {
 public:
  /// `otherwise` is for rules without a finding of their own; `part` the document's name, which
  /// stands for items that are not named.
  FindingSink(Report& report, FindingId otherwise, std::string part)
      : report_(report), otherwise_(otherwise), part_(std::move(part)) {}

  void add(const FormatError& fault, std::string_view itemName) override;
  bool isUsed() const { return isUsed_; }

 private:
  Report& report_;
  FindingId otherwise_;
  std::string part_;
  bool isUsed_ = false;
};

/// Turns the faults of items and of what leads to them into findings. Of all relationships that
/// lead to or start from one item without content type, only the first is a finding.
class NamesSink final : public model::FaultSink {
 public:
  explicit NamesSink(Packaging& packaging)
      : packaging_(packaging), findings_(packaging.report, kBadContentTypes, "") {}

  void add(const FormatError& fault, std::string_view itemName) override;

 private:
  Packaging& packaging_;
  FindingSink findings_;
};

/// Runs what reads a document of the package. What ends the reading becomes a finding, `otherwise`
/// unless the rule has one of its own. Returns whether it came to its end. Throws SystemError.
template <typename Read>
bool readDocument(Report& report, FindingId otherwise, const std::string& part, const Read& read) {
  try {
    read();
    return true;
  } catch (const SystemError&) {
    throw;
  } catch (const Exception& fault) {
    addFault(report, fault, otherwise, part);
  }
  return false;
}

/// Checks the packaging rules: names, content types, every relationships part, core properties.
/// Findings 201 to 228. Other parts are bytes to these rules, whatever their type. Throws
/// SystemError.
void checkPackaging(CheckedContainer& container, Report& report);

// Its steps, in the order in which they need each other.
void checkContentTypesStream(Packaging& packaging);
void checkPartNames(Packaging& packaging);
void checkRelationships(Packaging& packaging);
void checkCoreProperties(Packaging& packaging);
void checkStrayItems(Packaging& packaging);
void checkPartTypes(Packaging& packaging);
void checkNormalisation(Packaging& packaging);

}  // namespace opc::checks::detail
