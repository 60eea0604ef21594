// SPDX-License-Identifier: MIT
#include "tool/commands/detail/SourceFinder.h"

#include <fmt/format.h>

#include <iterator>
#include <utility>

#include "opc/Text.h"
#include "tool/process/Interrupt.h"
#include "tool/report/Messages.h"

namespace tool::commands::detail {

using addon::build::SourceChoice;
using addon::build::SourceFile;

namespace {

SourceChoice choiceOf(const line::Invocation& invocation) {
  SourceChoice choice;
  choice.excludes = invocation.values("exclude");
  choice.leavesOutUsual = invocation.has("default-excludes");
  choice.followsOutside = invocation.has("follow");
  choice.package = invocation.operands()[0];
  choice.stop = process::Interrupt::check;
  if (invocation.settings().isVerbose) {
    choice.onLeftOut = [](const std::string& path) {
      report::printToStandardError(fmt::format("left out: {}\n", opc::printable(path)));
    };
  }
  return choice;
}

}  // namespace

SourceFinder::SourceFinder(const line::Invocation& invocation)
    : choice_(choiceOf(invocation)),
      patterns_(addon::build::patternsOf(choice_, {}, {})),
      package_(opc::identityOf(choice_.package)) {}

bool SourceFinder::leavesOut(const std::string& path, bool isFolder) const {
  if (!patterns_.excludes(path, isFolder)) return false;
  if (choice_.onLeftOut) choice_.onLeftOut(path);
  return true;
}

bool SourceFinder::isPackage(const std::string& diskPath) const {
  return package_ && opc::identityOf(diskPath) == package_;
}

void SourceFinder::collect(const std::string& folder, const std::string& place,
                           std::vector<SourceFile>& into) const {
  std::vector<SourceFile> found = addon::build::sourcesBelow(folder, place, choice_);
  into.insert(into.end(), std::make_move_iterator(found.begin()),
              std::make_move_iterator(found.end()));
}

}  // namespace tool::commands::detail
