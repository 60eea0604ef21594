// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace opc::plservices {

/// What every namespace and relationship type of the package format begins with, as in
/// `SchemaRoot + u"/korvan/addon/2014/license"`. No trailing slash.
inline const std::u16string SchemaRoot = u"http://schemas.pellandry.example";

}  // namespace opc::plservices
