// SPDX-License-Identifier: MIT
#include "addon/gallery/PageWriter.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "addon/packaging/AddonAppInstallList.h"
#include "addon/packaging/AddonConfiguration.h"
#include "addon/packaging/AddonExamples.h"
#include "addon/packaging/AddonLicense.h"
#include "addon/packaging/AddonProperties.h"
#include "addon/packaging/AddonRevisionHistory.h"
#include "addon/packaging/AddonSystemRequirements.h"
#include "tests/addon/gallery/TreeOfFiles.h"

using namespace addon::packaging;

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

Example& addExample(std::u16string name, std::u16string thumbnail,
                    std::vector<std::u16string> images, Page& page) {
  auto& categories = page.get<AddonExamples>().categories;
  Example& example = categories.emplace_back().examples.emplace_back();
  example.name = std::move(name);
  example.thumbnail = std::move(thumbnail);
  example.images = std::move(images);
  return example;
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
  auto& product = page.get<AddonSystemRequirements>().productDependencies.emplace_back();
  product.name = u"Korvan";
  product.version = u"9.1";
  product.identifier = u"KV";
  addExample(u"A tone", u"", {}, page).main = u"a.m";
  auto& apps = page.get<AddonAppInstallList>().apps;
  apps.resize(2);
  apps[0].name = u"Viewer";
  apps[0].relativePath = u"apps/v.m";
  apps[0].installByDefault = true;
  auto& revisions = page.get<AddonRevisionHistory>().revisions;
  revisions.resize(2);
  revisions[0].date = u"2026-02-01";
  revisions[0].description = u"Faster.";
  revisions[1].date = u"Spring";
  page.get<AddonLicense>().text = u"Do as you like.";
  page.get<AddonConfiguration>().korvanPaths = {u"filters"};
  TreeOfFiles tree({{"a.m", 1000}, {"empty", 0, true}});
  page.files = tree.files();

  const std::string written = pageOf(page);

  for (const char* id : {"about", "requirements", "examples", "apps", "revisions", "search-path",
                         "license", "files"}) {
    EXPECT_TRUE(has(written, "<h2 id=\"" + std::string(id) + "\">")) << id;
    EXPECT_TRUE(has(written, "<a href=\"#" + std::string(id) + "\">")) << id;
  }
  EXPECT_TRUE(has(written, "<time datetime=\"2026-02-01\">2026-02-01</time>"));
  EXPECT_TRUE(has(written, "<bdi>Spring</bdi>"));
  EXPECT_TRUE(has(written, "Installed by default"));
  EXPECT_TRUE(has(written, "Installed on request"));
  EXPECT_TRUE(has(written, "1 file, 1 empty folder"));
}

/// The headings of the revisions with these versions and dates, in the order of the page.
std::string revisionsOf(std::vector<std::pair<std::u16string, std::u16string>> given,
                        std::u16string version) {
  Page page = namedPage();
  page.get<AddonProperties>().version = std::move(version);
  for (auto& [number, date] : given) {
    auto& revision = page.get<AddonRevisionHistory>().revisions.emplace_back();
    revision.version = std::move(number);
    revision.date = std::move(date);
  }
  const std::string written = pageOf(page);
  std::string headings;
  for (std::size_t at = 0; (at = written.find("<h3>Version <bdi>", at)) != written.npos; ++at) {
    const std::size_t number = at + 17;
    const bool isMarked = written.find("This version", at) < written.find("</li>", at);
    headings += written.substr(number, written.find('<', number) - number);
    headings += isMarked ? "! " : " ";
  }
  return headings;
}

TEST(PageWriter, RevisionsAreNewestFirst) {
  EXPECT_EQ(revisionsOf({{u"0.9", u"2025-01-03"}, {u"1.1", u"2026-02-01"}, {u"1.0", u"2025-06-05"}},
                        u"1.1"),
            "1.1! 1.0 0.9 ");
  EXPECT_EQ(
      revisionsOf(
          {{u"1.0", u"2025-01-03"}, {u"1.2", u"2026-02-01T10:00:00Z"}, {u"1.1", u"2026-02-01"}},
          u""),
      "1.2 1.1 1.0 ");
}

TEST(PageWriter, RevisionsWithoutDatesEndOrBeginWithTheOwnVersion) {
  EXPECT_EQ(revisionsOf({{u"0.9", u""}, {u"1.0", u"Spring"}, {u"1.1", u"2026-02-01"}}, u"1.1"),
            "1.1! 1.0 0.9 ");
  EXPECT_EQ(revisionsOf({{u"1.1", u""}, {u"1.0", u""}, {u"0.9", u""}}, u"1.1"), "1.1! 1.0 0.9 ");
  EXPECT_EQ(revisionsOf({{u"0.9", u""}, {u"1.0", u""}}, u"1.1"), "0.9 1.0 ");
}

TEST(PageWriter, RevisionsOfOneDayKeepTheirOrderUnlessTheOwnVersionIsLast) {
  EXPECT_EQ(revisionsOf({{u"0.9", u"2026-02-01"}, {u"1.0", u"2026-02-01"}}, u"1.0"), "1.0! 0.9 ");
  EXPECT_EQ(revisionsOf({{u"1.0", u"2026-02-01"}, {u"0.9", u"2026-02-01"}}, u"1.0"), "1.0! 0.9 ");
}

TEST(PageWriter, TheSizeOfTheDownloadIsBesideThatOfTheContent) {
  Page page = namedPage();
  page.downloadSize = 776000;
  TreeOfFiles tree({{"a.m", 450000}, {"b.m", 4000}, {"empty", 0, true}});
  page.files = tree.files();

  const std::string written = pageOf(page);

  EXPECT_TRUE(has(written, "<dt>Download</dt><dd><bdi>776 kB</bdi></dd>"));
  EXPECT_TRUE(has(written, "<dt>Content</dt><dd><bdi>2 files, 1 empty folder, 454 kB</bdi></dd>"));
}

TEST(PageWriter, AMapOfOneFileIsLeftOut) {
  Page page = namedPage();
  TreeOfFiles one({{"a.m", 100}, {"empty", 0, true}});
  page.files = one.files();
  EXPECT_FALSE(has(pageOf(page), "<svg class=\"treemap\""));

  TreeOfFiles two({{"a.m", 100}, {"b.m", 100}});
  page.files = two.files();
  EXPECT_TRUE(has(pageOf(page), "<svg class=\"treemap\""));
}

TEST(PageWriter, AContactIsALinkOnlyIfItIsAPlainAddress) {
  Page page = namedPage();
  page.get<AddonProperties>().authorContact = u"ada@example.org";
  EXPECT_TRUE(has(pageOf(page), "<a href=\"mailto:ada@example.org\" rel=\"noopener nofollow\">"));

  page.get<AddonProperties>().authorContact = u"javascript:alert(1)";
  EXPECT_FALSE(has(pageOf(page), "<a href=\"javascript"));
  EXPECT_TRUE(has(pageOf(page), "<bdi>javascript:alert(1)</bdi>"));
}

TEST(PageWriter, AnImageThatCannotBeShownSaysWhy) {
  Page page = namedPage();
  addExample(u"e", u"good.png", {u"good2.png", u"bad.png"}, page);
  addExample(u"f", u"bad", {}, page);
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
