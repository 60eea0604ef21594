// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "opc/interfaces/IXmlSignatures.h"
#include "opc/xmlsignatures/XmlDocument.h"

namespace opc::xmlsignatures {

/// A signature whose structure was checked, element by element, before any library validates it:
/// one Signature, which is the root; ids that occur once; references of SignedInfo only to ids of
/// objects directly below the signature, or of elements in them; one Manifest, in the package
/// object, which SignedInfo refers to.
struct SignatureDocument {
  Document document;
  xmlNode* signature = nullptr;
  std::string canonicalisation;           ///< an algorithm, as a URI
  std::string method;                     ///< the same
  std::vector<std::string> signedUris;    ///< of the references in SignedInfo
  std::vector<std::string> certificates;  ///< of KeyInfo, in DER
  std::optional<std::int64_t> time;
  std::vector<interfaces::ManifestReference> references;
};

/// Throws Refusal, and Exception (ErrorCode::InvalidXml).
SignatureDocument readSignature(std::string_view xml);

}  // namespace opc::xmlsignatures
