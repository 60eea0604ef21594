// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "opc/interfaces/IContentSource.h"

namespace opc::model::detail {

/// Text as the content of an item.
class MemoryContentSource final : public interfaces::IContentSource {
 public:
  MemoryContentSource(std::string text, std::string description)
      : text_(std::make_shared<const std::string>(std::move(text))),
        description_(std::move(description)) {}

  std::unique_ptr<InputStream> getInputStream() override { return std::make_unique<Stream>(text_); }
  std::uint64_t size() const override { return text_->size(); }
  std::string description() const override { return description_; }

 private:
  // Keeps the text alive, since a stream may outlive its source.
  class Stream final : public InputStream {
   public:
    explicit Stream(std::shared_ptr<const std::string> text)
        : text_(std::move(text)),
          bytes_(reinterpret_cast<const unsigned char*>(text_->data()), text_->size()) {}
    std::size_t read(unsigned char* buffer, std::size_t size) override {
      return bytes_.read(buffer, size);
    }
    bool isEnd() override { return bytes_.isEnd(); }

   private:
    std::shared_ptr<const std::string> text_;
    MemoryInputStream bytes_;
  };

  std::shared_ptr<const std::string> text_;
  std::string description_;
};

}  // namespace opc::model::detail
