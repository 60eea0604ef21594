// SPDX-License-Identifier: MIT
#include <array>
#include <cerrno>
#include <string>

#include "addon/build/Project.h"
#include "addon/project/GitFacts.h"
#include "addon/project/Guesses.h"
#include "addon/project/Manifest.h"
#include "addon/project/ManifestGuid.h"
#include "addon/project/ManifestText.h"
#include "addon/project/ProjectFolder.h"
#include "tool/commands/CommandTable.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"

namespace tool::commands {

using addon::build::manifestPath;

namespace {

using addon::project::Guesses;
using addon::project::ProjectFolder;

constexpr std::size_t kMaxManifestSize = std::size_t{16} << 20;

constexpr std::array kOperands{line::OperandSpec{
    .name = "FOLDER", .help = "the project folder (default: .)", .isRequired = false}};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "force",
                     .help = "replace an existing kraddon.toml, but keep its GUID"},
    line::OptionSpec{.longName = "stdout", .help = "print the manifest, write no file"}};

Guesses guess(const std::string& folder, const line::Invocation& invocation) {
  const ProjectFolder project(folder);
  Guesses guesses = guessFrom(project, addon::project::readGitFacts(project.path()));
  if (invocation.has("force")) {
    const std::string old(addon::project::kManifestName);
    guesses.guid = {
        addon::project::guidOfManifest(project.read(old, kMaxManifestSize).value_or("")), ""};
    if (!guesses.guid.value.empty())
      guesses.guid.source = "from the manifest that this one replaced";
  }
  for (const std::string& remark : guesses.remarks) {
    report::printWarning(invocation, "skipped: " + remark);
  }
  return guesses;
}

process::ExitCode run(const line::Invocation& invocation) {
  invocation.refuseTogether("force", "stdout");
  const bool isPrinted = invocation.has("stdout");
  const bool replaces = invocation.has("force");
  const std::string folder = invocation.operands().empty() ? "." : invocation.operands()[0];
  if (folder.empty()) throw process::systemFailure("cannot read the folder", folder, ENOENT);
  // Before the folder is read, so that a refusal comes at once.
  if (!isPrinted && !replaces) {
    report::requireNothingAt(manifestPath(folder), "--force replaces it");
  }

  const std::string text = manifestText(guess(folder, invocation));
  if (isPrinted) {
    report::writeOutputFile("-", text, {});
  } else if (replaces) {
    report::writeOutputFile(manifestPath(folder), text, {});
  } else {
    report::writeNewFile(manifestPath(folder), text);
  }
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon init", "writes ./kraddon.toml for 'kraddon build'"},
    line::ExampleSpec{"kraddon init ~/wave --stdout", "prints the manifest for ~/wave"}};

}  // namespace

constexpr line::CommandSpec kInitCommand{
    .name = "init",
    .summary = "writes an initial kraddon.toml",
    .description =
        "Guesses the manifest from the content of FOLDER: the name (the title of the README), "
        "the version (the newest git tag, or else the newest heading of the CHANGELOG), the "
        "author, "
        "README, LICENSE, CHANGELOG and screenshot, the folders with .m files, the .jar files, the "
        "apps and the examples. A comment above each guess names its source. "
        "Correct what is wrong, then run 'kraddon build' to build the package.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
