// SPDX-License-Identifier: MIT
#include "addon/project/detail/TomlParser.h"

#include <optional>

#include "addon/project/Guid.h"
#include "addon/project/ManifestGuid.h"
#include "addon/project/PlainText.h"
#include "addon/project/detail/TomlKeys.h"

namespace addon::project {

namespace {

std::optional<toml::table> parseIfValid(std::string_view text) {
  if (detail::findLongKey(text) != text.npos) return std::nullopt;
  try {
    return toml::parse(text);
  } catch (const toml::parse_error&) {
    return std::nullopt;
  }
}

std::string textAt(const toml::table& table, std::string_view path) {
  const std::string text = table.at_path(path).value_or(std::string());
  return isManifestText(text) ? text : std::string();
}

/// The GUID in the first of the lines below "[package]" that is valid by itself.
std::string guidInLines(std::string_view text) {
  bool isInPackage = false;
  for (const std::string_view line : linesOf(text)) {
    const std::string_view words = trimmed(line);
    if (words.starts_with('[')) isInPackage = words.starts_with("[package]");
    if (!isInPackage || !words.starts_with("guid")) continue;
    const std::optional<toml::table> table = parseIfValid(words);
    if (table) return textAt(*table, "guid");
  }
  return {};
}

}  // namespace

std::string guidOfManifest(std::string_view text) {
  const std::optional<toml::table> table = parseIfValid(text);
  if (!table) return guidInLines(text);
  if (std::string guid = textAt(*table, "package.guid"); !guid.empty()) return guid;
  const std::string name = textAt(*table, "package.name");
  return name.empty() ? name : guidOfName(name);
}

}  // namespace addon::project
