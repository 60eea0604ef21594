// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/opc/conformance/support/Case.h"

namespace test::conformance {
namespace {

using enum Reading;
using enum Verified;

constexpr std::uint16_t kUtf8Flag = 1 << 11;
constexpr std::uint32_t kAll = 0xFFFFFFFF;

/// A change of the header of "b.m" in both places.
auto bothHeaders(std::function<void(HeaderOverrides&)> change) {
  return [change](PackageSpec& p) {
    change(p.last().local);
    change(p.last().central);
  };
}

auto flags(std::uint16_t bits) {
  return bothHeaders([bits](HeaderOverrides& header) { header.flags = bits; });
}

auto method(std::uint16_t number) {
  return bothHeaders([number](HeaderOverrides& header) { header.method = number; });
}

auto local(std::function<void(HeaderOverrides&)> change) {
  return [change](PackageSpec& p) { change(p.last().local); };
}

auto descriptor(bool signature, bool wide, bool deflate) {
  return [=](PackageSpec& p) {
    ZipItem& item = p.last();
    item.descriptor = true;
    item.descriptorSignature = signature;
    item.descriptorWide = wide;
    item.deflate = deflate;
  };
}

// Bit 3, and a descriptor with another value in it.
auto wrongDescriptor(std::string bytes) {
  return [=](PackageSpec& p) {
    p.last().descriptor = true;
    p.last().descriptorBytes = bytes;
  };
}

std::string zip64(std::uint64_t size, std::uint64_t packedSize) {
  return extraField(1, le64(size) + le64(packedSize));
}

// "b.m" with all its sizes in ZIP64 fields, where wanted.
auto wideSizes(bool inLocal, bool inCentral) {
  return [=](PackageSpec& p) {
    ZipItem& item = p.last();
    const std::uint64_t packed = deflated(item.content).size();
    for (HeaderOverrides* header :
         {inLocal ? &item.local : nullptr, inCentral ? &item.central : nullptr}) {
      if (header == nullptr) continue;
      header->size = header->packedSize = kAll;
      header->extra = zip64(item.content.size(), packed);
    }
  };
}

void oneWideValue(PackageSpec& p) {
  p.last().central.size = kAll;
  p.last().central.extra = extraField(1, le64(p.last().content.size()));
}

void wideEndWithOldDisks(PackageSpec& p) {
  p.zip.zip64 = true;
  p.zip.endRecord = le32(0x06054b50) + le16(0xFFFF) + le16(0xFFFF) + le16(0xFFFF) + le16(0xFFFF) +
                    le32(kAll) + le32(kAll) + le16(0);
}

void addManyItems(PackageSpec& p) {
  for (int i = 0; i < 66000; ++i) p.add("many/" + std::to_string(i) + ".m", "");
  p.zip.zip64 = true;
}

auto addWithAttributes(std::uint32_t attributes, std::uint16_t host = 3) {
  return [=](PackageSpec& p) {
    p.add("c.m").central.externalAttributes = attributes;
    p.last().central.madeBy = static_cast<std::uint16_t>(host << 8 | 20);
  };
}

auto addEmptyWithDescriptor(bool signature, bool deflate) {
  return [=](PackageSpec& p) {
    p.add("empty.m", "");
    descriptor(signature, true, deflate)(p);
  };
}

void addGapBehindWideEndRecord(PackageSpec& p) {
  p.zip.zip64 = true;
  const std::string bytes = p.bytes();
  const std::size_t record = bytes.rfind(le32(0x06064b50));
  p.zip.zip64Record = bytes.substr(record, 56) + "gap!";
}

// A foreign beginning that no offset counts.
void hideBeginning(PackageSpec& p) {
  p.zip.prefix = "#!/bin/sh\n";
  const std::size_t directory = p.bytes().find("PK\x01\x02");
  p.zip.directoryOffset = directory - p.zip.prefix.size();
}

void addEmptyDeflated(PackageSpec& p) {
  ZipItem& item = p.add("empty.m", "");
  item.deflate = true;
  item.packed = "";
}

void addHint(PackageSpec& p) {
  const std::string hint = extraField(0xA220, le16(0xA028) + le16(512) + std::string(512, '\0'));
  p.last().local.extra = hint;
}

std::string endRecordOf(const PackageSpec& p) {
  const std::string bytes = p.bytes();
  return bytes.substr(bytes.size() - 22);
}

// The content types at the end, and a part in their place.
void reverse(PackageSpec& p) {
  p.typesItem.name = "c.m";
  p.add("[Content_Types].xml", typesDocument(kUsualDefaults)).deflate = true;
}

std::vector<Case> nameCases() {
  return {
      {"ZP-1", "AnItemNameIsThePartNameWithoutTheSlash", Accepted, Silent, item("c/%5Bd%5D.m"),
       [](const ReadPackage& read) { EXPECT_TRUE(read.parts.contains("c/%5Bd%5D.m")); }},
      {"ZP-1", "AnItemNameIsNotDecoded", Ignored, Warning, item("c%5Cd.m"), nullptr, "PN-11"},
      {"ZP-2", "TwoItemsOfANameAreRefused", Refused, Error, item("a.xml")},
      {"ZP-2", "TwoItemsThatAreNoPartsOfANameAreRefused", Refused, Error,
       [](PackageSpec& p) {
         p.add("c d");
         p.add("c d");
       }},
      {"ZP-2", "TwoEntriesOfAFolderDrawAWarning", Accepted, Warning,
       [](PackageSpec& p) {
         p.add("c/", "");
         p.add("c/", "");
       }},
      {"ZP-3", "Utf8NamesAreMappedWithAWarning", Accepted, Warning,
       [](PackageSpec& p) {
         p.add("\xc3\xa9.m");
         flags(kUtf8Flag)(p);
       },
       [](const ReadPackage& read) { EXPECT_TRUE(read.parts.contains("\xc3\xa9.m")); }},
      {"ZP-3", "OtherNamesAreOfCodePage437", Accepted, Warning, item("\x82.m"),
       [](const ReadPackage& read) { EXPECT_TRUE(read.parts.contains("\xc3\xa9.m")); }},
      {"ZP-4", "ANameOfMostBytesIsRead", Accepted, Warning, item(std::string(65533, 'c') + ".m"),
       nullptr, "RB-15"},
      {"ZP-10", "AFolderBesideAPartIsNoClash", Ignored, Silent, item("a.xml/", "")},
      {"ZP-10", "AVolumeLabelIsNoPart", Ignored, Warning,
       [](PackageSpec& p) {
         p.add("LABEL.M", "").central.externalAttributes = 8;
         p.last().central.madeBy = 20;
       },
       nullptr, "RB-14"},
      {"ZP-10", "ASymbolicLinkIsNoPart", Ignored, Warning, addWithAttributes(0120777u << 16),
       nullptr, "RB-14"},
      {"ZP-10", "ASymbolicLinkOfDarwinIsNoPart", Ignored, Warning,
       addWithAttributes(0120777u << 16, 19), nullptr, "RB-14"},
      {"ZP-10", "AVolumeLabelOfNtfsIsNoPart", Ignored, Warning, addWithAttributes(8, 10), nullptr,
       "RB-14"},
      {"ZP-10", "AVolumeLabelOfHpfsIsNoPart", Ignored, Warning, addWithAttributes(8, 6), nullptr,
       "RB-14"},
      {"ZP-10", "AVolumeLabelOfVfatIsNoPart", Ignored, Warning, addWithAttributes(8, 14), nullptr,
       "RB-14"},
  };
}

std::vector<Case> dataCases() {
  const std::string data(3000, 'b');
  return {
      {"ZP-5", "StoredItemsAreRead", Accepted, Silent,
       [](PackageSpec& p) { p.last().deflate = false; }},
      {"ZP-5", "AnotherMethodIsRefused", Refused, Error, method(12)},
      {"ZP-5", "Deflate64IsRefused", Refused, Error, method(9)},
      {"ZP-5", "AnotherMethodOfAnItemThatIsNoPartIsRefused", Refused, Error,
       [](PackageSpec& p) {
         p.add("c d");
         method(95)(p);
       }},
      {"ZP-5", "AnEmptyDeflatedItemWithoutDataIsAccepted", Accepted, Silent, addEmptyDeflated,
       [](const ReadPackage& read) { EXPECT_EQ(read.parts.at("empty.m").content, ""); }},
      {"ZP-6", "EncryptionIsRefused", Refused, Error, flags(1)},
      {"ZP-6", "StrongEncryptionIsRefused", Refused, Error, flags(1 << 6)},
      {"ZP-6", "MaskedHeadersAreRefused", Refused, Error, flags(1 << 13)},
      {"ZP-6", "AesIsRefused", Refused, Error, method(99)},
      {"ZP-6", "EncryptionOfAnItemThatIsNoPartIsRefused", Refused, Error,
       [](PackageSpec& p) {
         p.add("c d");
         flags(1)(p);
       }},
      {"ZP-7", "AnotherLocalNameIsRefused", RefusedOnUse, Error,
       local([](HeaderOverrides& header) { header.name = "c.m"; })},
      {"ZP-7", "AnotherLocalMethodIsRefused", RefusedOnUse, Error,
       local([](HeaderOverrides& header) { header.method = 0; })},
      {"ZP-7", "AnotherLocalChecksumIsRefused", RefusedOnUse, Error,
       local([](HeaderOverrides& header) { header.crc = 1; })},
      {"ZP-7", "AnotherLocalSizeIsRefused", RefusedOnUse, Error,
       local([](HeaderOverrides& header) { header.size = 1; })},
      {"ZP-7", "AnotherLocalPackedSizeIsRefused", RefusedOnUse, Error,
       local([](HeaderOverrides& header) { header.packedSize = 1; })},
      {"ZP-7", "AStoredItemOfTwoSizesIsRefused", Refused, Error,
       [](PackageSpec& p) {
         p.last().deflate = false;
         p.last().local.size = p.last().central.size = 3001;
       }},
      {"ZP-7", "LessDataThanDeclaredIsRefused", RefusedOnUse, Error,
       bothHeaders([](HeaderOverrides& header) { header.size = 3001; }), nullptr, "ZP-15"},
      {"ZP-7", "LocalZerosBesideADescriptorAreAccepted", Accepted, Silent,
       descriptor(true, false, true)},
      {"ZP-7", "RightLocalValuesBesideADescriptorAreAccepted", Accepted, Silent,
       [data](PackageSpec& p) {
         p.last().descriptor = true;
         p.last().local.size = 3000;
         p.last().local.crc = crcOf(data);
         p.last().local.packedSize = static_cast<std::uint32_t>(deflated(data).size());
       }},
      {"ZP-7", "AWrongLocalValueBesideADescriptorIsRefused", RefusedOnUse, Error,
       [](PackageSpec& p) {
         p.last().descriptor = true;
         p.last().local.size = 7;
       }},
      {"ZP-8", "ADescriptorWithoutSignatureIsAccepted", Accepted, Silent,
       descriptor(false, false, true)},
      {"ZP-8", "AWideDescriptorIsAccepted", Accepted, Warning, descriptor(true, true, true)},
      {"ZP-8", "AWideDescriptorWithoutSignatureIsAccepted", Accepted, Warning,
       descriptor(false, true, true)},
      {"ZP-8", "ADescriptorOfAStoredItemIsAccepted", Accepted, Silent,
       descriptor(true, false, false)},
      {"ZP-8", "AWideDescriptorOfAnEmptyItemIsAccepted", Accepted, Warning,
       addEmptyWithDescriptor(true, false)},
      {"ZP-8", "AWideDescriptorOfAnEmptyItemWithoutSignatureIsAccepted", Accepted, Warning,
       addEmptyWithDescriptor(false, false)},
      {"ZP-8", "AWideDescriptorOfAnEmptyDeflatedItemIsAccepted", Accepted, Warning,
       addEmptyWithDescriptor(true, true)},
      {"ZP-8", "AMissingDescriptorIsRefused", RefusedOnUse, Error, wrongDescriptor("")},
      {"ZP-8", "ADescriptorWithAnotherChecksumIsRefused", RefusedOnUse, Error,
       wrongDescriptor(le32(0x08074b50) + le32(1) + le32(deflated(data).size()) + le32(3000))},
      {"ZP-8", "ADescriptorWithAnotherSizeIsRefused", RefusedOnUse, Error,
       wrongDescriptor(le32(0x08074b50) + le32(crcOf(data)) + le32(deflated(data).size()) +
                       le32(3001))},
      {"ZP-15", "AWrongChecksumIsRefused", RefusedOnUse, Error,
       bothHeaders([](HeaderOverrides& header) { header.crc = 1; })},
      {"ZP-15", "ABrokenStreamIsRefused", RefusedOnUse, Error,
       [](PackageSpec& p) { p.last().packed = std::string(200, '\xff'); }},
      {"ZP-15", "ACutStreamIsRefused", RefusedOnUse, Error,
       [data](PackageSpec& p) {
         const std::string whole = deflated(data);
         p.last().packed = whole.substr(0, whole.size() - 1);
       }},
      {"ZP-15", "AnItemThatIsNoPartIsCheckedToo", Accepted, Error,
       [](PackageSpec& p) {
         p.add("c d");
         p.last().local.crc = p.last().central.crc = 1;
       }},
  };
}

std::vector<Case> containerCases() {
  return {
      {"ZP-9", "SizesInBothHeadersAreAccepted", Accepted, Warning, wideSizes(true, true)},
      {"ZP-9", "SizesInTheLocalHeaderAreAccepted", Accepted, Silent, wideSizes(true, false)},
      {"ZP-9", "SizesInTheDirectoryAreAccepted", Accepted, Warning, wideSizes(false, true)},
      {"ZP-9", "OneValueAloneIsAccepted", Accepted, Warning, oneWideValue},
      {"ZP-9", "AnEndRecordWithoutNeedIsAccepted", Accepted, Silent,
       [](PackageSpec& p) { p.zip.zip64 = true; }},
      {"ZP-9", "OldDiskNumbersMayBeUnset", Accepted, Silent, wideEndWithOldDisks},
      {"ZP-9", "MoreThan65535ItemsAreAccepted", Accepted, Silent, addManyItems,
       [](const ReadPackage& read) { EXPECT_EQ(read.parts.size(), 66002u); }},
      {"ZP-9", "AMissingSizeIsRefused", Refused, Error,
       [](PackageSpec& p) { p.last().central.size = kAll; }},
      {"ZP-9", "AMissingSizeInTheLocalHeaderIsRefused", RefusedOnUse, Error,
       local([](HeaderOverrides& header) { header.size = header.packedSize = kAll; })},
      {"ZP-9", "AMissingOffsetIsRefused", Refused, Error,
       [](PackageSpec& p) { p.last().central.offset = kAll; }},
      {"ZP-9", "AMissingEndRecordIsRefused", Refused, Error,
       [](PackageSpec& p) { p.zip.directoryOffset = kAll; }},
      {"ZP-11", "CommentsAreIgnored", Accepted, Silent,
       [](PackageSpec& p) {
         p.zip.comment = "a comment";
         p.last().comment = "another";
       }},
      {"ZP-11", "UnknownExtraFieldsAreIgnored", Accepted, Silent,
       bothHeaders([](HeaderOverrides& header) { header.extra = extraField(0x7777, "data"); })},
      {"ZP-11", "AnyHostSystemIsAccepted", Accepted, Silent,
       [](PackageSpec& p) {
         p.last().central.madeBy = 10 << 8 | 20;
         p.last().central.externalAttributes = 0x20;
         p.last().central.internalAttributes = 1;
       }},
      {"ZP-11", "TimeZeroIsAccepted", Accepted, Silent,
       bothHeaders([](HeaderOverrides& header) { header.dosTime = 0; })},
      {"ZP-11", "AForeignBeginningThatIsCountedIsAccepted", Accepted, Warning,
       [](PackageSpec& p) { p.zip.prefix = "#!/bin/sh\n"; }},
      {"ZP-11", "AForeignBeginningThatIsNotCountedIsRefused", Refused, Error, hideBeginning,
       nullptr, "ZP-16"},
      {"ZP-12", "AGrowthHintIsIgnored", Accepted, Silent, addHint},
      {"ZP-13", "TheOrderOfItemsMeansNothing", Accepted, Silent, reverse},
      {"ZP-14", "AnItemOnAnotherVolumeIsRefused", Refused, Error,
       [](PackageSpec& p) { p.last().central.disk = 1; }},
      {"ZP-14", "AnotherVolumeInTheEndRecordIsRefused", Refused, Error,
       [](PackageSpec& p) { p.zip.disk = 1; }},
      {"ZP-14", "SeveralVolumesInTheLocatorAreRefused", Refused, Error,
       [](PackageSpec& p) {
         p.zip.zip64 = true;
         p.zip.disks = 2;
       }},
      {"ZP-16", "AFileWithoutEndRecordIsRefused", Refused, Error,
       [](PackageSpec& p) { p.zip.endRecord = "text"; }},
      {"ZP-16", "ADirectoryElsewhereIsRefused", Refused, Error,
       [](PackageSpec& p) { p.zip.directoryOffset = 3; }},
      {"ZP-16", "MoreEntriesThanThereAreAreRefused", Refused, Error,
       [](PackageSpec& p) { p.zip.entries = 5; }},
      {"ZP-16", "FewerEntriesThanThereAreAreRefused", Refused, Error,
       [](PackageSpec& p) { p.zip.entries = 3; }},
      {"ZP-16", "DataBeyondTheFileAreRefused", Refused, Error,
       bothHeaders([](HeaderOverrides& header) { header.packedSize = 1u << 30; })},
      {"ZP-16", "AnEntryThatIsNoneIsRefused", Refused, Error,
       [](PackageSpec& p) { p.last().central.signature = 1; }},
      {"ZP-16", "AnotherEndRecordInTheCommentIsRefused", Refused, Error,
       [](PackageSpec& p) { p.zip.comment = endRecordOf(p); }},
      {"ZP-16", "AnotherEndRecordBehindIsRefused", Refused, Error,
       [](PackageSpec& p) { p.zip.suffix = endRecordOf(p); }},
      {"ZP-16", "ALineBreakAtTheEndDrawsAWarning", Accepted, Warning,
       [](PackageSpec& p) { p.zip.suffix = "\n"; }},
      {"ZP-16", "ManyBytesAtTheEndDrawAWarning", Accepted, Warning,
       [](PackageSpec& p) { p.zip.suffix = std::string(1000000, '\0'); }},
      {"ZP-16", "BytesAtTheEndBeyondTheBoundAreRefused", Refused, Error,
       [](PackageSpec& p) { p.zip.suffix = std::string(std::size_t{16} << 20, '\0'); }},
      {"ZP-16", "AGapDrawsAWarning", Accepted, Warning,
       [](PackageSpec& p) { p.last().before = "gap"; }},
      {"ZP-16", "MalformedExtraFieldsDrawAWarning", Accepted, Warning,
       [](PackageSpec& p) { p.last().central.extra = "xyz"; }},
      {"ZP-16", "MalformedLocalExtraFieldsDrawAWarning", Accepted, Warning,
       local([](HeaderOverrides& header) { header.extra = "xyz"; })},
      {"ZP-16", "TwoZip64FieldsDrawAWarning", Accepted, Warning,
       [](PackageSpec& p) { p.last().central.extra = zip64(1, 2) + zip64(1, 2); }},
      {"ZP-16", "AGapBehindTheZip64EndRecordDrawsAWarning", Accepted, Warning,
       addGapBehindWideEndRecord},
  };
}

}  // namespace

std::vector<Case> zipCases() {
  std::vector<Case> all = nameCases();
  for (const std::vector<Case>& more : {dataCases(), containerCases()}) {
    all.insert(all.end(), more.begin(), more.end());
  }
  return all;
}

}  // namespace test::conformance
