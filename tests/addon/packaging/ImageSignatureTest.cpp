// SPDX-License-Identifier: MIT
#include "addon/packaging/ImageSignature.h"

#include <gtest/gtest.h>

#include "tests/support/PiecewiseStream.h"

namespace {

using addon::packaging::imageTypeOf;
using addon::packaging::isImageTypeTold;
using namespace std::string_view_literals;

std::string_view typeOf(std::string_view text) {
  return imageTypeOf({reinterpret_cast<const unsigned char*>(text.data()), text.size()});
}

TEST(ImageSignature, RecognisesTheTypeByTheFirstBytes) {
  EXPECT_EQ(typeOf("\x89PNG\r\n\x1A\n"), "image/png");
  EXPECT_EQ(typeOf("GIF87a"), "image/gif");
  EXPECT_EQ(typeOf("GIF89a and more"), "image/gif");
  EXPECT_EQ(typeOf("\xFF\xD8\xFF"), "image/jpeg");
  EXPECT_EQ(typeOf("BM....\0\0\0\0"sv), "image/bmp");
  EXPECT_EQ(typeOf("II\x2A\0"sv), "image/tiff");
  EXPECT_EQ(typeOf("MM\0\x2A"sv), "image/tiff");
  EXPECT_EQ(typeOf("II\x2B\0"sv), "image/tiff");
  EXPECT_EQ(typeOf("MM\0\x2B"sv), "image/tiff");
  EXPECT_EQ(typeOf("RIFF....WEBP"), "image/webp");
}

TEST(ImageSignature, RecognisesNothingInOtherBytes) {
  for (const std::string_view text :
       {""sv, "\x89PNG"sv, "GIF88a"sv, "BM"sv, "BM is a text"sv, "II*."sv, "RIFF"sv,
        "RIFF....WAVE"sv, "<svg xmlns='http://www.w3.org/2000/svg'/>"sv, "%PDF-1.7"sv}) {
    EXPECT_EQ(typeOf(text), "") << text;
  }
}

TEST(ImageSignature, KnowsWhichTypesItRecognises) {
  EXPECT_TRUE(isImageTypeTold("image/tiff"));
  EXPECT_TRUE(isImageTypeTold("image/webp"));
  EXPECT_FALSE(isImageTypeTold("image/avif"));
  EXPECT_FALSE(isImageTypeTold(""));
}

TEST(ImageSignature, NeedsNoMoreBytesThanItSays) {
  const std::string_view longest = "RIFF....WEBP";

  EXPECT_EQ(longest.size(), addon::packaging::kImageSignatureSize);
  EXPECT_EQ(typeOf(longest.substr(0, longest.size() - 1)), "");
}

TEST(ImageSignature, IsReadFromAStreamOfSmallPieces) {
  test::PiecewiseStream stream("RIFF....WEBP and more", 5);

  EXPECT_EQ(imageTypeOf(stream), "image/webp");
  EXPECT_EQ(stream.furthest(), addon::packaging::kImageSignatureSize);
}

}  // namespace
