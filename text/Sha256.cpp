// SPDX-License-Identifier: MIT
#include "text/Sha256.h"

#include <fmt/format.h>

#include <array>
#include <vector>

namespace text {

std::string Sha256::finish() {
  std::array<std::uint8_t, SHA256_DIGEST_LENGTH> hash{};
  ::SHA256_Final(hash.data(), &context_);
  return fmt::format("{:02x}", fmt::join(hash, ""));
}

std::string sha256Of(std::string_view text) {
  Sha256 sum;
  sum.update(text);
  return sum.finish();
}

std::string sha256Of(opc::InputStream& stream, const std::function<void(std::size_t)>& onRead) {
  std::vector<unsigned char> buffer(std::size_t{64} << 10);
  Sha256 sum;
  while (const std::size_t size = stream.read(buffer.data(), buffer.size())) {
    sum.update(buffer.data(), size);
    if (onRead) onRead(size);
  }
  return sum.finish();
}

}  // namespace text
