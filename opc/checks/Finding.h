// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace opc::checks {

enum class Severity : std::uint8_t { Error, Warning };

/// Identifies a kind of finding. Ids never change their meaning; new checks get new ids. The
/// severity is fixed, except for what Report::addAmbiguous() adds.
struct FindingId {
  std::uint16_t number = 0;  ///< 101 is shown as "KR101"
  Severity severity = Severity::Error;

  bool operator==(const FindingId&) const = default;
  bool operator<(const FindingId& other) const {
    return number != other.number ? number < other.number : severity < other.severity;
  }
};

/// "KR101"
std::string idOf(std::uint16_t number);
/// "error" or "warning"
std::string_view nameOf(Severity severity);

/// What an id means.
struct FindingInfo {
  FindingId id;
  std::string_view title;        ///< a few words, lower case: what is wrong
  std::string_view explanation;  ///< sentences: what is checked, and why it matters
  std::string_view remedy;       ///< one sentence in the imperative: how to fix it
};

/// Text from a package between quotes, for one line of a message: control characters are escaped,
/// and long text is cut, since a package may hold megabytes of it.
std::string quoted(std::string_view text);
std::string quoted(std::u16string_view text);

/// One thing that is wrong with a package, at one place.
struct Finding {
  FindingId id;
  std::string
      part;  ///< the name of an item, part or path in the package, UTF-8; "" for the package
  std::string message;   ///< one sentence that names the faulty value and says why
  std::size_t line = 0;  ///< in the part's text, from 1; 0 if unknown
  std::string rule;      ///< the packaging rule that is broken, such as "CT-6"; "" if none
};

}  // namespace opc::checks
