// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonExamples.h"

namespace addon::packaging {

namespace {

constexpr Field kExampleFields[] = {
    field<&Example::name>("name", "@name", "What the example is called.",
                          {.key = "name", .isKeyRequired = true, .identity = 2}),
    field<&Example::type>("type", "@type", "What kind of example it is.", {.key = "type"}),
    field<&Example::source>("source", "file[@type=source]",
                            "The file it was made from, by its path in the package.",
                            {.key = "source", .reference = Reference::ExampleCode}),
    field<&Example::main>("main", "file[@type=main]",
                          "The file that is opened, by its path in the package.",
                          {.key = "main", .reference = Reference::ExampleCode, .identity = 1}),
    field<&Example::thumbnail>("thumbnail", "file[@type=thumbnail]",
                               "A small image, by its path in the package.",
                               {.key = "thumbnail", .reference = Reference::ExampleImage}),
    field<&Example::images>(
        "images", "file[@type=image]", "More images, by their paths in the package.",
        {.key = "images", .reference = Reference::ExampleImage, .isUnsetWhenEmpty = true}),
};

constexpr Field kCategoryFields[] = {
    field<&ExampleCategory::name>("name", "@name", "What the category is called.",
                                  {.key = "name", .isKeyRequired = true, .identity = 1}),
    field<&ExampleCategory::examples>("examples", "example", "Its examples, in order.",
                                      {.key = "example"}),
};

constexpr Field kExampleListFields[] = {
    field<&AddonExamples::categories>("categories", "exampleCategory", "The examples by category.",
                                      {.key = "category"}),
};

}  // namespace

constinit const RecordTable Example::kTable{"example", "An example that the host shows.",
                                            kExampleFields};

constinit const RecordTable ExampleCategory::kTable{"category", "A group of examples.",
                                                    kCategoryFields};

constinit const DocumentTable AddonExamples::kTable{
    .record = {"examples", "The examples by category.", kExampleListFields},
    .xml = "examples",
    .make = makeDocument<AddonExamples>,
    .isList = true};

}  // namespace addon::packaging
