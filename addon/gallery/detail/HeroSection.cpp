// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/Pieces.h"
#include "addon/gallery/detail/Sections.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"

namespace addon::gallery::detail {

using packaging::AddonLicense;
using packaging::AddonProperties;

namespace {

void writeChip(HtmlWriter& html, std::string_view label, std::string_view value) {
  if (value.empty()) return;
  html.element("li", {{"class", "chip"}}, [&] {
    html.text(label);
    writeIsolated(html, value);
  });
}

void writeAuthor(HtmlWriter& html, const AddonProperties& properties) {
  const std::string author = utf8(properties.authorName);
  const std::string organization = utf8(properties.authorOrganization);
  if (author.empty() && organization.empty()) return;
  html.element("p", {{"class", "by"}}, [&] {
    html.text("by ");
    if (!author.empty()) html.element("strong", [&] { writeIsolated(html, author); });
    if (organization.empty()) return;
    if (!author.empty()) html.text(", ");
    writeIsolated(html, organization);
  });
}

void writeTitle(HtmlWriter& html, const Page& page) {
  const auto& properties = page.get<AddonProperties>();
  const std::string type = utf8(properties.type);
  const std::string summary = utf8(properties.summary);
  const std::string version = utf8(properties.version);
  const std::string release = utf8(properties.KorvanRelease);
  const std::string license = utf8(page.get<AddonLicense>().type);
  if (!type.empty()) html.element("p", {{"class", "type"}, {"dir", "auto"}}, type);
  html.element("h1", {{"dir", "auto"}}, page.name);
  if (!summary.empty()) {
    html.element("p", {{"class", "summary"}, {"dir", "auto"}}, summary);
  }
  writeAuthor(html, properties);
  if (version.empty() && release.empty() && license.empty()) return;
  html.element("ul", {{"class", "chips"}}, [&] {
    writeChip(html, "Version ", version);
    writeChip(html, "Made for ", release);
    writeChip(html, "License ", license);
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

}  // namespace addon::gallery::detail
