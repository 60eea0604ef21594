// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "opc/HashIndex.h"
#include "opc/interfaces/IPhysicalPackage.h"
#include "opc/model/FaultSink.h"

namespace opc::model {

/// "a/b.xml/[2].last.piece" taken apart.
struct PieceName {
  std::string_view whole;    ///< "a/b.xml"
  std::uint64_t number = 0;  ///< beyond what any container holds when it has very many digits
  std::string_view digits;   ///< of the number, without leading zeros
  bool last = false;
};

/// Nothing when the name is not that of a piece. `whole` is not checked.
std::optional<PieceName> parsePieceName(std::string_view itemName);

/// Whether this is the item of the content types, in any case.
bool isContentTypesName(std::string_view itemName);

/// The pieces of interleaved items, gathered from a directory in any order.
class PieceSequences {
 public:
  struct Sequence {
    std::string_view name;                     ///< as the first piece spells it
    std::vector<interfaces::ItemIndex> items;  ///< in the order of their numbers
  };
  struct Result {
    std::vector<Sequence> complete;
    std::vector<interfaces::ItemIndex> strays;  ///< pieces that make nothing whole
  };

  void add(const PieceName& name, interfaces::ItemIndex item);

  /// A sequence that has a number twice goes to `faults`, and is left out of the result.
  Result finish(FaultSink& faults);

 private:
  struct Piece {
    std::uint64_t number;
    std::string_view digits;
    interfaces::ItemIndex item;
    bool last;
    std::string_view whole;
  };
  static bool hasNumbersOnce(const std::vector<Piece>& pieces, FaultSink& faults);
  static bool isComplete(const std::vector<Piece>& pieces);

  HashIndex<std::uint32_t> byName_;
  std::vector<std::vector<Piece>> sequences_;
};

/// The items of the content types stream: none, one, or its pieces.
std::vector<interfaces::ItemIndex> findContentTypes(const interfaces::IPhysicalPackage& physical,
                                                    FaultSink& faults = FaultSink::refusing());

}  // namespace opc::model
