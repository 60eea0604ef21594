// SPDX-License-Identifier: MIT
#include "opc/zippackage/ZipPhysicalPackage.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "opc/Exception.h"
#include "opc/PackageTarget.h"
#include "opc/Text.h"
#include "opc/zippackage/ItemInfoOf.h"
#include "opc/zippackage/detail/AddedItem.h"
#include "opc/zippackage/detail/PackageContent.h"
#include "opc/zippackage/detail/PendingContent.h"
#include "opc/zippackage/detail/ZipCommit.h"

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

void requireItem(ItemIndex item, std::size_t count, const std::string& path) {
  if (item < count) return;
  throw Exception(ErrorCode::InvalidArgument,
                  "package '" + path + "' has no item of number " + std::to_string(item));
}

class ItemReader final : public interfaces::IItemReader {
 public:
  ItemReader(const detail::OpenedPackage& package, std::string path)
      : count_(package.directory.entries().size()),
        path_(std::move(path)),
        reader_(package.file, package.directory) {}
  void readItem(ItemIndex item, ByteBuffer& into, std::uint64_t limit) override {
    requireItem(item, count_, path_);
    reader_.read(item, into, limit);
  }
  Bytes packedBytes(ItemIndex item, std::uint64_t offset, std::size_t size) override {
    requireItem(item, count_, path_);
    return reader_.packedBytes(item, offset, size);
  }

 private:
  std::size_t count_;
  std::string path_;
  ZipItemReader reader_;
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

const std::string& requirePath(const std::string& bytes) {
  if (bytes.empty()) throw Exception(ErrorCode::InvalidArgument, "the path is empty");
  if (bytes.find('\0') != std::string::npos) {
    throw Exception(ErrorCode::InvalidArgument, "the path holds a NUL");
  }
  return bytes;
}

// A folder, or a device, cannot be replaced by a file; a file only if that is allowed.
void requireFreePlace(const std::string& path, bool replaceExisting) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return;
    throw SystemError("cannot look at it", errno);
  }
  if (S_ISDIR(status.st_mode)) throw Exception(ErrorCode::AlreadyExists, "it is a folder");
  if (!replaceExisting) throw Exception(ErrorCode::AlreadyExists, "it already exists");
  if (!S_ISREG(status.st_mode)) {
    throw Exception(ErrorCode::AlreadyExists, "it is not a regular file");
  }
}

void requireItemName(const std::string& name) {
  const auto isWritable = [](char c) { return static_cast<unsigned char>(c) < 0x80 && c != '\0'; };
  const char* why = nullptr;
  if (name.empty()) {
    why = "it is empty";
  } else if (name.size() > detail::kMaxNameLength) {
    why = "it is too long";
  } else if (!std::all_of(name.begin(), name.end(), isWritable)) {
    why = "it holds a NUL or a character that is not ASCII";
  }
  if (why == nullptr) return;
  constexpr std::size_t kShown = 200;
  throw Exception(ErrorCode::InvalidName,
                  "cannot add item '" + name.substr(0, kShown) + "': " + why);
}

}  // namespace

// From open to close. Streams that were handed out point into it.
struct ZipPhysicalPackage::Session {
  std::string path;
  OpenMode mode = OpenMode::Read;
  std::optional<PackageTarget> target;         // when it may be written
  std::unique_ptr<detail::OpenedPackage> old;  // null for a new package
  std::vector<bool> removed;                   // one element per item of `old`
  std::unique_ptr<detail::PendingStore> store;
  std::deque<detail::AddedItem> added;

  std::size_t oldCount() const { return removed.size(); }
  bool isOld(ItemIndex item) const { return item < oldCount(); }
  std::size_t count() const { return oldCount() + added.size(); }
  detail::AddedItem& addedItem(ItemIndex item) { return added[item - oldCount()]; }

  bool isRemoved(ItemIndex item) const {
    return isOld(item) ? removed[item] : added[item - oldCount()].isRemoved;
  }

  std::string_view nameOf(ItemIndex item) const {
    return isOld(item) ? old->directory.name(item) : added[item - oldCount()].properties.name;
  }

  bool isChanged() const {
    return std::any_of(removed.begin(), removed.end(), [](bool is) { return is; }) ||
           std::any_of(added.begin(), added.end(),
                       [](const auto& item) { return !item.isRemoved; });
  }
};

ZipPhysicalPackage::ZipPhysicalPackage(const std::u16string& path, bool replaceExisting,
                                       const std::u16string& temporaryFolder)
    : givenPath_(path),
      temporaryFolder_(temporaryFolder),
      path_(toUtf8ForDisplay(path)),
      replaceExisting_(replaceExisting) {}

ZipPhysicalPackage::ZipPhysicalPackage(const SystemPath& path, bool replaceExisting)
    : givenBytes_(path.bytes), path_(givenBytes_), replaceExisting_(replaceExisting) {}

ZipPhysicalPackage::~ZipPhysicalPackage() = default;

void ZipPhysicalPackage::open(OpenMode mode) {
  if (isOpen()) throw Exception(ErrorCode::InvalidState, "package '" + path_ + "' is open already");
  current_ = mode == OpenMode::Create ? openNew() : openExisting(mode);
}

std::string ZipPhysicalPackage::systemPath() const {
  return requirePath(givenBytes_.empty() ? toUtf8(givenPath_) : givenBytes_);
}

std::unique_ptr<ZipPhysicalPackage::Session> ZipPhysicalPackage::openExisting(OpenMode mode) const {
  auto session = std::make_unique<Session>();
  session->mode = mode;
  const auto context = [this] { return "cannot open package '" + path_ + "'"; };
  session->path = inContext(context, [this] { return systemPath(); });
  PackageFile file(session->path);
  inContext(context, [&] {
    session->old = std::make_unique<detail::OpenedPackage>(std::move(file));
    session->old->directory.refuseFaults();
    session->removed.resize(session->old->directory.entries().size());
    if (mode != OpenMode::Modify) return;
    prepareForWriting(*session);
    session->target->requireWritableFile();
  });
  return session;
}

std::unique_ptr<ZipPhysicalPackage::Session> ZipPhysicalPackage::openNew() const {
  auto session = std::make_unique<Session>();
  session->mode = OpenMode::Create;
  inContext([this] { return "cannot create package '" + path_ + "'"; },
            [&] {
              session->path = systemPath();
              requireFreePlace(session->path, replaceExisting_);
              prepareForWriting(*session);
            });
  return session;
}

void ZipPhysicalPackage::prepareForWriting(Session& session) const {
  session.target = PackageTarget::resolve(session.path);
  session.target->requireWritableFolder();
  const std::string folder = toUtf8(temporaryFolder_);
  session.store =
      std::make_unique<detail::PendingStore>(folder.empty() ? session.target->folder : folder);
}

bool ZipPhysicalPackage::isOpen() const noexcept {
  return current_ != nullptr;
}

void ZipPhysicalPackage::close(bool discard) {
  if (!isOpen()) return;
  Session& writing = *current_;
  const bool isUnchanged =
      writing.mode == OpenMode::Read || (writing.mode == OpenMode::Modify && !writing.isChanged());
  if (discard || isUnchanged) return current_.reset();
  const bool mayReplace = writing.mode == OpenMode::Modify || replaceExisting_;
  detail::PackageContent content(writing.old.get(), writing.removed, writing.added, options_);
  detail::ZipCommit commit(writing.path, *writing.target,
                           writing.old ? &writing.old->file : nullptr);
  commit.run(
      mayReplace, [&](detail::OutputFile& out) { content.writeTo(out); }, options_.inspect,
      [this] { current_.reset(); });
}

std::string ZipPhysicalPackage::description() const {
  return path_;
}

std::uint64_t ZipPhysicalPackage::fileSize() const {
  const Session& open = session();
  return open.old ? open.old->file.size() : 0;
}

ZipPhysicalPackage::Session& ZipPhysicalPackage::session() const {
  if (!isOpen()) throw Exception(ErrorCode::InvalidState, "package '" + path_ + "' is not open");
  return *current_;
}

ZipPhysicalPackage::Session& ZipPhysicalPackage::writableSession() const {
  if (session().mode != OpenMode::Read) return *current_;
  throw Exception(ErrorCode::InvalidState, "package '" + path_ + "' is open for reading only");
}

ZipPhysicalPackage::Session& ZipPhysicalPackage::sessionWith(ItemIndex item) const {
  Session& open = session();
  requireItem(item, open.count(), path_);
  if (!open.isRemoved(item)) return open;
  throw Exception(ErrorCode::NotFound,
                  "item '" + std::string(open.nameOf(item)) + "' was removed from '" + path_ + "'");
}

std::size_t ZipPhysicalPackage::itemCount() const {
  return session().count();
}

bool ZipPhysicalPackage::isRemoved(ItemIndex item) const {
  const Session& open = session();
  return item >= open.count() || open.isRemoved(item);
}

ItemInfo ZipPhysicalPackage::itemInfo(ItemIndex item) const {
  Session& open = sessionWith(item);
  return open.isOld(item) ? itemInfoOf(open.old->directory, item) : infoOf(open.addedItem(item));
}

std::string_view ZipPhysicalPackage::itemName(ItemIndex item) const {
  const Session& open = session();
  if (!open.isOld(item)) sessionWith(item);
  return open.nameOf(item);
}

interfaces::ItemKind ZipPhysicalPackage::itemKind(ItemIndex item) const {
  const Session& open = session();
  return open.isOld(item) ? open.old->directory.entries()[item].kind : interfaces::ItemKind::File;
}

void ZipPhysicalPackage::listItems(ItemIndex first, std::span<interfaces::ListedItem> into) const {
  const Session& open = session();
  if (!open.added.empty() || !open.old) return IPhysicalPackage::listItems(first, into);
  const ZipDirectory& directory = open.old->directory;
  for (interfaces::ListedItem& item : into) {
    item = {directory.name(first), directory.entries()[first].kind, open.removed[first]};
    ++first;
  }
}

std::unique_ptr<InputStream> ZipPhysicalPackage::openItem(ItemIndex item) {
  Session& open = sessionWith(item);
  if (open.isOld(item)) return open.old->reader.open(item);
  return open.addedItem(item).content->getInputStream();
}

void ZipPhysicalPackage::readItem(ItemIndex item, ByteBuffer& into, std::uint64_t limit) {
  Session& open = sessionWith(item);
  if (open.isOld(item)) return open.old->reader.read(item, into, limit);
  readAdded(open.addedItem(item), into, limit);
}

Bytes ZipPhysicalPackage::packedBytes(ItemIndex item, std::uint64_t offset, std::size_t size) {
  Session& open = sessionWith(item);
  return open.isOld(item) ? open.old->reader.packedBytes(item, offset, size) : Bytes();
}

std::unique_ptr<interfaces::IItemReader> ZipPhysicalPackage::makeReader() const {
  const Session& open = session();
  if (open.mode != OpenMode::Read) return nullptr;
  return std::make_unique<ItemReader>(*open.old, path_);
}

ItemIndex ZipPhysicalPackage::add(const NewItem& properties,
                                  std::unique_ptr<IContentSource> source) {
  Session& open = writableSession();
  requireItemName(properties.name);
  detail::AddedItem item{properties, std::move(source)};
  if (!item.content) {
    auto pending = std::make_unique<detail::PendingContent>(*open.store, properties.name);
    item.pending = pending.get();
    item.content = std::move(pending);
  }
  open.added.push_back(std::move(item));
  return open.count() - 1;
}

ItemIndex ZipPhysicalPackage::addItem(const NewItem& item) {
  return add(item, nullptr);
}

ItemIndex ZipPhysicalPackage::addItem(const NewItem& item, std::unique_ptr<IContentSource> source) {
  if (!source) {
    throw Exception(ErrorCode::InvalidArgument, "item '" + item.name + "' has no source");
  }
  return add(item, std::move(source));
}

std::unique_ptr<OutputStream> ZipPhysicalPackage::openForWriting(ItemIndex item) {
  writableSession();
  Session& open = sessionWith(item);
  detail::PendingContent* pending = open.isOld(item) ? nullptr : open.addedItem(item).pending;
  if (pending == nullptr) {
    throw Exception(ErrorCode::InvalidState, "item '" + std::string(open.nameOf(item)) +
                                                 "' cannot be written to: it has its content");
  }
  pending->clear();
  return std::make_unique<PendingWriter>(*pending);
}

void ZipPhysicalPackage::removeItem(ItemIndex item) {
  writableSession();
  Session& open = sessionWith(item);
  if (open.isOld(item)) {
    open.removed[item] = true;
    return;
  }
  detail::AddedItem& added = open.addedItem(item);
  added.isRemoved = true;
  // A stream that fills it may still be there, so it is emptied, not destroyed.
  if (added.pending != nullptr) added.pending->clear();
}

void ZipPhysicalPackage::setWriteOptions(WriteOptions options) {
  options_ = std::move(options);
}

void ZipPhysicalPackage::setReplaceExisting(bool replaceExisting) {
  replaceExisting_ = replaceExisting;
}

}  // namespace opc::zippackage
