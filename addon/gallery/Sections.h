// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "addon/gallery/HtmlWriter.h"
#include "addon/gallery/Page.h"
#include "addon/gallery/Treemap.h"

namespace addon::gallery {

/// A part of the page with its own heading, left out if there is nothing to show.
struct Section {
  std::string_view id;
  std::string_view title;
  bool (*isThere)(const Page& page);
  void (*write)(HtmlWriter& html, const Page& page, PageImages& images);
};

/// In the order of the page.
std::span<const Section> sections();

/// The part above the sections: name, summary, author and screenshot.
void writeHero(HtmlWriter& html, const Page& page, PageImages& images);

// The functions in sections().
void writeAbout(HtmlWriter& html, const Page& page, PageImages& images);
void writeRequirements(HtmlWriter& html, const Page& page, PageImages& images);
void writeExamples(HtmlWriter& html, const Page& page, PageImages& images);
void writeApps(HtmlWriter& html, const Page& page, PageImages& images);
void writeRevisions(HtmlWriter& html, const Page& page, PageImages& images);
void writeSearchPath(HtmlWriter& html, const Page& page, PageImages& images);
void writeLicense(HtmlWriter& html, const Page& page, PageImages& images);
void writeFiles(HtmlWriter& html, const Page& page, PageImages& images);

// Parts of the section about files.
void writeTreemap(HtmlWriter& html, const std::vector<TreemapGroup>& groups);
void writeFileList(HtmlWriter& html, const Page& page);

}  // namespace addon::gallery
