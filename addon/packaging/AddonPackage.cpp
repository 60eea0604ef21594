// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonPackage.h"

#include <algorithm>
#include <boost/algorithm/string/case_conv.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <utility>

#include "addon/packaging/ScreenshotPart.h"
#include "opc/Exception.h"
#include "opc/LocalFileSystemOps.h"
#include "opc/Streams.h"
#include "opc/Text.h"
#include "opc/model/PackageHelper.h"
#include "opc/plservices/FileContentSource.h"

namespace addon::packaging {

using opc::interfaces::CompressionType;
using opc::interfaces::OpenMode;
using opc::model::ContentType;
using opc::model::InvalidXMLDocument;
using opc::model::PartName;
using opc::model::StandardPartInfo;
using opc::model::URI;
using opc::model::XercesHelper;
using opc::plservices::CoreProperties;
using opc::plservices::FileContentSource;
using opc::plservices::FileSystemEntry;
using opc::plservices::FileSystemEntryAlreadyExists;
using opc::plservices::RestoreMode;

namespace {

// Indexed by AddonType; the unknown type has neither.
constexpr const char* kFriendlyNames[] = {"Korvan Toolbox"};
constexpr const char* kContentTypes[] = {"application/vnd.pellandry.korvan.toolbox"};

/// The host release that new packages record, whatever their properties name.
constexpr const char* kRelease = "R2047b";

void setTexts(CoreProperties& core, const AddonProperties& properties) {
  core.setTitle(properties.name);
  core.setDescription(properties.summary);
  core.setVersion(properties.version);
  core.setCreatedBy(properties.authorName);
}

void assignIfPresent(std::u16string& text, const boost::optional<std::u16string>& value) {
  if (value) text = *value;
}

struct ImageType {
  const char* extension;
  const char* contentType;
};

// Only the four-letter form of tiff is known; "tif" goes as a JPEG, like all else.
constexpr ImageType kImageTypes[] = {
    {"png", "image/png"}, {"gif", "image/gif"}, {"tiff", "image/tiff"}, {"bmp", "image/bmp"}};
constexpr const char* kJpegType = "image/jpeg";
constexpr const char16_t* kJpegExtension = u"jpg";

/// Takes away the screenshot that is there, with both its relationships.
void takeAwayScreenshot(opc::model::Package& package) {
  if (!package.hasRelationship(ScreenshotPart::kId)) return;
  const auto relationship = package.getRelationship(ScreenshotPart::kId);
  package.deletePart(relationship.targetName());
  package.deleteRelationship(ScreenshotPart::kId);
  package.deleteRelationship(ScreenshotPart::kThumbnailId);
}

}  // namespace

AddonPackage::AddonPackage(const std::u16string& path)
    : physicalPackage_(path, true, std::u16string()),
      logicalPackage_(physicalPackage_, true),
      corePropertiesManager_(logicalPackage_),
      fileSystemManager_(logicalPackage_) {}

AddonPackage::AddonPackage(const opc::SystemPath& path)
    : physicalPackage_(path, true),
      logicalPackage_(physicalPackage_, true),
      corePropertiesManager_(logicalPackage_),
      fileSystemManager_(logicalPackage_) {}

AddonPackage::AddonPackage(std::u16string& path, AddonProperties& properties)
    : AddonPackage(std::as_const(path)) {
  create(properties);
}

AddonPackage::AddonPackage(const opc::SystemPath& path, AddonProperties& properties)
    : AddonPackage(path) {
  create(properties);
}

void AddonPackage::create(AddonProperties& properties) {
  const int type = getAddonTypeFromString(properties.type);
  // An unknown type makes no package and no error: the host's contract.
  if (type == static_cast<int>(AddonType::Unknown)) return;

  logicalPackage_.open(OpenMode::Create);
  CoreProperties core(opc::toStringFromASCIIStringLiteral(kContentTypes[type]),
                      opc::toStringFromASCIIStringLiteral(kFriendlyNames[type]),
                      opc::toStringFromASCIIStringLiteral(kRelease));
  setTexts(core, properties);
  const boost::posix_time::ptime now = boost::posix_time::second_clock::universal_time();
  core.setLastModifiedTime(now);
  core.setCreatedTime(now);
  corePropertiesManager_.setCoreProperties(core);
  addXMLPart(properties);
}

void AddonPackage::setTimes(std::int64_t seconds) {
  const boost::posix_time::ptime time =
      boost::posix_time::ptime(boost::gregorian::date(1970, 1, 1)) +
      boost::posix_time::seconds(seconds);
  CoreProperties core = corePropertiesManager_.getCoreProperties();
  core.setCreatedTime(time);
  core.setLastModifiedTime(time);
  corePropertiesManager_.setCoreProperties(core);
}

AddonPackage::~AddonPackage() {
  logicalPackage_.close(true);
}

// By value here and below: signatures that callers already use.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
int AddonPackage::getAddonTypeFromString(std::u16string type) {
  const bool isToolbox = type == opc::toStringFromASCIIStringLiteral(kFriendlyNames[0]);
  return static_cast<int>(isToolbox ? AddonType::Toolbox : AddonType::Unknown);
}

void AddonPackage::setAddonProperties(AddonProperties& properties) {
  CoreProperties core = corePropertiesManager_.getCoreProperties();
  // The time of modification stays: an update of the properties is none of the add-on itself.
  setTexts(core, properties);
  corePropertiesManager_.setCoreProperties(core);
  addXMLPart(properties);
}

void AddonPackage::getAddonProperties(AddonProperties& properties) {
  const CoreProperties core = corePropertiesManager_.getCoreProperties();
  properties.type = core.getContentTypeFriendlyName();
  properties.KorvanRelease = core.getKorvanRelease();
  assignIfPresent(properties.authorName, core.getCreatedBy());
  assignIfPresent(properties.version, core.getVersion());
  assignIfPresent(properties.name, core.getTitle());
  assignIfPresent(properties.summary, core.getDescription());
  properties.lastModifiedTime = core.getLastModifiedTime();
  // Last, since the author's name in the part is the one that counts.
  getXMLPart(properties);
}

std::string AddonPackage::contextOf(const char* verb, const PartName& part) const {
  return std::string("cannot ") + verb + " part '" + part.canonical() + "' of '" +
         physicalPackage_.description() + "'";
}

void AddonPackage::addXMLPart(XMLPartType& document) {
  const PartName name(document.partName);
  const bool isReplacement = logicalPackage_.hasPart(name);
  if (isReplacement) logicalPackage_.deletePart(name);
  const auto part = logicalPackage_.createPart(name, ContentType(document.contentType),
                                               StandardPartInfo(CompressionType::Normal, 0));
  try {
    // A relationship outlives the part that it points at, so that its id stays the same.
    if (!isReplacement) {
      logicalPackage_.createInternalRelationship(document.relationshipType, URI(document.partName),
                                                 u"");
    }
    write(document, *part);
  } catch (...) {
    // Half a document is worse than none.
    logicalPackage_.deletePart(name);
    throw;
  }
}

void AddonPackage::write(XMLPartType& document, opc::model::Part& part) const {
  const opc::model::WriterPointer writer = XercesHelper::createWriter();
  opc::model::DocumentPointer dom = XercesHelper::createDocument();
  dom->setXmlStandalone(true);
  try {
    document.buildDOM(dom);
    const auto stream = part.getOutputStream();
    XercesHelper::writeDocumentToStream(writer, dom, *stream);
  } catch (InvalidXMLDocument& fault) {
    fault.addContext(contextOf("write", part.getName()));
    throw;
  }
}

void AddonPackage::getXMLPart(XMLPartType& document) {
  const auto relationships = logicalPackage_.getRelationshipsByType(document.relationshipType);
  // None means that it was never set; of several, none is known to be the right one.
  if (relationships.size() != 1) return;

  const auto part = logicalPackage_.getPart(relationships.front());
  const opc::model::ParserPointer parser = XercesHelper::createParser();
  const auto stream = part->getInputStream();
  try {
    document.populateFromDOM(
        XercesHelper::readDocumentFromStream(parser, *stream, false, u"", document.namespaceURI));
  } catch (InvalidXMLDocument& fault) {
    fault.addContext(contextOf("read", part->getName()));
    throw;
  }
}

void AddonPackage::setLicense(AddonLicense& license) {
  addXMLPart(license);
}

void AddonPackage::getLicense(AddonLicense& license) {
  getXMLPart(license);
}

std::u16string AddonPackage::getContentTypeFromImageExtension(const std::u16string& extension) {
  std::string ascii = opc::toASCIIString(extension);
  boost::algorithm::to_lower(ascii);
  const auto* known = std::find_if(std::begin(kImageTypes), std::end(kImageTypes),
                                   [&](const ImageType& type) { return ascii == type.extension; });
  const bool isKnown = known != std::end(kImageTypes);
  return opc::toStringFromASCIIStringLiteral(isKnown ? known->contentType : kJpegType);
}

void AddonPackage::setScreenshot(const std::u16string& imagePath) {
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

// NOLINTNEXTLINE(performance-unnecessary-value-param)
std::vector<unsigned char> AddonPackage::getBinaryPart(std::u16string relationshipType) {
  const auto relationships = logicalPackage_.getRelationshipsByType(relationshipType);
  if (relationships.size() != 1) return {};
  const auto part = logicalPackage_.getPart(relationships.front());
  const auto stream = part->getInputStream();
  const std::string bytes = opc::StreamHelper::readToEnd(*stream);
  return {bytes.begin(), bytes.end()};
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
void AddonPackage::addFiles(std::vector<std::u16string> files, std::vector<std::u16string> paths) {
  for (std::size_t i = 0; i < files.size(); ++i) fileSystemManager_.addFile(files[i], paths.at(i));
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
void AddonPackage::addFolders(std::vector<std::u16string> folders) {
  for (const std::u16string& folder : folders) {
    try {
      fileSystemManager_.createFolder(folder);
    } catch (const FileSystemEntryAlreadyExists&) {
      // A name that is taken, by a folder or a file, is skipped; addFiles ends there instead.
    }
  }
}

void AddonPackage::extractAllFiles(const std::u16string& destination) {
  fileSystemManager_.extractAll(destination, RestoreMode::ReplaceExisting);
}

std::vector<std::u16string> AddonPackage::getFileList() {
  std::vector<std::u16string> list;
  for (const FileSystemEntry& child :
       fileSystemManager_.getChildren(fileSystemManager_.getRoot())) {
    if (child.isFile()) {
      list.push_back(child.getPathName());
    } else {
      addFilesFromFolder(child, list);
    }
  }
  return list;
}

void AddonPackage::addFilesFromFolder(FileSystemEntry folder, std::vector<std::u16string>& list) {
  // How deep folders go is up to the package, so the walk keeps its own stack, the next entry last.
  std::vector<FileSystemEntry> waiting{folder};
  while (!waiting.empty()) {
    const FileSystemEntry entry = waiting.back();
    waiting.pop_back();
    if (entry.isFile()) {
      list.push_back(entry.getPathName());
      continue;
    }
    const std::vector<FileSystemEntry> children = fileSystemManager_.getChildren(entry);
    if (children.empty()) list.push_back(entry.getPathName());
    waiting.insert(waiting.end(), children.rbegin(), children.rend());
  }
}

}  // namespace addon::packaging
