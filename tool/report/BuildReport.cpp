// SPDX-License-Identifier: MIT
#include "tool/report/BuildReport.h"

#include <fmt/format.h>

#include <algorithm>

#include "text/ByteCount.h"
#include "text/JsonWriter.h"
#include "tool/report/FindingPrinter.h"

namespace tool::report {

using addon::build::BuildEntry;
using addon::build::BuildFailure;
using addon::checks::PackageVerdict;
using addon::comparison::Totals;

namespace {

void writeSize(std::optional<std::uint64_t> size, text::JsonWriter& json) {
  json.key("size");
  size ? json.value(*size) : json.null();
}

void writeEntries(const std::vector<BuildEntry>& entries, text::JsonWriter& json, std::string& text,
                  const Sink& sink) {
  json.key("entries");
  json.beginArray();
  for (const BuildEntry& entry : entries) {
    json.beginObject();
    json.member("path", std::string_view(entry.path));
    writeSize(entry.size, json);
    json.endObject();
    sink(text);
    text.clear();
  }
  json.endArray();
}

void writeFindings(const std::optional<PackageVerdict>& verdict, text::JsonWriter& json) {
  json.key("findings");
  if (!verdict) return json.null();
  json.beginArray();
  for (std::size_t i = 0; i < verdict->findings.size(); ++i) {
    writeLocatedFinding(verdict->findings[i], verdict->placeOf(i), json);
  }
  json.endArray();
}

void writeError(const std::optional<BuildFailure>& failure, text::JsonWriter& json) {
  json.key("error");
  if (!failure) return json.null();
  json.beginObject();
  json.member("message", std::string_view(failure->message));
  writePlace(failure->place, json);
  json.key("hint");
  json.textOrNull(failure->hint);
  json.endObject();
}

}  // namespace

void writeBuildAsJson(const BuildResult& result, const Sink& sink) {
  std::string text;
  text::JsonWriter json(text);
  json.beginObject();
  json.member("schema", "kraddon.build/1");
  json.key("file");
  json.textOrNull(result.file);
  json.member("written", result.isWritten);
  writeSize(result.size, json);
  json.member("files", result.totals.files);
  json.member("folders", result.totals.folders);
  json.member("bytes", result.totals.bytes);
  json.key("digest");
  json.textOrNull(result.digest);
  writeEntries(result.entries, json, text, sink);
  writeFindings(result.verdict, json);
  writeError(result.failure, json);
  json.endObject();
  sink(text + "\n");
}

void printBuilt(const BuildResult& result, Output& output) {
  output.write(fmt::format("{}: {} ({})\n", output.shown(result.file),
                           text::describeBytes(result.size.value_or(0)),
                           describeContent(result.totals)));
}

void printBuildPlan(const BuildResult& result, Output& output) {
  std::size_t width = 1;
  for (const BuildEntry& entry : result.entries) {
    width = std::max(width, fmt::formatted_size("{}", entry.size.value_or(0)));
  }
  for (const BuildEntry& entry : result.entries) {
    const std::string size = entry.size ? fmt::format("{}", *entry.size) : "-";
    const std::string name = output.shown(entry.path);
    output.write(fmt::format("{:>{}}  {}{}\n", size, width, name, entry.size ? "" : "/"));
  }
  output.write(fmt::format("{}: {}\n", output.shown(result.file), describeContent(result.totals)));
}

std::string describeContent(const Totals& totals) {
  const std::string folders =
      totals.folders == 0 ? "" : ", " + text::counted(totals.folders, "empty folder");
  return fmt::format("{}{}, {}", text::counted(totals.files, "file"), folders,
                     text::describeBytes(totals.bytes));
}

}  // namespace tool::report
