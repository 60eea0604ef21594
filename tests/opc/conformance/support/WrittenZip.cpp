// SPDX-License-Identifier: MIT
#include "tests/opc/conformance/support/WrittenZip.h"

#include <zlib.h>

#include <algorithm>
#include <stdexcept>

namespace test::conformance {
namespace {

std::uint32_t number(const std::string& bytes, std::size_t at, int length) {
  std::uint32_t value = 0;
  for (int i = 0; i < length; ++i) {
    value |= std::uint32_t{static_cast<unsigned char>(bytes.at(at + static_cast<unsigned>(i)))}
             << (8 * i);
  }
  return value;
}

std::string slice(const std::string& bytes, std::size_t at, std::size_t size) {
  if (at > bytes.size() || size > bytes.size() - at) throw std::runtime_error("beyond the file");
  return bytes.substr(at, size);
}

std::string unpacked(const std::string& packed, std::size_t size) {
  std::string content(size + 1, '\0');
  z_stream stream{};
  if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) throw std::runtime_error("inflateInit2 failed");
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
  stream.avail_in = static_cast<uInt>(packed.size());
  stream.next_out = reinterpret_cast<Bytef*>(content.data());
  stream.avail_out = static_cast<uInt>(content.size());
  const int result = inflate(&stream, Z_FINISH);
  content.resize(stream.total_out);
  inflateEnd(&stream);
  if (result != Z_STREAM_END) throw std::runtime_error("inflate failed");
  return content;
}

WrittenZip::Entry readEntry(const std::string& bytes, std::size_t at) {
  if (number(bytes, at, 4) != 0x02014b50) throw std::runtime_error("no directory entry");
  const std::size_t nameLength = number(bytes, at + 28, 2);
  WrittenZip::Entry entry;
  entry.name = slice(bytes, at + 46, nameLength);
  entry.extra = slice(bytes, at + 46 + nameLength, number(bytes, at + 30, 2));
  entry.flags = number(bytes, at + 8, 2);
  entry.method = number(bytes, at + 10, 2);
  entry.size = number(bytes, at + 24, 4);

  const std::size_t local = number(bytes, at + 42, 4);
  if (number(bytes, local, 4) != 0x04034b50) throw std::runtime_error("no local header");
  const std::size_t localLength = number(bytes, local + 26, 2);
  const std::size_t extraLength = number(bytes, local + 28, 2);
  entry.localName = slice(bytes, local + 30, localLength);
  entry.localExtra = slice(bytes, local + 30 + localLength, extraLength);
  const std::string packed =
      slice(bytes, local + 30 + localLength + extraLength, number(bytes, at + 20, 4));
  entry.content = entry.method == 8 && !packed.empty() ? unpacked(packed, entry.size) : packed;
  if (crc32(0, reinterpret_cast<const Bytef*>(entry.content.data()),
            static_cast<uInt>(entry.content.size())) != number(bytes, at + 16, 4)) {
    throw std::runtime_error("wrong checksum");
  }
  return entry;
}

}  // namespace

WrittenZip::WrittenZip(const std::string& bytes) {
  const std::size_t end = bytes.size() - std::min<std::size_t>(bytes.size(), 22);
  if (number(bytes, end, 4) != 0x06054b50) throw std::runtime_error("no end record at the end");
  zip64_ = end >= 20 && number(bytes, end - 20, 4) == 0x07064b50;
  std::size_t at = number(bytes, end + 16, 4);
  for (std::uint32_t left = number(bytes, end + 10, 2); left != 0; --left) {
    entries_.push_back(readEntry(bytes, at));
    at += 46 + number(bytes, at + 28, 2) + number(bytes, at + 30, 2) + number(bytes, at + 32, 2);
  }
  if (at != end && !zip64_) throw std::runtime_error("something behind the directory");
}

std::vector<std::string> WrittenZip::names() const {
  std::vector<std::string> names;
  for (const Entry& entry : entries_) names.push_back(entry.name);
  return names;
}

bool WrittenZip::has(std::string_view name) const {
  return std::any_of(entries_.begin(), entries_.end(),
                     [&](const Entry& entry) { return entry.name == name; });
}

const std::string& WrittenZip::content(std::string_view name) const {
  for (const Entry& entry : entries_) {
    if (entry.name == name) return entry.content;
  }
  throw std::runtime_error("no item " + std::string(name));
}

}  // namespace test::conformance
