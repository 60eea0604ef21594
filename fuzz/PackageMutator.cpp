// SPDX-License-Identifier: MIT
// Changes items of a package and makes a valid package of the result: most changed bytes alone
// would fail at a checksum.
#include <zlib.h>

#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/ZipBuilder.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

using Random = std::minstd_rand;
using test::ZipBuilder;
using test::ZipItem;

constexpr std::size_t kHeader = 30;
constexpr std::size_t kMaxContentSize = 64 * 1024;

std::size_t number(std::string_view bytes, std::size_t at, std::size_t size) {
  std::size_t value = 0;
  for (std::size_t i = size; i > 0; --i) {
    value = value << 8 | static_cast<unsigned char>(bytes[at + i - 1]);
  }
  return value;
}

/// Inflates `packed` as far as possible.
std::string inflated(std::string_view packed) {
  std::string content(kMaxContentSize, '\0');
  z_stream stream{};
  if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) return {};
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
  stream.avail_in = static_cast<uInt>(packed.size());
  stream.next_out = reinterpret_cast<Bytef*>(content.data());
  stream.avail_out = static_cast<uInt>(content.size());
  inflate(&stream, Z_FINISH);
  content.resize(stream.total_out);
  inflateEnd(&stream);
  return content;
}

/// The items whose local headers follow each other from the first byte on.
std::vector<ZipItem> itemsOf(std::string_view file) {
  std::vector<ZipItem> items;
  while (file.size() >= kHeader && file.starts_with(std::string_view("PK\3\4", 4))) {
    const std::size_t nameSize = number(file, 26, 2);
    const std::size_t start = kHeader + nameSize + number(file, 28, 2);
    const std::size_t packedSize = number(file, 18, 4);
    if (start > file.size() || packedSize > file.size() - start) break;
    const std::string_view packed = file.substr(start, packedSize);
    const bool isDeflated = number(file, 8, 2) == 8;
    items.push_back({.name = std::string(file.substr(kHeader, nameSize)),
                     .content = isDeflated ? inflated(packed) : std::string(packed),
                     .deflate = isDeflated});
    file.remove_prefix(start + packedSize);
  }
  return items;
}

void mutate(std::string& text, std::size_t room) {
  const std::size_t size = text.size();
  text.resize(size + room);
  text.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(text.data()), size, text.size()));
}

void mutateItems(std::vector<ZipItem>& items, Random& random) {
  constexpr std::size_t kRoom = 256;
  const std::size_t which = random() % items.size();
  const unsigned action = random() % 16;
  if (action == 0) {
    items.erase(items.begin() + static_cast<std::ptrdiff_t>(which));
  } else if (action == 1) {
    items.push_back(ZipItem(items[which]));
    mutate(items.back().name, kRoom);
  } else if (action == 2) {
    std::swap(items[which], items[random() % items.size()]);
  } else if (action == 3) {
    items[which].deflate = !items[which].deflate;
  } else if (action < 7) {
    mutate(items[which].name, kRoom);
  } else {
    mutate(items[which].content, kRoom);
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed) {
  Random random(seed);
  std::vector<ZipItem> items;
  if (random() % 3 != 0) items = itemsOf({reinterpret_cast<const char*>(data), size});
  if (items.empty()) return LLVMFuzzerMutate(data, size, maxSize);
  mutateItems(items, random);
  ZipBuilder builder;
  for (ZipItem& item : items) builder.add(std::move(item));
  const std::string file = builder.build();
  if (file.size() > maxSize) return LLVMFuzzerMutate(data, size, maxSize);
  std::memcpy(data, file.data(), file.size());
  return file.size();
}
