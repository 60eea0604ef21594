// SPDX-License-Identifier: MIT
#include <algorithm>

#include "addon/gallery/Pieces.h"
#include "addon/gallery/Prose.h"
#include "addon/gallery/Sections.h"
#include "text/ByteCount.h"

namespace addon::gallery {

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

std::string sizeText(const Page& page) {
  std::uint64_t bytes = 0;
  for (const PageFile& file : page.files) bytes += file.size;
  return text::describeBytes(bytes) + ", " + text::describeBytes(page.packedSize) + " packed";
}

std::string countText(const Page& page) {
  const auto folders = static_cast<std::uint64_t>(std::count_if(
      page.files.begin(), page.files.end(), [](const PageFile& file) { return file.isFolder; }));
  std::string text = counted(page.files.size() - folders, "file");
  if (folders > 0) text += ", " + counted(folders, "empty folder");
  return text;
}

void writeFacts(HtmlWriter& html, const Page& page) {
  FactList facts(html);
  facts.add("Version", page.version);
  facts.add("Made for", page.release);
  facts.add("Type", page.type);
  facts.add("Author", page.author);
  facts.add("Organization", page.organization);
  facts.add("Contact", page.contact, writeContact);
  facts.add("Created", page.created, writeDate);
  facts.add("Modified", page.modified, writeDate);
  facts.add("Content", countText(page));
  facts.add("Size", sizeText(page));
  facts.add("License", page.licenseType);
  facts.add("GUID", page.guid, writeCode);
}

}  // namespace

void writeAbout(HtmlWriter& html, const Page& page, PageImages& /*images*/) {
  html.element("div", {{"class", "columns"}}, [&] {
    html.element("div", {{"class", "prose"}}, [&] {
      if (page.description.empty()) {
        html.element("p", {{"class", "muted"}}, "This add-on has no description.");
      }
      Prose(html).write(page.description, 3);
    });
    html.newLine();
    html.element("dl", {{"class", "facts"}}, [&] { writeFacts(html, page); });
  });
}

}  // namespace addon::gallery
