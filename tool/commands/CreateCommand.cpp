// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <array>

#include "addon/build/NewPackage.h"
#include "addon/build/SourceFiles.h"
#include "addon/checks/ChangeReview.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/project/Guid.h"
#include "addon/project/PlainText.h"
#include "opc/Text.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/FindingMessages.h"
#include "tool/commands/detail/Locks.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/SourceFinder.h"
#include "tool/commands/detail/WriteOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Messages.h"

namespace tool::commands {

using addon::build::NewPackage;
using addon::build::SourceFile;
using addon::build::storeFiles;
using addon::checks::ChangeReview;
using addon::checks::PackageVerdict;
using addon::packaging::AddonPackage;

namespace {

using addon::packaging::AddonProperties;

constexpr std::array kOperands{
    line::OperandSpec{.name = "PACKAGE", .help = "the file to create"},
    line::OperandSpec{.name = "FOLDER",
                      .help = "the folder whose files and empty folders are added",
                      .isRequired = false}};

constexpr std::array kOptions{
    line::OptionSpec{
        .longName = "name", .valueName = "TEXT", .help = "the add-on's name", .isRequired = true},
    line::OptionSpec{
        .longName = "version", .valueName = "TEXT", .help = "the add-on's version (default: 1.0)"},
    line::OptionSpec{
        .longName = "summary", .valueName = "TEXT", .help = "a description in one line"},
    line::OptionSpec{
        .longName = "description", .valueName = "TEXT", .help = "a longer description"},
    line::OptionSpec{.longName = "author", .valueName = "TEXT", .help = "the author's name"},
    line::OptionSpec{.longName = "contact", .valueName = "TEXT", .help = "how to reach the author"},
    line::OptionSpec{
        .longName = "organization", .valueName = "TEXT", .help = "the author's organization"},
    line::OptionSpec{
        .longName = "guid",
        .valueName = "TEXT",
        .help =
            "the add-on's GUID (default: random, or derived from the name if the time is fixed)"},
    detail::kExcludeOption,
    detail::kDefaultExcludesOption,
    detail::kFollowOption,
    line::OptionSpec{.longName = "force", .help = "replace an existing file"},
    detail::kTimestampOption,
    detail::kLevelOption,
    detail::kLockTimeoutOption};

std::u16string text(const line::Invocation& invocation, std::string_view option,
                    std::string_view otherwise = {}) {
  const std::string value = invocation.valueOr(option, otherwise);
  const std::string fault = addon::project::xmlTextFault(value);
  if (fault.empty()) return opc::fromUtf8(value);
  throw process::UsageError(
      process::sentence(fmt::format("bad value of --{}", option), value, fault));
}

AddonProperties propertiesOf(const line::Invocation& invocation, bool hasFixedTime) {
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

process::ExitCode run(const line::Invocation& invocation) {
  const auto& operands = invocation.operands();
  if (invocation.valueOr("name", "").empty()) {
    throw process::UsageError(
        process::sentence("bad value of --name", "", "an add-on needs a name"));
  }
  auto options = detail::writeOptionsOf(invocation);
  AddonProperties properties = propertiesOf(invocation, options.timestamp.has_value());

  const process::PackageLock lock = detail::lockPackage(operands[0], invocation);
  NewPackage target(operands[0], {.any = invocation.has("force")});
  std::vector<SourceFile> files;
  if (operands.size() > 1) detail::SourceFinder(invocation).collect(operands[1], "", files);
  AddonPackage& package = target.open(properties, options.timestamp);
  storeFiles(files, false, package, process::Interrupt::check);
  const PackageVerdict verdict = ChangeReview::ofNewPackage(package).judge(operands[0]);
  detail::refuseErrors("cannot create", verdict, "'kraddon verify --explain ID' explains a finding",
                       invocation);
  const std::string done = report::describeDone(invocation, "added", addon::build::pathsOf(files)) +
                           detail::describeFindings(verdict, invocation);
  options.progress = detail::startProgressBar(invocation.settings());
  target.commit(std::move(options));
  process::Interrupt::ignoreFromNowOn();
  report::printToStandardError(done);
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon create kit.kraddon src --name 'Signal Kit'",
                      "packs the files in src"},
    line::ExampleSpec{"kraddon create kit.kraddon src --name Kit --exclude '*.bak' --timestamp 0",
                      "leaves out backups; the bytes are the same each time"},
    line::ExampleSpec{"kraddon create empty.kraddon --name Empty",
                      "creates a package without files"}};

}  // namespace

constexpr line::CommandSpec kCreateCommand{
    .name = "create",
    .summary = "creates a package",
    .description =
        "Adds every file and every empty folder below FOLDER under its relative path. Files that "
        "match a pattern in FOLDER/.kraddonignore are left out. Files keep their modification "
        "times unless --timestamp, or SOURCE_DATE_EPOCH in the environment, sets another. Nothing "
        "is created if 'verify' would find an error in the description of the add-on.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
