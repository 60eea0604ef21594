// SPDX-License-Identifier: MIT
#include "opc/Words.h"

#include <gtest/gtest.h>

#include <bit>
#include <string>

namespace opc {
namespace {

// Byte by byte, as the definition has it.
std::uint64_t packed(const std::string& bytes) {
  std::uint64_t word = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) {
    word = word << 8 | static_cast<unsigned char>(bytes[i]);
  }
  return word;
}

TEST(Words, ATailIsItsBytesAndNothingElse) {
  if (std::endian::native != std::endian::little) GTEST_SKIP() << "the order is the machine's";
  const std::string bytes = "\xf1\x02\xe3\x04\xd5\x06\xc7";

  for (std::size_t count = 0; count <= bytes.size(); ++count) {
    EXPECT_EQ(loadTail(bytes.data(), count), packed(bytes.substr(0, count))) << count;
  }
}

TEST(Words, TailsThatDifferInOneByteAreDifferentNumbers) {
  const std::string bytes = "abcdefg";

  for (std::size_t count = 1; count <= bytes.size(); ++count) {
    for (std::size_t at = 0; at < count; ++at) {
      std::string other = bytes;
      other[at] = 'z';
      EXPECT_NE(loadTail(other.data(), count), loadTail(bytes.data(), count)) << count << at;
    }
  }
}

}  // namespace
}  // namespace opc
