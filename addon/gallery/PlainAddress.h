// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace addon::gallery {

/// The link for an address that plainly is one: "mailto:" for an e-mail address of ASCII letters,
/// digits and a few signs, the address itself for one of the web. "" for anything else, which is
/// then no more than text.
std::string linkOf(std::string_view address);

/// Whether it is a day that the calendar has, as "2026-02-01".
bool isPlainDate(std::string_view text);

}  // namespace addon::gallery
