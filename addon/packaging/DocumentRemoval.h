// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "addon/packaging/AddonPackage.h"
#include "addon/packaging/XMLPartType.h"
#include "opc/model/Package.h"

// Removing and replacing documents in a package that is open for modification and that another
// program may have written. Throws what Package does.

namespace addon::packaging {

/// Removes a document: every relationship of its type with the part that it leads to, and the part
/// that has its name. A part stays when something else leads to it or when it is a file of the
/// tree. False, and nothing is changed, when there is nothing of that.
bool removeDocument(opc::model::Package& package, const XMLPartType& document);

/// Why the document cannot be read although the package has something of it: its relationship leads
/// nowhere, or there are several or none. "" if it can be read or is absent.
std::string documentFault(opc::model::Package& package, const XMLPartType& document);

/// Stores a document so that it can be read. Removes the old one first unless it has one
/// relationship, to the part of its usual name.
void replaceDocument(AddonPackage& package, XMLPartType& document);

/// Removes the screenshot in the same way, with the thumbnail that shows it and with parts that
/// have the name of a screenshot. Another relationship that has an id of a screenshot gets another
/// one.
bool removeScreenshot(opc::model::Package& package);

/// A relationship that is neither of a screenshot nor of a thumbnail, but has the id of one, so
/// that AddonPackage::setScreenshot() would delete what it leads to, or fail.
std::optional<opc::model::Relationship> relationshipInTheWay(opc::model::Package& package);

}  // namespace addon::packaging
