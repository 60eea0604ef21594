// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace addon::checks::detail {

/// The published format of a kind of token.
///
/// A pattern is text of which "<a16>" stands for 16 characters of a set, "<a16-20>" for 16 to 20
/// and "<a16+>" for at least 16. The sets: a letters and digits, b base64, c letters, d digits,
/// i upper case and digits, l lower case and digits, s what separates a key from its value,
/// t letters, digits, '-' and '_', u base32, x hexadecimal digits in lower case, z like t
/// with '.' and '~'.
struct SecretFormat {
  std::string_view name;         ///< with its article
  std::string_view pattern;      ///< begins with at least two characters that stand for themselves
  std::string_view before = {};  ///< a single "<...>" in front of it; may be empty
};

std::span<const SecretFormat> secretFormats();

/// Of a word, before which and behind which no token begins or ends.
bool isWord(char c);

/// The longest part of a text before and after the place where a pattern begins that decides
/// whether it matches.
inline constexpr std::size_t kLookBehind = 256;
inline constexpr std::size_t kLookAhead = 1024;

/// The length of the token of this format that begins at `at`, without what is before; 0 if there
/// is none, or only a placeholder such as documentation shows.
std::size_t matchSecret(const SecretFormat& format, std::string_view text, std::size_t at);

/// The length of the first line of a private key that begins at `at`, in PEM or as a string of
/// source code; 0 if there is none. `needsKey`: the line alone is not enough.
std::size_t matchPrivateKey(std::string_view text, std::size_t at, bool needsKey);
inline constexpr std::string_view kKeyBegin = "-----BEGIN ";

}  // namespace addon::checks::detail
