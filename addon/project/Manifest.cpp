// SPDX-License-Identifier: MIT
#include "addon/project/Manifest.h"

#include <algorithm>
#include <array>
#include <concepts>

#include "addon/project/ManifestKeys.h"

namespace addon::project {

namespace {

/// Lists the keys of a table and its subtables.
class KeyLister {
 public:
  KeyLister(std::string path, std::vector<ManifestKey>& into)
      : path_(std::move(path)), into_(into) {}

  template <typename Member>
  void required(std::string_view key, Member& member) {
    list(key, member, true);
  }
  template <typename Member>
  void optional(std::string_view key, Member& member) {
    list(key, member, false);
  }

 private:
  template <typename Value>
  void list(std::string_view key, Setting<Value>& member, bool isRequired) {
    add(key, typeName(member), isRequired);
  }
  void list(std::string_view key, Date& member, bool isRequired) {
    add(key, typeName(member), isRequired);
  }
  void list(std::string_view key, Level& member, bool isRequired) {
    add(key, typeName(member), isRequired);
  }
  template <typename Record>
  void list(std::string_view key, std::vector<Record>&, bool) {
    Record record;
    KeyLister inner(pathOf(key) + "[]", into_);
    visitKeys(record, inner);
  }
  template <std::derived_from<Section> Table>
  void list(std::string_view key, Table& table, bool) {
    KeyLister inner(pathOf(key), into_);
    visitKeys(table, inner);
  }

  void add(std::string_view key, std::string_view type, bool isRequired) {
    into_.push_back({pathOf(key), type, isRequired});
  }
  std::string pathOf(std::string_view key) const {
    return path_ + (path_.empty() ? "" : ".") + std::string(key);
  }

  std::string path_;
  std::vector<ManifestKey>& into_;
};

/// "{name}", the text in its place.
struct Placeholder {
  std::string_view name;
  const Text& text;
};

/// `_` for a name that is not valid for a file, here or on systems that the package is copied to.
std::string describe(std::string_view path, Position position, std::string_view why) {
  return "bad manifest '" + std::string(path) + ":" + std::to_string(position.line) + ":" +
         std::to_string(position.column) + "': " + std::string(why);
}

std::string fitForFileName(const std::string& text) {
  constexpr std::string_view kUnfit = "<>:\"/\\|?*";
  std::string name = text;
  for (char& c : name) {
    if (static_cast<unsigned char>(c) < 0x20 || kUnfit.find(c) != kUnfit.npos) c = '_';
  }
  return name;
}

}  // namespace

ManifestError::ManifestError(Position position, std::string_view why)
    : opc::Exception(opc::ErrorCode::InvalidText, describe(kManifestName, position, why)),
      position_(position),
      why_(why) {}

std::string ManifestError::in(std::string_view path) const {
  return describe(path, position_, why_);
}

std::vector<ManifestKey> manifestKeys() {
  std::vector<ManifestKey> keys;
  Manifest manifest;
  KeyLister lister("", keys);
  visitKeys(manifest, lister);
  return keys;
}

std::string outputPath(const Manifest& manifest) {
  const Text& output = manifest.build.output;
  const std::array<Placeholder, 2> known{Placeholder{"{name}", manifest.package.name},
                                         Placeholder{"{version}", manifest.package.version}};
  const auto refuse = [&](const std::string& why) -> std::string {
    throw ManifestError(output.position, "build.output: " + why);
  };
  std::string path;
  for (std::string_view rest = output.value; !rest.empty();) {
    const auto found = std::find_if(known.begin(), known.end(), [&](const Placeholder& one) {
      return rest.starts_with(one.name);
    });
    if (found != known.end()) {
      path += fitForFileName(found->text.value);
      rest.remove_prefix(found->name.size());
      continue;
    }
    if (rest.front() == '{') {
      const std::size_t end = std::min(rest.find('}'), rest.size() - 1);  // it may have no end
      return refuse("unknown placeholder '" + std::string(rest.substr(0, end + 1)) +
                    "', expected {name} or {version}");
    }
    path += rest.front();
    rest.remove_prefix(1);
  }
  if (path.empty() || path.ends_with('/')) return refuse("expected the path of a file");
  return path;
}

}  // namespace addon::project
