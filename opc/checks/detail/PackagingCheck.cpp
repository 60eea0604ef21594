// SPDX-License-Identifier: MIT
#include <algorithm>

#include "opc/checks/detail/Packaging.h"
#include "opc/model/PieceStream.h"
#include "opc/model/XercesHelper.h"

namespace opc::checks::detail {

bool Packaging::isDamaged(const std::vector<interfaces::ItemIndex>& items) const {
  return std::any_of(items.begin(), items.end(),
                     [this](auto item) { return container.state(item).isDamaged; });
}

bool Packaging::read(
    const std::vector<interfaces::ItemIndex>& items, FindingId otherwise, const std::string& name,
    const std::function<void(InputStream& stream, model::FaultSink& faults)>& read) const {
  if (isDamaged(items)) return false;
  FindingSink faults(report, otherwise, name);
  try {
    model::PieceStream stream(container, items);
    read(stream, faults);
    return !faults.isUsed();
  } catch (const SystemError&) {
    throw;
  } catch (const Exception& fault) {
    addFault(report, fault, otherwise, name);
    return false;
  }
}

void FindingSink::add(const FormatError& fault, std::string_view itemName) {
  isUsed_ = true;
  std::string name = part_;
  if (!itemName.empty()) name = itemName;
  // The content types are an item, but not a part.
  const bool isPart = !itemName.empty() && !model::isContentTypesName(itemName);
  addFault(report_, fault, otherwise_, isPart ? "/" + name : name);
}

void NamesSink::add(const FormatError& fault, std::string_view itemName) {
  if (fault.rule() == "CT-10") {
    if (!packaging_.areTypesKnown) return;
    const auto part = packaging_.index.find(itemName);
    if (part && !packaging_.relatedUntyped.insert(*part).second) return;
  }
  findings_.add(fault, itemName);
}

void checkPackaging(CheckedContainer& container, const SignatureDemands& demands, Report& report) {
  Packaging packaging(container, report);
  checkContentTypesStream(packaging);
  checkPartNames(packaging);
  checkRelationships(packaging);
  checkCoreProperties(packaging);
  checkUnpackedPaths(packaging);
  checkStrayItems(packaging);
  checkPartTypes(packaging);
  checkNormalisation(packaging);
  checkSignatures(packaging, demands);
}

}  // namespace opc::checks::detail
