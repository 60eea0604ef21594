// SPDX-License-Identifier: MIT
#include "addon/gallery/PackageImages.h"

#include <fmt/format.h>

#include <vector>

#include "addon/gallery/detail/DataAddress.h"
#include "addon/packaging/ScreenshotPart.h"
#include "text/ByteCount.h"

namespace addon::gallery {

PageImage PackageImages::screenshot() {
  auto& model = package_.logicalPackage();
  const auto found = model.getRelationshipsByType(packaging::ScreenshotPart::relationshipType());
  const bool isOne =
      found.size() == 1 && found.front().getTargetMode() == opc::model::TargetMode::Internal;
  if (!isOne) return {};
  const opc::model::PartName name = found.front().targetName();
  if (!model.hasPart(name)) return {};
  const auto part = model.getPart(name);
  const std::uint64_t size = model.partInfo(part->id()).size;
  if (std::string why = whyNoRoom(size); !why.empty()) return {{}, std::move(why)};
  return read(*part->getInputStream(), size);
}

PageImage PackageImages::file(const std::string& path) {
  if (path.empty()) return {};
  const auto entry = package_.fileSystem().find(path);
  if (!entry || !entry->isFile()) return {{}, "not in the package"};
  const std::uint64_t size = entry->info().size;
  if (std::string why = whyNoRoom(size); !why.empty()) return {{}, std::move(why)};
  return read(*package_.fileSystem().openFile(*entry), size);
}

std::string PackageImages::whyNoRoom(std::uint64_t size) const {
  if (size > kMaxImageSize) {
    return fmt::format("left out: {}, and an image may have at most {}", text::describeBytes(size),
                       text::describeBytes(kMaxImageSize));
  }
  if (size > kAllImages - used_) {
    return fmt::format("left out: all images together may have at most {}",
                       text::describeBytes(kAllImages));
  }
  return {};
}

PageImage PackageImages::read(opc::InputStream& stream, std::uint64_t size) {
  std::vector<unsigned char> bytes(static_cast<std::size_t>(size));
  std::size_t total = 0;
  while (const std::size_t count = stream.read(bytes.data() + total, bytes.size() - total)) {
    total += count;
  }
  bytes.resize(total);
  const std::string_view type = detail::imageTypeOf(bytes);
  if (type.empty()) return {{}, "not an image that a page can show"};
  used_ += total;
  return {detail::dataAddress(type, bytes), {}};
}

}  // namespace addon::gallery
