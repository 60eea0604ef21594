// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace addon::materials {

/// A license as a bill of materials names it.
struct LicenseTerms {
  /// A license expression of SPDX; "" without a license.
  std::string expression;
  /// The names in it that SPDX does not list, such as "LicenseRef-house-rules".
  std::vector<std::string> references;
};

/// The terms of a license that the author labelled with `type`, free text. An expression of SPDX is
/// taken as it is, with the usual spelling of its names; any other label becomes one "LicenseRef-".
/// A label that is empty means no license, unless there is a text of its own.
LicenseTerms licenseTermsOf(std::string_view type, bool hasText);

}  // namespace addon::materials
