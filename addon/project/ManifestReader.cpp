// SPDX-License-Identifier: MIT
#include "addon/project/detail/TomlParser.h"

#include <algorithm>
#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "addon/project/Manifest.h"
#include "addon/project/ManifestKeys.h"
#include "addon/project/PlainText.h"
#include "addon/project/detail/ManifestFaults.h"
#include "addon/project/detail/TomlKeys.h"
#include "addon/project/detail/TomlMessage.h"
#include "opc/Text.h"
#include "text/Suggest.h"

namespace addon::project {

namespace {

Position toPosition(const toml::source_position& position) {
  return {position.line, position.column};
}
Position begin(const toml::node& node) {
  return toPosition(node.source().begin);
}
Position begin(const toml::key& key) {
  return toPosition(key.source().begin);
}

const char* kindOf(const toml::node& node) {
  switch (node.type()) {
    case toml::node_type::table:
      return "a table";
    case toml::node_type::array:
      return "an array";
    case toml::node_type::string:
      return "a string";
    case toml::node_type::integer:
      return "an integer";
    case toml::node_type::floating_point:
      return "a float";
    case toml::node_type::boolean:
      return "a boolean";
    case toml::node_type::date:
      return "a date";
    case toml::node_type::time:
      return "a time";
    case toml::node_type::date_time:
      return "a date with a time";
    case toml::node_type::none:
      break;
  }
  return "nothing";
}

std::string padded(unsigned number, std::size_t width) {
  std::string digits = std::to_string(number);
  return std::string(digits.size() < width ? width - digits.size() : 0, '0') + digits;
}

/// Reads a table into its section. `path` names it in messages, "" for the whole manifest.
class TableReader {
 public:
  TableReader(const toml::table& table, std::string path, const detail::Source& source,
              detail::Faults& faults, Manifest& manifest)
      : table_(table),
        path_(std::move(path)),
        source_(source),
        faults_(faults),
        manifest_(manifest) {}

  template <typename Section>
  void read(Section& section) {
    const Position position = path_.empty() ? Position{1, 1} : begin(table_);
    if constexpr (std::derived_from<Section, project::Section>) section.position = position;
    visitKeys(section, *this);
    const toml::key* unknown = firstUnknown();
    if (unknown != nullptr) {
      refuseUnknown(*unknown);
    } else if (!missing_.empty()) {  // else it is probably there, but misspelt
      faults_.add(position, missing_);
    }
  }

  template <typename Member>
  void required(std::string_view key, Member& member, std::string_view /*help*/) {
    known_.push_back(key);
    if (const toml::node* node = table_.get(key)) return readRequired(*node, key, member);
    if (!missing_.empty()) return;
    missing_ = pathOf(key) + ": the key is missing, expected " + std::string(typeName(member));
  }

  template <typename Member>
  void optional(std::string_view key, Member& member, std::string_view /*help*/) {
    known_.push_back(key);
    if (const toml::node* node = table_.get(key)) readValue(*node, pathOf(key), member);
  }

 private:
  void readRequired(const toml::node& node, std::string_view key, Text& text) {
    readValue(node, pathOf(key), text);
    if (node.is_string() && text.value.empty()) {
      faults_.add(begin(node), pathOf(key) + ": expected a non-empty string");
    }
  }
  void readRequired(const toml::node& node, std::string_view key, FieldMember& member) {
    readValue(node, pathOf(key), member);
    if (node.is_string() && member.record.isEmpty(member.field)) {
      faults_.add(begin(node), pathOf(key) + ": expected a non-empty string");
    }
  }
  void readRequired(const toml::node& node, std::string_view key, RecordMember& member) {
    readValue(node, pathOf(key), member);
  }

  void readValue(const toml::node& node, const std::string& path, Text& text) {
    if (!node.is_string()) return refuse(node, path, typeName(text));
    text = {node.as_string()->get(), begin(node)};
    checkText(node, path, text.value);
  }

  void readValue(const toml::node& node, const std::string& path, Path& place) {
    readValue(node, path, static_cast<Text&>(place));
    requirePath(node, path, place);
  }

  void readValue(const toml::node& node, const std::string& path, FieldMember& member) {
    manifest_.positions[path] = begin(node);
    const packaging::Field& field = member.field;
    switch (field.kind()) {
      case packaging::FieldKind::Text:
        return readText(node, path, member);
      case packaging::FieldKind::Flag: {
        Flag flag;
        readValue(node, path, flag);
        member.record.flag(field) = flag.value;
        return;
      }
      case packaging::FieldKind::Texts:
        return readTexts(node, path, member);
      case packaging::FieldKind::Records:
        return readRecords(node, path, member);
    }
  }

  void readText(const toml::node& node, const std::string& path, FieldMember& member) {
    const packaging::Field& field = member.field;
    std::u16string& text = member.record.text(field);
    const auto* day = node.as_date();
    if (field.isDate && day != nullptr) {
      text = opc::fromUtf8(padded(day->get().year, 4) + "-" + padded(day->get().month, 2) + "-" +
                           padded(day->get().day, 2));
      return;
    }
    if (!node.is_string()) return refuse(node, path, typeName(member));
    const std::string& value = node.as_string()->get();
    checkText(node, path, value);
    text = opc::fromUtf8(value);
    if (*field.only == '\0' || value == field.only) return;
    faults_.add(begin(node), path + ": unknown " + field.name + " '" + value + "', expected '" +
                                 field.only + "', the only " + field.name);
  }

  void readTexts(const toml::node& node, const std::string& path, FieldMember& member) {
    const packaging::Field& field = member.field;
    Paths paths;
    if (field.reference == packaging::Reference::None) {
      readValue(node, path, static_cast<Texts&>(paths));
    } else {
      readValue(node, path, paths);
    }
    for (std::size_t i = 0; i < paths.value.size(); ++i) {
      manifest_.positions[pathOf(path, i)] = paths.value[i].position;
      member.record.texts(field).push_back(opc::fromUtf8(paths.value[i].value));
    }
  }

  void readRecords(const toml::node& node, const std::string& path, FieldMember& member) {
    if (!node.is_array()) return refuse(node, path, typeName(member));
    const toml::array& array = *node.as_array();
    for (std::size_t i = 0; i < array.size(); ++i) {
      RecordMember record{member.record.append(member.field)};
      readValue(array[i], pathOf(path, i), record);
    }
  }

  void readValue(const toml::node& node, const std::string& path, RecordMember& member) {
    manifest_.positions[path] = begin(node);
    if (!node.is_table()) return refuse(node, path, typeName(member));
    for (const packaging::Field& field : member.record.table().fields) setInitial(member, field);
    TableReader(*node.as_table(), path, source_, faults_, manifest_).read(member);
  }

  static void setInitial(RecordMember& member, const packaging::Field& field) {
    if (field.kind() == packaging::FieldKind::Text) {
      member.record.text(field) = opc::fromUtf8(field.initial);
    } else if (field.kind() == packaging::FieldKind::Flag) {
      member.record.flag(field) = std::string_view(field.initial) == "true";
    }
  }

  void readValue(const toml::node& node, const std::string& path, FileMember& member) {
    Path file;
    readValue(node, path, file);
    manifest_.textFiles[path] = file.value;
    manifest_.positions[path] = begin(node);
    refuseBoth(pathOf(member.field.key), path);
  }

  /// The key of the text comes first in the table of keys, though not in the text.
  void refuseBoth(const std::string& textKey, const std::string& fileKey) {
    if (!manifest_.isGiven(textKey)) return;
    const Position text = manifest_.positionOf(textKey);
    const Position file = manifest_.positionOf(fileKey);
    const bool isFileLast = text < file;
    faults_.add(std::max(file, text), (isFileLast ? fileKey : textKey) +
                                          ": expected one of the two, and " +
                                          (isFileLast ? textKey : fileKey) + " is given already");
  }

  void readValue(const toml::node& node, const std::string& path, Flag& flag) {
    if (!node.is_boolean()) return refuse(node, path, typeName(flag));
    flag = {node.as_boolean()->get(), begin(node)};
  }

  void readValue(const toml::node& node, const std::string& path, Level& level) {
    if (!node.is_integer()) return refuse(node, path, typeName(level));
    const std::int64_t number = node.as_integer()->get();
    if (number < 0 || number > 9) {
      return faults_.add(begin(node), path + ": expected " + std::string(typeName(level)) +
                                          ", got " + std::to_string(number));
    }
    level.value = static_cast<int>(number);
    level.position = begin(node);
  }

  void readValue(const toml::node& node, const std::string& path, Texts& texts) {
    if (!node.is_array()) return refuse(node, path, typeName(texts));
    texts = {{}, begin(node)};
    readElements(*node.as_array(), path, texts.value);
  }

  void readValue(const toml::node& node, const std::string& path, Paths& paths) {
    readValue(node, path, static_cast<Texts&>(paths));
    if (!node.is_array()) return;
    for (std::size_t i = 0; i < paths.value.size(); ++i) {
      requirePath((*node.as_array())[i], pathOf(path, i), paths.value[i]);
    }
  }

  template <std::derived_from<Section> Record>
  void readValue(const toml::node& node, const std::string& path, std::vector<Record>& records) {
    if (!node.is_array()) return refuse(node, path, typeName(records));
    readElements(*node.as_array(), path, records);
  }

  template <std::derived_from<Section> Table>
  void readValue(const toml::node& node, const std::string& path, Table& section) {
    if (!node.is_table()) return refuse(node, path, typeName(section));
    TableReader(*node.as_table(), path, source_, faults_, manifest_).read(section);
  }

  template <typename Element>
  void readElements(const toml::array& array, const std::string& path,
                    std::vector<Element>& elements) {
    elements.resize(array.size());
    for (std::size_t i = 0; i < array.size(); ++i) {
      readValue(array[i], pathOf(path, i), elements[i]);
    }
  }

  void refuse(const toml::node& node, const std::string& path, std::string_view expected) {
    if (!faults_.isEarlier(begin(node))) return;  // finding the word takes a search
    std::string why = path + ": expected " + std::string(expected) + ", got " + kindOf(node);
    if (expected == typeName(Text()) && node.is_value()) {
      const std::string word(source_.wordAt(begin(node)));
      const bool hasZeros = node.is_floating_point() && word.find('.') != word.npos;
      if (hasZeros) why += ", which would lose its final zeros";
      why += ": write \"" + word + "\"";
    }
    if (node.is_table() && expected == typeName(std::vector<AddedFileSection>())) {
      why += ": its header needs double brackets, [[" + path + "]]";
    }
    faults_.add(begin(node), std::move(why));
  }

  void requirePath(const toml::node& node, const std::string& path, const Text& text) {
    if (!node.is_string() || !text.value.empty()) return;
    faults_.add(begin(node), path + ": expected a non-empty path");
  }

  void checkText(const toml::node& node, const std::string& path, std::string_view text) {
    const std::string fault = manifestTextFault(text);
    if (!fault.empty()) faults_.add(begin(node), path + ": " + fault);
  }

  const toml::key* firstUnknown() const {
    const toml::key* first = nullptr;
    for (const auto& [key, node] : table_) {
      const bool isKnown = std::find(known_.begin(), known_.end(), key.str()) != known_.end();
      if (!isKnown && (first == nullptr || begin(key) < begin(*first))) first = &key;
    }
    return first;
  }

  void refuseUnknown(const toml::key& key) {
    std::string all = "the keys are ";
    for (const std::string_view one : known_) {
      all += (one == known_.front() ? "" : ", ") + std::string(one);
    }
    faults_.add(begin(key), "unknown key '" + pathOf(key.str()) +
                                "': " + text::suggestion(key.str(), known_, all));
  }

  static std::string pathOf(const std::string& array, std::size_t index) {
    return array + "[" + std::to_string(index) + "]";
  }
  std::string pathOf(std::string_view key) const {
    return path_.empty() ? std::string(key) : path_ + "." + std::string(key);
  }

  const toml::table& table_;
  std::string path_;
  const detail::Source& source_;
  detail::Faults& faults_;
  Manifest& manifest_;  // for what is said of documents
  std::vector<std::string_view> known_;
  std::string missing_;  // the first required key that is missing
};

/// Columns count characters, as in the other positions.
Position positionOf(std::string_view text, std::size_t at) {
  const std::string_view before = text.substr(0, at);
  const std::string_view line = before.substr(before.rfind('\n') + 1);  // npos + 1 is 0
  const auto isFirstByte = [](char c) { return !opc::isUtf8Continuation(c); };
  return {static_cast<std::uint32_t>(std::count(before.begin(), before.end(), '\n') + 1),
          static_cast<std::uint32_t>(std::count_if(line.begin(), line.end(), isFirstByte) + 1)};
}

toml::table parse(std::string_view text) {
  const std::size_t longKey = detail::findLongKey(text);
  if (longKey != text.npos) {
    throw ManifestError(positionOf(text, longKey), "a key has more than 16 parts");
  }
  try {
    return toml::parse(text, std::string_view(kManifestName));
  } catch (const toml::parse_error& error) {
    const Position position = toPosition(error.source().begin);
    throw ManifestError(position, detail::tomlMessage(error.description(), text, position));
  }
}

/// A path with '/' in front is probably meant as a path on the disk.
void refuseAbsolute(const std::vector<AddedFileSection>& files, detail::Faults& faults) {
  for (std::size_t i = 0; i < files.size(); ++i) {
    const Text& to = files[i].to;
    if (!to.value.starts_with('/')) continue;
    faults.add(to.position, "files.add[" + std::to_string(i) +
                                "].to: expected a path in the package, without a '/' in front, "
                                "got '" +
                                to.value + "'");
  }
}

}  // namespace

VerifySection readPolicy(std::string_view text) {
  const toml::table table = parse(text);
  const detail::Source source(text);
  detail::Faults faults;
  Manifest none;
  PolicySection policy;
  TableReader(table, {}, source, faults, none).read(policy);
  faults.raise();
  return policy.verify;
}

Manifest readManifest(std::string_view text) {
  const toml::table table = parse(text);
  const detail::Source source(text);
  detail::Faults faults;
  Manifest manifest;
  TableReader(table, {}, source, faults, manifest).read(manifest);
  refuseAbsolute(manifest.files.added, faults);
  faults.raise();
  outputPath(manifest);
  return manifest;
}

}  // namespace addon::project
