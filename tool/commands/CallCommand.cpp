// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <vector>

#include "addon/build/TreeWalk.h"
#include "hostarray/matrix.h"
#include "hostarray/standin/CallScope.h"
#include "opc/Text.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/Gateways.h"
#include "tool/commands/detail/Locks.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/json/HostJson.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/process/ReadFile.h"
#include "tool/report/Output.h"

namespace tool::commands {

namespace {

constexpr std::array kOperands{
    line::OperandSpec{.name = "GATEWAY",
                      .help = "the name of a gateway",
                      .choices = detail::gatewayNames,
                      .hint = "'kraddon help call' lists them"},
    line::OperandSpec{.name = "ARG",
                      .help = "a JSON value, @FILE that contains one, or plain text",
                      .isRequired = false,
                      .isRepeatable = true}};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "nlhs",
                     .valueName = "N",
                     .help = "the number of outputs to request (default: what the gateway allows)"},
    line::OptionSpec{.longName = "library",
                     .valueName = "FILE",
                     .help = "the shared library (default: the program's own)"},
    detail::kLockTimeoutOption};

constexpr std::string_view kDescription =
    "The gateways are addonCreatePackage, addonSetProperties, addonGetProperties, addonAddFiles, "
    "addonAddFolders, addonExtractAllFiles, addonGetFileList, addonSetLicense, addonGetLicense, "
    "addonSetRevisionHistory, addonGetRevisionHistory, addonSetConfiguration, "
    "addonGetConfiguration, addonSetScreenshot, addonSetAppInstallList, addonGetAppInstallList, "
    "addonSetExamples, addonGetExamples, addonSetSystemRequirements and "
    "addonGetSystemRequirements.\n"
    "\n"
    "Each ARG becomes a host array: a string a char array, a number a double, true and false those "
    "words, an object a struct (null leaves a field unset), an array of objects a struct array, "
    "any other array a cell array. {\"$class\": \"struct\"|\"cell\"|\"char\"|\"double\", "
    "\"size\": [..], \"fields\": [..], \"elements\": [..]} describes any array exactly. The output "
    "is printed in the same form; nothing is printed if the gateway sets none.";

constexpr std::size_t kMaxFileSize = std::size_t{256} << 20;
constexpr std::int64_t kMaxOutputs = 64;

text::JsonValue readArgument(const std::string& word) {
  if (word.starts_with('@'))
    return text::parseJson(process::readInput(word.substr(1), kMaxFileSize));
  std::optional<text::JsonValue> value = text::parseJsonIfAny(word);
  if (value) return std::move(*value);
  if (!opc::isUtf8(word)) throw text::JsonError("it is not UTF-8");
  return word;
}

json::HostArrayPointer toArgument(std::size_t number, const std::string& word) {
  try {
    return json::toHostArray(readArgument(word));
  } catch (const text::JsonError& error) {
    const std::string which = word.starts_with('@') ? word : std::to_string(number);
    throw process::Failure(process::sentence("bad argument", which, error.what()));
  }
}

json::HostArrayPointer callGateway(GatewayFunction gateway, int outputs,
                                   const std::vector<json::HostArrayPointer>& arguments) {
  std::vector<const kxArray*> inputs;
  inputs.reserve(arguments.size());
  for (const json::HostArrayPointer& argument : arguments) inputs.push_back(argument.get());
  std::vector<kxArray*> slots(static_cast<std::size_t>(std::max(outputs, 1)), nullptr);
  hostarray::standin::CallScope scope;
  gateway(outputs, slots.data(), static_cast<int>(inputs.size()), inputs.data());
  return json::HostArrayPointer(scope.keep(slots[0]));
}

/// The package that a gateway works on, or "" if there is no such argument.
std::string pathOf(const std::vector<json::HostArrayPointer>& arguments) {
  if (arguments.empty() || !kxIsChar(arguments[0].get())) return {};
  const kxArray* path = arguments[0].get();
  return opc::toUtf8ForDisplay({kxGetConstChars(path), kxGetNumberOfElements(path)});
}

/// Whether the gateway writes to the package itself.
bool changesPackage(std::size_t slot) {
  const detail::Gateway& gateway = detail::gatewayAt(slot);
  return gateway.outputs == 0 && gateway.name != "addonExtractAllFiles";
}

void printArray(const kxArray* array) {
  std::string text;
  text::JsonWriter writer(text, text::JsonWriter::Layout::Compact);
  try {
    json::writeHostArray(array, writer);
  } catch (const text::JsonError& error) {
    throw process::Failure(process::sentence("cannot print", "the output", error.what()));
  }
  report::Output output;
  output.write(text);
  output.write("\n");
  output.flush();
}

process::ExitCode call(const line::Invocation& invocation) {
  const auto& words = invocation.operands();
  const std::size_t slot = detail::gatewaySlot(words[0]);
  if (invocation.value("library") == "") {
    throw process::UsageError(process::sentence("bad value of --library", "", "the path is empty"));
  }
  const int outputs = static_cast<int>(
      invocation.number("nlhs", 0, kMaxOutputs).value_or(detail::gatewayAt(slot).outputs));
  std::vector<json::HostArrayPointer> arguments;
  for (std::size_t i = 1; i < words.size(); ++i) arguments.push_back(toArgument(i, words[i]));
  const HostFunctionTable& table = detail::loadFunctionTable(invocation.valueOr("library", ""));

  // Gateways do not handle signals; being killed by one could leave a partial file behind.
  process::Interrupt::deferAndStopWriting();
  const std::string package = pathOf(arguments);
  std::optional<process::PackageLock> lock;
  if (changesPackage(slot)) lock.emplace(detail::lockPackage(package, invocation));
  const auto before = opc::identityOf(package);
  const json::HostArrayPointer result = callGateway(table.entryPoints[slot], outputs, arguments);
  const bool isReplaced = opc::identityOf(package) != before;
  if (!isReplaced) process::Interrupt::check();
  if (result) printArray(result.get());
  return process::ExitCode::Done;
}

process::ExitCode run(const line::Invocation& invocation) {
  try {
    return call(invocation);
  } catch (const matrix::HostError& error) {
    throw process::Failure(fmt::format("{}: {}", error.identifier(), error.what()));
  }
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon call addonGetFileList kit.kraddon",
                      "prints the file list as the host gets it"},
    line::ExampleSpec{"kraddon call addonSetLicense kit.kraddon @license.json",
                      "stores the struct in license.json"},
    line::ExampleSpec{"kraddon call addonAddFiles kit.kraddon '[\"wave.m\"]' '[\"lib/wave.m\"]'",
                      "adds a file under another path"}};

}  // namespace

constexpr line::CommandSpec kCallCommand{
    .name = "call",
    .summary = "calls a gateway of the shared library, as the host does",
    .description = kDescription,
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
