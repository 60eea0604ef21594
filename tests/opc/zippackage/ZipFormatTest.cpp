// SPDX-License-Identifier: MIT
#include "opc/zippackage/ZipFormat.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

Bytes bytesOf(const std::string& text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

template <typename Record>
std::string encoded(const Record& record) {
  std::string bytes(Record::kSize, '\xAA');
  record.encode(reinterpret_cast<unsigned char*>(bytes.data()));
  return bytes;
}

using test::le16;
using test::le32;
using test::le64;

TEST(ZipFormat, ALocalHeaderIsThirtyBytesInTheOrderOfTheFormat) {
  const LocalHeader header{20, 8, 8, 0x12345678, 0xCAFEBABE, 100, 200, 3, 4};

  const std::string bytes = encoded(header);

  EXPECT_EQ(bytes, "PK\x03\x04" + le16(20) + le16(8) + le16(8) + le32(0x12345678) +
                       le32(0xCAFEBABE) + le32(100) + le32(200) + le16(3) + le16(4));
}

TEST(ZipFormat, ALocalHeaderComesBackAsItWasWritten) {
  const auto header =
      LocalHeader::decode(bytesOf(encoded(LocalHeader{45, 0x808, 8, 1, 2, 3, 4, 5, 6})));

  ASSERT_TRUE(header);
  EXPECT_EQ(header->versionNeeded, 45);
  EXPECT_EQ(header->flags, 0x808);
  EXPECT_EQ(header->method, 8);
  EXPECT_EQ(header->dosTime, 1u);
  EXPECT_EQ(header->crc, 2u);
  EXPECT_EQ(header->packedSize, 3u);
  EXPECT_EQ(header->size, 4u);
  EXPECT_EQ(header->nameLength, 5);
  EXPECT_EQ(header->extraLength, 6);
}

TEST(ZipFormat, ACentralHeaderIsFortySixBytesInTheOrderOfTheFormat) {
  const CentralHeader header{0x314, 20, 8, 8, 0x12345678, 0xCAFEBABE, 100,       200,
                             3,     4,  5, 6, 7,          0x81A40000, 0xFEDCBA98};

  const std::string bytes = encoded(header);

  EXPECT_EQ(bytes, "PK\x01\x02" + le16(0x314) + le16(20) + le16(8) + le16(8) + le32(0x12345678) +
                       le32(0xCAFEBABE) + le32(100) + le32(200) + le16(3) + le16(4) + le16(5) +
                       le16(6) + le16(7) + le32(0x81A40000) + le32(0xFEDCBA98));
}

TEST(ZipFormat, ACentralHeaderComesBackAsItWasWritten) {
  const std::string bytes = encoded(
      CentralHeader{0x314, 20, 8, 8, 0x12345678, 0xCAFEBABE, 100, 200, 3, 4, 5, 6, 7, 8, 9});

  const auto header = CentralHeader::decode(bytesOf(bytes));

  ASSERT_TRUE(header);
  EXPECT_EQ(encoded(*header), bytes);
  EXPECT_EQ(header->fullSize(), 46u + 3 + 4 + 5);
  EXPECT_EQ(header->headerOffset, 9u);
}

TEST(ZipFormat, EndRecordsComeBackAsTheyWereWritten) {
  const std::string end = encoded(EndRecord{1, 2, 3, 4, 5, 6, 7});
  const std::string locator = encoded(Zip64Locator{1, 0x123456789A, 3});
  const std::string wide =
      encoded(Zip64EndRecord{44, 45, 46, 1, 2, 0x1111111111, 0x2222222222, 3, 4});

  EXPECT_EQ(end,
            "PK\x05\x06" + le16(1) + le16(2) + le16(3) + le16(4) + le32(5) + le32(6) + le16(7));
  EXPECT_EQ(locator, "PK\x06\x07" + le32(1) + le64(0x123456789A) + le32(3));
  EXPECT_EQ(wide, "PK\x06\x06" + le64(44) + le16(45) + le16(46) + le32(1) + le32(2) +
                      le64(0x1111111111) + le64(0x2222222222) + le64(3) + le64(4));
  EXPECT_EQ(encoded(EndRecord::decode(bytesOf(end)).value()), end);
  EXPECT_EQ(encoded(Zip64Locator::decode(bytesOf(locator)).value()), locator);
  EXPECT_EQ(encoded(Zip64EndRecord::decode(bytesOf(wide)).value()), wide);
}

TEST(ZipFormat, AShortRecordOrOneWithAnotherSignatureIsNotDecoded) {
  const std::string bytes = encoded(LocalHeader{});

  EXPECT_FALSE(LocalHeader::decode(bytesOf(bytes.substr(0, 29))));
  EXPECT_FALSE(LocalHeader::decode({}));
  EXPECT_FALSE(CentralHeader::decode(bytesOf(bytes + bytes)));
  EXPECT_FALSE(EndRecord::decode(bytesOf(bytes)));
  EXPECT_FALSE(Zip64Locator::decode(bytesOf(bytes)));
  EXPECT_FALSE(Zip64EndRecord::decode(bytesOf(bytes + bytes)));
}

TEST(DataDescriptor, IsKnownInAllFourForms) {
  const DataDescriptor descriptor{0xCAFEBABE, 100, 200};
  const std::string narrow = le32(0xCAFEBABE) + le32(100) + le32(200);
  const std::string wide = le32(0xCAFEBABE) + le64(100) + le64(200);

  EXPECT_EQ(descriptor.lengthIn(bytesOf(narrow + "PK.."), false, 0), 12u);
  EXPECT_EQ(descriptor.lengthIn(bytesOf("PK\x07\x08" + narrow), false, 0), 16u);
  EXPECT_EQ(descriptor.lengthIn(bytesOf(wide), false, 0), 20u);
  EXPECT_EQ(descriptor.lengthIn(bytesOf("PK\x07\x08" + wide), false, 0), 24u);
}

TEST(DataDescriptor, WithOtherValuesIsNotRecognised) {
  const std::string bytes = "PK\x07\x08" + le32(1) + le32(100) + le32(200);

  EXPECT_EQ((DataDescriptor{2, 100, 200}.lengthIn(bytesOf(bytes), false, 0)), 0u);
  EXPECT_EQ((DataDescriptor{1, 101, 200}.lengthIn(bytesOf(bytes), false, 0)), 0u);
  EXPECT_EQ((DataDescriptor{1, 100, 201}.lengthIn(bytesOf(bytes), false, 0)), 0u);
  EXPECT_EQ((DataDescriptor{1, 100, 200}.lengthIn(bytesOf(bytes.substr(0, 15)), false, 0)), 0u);
}

TEST(DataDescriptor, BeyondFourGibibytesIsKnownInItsWideFormsOnly) {
  const DataDescriptor descriptor{1, 0x100000002, 0x100000003};

  EXPECT_EQ(descriptor.lengthIn(bytesOf(le32(1) + le64(0x100000002) + le64(0x100000003)), false, 0),
            20u);
  EXPECT_EQ(descriptor.lengthIn(bytesOf(le32(1) + le32(2) + le32(3)), false, 0), 0u);
}

TEST(DataDescriptor, OfZerosHasTheFormThatIsTriedFirst) {
  const std::string zeros(24, '\0');

  EXPECT_EQ((DataDescriptor{}.lengthIn(bytesOf(zeros), false, 0)), 12u);
  EXPECT_EQ((DataDescriptor{}.lengthIn(bytesOf(zeros), true, 0)), 20u);
}

TEST(DataDescriptor, OfZerosHasTheFormThatFillsTheGap) {
  const std::string bare(24, '\0');
  const std::string marked = "PK\x07\x08" + bare.substr(4);

  for (const bool wideFirst : {false, true}) {
    EXPECT_EQ((DataDescriptor{}.lengthIn(bytesOf(bare), wideFirst, 12)), 12u);
    EXPECT_EQ((DataDescriptor{}.lengthIn(bytesOf(bare), wideFirst, 20)), 20u);
    EXPECT_EQ((DataDescriptor{}.lengthIn(bytesOf(marked), wideFirst, 16)), 16u);
    EXPECT_EQ((DataDescriptor{}.lengthIn(bytesOf(marked), wideFirst, 24)), 24u);
  }
  EXPECT_EQ((DataDescriptor{}.lengthIn(bytesOf(marked), false, 17)), 16u);
  EXPECT_EQ((DataDescriptor{}.lengthIn(bytesOf(marked), true, 17)), 24u);
}

TEST(DataDescriptor, WhoseChecksumIsTheSignatureIsKnownWithoutOne) {
  const DataDescriptor descriptor{DataDescriptor::kSignature, 5, 6};
  const std::string bare = le32(DataDescriptor::kSignature) + le32(5) + le32(6);

  EXPECT_EQ(descriptor.lengthIn(bytesOf(bare + std::string(20, 'x')), false, 0), 12u);
}

}  // namespace
}  // namespace opc::zippackage
