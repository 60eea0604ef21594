// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "text/LineDifference.h"

namespace text {

/// What a line of a unified difference is.
enum class HunkLine { Header, Same, Removed, Added, NoLineEnd };

/// Gets each line of the output, without its mark (' ', '-', '+') and without a line end.
using HunkSink = std::function<void(HunkLine kind, std::string_view text)>;

/// Goes through the differences as `diff -u` prints them, with three same lines round each.
void visitHunks(std::span<const std::string_view> a, std::span<const std::string_view> b,
                std::span<const ChangedBlock> blocks, const HunkSink& sink);

/// A file name for the line above the hunks, as `patch` reads it: one with a quote, a backslash,
/// control characters or a blank at its end is quoted; one with another blank is followed by a tab.
std::string patchName(std::string_view path);

}  // namespace text
