// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "opc/checks/detail/ContainerCheck.h"
#include "opc/interfaces/IPhysicalPackage.h"
#include "opc/zippackage/ZipItemReader.h"

namespace opc::checks::detail {

/// A checked ZIP file, faulty or not, as a physical package for reading: with the first item of
/// each name, and without the data of damaged items.
class CheckedContainer final : public interfaces::IPhysicalPackage {
 public:
  /// `file`, `directory` and `states` must outlive it.
  CheckedContainer(std::string path, const zippackage::PackageFile& file,
                   const zippackage::ZipDirectory& directory, const std::vector<ItemState>& states)
      : path_(std::move(path)),
        file_(file),
        directory_(directory),
        states_(states),
        reader_(file, directory) {}

  const ItemState& state(interfaces::ItemIndex item) const { return states_[item]; }

  bool isOpen() const noexcept override { return true; }
  std::string description() const override { return path_; }
  std::uint64_t fileSize() const override { return file_.size(); }
  std::size_t itemCount() const override { return states_.size(); }
  bool isRemoved(interfaces::ItemIndex item) const override { return states_[item].isTwin; }
  interfaces::ItemInfo itemInfo(interfaces::ItemIndex item) const override;
  std::string_view itemName(interfaces::ItemIndex item) const override;
  interfaces::ItemKind itemKind(interfaces::ItemIndex item) const override {
    return directory_.entries()[item].kind;
  }
  /// Throw ErrorCode::Damaged for a damaged item.
  std::unique_ptr<InputStream> openItem(interfaces::ItemIndex item) override;
  void readItem(interfaces::ItemIndex item, ByteBuffer& into, std::uint64_t limit) override;

  /// It is always open, for reading only: these throw ErrorCode::InvalidState, and closing does
  /// nothing.
  void open(interfaces::OpenMode mode) override;
  void close(bool) override {}
  interfaces::ItemIndex addItem(const interfaces::NewItem& item) override;
  interfaces::ItemIndex addItem(const interfaces::NewItem& item,
                                std::unique_ptr<interfaces::IContentSource> source) override;
  std::unique_ptr<OutputStream> openForWriting(interfaces::ItemIndex item) override;
  void removeItem(interfaces::ItemIndex item) override;

 private:
  void requireSound(interfaces::ItemIndex item) const;

  std::string path_;
  const zippackage::PackageFile& file_;
  const zippackage::ZipDirectory& directory_;
  const std::vector<ItemState>& states_;
  zippackage::ZipItemReader reader_;
};

}  // namespace opc::checks::detail
