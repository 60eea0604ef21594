// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "addon/checks/detail/CaselessTree.h"
#include "addon/packaging/Field.h"
#include "opc/checks/Report.h"
#include "opc/plservices/FileSystemManager.h"

namespace addon::checks {

/// A path in a document.
struct PathReference {
  enum class Kind : std::uint8_t { File, Folder, Either };

  std::u16string path;
  Kind kind;                  ///< what it must name
  opc::checks::FindingId id;  ///< the finding for a missing path
  std::string what;           ///< whose path it is, such as "the app 'Viewer'"
  std::string part;           ///< the document
  std::size_t line;
};

/// How a path of some kind is checked.
struct ReferenceRule {
  packaging::Reference reference;
  PathReference::Kind kind;
  opc::checks::FindingId id;
  const char* what;  ///< what a path outside of records is called
};
/// Null for fields that are not paths.
const ReferenceRule* ruleOf(packaging::Reference reference);

/// Looks paths up in the file tree, which must be readable.
class PathCheck {
 public:
  PathCheck(opc::plservices::FileSystemManager& files, opc::checks::Report& report)
      : files_(files), report_(report) {}

  void check(const PathReference& reference);

 private:
  void add(opc::checks::FindingId id, const PathReference& reference, const std::string& why);
  void reportMissing(const PathReference& reference, const std::string& path);
  std::optional<std::string> findWithoutCase(std::string_view path);

  opc::plservices::FileSystemManager& files_;
  opc::checks::Report& report_;
  std::optional<detail::CaselessTree> caseless_;  // created when a path is missing
};

}  // namespace addon::checks
