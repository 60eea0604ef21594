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

}  // namespace opc::model
