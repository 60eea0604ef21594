// SPDX-License-Identifier: MIT
#include "opc/zippackage/detail/PackageContent.h"

#include <algorithm>
#include <ctime>
#include <string>
#include <utility>

#include "opc/Exception.h"

namespace opc::zippackage::detail {

using interfaces::CompressionType;

namespace {

constexpr std::uint64_t kWorthAligning = std::uint64_t{8} << 20;

}  // namespace

void PackageContent::writeTo(OutputFile& out) {
  now_ = std::time(nullptr);
  countTotals();
  ZipWriter writer(out);
  std::vector<PackJob> jobs = this->jobs();
  KnownContents known(jobs, static_cast<bool>(options_.background));
  known_ = &known;
  const interfaces::PackedContents::Test none;
  PackAhead packer(std::move(jobs), known, options_.packed ? options_.packed->test() : none,
                   options_.background);
  addNew(writer, packer, true);
  copyUnchanged(out, writer);
  addNew(writer, packer, false);
  writer.finish(old_ != nullptr ? Bytes(old_->directory.location().comment) : Bytes());
}

void PackageContent::countTotals() {
  for (std::size_t entry = 0; entry < removed_.size(); ++entry) {
    if (removed_[entry]) continue;
    progress_.itemsTotal += countOf(old_->directory.name(entry));
    progress_.bytesTotal += old_->directory.entries()[entry].size;
  }
  for (const AddedItem& item : added_) {
    if (item.isRemoved) continue;
    progress_.itemsTotal += countOf(item.properties.name);
    progress_.bytesTotal += item.content->size();
  }
}

// In the order in which addNew comes to them.
std::vector<PackJob> PackageContent::jobs() const {
  std::vector<PackJob> jobs;
  jobs.reserve(added_.size());
  for (const bool atFront : {true, false}) {
    for (const AddedItem& item : added_) {
      if (item.isRemoved || item.properties.atFront != atFront) continue;
      jobs.push_back({item.content.get(), levelOf(item.properties.compression)});
    }
  }
  return jobs;
}

void PackageContent::addNew(ZipWriter& writer, PackAhead& packer, bool atFront) {
  for (AddedItem& item : added_) {
    if (item.isRemoved || item.properties.atFront != atFront) continue;
    const std::uint64_t expected = item.content->size();
    const ItemHead head = headOf(item);
    const auto packed = packer.take();
    const auto content = packed ? packed->content : std::nullopt;
    if (const WrittenItem* same = findWritten(content)) {
      writer.addRepeated(head, *same);
      tellOf(writer, *same);
    } else if (packed && (!content || content->isFirst)) {
      const WrittenItem written = writer.add(head, *packed);
      remember(content, written);
      tellOf(writer, written);
    } else {
      addUnpacked(writer, head, *item.content);
    }
    ++job_;
    reportDone(countOf(item.properties.name), expected);
  }
}

void PackageContent::addUnpacked(ZipWriter& writer, const ItemHead& head,
                                 interfaces::IContentSource& source) {
  if (const WrittenItem* same = findWritten(contentOf(head, source))) {
    return writer.addRepeated(head, *same);
  }
  const std::uint64_t expected = source.size();
  // What does not get smaller is read a second time.
  std::uint64_t furthest = 0;
  ContentHash::Value hash{};
  const bool mayRepeat = known_->sizeOf(job_) != KnownContents::Size::Alone;
  const WrittenItem written = writer.add(
      head, source,
      [&](std::uint64_t bytes) {
        furthest = std::max(furthest, std::min(bytes, expected));
        report(furthest);
      },
      mayRepeat ? &hash : nullptr);
  if (mayRepeat) remember(known_->match(job_, head.level, written.size, hash), written);
}

// Takes a reading of its own. It is the later items of a size that may repeat an earlier one.
std::optional<KnownContents::Match> PackageContent::contentOf(const ItemHead& head,
                                                              interfaces::IContentSource& source) {
  if (known_->sizeOf(job_) != KnownContents::Size::Repeated) return std::nullopt;
  constexpr std::size_t kBlock = std::size_t{256} << 10;
  ByteBuffer block;
  block.resizeForOverwrite(kBlock);
  ContentHash hash;
  std::uint64_t size = 0;
  const std::unique_ptr<InputStream> stream = source.getInputStream();
  while (const std::size_t count = stream->read(block.data(), block.size())) {
    hash.update({block.data(), count});
    size += count;
    report(0);
  }
  return known_->match(job_, head.level, size, hash.finish());
}

// A file that changes while it is read may have a content that was expected and never written.
const WrittenItem* PackageContent::findWritten(
    const std::optional<KnownContents::Match>& content) const {
  const bool isWritten = content && !content->isFirst && content->number < written_.size() &&
                         written_[content->number].dataOffset != 0;
  return isWritten ? &written_[content->number] : nullptr;
}

// The item was written last.
void PackageContent::tellOf(const ZipWriter& writer, const WrittenItem& item) const {
  if (options_.packed == nullptr || !item.hasPassed) return;
  options_.packed->add(static_cast<std::size_t>(writer.count() - 1),
                       {item.size, item.packedSize, item.crc, item.method}, *item.hasPassed);
}

void PackageContent::remember(const std::optional<KnownContents::Match>& content,
                              const WrittenItem& written) {
  if (!content || !content->isFirst) return;
  if (written_.size() <= content->number) written_.resize(content->number + 1);
  written_[content->number] = written;
}

ItemHead PackageContent::headOf(const AddedItem& item) const {
  ItemHead head;
  head.name = item.properties.name;
  head.level = levelOf(item.properties.compression);
  head.executable = item.properties.executable;
  head.isTimeExact = item.properties.modified || options_.timestamp;
  head.time = options_.timestamp.value_or(item.properties.modified.value_or(now_));
  return head;
}

int PackageContent::levelOf(CompressionType compression) const {
  switch (compression) {
    case CompressionType::None:
      return 0;
    case CompressionType::Fast:
      return 1;
    case CompressionType::Maximum:
      return 9;
    case CompressionType::Normal:
      break;
  }
  return std::clamp(options_.level, 0, 9);
}

void PackageContent::copyUnchanged(OutputFile& out, ZipWriter& writer) {
  if (old_ == nullptr) return;
  const auto entries = old_->directory.entries();
  const auto order = old_->directory.physicalOrder();
  std::vector<std::uint64_t> newOffsets(entries.size());
  auto next = order.begin();
  for (const Run& run : findRuns()) {
    const std::uint64_t target = out.position();
    const auto header = alignedHeaderOf(run, target);
    const std::uint64_t headerSize = header ? header->oldSize : 0;
    if (header) out.write(header->bytes);
    const std::uint64_t restAt = out.position();
    for (; next != order.end() && entries[*next].headerOffset < run.end; ++next) {
      // Those in front of the run are left out, and so are their offsets.
      const std::uint64_t within = entries[*next].headerOffset - run.start;
      newOffsets[*next] = within < headerSize ? target : restAt + (within - headerSize);
    }
    copyRun(out, run, headerSize);
  }
  for (std::size_t entry = 0; entry < entries.size(); ++entry) {
    if (!removed_[entry]) writer.addCopied(old_->directory, entry, newOffsets[entry]);
  }
}

// Only where it saves the copying of much more than a block.
std::optional<AlignedHeader> PackageContent::alignedHeaderOf(const Run& run,
                                                             std::uint64_t target) const {
  if (run.end - run.start < kWorthAligning) return std::nullopt;
  const auto entries = old_->directory.entries();
  const auto order = old_->directory.physicalOrder();
  const std::uint64_t next =
      run.first == run.last ? run.end : entries[order[run.first + 1]].headerOffset;
  return alignHeader(old_->file, run.start, next, target);
}

std::vector<PackageContent::Run> PackageContent::findRuns() {
  const auto order = old_->directory.physicalOrder();
  std::vector<Run> runs;
  for (std::size_t at = 0; at < order.size(); ++at) {
    if (removed_[order[at]]) continue;
    const ZipEntry& entry = old_->directory.entries()[order[at]];
    const bool continues = !runs.empty() && runs.back().end == entry.headerOffset;
    if (!continues) {
      if (!runs.empty()) requireWhole(runs.back());
      runs.push_back({entry.headerOffset, 0});
      runs.back().first = at;
    }
    Run& run = runs.back();
    run.last = at;
    run.end = endOf(at);
    run.items += countOf(old_->directory.name(order[at]));
    run.bytes += entry.size;
  }
  if (!runs.empty()) requireWhole(runs.back());
  return runs;
}

// What lies up to the next item belongs to this one, as long as it can: the exact length would
// take a look at every local header. Where a run ends it is worth that look.
std::uint64_t PackageContent::endOf(std::size_t positionInOrder) {
  const ZipDirectory& directory = old_->directory;
  const auto order = directory.physicalOrder();
  const std::uint32_t entry = order[positionInOrder];
  const bool isLast = positionInOrder + 1 == order.size();
  if (!isLast && !removed_[order[positionInOrder + 1]]) {
    const std::uint64_t next = directory.entries()[order[positionInOrder + 1]].headerOffset;
    if (next - directory.entries()[entry].leastEnd() <= kMaxUnseen) return next;
  }
  return exactEndOf(entry);
}

std::uint64_t PackageContent::exactEndOf(std::uint32_t entry) {
  const auto context = [&] {
    return "cannot keep item '" + std::string(old_->directory.name(entry)) + "'";
  };
  return inContext(context, [&] { return old_->reader.endOf(entry); });
}

// Extra fields that reach over the end of the run, from far in front of it perhaps, would be cut.
void PackageContent::requireWhole(const Run& run) {
  const auto order = old_->directory.physicalOrder();
  const auto entries = old_->directory.entries();
  std::size_t at = run.last;
  while (at > run.first && entries[order[at - 1]].leastEnd() + kMaxUnseen > run.end) --at;
  for (; at < run.last; ++at) {
    exactEndOf(order[at]);
  }
}

void PackageContent::copyRun(OutputFile& out, const Run& run, std::uint64_t written) {
  const std::uint64_t start = run.start + written;
  const std::uint64_t size = run.end - start;
  out.copyFrom(old_->file, start, size, [&](std::uint64_t copied) {
    const double share = static_cast<double>(copied) / static_cast<double>(size);
    report(static_cast<std::uint64_t>(share * static_cast<double>(run.bytes)));
  });
  reportDone(run.items, run.bytes);
}

void PackageContent::report(std::uint64_t bytesWithin) {
  if (!options_.progress) return;
  interfaces::Progress now = progress_;
  now.bytesDone += bytesWithin;
  options_.progress(now);
}

void PackageContent::reportDone(std::uint64_t items, std::uint64_t bytes) {
  progress_.itemsDone += items;
  progress_.bytesDone += bytes;
  report(0);
}

}  // namespace opc::zippackage::detail
