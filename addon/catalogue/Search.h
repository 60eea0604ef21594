// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "addon/catalogue/Record.h"

namespace addon::catalogue {

/// The add-ons of a site that have all words, each as the beginning of a word of a name, summary,
/// description or author; the best first, with the newest version that is not yanked. "name:",
/// "author:" and "requires:" in front of a word narrow it; everything else is text. Words without a
/// letter or digit are ignored; if there are no others, these are all add-ons by name. Throws
/// opc::Exception if the site has no database that can be read.
std::vector<Record> searchSite(const std::string& site, const std::vector<std::string>& words,
                               std::uint64_t limit);

}  // namespace addon::catalogue
