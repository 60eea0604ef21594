// SPDX-License-Identifier: MIT
#include "tool/line/Arguments.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "opc/Text.h"
#include "text/Suggest.h"
#include "tool/line/OptionTable.h"
#include "tool/process/Errors.h"

namespace tool::line {

namespace {

/// Divides words into the values of options and operands, by an option table.
class WordParser {
 public:
  explicit WordParser(const OptionTable& table) : table_(table) {}

  /// Throws UsageError for an option that lacks its value, takes none, or is given twice.
  void parse(std::span<const std::string> words) {
    rest_ = words;
    while (!rest_.empty()) {
      const std::string_view word = takeWord();
      if (word.size() < 2 || word[0] != '-' || table_.isNumber(word)) {
        operands_.emplace_back(word);
      } else if (word[1] == '-') {
        takeLongOption(word);
      } else {
        takeShortOptions(word);
      }
    }
  }

  Invocation::Values& values() { return values_; }

  /// The words that do not belong to an option. Throws UsageError if there was an unknown option.
  /// This is not done earlier, since help is shown even then.
  std::vector<std::string>& operands() {
    if (!unknown_.empty()) refuseUnknown();
    return operands_;
  }

 private:
  std::string_view takeWord() {
    const std::string_view word = rest_.front();
    rest_ = rest_.subspan(1);
    return word;
  }

  void takeLongOption(std::string_view word) {
    const std::size_t equals = word.find('=');
    const OptionSpec* option = table_.find(word.substr(2, equals - 2));
    if (option == nullptr) {
      setUnknown(word);
    } else if (equals == std::string_view::npos) {
      add(*option, option->valueName.empty() ? std::string_view() : valueAfter(word));
    } else if (option->valueName.empty()) {
      refuse(*option, "it takes no value");
    } else {
      add(*option, word.substr(equals + 1));
    }
  }

  /// "-a", "-ab", "-aVALUE" or "-a VALUE".
  void takeShortOptions(std::string_view word) {
    for (std::size_t i = 1; i < word.size(); ++i) {
      const OptionSpec* option = table_.find(word[i]);
      if (option == nullptr) return setUnknown(fmt::format("-{}", word.substr(i)));
      if (!option->valueName.empty()) {
        return add(*option, i + 1 < word.size() ? word.substr(i + 1) : valueAfter(word));
      }
      add(*option, {});
    }
  }

  std::string_view valueAfter(std::string_view word) {
    if (rest_.empty())
      throw process::UsageError(process::sentence("bad option", word, "its value is missing"));
    return takeWord();
  }

  void add(const OptionSpec& option, std::string_view value) {
    std::vector<std::string>& given = values_[std::string(option.longName)];
    if (!given.empty() && !option.valueName.empty() && !option.isRepeatable) {
      refuse(option, "it is given twice");
    }
    given.emplace_back(value);
  }

  void setUnknown(std::string_view word) {
    if (unknown_.empty()) unknown_ = word.substr(0, word.find('='));
  }

  [[noreturn]] static void refuse(const OptionSpec& option, std::string_view why) {
    throw process::UsageError(process::sentence("bad option", nameOf(option), why));
  }

  [[noreturn]] void refuseUnknown() const {
    if (!unknown_.starts_with("--")) {
      throw process::UsageError(
          process::sentence("unknown option", unknown_, "no option has that letter"));
    }
    std::vector<std::string> known;
    for (const OptionSpec& option : table_.options()) known.push_back(nameOf(option));
    const std::vector<std::string_view> names(known.begin(), known.end());
    throw process::UsageError(process::sentence(
        "unknown option", unknown_, text::suggestion(unknown_, names, "no option has that name")));
  }

  static std::string nameOf(const OptionSpec& option) {
    return fmt::format("--{}", option.longName);
  }

  const OptionTable& table_;
  std::span<const std::string> rest_;
  Invocation::Values values_;
  std::vector<std::string> operands_;
  std::string unknown_;  ///< the first unknown option, without a value
};

ColorMode toColorMode(std::string_view word) {
  const std::vector<std::string> modes = colorModes();
  const auto found = std::find(modes.begin(), modes.end(), word);
  if (found == modes.end()) refuseValue("--color", word, modes);
  return static_cast<ColorMode>(found - modes.begin());
}

void takeSettings(const Invocation::Values& values, Settings& settings) {
  if (values.contains("quiet")) settings.isQuiet = true;
  if (values.contains("verbose")) settings.isVerbose = true;
  const auto color = values.find("color");
  if (color != values.end()) settings.color = toColorMode(color->second.back());
}

void checkOperands(const CommandSpec& command, const std::vector<std::string>& operands) {
  std::size_t required = 0;
  for (const OperandSpec& operand : command.operands) {
    if (operand.isRequired && ++required > operands.size()) {
      throw process::UsageError(process::sentence("missing operand", operand.name, helpOf(operand)),
                                std::string(operand.hint));
    }
  }
  const bool isOpenEnded = !command.operands.empty() && command.operands.back().isRepeatable;
  if (!isOpenEnded && operands.size() > command.operands.size()) {
    throw process::UsageError(process::sentence(
        "unexpected operand", operands[command.operands.size()], "the command takes no more"));
  }
}

void checkRequired(const CommandSpec& command, const Invocation& invocation) {
  for (const OptionSpec& option : command.options) {
    if (option.isRequired && !invocation.has(option.longName)) {
      const std::string name = fmt::format("--{}", option.longName);
      throw process::UsageError(process::sentence("missing option", name, option.help));
    }
  }
}

}  // namespace

std::vector<std::string> colorModes() {
  return {"auto", "always", "never"};
}

void refuseValue(std::string_view option, std::string_view word,
                 const std::vector<std::string>& choices) {
  const std::vector<std::string_view> names(choices.begin(), choices.end());
  const std::span<const std::string_view> all(names);
  const std::string expected =
      fmt::format("expected {} or {}", fmt::join(all.first(all.size() - 1), ", "), all.back());
  throw process::UsageError(process::sentence(fmt::format("bad value of {}", option), word,
                                              text::suggestion(word, names, expected)));
}

std::optional<std::int64_t> toInteger(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<std::string> Invocation::value(std::string_view option) const {
  const auto found = values_.find(option);
  if (found == values_.end()) return std::nullopt;
  return found->second.back();
}

std::string Invocation::valueOr(std::string_view option, std::string_view otherwise) const {
  const auto found = values_.find(option);
  return found == values_.end() ? std::string(otherwise) : found->second.back();
}

std::vector<std::string> Invocation::values(std::string_view option) const {
  const auto found = values_.find(option);
  return found == values_.end() ? std::vector<std::string>{} : found->second;
}

std::optional<std::int64_t> Invocation::number(std::string_view option, std::int64_t least,
                                               std::int64_t most) const {
  const auto found = values_.find(option);
  if (found == values_.end()) return std::nullopt;
  const std::string& text = found->second.back();
  const std::optional<std::int64_t> number = toInteger(text);
  if (!number || *number < least || *number > most) {
    throw process::UsageError(
        process::sentence(fmt::format("bad value of --{}", option), text,
                          fmt::format("expected a whole number from {} to {}", least, most)));
  }
  return number;
}

std::optional<std::int64_t> Invocation::byteCount(std::string_view option) const {
  const auto found = values_.find(option);
  if (found == values_.end()) return std::nullopt;
  constexpr std::string_view kUnits = "kmg";
  std::string_view digits = found->second.back();
  const char last = digits.empty() ? '0' : opc::toLowerAscii(digits.back());
  const std::size_t unit = kUnits.find(last);
  if (unit != kUnits.npos) digits.remove_suffix(1);
  const std::int64_t factor = unit == kUnits.npos ? 1 : std::int64_t{1024} << (10 * unit);
  const std::optional<std::int64_t> number = toInteger(digits);
  std::int64_t bytes = 0;
  if (!number || *number < 0 || __builtin_mul_overflow(*number, factor, &bytes)) {
    throw process::UsageError(process::sentence(fmt::format("bad value of --{}", option),
                                                found->second.back(),
                                                "expected a size such as 4096, 10K, 10M or 2G"));
  }
  return bytes;
}

void Invocation::refuseTogether(std::string_view option, std::string_view other) const {
  if (!has(option) || !has(other)) return;
  throw process::UsageError(
      process::sentence("bad option", fmt::format("--{}", option),
                        fmt::format("it cannot be combined with --{}", other)));
}

LeadingArguments parseLeadingArguments(const std::vector<std::string>& words) {
  const OptionTable table = leadingTable();
  WordParser parser(table);
  const std::size_t count = table.countLeading(words);
  const auto first = words.begin() + static_cast<std::ptrdiff_t>(count);
  parser.parse(std::span(words).first(count));
  parser.operands();  // there are none, but it throws for unknown options

  const Invocation::Values& values = parser.values();
  LeadingArguments arguments;
  takeSettings(values, arguments.settings);
  const auto directory = values.find("directory");
  if (directory != values.end()) arguments.directory = directory->second.back();
  arguments.wantsHelp = values.contains("help");
  arguments.wantsVersion = values.contains("version");
  arguments.rest.assign(first, words.end());
  if (!arguments.rest.empty() && arguments.rest[0] == "--") {
    arguments.rest.erase(arguments.rest.begin());
  }
  return arguments;
}

Invocation parseArguments(const CommandSpec& command, Settings settings,
                          const std::vector<std::string>& words, bool& wantsHelp) {
  const OptionTable table = tableOf(command);
  WordParser parser(table);
  const auto end = std::find(words.begin(), words.end(), "--");
  parser.parse(std::span(words.begin(), end));

  Invocation::Values& values = parser.values();
  wantsHelp = values.contains("help");
  if (wantsHelp) return Invocation(command, settings, std::move(values), {});
  takeSettings(values, settings);
  std::vector<std::string>& operands = parser.operands();
  if (end != words.end()) operands.insert(operands.end(), end + 1, words.end());
  checkOperands(command, operands);

  Invocation invocation(command, settings, std::move(values), std::move(operands));
  checkRequired(command, invocation);
  return invocation;
}

}  // namespace tool::line
