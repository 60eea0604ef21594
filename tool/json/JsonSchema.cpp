// SPDX-License-Identifier: MIT
#include "tool/json/JsonSchema.h"

#include <fmt/format.h>

#include "addon/packaging/Documents.h"

namespace tool::json::schema {

using addon::packaging::DocumentTable;
using addon::packaging::Field;
using addon::packaging::FieldKind;
using addon::packaging::labelOf;
using addon::packaging::RecordTable;

namespace {

/// What XML can carry: no control characters but tab and line ends.
constexpr std::string_view kXmlText = R"(^[^\u0000-\u0008\u000B\u000C\u000E-\u001F\uFFFE\uFFFF]*$)";

JsonValue record(const RecordTable& table);

JsonValue value(const Field& field) {
  switch (field.kind()) {
    case FieldKind::Text:
      return matching(kXmlText);
    case FieldKind::Flag:
      return words({"true", "false"});
    case FieldKind::Texts:
      return orNull(list(matching(kXmlText)));
    case FieldKind::Records:
      break;
  }
  return orNull(list(record(field.table())));
}

JsonValue record(const RecordTable& table) {
  std::vector<Member> members;
  for (const Field& field : table.fields) {
    const std::string help = fmt::format(
        "{}{}", field.help,
        field.isFixed ? " An update does not write it: it must be the stored one." : "");
    members.push_back({field.name, described(value(field), help), !field.isList()});
  }
  return object(labelOf(table.noun), table.help, members);
}

}  // namespace

JsonValue whole(const JsonValue& schema) {
  JsonValue result{{"$schema", "https://json-schema.org/draft/2020-12/schema"}};
  result.update(schema);
  return result;
}

JsonValue described(JsonValue schema, std::string_view help) {
  schema["description"] = help;
  return schema;
}

JsonValue orNull(const JsonValue& schema) {
  return {{"oneOf", JsonValue::array({schema, {{"type", "null"}}})}};
}

JsonValue text() {
  return {{"type", "string"}};
}

JsonValue filledText() {
  return {{"type", "string"}, {"minLength", 1}};
}

JsonValue matching(std::string_view pattern) {
  return {{"type", "string"}, {"pattern", pattern}};
}

JsonValue constant(std::string_view value) {
  return {{"const", value}};
}

JsonValue words(const std::vector<std::string_view>& all) {
  return {{"enum", all}};
}

JsonValue flag() {
  return {{"type", "boolean"}};
}

JsonValue number() {
  return {{"type", "integer"}, {"minimum", 0}};
}

JsonValue list(const JsonValue& elements) {
  return {{"type", "array"}, {"items", elements}};
}

JsonValue time() {
  return matching("^[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}Z$");
}

JsonValue sha256() {
  return matching("^[0-9a-f]{64}$");
}

JsonValue digest() {
  return matching("^sha256:[0-9a-f]{64}$");
}

JsonValue object(std::string_view title, std::string_view help,
                 const std::vector<Member>& members) {
  JsonValue properties = JsonValue::object();
  JsonValue required = JsonValue::array();
  for (const Member& member : members) {
    properties[member.name] = member.schema;
    if (member.isRequired) required.push_back(member.name);
  }
  return {{"title", title},           {"description", help},  {"type", "object"},
          {"properties", properties}, {"required", required}, {"additionalProperties", false}};
}

JsonValue openObject(std::string_view title, std::string_view help,
                     const std::vector<Member>& members) {
  JsonValue schema = object(title, help, members);
  schema["additionalProperties"] = true;
  return schema;
}

Member shape(std::string_view name) {
  return {"schema", described(constant(name), "The name and version of this shape.")};
}

JsonValue map(std::string_view title, std::string_view help, std::string_view pattern,
              const JsonValue& element) {
  return {{"title", title},
          {"description", help},
          {"type", "object"},
          {"patternProperties", {{std::string(pattern), element}}},
          {"additionalProperties", false}};
}

JsonValue document(const DocumentTable& table) {
  JsonValue schema{
      {"title", labelOf(table.name())},
      {"description", fmt::format("{} As 'get PACKAGE {}' prints it and 'set' takes it.",
                                  table.record.help, table.name())}};
  const JsonValue body = table.isList ? list(record(table.records())) : record(table.record);
  for (const auto& [key, member] : body.items()) {
    if (!schema.contains(key)) schema[key] = member;
  }
  return schema;
}

std::vector<std::string_view> documentNames() {
  std::vector<std::string_view> names;
  for (const DocumentTable* table : addon::packaging::documents()) names.push_back(table->name());
  return names;
}

}  // namespace tool::json::schema
