// SPDX-License-Identifier: MIT
#include "opc/model/FaultSink.h"

namespace opc::model {
namespace {

class RefusingSink final : public FaultSink {
 public:
  void add(const FormatError& fault, std::string_view) override { throw fault; }
};

}  // namespace

FormatError FaultSink::tooManyFaults(const FormatError& last) {
  return {last.rule(), "there are more than " + std::to_string(kMaxFaults) +
                           " faults; the rest is not looked at"};
}

FaultSink& FaultSink::refusing() {
  static RefusingSink sink;
  return sink;
}

void DelayedFaults::add(const FormatError& fault, std::string_view itemName) {
  if (faults_.size() == kMaxFaults) throw tooManyFaults(fault);
  faults_.emplace_back(fault, itemName);
}

void DelayedFaults::handOnTo(FaultSink& faults) const {
  for (const auto& [fault, itemName] : faults_) faults.add(fault, itemName);
}

}  // namespace opc::model
