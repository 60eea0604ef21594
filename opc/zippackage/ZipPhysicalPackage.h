// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "opc/SystemPath.h"
#include "opc/interfaces/Background.h"
#include "opc/interfaces/IPhysicalPackage.h"
#include "opc/interfaces/PackedContents.h"
#include "opc/interfaces/Progress.h"

namespace opc::zippackage {

/// How a commit writes. May be changed until the commit.
struct WriteOptions {
  /// Deflate level of items of CompressionType::Normal, 0 (store) to 9.
  int level = 6;
  /// Seconds since 1970 (UTC): the time of all items that the commit writes, even of those with a
  /// time of their own. If not set, items without a time get the time of the commit.
  std::optional<std::int64_t> timestamp = std::nullopt;
  /// Called while the commit runs, never after the new file is in place.
  interfaces::ProgressFunction progress = nullptr;
  /// Progress counts only the items whose names begin with this text, but the bytes of all items.
  std::string counted = {};
  /// Starts a second thread, which packs new items, too. May be empty; what is written is the same.
  interfaces::BackgroundStarter background = nullptr;
  /// Called with the path of the new file after it has been written and before it is put in place.
  /// If it throws, the new file is removed and the old one stays. May be empty.
  std::function<void(const std::string& path)> inspect = nullptr;
  /// Receives what is known about packed contents, for `inspect`. Must outlive the commit; may be
  /// null.
  interfaces::PackedContents* packed = nullptr;
};

/// A ZIP file as a physical package (ISO/IEC 29500-2, 7; APPNOTE 6.3).
///
/// A commit writes the whole new file beside the old one, with the same owner and permissions,
/// flushes it, checks that the file at the path is still the one that was opened, renames the new
/// file and flushes the folder. The bytes of unchanged items are copied as they are. If the path is
/// a symbolic link, the link stays and its target is replaced.
class ZipPhysicalPackage final : public interfaces::IPhysicalPackage {
 public:
  /// Does not access the disk. `replaceExisting` says whether OpenMode::Create may replace a file
  /// at the path. Large new items that are written through streams are kept in `temporaryFolder`
  /// until the commit, or beside the package if it is empty. Both paths are UTF-16 and stand for
  /// their UTF-8 bytes.
  ZipPhysicalPackage(const std::u16string& path, bool replaceExisting,
                     const std::u16string& temporaryFolder);
  /// The same for a path in the system's bytes, whatever they are.
  ZipPhysicalPackage(const SystemPath& path, bool replaceExisting);
  ~ZipPhysicalPackage() override;

  /// For Create the folder must exist and be writable, and the path must not name a folder.
  void open(interfaces::OpenMode mode) override;
  bool isOpen() const noexcept override;
  void close(bool discard) override;
  std::string description() const override;
  std::uint64_t fileSize() const override;

  std::size_t itemCount() const override;
  bool isRemoved(interfaces::ItemIndex item) const override;
  interfaces::ItemInfo itemInfo(interfaces::ItemIndex item) const override;
  std::string_view itemName(interfaces::ItemIndex item) const override;
  interfaces::ItemKind itemKind(interfaces::ItemIndex item) const override;
  void listItems(interfaces::ItemIndex first,
                 std::span<interfaces::ListedItem> into) const override;
  std::unique_ptr<InputStream> openItem(interfaces::ItemIndex item) override;
  void readItem(interfaces::ItemIndex item, ByteBuffer& into, std::uint64_t limit) override;
  std::span<const unsigned char> packedBytes(interfaces::ItemIndex item, std::uint64_t offset,
                                             std::size_t size) override;
  std::unique_ptr<interfaces::IItemReader> makeReader() const override;
  interfaces::ItemIndex addItem(const interfaces::NewItem& item) override;
  interfaces::ItemIndex addItem(const interfaces::NewItem& item,
                                std::unique_ptr<interfaces::IContentSource> source) override;
  std::unique_ptr<OutputStream> openForWriting(interfaces::ItemIndex item) override;
  void removeItem(interfaces::ItemIndex item) override;

  void setWriteOptions(WriteOptions options);
  void setReplaceExisting(bool replaceExisting);

 private:
  struct Session;  // from open to close

  std::string systemPath() const;
  std::unique_ptr<Session> openExisting(interfaces::OpenMode mode) const;
  std::unique_ptr<Session> openNew() const;
  void prepareForWriting(Session& session) const;
  interfaces::ItemIndex add(const interfaces::NewItem& properties,
                            std::unique_ptr<interfaces::IContentSource> source);
  /// Throw ErrorCode::InvalidState when it is not open, or not open for writing.
  Session& session() const;
  Session& writableSession() const;
  /// Throws ErrorCode::InvalidArgument for an item that never was, ErrorCode::NotFound for one that
  /// was removed.
  Session& sessionWith(interfaces::ItemIndex item) const;

  std::u16string givenPath_;  // empty when bytes were given
  std::string givenBytes_;
  std::u16string temporaryFolder_;
  std::string path_;  // for messages
  bool replaceExisting_;
  WriteOptions options_;
  std::unique_ptr<Session> current_;
};

}  // namespace opc::zippackage
