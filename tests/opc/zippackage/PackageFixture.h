// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/interfaces/IContentSource.h"
#include "opc/zippackage/ZipPhysicalPackage.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

/// A content source made of text, which can misbehave.
class TextSource final : public opc::interfaces::IContentSource {
 public:
  explicit TextSource(std::string text) : text_(std::move(text)), size_(text_.size()) {}

  TextSource& declaring(std::uint64_t size) {
    size_ = size;
    return *this;
  }
  /// `hook` is called before each read with the number of bytes handed out so far.
  TextSource& calling(std::function<void(std::size_t)> hook) {
    hook_ = std::move(hook);
    return *this;
  }

  std::unique_ptr<opc::InputStream> getInputStream() override;
  std::uint64_t size() const override { return size_; }
  std::string description() const override { return "text source"; }

 private:
  std::string text_;
  std::uint64_t size_;
  std::function<void(std::size_t)> hook_;
};

opc::zippackage::ZipPhysicalPackage packageAt(const std::filesystem::path& path,
                                              bool replaceExisting = true);

/// Adds an item that is written through a stream.
opc::interfaces::ItemIndex addText(opc::zippackage::ZipPhysicalPackage& package,
                                   const opc::interfaces::NewItem& item, std::string_view text);

/// Makes a package of such items at `path`: name, content, name, content...
void makePackage(const std::filesystem::path& path, const std::vector<std::string>& namesAndTexts);

/// The index of a live item, by name.
std::optional<opc::interfaces::ItemIndex> find(const opc::zippackage::ZipPhysicalPackage& package,
                                               std::string_view name);
/// An item's content, read at once.
std::string textOf(opc::zippackage::ZipPhysicalPackage& package, std::string_view name);
/// An item's content, read through a stream in pieces of `block` bytes.
std::string streamedTextOf(opc::zippackage::ZipPhysicalPackage& package, std::string_view name,
                           std::size_t block = 1000);

/// Text that packs well, and text that does not pack at all.
std::string packableText(std::size_t size);
std::string randomText(std::size_t size, std::uint32_t seed = 1);

/// The text of the exception that `body` throws, "" when there is none; its code in `code`.
std::string errorOf(const std::function<void()>& body, opc::ErrorCode* code = nullptr);
/// The rule of the FormatError that `body` throws, else what went wrong instead.
std::string ruleOf(const std::function<void()>& body);

/// What a shell command prints, both streams, and "exit N" when that is not 0.
std::string outputOf(const std::string& command);

}  // namespace test
