// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "opc/Streams.h"
#include "opc/interfaces/IPhysicalPackage.h"

namespace opc::model {

/// The bytes of several items, one after the other, each opened when the one before is at its end.
class PieceStream final : public InputStream {
 public:
  PieceStream(interfaces::IPhysicalPackage& physical, std::vector<interfaces::ItemIndex> items)
      : physical_(physical), items_(std::move(items)) {}

  std::size_t read(unsigned char* buffer, std::size_t size) override {
    while (size != 0 && advance()) {
      if (const std::size_t count = current_->read(buffer, size)) return count;
      current_.reset();
    }
    return 0;
  }

  bool isEnd() override {
    while (advance()) {
      if (!current_->isEnd()) return false;
      // The last read is what compares an item with its checksum.
      unsigned char none = 0;
      if (current_->read(&none, 1) == 0) current_.reset();
    }
    return true;
  }

 private:
  // Whether there is an item to read from.
  bool advance() {
    if (current_ == nullptr && next_ < items_.size()) {
      current_ = physical_.openItem(items_[next_]);
      ++next_;
    }
    return current_ != nullptr;
  }

  interfaces::IPhysicalPackage& physical_;
  std::vector<interfaces::ItemIndex> items_;
  std::size_t next_ = 0;
  std::unique_ptr<InputStream> current_;
};

}  // namespace opc::model
