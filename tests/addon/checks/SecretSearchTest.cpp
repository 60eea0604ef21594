// SPDX-License-Identifier: MIT
#include "addon/checks/detail/SecretSearch.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using addon::checks::detail::Secret;
using addon::checks::detail::SecretFile;
using addon::checks::detail::secretFileOf;
using addon::checks::detail::SecretSearch;

namespace {

// Put together here, so that this file has no token.
const std::string kToken = std::string("gh") + "p_" + "Ab3dEf9hIj2kLm5nOp8qRs1tUv4wXy7zAc6e";

std::vector<std::size_t> linesOf(const std::string& text, SecretFile kind = SecretFile::No) {
  std::istringstream source(text);
  opc::StdIStreamAdaptor stream(source);
  std::vector<std::size_t> lines;
  for (const Secret& secret : SecretSearch().find(stream, kind)) lines.push_back(secret.line);
  return lines;
}

using Lines = std::vector<std::size_t>;

}  // namespace

TEST(SecretSearch, FindsATokenAtEveryOffsetAroundTheEndOfABlock) {
  constexpr std::size_t kBlock = std::size_t{64} << 10;
  for (const std::size_t end : {kBlock, kBlock - 1024, 2 * kBlock}) {
    for (std::size_t before = end - 2 * kToken.size(); before <= end + 1; ++before) {
      const std::string text = std::string(before - 1, '.') + "\n" + kToken;

      EXPECT_EQ(linesOf(text), Lines{2}) << before;
      EXPECT_EQ(linesOf(text + "\n" + std::string(2000, '.')), Lines{2}) << before;
    }
  }
}

TEST(SecretSearch, NeedsTheWholeTokenAndNothingAroundIt) {
  for (std::size_t size = 0; size < kToken.size(); ++size) {
    EXPECT_EQ(linesOf(kToken.substr(0, size)), Lines{}) << size;
  }
  for (const char* before : {"a", "_", "7"}) EXPECT_EQ(linesOf(before + kToken), Lines{}) << before;
  EXPECT_EQ(linesOf(kToken + "_"), Lines{1});  // as long as any can be
  EXPECT_EQ(linesOf("'" + kToken + "'"), Lines{1});
}

TEST(SecretSearch, StopsAfterAHundred) {
  std::string text;
  for (int i = 0; i < 150; ++i) text += kToken + "\n";

  EXPECT_EQ(linesOf(text).size(), 100);
}

TEST(SecretSearch, FindsOnlyTheFirstPasswordOfSettings) {
  const std::string text = "user = a\n_auth = b\n_password = c\n";

  EXPECT_EQ(linesOf(text, SecretFile::Settings), Lines{2});
  EXPECT_EQ(linesOf(text, SecretFile::No), Lines{});
}

TEST(SecretSearch, KnowsFilesByTheirNamesInAnyCase) {
  EXPECT_EQ(secretFileOf(".Env.Local", ""), SecretFile::Yes);
  EXPECT_EQ(secretFileOf(".env.Example", ""), SecretFile::No);
  EXPECT_EQ(secretFileOf("credentials", "x.aws"), SecretFile::No);
  EXPECT_EQ(secretFileOf("credentials", ".AWS"), SecretFile::Yes);
  EXPECT_EQ(secretFileOf("ca.PEM", "b"), SecretFile::Key);
  EXPECT_EQ(secretFileOf(".npmrc", "c"), SecretFile::Settings);
}

TEST(SecretSearch, StartsAnewWithEachFile) {
  SecretSearch search;
  const auto countIn = [&](const std::string& text) {
    std::istringstream source(text);
    opc::StdIStreamAdaptor stream(source);
    return search.find(stream, SecretFile::No).size();
  };

  EXPECT_EQ(countIn(std::string(100, '\n') + kToken.substr(0, 20)), 0);
  EXPECT_EQ(countIn(kToken.substr(20)), 0);
  EXPECT_EQ(countIn(kToken), 1);
}
