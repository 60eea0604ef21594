// SPDX-License-Identifier: MIT
#include "addon/comparison/FileHashes.h"

#include <memory>
#include <new>
#include <utility>

#include "addon/comparison/detail/SideReader.h"
#include "opc/interfaces/WorkAhead.h"
#include "text/Sha256.h"

namespace addon::comparison {

namespace {

using addon::packaging::AddonPackage;
using Hashes = std::vector<std::string>;
using HashesAhead = opc::interfaces::WorkAhead<Hashes>;

/// "" for what is left to openItem(), which also reports that there is no memory.
std::string hashOf(detail::SideReader& reader, const detail::SideItem& item) noexcept {
  try {
    const auto bytes = reader.read(item);
    if (!bytes) return {};
    text::Sha256 sum;
    sum.update(bytes->data(), bytes->size());
    return sum.finish();
  } catch (const std::bad_alloc&) {
    return {};
  }
}

}  // namespace

std::vector<std::string> hashFiles(const std::vector<Item>& items,
                                   const opc::interfaces::ProgressFunction& progress,
                                   const FileHasher& hashFile) {
  const Totals totals = totalsOf(items);
  opc::interfaces::Progress state{0, totals.files, 0, totals.bytes};
  const auto advance = [&](std::size_t bytes) {
    state.bytesDone += bytes;
    if (progress) progress(state);
  };
  Hashes hashes;
  hashes.reserve(items.size());
  for (const Item& item : items) {
    hashes.push_back(item.isFolder() ? std::string() : hashFile(item, advance));
    state.itemsDone += item.isFolder() ? 0 : 1;
    advance(0);
  }
  return hashes;
}

std::vector<std::string> hashFiles(AddonPackage& package, const std::vector<Item>& items,
                                   const opc::interfaces::ProgressFunction& progress,
                                   const opc::interfaces::BackgroundStarter& starter) {
  std::vector<detail::SideItem> files;
  files.reserve(items.size());
  for (const Item& item : items) {
    if (!item.isFolder()) files.emplace_back(package, item);
  }
  HashesAhead ahead(
      files.size(), detail::kSideBatches, [&](std::size_t i) { return files[i].effort(); },
      [&] {
        auto reader = std::make_shared<detail::SideReader>(package);
        return [&files, reader](std::size_t i, Hashes& hashes) {
          hashes.push_back(hashOf(*reader, files[i]));
        };
      },
      starter);
  return hashFiles(items, progress, [&](const Item& item, const auto& onRead) {
    const auto [batch, at] = ahead.take();
    std::string hash = std::move(batch[at]);
    if (hash.empty()) return text::sha256Of(*openItem(package, item), onRead);
    onRead(static_cast<std::size_t>(item.info.size));
    return hash;
  });
}

}  // namespace addon::comparison
