// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace addon::gallery {

/// The words of a UTF-8 text for a search: in lower case, without the accents of letters, a blank
/// in front of each. They consist of letters, digits and marks alone, so that they are safe in a
/// script.
std::string wordsOf(std::string_view text);

/// The first letter, digit or mark of such words, in upper case; "" if there are none.
std::string initialOf(std::string_view words);

/// The parts of a UTF-8 text between blanks of any script.
std::vector<std::string> splitAtBlanks(std::string_view text);

}  // namespace addon::gallery
