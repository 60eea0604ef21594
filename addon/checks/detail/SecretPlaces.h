// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "addon/checks/detail/SecretFormats.h"

namespace addon::checks::detail {

/// The places of a text where something of secretFormats() or a private key begins, by its first
/// characters. Most of a text is not looked at character by character: what can be found begins
/// with a run of characters that most words do not have, or shortly before one.
class SecretPlaces {
 public:
  SecretPlaces();

  /// The first place in [at, end), or `end`. The text goes on behind `end`: what begins before it
  /// has all of its characters in the text.
  std::size_t next(std::string_view text, std::size_t at, std::size_t end) const;

  /// The formats that may begin with this character.
  const std::vector<const SecretFormat*>& formatsWith(char first) const;

 private:
  /// A set of pairs of characters.
  class Pairs {
   public:
    void add(std::string_view pair);
    bool has(const char* pair) const;

   private:
    std::array<std::uint64_t, 1024> bits_{};
  };

  bool begins(std::string_view text, std::size_t place) const;

  Pairs pairs_;   // the first two characters of each format
  Pairs inWord_;  // of those that also begin within words
  std::array<std::vector<const SecretFormat*>, 256> formats_;  // by the first character
};

}  // namespace addon::checks::detail
