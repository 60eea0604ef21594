// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "addon/catalogue/Record.h"
#include "addon/catalogue/detail/SiteFiles.h"
#include "addon/packaging/AddonPackage.h"

namespace addon::catalogue::detail {

/// Writes the screenshot of an open package into the site, and its path into the record.
void writeScreenshot(SiteFiles& files, packaging::AddonPackage& package, Record& record);

/// Writes the page of a version. It says of which `sequence` and package it is.
void writePage(SiteFiles& files, packaging::AddonPackage& package, const Record& record,
               std::uint64_t sequence);
/// The same with the package that the site has.
void writePage(SiteFiles& files, const Record& record, std::uint64_t sequence);

/// Whether the page of a version is there and is that of its package.
bool isPageOf(const SiteFiles& files, const Record& record);

/// The sequence that a file of the site begins with; 0 if there is none.
std::uint64_t sequenceAtStart(const SiteFiles& files, const std::string& path);

}  // namespace addon::catalogue::detail
