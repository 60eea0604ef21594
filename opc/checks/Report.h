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

/// What a package is checked as. Add-ons are unpacked by other programs too, so it is an error if
/// those may unpack something else.
enum class Subject : std::uint8_t { Package, Addon };

/// What was found in one package. A hostile package may cause a finding for each entry, so only the
/// first kMaxKept of each id are kept; the others are counted.
class Report {
 public:
  static constexpr std::size_t kMaxKept = 1000;

  explicit Report(Subject subject = Subject::Package) : subject_(subject) {}

  Subject subject() const { return subject_; }

  void add(FindingId id, std::string part, std::string message, std::size_t line = 0,
           std::string rule = {});
  /// The same for an item or part of a package that may be hostile: shortens name and message, so
  /// that the report stays small whatever the package contains.
  void addClipped(FindingId id, std::string_view part, std::string_view message,
                  std::string_view rule, std::size_t line = 0);

  /// The same for something that other ZIP readers may unpack differently: an error in an add-on,
  /// whatever the severity of `id`.
  void addAmbiguous(FindingId id, std::string_view part, std::string_view message,
                    std::string_view rule);

  /// In the order of discovery.
  const std::vector<Finding>& findings() const { return findings_; }
  std::size_t errors() const { return errors_; }
  std::size_t warnings() const { return warnings_; }
  /// The number of findings of an id, including those that were not kept.
  std::size_t count(FindingId id) const;
  /// The same of both severities.
  std::size_t count(std::uint16_t number) const;
  /// Whether another finding of this id would be kept.
  bool keeps(FindingId id) const { return count(id) < kMaxKept; }

 private:
  Subject subject_;
  std::vector<Finding> findings_;
  std::map<FindingId, std::size_t> counts_;
  std::size_t errors_ = 0;
  std::size_t warnings_ = 0;
};

}  // namespace opc::checks
