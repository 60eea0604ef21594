// SPDX-License-Identifier: MIT
#include "addon/comparison/FileComparison.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "addon/comparison/detail/FileMoves.h"
#include "text/Sha256.h"

namespace addon::comparison {

namespace {

using opc::interfaces::Progress;
using opc::interfaces::ProgressFunction;

constexpr std::size_t kPackedPiece = std::size_t{1} << 20;
constexpr std::size_t kBlockSize = std::size_t{64} << 10;
using Block = std::vector<unsigned char>;

/// As far as the block goes, so that two streams stay at the same place.
std::size_t fill(opc::InputStream& stream, Block& block) {
  std::size_t filled = 0;
  while (filled < block.size()) {
    const std::size_t size = stream.read(block.data() + filled, block.size() - filled);
    if (size == 0) break;
    filled += size;
  }
  return filled;
}

std::string keyOf(const Item& item) {
  return item.isFolder() ? item.path + "/" : item.path;
}

/// A file and a folder of one path are two things.
bool isBefore(const Item* a, const Item* b) {
  const int order = a->path.compare(b->path);
  return order != 0 ? order < 0 : a->isFolder() < b->isFolder();
}

std::vector<const Item*> sorted(const std::vector<Item>& items) {
  std::vector<const Item*> order;
  order.reserve(items.size());
  for (const Item& item : items) order.push_back(&item);
  std::sort(order.begin(), order.end(), isBefore);
  return order;
}

/// Goes through two sorted trees and says what became of each path.
class TreeComparison {
 public:
  TreeComparison(FileSet a, FileSet b, bool wantsHashes, const ProgressFunction& progress)
      : a_(a), b_(b), wantsHashes_(wantsHashes), report_(progress) {}

  FileDifferences run() {
    mergePaths(sorted(a_.items), sorted(b_.items));
    comparePairs();
    findMoves();
    if (wantsHashes_) addHashes();
    const auto byPath = [](const auto& x, const auto& y) {
      return x.path != y.path ? x.path < y.path : x.change < y.change;
    };
    std::sort(result_.list.begin(), result_.list.end(), byPath);
    return std::move(result_);
  }

 private:
  void mergePaths(const std::vector<const Item*>& aItems, const std::vector<const Item*>& bItems) {
    auto a = aItems.begin();
    auto b = bItems.begin();
    while (a != aItems.end() || b != bItems.end()) {
      const bool isOnlyInA = b == bItems.end() || (a != aItems.end() && isBefore(*a, *b));
      const bool isOnlyInB = !isOnlyInA && (a == aItems.end() || isBefore(*b, *a));
      if (isOnlyInA) {
        add(Change::Removed, *a++, nullptr);
      } else if (isOnlyInB) {
        add(Change::Added, nullptr, *b++);
      } else {
        addPair(**a++, **b++);
      }
    }
  }

  void add(Change change, const Item* a, const Item* b) {
    result_.list.push_back({keyOf(b == nullptr ? *a : *b), change, {}, a, b});
  }

  /// What sizes and checksums cannot tell is left to be read, once it is known how much that is.
  void addPair(const Item& a, const Item& b) {
    if (a.isFolder()) {
      ++result_.same;
    } else if (agree(a, b)) {
      pairs_.emplace_back(&a, &b);
      expect(a);
    } else {
      add(Change::Changed, &a, &b);
    }
  }

  void comparePairs() {
    for (const auto& [a, b] : pairs_) {
      report();
      if (haveSameBytes(*a, *b)) {
        ++result_.same;
      } else {
        add(Change::Changed, a, b);
      }
      ++progress_.itemsDone;
    }
  }

  void expect(const Item& item) {
    ++progress_.itemsTotal;
    progress_.bytesTotal += item.info.size;
  }

  static bool agree(const Item& a, const Item& b) {
    return a.info.size == b.info.size && a.info.crc == b.info.crc;
  }

  /// Whether they are packed alike, which most files are that did not change.
  bool haveSamePackedBytes(const Item& a, const Item& b) const {
    const std::uint64_t size = a.info.packedSize;
    const bool mayBe = a.info.compressed == b.info.compressed && b.info.packedSize == size;
    if (!mayBe || size == 0) return false;
    for (std::uint64_t done = 0; done < size;) {
      const auto aPiece = packedBytes(a_.package, a, done, kPackedPiece);
      const auto bPiece = packedBytes(b_.package, b, done, kPackedPiece);
      const bool isSame = !aPiece.empty() && aPiece.size() == bPiece.size() &&
                          std::memcmp(aPiece.data(), bPiece.data(), aPiece.size()) == 0;
      if (!isSame) return false;
      done += aPiece.size();
      report();
    }
    return true;
  }

  bool haveSameBytes(const Item& a, const Item& b) {
    if (haveSamePackedBytes(a, b)) {
      progress_.bytesDone += a.info.size;
      return true;
    }
    const auto aStream = openItem(a_.package, a);
    const auto bStream = openItem(b_.package, b);
    bool isSame = true;
    std::size_t size = 0;
    do {
      // To the end even when they differ: with equal checksums, one of them may well be damaged,
      // and that shows at the end.
      size = fill(*aStream, aBlock_);
      isSame = fill(*bStream, bBlock_) == size && isSame &&
               std::memcmp(aBlock_.data(), bBlock_.data(), size) == 0;
      progress_.bytesDone += size;
      report();
    } while (size > 0);
    return isSame;
  }

  void report() const {
    if (report_) report_(progress_);
  }

  void findMoves() {
    detail::joinMoved(result_.list, [this](FileDifference& difference) {
      if (difference.a != nullptr) hash(*difference.a, a_, difference.aHash);
      if (difference.b != nullptr) hash(*difference.b, b_, difference.bHash);
    });
  }

  void addHashes() {
    visitSidesWithoutHash([this](const Item& item, FileSet&, std::string&) { expect(item); });
    visitSidesWithoutHash([this](const Item& item, FileSet& files, std::string& result) {
      hash(item, files, result);
      ++progress_.itemsDone;
      progress_.bytesDone += item.info.size;
    });
  }

  template <typename Visit>
  void visitSidesWithoutHash(Visit visit) {
    const auto needsHash = [](const Item* item, const std::string& known) {
      return item != nullptr && !item->isFolder() && known.empty();
    };
    for (FileDifference& difference : result_.list) {
      if (needsHash(difference.a, difference.aHash)) visit(*difference.a, a_, difference.aHash);
      if (needsHash(difference.b, difference.bHash)) visit(*difference.b, b_, difference.bHash);
    }
  }

  void hash(const Item& item, const FileSet& files, std::string& result) const {
    report();
    result = text::sha256Of(*openItem(files.package, item), [this](std::size_t) { report(); });
  }

  FileSet a_;
  FileSet b_;
  bool wantsHashes_;
  const ProgressFunction& report_;
  Progress progress_;
  std::vector<std::pair<const Item*, const Item*>> pairs_;
  Block aBlock_ = Block(kBlockSize);
  Block bBlock_ = Block(kBlockSize);
  FileDifferences result_;
};

}  // namespace

FileDifferences compareFiles(FileSet a, FileSet b, bool wantsHashes,
                             const ProgressFunction& progress) {
  return TreeComparison(a, b, wantsHashes, progress).run();
}

}  // namespace addon::comparison
