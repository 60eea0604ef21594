// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "addon/checks/detail/DocumentText.h"
#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/DocumentSchema.h"

namespace addon::checks::detail {

/// A document that the package points at and that can be read, whatever is wrong in it.
class ReadableDocument {
 public:
  ReadableDocument(packaging::AddonPackage& package, const packaging::DocumentTable& table);

  /// Null when there is none.
  DocumentText* text() { return text_ ? &*text_ : nullptr; }
  const std::string& part() const { return part_; }
  const packaging::Element& root() const { return schema_.root; }

  /// The elements that the entries of a list stand in, or the value of another member. There must
  /// be a text.
  template <auto kPointer>
  std::vector<const xercesc::DOMElement*> elementsOf() const {
    return packaging::elementsOf(schema_.root, text_->root(), packaging::kMember<kPointer>);
  }

 private:
  packaging::DocumentSchema schema_;
  std::string part_;
  std::optional<DocumentText> text_;
};

}  // namespace addon::checks::detail
