// SPDX-License-Identifier: MIT
#include "tool/report/Topics.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "addon/checks/Catalogue.h"
#include "opc/checks/Finding.h"
#include "tool/report/Schemas.h"

namespace tool::report {

using addon::checks::FindingInfo;
using line::Topic;
using line::TopicEntry;

namespace {

constexpr const char* kManifestText =
    "The file kraddon.toml at the top of a project describes the package that 'kraddon build' "
    "makes of it. It is TOML 1.0 in UTF-8. 'kraddon init' writes one to start from, and 'kraddon "
    "schema manifest' prints its JSON Schema for editors.\n\n"
    "Only 'name' and 'version' in [package] are required. Unknown keys and values of a wrong type "
    "are errors. Paths on the disk begin at the folder of the manifest, paths in the package at "
    "its top, without a '/' in front.";

constexpr const char* kExample =
    "[package]\nname = \"Wave Tools\"\nversion = \"1.2\"\n[license]\ntype = \"MIT\"\n"
    "file = \"LICENSE\"\n[files]\nexclude = [\"tests/\", \"*.log\"]";

/// What a key means if it is not given.
std::string withoutIt(const JsonValue& schema, bool isRequired) {
  if (isRequired) return "Required.";
  if (schema.contains("default")) return fmt::format("Default: {}.", schema["default"].dump());
  if (schema.contains("$comment")) {
    return fmt::format("Default: {}.", schema["$comment"].get<std::string>());
  }
  return {};
}

/// Whether a schema lists a key as required.
bool isRequired(const JsonValue& schema, const std::string& key) {
  const JsonValue required = schema.value("required", JsonValue::array());
  return std::find(required.begin(), required.end(), key) != required.end();
}

/// Each table is a section: its keys, and after them the tables in it.
void addTable(const std::string& title, const std::string& path, const JsonValue& schema,
              const std::string& help, Topic& topic) {
  const std::size_t section = topic.sections.size();
  if (!path.empty()) topic.sections.push_back({title, help});
  for (const auto& [key, value] : schema["properties"].items()) {
    const std::string inner = path.empty() ? key : fmt::format("{}.{}", path, key);
    const std::string about = value.value("description", "");
    if (value.contains("properties")) {
      addTable(fmt::format("[{}]", inner), inner, value, about, topic);
    } else if (value.value("items", JsonValue::object()).contains("properties")) {
      addTable(fmt::format("[[{}]]", inner), inner, value["items"],
               fmt::format("{} A table for each.", about), topic);
    } else {
      const std::string end = withoutIt(value, isRequired(schema, key));
      topic.sections[section].entries.emplace_back(
          key, end.empty() ? about : fmt::format("{} {}", about, end));
    }
  }
}

std::vector<TopicEntry> findingsOf(std::string_view group) {
  std::vector<TopicEntry> entries;
  for (const FindingInfo& info : addon::checks::catalogue()) {
    if (addon::checks::groupOf(info.id) != group) continue;
    const bool isError = info.id.severity == opc::checks::Severity::Error;
    entries.emplace_back(opc::checks::idOf(info.id.number),
                         fmt::format("{}: {}", isError ? "error" : "warning", info.title));
  }
  return entries;
}

}  // namespace

Topic manifestTopic() {
  Topic topic{"manifest", "the manifest of a project", {{"", kManifestText}}};
  addTable("", "", manifestSchema(), "", topic);
  topic.sections.push_back({"Example", "", {}, kExample});
  return topic;
}

Topic patternsTopic() {
  return {
      "patterns",
      "patterns of paths",
      {{"",
        "Patterns work as in gitignore. They are matched against the path in the package, and "
        "case matters. The last pattern that matches decides. A pattern that matches a folder "
        "also matches everything below it."},
       {"Forms",
        "",
        {{"*.log", "every name that ends in .log, in any folder"},
         {"a?.m", "'?' is one character, but not '/'"},
         {"[a-z].m", "one character in a range"},
         {"tests/", "every folder with that name, and everything below it"},
         {"/tests", "only at the top, because of the leading '/'"},
         {"docs/*.pdf", "only from the top, because of the '/' inside; '*' stops at '/'"},
         {"docs/**/*.pdf", "at any depth; '**' does not stop at '/'"},
         {"!keep.log", "cancels earlier patterns for what it matches"},
         {"\\!odd", "'\\' makes the next character literal"}}},
       {"Where they are used",
        "'kraddon build' leaves out what the default excludes, the lines of .kraddonignore, "
        "'exclude' of the manifest and --exclude match, in that order; 'include' of the manifest "
        "chooses what goes in. 'create' and 'add' take --exclude. With --glob, the paths of "
        "'list', 'extract', 'remove' and 'diff' are patterns; one that matches nothing is an "
        "error, unless it begins with '!'. After the id of a finding, as in KR508:docs/**, a "
        "pattern limits a rule to matching paths, in --ignore, --error, --warn and [verify]. A "
        ".gitignore file is not read."}}};
}

Topic findingsTopic() {
  return {"findings",
          "what 'verify' and 'build' report",
          {{"",
            "A finding is an error or a warning. 'kraddon verify --explain ID' explains one. "
            "Findings can be ignored, or made errors or warnings, with --ignore, --error and "
            "--warn, or in [verify] of the manifest: KR506 everywhere, KR508:docs/** where a "
            "pattern matches. Ids never change their meaning."},
           {"Container", "", findingsOf("container")},
           {"Packaging conventions", "", findingsOf("opc")},
           {"Documents", "", findingsOf("document")},
           {"References", "", findingsOf("reference")},
           {"Style", "", findingsOf("style")},
           {"Signatures", "", findingsOf("signature")}}};
}

std::vector<Topic> topics() {
  return {manifestTopic(), patternsTopic(), findingsTopic()};
}

}  // namespace tool::report
