// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "addon/checks/detail/AddonFacts.h"
#include "addon/checks/detail/DocumentText.h"
#include "addon/checks/detail/ReadableDocument.h"
#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/DocumentSchema.h"
#include "opc/checks/Report.h"

namespace addon::checks::detail {

/// The table of the file tree may be as large as all other documents together, and is written by
/// the library alone.
enum class FileTable : std::uint8_t { Checked, LeftOut };

/// The findings 3xx, without those of checkIdentity().
void checkDocuments(packaging::AddonPackage& package, opc::checks::Report& report,
                    FileTable fileTable);

/// Type, name and version of the add-on. Skipped if their parts cannot be read.
void checkIdentity(packaging::AddonPackage& package, const AddonFacts& facts,
                   opc::checks::Report& report);

// The steps of checkDocuments().

/// A document that could be parsed.
struct ParsedDocument {
  const packaging::DocumentSchema& schema;
  const std::string& part;  ///< its name
  DocumentText& text;
};

/// Required and unknown elements and attributes.
void checkStructure(const ParsedDocument& document, opc::checks::Report& report);
/// Values that are not free text: flags, kinds of files, the single author.
void checkValues(const ParsedDocument& document, opc::checks::Report& report);
/// Whether the bytes of the screenshot match its content type.
void checkImage(packaging::AddonPackage& package, const Destination& image,
                opc::checks::Report& report);
/// Parts that are documents by their name or type, but have no relationship by which they would be
/// found.
void checkUnreachable(packaging::AddonPackage& package,
                      const std::vector<packaging::DocumentSchema>& schemas,
                      opc::checks::Report& report);

}  // namespace addon::checks::detail
