// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "opc/interfaces/IXmlSignatures.h"
#include "opc/signatures/ItemDigests.h"
#include "opc/signatures/SignatureParts.h"

namespace opc::signatures {

using interfaces::SignatureState;

/// "valid", "partial", "broken", "weak" or "unsupported"
std::string_view nameOf(SignatureState state);

/// A signature of a package, and what became of it. Parts are named "/a/b.xml".
struct Signature {
  std::string part;
  /// `references` are gone.
  interfaces::XmlSignature xml;
  SignatureState state = SignatureState::Unsupported;
  std::string reason;       ///< why it is not valid
  std::size_t covered = 0;  ///< how many parts, relationships parts included
  std::vector<std::string> uncovered;
  std::vector<std::string> changed;  ///< in bytes or type, or missing
  std::vector<std::string> missing;

  bool isValid() const {
    return state == SignatureState::Valid || state == SignatureState::Partial;
  }
};

struct Verification {
  std::vector<Signature> signatures;
  std::vector<SignatureFault> faults;
  /// What no valid signature covers, items that are not parts included. Empty if none is valid.
  std::vector<std::string> uncovered;

  bool isSigned() const { return !signatures.empty(); }
};

/// Checks all signatures of an open package. `anchors` may be null. Reads each part once, and not
/// at all if `known`, which may be null, says what is needed. Throws SystemError, and Exception if
/// the library for signatures cannot be loaded.
Verification verifySignatures(model::Package& package, const interfaces::ITrustAnchors* anchors,
                              const ItemDigests* known = nullptr);

/// The same, but of the parts only those with these names ("/a/b.xml") are read, and the bytes of
/// all others are taken to be as they were signed.
Verification verifyParts(model::Package& package, const std::set<std::string>& names);

}  // namespace opc::signatures
