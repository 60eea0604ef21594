// SPDX-License-Identifier: MIT
#include <array>
#include <memory>
#include <string>

#include "addon/gallery/PackageImages.h"
#include "addon/gallery/PageReader.h"
#include "addon/gallery/PageWriter.h"
#include "tool/line/Arguments.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Output.h"
#include "tool/commands/detail/PackageAccess.h"

namespace tool {

namespace {

constexpr std::array kOperands{OperandSpec{.name = "PACKAGE", .help = "the package"}};

constexpr std::array kOptions{OptionSpec{.longName = "output",
                                         .shortName = 'o',
                                         .valueName = "FILE",
                                         .help = "where to write the page; - is standard output"}};

constexpr std::array kExamples{
    ExampleSpec{"kraddon preview kit.kraddon", "writes kit.html"},
    ExampleSpec{"kraddon preview kit.kraddon -o site/kit.html",
                "writes that file, in the place of an older one"},
    ExampleSpec{"kraddon preview kit.kraddon -o -", "writes the page to standard output"}};

ExitCode run(const Invocation& invocation) {
  const std::string& path = invocation.operands()[0];
  const std::unique_ptr<AddonPackage> package = openForReading(path);
  const addon::gallery::Page page = addon::gallery::readPage(*package, baseNameOf(path));
  addon::gallery::PackageImages images(*package);
  const auto content = [&](Output& output) {
    addon::gallery::writePage(page, images, [&](std::string_view piece) {
      Interrupt::check();
      output.write(piece);
    });
  };
  writeOutputFile(invocation.value("output"), baseNameOf(path) + ".html", content, path);
  return ExitCode::Done;
}

}  // namespace

constexpr CommandSpec kPreviewCommand{
    .name = "preview",
    .summary = "makes one HTML page that presents the add-on",
    .description =
        "The page shows what the package says of itself: screenshot, description, author,\n"
        "requirements, examples, apps, revisions, license, and the files with their sizes. It\n"
        "is one file, runs no script and loads nothing. Descriptions are CommonMark with tables,\n"
        "without HTML. It goes to FILE, which is replaced, or,\n"
        "without -o, to the package's base name and .html, which must not exist.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool
