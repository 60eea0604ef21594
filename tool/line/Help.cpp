// SPDX-License-Identifier: MIT
#include "tool/line/Help.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "text/Lines.h"
#include "tool/line/OptionTable.h"
#include "tool/line/Topic.h"
#include "tool/line/Wrapping.h"

namespace tool::line {

namespace {

std::string spelled(const OptionSpec& option) {
  std::string text = option.shortName != 0 ? fmt::format("-{}, ", option.shortName) : "    ";
  text += fmt::format("--{}", option.longName);
  if (!option.valueName.empty()) text += fmt::format(" {}", option.valueName);
  return text;
}

using Row = std::pair<std::string, std::string>;

// The help of longer names is on a line of its own.
constexpr std::size_t kWidestName = 28;

std::string table(const std::vector<Row>& rows) {
  std::size_t width = 0;
  for (const Row& row : rows) {
    if (row.first.size() <= kWidestName) width = std::max(width, row.first.size());
  }
  const std::size_t column = width + 4;
  std::string text;
  for (const auto& [name, help] : rows) {
    text += fmt::format("  {:{}}  ", name, width);
    if (name.size() > width) {
      while (text.back() == ' ') text.pop_back();
      text += '\n' + std::string(column, ' ');
    }
    for (const auto& words : paragraphsOf(help)) appendWrapped(words, column, column, text);
    text += '\n';
  }
  return text;
}

std::string optionTable(std::span<const OptionSpec> options) {
  std::vector<Row> rows;
  for (const OptionSpec& option : options) rows.emplace_back(spelled(option), helpOf(option));
  return table(rows);
}

std::string exampleTable(std::span<const ExampleSpec> examples) {
  std::string text;
  for (const ExampleSpec& example : examples) {
    text += fmt::format("  {}\n      ", example.line);
    for (const auto& words : paragraphsOf(example.help)) appendWrapped(words, 6, 6, text);
    text += '\n';
  }
  return text;
}

}  // namespace

std::string helpOf(const OptionSpec& option) {
  std::string help(option.help);
  if (option.isRequired) help += " (required)";
  if (option.isRepeatable) help += " (may be repeated)";
  return help;
}

std::vector<std::string> synopsisOf(const CommandSpec& command) {
  std::vector<std::string> words;
  for (const OptionSpec& option : command.options) {
    if (option.isRequired)
      words.push_back(fmt::format("--{} {}", option.longName, option.valueName));
  }
  words.emplace_back("[OPTION...]");
  for (const OperandSpec& operand : command.operands) {
    const std::string name = fmt::format("{}{}", operand.name, operand.isRepeatable ? "..." : "");
    words.push_back(operand.isRequired ? name : fmt::format("[{}]", name));
  }
  return words;
}

std::string usageOf(const CommandSpec& command) {
  std::string text = fmt::format("usage: kraddon {} ", command.name);
  const std::vector<std::string> words = synopsisOf(command);
  appendWrapped({words.begin(), words.end()}, text.size(), text.size(), text);
  return text + "\n";
}

std::string helpPointerOf(const CommandSpec& command) {
  return fmt::format("Run 'kraddon help {}' for details.\n", command.name);
}

std::string helpOf(const CommandSpec& command) {
  std::string text = usageOf(command) + fmt::format("\n{}\n", command.summary);
  if (!command.description.empty()) text += "\n" + wrapped(command.description);
  std::vector<Row> operands;
  for (const OperandSpec& operand : command.operands) {
    operands.emplace_back(operand.name, helpOf(operand));
  }
  if (!operands.empty()) text += "\n" + table(operands);
  if (!command.options.empty()) text += "\noptions:\n" + optionTable(command.options);
  text += "\noptions of every command:\n" + optionTable(commonOptions());
  if (!command.examples.empty()) text += "\nexamples:\n" + exampleTable(command.examples);
  return text;
}

std::string helpOf(const Topic& topic) {
  std::string text = fmt::format("{} - {}\n", topic.name, topic.summary);
  for (const TopicSection& section : topic.sections) {
    if (!section.title.empty()) text += fmt::format("\n{}\n", section.title);
    if (!section.text.empty()) text += (section.title.empty() ? "\n" : "") + wrapped(section.text);
    text += table(section.entries);
    if (section.example.empty()) continue;
    for (const std::string_view line : text::linesOf(section.example)) {
      text += fmt::format("  {}\n", line);
    }
  }
  return text;
}

std::string programUsage() {
  return "usage: kraddon [-C DIR] COMMAND [ARGUMENT...]\n"
         "       kraddon help [COMMAND|TOPIC]\n";
}

std::string programHelp(CommandList commands) {
  std::vector<Row> rows;
  for (const CommandSpec* command : commands) {
    rows.emplace_back(command->name, command->summary);
  }
  return programUsage() + fmt::format("\n{}\n", kProgramPurpose) + "\ncommands:\n" + table(rows) +
         "\noptions before the command:\n" + optionTable(leadingOptions()) +
         "\noptions of every command:\n" + optionTable(commonOptions()) +
         "\nRun 'kraddon help COMMAND' for details. There is also 'kraddon help manifest',\n"
         "'patterns' and 'findings'.\n";
}

}  // namespace tool::line
