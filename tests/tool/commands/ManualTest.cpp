// SPDX-License-Identifier: MIT
#include "tool/line/Manual.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tool/commands/CommandTable.h"

namespace {

TEST(Manual, EscapesWhatTheFormatterWouldTakeForItsOwn) {
  EXPECT_EQ(tool::line::escapedForManual("a-b\\c"), "a\\-b\\ec");
  EXPECT_EQ(tool::line::escapedForManual(".kraddonignore"), "\\&.kraddonignore");
  EXPECT_EQ(tool::line::escapedForManual("'x' `y` ~^"), "\\&\\(aqx\\(aq \\(gay\\(ga \\(ti\\(ha");
}

TEST(Manual, APageHasAllSections) {
  const std::string page = tool::line::manualOf(tool::commands::findCommand("create"),
                                                tool::commands::allCommands(), "1.2.3");

  for (const char* section : {"NAME", "SYNOPSIS", "DESCRIPTION", "OPERANDS", "OPTIONS", "EXAMPLES",
                              "EXIT STATUS", "ENVIRONMENT", "SEE ALSO"}) {
    EXPECT_NE(page.find(std::string("\n.SH ") + section + "\n"), std::string::npos) << section;
  }
  EXPECT_NE(page.find("\nkraddon\\-create \\- creates a package\n"), std::string::npos);
  EXPECT_NE(page.find("\"kraddon 1.2.3\""), std::string::npos);
}

TEST(Manual, NoTextBecomesARequest) {
  static constexpr std::array kOperands{
      tool::line::OperandSpec{.name = "X", .help = ".so /etc/passwd"}};
  const tool::line::CommandSpec command{.name = "test",
                                        .summary = "tests",
                                        .description = "one\n.so two\n\n'three four. .five",
                                        .operands = kOperands};

  const std::string page = tool::line::manualOf(command, tool::commands::allCommands(), "1");

  EXPECT_EQ(page.find("\n.so"), std::string::npos);
  EXPECT_EQ(page.find("\n'"), std::string::npos);
  EXPECT_EQ(page.find("\n.five"), std::string::npos);
}

TEST(Manual, TheProgramsPageLeadsToEveryCommand) {
  const std::string page = tool::line::programManual(tool::commands::allCommands(), "1");

  for (const tool::line::CommandSpec* command : tool::commands::allCommands()) {
    EXPECT_NE(page.find("kraddon\\-" + std::string(command->name) + " (1)"), std::string::npos)
        << command->name;
  }
}

}  // namespace
