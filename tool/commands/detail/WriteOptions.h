// SPDX-License-Identifier: MIT
#pragma once

#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tool/line/Arguments.h"

namespace tool::commands::detail {

/// How to write, as --timestamp and --level say.
opc::zippackage::WriteOptions writeOptionsOf(const line::Invocation& invocation);

/// A function that shows a progress bar as long as it exists.
opc::interfaces::ProgressFunction startProgressBar(const line::Settings& settings);

}  // namespace tool::commands::detail
