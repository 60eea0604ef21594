// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tool/line/Command.h"

namespace tool::line {

enum class ColorMode { Auto, Always, Never };

/// Their names, in the order of the enumeration.
std::vector<std::string> colorModes();

/// Options that apply to every command.
struct Settings {
  bool isQuiet = false;
  bool isVerbose = false;
  ColorMode color = ColorMode::Auto;
};

/// The parsed words of a command. Options are identified by their long names.
class Invocation {
 public:
  using Values = std::map<std::string, std::vector<std::string>, std::less<>>;

  Invocation(const CommandSpec& command, Settings settings, Values values,
             std::vector<std::string> operands)
      : command_(command),
        settings_(settings),
        values_(std::move(values)),
        operands_(std::move(operands)) {}

  const CommandSpec& command() const { return command_; }
  const Settings& settings() const { return settings_; }

  bool has(std::string_view option) const { return values_.find(option) != values_.end(); }
  /// The value of an option, or nothing if it was not given.
  std::optional<std::string> value(std::string_view option) const;
  std::string valueOr(std::string_view option, std::string_view otherwise) const;
  /// All values of a repeatable option, in the order given.
  std::vector<std::string> values(std::string_view option) const;
  /// The value as a whole number. Throws UsageError unless it is one from `least` to `most`.
  std::optional<std::int64_t> number(std::string_view option, std::int64_t least,
                                     std::int64_t most) const;

  /// The value as a number of bytes: "4096", "10K", "10M" or "2G", in powers of 1024. Throws
  /// UsageError for anything else.
  std::optional<std::int64_t> byteCount(std::string_view option) const;

  /// Throws UsageError if both were given.
  void refuseTogether(std::string_view option, std::string_view other) const;

  const std::vector<std::string>& operands() const { return operands_; }

 private:
  const CommandSpec& command_;
  Settings settings_;
  Values values_;
  std::vector<std::string> operands_;
};

/// Throws UsageError for a word that is not one of the `choices`, of which there are at least two,
/// and suggests the nearest one.
[[noreturn]] void refuseValue(std::string_view option, std::string_view word,
                              const std::vector<std::string>& choices);

/// The text as a whole number, or nothing if it is not exactly that.
std::optional<std::int64_t> toInteger(std::string_view text);

/// The words before the name of the command, and the rest.
struct LeadingArguments {
  Settings settings;
  std::optional<std::string> directory;
  bool wantsHelp = false;
  bool wantsVersion = false;
  std::vector<std::string> rest;  ///< the command's name and its own words
};

/// Throws UsageError.
LeadingArguments parseLeadingArguments(const std::vector<std::string>& words);

/// Parses the words after the name of `command`. Options may be anywhere among the operands; after
/// "--" nothing is an option. `wantsHelp` is set if help was requested; unknown and missing words
/// are then ignored. Throws UsageError for an unknown, repeated, incomplete or missing option, and
/// for too few or too many operands.
Invocation parseArguments(const CommandSpec& command, Settings settings,
                          const std::vector<std::string>& words, bool& wantsHelp);

}  // namespace tool::line
