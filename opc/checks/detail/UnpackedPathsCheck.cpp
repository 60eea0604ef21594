// SPDX-License-Identifier: MIT
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "opc/Text.h"
#include "opc/checks/detail/Packaging.h"
#include "opc/model/PartName.h"
#include "opc/model/PieceSequences.h"
#include "opc/plservices/FileTree.h"

namespace opc::checks::detail {

using interfaces::ItemIndex;
using interfaces::ItemInfo;
using interfaces::ItemKind;
using model::ItemRole;
using model::PartId;
using plservices::FileTree;

namespace {

bool isTrimmed(char c) {
  return c == '.' || c == ' ';
}

/// The path at which programs unpack an item that has not got the name of a part: without empty
/// segments, without segments of dots, without the dots and spaces at the end of a segment that
/// some systems drop, and in lower case.
std::string unpackedPath(std::string_view name) {
  std::string path;
  while (!name.empty()) {
    const std::size_t end = std::min(name.find('/'), name.size());
    std::string_view segment = name.substr(0, end);
    name.remove_prefix(std::min(end + 1, name.size()));
    while (!segment.empty() && isTrimmed(segment.back())) segment.remove_suffix(1);
    if (segment.empty()) continue;
    if (!path.empty()) path += '/';
    path += toLowerAscii(segment);
  }
  return path;
}

/// Where ZIP programs unpack the items that are not parts. Paths of parts are known to differ, and
/// none of them lies below another.
class UnpackedPathsCheck {
 public:
  explicit UnpackedPathsCheck(Packaging& packaging) : packaging_(packaging) {}

  void run() {
    const model::PartIndex& index = packaging_.index;
    index.forEach(ItemRole::Stray, [&](PartId item) { check(index.item(item), true); });
    index.forEach(ItemRole::Untyped, [&](PartId part) {
      for (const ItemIndex item : packaging_.itemsOf(part)) check(item, false);
    });
  }

 private:
  void check(ItemIndex item, bool isStray) {
    const ItemInfo info = packaging_.container.itemInfo(item);
    const bool isFolder = info.kind == ItemKind::Folder;
    if (!isFolder && (info.kind != ItemKind::File || packaging_.container.state(item).hasBadName)) {
      return;
    }
    const std::string why = isFolder ? whyFolderClashes(info.name) : whyClashes(info.name, isStray);
    if (why.empty()) return;
    packaging_.ambiguous.insert(item);
    const FindingId id = isFolder ? kContradictingMarks : kStrayItem;
    packaging_.report.addAmbiguous(id,
                                   isStray ? std::string(info.name) : "/" + std::string(info.name),
                                   why, isFolder ? "ZP-10" : "PN-11");
  }

  std::string whyFolderClashes(std::string_view name) {
    const std::string path = unpackedPath(name);
    if (path.empty()) return {};
    if (const std::string_view file = fileAt(path); !file.empty()) {
      return "the folder has the path of the file " + quoted(file);
    }
    if (const std::string_view file = packaging_.index.partAbove(path); !file.empty()) {
      return "the folder lies below the file " + quoted(file);
    }
    return add(path, false) ? "" : "another item that is not a part has its path";
  }

  std::string whyClashes(std::string_view name, bool isStray) {
    const std::string path = unpackedPath(name);
    if (isStray && path != toLowerAscii(name)) return "programs do not agree on its path";
    if (const std::string_view file = isStray ? fileAt(path) : std::string_view(); !file.empty()) {
      return "programs unpack it to the path of " + quoted(file);
    }
    if (const std::string_view file = packaging_.index.partAbove(path); !file.empty()) {
      return "it lies below the file " + quoted(file);
    }
    if (packaging_.index.hasPartBelow(path)) return "parts lie below it, as if it was a folder";
    return add(path, true) ? "" : "another item that is not a part has its path";
  }

  /// The item that is unpacked to a path, of those that are not strays.
  std::string_view fileAt(std::string_view path) const {
    if (model::isContentTypesName(path)) return path;
    const auto part = packaging_.index.find(path);
    return part ? packaging_.index.name(*part) : std::string_view();
  }

  // Returns false if a file has the path, or lies above it; or for a file, if anything has it.
  bool add(std::string_view path, bool isFile) {
    auto [node, rest] = others_.reach(path);
    if (others_.isFile(node)) return false;
    if (rest.empty()) return !isFile;
    for (;;) {
      const std::size_t slash = rest.find('/');
      if (slash == std::string_view::npos) break;
      node = others_.addFolder(node, rest.substr(0, slash));
      rest.remove_prefix(slash + 1);
    }
    if (isFile) {
      others_.addFile(node, rest, 0);
    } else {
      others_.addFolder(node, rest);
    }
    return true;
  }

  Packaging& packaging_;
  FileTree others_;  // what is not a part
};

}  // namespace

void checkUnpackedPaths(Packaging& packaging) {
  if (packaging.report.subject() == Subject::Addon) UnpackedPathsCheck(packaging).run();
}

}  // namespace opc::checks::detail
