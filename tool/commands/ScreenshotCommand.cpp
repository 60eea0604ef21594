// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <string>
#include <utility>
#include <vector>

#include "addon/packaging/DocumentRemoval.h"
#include "addon/packaging/Documents.h"
#include "addon/packaging/ImageSignature.h"
#include "opc/Exception.h"
#include "opc/FileDescriptor.h"
#include "opc/SystemCall.h"
#include "opc/Text.h"
#include "opc/plservices/FileContentSource.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageAccess.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Output.h"

namespace tool::commands {

using addon::packaging::AddonPackage;

namespace {

constexpr std::array kOperands{
    line::OperandSpec{.name = "PACKAGE", .help = "the package"},
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

/// Throws Failure unless it can be read as a file, and is an image of the type that its name says.
void checkImage(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) throw process::systemFailure("cannot read", path, errno);
  if (S_ISDIR(info.st_mode)) throw process::systemFailure("cannot read", path, EISDIR);
  if (!S_ISREG(info.st_mode))
    throw process::Failure(process::sentence("cannot read", path, "it is not a file"));
  const opc::FileDescriptor file(
      opc::uninterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY); }));
  if (!file) throw process::systemFailure("cannot read", path, errno);
  const auto content = opc::plservices::FileContentSource(path).getInputStream();
  const std::string fault = addon::packaging::screenshotFault(path, *content);
  if (!fault.empty())
    throw process::Failure(process::sentence("cannot use the image", path, fault));
}

/// Stores the screenshot in the place of one that any program may have made.
void store(AddonPackage& package, const std::string& path, const std::u16string& image) {
  auto& model = package.logicalPackage();
  if (const auto other = addon::packaging::relationshipInTheWay(model)) {
    const std::string why =
        fmt::format("the relationship '{}' leads to '{}', which is not a screenshot",
                    opc::toUtf8ForDisplay(other->getId()),
                    opc::toUtf8ForDisplay(other->getTargetURI().toString()));
    throw process::Failure(process::sentence("cannot store the screenshot in", path, why),
                           fmt::format("'kraddon unset {} screenshot' gives it another id", path));
  }
  addon::packaging::removeScreenshot(model);
  try {
    package.setScreenshot(image);
  } catch (const opc::Exception& error) {
    if (error.code() != opc::ErrorCode::AlreadyExists) throw;
    throw process::Failure(process::sentence("cannot store the screenshot in", path,
                                             "something else uses the name of its part"),
                           "an image of another format gets another name");
  }
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
  checkImage(image);
  detail::changePackage(path, std::move(options), invocation,
                        [&](AddonPackage& package) { store(package, path, source); });
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
        "With IMAGE, a PNG, GIF, TIFF, BMP or JPEG file whose name says the same, stores it as the "
        "screenshot and the "
        "thumbnail of the package, replacing an earlier one. Without IMAGE, writes the stored "
        "image, byte for byte, to FILE, which is replaced. Without -o, the file has the package's "
        "base name and the extension of the image's format, and must not exist; what is not an "
        "image is refused.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
