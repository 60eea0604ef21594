// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "opc/Exception.h"

namespace addon::project {

/// The file name of a manifest.
inline constexpr const char* kManifestName = "kraddon.toml";

/// A position in the manifest's text. Lines and columns start at 1; 0 means unknown.
struct Position {
  std::uint32_t line = 0;
  std::uint32_t column = 0;
  friend bool operator==(const Position&, const Position&) = default;
  friend bool operator<(const Position& a, const Position& b) {
    return std::tie(a.line, a.column) < std::tie(b.line, b.column);
  }
};

/// The manifest is not valid. The message names file, line and column; `why` names the key and what
/// was expected.
class ManifestError : public opc::Exception {
 public:
  ManifestError(Position position, std::string_view why);
  Position position() const noexcept { return position_; }

  /// The message with the path of the manifest, for callers that read several.
  std::string in(std::string_view path) const;

 private:
  Position position_;
  std::string why_;
};

/// The value of a key, or its default if the manifest does not set it.
template <typename Value>
struct Setting {
  Value value = {};
  Position position = {};
  bool isGiven() const { return position.line != 0; }
};

using Text = Setting<std::string>;
using Flag = Setting<bool>;
using Texts = Setting<std::vector<Text>>;
struct Date : Setting<std::string> {};  ///< a text, or a TOML date
struct Path : Setting<std::string> {};  ///< a text that is not empty
struct Paths : Texts {};                ///< texts that are not empty
struct Level : Setting<int> {};         ///< 0 to 9

// The tables of a manifest. In the comments, "disk" is a path relative to the manifest's folder and
// "package" a path in the package.

struct Section {
  Position position = {};
  bool isGiven() const { return position.line != 0; }
};

struct PackageSection : Section {
  Text name, version, type{"Korvan Toolbox"}, summary, author, contact, organization;
  Text description;
  Path descriptionFile;  ///< disk; instead of description
  Text guid;
  Path screenshot;  ///< disk
};

struct LicenseSection : Section {
  Text type;
  Text text;
  Path file;  ///< disk; instead of text
};

struct ConfigurationSection : Section {
  Paths korvanPaths;     ///< package; folders
  Paths javaClassPaths;  ///< package
};

struct AppSection : Section {
  Text name;
  Text file;  ///< package
  Text guid;
  Flag installByDefault{true};
};

struct ExampleSection : Section {
  Text name, type;
  Text source, main, thumbnail;  ///< package
  Paths images;                  ///< package
};

struct CategorySection : Section {
  Text name;
  std::vector<ExampleSection> examples;
};

struct RevisionSection : Section {
  Text version;
  Date date;
  Text description;
};

struct ProductSection : Section {
  Text name, version, identifier;
};

struct RequirementsSection : Section {
  std::vector<ProductSection> products, supportPackages;
};

struct AddedFileSection : Section {
  Text from;  ///< disk
  Text to;    ///< package
};

struct FilesSection : Section {
  Path root{{"."}};  ///< disk
  Texts include{{{"**"}}};
  Texts exclude;
  Flag defaultExcludes{true};
  Flag emptyFolders{true};
  std::vector<AddedFileSection> added;
};

struct BuildSection : Section {
  Text output{"{name}-{version}.kraddon"};
  Level level{{6}};
};

struct VerifySection : Section {
  Texts ignore;
  Flag strict{false};
};

/// A manifest as it is written: nothing is looked up on the disk.
struct Manifest : Section {
  PackageSection package;
  LicenseSection license;
  ConfigurationSection configuration;
  std::vector<AppSection> apps;
  std::vector<CategorySection> categories;
  std::vector<RevisionSection> revisions;
  RequirementsSection requirements;
  FilesSection files;
  BuildSection build;
  VerifySection verify;
};

/// Reads a manifest. Throws ManifestError for the first error: invalid TOML, unknown or missing
/// keys, values of a wrong type, and texts with control characters.
Manifest readManifest(std::string_view text);

/// A key of a manifest.
struct ManifestKey {
  std::string path;       ///< "app[].file"
  std::string_view type;  ///< "string", "boolean", "array of strings" and so on
  bool isRequired;
};

/// All keys except tables, in the order of the manual.
std::vector<ManifestKey> manifestKeys();

/// The default path of the package: the pattern `build.output` with name and version inserted. In
/// these, `_` replaces each character that some file systems refuse. Throws ManifestError if the
/// pattern is not valid.
std::string outputPath(const Manifest& manifest);

}  // namespace addon::project
