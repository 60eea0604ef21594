// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "addon/checks/detail/DocumentText.h"
#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/DocumentSchema.h"
#include "opc/Exception.h"
#include "opc/model/Part.h"

namespace addon::checks::detail {

/// Runs an action that reads the package. Returns false if the content of the package is at fault,
/// which other checks report. Rethrows opc::SystemError, which says nothing about the package.
template <typename Action>
bool isReadable(const Action& action) {
  try {
    action();
    return true;
  } catch (const opc::SystemError&) {
    throw;
  } catch (const opc::Exception&) {
    return false;
  }
}

/// Where the package's relationships of one type lead.
struct Destination {
  enum class Kind : std::uint8_t {
    Nowhere,  ///< there are none
    Several,  ///< there are several, so that the right one cannot be determined
    Outside,  ///< out of the package
    Missing,  ///< to a part that is not in the package
    Part,
  };

  Kind kind = Kind::Nowhere;
  std::string name;                        ///< the target; "" for Nowhere and Several
  std::shared_ptr<opc::model::Part> part;  ///< for Kind::Part
  std::size_t count = 0;                   ///< of relationships
};

/// The package must be open.
Destination follow(opc::model::Package& package, std::u16string_view relationshipType);

/// A document that the package refers to and that can be read, whether or not it is correct.
class ReadableDocument {
 public:
  ReadableDocument(packaging::AddonPackage& package, const packaging::DocumentTable& table);

  /// Null if there is no such document.
  DocumentText* text() { return text_ ? &*text_ : nullptr; }
  const std::string& part() const { return part_; }
  const packaging::Element& root() const { return schema_.root; }

  /// The elements with the entries of a list, or with the value of another member. text() must not
  /// be null.
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
