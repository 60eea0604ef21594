// SPDX-License-Identifier: MIT
#include "addon/catalogue/Root.h"

#include <nlohmann/json.hpp>
#include <optional>

#include "addon/catalogue/SitePaths.h"
#include "text/JsonText.h"
#include "text/JsonWriter.h"

namespace addon::catalogue {

using text::JsonValue;
using text::JsonWriter;

namespace {

constexpr const char* kRootSchema = "kraddon.root/1";
constexpr const char* kIndexSchema = "kraddon.index/1";

void writeReference(const FileReference& file, JsonWriter& json) {
  json.member("path", std::string_view(file.path));
  json.member("sha256", std::string_view(file.sha256));
  json.member("size", file.size);
}

/// Parses and checks a file, whose faults are those of the site.
template <typename Read>
auto readFile(std::string_view text, std::string_view path, const char* schema, const Read& read) {
  try {
    const JsonValue value = text::parseJson(text);
    if (value.at("schema") != schema) throw BrokenSite(path, "its schema is not known");
    return read(value);
  } catch (const text::JsonError& error) {
    throw BrokenSite(path, error.what());
  } catch (const nlohmann::json::exception&) {
    throw BrokenSite(path, "a member is missing or of another kind");
  }
}

std::uint64_t numberOf(const JsonValue& object, const std::string& name) {
  const std::optional<std::uint64_t> number = text::wholeNumber(object.at(name));
  if (!number) throw text::JsonError("the member '" + name + "' is not a whole number");
  return *number;
}

FileReference referenceOf(const JsonValue& value, std::string_view folder, std::string_view from) {
  FileReference file{value.at("path").get<std::string>(), value.at("sha256").get<std::string>(),
                     numberOf(value, "size")};
  // A path that leads elsewhere would be read all the same.
  if (!isHashedPath(file.path, folder, file.sha256, kJsonExtension)) {
    throw BrokenSite(from, "it names a file that is not of the site");
  }
  return file;
}

}  // namespace

BrokenSite::BrokenSite(std::string_view path, std::string_view why)
    : Exception(opc::ErrorCode::Damaged, opc::sentence("cannot read", path, why)) {}

std::string Root::text(const ShardIndex& shards) const {
  std::string text;
  JsonWriter json(text);
  json.beginObject();
  json.member("schema", kRootSchema);
  json.member("sequence", sequence);
  json.member("created", std::string_view(created));
  json.key("index");
  json.beginObject();
  writeReference(index, json);
  json.endObject();
  json.key("shards");
  json.beginObject();
  for (const auto& [name, shard] : shards.shards) {
    json.member(name, std::string_view(shard.file.sha256));
  }
  json.endObject();
  json.member("addons", addons);
  json.member("versions", versions);
  json.endObject();
  return text += '\n';
}

Root Root::parse(std::string_view text) {
  return readFile(text, kRootFile, kRootSchema, [](const JsonValue& value) {
    Root root;
    root.sequence = numberOf(value, "sequence");
    root.created = value.at("created").get<std::string>();
    root.index = referenceOf(value.at("index"), kIndexFolder, kRootFile);
    root.addons = numberOf(value, "addons");
    root.versions = numberOf(value, "versions");
    return root;
  });
}

std::string ShardIndex::text() const {
  std::string text;
  JsonWriter json(text);
  json.beginObject();
  json.member("schema", kIndexSchema);
  json.key("shards");
  json.beginObject();
  for (const auto& [name, shard] : shards) {
    json.key(name);
    json.beginObject();
    writeReference(shard.file, json);
    json.member("addons", shard.addons);
    json.endObject();
  }
  json.endObject();
  json.endObject();
  return text += '\n';
}

ShardIndex ShardIndex::parse(std::string_view text, std::string_view path) {
  return readFile(text, path, kIndexSchema, [&](const JsonValue& value) {
    ShardIndex index;
    for (const auto& [name, shard] : value.at("shards").items()) {
      index.shards[name] = {referenceOf(shard, kShardFolder, path), numberOf(shard, "addons")};
    }
    return index;
  });
}

}  // namespace addon::catalogue
