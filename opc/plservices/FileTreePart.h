// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "opc/interfaces/IContentSource.h"
#include "opc/model/Package.h"
#include "opc/plservices/FileTreeTable.h"

namespace opc::plservices {

/// Where a package keeps the table of its file tree: the part that its one relationship of the
/// table's type points at, else "/metadata/fileTree.xml". The package must be open.
class FileTreePart {
 public:
  static constexpr const char16_t* kDefaultName = u"/metadata/fileTree.xml";
  static constexpr const char* kContentType = "application/vnd.pellandry.korvan.addon.fileTree+xml";
  static std::u16string relationshipType();

  /// Finds the part. Throws Exception when the relationship leads nowhere, or there are several.
  explicit FileTreePart(model::Package& package);

  const model::PartName& name() const { return name_; }
  bool exists() const { return exists_; }
  /// Must exist. Throws Exception when it cannot be read.
  FileTreeTable read();

  /// Makes sure that the part is there, and that a commit asks `source` for its content.
  void replace(std::unique_ptr<interfaces::IContentSource> source);
  /// Whether replace has been called since the package was opened.
  bool isReplaced() const { return replaced_; }
  /// Removes the part and its relationship, if any.
  void drop();

 private:
  model::Package& package_;
  model::PartName name_;
  bool exists_ = false;
  bool replaced_ = false;
};

}  // namespace opc::plservices
