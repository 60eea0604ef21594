// SPDX-License-Identifier: MIT
#include "opc/model/NameKey.h"

#include <cstddef>

#include "opc/KeyedHash.h"
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

// Eight ASCII bytes with A-Z folded.
std::uint64_t foldWord(std::uint64_t word) {
  const std::uint64_t fromA = word + (0x80u - 'A') * kEachByte;
  const std::uint64_t pastZ = word + (0x7Fu - 'Z') * kEachByte;
  return word | (((fromA ^ pastZ) & kHighBits) >> 2);
}

// Returns the length of the key.
std::size_t addWideSegment(KeyedHash& hash, std::string_view segment) {
  KeyCursor cursor(segment);
  char block[8];
  std::size_t filled = 0;
  std::size_t length = 0;
  for (; !cursor.isEnd(); ++length) {
    block[filled++] = cursor.next();
    if (filled < sizeof block) continue;
    hash.add(loadWord(block));
    filled = 0;
  }
  if (filled > 0) hash.add(loadTail(block, filled));
  return length;
}

// Returns whether the segment is ASCII; the hash is of no use if it is not.
bool addAsciiSegment(KeyedHash& hash, std::string_view segment) {
  std::uint64_t all = 0;
  const char* next = segment.data();
  std::size_t left = segment.size();
  for (; left >= 8; left -= 8, next += 8) {
    const std::uint64_t word = loadWord(next);
    all |= word;
    hash.add(foldWord(word));
  }
  if (left > 0) {
    const std::uint64_t word = loadTail(next, left);
    all |= word;
    hash.add(foldWord(word));
  }
  return (all & kHighBits) == 0;
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
  if (name.starts_with(prefix)) return true;
  KeyCursor x(name);
  KeyCursor y(prefix);
  while (!x.isEnd() && !y.isEnd()) {
    if (x.next() != y.next()) return false;
  }
  return y.isEnd();
}

std::uint64_t rootHash() noexcept {
  return 0;
}

std::uint64_t extendHash(std::uint64_t folder, std::string_view segment) noexcept {
  KeyedHash hash(folder);
  if (addAsciiSegment(hash, segment)) return hash.finish(segment.size());
  KeyedHash wide(folder);
  const std::size_t length = addWideSegment(wide, segment);
  return wide.finish(length);
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
