// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "opc/Exception.h"

namespace opc::model {

/// Where a reader takes what breaks a rule. Who uses a package stops at the first fault; who checks
/// one wants them all, and has the reader leave out what is at fault and go on.
class FaultSink {
 public:
  virtual ~FaultSink() = default;

  /// Throws `fault`, or keeps it and returns. `itemName` is the item that is to blame, "" the
  /// document that is being read.
  virtual void add(const FormatError& fault, std::string_view itemName) = 0;

  /// The one that throws.
  static FaultSink& refusing();
};

/// Keeps the faults of a document until it is known to be well-formed: if it is not, they mean
/// nothing.
class DelayedFaults final : public FaultSink {
 public:
  void add(const FormatError& fault, std::string_view itemName) override;
  void handOnTo(FaultSink& faults) const;

 private:
  std::vector<std::pair<FormatError, std::string>> faults_;
};

/// Reads a piece of a document. When it breaks a rule the piece is left out.
template <typename Read>
void readPiece(FaultSink& faults, const Read& read) {
  try {
    read();
  } catch (const FormatError& fault) {
    faults.add(fault, {});
  }
}

}  // namespace opc::model
