// SPDX-License-Identifier: MIT
#include "text/Sha1.h"

#include <fmt/format.h>

#include <array>

namespace text {

std::string Sha1::finish() {
  std::array<std::uint8_t, SHA_DIGEST_LENGTH> hash{};
  ::SHA1_Final(hash.data(), &context_);
  return fmt::format("{:02x}", fmt::join(hash, ""));
}

}  // namespace text
