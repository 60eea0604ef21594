// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "opc/Streams.h"

namespace opc::plservices {

/// What the product keeps beside the standard core properties, whose schema is closed.
struct HostPropertiesPart {
  static constexpr std::string_view kContentType =
      "application/vnd.pellandry.korvan.addon.hostProperties+xml";
  static constexpr const char16_t* kPartName = u"/metadata/hostProperties.xml";
  // The names in the XML.
  static constexpr const char16_t* kRoot = u"hostProperties";
  static constexpr const char16_t* kContentTypeElement = u"contentType";
  static constexpr const char16_t* kFriendlyNameElement = u"contentTypeFriendlyName";
  static constexpr const char16_t* kReleaseElement = u"korvanRelease";

  static std::u16string relationshipType();
  static std::u16string namespaceURI();

  std::u16string contentType;  ///< of what the package is to the host
  std::u16string contentTypeFriendlyName;
  std::u16string korvanRelease;

  /// Takes what it finds: missing elements read as empty, unknown ones are ignored. Throws
  /// InvalidXMLDocument.
  static HostPropertiesPart read(InputStream& stream);
  /// Throws InvalidXMLDocument for text that XML cannot carry, before a byte is handed to `stream`.
  void write(OutputStream& stream) const;

  friend bool operator==(const HostPropertiesPart&, const HostPropertiesPart&) = default;
};

}  // namespace opc::plservices
