// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
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

  /// So many faults of one document are looked at: who finds the next one throws tooManyFaults.
  static constexpr std::size_t kMaxFaults = 10'000;
  static FormatError tooManyFaults(const FormatError& last);

  /// The one that throws.
  static FaultSink& refusing();
};

/// Keeps the faults of a document until it is known to be well-formed: if it is not, they mean
/// nothing.
class DelayedFaults final : public FaultSink {
 public:
  /// Throws tooManyFaults.
  void add(const FormatError& fault, std::string_view itemName) override;

  /// Runs `parse` with one, and hands on to `faults` what it holds, unless `parse` throws something
  /// else than a fault.
  template <typename Parse>
  static void collect(FaultSink& faults, const Parse& parse) {
    DelayedFaults delayed;
    try {
      parse(delayed);
    } catch (const FormatError&) {
      delayed.handOnTo(faults);
      throw;
    }
    delayed.handOnTo(faults);
  }

 private:
  void handOnTo(FaultSink& faults) const;

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
