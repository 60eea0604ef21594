// SPDX-License-Identifier: MIT
#include "tool/line/Completion.h"

#include <unistd.h>

#include <algorithm>
#include <optional>

#include "tool/line/CompletionPaths.h"
#include "tool/line/OptionTable.h"

namespace tool::line {

namespace {

/// The words before the cursor, parsed.
struct Line {
  const CommandSpec* command = nullptr;  ///< null if it is still missing
  std::vector<std::string> operands;
  bool areOptionsOver = false;
  const OptionSpec* wanting = nullptr;  ///< the option whose value the cursor is at
};

bool looksLikeOption(const std::string& word, const OptionTable& table) {
  return word.size() >= 2 && word[0] == '-' && !table.isNumber(word);
}

void sortWords(std::span<const std::string> words, const OptionTable& table, Line& line) {
  for (const std::string& word : words) {
    if (line.wanting != nullptr) {
      line.wanting = nullptr;
    } else if (line.areOptionsOver || !looksLikeOption(word, table)) {
      line.operands.push_back(word);
    } else if (word == "--") {
      line.areOptionsOver = true;
    } else {
      line.wanting = table.wantingValue(word);
    }
  }
}

const CommandSpec* commandNamed(std::string_view name, CommandList commands) {
  for (const CommandSpec* command : commands) {
    if (command->name == name) return command;
  }
  return nullptr;
}

const OperandSpec* operandAt(const CommandSpec& command, std::size_t index) {
  if (index < command.operands.size()) return &command.operands[index];
  const bool isOpenEnded = !command.operands.empty() && command.operands.back().isRepeatable;
  return isOpenEnded ? &command.operands.back() : nullptr;
}

/// The operand that names the package of the paths, or "".
std::string packageOf(const Line& line) {
  if (line.command == nullptr) return {};
  for (std::size_t i = 0; i < line.operands.size(); ++i) {
    const OperandSpec* operand = operandAt(*line.command, i);
    if (operand != nullptr && isPackageName(operand->name)) return line.operands[i];
  }
  return {};
}

void addWords(std::vector<std::string> words, Completion& completion) {
  for (std::string& word : words) completion.candidates.push_back({std::move(word), {}});
}

/// Adds candidates for a value, by its name and its choices.
void addValues(std::string_view name, Choices choices, const Line& line, const std::string& word,
               Completion& completion) {
  if (choices != nullptr) addWords(choices(), completion);
  std::vector<std::string> paths;
  if (isPackagePathName(name)) {
    paths = pathsInPackage(packageOf(line), word);
  } else if (const auto kind = diskPathKind(name)) {
    paths = pathsOnDisk(word, *kind);
  }
  completion.arePaths = !paths.empty();
  addWords(std::move(paths), completion);
}

void addOptions(const OptionTable& table, Completion& completion) {
  for (const OptionSpec& option : table.options()) {
    completion.candidates.push_back(
        {"--" + std::string(option.longName), std::string(option.help)});
    if (option.shortName == 0) continue;
    completion.candidates.push_back({{'-', option.shortName}, std::string(option.help)});
  }
}

/// The option and the value in "--name=value" or "-nVALUE", or nothing.
struct Attached {
  const OptionSpec* option;
  std::size_t at;  ///< where the value begins
};

std::optional<Attached> attachedIn(const std::string& word, const OptionTable& table) {
  if (word.starts_with("--")) {
    const std::size_t equals = word.find('=');
    if (equals == std::string::npos) return std::nullopt;
    return Attached{table.find(std::string_view(word).substr(2, equals - 2)), equals + 1};
  }
  const std::size_t at = table.attachedValue(word);
  if (at >= word.size()) return std::nullopt;
  return Attached{table.find(word[at - 1]), at};
}

Completion completeValue(const OptionSpec& option, const std::string& word, std::size_t at,
                         const Line& line) {
  Completion completion;
  if (option.valueName.empty()) return completion;
  completion.prefix = word.substr(0, at);
  addValues(option.valueName, option.choices, line, word.substr(at), completion);
  return completion;
}

Completion completeOption(const std::string& word, const OptionTable& table, const Line& line) {
  if (const auto attached = attachedIn(word, table)) {
    if (attached->option == nullptr) return {};
    return completeValue(*attached->option, word, attached->at, line);
  }
  Completion completion;
  addOptions(table, completion);
  return completion;
}

Completion completeCommand(CommandList commands) {
  Completion completion;
  for (const CommandSpec* command : commands) {
    completion.candidates.push_back({std::string(command->name), std::string(command->summary)});
  }
  return completion;
}

Completion completeOperand(const Line& line, const std::string& word) {
  Completion completion;
  const OperandSpec* operand = operandAt(*line.command, line.operands.size());
  if (operand == nullptr) return completion;
  if (operand->choicesAfter != nullptr) addWords(operand->choicesAfter(line.operands), completion);
  addValues(operand->name, operand->choices, line, word, completion);
  return completion;
}

/// Relative paths start at that folder. If it cannot be entered, the command itself will report
/// that.
bool enterDirectory(std::span<const std::string> leading, const OptionTable& table) {
  for (std::size_t i = 0; i < leading.size(); ++i) {
    const std::optional<Attached> given = attachedIn(leading[i], table);
    const OptionSpec* option = given ? given->option : table.wantingValue(leading[i]);
    if (option == nullptr) continue;
    if (!given && ++i == leading.size()) return true;
    if (option->longName != "directory") continue;
    const std::string_view folder = std::string_view(leading[i]).substr(given ? given->at : 0);
    if (!folder.empty() && ::chdir(withHome(folder).c_str()) != 0) return false;
  }
  return true;
}

}  // namespace

Completion complete(CommandList commands, std::vector<std::string> words) {
  if (words.empty()) words.emplace_back();
  const std::string last = words.back();
  words.pop_back();
  const OptionTable leading = leadingTable();
  const std::size_t count = leading.countLeading(words);
  const std::span<const std::string> before(words.data(), count);
  const std::span<const std::string> rest(words.data() + count, words.size() - count);

  Line line;
  if (rest.empty()) {
    sortWords(before, leading, line);
    if (line.wanting != nullptr) return completeValue(*line.wanting, last, 0, line);
    return last.starts_with('-') ? completeOption(last, leading, line) : completeCommand(commands);
  }
  line.command = commandNamed(rest[0], commands);
  if (line.command == nullptr || !enterDirectory(before, leading)) return {};
  const OptionTable table = tableOf(*line.command);
  sortWords(rest.subspan(1), table, line);
  if (line.wanting != nullptr) return completeValue(*line.wanting, last, 0, line);
  if (!line.areOptionsOver && last.starts_with('-')) return completeOption(last, table, line);
  return completeOperand(line, last);
}

}  // namespace tool::line
