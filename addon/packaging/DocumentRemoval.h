// SPDX-License-Identifier: MIT
#pragma once

#include "addon/packaging/XMLPartType.h"
#include "opc/model/Package.h"

// Taking documents out of a package that is open for modification. Throws what Package does.

namespace addon::packaging {

/// Removes a document: every relationship of its type with the part that it leads to, and the part
/// that has its name. A part stays when something else leads to it or when it is a file of the
/// tree. False, and nothing is changed, when there is nothing of that.
bool removeDocument(opc::model::Package& package, const XMLPartType& document);

/// Removes the screenshot in the same way, with the thumbnail that shows it.
bool removeScreenshot(opc::model::Package& package);

}  // namespace addon::packaging
