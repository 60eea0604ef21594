// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonLicense.h"

namespace addon::packaging {

namespace {

constexpr Field kLicenseFields[] = {
    field<&AddonLicense::type>("type", "licenseText/@type",
                               "The kind of license, such as an SPDX identifier.", {.key = "type"}),
    field<&AddonLicense::text>("text", "licenseText", "The terms in full.",
                               {.key = "text", .fileKey = "file", .isElementRequired = true}),
};

}  // namespace

constinit const DocumentTable AddonLicense::kTable{
    .record = {"license", "The terms.", kLicenseFields},
    .xml = "license",
    .key = "license",
    .make = makeDocument<AddonLicense>};

}  // namespace addon::packaging
