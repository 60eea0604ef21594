// SPDX-License-Identifier: MIT
#include "opc/model/PieceSequences.h"

#include <algorithm>
#include <limits>
#include <string>
#include <tuple>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/FormatConstants.h"
#include "opc/model/NameKey.h"

namespace opc::model {

using interfaces::ItemIndex;

namespace {

bool equalFolded(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return toLowerAscii(x) == toLowerAscii(y);
         });
}

// Decimal digits without leading zeros.
std::optional<std::uint64_t> parseNumber(std::string_view digits) {
  constexpr std::size_t kMaxDigits = 18;
  if (digits.empty() || (digits.size() > 1 && digits[0] == '0')) return std::nullopt;
  std::uint64_t number = 0;
  for (const char c : digits) {
    if (c < '0' || c > '9') return std::nullopt;
    if (digits.size() <= kMaxDigits) number = number * 10 + static_cast<unsigned>(c - '0');
  }
  return digits.size() <= kMaxDigits ? number : std::numeric_limits<std::uint64_t>::max();
}

bool isFile(const interfaces::ItemInfo& info) {
  return info.kind == interfaces::ItemKind::File;
}

// The content types stream when it is not there whole.
std::vector<ItemIndex> findContentTypesPieces(const interfaces::IPhysicalPackage& physical,
                                              FaultSink& faults) {
  PieceSequences pieces;
  const std::size_t count = physical.itemCount();
  for (ItemIndex item = 0; item < count; ++item) {
    if (physical.isRemoved(item)) continue;
    const auto piece = parsePieceName(physical.itemName(item));
    if (!piece || !isContentTypesName(piece->whole)) continue;
    if (isFile(physical.itemInfo(item))) pieces.add(*piece, item);
  }
  const PieceSequences::Result result = pieces.finish(faults);
  return result.complete.empty() ? std::vector<ItemIndex>() : result.complete.front().items;
}

}  // namespace

bool isContentTypesName(std::string_view itemName) {
  return equalFolded(itemName, kContentTypesItem);
}

std::optional<PieceName> parsePieceName(std::string_view itemName) {
  const std::size_t slash = itemName.rfind('/');
  if (slash == std::string_view::npos || slash == 0) return std::nullopt;
  const std::string_view piece = itemName.substr(slash + 1);
  const std::size_t close = piece.find(']');
  if (!piece.starts_with('[') || close == std::string_view::npos) return std::nullopt;

  const std::string_view digits = piece.substr(1, close - 1);
  const auto number = parseNumber(digits);
  const std::string_view suffix = piece.substr(close + 1);
  const bool last = equalFolded(suffix, ".last.piece");
  if (!number || !(last || equalFolded(suffix, ".piece"))) return std::nullopt;
  return PieceName{itemName.substr(0, slash), *number, digits, last};
}

void PieceSequences::add(const PieceName& name, interfaces::ItemIndex item) {
  const std::uint64_t hash = nameHash(name.whole);
  const auto* known = byName_.find(hash, [&](std::uint32_t sequence) {
    return equalKeys(sequences_[sequence].front().whole, name.whole);
  });
  const std::size_t sequence = known != nullptr ? *known : sequences_.size();
  if (known == nullptr) {
    sequences_.emplace_back();
    byName_.insert(hash, static_cast<std::uint32_t>(sequence));
  }
  sequences_[sequence].push_back({name.number, name.digits, item, name.last, name.whole});
}

bool PieceSequences::hasNumbersOnce(const std::vector<Piece>& pieces, FaultSink& faults) {
  const auto twice =
      std::adjacent_find(pieces.begin(), pieces.end(),
                         [](const Piece& a, const Piece& b) { return a.digits == b.digits; });
  if (twice == pieces.end()) return true;
  faults.add(FormatError("IL-3", "piece " + std::string(twice->digits) + " of '/" +
                                     std::string(twice->whole) + "': there are two of that number"),
             twice->whole);
  return false;
}

bool PieceSequences::isComplete(const std::vector<Piece>& pieces) {
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    if (pieces[i].number != i || pieces[i].last != (i + 1 == pieces.size())) return false;
  }
  return true;
}

PieceSequences::Result PieceSequences::finish(FaultSink& faults) {
  Result result;
  for (std::vector<Piece>& pieces : sequences_) {
    std::sort(pieces.begin(), pieces.end(), [](const Piece& a, const Piece& b) {
      return std::tie(a.number, a.digits) < std::tie(b.number, b.digits);
    });
    if (!hasNumbersOnce(pieces, faults)) continue;
    std::vector<interfaces::ItemIndex> items;
    items.reserve(pieces.size());
    for (const Piece& piece : pieces) items.push_back(piece.item);
    if (isComplete(pieces)) {
      result.complete.push_back({pieces.front().whole, std::move(items)});
    } else {
      result.strays.insert(result.strays.end(), items.begin(), items.end());
    }
  }
  return result;
}

std::vector<ItemIndex> findContentTypes(const interfaces::IPhysicalPackage& physical,
                                        FaultSink& faults) {
  const std::size_t count = physical.itemCount();
  for (ItemIndex item = 0; item < count; ++item) {
    if (physical.isRemoved(item)) continue;
    if (!isContentTypesName(physical.itemName(item))) continue;
    if (isFile(physical.itemInfo(item))) return {item};
  }
  return findContentTypesPieces(physical, faults);
}

}  // namespace opc::model
