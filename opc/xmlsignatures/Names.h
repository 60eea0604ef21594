// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace opc::xmlsignatures {

// Names that XML Signature and the packaging conventions fix.
inline constexpr std::string_view kDsig = "http://www.w3.org/2000/09/xmldsig#";
inline constexpr std::string_view kPackageDsig =
    "http://schemas.openxmlformats.org/package/2006/digital-signature";
inline constexpr std::string_view kRelationships =
    "http://schemas.openxmlformats.org/package/2006/relationships";

inline constexpr std::string_view kC14n = "http://www.w3.org/TR/2001/REC-xml-c14n-20010315";
inline constexpr std::string_view kC14nWithComments =
    "http://www.w3.org/TR/2001/REC-xml-c14n-20010315#WithComments";
inline constexpr std::string_view kRelationshipTransform =
    "http://schemas.openxmlformats.org/package/2006/RelationshipTransform";
inline constexpr std::string_view kObjectType = "http://www.w3.org/2000/09/xmldsig#Object";

inline constexpr std::string_view kPackageObject = "idPackageObject";

}  // namespace opc::xmlsignatures
