// SPDX-License-Identifier: MIT
#pragma once

#include <openssl/sha.h>

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "opc/interfaces/IXmlSignatures.h"

namespace opc::signatures {

/// Digests of bytes as they come, in the algorithms that are wanted.
class Digests {
 public:
  void want(interfaces::Hash hash);
  void update(std::span<const unsigned char> bytes);
  /// The digest, in bytes, of an algorithm that is wanted. Ends them all.
  const std::string& of(interfaces::Hash hash);

 private:
  std::optional<SHA256_CTX> sha256_;
  std::optional<SHA512_CTX> sha384_;
  std::optional<SHA512_CTX> sha512_;
  std::array<std::string, 3> results_;  // once they are ended
};

std::string digestOf(interfaces::Hash hash, std::string_view text);

}  // namespace opc::signatures
