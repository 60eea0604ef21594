// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include "addon/build/ExistingFiles.h"
#include "addon/build/Selection.h"
#include "addon/build/TreeWalk.h"
#include "addon/comparison/Contents.h"
#include "addon/comparison/OtherContent.h"
#include "opc/Exception.h"
#include "text/ByteCount.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/FileNames.h"
#include "tool/commands/detail/PackageOpening.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Background.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"
#include "tool/report/Progress.h"

namespace tool::commands {

using addon::build::ExistingFile;
using addon::build::onDisk;
using addon::comparison::Item;
using addon::comparison::openItem;
using addon::comparison::readParts;
using addon::comparison::readTree;
using addon::packaging::AddonPackage;

namespace {

using opc::plservices::FileSystemEntry;
using opc::plservices::RestoreMode;

constexpr std::array kOperands{detail::kPackageOperand, detail::kAllPathsOperand};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "directory",
                     .shortName = 'd',
                     .valueName = "DIR",
                     .help = "the folder to write to (default: the package's base name)"},
    line::OptionSpec{.longName = "force", .help = "replace existing files"},
    line::OptionSpec{.longName = "skip-existing", .help = "keep existing files"},
    line::OptionSpec{.longName = "dry-run", .help = "list what would be written, write nothing"},
    line::OptionSpec{.longName = "stdout", .help = "write one file to standard output"},
    line::OptionSpec{.longName = "max-size",
                     .valueName = "BYTES",
                     .help = "write nothing if the total exceeds BYTES (4096, 10K, 10M or 2G); a "
                             "folder counts 4096"},
    line::OptionSpec{.longName = "max-files",
                     .valueName = "N",
                     .help = "write nothing if there are more than N files and folders to make"},
    line::OptionSpec{.longName = "all",
                     .help = "extract the parts of the package instead of the files of the add-on"},
    detail::kGlobOption};

/// What --max-size counts for a folder: a block of most file systems.
constexpr std::uint64_t kFolderSize = 4096;

std::optional<std::int64_t> mostFiles(const line::Invocation& invocation) {
  return invocation.number("max-files", 0, std::numeric_limits<std::int64_t>::max());
}

void checkOptions(const line::Invocation& invocation) {
  invocation.refuseTogether("force", "skip-existing");
  invocation.refuseTogether("stdout", "directory");
  invocation.refuseTogether("stdout", "force");
  invocation.refuseTogether("stdout", "skip-existing");
  invocation.refuseTogether("stdout", "dry-run");
  invocation.byteCount("max-size");
  mostFiles(invocation);
}

std::string destinationOf(const line::Invocation& invocation) {
  const std::optional<std::string> given = invocation.value("directory");
  if (given) return *given;
  const std::string& package = invocation.operands()[0];
  std::string name = detail::baseNameOf(package);
  if (name.empty() || name == detail::fileNameOf(package)) {
    throw process::Failure(
        process::sentence("cannot extract", package, "the name has no extension"),
        "-d names the folder to write to");
  }
  // The name of the file must not lead out of this folder.
  if (name == "." || name == "..") {
    throw process::Failure(process::sentence("cannot extract", package,
                                             "its base name cannot be the name of a folder"),
                           "-d names the folder to write to");
  }
  return name;
}

/// `folders` are those that will be made, whether they are among the items or above them.
void checkLimits(const std::vector<Item>& items, std::uint64_t folders,
                 const line::Invocation& invocation) {
  const auto fail = [&](const std::string& why) {
    throw process::Failure(process::sentence("cannot extract", invocation.operands()[0], why));
  };
  const auto isBeyond = [](std::uint64_t value, std::optional<std::int64_t> limit) {
    return limit && value > static_cast<std::uint64_t>(*limit);
  };
  std::uint64_t size = folders * kFolderSize;
  std::uint64_t files = 0;
  for (const Item& item : items) {
    files += item.isFolder() ? 0 : 1;
    // A sum of more than 64 bits is too large, too.
    if (__builtin_add_overflow(size, item.info.size, &size)) size = ~std::uint64_t{0};
  }
  const auto sizeLimit = invocation.byteCount("max-size");
  if (isBeyond(size, sizeLimit)) {
    fail(fmt::format("the total exceeds the {} bytes of --max-size", *sizeLimit));
  }
  const auto fileLimit = mostFiles(invocation);
  if (isBeyond(files + folders, fileLimit)) {
    fail(fmt::format("there are more files and folders than the {} of --max-files", *fileLimit));
  }
}

void leaveOut(const std::vector<ExistingFile>& existing, std::vector<Item>& items) {
  std::vector<bool> isLeftOut(items.size());
  for (const ExistingFile& file : existing) isLeftOut[file.item] = true;
  std::size_t next = 0;
  std::erase_if(items, [&](const Item&) { return isLeftOut[next++]; });
}

/// Leaves out files that already exist, or refuses them.
void checkExisting(const std::vector<ExistingFile>& existing, std::vector<Item>& items,
                   const std::string& destination, const line::Invocation& invocation) {
  if (invocation.has("force")) {
    refuseThePackageItself(existing, items, destination, invocation.operands()[0]);
  } else if (invocation.has("skip-existing")) {
    leaveOut(existing, items);
  } else {
    refuseExisting(existing, items, destination);
  }
}

/// What was chosen instead of one file.
std::string describeChoice(const std::vector<Item>& items) {
  const auto isFolder = [](const Item& item) { return item.isFolder(); };
  const auto folders =
      static_cast<std::size_t>(std::count_if(items.begin(), items.end(), isFolder));
  const std::size_t files = items.size() - folders;
  if (files > 1 || folders == 0) return text::counted(files, "file");
  if (files == 1) return "1 file and " + text::counted(folders, "folder");
  return folders == 1 ? "a folder" : text::counted(folders, "folder");
}

void writeToOutput(AddonPackage& package, const std::vector<Item>& items) {
  if (items.size() != 1 || items[0].isFolder()) {
    throw process::Failure(
        fmt::format("cannot write to standard output: --stdout needs exactly one file, not {}",
                    describeChoice(items)));
  }
  const auto stream = openItem(package, items[0]);
  std::vector<unsigned char> buffer(std::size_t{256} << 10);
  report::Output output;
  while (const std::size_t size = stream->read(buffer.data(), buffer.size())) {
    output.write(std::span<const unsigned char>(buffer.data(), size));
  }
  output.flush();
}

void printPlan(const std::vector<Item>& items) {
  report::Output output;
  for (const Item& item : items) {
    output.write(output.shown(item.path) + (item.isFolder() ? "/\n" : "\n"));
  }
  output.flush();
}

void writeFiles(AddonPackage& package, const std::vector<Item>& items,
                const std::string& destination, const line::Invocation& invocation) {
  const RestoreMode mode =
      invocation.has("force") ? RestoreMode::ReplaceExisting : RestoreMode::KeepExisting;
  process::Interrupt::defer();
  report::ProgressBar bar(invocation.settings());
  package.fileSystem().setBackground(process::secondThread());
  if (invocation.has("all")) {
    std::vector<opc::model::PartId> parts;
    parts.reserve(items.size());
    for (const Item& item : items) parts.push_back(*item.part);
    package.fileSystem().extractParts(parts, destination, mode, bar.function());
    return;
  }
  std::vector<FileSystemEntry> entries;
  entries.reserve(items.size());
  for (const Item& item : items) entries.push_back(*item.entry);
  package.fileSystem().extract(entries, destination, mode, bar.function());
  if (!invocation.settings().isVerbose) return;
  std::vector<std::string> names;
  names.reserve(items.size());
  for (const Item& item : items) {
    names.push_back(onDisk(destination, item.path) + (item.isFolder() ? "/" : ""));
  }
  report::printToStandardError(report::describeDone(invocation, "extracted", names));
}

/// What can be extracted: the file tree or, with --all, every part under its name without the
/// slash.
std::vector<Item> itemsOf(AddonPackage& package, const line::Invocation& invocation) {
  if (invocation.has("all")) {
    std::vector<Item> items = readParts(package);
    for (Item& item : items) item.path.erase(0, 1);
    return items;
  }
  if (!addon::comparison::isAddon(package)) {
    throw process::Failure(
        process::sentence("cannot extract", invocation.operands()[0], "it is not an add-on"),
        "--all extracts every part");
  }
  std::vector<Item> items = readTree(package);
  for (const auto& file : package.fileSystem().unreadable())
    report::printWarning(invocation, file.line);
  return items;
}

process::ExitCode run(const line::Invocation& invocation) {
  checkOptions(invocation);
  const auto& operands = invocation.operands();
  const bool isToOutput = invocation.has("stdout");
  const std::string destination = isToOutput ? std::string() : destinationOf(invocation);

  const std::unique_ptr<AddonPackage> package = detail::openForReading(operands[0]);
  const std::vector<std::string> paths(operands.begin() + 1, operands.end());
  std::vector<Item> items =
      addon::build::choose(itemsOf(*package, invocation), paths, invocation.has("glob"));
  if (isToOutput) {
    checkLimits(items, 0, invocation);
    writeToOutput(*package, items);
    return process::ExitCode::Done;
  }
  const addon::build::Existing existing = addon::build::findExisting(items, destination);
  checkExisting(existing.files, items, destination, invocation);
  checkLimits(items, existing.newFolders, invocation);
  if (invocation.has("dry-run")) {
    printPlan(items);
  } else {
    writeFiles(*package, items, destination, invocation);
  }
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon extract kit.kraddon", "extracts everything into the folder kit"},
    line::ExampleSpec{"kraddon extract kit.kraddon docs -d out --skip-existing",
                      "extracts what is below docs into out"},
    line::ExampleSpec{"kraddon extract kit.kraddon README.txt --stdout", "prints one file"},
    line::ExampleSpec{"kraddon extract report.docx --all", "extracts the parts of any package"}};

}  // namespace

constexpr line::CommandSpec kExtractCommand{
    .name = "extract",
    .summary = "extracts files to the disk",
    .description =
        "Nothing is written outside DIR, and links in DIR are not followed. If a file already "
        "exists, nothing is written. Of a package that is not an add-on, such as a .docx, --all "
        "extracts the parts under the names that 'list --all' prints.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
