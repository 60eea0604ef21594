// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "opc/interfaces/IXmlSignatures.h"

namespace opc::xmlsignatures {

/// See IXmlSignatures.
std::unique_ptr<interfaces::ISigner> openSigner(const interfaces::KeyFiles& files,
                                                std::int64_t time);

}  // namespace opc::xmlsignatures
