// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "addon/packaging/DocumentTable.h"

namespace addon::comparison {

/// A field of a record, text or list.
struct FieldValue {
  addon::packaging::ConstRecord record;
  const addon::packaging::Field* field;
};

/// What a document says at some place: nothing, an entry of a list of texts, a field, or a record.
/// Refers to the document.
using DocumentValue =
    std::variant<std::monostate, std::u16string, FieldValue, addon::packaging::ConstRecord>;

/// A value that is not the same in both.
struct FieldDifference {
  std::string path;  ///< "apps[1].name"; counted in the second document if the record is there
  DocumentValue a;
  DocumentValue b;
};

/// What differs between two documents of that kind, in order of its table. Records of lists are
/// recognised by the fields that identify them, so that one that was put in is the only one that
/// differs.
std::vector<FieldDifference> compareDocuments(const addon::packaging::DocumentTable& table,
                                              const addon::packaging::ConstRecord& a,
                                              const addon::packaging::ConstRecord& b);

}  // namespace addon::comparison
