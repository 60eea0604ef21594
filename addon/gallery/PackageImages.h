// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

#include "addon/gallery/Page.h"
#include "addon/packaging/AddonPackage.h"

namespace addon::gallery {

/// The images of an open package. What is shown is told by the bytes, never by a name; what is too
/// large, or too much together, is left out and says so.
class PackageImages final : public PageImages {
 public:
  static constexpr std::uint64_t kLargestImage = std::uint64_t{4} << 20;
  static constexpr std::uint64_t kAllImages = std::uint64_t{32} << 20;

  /// `package` must stay open as long as this lives.
  explicit PackageImages(packaging::AddonPackage& package) : package_(package) {}

  /// Both throw opc::Exception for an image that is damaged.
  PageImage screenshot() override;
  PageImage file(const std::string& path) override;

 private:
  /// "" when an image of that size still has room.
  std::string whyNoRoom(std::uint64_t size) const;
  PageImage read(opc::InputStream& stream, std::uint64_t size);

  packaging::AddonPackage& package_;
  std::uint64_t used_ = 0;  ///< bytes of all images so far
};

}  // namespace addon::gallery
