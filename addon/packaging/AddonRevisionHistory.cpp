// SPDX-License-Identifier: MIT
#include "addon/packaging/AddonRevisionHistory.h"

namespace addon::packaging {

namespace {

constexpr Field kRevisionFields[] = {
    field<&AddonRevision::date>("date", "@date", "When it was published.",
                                {.key = "date", .isDate = true, .identity = 2}),
    field<&AddonRevision::version>("version", "@version", "The version.",
                                   {.key = "version", .isKeyRequired = true, .identity = 1}),
    field<&AddonRevision::description>("description", "description", "What is new in it.",
                                       {.key = "description", .isElementRequired = true}),
};

constexpr Field kFields[] = {
    field<&AddonRevisionHistory::revisions>(
        "revisions", "revision", "The history of the add-on, in the order that is shown.",
        {.key = "revision"}),
};

}  // namespace

constinit const RecordTable AddonRevision::kTable{"revision", "A version that was published.",
                                                  kRevisionFields};

constinit const DocumentTable AddonRevisionHistory::kTable{
    .record = {"revisions", "The history of the add-on, in the order that is shown.", kFields},
    .xml = "revisionHistory",
    .make = makeDocument<AddonRevisionHistory>,
    .isList = true};

}  // namespace addon::packaging
