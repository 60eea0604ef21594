// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "opc/Text.h"
#include "tool/Arguments.h"
#include "tool/Documents.h"
#include "tool/Errors.h"
#include "tool/Interrupt.h"
#include "tool/PackageAccess.h"
#include "tool/PackageLock.h"
#include "tool/Progress.h"
#include "tool/ReadFile.h"
#include "tool/Suggest.h"

namespace tool {

namespace {

constexpr std::array kOperands{
    OperandSpec{"PACKAGE", "the package"}, OperandSpec{"DOCUMENT", "properties or license"},
    OperandSpec{"VALUE", "FILE.json, - for standard input, or FIELD=VALUE...", true, true}};

constexpr std::array kOptions{kTimestampOption, kLevelOption};

constexpr std::size_t kLargestFile = std::size_t{256} << 20;

/// Texts by field.
using Fields = std::map<std::string, std::string>;

/// Fields that an update of the properties does not write.
bool isFixed(const DocumentKind& kind, std::string_view field) {
  return kind.name == "properties" && (field == "type" || field == "KorvanRelease");
}

bool isAssignment(std::string_view word) {
  const std::size_t equals = word.find('=');
  const std::string_view name = word.substr(0, equals);
  return equals != std::string_view::npos && !name.empty() &&
         std::all_of(name.begin(), name.end(), [](char c) {
           const char lower = opc::toLowerAscii(c);
           return (lower >= 'a' && lower <= 'z') || (c >= '0' && c <= '9') || c == '_';
         });
}

std::pair<std::string, std::string> parseAssignment(const DocumentKind& kind,
                                                    const std::string& word) {
  const std::size_t equals = word.find('=');
  std::string field = word.substr(0, equals);
  std::string value = word.substr(equals + 1);
  if (std::find(kind.fields.begin(), kind.fields.end(), field) == kind.fields.end()) {
    const std::string all = fmt::format("the fields are {}", fmt::join(kind.fields, ", "));
    throw UsageError(sentence("unknown field", fmt::format("{}.{}", kind.name, field),
                              suggestion(field, kind.fields, all)));
  }
  if (!opc::isUtf8(value)) {
    throw Failure(
        sentence("bad value of", fmt::format("{}.{}", kind.name, field), "it is not UTF-8"));
  }
  return {std::move(field), std::move(value)};
}

Fields parseAssignments(const DocumentKind& kind, const std::vector<std::string>& words) {
  Fields fields;
  for (const std::string& word : words) {
    if (!isAssignment(word)) {
      throw UsageError(sentence("bad value", word, "expected FIELD=VALUE"));
    }
    auto [field, value] = parseAssignment(kind, word);
    if (!fields.emplace(field, std::move(value)).second) {
      throw UsageError(
          sentence("repeated field", fmt::format("{}.{}", kind.name, field), "it is given twice"));
    }
  }
  return fields;
}

Fields readFile(const DocumentKind& kind, const std::string& file) {
  const std::string text = readWholeFile(file, kLargestFile);
  Fields fields;
  try {
    const JsonValue value = parseJson(text);
    checkDocument(kind, value);
    for (const auto& [name, content] : value.get_ref<const JsonValue::object_t&>()) {
      fields.emplace(name, content.get<std::string>());
    }
  } catch (const JsonError& error) {
    throw Failure(sentence("bad document", file == "-" ? "standard input" : file, error.what()));
  }
  return fields;
}

/// Puts the texts into the host struct. Throws Failure for a change that would be lost.
void apply(const DocumentKind& kind, const Fields& fields, kxArray* document) {
  for (const auto& [field, value] : fields) {
    const std::u16string text = opc::fromUtf8(value);
    const kxArray* stored = kxGetField(document, 0, field.c_str());
    const std::u16string_view old(kxGetConstChars(stored), kxGetNumberOfElements(stored));
    if (old == text) continue;
    if (isFixed(kind, field)) {
      throw Failure(sentence(
          "cannot change", fmt::format("{}.{}", kind.name, field),
          fmt::format("it is '{}' for as long as the package lives", opc::toUtf8ForDisplay(old))));
    }
    kxSetField(document, 0, field.c_str(), toHostText(text).release());
  }
}

ExitCode run(const Invocation& invocation) {
  const std::vector<std::string>& words = invocation.operands();
  const DocumentKind& kind = findDocument(words[1]);
  const bool isFile = words.size() == 3 && !isAssignment(words[2]);
  auto options = writeOptionsOf(invocation);
  const Fields fields =
      isFile ? readFile(kind, words[2]) : parseAssignments(kind, {words.begin() + 2, words.end()});

  Interrupt::defer();
  const PackageLock lock(words[0]);
  const std::unique_ptr<AddonPackage> package = openForChanging(words[0]);
  const HostArrayPointer document = kind.load(*package);
  apply(kind, fields, document.get());
  kind.store(*package, document.get());

  ProgressBar bar(invocation.settings());
  options.progress = bar.function();
  package->physicalPackage().setWriteOptions(std::move(options));
  commit(*package);
  return ExitCode::Done;
}

}  // namespace

constexpr CommandSpec kSetCommand{
    "set",
    "stores one document, or changes some of its fields",
    "FILE.json is what 'get' prints. FIELD=VALUE changes just that field.",
    kOperands,
    kOptions,
    run};

}  // namespace tool
