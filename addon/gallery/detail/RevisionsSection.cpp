// SPDX-License-Identifier: MIT
#include <algorithm>
#include <string>
#include <vector>

#include "addon/gallery/detail/Pieces.h"
#include "addon/gallery/detail/Prose.h"
#include "addon/gallery/detail/Sections.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "text/Lines.h"

namespace addon::gallery::detail {

using packaging::AddonProperties;
using packaging::AddonRevision;
using packaging::AddonRevisionHistory;

namespace {

struct ShownRevision {
  const AddonRevision* revision;
  std::string version;
  std::string day;  ///< "" if the date is another text
  bool isOwn;       ///< that of the add-on
};

std::vector<ShownRevision> inStoredOrder(const Page& page) {
  const std::string own(text::trimmed(utf8(page.get<AddonProperties>().version)));
  std::vector<ShownRevision> shown;
  for (const AddonRevision& revision : page.get<AddonRevisionHistory>().revisions) {
    std::string version(text::trimmed(utf8(revision.version)));
    const bool isOwn = !version.empty() && version == own;
    shown.push_back(
        {&revision, std::move(version), std::string(dayOf(utf8(revision.date))), isOwn});
  }
  return shown;
}

/// By date if all have one. Otherwise, and within a day, in their order or the reverse, depending
/// on where the add-on's own version is.
std::vector<ShownRevision> newestFirst(const Page& page) {
  std::vector<ShownRevision> shown = inStoredOrder(page);
  if (shown.back().isOwn) std::reverse(shown.begin(), shown.end());
  const bool isDated =
      std::all_of(shown.begin(), shown.end(), [](const auto& each) { return !each.day.empty(); });
  if (!isDated) return shown;
  std::stable_sort(shown.begin(), shown.end(),
                   [](const auto& a, const auto& b) { return a.day > b.day; });
  return shown;
}

void writeRevision(HtmlWriter& html, const ShownRevision& shown, Prose& prose) {
  html.element("h3", [&] {
    if (shown.version.empty()) return html.text("Revision without a version");
    html.text("Version ");
    writeIsolated(html, shown.version);
  });
  const std::string date = utf8(shown.revision->date);
  if (!date.empty() || shown.isOwn) {
    html.element("p", {{"class", "date"}}, [&] {
      writeDate(html, date);
      if (!shown.isOwn) return;
      html.text(" ");
      html.element("span", {{"class", "chip yes"}}, "This version");
    });
  }
  html.newLine();
  html.element("div", {{"class", "prose"}},
               [&] { prose.write(utf8(shown.revision->description), 4); });
}

}  // namespace

void writeRevisions(HtmlWriter& html, const Page& page, PageImages& images) {
  Prose prose(html, images);
  html.element("ol", {{"class", "timeline"}}, [&] {
    for (const ShownRevision& shown : newestFirst(page)) {
      html.element("li", {{"class", shown.isOwn ? "own" : "other"}},
                   [&] { writeRevision(html, shown, prose); });
      html.newLine();
    }
  });
}

}  // namespace addon::gallery::detail
