// SPDX-License-Identifier: MIT
#include "tool/BuildReport.h"

#include <fmt/format.h>

#include <algorithm>

#include "opc/ByteCount.h"
#include "tool/FindingPrinter.h"
#include "tool/JsonWriter.h"

namespace tool {

namespace {

void writeSize(std::optional<std::uint64_t> size, JsonWriter& json) {
  json.key("size");
  size ? json.value(*size) : json.null();
}

void writeEntries(const std::vector<Item>& items, JsonWriter& json, std::string& text,
                  Output& output) {
  json.key("entries");
  json.beginArray();
  for (const Item& item : items) {
    json.beginObject();
    json.member("path", std::string_view(item.path));
    writeSize(item.isFolder() ? std::nullopt : std::optional(item.info.size), json);
    json.endObject();
    output.write(text);
    text.clear();
  }
  json.endArray();
}

void writeFindings(const std::optional<PackageVerdict>& verdict, JsonWriter& json) {
  json.key("findings");
  if (!verdict) return json.null();
  json.beginArray();
  for (const auto& finding : verdict->findings) writeFinding(finding, json);
  json.endArray();
}

std::string counted(std::uint64_t count, std::string_view what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

}  // namespace

void printBuildAsJson(const BuildResult& result, Output& output) {
  const Totals totals = totalsOf(result.items);
  std::string text;
  JsonWriter json(text);
  json.beginObject();
  json.member("schema", "kraddon.build/1");
  json.member("file", std::string_view(result.file));
  json.member("written", result.isWritten);
  writeSize(result.size, json);
  json.member("files", totals.files);
  json.member("folders", totals.folders);
  json.member("bytes", totals.bytes);
  json.key("digest");
  json.textOrNull(result.digest);
  writeEntries(result.items, json, text, output);
  writeFindings(result.verdict, json);
  json.endObject();
  output.write(text + "\n");
}

void printBuildPlan(const BuildResult& result, Output& output) {
  std::size_t width = 1;
  for (const Item& item : result.items) {
    width = std::max(width, fmt::formatted_size("{}", item.info.size));
  }
  for (const Item& item : result.items) {
    const std::string size = item.isFolder() ? "-" : fmt::format("{}", item.info.size);
    const std::string name = output.shown(item.path);
    output.write(fmt::format("{:>{}}  {}{}\n", size, width, name, item.isFolder() ? "/" : ""));
  }
  output.write(fmt::format("{}: {}\n", output.shown(result.file), describeContent(result.items)));
}

std::string describeContent(const std::vector<Item>& items) {
  const Totals totals = totalsOf(items);
  const std::string folders =
      totals.folders == 0 ? "" : ", " + counted(totals.folders, "empty folder");
  return fmt::format("{}{}, {}", counted(totals.files, "file"), folders,
                     opc::describeBytes(totals.bytes));
}

}  // namespace tool
