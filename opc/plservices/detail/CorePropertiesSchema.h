// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <string_view>

#include "opc/plservices/CorePropertiesPart.h"

namespace opc::plservices::detail::schema {

inline constexpr std::u16string_view kCore =
    u"http://schemas.openxmlformats.org/package/2006/metadata/core-properties";
inline constexpr std::u16string_view kElements = u"http://purl.org/dc/elements/1.1/";
inline constexpr std::u16string_view kTerms = u"http://purl.org/dc/terms/";

inline constexpr std::u16string_view kRoot = u"coreProperties";
inline constexpr std::u16string_view kKeywords = u"keywords";
inline constexpr std::u16string_view kValue = u"value";
inline constexpr std::u16string_view kDateType = u"W3CDTF";

struct TextElement {
  TextProperty property;
  std::u16string_view space;
  std::u16string_view name;
};
inline constexpr std::array<TextElement, kTextProperties> kTextElements{{
    {TextProperty::Category, kCore, u"category"},
    {TextProperty::ContentStatus, kCore, u"contentStatus"},
    {TextProperty::ContentType, kCore, u"contentType"},
    {TextProperty::Creator, kElements, u"creator"},
    {TextProperty::Description, kElements, u"description"},
    {TextProperty::Identifier, kElements, u"identifier"},
    {TextProperty::Language, kElements, u"language"},
    {TextProperty::LastModifiedBy, kCore, u"lastModifiedBy"},
    {TextProperty::Revision, kCore, u"revision"},
    {TextProperty::Subject, kElements, u"subject"},
    {TextProperty::Title, kElements, u"title"},
    {TextProperty::Version, kCore, u"version"},
}};

struct DateElement {
  DateProperty property;
  std::u16string_view space;
  std::u16string_view name;
};
inline constexpr std::array<DateElement, kDateProperties> kDateElements{{
    {DateProperty::Created, kTerms, u"created"},
    {DateProperty::LastPrinted, kCore, u"lastPrinted"},
    {DateProperty::Modified, kTerms, u"modified"},
}};

}  // namespace opc::plservices::detail::schema
