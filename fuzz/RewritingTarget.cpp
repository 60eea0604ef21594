// SPDX-License-Identifier: MIT
// A package that can be opened can be changed: everything else stays as it was, and a change that
// is refused leaves the file unchanged.
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "addon/packaging/AddonPackage.h"
#include "fuzz/Require.h"
#include "opc/Text.h"
#include "opc/model/XercesHelper.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using addon::packaging::AddonPackage;
using fuzz::require;
using opc::interfaces::OpenMode;
using opc::model::Package;
using opc::model::PartName;
using opc::model::Relationship;
using opc::model::URI;

constexpr const char16_t* kAdded = u"/added/by/fuzzing.bin";
constexpr std::string_view kContent = "what was added";

struct KnownPart {
  std::string type;
  std::optional<std::string> content;  ///< nothing if it cannot be read

  bool operator==(const KnownPart&) const = default;
};

/// The content of a package, as far as it can be read.
struct Inventory {
  std::map<std::string, KnownPart> parts;
  std::vector<Relationship> relationships;
  std::optional<std::vector<std::u16string>> files;
};

std::optional<std::string> contentOf(Package& package, opc::model::PartId part) {
  constexpr std::uint64_t kMaxSize = std::uint64_t{64} << 20;
  return fuzz::unlessRefused([&] {
    opc::ByteBuffer bytes;
    package.readPart(part, bytes, kMaxSize);
    return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  });
}

Inventory inventoryOf(AddonPackage& package) {
  Inventory inventory;
  Package& logical = package.logicalPackage();
  logical.visitParts("", [&](opc::model::PartId part) {
    inventory.parts[std::string(logical.itemNameOf(part))] = {
        logical.contentTypeOf(part).withoutSpaces(), contentOf(logical, part)};
  });
  inventory.relationships = logical.getRelationships();
  inventory.files = fuzz::unlessRefused([&] { return package.getFileList(); });
  return inventory;
}

void change(Package& package) {
  const PartName name(kAdded);
  const auto part =
      package.createPart(name, opc::model::ContentType(u"application/octet-stream"),
                         opc::model::StandardPartInfo(opc::interfaces::CompressionType::Normal, 0));
  part->getOutputStream()->write(reinterpret_cast<const unsigned char*>(kContent.data()),
                                 kContent.size());
  package.createInternalRelationship(u"urn:added", URI(kAdded), u"");
}

void checkRelationships(const std::vector<Relationship>& before,
                        const std::vector<Relationship>& after) {
  require(after.size() == before.size() + 1, "one relationship has come");
  for (std::size_t i = 0; i < before.size(); ++i) {
    require(after[i].getId() == before[i].getId(), "a relationship keeps its id");
    require(after[i].getType() == before[i].getType(), "a relationship keeps its type");
    require(after[i].getTargetURI() == before[i].getTargetURI(), "and its target");
  }
  require(after.back().getTargetURI() == URI(kAdded), "the one that has come is ours");
}

void checkAfterwards(const std::u16string& path, Inventory before) {
  AddonPackage package(path);
  package.logicalPackage().open(OpenMode::Read);
  const Inventory after = inventoryOf(package);
  before.parts[std::string(PartName(kAdded).itemName())] = {"application/octet-stream",
                                                            std::string(kContent)};
  require(after.parts == before.parts, "parts are as they were");
  checkRelationships(before.relationships, after.relationships);
  require(after.files == before.files, "files are where they were");
}

// On a file system in memory, where flushing costs nothing.
const test::TemporaryFolder& folder() {
  static const bool isSet = ::setenv("TMPDIR", "/dev/shm", 0) == 0;
  require(isSet, "the environment can be changed");
  static const test::TemporaryFolder made;
  return made;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string file = folder() / "p.kraddon";
  const std::u16string path = opc::fromUtf8(file);
  test::writeFile(file, fuzz::textOf(data, size));

  AddonPackage package(path);
  Package& logical = package.logicalPackage();
  if (!fuzz::isAccepted([&] { logical.open(OpenMode::Modify); })) return 0;
  Inventory before = inventoryOf(package);
  if (!fuzz::isAccepted([&] { change(logical), logical.close(false); })) {
    logical.close(true);
    require(test::readFile(file) == fuzz::textOf(data, size), "a refused change changes nothing");
    return 0;
  }
  checkAfterwards(path, std::move(before));
  return 0;
}
