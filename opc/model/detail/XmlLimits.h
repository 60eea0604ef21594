// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace opc::model::detail {

/// Whether the limits for documents that are read in pieces apply as well.
enum class PieceLimits { None, Checked };

/// Refuses a document that the parser must not see, in one pass over its bytes (UTF-8, no byte
/// order mark): a document type, a U+0000, and whatever would cost memory or time out of
/// proportion.
///
/// Throws InvalidXMLDocument with the rule and the place. A document that is not well-formed is let
/// through at its first fault: the parser stops there too, and says more about it.
void checkXmlLimits(std::string_view document, PieceLimits pieces = PieceLimits::None);

}  // namespace opc::model::detail
