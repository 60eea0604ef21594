// SPDX-License-Identifier: MIT
#include "tool/commands/detail/OneLine.h"

namespace tool::commands::detail {

std::string inOneLine(std::string text) {
  for (char& c : text) {
    if (c == '\n' || c == '\r' || c == '\t') c = ' ';
  }
  return text;
}

}  // namespace tool::commands::detail
