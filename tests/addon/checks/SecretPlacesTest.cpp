// SPDX-License-Identifier: MIT
#include "addon/checks/detail/SecretPlaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <random>
#include <string>
#include <vector>

using addon::checks::detail::kKeyBegin;
using addon::checks::detail::matchSecret;
using addon::checks::detail::SecretFormat;
using addon::checks::detail::secretFormats;
using addon::checks::detail::SecretPlaces;

namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kLower = "abcdefghijklmnopqrstuvwxyz";
constexpr std::string_view kUpper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";

std::string charactersOf(char set) {
  const auto join = [](auto... parts) { return (std::string(parts) + ...); };
  const std::map<char, std::string> sets{{'a', join(kDigits, kLower, kUpper)},
                                         {'b', join(kDigits, kLower, kUpper, "+/")},
                                         {'c', join(kLower, kUpper)},
                                         {'d', join(kDigits)},
                                         {'i', join(kDigits, kUpper)},
                                         {'l', join(kDigits, kLower)},
                                         {'s', " \t\"':=>"},
                                         {'t', join(kDigits, kLower, kUpper, "_-")},
                                         {'u', join("234567", kUpper)},
                                         {'x', join(kDigits, "abcdef")},
                                         {'z', join(kDigits, kLower, kUpper, "_-.~")}};
  return sets.at(set);
}

/// Makes tokens, each run as short as it can be, of random characters or of the lowest one.
class Tokens {
 public:
  explicit Tokens(bool isLowest = false) : isLowest_(isLowest) {}

  std::string make(std::string_view pattern) {
    std::string token;
    while (!pattern.empty()) {
      const std::size_t run = std::min(pattern.find('<'), pattern.size());
      token += pattern.substr(0, run);
      pattern.remove_prefix(run);
      if (pattern.empty()) break;
      std::size_t count = 0;
      std::from_chars(pattern.data() + 2, pattern.data() + pattern.size(), count);
      const std::string set = charactersOf(pattern[1]);
      for (; count > 0; --count)
        token += isLowest_ ? *std::min_element(set.begin(), set.end()) : pick(set);
      pattern.remove_prefix(pattern.find('>') + 1);
    }
    return token;
  }

  char pick(std::string_view from) { return from[random_() % from.size()]; }

 private:
  bool isLowest_;
  std::mt19937 random_{7};  // the same in every run
};

const SecretPlaces& places() {
  static const SecretPlaces all;
  return all;
}

std::vector<std::size_t> placesIn(std::string_view text) {
  const std::size_t end = text.size() - 1;
  std::vector<std::size_t> found;
  for (std::size_t at = 0; (at = places().next(text, at, end)) < end; ++at) found.push_back(at);
  return found;
}

bool hasPlace(const std::string& text, std::size_t place) {
  const auto found = placesIn(text);
  return std::find(found.begin(), found.end(), place) != found.end();
}

/// Something of `format` that is a secret.
std::string secretOf(const SecretFormat& format, Tokens& tokens, std::string& before) {
  for (;;) {
    before = tokens.make(format.before);
    std::string token = tokens.make(format.pattern);
    if (matchSecret(format, before + token, before.size()) != 0) return token;
  }
}

}  // namespace

TEST(SecretPlaces, HasEachFormatWhereverItStands) {
  Tokens tokens;
  for (const SecretFormat& format : secretFormats()) {
    for (std::size_t offset = 0; offset < 70; ++offset) {
      for (const char around : {' ', '-', '.', '(', ';'}) {
        std::string before;
        const std::string token = secretOf(format, tokens, before);
        std::string text(offset, around);
        text += before + token;

        EXPECT_TRUE(hasPlace(text, offset + before.size())) << text;
        text.append(80, around);
        EXPECT_TRUE(hasPlace(text, offset + before.size())) << text;
      }
    }
  }
}

TEST(SecretPlaces, HasEachFormatWhateverItsCharactersAre) {
  Tokens tokens(true);
  for (const SecretFormat& format : secretFormats()) {
    for (std::size_t offset = 0; offset < 70; ++offset) {
      const std::string before = std::string(offset, ' ') + tokens.make(format.before);
      const std::string text = before + tokens.make(format.pattern) + " ";

      EXPECT_TRUE(hasPlace(text, before.size())) << text;
    }
  }
}

TEST(SecretPlaces, HasTheBeginningOfAPrivateKeyBehindAnything) {
  for (std::size_t offset = 0; offset < 70; ++offset) {
    for (const char around : {' ', '-', 'n', '\0', '\xFF'}) {
      const std::string text = std::string(offset, around) + std::string(kKeyBegin) + "X";

      EXPECT_TRUE(hasPlace(text, offset)) << offset << " of " << static_cast<int>(around);
    }
  }
}

TEST(SecretPlaces, LeavesNothingOutThatIsASecret) {
  constexpr std::string_view kNoise = " \n\t.,:;-_~=/+\"'()<>aTMQ3\x80\xFF";
  Tokens tokens;
  for (int round = 0; round < 100; ++round) {
    std::string text;
    for (int piece = 0; piece < 20; ++piece) {
      const SecretFormat& format = secretFormats()[static_cast<std::size_t>(
          (round * 20 + piece) % static_cast<int>(secretFormats().size()))];
      text += tokens.make(format.before) + tokens.make(format.pattern);
      for (int i = 0; i < piece % 4; ++i) text += tokens.pick(kNoise);
    }

    const std::vector<std::size_t> found = placesIn(text);
    for (std::size_t at = 0; at + 1 < text.size(); ++at) {
      for (const SecretFormat& format : secretFormats()) {
        if (matchSecret(format, text, at) == 0) continue;
        EXPECT_TRUE(std::binary_search(found.begin(), found.end(), at)) << at << " of " << text;
      }
    }
  }
}
