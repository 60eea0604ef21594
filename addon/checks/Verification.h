// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "addon/checks/Report.h"
#include "opc/interfaces/Progress.h"

namespace addon::checks {

enum class Scope {
  AnyPackage,  ///< container and packaging rules
  Addon,       ///< those, and what makes an add-on: documents, references, style
};

/// Checks everything about the package at `path` (UTF-8): reads every byte once, and verifies every
/// checksum. Throws opc::SystemError when the file cannot be opened or read, and opc::Exception
/// when it is no regular file or its directory is beyond 128 MiB; whatever is wrong with its
/// content goes into the report. A check that needs what an earlier one found broken is left out.
/// `progress` may be empty; it tells of the items that have been read.
Report verifyPackage(const std::string& path, Scope scope,
                     const opc::interfaces::ProgressFunction& progress = nullptr);

}  // namespace addon::checks
