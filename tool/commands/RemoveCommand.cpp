// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "addon/build/Selection.h"
#include "addon/comparison/Contents.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageChange.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/WriteOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"

namespace tool::commands {

using addon::comparison::Item;
using addon::comparison::readSubtree;
using addon::packaging::AddonPackage;

namespace {

using opc::plservices::FileSystemEntry;

constexpr std::array kOperands{
    detail::kPackageOperand,
    line::OperandSpec{.name = "PATH",
                      .help = "files, or folders with everything below them",
                      .isRepeatable = true}};

constexpr std::array kOptions{detail::kGlobOption, detail::kDryRunOption, detail::kTimestampOption,
                              detail::kLevelOption, detail::kLockTimeoutOption};

/// The topmost entries to remove, each with everything below it; "/" stands for everything in the
/// root.
std::vector<std::string> topsOf(AddonPackage& package, const std::vector<std::string>& operands) {
  std::vector<std::string> tops;
  for (const FileSystemEntry& entry : addon::build::findEntries(package, operands)) {
    std::string path = entry.path();
    if (!path.empty()) {
      tops.push_back(std::move(path));
      continue;
    }
    for (const FileSystemEntry& child : package.fileSystem().getChildren(entry)) {
      tops.push_back(child.path());
    }
  }
  return tops;
}

void appendLine(const Item& item, std::vector<std::string>& lines) {
  lines.push_back(item.isFolder() ? item.path + "/" : item.path);
}

/// Both return what was removed, folders with a '/' and before their content.
std::vector<std::string> removeNamed(AddonPackage& package,
                                     const std::vector<std::string>& operands) {
  std::vector<std::string> lines;
  for (const std::string& path : topsOf(package, operands)) {
    process::Interrupt::check();
    // What is below another operand is already removed.
    const auto entry = package.fileSystem().find(path);
    if (entry == nullptr) continue;
    for (const Item& item : readSubtree(package, *entry)) appendLine(item, lines);
    package.fileSystem().remove(*entry);
  }
  return lines;
}

/// A folder is removed only if everything in it is.
std::vector<std::string> removeMatching(AddonPackage& package,
                                        const std::vector<std::string>& patterns) {
  auto& tree = package.fileSystem();
  const std::vector<Item> chosen =
      addon::build::choose(readSubtree(package, tree.getRoot()), patterns, true);
  std::vector<std::string> lines;
  for (auto item = chosen.rbegin(); item != chosen.rend(); ++item) {
    process::Interrupt::check();
    if (item->isFolder() && !tree.getChildren(*item->entry).empty()) continue;
    appendLine(*item, lines);
    tree.remove(*item->entry);
  }
  std::reverse(lines.begin(), lines.end());
  return lines;
}

void printLines(const std::vector<std::string>& lines) {
  report::Output output;
  for (const std::string& line : lines) output.write(output.shown(line) + "\n");
  output.flush();
}

process::ExitCode run(const line::Invocation& invocation) {
  auto options = detail::writeOptionsOf(invocation);
  const std::string& path = invocation.operands()[0];
  const std::vector<std::string> operands(invocation.operands().begin() + 1,
                                          invocation.operands().end());
  std::vector<std::string> lines;
  std::string done;
  const auto remove = [&](AddonPackage& package) {
    lines =
        invocation.has("glob") ? removeMatching(package, operands) : removeNamed(package, operands);
    done = report::describeDone(invocation, "removed", lines);
  };
  if (invocation.has("dry-run")) {
    detail::rehearseChange(path, invocation, remove);
    printLines(lines);
  } else {
    detail::changePackage(path, std::move(options), invocation, remove);
    report::printToStandardError(done);
  }
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon remove kit.kraddon docs/old",
                      "removes a folder with everything below it"},
    line::ExampleSpec{"kraddon remove kit.kraddon --glob '*.bak' --dry-run",
                      "lists the files that a pattern would remove"}};

}  // namespace

constexpr line::CommandSpec kRemoveCommand{
    .name = "remove",
    .summary = "removes files and folders",
    .description =
        "A folder is removed with everything in it. The folder above it stays, even if it is then "
        "empty. A pattern that matches a folder also removes what is in it, except what a later "
        "pattern with '!' keeps. '/' stands for everything.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
