// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "addon/comparison/Contents.h"
#include "opc/interfaces/Background.h"
#include "opc/interfaces/Progress.h"

namespace addon::comparison {

/// The SHA-256 of each item in hexadecimal, "" for folders. `progress`, which may be empty, is
/// called for every file. `starter`, which may be empty, starts a second thread that reads files,
/// too, unless the package is open for changes; the result is the same, error for error.
std::vector<std::string> hashFiles(addon::packaging::AddonPackage& package,
                                   const std::vector<Item>& items,
                                   const opc::interfaces::ProgressFunction& progress,
                                   const opc::interfaces::BackgroundStarter& starter = nullptr);

/// Returns the SHA-256 of a file. Calls `onRead` with the size of each piece that it reads.
using FileHasher =
    std::function<std::string(const Item& file, const std::function<void(std::size_t)>& onRead)>;
/// The same for a caller that makes more of the bytes. `hashFile` is called once for each file, in
/// their order.
std::vector<std::string> hashFiles(const std::vector<Item>& items,
                                   const opc::interfaces::ProgressFunction& progress,
                                   const FileHasher& hashFile);

}  // namespace addon::comparison
