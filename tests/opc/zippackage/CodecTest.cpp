// SPDX-License-Identifier: MIT
#include "opc/zippackage/Codec.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/opc/zippackage/PackageFixture.h"
#include "tests/support/ZipBuilder.h"

namespace opc::zippackage {
namespace {

Bytes bytesOf(std::string_view text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

std::string unpacked(std::string_view packed, std::size_t size) {
  std::string text(size, '\0');
  WholeInflater().unpack(bytesOf(packed), reinterpret_cast<unsigned char*>(text.data()), size);
  return text;
}

TEST(WholeDeflater, WhatItPacksUnpacksAtEveryLevel) {
  const std::string text = test::packableText(300000);
  WholeDeflater deflater;
  for (int level = 1; level <= 9; ++level) {
    ByteBuffer packed;

    ASSERT_TRUE(deflater.pack(level, bytesOf(text), packed)) << level;

    EXPECT_LT(packed.size(), text.size() / 3) << level;
    EXPECT_EQ(unpacked({reinterpret_cast<const char*>(packed.data()), packed.size()}, text.size()),
              text);
  }
}

TEST(WholeDeflater, DeclinesWhatDoesNotGetSmaller) {
  WholeDeflater deflater;
  ByteBuffer packed;

  EXPECT_FALSE(deflater.pack(6, bytesOf(test::randomText(100000)), packed));
  EXPECT_FALSE(deflater.pack(6, bytesOf("a"), packed));
  EXPECT_FALSE(deflater.pack(6, {}, packed));
}

TEST(WholeDeflater, PacksShortTextsToo) {
  WholeDeflater deflater;
  ByteBuffer packed;

  EXPECT_TRUE(
      deflater.pack(6, bytesOf("<a><b>some text</b><b>some text</b><b>some text</b></a>"), packed));
  EXPECT_LT(packed.size(), 55u);
}

TEST(WholeInflater, RefusesDataThatAreNotJustTheDeclaredOnes) {
  const std::string text = test::packableText(5000);
  const std::string packed = test::deflated(text);

  EXPECT_EQ(unpacked(packed, 5000), text);
  EXPECT_EQ(test::ruleOf([&] { unpacked(packed, 4999); }), "ZP-15");
  EXPECT_EQ(test::ruleOf([&] { unpacked(packed, 5001); }), "ZP-15");
  EXPECT_EQ(test::ruleOf([&] { unpacked(packed + "x", 5000); }), "ZP-15");
  EXPECT_EQ(test::ruleOf([&] { unpacked(packed.substr(0, packed.size() - 1), 5000); }), "ZP-15");
  EXPECT_EQ(test::ruleOf([&] { unpacked("", 0); }), "ZP-15");
  EXPECT_EQ(test::ruleOf([&] { unpacked("\xff\xff\xff", 3); }), "ZP-15");
  EXPECT_EQ(unpacked(test::deflated(""), 0), "");
}

TEST(StreamDeflater, WhatItPacksInPiecesUnpacksInPieces) {
  const std::string text = test::packableText(100000) + test::randomText(100000);
  StreamDeflater deflater(6);
  std::string packed;
  unsigned char out[777];
  for (std::size_t at = 0; at <= text.size(); at += 5000) {
    Bytes data = bytesOf(text).subspan(at, std::min<std::size_t>(5000, text.size() - at));
    const bool finish = data.empty();
    std::size_t count = 0;
    do {
      count = deflater.pack(data, finish, out, sizeof out);
      packed.append(reinterpret_cast<const char*>(out), count);
    } while (count == sizeof out || !data.empty());
  }

  StreamInflater inflater;
  std::string result;
  Bytes left = bytesOf(packed);
  while (!inflater.isEnd()) {
    const std::size_t count = inflater.unpack(left, out, sizeof out);
    ASSERT_TRUE(count > 0 || inflater.isEnd());
    result.append(reinterpret_cast<const char*>(out), count);
  }

  EXPECT_EQ(result, text);
  EXPECT_TRUE(left.empty());
}

TEST(Codec, AnExpansionBeyondWhatDeflateCanDoIsImplausible) {
  EXPECT_TRUE(isPlausible(10, 10320));
  EXPECT_FALSE(isPlausible(10, 10321));
  EXPECT_TRUE(isPlausible(0, 0));
  EXPECT_FALSE(isPlausible(0, 1));
  EXPECT_TRUE(isPlausible(UINT64_MAX, UINT64_MAX));
}

TEST(Codec, ZerosPackedByZlibArePlausible) {
  const std::string zeros(10000000, '\0');

  EXPECT_TRUE(isPlausible(test::deflated(zeros).size(), zeros.size()));
}

}  // namespace
}  // namespace opc::zippackage
