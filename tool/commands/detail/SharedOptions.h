// SPDX-License-Identifier: MIT
#pragma once

#include "tool/json/Documents.h"
#include "tool/line/Command.h"

namespace tool::commands::detail {

// Operands and options that several commands share.
inline constexpr line::OperandSpec kDocumentOperand{
    .name = "DOCUMENT",
    .help = "properties, license, configuration, apps, examples, revisions or requirements",
    .choices = json::documentNames};
inline constexpr line::OptionSpec kDefaultExcludesOption{
    .longName = "default-excludes", .help = "leave out files of version control and editors"};
inline constexpr line::OptionSpec kDryRunOption{.longName = "dry-run",
                                                .help = "print what would be done, change nothing"};
inline constexpr line::OptionSpec kExcludeOption{.longName = "exclude",
                                                 .valueName = "GLOB",
                                                 .help = "leave out what matches, as in gitignore",
                                                 .isRepeatable = true};
inline constexpr line::OptionSpec kFollowOption{.longName = "follow",
                                                .help = "follow links that lead out of FOLDER"};
inline constexpr line::OptionSpec kJsonOption{.longName = "json", .help = "print one JSON value"};
inline constexpr line::OptionSpec kGlobOption{.longName = "glob",
                                              .help = "take each PATH as a pattern"};
inline constexpr line::OptionSpec kTimestampOption{
    .longName = "timestamp",
    .valueName = "SECONDS",
    .help = "time of everything written, in seconds since 1970"};
inline constexpr line::OptionSpec kLevelOption{
    .longName = "level", .valueName = "0..9", .help = "how hard to pack; 0 stores, default 6"};

}  // namespace tool::commands::detail
