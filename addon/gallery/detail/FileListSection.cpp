// SPDX-License-Identifier: MIT
#include <string>
#include <vector>

#include "addon/gallery/detail/ListingPlan.h"
#include "addon/gallery/detail/Pieces.h"
#include "addon/gallery/detail/Sections.h"
#include "text/ByteCount.h"

namespace addon::gallery::detail {

namespace {

using NodeId = PageFiles::NodeId;

class FileListWriter {
 public:
  FileListWriter(HtmlWriter& html, const PageFiles& files)
      : html_(html), files_(files), tree_(files.tree()), plan_(files) {}

  const ListingPlan& plan() const { return plan_; }

  /// Recurses into folders, at most as deep as the plan allows.
  // NOLINTNEXTLINE(misc-no-recursion)
  void writeChildren(NodeId folder) {
    const std::vector<NodeId>& listed = plan_.listed(folder);
    const auto entries = [&] {
      for (const NodeId child : listed) writeEntry(child);
      if (listed.size() < tree_.childCount(folder)) writeRest(folder, listed);
    };
    if (folder != PageFiles::kRoot) return html_.element("ul", entries);
    // The whole list scrolls, also by the keyboard.
    html_.element("ul", {{"tabindex", "0"}, {"aria-label", "Files"}}, entries);
  }

 private:
  // NOLINTNEXTLINE(misc-no-recursion)
  void writeEntry(NodeId node) {
    html_.element("li", [&] {
      if (plan_.listed(node).empty()) return writeLine(node);
      html_.element("details", [&] {
        html_.element("summary", [&] { writeLine(node); });
        writeChildren(node);
      });
    });
    html_.newLine();
  }

  void writeLine(NodeId node) {
    const std::string slash = tree_.isFile(node) ? "" : "/";
    html_.element("span", {{"class", "name"}}, [&] {
      writeIsolated(html_, tree_.name(node));
      html_.text(slash);
    });
    html_.text(" ");
    html_.element("span", {{"class", "size"}}, describe(node));
  }

  std::string describe(NodeId node) const {
    const PageFiles::Totals& totals = files_.totals(node);
    if (tree_.isFile(node)) return text::describeBytes(totals.size);
    if (tree_.isEmptyFolder(node)) return "empty";
    return counted(totals.files, "file") + ", " + text::describeBytes(totals.size);
  }

  void writeRest(NodeId folder, const std::vector<NodeId>& listed) {
    PageFiles::Totals rest = files_.totals(folder);
    for (const NodeId child : listed) {
      rest.files -= files_.totals(child).files;
      rest.size -= files_.totals(child).size;
    }
    html_.element("li", {{"class", "rest"}}, [&] {
      html_.text("and " + counted(rest.files, "more file") + ", " + text::describeBytes(rest.size));
    });
    html_.newLine();
  }

  HtmlWriter& html_;
  const PageFiles& files_;
  const opc::plservices::FileTree& tree_;
  ListingPlan plan_;
};

}  // namespace

void writeFileList(HtmlWriter& html, const Page& page) {
  FileListWriter list(html, page.files);
  const PageFiles::Totals& all = page.files.totals(PageFiles::kRoot);
  html.element("details", {{"class", "tree"}}, [&] {
    html.element("summary",
                 "File tree: " + counted(all.files, "file") + ", " + text::describeBytes(all.size));
    if (!list.plan().isComplete()) {
      html.element("p", {{"class", "muted"}},
                   "There are too many files to list all of them on a page. Of large folders, "
                   "only the first entries are listed, with a total of the others.");
    }
    list.writeChildren(PageFiles::kRoot);
  });
  html.newLine();
}

}  // namespace addon::gallery::detail
