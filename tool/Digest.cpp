// SPDX-License-Identifier: MIT
#include "tool/Digest.h"

#include <algorithm>
#include <utility>

#include "opc/Text.h"
#include "tool/Sha256.h"
#include "tool/json/DocumentJson.h"
#include "tool/json/Documents.h"

namespace tool {

namespace {

using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using addon::packaging::ConstRecord;

/// A path and the hash of what it holds.
using Line = std::pair<std::string, std::string>;

void addDocuments(AddonPackage& package, std::vector<Line>& lines) {
  for (const json::PresentDocument& document : json::presentDocuments(package)) {
    lines.emplace_back(document.partName, hashOfPart(package, document.partName));
  }
  const std::string screenshot = json::screenshotPart(package);
  if (!screenshot.empty()) lines.emplace_back(screenshot, hashOfPart(package, screenshot));
  // Their part holds but some of the properties: as a whole they count as one value.
  AddonProperties properties;
  package.getAddonProperties(properties);
  lines.emplace_back("/properties",
                     sha256Of(json::toJson(AddonProperties::kTable, ConstRecord(properties),
                                           json::JsonWriter::Layout::Compact)));
}

void addFiles(AddonPackage& package, const std::vector<Item>& items,
              const opc::interfaces::ProgressFunction& progress, std::vector<Line>& lines) {
  const Totals totals = totalsOf(items);
  opc::interfaces::Progress state{0, items.size(), 0, totals.bytes};
  const auto advance = [&](std::size_t bytes) {
    state.bytesDone += bytes;
    if (progress) progress(state);
  };
  for (const Item& item : items) {
    if (item.isFolder()) {
      lines.emplace_back(item.path + "/", sha256Of(""));
    } else {
      lines.emplace_back(item.path, sha256Of(*openItem(package, item), advance));
    }
    ++state.itemsDone;
    advance(0);
  }
}

}  // namespace

std::string hashOfPart(AddonPackage& package, const std::string& partName) {
  const opc::model::PartName name(opc::fromUtf8(partName));
  return sha256Of(*package.logicalPackage().getPart(name)->getInputStream());
}

std::string contentDigest(AddonPackage& package, const std::vector<Item>& items,
                          const opc::interfaces::ProgressFunction& progress) {
  std::vector<Line> lines;
  addFiles(package, items, progress, lines);
  addDocuments(package, lines);
  std::sort(lines.begin(), lines.end());
  Sha256 sum;
  for (const auto& [path, hash] : lines) {
    sum.update(path);
    sum.update(std::string_view("\0", 1));
    sum.update(hash);
    sum.update("\n");
  }
  return "sha256:" + sum.finish();
}

}  // namespace tool
