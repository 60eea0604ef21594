// SPDX-License-Identifier: MIT
// The files of a site, and what 'index' and 'search' print with --json.
#include <variant>

#include "addon/catalogue/Record.h"
#include "tool/json/JsonSchema.h"
#include "tool/report/Schemas.h"

namespace tool::report {

using addon::catalogue::OptionalText;
using addon::catalogue::Record;
using addon::catalogue::RecordField;
using addon::catalogue::Requirement;
using namespace json::schema;
namespace schema = json::schema;

namespace {

constexpr std::string_view kShardName = "^[0-9a-f]{2}$";
constexpr std::string_view kGuid = "What identifies the add-on.";

JsonValue requirement() {
  std::vector<Member> members;
  for (const auto& field : addon::catalogue::requirementFields()) {
    const bool isKind = field.text == &Requirement::kind;
    members.push_back({field.name, isKind ? words({"product", "supportPackage"}) : text()});
  }
  return object("Requirement", "What an add-on needs.", members);
}

/// Those of a form of their own; null for others.
JsonValue formOf(std::string Record::*member) {
  if (member == &Record::sha256) return schema::sha256();
  if (member == &Record::digest) return schema::digest();
  if (member == &Record::package) return matching("^packages/[0-9a-f]{64}\\.kraddon$");
  if (member == &Record::page)
    return matching("^pages/[0-9A-Za-z._-]+/[0-9A-Za-z._-]+/index\\.html$");
  if (member == &Record::created || member == &Record::modified) {
    return {{"oneOf", JsonValue::array({schema::time(), constant("")})}};
  }
  return text();
}

struct MemberSchema {
  JsonValue operator()(std::string Record::*member) const { return formOf(member); }
  JsonValue operator()(OptionalText /*member*/) const { return orNull(matching("^pages/")); }
  JsonValue operator()(std::uint64_t Record::* /*member*/) const { return number(); }
  JsonValue operator()(bool Record::* /*member*/) const { return flag(); }
  JsonValue operator()(std::vector<std::string> Record::* /*member*/) const {
    return list(schema::sha256());
  }
  JsonValue operator()(std::vector<Requirement> Record::* /*member*/) const {
    return list(requirement());
  }
};

/// A file that is named by its hash, with what else is said of it.
JsonValue reference(std::string_view title, std::string_view folder,
                    const std::vector<Member>& others = {}) {
  std::vector<Member> members{
      {"path", described(matching("^" + std::string(folder) + "/[0-9a-f]{64}\\.json$"),
                         "Where it is in the site.")},
      {"sha256", described(schema::sha256(), "Of the file.")},
      {"size", described(number(), "In bytes.")}};
  members.insert(members.end(), others.begin(), others.end());
  return object(title, "A file of the site.", members);
}

JsonValue versionName() {
  return object("Version", "A version of an add-on.",
                {{"guid", described(text(), kGuid)}, {"version", text()}});
}

}  // namespace

JsonValue recordSchema() {
  std::vector<Member> members;
  for (const RecordField& field : addon::catalogue::recordFields()) {
    members.push_back(
        {field.name, described(std::visit(MemberSchema(), field.member), field.help)});
  }
  members.push_back(
      {"sequence", described(number(), "Of the root; only in the first line of 'records.ndjson'."),
       false});
  return openObject("Record of a site", "What a site says of a version of an add-on.", members);
}

JsonValue rootSchema() {
  return object(
      "Root of a site", "The file 'root.json', which names everything else.",
      {schema::shape("kraddon.root/1"),
       {"sequence", described(number(), "Begins with 1 and grows by one with each change.")},
       {"created", described(schema::time(), "When the site was changed, in UTC.")},
       {"index", described(reference("Index", "index"), "The current index.")},
       {"shards", map("Shards", "The hash of each shard.", kShardName, schema::sha256())},
       {"addons", described(number(), "How many add-ons there are.")},
       {"versions", described(number(), "How many versions of them there are.")}});
}

JsonValue indexSchema() {
  const JsonValue shard =
      reference("Shard", "shards", {{"addons", described(number(), "How many add-ons it holds.")}});
  return object(
      "Index of a site", "A file of 'index/', which names the shards.",
      {schema::shape("kraddon.index/1"),
       {"shards", map("Shards", "The shards, by two digits of a hash.", kShardName, shard)}});
}

JsonValue shardSchema() {
  JsonValue versions = list(recordSchema());
  versions["minItems"] = 1;
  return object("Shard of a site", "A file of 'shards/', with all versions of some add-ons.",
                {schema::shape("kraddon.shard/1"),
                 {"addons", map("Add-ons",
                                "The records of each add-on, by its GUID in lower case, the newest "
                                "version first.",
                                "^[^A-Z]*$", versions)}});
}

JsonValue indexResultSchema() {
  const JsonValue refused =
      object("Refusal", "A package that was not added.",
             {{"file", described(text(), "The package, as it was given or found.")},
              {"reason", described(schema::filledText(), "Why it was not added.")},
              {"findings", described(list(findingSchema()), "What 'verify' says of it.")}});
  const JsonValue versions = list(versionName());
  return object("Output of 'index --json'", "What was changed in a site.",
                {schema::shape("kraddon.index-result/1"),
                 {"site", described(text(), "The folder of the site, as it was given.")},
                 {"sequence", described(number(), "Of the site now.")},
                 {"added", described(list(recordSchema()), "The versions that were added.")},
                 {"refused", described(list(refused), "The packages that were not.")},
                 {"removed", described(versions, "The versions that were removed.")},
                 {"yanked", described(versions, "Those that were yanked.")},
                 {"unyanked", described(versions, "Those that are no longer yanked.")},
                 {"collected", described(number(), "How many files --collect removed.")},
                 {"addons", described(number(), "How many add-ons there are now.")},
                 {"versions", described(number(), "How many versions of them there are now.")}});
}

JsonValue searchSchema() {
  return object("Output of 'search --json'", "The add-ons that have all words.",
                {schema::shape("kraddon.search/1"),
                 {"results", described(list(recordSchema()),
                                       "The newest version of each that is not yanked, the best "
                                       "first.")}});
}

}  // namespace tool::report
