// SPDX-License-Identifier: MIT
#include <algorithm>
#include <string>

#include "addon/gallery/detail/ListingPlan.h"
#include "addon/gallery/detail/Pieces.h"
#include "addon/gallery/detail/Sections.h"
#include "text/ByteCount.h"

namespace addon::gallery::detail {

namespace {

class FileListWriter {
 public:
  FileListWriter(HtmlWriter& html, const FolderTree& tree)
      : html_(html), tree_(tree), plan_(tree) {}

  const ListingPlan& plan() const { return plan_; }

  /// Recurses into folders, at most as deep as the plan allows.
  // NOLINTNEXTLINE(misc-no-recursion)
  void writeChildren(std::size_t folder) {
    const TreeNode& node = tree_[folder];
    const std::size_t listed = plan_.listed(folder);
    const auto entries = [&] {
      for (std::size_t i = 0; i < listed; ++i) writeEntry(node.children[i]);
      if (listed < node.children.size()) writeRest(folder, listed);
    };
    if (folder != 0) return html_.element("ul", entries);
    // The whole list scrolls, also by the keyboard.
    html_.element("ul", {{"tabindex", "0"}, {"aria-label", "Files"}}, entries);
  }

 private:
  // NOLINTNEXTLINE(misc-no-recursion)
  void writeEntry(std::size_t index) {
    const TreeNode& node = tree_[index];
    html_.element("li", [&] {
      if (!node.isFolder || plan_.listed(index) == 0) return writeLine(index);
      html_.element("details", [&] {
        html_.element("summary", [&] { writeLine(index); });
        writeChildren(index);
      });
    });
    html_.newLine();
  }

  void writeLine(std::size_t index) {
    const TreeNode& node = tree_[index];
    const std::string slash = node.isFolder ? "/" : "";
    html_.element("span", {{"class", "name"}}, [&] {
      writeIsolated(html_, node.name);
      html_.text(slash);
    });
    html_.text(" ");
    html_.element("span", {{"class", "size"}}, describe(node));
  }

  static std::string describe(const TreeNode& node) {
    if (!node.isFolder) return text::describeBytes(node.size);
    if (node.children.empty()) return "empty";
    return counted(node.files, "file") + ", " + text::describeBytes(node.size);
  }

  void writeRest(std::size_t folder, std::size_t listed) {
    const TreeNode& node = tree_[folder];
    std::uint64_t files = node.files;
    std::uint64_t size = node.size;
    for (std::size_t i = 0; i < listed; ++i) {
      files -= tree_[node.children[i]].files;
      size -= tree_[node.children[i]].size;
    }
    html_.element("li", {{"class", "rest"}}, [&] {
      html_.text("and " + counted(files, "more file") + ", " + text::describeBytes(size));
    });
    html_.newLine();
  }

  HtmlWriter& html_;
  const FolderTree& tree_;
  ListingPlan plan_;
};

}  // namespace

void writeFileList(HtmlWriter& html, const Page& page) {
  const FolderTree tree(page.files);
  FileListWriter list(html, tree);
  html.element("details", {{"class", "tree"}}, [&] {
    html.element("summary", "File tree: " + counted(tree.root().files, "file") + ", " +
                                text::describeBytes(tree.root().size));
    if (!list.plan().isComplete()) {
      html.element("p", {{"class", "muted"}},
                   "There are too many files to list all of them on a page. Of large folders, "
                   "only the first entries are listed, with a total of the others.");
    }
    list.writeChildren(0);
  });
  html.newLine();
}

}  // namespace addon::gallery::detail
