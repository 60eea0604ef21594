// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace addon::gallery {

/// An add-on in a list of many. Texts are UTF-8, a stranger's, and not escaped; paths are relative
/// to the list.
struct Card {
  std::string name;
  std::string version;
  std::string summary;
  std::string author;
  std::string organization;
  std::string modified;  ///< "2026-02-01T10:00:00Z"; may be ""
  std::string page;
  std::string screenshot;  ///< "" if it has none
};

/// Calls its argument for each add-on, in the order of the page.
using VisitCards = std::function<void(const std::function<void(const Card&)>&)>;

/// Writes a page that lists add-ons: one HTML document that needs nothing but the screenshots. The
/// same cards always give the same bytes. Exceptions of `sink` and `visit` are passed on.
void writeFrontPage(const VisitCards& visit, const std::function<void(std::string_view)>& sink);

}  // namespace addon::gallery
