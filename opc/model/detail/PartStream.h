// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "opc/Exception.h"
#include "opc/Streams.h"

namespace opc::model::detail {

/// Lives as long as a package is open.
using OpenToken = std::shared_ptr<const void>;

/// What a stream over a part knows of it: the words for its faults, and whether its package, whose
/// memory the stream reads or writes, is still open.
class PartAccess {
 public:
  PartAccess(const OpenToken& open, std::string context)
      : open_(open), context_(std::move(context)) {}

  template <typename Action>
  auto run(const Action& action) const {
    try {
      requireOpen();
      return action();
    } catch (Exception& fault) {
      fault.addContext(context_);
      throw;
    }
  }

 private:
  void requireOpen() const {
    if (!open_.expired()) return;
    throw Exception(ErrorCode::InvalidState, "its package has been closed");
  }

  std::weak_ptr<const void> open_;
  std::string context_;
};

/// Reads a part.
class PartInputStream final : public InputStream {
 public:
  PartInputStream(std::unique_ptr<InputStream> stream, PartAccess access)
      : stream_(std::move(stream)), access_(std::move(access)) {}

  std::size_t read(unsigned char* buffer, std::size_t size) override {
    return access_.run([&] { return stream_->read(buffer, size); });
  }

  bool isEnd() override {
    return access_.run([&] { return stream_->isEnd(); });
  }

 private:
  std::unique_ptr<InputStream> stream_;
  PartAccess access_;
};

/// Writes a part.
class PartOutputStream final : public OutputStream {
 public:
  PartOutputStream(std::unique_ptr<OutputStream> stream, PartAccess access)
      : stream_(std::move(stream)), access_(std::move(access)) {}

  void write(const unsigned char* data, std::size_t size) override {
    access_.run([&] { stream_->write(data, size); });
  }

 private:
  std::unique_ptr<OutputStream> stream_;
  PartAccess access_;
};

}  // namespace opc::model::detail
