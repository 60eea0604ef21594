// SPDX-License-Identifier: MIT
#include "text/Sha256.h"

#include <vector>

namespace text {

Sha256::Bytes Sha256::finishBytes() {
  Bytes hash{};
  ::SHA256_Final(hash.data(), &context_);
  return hash;
}

std::string Sha256::finish() {
  const Bytes hash = finishBytes();
  return hexadecimal({reinterpret_cast<const char*>(hash.data()), hash.size()});
}

std::string hexadecimal(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += kDigits[byte >> 4u];
    text += kDigits[byte & 15u];
  }
  return text;
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
