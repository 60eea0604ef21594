// SPDX-License-Identifier: MIT
#include "addon/gallery/PageWriter.h"

#include <algorithm>
#include <array>
#include <functional>
#include <string>

#include "addon/gallery/detail/Sections.h"
#include "addon/gallery/detail/StyleSheet.h"
#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "addon/packaging/Documents.h"

namespace addon::gallery {

using packaging::ConstRecord;
using packaging::DocumentTable;

namespace {

// Nothing may be loaded or run, even if a mistake elsewhere lets markup into the page.
constexpr std::string_view kPolicy =
    "default-src 'none'; style-src 'unsafe-inline'; img-src data:; base-uri 'none'; "
    "form-action 'none'";

/// A part of the page with its own heading.
struct Section {
  std::string id;
  std::string title;
  std::function<void(detail::HtmlWriter& html, PageImages& images)> write;
};

/// A section for a document or, if `table` is null, for the files.
struct KnownSection {
  const char* id;
  const char* title;
  const DocumentTable* table;
  void (*write)(detail::HtmlWriter& html, const Page& page, PageImages& images);
};
constexpr std::array kKnownSections{
    KnownSection{"about", "About", &packaging::AddonProperties::kTable, detail::writeAbout},
    KnownSection{"requirements", "Requirements", &packaging::AddonSystemRequirements::kTable,
                 detail::writeRequirements},
    KnownSection{"examples", "Examples", &packaging::AddonExamples::kTable, detail::writeExamples},
    KnownSection{"apps", "Apps", &packaging::AddonAppInstallList::kTable, detail::writeApps},
    KnownSection{"revisions", "Revisions", &packaging::AddonRevisionHistory::kTable,
                 detail::writeRevisions},
    KnownSection{"search-path", "Search path", &packaging::AddonConfiguration::kTable,
                 detail::writeSearchPath},
    KnownSection{"license", "License", &packaging::AddonLicense::kTable, detail::writeLicense},
    KnownSection{"files", "Files", nullptr, detail::writeFiles}};

bool isEmpty(const ConstRecord& record) {
  const auto& fields = record.table().fields;
  return std::all_of(fields.begin(), fields.end(),
                     [&](const auto& field) { return record.isEmpty(field); });
}

bool isThere(const KnownSection& section, const Page& page) {
  if (section.table == nullptr) return !page.files.empty();
  return section.table == &packaging::AddonProperties::kTable ||
         !isEmpty(page.find(*section.table).record);
}

void addOtherDocuments(const Page& page, std::vector<Section>& sections) {
  for (const DocumentTable* table : packaging::documents()) {
    const bool isKnown = std::any_of(kKnownSections.begin(), kKnownSections.end(),
                                     [&](const auto& section) { return section.table == table; });
    const ConstRecord record = page.find(*table).record;
    if (isKnown || isEmpty(record)) continue;
    sections.push_back({table->name(), packaging::labelOf(table->name()),
                        [record, table](detail::HtmlWriter& html, PageImages& /*images*/) {
                          detail::writeDocument(html, record, table->isList);
                        }});
  }
}

// Those for which there is something to show, in the order of the page, which must outlive them.
std::vector<Section> sectionsOf(const Page& page) {
  std::vector<Section> sections;
  for (const KnownSection& known : kKnownSections) {
    if (known.table == nullptr) addOtherDocuments(page, sections);
    if (!isThere(known, page)) continue;
    sections.push_back({known.id, known.title,
                        [&page, write = known.write](detail::HtmlWriter& html, PageImages& images) {
                          write(html, page, images);
                        }});
  }
  return sections;
}

void writeHead(detail::HtmlWriter& html, const Page& page) {
  html.empty("meta", {{"charset", "utf-8"}});
  html.newLine();
  html.empty("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", kPolicy}});
  html.newLine();
  html.empty("meta", {{"name", "referrer"}, {"content", "no-referrer"}});
  html.empty("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
  html.empty("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
  const auto& properties = page.get<packaging::AddonProperties>();
  const std::string summary = utf8(properties.summary);
  if (!summary.empty()) html.empty("meta", {{"name", "description"}, {"content", summary}});
  html.newLine();
  const std::string version = utf8(properties.version);
  html.element("title", version.empty() ? page.name : page.name + " " + version);
  html.newLine();
  std::string sheet;
  for (const auto part : {detail::kPageStyle, detail::kCardsStyle, detail::kSectionsStyle,
                          detail::kFilesStyle, detail::kMediaStyle})
    sheet += part;
  html.style(sheet);
}

void writeNavigation(detail::HtmlWriter& html, const std::vector<Section>& sections) {
  if (sections.size() < 2) return;
  const auto links = [&] {
    for (const Section& section : sections) {
      const std::string target = "#" + section.id;
      html.element("li", [&] { html.element("a", {{"href", target}}, section.title); });
    }
  };
  html.element("nav", {{"aria-label", "Sections of this page"}},
               [&] { html.element("ul", links); });
  html.newLine();
}

void writeSections(detail::HtmlWriter& html, const std::vector<Section>& sections,
                   PageImages& images) {
  for (const Section& section : sections) {
    html.element("section", {{"aria-labelledby", section.id}}, [&] {
      html.element("h2", {{"id", section.id}}, section.title);
      html.newLine();
      section.write(html, images);
    });
    html.newLine();
  }
}

void writeBody(detail::HtmlWriter& html, const Page& page, PageImages& images,
               std::string_view home) {
  html.element("a", {{"class", "skip"}, {"href", "#main"}}, "Skip to the content");
  html.newLine();
  if (!home.empty()) {
    html.element("p", {{"class", "home"}}, [&] {
      html.element("a", {{"href", home}}, "All add-ons");
    });
    html.newLine();
  }
  detail::writeHero(html, page, images);
  const std::vector<Section> sections = sectionsOf(page);
  writeNavigation(html, sections);
  html.element("main", {{"id", "main"}, {"tabindex", "-1"}},
               [&] { writeSections(html, sections, images); });
  html.newLine();
  html.element("footer", [&] {
    html.element("p", "Made with kraddon preview. This page runs no script and loads nothing.");
  });
  html.newLine();
}

}  // namespace

void writePage(const Page& page, PageImages& images,
               const std::function<void(std::string_view)>& sink, std::string_view home) {
  detail::HtmlWriter html(sink);
  html.doctype();
  html.element("html", {{"lang", "en"}}, [&] {
    html.newLine();
    html.element("head", [&] { writeHead(html, page); });
    html.newLine();
    html.element("body", [&] { writeBody(html, page, images, home); });
  });
  html.newLine();
  html.flush();
}

}  // namespace addon::gallery
