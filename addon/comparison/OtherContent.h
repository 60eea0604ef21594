// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>
#include <vector>

#include "addon/comparison/Contents.h"

namespace addon::comparison {

/// Whether a package is an add-on, or at least has files as one.
bool isAddon(addon::packaging::AddonPackage& package);

/// A part or item that the format of add-ons does not know, under its name with a slash.
struct OtherItem {
  Item item;
  std::string contentType;  ///< "" for an item that is not a part
};

/// What a package has besides the files and the documents of an add-on.
struct OtherContent {
  std::vector<OtherItem> items;  ///< in order of their names' bytes
  /// By the name of the source, "/" for the package: "TYPE NUL MODE NUL TARGET" of each
  /// relationship that the format does not make itself, sorted. Sources without any are left out.
  std::map<std::string, std::vector<std::string>> relationships;
};

/// The core properties, which `/properties` stands for, the parts of the format itself and those of
/// signatures are left out. Throws as reading relationships does.
OtherContent readOtherContent(addon::packaging::AddonPackage& package);

}  // namespace addon::comparison
