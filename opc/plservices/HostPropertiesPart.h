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
  static std::u16string relationshipType();

  std::u16string contentType;  ///< of what the package is to the host
  std::u16string contentTypeFriendlyName;
  std::u16string korvanRelease;

  /// Takes what it finds: elements that are missing read as empty, others are passed over. Throws
  /// InvalidXMLDocument.
  static HostPropertiesPart read(InputStream& stream);
  /// Throws InvalidXMLDocument for text that XML cannot carry, before a byte is handed to `stream`.
  void write(OutputStream& stream) const;

  friend bool operator==(const HostPropertiesPart&, const HostPropertiesPart&) = default;
};

}  // namespace opc::plservices
