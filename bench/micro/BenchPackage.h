// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace bench {

/// The path of a package with a license and `files` small files, which is made on the first call
/// and removed when the process ends.
const std::string& packageOf(std::size_t files);

}  // namespace bench
