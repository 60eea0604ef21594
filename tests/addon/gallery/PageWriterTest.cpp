// SPDX-License-Identifier: MIT
#include "addon/gallery/PageWriter.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "addon/gallery/Sections.h"

namespace {

using addon::gallery::Page;
using addon::gallery::PageImage;
using addon::gallery::PageImages;

/// Images that are there when their path says so.
class NamedImages final : public PageImages {
 public:
  PageImage screenshot() override { return shot; }
  PageImage file(const std::string& path) override {
    if (path.empty()) return {};
    if (path.starts_with("good")) return {"data:image/png;base64,AAAA", {}};
    return {{}, "not in the package"};
  }

  PageImage shot;
};

std::string pageOf(const Page& page, PageImages& images) {
  std::string written;
  addon::gallery::writePage(page, images, [&](std::string_view piece) { written += piece; });
  return written;
}

std::string pageOf(const Page& page) {
  NamedImages images;
  return pageOf(page, images);
}

bool has(const std::string& page, std::string_view text) {
  return page.find(text) != std::string::npos;
}

Page namedPage() {
  Page page;
  page.name = "Wave Tools";
  return page;
}

TEST(PageWriter, WritesAPageForANameAlone) {
  const std::string page = pageOf(namedPage());

  EXPECT_TRUE(page.starts_with("<!DOCTYPE html>\n"));
  EXPECT_TRUE(page.ends_with("</body></html>\n"));
  EXPECT_TRUE(has(page, "<title>Wave Tools</title>"));
  EXPECT_TRUE(has(page, "<h1 dir=\"auto\">Wave Tools</h1>"));
  EXPECT_TRUE(has(page, "This add-on has no description."));
  for (const char* id : {"requirements", "examples", "apps", "revisions", "license", "files"}) {
    EXPECT_FALSE(has(page, "id=\"" + std::string(id) + "\"")) << id;
  }
  EXPECT_FALSE(has(page, "<nav"));
}

TEST(PageWriter, WritesASectionForEachDocument) {
  Page page = namedPage();
  page.products = {{"Korvan", "9.1", "KV"}};
  page.categories = {{"Filters", {{"A tone", "script", "a.m", "a.m", "", {}}}}};
  page.apps = {{"Viewer", "guid", "apps/v.m", true}, {"Designer", "", "", false}};
  page.revisions = {{"2026-02-01", "1.2", "Faster."}, {"Spring", "1.1", ""}};
  page.licenseText = "Do as you like.";
  page.searchPath = {"filters"};
  page.files = {{"a.m", 1000}, {"empty", 0, true}};

  const std::string written = pageOf(page);

  for (const auto& section : addon::gallery::sections()) {
    EXPECT_TRUE(has(written, "<h2 id=\"" + std::string(section.id) + "\">")) << section.id;
    EXPECT_TRUE(has(written, "<a href=\"#" + std::string(section.id) + "\">")) << section.id;
  }
  EXPECT_TRUE(has(written, "<time datetime=\"2026-02-01\">2026-02-01</time>"));
  EXPECT_TRUE(has(written, "<bdi>Spring</bdi>"));
  EXPECT_TRUE(has(written, "Installed by default"));
  EXPECT_TRUE(has(written, "Installed on request"));
  EXPECT_TRUE(has(written, "1 file, 1 empty folder"));
}

TEST(PageWriter, AContactIsALinkOnlyIfItIsAPlainAddress) {
  Page page = namedPage();
  page.contact = "ada@example.org";
  EXPECT_TRUE(has(pageOf(page), "<a href=\"mailto:ada@example.org\" rel=\"noopener nofollow\">"));

  page.contact = "javascript:alert(1)";
  EXPECT_FALSE(has(pageOf(page), "<a href=\"javascript"));
  EXPECT_TRUE(has(pageOf(page), "<bdi>javascript:alert(1)</bdi>"));
}

TEST(PageWriter, AnImageThatCannotBeShownSaysWhy) {
  Page page = namedPage();
  page.categories = {
      {"c",
       {{"e", "", "", "", "good.png", {"good2.png", "bad.png"}}, {"f", "", "", "", "bad", {}}}}};
  NamedImages images;
  images.shot.absence = "left out: 9.0 MB";

  const std::string written = pageOf(page, images);

  EXPECT_TRUE(has(written, "Screenshot left out: 9.0 MB"));
  EXPECT_TRUE(has(written, "<img src=\"data:image/png;base64,AAAA\" alt=\"good2.png\">"));
  EXPECT_TRUE(has(written, "<code><bdi>bad.png</bdi></code>: not in the package"));
  EXPECT_TRUE(has(written, "Thumbnail not in the package"));
}

TEST(PageWriter, TheScreenshotHasTheNameAsAlternativeText) {
  NamedImages images;
  images.shot.address = "data:image/png;base64,AAAA";
  Page page = namedPage();
  page.name = "\"<b>";

  EXPECT_TRUE(has(pageOf(page, images), "alt=\"Screenshot of &quot;&lt;b&gt;\""));
}

TEST(PageWriter, PassesOnExceptionsOfTheSink) {
  NamedImages images;
  const auto full = [](std::string_view) { throw std::runtime_error("full"); };

  EXPECT_THROW(addon::gallery::writePage(namedPage(), images, full), std::runtime_error);
}

}  // namespace
