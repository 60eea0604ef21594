// SPDX-License-Identifier: MIT
#include "tool/line/OptionTable.h"

#include <fmt/ranges.h>

#include <algorithm>

#include "opc/Text.h"
#include "tool/line/Arguments.h"

namespace tool::line {

namespace {

std::vector<OptionSpec> withCommon(std::span<const OptionSpec> options) {
  std::vector<OptionSpec> all(options.begin(), options.end());
  const auto common = commonOptions();
  all.insert(all.end(), common.begin(), common.end());
  return all;
}

bool beginsLikeNumber(std::string_view word) {
  if (word.size() < 2 || word[0] != '-') return false;
  const std::string_view digits = word.substr(word[1] == '.' ? 2 : 1);
  return !digits.empty() && opc::isAsciiDigit(digits[0]);
}

}  // namespace

const OptionSpec* OptionTable::find(char shortName) const {
  for (const OptionSpec& option : options_) {
    if (option.shortName == shortName) return &option;
  }
  return nullptr;
}

const OptionSpec* OptionTable::find(std::string_view longName) const {
  for (const OptionSpec& option : options_) {
    if (option.longName == longName) return &option;
  }
  return nullptr;
}

std::size_t OptionTable::attachedValue(std::string_view word) const {
  for (std::size_t i = 1; i < word.size(); ++i) {
    const OptionSpec* option = find(word[i]);
    if (option == nullptr) return word.size();
    if (!option->valueName.empty()) return i + 1;
  }
  return word.size();
}

const OptionSpec* OptionTable::wantingValue(std::string_view word) const {
  if (word.size() < 2 || word[0] != '-' || isNumber(word)) return nullptr;
  const bool isLong = word[1] == '-';
  const OptionSpec* option = isLong ? find(word.substr(2)) : find(word.back());
  if (option == nullptr || option->valueName.empty()) return nullptr;
  return isLong || attachedValue(word) == word.size() ? option : nullptr;
}

std::size_t OptionTable::countLeading(const std::vector<std::string>& words) const {
  std::size_t count = 0;
  while (count < words.size() && words[count].starts_with('-') && words[count] != "--") {
    count += wantingValue(words[count]) != nullptr ? 2 : 1;
  }
  return std::min(count, words.size());
}

bool OptionTable::isNumber(std::string_view word) const {
  if (!beginsLikeNumber(word)) return false;
  const bool goesOn = word.size() > 2 && (word[2] == '.' || opc::isAsciiDigit(word[2]));
  return goesOn || find(word[1]) == nullptr;
}

OptionTable leadingTable() {
  return OptionTable(withCommon(leadingOptions()));
}

OptionTable tableOf(const CommandSpec& command) {
  return OptionTable(withCommon(command.options));
}

std::span<const OptionSpec> commonOptions() {
  static constexpr std::array kOptions{
      OptionSpec{.longName = "quiet", .shortName = 'q', .help = "suppress progress and warnings"},
      OptionSpec{.longName = "verbose", .shortName = 'v', .help = "print more on standard error"},
      OptionSpec{.longName = "color",
                 .valueName = "WHEN",
                 .help = "when to use colours: auto, always or never",
                 .choices = colorModes},
      OptionSpec{.longName = "help", .shortName = 'h', .help = "show this help"},
  };
  return kOptions;
}

std::span<const OptionSpec> leadingOptions() {
  static constexpr std::array kOptions{
      OptionSpec{.longName = "directory",
                 .shortName = 'C',
                 .valueName = "DIR",
                 .help = "run as if started in DIR"},
      OptionSpec{.longName = "version", .help = "print the version"},
  };
  return kOptions;
}

std::string helpOf(const OperandSpec& operand) {
  if (!operand.help.empty() || operand.choices == nullptr) return std::string(operand.help);
  std::vector<std::string> choices = operand.choices();
  const std::string last = choices.back();
  choices.pop_back();
  return fmt::format("{} or {}", fmt::join(choices, ", "), last);
}

}  // namespace tool::line
