// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "addon/comparison/Contents.h"
#include "addon/materials/LicenseTerms.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "opc/interfaces/Progress.h"

namespace addon::materials {

struct FileSums {
  std::string sha1;
  std::string sha256;
};

/// What a bill of materials says of an add-on. None of it depends on signatures, nor on how the
/// package is packed.
struct Materials {
  packaging::AddonProperties properties;
  packaging::AddonLicense license;
  LicenseTerms terms;
  /// Products, then support packages.
  std::vector<packaging::ProductDependency> requirements;
  /// The files of the tree, in its order, and their sums.
  std::vector<comparison::Item> files;
  std::vector<FileSums> sums;
  std::string digest;  ///< of the content, as comparison::contentDigest makes it
  /// The modification time in the core properties or, without one, the creation time, such as
  /// "2026-02-01T10:00:00Z". The beginning of 1970 if both are missing.
  std::string time;
};

/// Reads every file once. `progress` is called for every file.
Materials readMaterials(packaging::AddonPackage& package,
                        const opc::interfaces::ProgressFunction& progress);

/// A GUID that is always the same for the same content and use.
std::string guidOf(const Materials& materials, std::string_view use);

/// Takes a piece of the document.
using Sink = std::function<void(std::string_view)>;

// The bill as a JSON document. `tool` is the version of this program.
void writeSpdx(const Materials& materials, std::string_view tool, const Sink& sink);
void writeCycloneDx(const Materials& materials, std::string_view tool, const Sink& sink);

}  // namespace addon::materials
