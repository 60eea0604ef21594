// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "addon/build/Selection.h"
#include "addon/packaging/ReferenceRenaming.h"
#include "opc/Text.h"
#include "text/Lines.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/FileNames.h"
#include "tool/commands/detail/PackageChange.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/WriteOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"

namespace tool::commands {

using addon::packaging::AddonPackage;
using addon::packaging::RenamedReference;

namespace {

using opc::plservices::FileSystemEntry;

constexpr std::array kOperands{
    detail::kPackageOperand,
    line::OperandSpec{.name = "FROM", .help = "the file or folder to rename"},
    line::OperandSpec{.name = "TO", .help = "its new path, or an existing folder to move it into"}};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "keep-references",
                     .help = "leave the paths in the documents as they are"},
    detail::kDryRunOption, detail::kTimestampOption, detail::kLevelOption,
    detail::kLockTimeoutOption};

/// What was, or would be, renamed.
struct Renaming {
  std::string from;
  std::string to;
  std::vector<RenamedReference> references;
};

/// A folder, or a path that ends with '/', takes the entry under its own name.
std::string targetOf(AddonPackage& package, const FileSystemEntry& entry, const std::string& to) {
  std::string path(text::trimSlashes(to));
  const auto existing = package.fileSystem().find(path);
  const bool isFolder = existing ? !existing->isFile() : entry.isFile() && to.ends_with('/');
  // Another case of the same name is a new name.
  if (!isFolder || (existing && existing->path() == entry.path())) return path;
  return path.empty() ? entry.name() : fmt::format("{}/{}", path, entry.name());
}

Renaming rename(AddonPackage& package, const line::Invocation& invocation) {
  const auto& operands = invocation.operands();
  const FileSystemEntry entry = addon::build::findEntries(package, {operands[1]}).front();
  if (entry.path().empty()) {
    throw process::Failure(
        process::sentence("cannot move", operands[1], "it is the top of the package"));
  }
  Renaming renaming{entry.path(), targetOf(package, entry, operands[2]), {}};
  package.fileSystem().move(entry, renaming.to);
  if (!invocation.has("keep-references")) {
    renaming.references = renameReferences(package, renaming.from, renaming.to);
  }
  return renaming;
}

std::vector<std::string> linesOf(const Renaming& renaming) {
  std::vector<std::string> lines{fmt::format("{} -> {}", renaming.from, renaming.to)};
  for (const RenamedReference& one : renaming.references) {
    lines.push_back(fmt::format("{}: {} -> {}", one.place, one.from, one.to));
  }
  return lines;
}

process::ExitCode run(const line::Invocation& invocation) {
  auto options = detail::writeOptionsOf(invocation);
  const auto& operands = invocation.operands();
  if (operands[2].empty()) {
    throw process::Failure(process::sentence("cannot move to", operands[2], "the path is empty"),
                           "'/' is the top of the package");
  }
  detail::toUtf16("cannot move to", operands[2]);
  Renaming renaming;
  std::string done;
  const auto move = [&](AddonPackage& package) {
    renaming = rename(package, invocation);
    done = report::describeDone(invocation, "moved", linesOf(renaming));
  };
  if (!invocation.has("dry-run")) {
    detail::changePackage(operands[0], std::move(options), invocation, move);
    report::printToStandardError(done);
    return process::ExitCode::Done;
  }
  detail::rehearseChange(operands[0], invocation, move);
  report::Output output;
  for (const std::string& line : linesOf(renaming)) output.write(output.shown(line) + "\n");
  output.flush();
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon mv kit.kraddon lib/chirp.m lib/linearChirp.m", "renames a file"},
    line::ExampleSpec{"kraddon mv kit.kraddon examples demos --dry-run",
                      "lists the paths in documents that the new name of a folder would change"},
    line::ExampleSpec{"kraddon mv kit.kraddon README.txt docs", "moves a file into a folder"}};

}  // namespace

constexpr line::CommandSpec kMvCommand{
    .name = "mv",
    .summary = "renames or moves a file or folder",
    .description =
        "Paths in documents that refer to it, or to something below it, are updated, but not "
        "those of images in the description. Missing parent folders are created. Nothing is ever "
        "replaced: if the new path already exists, and is not a folder to move into, nothing is "
        "changed.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
