// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "opc/zippackage/ZipDirectory.h"
#include "tests/support/ZipBuilder.h"

namespace test {

/// The directory of a file with these bytes.
opc::zippackage::ZipDirectory directoryOf(const std::string& bytes);
opc::zippackage::ZipDirectory directoryOf(const ZipBuilder& builder);

/// A stored item "a.txt", 40 bytes long, and a deflated one "b/c.txt".
ZipBuilder twoItems();

/// The rule that is broken and the text of the refusal, "" when the package is accepted.
std::string refusalOf(const std::string& bytes);
std::string refusalOf(const ZipBuilder& builder);

std::vector<opc::zippackage::ZipFaultKind> faultsOf(const ZipBuilder& builder);

}  // namespace test
