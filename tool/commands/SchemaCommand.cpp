// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <string>
#include <vector>

#include "text/Suggest.h"
#include "tool/commands/CommandTable.h"
#include "tool/json/JsonSchema.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/report/Output.h"
#include "tool/report/Schemas.h"

namespace tool::commands {

namespace {

std::vector<std::string> schemaNames() {
  std::vector<std::string> names;
  for (const report::Schema& schema : report::schemas()) names.emplace_back(schema.name);
  return names;
}

constexpr std::array kOperands{line::OperandSpec{.name = "NAME", .choices = schemaNames}};

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon schema manifest > kraddon.schema.json",
                      "for editors that complete and check kraddon.toml"},
    line::ExampleSpec{"kraddon schema apps",
                      "describes the files that 'kraddon set PACKAGE apps' accepts"}};

constexpr const char* kDescription =
    "Prints the schema of the manifest or a policy (as JSON), of what a command prints with "
    "--json, of a file of a site (root, index, shard, record), or of a document as 'get' prints "
    "and "
    "'set' reads it. The dialect is JSON Schema 2020-12.";

text::JsonValue findSchema(std::string_view name) {
  const std::vector<report::Schema> schemas = report::schemas();
  std::vector<std::string_view> names;
  for (const report::Schema& schema : schemas) {
    if (schema.name == name) return json::schema::whole(schema.make());
    names.emplace_back(schema.name);
  }
  const std::string all = fmt::format("the schemas are {}", fmt::join(names, ", "));
  throw process::UsageError(
      process::sentence("unknown schema", name, text::suggestion(name, names, all)));
}

process::ExitCode run(const line::Invocation& invocation) {
  const text::JsonValue schema = findSchema(invocation.operands()[0]);

  report::Output output;
  output.write(schema.dump(2) + "\n");
  output.flush();
  return process::ExitCode::Done;
}

}  // namespace

constexpr line::CommandSpec kSchemaCommand{.name = "schema",
                                           .summary = "prints a JSON Schema",
                                           .description = kDescription,
                                           .operands = kOperands,
                                           .run = run,
                                           .examples = kExamples};

}  // namespace tool::commands
