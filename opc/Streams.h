// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace opc {

/// Bytes to be read once, from front to back.
class InputStream {
 public:
  virtual ~InputStream() = default;

  /// Reads up to `size` bytes into `buffer`. Returns how many; 0 only at the end (or for size 0).
  /// Throws Exception; what was read before stays valid.
  virtual std::size_t read(unsigned char* buffer, std::size_t size) = 0;

  /// Whether every byte has been read. May have to look ahead, and may throw as read does.
  virtual bool isEnd() = 0;

 protected:
  InputStream() = default;
  InputStream(const InputStream&) = default;
  InputStream& operator=(const InputStream&) = default;
};

/// Bytes to be written from front to back. What was written counts at once; there is no close.
class OutputStream {
 public:
  virtual ~OutputStream() = default;

  /// Writes all `size` bytes, or throws Exception.
  virtual void write(const unsigned char* data, std::size_t size) = 0;

 protected:
  OutputStream() = default;
  OutputStream(const OutputStream&) = default;
  OutputStream& operator=(const OutputStream&) = default;
};

/// Reads from a std::istream, which must outlive it.
class StdIStreamAdaptor final : public InputStream {
 public:
  explicit StdIStreamAdaptor(std::istream& stream) : stream_(stream) {}
  std::size_t read(unsigned char* buffer, std::size_t size) override;
  bool isEnd() override;

 private:
  void requireReadable() const;

  std::istream& stream_;
};

/// Writes to a std::ostream, which must outlive it.
class StdOStreamAdaptor final : public OutputStream {
 public:
  explicit StdOStreamAdaptor(std::ostream& stream) : stream_(stream) {}
  void write(const unsigned char* data, std::size_t size) override;

 private:
  std::ostream& stream_;
};

/// Reads from memory that outlives it.
class MemoryInputStream final : public InputStream {
 public:
  MemoryInputStream(const unsigned char* data, std::size_t size) : next_(data), left_(size) {}
  explicit MemoryInputStream(std::string_view text)
      : MemoryInputStream(reinterpret_cast<const unsigned char*>(text.data()), text.size()) {}
  std::size_t read(unsigned char* buffer, std::size_t size) override;
  bool isEnd() override { return left_ == 0; }

 private:
  const unsigned char* next_;
  std::size_t left_;
};

/// Reads a text that it keeps.
class TextInputStream final : public InputStream {
 public:
  explicit TextInputStream(std::shared_ptr<const std::string> text)
      : text_(std::move(text)), bytes_(*text_) {}
  explicit TextInputStream(std::string text)
      : TextInputStream(std::make_shared<const std::string>(std::move(text))) {}
  std::size_t read(unsigned char* buffer, std::size_t size) override {
    return bytes_.read(buffer, size);
  }
  bool isEnd() override { return bytes_.isEnd(); }

 private:
  std::shared_ptr<const std::string> text_;
  MemoryInputStream bytes_;
};

/// Collects what is written to it.
class TextOutputStream final : public OutputStream {
 public:
  void write(const unsigned char* data, std::size_t size) override {
    text.append(reinterpret_cast<const char*>(data), size);
  }

  std::string text;
};

struct StreamHelper {
  /// Copies what is left of `from` to `to`.
  static void copyStreamToStream(InputStream& from, OutputStream& to);
  /// What is left of `stream`.
  static std::string readToEnd(InputStream& stream);
};

}  // namespace opc
