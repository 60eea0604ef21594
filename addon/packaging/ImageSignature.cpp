// SPDX-License-Identifier: MIT
#include "addon/packaging/ImageSignature.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace addon::packaging {

using namespace std::string_view_literals;

namespace {

// A type may have several forms.
struct Signature {
  std::string_view type;
  std::string_view start;
  std::size_t at = 0;  // of the second mark
  std::string_view second = {};
};

constexpr Signature kSignatures[] = {
    {"image/png", "\x89PNG\r\n\x1A\n"sv},
    {"image/gif", "GIF87a"sv},
    {"image/gif", "GIF89a"sv},
    {"image/jpeg", "\xFF\xD8\xFF"sv},
    // Two letters begin texts too; what is reserved there is zero.
    {"image/bmp", "BM"sv, 6, "\0\0\0\0"sv},
    {"image/tiff", "II\x2A\0"sv},
    {"image/tiff", "MM\0\x2A"sv},
    {"image/tiff", "II\x2B\0"sv},
    {"image/tiff", "MM\0\x2B"sv},
    {"image/webp", "RIFF"sv, 8, "WEBP"sv},
};

bool fits(const Signature& signature, std::string_view bytes) {
  return bytes.starts_with(signature.start) && bytes.size() >= signature.at &&
         bytes.substr(signature.at).starts_with(signature.second);
}

}  // namespace

std::string_view imageTypeOf(std::span<const unsigned char> bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const auto* found =
      std::find_if(std::begin(kSignatures), std::end(kSignatures),
                   [&](const Signature& signature) { return fits(signature, text); });
  return found == std::end(kSignatures) ? std::string_view() : found->type;
}

std::string_view imageTypeOf(opc::InputStream& stream) {
  std::array<unsigned char, kImageSignatureSize> bytes{};
  std::size_t size = 0;
  while (size < bytes.size()) {
    const std::size_t count = stream.read(bytes.data() + size, bytes.size() - size);
    if (count == 0) break;
    size += count;
  }
  return imageTypeOf(std::span(bytes.data(), size));
}

bool isImageTypeTold(std::string_view type) {
  return std::any_of(std::begin(kSignatures), std::end(kSignatures),
                     [&](const Signature& signature) { return signature.type == type; });
}

}  // namespace addon::packaging
