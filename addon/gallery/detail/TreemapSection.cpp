// SPDX-License-Identifier: MIT
#include <fmt/format.h>

#include "addon/gallery/detail/Pieces.h"
#include "addon/gallery/detail/Sections.h"
#include "addon/gallery/detail/Treemap.h"
#include "text/ByteCount.h"

namespace addon::gallery::detail {

namespace {

// Boxes are placed in percent, so that the map scales with the page but its letters do not. These
// are its sizes in pixels on a wide page and on a phone.
constexpr Box kFrame{0, 0, 1040, 420};
constexpr double kNarrowWidth = 330;

constexpr double kLetterWidth = 7.5;
constexpr double kWideLetterWidth = 13;  // of characters that are not ASCII
constexpr double kLineHeight = 16;
constexpr double kMargin = 12;

std::string percent(double value, double of) {
  return fmt::format("{:.3f}%", value / of * 100);
}

/// The approximate width on the page, with a margin.
double widthOf(std::string_view text) {
  double width = kMargin;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) width += kLetterWidth;
    if (byte >= 0xC0) width += kWideLetterWidth;
  }
  return width;
}

std::vector<double> sizesOf(const auto& pieces) {
  std::vector<double> sizes;
  sizes.reserve(pieces.size());
  for (const auto& piece : pieces) sizes.push_back(static_cast<double>(piece.size));
  return sizes;
}

/// The lines of text in a box, as many as fit.
class Labels {
 public:
  Labels(HtmlWriter& html, const Box& box) : html_(html), box_(box) {}

  bool hasRoomFor(std::string_view text) const {
    return widthOf(text) <= box_.width && y_ + kLineHeight + kMargin / 2 <= box_.height;
  }

  /// Writes a line below the others, or returns false if there is no room.
  bool write(std::string_view kind, std::string_view text) {
    if (!hasRoomFor(text)) return false;
    y_ += kLineHeight;
    isForPhones_ = isForPhones_ && widthOf(text) <= box_.width / kFrame.width * kNarrowWidth;
    const std::string classes = std::string(kind) + (isForPhones_ ? "" : " wide");
    html_.element("text", {{"class", classes}, {"x", "6"}, {"y", fmt::format("{:.0f}", y_)}}, text);
    return true;
  }

 private:
  HtmlWriter& html_;
  const Box& box_;
  double y_ = 0;
  bool isForPhones_ = true;  ///< whether all lines so far fit there
};

class TreemapWriter {
 public:
  explicit TreemapWriter(HtmlWriter& html) : html_(html) {}

  void write(const std::vector<TreemapGroup>& groups) {
    const std::vector<Box> boxes = squarify(sizesOf(groups), kFrame);
    for (std::size_t i = 0; i < groups.size(); ++i) {
      if (groups[i].size > 0) writeGroup(groups[i], boxes[i]);
    }
  }

 private:
  /// The title of a group is in its first cell, or above several small cells, which then have no
  /// labels.
  void writeGroup(const TreemapGroup& group, const Box& frame) {
    const std::vector<Box> boxes = squarify(sizesOf(group.cells), frame);
    const std::string title = titleOf(group);
    const bool isInCell = Labels(html_, boxes.front()).hasRoomFor(title);
    const bool isAcross = !isInCell && Labels(html_, frame).hasRoomFor(title);
    html_.element("g", {{"class", "g" + std::to_string(group.color)}}, [&] {
      for (std::size_t i = 0; i < boxes.size(); ++i) {
        writeCell(group.cells[i], title, boxes[i], [&](Labels labels) {
          if (isAcross) return;
          if (i == 0 && isInCell) labels.write("group", title);
          writeLabels(group.cells[i], labels);
        });
      }
      writeBox("edge", frame, [&] {
        if (isAcross) Labels(html_, frame).write("group", title);
      });
    });
    html_.newLine();
  }

  template <typename Content>
  void writeCell(const TreemapCell& cell, std::string_view group, const Box& box,
                 const Content& content) {
    std::string what = cell.path;
    if (what.empty()) what = counted(cell.files, "smaller file") + " of " + std::string(group);
    html_.element("g", [&] {
      html_.element("title", what + ", " + text::describeBytes(cell.size));
      writeBox("cell", box, [&] { content(Labels(html_, box)); });
    });
  }

  static void writeLabels(const TreemapCell& cell, Labels& labels) {
    const std::string name =
        cell.path.empty() ? counted(cell.files, "other") : std::string(lastName(cell.path));
    if (labels.write("name", name)) labels.write("size", text::describeBytes(cell.size));
  }

  /// A nested image, which clips labels that are too wide.
  template <typename Content>
  void writeBox(std::string_view kind, const Box& box, const Content& content) {
    html_.element("svg",
                  {{"class", kind},
                   {"x", percent(box.x, kFrame.width)},
                   {"y", percent(box.y, kFrame.height)},
                   {"width", percent(box.width, kFrame.width)},
                   {"height", percent(box.height, kFrame.height)}},
                  [&] {
                    html_.element("rect", {{"width", "100%"}, {"height", "100%"}}, "");
                    content();
                  });
  }

  HtmlWriter& html_;
};

}  // namespace

std::string titleOf(const TreemapGroup& group) {
  switch (group.kind) {
    case TreemapGroup::Kind::TopFiles:
      return "Files in no folder";
    case TreemapGroup::Kind::Others:
      return counted(group.folders, "other folder") +
             (group.hasTopFiles ? ", files in no folder" : "");
    case TreemapGroup::Kind::Folder:
      break;
  }
  return group.name + "/";
}

void writeTreemap(HtmlWriter& html, const std::vector<TreemapGroup>& groups) {
  html.element("svg",
               {{"class", "treemap"},
                {"role", "img"},
                {"aria-label", "Map of the sizes; the table below has the numbers"}},
               [&] { TreemapWriter(html).write(groups); });
  html.newLine();
}

}  // namespace addon::gallery::detail
