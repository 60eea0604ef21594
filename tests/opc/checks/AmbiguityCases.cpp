// SPDX-License-Identifier: MIT
// What other ZIP readers take for something else.
#include <string>
#include <utility>
#include <vector>

#include "tests/opc/checks/PackageUnderTest.h"

namespace test {
namespace {

constexpr std::uint32_t kLink = 0120777u << 16;
constexpr std::uint32_t kFolderMode = 0040755u << 16;
constexpr std::uint32_t kDosFolder = 0x10;
constexpr std::uint32_t kDosLabel = 0x08;
constexpr std::uint16_t kDescriptor = 1 << 3;

std::string unicodePath(const std::string& stored, const std::string& path) {
  return extraField(0x7075, "\x01" + le32(crcOf(stored)) + path);
}

/// The field of 0x6C78 with "made by" and attributes.
std::string attributesField(std::uint16_t host, std::uint32_t attributes) {
  return extraField(0x6C78, "\x05" + le16(host << 8 | 20) + le32(attributes));
}

std::string asiField(std::uint16_t mode) {
  return extraField(0x756E, le32(0) + le16(mode) + le32(0) + le16(0) + le16(0));
}

std::string endRecord(std::uint32_t directorySize) {
  return le32(0x06054b50) + le64(0) + le32(directorySize) + le32(4) + le16(0);
}

auto addMarked(const char* name, std::uint32_t attributes, std::uint16_t host = 3) {
  return [=](PackageUnderTest& p) {
    p.add(name, "").central.externalAttributes = attributes;
    p.last().central.madeBy = static_cast<std::uint16_t>(host << 8 | 20);
  };
}

auto lastCentral(std::function<void(HeaderOverrides&)> change) {
  return [change](PackageUnderTest& p) { change(p.last().central); };
}

auto lastLocal(std::function<void(HeaderOverrides&)> change) {
  return [change](PackageUnderTest& p) { change(p.last().local); };
}

auto centralExtra(std::string extra) {
  return lastCentral([extra](HeaderOverrides& header) { header.extra = extra; });
}

auto localExtra(std::string extra) {
  return lastLocal([extra](HeaderOverrides& header) { header.extra = extra; });
}

auto flags(std::uint16_t local, std::uint16_t central) {
  return [=](PackageUnderTest& p) {
    p.last().local.flags = local;
    p.last().central.flags = central;
  };
}

void storeHiddenItem(PackageUnderTest& p) {
  ZipBuilder inner;
  inner.add({.name = "hidden.m", .content = "hidden"});
  p.add("c.m", inner.build().substr(0, 44)).descriptor = true;
}

std::string wide(std::initializer_list<std::uint64_t> values) {
  std::string data;
  for (const std::uint64_t value : values) data += le64(value);
  return extraField(1, data);
}

std::vector<PackageCase> headerCases() {
  return {
      {105, "DescriptorInLocalOnly", "ZP-7", "b.m",
       [](auto& p) {
         p.last().descriptor = true;
         p.last().central.flags = 0;
       }},
      {105, "DescriptorInDirectoryOnly", "ZP-7", "b.m",
       lastCentral([](auto& header) { header.flags = kDescriptor; })},
      {105, "DescriptorOfSomeValues", "ZP-7", "b.m",
       [](auto& p) {
         p.last().descriptor = true;
         p.last().local.crc = crcOf(p.last().content);
       }},
      {113, "NarrowDescriptorWithZip64", "ZP-8", "c.m",
       [](auto& p) {
         p.add("c.m", "").descriptor = true;
         p.last().local.extra = wide({0, 0});
       }},
      {109, "LocalSizesElsewhere", "ZP-9", "b.m",
       [](auto& p) {
         p.last().descriptor = true;
         p.last().local.size = p.last().local.packedSize = 0xFFFFFFFF;
       }},
      {109, "NoDisks", "ZP-14", "", [](auto& p) { p.zip.zip64 = true, p.zip.disks = 0; }},
      {113, "Zip64Longer", "ZP-9", "b.m", centralExtra(wide({3000, 7, 8}))},
      {113, "Zip64Unordered", "ZP-9", "a.xml",
       [](auto& p) {
         p.zip.zip64 = true;
         p.part().central.size = 0xFFFFFFFF;
         p.part().central.extra = wide({4, 5});
       }},
      {113, "Zip64WithoutRecord", "ZP-9", "b.m",
       [](auto& p) {
         p.last().central.size = 0xFFFFFFFF;
         p.last().central.extra = wide({3000});
       }},
      {113, "LocalZip64Other", "ZP-9", "b.m", localExtra(wide({1, 2}))},
      {113, "StoredWithDescriptor", "ZP-8", "c.m", storeHiddenItem},
      {113, "StoredWithBareDescriptor", "ZP-8", "c.m",
       [](auto& p) {
         p.add("c.m").descriptor = true;
         p.last().descriptorSignature = false;
       }},
      {118, "Version63", "ZP-11", "b.m",
       lastCentral([](auto& header) { header.versionNeeded = 63; })},
      {118, "VersionAll", "ZP-11", "b.m",
       lastCentral([](auto& header) { header.versionNeeded = 0xFFFF; })},
      {118, "VersionUpperByte", "ZP-11", "b.m",
       lastCentral([](auto& header) { header.versionNeeded = 3 << 8 | 20; })},
      {118, "LocalVersion", "ZP-11", "b.m",
       lastLocal([](auto& header) { header.versionNeeded = 46; })},
      {118, "PatchedData", "ZP-11", "b.m", flags(1 << 5, 1 << 5)},
      {118, "PatchedDataInLocalOnly", "ZP-11", "b.m", flags(1 << 5, 0)},
      {118, "Bit15", "ZP-11", "b.m", flags(0, 1 << 15)},
      {119, "ArchiveComment", "ZP-16", "", [](auto& p) { p.zip.comment = endRecord(5000); }},
      {119, "ArchiveCommentSignature", "ZP-16", "", [](auto& p) { p.zip.comment = "PK\5\6"; }},
      {119, "ItemComment", "ZP-16", "a.xml", [](auto& p) { p.part().comment = endRecord(5000); }},
      {119, "ItemCommentLocator", "ZP-16", "a.xml",
       [](auto& p) { p.part().comment = le32(0x07064b50) + "x"; }},
  };
}

std::vector<PackageCase> nameCases() {
  const std::string other = unicodePath("b.m", "c.m");
  return {
      {116, "Directory", "ZP-3", "b.m", centralExtra(other)},
      {116, "Parent", "ZP-3", "b.m", centralExtra(unicodePath("b.m", "../../c.m"))},
      {116, "Local", "ZP-3", "b.m", localExtra(other)},
      {116, "OtherChecksum", "ZP-3", "b.m", centralExtra(unicodePath("x", "c.m"))},
      {116, "NotAscii", "ZP-3", "b.m", centralExtra(unicodePath("b.m", "\xC3\xA9.m"))},
      {116, "SecondField", "ZP-3", "b.m", centralExtra(unicodePath("b.m", "b.m") + other)},
      {116, "Malformed", "ZP-3", "b.m", centralExtra(extraField(0x7075, "\x01"))},
  };
}

std::vector<PackageCase> markCases() {
  return {
      {117, "FolderMode", "ZP-10", "d", addMarked("d", kFolderMode)},
      {117, "FolderModeOfDos", "ZP-10", "d.m", addMarked("d.m", kFolderMode, 0)},
      {117, "DosFolder", "ZP-10", "d.m", addMarked("d.m", kDosFolder, 0)},
      {117, "DosFolderOfUnix", "ZP-10", "d.m", addMarked("d.m", 0100644u << 16 | kDosFolder)},
      {117, "LabelOfUnix", "ZP-10", "d.m", addMarked("d.m", kDosLabel)},
      {117, "FolderModeOfAmiga", "ZP-10", "d.m", addMarked("d.m", 0104755u << 16, 1)},
      {117, "LinkCalledFolder", "ZP-10", "d/", addMarked("d/", kLink)},
      {117, "LinkOfDos", "ZP-10", "d.m", addMarked("d.m", kLink, 0)},
      {117, "LinkOfVms", "ZP-10", "d.m", addMarked("d.m", kLink, 2)},
      {117, "LinkOfSystem30", "ZP-10", "d.m", addMarked("d.m", kLink, 30)},
      {117, "FolderWithData", "ZP-10", "d/", [](auto& p) { p.add("d/", "data"); }},
      {117, "LinkInField", "ZP-10", "b.m", centralExtra(attributesField(3, kLink))},
      {117, "LinkInLocalField", "ZP-10", "b.m", localExtra(attributesField(3, kLink))},
      {117, "FolderInField", "ZP-10", "b.m", localExtra(attributesField(0, kDosFolder))},
      {117, "MalformedField", "ZP-10", "b.m", localExtra(extraField(0x6C78, "\x04"))},
      {117, "LinkInAsiField", "ZP-10", "b.m", localExtra(asiField(0120777))},
  };
}

}  // namespace

std::span<const PackageCase> ambiguityCases() {
  static const std::vector<PackageCase> kCases = [] {
    std::vector<PackageCase> all = headerCases();
    for (const auto& more : {nameCases(), markCases()}) {
      all.insert(all.end(), more.begin(), more.end());
    }
    return all;
  }();
  return kCases;
}

}  // namespace test
