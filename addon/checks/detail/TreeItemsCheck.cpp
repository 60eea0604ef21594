// SPDX-License-Identifier: MIT
#include <set>
#include <string>
#include <string_view>

#include "addon/checks/AddonFindings.h"
#include "addon/checks/detail/ReferenceCheck.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/PartName.h"
#include "opc/model/PieceSequences.h"
#include "opc/plservices/LoadedFileTree.h"

namespace addon::checks::detail {

using opc::checks::quoted;
using opc::checks::Report;
using opc::interfaces::ItemIndex;
using opc::interfaces::ItemKind;
using opc::plservices::FileSystemEntry;
using opc::plservices::kFilesFolder;
using packaging::AddonPackage;

namespace {

bool isAmongFiles(std::string_view itemName) {
  return opc::toLowerAscii(itemName.substr(0, kFilesFolder.size())) == kFilesFolder;
}

/// Why ZIP programs unpack an item among the files elsewhere than the file tree has it, or null.
const char* findDifference(std::string_view itemName) {
  if (opc::model::isRelationshipsItemName(itemName)) return "it holds relationships";
  if (opc::model::parsePieceName(itemName)) return "it is a piece of a part";
  if (!itemName.starts_with(kFilesFolder)) return "its folder is not spelled 'files'";
  return nullptr;
}

bool isEncodingOf(std::string_view encoded, std::string_view path) {
  try {
    return opc::model::percentDecodePath(encoded) == path;
  } catch (const opc::FormatError&) {
    return false;
  }
}

class TreeItemsCheck {
 public:
  TreeItemsCheck(AddonPackage& package, Report& report) : package_(package), report_(report) {}

  void run() {
    for (const auto& file : package_.fileSystem().unreadable()) {
      add(file.name, file.why);
      reported_.insert(file.name);
    }
    const auto& items = package_.logicalPackage().physical();
    for (ItemIndex item = 0; item < items.itemCount(); ++item) {
      if (items.isRemoved(item) || items.itemKind(item) != ItemKind::File) continue;
      checkItem(items.itemName(item));
    }
    package_.fileSystem().visitFiles([this](std::string_view path, const FileSystemEntry& entry) {
      if (entry.isFile()) checkFile(path, entry.info().itemName);
    });
  }

 private:
  void add(std::string_view part, std::string_view why) {
    report_.addClipped(kFileOutsideTree, part, why, "");
  }

  void checkItem(std::string_view name) {
    const char* why = isAmongFiles(name) ? findDifference(name) : nullptr;
    if (why == nullptr) return;
    const std::string part = "/" + std::string(name);
    if (reported_.contains(part)) return;
    add(part, std::string(why) + ", but other programs unpack it as a file");
  }

  // The table may give a file any path.
  void checkFile(std::string_view path, std::string_view itemName) {
    if (!isAmongFiles(itemName)) return;
    const std::string_view encoded = itemName.substr(kFilesFolder.size());
    if (encoded == path || isEncodingOf(encoded, path)) return;
    add("/" + std::string(itemName),
        "it is the file " + quoted(path) + ", but other programs unpack it under its own name");
  }

  AddonPackage& package_;
  Report& report_;
  std::set<std::string> reported_;
};

}  // namespace

void checkTreeItems(AddonPackage& package, Report& report) {
  TreeItemsCheck(package, report).run();
}

}  // namespace addon::checks::detail
