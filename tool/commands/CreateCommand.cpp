// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <array>

#include "addon/packaging/AddonProperties.h"
#include "addon/project/Guid.h"
#include "addon/project/PlainText.h"
#include "opc/Text.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/commands/detail/NewPackage.h"
#include "tool/commands/detail/PackageAccess.h"
#include "tool/SourceFiles.h"

namespace tool {

namespace {

using addon::packaging::AddonProperties;

constexpr std::array kOperands{OperandSpec{.name = "PACKAGE", .help = "the file to make"},
                               OperandSpec{.name = "FOLDER",
                                           .help = "the folder whose files and empty folders go in",
                                           .isRequired = false}};

constexpr std::array kOptions{
    OptionSpec{
        .longName = "name", .valueName = "TEXT", .help = "the add-on's name", .isRequired = true},
    OptionSpec{.longName = "version", .valueName = "TEXT", .help = "its version, default 1.0"},
    OptionSpec{.longName = "summary", .valueName = "TEXT", .help = "what it is, in one line"},
    OptionSpec{.longName = "description", .valueName = "TEXT", .help = "what it is, at length"},
    OptionSpec{.longName = "author", .valueName = "TEXT", .help = "the author's name"},
    OptionSpec{.longName = "contact", .valueName = "TEXT", .help = "how to reach the author"},
    OptionSpec{
        .longName = "organization", .valueName = "TEXT", .help = "the author's organization"},
    OptionSpec{.longName = "guid",
               .valueName = "TEXT",
               .help = "its GUID (default: a fresh one, or with a fixed time the name's)"},
    kExcludeOption,
    kDefaultExcludesOption,
    kFollowOption,
    OptionSpec{.longName = "force", .help = "replace an existing file"},
    kTimestampOption,
    kLevelOption};

std::u16string text(const Invocation& invocation, std::string_view option,
                    std::string_view otherwise = {}) {
  const std::string value = invocation.valueOr(option, otherwise);
  const std::string fault = addon::project::xmlTextFault(value);
  if (fault.empty()) return opc::fromUtf8(value);
  throw UsageError(sentence(fmt::format("bad value of --{}", option), value, fault));
}

AddonProperties propertiesOf(const Invocation& invocation, bool hasFixedTime) {
  AddonProperties properties;
  properties.type = u"Korvan Toolbox";
  properties.name = text(invocation, "name");
  properties.version = text(invocation, "version", "1.0");
  properties.summary = text(invocation, "summary");
  properties.description = text(invocation, "description");
  properties.authorName = text(invocation, "author");
  properties.authorContact = text(invocation, "contact");
  properties.authorOrganization = text(invocation, "organization");
  const std::string name = invocation.valueOr("name", "");
  properties.GUID = invocation.has("guid")
                        ? text(invocation, "guid")
                        : opc::fromUtf8(hasFixedTime ? addon::project::guidOfName(name)
                                                     : addon::project::randomGuid());
  return properties;
}

ExitCode run(const Invocation& invocation) {
  const auto& operands = invocation.operands();
  if (invocation.valueOr("name", "").empty()) {
    throw UsageError(sentence("bad value of --name", "", "an add-on needs a name"));
  }
  auto options = writeOptionsOf(invocation);
  AddonProperties properties = propertiesOf(invocation, options.timestamp.has_value());

  NewPackage target(operands[0], invocation.has("force"));
  std::vector<SourceFile> files;
  if (operands.size() > 1) SourceFinder(invocation).collect(operands[1], "", files);
  storeFiles(files, false, target.open(properties, options.timestamp));
  target.commit(std::move(options), invocation.settings());
  return ExitCode::Done;
}

constexpr std::array kExamples{
    ExampleSpec{"kraddon create kit.kraddon src --name 'Signal Kit'", "packs what is in src"},
    ExampleSpec{"kraddon create kit.kraddon src --name Kit --exclude '*.bak' --timestamp 0",
                "leaves out backups; gives the same bytes each time"},
    ExampleSpec{"kraddon create empty.kraddon --name Empty", "makes a package without files"}};

}  // namespace

constexpr CommandSpec kCreateCommand{
    .name = "create",
    .summary = "makes a new package",
    .description =
        "Every file and every empty folder below FOLDER goes in under its path there.\n"
        "Patterns in FOLDER/.kraddonignore are left out too. Without --timestamp, and\n"
        "without SOURCE_DATE_EPOCH in the environment, files keep their own times.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool
