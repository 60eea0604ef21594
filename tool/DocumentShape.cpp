// SPDX-License-Identifier: MIT
#include "tool/DocumentShape.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "addon/project/PlainText.h"
#include "opc/Text.h"
#include "text/Suggest.h"

namespace tool {

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

  // A shape is a few levels deep, and so are the places in it.
  std::string text() const {
    if (parent_ == nullptr) return std::string(name_);
    if (name_.data() == nullptr) return fmt::format("{}[{}]", parent_->text(), index_);
    return fmt::format("{}.{}", parent_->text(), name_);
  }

  const Place* parent_ = nullptr;
  std::string_view name_;
  std::size_t index_ = 0;
};

std::vector<std::string_view> namesOf(const RecordShape& shape) {
  std::vector<std::string_view> names;
  for (const FieldShape& field : shape.fields) names.push_back(field.name);
  return names;
}

const FieldShape* findField(const RecordShape& shape, std::string_view name) {
  const auto found = std::find_if(shape.fields.begin(), shape.fields.end(),
                                  [&](const FieldShape& field) { return field.name == name; });
  return found == shape.fields.end() ? nullptr : &*found;
}

const JsonValue* findMember(const JsonValue& object, std::string_view name) {
  for (const auto& [key, value] : object.get_ref<const JsonValue::object_t&>()) {
    if (key == name) return &value;
  }
  return nullptr;
}

void checkText(const JsonValue& value, const Place& place) {
  if (!value.is_string()) place.refuse("expected a text");
  const std::string fault = addon::project::xmlTextFault(value.get_ref<const std::string&>());
  if (!fault.empty()) place.refuse(fault);
}

void checkFlag(const JsonValue& value, const Place& place) {
  if (value != "true" && value != "false") {
    place.refuse("expected the text \"true\" or \"false\"");
  }
}

void checkTexts(const JsonValue& value, const Place& place) {
  if (!value.is_array()) place.refuse("expected an array of texts");
  for (std::size_t i = 0; i < value.size(); ++i) checkText(value[i], place.element(i));
}

void checkRecord(const RecordShape& shape, const JsonValue& value, const Place& place);

void checkRecords(const RecordShape& shape, const JsonValue& value, const Place& place) {
  if (!value.is_array()) place.refuse("expected an array of objects");
  for (std::size_t i = 0; i < value.size(); ++i) checkRecord(shape, value[i], place.element(i));
}

void checkField(const FieldShape& field, const JsonValue& value, const Place& place) {
  if (!field.isRequired && value.is_null()) return;
  switch (field.kind) {
    case FieldKind::Text:
      return checkText(value, place);
    case FieldKind::Flag:
      return checkFlag(value, place);
    case FieldKind::Texts:
      return checkTexts(value, place);
    case FieldKind::Records:
      return checkRecords(*field.record, value, place);
  }
}

void checkRecord(const RecordShape& shape, const JsonValue& value, const Place& place) {
  if (!value.is_object()) place.refuse("expected an object");
  for (const auto& [name, content] : value.get_ref<const JsonValue::object_t&>()) {
    const FieldShape* field = findField(shape, name);
    const Place member = place.member(name);
    if (field == nullptr) {
      const std::string near(text::suggestion(name, namesOf(shape), "there is none of that name"));
      member.refuse(fmt::format("unknown field, {}", near));
    }
    checkField(*field, content, member);
  }
  for (const FieldShape& field : shape.fields) {
    const bool isMissing = field.isRequired && findMember(value, field.name) == nullptr;
    if (isMissing) place.member(field.name).refuse("it is missing");
  }
}

HostArrayPointer makeStruct(const RecordShape& shape, std::size_t count) {
  std::vector<const char*> names;
  for (const FieldShape& field : shape.fields) names.push_back(field.name.data());
  const std::array<std::size_t, 2> sizes{1, count};
  return HostArrayPointer(
      kxCreateStructArray(sizes.size(), sizes.data(), names.size(), names.data()));
}

HostArrayPointer toText(const JsonValue& value) {
  return toHostText(opc::fromUtf8(value.get_ref<const std::string&>()));
}

HostArrayPointer toTextCell(const JsonValue& list) {
  const std::array<std::size_t, 2> sizes{1, list.size()};
  HostArrayPointer cell(kxCreateCellArray(sizes.size(), sizes.data()));
  for (std::size_t i = 0; i < list.size(); ++i) {
    kxSetCell(cell.get(), i, toText(list[i]).release());
  }
  return cell;
}

void fillRecord(const RecordShape& shape, const JsonValue& object, kxArray* array,
                std::size_t index);

HostArrayPointer toRecords(const RecordShape& shape, const JsonValue& list) {
  HostArrayPointer array = makeStruct(shape, list.size());
  for (std::size_t i = 0; i < list.size(); ++i) fillRecord(shape, list[i], array.get(), i);
  return array;
}

HostArrayPointer toField(const FieldShape& field, const JsonValue& value) {
  if (field.kind == FieldKind::Texts) return toTextCell(value);
  if (field.kind == FieldKind::Records) return toRecords(*field.record, value);
  return toText(value);
}

void fillRecord(const RecordShape& shape, const JsonValue& object, kxArray* array,
                std::size_t index) {
  for (const FieldShape& field : shape.fields) {
    const JsonValue* value = findMember(object, field.name);
    if (value == nullptr || value->is_null()) continue;
    kxSetField(array, index, field.name.data(), toField(field, *value).release());
  }
}

void writeRecord(const RecordShape& shape, const kxArray* array, std::size_t index,
                 JsonWriter& json);

void writeRecords(const RecordShape& shape, const kxArray* array, JsonWriter& json) {
  json.beginArray();
  const std::size_t count = kxGetNumberOfElements(array);
  for (std::size_t i = 0; i < count; ++i) writeRecord(shape, array, i, json);
  json.endArray();
}

void writeRecord(const RecordShape& shape, const kxArray* array, std::size_t index,
                 JsonWriter& json) {
  json.beginObject();
  for (const FieldShape& field : shape.fields) {
    const kxArray* value = kxGetField(array, index, field.name.data());
    json.key(field.name);
    if (value == nullptr) {
      json.null();
    } else if (field.kind == FieldKind::Records) {
      writeRecords(*field.record, value, json);
    } else {
      writeHostArray(value, json);
    }
  }
  json.endObject();
}

}  // namespace

bool DocumentShape::isFlat() const {
  return !isList && std::all_of(record.fields.begin(), record.fields.end(),
                                [](const auto& field) { return field.kind == FieldKind::Text; });
}

std::vector<std::string_view> DocumentShape::fieldNames() const {
  return namesOf(record);
}

void checkDocument(const DocumentShape& shape, const JsonValue& value) {
  const Place place(shape.name);
  if (shape.isList) {
    checkRecords(shape.record, value, place);
  } else {
    checkRecord(shape.record, value, place);
  }
}

HostArrayPointer toHostDocument(const DocumentShape& shape, const JsonValue& value) {
  if (shape.isList) return toRecords(shape.record, value);
  HostArrayPointer array = makeStruct(shape.record, 1);
  fillRecord(shape.record, value, array.get(), 0);
  return array;
}

std::string toJson(const DocumentShape& shape, const kxArray* document, JsonWriter::Layout layout) {
  std::string text;
  JsonWriter json(text, layout);
  if (shape.isList) {
    writeRecords(shape.record, document, json);
  } else {
    writeRecord(shape.record, document, 0, json);
  }
  return text;
}

}  // namespace tool
