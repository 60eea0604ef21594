// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <unordered_map>
#include <utility>

#include "addon/build/Selection.h"
#include "addon/build/SourceFiles.h"
#include "opc/Text.h"
#include "text/Lines.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageChange.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/SourceFinder.h"
#include "tool/commands/detail/WriteOptions.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"

namespace tool::commands {

using addon::build::joinPath;
using addon::build::SourceFile;
using addon::build::storeFiles;
using addon::packaging::AddonPackage;

namespace {

constexpr std::array kOperands{
    detail::kPackageOperand,
    line::OperandSpec{.name = "FILE",
                      .help = "files, or folders with everything below them",
                      .isRepeatable = true}};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "into",
                     .valueName = "PATH",
                     .help = "the folder in the package to add them to"},
    line::OptionSpec{.longName = "as",
                     .valueName = "PATH",
                     .help = "the path in the package, for a single file"},
    line::OptionSpec{.longName = "replace",
                     .help = "replace files that are already in the package"},
    detail::kExcludeOption,
    detail::kDefaultExcludesOption,
    detail::kFollowOption,
    detail::kDryRunOption,
    detail::kTimestampOption,
    detail::kLevelOption,
    detail::kLockTimeoutOption};

void requirePath(const line::Invocation& invocation, std::string_view option) {
  const std::string name = fmt::format("bad value of --{}", option);
  const auto path = invocation.value(option);
  if (!path) return;
  if (path->empty()) {
    const std::string top = option == "into" ? "'/' is the top of the package" : "";
    throw process::UsageError(process::sentence(name, *path, "the path is empty"), top);
  }
  if (!opc::isUtf8(*path))
    throw process::UsageError(process::sentence(name, *path, "it is not UTF-8"));
}

void checkOptions(const line::Invocation& invocation) {
  invocation.refuseTogether("as", "into");
  if (invocation.has("as") && invocation.operands().size() > 2) {
    throw process::UsageError(process::sentence("bad option", "--as", "it needs exactly one FILE"));
  }
  requirePath(invocation, "as");
  requirePath(invocation, "into");
}

/// The last name of a path on the disk; "" if it has none (".", "..", "/").
std::string ownNameOf(std::string_view path) {
  while (path.ends_with('/')) path.remove_suffix(1);
  const std::string_view name = path.substr(path.rfind('/') + 1);
  return name == "." || name == ".." ? std::string() : std::string(name);
}

/// The path of an operand in the package; "" is the top, for the content of a folder.
std::string placeOf(const line::Invocation& invocation, const std::string& operand) {
  const auto given = invocation.value("as");
  if (given) return *given;
  const std::string name = ownNameOf(operand);
  if (!opc::isUtf8(name)) {
    throw process::Failure(process::sentence("cannot add", operand, "the name is not UTF-8"));
  }
  return joinPath(text::trimSlashes(invocation.valueOr("into", "")), name);
}

class Collector {
 public:
  explicit Collector(const line::Invocation& invocation)
      : invocation_(invocation), finder_(invocation) {}

  std::vector<SourceFile> run() {
    const auto& operands = invocation_.operands();
    for (std::size_t i = 1; i < operands.size(); ++i) addOperand(operands[i]);
    return std::move(files_);
  }

 private:
  void addOperand(const std::string& operand) {
    struct stat info {};
    if (::stat(operand.c_str(), &info) != 0)
      throw process::systemFailure("cannot add", operand, errno);
    const std::string place = placeOf(invocation_, operand);
    const bool isFolder = S_ISDIR(info.st_mode);
    const bool hasName = !isFolder || !ownNameOf(operand).empty();
    if (hasName && finder_.leavesOut(place, isFolder)) return;
    if (isFolder) return addFolder(operand, place, hasName);
    if (!S_ISREG(info.st_mode)) {
      throw process::Failure(
          process::sentence("cannot add", operand, "it is neither a file nor a folder"));
    }
    if (finder_.isPackage(operand)) {
      throw process::Failure(process::sentence("cannot add", operand, "it is the package itself"));
    }
    files_.push_back({operand, place, false});
  }

  void addFolder(std::string folder, const std::string& place, bool hasName) {
    if (invocation_.has("as")) {
      throw process::Failure(
          process::sentence("cannot add", folder, "it is a folder, and --as takes a file"),
          "--into adds it to a folder of the package");
    }
    while (folder.size() > 1 && folder.ends_with('/')) folder.pop_back();
    const std::size_t before = files_.size();
    finder_.collect(folder, place, files_);
    std::error_code error;
    if (hasName && files_.size() == before && std::filesystem::is_empty(folder, error)) {
      files_.push_back({folder, place, true});
    }
  }

  const line::Invocation& invocation_;
  detail::SourceFinder finder_;
  std::vector<SourceFile> files_;
};

/// Throws Failure if two files would get conflicting paths.
void requireDistinct(const std::vector<SourceFile>& files) {
  std::unordered_map<std::string_view, const SourceFile*> byPath;
  byPath.reserve(files.size());
  for (const SourceFile& file : files) {
    const auto [other, isNew] = byPath.emplace(file.path, &file);
    if (isNew || (file.isFolder && other->second->isFolder)) continue;
    throw process::Failure(process::sentence(
        "cannot add", file.diskPath,
        fmt::format("'{}' would also be added as '{}'", other->second->diskPath, file.path)));
  }
  for (const SourceFile& file : files) {
    const std::string_view path = file.path;
    for (std::size_t end = path.find('/'); end != path.npos; end = path.find('/', end + 1)) {
      const auto other = byPath.find(path.substr(0, end));
      if (other == byPath.end() || other->second->isFolder) continue;
      throw process::Failure(
          process::sentence("cannot add", file.diskPath,
                            fmt::format("'{}' would be added as '{}', which must be a folder",
                                        other->second->diskPath, other->first)));
    }
  }
}

void printPlan(const std::vector<SourceFile>& files) {
  report::Output output;
  for (const std::string& path : addon::build::pathsOf(files)) {
    output.write(output.shown(path) + "\n");
  }
  output.flush();
}

process::ExitCode run(const line::Invocation& invocation) {
  checkOptions(invocation);
  auto options = detail::writeOptionsOf(invocation);
  const std::string& path = invocation.operands()[0];
  std::vector<SourceFile> files;
  std::string done;
  const auto add = [&](AddonPackage& package) {
    files = Collector(invocation).run();
    requireDistinct(files);
    storeFiles(files, invocation.has("replace"), package, process::Interrupt::check);
    done = report::describeDone(invocation, "added", addon::build::pathsOf(files));
  };
  if (invocation.has("dry-run")) {
    detail::rehearseChange(path, invocation, add);
    printPlan(files);
  } else {
    detail::changePackage(path, std::move(options), invocation, add);
    report::printToStandardError(done);
  }
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon add kit.kraddon wave.m --into lib", "adds wave.m as lib/wave.m"},
    line::ExampleSpec{"kraddon add kit.kraddon docs --replace",
                      "adds a folder, replacing files that already exist"},
    line::ExampleSpec{"kraddon add kit.kraddon notes.txt --as README.txt",
                      "adds a file under another name"}};

}  // namespace

constexpr line::CommandSpec kAddCommand{
    .name = "add",
    .summary = "adds files and folders",
    .description =
        "A file is added under its own name, a folder under its name with every file and every "
        "empty folder below it. Of '.' and '..' only the content is added. Files that match a "
        "pattern in the folder's .kraddonignore are left out. If a path already exists in the "
        "package, nothing is changed.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
