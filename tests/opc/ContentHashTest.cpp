// SPDX-License-Identifier: MIT
#include "opc/ContentHash.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>

namespace opc {
namespace {

std::span<const unsigned char> bytesOf(std::string_view text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

std::string textOf(std::size_t size) {
  std::string text;
  for (std::size_t i = 0; text.size() < size; ++i) text += std::to_string(i * i) + " ";
  return text.substr(0, size);
}

TEST(ContentHash, DoesNotDependOnThePiecesInWhichTheContentComes) {
  const std::string text = textOf(5000);
  for (const std::size_t piece : {1u, 7u, 1000u, 1023u, 1024u, 1025u, 2048u}) {
    ContentHash hash;
    for (std::size_t at = 0; at < text.size(); at += piece) {
      hash.update(bytesOf(std::string_view(text).substr(at, piece)));
    }

    EXPECT_EQ(hash.finish(), contentHash(bytesOf(text))) << piece;
  }
}

TEST(ContentHash, DiffersWhenOneBitDoes) {
  for (const std::size_t size : {1u, 8u, 15u, 1024u, 1025u, 3000u}) {
    std::string text = textOf(size);
    std::set<ContentHash::Value> seen{contentHash(bytesOf(text))};
    for (std::size_t at = 0; at < size; ++at) {
      text[at] = static_cast<char>(text[at] ^ 1);
      seen.insert(contentHash(bytesOf(text)));
      text[at] = static_cast<char>(text[at] ^ 1);
    }

    EXPECT_EQ(seen.size(), size + 1);
  }
}

TEST(ContentHash, DiffersWhenWordsOrBlocksAreExchanged) {
  const std::string text = textOf(4096);
  for (const std::size_t size : {8u, 16u, 1024u, 2048u}) {
    const std::string other =
        text.substr(size, size) + text.substr(0, size) + text.substr(2 * size);

    EXPECT_NE(contentHash(bytesOf(other)), contentHash(bytesOf(text))) << size;
  }
}

}  // namespace
}  // namespace opc
