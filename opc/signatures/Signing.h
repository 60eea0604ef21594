// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "opc/interfaces/IXmlSignatures.h"
#include "opc/model/Package.h"
#include "opc/signatures/ItemDigests.h"

namespace opc::signatures {

/// Adds a signature over all parts of a package that is open for changing, as they are now; a
/// second one leaves the first as it is. `time` is in seconds since 1970. Returns the name of the
/// signature part. Throws Exception, also for an item that is not a part but stays in the package.
///
/// The signature is made when the package is committed. `known`, which may be empty, is then asked
/// for the digests of items; without it the parts are read before. What it throws ends the commit.
/// After that `signer` is released.
std::string addSignature(model::Package& package, std::shared_ptr<const interfaces::ISigner> signer,
                         std::int64_t time, std::function<const ItemDigests&()> known = nullptr);

}  // namespace opc::signatures
