// SPDX-License-Identifier: MIT
#include "tool/json/Schemas.h"

#include <array>

namespace tool::json {

// The files in schemas/.
extern const std::string_view kManifestSchema;
extern const std::string_view kInfoSchema;
extern const std::string_view kListSchema;
extern const std::string_view kVerifySchema;
extern const std::string_view kDiffSchema;
extern const std::string_view kBuildSchema;
extern const std::string_view kPropertiesSchema;
extern const std::string_view kLicenseSchema;
extern const std::string_view kConfigurationSchema;
extern const std::string_view kAppsSchema;
extern const std::string_view kExamplesSchema;
extern const std::string_view kRevisionsSchema;
extern const std::string_view kRequirementsSchema;

std::span<const Schema> schemas() {
  static const std::array kSchemas{Schema{"manifest", kManifestSchema},
                                   Schema{"info", kInfoSchema},
                                   Schema{"list", kListSchema},
                                   Schema{"verify", kVerifySchema},
                                   Schema{"diff", kDiffSchema},
                                   Schema{"build", kBuildSchema},
                                   Schema{"properties", kPropertiesSchema},
                                   Schema{"license", kLicenseSchema},
                                   Schema{"configuration", kConfigurationSchema},
                                   Schema{"apps", kAppsSchema},
                                   Schema{"examples", kExamplesSchema},
                                   Schema{"revisions", kRevisionsSchema},
                                   Schema{"requirements", kRequirementsSchema}};
  return kSchemas;
}

}  // namespace tool::json
