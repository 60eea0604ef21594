// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "tool/line/Command.h"

namespace tool::line {

/// The options that may stand at one place of a line, and how words spell them.
class OptionTable {
 public:
  explicit OptionTable(std::vector<OptionSpec> options) : options_(std::move(options)) {}

  const std::vector<OptionSpec>& options() const { return options_; }

  /// Null when there is none.
  const OptionSpec* find(char shortName) const;
  const OptionSpec* find(std::string_view longName) const;

  /// Where in "-abVALUE" the value begins; the word's size when it has none in it.
  std::size_t attachedValue(std::string_view word) const;

  /// The option whose value is the next word, or null.
  const OptionSpec* wantingValue(std::string_view word) const;

  /// Whether a word such as "-5" or "-.5" is a number rather than an option. One digit that is an
  /// option's letter is that option, and so are letters that follow it.
  bool isNumber(std::string_view word) const;

  /// How many words stand before the first operand.
  std::size_t countLeading(const std::vector<std::string>& words) const;

 private:
  std::vector<OptionSpec> options_;
};

/// Options that every command takes, before and after its name.
std::span<const OptionSpec> commonOptions();

/// Options that only make sense before the command's name.
std::span<const OptionSpec> leadingOptions();

/// Of what stands before the command's name, and of a command.
OptionTable leadingTable();
OptionTable tableOf(const CommandSpec& command);

}  // namespace tool::line
