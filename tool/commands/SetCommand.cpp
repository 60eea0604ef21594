// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "addon/build/TreeWalk.h"
#include "addon/packaging/DocumentRemoval.h"
#include "addon/packaging/Documents.h"
#include "addon/project/PlainText.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "text/Suggest.h"
#include "tool/commands/CommandTable.h"
#include "tool/commands/detail/PackageChange.h"
#include "tool/commands/detail/SharedOptions.h"
#include "tool/commands/detail/WriteOptions.h"
#include "tool/json/DocumentJson.h"
#include "tool/json/Documents.h"
#include "tool/line/Arguments.h"
#include "tool/process/Errors.h"
#include "tool/process/ReadFile.h"
#include "tool/report/Messages.h"

namespace tool::commands {

using addon::packaging::AddonPackage;

using addon::packaging::ConstRecord;
using addon::packaging::DocumentTable;
using addon::packaging::Field;
using addon::packaging::OwnedDocument;

namespace {

std::vector<std::string> assignmentsAfter(std::span<const std::string> operands);

constexpr std::array kOperands{
    detail::kPackageOperand, detail::kDocumentOperand,
    line::OperandSpec{.name = "VALUE",
                      .help = "FILE.json, - for standard input, or FIELD=VALUE...",
                      .isRepeatable = true,
                      .choicesAfter = assignmentsAfter}};

constexpr std::array kOptions{detail::kNoVerifyOption, detail::kTimestampOption,
                              detail::kLevelOption, detail::kLockTimeoutOption};

constexpr std::size_t kMaxFileSize = std::size_t{256} << 20;

/// Texts by field.
using Fields = std::map<std::string, std::string>;

/// The assignments that fit the document in the second operand, up to the '='.
std::vector<std::string> assignmentsAfter(std::span<const std::string> operands) {
  std::vector<std::string> words;
  for (const DocumentTable* table : addon::packaging::documents()) {
    if (operands.size() < 2 || table->name() != operands[1] || !json::isFlat(*table)) continue;
    for (const Field& field : table->record.fields) {
      if (!field.isFixed) words.push_back(fmt::format("{}=", field.name));
    }
  }
  return words;
}

bool isAssignment(std::string_view word) {
  const std::size_t equals = word.find('=');
  const std::string_view name = word.substr(0, equals);
  return equals != std::string_view::npos && !name.empty() &&
         std::all_of(name.begin(), name.end(),
                     [](char c) { return opc::isAsciiLetterOrDigit(c) || c == '_'; });
}

/// The text that a word after '=' stands for: "@FILE" is the text of a file, "@-" standard input,
/// "@@x" the text "@x". Form feeds become newlines, as in 'build'.
std::string textOf(std::string_view value) {
  std::string text(value);
  if (value.starts_with("@@")) {
    text.erase(0, 1);
  } else if (value.starts_with('@')) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    try {
      text = process::readInput(std::string(value.substr(1)), kMaxFileSize);
    } catch (const process::Failure& failure) {
      throw process::Failure(failure.what(), fmt::format("'@{}' is the text '{}'", value, value));
    }
    if (text.starts_with(kByteOrderMark)) text.erase(0, kByteOrderMark.size());
  }
  std::replace(text.begin(), text.end(), '\f', '\n');
  return text;
}

std::pair<std::string, std::string> parseAssignment(const DocumentTable& table,
                                                    const std::string& word) {
  const std::size_t equals = word.find('=');
  std::string field = word.substr(0, equals);
  const std::vector<std::string_view> known = json::fieldNames(table.record);
  if (std::find(known.begin(), known.end(), field) == known.end()) {
    const std::string all = fmt::format("the fields are {}", fmt::join(known, ", "));
    throw process::UsageError(
        process::sentence("unknown field", fmt::format("{}.{}", table.name(), field),
                          text::suggestion(field, known, all)),
        opc::identityOf(word) ? fmt::format("'./{}' is the file with that name", word) : "");
  }
  std::string value = textOf(std::string_view(word).substr(equals + 1));
  const std::string fault = addon::project::xmlTextFault(value);
  if (!fault.empty()) {
    throw process::Failure(
        process::sentence("bad value of", fmt::format("{}.{}", table.name(), field), fault));
  }
  return {std::move(field), std::move(value)};
}

Fields parseAssignments(const DocumentTable& table, const std::vector<std::string>& words) {
  const auto isFromInput = [](const std::string& word) { return word.ends_with("=@-"); };
  if (std::count_if(words.begin(), words.end(), isFromInput) > 1) {
    throw process::UsageError(
        process::sentence("bad value", "@-", "standard input can be read only once"));
  }
  Fields fields;
  for (const std::string& word : words) {
    if (!isAssignment(word)) {
      throw process::UsageError(process::sentence("bad value", word, "expected FIELD=VALUE"));
    }
    auto [field, value] = parseAssignment(table, word);
    if (!fields.emplace(field, std::move(value)).second) {
      throw process::UsageError(process::sentence(
          "repeated field", fmt::format("{}.{}", table.name(), field), "it is given twice"));
    }
  }
  return fields;
}

/// "properties.version" for each field that is set or, of a file, the name of the document.
std::vector<std::string> namesOf(const DocumentTable& table, const Fields& fields) {
  if (fields.empty()) return {table.name()};
  std::vector<std::string> names;
  for (const auto& [field, value] : fields) {
    names.push_back(fmt::format("{}.{}", table.name(), field));
  }
  return names;
}

/// The error in JSON text, with the name of the document if it begins with a place in it.
std::string explain(const DocumentTable& table, std::string_view why) {
  const bool isPlace = why.starts_with('.') || why.starts_with('[');
  return fmt::format("{}{}", isPlace ? table.name() : std::string_view(), why);
}

OwnedDocument readFile(const DocumentTable& table, const std::string& file) {
  const std::string text = process::readInput(file, kMaxFileSize);
  try {
    OwnedDocument document = table.make();
    json::readDocument(table, document.record, text::parseJson(text));
    return document;
  } catch (const text::JsonError& error) {
    throw process::Failure(process::sentence("bad document", file == "-" ? "standard input" : file,
                                             explain(table, error.what())));
  }
}

/// Throws Failure for a change that would be lost.
void checkFixed(const DocumentTable& table, const ConstRecord& changed, AddonPackage& package) {
  const auto& fields = table.record.fields;
  if (std::none_of(fields.begin(), fields.end(), [](const Field& one) { return one.isFixed; })) {
    return;
  }
  const OwnedDocument stored = addon::packaging::loadDocument(package, table);
  for (const Field& field : fields) {
    if (!field.isFixed || changed.text(field) == stored.record.text(field)) continue;
    throw process::Failure(
        process::sentence("cannot change", fmt::format("{}.{}", table.name(), field.name),
                          fmt::format("it is '{}' and cannot change",
                                      opc::toUtf8ForDisplay(stored.record.text(field)))));
  }
}

std::string jsonOf(const DocumentTable& table, const ConstRecord& document) {
  return json::toJson(table, document, text::JsonWriter::Layout::Compact);
}

bool isStored(const DocumentTable& table, const ConstRecord& document, AddonPackage& package) {
  if (!addon::packaging::isPresent(table, package)) return false;
  try {
    return jsonOf(table, addon::packaging::loadDocument(package, table).record) ==
           jsonOf(table, document);
  } catch (const opc::Exception&) {
    return false;  // an unreadable document can be replaced
  }
}

/// The stored document, for a change of some fields.
OwnedDocument loadStored(const DocumentTable& table, AddonPackage& package) {
  const std::string fault =
      addon::packaging::documentFault(package.logicalPackage(), *table.make().part);
  if (fault.empty()) return addon::packaging::loadDocument(package, table);
  throw process::Failure(
      process::sentence("cannot read", table.name(), fault),
      fmt::format("'kraddon set PACKAGE {} FILE.json' replaces the document", table.name()));
}

/// Stores `given` or, without it, the stored document with `fields` changed. If nothing differs,
/// writes nothing and returns false.
bool change(const DocumentTable& table, std::optional<OwnedDocument> given, const Fields& fields,
            AddonPackage& package) {
  const OwnedDocument document = given ? std::move(*given) : loadStored(table, package);
  for (const auto& [name, value] : fields) {
    document.record.text(*table.record.find(name)) = opc::fromUtf8(value);
  }
  checkFixed(table, document.record, package);
  if (isStored(table, document.record, package)) return false;
  addon::packaging::replaceDocument(package, *document.part);
  if (isStored(table, document.record, package)) return true;
  throw process::Failure(
      process::sentence("cannot change", table.name(), "it cannot be read back from this package"),
      "'kraddon verify' finds out what is wrong with it");
}

/// Whether the words after the document name a single file. Throws UsageError if they must but do
/// not.
bool isFile(const DocumentTable& table, const std::vector<std::string>& words) {
  const bool isAlone = words.size() == 3;
  const bool isFirstField = isAssignment(words[2]);
  if (isAlone && !isFirstField) return true;
  if (!json::isFlat(table)) {
    // A field is a mistake here, unless there is a file with that name.
    if (isAlone && opc::identityOf(words[2])) return true;
    throw process::UsageError(process::sentence(
        "bad value", isFirstField ? words[2] : words[3],
        fmt::format("{} takes one FILE.json, or - for standard input", table.name())));
  }
  return false;
}

process::ExitCode run(const line::Invocation& invocation) {
  const std::vector<std::string>& words = invocation.operands();
  const DocumentTable& table = json::findDocument(words[1]);
  auto options = detail::writeOptionsOf(invocation);
  std::optional<OwnedDocument> document;
  Fields fields;
  if (isFile(table, words)) {
    document = readFile(table, words[2]);
  } else {
    fields = parseAssignments(table, {words.begin() + 2, words.end()});
  }

  detail::ReviewRules rules = detail::strictReviewOf(invocation);
  std::string done;
  const auto store = [&](AddonPackage& package) {
    const bool isWhole = document.has_value();
    if (!change(table, std::move(document), fields, package)) return;
    if (isWhole) rules.replaced = &table;
    done = report::describeDone(invocation, "set", namesOf(table, fields));
  };
  detail::changePackage(words[0], std::move(options), invocation, store, rules);
  report::printToStandardError(done);
  return process::ExitCode::Done;
}

constexpr std::array kExamples{
    line::ExampleSpec{"kraddon set kit.kraddon properties version=1.1 authorName='A. Weaver'",
                      "changes two properties"},
    line::ExampleSpec{"kraddon set kit.kraddon license type=MIT text=@LICENSE",
                      "stores the text of a file as the license"},
    line::ExampleSpec{"kraddon set kit.kraddon apps apps.json", "stores the list in apps.json"},
    line::ExampleSpec{"kraddon get old.kraddon license | kraddon set kit.kraddon license -",
                      "copies the license of another package"}};

}  // namespace

constexpr line::CommandSpec kSetCommand{
    .name = "set",
    .summary = "stores a document, or changes some of its fields",
    .description =
        "FILE.json has the form that 'get' prints. FIELD=VALUE changes one field of the properties "
        "or the license; FIELD=@FILE takes the text of a file, FIELD=@- standard input, and "
        "FIELD=@@x is the text '@x'. Form feeds become newlines. FILE.json must contain every "
        "field, except lists of strings and lists inside a record: null or missing means an empty "
        "list. Nothing is changed if 'verify' would find a new error in the package, unless "
        "--no-verify is given; new warnings are printed.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool::commands
