// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "addon/catalogue/detail/SiteFiles.h"

namespace addon::catalogue::detail {

/// The files that are given, and all packages below the folders that are given, in order, but not
/// those of the folder `site`. Throws opc::SystemError for a folder that cannot be read.
std::vector<std::string> packagesIn(const std::vector<std::string>& given, const std::string& site);

/// The paths of all packages that a site has, named by the root or not.
std::vector<std::string> storedPackages(const SiteFiles& files);

/// The last sequence that anything of a site without root says; 0 if nothing does.
std::uint64_t lastSequence(const SiteFiles& files);

/// Makes the folder of a site unless it exists. Throws opc::Exception if it holds anything else.
void prepareFolder(const std::string& folder);

}  // namespace addon::catalogue::detail
