// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "opc/interfaces/IContentSource.h"

namespace opc::interfaces {

/// Text as the content of an item.
class MemoryContentSource final : public IContentSource {
 public:
  MemoryContentSource(std::string text, std::string description)
      : text_(std::make_shared<const std::string>(std::move(text))),
        description_(std::move(description)) {}

  std::unique_ptr<InputStream> getInputStream() override {
    return std::make_unique<TextInputStream>(text_);
  }
  std::uint64_t size() const override { return text_->size(); }
  std::string description() const override { return description_; }

 private:
  std::shared_ptr<const std::string> text_;
  std::string description_;
};

}  // namespace opc::interfaces
