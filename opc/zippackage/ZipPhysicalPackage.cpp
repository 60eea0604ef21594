// SPDX-License-Identifier: MIT
#include "opc/zippackage/ZipPhysicalPackage.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "opc/Exception.h"
#include "opc/zippackage/ItemInfoOf.h"
#include "opc/zippackage/detail/PackageState.h"

namespace opc::zippackage {

using interfaces::IContentSource;
using interfaces::ItemIndex;
using interfaces::ItemInfo;
using interfaces::NewItem;
using interfaces::OpenMode;

namespace {

class PendingWriter final : public OutputStream {
 public:
  explicit PendingWriter(detail::PendingContent& content) : content_(content) {}
  void write(const unsigned char* data, std::size_t size) override {
    content_.append({data, size});
  }

 private:
  detail::PendingContent& content_;
};

ItemInfo infoOf(const detail::AddedItem& item) {
  ItemInfo info;
  info.name = item.properties.name;
  info.compressed = item.properties.compression != interfaces::CompressionType::None;
  info.executable = item.properties.executable;
  info.size = info.packedSize = item.content->size();
  info.modified = item.properties.modified.value_or(0);
  return info;
}

[[noreturn]] void refuseSize(std::uint64_t limit) {
  throw Exception(ErrorCode::TooLarge,
                  "it has more bytes than the limit of " + std::to_string(limit));
}

// A source may turn out longer than it said, so the limit counts while it is read, too.
void readAdded(const detail::AddedItem& item, ByteBuffer& into, std::uint64_t limit) {
  const std::uint64_t expected = item.content->size();
  if (expected > limit) refuseSize(limit);
  const std::unique_ptr<InputStream> stream = item.content->getInputStream();
  into.resizeForOverwrite(static_cast<std::size_t>(expected) + 1);
  std::size_t size = 0;
  while (const std::size_t count = stream->read(into.data() + size, into.size() - size)) {
    size += count;
    if (size > limit) refuseSize(limit);
    if (size < into.size()) continue;
    ByteBuffer larger;
    larger.resizeForOverwrite(size * 2);
    std::memcpy(larger.data(), into.data(), size);
    into = std::move(larger);
  }
  into.resizeForOverwrite(size);
}

}  // namespace

ZipPhysicalPackage::ZipPhysicalPackage(const std::u16string& path, bool replaceExisting,
                                       const std::u16string& temporaryFolder)
    : state_(std::make_unique<State>(path, replaceExisting, temporaryFolder)) {}

ZipPhysicalPackage::~ZipPhysicalPackage() = default;

void ZipPhysicalPackage::open(OpenMode mode) {
  state_->open(mode);
}

bool ZipPhysicalPackage::isOpen() const noexcept {
  return state_->current != nullptr;
}

void ZipPhysicalPackage::close(bool discard) {
  if (!isOpen()) return;
  if (discard) return state_->current.reset();
  state_->commit();
}

std::string ZipPhysicalPackage::description() const {
  return state_->path;
}

std::size_t ZipPhysicalPackage::itemCount() const {
  const State::Session& session = state_->session();
  return session.oldCount() + session.added.size();
}

bool ZipPhysicalPackage::isRemoved(ItemIndex item) const {
  const State::Session& session = state_->session();
  if (item < session.oldCount()) return session.removed[item];
  const std::size_t index = item - session.oldCount();
  return index >= session.added.size() || session.added[index].isRemoved;
}

ItemInfo ZipPhysicalPackage::itemInfo(ItemIndex item) const {
  state_->requireItem(item);
  const State::Session& session = state_->session();
  if (item < session.oldCount()) return itemInfoOf(session.old->directory, item);
  return infoOf(session.added[item - session.oldCount()]);
}

std::string_view ZipPhysicalPackage::itemName(ItemIndex item) const {
  const State::Session& session = state_->session();
  if (item < session.oldCount()) return session.old->directory.name(item);
  state_->requireItem(item);
  return session.added[item - session.oldCount()].properties.name;
}

interfaces::ItemKind ZipPhysicalPackage::itemKind(ItemIndex item) const {
  const State::Session& session = state_->session();
  return item < session.oldCount() ? session.old->directory.entries()[item].kind
                                   : interfaces::ItemKind::File;
}

std::unique_ptr<InputStream> ZipPhysicalPackage::openItem(ItemIndex item) {
  state_->requireItem(item);
  State::Session& session = state_->session();
  if (item < session.oldCount()) return session.old->reader.open(item);
  return session.added[item - session.oldCount()].content->getInputStream();
}

void ZipPhysicalPackage::readItem(ItemIndex item, ByteBuffer& into, std::uint64_t limit) {
  state_->requireItem(item);
  State::Session& session = state_->session();
  if (item < session.oldCount()) return session.old->reader.read(item, into, limit);
  readAdded(session.added[item - session.oldCount()], into, limit);
}

ItemIndex ZipPhysicalPackage::addItem(const NewItem& item) {
  return state_->add(item, nullptr);
}

ItemIndex ZipPhysicalPackage::addItem(const NewItem& item, std::unique_ptr<IContentSource> source) {
  if (!source) {
    throw Exception(ErrorCode::InvalidArgument, "item '" + item.name + "' has no source");
  }
  return state_->add(item, std::move(source));
}

std::unique_ptr<OutputStream> ZipPhysicalPackage::openForWriting(ItemIndex item) {
  State::Session& session = state_->writableSession();
  state_->requireItem(item);
  detail::PendingContent* pending =
      item < session.oldCount() ? nullptr : session.added[item - session.oldCount()].pending;
  if (pending == nullptr) {
    throw Exception(ErrorCode::InvalidState,
                    "item '" + session.nameOf(item) + "' cannot be written to: it has its content");
  }
  pending->clear();
  return std::make_unique<PendingWriter>(*pending);
}

void ZipPhysicalPackage::removeItem(ItemIndex item) {
  State::Session& session = state_->writableSession();
  state_->requireItem(item);
  if (item < session.oldCount()) {
    session.removed[item] = true;
    return;
  }
  detail::AddedItem& added = session.added[item - session.oldCount()];
  added.isRemoved = true;
  // A stream that fills it may still be there, so it is emptied, not destroyed.
  if (added.pending != nullptr) added.pending->clear();
}

void ZipPhysicalPackage::setWriteOptions(WriteOptions options) {
  state_->options = std::move(options);
}

void ZipPhysicalPackage::setReplaceExisting(bool replaceExisting) {
  state_->replaceExisting = replaceExisting;
}

}  // namespace opc::zippackage
