// SPDX-License-Identifier: MIT
#include "addon/gallery/detail/Pieces.h"
#include "addon/gallery/detail/Prose.h"
#include "addon/gallery/detail/Sections.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"
#include "text/ByteCount.h"

namespace addon::gallery::detail {

using packaging::AddonLicense;
using packaging::AddonProperties;

namespace {

class FactList {
 public:
  explicit FactList(HtmlWriter& html) : html_(html) {}

  /// Does nothing if `value` is empty.
  void add(std::string_view name, std::string_view value,
           void (*write)(HtmlWriter&, std::string_view) = writeIsolated) {
    if (value.empty()) return;
    html_.element("div", [&] {
      html_.element("dt", name);
      html_.element("dd", [&] { write(html_, value); });
    });
    html_.newLine();
  }

 private:
  HtmlWriter& html_;
};

std::string contentText(const Page& page) {
  const PageFiles::Totals& all = page.files.totals(PageFiles::kRoot);
  const std::uint64_t folders = page.files.emptyFolders();
  std::string text = counted(all.files, "file");
  if (folders > 0) text += ", " + counted(folders, "empty folder");
  return text + ", " + text::describeBytes(all.size);
}

void writeFacts(HtmlWriter& html, const Page& page) {
  const auto& properties = page.get<AddonProperties>();
  FactList facts(html);
  facts.add("Version", utf8(properties.version));
  facts.add("Made for", utf8(properties.KorvanRelease));
  facts.add("Type", utf8(properties.type));
  facts.add("Author", utf8(properties.authorName));
  facts.add("Organization", utf8(properties.authorOrganization));
  facts.add("Contact", utf8(properties.authorContact), writeContact);
  facts.add("Created", page.created, writeDate);
  facts.add("Modified", page.modified, writeDate);
  facts.add("Download", text::describeBytes(page.downloadSize));
  facts.add("Content", contentText(page));
  facts.add("License", utf8(page.get<AddonLicense>().type));
  facts.add("GUID", utf8(properties.GUID), writeCode);
}

}  // namespace

void writeAbout(HtmlWriter& html, const Page& page, PageImages& images) {
  const std::string description = utf8(page.get<AddonProperties>().description);
  html.element("div", {{"class", "columns"}}, [&] {
    html.element("div", {{"class", "prose"}}, [&] {
      if (description.empty()) {
        html.element("p", {{"class", "muted"}}, "This add-on has no description.");
      }
      Prose(html, images).write(description, 3);
    });
    html.newLine();
    html.element("dl", {{"class", "facts"}}, [&] { writeFacts(html, page); });
  });
}

}  // namespace addon::gallery::detail
