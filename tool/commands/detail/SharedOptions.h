// SPDX-License-Identifier: MIT
#pragma once

#include "tool/json/Documents.h"
#include "tool/line/Command.h"

namespace tool::commands::detail {

// Operands and options that several commands share.
inline constexpr line::OperandSpec kPackageOperand{.name = "PACKAGE", .help = "the package"};
inline constexpr line::OperandSpec kAllPathsOperand{
    .name = "PATH",
    .help = "files, or folders with everything below them (default: all)",
    .isRequired = false,
    .isRepeatable = true};
inline constexpr line::OperandSpec kDocumentOperand{.name = "DOCUMENT",
                                                    .choices = json::documentNames};
inline constexpr line::OptionSpec kDefaultExcludesOption{
    .longName = "default-excludes",
    .help = "leave out files of version control systems and editors"};
inline constexpr line::OptionSpec kDryRunOption{.longName = "dry-run",
                                                .help = "list what would be done, change nothing"};
inline constexpr line::OptionSpec kExcludeOption{
    .longName = "exclude",
    .valueName = "GLOB",
    .help = "leave out files that match, as in gitignore",
    .isRepeatable = true};
inline constexpr line::OptionSpec kFollowOption{
    .longName = "follow", .help = "follow symbolic links whose target is outside the folder"};
inline constexpr line::OptionSpec kJsonOption{.longName = "json", .help = "print one JSON value"};
inline constexpr line::OptionSpec kNoVerifyOption{
    .longName = "no-verify", .help = "do not check what the change does to the package"};
inline constexpr line::OptionSpec kGlobOption{.longName = "glob",
                                              .help = "treat each PATH as a pattern"};
inline constexpr line::OptionSpec kTrustOption{
    .longName = "trust",
    .valueName = "FILE",
    .help = "trusted certificates in PEM; every signer must chain to one of them",
    .isRepeatable = true};
inline constexpr line::OptionSpec kTimestampOption{
    .longName = "timestamp",
    .valueName = "SECONDS",
    .help = "the time of everything written, in seconds since 1970"};
inline constexpr line::OptionSpec kLevelOption{
    .longName = "level",
    .valueName = "0..9",
    .help = "compression level; 0 only stores (default: 6)"};

inline constexpr line::OptionSpec kLockTimeoutOption{
    .longName = "lock-timeout",
    .valueName = "SECONDS",
    .help = "how long to wait for other commands to finish (default: 60)"};

}  // namespace tool::commands::detail
