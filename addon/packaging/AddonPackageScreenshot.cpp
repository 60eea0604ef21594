// SPDX-License-Identifier: MIT
#include <algorithm>
#include <boost/algorithm/string/case_conv.hpp>

#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/ScreenshotPart.h"
#include "opc/LocalFileSystemOps.h"
#include "opc/Streams.h"
#include "opc/Text.h"
#include "opc/model/PackageHelper.h"
#include "opc/plservices/FileContentSource.h"

// The screenshot and other parts that are read as bytes.

namespace addon::packaging {

using opc::interfaces::CompressionType;
using opc::model::ContentType;
using opc::model::PartName;
using opc::model::StandardPartInfo;
using opc::model::URI;
using opc::plservices::FileContentSource;

namespace {

struct ImageType {
  const char* extension;
  const char* contentType;
};

// Only the four-letter form of tiff is known; "tif" goes as a JPEG, like all else.
constexpr ImageType kImageTypes[] = {
    {"png", "image/png"}, {"gif", "image/gif"}, {"tiff", "image/tiff"}, {"bmp", "image/bmp"}};
constexpr const char* kJpegType = "image/jpeg";
constexpr const char16_t* kJpegExtension = u"jpg";

constexpr std::size_t kReadStep = 8192;  // bytes

/// Takes away the screenshot that is there, with both its relationships.
void takeAwayScreenshot(opc::model::Package& package) {
  if (!package.hasRelationship(ScreenshotPart::kId)) return;
  const auto relationship = package.getRelationship(ScreenshotPart::kId);
  package.deletePart(PartName(relationship.getTargetURI().toString()));
  package.deleteRelationship(ScreenshotPart::kId);
  package.deleteRelationship(ScreenshotPart::kThumbnailId);
}

std::vector<unsigned char> readAll(opc::InputStream& stream) {
  std::vector<unsigned char> bytes;
  std::size_t total = 0;
  while (!stream.isEnd()) {
    bytes.resize(total + kReadStep);
    total += stream.read(bytes.data() + total, kReadStep);
  }
  bytes.resize(total);
  return bytes;
}

}  // namespace

std::u16string AddonPackage::getContentTypeFromImageExtension(const std::u16string& extension) {
  std::string ascii = opc::toASCIIString(extension);
  boost::algorithm::to_lower(ascii);
  const auto* known = std::find_if(std::begin(kImageTypes), std::end(kImageTypes),
                                   [&](const ImageType& type) { return ascii == type.extension; });
  const bool isKnown = known != std::end(kImageTypes);
  return opc::toStringFromASCIIStringLiteral(isKnown ? known->contentType : kJpegType);
}

void AddonPackage::setScreenshot(std::u16string& imagePath) {
  takeAwayScreenshot(logicalPackage_);

  const std::u16string extension = opc::LocalFileSystemOps::getExtension(imagePath);
  const std::u16string type = getContentTypeFromImageExtension(extension);
  const bool isJpeg = type == opc::toStringFromASCIIStringLiteral(kJpegType);
  const std::u16string name = ScreenshotPart::kNameStem + (isJpeg ? kJpegExtension : extension);
  const auto part = logicalPackage_.createPart(PartName(name), ContentType(type),
                                               StandardPartInfo(CompressionType::Normal, 0));
  logicalPackage_.createInternalRelationship(ScreenshotPart::relationshipType(), URI(name),
                                             ScreenshotPart::kId);
  logicalPackage_.createInternalRelationship(
      opc::model::PackageHelper::getThumbnailRelationshipType(), URI(name),
      ScreenshotPart::kThumbnailId);

  FileContentSource image(imagePath);
  const auto from = image.getInputStream();
  const auto into = part->getOutputStream();
  opc::StreamHelper::copyStreamToStream(*from, *into);
}

std::vector<unsigned char> AddonPackage::getScreenshot() {
  return getBinaryPart(ScreenshotPart::relationshipType());
}

// By value: a signature that callers already use.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
std::vector<unsigned char> AddonPackage::getBinaryPart(std::u16string relationshipType) {
  const auto relationships = logicalPackage_.getRelationshipsByType(relationshipType);
  if (relationships.size() != 1) return {};
  const PartName name(relationships.front().getTargetURI().toString());
  const auto part = logicalPackage_.getPart(name);
  const auto stream = part->getInputStream();
  return readAll(*stream);
}

}  // namespace addon::packaging
