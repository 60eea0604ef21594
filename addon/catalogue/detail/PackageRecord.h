// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

#include "addon/catalogue/Record.h"
#include "addon/packaging/AddonPackage.h"
#include "opc/interfaces/Progress.h"
#include "opc/signatures/ItemDigests.h"

namespace addon::catalogue::detail {

/// Why a package is too large for a catalogue, as its directory says; "" if it is not. Throws
/// opc::Exception if the package is not open.
std::string whyTooLarge(packaging::AddonPackage& package);

/// What a record says of an open package that `verify` has passed, without the screenshot.
/// `digests` are those of its items, as far as they are known; `stop` may be empty. Throws
/// opc::Exception, also for a record that would be too long.
Record describe(packaging::AddonPackage& package, std::string_view sha256,
                const opc::signatures::ItemDigests& digests,
                const opc::interfaces::StopFunction& stop);

/// The GUID and version alone.
void readIdentity(packaging::AddonPackage& package, Record& record);

/// An image and its usual extension; "" if there is none that every browser shows.
struct Image {
  std::string bytes;
  std::string extension;
};
Image readScreenshot(packaging::AddonPackage& package);

}  // namespace addon::catalogue::detail
