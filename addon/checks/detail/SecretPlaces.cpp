// SPDX-License-Identifier: MIT
#include "addon/checks/detail/SecretPlaces.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <algorithm>
#include <bit>
#include <cstring>

namespace addon::checks::detail {

namespace {

// Everything that can be found begins with kRun characters of isOfRun(). What also begins within
// words is in kLongRun of them, of which at most kBehind are in front.
constexpr unsigned kRun = 10;
constexpr unsigned kLongRun = 16;
constexpr unsigned kBehind = 8;
constexpr unsigned kDashes = 5;  // of kKeyBegin

constexpr std::size_t kBlock = 64;  // characters that are looked at in one go
constexpr std::size_t kStep = kBlock - kLongRun - kBehind;  // those with their runs in the block

using Mask = std::uint64_t;  // a bit for each of them, the first one the lowest
using Block = std::array<unsigned char, kBlock>;
using Characters [[gnu::vector_size(16)]] = signed char;  // all that one instruction takes

/// The lowest bits of eight bytes.
[[maybe_unused]] Mask gather(std::uint64_t bytes) {
  constexpr std::uint64_t kShifts = 0x0102040810204080;
  if constexpr (std::endian::native == std::endian::big) bytes = __builtin_bswap64(bytes);
  return ((bytes & 0x0101010101010101) * kShifts) >> 56;
}

Mask bitsOf(Characters flags) {
#ifdef __SSE2__
  return static_cast<Mask>(_mm_movemask_epi8(reinterpret_cast<__m128i>(flags)));
#else
  std::array<std::uint64_t, 2> halves{};
  std::memcpy(halves.data(), &flags, sizeof flags);
  return gather(halves[0]) | (gather(halves[1]) << 8);
#endif
}

template <typename Test>
Mask maskOf(const unsigned char* block, Test test) {
  Mask mask = 0;
  for (std::size_t i = 0; i < kBlock; i += sizeof(Characters)) {
    Characters characters;
    std::memcpy(&characters, block + i, sizeof characters);
    mask |= bitsOf(test(characters)) << i;
  }
  return mask;
}

/// Blanks, quotes, brackets and commas end runs. Characters that are not ASCII are negative.
auto isOfRun(Characters c) {
  return c >= '-';
}

auto isOfWord(Characters c) {
  const Characters lower = c | 0x20;
  return ((lower >= 'a') & (lower <= 'z')) | ((c >= '0') & (c <= '9')) | (c == '_');
}

/// The first characters of the formats that have something in front.
auto beginsInWord(Characters c) {
  return (c == 'A') | (c == 'Q') | (c == 'T') | (c == '.') | (c == ':');
}

/// Places of a block.
struct Places {
  Mask all = 0;     // at which something may begin
  Mask starts = 0;  // those of them that are at the beginning of a word
};

Places placesIn(const unsigned char* block, bool isInWord) {
  const Mask run = maskOf(block, isOfRun);
  const Mask twos = run & (run >> 1);
  const Mask fours = twos & (twos >> 2);
  const Mask eights = fours & (fours >> 4);
  const Mask runs = eights & (twos >> (kRun - 2));
  if (eights == 0) return {};
  const Mask word = maskOf(block, isOfWord);
  const Mask words = word & ~((word << 1) | Mask{isInWord});
  const Mask keys = ~word & ~(word >> (kDashes - 1)) & (word >> kDashes);
  const Mask longRuns = eights & (eights >> (kLongRun - 8));
  const Mask starts = runs & (words | keys);
  if (longRuns == 0) return {starts, starts};
  const Mask inWords = (longRuns | (longRuns << kBehind)) & maskOf(block, beginsInWord);
  return {starts | inWords, starts};
}

Places placesAt(std::string_view text, std::size_t at) {
  const bool isInWord = at > 0 && isWord(text[at - 1]);
  const auto* from = reinterpret_cast<const unsigned char*>(text.data()) + at;
  if (text.size() - at >= kBlock) return placesIn(from, isInWord);
  Block last{};
  std::memcpy(last.data(), from, text.size() - at);
  return placesIn(last.data(), isInWord);
}

}  // namespace

void SecretPlaces::Pairs::add(std::string_view pair) {
  std::uint16_t index = 0;
  std::memcpy(&index, pair.data(), sizeof index);
  bits_[index / 64] |= std::uint64_t{1} << (index % 64);
}

bool SecretPlaces::Pairs::has(const char* pair) const {
  std::uint16_t index = 0;
  std::memcpy(&index, pair, sizeof index);
  return ((bits_[index / 64] >> (index % 64)) & 1) != 0;
}

SecretPlaces::SecretPlaces() {
  pairs_.add(kKeyBegin);
  for (const SecretFormat& format : secretFormats()) {
    pairs_.add(format.pattern);
    if (!format.before.empty()) inWord_.add(format.pattern);
    formats_[static_cast<unsigned char>(format.pattern[0])].push_back(&format);
  }
}

std::size_t SecretPlaces::next(std::string_view text, std::size_t at, std::size_t end) const {
  for (std::size_t step = at; step < end; step += kStep) {
    const std::size_t block = step - std::min<std::size_t>(step, kBehind);
    const Places places = placesAt(text, block);
    Mask left = (places.all >> (step - block)) & ((Mask{1} << kStep) - 1);
    for (; left != 0; left &= left - 1) {
      const std::size_t place = step + static_cast<std::size_t>(std::countr_zero(left));
      if (place >= end) return end;
      const bool isStart = ((places.starts >> (place - block)) & 1) != 0;
      const Pairs& pairs = isStart ? pairs_ : inWord_;
      if (pairs.has(text.data() + place) && begins(text, place)) return place;
    }
  }
  return end;
}

const std::vector<const SecretFormat*>& SecretPlaces::formatsWith(char first) const {
  return formats_[static_cast<unsigned char>(first)];
}

bool SecretPlaces::begins(std::string_view text, std::size_t place) const {
  const auto& formats = formatsWith(text[place]);
  const std::string_view rest = text.substr(place);
  if (rest.starts_with(kKeyBegin)) return true;
  return std::any_of(formats.begin(), formats.end(), [&](const SecretFormat* format) {
    return rest.starts_with(format->pattern.substr(0, format->pattern.find('<')));
  });
}

}  // namespace addon::checks::detail
