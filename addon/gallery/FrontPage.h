// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace addon::gallery {

/// An add-on in a list of many. Texts are UTF-8, untrusted and not escaped; paths are relative
/// to the list.
struct Card {
  std::string name;
  std::string version;
  std::string summary;
  std::string author;
  std::string organization;
  std::string license;
  std::string modified;  ///< "2026-02-01T10:00:00Z"; may be ""
  std::string page;
  std::string screenshot;  ///< "" if it has none
};

/// A list of add-ons.
struct FrontPage {
  std::uint64_t sequence = 0;  ///< of the site; the page uses terms of the same one only
  std::uint64_t addons = 0;    ///< how many cards there are
  /// Calls its argument for each add-on, in the order of the page.
  std::function<void(const std::function<void(const Card&)>&)> visit;
};

/// Writes a page that lists add-ons, and `terms.js` for its search: a script that calls
/// `kraddonTerms(SEQUENCE, TEXT)`, with a line of words for each add-on in the order of the page.
/// The page loads nothing but that script, when somebody searches, and the screenshots. The same
/// list always gives the same bytes. Exceptions of the sinks and of `visit` are passed on.
void writeFrontPage(const FrontPage& list, const std::function<void(std::string_view)>& page,
                    const std::function<void(std::string_view)>& terms);

}  // namespace addon::gallery
