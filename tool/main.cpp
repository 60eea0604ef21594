// SPDX-License-Identifier: MIT
#include <cstddef>

#include "tool/Program.h"

int main(int argc, char* argv[]) {
  const std::size_t first = argc > 0 ? 1 : 0;
  return static_cast<int>(tool::runProgram({argv + first, argv + argc}));
}
