// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <concepts>
#include <nlohmann/json.hpp>

#include "addon/checks/Catalogue.h"
#include "addon/project/ManifestKeys.h"
#include "addon/project/ManifestText.h"
#include "tool/json/JsonSchema.h"
#include "tool/report/Schemas.h"

namespace tool::report {

namespace schema = json::schema;

using addon::packaging::Field;
using addon::packaging::FieldKind;
using addon::packaging::labelOf;
using addon::packaging::Reference;
using namespace addon::project;

namespace {

/// No control characters but tab and line ends.
constexpr std::string_view kText =
    R"(^[^\u0000-\u0008\u000B\u000C\u000E-\u001F\u007F-\u009F\uFFFE\uFFFF]*$)";

JsonValue textOf(bool isFilled) {
  JsonValue schema = schema::matching(kText);
  if (isFilled) schema["minLength"] = 1;
  return schema;
}

/// One of the findings, perhaps with a pattern of paths.
std::string findingPattern() {
  std::string ids;
  for (const auto& info : addon::checks::catalogue()) {
    ids += fmt::format("{}{}", ids.empty() ? "" : "|", opc::checks::idOf(info.id.number).substr(2));
  }
  return "^KR(" + ids + R"()(:[\s\S]+)?$)";
}

/// What a table may hold, as a visitor of its keys.
class TableSchema {
 public:
  explicit TableSchema(std::string path) : path_(std::move(path)) {}

  template <typename Value>
  void required(std::string_view key, Value& member, std::string_view help) {
    add(key, schemaOf(key, member, true), help, true);
  }
  template <typename Value>
  void optional(std::string_view key, Value& member, std::string_view help) {
    add(key, schemaOf(key, member, false), help, false);
  }

  JsonValue take(std::string_view title, std::string_view help) {
    JsonValue schema = schema::object(title, help, members_);
    // Of a text and the file that holds it there may be one.
    if (!alternatives_.empty()) schema["not"] = {{"required", alternatives_}};
    return schema;
  }

 private:
  void add(std::string_view key, JsonValue schema, std::string_view help, bool isRequired) {
    schema["description"] = fmt::format("{}{}", help, schema.value("description", ""));
    members_.push_back({std::string(key), std::move(schema), isRequired});
  }

  std::string pathOf(std::string_view key) const {
    return path_.empty() ? std::string(key) : fmt::format("{}.{}", path_, key);
  }

  JsonValue schemaOf(std::string_view key, Text& member, bool isRequired) {
    JsonValue schema = textOf(isRequired);
    if (!member.value.empty()) schema["default"] = member.value;
    addForm(pathOf(key), schema);
    return schema;
  }
  JsonValue schemaOf(std::string_view key, Path& member, bool /*isRequired*/) {
    return schemaOf(key, static_cast<Text&>(member), true);
  }
  JsonValue schemaOf(std::string_view key, Texts& member, bool /*isRequired*/) {
    JsonValue texts = textOf(false);
    addForm(pathOf(key) + "[]", texts);
    JsonValue schema = schema::list(texts);
    schema["default"] = JsonValue::array();
    for (const Text& text : member.value) schema["default"].push_back(text.value);
    return schema;
  }
  static JsonValue schemaOf(std::string_view /*key*/, Flag& member, bool /*isRequired*/) {
    return {{"type", "boolean"}, {"default", member.value}};
  }
  static JsonValue schemaOf(std::string_view /*key*/, Level& member, bool /*isRequired*/) {
    return {{"type", "integer"}, {"minimum", 0}, {"maximum", 9}, {"default", member.value}};
  }
  template <typename Record>
  JsonValue schemaOf(std::string_view key, std::vector<Record>& /*list*/, bool /*isRequired*/) {
    Record record;
    TableSchema inner(pathOf(key) + "[]");
    visitKeys(record, inner);
    return schema::list(inner.take(labelOf(key), "A table of the list."));
  }
  template <std::derived_from<Section> Table>
  JsonValue schemaOf(std::string_view key, Table& table, bool /*isRequired*/) {
    TableSchema inner(pathOf(key));
    visitKeys(table, inner);
    return inner.take(labelOf(key), "");
  }

  JsonValue schemaOf(std::string_view key, RecordMember& member, bool /*isRequired*/) {
    TableSchema inner(pathOf(key));
    visitKeys(member, inner);
    return inner.take(labelOf(key), "");
  }
  JsonValue schemaOf(std::string_view key, FieldMember& member, bool isRequired) {
    const Field& field = member.field;
    switch (field.kind()) {
      case FieldKind::Text:
        return textOfField(field, isRequired);
      case FieldKind::Flag:
        return {{"type", "boolean"}, {"default", std::string_view(field.initial) == "true"}};
      case FieldKind::Texts:
        return schema::list(textOf(field.reference != Reference::None));
      case FieldKind::Records:
        break;
    }
    TableSchema inner(pathOf(key) + "[]");
    RecordMember record{member.record.append(field)};
    visitKeys(record, inner);
    return schema::list(inner.take(labelOf(field.table().noun), field.table().help));
  }
  JsonValue schemaOf(std::string_view key, FileMember& member, bool /*isRequired*/) {
    alternatives_ = {member.field.key, key};
    return textOf(true);
  }

  static JsonValue textOfField(const Field& field, bool isRequired) {
    JsonValue schema = *field.only == '\0' ? textOf(isRequired) : schema::constant(field.only);
    if (*field.initial != '\0') schema["default"] = field.initial;
    if (*field.otherwise != '\0') schema["$comment"] = field.otherwise;
    if (field.isDate) schema["description"] = " A text, or a TOML date, which becomes YYYY-MM-DD.";
    return schema;
  }

  /// What is said of a text beyond its characters.
  static void addForm(const std::string& path, JsonValue& schema) {
    if (path == "files.add[].to") {
      // Names that are neither '.' nor '..', with '/' between them and nowhere else.
      schema["not"] = {{"pattern", R"((^|/)\.{0,2}(/|$))"}};
    } else if (path == "build.output") {
      schema["minLength"] = 1;
      schema["allOf"] = {{{"pattern", R"(^([^{]|\{name\}|\{version\})*$)"}},
                         {{"not", {{"pattern", "/$"}}}}};
    } else if (path == "verify.ignore[]" || path == "verify.error[]" || path == "verify.warn[]") {
      schema["allOf"] = JsonValue::array({{{"pattern", findingPattern()}}});
    }
  }

  std::string path_;
  std::vector<schema::Member> members_;
  std::vector<std::string_view> alternatives_;
};

}  // namespace

JsonValue manifestSchema() {
  Manifest manifest;
  TableSchema top("");
  visitKeys(manifest, top);
  JsonValue schema{{"$id", kManifestSchemaId}};
  schema.update(
      top.take("Manifest of a Korvan add-on",
               "The file 'kraddon.toml' at the top of a project, of which 'kraddon build' makes a "
               "package."));
  return schema;
}

JsonValue policySchema() {
  PolicySection policy;
  TableSchema top("");
  visitKeys(policy, top);
  return top.take("Policy for Korvan add-ons",
                  "The file of 'kraddon verify --policy', which says what counts as an error.");
}

}  // namespace tool::report
