// SPDX-License-Identifier: MIT
#include "hostarray/standin/FieldNames.h"

#include "hostarray/standin/Raise.h"

namespace hostarray::standin {

FieldNames::FieldNames(std::size_t count, const char* const* names) {
  if (count > 0 && names == nullptr) raise("badArgument", "The names of the fields are missing.");
  for (std::size_t i = 0; i < count; ++i) {
    if (names[i] == nullptr || *names[i] == '\0') {
      raise("badArgument", "Field " + std::to_string(i) + " of a struct has no name.");
    }
    names_.emplace_back(names[i]);
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (!positions_.emplace(names_[i], i).second) {
      raise("badArgument", "A struct cannot have two fields '" + names_[i] + "'.");
    }
  }
}

std::size_t FieldNames::find(std::string_view name) const noexcept {
  const auto found = positions_.find(name);
  return found == positions_.end() ? kNone : found->second;
}

}  // namespace hostarray::standin
