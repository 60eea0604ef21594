// SPDX-License-Identifier: MIT
// A whole package file: everything in it is read, in every possible way.
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Require.h"
#include "opc/Text.h"
#include "opc/model/XercesHelper.h"

namespace {

using addon::packaging::AddonPackage;
using fuzz::require;
using opc::interfaces::ItemIndex;
using opc::interfaces::OpenMode;
using opc::model::Package;
using opc::model::PartId;
using opc::model::PartName;

constexpr std::uint64_t kMaxItemSize = std::uint64_t{256} << 20;  // bytes per item

using Bytes = std::vector<unsigned char>;

// Reads in steps that end within blocks of any size.
Bytes readAll(opc::InputStream& stream) {
  constexpr std::size_t kStep = 4099;
  Bytes bytes;
  for (;;) {
    const std::size_t before = bytes.size();
    bytes.resize(before + kStep);
    const std::size_t count = stream.read(bytes.data() + before, kStep);
    bytes.resize(before + count);
    if (count == 0) break;
  }
  require(stream.isEnd(), "a stream that gives nothing is at its end");
  return bytes;
}

bool isSame(const Bytes& a, const opc::ByteBuffer& b) {
  return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size()) == 0);
}

void checkItem(opc::interfaces::IPhysicalPackage& container, ItemIndex item) {
  const opc::interfaces::ItemInfo info = container.itemInfo(item);
  require(info.name == container.itemName(item), "an item has one name");
  const auto streamed = fuzz::unlessRefused([&] { return readAll(*container.openItem(item)); });
  opc::ByteBuffer whole;
  const bool isRead = fuzz::isAccepted([&] { container.readItem(item, whole, kMaxItemSize); });
  if (info.size > kMaxItemSize) return;
  require(isRead == streamed.has_value(), "both ways of reading take the same items");
  if (!isRead) return;
  require(isSame(*streamed, whole), "both ways of reading give the same bytes");
  require(whole.size() == info.size, "an item is as long as it says");
}

void checkRelationships(opc::model::RelationshipSource& source) {
  const auto all = fuzz::unlessRefused([&] { return source.getRelationships(); });
  if (!all) return;
  for (const opc::model::Relationship& one : *all) {
    require(source.hasRelationship(one.getId()), "a relationship is there by its id");
    require(!source.getRelationshipsByType(one.getType()).empty(), "and by its type");
    if (one.getTargetMode() == opc::model::TargetMode::External) continue;
    const PartName target = one.targetName();
    require(!target.isRelationshipsPartName(), "a target is not a relationships part");
  }
}

void checkPart(Package& package, PartId id) {
  const opc::model::PartInfo info = package.partInfo(id);
  const PartName name = PartName::fromItemName(info.itemName);
  require(!name.isRelationshipsPartName(), "a relationships part is not visited");
  require(package.hasPart(name), "a part that is visited is there");
  const auto part = package.getPart(name);
  require(part->id() == id, "a part's name leads to it");
  require(part->getContentType() == package.contentTypeOf(id), "a part has one content type");
  checkRelationships(*part);

  const auto streamed = fuzz::unlessRefused([&] { return readAll(*part->getInputStream()); });
  opc::ByteBuffer whole;
  const bool isRead = fuzz::isAccepted([&] { package.readPart(id, whole, kMaxItemSize); });
  if (info.size > kMaxItemSize) return;
  require(isRead == streamed.has_value(), "both ways of reading take the same parts");
  require(!isRead || isSame(*streamed, whole), "both ways of reading give the same bytes");
}

void checkParts(Package& package) {
  std::vector<PartId> parts;
  package.visitParts("", [&](PartId part) { parts.push_back(part); });
  for (const PartId part : parts) checkPart(package, part);
  checkRelationships(package);
  for (const std::string& name : package.untypedItems()) {
    const auto known = fuzz::unlessRefused([&] { return PartName::fromItemName(name); });
    require(known.has_value(), "an item without content type has a part name");
    require(!package.hasPart(*known), "an item without content type is not a part");
  }
  package.strayItems();
}

void checkFile(AddonPackage& package, std::string_view path,
               const opc::plservices::FileSystemEntry& entry) {
  require(opc::isUtf8(path) && !path.empty(), "a path is UTF-8");
  require(path.front() != '/' && path.find("//") == std::string_view::npos, "a path is relative");
  require(path.find('\0') == std::string_view::npos, "a path holds no NUL");
  require(("/" + std::string(path) + "/").find("/../") == std::string::npos, "a path stays below");
  require(entry.path() == path, "an entry knows its path");
  const auto found = package.fileSystem().find(path);
  require(found && found->node() == entry.node(), "an entry is found by its path");
  if (!entry.isFile()) return;
  fuzz::isAccepted([&] { readAll(*package.fileSystem().openFile(entry)); });
}

void checkFiles(AddonPackage& package) {
  std::vector<std::pair<std::string, opc::plservices::FileSystemEntry>> files;
  package.fileSystem().visitFiles(
      [&](std::string_view path, const auto& entry) { files.emplace_back(path, entry); });
  for (const auto& [path, entry] : files) checkFile(package, path, entry);
  require(package.getFileList().size() == files.size(), "the listing has every file");
  package.fileSystem().unreadable();
}

template <typename Document>
void readDocument(AddonPackage& package) {
  Document document;
  fuzz::isAccepted([&] { package.getXMLPart(document); });
}

void readDocuments(AddonPackage& package) {
  readDocument<addon::packaging::AddonProperties>(package);
  readDocument<addon::packaging::AddonLicense>(package);
  readDocument<addon::packaging::AddonConfiguration>(package);
  readDocument<addon::packaging::AddonAppInstallList>(package);
  readDocument<addon::packaging::AddonExamples>(package);
  readDocument<addon::packaging::AddonRevisionHistory>(package);
  readDocument<addon::packaging::AddonSystemRequirements>(package);
  addon::packaging::AddonProperties properties;
  fuzz::isAccepted([&] { package.getAddonProperties(properties); });
}

void readContainer(const std::u16string& path) {
  opc::zippackage::ZipPhysicalPackage container(path, false, u"");
  if (!fuzz::isAccepted([&] { container.open(OpenMode::Read); })) return;
  for (ItemIndex item = 0; item < container.itemCount(); ++item) checkItem(container, item);
}

void readPackage(const std::u16string& path) {
  AddonPackage package(path);
  Package& logical = package.logicalPackage();
  const bool isOpen = fuzz::isAccepted([&] { logical.open(OpenMode::Read); });
  require(logical.isOpen() == isOpen, "what is refused is not open");
  if (!isOpen) return;
  checkParts(logical);
  fuzz::isAccepted([&] { checkFiles(package); });
  fuzz::isAccepted([&] { package.coreProperties().getCoreProperties(); });
  fuzz::isAccepted([&] { package.getScreenshot(); });
  readDocuments(package);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzz::MemoryFile file;
  file.fill(fuzz::textOf(data, size));
  const std::u16string path = opc::fromUtf8(file.path());
  readContainer(path);
  readPackage(path);
  return 0;
}
