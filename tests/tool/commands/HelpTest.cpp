// SPDX-License-Identifier: MIT
#include "tool/line/Help.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "tool/commands/CommandTable.h"
#include "tool/line/Arguments.h"
#include "tool/line/Wrapping.h"
#include "tool/process/Errors.h"

namespace {

using tool::line::CommandSpec;
using tool::line::ExampleSpec;
using Words = std::vector<std::string>;

/// The words as a shell would pass them, up to a redirection.
Words wordsOf(std::string_view line) {
  Words words;
  bool isWord = false;
  char quote = 0;
  for (const char c : line) {
    if (quote != 0 ? c == quote : c == '\'' || c == '"') {
      quote = quote != 0 ? '\0' : c;
    } else if (quote != 0 || std::string_view(" |<>;&").find(c) == std::string_view::npos) {
      if (!isWord) words.emplace_back();
      words.back() += c;
      isWord = true;
      continue;
    } else if (c != ' ') {
      return words;
    }
    if (quote != 0 && !isWord) words.emplace_back();
    isWord = quote != 0;
  }
  return words;
}

std::vector<Words> pipelineOf(std::string_view line) {
  constexpr std::string_view kPipe = " | ";
  std::vector<Words> commands;
  for (std::size_t at = 0; at != std::string_view::npos;) {
    commands.push_back(wordsOf(line.substr(at, line.find(kPipe, at) - at)));
    at = line.find(kPipe, at);
    if (at != std::string_view::npos) at += kPipe.size();
  }
  return commands;
}

std::string errorOf(const Words& words) {
  bool wantsHelp = false;
  try {
    const tool::line::LeadingArguments leading =
        tool::line::parseLeadingArguments({words.begin() + 1, words.end()});
    const CommandSpec& command = tool::commands::findCommand(leading.rest.at(0));
    tool::line::parseArguments(command, {}, {leading.rest.begin() + 1, leading.rest.end()},
                               wantsHelp);
  } catch (const tool::process::UsageError& error) {
    return error.what();
  }
  return {};
}

class HelpOf : public testing::TestWithParam<const CommandSpec*> {};

TEST_P(HelpOf, HasADescriptionAndTwoExamples) {
  EXPECT_FALSE(GetParam()->summary.empty());
  EXPECT_FALSE(GetParam()->description.empty());
  EXPECT_GE(GetParam()->examples.size(), 2u);
}

TEST_P(HelpOf, HasNoLineWiderThanATerminal) {
  std::istringstream lines(tool::line::helpOf(*GetParam()));
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80u) << line;
}

TEST_P(HelpOf, HasNoTwoBlankLinesAndNoBlanksAtTheEndOfALine) {
  const std::string help = tool::line::helpOf(*GetParam());

  EXPECT_EQ(help.find("\n\n\n"), std::string::npos);
  EXPECT_EQ(help.find(" \n"), std::string::npos);
  EXPECT_TRUE(help.ends_with('\n') && !help.ends_with("\n\n"));
}

TEST_P(HelpOf, SaysEverythingThatTheCommandTakes) {
  const std::string help = tool::line::helpOf(*GetParam());

  for (const auto& operand : GetParam()->operands) {
    EXPECT_NE(help.find("\n  " + std::string(operand.name)), std::string::npos) << operand.name;
    EXPECT_FALSE(operand.help.empty() && operand.choices == nullptr) << operand.name;
  }
  for (const auto& option : GetParam()->options) {
    EXPECT_NE(help.find("--" + std::string(option.longName)), std::string::npos);
    EXPECT_FALSE(option.help.empty()) << option.longName;
  }
}

TEST_P(HelpOf, HasExamplesThatTheProgramUnderstands) {
  for (const ExampleSpec& example : GetParam()->examples) {
    bool isNamed = false;
    for (const Words& words : pipelineOf(example.line)) {
      if (words.empty() || words[0] != "kraddon") continue;
      EXPECT_EQ(errorOf(words), "") << example.line;
      isNamed = isNamed || std::find(words.begin(), words.end(), GetParam()->name) != words.end();
    }
    EXPECT_TRUE(isNamed) << example.line;
    EXPECT_FALSE(example.help.empty()) << example.line;
  }
}

INSTANTIATE_TEST_SUITE_P(EveryCommand, HelpOf,
                         testing::ValuesIn(tool::commands::allCommands().begin(),
                                           tool::commands::allCommands().end()),
                         [](const auto& suite) { return std::string(suite.param->name); });

TEST(Help, TheProgramsOwnFitsATerminalToo) {
  std::istringstream lines(tool::line::programHelp(tool::commands::allCommands()));
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80u) << line;
}

TEST(Help, ALongUsageGoesOnBelowItsFirstWord) {
  static constexpr std::array kOperands{
      tool::line::OperandSpec{.name = "A-RATHER-LONG-NAME-OF-AN-OPERAND", .help = "one"},
      tool::line::OperandSpec{.name = "ANOTHER-LONG-NAME-OF-AN-OPERAND",
                              .help = "two",
                              .isRequired = false,
                              .isRepeatable = true}};
  const CommandSpec command{.name = "test", .summary = "tests", .operands = kOperands};

  EXPECT_EQ(tool::line::usageOf(command),
            "usage: kraddon test [OPTION...] A-RATHER-LONG-NAME-OF-AN-OPERAND\n"
            "                    [ANOTHER-LONG-NAME-OF-AN-OPERAND...]\n");
}

TEST(Help, WhatAVeryLongNameMeansStandsBelowIt) {
  static constexpr std::array kOptions{
      tool::line::OptionSpec{.longName = "short", .help = "one"},
      tool::line::OptionSpec{
          .longName = "with-a-very-long-name", .valueName = "AND-VALUE", .help = "two"}};
  const CommandSpec command{.name = "test", .summary = "tests", .options = kOptions};

  const std::string text = tool::line::helpOf(command);

  EXPECT_NE(text.find("\n      --with-a-very-long-name AND-VALUE\n"), std::string::npos) << text;
  const std::size_t column = text.find("one") - text.rfind('\n', text.find("one"));
  EXPECT_EQ(text.find("two") - text.rfind('\n', text.find("two")), column) << text;
}

TEST(Wrapping, BreaksLinesBeforeTheyGetTooWideAndKeepsParagraphs) {
  const std::string text = std::string(40, 'a') + " " + std::string(39, 'b') + "\nc\n\n\n  d\te\n";

  EXPECT_EQ(tool::line::wrapped(text),
            std::string(40, 'a') + " " + std::string(39, 'b') + "\nc\n\nd e\n");
  EXPECT_EQ(tool::line::wrapped(""), "");
}

TEST(Wrapping, NeverBreaksAWord) {
  const std::string wide(100, 'w');

  EXPECT_EQ(tool::line::wrapped("a " + wide + " b"), "a\n" + wide + "\nb\n");
}

}  // namespace
