// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonSystemRequirements.h"

namespace addon::packaging {

namespace {

constexpr Field kProductFields[] = {
    field<&ProductDependency::name>("name", "@name", "What it is called.",
                                    {.key = "name", .isKeyRequired = true, .identity = 2}),
    field<&ProductDependency::version>("version", "@version", "Which version is needed.",
                                       {.key = "version"}),
    field<&ProductDependency::identifier>("identifier", "@identifier", "Its identifier.",
                                          {.key = "identifier", .identity = 1}),
};

constexpr Field kRequirementFields[] = {
    field<&AddonSystemRequirements::productDependencies>(
        "productDependency", "requiredProducts/product", "Products that must be installed.",
        {.key = "product"}),
    field<&AddonSystemRequirements::supportPackageDependencies>(
        "supportPackageDependency", "requiredSupportPackages/supportPackage",
        "Support packages that must be there.", {.key = "support-package"}),
};

}  // namespace

constinit const RecordTable ProductDependency::kTable{"product", "A product or support package.",
                                                      kProductFields};

constinit const DocumentTable AddonSystemRequirements::kTable{
    .record = {"requirements", "What the add-on needs.", kRequirementFields},
    .xml = "systemRequirements",
    .key = "requirements",
    .make = makeDocument<AddonSystemRequirements>};

}  // namespace addon::packaging
