// SPDX-License-Identifier: MIT
#pragma once

#include <openssl/sha.h>

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "opc/Streams.h"

namespace text {

/// SHA-256 over bytes as they come.
class Sha256 {
 public:
  Sha256() { ::SHA256_Init(&context_); }

  void update(const unsigned char* data, std::size_t size) {
    ::SHA256_Update(&context_, data, size);
  }
  void update(std::string_view text) {
    update(reinterpret_cast<const unsigned char*>(text.data()), text.size());
  }
  using Bytes = std::array<unsigned char, SHA256_DIGEST_LENGTH>;
  /// The hash. Once only.
  Bytes finishBytes();
  /// The same in hexadecimal, lower case.
  std::string finish();

 private:
  SHA256_CTX context_;
};

std::string sha256Of(std::string_view text);
/// Bytes as digits, in lower case.
std::string hexadecimal(std::string_view bytes);

/// Of all that is left in the stream. `onRead`, which may be empty, gets the number of bytes of
/// each read; what it throws ends the work.
std::string sha256Of(opc::InputStream& stream,
                     const std::function<void(std::size_t)>& onRead = nullptr);

}  // namespace text
