// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "addon/packaging/AddonPackage.h"
#include "tool/line/Arguments.h"

namespace tool::commands::detail {

using addon::packaging::AddonPackage;

std::unique_ptr<AddonPackage> openForReading(const std::string& path);
std::unique_ptr<AddonPackage> openForChanging(const std::string& path);

/// Warns, unless --quiet is set, if a package without files is not an add-on either.
void warnIfNotAddon(AddonPackage& package, const std::string& path,
                    const line::Invocation& invocation);

}  // namespace tool::commands::detail
