// SPDX-License-Identifier: MIT
#include "tool/Help.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "tool/CommandTable.h"

namespace tool {

namespace {

std::string spelled(const OptionSpec& option) {
  std::string text = option.shortName != 0 ? fmt::format("-{}, ", option.shortName) : "    ";
  text += fmt::format("--{}", option.longName);
  if (!option.valueName.empty()) text += fmt::format(" {}", option.valueName);
  return text;
}

using Row = std::pair<std::string, std::string>;

std::string table(const std::vector<Row>& rows) {
  std::size_t width = 0;
  for (const Row& row : rows) width = std::max(width, row.first.size());
  std::string text;
  for (const Row& row : rows) text += fmt::format("  {:{}}  {}\n", row.first, width, row.second);
  return text;
}

std::string optionTable(std::span<const OptionSpec> options) {
  std::vector<Row> rows;
  for (const OptionSpec& option : options) {
    std::string help(option.help);
    if (option.isRequired) help += " (required)";
    if (option.isRepeatable) help += " (may be repeated)";
    rows.emplace_back(spelled(option), std::move(help));
  }
  return table(rows);
}

}  // namespace

std::string usageOf(const CommandSpec& command) {
  std::string text = fmt::format("usage: kraddon {}", command.name);
  for (const OptionSpec& option : command.options) {
    if (option.isRequired) text += fmt::format(" --{} {}", option.longName, option.valueName);
  }
  text += " [OPTION...]";
  for (const OperandSpec& operand : command.operands) {
    const std::string name = fmt::format("{}{}", operand.name, operand.isRepeatable ? "..." : "");
    text += operand.isRequired ? " " + name : fmt::format(" [{}]", name);
  }
  return text + "\n";
}

std::string helpOf(const CommandSpec& command) {
  std::string text = usageOf(command) + fmt::format("\n{}\n", command.summary);
  if (!command.description.empty()) text += fmt::format("\n{}\n", command.description);
  std::vector<Row> operands;
  for (const OperandSpec& operand : command.operands) {
    operands.emplace_back(operand.name, operand.help);
  }
  if (!operands.empty()) text += "\n" + table(operands);
  if (!command.options.empty()) text += "\noptions:\n" + optionTable(command.options);
  return text + "\noptions of every command:\n" + optionTable(commonOptions());
}

std::string programUsage() {
  return "usage: kraddon [-C DIR] COMMAND [ARGUMENT...]\n"
         "       kraddon help [COMMAND]\n";
}

std::string programHelp() {
  std::vector<Row> rows;
  for (const CommandSpec* command : commands()) {
    rows.emplace_back(command->name, command->summary);
  }
  return programUsage() + "\nCreates, shows, unpacks and changes Korvan add-on packages.\n" +
         "\ncommands:\n" + table(rows) + "\noptions before the command:\n" +
         optionTable(leadingOptions()) + "\noptions of every command:\n" +
         optionTable(commonOptions()) + "\n'kraddon help COMMAND' tells more.\n";
}

}  // namespace tool
