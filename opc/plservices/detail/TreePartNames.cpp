// SPDX-License-Identifier: MIT
#include "opc/plservices/detail/TreePartNames.h"

#include <algorithm>
#include <optional>
#include <string>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/plservices/LoadedFileTree.h"
#include "opc/plservices/TreePath.h"

namespace opc::plservices::detail {
namespace {

constexpr std::size_t kMaxExtension = 32;

std::optional<model::PartName> plainName(std::string_view path) {
  // A reader would not trust names like these in a package of unknown origin.
  if (hasControlCharacter(path) || path.find('\\') != std::string_view::npos) return std::nullopt;
  const std::string itemName = std::string(kFilesFolder) + model::percentEncodePath(path);
  if (findUnpackingFault(itemName) != nullptr || model::findNameFault(itemName) != nullptr) {
    return std::nullopt;
  }
  model::PartName name = model::PartName::fromItemName(itemName);
  if (name.isRelationshipsPartName()) return std::nullopt;
  return name;
}

// Keeps the content type that goes with the extension, and helps who looks into the package.
std::string plainSuffix(std::string_view path) {
  const std::string_view extension = extensionOf(path);
  const bool keep = !extension.empty() && extension.size() <= kMaxExtension &&
                    std::all_of(extension.begin(), extension.end(), isAsciiLetterOrDigit);
  return keep ? "." + std::string(extension) : std::string();
}

}  // namespace

TreePartNames::Choice TreePartNames::choose(model::Package& package, std::string_view path) {
  if (auto name = plainName(path); name && package.canCreatePart(*name)) {
    return {*std::move(name), false};
  }
  return {makeUp(package, path), true};
}

model::PartName TreePartNames::makeUp(model::Package& package, std::string_view path) {
  const std::string suffix = plainSuffix(path);
  // Every part that is there can be in the way of one number only, or of all of them.
  const std::uint64_t end = next_ + package.physical().itemCount();
  for (; next_ <= end; ++next_) {
    const std::string itemName = std::string(kMadeUpFilesFolder) + std::to_string(next_) + suffix;
    model::PartName name = model::PartName::fromItemName(itemName);
    if (!package.canCreatePart(name)) continue;
    ++next_;
    return name;
  }
  throw Exception(ErrorCode::InvalidName, "cannot add '" + std::string(path) +
                                              "': no part name is left for it, since parts of "
                                              "the package are in the way");
}

}  // namespace opc::plservices::detail
