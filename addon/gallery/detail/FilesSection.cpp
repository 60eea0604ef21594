// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include "addon/gallery/detail/Pieces.h"
#include "addon/gallery/detail/Sections.h"
#include "addon/gallery/detail/Treemap.h"
#include "text/ByteCount.h"

namespace addon::gallery::detail {

namespace {

std::string shareOf(std::uint64_t size, std::uint64_t total) {
  if (total == 0) return "0%";
  const double share = static_cast<double>(size) / static_cast<double>(total) * 100;
  return share > 0 && share < 0.1 ? "< 0.1%" : fmt::format("{:.1f}%", share);
}

std::uint64_t totalOf(const std::vector<TreemapGroup>& groups) {
  std::uint64_t total = 0;
  for (const TreemapGroup& group : groups) total += group.size;
  return total;
}

void writeRow(HtmlWriter& html, const TreemapGroup& group, std::uint64_t total) {
  const std::string color = "key g" + std::to_string(group.color);
  html.element("tr", [&] {
    html.element("th", {{"scope", "row"}}, [&] {
      html.element("span", {{"class", color}, {"aria-hidden", "true"}}, "");
      writeIsolated(html, titleOf(group));
    });
    html.element("td", text::grouped(group.files));
    html.element("td", text::describeBytes(group.size));
    html.element("td", shareOf(group.size, total));
  });
  html.newLine();
}

void writeTable(HtmlWriter& html, const std::vector<TreemapGroup>& groups, std::uint64_t total) {
  html.element("table", {{"class", "sizes"}}, [&] {
    html.element("caption", "By folder");
    html.element("thead", [&] {
      html.element("tr", [&] {
        html.element("th", {{"scope", "col"}}, "Folder");
        html.element("th", {{"scope", "col"}}, "Files");
        html.element("th", {{"scope", "col"}}, "Size");
        html.element("th", {{"scope", "col"}}, "Share");
      });
    });
    html.newLine();
    html.element("tbody", [&] {
      for (const TreemapGroup& group : groups) writeRow(html, group, total);
    });
  });
  html.newLine();
}

}  // namespace

void writeFiles(HtmlWriter& html, const Page& page, PageImages& /*images*/) {
  const std::vector<TreemapGroup> groups = groupBySize(page.files);
  const std::uint64_t total = totalOf(groups);
  const bool isOneFile = groups.size() == 1 && groups.front().files == 1;
  if (total > 0 && !isOneFile) writeTreemap(html, groups);
  if (!groups.empty()) writeTable(html, groups, total);
  writeFileList(html, page);
}

}  // namespace addon::gallery::detail
