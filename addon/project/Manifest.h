// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "opc/Exception.h"

namespace addon::project {

/// The name that a manifest has in its folder.
inline constexpr const char* kManifestName = "kraddon.toml";

/// A place in the manifest's text. Lines and columns count from 1; 0 stands for no place.
struct Position {
  std::uint32_t line = 0;
  std::uint32_t column = 0;
  friend bool operator==(const Position&, const Position&) = default;
  friend bool operator<(const Position& a, const Position& b) {
    return std::tie(a.line, a.column) < std::tie(b.line, b.column);
  }
};

/// Something is wrong with the manifest. The text names file, line and column, and `why` the key
/// and what was expected.
class ManifestError : public opc::Exception {
 public:
  ManifestError(Position position, std::string_view why);
  Position position() const noexcept { return position_; }

  /// The text with the path at which the manifest was found, for who reads several.
  std::string in(std::string_view path) const;

 private:
  Position position_;
  std::string why_;
};

/// The value of a key: what the manifest says, or what holds when it says nothing.
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

// The tables of a manifest. A comment tells what the value is where the name does not; "disk" is a
// path from the manifest's folder, "package" one in the package.

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

/// What an author says of an add-on, as it is written: nothing is looked up on the disk.
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

/// Reads a manifest's text. Throws ManifestError for the first of its faults: what is no TOML, keys
/// that are unknown, missing or of a wrong type, and texts with control characters.
Manifest readManifest(std::string_view text);

/// A key that a manifest may have.
struct ManifestKey {
  std::string path;       ///< "app[].file"
  std::string_view type;  ///< "string", "boolean", "array of strings" and so on
  bool isRequired;
};

/// All keys, tables apart, in the order of the manual.
std::vector<ManifestKey> manifestKeys();

/// The path that the package gets by default: the pattern `build.output` with name and version in
/// their places, `_` in them for every character that some file system refuses. Throws
/// ManifestError for a pattern that makes no sense.
std::string outputPath(const Manifest& manifest);

}  // namespace addon::project
