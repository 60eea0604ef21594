// SPDX-License-Identifier: MIT
#include "addon/gallery/Pieces.h"
#include "addon/gallery/Sections.h"

namespace addon::gallery {

namespace {

void writeChip(HtmlWriter& html, std::string_view label, std::string_view value) {
  if (value.empty()) return;
  html.element("li", {{"class", "chip"}}, [&] {
    html.text(label);
    writeIsolated(html, value);
  });
}

void writeAuthor(HtmlWriter& html, const Page& page) {
  if (page.author.empty() && page.organization.empty()) return;
  html.element("p", {{"class", "by"}}, [&] {
    html.text("by ");
    if (!page.author.empty()) html.element("strong", [&] { writeIsolated(html, page.author); });
    if (page.organization.empty()) return;
    if (!page.author.empty()) html.text(", ");
    writeIsolated(html, page.organization);
  });
}

void writeTitle(HtmlWriter& html, const Page& page) {
  if (!page.type.empty()) html.element("p", {{"class", "type"}, {"dir", "auto"}}, page.type);
  html.element("h1", {{"dir", "auto"}}, page.name);
  if (!page.summary.empty()) {
    html.element("p", {{"class", "summary"}, {"dir", "auto"}}, page.summary);
  }
  writeAuthor(html, page);
  if (page.version.empty() && page.release.empty() && page.licenseType.empty()) return;
  html.element("ul", {{"class", "chips"}}, [&] {
    writeChip(html, "Version ", page.version);
    writeChip(html, "Made for ", page.release);
    writeChip(html, "License ", page.licenseType);
  });
}

void writeScreenshot(HtmlWriter& html, const Page& page, const PageImage& image) {
  if (image.address.empty() && image.absence.empty()) return;
  html.element("figure", {{"class", "shot"}}, [&] {
    if (image.address.empty()) {
      html.element("p", {{"class", "absent"}}, "Screenshot " + image.absence);
    } else {
      html.empty("img", {{"src", image.address}, {"alt", "Screenshot of " + page.name}});
    }
  });
}

}  // namespace

void writeHero(HtmlWriter& html, const Page& page, PageImages& images) {
  const PageImage image = images.screenshot();
  const bool isAlone = image.address.empty();
  html.element("header", {{"class", isAlone ? "hero alone" : "hero"}}, [&] {
    html.element("div", {{"class", "title"}}, [&] { writeTitle(html, page); });
    html.newLine();
    writeScreenshot(html, page, image);
  });
  html.newLine();
}

}  // namespace addon::gallery
