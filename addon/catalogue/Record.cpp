// SPDX-License-Identifier: MIT
#include "addon/catalogue/Record.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>

#include "addon/catalogue/SitePaths.h"
#include "addon/packaging/AddonPackage.h"
#include "opc/Text.h"

namespace addon::catalogue {

using text::JsonError;
using text::JsonValue;
using text::JsonWriter;

namespace {

constexpr std::array kRequirementFields{RequirementField{"kind", &Requirement::kind},
                                        RequirementField{"name", &Requirement::name},
                                        RequirementField{"version", &Requirement::version},
                                        RequirementField{"identifier", &Requirement::identifier}};

constexpr std::array kFields{
    RecordField{"guid", "What identifies the add-on. Upper and lower case are the same.",
                &Record::guid},
    RecordField{"name", "Its name.", &Record::name},
    RecordField{"version", "The version of the add-on.", &Record::version},
    RecordField{"release", "The release of the host that it was made for.", &Record::release},
    RecordField{"summary", "One line about it.", &Record::summary},
    RecordField{"description", "The same at length.", &Record::description},
    RecordField{"author", "The name of its author.", &Record::author},
    RecordField{"organization", "Where the author works.", &Record::organization},
    RecordField{"license", "The name of its license.", &Record::license},
    RecordField{"requirements", "What it needs.", &Record::requirements},
    RecordField{"created", "When the package was made, in UTC.", &Record::created},
    RecordField{"modified", "The modification time in the core properties, in UTC.",
                &Record::modified},
    RecordField{"size", "Of the package, in bytes.", &Record::size},
    RecordField{"sha256", "Of the package, in hexadecimal.", &Record::sha256},
    RecordField{"digest", "Of its content, however it is packed.", &Record::digest},
    RecordField{"files", "How many files there are.", &Record::files},
    RecordField{"folders", "How many empty folders there are.", &Record::folders},
    RecordField{"bytes", "Of all files, unpacked.", &Record::bytes},
    RecordField{"screenshot", "The path of its screenshot in the site, or null.",
                OptionalText{&Record::screenshot}},
    RecordField{"signers", "The certificates of its valid signatures, by their SHA-256.",
                &Record::signers},
    RecordField{"yanked", "Whether it is not to be used any more.", &Record::isYanked},
    RecordField{"package", "The path of the package in the site.", &Record::package},
    RecordField{"page", "The path of its page in the site.", &Record::page}};

/// Writes the value of any member.
class MemberWriter {
 public:
  MemberWriter(const Record& record, JsonWriter& json) : record_(record), json_(json) {}

  void operator()(std::string Record::*member) const {
    json_.value(std::string_view(record_.*member));
  }
  void operator()(OptionalText member) const { json_.textOrNull(record_.*member.text); }
  void operator()(std::uint64_t Record::*member) const { json_.value(record_.*member); }
  void operator()(bool Record::*member) const { json_.value(record_.*member); }
  template <typename Element>
  void operator()(std::vector<Element> Record::*member) const {
    writeList(record_.*member, json_);
  }

 private:
  const Record& record_;
  JsonWriter& json_;
};

[[noreturn]] void refuse(const char* name) {
  throw JsonError(std::string("the member '") + name +
                  "' of a record is missing or of another kind");
}

const JsonValue& memberOf(const JsonValue& object, const char* name) {
  const auto found = object.is_object() ? object.find(name) : object.end();
  if (!object.is_object() || found == object.end()) refuse(name);
  return *found;
}

std::string textOf(const JsonValue& value, const char* name) {
  if (!value.is_string()) refuse(name);
  return value.get<std::string>();
}

void addElement(const JsonValue& value, const char* name, std::vector<std::string>& texts) {
  texts.push_back(textOf(value, name));
}

void addElement(const JsonValue& value, const char* /*name*/, std::vector<Requirement>& list) {
  Requirement& requirement = list.emplace_back();
  for (const auto& field : kRequirementFields) {
    requirement.*field.text = textOf(memberOf(value, field.name), field.name);
  }
}

template <typename Element>
void addElements(const JsonValue& value, const char* name, std::vector<Element>& list) {
  if (!value.is_array()) refuse(name);
  for (const JsonValue& element : value) addElement(element, name, list);
}

/// Reads the same.
class MemberReader {
 public:
  MemberReader(Record& record, const JsonValue& value, const char* name)
      : record_(record), value_(value), name_(name) {}

  void operator()(std::string Record::*member) const { record_.*member = textOf(value_, name_); }
  void operator()(OptionalText member) const {
    if (!value_.is_null()) record_.*member.text = textOf(value_, name_);
  }
  void operator()(std::uint64_t Record::*member) const {
    const std::optional<std::uint64_t> number = text::wholeNumber(value_);
    if (!number) refuse(name_);
    record_.*member = *number;
  }
  void operator()(bool Record::*member) const {
    if (!value_.is_boolean()) refuse(name_);
    record_.*member = value_.get<bool>();
  }
  template <typename Element>
  void operator()(std::vector<Element> Record::*member) const {
    addElements(value_, name_, record_.*member);
  }

 private:
  Record& record_;
  const JsonValue& value_;
  const char* name_;
};

/// Whether it is "FOLDER/HASH.EXTENSION" with any hash and a plain extension.
bool isHashedFile(std::string_view path, std::string_view folder) {
  const std::size_t slash = path.rfind('/');
  const std::size_t dot = path.rfind('.');
  if (slash == std::string_view::npos || dot == std::string_view::npos || dot < slash) return false;
  const std::string_view extension = path.substr(dot + 1);
  return !extension.empty() &&
         std::all_of(extension.begin(), extension.end(), opc::isAsciiLetterOrDigit) &&
         isHashedPath(path, folder, path.substr(slash + 1, dot - slash - 1), path.substr(dot));
}

/// The name of a member with a path that the site does not write for this record: it would be
/// opened, or even written, all the same. Null if there is none.
const char* foreignPathOf(const Record& record) {
  if (!isHashedPath(record.package, kPackageFolder, record.sha256, packaging::kPackageExtension)) {
    return "package";
  }
  const std::string folder = pageFolder(record.guid, record.version);
  if (record.page != folder + "/index.html") return "page";
  if (!record.screenshot.empty() && !isHashedFile(record.screenshot, folder)) return "screenshot";
  return nullptr;
}

}  // namespace

std::span<const RecordField> recordFields() {
  return kFields;
}

std::span<const RequirementField> requirementFields() {
  return kRequirementFields;
}

void writeList(const std::vector<Requirement>& requirements, JsonWriter& json) {
  json.beginArray();
  for (const Requirement& requirement : requirements) {
    json.beginObject();
    for (const auto& field : kRequirementFields) {
      json.member(field.name, std::string_view(requirement.*field.text));
    }
    json.endObject();
  }
  json.endArray();
}

void writeList(const std::vector<std::string>& texts, JsonWriter& json) {
  json.beginArray();
  for (const std::string& each : texts) json.value(std::string_view(each));
  json.endArray();
}

void readList(std::string_view json, std::vector<Requirement>& requirements) {
  addElements(text::parseJson(json), "requirements", requirements);
}

void readList(std::string_view json, std::vector<std::string>& texts) {
  addElements(text::parseJson(json), "signers", texts);
}

void writeRecord(const Record& record, JsonWriter& json) {
  json.beginObject();
  for (const RecordField& field : kFields) {
    json.key(field.name);
    std::visit(MemberWriter(record, json), field.member);
  }
  json.endObject();
}

std::string toLine(const Record& record) {
  std::string line;
  JsonWriter json(line, JsonWriter::Layout::Compact);
  writeRecord(record, json);
  return line;
}

Record readRecord(const JsonValue& value) {
  Record record;
  for (const RecordField& field : kFields) {
    std::visit(MemberReader(record, memberOf(value, field.name), field.name), field.member);
  }
  if (const char* const member = foreignPathOf(record)) {
    throw JsonError(std::string("the member '") + member +
                    "' of a record names a file that is not of the site");
  }
  return record;
}

Record parseRecord(std::string_view line) {
  return readRecord(text::parseJson(line));
}

}  // namespace addon::catalogue
