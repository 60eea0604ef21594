// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "text/JsonText.h"
#include "text/JsonWriter.h"

namespace addon::catalogue {

/// What an add-on needs.
struct Requirement {
  std::string kind;  ///< "product" or "supportPackage"
  std::string name;
  std::string version;
  std::string identifier;
};

/// What a catalogue says of one version of an add-on. All texts are UTF-8, and those of the package
/// are a stranger's.
struct Record {
  std::string guid;
  std::string name;
  std::string version;
  std::string release;
  std::string summary;
  std::string description;
  std::string author;
  std::string organization;
  std::string license;
  std::vector<Requirement> requirements;
  std::string created;
  std::string modified;
  std::uint64_t size = 0;
  std::string sha256;
  std::string digest;
  std::uint64_t files = 0;
  std::uint64_t folders = 0;
  std::uint64_t bytes = 0;
  std::string screenshot;
  std::vector<std::string> signers;
  bool isYanked = false;
  std::string package;
  std::string page;
};

/// A text that is null when it is empty.
struct OptionalText {
  std::string Record::*text;
};

/// A field of a record, in JSON and as a column of the database.
struct RecordField {
  const char* name;
  const char* help;  ///< one sentence
  std::variant<std::string Record::*, OptionalText, std::uint64_t Record::*, bool Record::*,
               std::vector<std::string> Record::*, std::vector<Requirement> Record::*>
      member;
};

/// All of them, in the order in which they are written.
std::span<const RecordField> recordFields();

/// The texts of a requirement, by their names in JSON.
struct RequirementField {
  const char* name;
  std::string Requirement::*text;
};
std::span<const RequirementField> requirementFields();

void writeRecord(const Record& record, text::JsonWriter& json);
/// A list of a record alone, as it is written there.
void writeList(const std::vector<Requirement>& requirements, text::JsonWriter& json);
void writeList(const std::vector<std::string>& texts, text::JsonWriter& json);
/// The inverse for a text of JSON. Throws text::JsonError.
void readList(std::string_view json, std::vector<Requirement>& requirements);
void readList(std::string_view json, std::vector<std::string>& texts);
/// One line of JSON, without a line end.
std::string toLine(const Record& record);

/// Throws text::JsonError for what is not a record, and for one whose paths are not those that a
/// site has for its GUID, version and hash. Members that are not known are left out.
Record readRecord(const text::JsonValue& value);
Record parseRecord(std::string_view line);

}  // namespace addon::catalogue
