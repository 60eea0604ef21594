// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string_view>
#include <vector>

#include "opc/interfaces/Progress.h"
#include "opc/zippackage/ZipDirectory.h"
#include "opc/zippackage/ZipItemReader.h"
#include "opc/zippackage/ZipPhysicalPackage.h"
#include "opc/zippackage/detail/AddedItem.h"
#include "opc/zippackage/detail/AlignedHeader.h"
#include "opc/zippackage/detail/KnownContents.h"
#include "opc/zippackage/detail/OutputFile.h"
#include "opc/zippackage/detail/PackAhead.h"
#include "opc/zippackage/detail/ZipWriter.h"

namespace opc::zippackage::detail {

/// The package on disk that a transaction changes.
struct OpenedPackage {
  explicit OpenedPackage(PackageFile opened)
      : file(std::move(opened)), directory(ZipDirectory::read(file)), reader(file, directory) {}

  PackageFile file;
  ZipDirectory directory;
  ZipItemReader reader;
};

/// Writes a whole new package: the new items for the front, the unchanged items of the old package,
/// the other new items, and the directory. Unchanged items are copied in runs without a change,
/// except for a growth hint in the header at the start of a long run, which lets the file system
/// share its blocks. Bytes before the first item and after the end of the old package are dropped,
/// and so are bytes between two items if they are more than an item can have after its data.
class PackageContent {
 public:
  /// `old` is null for a new package; `removed` says which of its items are left out.
  PackageContent(OpenedPackage* old, const std::vector<bool>& removed, std::deque<AddedItem>& added,
                 const WriteOptions& options)
      : old_(old), removed_(removed), added_(added), options_(options) {}

  void writeTo(OutputFile& out);

 private:
  /// Neighbouring unchanged items.
  struct Run {
    std::uint64_t start = 0;
    std::uint64_t end = 0;
    std::uint64_t items = 0;  ///< that the progress counts
    std::uint64_t bytes = 0;  ///< unpacked
    std::size_t first = 0;    ///< of its items, in physical order; none between is left out
    std::size_t last = 0;
  };

  void countTotals();
  /// How many items the progress counts for one with that name.
  std::uint64_t countOf(std::string_view name) const { return name.starts_with(options_.counted); }
  std::vector<PackJob> jobs() const;
  void addNew(ZipWriter& writer, PackAhead& packer, bool atFront);
  void addUnpacked(ZipWriter& writer, const ItemHead& head, interfaces::IContentSource& source);
  std::optional<KnownContents::Match> contentOf(const ItemHead& head,
                                                interfaces::IContentSource& source);
  const WrittenItem* findWritten(const std::optional<KnownContents::Match>& content) const;
  void remember(const std::optional<KnownContents::Match>& content, const WrittenItem& written);
  void tellOf(const ZipWriter& writer, const WrittenItem& item) const;
  void copyUnchanged(OutputFile& out, ZipWriter& writer);
  std::vector<Run> findRuns();
  std::uint64_t endOf(std::size_t positionInOrder);
  std::uint64_t exactEndOf(std::uint32_t entry);
  void requireWhole(const Run& run);
  std::optional<AlignedHeader> alignedHeaderOf(const Run& run, std::uint64_t target) const;
  void copyRun(OutputFile& out, const Run& run, std::uint64_t written);
  ItemHead headOf(const AddedItem& item) const;
  int levelOf(interfaces::CompressionType compression) const;
  void report(std::uint64_t bytesWithin);
  void reportDone(std::uint64_t items, std::uint64_t bytes);

  OpenedPackage* old_;
  const std::vector<bool>& removed_;
  std::deque<AddedItem>& added_;
  const WriteOptions& options_;
  std::int64_t now_ = 0;
  KnownContents* known_ = nullptr;    // while it writes
  std::size_t job_ = 0;               // the next one to be written
  std::vector<WrittenItem> written_;  // by the number of the content; a data offset of 0 is none
  interfaces::Progress progress_;
};

}  // namespace opc::zippackage::detail
