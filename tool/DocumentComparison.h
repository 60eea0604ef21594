// SPDX-License-Identifier: MIT
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tool/DocumentShape.h"
#include "tool/JsonText.h"

namespace tool {

/// A value that is not the same in both: a text, a list or record that only one of them has, or
/// null where there is none.
struct FieldDifference {
  std::string path;  ///< "apps[1].name"; counted in the second document if the record is there
  JsonValue a;
  JsonValue b;
};

/// What differs between two documents of that shape, in order of the shape. Records of lists are
/// recognised by their keys, so that one that was put in is the only one that differs.
std::vector<FieldDifference> compareDocuments(const DocumentShape& shape, const JsonValue& a,
                                              const JsonValue& b);

}  // namespace tool
