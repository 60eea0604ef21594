// SPDX-License-Identifier: MIT
#include "addon/project/Manifest.h"

#include <algorithm>
#include <array>
#include <concepts>

#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/Documents.h"
#include "addon/project/ManifestKeys.h"
#include "opc/Text.h"

namespace addon::project {

using packaging::ConstRecord;
using packaging::Field;
using packaging::Record;

namespace {

/// Lists the keys of a table and its subtables.
class KeyLister {
 public:
  KeyLister(std::string path, std::vector<ManifestKey>& into)
      : path_(std::move(path)), into_(into) {}

  template <typename Member>
  void required(std::string_view key, Member& member, std::string_view /*help*/) {
    list(key, member, true);
  }
  template <typename Member>
  void optional(std::string_view key, Member& member, std::string_view /*help*/) {
    list(key, member, false);
  }

 private:
  template <typename Value>
  void list(std::string_view key, Setting<Value>& member, bool isRequired) {
    add(key, typeName(member), isRequired);
  }
  void list(std::string_view key, FileMember& member, bool isRequired) {
    add(key, typeName(member), isRequired);
  }
  void list(std::string_view key, FieldMember& member, bool isRequired) {
    if (member.field.kind() != packaging::FieldKind::Records) {
      return add(key, typeName(member), isRequired);
    }
    KeyLister inner(pathOf(key) + "[]", into_);
    RecordMember record{member.record.append(member.field)};
    visitKeys(record, inner);
  }
  void list(std::string_view key, RecordMember& member, bool) {
    KeyLister inner(pathOf(key), into_);
    visitKeys(member, inner);
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

void visitRecord(const Record& record, const std::string& path, const FieldVisitor& visit) {
  for (const Field* field : keyFields(record.table())) {
    const std::string key = path + (path.empty() ? "" : ".") + field->key;
    visit(record, *field, key);
    if (field->kind() != packaging::FieldKind::Records) continue;
    for (std::size_t i = 0; i < record.size(*field); ++i) {
      visitRecord(record.at(*field, i), key + "[" + std::to_string(i) + "]", visit);
    }
  }
}

/// "{name}", the text in its place.
struct Placeholder {
  std::string_view name;
  std::string text;
};

std::string describe(std::string_view what, std::string_view path, Position position,
                     std::string_view why) {
  const std::string place = std::string(path) + ":" + std::to_string(position.line) + ":" +
                            std::to_string(position.column);
  return opc::sentence(what, place, why);
}

/// `_` for a name that is not valid for a file, here or on systems that the package is copied to.
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
    : opc::Exception(opc::ErrorCode::InvalidText,
                     describe("bad manifest", kManifestName, position, why)),
      position_(position),
      why_(why) {}

std::string ManifestError::in(std::string_view path, std::string_view what) const {
  return describe(what, path, position_, why_);
}

Manifest::Manifest() {
  for (const auto* table : packaging::documents()) documents.push_back(table->make());
}

const packaging::OwnedDocument& Manifest::find(const packaging::DocumentTable& table) const {
  return *std::find_if(documents.begin(), documents.end(),
                       [&](const auto& document) { return document.table == &table; });
}

Position Manifest::positionOf(std::string_view path) const {
  const auto found = positions.find(path);
  return found == positions.end() ? Position() : found->second;
}

std::string nameOf(const ConstRecord& record) {
  const Field* name = record.table().find("name");
  return name == nullptr ? std::string() : opc::toUtf8(record.text(*name));
}

std::vector<const Field*> keyFields(const packaging::RecordTable& table) {
  std::vector<const Field*> fields;
  for (const Field& field : table.fields) {
    if (*field.key != '\0') fields.push_back(&field);
  }
  const auto rank = [](const Field* field) {
    return field->isKeyRequired ? 0 : *field->otherwise == '\0' ? 1 : 2;
  };
  std::stable_sort(fields.begin(), fields.end(),
                   [&](const Field* a, const Field* b) { return rank(a) < rank(b); });
  return fields;
}

void visitFields(const packaging::OwnedDocument& document, const FieldVisitor& visit) {
  visitRecord(document.record, document.table->key, visit);
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
  const auto& properties = manifest.get<packaging::AddonProperties>();
  const std::array<Placeholder, 2> known{Placeholder{"{name}", opc::toUtf8(properties.name)},
                                         Placeholder{"{version}", opc::toUtf8(properties.version)}};
  const auto refuse = [&](const std::string& why) -> std::string {
    throw ManifestError(output.position, "build.output: " + why);
  };
  std::string path;
  for (std::string_view rest = output.value; !rest.empty();) {
    const auto found = std::find_if(known.begin(), known.end(), [&](const Placeholder& one) {
      return rest.starts_with(one.name);
    });
    if (found != known.end()) {
      path += fitForFileName(found->text);
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
