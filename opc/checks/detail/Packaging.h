// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "opc/checks/PackageFindings.h"
#include "opc/checks/SignatureDemands.h"
#include "opc/checks/detail/CheckedContainer.h"
#include "opc/checks/detail/FaultFindings.h"
#include "opc/model/ContentTypes.h"
#include "opc/model/PartIndex.h"
#include "opc/model/RelationshipSet.h"

namespace opc::checks::detail {

/// What the checks of the packaging rules work on, and what they find out for later checks.
struct Packaging {
  Packaging(CheckedContainer& checked, Report& findings)
      : container(checked), report(findings), index(checked) {}

  CheckedContainer& container;
  Report& report;
  model::ContentTypes types;
  /// Whether the content types are valid. If not, nothing is reported as missing from them.
  bool areTypesKnown = false;
  /// Whether nothing has a type, which is reported once, not for every item.
  bool areTypesEmpty = false;
  model::PartIndex index;
  /// Items without a content type that relationships lead to or start from.
  std::set<model::PartId> relatedUntyped;
  /// Items that are not parts and that ZIP programs may unpack as something else, which is
  /// reported.
  std::set<interfaces::ItemIndex> ambiguous;
  /// The package's relationship to its core properties, if there is one.
  std::optional<model::Relationship> coreProperties;
  /// Whether a relationship of the package leads to the origin of signatures.
  bool hasSignatureOrigin = false;

  /// "/a/b.xml"
  std::string partName(model::PartId part) const { return "/" + std::string(index.name(part)); }
  std::vector<interfaces::ItemIndex> itemsOf(model::PartId part) const {
    if (index.isInPieces(part)) return index.pieces(part);
    return {index.item(part)};
  }
  bool isDamaged(const std::vector<interfaces::ItemIndex>& items) const;
  /// Runs `read` on a document of the package, unless it is damaged. Adds the findings for the
  /// faults that it reports and for what it throws, as addFault() does. Returns whether there were
  /// none. Throws SystemError.
  bool read(const std::vector<interfaces::ItemIndex>& items, FindingId otherwise,
            const std::string& name,
            const std::function<void(InputStream& stream, model::FaultSink& faults)>& read) const;
  void add(FindingId id, model::PartId part, std::string_view message,
           std::string_view rule) const {
    report.addClipped(id, partName(part), message, rule);
  }
  bool isPart(model::PartId part) const { return index.role(part) == model::ItemRole::Part; }
};

/// Adds the findings for the faults of one document of the package, or of its names.
class FindingSink final : public model::FaultSink {
 public:
  /// `otherwise` is for rules without a finding of their own; `part` is the document's name, used
  /// for faults without an item name.
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

/// Adds the findings for faulty names and relationships. Of all relationships that lead to or start
/// from one item without a content type, only the first is reported.
class NamesSink final : public model::FaultSink {
 public:
  explicit NamesSink(Packaging& packaging)
      : packaging_(packaging), findings_(packaging.report, kBadContentTypes, "") {}

  void add(const FormatError& fault, std::string_view itemName) override;

 private:
  Packaging& packaging_;
  FindingSink findings_;
};

/// Checks the packaging rules: names, content types, every relationships part, core properties.
/// Findings 201 to 228. Does not look into other parts, except for signatures and what they cover:
/// findings 601 to 609. Throws SystemError, and Exception if signatures cannot be checked here.
void checkPackaging(CheckedContainer& container, const SignatureDemands& demands, Report& report);

// Its steps. Each needs what the earlier ones found out.
void checkContentTypesStream(Packaging& packaging);
void checkPartNames(Packaging& packaging);
void checkRelationships(Packaging& packaging);
void checkCoreProperties(Packaging& packaging);
void checkUnpackedPaths(Packaging& packaging);
void checkStrayItems(Packaging& packaging);
void checkPartTypes(Packaging& packaging);
void checkNormalisation(Packaging& packaging);
void checkSignatures(Packaging& packaging, const SignatureDemands& demands);

}  // namespace opc::checks::detail
