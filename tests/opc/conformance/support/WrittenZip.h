// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace test::conformance {

/// A ZIP file taken apart by nothing of the code under test, and believing nothing of it.
class WrittenZip {
 public:
  struct Entry {
    std::string name;
    std::string localName;
    std::uint32_t flags = 0;
    std::uint32_t method = 0;
    std::uint64_t size = 0;
    std::string localExtra;
    std::string extra;
    std::string content;  ///< unpacked
  };

  /// Throws std::runtime_error for what is not a plain ZIP file.
  explicit WrittenZip(const std::string& bytes);

  /// In the directory's order.
  const std::vector<Entry>& entries() const { return entries_; }
  std::vector<std::string> names() const;
  bool has(std::string_view name) const;
  /// Throws std::runtime_error when there is none.
  const std::string& content(std::string_view name) const;
  bool isZip64() const { return zip64_; }

 private:
  std::vector<Entry> entries_;
  bool zip64_ = false;
};

}  // namespace test::conformance
