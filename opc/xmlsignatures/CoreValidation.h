// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "opc/xmlsignatures/Certificates.h"
#include "opc/xmlsignatures/SignatureDocument.h"

namespace opc::xmlsignatures {

/// Sets up the library for this process: nothing may be loaded, nothing is printed.
void prepareLibrary();

/// Whether the library supports the algorithm, a URI, for signatures.
bool isSupportedMethod(std::string_view method);

/// Whether the references of SignedInfo and the signature value hold for the key. The manifest is
/// not looked at.
bool isCoreValid(const SignatureDocument& signature, EVP_PKEY& key);

/// Fills in the digests of SignedInfo and the signature value of a signature that has none. Returns
/// whether that was possible.
bool signCore(xmlNode& signature, EVP_PKEY& key);

}  // namespace opc::xmlsignatures
