// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "tool/line/Topic.h"

namespace tool::report {

// What 'kraddon help' explains besides commands.

/// Every key of the manifest, from its schema.
line::Topic manifestTopic();
/// The patterns of paths.
line::Topic patternsTopic();
/// All findings of 'verify' and 'build', from their catalogue.
line::Topic findingsTopic();

std::vector<line::Topic> topics();

}  // namespace tool::report
