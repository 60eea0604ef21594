// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace opc::model {

/// A URI reference, kept as it was given.
class URI {
 public:
  explicit URI(std::u16string text) : text_(std::move(text)) {}
  const std::u16string& toString() const { return text_; }

  friend bool operator==(const URI&, const URI&) = default;

 private:
  std::u16string text_;
};

}  // namespace opc::model
