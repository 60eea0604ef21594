// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "opc/interfaces/IXmlSignatures.h"
#include "tool/line/Arguments.h"

namespace tool::commands::detail {

/// The certificates that --trust names; null without the option. Throws Failure.
std::unique_ptr<opc::interfaces::ITrustAnchors> trustAnchorsOf(const line::Invocation& invocation);

}  // namespace tool::commands::detail
