// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/AlignedHeader.h"

#include <array>

#include "opc/zippackage/ExtraFields.h"
#include "opc/zippackage/ZipFormat.h"
#include "opc/zippackage/detail/OutputFile.h"

namespace opc::zippackage::detail {
namespace {

constexpr std::uint16_t kHintId = 0xA220;
constexpr std::uint16_t kHintSignature = 0xA028;
constexpr std::size_t kMinHintSize = ExtraFieldWalk::kHeaderSize + 4;

void append(std::vector<unsigned char>& to, Bytes from) {
  to.insert(to.end(), from.begin(), from.end());
}

void appendHint(std::vector<unsigned char>& to, std::size_t size) {
  std::array<unsigned char, kMinHintSize> hint{};
  store16(hint.data(), kHintId);
  store16(hint.data() + 2, static_cast<std::uint16_t>(size - ExtraFieldWalk::kHeaderSize));
  store16(hint.data() + 4, kHintSignature);
  store16(hint.data() + 6, static_cast<std::uint16_t>(size - kMinHintSize));
  append(to, hint);
  to.resize(to.size() + size - kMinHintSize);
}

}  // namespace

std::optional<AlignedHeader> alignHeader(const PackageFile& file, std::uint64_t from,
                                         std::uint64_t end, std::uint64_t to) {
  AlignedHeader header;
  header.bytes.resize(LocalHeader::kSize);
  file.readAt(from, header.bytes.data(), header.bytes.size());
  const auto fields = LocalHeader::decode(header.bytes);
  if (!fields) return std::nullopt;
  header.oldSize = LocalHeader::kSize + std::uint64_t{fields->nameLength} + fields->extraLength;
  if (header.oldSize > end - from) return std::nullopt;
  if ((from - to) % OutputFile::kBlock == 0) return std::nullopt;
  std::vector<unsigned char> rest(fields->nameLength + std::size_t{fields->extraLength});
  file.readAt(from + LocalHeader::kSize, rest.data(), rest.size());
  const Bytes extra = Bytes(rest).subspan(fields->nameLength);
  if (ExtraFieldWalk::faultOf(extra) != ExtraFault::None) return std::nullopt;

  append(header.bytes, Bytes(rest).first(fields->nameLength));
  const std::size_t extraAt = header.bytes.size();
  std::size_t walked = 0;
  for (ExtraFieldWalk walk(extra); walk.next();) {
    const std::size_t size = ExtraFieldWalk::kHeaderSize + walk.data().size();
    if (walk.id() != kHintId) append(header.bytes, extra.subspan(walked, size));
    walked += size;
  }
  const std::uint64_t dataAt = to + header.bytes.size();
  std::size_t hint = (from + header.oldSize - dataAt) % OutputFile::kBlock;
  if (hint > 0 && hint < kMinHintSize) hint += OutputFile::kBlock;
  if (hint > 0) appendHint(header.bytes, hint);
  const std::size_t extraLength = header.bytes.size() - extraAt;
  if (extraLength > 0xFFFF) return std::nullopt;
  LocalHeader changed = *fields;
  changed.extraLength = static_cast<std::uint16_t>(extraLength);
  changed.encode(header.bytes.data());
  return header;
}

}  // namespace opc::zippackage::detail
