// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "opc/Exception.h"
#include "opc/Text.h"
#include "opc/model/Package.h"
#include "opc/plservices/FileContentSource.h"
#include "opc/plservices/FileSystemManager.h"
#include "tests/support/MemoryPhysicalPackage.h"
#include "tests/support/TemporaryFolder.h"

namespace test {

/// Gives so many bytes, then fails as a damaged item does.
class FailingSource final : public opc::interfaces::IContentSource {
 public:
  explicit FailingSource(std::uint64_t goodBytes) : goodBytes_(goodBytes) {}
  std::unique_ptr<opc::InputStream> getInputStream() override {
    return std::make_unique<Stream>(goodBytes_);
  }
  std::uint64_t size() const override { return goodBytes_ + 1; }
  std::string description() const override { return "failing source"; }

 private:
  class Stream final : public opc::InputStream {
   public:
    explicit Stream(std::uint64_t left) : left_(left) {}
    std::size_t read(unsigned char* buffer, std::size_t size) override {
      if (left_ == 0) throw opc::Exception(opc::ErrorCode::Damaged, "checksum does not match");
      const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(left_, size));
      std::memset(buffer, 'x', count);
      left_ -= count;
      return count;
    }
    bool isEnd() override { return false; }

   private:
    std::uint64_t left_;
  };

  std::uint64_t goodBytes_;
};

/// A package in memory with a file tree, opened as a new one.
class ScratchTree {
 public:
  using OpenMode = opc::interfaces::OpenMode;

  ScratchTree() { package.open(OpenMode::Create); }

  /// Commits what was changed.
  void reopen(OpenMode mode = OpenMode::Read) {
    package.close(false);
    package.open(mode);
  }

  /// A file on the disk, for adding.
  std::string diskFile(std::string_view content) {
    const auto file = folder / ("source" + std::to_string(sources_++));
    writeFile(file, content);
    return file.string();
  }

  void addFile(std::string_view path, std::string_view content = "content") {
    files.addFile(std::make_unique<opc::plservices::FileContentSource>(diskFile(content)), path);
  }

  void addFolder(std::string_view path) { files.createFolder(opc::fromUtf8(path)); }

  /// A part that no file tree knows of.
  void addPart(std::u16string_view name, std::string_view content) {
    const auto part = package.createPart(
        opc::model::PartName(name), opc::model::ContentType(u"application/octet-stream"),
        opc::model::StandardPartInfo(opc::interfaces::CompressionType::Normal, 0));
    part->getOutputStream()->write(reinterpret_cast<const unsigned char*>(content.data()),
                                   content.size());
  }

  /// A file whose declared size and bytes are the test's own; its stream fails at the end.
  void addFailingFile(std::string_view path, std::uint64_t goodBytes) {
    package.createPart(opc::model::PartName::fromItemName("files/" + std::string(path)),
                       opc::model::ContentType(u"application/octet-stream"),
                       opc::model::StandardPartInfo(opc::interfaces::CompressionType::None, 0),
                       std::make_unique<FailingSource>(goodBytes));
  }

  bool hasPart(std::u16string_view name) { return package.hasPart(opc::model::PartName(name)); }

  /// Files and empty folders.
  std::vector<std::string> list() {
    std::vector<std::string> paths;
    files.visitFiles([&paths](std::string_view path, const opc::plservices::FileSystemEntry&) {
      paths.emplace_back(path);
    });
    return paths;
  }

  std::string content(std::string_view path) {
    const auto entry = files.find(path);
    if (!entry) return "no such file";
    const auto stream = files.openFile(*entry);
    std::string text;
    std::string block(4096, '\0');
    while (const std::size_t count =
               stream->read(reinterpret_cast<unsigned char*>(block.data()), block.size())) {
      text.append(block, 0, count);
    }
    return text;
  }

  /// Item name of a file's part.
  std::string itemName(std::string_view path) {
    return std::string(files.find(path)->info().itemName);
  }

  TemporaryFolder folder;
  MemoryDisk disk;
  MemoryPhysicalPackage physical{disk};
  opc::model::Package package{physical, true};
  opc::plservices::FileSystemManager files{package};

 private:
  int sources_ = 0;
};

/// The text of the opc::Exception that `action` throws.
template <typename Action>
std::string errorOf(const Action& action) {
  try {
    action();
  } catch (const opc::Exception& error) {
    return error.what();
  }
  return "no error";
}

}  // namespace test
