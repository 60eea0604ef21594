// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>
#include <vector>

#include "addon/gallery/Page.h"
#include "addon/gallery/detail/HtmlWriter.h"
#include "addon/gallery/detail/Treemap.h"

namespace addon::gallery::detail {

/// The part above the sections: name, summary, author and screenshot.
void writeHero(HtmlWriter& html, const Page& page, PageImages& images);

/// A document that has no section made for it: all of its fields.
void writeDocument(HtmlWriter& html, const packaging::ConstRecord& document, bool isList);

// The sections.
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

}  // namespace addon::gallery::detail
