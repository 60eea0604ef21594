// SPDX-License-Identifier: MIT
#include "opc/model/NameKey.h"

#include <array>

#include "opc/Random.h"
#include "opc/Text.h"
#include "opc/Words.h"

namespace opc::model {
namespace {

constexpr std::uint64_t kEachByte = 0x0101010101010101u;
constexpr std::uint64_t kHighBits = 0x80u * kEachByte;

// Walks over the bytes of a key.
class KeyCursor {
 public:
  explicit KeyCursor(std::string_view name) : name_(name) {}

  bool isEnd() const { return at_ == name_.size(); }

  char next() {
    const auto byte = static_cast<unsigned char>(name_[at_]);
    if (byte < 0x80) {
      ++at_;
      return toLowerAscii(static_cast<char>(byte));
    }
    return nextOfEscape(byte);
  }

 private:
  char nextOfEscape(unsigned char byte) {
    constexpr const char* kDigits = "0123456789abcdef";
    const unsigned step = step_;
    step_ = (step_ + 1) % 3;
    if (step == 0) return '%';
    if (step == 1) return kDigits[byte >> 4];
    ++at_;
    return kDigits[byte & 15];
  }

  std::string_view name_;
  std::size_t at_ = 0;
  unsigned step_ = 0;
};

struct HashKey {
  std::uint64_t start = 0;
  std::uint64_t word = 0;
  std::uint64_t segment = 0;
};

HashKey makeHashKey() {
  std::array<std::uint64_t, 3> random{};
  fillRandom(random);
  return {random[0], random[1] | 1, random[2] | 1};
}

const HashKey& hashKey() {
  static const HashKey key = makeHashKey();
  return key;
}

// Eight ASCII bytes with A-Z folded.
std::uint64_t foldWord(std::uint64_t word) {
  const std::uint64_t fromA = word + (0x80u - 'A') * kEachByte;
  const std::uint64_t pastZ = word + (0x7Fu - 'Z') * kEachByte;
  return word | (((fromA ^ pastZ) & kHighBits) >> 2);
}

std::uint64_t hashWideSegment(std::uint64_t state, std::string_view segment, std::size_t& length) {
  KeyCursor cursor(segment);
  char block[8];
  std::size_t filled = 0;
  for (length = 0; !cursor.isEnd(); ++length) {
    block[filled++] = cursor.next();
    if (filled < sizeof block) continue;
    state = foldedProduct(state ^ loadWord(block), hashKey().word);
    filled = 0;
  }
  return filled == 0 ? state : foldedProduct(state ^ loadTail(block, filled), hashKey().word);
}

// The same for a segment of ASCII; false, and nothing done, when it is not.
bool hashAsciiSegment(std::uint64_t& state, std::string_view segment) {
  const std::uint64_t key = hashKey().word;
  std::uint64_t hash = state;
  std::uint64_t all = 0;
  const char* next = segment.data();
  std::size_t left = segment.size();
  for (; left >= 8; left -= 8, next += 8) {
    const std::uint64_t word = loadWord(next);
    all |= word;
    hash = foldedProduct(hash ^ foldWord(word), key);
  }
  if (left > 0) {
    const std::uint64_t word = loadTail(next, left);
    all |= word;
    hash = foldedProduct(hash ^ foldWord(word), key);
  }
  if ((all & kHighBits) != 0) return false;
  state = hash;
  return true;
}

}  // namespace

bool equalKeys(std::string_view a, std::string_view b) noexcept {
  if (a == b) return true;
  KeyCursor x(a);
  KeyCursor y(b);
  while (!x.isEnd() && !y.isEnd()) {
    if (x.next() != y.next()) return false;
  }
  return x.isEnd() && y.isEnd();
}

bool keyStartsWith(std::string_view name, std::string_view prefix) noexcept {
  KeyCursor x(name);
  KeyCursor y(prefix);
  while (!x.isEnd() && !y.isEnd()) {
    if (x.next() != y.next()) return false;
  }
  return y.isEnd();
}

std::uint64_t rootHash() noexcept {
  return hashKey().start;
}

std::uint64_t extendHash(std::uint64_t folder, std::string_view segment) noexcept {
  std::uint64_t state = folder;
  std::size_t length = segment.size();
  if (!hashAsciiSegment(state, segment)) state = hashWideSegment(folder, segment, length);
  return foldedProduct(state ^ length, hashKey().segment);
}

std::uint64_t nameHash(std::string_view itemName) noexcept {
  std::uint64_t hash = rootHash();
  for (std::size_t start = 0;;) {
    const std::size_t slash = itemName.find('/', start);
    hash = extendHash(hash, itemName.substr(start, slash - start));
    if (slash == std::string_view::npos) return hash;
    start = slash + 1;
  }
}

}  // namespace opc::model
