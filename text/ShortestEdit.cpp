// SPDX-License-Identifier: MIT
#include "text/ShortestEdit.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>

namespace text {

namespace {

using Index = std::ptrdiff_t;
using Elements = std::span<const std::uint32_t>;

/// A part of both sequences that is to be compared with each other.
struct Box {
  Index aBegin;
  Index aEnd;
  Index bBegin;
  Index bEnd;

  Index width() const { return aEnd - aBegin; }
  Index height() const { return bEnd - bBegin; }
};

/// A place that a shortest way through a box passes, counted from the box's corner.
struct Point {
  Index x;
  Index y;
};

/// How far one gets on each diagonal (x - y) in a number of changes.
class Frontier {
 public:
  static constexpr Index kNowhere = -1;

  explicit Frontier(Index reach) : reach_(reach), x_(static_cast<std::size_t>(2 * reach + 1)) {}

  Index& at(Index diagonal) { return x_[static_cast<std::size_t>(diagonal + reach_)]; }

 private:
  Index reach_;
  std::vector<Index> x_;
};

/// Finds the middle of a shortest way through a box, going from both corners at once. The way back
/// is the way forth through the box turned round, so that one set of rules does for both.
class MiddleFinder {
 public:
  MiddleFinder(Elements a, Elements b, Index reach)
      : a_(a), b_(b), reach_(reach), forth_(reach + 1), back_(reach + 1) {}

  /// Nothing when `stepsLeft` runs out, or when there are more changes than the reach.
  std::optional<Point> find(const Box& box, std::uint64_t& stepsLeft) {
    box_ = box;
    for (Index changes = 0; changes <= reach_; ++changes) {
      for (const bool isForth : {true, false}) {
        const std::optional<Point> met = advance(changes, isForth, stepsLeft);
        if (met) return met;
      }
      if (stepsLeft == 0) return std::nullopt;
    }
    return std::nullopt;
  }

 private:
  std::optional<Point> advance(Index changes, bool isForth, std::uint64_t& stepsLeft) {
    const Index width = box_.width();
    const Index height = box_.height();
    Frontier& frontier = isForth ? forth_ : back_;
    // Diagonals that leave the box are not walked; those at its rim were reached before.
    const Index lowest = -changes + 2 * std::max<Index>(0, changes - height);
    const Index highest = changes - 2 * std::max<Index>(0, changes - width);
    for (Index diagonal = lowest; diagonal <= highest; diagonal += 2) {
      const Index start = firstPlace(frontier, diagonal, changes);
      const Index x = start == Frontier::kNowhere ? start : slide(start, diagonal, isForth);
      frontier.at(diagonal) = x;
      const auto walked = static_cast<std::uint64_t>(1 + x - start);
      stepsLeft -= std::min(stepsLeft, walked);
      if (stepsLeft == 0) return std::nullopt;
      if (x != Frontier::kNowhere && meets(diagonal, x, changes, isForth)) {
        return isForth ? Point{x, x - diagonal} : Point{width - x, height - (x - diagonal)};
      }
    }
    return std::nullopt;
  }

  /// The furthest place on the diagonal that one change leads to from those beside it.
  Index firstPlace(Frontier& frontier, Index diagonal, Index changes) const {
    Index best = Frontier::kNowhere;
    if (diagonal < changes) {  // one element of b is skipped
      const Index x = frontier.at(diagonal + 1);
      if (x != Frontier::kNowhere && x - diagonal <= box_.height()) best = x;
    }
    if (diagonal > -changes) {  // one element of a is skipped
      const Index x = frontier.at(diagonal - 1);
      if (x != Frontier::kNowhere && x + 1 <= box_.width()) best = std::max(best, x + 1);
    }
    return changes == 0 ? 0 : best;
  }

  Index slide(Index x, Index diagonal, bool isForth) const {
    Index y = x - diagonal;
    while (x < box_.width() && y < box_.height() && isSame(x, y, isForth)) {
      ++x;
      ++y;
    }
    return x;
  }

  bool isSame(Index x, Index y, bool isForth) const {
    const Index i = isForth ? box_.aBegin + x : box_.aEnd - 1 - x;
    const Index j = isForth ? box_.bBegin + y : box_.bEnd - 1 - y;
    return a_[static_cast<std::size_t>(i)] == b_[static_cast<std::size_t>(j)];
  }

  /// Whether the other way has come past this place already.
  bool meets(Index diagonal, Index x, Index changes, bool isForth) {
    const Index difference = box_.width() - box_.height();
    const bool isOdd = difference % 2 != 0;
    if (isOdd != isForth) return false;
    const Index otherChanges = isForth ? changes - 1 : changes;
    const Index other = difference - diagonal;
    const Index lowest = -otherChanges + 2 * std::max<Index>(0, otherChanges - box_.height());
    const Index highest = otherChanges - 2 * std::max<Index>(0, otherChanges - box_.width());
    if (other < lowest || other > highest) return false;
    const Index otherX = (isForth ? back_ : forth_).at(other);
    return otherX != Frontier::kNowhere && x + otherX >= box_.width();
  }

  Elements a_;
  Elements b_;
  Box box_{};
  Index reach_;
  Frontier forth_;
  Frontier back_;
};

class Search {
 public:
  Search(Elements a, Elements b, std::uint64_t maxSteps)
      : a_(a),
        b_(b),
        stepsLeft_(maxSteps),
        finder_(a, b, reachOf(a.size() + b.size(), maxSteps)),
        edit_{std::vector<bool>(a.size()), std::vector<bool>(b.size())} {}

  Edit run() {
    std::vector<Box> waiting{{0, std::ssize(a_), 0, std::ssize(b_)}};
    while (!waiting.empty()) {
      const Box box = withoutSameEnds(waiting.back());
      waiting.pop_back();
      const bool isPlain = box.width() == 0 || box.height() == 0;
      const auto middle = isPlain ? std::nullopt : finder_.find(box, stepsLeft_);
      if (!middle) {
        markAll(box);
        continue;
      }
      const Index a = box.aBegin + middle->x;
      const Index b = box.bBegin + middle->y;
      waiting.push_back({a, box.aEnd, b, box.bEnd});
      waiting.push_back({box.aBegin, a, box.bBegin, b});
    }
    return std::move(edit_);
  }

 private:
  /// A way of N changes takes about N * N / 2 steps from both ends: more than that many never come
  /// to be walked, and need no memory.
  static Index reachOf(std::size_t elements, std::uint64_t maxSteps) {
    const auto affordable = static_cast<std::size_t>(std::sqrt(static_cast<double>(maxSteps)));
    return static_cast<Index>(std::min((elements + 1) / 2, affordable)) + 1;
  }

  Box withoutSameEnds(Box box) const {
    const auto isSame = [&](Index i, Index j) {
      return a_[static_cast<std::size_t>(i)] == b_[static_cast<std::size_t>(j)];
    };
    while (box.width() > 0 && box.height() > 0 && isSame(box.aBegin, box.bBegin)) {
      ++box.aBegin;
      ++box.bBegin;
    }
    while (box.width() > 0 && box.height() > 0 && isSame(box.aEnd - 1, box.bEnd - 1)) {
      --box.aEnd;
      --box.bEnd;
    }
    return box;
  }

  void markAll(const Box& box) {
    std::fill(edit_.isRemoved.begin() + box.aBegin, edit_.isRemoved.begin() + box.aEnd, true);
    std::fill(edit_.isAdded.begin() + box.bBegin, edit_.isAdded.begin() + box.bEnd, true);
  }

  Elements a_;
  Elements b_;
  std::uint64_t stepsLeft_;
  MiddleFinder finder_;
  Edit edit_;
};

}  // namespace

Edit findShortestEdit(Elements a, Elements b, std::uint64_t maxSteps) {
  return Search(a, b, maxSteps).run();
}

}  // namespace text
