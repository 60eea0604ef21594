// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "tool/line/Command.h"

namespace tool::line {

/// The options that are allowed at one place of a line, and how words name them.
class OptionTable {
 public:
  explicit OptionTable(std::vector<OptionSpec> options) : options_(std::move(options)) {}

  const std::vector<OptionSpec>& options() const { return options_; }

  /// Null if there is none.
  const OptionSpec* find(char shortName) const;
  const OptionSpec* find(std::string_view longName) const;

  /// The position of the value in "-abVALUE"; the size of the word if it contains none.
  std::size_t attachedValue(std::string_view word) const;

  /// The option whose value is the next word, or null.
  const OptionSpec* wantingValue(std::string_view word) const;

  /// Whether a word such as "-5" or "-.5" is a number rather than an option. A single digit that
  /// names an option is that option, also if letters follow it.
  bool isNumber(std::string_view word) const;

  /// The number of words before the first operand.
  std::size_t countLeading(const std::vector<std::string>& words) const;

 private:
  std::vector<OptionSpec> options_;
};

/// Options that every command takes, before and after its name.
std::span<const OptionSpec> commonOptions();

/// Options that are allowed only before the command's name.
std::span<const OptionSpec> leadingOptions();

/// The options before the command's name, and those of a command.
OptionTable leadingTable();
OptionTable tableOf(const CommandSpec& command);

}  // namespace tool::line
