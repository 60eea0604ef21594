// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "opc/interfaces/IXmlSignatures.h"
#include "opc/model/Package.h"

namespace opc::signatures {

/// Adds a signature over all parts of a package that is open for changing, as they are now; a
/// second one leaves the first as it is. `time` is in seconds since 1970. Returns the name of the
/// signature part. Throws Exception, also for an item that is not a part but stays in the package.
std::string addSignature(model::Package& package, const interfaces::ISigner& signer,
                         std::int64_t time);

}  // namespace opc::signatures
