// SPDX-License-Identifier: MIT
#include "addon/catalogue/Search.h"

#include <unistd.h>

#include <cerrno>

#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/detail/Database.h"
#include "opc/Exception.h"

namespace addon::catalogue {

namespace {

/// Blanks within an operand part words, too.
std::vector<std::string> wordsIn(const std::vector<std::string>& operands) {
  constexpr const char* kBlanks = " \t\r\n\f\v";
  std::vector<std::string> words;
  for (const std::string& operand : operands) {
    std::size_t end = 0;
    while (true) {
      const std::size_t start = operand.find_first_not_of(kBlanks, end);
      if (start == std::string::npos) break;
      end = operand.find_first_of(kBlanks, start);
      if (end == std::string::npos) end = operand.size();
      words.push_back(operand.substr(start, end - start));
    }
  }
  return words;
}

}  // namespace

std::vector<Record> searchSite(const std::string& site, const std::vector<std::string>& operands,
                               std::uint64_t limit) {
  const std::vector<std::string> words = wordsIn(operands);
  if (words.empty()) return {};
  std::string path = site;
  if (!path.ends_with('/')) path += '/';
  path += kDatabase;
  // SQLite only says that it cannot open it.
  if (::access(path.c_str(), R_OK) != 0) {
    throw opc::SystemError("cannot read '" + path + "'", errno);
  }
  return detail::Database::read(path).search(words, limit);
}

}  // namespace addon::catalogue
