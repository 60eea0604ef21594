// SPDX-License-Identifier: MIT
#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "addon/catalogue/Root.h"
#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/SiteUpdate.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "text/ByteCount.h"
#include "text/JsonWriter.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/Locks.h"
#include "tool/commands/detail/OneLine.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/Times.h"
#include "tool/commands/detail/TrustAnchors.h"
#include "tool/line/Arguments.h"
#include "tool/process/Background.h"
#include "tool/process/Errors.h"
#include "tool/process/Interrupt.h"
#include "tool/report/FindingPrinter.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"
#include "tool/report/Progress.h"

namespace tool::commands {

using addon::catalogue::Record;
using addon::catalogue::Refusal;
using addon::catalogue::UpdateRequest;
using addon::catalogue::UpdateResult;
using addon::catalogue::VersionName;

namespace {

constexpr std::array kOperands{
    line::OperandSpec{.name = "SITE", .help = "the folder of the site, which is made if missing"},
    line::OperandSpec{.name = "PACKAGE",
                      .help = "packages, and folders with packages",
                      .isRequired = false,
                      .isRepeatable = true}};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "remove",
                     .valueName = "GUID[@VERSION]",
                     .help = "remove an add-on or one version of it",
                     .isRepeatable = true},
    line::OptionSpec{.longName = "yank",
                     .valueName = "GUID@VERSION",
                     .help = "mark a version as withdrawn, without deleting it",
                     .isRepeatable = true},
    line::OptionSpec{.longName = "unyank",
                     .valueName = "GUID@VERSION",
                     .help = "undo --yank",
                     .isRepeatable = true},
    line::OptionSpec{.longName = "link", .help = "make hard links to the packages, not copies"},
    detail::kTrustOption,
    line::OptionSpec{.longName = "require-signature", .help = "refuse packages without signature"},
    line::OptionSpec{.longName = "rebuild", .help = "rebuild the site from its packages"},
    line::OptionSpec{
        .longName = "collect",
        .help = "remove files that no root has named for a day, and those of killed runs"},
    line::OptionSpec{.longName = "timestamp",
                     .valueName = "SECONDS",
                     .help = "the time of the new root, in seconds since 1970"},
    detail::kJsonOption,
    detail::kLockTimeoutOption};

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon index site *.kraddon", "adds packages to a site, which may be new"},
    line::ExampleSpec{"kraddon index site releases --link",
                      "adds all packages below a folder, without copying them"},
    line::ExampleSpec{"kraddon index site --yank 0c3a0d9e-5b7a-4a53-9c58-6f0d2f4f8a11@1.2",
                      "marks a version as not to be used"},
    line::ExampleSpec{"kraddon index site --rebuild", "repairs a site"}};

std::vector<VersionName> versionsOf(const line::Invocation& invocation, const char* option,
                                    bool needsVersion) {
  std::vector<VersionName> names;
  for (const std::string& word : invocation.values(option)) {
    const VersionName name = addon::catalogue::parseVersionName(word);
    if (name.guid.empty() || (needsVersion && name.version.empty()) || word.ends_with('@')) {
      throw process::UsageError(process::sentence(
          fmt::format("bad value of --{}", option), word,
          needsVersion ? "expected GUID@VERSION" : "expected GUID or GUID@VERSION"));
    }
    names.push_back(name);
  }
  return names;
}

struct VersionOption {
  const char* name;
  const std::vector<VersionName>& values;
};

/// Throws UsageError if two options say opposite things of one version: neither could be done.
/// Values of `first` without a version mean all versions.
void refuseContradiction(const VersionOption& first, const VersionOption& second) {
  std::map<std::pair<std::string, std::string>, const VersionName*> names;
  for (const VersionName& name : first.values) {
    names.emplace(std::pair(addon::catalogue::keyOf(name.guid), name.version), &name);
  }
  for (const VersionName& name : second.values) {
    const std::string key = addon::catalogue::keyOf(name.guid);
    auto found = names.find({key, name.version});
    if (found == names.end()) found = names.find({key, ""});
    if (found == names.end()) continue;
    throw process::UsageError(process::sentence(
        fmt::format("bad option --{}", second.name), textOf(name),
        fmt::format("it cannot be combined with --{} '{}'", first.name, textOf(*found->second))));
  }
}

void refuseContradictions(const UpdateRequest& request) {
  const VersionOption remove{"remove", request.removals};
  const VersionOption yank{"yank", request.yanks};
  const VersionOption unyank{"unyank", request.unyanks};
  refuseContradiction(remove, yank);
  refuseContradiction(remove, unyank);
  refuseContradiction(yank, unyank);
}

UpdateRequest requestOf(const line::Invocation& invocation) {
  UpdateRequest request;
  const std::vector<std::string>& operands = invocation.operands();
  request.site = operands[0];
  request.packages = {operands.begin() + 1, operands.end()};
  request.removals = versionsOf(invocation, "remove", false);
  request.yanks = versionsOf(invocation, "yank", true);
  request.unyanks = versionsOf(invocation, "unyank", true);
  request.isLinking = invocation.has("link");
  request.isRebuilding = invocation.has("rebuild");
  request.isCollecting = invocation.has("collect");
  for (const char* option : {"remove", "yank", "unyank"}) {
    invocation.refuseTogether("rebuild", option);
  }
  refuseContradictions(request);
  request.time = detail::formatTime(detail::timestampOf(invocation).value_or(std::time(nullptr)));
  return request;
}

void writeNames(const char* key, const std::vector<VersionName>& names, text::JsonWriter& json) {
  json.key(key);
  json.beginArray();
  for (const VersionName& name : names) {
    json.beginObject();
    json.member("guid", std::string_view(name.guid));
    json.member("version", std::string_view(name.version));
    json.endObject();
  }
  json.endArray();
}

void writeRefusal(const Refusal& refusal, text::JsonWriter& json) {
  json.beginObject();
  json.member("file", std::string_view(opc::printable(refusal.verdict.file)));
  json.member("reason", std::string_view(refusal.reason));
  json.key("findings");
  json.beginArray();
  for (const auto& finding : refusal.verdict.findings) report::writeFinding(finding, json);
  json.endArray();
  json.endObject();
}

void writeJson(const std::string& site, const UpdateResult& result, report::Output& output) {
  std::string text;
  text::JsonWriter json(text);
  const auto flush = [&] {
    output.write(text);
    text.clear();
  };
  json.beginObject();
  json.member("schema", "kraddon.index-result/1");
  json.member("site", std::string_view(opc::printable(site)));
  json.member("sequence", result.sequence);
  json.key("added");
  json.beginArray();
  result.added->visit([&](const Record& record) {
    addon::catalogue::writeRecord(record, json);
    flush();
  });
  json.endArray();
  json.key("refused");
  json.beginArray();
  for (const Refusal& refusal : result.refused) {
    writeRefusal(refusal, json);
    flush();
  }
  json.endArray();
  writeNames("removed", result.removed, json);
  writeNames("yanked", result.yanked, json);
  writeNames("unyanked", result.unyanked, json);
  json.member("collected", result.collected);
  json.member("addons", result.addons);
  json.member("versions", result.versions);
  json.endObject();
  text += '\n';
  flush();
}

void writeText(const UpdateResult& result, report::Output& output) {
  const auto writeLine = [&](const std::string& text) {
    output.write(output.shown(detail::inOneLine(text)) + "\n");
  };
  result.added->visit([&](const Record& record) {
    writeLine(fmt::format("added: {} {}", record.name, record.version));
  });
  const auto list = [&](const char* verb, const std::vector<VersionName>& names) {
    for (const VersionName& name : names) {
      writeLine(fmt::format("{}: {}@{}", verb, name.guid, name.version));
    }
  };
  list("removed", result.removed);
  list("yanked", result.yanked);
  list("unyanked", result.unyanked);
  if (result.collected != 0) {
    output.write(fmt::format("collected: {}\n", text::counted(result.collected, "file")));
  }
  output.write(fmt::format("{}, {}, sequence {}{}\n", text::counted(result.addons, "add-on"),
                           text::counted(result.versions, "version"), result.sequence,
                           result.isChanged ? "" : ", unchanged"));
}

void printRefusals(const std::vector<Refusal>& refused, const line::Invocation& invocation) {
  for (const Refusal& refusal : refused) {
    const std::string& file = refusal.verdict.file;
    // A failure of the system names the file itself.
    const bool isNamed = refusal.reason.find("'" + opc::printable(file) + "'") != std::string::npos;
    report::printError(
        "index", isNamed ? refusal.reason : process::sentence("cannot add", file, refusal.reason));
    if (!invocation.settings().isQuiet && !refusal.verdict.findings.empty()) {
      report::printToStandardError(report::describeFindings(
          refusal.verdict, report::wantsErrorColor(invocation.settings())));
    }
  }
}

/// Without packages, there must be a site.
[[noreturn]] void failWithoutSite(const std::string& site) {
  throw process::Failure(process::sentence("cannot find site", site, "name packages to create it"));
}

UpdateResult update(UpdateRequest& request, const line::Invocation& invocation) {
  const auto anchors = detail::trustAnchorsOf(invocation);
  request.demands = {anchors.get(), invocation.has("require-signature")};
  if (request.packages.empty() && ::access(request.site.c_str(), F_OK) != 0 && errno == ENOENT) {
    failWithoutSite(request.site);
  }
  addon::catalogue::prepareSite(request.site);
  const process::PackageLock lock = detail::lockSite(request.site, invocation);
  report::ProgressBar bar(invocation.settings());
  request.progress = bar.function();
  request.stop = process::Interrupt::check;
  request.starter = process::secondThread();
  request.onCommitted = process::Interrupt::ignoreFromNowOn;
  try {
    return addon::catalogue::updateSite(request);
  } catch (const addon::catalogue::BrokenSite& error) {
    throw process::Failure(error.what(), "'kraddon index --rebuild' rebuilds it from its packages");
  }
}

process::ExitCode run(const line::Invocation& invocation) {
  UpdateRequest request = requestOf(invocation);
  const UpdateResult result = update(request, invocation);
  if (request.packages.empty() && result.sequence == 0) failWithoutSite(request.site);
  for (const std::string& lost : result.lost) report::printWarning(invocation, lost);
  if (!result.lost.empty()) {
    report::printWarning(invocation,
                         "what could not be read is lost: which versions were yanked or removed");
  }
  printRefusals(result.refused, invocation);
  report::Output output;
  if (invocation.has("json")) {
    writeJson(request.site, result, output);
  } else if (!invocation.settings().isQuiet) {
    writeText(result, output);
  }
  output.flush();
  return result.refused.empty() ? process::ExitCode::Done : process::ExitCode::Failed;
}

}  // namespace

constexpr line::CommandSpec kIndexCommand{
    .name = "index",
    .summary = "makes a site of many packages, or changes it",
    .description =
        "Verifies packages and adds them to SITE, a folder that any web server can serve. It holds "
        "the packages, a page for each version, a list of all add-ons, and records for other "
        "programs. Of a folder, all files whose names end in .kraddon are added. Refused are "
        "packages with an error, packages whose GUID and version the site already has with other "
        "content, and packages of one run that share GUID and version. Refusals are reported, the "
        "other packages are added, and the exit code is 1. A package that the site already has is "
        "skipped.\n"
        "\n"
        "A yanked version stays in the site, but is not listed, found, or counted as the newest. "
        "Removed versions are no longer listed; --collect deletes their files after a day. "
        "--rebuild recreates lost or damaged files from the packages.\n"
        "\n"
        "Readers see the site as it was before a change or after it, never in between, even if the "
        "command fails. A package may be at most 2 GB large, unpack to at most 16 GB, and have at "
        "most 200,000 entries; its record may have at most 256 kB of JSON.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
