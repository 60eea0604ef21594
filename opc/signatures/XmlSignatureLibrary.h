// SPDX-License-Identifier: MIT
#pragma once

#include "opc/interfaces/IXmlSignatures.h"

namespace opc::signatures {

/// The library for XML signatures. It is loaded by the first call, from where the program has its
/// libraries. Throws Exception if that is not possible.
const interfaces::IXmlSignatures& xmlSignatures();

}  // namespace opc::signatures
