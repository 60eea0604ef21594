// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "addon/packaging/DocumentTable.h"
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

  /// What is wrong, without the place.
  const std::string& why() const noexcept { return why_; }
  /// The message with the path of the manifest or, as `what` says, of another file.
  std::string in(std::string_view path, std::string_view what = "bad manifest") const;

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
struct Path : Setting<std::string> {};  ///< a text that is not empty
struct Paths : Texts {};                ///< texts that are not empty
struct Level : Setting<int> {};         ///< 0 to 9

// The tables of a manifest. In the comments, "disk" is a path relative to the manifest's folder and
// "package" a path in the package.

struct Section {
  Position position = {};
  bool isGiven() const { return position.line != 0; }
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
  Texts error;
  Texts warn;
  Flag strict{false};
};

struct PolicySection : Section {
  VerifySection verify;
};

/// A manifest as it is written: nothing is looked up on the disk.
struct Manifest : Section {
  Manifest();

  /// All kinds, in the order of their list, with what the manifest says. The texts of files are not
  /// in them yet.
  std::vector<packaging::OwnedDocument> documents;
  Path screenshot;  ///< disk
  FilesSection files;
  BuildSection build;
  VerifySection verify;

  /// Where the keys of documents stand, by their paths: "app[0].file", "configuration".
  std::map<std::string, Position, std::less<>> positions;
  /// What "license.file" and the like say: paths on disk.
  std::map<std::string, std::string, std::less<>> textFiles;

  template <typename Document>
  Document& get() const {
    return dynamic_cast<Document&>(*find(Document::kTable).part);
  }
  const packaging::OwnedDocument& find(const packaging::DocumentTable& table) const;

  bool isGiven(std::string_view path) const { return positions.contains(path); }
  /// No place for a key that is not given.
  Position positionOf(std::string_view path) const;
};

/// The text of a record for its name, in UTF-8.
std::string nameOf(const packaging::ConstRecord& record);

/// The fields of a record that have keys, in the order of the manual: those that are required, the
/// others, and those that are made of others when they are not given.
std::vector<const packaging::Field*> keyFields(const packaging::RecordTable& table);

using FieldVisitor =
    std::function<void(const packaging::Record&, const packaging::Field&, const std::string& path)>;
/// Calls `visit` for each field of a document that has a key, with the path of that key.
void visitFields(const packaging::OwnedDocument& document, const FieldVisitor& visit);

/// Reads a policy, of which [verify] is the only table. Throws ManifestError as readManifest()
/// does.
VerifySection readPolicy(std::string_view text);

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
