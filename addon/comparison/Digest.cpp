// SPDX-License-Identifier: MIT
#include "addon/comparison/Digest.h"

#include <algorithm>
#include <utility>

#include "addon/comparison/OtherContent.h"
#include "addon/packaging/Documents.h"
#include "opc/Text.h"
#include "text/JsonWriter.h"
#include "text/Sha256.h"

namespace addon::comparison {

namespace {

using addon::packaging::AddonPackage;
using addon::packaging::AddonProperties;
using addon::packaging::ConstRecord;
using addon::packaging::Field;

/// A path and the hash of what it holds.
using Line = std::pair<std::string, std::string>;

/// As compact JSON. What terminals act on is not escaped, so that digests stay as they always were.
std::string asJson(const AddonProperties& properties) {
  std::string json;
  text::JsonWriter writer(json, text::JsonWriter::Layout::Compact,
                          text::JsonWriter::Escapes::Required);
  const ConstRecord record(properties);
  writer.beginObject();
  for (const Field& field : AddonProperties::kTable.record.fields) {
    writer.member(field.name, std::u16string_view(record.text(field)));
  }
  writer.endObject();
  return json;
}

void addDocuments(AddonPackage& package, std::vector<Line>& lines) {
  for (const addon::packaging::PresentDocument& document :
       addon::packaging::presentDocuments(package)) {
    lines.emplace_back(document.partName, hashOfPart(package, document.partName));
  }
  const std::string screenshot = addon::packaging::screenshotPart(package);
  if (!screenshot.empty()) lines.emplace_back(screenshot, hashOfPart(package, screenshot));
  if (!isAddon(package)) return;
  // Their part holds but some of the properties: as a whole they count as one value.
  AddonProperties properties;
  package.getAddonProperties(properties);
  lines.emplace_back("/properties", text::sha256Of(asJson(properties)));
}

void addOtherContent(AddonPackage& package, std::vector<Line>& lines) {
  const OtherContent others = readOtherContent(package);
  for (const auto& [item, type] : others.items) {
    lines.emplace_back(item.path + "?ContentType=" + type,
                       text::sha256Of(*openItem(package, item)));
  }
  for (const auto& [source, relationships] : others.relationships) {
    std::string all;
    for (const std::string& one : relationships) all += one + "\n";
    lines.emplace_back(source + "#relationships", text::sha256Of(all));
  }
}

void addFiles(const std::vector<Item>& items, const std::vector<std::string>& hashes,
              std::vector<Line>& lines) {
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (items[i].isFolder()) {
      lines.emplace_back(items[i].path + "/", text::sha256Of(""));
    } else {
      lines.emplace_back(items[i].path, hashes[i]);
    }
  }
}

}  // namespace

std::string hashOfPart(AddonPackage& package, const std::string& partName) {
  const opc::model::PartName name(opc::fromUtf8(partName));
  return text::sha256Of(*package.logicalPackage().getPart(name)->getInputStream());
}

std::string contentDigest(AddonPackage& package, const std::vector<Item>& items,
                          const opc::interfaces::ProgressFunction& progress,
                          const opc::interfaces::BackgroundStarter& starter) {
  return contentDigest(package, items, hashFiles(package, items, progress, starter));
}

std::string contentDigest(AddonPackage& package, const std::vector<Item>& items,
                          const std::vector<std::string>& hashes) {
  std::vector<Line> lines;
  addFiles(items, hashes, lines);
  addDocuments(package, lines);
  addOtherContent(package, lines);
  std::sort(lines.begin(), lines.end());
  text::Sha256 sum;
  for (const auto& [path, hash] : lines) {
    sum.update(path);
    sum.update(std::string_view("\0", 1));
    sum.update(hash);
    sum.update("\n");
  }
  return "sha256:" + sum.finish();
}

}  // namespace addon::comparison
