// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <vector>

#include "hostarray/matrix.h"
#include "hostarray/standin/testing.h"
#include "opc/Text.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/commands/detail/Gateways.h"
#include "tool/json/HostJson.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Output.h"
#include "tool/process/PackageLock.h"
#include "tool/process/ReadFile.h"
#include "tool/TreeWalk.h"

namespace tool {

namespace {

constexpr std::array kOperands{
    OperandSpec{.name = "GATEWAY",
                .help = "the name of a gateway",
                .choices = gatewayNames,
                .hint = "'kraddon help call' lists them"},
    OperandSpec{.name = "ARG",
                .help = "a JSON value, @FILE with one in it, or plain text",
                .isRequired = false,
                .isRepeatable = true}};

constexpr std::array kOptions{
    OptionSpec{.longName = "nlhs",
               .valueName = "N",
               .help = "how many outputs to ask for (default: what the gateway allows)"},
    OptionSpec{.longName = "library",
               .valueName = "FILE",
               .help = "the shared library (default: the one beside the program)"}};

constexpr std::string_view kDescription =
    "The gateways are addonCreatePackage, addonSetProperties, addonGetProperties,\n"
    "addonAddFiles, addonAddFolders, addonExtractAllFiles, addonGetFileList,\n"
    "addonSetLicense, addonGetLicense, addonSetRevisionHistory,\n"
    "addonGetRevisionHistory, addonSetConfiguration, addonGetConfiguration,\n"
    "addonSetScreenshot, addonSetAppInstallList, addonGetAppInstallList,\n"
    "addonSetExamples, addonGetExamples, addonSetSystemRequirements and\n"
    "addonGetSystemRequirements.\n"
    "\n"
    "A text becomes a char array, a number a double, true and false that word, an\n"
    "object a struct (null leaves a field unset), an array of objects a struct\n"
    "array, any other array a cell array. {\"$class\": \"struct\"|\"cell\"|\"char\"|\"double\",\n"
    "\"size\": [..], \"fields\": [..], \"elements\": [..]} says everything outright.\n"
    "The output is printed the same way, and nothing when the gateway set none.";

constexpr std::size_t kLargestFile = std::size_t{256} << 20;
constexpr std::int64_t kMostOutputs = 64;

JsonValue readArgument(const std::string& word) {
  if (word.starts_with('@')) return parseJson(readInput(word.substr(1), kLargestFile));
  std::optional<JsonValue> value = parseJsonIfAny(word);
  if (value) return std::move(*value);
  if (!opc::isUtf8(word)) throw JsonError("it is not UTF-8");
  return word;
}

HostArrayPointer toArgument(std::size_t number, const std::string& word) {
  try {
    return toHostArray(readArgument(word));
  } catch (const JsonError& error) {
    const std::string which = word.starts_with('@') ? word : std::to_string(number);
    throw Failure(sentence("bad argument", which, error.what()));
  }
}

HostArrayPointer callGateway(GatewayFunction gateway, int outputs,
                             const std::vector<HostArrayPointer>& arguments) {
  std::vector<const kxArray*> inputs;
  inputs.reserve(arguments.size());
  for (const HostArrayPointer& argument : arguments) inputs.push_back(argument.get());
  std::vector<kxArray*> slots(static_cast<std::size_t>(std::max(outputs, 1)), nullptr);
  hostarray::standin::CallScope scope;
  gateway(outputs, slots.data(), static_cast<int>(inputs.size()), inputs.data());
  return HostArrayPointer(scope.keep(slots[0]));
}

/// The package that a gateway works on, "" when there is no such argument.
std::string pathOf(const std::vector<HostArrayPointer>& arguments) {
  if (arguments.empty() || !kxIsChar(arguments[0].get())) return {};
  const kxArray* path = arguments[0].get();
  return opc::toUtf8ForDisplay({kxGetConstChars(path), kxGetNumberOfElements(path)});
}

/// Whether the gateway writes to the package itself.
bool changesPackage(std::size_t slot) {
  const Gateway& gateway = gatewayAt(slot);
  return gateway.outputs == 0 && gateway.name != "addonExtractAllFiles";
}

void printArray(const kxArray* array) {
  std::string text;
  JsonWriter writer(text, JsonWriter::Layout::Compact);
  try {
    writeHostArray(array, writer);
  } catch (const JsonError& error) {
    throw Failure(sentence("cannot print", "the output", error.what()));
  }
  Output output;
  output.write(text);
  output.write("\n");
  output.flush();
}

ExitCode call(const Invocation& invocation) {
  const auto& words = invocation.operands();
  const std::size_t slot = gatewaySlot(words[0]);
  if (invocation.value("library") == "") {
    throw UsageError(sentence("bad value of --library", "", "the path is empty"));
  }
  const int outputs = static_cast<int>(
      invocation.number("nlhs", 0, kMostOutputs).value_or(gatewayAt(slot).outputs));
  std::vector<HostArrayPointer> arguments;
  for (std::size_t i = 1; i < words.size(); ++i) arguments.push_back(toArgument(i, words[i]));
  const HostFunctionTable& table = loadFunctionTable(invocation.valueOr("library", ""));

  // A gateway knows nothing of signals, and one that killed it would leave half a file behind.
  Interrupt::deferAndStopWriting();
  const std::string package = pathOf(arguments);
  std::optional<PackageLock> lock;
  if (changesPackage(slot)) lock.emplace(package);
  const auto before = identityOf(package);
  const HostArrayPointer result = callGateway(table.entryPoints[slot], outputs, arguments);
  const bool isReplaced = identityOf(package) != before;
  if (!isReplaced) Interrupt::check();
  if (result) printArray(result.get());
  return ExitCode::Done;
}

ExitCode run(const Invocation& invocation) {
  try {
    return call(invocation);
  } catch (const matrix::HostError& error) {
    throw Failure(fmt::format("{}: {}", error.identifier(), error.what()));
  }
}

constexpr std::array kExamples{
    ExampleSpec{"kraddon call addonGetFileList kit.kraddon",
                "prints the file list as the host gets it"},
    ExampleSpec{"kraddon call addonSetLicense kit.kraddon @license.json",
                "stores the struct in license.json"},
    ExampleSpec{"kraddon call addonAddFiles kit.kraddon '[\"wave.m\"]' '[\"lib/wave.m\"]'",
                "adds a file under a path"}};

}  // namespace

constexpr CommandSpec kCallCommand{
    .name = "call",
    .summary = "calls one gateway of the shared library, as the host does",
    .description = kDescription,
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool
