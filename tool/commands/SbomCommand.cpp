// SPDX-License-Identifier: MIT
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "addon/comparison/OtherContent.h"
#include "addon/materials/Materials.h"
#include "text/Suggest.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageOpening.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"
#include "tool/report/Progress.h"

namespace tool::commands {

using addon::packaging::AddonPackage;

namespace {

struct Format {
  std::string_view name;
  void (*write)(const addon::materials::Materials&, std::string_view,
                const addon::materials::Sink&);
};

constexpr std::array kFormats{Format{"spdx", addon::materials::writeSpdx},
                              Format{"cyclonedx", addon::materials::writeCycloneDx}};
constexpr std::array kFormatNames{kFormats[0].name, kFormats[1].name};

std::vector<std::string> formatNames() {
  return {kFormatNames.begin(), kFormatNames.end()};
}

constexpr std::array kOperands{detail::kPackageOperand};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "format",
                     .valueName = "FORMAT",
                     .help = "spdx (2.3, the default) or cyclonedx (1.6)",
                     .choices = formatNames},
    line::OptionSpec{.longName = "output",
                     .shortName = 'o',
                     .valueName = "FILE",
                     .help = "where to write the document (default: standard output)"}};

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon sbom kit.kraddon -o kit.spdx.json", "writes an SPDX document"},
    line::ExampleSpec{"kraddon sbom kit.kraddon --format cyclonedx", "prints one of CycloneDX"}};

const Format& formatOf(const line::Invocation& invocation) {
  const std::string asked = invocation.value("format").value_or("spdx");
  for (const Format& format : kFormats) {
    if (format.name == asked) return format;
  }
  throw process::UsageError(process::sentence(
      "unknown format", asked,
      text::suggestion(asked, kFormatNames, "the formats are spdx and cyclonedx")));
}

process::ExitCode run(const line::Invocation& invocation) {
  const Format& format = formatOf(invocation);
  const std::string& path = invocation.operands()[0];
  const std::unique_ptr<AddonPackage> package = detail::openForReading(path);
  if (!addon::comparison::isAddon(*package)) {
    throw process::Failure(process::sentence("cannot describe", path, "it is not an add-on"));
  }
  report::ProgressBar bar(invocation.settings());
  const auto materials = addon::materials::readMaterials(*package, bar.function());
  const auto content = [&](report::Output& output) {
    format.write(materials, KRADDON_VERSION, [&](std::string_view piece) {
      process::Interrupt::check();
      output.write(piece);
    });
  };
  report::writeOutputFile(invocation.value("output").value_or("-"), content, path);
  for (const auto& file : package->fileSystem().unreadable()) {
    report::printWarning(invocation, file.line);
  }
  return process::ExitCode::Done;
}

}  // namespace

constexpr line::CommandSpec kSbomCommand{
    .name = "sbom",
    .summary = "prints a software bill of materials",
    .description =
        "The document is JSON. It lists the add-on with its version, supplier and license, every "
        "file with its SHA-256, and the requirements as dependencies. SPDX also has the SHA-1 of "
        "each file. A license that is not an SPDX expression becomes a LicenseRef with the license "
        "text. The same package gives the same bytes: the time is the modification time in the "
        "core properties, and identifiers derive from the content digest. Signing a package does "
        "not change its bill of materials.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
