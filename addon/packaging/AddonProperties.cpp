// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonProperties.h"

namespace addon::packaging {

namespace {

constexpr Field kPropertyFields[] = {
    field<&AddonProperties::type>(
        "type", "", "What kind of add-on it is.",
        {.key = "type", .initial = "Korvan Toolbox", .only = "Korvan Toolbox", .isFixed = true}),
    field<&AddonProperties::name>("name", "", "What the add-on is called.",
                                  {.key = "name", .isKeyRequired = true}),
    field<&AddonProperties::version>("version", "", "The version of the add-on.",
                                     {.key = "version", .isKeyRequired = true}),
    field<&AddonProperties::KorvanRelease>("KorvanRelease", "",
                                           "The Korvan release for which the package was written.",
                                           {.isFixed = true}),
    field<&AddonProperties::summary>("summary", "", "One line about the add-on.",
                                     {.key = "summary"}),
    field<&AddonProperties::authorName>("authorName", "authors/author/name", "Who wrote it.",
                                        {.key = "author"}),
    field<&AddonProperties::authorContact>("authorContact", "authors/author/contact",
                                           "How to reach the author, such as an e-mail address.",
                                           {.key = "contact"}),
    field<&AddonProperties::authorOrganization>("authorOrganization", "authors/author/organization",
                                                "Where the author works.", {.key = "organization"}),
    field<&AddonProperties::GUID>(
        "GUID", "identifier", "What identifies the add-on through all its versions.",
        {.key = "guid", .otherwise = "made from the name", .isElementRequired = true}),
    field<&AddonProperties::description>("description", "description",
                                         "The full description, of any length.",
                                         {.key = "description", .fileKey = "description-file"}),
};

constexpr XmlConstant kConstants[] = {{"identifier/@type", "GUID"}};

}  // namespace

constinit const DocumentTable AddonProperties::kTable{
    .record = {"properties", "What the add-on is.", kPropertyFields, kConstants},
    .xml = "addonProperties",
    .key = "package",
    .make = makeDocument<AddonProperties>,
    // The one name that is not "addonProperties": packages in the field say it this way.
    .contentTypeStem = "properties"};

}  // namespace addon::packaging
