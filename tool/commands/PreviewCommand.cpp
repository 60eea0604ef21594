// SPDX-License-Identifier: MIT
#include <array>
#include <memory>
#include <string>

#include "addon/gallery/PackageImages.h"
#include "addon/gallery/PageReader.h"
#include "addon/gallery/PageWriter.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/FileNames.h"
#include "tool/commands/detail/PackageOpening.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Output.h"

namespace tool::commands {

using addon::packaging::AddonPackage;

namespace {

constexpr std::array kOperands{detail::kPackageOperand};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "output",
                     .shortName = 'o',
                     .valueName = "FILE",
                     .help = "where to write the page; - is standard output"}};

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon preview kit.kraddon", "writes kit.html"},
    line::ExampleSpec{"kraddon preview kit.kraddon -o site/kit.html",
                      "writes that file, replacing an older one"},
    line::ExampleSpec{"kraddon preview kit.kraddon -o -", "writes the page to standard output"}};

process::ExitCode run(const line::Invocation& invocation) {
  const std::string& path = invocation.operands()[0];
  const std::unique_ptr<AddonPackage> package = detail::openForReading(path);
  const addon::gallery::Page page = addon::gallery::readPage(*package, detail::baseNameOf(path));
  addon::gallery::PackageImages images(*package);
  const auto content = [&](report::Output& output) {
    addon::gallery::writePage(page, images, [&](std::string_view piece) {
      process::Interrupt::check();
      output.write(piece);
    });
  };
  report::writeOutputFile(invocation.value("output"), detail::baseNameOf(path) + ".html", content,
                          path);
  return process::ExitCode::Done;
}

}  // namespace

constexpr line::CommandSpec kPreviewCommand{
    .name = "preview",
    .summary = "writes an HTML page that presents the add-on",
    .description =
        "The page shows what the package contains: screenshot, description, author, requirements, "
        "examples, apps, revisions, license, and the files with their sizes. It is a single file "
        "that runs no script and loads nothing. Descriptions are read as Markdown (CommonMark "
        "with tables, strikethrough, task lists and autolinks; HTML is left out), and show images "
        "of the package. "
        "The page is written to FILE, which is replaced. Without -o, the file has the package's "
        "base name and the extension .html, and must not exist.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
