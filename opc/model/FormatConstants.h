// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace opc::model {

/// Names that the Open Packaging Conventions fix (ISO/IEC 29500-2, annexes B, F and elsewhere).
inline constexpr std::u16string_view kContentTypesNamespace =
    u"http://schemas.openxmlformats.org/package/2006/content-types";
inline constexpr std::u16string_view kRelationshipsNamespace =
    u"http://schemas.openxmlformats.org/package/2006/relationships";
inline constexpr std::u16string_view kMarkupCompatibilityNamespace =
    u"http://schemas.openxmlformats.org/markup-compatibility/2006";
inline constexpr std::u16string_view kXmlNamespace = u"http://www.w3.org/XML/1998/namespace";
inline constexpr std::u16string_view kXmlnsNamespace = u"http://www.w3.org/2000/xmlns/";
inline constexpr std::u16string_view kSchemaInstanceNamespace =
    u"http://www.w3.org/2001/XMLSchema-instance";

inline constexpr std::u16string_view kCorePropertiesRelationship =
    u"http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties";
inline constexpr std::u16string_view kThumbnailRelationship =
    u"http://schemas.openxmlformats.org/package/2006/relationships/metadata/thumbnail";

inline constexpr std::string_view kRelationshipsExtension = "rels";
inline constexpr std::string_view kRelationshipsType =
    "application/vnd.openxmlformats-package.relationships+xml";

inline constexpr std::string_view kContentTypesItem = "[Content_Types].xml";
inline constexpr std::string_view kNoContentTypes =
    "it is a ZIP file, but not a package: it has no [Content_Types].xml";
inline constexpr std::string_view kPackageRelationshipsItem = "_rels/.rels";

}  // namespace opc::model
