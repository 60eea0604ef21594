// SPDX-License-Identifier: MIT
#include "opc/model/PartName.h"

#include <cstring>
#include <utility>

#include "opc/Exception.h"
#include "opc/Text.h"

namespace opc::model {
namespace {

constexpr std::string_view kRelationshipsFolder = "_rels";
constexpr std::string_view kRelationshipsEnding = ".rels";

FormatError invalidName(const std::string& name, const char* rule, const char* why) {
  return {rule, "invalid part name '" + name + "': " + why, ErrorCode::InvalidName};
}

// The name in UTF-8, checked, with its leading slash.
std::string checkedName(std::u16string_view name) {
  std::string given;
  try {
    given = toUtf8(name);
  } catch (const Exception&) {
    throw invalidName(toUtf8ForDisplay(name), "PN-2", "a surrogate stands alone");
  }
  if (!given.starts_with('/')) throw invalidName(given, "PN-1", "it does not start with '/'");
  const NameFault* fault = findNameFault(std::string_view(given).substr(1));
  if (fault != nullptr) throw invalidName(given, fault->rule, fault->why);
  return given;
}

// 0 when there is no such character.
std::size_t startAfterLast(char c, std::string_view text) {
  if (text.empty()) return 0;
  const void* found = ::memrchr(text.data(), c, text.size());
  if (found == nullptr) return 0;
  return static_cast<std::size_t>(static_cast<const char*>(found) - text.data()) + 1;
}

std::size_t lastSegmentStart(std::string_view itemName) {
  return startAfterLast('/', itemName);
}

bool endsWithFolded(std::string_view text, std::string_view lowerEnding) {
  if (text.size() < lowerEnding.size()) return false;
  const std::string_view ending = text.substr(text.size() - lowerEnding.size());
  for (std::size_t i = 0; i < ending.size(); ++i) {
    if (toLowerAscii(ending[i]) != lowerEnding[i]) return false;
  }
  return true;
}

}  // namespace

PartName::PartName(std::u16string_view name) {
  given_ = checkedName(name);
  canonical_ = canonicalItemName(given_);
  key_ = toLowerAscii(canonical_);
  if (given_ == canonical_) given_.clear();
}

PartName::PartName(std::string given, std::string canonical)
    : given_(std::move(given)), canonical_(std::move(canonical)), key_(toLowerAscii(canonical_)) {
  if (given_ == canonical_) given_.clear();
}

PartName PartName::fromItemName(std::string_view itemName) {
  const NameFault* fault = findNameFault(itemName);
  std::string given = "/" + std::string(itemName);
  if (fault != nullptr) throw invalidName(given, fault->rule, fault->why);
  std::string canonical = canonicalItemName(given);
  return {std::move(given), std::move(canonical)};
}

std::u16string PartName::toString() const {
  return fromUtf8(given_.empty() ? canonical_ : given_);
}

std::string_view PartName::itemName() const {
  return std::string_view(canonical_).substr(1);
}

std::string_view PartName::getExtension() const {
  return extensionOf(itemName());
}

bool PartName::isRelationshipsPartName() const {
  return isRelationshipsItemName(itemName());
}

PartName PartName::relationshipsPartName() const {
  const std::string name = "/" + relationshipsItemName(itemName());
  return {name, name};
}

std::string_view extensionOf(std::string_view itemName) {
  const std::size_t afterDot = startAfterLast('.', itemName);
  const bool hasDot = afterDot != 0 && afterDot > lastSegmentStart(itemName);
  return hasDot ? itemName.substr(afterDot) : std::string_view();
}

bool isRelationshipsItemName(std::string_view itemName) {
  if (!endsWithFolded(itemName, kRelationshipsEnding)) return false;
  const std::size_t start = lastSegmentStart(itemName);
  if (start == 0) return false;
  const std::string_view folder = itemName.substr(0, start - 1);
  return endsWithFolded(folder.substr(lastSegmentStart(folder)), kRelationshipsFolder) &&
         folder.size() - lastSegmentStart(folder) == kRelationshipsFolder.size();
}

std::string relationshipsItemName(std::string_view itemName) {
  const std::size_t start = lastSegmentStart(itemName);
  std::string result(itemName.substr(0, start));
  result += kRelationshipsFolder;
  result += '/';
  result += itemName.substr(start);
  result += kRelationshipsEnding;
  return result;
}

std::string sourceOfRelationships(std::string_view itemName) {
  const std::size_t start = lastSegmentStart(itemName);
  const std::size_t folder = start - kRelationshipsFolder.size() - 1;
  std::string result(itemName.substr(0, folder));
  result += itemName.substr(start, itemName.size() - start - kRelationshipsEnding.size());
  return result;
}

}  // namespace opc::model
