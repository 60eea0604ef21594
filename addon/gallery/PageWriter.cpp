// SPDX-License-Identifier: MIT
#include "addon/gallery/PageWriter.h"

#include <algorithm>
#include <array>
#include <string>

#include "addon/gallery/Sections.h"
#include "addon/gallery/StyleSheet.h"

namespace addon::gallery {

namespace {

// Nothing may be loaded or run, even if a mistake elsewhere lets markup into the page.
constexpr std::string_view kPolicy =
    "default-src 'none'; style-src 'unsafe-inline'; img-src data:; base-uri 'none'; "
    "form-action 'none'";

bool hasRequirements(const Page& page) {
  return !page.products.empty() || !page.supportPackages.empty();
}

bool hasSearchPath(const Page& page) {
  return !page.searchPath.empty() || !page.javaClassPath.empty();
}

bool hasLicense(const Page& page) {
  return !page.licenseType.empty() || !page.licenseText.empty();
}

constexpr std::array kSections{
    Section{"about", "About", [](const Page&) { return true; }, writeAbout},
    Section{"requirements", "Requirements", hasRequirements, writeRequirements},
    Section{"examples", "Examples", [](const Page& page) { return !page.categories.empty(); },
            writeExamples},
    Section{"apps", "Apps", [](const Page& page) { return !page.apps.empty(); }, writeApps},
    Section{"revisions", "Revisions", [](const Page& page) { return !page.revisions.empty(); },
            writeRevisions},
    Section{"search-path", "Search path", hasSearchPath, writeSearchPath},
    Section{"license", "License", hasLicense, writeLicense},
    Section{"files", "Files", [](const Page& page) { return !page.files.empty(); }, writeFiles}};

void writeHead(HtmlWriter& html, const Page& page) {
  html.empty("meta", {{"charset", "utf-8"}});
  html.newLine();
  html.empty("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", kPolicy}});
  html.newLine();
  html.empty("meta", {{"name", "referrer"}, {"content", "no-referrer"}});
  html.empty("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
  html.empty("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
  if (!page.summary.empty()) {
    html.empty("meta", {{"name", "description"}, {"content", page.summary}});
  }
  html.newLine();
  html.element("title", page.version.empty() ? page.name : page.name + " " + page.version);
  html.newLine();
  std::string sheet;
  for (const auto part : {kPageStyle, kSectionsStyle, kFilesStyle, kMediaStyle}) sheet += part;
  html.style(sheet);
}

void writeNavigation(HtmlWriter& html, const Page& page) {
  const auto isThere = [&](const Section& section) { return section.isThere(page); };
  if (std::count_if(kSections.begin(), kSections.end(), isThere) < 2) return;
  const auto links = [&] {
    for (const Section& section : kSections) {
      if (!section.isThere(page)) continue;
      const std::string target = "#" + std::string(section.id);
      html.element("li", [&] { html.element("a", {{"href", target}}, section.title); });
    }
  };
  html.element("nav", {{"aria-label", "Sections of this page"}},
               [&] { html.element("ul", links); });
  html.newLine();
}

void writeSections(HtmlWriter& html, const Page& page, PageImages& images) {
  for (const Section& section : kSections) {
    if (!section.isThere(page)) continue;
    html.element("section", {{"aria-labelledby", section.id}}, [&] {
      html.element("h2", {{"id", section.id}}, section.title);
      html.newLine();
      section.write(html, page, images);
    });
    html.newLine();
  }
}

void writeBody(HtmlWriter& html, const Page& page, PageImages& images) {
  html.element("a", {{"class", "skip"}, {"href", "#main"}}, "Skip to the content");
  html.newLine();
  writeHero(html, page, images);
  writeNavigation(html, page);
  html.element("main", {{"id", "main"}, {"tabindex", "-1"}},
               [&] { writeSections(html, page, images); });
  html.newLine();
  html.element("footer", [&] {
    html.element("p", "Made with kraddon preview. This page runs no script and loads nothing.");
  });
  html.newLine();
}

}  // namespace

std::span<const Section> sections() {
  return kSections;
}

void writePage(const Page& page, PageImages& images, const HtmlWriter::Sink& sink) {
  HtmlWriter html(sink);
  html.doctype();
  html.element("html", {{"lang", "en"}}, [&] {
    html.newLine();
    html.element("head", [&] { writeHead(html, page); });
    html.newLine();
    html.element("body", [&] { writeBody(html, page, images); });
  });
  html.newLine();
  html.flush();
}

}  // namespace addon::gallery
