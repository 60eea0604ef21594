// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "opc/Exception.h"

namespace opc::model {

/// XML that cannot be read, or text that XML cannot carry. Line and column count from 1 and are 0
/// where there is no place to name (serialising).
class InvalidXMLDocument : public Exception {
 public:
  /// `rule` names the package rule that is broken ("XM-2"), or is empty.
  InvalidXMLDocument(const std::string& why, std::uint64_t line, std::uint64_t column,
                     std::string rule = {});

  std::uint64_t line() const noexcept { return line_; }
  std::uint64_t column() const noexcept { return column_; }
  const std::string& rule() const noexcept { return rule_; }

 private:
  std::uint64_t line_;
  std::uint64_t column_;
  std::string rule_;
};

}  // namespace opc::model
