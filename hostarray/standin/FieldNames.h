// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace hostarray::standin {

/// The ordered field names of a struct array, shared by the array and the copies of its elements.
class FieldNames {
 public:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  /// Raises Korvan:badArgument for a name that is missing, empty or there twice.
  FieldNames(std::size_t count, const char* const* names);
  FieldNames(const FieldNames&) = delete;
  FieldNames& operator=(const FieldNames&) = delete;

  std::size_t size() const noexcept { return names_.size(); }
  const std::string& name(std::size_t field) const { return names_[field]; }
  /// The position of a name, or kNone.
  std::size_t find(std::string_view name) const noexcept;

 private:
  std::vector<std::string> names_;
  std::unordered_map<std::string_view, std::size_t> positions_;  // views of names_
};

}  // namespace hostarray::standin
