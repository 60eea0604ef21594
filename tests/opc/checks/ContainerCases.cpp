// SPDX-License-Identifier: MIT
#include <vector>

#include "tests/opc/checks/PackageUnderTest.h"

namespace test {
namespace {

constexpr std::uint32_t kLink = 0120777u << 16;
constexpr std::uint32_t kDevice = 0020644u << 16;
constexpr std::uint32_t kLabel = 0x08;

ZipItem& addSpecial(PackageUnderTest& p, const char* name, std::uint32_t attributes,
                    std::uint16_t host = 3) {
  ZipItem& item = p.add(name, "");
  item.central.externalAttributes = attributes;
  item.central.madeBy = static_cast<std::uint16_t>(host << 8 | 20);
  return item;
}

auto addTyped(const char* name) {
  return [name](PackageUnderTest& p) {
    p.add(name);
    p.setTypes("<Override PartName=\"/" + std::string(name) + "\" ContentType=\"text/plain\"/>");
  };
}

void addGapAfterWideEndRecord(PackageUnderTest& p) {
  p.zip.zip64 = true;
  const std::string bytes = p.zip.build();
  p.zip.zip64Record = bytes.substr(bytes.rfind(le32(0x06064b50)), 56) + "gap!";
}

void addLarge(PackageUnderTest& p) {
  p.add("zeros.m", std::string((std::size_t{64} << 20) + 1, '\0')).deflate = true;
}

void reachOutside(PackageUnderTest& p) {
  HeaderOverrides& header = p.add("c.m").central;
  header.size = header.packedSize = 1u << 30;
}

// The second item begins within the first one's local extra fields, which are not in the directory.
void overlapUnseen(PackageUnderTest& p) {
  const std::string hidden = "PK\x03\x04" + le16(20) + le16(0) + le16(0) + le32(0) +
                             le32(crcOf("x")) + le32(1) + le32(1) + le16(3) + le16(0) + "c.mx";
  p.part().local.extra = extraField(0x7777, hidden);
  ZipItem& item = p.add("c.m", "x");
  item.writeLocal = false;
  std::string before;
  for (const ZipItem& other : {p.types(), p.relationships()}) {
    ZipBuilder one;
    one.add(other);
    before += one.build().substr(0, one.build().find("PK\x01\x02"));
  }
  item.central.offset = static_cast<std::uint32_t>(before.size() + 30 + 5 + 4);
}

}  // namespace

std::span<const PackageCase> containerCases() {
  static const std::vector<PackageCase> kCases{
      {101, "NotZip", "ZP-16", "", [](auto& p) { p.zip.items.clear(), p.zip.endRecord = "text"; }},
      {101, "NoDirectory", "ZP-16", "", [](auto& p) { p.zip.directoryOffset = 3; }},
      {102, "Before", "ZP-11", "", [](auto& p) { p.zip.prefix = "#!/bin/sh\n"; }},
      {102, "After", "ZP-16", "", [](auto& p) { p.zip.suffix = "\n"; }},
      {102, "FarAfter", "ZP-16", "", [](auto& p) { p.zip.suffix = std::string(200000, '\0'); }},
      {103, "Twice", "ZP-2", "b.m", [](auto& p) { p.add("b.m"); }},
      {104, "Parent", "RB-12", "../c.m", [](auto& p) { p.add("../c.m"); }},
      {104, "ParentWithBackslash", "RB-12", "x\\..\\c.m", [](auto& p) { p.add("x\\..\\c.m"); }},
      {104, "Nul", "RB-13", std::string("c\0.m", 4),
       [](auto& p) { p.add(std::string("c\0.m", 4)); }},
      {104, "NotUtf8", "RB-13", "c\\xff.m",
       [](auto& p) {
         ZipItem& item = p.add("c\xff.m");
         item.central.flags = item.local.flags = 1 << 11;
       }},
      {105, "OtherName", "ZP-7", "b.m", [](auto& p) { p.last().local.name = "c.m"; }},
      {105, "OtherMethod", "ZP-7", "b.m", [](auto& p) { p.last().local.method = 0; }},
      {105, "OtherSize", "ZP-7", "b.m", [](auto& p) { p.last().local.size = 1; }},
      {105, "NoHeader", "ZP-7", "b.m", [](auto& p) { p.last().local.signature = 1; }},
      {105, "OtherDescriptor", "ZP-8", "b.m",
       [](auto& p) {
         p.last().descriptor = true;
         p.last().descriptorBytes = std::string(16, 'd');
       }},
      {106, "Checksum", "ZP-15", "a.xml",
       [](auto& p) { p.part().local.crc = p.part().central.crc = 1; }},
      {106, "TooLittle", "ZP-15", "b.m",
       [](auto& p) { p.last().local.size = p.last().central.size = 3001; }},
      {106, "NotDeflate", "ZP-15", "b.m",
       [](auto& p) { p.last().packed = std::string(200, '\xff'); }},
      {106, "StoredSizes", "ZP-7", "a.xml",
       [](auto& p) { p.part().local.size = p.part().central.size = 5; }},
      {106, "Implausible", "ZP-15", "b.m",
       [](auto& p) { p.last().local.size = p.last().central.size = 1u << 30; }},
      {107, "OneHeaderForTwo", "RB-2", "c.m",
       [](auto& p) {
         p.add("c.m").writeLocal = false;
         p.last().central.offset = 0;
       }},
      {107, "OutsideFile", "ZP-16", "c.m", reachOutside},
      {107, "Unseen", "RB-2", "a.xml", overlapUnseen},
      {107, "IntoDirectory", "RB-2", "b.m", [](auto& p) { p.last().local.extraLength = 0xF000; }},
      {108, "Encrypted", "ZP-6", "b.m",
       [](auto& p) { p.last().local.flags = p.last().central.flags = 1; }},
      {108, "Method", "ZP-5", "b.m",
       [](auto& p) { p.last().local.method = p.last().central.method = 12; }},
      {109, "Count", "ZP-16", "", [](auto& p) { p.zip.entries = 5; }},
      {109, "Volume", "ZP-14", "b.m", [](auto& p) { p.last().central.disk = 1; }},
      {109, "NoZip64Value", "ZP-9", "b.m", [](auto& p) { p.last().central.size = 0xFFFFFFFF; }},
      {109, "NoZip64Record", "ZP-9", "", [](auto& p) { p.zip.directoryOffset = 0xFFFFFFFF; }},
      {110, "Link", "RB-14", "c.m",
       [](auto& p) { p.add("c.m").central.externalAttributes = kLink; }},
      {110, "Device", "RB-14", "c.m",
       [](auto& p) { p.add("c.m").central.externalAttributes = kDevice; }},
      {110, "DarwinLink", "RB-14", "c.m", [](auto& p) { addSpecial(p, "c.m", kLink, 19); }},
      {110, "NtfsLabel", "RB-14", "c.m", [](auto& p) { addSpecial(p, "c.m", kLabel, 10); }},
      {111, "CodePage", "ZP-3", "c\xC3\xA9.m", [](auto& p) { p.add("c\x82.m"); }},
      {111, "Utf8", "ZP-3", "c\xC3\xA9.m",
       [](auto& p) {
         ZipItem& item = p.add("c\xC3\xA9.m");
         item.central.flags = item.local.flags = 1 << 11;
       }},
      {112, "Large", "RB-1", "zeros.m", addLarge},
      {113, "Between", "ZP-16", "", [](auto& p) { p.last().before = "gap"; }},
      {113, "BeforeDirectory", "ZP-16", "", [](auto& p) { p.add("c.m").writeCentral = false; }},
      {113, "AfterDirectory", "ZP-16", "", [](auto& p) { p.zip.beforeEnd = "gap"; }},
      {113, "Extra", "ZP-16", "b.m", [](auto& p) { p.last().central.extra = "xyz"; }},
      {113, "LocalExtra", "ZP-16", "b.m", [](auto& p) { p.last().local.extra = "xyz"; }},
      {113, "LongLocalExtra", "ZP-16", "b.m",
       [](auto& p) { p.last().local.extra = le16(7) + le16(60000) + "data"; }},
      {113, "TwoZip64Fields", "ZP-16", "b.m",
       [](auto& p) { p.last().central.extra = extraField(1, "") + extraField(1, ""); }},
      {113, "TwoLocalZip64Fields", "ZP-16", "b.m",
       [](auto& p) { p.last().local.extra = extraField(1, "") + extraField(1, ""); }},
      {113, "AfterZip64EndRecord", "ZP-16", "", addGapAfterWideEndRecord},
      {114, "Absolute", "RB-12", "/c.m", [](auto& p) { p.add("/c.m"); }},
      {114, "Backslash", "RB-12", "x\\c.m", [](auto& p) { p.add("x\\c.m"); }},
      {114, "Drive", "RB-12", "C:c.m", [](auto& p) { p.add("C:c.m"); }},
      {114, "Control", "RB-13", "c\x01.m", [](auto& p) { p.add("c\x01.m"); }},
      {114, "EncodedControl", "RB-13", "c%0A.m", [](auto& p) { p.add("c%0A.m"); }},
      {114, "EncodedNotUtf8", "RB-13", "c%FF.m", [](auto& p) { p.add("c%FF.m"); }},
      {114, "Version", "RB-15", "c.m;12", addTyped("c.m;12")},
      {114, "EmptyVersion", "RB-15", "c.m;", addTyped("c.m;")},
      {114, "Long", "RB-15", std::string(1024, 'n') + "...",
       [](auto& p) { p.add(std::string(3999, 'n') + ".m"); }},
      {115, "Folder", "ZP-2", "x/", [](auto& p) { p.add("x/", ""), p.add("x/", ""); }},
  };
  return kCases;
}

}  // namespace test
