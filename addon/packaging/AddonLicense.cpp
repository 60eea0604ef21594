// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonLicense.h"

namespace addon::packaging {

namespace {

constexpr Field kLicenseFields[] = {
    field<&AddonLicense::type>("type", "licenseText/@type",
                               "The name of the license, preferably an SPDX identifier.",
                               {.key = "type"}),
    field<&AddonLicense::text>("text", "licenseText", "The full license text.",
                               {.key = "text", .fileKey = "file", .isElementRequired = true}),
};

}  // namespace

constinit const DocumentTable AddonLicense::kTable{
    .record = {"license", "The license.", kLicenseFields},
    .xml = "license",
    .key = "license",
    .make = makeDocument<AddonLicense>};

}  // namespace addon::packaging
