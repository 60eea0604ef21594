// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace test {

/// The full path of a file in the project's folder.
std::string sourcePath(std::string_view path);

/// The full path of a file in the folder of this build.
std::string buildPath(std::string_view path);

}  // namespace test
