// SPDX-License-Identifier: MIT
#include "tool/commands/detail/SourceFinder.h"

#include <fmt/format.h>

#include <utility>

#include "opc/Text.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Messages.h"

namespace tool::commands::detail {

using addon::build::SourceFile;
using addon::build::TreeWalkOptions;
using addon::build::WalkedEntry;
using addon::project::PatternList;

SourceFinder::SourceFinder(const line::Invocation& invocation)
    : invocation_(invocation),
      patterns_(patternsFor({}, {})),
      package_(opc::identityOf(invocation.operands()[0])) {}

PatternList SourceFinder::patternsFor(const std::string& folder, const std::string& place) const {
  PatternList patterns;
  if (invocation_.has("default-excludes")) addon::project::addDefaultExcludes(patterns);
  if (!folder.empty()) addon::build::addIgnoreFile(folder, place, patterns);
  for (const std::string& glob : invocation_.values("exclude")) patterns.add(glob);
  return patterns;
}

void SourceFinder::report(const std::string& path) const {
  if (!invocation_.settings().isVerbose) return;
  report::printToStandardError(fmt::format("left out: {}\n", opc::printable(path)));
}

bool SourceFinder::leavesOut(const std::string& path, bool isFolder) const {
  if (!patterns_.excludes(path, isFolder)) return false;
  report(path);
  return true;
}

bool SourceFinder::isPackage(const std::string& diskPath) const {
  return package_ && opc::identityOf(diskPath) == package_;
}

void SourceFinder::collect(const std::string& folder, const std::string& place,
                           std::vector<SourceFile>& into) const {
  TreeWalkOptions options;
  options.excludes = patternsFor(folder, place);
  options.place = place;
  options.followsOutside = invocation_.has("follow");
  options.leftOut = addon::build::withFolders({invocation_.operands()[0]});
  options.onExcluded = [this](const std::string& path, bool) { report(path); };
  options.onLeftOut = options.onExcluded;
  options.stop = process::Interrupt::check;
  for (WalkedEntry& entry : addon::build::walkTree(folder, options)) {
    std::string diskPath = addon::build::onDisk(folder, entry.path);
    into.push_back(
        {std::move(diskPath), addon::build::joinPath(place, entry.path), entry.isFolder});
  }
}

}  // namespace tool::commands::detail
