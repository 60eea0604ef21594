// SPDX-License-Identifier: MIT
#include "addon/comparison/FileHashes.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>
#include <utility>

#include "opc/ByteBuffer.h"
#include "opc/Exception.h"
#include "opc/interfaces/WorkAhead.h"
#include "text/Sha256.h"

namespace addon::comparison {

namespace {

using addon::packaging::AddonPackage;
using opc::interfaces::IItemReader;
using opc::interfaces::ItemIndex;
using Hashes = std::vector<std::string>;
using HashesAhead = opc::interfaces::WorkAhead<Hashes>;

constexpr std::uint64_t kMaxAhead = std::uint64_t{16} << 20;  // bytes

/// A file as another thread than the one that uses the package can read it.
struct FileAhead {
  std::optional<ItemIndex> item;  // none if it is large or in pieces
  std::uint64_t effort = 0;
};

/// For the thread that uses the package.
std::vector<FileAhead> filesAhead(AddonPackage& package, const std::vector<Item>& items) {
  std::vector<FileAhead> files;
  files.reserve(items.size());
  for (const Item& item : items) {
    if (item.isFolder()) continue;
    FileAhead& file = files.emplace_back();
    if (std::max(item.info.size, item.info.packedSize) > kMaxAhead) continue;
    file.item = containerItem(package, item);
    if (file.item) file.effort = item.info.size;
  }
  return files;
}

/// "" if that fails: openItem() then reports why.
std::string hashAhead(IItemReader& reader, ItemIndex item, opc::ByteBuffer& buffer) noexcept {
  try {
    reader.readItem(item, buffer, kMaxAhead);
    text::Sha256 sum;
    sum.update(buffer.data(), buffer.size());
    return sum.finish();
  } catch (const opc::Exception&) {
    return {};
  } catch (const std::bad_alloc&) {
    return {};
  }
}

HashesAhead::Worker hasherOf(AddonPackage& package, const std::vector<FileAhead>& files) {
  struct Own {
    std::unique_ptr<IItemReader> reader;
    opc::ByteBuffer buffer;
  };
  auto own = std::make_shared<Own>();
  own->reader = package.physicalPackage().makeReader();
  return [&files, own = std::move(own)](std::size_t i, Hashes& hashes) {
    const auto item = files[i].item;
    hashes.push_back(item ? hashAhead(*own->reader, *item, own->buffer) : std::string());
  };
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
  const FileHasher hash = [&](const Item& item, const auto& onRead) {
    return text::sha256Of(*openItem(package, item), onRead);
  };
  const bool hasReaders = package.physicalPackage().makeReader() != nullptr;
  if (!hasReaders) return hashFiles(items, progress, hash);
  const std::vector<FileAhead> files = filesAhead(package, items);
  HashesAhead ahead(
      files.size(), opc::interfaces::kReadBatches, [&](std::size_t i) { return files[i].effort; },
      [&] { return hasherOf(package, files); }, starter);
  return hashFiles(items, progress, [&](const Item& item, const auto& onRead) {
    const auto [batch, at] = ahead.take();
    std::string known = std::move(batch[at]);
    if (known.empty()) return hash(item, onRead);
    onRead(static_cast<std::size_t>(item.info.size));
    return known;
  });
}

}  // namespace addon::comparison
