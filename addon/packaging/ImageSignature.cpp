// SPDX-License-Identifier: MIT
#include "addon/packaging/ImageSignature.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "addon/packaging/AddonPackage.h"
#include "opc/Text.h"

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

/// An extension of image files. Of those of a type, the first is the usual one.
struct ImageExtension {
  std::string_view extension;
  std::string_view type;
  std::string_view name;
  bool isAllowed = true;
};

constexpr ImageExtension kExtensions[] = {
    {"png", "image/png", "PNG"},           {"gif", "image/gif", "GIF"},
    {"tiff", "image/tiff", "TIFF"},        {"tif", "image/tiff", "TIFF"},
    {"bmp", "image/bmp", "BMP"},           {"jpg", "image/jpeg", "JPEG"},
    {"jpeg", "image/jpeg", "JPEG"},        {"jpe", "image/jpeg", "JPEG"},
    {"webp", "image/webp", "WebP", false}, {"svg", "image/svg+xml", "SVG", false},
};

/// The extension that `fits` says, or null.
template <typename Fits>
const ImageExtension* findExtension(Fits fits) {
  const auto* found = std::find_if(std::begin(kExtensions), std::end(kExtensions), fits);
  return found == std::end(kExtensions) ? nullptr : found;
}

const ImageExtension* formatOf(opc::InputStream& stream) {
  const std::string_view type = imageTypeOf(stream);
  const auto* format = findExtension([&](const ImageExtension& one) { return one.type == type; });
  return format != nullptr && format->isAllowed ? format : nullptr;
}

/// What follows the last dot of the last name of a path, in lower case.
std::string extensionOf(std::string_view name) {
  name.remove_prefix(name.rfind('/') + 1);
  const std::size_t dot = name.rfind('.');
  return dot == name.npos || dot == 0 ? "" : opc::toLowerAscii(name.substr(dot + 1));
}

std::string aImage(const ImageExtension& format) {
  return "it is a " + std::string(format.name) + " image";
}

std::string faultOf(const ImageExtension* format, const std::string& extension) {
  if (format == nullptr) return "it is not a PNG, GIF, TIFF, BMP or JPEG image";
  const auto* said =
      findExtension([&](const ImageExtension& one) { return one.extension == extension; });
  if (said == nullptr || said->type == format->type) return {};
  return aImage(*format) + ", and its name says " + std::string(said->name);
}

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

std::string imageFault(std::string_view name, opc::InputStream& stream) {
  return faultOf(formatOf(stream), extensionOf(name));
}

std::string screenshotFault(std::string_view name, opc::InputStream& stream) {
  const ImageExtension* format = formatOf(stream);
  const std::string extension = extensionOf(name);
  std::string fault = faultOf(format, extension);
  if (!fault.empty()) return fault;
  const std::u16string stored =
      AddonPackage::getContentTypeFromImageExtension(opc::fromUtf8(extension));
  if (stored == opc::fromUtf8(format->type)) return {};
  return aImage(*format) + ", and its name does not end in ." + std::string(format->extension);
}

bool isImageTypeTold(std::string_view type) {
  return std::any_of(std::begin(kSignatures), std::end(kSignatures),
                     [&](const Signature& signature) { return signature.type == type; });
}

}  // namespace addon::packaging
