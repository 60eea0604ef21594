// SPDX-License-Identifier: MIT
#include "opc/zippackage/ZipFormat.h"

#include <algorithm>
#include <tuple>

namespace opc::zippackage {
namespace {

void put(unsigned char*& to, std::uint16_t value) {
  store16(to, value);
  to += sizeof value;
}
void put(unsigned char*& to, std::uint32_t value) {
  store32(to, value);
  to += sizeof value;
}
void put(unsigned char*& to, std::uint64_t value) {
  store64(to, value);
  to += sizeof value;
}

void get(const unsigned char*& from, std::uint16_t& value) {
  value = load16(from);
  from += sizeof value;
}
void get(const unsigned char*& from, std::uint32_t& value) {
  value = load32(from);
  from += sizeof value;
}
void get(const unsigned char*& from, std::uint64_t& value) {
  value = load64(from);
  from += sizeof value;
}

// The fields after the signature, in their order. Their types give their widths.
template <typename Record>
constexpr std::tuple<> kFields;
template <>
constexpr std::tuple kFields<LocalHeader>{
    &LocalHeader::versionNeeded, &LocalHeader::flags,      &LocalHeader::method,
    &LocalHeader::dosTime,       &LocalHeader::crc,        &LocalHeader::packedSize,
    &LocalHeader::size,          &LocalHeader::nameLength, &LocalHeader::extraLength};
template <>
constexpr std::tuple kFields<CentralHeader>{&CentralHeader::madeBy,
                                            &CentralHeader::versionNeeded,
                                            &CentralHeader::flags,
                                            &CentralHeader::method,
                                            &CentralHeader::dosTime,
                                            &CentralHeader::crc,
                                            &CentralHeader::packedSize,
                                            &CentralHeader::size,
                                            &CentralHeader::nameLength,
                                            &CentralHeader::extraLength,
                                            &CentralHeader::commentLength,
                                            &CentralHeader::disk,
                                            &CentralHeader::internalAttributes,
                                            &CentralHeader::externalAttributes,
                                            &CentralHeader::headerOffset};
template <>
constexpr std::tuple kFields<EndRecord>{&EndRecord::disk,          &EndRecord::directoryDisk,
                                        &EndRecord::entriesHere,   &EndRecord::entries,
                                        &EndRecord::directorySize, &EndRecord::directoryOffset,
                                        &EndRecord::commentLength};
template <>
constexpr std::tuple kFields<Zip64Locator>{&Zip64Locator::recordDisk, &Zip64Locator::recordOffset,
                                           &Zip64Locator::disks};
template <>
constexpr std::tuple kFields<Zip64EndRecord>{
    &Zip64EndRecord::recordSize, &Zip64EndRecord::madeBy,        &Zip64EndRecord::versionNeeded,
    &Zip64EndRecord::disk,       &Zip64EndRecord::directoryDisk, &Zip64EndRecord::entriesHere,
    &Zip64EndRecord::entries,    &Zip64EndRecord::directorySize, &Zip64EndRecord::directoryOffset};

template <typename Record>
void encodeRecord(const Record& record, unsigned char* to) {
  put(to, Record::kSignature);
  std::apply([&](const auto... field) { (put(to, record.*field), ...); }, kFields<Record>);
}

// The result is filled in place: 16-bit stores that are copied in wider pieces right after make the
// processor wait, and this is where a large directory spends its time.
template <typename Record>
std::optional<Record> decodeRecord(Bytes bytes) {
  std::optional<Record> record;
  if (bytes.size() < Record::kSize || load32(bytes.data()) != Record::kSignature) return record;
  record.emplace();
  const unsigned char* from = bytes.data() + sizeof Record::kSignature;
  std::apply([&](const auto... field) { (get(from, (*record).*field), ...); }, kFields<Record>);
  return record;
}

}  // namespace

void LocalHeader::encode(unsigned char* to) const {
  encodeRecord(*this, to);
}

std::optional<LocalHeader> LocalHeader::decode(Bytes from) {
  return decodeRecord<LocalHeader>(from);
}

void CentralHeader::encode(unsigned char* to) const {
  encodeRecord(*this, to);
}

std::optional<CentralHeader> CentralHeader::decode(Bytes from) {
  return decodeRecord<CentralHeader>(from);
}

std::size_t DataDescriptor::encode(unsigned char* to, bool wide, bool withSignature) const {
  unsigned char* next = to;
  if (withSignature) put(next, kSignature);
  put(next, crc);
  if (wide) {
    put(next, packedSize);
    put(next, size);
  } else {
    put(next, static_cast<std::uint32_t>(packedSize));
    put(next, static_cast<std::uint32_t>(size));
  }
  return static_cast<std::size_t>(next - to);
}

std::size_t DataDescriptor::lengthIn(Bytes from, bool wideFirst, std::uint64_t room) const {
  std::size_t first = 0;
  const bool fitsNarrow = packedSize <= kZip64Sentinel32 && size <= kZip64Sentinel32;
  for (const bool wide : {wideFirst, !wideFirst}) {
    if (!wide && !fitsNarrow) continue;
    for (const bool withSignature : {true, false}) {
      unsigned char expected[kMaxSize];
      const Bytes form(expected, encode(expected, wide, withSignature));
      if (from.size() < form.size()) continue;
      if (!std::equal(form.begin(), form.end(), from.begin())) continue;
      if (form.size() == room) return form.size();
      if (first == 0) first = form.size();
    }
  }
  return first;
}

void EndRecord::encode(unsigned char* to) const {
  encodeRecord(*this, to);
}

std::optional<EndRecord> EndRecord::decode(Bytes from) {
  return decodeRecord<EndRecord>(from);
}

void Zip64Locator::encode(unsigned char* to) const {
  encodeRecord(*this, to);
}

std::optional<Zip64Locator> Zip64Locator::decode(Bytes from) {
  return decodeRecord<Zip64Locator>(from);
}

void Zip64EndRecord::encode(unsigned char* to) const {
  encodeRecord(*this, to);
}

std::optional<Zip64EndRecord> Zip64EndRecord::decode(Bytes from) {
  return decodeRecord<Zip64EndRecord>(from);
}

}  // namespace opc::zippackage
