// SPDX-License-Identifier: MIT
#include "addon/checks/detail/SecretPlaces.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace addon::checks::detail {

namespace {

// All tokens begin with kRun characters of isOfRun(), and a private key with kKeyRun of them. What
// also begins within words is in kLongRun of them, of which at most kBehind are in front.
constexpr unsigned kRun = 15;
constexpr unsigned kKeyRun = 10;
constexpr unsigned kLongRun = 16;
constexpr unsigned kBehind = 8;
constexpr unsigned kDashes = 5;  // of kKeyBegin

constexpr std::size_t kBlock = 64;  // characters that are looked at in one go

using Mask = std::uint64_t;  // a bit for each of them, the first one the lowest
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
#pragma GCC unroll 4
  for (std::size_t i = 0; i < kBlock; i += sizeof(Characters)) {
    Characters characters;
    std::memcpy(&characters, block + i, sizeof characters);
    mask |= bitsOf(test(characters)) << i;
  }
  return mask;
}

/// Blanks, quotes, brackets and commas end runs. Characters that are not ASCII are negative.
auto isOfRun(Characters c) {
  return (c >= '-') | (c == '+');
}

auto isOfWord(Characters c) {
  const Characters lower = c | 0x20;
  return ((lower >= 'a') & (lower <= 'z')) | ((c >= '0') & (c <= '9')) | (c == '_');
}

/// The first characters of the formats that have something in front.
auto beginsInWord(Characters c) {
  return (c == 'A') | (c == 'Q') | (c == 'T') | (c == '.') | (c == ':');
}

/// A block and the one behind it.
struct TwoBlocks {
  Mask here = 0;
  Mask behind = 0;

  /// The bits that are set `distance` further on as well.
  TwoBlocks with(const TwoBlocks& other, unsigned distance) const {
    const Mask further = (other.here >> distance) | (other.behind << (kBlock - distance));
    return {here & further, behind & (other.behind >> distance)};
  }
};

/// Places of a block.
struct Places {
  Mask all = 0;     // at which something may begin
  Mask starts = 0;  // those of them that are at the beginning of a word
};

/// Looks at the blocks of a text, one after the other.
class Blocks {
 public:
  Blocks(std::string_view text, std::size_t at)
      : text_(text), at_(at), run_{0, maskOf(charactersAt(at), isOfRun)} {}

  Places next() {
    const std::size_t at = std::exchange(at_, at_ + kBlock);
    run_ = {run_.behind, at_ < text_.size() ? maskOf(charactersAt(at_), isOfRun) : 0};
    const TwoBlocks twos = run_.with(run_, 1);
    const TwoBlocks fours = twos.with(twos, 2);
    const TwoBlocks eights = fours.with(fours, 4);
    const Mask keyRuns = eights.with(twos, kKeyRun - 2).here;
    const Mask fromBefore = longRuns_ >> (kBlock - kBehind);
    longRuns_ = eights.with(eights, kLongRun - 8).here;
    if ((keyRuns | fromBefore) == 0) return {};

    const unsigned char* characters = charactersAt(at);
    const Mask word = maskOf(characters, isOfWord);
    const Mask words = word & ~((word << 1) | Mask{at > 0 && isWord(text_[at - 1])});
    const Mask unknown = ~(~Mask{0} >> kDashes);
    const Mask keys = ~word & ~(word >> (kDashes - 1)) & ((word >> kDashes) | unknown);
    const Mask starts = (eights.with(eights, kRun - 8).here & words) | (keyRuns & keys);
    const Mask inLong = longRuns_ | (longRuns_ << kBehind) | fromBefore;
    if (inLong == 0) return {starts, starts};
    return {starts | (inLong & maskOf(characters, beginsInWord)), starts};
  }

 private:
  /// As many as a block has; NUL behind the text.
  const unsigned char* charactersAt(std::size_t at) {
    const auto* from = reinterpret_cast<const unsigned char*>(text_.data()) + at;
    if (text_.size() - at >= kBlock) return from;
    last_.fill(0);
    std::memcpy(last_.data(), from, text_.size() - at);
    return last_.data();
  }

  std::string_view text_;
  std::size_t at_;
  std::array<unsigned char, kBlock> last_{};
  TwoBlocks run_;
  Mask longRuns_ = 0;  // where those of the block before begin
};

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
  if (at >= end) return end;
  std::size_t block = at - std::min<std::size_t>(at, kBehind);
  Mask wanted = ~Mask{0} << (at - block);
  for (Blocks blocks(text, block); block < end; block += kBlock, wanted = ~Mask{0}) {
    const Places places = blocks.next();
    for (Mask left = places.all & wanted; left != 0; left &= left - 1) {
      const auto bit = static_cast<std::size_t>(std::countr_zero(left));
      const std::size_t place = block + bit;
      if (place >= end) return end;
      const Pairs& pairs = ((places.starts >> bit) & 1) != 0 ? pairs_ : inWord_;
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
