// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "addon/checks/detail/DocumentText.h"
#include "addon/packaging/AddonPackage.h"

namespace addon::checks::detail {

/// A document that the package points at and that can be read, whatever is wrong in it.
class ReadableDocument {
 public:
  ReadableDocument(packaging::AddonPackage& package, std::u16string_view relationshipType);

  /// Null when there is none.
  DocumentText* text() { return text_ ? &*text_ : nullptr; }
  const std::string& part() const { return part_; }

 private:
  std::string part_;
  std::optional<DocumentText> text_;
};

}  // namespace addon::checks::detail
