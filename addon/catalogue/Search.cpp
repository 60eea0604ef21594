// SPDX-License-Identifier: MIT
#include "addon/catalogue/Search.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

#include "addon/catalogue/SitePaths.h"
#include "addon/catalogue/detail/Database.h"
#include "addon/gallery/Words.h"
#include "opc/Exception.h"

namespace addon::catalogue {

std::vector<Record> searchSite(const std::string& site, const std::vector<std::string>& operands,
                               std::uint64_t limit) {
  std::vector<std::string> words;
  for (const std::string& operand : operands) {
    for (std::string& word : gallery::splitAtBlanks(operand)) words.push_back(std::move(word));
  }
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
