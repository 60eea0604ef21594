// SPDX-License-Identifier: MIT
#include "tool/json/Documents.h"

#include <fmt/format.h>

#include "opc/Text.h"
#include "text/Suggest.h"
#include "tool/process/Errors.h"

namespace tool::json {

using addon::packaging::documents;
using addon::packaging::DocumentTable;

std::vector<std::string> documentNames() {
  std::vector<std::string> names;
  for (const DocumentTable* table : documents()) names.emplace_back(table->name());
  return names;
}

const DocumentTable& findDocument(std::string_view name) {
  std::vector<std::string_view> names;
  for (const DocumentTable* table : documents()) {
    if (table->name() == name) return *table;
    names.emplace_back(table->name());
  }
  const std::string all = fmt::format("the documents are {}", fmt::join(names, ", "));
  throw process::UsageError(
      process::sentence("unknown document", name, text::suggestion(name, names, all)));
}

}  // namespace tool::json
