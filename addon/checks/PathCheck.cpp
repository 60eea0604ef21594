// SPDX-License-Identifier: MIT
#include "addon/checks/PathCheck.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "addon/checks/AddonFindings.h"
#include "opc/Text.h"
#include "opc/checks/Finding.h"
#include "opc/plservices/TreePath.h"

namespace addon::checks {

using opc::checks::quoted;
using Kind = PathReference::Kind;

namespace {

// On any system on which the add-on may be installed.
bool isAbsolute(std::string_view path) {
  const bool hasDrive = path.size() >= 2 && opc::isAsciiLetter(path[0]) && path[1] == ':';
  return hasDrive || path.starts_with('/') || path.starts_with('\\');
}

bool climbsOut(std::string_view path) {
  std::size_t depth = 0;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find_first_of("/\\"), path.size());
    const std::string_view name = path.substr(0, end);
    path.remove_prefix(std::min(end + 1, path.size()));
    if (name.empty() || name == ".") continue;
    if (name != "..") {
      ++depth;
    } else if (depth-- == 0) {
      return true;
    }
  }
  return false;
}

// A slash after the name of a folder has no meaning.
std::string_view withoutSlash(std::string_view path) {
  if (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
  return path;
}

bool isRoot(const PathReference& reference) {
  const bool mayBeRoot = reference.kind != Kind::File;
  return mayBeRoot && (reference.path == u"." || reference.path == u"/");
}

}  // namespace

const ReferenceRule* ruleOf(packaging::Reference reference) {
  static constexpr std::array kRules{
      ReferenceRule{packaging::Reference::App, Kind::File, kMissingAppFile, ""},
      ReferenceRule{packaging::Reference::ExampleCode, Kind::File, kMissingExampleCode, ""},
      ReferenceRule{packaging::Reference::ExampleImage, Kind::File, kMissingExampleImage, ""},
      ReferenceRule{packaging::Reference::SearchPath, Kind::Folder, kMissingSearchPath,
                    "the search path"},
      ReferenceRule{packaging::Reference::ClassPath, Kind::Either, kMissingClassPath,
                    "the Java class path"},
  };
  const auto* found = std::find_if(kRules.begin(), kRules.end(), [&](const ReferenceRule& rule) {
    return rule.reference == reference;
  });
  return found == kRules.end() ? nullptr : &*found;
}

void PathCheck::add(FindingId id, const PathReference& reference, const std::string& why) {
  report_.add(id, reference.part, reference.what + " names " + quoted(reference.path) + ": " + why,
              reference.line);
}

void PathCheck::check(const PathReference& reference) {
  if (isRoot(reference)) return;
  const std::string path = opc::toUtf8(reference.path);  // XML has no lone surrogates
  if (path.empty()) return add(reference.id, reference, "the path is empty");
  if (climbsOut(path)) return add(kPathOutside, reference, "'..' leads out of the package");
  const bool mayEndInSlash = reference.kind != Kind::File;
  const auto found = files_.find(mayEndInSlash ? withoutSlash(path) : std::string_view(path));
  if (found == nullptr) return reportMissing(reference, path);
  if (reference.kind == Kind::File && !found->isFile()) {
    add(reference.id, reference, "it is a folder, not a file");
  } else if ((reference.kind == Kind::Folder || path.ends_with('/')) && found->isFile()) {
    add(reference.id, reference, "it is a file, not a folder");
  }
}

void PathCheck::reportMissing(const PathReference& reference, const std::string& path) {
  const std::string_view relative =
      path.starts_with('/') ? std::string_view(path).substr(1) : std::string_view(path);
  const auto similar = findWithoutCase(withoutSlash(relative));
  if (similar && *similar != withoutSlash(relative)) {
    return add(kPathCase, reference, "the package has " + quoted(*similar) + ", in different case");
  }
  if (isAbsolute(path)) {
    return add(kPathOutside, reference,
               "it is absolute; paths are relative to the root of the package");
  }
  if (const char* fault = opc::plservices::findPathFault(relative)) {
    return add(reference.id, reference, std::string("it is not a valid package path: ") + fault);
  }
  const bool hasBackslash = path.find('\\') != std::string::npos;
  add(reference.id, reference,
      hasBackslash ? "it is not in the package, where names are separated by '/'"
                   : "it is not in the package");
}

std::optional<std::string> PathCheck::findWithoutCase(std::string_view path) {
  if (!caseless_) caseless_.emplace(files_, detail::CaselessTree::Visit());
  return caseless_->find(path);
}

}  // namespace addon::checks
