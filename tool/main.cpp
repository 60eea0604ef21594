// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include "tool/Program.h"

int main(int argc, char* argv[]) {
  const std::vector<std::string> words(argv + (argc > 0 ? 1 : 0), argv + argc);
  return static_cast<int>(tool::runProgram(words));
}
