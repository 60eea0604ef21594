// SPDX-License-Identifier: MIT
#include "addon/catalogue/detail/DerivedFileChanges.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "addon/catalogue/SitePaths.h"

namespace addon::catalogue::detail {

namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::string_view kCard = "<li class=\"card\">";

std::string_view textOf(const opc::ByteBuffer& file) {
  if (file.size() == 0) return "";  // has no memory
  return {reinterpret_cast<const char*>(file.data()), file.size()};
}

/// The same as find(), and faster in large texts.
std::size_t placeOf(std::string_view text, std::string_view wanted, std::size_t from = 0) {
  const void* found =
      ::memmem(text.data() + from, text.size() - from, wanted.data(), wanted.size());
  return found == nullptr ? kNone
                          : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

/// What is between two places of a text becomes another one.
struct Edit {
  std::size_t begin;
  std::size_t end;
  std::string_view text;
};

void append(std::string_view before, const std::vector<Edit>& edits, Pieces& pieces) {
  std::size_t done = 0;
  for (const Edit& edit : edits) {
    pieces.push_back(before.substr(done, edit.begin - done));
    pieces.push_back(edit.text);
    done = edit.end;
  }
  pieces.push_back(before.substr(done));
}

/// A page in three parts; the cards begin with the first one.
struct PageParts {
  std::string_view head;
  std::string_view cards;
  std::string_view tail;
};

std::optional<PageParts> partsOf(std::string_view page) {
  constexpr std::string_view kBegin = "<ul class=\"cards\" id=\"list\">";
  const std::size_t begin = placeOf(page, kBegin);
  const std::size_t end = page.rfind("</ul>");
  if (begin == kNone || end == kNone || end < begin + kBegin.size()) return std::nullopt;
  const std::size_t first = begin + kBegin.size();
  return PageParts{page.substr(0, first), page.substr(first, end - first), page.substr(end)};
}

/// The same of the terms, which have a line for each card.
std::optional<PageParts> partsOfTerms(std::string_view terms) {
  constexpr std::string_view kBegin = "`\n";
  const std::size_t begin = terms.find(kBegin);
  const std::size_t end = terms.rfind("`);");
  if (begin == kNone || end == kNone || end < begin + kBegin.size()) return std::nullopt;
  const std::size_t first = begin + kBegin.size();
  return PageParts{terms.substr(0, first), terms.substr(first, end - first), terms.substr(end)};
}

/// The beginning of the card of an add-on.
std::size_t cardOf(std::string_view cards, const std::string& key) {
  const std::string link = "href=\"" + std::string(kPageFolder) + '/' + pathName(key) + '/';
  const std::size_t found = placeOf(cards, link);
  return found == kNone ? kNone : cards.rfind(kCard, found);
}

std::size_t endOfCard(std::string_view cards, std::size_t begin) {
  return std::min(placeOf(cards, kCard, begin + 1), cards.size());
}

/// Where lines begin, from the first one on, as they are asked for in order.
class LinePlaces {
 public:
  explicit LinePlaces(std::string_view lines) : lines_(lines) {}

  /// Nothing if there are fewer lines.
  std::size_t of(std::size_t number) {
    for (; at_ < number; ++at_) {
      const std::size_t end = lines_.find('\n', place_);
      if (end == kNone) return kNone;
      place_ = end + 1;
    }
    return place_;
  }

 private:
  std::string_view lines_;
  std::size_t at_ = 0;
  std::size_t place_ = 0;
};

/// The edits of the lines that belong to cards; nothing if there are fewer lines than cards.
std::optional<std::vector<Edit>> editsOfTerms(std::string_view cards, std::string_view lines,
                                              std::string_view fresh,
                                              const std::vector<Edit>& edits) {
  std::vector<Edit> found;
  LinePlaces places(lines);
  LinePlaces freshPlaces(fresh);
  std::size_t seen = 0;   // bytes of cards
  std::size_t count = 0;  // cards before them
  std::size_t used = 0;   // lines of the fresh ones
  for (const Edit& edit : edits) {
    for (; seen < edit.begin; ++count) seen = endOfCard(cards, seen);
    const bool isRemoval = edit.end != edit.begin;
    const std::size_t begin = places.of(count);
    const std::size_t end = isRemoval && begin != kNone ? lines.find('\n', begin) + 1 : begin;
    if (begin == kNone || (isRemoval && end == 0)) return std::nullopt;
    std::string_view text;
    if (!isRemoval) {
      const std::size_t from = freshPlaces.of(used++);
      const std::size_t to = freshPlaces.of(used);
      if (from == kNone || to == kNone) return std::nullopt;
      text = fresh.substr(from, to - from);
    }
    found.push_back({begin, end, text});
  }
  return found;
}

std::uint64_t countLines(std::string_view text) {
  std::uint64_t count = 0;
  for (std::size_t end = text.find('\n'); end != kNone; end = text.find('\n', end + 1)) ++count;
  return count;
}

std::string linesOf(const Shard& shard) {
  std::string text;
  for (const auto& [key, lines] : shard.addons()) {
    for (const std::string& line : lines) text += line + '\n';
  }
  return text;
}

}  // namespace

LinesChange::LinesChange(opc::ByteBuffer file, const SiteState& old)
    : file_(std::move(file)), old_(old) {
  const std::string_view lines = textOf(file_);
  const std::string start = "{\"sequence\":" + std::to_string(old.sequence()) + ',';
  if (!old.root() || !lines.starts_with(start) || countLines(lines) != old.root()->versions) return;
  // The first line begins as the others where the comma is.
  const std::size_t comma = start.size() - 1;
  file_.data()[comma] = '{';
  before_ = lines.substr(comma);
}

std::optional<Pieces> LinesChange::make(const SiteState& now, const std::set<std::string>& keys) {
  if (before_.empty()) return std::nullopt;
  std::set<std::string> names;
  for (const std::string& key : keys) names.insert(shardOf(key));
  std::vector<Edit> edits;
  texts_.reserve(names.size());
  std::size_t from = 0;
  for (const std::string& name : names) {
    const std::string old = linesOf(old_.shard(name));
    std::string place = old;
    if (old.empty()) {
      // A new shard is before the next one.
      const auto next = old_.index().shards.upper_bound(name);
      if (next != old_.index().shards.end()) place = linesOf(old_.shard(next->first));
    }
    const std::size_t begin = place.empty() ? before_.size() : placeOf(before_, place, from);
    if (begin == kNone) return std::nullopt;
    texts_.push_back(linesOf(now.shard(name)));
    edits.push_back({begin, begin + old.size(), texts_.back()});
    from = begin + old.size();
  }
  Pieces pieces;
  append(before_, edits, pieces);
  std::erase(pieces, std::string_view());
  return pieces;
}

bool ListChange::make(const Texts& fresh, const std::vector<Record>& records,
                      const Database& database, const std::set<std::string>& keys) {
  const auto parts = partsOf(textOf(before_.page));
  const auto lines = partsOfTerms(textOf(before_.terms));
  const auto freshParts = partsOf(fresh.page);
  const auto freshLines = partsOfTerms(fresh.terms);
  if (!parts || !lines || !freshParts || !freshLines) return false;

  std::vector<Edit> edits;
  for (const std::string& key : keys) {
    const std::size_t begin = cardOf(parts->cards, key);
    if (begin != kNone) edits.push_back({begin, endOfCard(parts->cards, begin), {}});
  }
  std::size_t card = 0;
  for (const Record& record : records) {
    const std::string next = database.currentAfter(record, keys);
    const std::size_t begin = next.empty() ? parts->cards.size() : cardOf(parts->cards, next);
    if (begin == kNone) return false;
    const std::size_t end = endOfCard(freshParts->cards, card);
    edits.push_back({begin, begin, freshParts->cards.substr(card, end - card)});
    card = end;
  }
  std::stable_sort(edits.begin(), edits.end(),
                   [](const Edit& a, const Edit& b) { return a.begin < b.begin; });
  const auto editsOfLines = editsOfTerms(parts->cards, lines->cards, freshLines->cards, edits);
  if (!editsOfLines) return false;
  page.push_back(freshParts->head);
  append(parts->cards, edits, page);
  page.push_back(freshParts->tail);
  terms.push_back(freshLines->head);
  append(lines->cards, *editsOfLines, terms);
  terms.push_back(freshLines->tail);
  return true;
}

}  // namespace addon::catalogue::detail
