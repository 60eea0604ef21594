// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <string>
#include <vector>

#include "text/Suggest.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/report/Output.h"
#include "tool/json/Schemas.h"

namespace tool {

namespace {

std::vector<std::string> schemaNames() {
  std::vector<std::string> names;
  for (const Schema& schema : schemas()) names.emplace_back(schema.name);
  return names;
}

constexpr std::array kOperands{OperandSpec{
    .name = "NAME",
    .help = "manifest, info, list, verify, diff, build, or a document: properties, license, "
            "configuration, apps, examples, revisions or requirements",
    .choices = schemaNames}};

constexpr std::array kExamples{
    ExampleSpec{"kraddon schema manifest > kraddon.schema.json",
                "for an editor that completes and checks kraddon.toml"},
    ExampleSpec{"kraddon schema apps", "what 'kraddon set PACKAGE apps FILE.json' takes"}};

constexpr const char* kDescription =
    "Of the manifest as JSON would say it, of what a command prints with --json, or of a\n"
    "document as 'get' prints and 'set' takes it. The dialect is JSON Schema 2020-12.\n";

const Schema& findSchema(std::string_view name) {
  std::vector<std::string_view> names;
  for (const Schema& schema : schemas()) {
    if (schema.name == name) return schema;
    names.push_back(schema.name);
  }
  const std::string all = fmt::format("the schemas are {}", fmt::join(names, ", "));
  throw UsageError(sentence("unknown schema", name, text::suggestion(name, names, all)));
}

ExitCode run(const Invocation& invocation) {
  const Schema& schema = findSchema(invocation.operands()[0]);

  Output output;
  output.write(schema.text);
  output.flush();
  return ExitCode::Done;
}

}  // namespace

constexpr CommandSpec kSchemaCommand{
    .name = "schema",
    .summary = "prints the JSON Schema of something that is read or printed",
    .description = kDescription,
    .operands = kOperands,
    .run = run,
    .examples = kExamples};

}  // namespace tool
