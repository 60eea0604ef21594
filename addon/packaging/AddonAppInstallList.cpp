// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonAppInstallList.h"

namespace addon::packaging {

namespace {

constexpr Field kAppFields[] = {
    field<&AddonAppInstall::name>("name", "@name", "What the app is called.",
                                  {.key = "name", .isKeyRequired = true, .identity = 3}),
    field<&AddonAppInstall::guid>(
        "guid", "@guid", "What identifies the app.",
        {.key = "guid", .otherwise = "made from the add-on's and `file`", .identity = 1}),
    // The path goes by two names: "relativePath" to the host, "file" in XML and in the manifest.
    field<&AddonAppInstall::relativePath>("relativePath", "file",
                                          "The file that starts it, by its path in the package.",
                                          {.key = "file",
                                           .isKeyRequired = true,
                                           .reference = Reference::App,
                                           .identity = 2,
                                           .isElementRequired = true}),
    field<&AddonAppInstall::installByDefault>("installByDefault", "@installByDefault",
                                              "Whether it is installed by default.",
                                              {.key = "install-by-default", .initial = "true"}),
};

constexpr Field kAppListFields[] = {
    field<&AddonAppInstallList::apps>("apps", "application", "The apps of the add-on.",
                                      {.key = "app"}),
};

}  // namespace

constinit const RecordTable AddonAppInstall::kTable{"app", "An app that the host offers.",
                                                    kAppFields};

constinit const DocumentTable AddonAppInstallList::kTable{
    .record = {"apps", "The apps of the add-on.", kAppListFields},
    .xml = "applications",
    .make = makeDocument<AddonAppInstallList>,
    .isList = true};

}  // namespace addon::packaging
