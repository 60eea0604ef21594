// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "opc/checks/PackageFinding.h"
#include "opc/checks/detail/CheckedContainer.h"
#include "opc/model/ContentTypes.h"
#include "opc/model/InvalidXMLDocument.h"
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
  opc::model::ContentTypes types;
  /// Whether the content types are sound. Else nothing can be said about what they lack.
  bool areTypesKnown = false;
  /// That nothing has a type: said once, and not for every item.
  bool areTypesEmpty = false;
  opc::model::PartIndex index;
  /// Items without content type that relationships lead to or start from.
  std::set<opc::model::PartId> relatedUntyped;
  /// That of the package to its core properties, when there is one.
  std::optional<opc::model::Relationship> coreProperties;

  /// "/a/b.xml"
  std::string partName(opc::model::PartId part) const {
    return "/" + std::string(index.name(part));
  }
  std::vector<opc::interfaces::ItemIndex> itemsOf(opc::model::PartId part) const {
    if (index.isInPieces(part)) return index.pieces(part);
    return {index.item(part)};
  }
  bool isDamaged(const std::vector<opc::interfaces::ItemIndex>& items) const;
  bool isPart(opc::model::PartId part) const {
    return index.role(part) == opc::model::ItemRole::Part;
  }
};

/// Turns the faults of one document of the package, or of its names, into findings.
class FindingSink final : public opc::model::FaultSink {
 public:
  /// `otherwise` is for rules without a finding of their own; `part` the document's name, which
  /// stands for items that are not named.
  FindingSink(Report& report, FindingId otherwise, std::string part)
      : report_(report), otherwise_(otherwise), part_(std::move(part)) {}

  void add(const opc::FormatError& fault, std::string_view itemName) override;
  bool isUsed() const { return isUsed_; }

 private:
  Report& report_;
  FindingId otherwise_;
  std::string part_;
  bool isUsed_ = false;
};

/// Runs what reads a document of the package. What ends the reading becomes a finding, `otherwise`
/// unless the rule has one of its own. Returns whether it came to its end. Throws opc::SystemError.
template <typename Read>
bool readDocument(Report& report, FindingId otherwise, const std::string& part, const Read& read) {
  try {
    read();
    return true;
  } catch (const opc::SystemError&) {
    throw;
  } catch (const opc::model::InvalidXMLDocument& fault) {
    addFinding(report, findingOfRule(fault.rule(), otherwise), part, fault.what(), fault.rule(),
               static_cast<std::size_t>(fault.line()));
  } catch (const opc::FormatError& fault) {
    addFinding(report, findingOfRule(fault.rule(), otherwise), part, fault.what(), fault.rule());
  } catch (const opc::Exception& fault) {
    addFinding(report, otherwise, part, fault.what(), "");
  }
  return false;
}

// The checks, in the order in which they need each other.
void checkContentTypesStream(Packaging& packaging);
void checkPartNames(Packaging& packaging);
void checkRelationships(Packaging& packaging);
void checkCoreProperties(Packaging& packaging);
void checkStrayItems(Packaging& packaging);
void checkPartTypes(Packaging& packaging);
void checkNormalisation(Packaging& packaging);

}  // namespace opc::checks::detail
