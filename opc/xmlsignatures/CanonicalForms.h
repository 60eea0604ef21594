// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "opc/interfaces/IXmlSignatures.h"

namespace opc::xmlsignatures {

/// See IXmlSignatures.
interfaces::CanonicalXml canonicalise(std::string_view xml, bool keepsComments);
interfaces::CanonicalXml selectRelationships(std::string_view xml,
                                             const interfaces::ManifestReference& reference);

}  // namespace opc::xmlsignatures
