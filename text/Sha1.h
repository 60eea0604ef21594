// SPDX-License-Identifier: MIT
#pragma once

#include <openssl/sha.h>

#include <cstddef>
#include <string>

namespace text {

/// SHA-1 over bytes as they come: for formats that require it, never for security.
class Sha1 {
 public:
  Sha1() { ::SHA1_Init(&context_); }

  void update(const void* data, std::size_t size) { ::SHA1_Update(&context_, data, size); }
  /// The hash in hexadecimal, lower case. Once only.
  std::string finish();

 private:
  SHA_CTX context_;
};

}  // namespace text
