// SPDX-License-Identifier: MIT
#include "opc/zippackage/HeaderMarks.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/opc/zippackage/DirectoryFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

using test::extraField;
using test::le16;
using test::le32;
using test::le64;
using test::ZipBuilder;

Bytes bytesOf(const std::string& text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

MarkFault faultOf(std::string_view name, int host, std::uint32_t attributes) {
  CentralHeader header;
  header.madeBy = static_cast<std::uint16_t>(host << 8 | 20);
  header.externalAttributes = attributes;
  return markFaultOf(name, header);
}

}  // namespace

TEST(HeaderMarks, UsualAttributesOfFilesAndFoldersAgreeWithTheirNames) {
  for (const int host : {0, 3, 10, 19}) {
    EXPECT_EQ(faultOf("a", host, 0), MarkFault::None);
    EXPECT_EQ(faultOf("a", host, 0x20), MarkFault::None);
    EXPECT_EQ(faultOf("a", host, 0100644u << 16), MarkFault::None);
    EXPECT_EQ(faultOf("a/", host, 0040755u << 16 | 0x10), MarkFault::None);
    EXPECT_EQ(faultOf("a/", host, 0x10), MarkFault::None);
    EXPECT_EQ(faultOf("a/", host, 0), MarkFault::None);
  }
}

TEST(HeaderMarks, AFolderNeedsASlash) {
  EXPECT_EQ(faultOf("a", 3, 0040755u << 16), MarkFault::FolderWithoutSlash);
  EXPECT_EQ(faultOf("a", 0, 0x10), MarkFault::FolderWithoutSlash);
  EXPECT_EQ(faultOf("a", 1, 0104000u << 16), MarkFault::FolderWithoutSlash);
  EXPECT_EQ(faultOf("a", 3, 0104755u << 16), MarkFault::None);
}

TEST(HeaderMarks, OnlySomeSystemsHaveLinksAndLabels) {
  EXPECT_EQ(faultOf("a", 3, 0120777u << 16), MarkFault::None);
  EXPECT_EQ(faultOf("a", 19, 0120777u << 16), MarkFault::None);
  EXPECT_EQ(faultOf("a", 0, 0120777u << 16), MarkFault::LinkOfOtherSystem);
  EXPECT_EQ(faultOf("a/", 3, 0120777u << 16), MarkFault::LinkNamedFolder);
  EXPECT_EQ(faultOf("a", 0, 0x08), MarkFault::None);
  EXPECT_EQ(faultOf("a", 3, 0x08), MarkFault::LabelOfOtherSystem);
}

TEST(HeaderMarks, AUnicodePathIsComparedWhateverItsChecksum) {
  const std::string same = extraField(0x7075, "\x01" + le32(0) + "a");
  const std::string other = extraField(0x7075, "\x01" + le32(0) + "b");

  EXPECT_EQ(otherUnicodePath("a", bytesOf(same)), std::nullopt);
  EXPECT_EQ(otherUnicodePath("a", bytesOf(same + other)), "b");
  EXPECT_EQ(otherUnicodePath("a", bytesOf(extraField(0x7075, "\x01"))), "");
  EXPECT_EQ(otherUnicodePath("a", bytesOf(extraField(0x6375, "other"))), std::nullopt);
}

TEST(HeaderMarks, AnEndRecordIsFoundAnywhereInAComment) {
  const std::string record = le32(EndRecord::kSignature) + le64(0) + le64(0) + le16(0);

  EXPECT_EQ(findEndRecord(bytesOf("x" + record + "x")), EndRecordTrace::Record);
  EXPECT_EQ(findEndRecord(bytesOf(record.substr(0, 21))), EndRecordTrace::Signature);
  EXPECT_EQ(findEndRecord(bytesOf("PKPK\x05\x06")), EndRecordTrace::Signature);
  EXPECT_EQ(findEndRecord(bytesOf("PK\x05")), EndRecordTrace::None);
}

TEST(HeaderMarks, SmallZip64ValuesWithoutTheRecordAreAWarning) {
  ZipBuilder builder = test::twoItems();
  builder.items[0].central.size = 0xFFFFFFFF;
  builder.items[0].central.extra = extraField(1, le64(5));

  EXPECT_EQ(test::faultsOf(builder), std::vector{ZipFaultKind::Zip64Needless});
  EXPECT_EQ(test::refusalOf(builder), "");
}

}  // namespace opc::zippackage
