// SPDX-License-Identifier: MIT
// What the commands print with --json.
#include "tool/json/JsonSchema.h"
#include "tool/report/Schemas.h"

namespace tool::report {

using namespace json::schema;
namespace schema = json::schema;

namespace {

JsonValue textOrNull() {
  return {{"type", {"string", "null"}}, {"minLength", 1}};
}

/// Of the members of an object: which schema each of them has when a member has some value.
JsonValue when(std::string_view name, std::string_view value, const JsonValue& then) {
  const std::string key(name);
  return {{"if", {{"properties", {{key, constant(value)}}}}}, {"then", {{"properties", then}}}};
}

JsonValue entry() {
  const std::vector<Member> details{
      {"size", described(orNull(number()), "Unpacked, in bytes; with -l."), false},
      {"packed", described(orNull(number()), "As it lies in the package; with -l."), false},
      {"method",
       {{"description", "How it is packed; with -l."}, {"enum", {"deflate", "store", nullptr}}},
       false},
      {"crc", described(orNull(matching("^[0-9a-f]{8}$")), "The CRC-32 of the content; with -l."),
       false},
      {"time", described(orNull(schema::time()), "When it was last changed, in UTC; with -l."),
       false}};
  std::vector<Member> members{
      {"path", described(filledText(),
                         "The path in the package; of a part its name, which begins with '/'.")},
      {"kind", described(words({"file", "folder"}), "A folder is listed only when it is empty.")}};
  members.insert(members.end(), details.begin(), details.end());
  members.push_back(
      {"sha256", described(orNull(schema::sha256()), "The SHA-256 of the content; with --hash."),
       false});
  JsonValue result =
      object("Entry", "What -l adds comes together; all of it is null for a folder.", members);
  JsonValue ofFolder = JsonValue::object();
  JsonValue ofFile = JsonValue::object();
  for (const Member& member : members) {
    if (member.isRequired) continue;
    ofFolder[member.name] = {{"type", "null"}};
    ofFile[member.name] = {{"not", {{"type", "null"}}}};
  }
  for (const Member& detail : details) {
    JsonValue others = JsonValue::array();
    for (const Member& other : details) {
      if (other.name != detail.name) others.push_back(other.name);
    }
    result["dependentRequired"][detail.name] = others;
  }
  result["allOf"] = {when("kind", "folder", ofFolder), when("kind", "file", ofFile)};
  return result;
}

JsonValue side() {
  return orNull(
      object("Side", "A file as one of the two has it; both members are null for an empty folder.",
             {{"size", described(orNull(number()), "Unpacked, in bytes.")},
              {"sha256", described(orNull(schema::sha256()), "Of the content.")}}));
}

JsonValue changedFile() {
  JsonValue result =
      object("File", "A file or an empty folder that is not the same in both.",
             {{"path", described(filledText(),
                                 "The path in the package; a folder's ends with '/'. "
                                 "Of what moved the new one.")},
              {"change", described(words({"added", "removed", "changed", "moved"}),
                                   "Moved: the same content at another path.")},
              {"from", described(orNull(text()), "The old path of what moved, else null.")},
              {"a", described(side(), "Null when it was added.")},
              {"b", described(side(), "Null when it was removed.")}});
  const auto typed = [](std::string_view change, const char* from, const char* a, const char* b) {
    return when("change", change,
                {{"from", {{"type", from}}}, {"a", {{"type", a}}}, {"b", {{"type", b}}}});
  };
  result["allOf"] = {
      typed("added", "null", "null", "object"), typed("removed", "null", "object", "null"),
      typed("changed", "null", "object", "object"), typed("moved", "string", "object", "object")};
  return result;
}

JsonValue changedField(std::string_view name, std::string_view help) {
  const JsonValue value{{"type", {"string", "array", "object", "null"}}};
  return object("Field", "A value that differs: a text, a list or a record; null for none.",
                {{std::string(name), described(filledText(), help)},
                 {"a", described(value, "What A says.")},
                 {"b", described(value, "What B says.")}});
}

JsonValue changedDocument() {
  std::vector<std::string_view> names = schema::documentNames();
  names.insert(names.end(), {"screenshot", "parts", "relationships"});
  return object(
      "Document", "A document that is not the same in both.",
      {{"document", words(names)},
       {"change", described(words({"added", "removed", "changed"}),
                            "Added: only B has it. Removed: only A has it.")},
       {"fields",
        described(list(changedField("path",
                                    "Where in the document, such as 'apps[1].name'. A list is "
                                    "counted in B, but in A for what only A has.")),
                  "Of what changed: what differs. None when the part is another one but "
                  "says the same.")}});
}

JsonValue numberOrNull(std::string_view help) {
  return {{"description", help}, {"type", {"integer", "null"}}, {"minimum", 1}};
}

/// Where something is in the project that a package is built from.
std::vector<Member> placeInProject() {
  return {{"file", described(textOrNull(),
                             "The manifest or the project's file, by its path from the current "
                             "folder.")},
          {"line", numberOrNull("The line of the file.")},
          {"column", numberOrNull("The character of the line.")}};
}

JsonValue finding(const std::vector<Member>& place) {
  std::vector<Member> members{
      {"id", described(matching("^KR[0-9]{3}$"), "What it is; 'verify --explain ID' says more.")},
      {"rule", described(textOrNull(),
                         "The rule of the packaging conventions that is broken, by "
                         "its short name.")},
      {"severity", words({"error", "warning"})},
      {"group",
       described(words({"container", "opc", "document", "reference", "style", "signature"}),
                 "What the id is about.")},
      {"part", described(textOrNull(), "The part, entry or file; null for the package.")}};
  members.insert(members.end(), place.begin(), place.end());
  members.push_back({"message", described(textOrNull(), "What is wrong.")});
  members.push_back({"hint", described(textOrNull(), "What to do about it.")});
  return object("Finding", "Something that is wrong or doubtful.", members);
}

}  // namespace

JsonValue findingSchema() {
  return finding({{"line", numberOrNull("The line of the part.")}});
}

JsonValue listSchema() {
  return object(
      "Output of 'list --json'",
      "The files and empty folders of a package, or with --all its parts.",
      {schema::shape("kraddon.list/1"),
       {"entries", described(list(entry()), "One a file, empty folder or part.")},
       {"files", described(number(), "How many files are listed.")},
       {"folders", described(number(), "How many empty folders are listed.")},
       {"bytes", described(number(), "Of all that is listed, unpacked.")},
       {"packed", described(number(), "Of all that is listed, as it lies in the package.")}});
}

JsonValue verifySchema() {
  JsonValue packages = list(
      object("Package", "What was found in a package.",
             {{"file", described(text(), "The package, as it was given.")},
              {"ok", described(flag(), "Whether it has no error and, with --strict, no warning.")},
              {"errors", described(number(), "How many errors there are.")},
              {"warnings", described(number(), "How many warnings there are.")},
              {"ignored", described(number(), "How many findings --ignore left out.")},
              {"findings", described(list(findingSchema()), "What is wrong or doubtful.")}}));
  packages["minItems"] = 1;
  return object("Output of 'verify --json'", "What is wrong with packages.",
                {schema::shape("kraddon.verify/1"),
                 {"packages", described(packages, "One for each package, in the order given.")}});
}

JsonValue diffSchema() {
  return object(
      "Output of 'diff --json'", "What differs between two packages, A and B.",
      {schema::shape("kraddon.diff/1"),
       {"a", described(text(), "The first one, as it was given.")},
       {"b", described(text(), "The second one, as it was given.")},
       {"same", described(flag(), "Whether nothing differs.")},
       {"properties", described(list(changedField("field",
                                                  "The property, as 'get PACKAGE "
                                                  "properties' calls it.")),
                                "The properties that differ.")},
       {"documents",
        described(list(changedDocument()),
                  "The documents that differ, the screenshot, the content types of other parts, "
                  "and the relationships that add-ons do not define.")},
       {"files",
        described(list(changedFile()),
                  "The files, empty folders and other parts that differ, in order of their "
                  "paths; the path of a part begins with a slash.")}});
}

JsonValue buildSchema() {
  const JsonValue entry = object("Entry", "A file or an empty folder.",
                                 {{"path", described(filledText(), "The path in the package.")},
                                  {"size", described(orNull(number()), "Null for a folder.")}});
  std::vector<Member> error{{"message", described(filledText(), "What went wrong.")}};
  for (const Member& member : placeInProject()) error.push_back(member);
  error.push_back({"hint", described(textOrNull(), "What to do about it.")});
  return object(
      "Output of 'build --json'", "What was built of a manifest.",
      {schema::shape("kraddon.build/1"),
       {"file", described(textOrNull(),
                          "The path of the package; null when the build failed before that was "
                          "known.")},
       {"written", described(flag(),
                             "Whether the package was put in place: not with --dry-run, nor "
                             "when it has errors.")},
       {"size", described(orNull(number()), "Of the package itself; null when none was made.")},
       {"files", described(number(), "How many files go in.")},
       {"folders", described(number(), "How many empty folders go in.")},
       {"bytes", described(number(), "Of all files, unpacked.")},
       {"digest",
        described(orNull(schema::digest()), "Of the content; null when no package was made.")},
       {"entries", described(list(entry), "What goes in, in the order of the file tree.")},
       {"findings", described(orNull(list(finding(placeInProject()))),
                              "What 'verify' found in the result; null when it was "
                              "not checked.")},
       {"error",
        described(orNull(object("Error", "Why nothing was built.", error)), "Null when it was.")}});
}

JsonValue signaturesSchema() {
  const auto names = [] { return list(matching("^/")); };
  const JsonValue signer =
      object("Signer", "The certificate of the signer.",
             {{"subject", described(text(), "Its name, as in RFC 2253.")},
              {"issuer", described(text(), "Who made the certificate.")},
              {"serial", described(matching("^[0-9a-f]*$"), "Its number, in hexadecimal.")},
              {"fingerprint", described(schema::sha256(), "The SHA-256 of the certificate.")},
              {"notBefore", described(schema::time(), "When it began to be valid, in UTC.")},
              {"notAfter", described(schema::time(), "When it ceases to be valid, in UTC.")}});
  const JsonValue signature = object(
      "Signature", "A digital signature, valid or not.",
      {{"part", described(matching("^/"), "The part that holds it.")},
       {"state", described(words({"valid", "partial", "broken", "weak", "unsupported"}),
                           "Partial: valid, but not over everything.")},
       {"reason", described(textOrNull(), "Why it is not valid; null if it is.")},
       {"signer", described(orNull(signer), "Null without a certificate that can be read.")},
       {"algorithm", described(textOrNull(), "Such as 'rsa-sha256'; null if it is not known.")},
       {"time", described(orNull(schema::time()), "When it was made, as it says, in UTC.")},
       {"covered", described(number(), "How many parts it covers, relationships included.")},
       {"uncovered", described(names(), "The parts that it should cover and does not.")},
       {"changed", described(names(), "What it covers and what has changed, or is missing.")},
       {"trusted", described(orNull(flag()), "Null without --trust.")}});
  return object("Output of 'signatures --json'", "The digital signatures of a package.",
                {schema::shape("kraddon.signatures/1"),
                 {"file", described(text(), "The package, as it was given.")},
                 {"signatures", described(list(signature), "In the order of the package.")}});
}

}  // namespace tool::report
