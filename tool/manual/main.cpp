// SPDX-License-Identifier: MIT
//
// manual FOLDER: writes the pages of all commands, and what the shells load, into a folder.
#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <nlohmann/json.hpp>
#include <string>

#include "tool/commands/CommandTable.h"
#include "tool/json/JsonSchema.h"
#include "tool/line/Completion.h"
#include "tool/line/Manual.h"
#include "tool/report/Output.h"
#include "tool/report/Schemas.h"
#include "tool/report/Topics.h"

namespace {

void write(const std::string& path, std::string_view text) {
  tool::report::writeOutputFile(path, text, {});
}

void writeAll(const std::string& folder) {
  const tool::line::CommandList commands = tool::commands::allCommands();
  write(folder + "/kraddon.1", tool::line::programManual(commands, KRADDON_VERSION));
  for (const tool::line::CommandSpec* command : commands) {
    write(fmt::format("{}/kraddon-{}.1", folder, command->name),
          tool::line::manualOf(*command, commands, KRADDON_VERSION));
  }
  write(folder + "/kraddon.toml.5",
        tool::line::fileManual("kraddon.toml", tool::report::manifestTopic(),
                               tool::report::patternsTopic().sections, KRADDON_VERSION));
  write(folder + "/manifest.schema.json",
        tool::json::schema::whole(tool::report::manifestSchema()).dump(2) + "\n");
  for (const std::string& shell : tool::line::completionShells()) {
    write(fmt::format("{}/kraddon.{}", folder, shell), tool::line::completionScript(shell));
  }
}

}  // namespace

int main(int count, char** words) {
  if (count != 2) {
    std::fputs("usage: manual FOLDER\n", stderr);
    return 2;
  }
  try {
    writeAll(words[1]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "manual: %s\n", error.what());
    return 1;
  }
}
