// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace addon::gallery::detail {

/// The link for a plain address: the address itself if it is a web address, with "mailto:" in front
/// if it is an e-mail address of ASCII letters, digits and a few other characters. "" for anything
/// else.
std::string linkOf(std::string_view address);

/// The path of the file of the package that a relative address in a text names, such as
/// "images/a b.png" for "./images/a%20b.png?raw=true". "" for anything else.
std::string filePathOf(std::string_view address);

/// Whether it is a valid date such as "2026-02-01".
bool isPlainDate(std::string_view text);

}  // namespace addon::gallery::detail
