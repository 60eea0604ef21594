// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/Pieces.h"
#include "addon/gallery/detail/Sections.h"
#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "text/ByteCount.h"

namespace addon::gallery::detail {

using packaging::AddonAppInstall;
using packaging::AddonAppInstallList;
using packaging::AddonConfiguration;
using packaging::AddonLicense;
using packaging::AddonSystemRequirements;
using packaging::ConstRecord;
using packaging::Field;
using packaging::FieldKind;
using packaging::kMember;

namespace {

constexpr std::string_view kNone = "\xE2\x80\x93";  // an en dash

void writeRecords(HtmlWriter& html, std::string_view caption, const ConstRecord& record,
                  const Field& list);

void writeValue(HtmlWriter& html, const ConstRecord& record, const Field& field) {
  if (record.isEmpty(field)) return writeIsolated(html, kNone);
  switch (field.kind()) {
    case FieldKind::Text:
      return writeIsolated(html, utf8(record.text(field)));
    case FieldKind::Flag:
      return html.text(record.flag(field) ? "yes" : "no");
    case FieldKind::Texts:
      return html.element("ul", [&] {
        for (const std::u16string& text : record.texts(field)) {
          html.element("li", [&] { writeIsolated(html, utf8(text)); });
        }
      });
    case FieldKind::Records:
      return writeRecords(html, "", record, field);
  }
}

/// A table of one row per record, the first column its heading.
void writeRecords(HtmlWriter& html, std::string_view caption, const ConstRecord& record,
                  const Field& list) {
  if (record.isEmpty(list)) return;
  const auto& fields = list.table().fields;
  html.element("table", [&] {
    if (!caption.empty()) html.element("caption", caption);
    html.element("thead", [&] {
      html.element("tr", [&] {
        for (const Field& field : fields) {
          html.element("th", {{"scope", "col"}}, packaging::labelOf(field.name));
        }
      });
    });
    html.element("tbody", [&] {
      for (std::size_t i = 0; i < record.size(list); ++i) {
        const ConstRecord each = record.at(list, i);
        html.element("tr", [&] {
          html.element("th", {{"scope", "row"}}, [&] { writeValue(html, each, fields.front()); });
          for (const Field& field : fields.subspan(1)) {
            html.element("td", [&] { writeValue(html, each, field); });
          }
        });
        html.newLine();
      }
    });
  });
  html.newLine();
}

void writeApp(HtmlWriter& html, const AddonAppInstall& app) {
  html.element("h3", {{"dir", "auto"}}, app.name.empty() ? "App without a name" : utf8(app.name));
  if (!app.relativePath.empty()) {
    html.element("p", {{"class", "path"}}, [&] { writeCode(html, utf8(app.relativePath)); });
  }
  if (!app.guid.empty()) {
    html.element("p", {{"class", "muted small"}}, [&] {
      html.text("GUID ");
      writeCode(html, utf8(app.guid));
    });
  }
  html.element("p", [&] {
    if (app.installByDefault) {
      html.element("span", {{"class", "chip yes"}}, "Installed by default");
    } else {
      html.element("span", {{"class", "chip"}}, "Installed on request");
    }
  });
}

void writePathList(HtmlWriter& html, std::string_view title,
                   const std::vector<std::u16string>& paths) {
  if (paths.empty()) return;
  html.element("h3", title);
  html.element("ol", {{"class", "paths"}}, [&] {
    for (const std::u16string& path : paths) {
      html.element("li", [&] { writeCode(html, path.empty() ? std::string(kNone) : utf8(path)); });
    }
  });
  html.newLine();
}

}  // namespace

void writeDocument(HtmlWriter& html, const ConstRecord& document, bool isList) {
  const auto& fields = document.table().fields;
  if (isList) return writeRecords(html, "", document, fields.front());
  html.element("dl", {{"class", "facts"}}, [&] {
    for (const Field& field : fields) {
      if (document.isEmpty(field)) continue;
      html.element("div", [&] {
        html.element("dt", packaging::labelOf(field.name));
        html.element("dd", [&] { writeValue(html, document, field); });
      });
      html.newLine();
    }
  });
}

void writeRequirements(HtmlWriter& html, const Page& page, PageImages& /*images*/) {
  const ConstRecord record(page.get<AddonSystemRequirements>());
  const auto& table = record.table();
  writeRecords(html, "Products", record,
               table.of(kMember<&AddonSystemRequirements::productDependencies>));
  writeRecords(html, "Support packages", record,
               table.of(kMember<&AddonSystemRequirements::supportPackageDependencies>));
}

void writeApps(HtmlWriter& html, const Page& page, PageImages& /*images*/) {
  html.element("ul", {{"class", "cards"}}, [&] {
    for (const AddonAppInstall& app : page.get<AddonAppInstallList>().apps) {
      html.element("li", {{"class", "card text"}}, [&] { writeApp(html, app); });
      html.newLine();
    }
  });
}

void writeSearchPath(HtmlWriter& html, const Page& page, PageImages& /*images*/) {
  const auto& configuration = page.get<AddonConfiguration>();
  writePathList(html, "Folders of the add-on", configuration.korvanPaths);
  writePathList(html, "Java class path", configuration.javaClassPaths);
}

void writeLicense(HtmlWriter& html, const Page& page, PageImages& /*images*/) {
  const std::string type = utf8(page.get<AddonLicense>().type);
  const std::string terms = utf8(page.get<AddonLicense>().text);
  if (!type.empty()) {
    html.element("p", {{"class", "license-type"}, {"dir", "auto"}}, type);
  }
  if (terms.empty()) return;
  html.element("details", {{"class", "license"}}, [&] {
    html.element("summary", "The terms in full, " + text::describeBytes(terms.size()));
    html.element("div", {{"class", "terms"}, {"dir", "auto"}}, terms);
  });
}

}  // namespace addon::gallery::detail
