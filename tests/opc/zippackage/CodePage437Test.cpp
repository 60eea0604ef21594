// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/CodePage437.h"

#include <gtest/gtest.h>

#include "opc/Text.h"
#include "tests/opc/zippackage/PackageFixture.h"

namespace opc::zippackage {
namespace {

using detail::appendFromCodePage437;

std::string mapped(std::string_view bytes) {
  std::string text;
  appendFromCodePage437(text, bytes);
  return text;
}

TEST(CodePage437, KeepsAscii) {
  EXPECT_EQ(mapped("a/b-\x01~.txt"), "a/b-\x01~.txt");
}

TEST(CodePage437, MapsAccentsAndBoxes) {
  EXPECT_EQ(mapped("\x81"
                   "ber\x9b\xc9\xfb"),
            "über¢╔√");
}

TEST(CodePage437, MapsEveryByteAsPythonDoes) {
  std::string all;
  for (int byte = 0x80; byte < 0x100; ++byte) all += static_cast<char>(byte);

  const std::string expected = test::outputOf(
      "/usr/bin/python3 -c \"import sys; "
      "sys.stdout.buffer.write(bytes(range(128, 256)).decode('cp437').encode())\"");

  EXPECT_EQ(mapped(all), expected);
  EXPECT_TRUE(isUtf8(mapped(all)));
}

}  // namespace
}  // namespace opc::zippackage
