// SPDX-License-Identifier: MIT
#include "tests/support/Paths.h"

namespace test {

std::string sourcePath(std::string_view path) {
  return std::string(KRADDON_SOURCE_DIR "/").append(path);
}

std::string buildPath(std::string_view path) {
  return std::string(KRADDON_BINARY_DIR "/").append(path);
}

}  // namespace test
