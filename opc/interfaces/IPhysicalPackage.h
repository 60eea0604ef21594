// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "opc/ByteBuffer.h"
#include "opc/Streams.h"
#include "opc/interfaces/IContentSource.h"

namespace opc::interfaces {

/// How hard to pack an item. Whatever does not get smaller is stored.
enum class CompressionType { None = 0, Normal = 1, Maximum = 2, Fast = 3 };

/// What a package is opened for. The numbers are part of the host's contract.
enum class OpenMode {
  Read = 0,
  Create = 1,  ///< a new package; the disk is untouched until it is committed
  Modify = 2,
};

/// Names an item from the moment it is seen or added until the package is closed. Items of the
/// package on disk come first, in its directory's order; added ones follow.
using ItemIndex = std::size_t;

enum class ItemKind { File, Folder, SymbolicLink, Special };

/// What a container knows about an item without reading it.
struct ItemInfo {
  std::string_view name;  ///< UTF-8, without a leading slash; valid until the package is closed
  ItemKind kind = ItemKind::File;
  bool compressed = false;
  bool executable = false;
  std::uint32_t crc = 0;         ///< 0 for an item that was added since
  std::uint64_t size = 0;        ///< in bytes, as declared
  std::uint64_t packedSize = 0;  ///< in bytes; equal to size for an item that was added since
  std::int64_t modified = 0;     ///< seconds since 1970-01-01 00:00:00 UTC
};

/// What a container lists of an item.
struct ListedItem {
  std::string_view name;  ///< as in ItemInfo
  ItemKind kind = ItemKind::File;
  bool isRemoved = false;  ///< the other members are then unspecified
};

/// An item to be added.
struct NewItem {
  std::string name;  ///< ASCII, without a leading slash
  CompressionType compression = CompressionType::Normal;
  bool executable = false;
  bool atFront = false;  ///< stands before everything else in the file
  /// Seconds since 1970 (UTC). Without it, the item gets the time of the commit. A container may
  /// have a time for all new items that takes precedence.
  std::optional<std::int64_t> modified = std::nullopt;
};

/// Reads items. Errors in an item's data do not name the item, which the caller knows.
class IItemReader {
 public:
  virtual ~IItemReader() = default;

  /// Reads all of an item, checked against its size and checksum. Throws ErrorCode::TooLarge,
  /// before anything is allocated, when it declares more than `limit` bytes.
  virtual void readItem(ItemIndex item, ByteBuffer& into, std::uint64_t limit) = 0;

  /// Returns at most `size` bytes of the item's data from `offset` on, as the container stores
  /// them; valid until the next call. Checks the headers. Returns an empty span for an added item,
  /// after the end of the data, and if the container does not support this. Items with the same
  /// stored data and the same compression method have the same content, if they can be unpacked.
  virtual std::span<const unsigned char> packedBytes(ItemIndex /*item*/, std::uint64_t /*offset*/,
                                                     std::size_t /*size*/) {
    return {};
  }
};

/// A container of named items, and the transaction over it.
///
/// Items are changed in memory only. close(false) replaces the whole container in one step, or
/// fails and leaves the old one as it was; close(true) drops the changes.
/// Operations throw opc::Exception on failure; those that change the package fail with
/// ErrorCode::InvalidState if it was opened for reading.
class IPhysicalPackage : public IItemReader {
 public:
  /// Opens the container. Read and Modify throw if it breaks a rule that can be checked without
  /// reading items. Create ignores an existing container; the commit creates the new one.
  virtual void open(OpenMode mode) = 0;
  virtual bool isOpen() const noexcept = 0;

  /// With `discard` false, commits the changes and closes. A package without changes is not
  /// touched; one opened with Create is always written. A commit that fails throws, and leaves the
  /// package open with its changes. The exception is a failure to flush the folder to disk: the new
  /// package is then in place and closed, and isOpen() returns false. With `discard` true, closes
  /// without a commit and never throws. Does nothing if the package is not open.
  virtual void close(bool discard) = 0;

  /// For messages, UTF-8: the path of the file.
  virtual std::string description() const = 0;

  /// Bytes of the container as it was opened; 0 for a new one.
  virtual std::uint64_t fileSize() const = 0;

  /// One more than the largest index, removed items included.
  virtual std::size_t itemCount() const = 0;
  virtual bool isRemoved(ItemIndex item) const = 0;
  virtual ItemInfo itemInfo(ItemIndex item) const = 0;
  /// The name in itemInfo(), without decoding the rest of the entry.
  virtual std::string_view itemName(ItemIndex item) const = 0;
  /// The kind of itemInfo alone.
  virtual ItemKind itemKind(ItemIndex item) const { return itemInfo(item).kind; }

  /// Fills `into` with the items from `first` on; there must be that many. This takes a fraction of
  /// the time of asking for each by itself.
  virtual void listItems(ItemIndex first, std::span<ListedItem> into) const {
    for (ListedItem& item : into) {
      item.isRemoved = isRemoved(first);
      if (!item.isRemoved) {
        item.name = itemName(first);
        item.kind = itemKind(first);
      }
      ++first;
    }
  }

  /// A fresh stream over the item's data, checked against its size and checksum by the time the
  /// last byte has been handed out. It must not outlive the open package.
  virtual std::unique_ptr<InputStream> openItem(ItemIndex item) = 0;

  /// Another reader of the items, for another thread than the one that uses the package. It must
  /// not outlive the open package. Null if the package is open for changes, or has no other
  /// readers. Throws ErrorCode::InvalidState if the package is not open.
  virtual std::unique_ptr<IItemReader> makeReader() const { return nullptr; }

  /// Adds an item that is empty until it is written to. Names are not checked for duplicates.
  virtual ItemIndex addItem(const NewItem& item) = 0;
  /// Adds an item with the bytes that `source` has when the package is committed.
  virtual ItemIndex addItem(const NewItem& item, std::unique_ptr<IContentSource> source) = 0;

  /// Empties an item added since the package was opened (not from a source) and returns a stream
  /// that fills it. It must not outlive the open package.
  virtual std::unique_ptr<OutputStream> openForWriting(ItemIndex item) = 0;

  /// Removes an item; its index is not used again.
  virtual void removeItem(ItemIndex item) = 0;
};

}  // namespace opc::interfaces
