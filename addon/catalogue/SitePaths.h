// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace addon::catalogue {

// Where everything is in a site. All paths are relative to it.
inline constexpr std::string_view kRootFile = "root.json";
inline constexpr std::string_view kIndexFolder = "index";
inline constexpr std::string_view kShardFolder = "shards";
inline constexpr std::string_view kPackageFolder = "packages";
inline constexpr std::string_view kPageFolder = "pages";
inline constexpr std::string_view kFrontPage = "index.html";
inline constexpr std::string_view kTerms = "terms.js";
inline constexpr std::string_view kDatabase = "catalogue.sqlite";
inline constexpr std::string_view kRecordLines = "records.ndjson";
inline constexpr std::string_view kJsonExtension = ".json";

/// "FOLDER/HASH.EXTENSION"
std::string hashedPath(std::string_view folder, std::string_view sha256,
                       std::string_view extension);
/// Whether it is the path of the file with that hash: `sha256` may be any text.
bool isHashedPath(std::string_view path, std::string_view folder, std::string_view sha256,
                  std::string_view extension);

/// The GUID of an add-on as it is compared: in lower case.
std::string keyOf(std::string_view guid);
/// Which shard an add-on with that key is in: "00" to "ff".
std::string shardOf(std::string_view key);

/// The text if it is a plain name of a file or folder, else its SHA-256: no text of a package can
/// lead anywhere else.
std::string pathName(std::string_view text);
/// "pages/GUID/VERSION"
std::string pageFolder(std::string_view guid, std::string_view version);

/// Whether it is a SHA-256 in hexadecimal.
bool isHash(std::string_view text) noexcept;

}  // namespace addon::catalogue
