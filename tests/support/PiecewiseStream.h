// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "opc/Streams.h"

namespace test {

/// A stream that returns only a few bytes for each call, as every stream may.
class PiecewiseStream final : public opc::InputStream {
 public:
  PiecewiseStream(std::string text, std::size_t piece) : text_(std::move(text)), piece_(piece) {}

  std::size_t read(unsigned char* buffer, std::size_t size) override {
    furthest_ = std::max(furthest_, at_ + size);
    const std::size_t count = std::min({size, piece_, text_.size() - at_});
    std::copy_n(text_.data() + at_, count, buffer);
    at_ += count;
    return count;
  }
  bool isEnd() override { return at_ == text_.size(); }

  /// The greatest number of bytes that the reader had room for, with those that it has.
  std::size_t furthest() const { return furthest_; }

 private:
  std::string text_;
  std::size_t piece_;
  std::size_t at_ = 0;
  std::size_t furthest_ = 0;
};

}  // namespace test
