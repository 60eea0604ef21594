// SPDX-License-Identifier: MIT
#include "opc/model/FaultSink.h"

namespace opc::model {
namespace {

class RefusingSink final : public FaultSink {
 public:
  void add(const FormatError& fault, std::string_view) override { throw fault; }
};

}  // namespace

FaultSink& FaultSink::refusing() {
  static RefusingSink sink;
  return sink;
}

void DelayedFaults::add(const FormatError& fault, std::string_view itemName) {
  // Of so many, nobody prints all: the rest is counted.
  constexpr std::size_t kMostTexts = 10'000;
  if (faults_.size() < kMostTexts) {
    faults_.emplace_back(fault, itemName);
  } else {
    faults_.emplace_back(FormatError(fault.rule(), "", fault.code()), std::string());
  }
}

void DelayedFaults::handOnTo(FaultSink& faults) const {
  for (const auto& [fault, itemName] : faults_) faults.add(fault, itemName);
}

}  // namespace opc::model
