// SPDX-License-Identifier: MIT
#include <array>

#include "addon/packaging/Documents.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageOpening.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/json/DocumentJson.h"
#include "tool/json/Documents.h"
#include "tool/line/Arguments.h"
#include "tool/report/Output.h"

namespace tool::commands {

using addon::packaging::AddonPackage;

namespace {

constexpr std::array kOperands{detail::kPackageOperand, detail::kDocumentOperand};

constexpr std::array kOptions{line::OptionSpec{.longName = "output",
                                               .shortName = 'o',
                                               .valueName = "FILE",
                                               .help = "write to FILE (default: standard output)"}};

process::ExitCode run(const line::Invocation& invocation) {
  const std::string& path = invocation.operands()[0];
  const auto& table = json::findDocument(invocation.operands()[1]);

  const std::unique_ptr<AddonPackage> package = detail::openForReading(path);
  const addon::packaging::OwnedDocument document = addon::packaging::loadDocument(*package, table);

  const std::string text =
      json::toJson(table, document.record, text::JsonWriter::Layout::Indented) + "\n";
  report::writeOutputFile(invocation.valueOr("output", "-"), text, path);
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon get kit.kraddon properties", "prints the properties"},
    line::ExampleSpec{"kraddon get kit.kraddon apps -o apps.json",
                      "saves the list of apps for editing"}};

}  // namespace

constexpr line::CommandSpec kGetCommand{
    .name = "get",
    .summary = "prints one document as JSON",
    .description =
        "The JSON is the host struct of the document: an array for apps, examples and revisions, "
        "an object for the others. Flags are the strings \"true\" and \"false\"; fields that are "
        "not "
        "set are null. A document that is not in the package is printed with empty values, as the "
        "host reads it.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
