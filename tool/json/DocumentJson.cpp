// SPDX-License-Identifier: MIT
#include "tool/json/DocumentJson.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "addon/project/PlainText.h"
#include "opc/Text.h"
#include "text/Suggest.h"

namespace tool::json {

using addon::packaging::ConstRecord;
using addon::packaging::DocumentTable;
using addon::packaging::Field;
using addon::packaging::FieldKind;
using addon::packaging::Record;
using addon::packaging::RecordTable;

namespace {

/// Where in a document something stands. Spelled out only when something is wrong there.
class Place {
 public:
  explicit Place(std::string_view document) : name_(document) {}

  Place member(std::string_view name) const { return Place(this, name, 0); }
  Place element(std::size_t index) const { return Place(this, {}, index); }

  [[noreturn]] void refuse(std::string_view why) const {
    throw JsonError(fmt::format("{}: {}", text(), why));
  }

 private:
  Place(const Place* parent, std::string_view name, std::size_t index)
      : parent_(parent), name_(name), index_(index) {}

  // A document is a few levels deep, and so are the places in it.
  std::string text() const {
    if (parent_ == nullptr) return std::string(name_);
    if (name_.data() == nullptr) return fmt::format("{}[{}]", parent_->text(), index_);
    return fmt::format("{}.{}", parent_->text(), name_);
  }

  const Place* parent_ = nullptr;
  std::string_view name_;
  std::size_t index_ = 0;
};

std::u16string readText(const JsonValue& value, const Place& place) {
  if (!value.is_string()) place.refuse("expected a string");
  const auto& text = value.get_ref<const std::string&>();
  const std::string fault = addon::project::xmlTextFault(text);
  if (!fault.empty()) place.refuse(fault);
  return opc::fromUtf8(text);
}

bool readFlag(const JsonValue& value, const Place& place) {
  if (value == "true" || value == "false") return value == "true";
  place.refuse("expected the string \"true\" or \"false\"");
}

void readRecord(const Record& record, const JsonValue& value, const Place& place);

void readList(const Record& record, const Field& field, const JsonValue& value,
              const Place& place) {
  const bool isOfTexts = field.kind() == FieldKind::Texts;
  if (!value.is_array()) {
    place.refuse(isOfTexts ? "expected an array of texts" : "expected an array of objects");
  }
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (isOfTexts) {
      record.texts(field).push_back(readText(value[i], place.element(i)));
    } else {
      readRecord(record.append(field), value[i], place.element(i));
    }
  }
}

void readField(const Record& record, const Field& field, const JsonValue& value,
               const Place& place) {
  if (field.kind() == FieldKind::Text) {
    record.text(field) = readText(value, place);
  } else if (field.kind() == FieldKind::Flag) {
    record.flag(field) = readFlag(value, place);
  } else if (!value.is_null()) {
    readList(record, field, value, place);
  }
}

void readRecord(const Record& record, const JsonValue& value, const Place& place) {
  if (!value.is_object()) place.refuse("expected an object");
  const RecordTable& table = record.table();
  for (const auto& [name, content] : value.get_ref<const JsonValue::object_t&>()) {
    const Field* field = table.find(name);
    const Place member = place.member(name);
    if (field == nullptr) {
      const std::string near(text::suggestion(name, fieldNames(table), "no field has that name"));
      member.refuse(fmt::format("unknown field, {}", near));
    }
    readField(record, *field, content, member);
  }
  for (const Field& field : table.fields) {
    const bool isMissing = !field.isList() && value.find(field.name) == value.end();
    if (isMissing) place.member(field.name).refuse("it is missing");
  }
}

void writeRecords(const ConstRecord& record, const Field& list, text::JsonWriter& json) {
  json.beginArray();
  for (std::size_t i = 0; i < record.size(list); ++i) writeRecord(record.at(list, i), json);
  json.endArray();
}

}  // namespace

void readDocument(const DocumentTable& table, const Record& document, const JsonValue& value) {
  const Place place(table.name());
  if (table.isList) {
    readList(document, table.list(), value, place);
  } else {
    readRecord(document, value, place);
  }
}

std::string toJson(const DocumentTable& table, const ConstRecord& document,
                   text::JsonWriter::Layout layout) {
  std::string text;
  text::JsonWriter json(text, layout);
  if (table.isList) {
    writeRecords(document, table.list(), json);
  } else {
    writeRecord(document, json);
  }
  return text;
}

void writeRecord(const ConstRecord& record, text::JsonWriter& json) {
  json.beginObject();
  for (const Field& field : record.table().fields) {
    json.key(field.name);
    writeField(record, field, json);
  }
  json.endObject();
}

void writeField(const ConstRecord& record, const Field& field, text::JsonWriter& json) {
  if (record.isUnset(field)) return json.null();
  switch (field.kind()) {
    case FieldKind::Text:
      return json.value(std::u16string_view(record.text(field)));
    case FieldKind::Flag:
      return json.value(std::u16string_view(addon::packaging::flagText(record.flag(field))));
    case FieldKind::Texts:
      json.beginArray();
      for (const std::u16string_view text : record.texts(field)) json.value(text);
      return json.endArray();
    case FieldKind::Records:
      return writeRecords(record, field, json);
  }
}

bool isFlat(const DocumentTable& table) {
  return std::all_of(table.record.fields.begin(), table.record.fields.end(),
                     [](const Field& field) { return field.kind() == FieldKind::Text; });
}

std::vector<std::string_view> fieldNames(const RecordTable& table) {
  std::vector<std::string_view> names;
  for (const Field& field : table.fields) names.emplace_back(field.name);
  return names;
}

}  // namespace tool::json
