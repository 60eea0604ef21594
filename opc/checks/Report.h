// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "opc/checks/Finding.h"

namespace opc::checks {

/// What was found in one package. A hostile package may draw a finding an entry: of each id only
/// the first kMostKept are kept, the others are counted.
class Report {
 public:
  static constexpr std::size_t kMostKept = 1000;

  void add(FindingId id, std::string part, std::string message, std::size_t line = 0,
           std::string rule = {});
  /// For an item or part of a package that may be hostile: cuts name and message to what a person
  /// reads, so that the report stays small whatever the package holds.
  void addClipped(FindingId id, std::string_view part, std::string_view message,
                  std::string_view rule, std::size_t line = 0);

  /// In the order in which they were found.
  const std::vector<Finding>& findings() const { return findings_; }
  std::size_t errors() const { return errors_; }
  std::size_t warnings() const { return warnings_; }
  /// How many findings of an id there were, those that were not kept included.
  std::size_t count(std::uint16_t number) const;
  /// Whether another finding of this id would be kept.
  bool keeps(FindingId id) const { return count(id.number) < kMostKept; }

 private:
  std::vector<Finding> findings_;
  std::map<std::uint16_t, std::size_t> counts_;
  std::size_t errors_ = 0;
  std::size_t warnings_ = 0;
};

}  // namespace opc::checks
