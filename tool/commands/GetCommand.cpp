// SPDX-License-Identifier: MIT
#include <array>

#include "tool/line/Arguments.h"
#include "tool/json/DocumentJson.h"
#include "tool/json/Documents.h"
#include "tool/report/Output.h"
#include "tool/commands/detail/PackageAccess.h"

namespace tool {

namespace {

constexpr std::array kOperands{OperandSpec{.name = "PACKAGE", .help = "the package"},
                               kDocumentOperand};

constexpr std::array kOptions{OptionSpec{.longName = "output",
                                         .shortName = 'o',
                                         .valueName = "FILE",
                                         .help = "write to FILE (default: standard output)"}};

ExitCode run(const Invocation& invocation) {
  const std::string& path = invocation.operands()[0];
  const auto& table = findDocument(invocation.operands()[1]);

  const std::unique_ptr<AddonPackage> package = openForReading(path);
  const addon::packaging::OwnedDocument document = load(table, *package);

  const std::string text = toJson(table, document.record, JsonWriter::Layout::Indented) + "\n";
  writeOutputFile(invocation.valueOr("output", "-"), text, path);
  return ExitCode::Done;
}

constexpr std::array kExamples{
    ExampleSpec{"kraddon get kit.kraddon properties", "prints the properties"},
    ExampleSpec{"kraddon get kit.kraddon apps -o apps.json",
                "saves the list of apps, to be edited and set"}};

}  // namespace

constexpr CommandSpec kGetCommand{
    .name = "get",
    .summary = "prints one document as JSON",
    .description =
        "The JSON is the host struct of the document: an array for apps, examples and\n"
        "revisions, an object for the others; flags are the texts \"true\" and \"false\",\n"
        "unset fields null. A document that the package does not hold is printed with\n"
        "empty values, as the host reads it.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool
