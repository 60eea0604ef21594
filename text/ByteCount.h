// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace text {

/// "3.1 MB": three digits at most, in powers of 1000.
std::string describeBytes(std::uint64_t bytes);

/// "12,345"
std::string grouped(std::uint64_t count);

enum class Digits { Plain, Grouped };

/// "1 file", "12345 files"; "12,345 files" when grouped.
std::string counted(std::uint64_t count, std::string_view noun, Digits digits = Digits::Plain);

}  // namespace text
