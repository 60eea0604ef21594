// SPDX-License-Identifier: MIT
#include "tool/Arguments.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>

#include "opc/Suggest.h"
#include "tool/CommandTable.h"
#include "tool/Errors.h"
#include "tool/OptionTable.h"

namespace tool {

namespace {

// The parser gives a meaning of its own to values such as "[a]", "{}" and "++". One byte in front
// makes them plain words; it is taken off again afterwards.
constexpr char kMarker = '\x01';

std::string withMarker(std::string_view word) {
  return kMarker + std::string(word);
}

std::string withoutMarker(const std::string& word) {
  return !word.empty() && word[0] == kMarker ? word.substr(1) : word;
}

}  // namespace

/// The options of one command, or of what stands before it, in front of CLI11.
class ArgumentParser {
 public:
  explicit ArgumentParser(const OptionTable& table) : table_(table) {
    app_.set_help_flag();
    app_.allow_extras();
    for (const OptionSpec& option : table_.options()) add(option);
  }

  void parse(std::vector<std::string> words) {
    checkLastValue(words);
    for (std::string& word : words) word = guard(word);
    std::reverse(words.begin(), words.end());  // as CLI11 wants them
    try {
      app_.parse(std::move(words));
    } catch (const CLI::ParseError& error) {
      throw UsageError(error.what());
    }
  }

  /// The words that belong to no option. Throws UsageError for one that looks like an option.
  std::vector<std::string> operands() const {
    std::vector<std::string> words = app_.remaining();
    for (std::string& word : words) {
      if (word.empty() || word[0] != kMarker) refuse(word);
      word.erase(0, 1);
    }
    return words;
  }

  /// What was given of every option, checked.
  void collect(Invocation::Values& values) const {
    for (std::size_t i = 0; i < parsed_.size(); ++i) {
      const OptionSpec& option = table_.options()[i];
      std::vector<std::string> given = results(*parsed_[i]);
      if (given.empty()) continue;
      const std::string shown = fmt::format("--{}", option.longName);
      if (option.valueName.empty() && given[0] != "true") {
        throw UsageError(sentence("bad option", shown, "it takes no value"));
      }
      if (!option.valueName.empty() && !option.isRepeatable && given.size() > 1) {
        throw UsageError(sentence("bad option", shown, "it is given twice"));
      }
      values.emplace(option.longName, std::move(given));
    }
  }

 private:
  /// Puts the marker where CLI11 must not look.
  std::string guard(const std::string& word) const {
    if (!word.starts_with('-') || word == "-") return withMarker(word);
    if (word.starts_with("--")) {
      const std::size_t equals = word.find('=');
      if (equals == std::string::npos || isFlag(std::string_view(word).substr(2, equals - 2)))
        return word;
      return word.substr(0, equals + 1) + withMarker(word.substr(equals + 1));
    }
    if (table_.isNumber(word)) return withMarker(word);
    const std::size_t value = table_.attachedValue(word);
    if (value >= word.size()) return word;
    return word.substr(0, value) + withMarker(word.substr(value));
  }

  [[noreturn]] void refuse(const std::string& word) const {
    const std::string name = word.substr(0, word.find('='));
    if (!name.starts_with("--")) {
      throw UsageError(sentence("unknown option", name, "no option has that letter"));
    }
    std::vector<std::string> known;
    for (const OptionSpec& option : table_.options()) known.push_back(nameOf(option));
    const std::vector<std::string_view> names(known.begin(), known.end());
    throw UsageError(
        sentence("unknown option", name, opc::suggestion(name, names, "no option has that name")));
  }

  static std::string nameOf(const OptionSpec& option) {
    return fmt::format("--{}", option.longName);
  }

  void add(const OptionSpec& option) {
    std::string names = nameOf(option);
    if (option.shortName != 0) names += fmt::format(",-{}", option.shortName);
    if (option.valueName.empty()) {
      parsed_.push_back(app_.add_flag(names));
      return;
    }
    parsed_.push_back(app_.add_option(names));
    parsed_.back()->expected(1)->allow_extra_args(false)->multi_option_policy(
        CLI::MultiOptionPolicy::TakeAll);
  }

  bool isFlag(std::string_view longName) const {
    const OptionSpec* option = table_.find(longName);
    return option == nullptr || option->valueName.empty();
  }

  void checkLastValue(const std::vector<std::string>& words) const {
    bool isValue = false;
    for (const std::string& word : words)
      isValue = !isValue && table_.wantingValue(word) != nullptr;
    if (isValue) throw UsageError(sentence("bad option", words.back(), "its value is missing"));
  }

  static std::vector<std::string> results(const CLI::Option& option) {
    std::vector<std::string> values = option.results();
    for (std::string& value : values) value = withoutMarker(value);
    return values;
  }

  const OptionTable& table_;
  CLI::App app_;
  // One for each of the options. CLI11 cannot look one up by name without memory to spare.
  std::vector<CLI::Option*> parsed_;
};

namespace {

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
      throw UsageError(sentence("missing operand", operand.name, operand.help),
                       std::string(operand.hint));
    }
  }
  const bool isOpenEnded = !command.operands.empty() && command.operands.back().isRepeatable;
  if (!isOpenEnded && operands.size() > command.operands.size()) {
    throw UsageError(sentence("unexpected operand", operands[command.operands.size()],
                              "there is no use for it"));
  }
}

void checkRequired(const CommandSpec& command, const Invocation& invocation) {
  for (const OptionSpec& option : command.options) {
    if (option.isRequired && !invocation.has(option.longName)) {
      const std::string name = fmt::format("--{}", option.longName);
      throw UsageError(sentence("missing option", name, option.help));
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
  throw UsageError(sentence(fmt::format("bad value of {}", option), word,
                            opc::suggestion(word, names, expected)));
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
    throw UsageError(sentence(fmt::format("bad value of --{}", option), text,
                              fmt::format("expected a whole number from {} to {}", least, most)));
  }
  return number;
}

void Invocation::refuseTogether(std::string_view option, std::string_view other) const {
  if (!has(option) || !has(other)) return;
  throw UsageError(sentence("bad option", fmt::format("--{}", option),
                            fmt::format("it does not go with --{}", other)));
}

LeadingArguments parseLeadingArguments(const std::vector<std::string>& words) {
  const OptionTable table = leadingTable();
  ArgumentParser parser(table);
  const auto first = words.begin() + static_cast<std::ptrdiff_t>(table.countLeading(words));
  parser.parse(std::vector<std::string>(words.begin(), first));
  parser.operands();  // there are none, but perhaps unknown options

  Invocation::Values values;
  parser.collect(values);
  LeadingArguments arguments;
  takeSettings(values, arguments.settings);
  if (values.contains("directory")) arguments.directory = values["directory"].back();
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
  ArgumentParser parser(table);
  const auto end = std::find(words.begin(), words.end(), "--");
  parser.parse(std::vector<std::string>(words.begin(), end));

  Invocation::Values values;
  parser.collect(values);
  wantsHelp = values.contains("help");
  if (wantsHelp) return Invocation(command, settings, std::move(values), {});
  takeSettings(values, settings);
  std::vector<std::string> operands = parser.operands();
  if (end != words.end()) operands.insert(operands.end(), end + 1, words.end());
  checkOperands(command, operands);

  Invocation invocation(command, settings, std::move(values), std::move(operands));
  checkRequired(command, invocation);
  return invocation;
}

}  // namespace tool
