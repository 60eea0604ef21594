// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "addon/project/PlainText.h"
#include "opc/Exception.h"
#include "opc/Text.h"
#include "text/Suggest.h"
#include "tool/Arguments.h"
#include "tool/Documents.h"
#include "tool/Errors.h"
#include "tool/PackageAccess.h"
#include "tool/ReadFile.h"
#include "tool/TreeWalk.h"

namespace tool {

namespace {

std::vector<std::string> assignmentsAfter(std::span<const std::string> operands);

constexpr std::array kOperands{
    OperandSpec{.name = "PACKAGE", .help = "the package"}, kDocumentOperand,
    OperandSpec{.name = "VALUE",
                .help = "FILE.json, - for standard input, or FIELD=VALUE...",
                .isRepeatable = true,
                .choicesAfter = assignmentsAfter}};

constexpr std::array kOptions{kTimestampOption, kLevelOption};

constexpr std::size_t kLargestFile = std::size_t{256} << 20;

/// Texts by field.
using Fields = std::map<std::string, std::string>;

constexpr std::string_view kProperties = "properties";

/// What an update of the properties does not write.
constexpr std::array<std::string_view, 2> kFixedProperties{"type", "KorvanRelease"};

bool isFixed(const DocumentShape& shape, std::string_view field) {
  return shape.name == kProperties && std::find(kFixedProperties.begin(), kFixedProperties.end(),
                                                field) != kFixedProperties.end();
}

/// What begins a change of the document that the second operand names.
std::vector<std::string> assignmentsAfter(std::span<const std::string> operands) {
  std::vector<std::string> words;
  for (const DocumentKind& kind : documentKinds()) {
    if (operands.size() < 2 || kind.shape.name != operands[1] || !kind.shape.isFlat()) continue;
    for (const std::string_view field : kind.shape.fieldNames()) {
      if (!isFixed(kind.shape, field)) words.push_back(fmt::format("{}=", field));
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

std::pair<std::string, std::string> parseAssignment(const DocumentShape& shape,
                                                    const std::string& word) {
  const std::size_t equals = word.find('=');
  std::string field = word.substr(0, equals);
  std::string value = word.substr(equals + 1);
  const std::vector<std::string_view> known = shape.fieldNames();
  if (std::find(known.begin(), known.end(), field) == known.end()) {
    const std::string all = fmt::format("the fields are {}", fmt::join(known, ", "));
    throw UsageError(sentence("unknown field", fmt::format("{}.{}", shape.name, field),
                              text::suggestion(field, known, all)),
                     identityOf(word) ? fmt::format("'./{}' is the file of that name", word) : "");
  }
  const std::string fault = addon::project::xmlTextFault(value);
  if (!fault.empty()) {
    throw Failure(sentence("bad value of", fmt::format("{}.{}", shape.name, field), fault));
  }
  return {std::move(field), std::move(value)};
}

Fields parseAssignments(const DocumentShape& shape, const std::vector<std::string>& words) {
  Fields fields;
  for (const std::string& word : words) {
    if (!isAssignment(word)) {
      throw UsageError(sentence("bad value", word, "expected FIELD=VALUE"));
    }
    auto [field, value] = parseAssignment(shape, word);
    if (!fields.emplace(field, std::move(value)).second) {
      throw UsageError(
          sentence("repeated field", fmt::format("{}.{}", shape.name, field), "it is given twice"));
    }
  }
  return fields;
}

/// What went wrong in JSON text, led by the document's name where it only tells a place.
std::string explain(const DocumentKind& kind, std::string_view why) {
  const bool isPlace = why.starts_with('.') || why.starts_with('[');
  return fmt::format("{}{}", isPlace ? kind.shape.name : std::string_view(), why);
}

HostArrayPointer readFile(const DocumentKind& kind, const std::string& file) {
  const std::string text = readInput(file, kLargestFile);
  try {
    const JsonValue value = parseJson(text);
    checkDocument(kind.shape, value);
    return toHostDocument(kind.shape, value);
  } catch (const JsonError& error) {
    throw Failure(sentence("bad document", file == "-" ? "standard input" : file,
                           explain(kind, error.what())));
  }
}

std::u16string_view textOf(const kxArray* document, std::string_view field) {
  const kxArray* text = kxGetField(document, 0, field.data());
  return {kxGetConstChars(text), kxGetNumberOfElements(text)};
}

/// Throws Failure for a change that would be lost.
void checkFixed(const kxArray* stored, const kxArray* changed) {
  for (const std::string_view field : kFixedProperties) {
    const std::u16string_view old = textOf(stored, field);
    if (textOf(changed, field) == old) continue;
    throw Failure(sentence(
        "cannot change", fmt::format("properties.{}", field),
        fmt::format("it is '{}' for as long as the package lives", opc::toUtf8ForDisplay(old))));
  }
}

std::string jsonOf(const DocumentKind& kind, const kxArray* document) {
  return toJson(kind.shape, document, JsonWriter::Layout::Compact);
}

bool isStored(const DocumentKind& kind, const kxArray* document, AddonPackage& package) {
  if (!isPresent(kind, package)) return false;
  try {
    return jsonOf(kind, kind.load(package).get()) == jsonOf(kind, document);
  } catch (const opc::Exception&) {
    return false;  // one that cannot be read can be replaced
  }
}

/// Stores `document`, or what the package holds with `fields` put in. What is
/// stored already is left alone, so that nothing is written for it.
void change(const DocumentKind& kind, HostArrayPointer document, const Fields& fields,
            AddonPackage& package) {
  if (!document) document = kind.load(package);
  for (const auto& [field, value] : fields) {
    kxSetField(document.get(), 0, field.c_str(), toHostText(opc::fromUtf8(value)).release());
  }
  if (kind.shape.name == kProperties) checkFixed(kind.load(package).get(), document.get());
  if (!isStored(kind, document.get(), package)) kind.store(package, document.get());
}

/// Whether the words after the document are the name of one file. Throws UsageError where they are
/// not and have to be.
bool isFile(const DocumentKind& kind, const std::vector<std::string>& words) {
  const bool isAlone = words.size() == 3;
  const bool isFirstField = isAssignment(words[2]);
  if (isAlone && !isFirstField) return true;
  if (!kind.shape.isFlat()) {
    // A field can only be a mistake, unless there is a file of that name.
    if (isAlone && identityOf(words[2])) return true;
    throw UsageError(
        sentence("bad value", isFirstField ? words[2] : words[3],
                 fmt::format("{} takes one FILE.json, or - for standard input", kind.shape.name)));
  }
  return false;
}

ExitCode run(const Invocation& invocation) {
  const std::vector<std::string>& words = invocation.operands();
  const DocumentKind& kind = findDocument(words[1]);
  auto options = writeOptionsOf(invocation);
  HostArrayPointer document;
  Fields fields;
  if (isFile(kind, words)) {
    document = readFile(kind, words[2]);
  } else {
    fields = parseAssignments(kind.shape, {words.begin() + 2, words.end()});
  }

  changePackage(words[0], std::move(options), invocation,
                [&](AddonPackage& package) { change(kind, std::move(document), fields, package); });
  return ExitCode::Done;
}

constexpr std::array kExamples{
    ExampleSpec{"kraddon set kit.kraddon properties version=1.1 authorName='A. Weaver'",
                "changes two properties"},
    ExampleSpec{"kraddon set kit.kraddon apps apps.json", "stores the list in apps.json"},
    ExampleSpec{"kraddon get old.kraddon license | kraddon set kit.kraddon license -",
                "takes over another package's license"}};

}  // namespace

constexpr CommandSpec kSetCommand{
    .name = "set",
    .summary = "stores one document, or changes some of its fields",
    .description =
        "FILE.json is what 'get' prints. FIELD=VALUE changes just that field, of the\n"
        "properties or the license. In a file every field has to be there, but for lists\n"
        "of texts and lists within a record, which are empty when they are null or\n"
        "missing.",
    .operands = kOperands,
    .options = kOptions,
    .run = run,
    .examples = kExamples};

}  // namespace tool
