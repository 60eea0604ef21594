// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "tool/line/Command.h"
#include "tool/line/Topic.h"

namespace tool::line {

/// The manual pages (section 1) of the program and of a command, in man(7). They have the same
/// content as the help, and do not depend on when they are made.
std::string programManual(CommandList commands, std::string_view version);
std::string manualOf(const CommandSpec& command, CommandList commands, std::string_view version);

/// Escapes text so that the formatter shows every character unchanged.
std::string escapedForManual(std::string_view text);

/// The page of a file format: section 5, under the file's name. `more` follows the sections of the
/// topic.
std::string fileManual(std::string_view file, const Topic& topic,
                       const std::vector<TopicSection>& more, std::string_view version);

}  // namespace tool::line
