// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace addon::checks {

enum class Severity : std::uint8_t { Error, Warning };

/// What a finding is about; its number's first digit.
enum class Group : std::uint8_t { Container = 1, Opc, Document, Reference, Style };

/// What an id stands for. Ids never change their meaning or severity; new checks get new ids.
struct FindingInfo {
  std::uint16_t number;  ///< 101 is shown as "KR101"
  Severity severity;
  std::string_view title;        ///< a few words, lower case: what is wrong
  std::string_view explanation;  ///< sentences: what is looked at, and why it matters
  std::string_view remedy;       ///< one sentence in the imperative: what to do about it
};

/// Every id there is, by number. The one source of `--explain` and of the table in the manual.
std::span<const FindingInfo> catalogue();
/// Null when there is no such number.
const FindingInfo* findInfo(std::uint16_t number);
Group groupOf(std::uint16_t number);
/// "container", "opc", "document", "reference" or "style".
std::string_view nameOf(Group group);
/// "KR101"
std::string idOf(std::uint16_t number);

/// One thing that is wrong with a package, at one place.
struct Finding {
  std::uint16_t number = 0;
  std::string part;      ///< the name of an item, part or path in the package, UTF-8; "" for all
  std::string message;   ///< one sentence that names the value at fault and says why
  std::string rule;      ///< of the packaging rules, such as "CT-6"; "" when none is broken
  std::size_t line = 0;  ///< in the part's text, from 1; 0 when there is none
};

}  // namespace addon::checks
