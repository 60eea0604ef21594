// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "opc/model/PartName.h"

namespace opc::model::detail {

/// Where the target of an internal relationship leads.
struct ResolvedTarget {
  PartName name;
  std::u16string fragment;  ///< "#..." as stored, or empty; it does not help to find the part
  /// Whether something was put right that others write and the rules forbid: a query, a backslash,
  /// a space, or a percent-encoded letter, digit, '-', '.', '_' or '~'.
  bool corrected = false;
};

/// Resolves `target` as RFC 3986, 5.2, does, against the relationship's source: the item name of a
/// part, or "" for the package. ".." above the root stays there. Throws FormatError (RL-7 for what
/// is not a relative reference, RL-8 for what leads to no part name).
ResolvedTarget resolveTarget(std::string_view sourceItemName, std::u16string_view target);

}  // namespace opc::model::detail
