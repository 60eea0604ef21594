// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonPackage.h"

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <utility>

#include "opc/Exception.h"
#include "opc/Text.h"

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

}  // namespace

AddonPackage::AddonPackage(const std::u16string& path)
    : physicalPackage_(path, true, std::u16string()),
      logicalPackage_(physicalPackage_, true),
      corePropertiesManager_(logicalPackage_),
      fileSystemManager_(logicalPackage_) {}

AddonPackage::AddonPackage(std::u16string& path, AddonProperties& properties)
    : AddonPackage(std::as_const(path)) {
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
  // A relationship outlives the part that it points at, so that its id stays the same.
  if (!isReplacement) {
    logicalPackage_.createInternalRelationship(document.relationshipType, URI(document.partName),
                                               u"");
  }

  const opc::model::WriterPointer writer = XercesHelper::createWriter();
  opc::model::DocumentPointer dom = XercesHelper::createDocument();
  dom->setXmlStandalone(true);
  try {
    document.buildDOM(dom);
    const auto stream = part->getOutputStream();
    XercesHelper::writeDocumentToStream(writer, dom, *stream);
  } catch (InvalidXMLDocument& fault) {
    fault.addContext(contextOf("write", name));
    throw;
  }
}

void AddonPackage::getXMLPart(XMLPartType& document) {
  const auto relationships = logicalPackage_.getRelationshipsByType(document.relationshipType);
  // None means that it was never set; of several none can be told to be the right one.
  if (relationships.size() != 1) return;

  const auto& relationship = relationships.front();
  if (relationship.getTargetMode() == opc::model::TargetMode::External) {
    throw opc::FormatError(
        "RL-11", contextOf("read", PartName(document.partName)) + ": relationship '" +
                     opc::toUtf8ForDisplay(relationship.getId()) + "' leads out of the package");
  }
  const PartName name(relationship.getTargetURI().toString());
  const auto part = logicalPackage_.getPart(name);
  const opc::model::ParserPointer parser = XercesHelper::createParser();
  const auto stream = part->getInputStream();
  try {
    document.populateFromDOM(
        XercesHelper::readDocumentFromStream(parser, *stream, false, u"", document.namespaceURI));
  } catch (InvalidXMLDocument& fault) {
    fault.addContext(contextOf("read", name));
    throw;
  }
}

void AddonPackage::setLicense(AddonLicense& license) {
  addXMLPart(license);
}

void AddonPackage::getLicense(AddonLicense& license) {
  getXMLPart(license);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
void AddonPackage::addFiles(std::vector<std::u16string> files, std::vector<std::u16string> paths) {
  if (paths.size() < files.size()) {
    throw opc::Exception(opc::ErrorCode::InvalidArgument,
                         "list of " + std::to_string(files.size()) + " files comes with only " +
                             std::to_string(paths.size()) + " paths");
  }
  for (std::size_t i = 0; i < files.size(); ++i) fileSystemManager_.addFile(files[i], paths[i]);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
void AddonPackage::addFolders(std::vector<std::u16string> folders) {
  for (const std::u16string& folder : folders) {
    try {
      fileSystemManager_.createFolder(folder);
    } catch (const FileSystemEntryAlreadyExists&) {
      // An existing folder is welcome, an existing file is not: only the file has content to lose.
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
