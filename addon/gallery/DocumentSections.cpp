// SPDX-License-Identifier: MIT
#include "addon/gallery/Pieces.h"
#include "addon/gallery/Prose.h"
#include "addon/gallery/Sections.h"
#include "text/ByteCount.h"

namespace addon::gallery {

namespace {

constexpr std::string_view kNone = "\xE2\x80\x93";  // an en dash

void writeCell(HtmlWriter& html, std::string_view text) {
  html.element("td", [&] { writeIsolated(html, text.empty() ? kNone : text); });
}

void writeRequirementTable(HtmlWriter& html, std::string_view caption,
                           const std::vector<PageRequirement>& requirements) {
  if (requirements.empty()) return;
  html.element("table", [&] {
    html.element("caption", caption);
    html.element("thead", [&] {
      html.element("tr", [&] {
        html.element("th", {{"scope", "col"}}, "Name");
        html.element("th", {{"scope", "col"}}, "Version");
        html.element("th", {{"scope", "col"}}, "Identifier");
      });
    });
    html.element("tbody", [&] {
      for (const PageRequirement& each : requirements) {
        html.element("tr", [&] {
          html.element("th", {{"scope", "row"}},
                       [&] { writeIsolated(html, each.name.empty() ? kNone : each.name); });
          writeCell(html, each.version);
          writeCell(html, each.identifier);
        });
        html.newLine();
      }
    });
  });
  html.newLine();
}

void writeApp(HtmlWriter& html, const PageApp& app) {
  html.element("h3", {{"dir", "auto"}}, app.name.empty() ? "App without a name" : app.name);
  if (!app.path.empty()) {
    html.element("p", {{"class", "path"}}, [&] { writeCode(html, app.path); });
  }
  if (!app.guid.empty()) {
    html.element("p", {{"class", "muted small"}}, [&] {
      html.text("GUID ");
      writeCode(html, app.guid);
    });
  }
  html.element("p", [&] {
    if (app.isInstalledByDefault) {
      html.element("span", {{"class", "chip yes"}}, "Installed by default");
    } else {
      html.element("span", {{"class", "chip"}}, "Installed on request");
    }
  });
}

void writeRevision(HtmlWriter& html, const PageRevision& revision, Prose& prose) {
  html.element("h3", [&] {
    if (revision.version.empty()) return html.text("Revision without a version");
    html.text("Version ");
    writeIsolated(html, revision.version);
  });
  if (!revision.date.empty()) {
    html.element("p", {{"class", "date"}}, [&] { writeDate(html, revision.date); });
  }
  html.newLine();
  html.element("div", {{"class", "prose"}}, [&] { prose.write(revision.description, 4); });
}

void writePathList(HtmlWriter& html, std::string_view title,
                   const std::vector<std::string>& paths) {
  if (paths.empty()) return;
  html.element("h3", title);
  html.element("ol", {{"class", "paths"}}, [&] {
    for (const std::string& path : paths) {
      html.element("li", [&] { writeCode(html, path.empty() ? kNone : path); });
    }
  });
  html.newLine();
}

}  // namespace

void writeRequirements(HtmlWriter& html, const Page& page, PageImages& /*images*/) {
  writeRequirementTable(html, "Products", page.products);
  writeRequirementTable(html, "Support packages", page.supportPackages);
}

void writeApps(HtmlWriter& html, const Page& page, PageImages& /*images*/) {
  html.element("ul", {{"class", "cards"}}, [&] {
    for (const PageApp& app : page.apps) {
      html.element("li", {{"class", "card text"}}, [&] { writeApp(html, app); });
      html.newLine();
    }
  });
}

void writeRevisions(HtmlWriter& html, const Page& page, PageImages& /*images*/) {
  Prose prose(html);
  html.element("ol", {{"class", "timeline"}}, [&] {
    for (const PageRevision& revision : page.revisions) {
      html.element("li", [&] { writeRevision(html, revision, prose); });
      html.newLine();
    }
  });
}

void writeSearchPath(HtmlWriter& html, const Page& page, PageImages& /*images*/) {
  writePathList(html, "Folders of the add-on", page.searchPath);
  writePathList(html, "Java class path", page.javaClassPath);
}

void writeLicense(HtmlWriter& html, const Page& page, PageImages& /*images*/) {
  if (!page.licenseType.empty()) {
    html.element("p", {{"class", "license-type"}, {"dir", "auto"}}, page.licenseType);
  }
  if (page.licenseText.empty()) return;
  html.element("details", {{"class", "license"}}, [&] {
    html.element("summary", "The terms in full, " + text::describeBytes(page.licenseText.size()));
    html.element("div", {{"class", "terms"}, {"dir", "auto"}}, page.licenseText);
  });
}

}  // namespace addon::gallery
