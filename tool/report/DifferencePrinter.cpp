// SPDX-License-Identifier: MIT
#include "tool/report/DifferencePrinter.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "tool/json/DocumentJson.h"
#include "tool/report/Progress.h"

namespace tool::report {

using addon::comparison::Change;
using addon::comparison::DocumentDifference;
using addon::comparison::DocumentValue;
using addon::comparison::FieldDifference;
using addon::comparison::FieldValue;
using addon::comparison::FileDifference;
using addon::comparison::Item;
using addon::comparison::PackageDifferences;
using addon::comparison::totalsOf;

namespace {

struct ChangeWord {
  Change change;
  std::string_view word;
};
constexpr std::array kWords{
    ChangeWord{Change::Added, "added"}, ChangeWord{Change::Removed, "removed"},
    ChangeWord{Change::Changed, "changed"}, ChangeWord{Change::Moved, "moved"}};

std::string_view wordFor(Change change) {
  return kWords[static_cast<std::size_t>(change)].word;
}

void writeFields(std::string_view nameOfPath, const std::vector<FieldDifference>& fields,
                 text::JsonWriter& json) {
  json.beginArray();
  for (const FieldDifference& field : fields) {
    json.beginObject();
    json.member(nameOfPath, std::string_view(field.path));
    json.key("a");
    writeValue(field.a, json);
    json.key("b");
    writeValue(field.b, json);
    json.endObject();
  }
  json.endArray();
}

void writeSide(std::string_view name, const Item* item, const std::string& hash,
               text::JsonWriter& json) {
  json.key(name);
  if (item == nullptr) return json.null();
  json.beginObject();
  json.key("size");
  if (item->isFolder()) {
    json.null();
  } else {
    json.value(item->info.size);
  }
  json.key("sha256");
  json.textOrNull(hash);
  json.endObject();
}

void writeFile(const FileDifference& file, text::JsonWriter& json) {
  json.beginObject();
  json.member("path", std::string_view(file.path));
  json.member("change", wordFor(file.change));
  json.key("from");
  json.textOrNull(file.from);
  writeSide("a", file.a, file.aHash, json);
  writeSide("b", file.b, file.bHash, json);
  json.endObject();
}

void writeDocument(const DocumentDifference& document, text::JsonWriter& json) {
  json.beginObject();
  json.member("document", document.name);
  json.member("change", wordFor(document.change));
  json.key("fields");
  writeFields("path", document.fields, json);
  json.endObject();
}

/// "1 added, 3 changed", then how many are the same unless it is not known; "same" for no change.
template <typename List>
std::string countsOf(const List& list, std::uint64_t same = 0) {
  std::vector<std::string> counts;
  for (const auto& [change, word] : kWords) {
    const auto count = std::count_if(list.begin(), list.end(),
                                     [c = change](const auto& one) { return one.change == c; });
    if (count > 0) counts.push_back(fmt::format("{} {}", count, word));
  }
  if (same > 0) counts.push_back(fmt::format("{} same", same));
  return counts.empty() ? "same" : fmt::format("{}", fmt::join(counts, ", "));
}

}  // namespace

void writeValue(const DocumentValue& value, text::JsonWriter& json) {
  if (const auto* text = std::get_if<std::u16string>(&value)) {
    json.value(std::u16string_view(*text));
  } else if (const auto* field = std::get_if<FieldValue>(&value)) {
    json::writeField(field->record, *field->field, json);
  } else if (const auto* record = std::get_if<addon::packaging::ConstRecord>(&value)) {
    json::writeRecord(*record, json);
  } else {
    json.null();
  }
}

std::string describeSizeChange(std::uint64_t a, std::uint64_t b) {
  if (a == b) return describeBytes(a);
  const std::string before = describeBytes(a);
  const std::string after = describeBytes(b);
  if (before != after) return fmt::format("{} -> {}", before, after);
  return fmt::format("{} B -> {} B", a, b);
}

void writeDifferencesAsJson(const ComparisonReport& report, const Sink& sink) {
  std::string text;
  text::JsonWriter json(text);
  json.beginObject();
  json.member("schema", "kraddon.diff/1");
  json.member("a", std::string_view(report.a.name));
  json.member("b", std::string_view(report.b.name));
  json.member("same", report.differences.isSame());
  json.key("properties");
  writeFields("field", report.differences.properties, json);
  json.key("documents");
  json.beginArray();
  for (const auto& document : report.differences.documents) writeDocument(document, json);
  json.endArray();
  json.key("files");
  json.beginArray();
  for (const FileDifference& file : report.differences.files.list) {
    writeFile(file, json);
    sink(text);
    text.clear();
  }
  json.endArray();
  json.endObject();
  sink(text + "\n");
}

void printDifferenceCounts(const ComparisonReport& report, Output& output) {
  const PackageDifferences& differences = report.differences;
  const auto line = [&](std::string_view label, const std::string& text) {
    output.write(fmt::format("{:11} {}\n", label, text));
  };
  if (!report.isOfPathsOnly) {
    const std::size_t changed = differences.properties.size();
    line("properties", changed == 0 ? "same" : fmt::format("{} changed", changed));
    line("documents", countsOf(differences.documents));
  }
  line("files", countsOf(differences.files.list, differences.files.same));
  line("content",
       describeSizeChange(totalsOf(report.a.items).bytes, totalsOf(report.b.items).bytes));
}

}  // namespace tool::report
