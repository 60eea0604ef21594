// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "addon/packaging/AddonPackage.h"
#include "tool/HostJson.h"

namespace tool {

/// A metadata document as the command line sees it: JSON in, JSON out, the fields of its host
/// struct in their order. All fields are texts.
struct DocumentKind {
  std::string_view name;
  std::span<const std::string_view> fields;
  HostArrayPointer (*load)(addon::packaging::AddonPackage& package);
  void (*store)(addon::packaging::AddonPackage& package, const kxArray* document);
};

/// Throws UsageError, with the nearest name, for an unknown document.
const DocumentKind& findDocument(std::string_view name);

/// Throws JsonError that names the first field that is unknown, missing or no text
/// ("properties.name: expected a text").
void checkDocument(const DocumentKind& kind, const JsonValue& value);

/// The host struct of the document as one JSON value.
std::string toJson(const kxArray* document, JsonWriter::Layout layout);

/// A document that the package holds, found by its relationship.
struct PresentDocument {
  std::string_view name;
  std::string partName;  ///< "/metadata/license.xml"
};

/// Those that are there, all seven kinds looked for. One with several relationships counts as
/// absent, as it does for the host.
std::vector<PresentDocument> presentDocuments(addon::packaging::AddonPackage& package);

/// The part name of the primary screenshot, or "".
std::string screenshotPart(addon::packaging::AddonPackage& package);

}  // namespace tool
