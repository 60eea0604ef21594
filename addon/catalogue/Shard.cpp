// SPDX-License-Identifier: MIT
#include "addon/catalogue/Shard.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "addon/catalogue/Root.h"
#include "addon/catalogue/VersionOrder.h"
#include "text/JsonText.h"
#include "text/JsonWriter.h"

namespace addon::catalogue {

namespace {

constexpr std::string_view kStart = R"({"schema":"kraddon.shard/1","addons":{)";
constexpr std::string_view kEnd = "}}";

std::string quotedKey(std::string_view key) {
  std::string text;
  text::JsonWriter(text, text::JsonWriter::Layout::Compact).value(key);
  return text;
}

std::string unquoted(std::string_view text, std::string_view path) {
  try {
    return text::parseJson(text).get<std::string>();
  } catch (const std::exception&) {
    throw BrokenSite(path, "the name of an add-on is not a text");
  }
}

/// The lines of a shard. Every line is of one kind: the start, an add-on, a record, the end of an
/// add-on, the end.
class ShardReader {
 public:
  using VisitKey = std::function<void(std::string_view quoted)>;
  using VisitLine = std::function<void(std::string_view)>;

  ShardReader(std::string_view text, std::string_view path) : left_(text), path_(path) {}

  void read(const VisitKey& onKey, const VisitLine& onRecord) {
    if (takeLine() != kStart) refuse();
    std::string_view line = takeLine();
    while (line != kEnd) {
      if (!line.ends_with(":[") || !line.starts_with('"')) refuse();
      onKey(line.substr(0, line.size() - 2));
      readRecords(onRecord);
      line = takeLine();
    }
    if (!left_.empty()) refuse();
  }

 private:
  void readRecords(const VisitLine& onRecord) {
    for (std::string_view line = takeLine(); line != "]" && line != "],"; line = takeLine()) {
      if (line.ends_with(',')) line.remove_suffix(1);
      if (!line.starts_with('{') || !line.ends_with('}')) refuse();
      onRecord(line);
    }
  }

  std::string_view takeLine() {
    const std::size_t end = left_.find('\n');
    if (end == std::string_view::npos) refuse();
    const std::string_view line = left_.substr(0, end);
    left_.remove_prefix(end + 1);
    return line;
  }

  [[noreturn]] void refuse() const { throw BrokenSite(path_, "it is not laid out as a shard"); }

  std::string_view left_;
  std::string_view path_;
};

}  // namespace

std::size_t Shard::versions() const {
  std::size_t count = 0;
  for (const auto& [key, lines] : addons_) count += lines.size();
  return count;
}

std::vector<Record> Shard::records(const std::string& key) const {
  std::vector<Record> records;
  const auto found = addons_.find(key);
  if (found == addons_.end()) return records;
  for (const std::string& line : found->second) records.push_back(recordOf(line, path_));
  return records;
}

void Shard::setRecords(const std::string& key, std::vector<Record> records) {
  if (records.empty()) {
    addons_.erase(key);
    return;
  }
  std::sort(records.begin(), records.end(), [](const Record& a, const Record& b) {
    return compareVersions(a.version, b.version) > 0;
  });
  Lines& lines = addons_[key];
  lines.clear();
  for (const Record& record : records) lines.push_back(toLine(record));
}

std::string Shard::text() const {
  std::string text(kStart);
  std::string_view betweenAddons = "\n";
  for (const auto& [key, lines] : addons_) {
    text += betweenAddons;
    text += quotedKey(key) + ":[";
    std::string_view betweenLines = "\n";
    for (const std::string& line : lines) {
      text += betweenLines;
      text += line;
      betweenLines = ",\n";
    }
    text += "\n]";
    betweenAddons = ",\n";
  }
  text += '\n';
  text += kEnd;
  return text += '\n';
}

Shard Shard::parse(std::string_view text, std::string_view path) {
  Shard shard;
  shard.path_ = path;
  Lines* lines = nullptr;
  ShardReader(text, path)
      .read([&](std::string_view key) { lines = &shard.addons_[unquoted(key, path)]; },
            [&](std::string_view line) { lines->emplace_back(line); });
  return shard;
}

void visitLines(std::string_view text, std::string_view path,
                const std::function<void(std::string_view)>& visit) {
  ShardReader(text, path).read([](std::string_view) {}, visit);
}

Record recordOf(std::string_view line, std::string_view path) {
  try {
    return parseRecord(line);
  } catch (const text::JsonError& error) {
    throw BrokenSite(path, error.what());
  }
}

const Record* currentOf(const std::vector<Record>& records) {
  const auto found = std::find_if(records.begin(), records.end(),
                                  [](const Record& record) { return !record.isYanked; });
  return found == records.end() ? nullptr : &*found;
}

}  // namespace addon::catalogue
