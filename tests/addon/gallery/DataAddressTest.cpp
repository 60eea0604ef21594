// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/DataAddress.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using addon::gallery::detail::dataAddress;
using addon::gallery::detail::imageTypeOf;

std::span<const unsigned char> bytes(std::string_view text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

TEST(ImageType, IsRecognisedByTheFirstBytes) {
  EXPECT_EQ(imageTypeOf(bytes("\x89PNG\r\n\x1a\n....")), "image/png");
  EXPECT_EQ(imageTypeOf(bytes("\xFF\xD8\xFF\xE0....")), "image/jpeg");
  EXPECT_EQ(imageTypeOf(bytes("GIF87a")), "image/gif");
  EXPECT_EQ(imageTypeOf(bytes("GIF89a")), "image/gif");
  EXPECT_EQ(imageTypeOf(bytes("RIFF....WEBPVP8 ")), "image/webp");
  EXPECT_EQ(imageTypeOf(bytes(std::string_view("BM....\0\0\0\0....", 14))), "image/bmp");
}

TEST(ImageType, OfAnythingElseIsEmpty) {
  for (const char* text : {"", "\x89PNG", "GIF88a", "RIFF....WAVE", "BM is a text", "RIFF",
                           "<svg xmlns='http://www.w3.org/2000/svg'/>", "<html>", "%PDF-1.7"}) {
    EXPECT_EQ(imageTypeOf(bytes(text)), "") << text;
  }
  EXPECT_EQ(imageTypeOf(bytes(std::string_view("II*\0....", 8))), "") << "browsers do not show it";
}

// python3: base64.b64encode(...)
TEST(DataAddress, CarriesTheBytesInBase64) {
  EXPECT_EQ(dataAddress("image/png", bytes("")), "data:image/png;base64,");
  EXPECT_EQ(dataAddress("image/png", bytes("f")), "data:image/png;base64,Zg==");
  EXPECT_EQ(dataAddress("image/png", bytes("fo")), "data:image/png;base64,Zm8=");
  EXPECT_EQ(dataAddress("image/png", bytes("foo")), "data:image/png;base64,Zm9v");
  EXPECT_EQ(dataAddress("image/gif", bytes("\xFB\xFF\xFE\xFF")), "data:image/gif;base64,+//+/w==");
}

}  // namespace
