// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "addon/packaging/DocumentRemoval.h"
#include "text/Suggest.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageChange.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/WriteOptions.h"
#include "tool/json/Documents.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"

namespace tool::commands {

using addon::packaging::AddonPackage;

using addon::packaging::DocumentTable;

namespace {

std::vector<std::string> removableNames();

constexpr std::array kOperands{
    detail::kPackageOperand,
    line::OperandSpec{.name = "DOCUMENT", .isRepeatable = true, .choices = removableNames}};

constexpr std::array kOptions{detail::kNoVerifyOption, detail::kTimestampOption,
                              detail::kLevelOption, detail::kLockTimeoutOption};

constexpr std::string_view kScreenshot = "screenshot";
constexpr std::string_view kProperties = "properties";

/// Something that can be removed: a document or, without a table, the screenshot.
struct Removal {
  std::string_view name;
  const DocumentTable* table;

  /// Returns false if the package has none.
  bool remove(AddonPackage& package) const {
    auto& model = package.logicalPackage();
    return table == nullptr ? addon::packaging::removeScreenshot(model)
                            : addon::packaging::removeDocument(model, *table->make().part);
  }
};

std::vector<Removal> removals() {
  std::vector<Removal> all;
  for (const DocumentTable* table : addon::packaging::documents()) {
    if (table->name() != kProperties) all.push_back({table->name(), table});
  }
  all.push_back({kScreenshot, nullptr});
  return all;
}

std::vector<std::string> removableNames() {
  std::vector<std::string> names;
  for (const Removal& removal : removals()) names.emplace_back(removal.name);
  return names;
}

Removal findRemoval(std::string_view name) {
  if (name == kProperties) {
    throw process::UsageError(
        process::sentence("cannot remove", name, "a package always has them"));
  }
  std::vector<std::string_view> names;
  for (const Removal& removal : removals()) {
    if (removal.name == name) return removal;
    names.push_back(removal.name);
  }
  const std::string all = fmt::format("the documents are {}", fmt::join(names, ", "));
  throw process::UsageError(
      process::sentence("unknown document", name, text::suggestion(name, names, all)));
}

/// Each name once.
std::vector<Removal> chosenBy(const line::Invocation& invocation) {
  std::vector<Removal> chosen;
  const auto& operands = invocation.operands();
  for (auto name = operands.begin() + 1; name != operands.end(); ++name) {
    const Removal found = findRemoval(*name);
    const bool isRepeated = std::any_of(chosen.begin(), chosen.end(), [&](const Removal& other) {
      return other.name == found.name;
    });
    if (!isRepeated) chosen.push_back(found);
  }
  return chosen;
}

process::ExitCode run(const line::Invocation& invocation) {
  const std::vector<Removal> chosen = chosenBy(invocation);
  auto options = detail::writeOptionsOf(invocation);
  const auto remove = [&](AddonPackage& package) {
    for (const Removal& removal : chosen) {
      if (removal.remove(package)) continue;
      throw process::Failure(
          process::sentence("cannot remove", removal.name, "the package has none"));
    }
  };
  detail::changePackage(invocation.operands()[0], std::move(options), invocation, remove,
                        detail::strictReviewOf(invocation));
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon unset kit.kraddon license", "removes the license"},
    line::ExampleSpec{"kraddon unset kit.kraddon examples screenshot",
                      "removes the examples and the screenshot"}};

}  // namespace

constexpr line::CommandSpec kUnsetCommand{
    .name = "unset",
    .summary = "removes documents or the screenshot",
    .description =
        "Removing the screenshot also removes the thumbnail that shows it. A relationship that "
        "uses an id reserved for the screenshot gets another id. The properties cannot be removed. "
        "Nothing is changed if one of the documents does not exist, or if 'verify' would find a "
        "new error in the package, unless --no-verify is given; new warnings are printed.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
