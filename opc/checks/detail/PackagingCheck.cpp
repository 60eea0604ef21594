// SPDX-License-Identifier: MIT
#include "opc/checks/detail/PackagingCheck.h"

#include <algorithm>

#include "opc/checks/detail/Packaging.h"
#include "opc/model/XercesHelper.h"

namespace opc::checks::detail {

bool Packaging::isDamaged(const std::vector<opc::interfaces::ItemIndex>& items) const {
  return std::any_of(items.begin(), items.end(),
                     [this](auto item) { return container.state(item).isDamaged; });
}

void FindingSink::add(const opc::FormatError& fault, std::string_view itemName) {
  isUsed_ = true;
  std::string name = part_;
  if (!itemName.empty()) name = itemName;
  // The content types are an item, and no part.
  const bool isPart = !itemName.empty() && !opc::model::isContentTypesName(itemName);
  addFinding(report_, findingOfRule(fault.rule(), otherwise_), isPart ? "/" + name : name,
             fault.what(), fault.rule());
}

void checkPackaging(CheckedContainer& container, Report& report) {
  const opc::model::XercesGuard guard;  // one start for all documents
  Packaging packaging(container, report);
  checkContentTypesStream(packaging);
  checkPartNames(packaging);
  checkRelationships(packaging);
  checkCoreProperties(packaging);
  checkStrayItems(packaging);
  checkPartTypes(packaging);
  checkNormalisation(packaging);
}

}  // namespace opc::checks::detail
