// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "addon/build/Selection.h"
#include "addon/comparison/FileHashes.h"
#include "text/JsonWriter.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageOpening.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/Times.h"
#include "tool/line/Arguments.h"
#include "tool/process/Background.h"
#include "tool/process/Errors.h"
#include "tool/report/Messages.h"
#include "tool/report/Output.h"
#include "tool/report/Progress.h"

namespace tool::commands {

using addon::comparison::Item;
using addon::comparison::readParts;
using addon::comparison::readTree;
using addon::comparison::Totals;
using addon::packaging::AddonPackage;

namespace {

constexpr std::array kOperands{detail::kPackageOperand, detail::kAllPathsOperand};

constexpr std::array kOptions{
    line::OptionSpec{.longName = "long",
                     .shortName = 'l',
                     .help = "also show size, packed size, ratio and time"},
    line::OptionSpec{.longName = "tree", .help = "draw a tree"},
    line::OptionSpec{.longName = "null",
                     .shortName = '0',
                     .help = "end each path with NUL instead of a newline"},
    line::OptionSpec{.longName = "hash", .help = "also show the SHA-256 of each file"},
    line::OptionSpec{.longName = "all",
                     .help = "list every part of the package instead of the file tree"},
    detail::kGlobOption,
    detail::kJsonOption};

/// The items to list, with the requested information.
struct Listing {
  std::vector<Item> items;
  std::vector<std::string> hashes;  ///< of the items, "" for folders; none without --hash
};

void checkOptions(const line::Invocation& invocation) {
  invocation.refuseTogether("tree", "json");
  invocation.refuseTogether("tree", "null");
  invocation.refuseTogether("tree", "long");
  invocation.refuseTogether("tree", "hash");
  invocation.refuseTogether("null", "json");
  invocation.refuseTogether("null", "long");
}

Listing readListing(AddonPackage& package, const line::Invocation& invocation) {
  const std::vector<std::string> paths(invocation.operands().begin() + 1,
                                       invocation.operands().end());
  Listing listing{invocation.has("all") ? readParts(package) : readTree(package), {}};
  listing.items = addon::build::choose(std::move(listing.items), paths, invocation.has("glob"));
  if (invocation.has("hash")) {
    report::ProgressBar bar(invocation.settings());
    listing.hashes = addon::comparison::hashFiles(package, listing.items, bar.function(),
                                                  process::secondThread());
  }
  return listing;
}

std::string share(const opc::model::PartInfo& info) {
  if (info.size == 0) return "-";
  const double part = static_cast<double>(info.packedSize) / static_cast<double>(info.size);
  return fmt::format("{:.0f}%", part * 100);
}

class TextPrinter {
 public:
  TextPrinter(const line::Invocation& invocation, report::Output& output)
      : isLong_(invocation.has("long")),
        hasHash_(invocation.has("hash")),
        hasNull_(invocation.has("null")),
        output_(output) {}

  void print(const Listing& listing) {
    for (const Item& item : listing.items) {
      sizeWidth_ = std::max(sizeWidth_, fmt::formatted_size("{}", item.info.size));
      packedWidth_ = std::max(packedWidth_, fmt::formatted_size("{}", item.info.packedSize));
    }
    for (std::size_t i = 0; i < listing.items.size(); ++i) {
      printRow(listing.items[i], hasHash_ ? listing.hashes[i] : std::string());
    }
  }

 private:
  void printRow(const Item& item, const std::string& hash) {
    if (isLong_) printNumbers(item);
    if (hasHash_) output_.write(fmt::format("{:64}  ", hash.empty() ? "-" : hash));
    output_.write(hasNull_ ? item.path : output_.shown(item.path));
    output_.write(hasNull_ ? std::string_view("\0", 1) : std::string_view("\n"));
  }

  void printNumbers(const Item& item) {
    if (item.isFolder()) {
      output_.write(fmt::format("{:>{}}  {:>{}}  {:>4}  {:20}  ", "-", sizeWidth_, "-",
                                packedWidth_, "-", "-"));
      return;
    }
    output_.write(fmt::format("{:>{}}  {:>{}}  {:>4}  {}  ", item.info.size, sizeWidth_,
                              item.info.packedSize, packedWidth_, share(item.info),
                              detail::formatTime(item.info.modified)));
  }

  bool isLong_;
  bool hasHash_;
  bool hasNull_;
  report::Output& output_;
  std::size_t sizeWidth_ = 1;
  std::size_t packedWidth_ = 1;
};

std::vector<std::string_view> splitPath(std::string_view path) {
  if (path.starts_with('/')) path.remove_prefix(1);
  std::vector<std::string_view> names;
  while (true) {
    const std::size_t slash = path.find('/');
    names.push_back(path.substr(0, slash));
    if (slash == std::string_view::npos) return names;
    path.remove_prefix(slash + 1);
  }
}

/// Prints each name once, indented by two blanks for each folder above it, folders with a '/'.
void printTree(const std::vector<Item>& items, bool isColored, report::Output& output) {
  std::vector<std::string_view> above;
  for (const Item& item : items) {
    const std::vector<std::string_view> names = splitPath(item.path);
    std::size_t same = 0;
    while (same + 1 < names.size() && same < above.size() && names[same] == above[same]) ++same;
    for (std::size_t i = same; i < names.size(); ++i) {
      const bool isFolder = i + 1 < names.size() || item.isFolder();
      const std::string name = output.shown(names[i]);
      const std::string shown = !isFolder   ? name
                                : isColored ? fmt::format("\x1b[1;34m{}\x1b[0m/", name)
                                            : name + "/";
      output.write(fmt::format("{:{}}{}\n", "", i * 2, shown));
    }
    above.assign(names.begin(), names.end() - 1);
  }
}

void writeDetails(const Item& item, text::JsonWriter& json) {
  if (item.isFolder()) {
    for (const char* name : {"size", "packed", "method", "crc", "time"}) {
      json.key(name);
      json.null();
    }
    return;
  }
  json.member("size", item.info.size);
  json.member("packed", item.info.packedSize);
  json.member("method", item.info.compressed ? "deflate" : "store");
  json.member("crc", std::string_view(fmt::format("{:08x}", item.info.crc)));
  json.member("time", std::string_view(detail::formatTime(item.info.modified)));
}

void printJson(const Listing& listing, const Totals& totals, const line::Invocation& invocation,
               report::Output& output) {
  std::string text;
  text::JsonWriter json(text);
  json.beginObject();
  json.member("schema", "kraddon.list/1");
  json.key("entries");
  json.beginArray();
  for (std::size_t i = 0; i < listing.items.size(); ++i) {
    const Item& item = listing.items[i];
    json.beginObject();
    json.member("path", std::string_view(item.path));
    json.member("kind", item.isFolder() ? "folder" : "file");
    if (invocation.has("long")) writeDetails(item, json);
    if (invocation.has("hash")) {
      json.key("sha256");
      json.textOrNull(listing.hashes[i]);
    }
    json.endObject();
    output.write(text);
    text.clear();
  }
  json.endArray();
  json.member("files", totals.files);
  json.member("folders", totals.folders);
  json.member("bytes", totals.bytes);
  json.member("packed", totals.packed);
  json.endObject();
  output.write(text + "\n");
}

void warnOfUnreadable(AddonPackage& package, const line::Invocation& invocation) {
  if (invocation.settings().isQuiet) return;
  for (const auto& file : package.fileSystem().unreadable())
    report::printWarning(invocation, file.line);
}

/// Whether only the paths of everything are requested: then nothing else is collected.
bool isPlain(const line::Invocation& invocation) {
  constexpr std::array kGathering{"long", "tree", "hash", "all", "json"};
  return invocation.operands().size() == 1 &&
         std::none_of(kGathering.begin(), kGathering.end(),
                      [&](const char* option) { return invocation.has(option); });
}

void printPaths(AddonPackage& package, bool hasNull, report::Output& output) {
  package.fileSystem().visitFiles([&](std::string_view path, const auto&) {
    output.write(hasNull || !output.isTerminal() ? path : output.shown(path));
    output.write(hasNull ? std::string_view("\0", 1) : std::string_view("\n"));
  });
}

void printListing(const Listing& listing, const line::Invocation& invocation,
                  report::Output& output) {
  if (invocation.has("json")) {
    Totals totals;
    for (const Item& item : listing.items) totals.add(item);
    printJson(listing, totals, invocation, output);
  } else if (invocation.has("tree")) {
    printTree(listing.items, report::wantsColor(invocation.settings(), output), output);
  } else {
    TextPrinter(invocation, output).print(listing);
  }
}

process::ExitCode run(const line::Invocation& invocation) {
  checkOptions(invocation);

  const std::unique_ptr<AddonPackage> package = detail::openForReading(invocation.operands()[0]);
  report::Output output;
  if (isPlain(invocation)) {
    printPaths(*package, invocation.has("null"), output);
  } else {
    printListing(readListing(*package, invocation), invocation, output);
  }
  output.flush();
  if (!invocation.has("all")) {
    detail::warnIfNotAddon(*package, invocation.operands()[0], invocation);
  }
  warnOfUnreadable(*package, invocation);
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon list kit.kraddon -l", "also shows sizes and times"},
    line::ExampleSpec{"kraddon list kit.kraddon --glob '*.m' '!test*.m'",
                      "lists all sources except the tests"},
    line::ExampleSpec{"kraddon list kit.kraddon -0 | xargs -0 -n 1 echo",
                      "passes on each path unchanged"}};

}  // namespace

constexpr line::CommandSpec kListCommand{
    .name = "list",
    .summary = "lists files and empty folders, one path per line",
    .description =
        "Paths are in the order of the host's file list. A PATH that matches nothing is an error. "
        "On a terminal, unusual characters in a path are escaped; -0 prints every path as it is.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
