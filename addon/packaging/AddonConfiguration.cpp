// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonConfiguration.h"

namespace addon::packaging {

namespace {

constexpr Field kConfigurationFields[] = {
    field<&AddonConfiguration::korvanPaths>(
        "korvanPaths", "korvanPaths/korvanPath",
        "Folders of the package that go on the host's search path; '.' or '/' is the top of the "
        "file tree.",
        {.key = "korvan-paths", .reference = Reference::SearchPath}),
    field<&AddonConfiguration::javaClassPaths>(
        "javaClassPaths", "javaClassPaths/javaClassPath",
        "JAR files and folders of the package that go on the Java class path.",
        {.key = "java-class-paths", .reference = Reference::ClassPath}),
};

}  // namespace

constinit const DocumentTable AddonConfiguration::kTable{
    .record = {"configuration", "Settings that the host applies.", kConfigurationFields},
    .xml = "configuration",
    .key = "configuration",
    .make = makeDocument<AddonConfiguration>};

}  // namespace addon::packaging
