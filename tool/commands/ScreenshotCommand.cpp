// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "addon/build/Screenshot.h"
#include "addon/packaging/Documents.h"
#include "addon/packaging/ImageSignature.h"
#include "opc/Text.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/FileNames.h"
#include "tool/commands/detail/PackageChange.h"
#include "tool/commands/detail/PackageOpening.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/WriteOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Output.h"

namespace tool::commands {

using addon::packaging::AddonPackage;

namespace {

constexpr std::array kOperands{
    detail::kPackageOperand,
    line::OperandSpec{.name = "IMAGE",
                      .help = "the image to store (default: extract the stored one)",
                      .isRequired = false}};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "output",
                     .shortName = 'o',
                     .valueName = "FILE",
                     .help = "where to write the stored image; - is standard output"},
    detail::kTimestampOption, detail::kLevelOption, detail::kLockTimeoutOption};

constexpr std::size_t kBufferSize = std::size_t{256} << 10;

void refuse(const line::Invocation& invocation, std::string_view option, std::string_view why) {
  if (!invocation.has(option)) return;
  throw process::UsageError(process::sentence("bad option", fmt::format("--{}", option), why));
}

void store(const line::Invocation& invocation) {
  const std::string& path = invocation.operands()[0];
  const std::string& image = invocation.operands()[1];
  refuse(invocation, "output", "it cannot be combined with IMAGE");
  if (image == "-") {
    throw process::UsageError(
        process::sentence("bad value", image, "IMAGE is a file; -o - is standard output"));
  }
  auto options = detail::writeOptionsOf(invocation);
  std::u16string source = detail::toUtf16("cannot read", image);
  addon::build::checkScreenshot(image);
  detail::changePackage(path, std::move(options), invocation, [&](AddonPackage& package) {
    addon::build::storeScreenshot(package, path, source);
  });
}

/// "signal-kit.png" for a PNG image in "kits/signal-kit.kraddon". The name of the part is not used:
/// an image does not become a program because of it.
std::string defaultOutput(const std::string& package, opc::InputStream& image) {
  const std::string_view type = addon::packaging::imageTypeOf(image);
  if (type.empty()) {
    throw process::Failure(
        process::sentence("cannot write the screenshot of", package, "it is not an image"),
        "-o FILE writes its bytes all the same");
  }
  const std::string_view suffix = type == "image/jpeg" ? "jpg" : type.substr(type.find('/') + 1);
  return fmt::format("{}.{}", detail::baseNameOf(package), suffix);
}

void writeOut(const line::Invocation& invocation) {
  refuse(invocation, "timestamp", "it needs IMAGE");
  refuse(invocation, "level", "it needs IMAGE");
  refuse(invocation, "lock-timeout", "it needs IMAGE");
  const std::string& path = invocation.operands()[0];
  const std::unique_ptr<AddonPackage> package = detail::openForReading(path);
  const std::string part = addon::packaging::screenshotPart(*package);
  if (part.empty()) {
    throw process::Failure(process::sentence("cannot write the screenshot of", path, "it has none"),
                           "'kraddon screenshot PACKAGE IMAGE' stores one");
  }
  const auto image = package->logicalPackage().getPart(opc::model::PartName(opc::fromUtf8(part)));
  const auto content = [&](report::Output& output) {
    const auto stream = image->getInputStream();
    std::vector<unsigned char> buffer(kBufferSize);
    while (const std::size_t size = stream->read(buffer.data(), buffer.size())) {
      process::Interrupt::check();
      output.write(std::span<const unsigned char>(buffer.data(), size));
    }
  };
  const auto output = invocation.value("output");
  const std::string fallback = output ? "" : defaultOutput(path, *image->getInputStream());
  report::writeOutputFile(output, fallback, content, path);
}

process::ExitCode run(const line::Invocation& invocation) {
  if (invocation.operands().size() > 1) {
    store(invocation);
  } else {
    writeOut(invocation);
  }
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon screenshot kit.kraddon screen.png", "stores the image"},
    line::ExampleSpec{"kraddon screenshot kit.kraddon", "extracts the image to kit.png or similar"},
    line::ExampleSpec{"kraddon screenshot kit.kraddon -o - > screen.png",
                      "writes it to standard output"}};

}  // namespace

constexpr line::CommandSpec kScreenshotCommand{
    .name = "screenshot",
    .summary = "stores or extracts the screenshot",
    .description =
        "With IMAGE, stores it as the screenshot and the thumbnail of the package, replacing any "
        "earlier one. IMAGE is a PNG, GIF, TIFF, BMP or JPEG file with the matching extension: "
        ".png, .gif, .tiff, .bmp, .jpg, .jpeg or .jpe. "
        "Without IMAGE, writes the stored image unchanged to the file given with -o, replacing it. "
        "Without -o, the file is named after the package, with the extension of the image's "
        "format, and must not exist; a stored screenshot that is not an image is then refused.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
