// SPDX-License-Identifier: MIT
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "opc/zippackage/ZipPhysicalPackage.h"
#include "opc/zippackage/detail/AddedItem.h"
#include "opc/zippackage/detail/PackageContent.h"
#include "opc/zippackage/detail/PackageTarget.h"
#include "opc/zippackage/detail/PendingContent.h"

namespace opc::zippackage {

/// Everything behind a ZipPhysicalPackage. Kept whatever is open: what it was constructed with and
/// its options. The rest lives from open to close.
class ZipPhysicalPackage::State {
 public:
  /// A package that is open. Streams that were handed out point into it.
  struct Session {
    std::string path;
    interfaces::OpenMode mode = interfaces::OpenMode::Read;
    std::optional<detail::PackageTarget> target;  ///< when it may be written
    std::unique_ptr<detail::OpenedPackage> old;   ///< null for a new package
    std::vector<bool> removed;                    ///< an element an item of `old`
    std::unique_ptr<detail::PendingStore> store;
    std::deque<detail::AddedItem> added;

    std::size_t oldCount() const { return removed.size(); }
    bool isChanged() const;
    std::string nameOf(interfaces::ItemIndex item) const;
  };

  State(const std::u16string& path, bool replaceExisting, const std::u16string& temporaryFolder);

  void open(interfaces::OpenMode mode);
  void commit();

  /// Throw ErrorCode::InvalidState when it is not open, or not open for writing.
  Session& session() const;
  Session& writableSession() const;
  /// Throws ErrorCode::InvalidArgument for an item that never was, ErrorCode::NotFound for one that
  /// was removed.
  void requireItem(interfaces::ItemIndex item) const;
  /// What to put in front of the reason why an item cannot be read.
  interfaces::ItemIndex add(const interfaces::NewItem& properties,
                            std::unique_ptr<interfaces::IContentSource> source);

  std::u16string givenPath;
  std::u16string temporaryFolder;
  std::string path;  ///< for messages
  bool replaceExisting = false;
  WriteOptions options;
  std::unique_ptr<Session> current;

 private:
  std::unique_ptr<Session> openExisting(interfaces::OpenMode mode);
  std::unique_ptr<Session> openNew();
  void prepareForWriting(Session& session);
};

}  // namespace opc::zippackage
