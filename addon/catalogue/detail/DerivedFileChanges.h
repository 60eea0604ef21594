// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "addon/catalogue/detail/Database.h"
#include "addon/catalogue/detail/SiteState.h"
#include "opc/ByteBuffer.h"

namespace addon::catalogue::detail {

/// A text as pieces of others, which have to outlive it.
using Pieces = std::vector<std::string_view>;

/// `records.ndjson`, of which only some shards have changed.
class LinesChange {
 public:
  /// `file` is the file for the root of `old`, which must outlive it.
  LinesChange(opc::ByteBuffer file, const SiteState& old);

  /// The lines of the new file, the sequence left out; nothing if the old one is not what it should
  /// be. `keys` are the add-ons that can have changed.
  std::optional<Pieces> make(const SiteState& now, const std::set<std::string>& keys);

 private:
  opc::ByteBuffer file_;
  std::string_view before_;  // its lines, the sequence left out
  const SiteState& old_;
  std::vector<std::string> texts_;
};

/// The front page and its terms, in which only some cards have changed.
class ListChange {
 public:
  struct Texts {
    std::string page;
    std::string terms;
  };
  struct Files {
    opc::ByteBuffer page;
    opc::ByteBuffer terms;
  };

  /// The two files for the root before.
  explicit ListChange(Files before) : before_(std::move(before)) {}

  /// Makes the new ones of them, of `fresh`, a list of nothing but the cards of `records`, which
  /// are in its order, and of what follows each card in `database`. `keys` are the add-ons that can
  /// have changed. Returns false if the old files are not what they should be.
  bool make(const Texts& fresh, const std::vector<Record>& records, const Database& database,
            const std::set<std::string>& keys);

  Pieces page;
  Pieces terms;

 private:
  Files before_;
};

}  // namespace addon::catalogue::detail
