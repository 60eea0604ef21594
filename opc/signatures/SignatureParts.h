// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "opc/model/Package.h"

namespace opc::signatures {

// Names that the packaging conventions fix.
inline constexpr std::u16string_view kOriginRelationship =
    u"http://schemas.openxmlformats.org/package/2006/relationships/digital-signature/origin";
inline constexpr std::u16string_view kSignatureRelationship =
    u"http://schemas.openxmlformats.org/package/2006/relationships/digital-signature/signature";
inline constexpr std::u16string_view kCertificateRelationship =
    u"http://schemas.openxmlformats.org/package/2006/relationships/digital-signature/certificate";
inline constexpr std::string_view kOriginType =
    "application/vnd.openxmlformats-package.digital-signature-origin";
inline constexpr std::string_view kSignatureType =
    "application/vnd.openxmlformats-package.digital-signature-xmlsignature+xml";
inline constexpr std::string_view kCertificateType =
    "application/vnd.openxmlformats-package.digital-signature-certificate";

/// Whether a part of this content type belongs to signatures.
bool isSignatureType(const model::ContentType& type);

/// "/a/b.xml" for the name of an item, percent-encoded.
std::string partNameOf(std::string_view itemName);

/// Something about signatures that is not as the conventions, or this program, want it.
struct SignatureFault {
  std::string part;  ///< "/a/b.xml", or "" for the package
  std::string message;
};

/// The parts that carry the signatures of a package.
struct SignatureParts {
  struct One {
    model::PartId part;
    std::vector<model::PartId> certificates;
  };

  std::optional<model::PartId> origin;
  std::vector<One> signatures;  ///< in the order of their relationships
  std::vector<SignatureFault> faults;
  /// The names of all of these and of their relationships parts, which no signature has to cover.
  std::set<std::string> exempt;
};

/// Follows the relationships. The package must be open. Throws SystemError; what else goes wrong is
/// a fault.
SignatureParts findSignatures(model::Package& package);

/// How many there are, valid or not. Throws as reading relationships does.
std::size_t countSignatures(model::Package& package);

/// Takes away all signatures: the parts above, every other part of one of their content types
/// outside of the add-on's own folders, and the relationships that lead to them. Returns whether
/// there was anything.
bool removeSignatures(model::Package& package);

}  // namespace opc::signatures
