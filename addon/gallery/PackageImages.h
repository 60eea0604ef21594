// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "addon/gallery/Page.h"
#include "addon/packaging/AddonPackage.h"

namespace addon::gallery {

/// The images of an open package, recognised by their bytes. An image that is too large, or would
/// make all of them too large together, is left out with a note.
class PackageImages final : public PageImages {
 public:
  static constexpr std::uint64_t kMaxImageSize = std::uint64_t{4} << 20;
  static constexpr std::uint64_t kAllImages = std::uint64_t{32} << 20;

  /// `package` must stay open during the lifetime of this object.
  explicit PackageImages(packaging::AddonPackage& package) : package_(package) {}

  /// Both throw opc::Exception if the image is damaged.
  PageImage screenshot() override;
  PageImage file(const std::string& path) override;

 private:
  /// "" if there is room for an image of that size.
  std::string whyNoRoom(std::uint64_t size) const;
  PageImage read(opc::InputStream& stream, std::uint64_t size);

  packaging::AddonPackage& package_;
  std::uint64_t used_ = 0;  ///< bytes of all images so far
};

}  // namespace addon::gallery
