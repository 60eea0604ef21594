// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "opc/checks/detail/ContainerCheck.h"
#include "opc/interfaces/IPhysicalPackage.h"
#include "opc/zippackage/ZipItemReader.h"

namespace opc::checks::detail {

/// A ZIP file that has been checked, faulty or not, as a physical package to be read: with the
/// first item of each name, and without the data of items that are damaged.
class CheckedContainer final : public opc::interfaces::IPhysicalPackage {
 public:
  /// `file`, `directory` and `states` must outlive it.
  CheckedContainer(std::string path, const opc::zippackage::PackageFile& file,
                   const opc::zippackage::ZipDirectory& directory,
                   const std::vector<ItemState>& states)
      : path_(std::move(path)), directory_(directory), states_(states), reader_(file, directory) {}

  const ItemState& state(opc::interfaces::ItemIndex item) const { return states_[item]; }

  bool isOpen() const noexcept override { return true; }
  std::string description() const override { return path_; }
  std::size_t itemCount() const override { return states_.size(); }
  bool isRemoved(opc::interfaces::ItemIndex item) const override { return states_[item].isTwin; }
  opc::interfaces::ItemInfo itemInfo(opc::interfaces::ItemIndex item) const override;
  std::string_view itemName(opc::interfaces::ItemIndex item) const override;
  /// Throw ErrorCode::Damaged for an item that is.
  std::unique_ptr<opc::InputStream> openItem(opc::interfaces::ItemIndex item) override;
  void readItem(opc::interfaces::ItemIndex item, opc::ByteBuffer& into,
                std::uint64_t limit) override;

  /// It is open, and for reading only: these throw ErrorCode::InvalidState, and closing does
  /// nothing.
  void open(opc::interfaces::OpenMode mode) override;
  void close(bool) override {}
  opc::interfaces::ItemIndex addItem(const opc::interfaces::NewItem& item) override;
  opc::interfaces::ItemIndex addItem(
      const opc::interfaces::NewItem& item,
      std::unique_ptr<opc::interfaces::IContentSource> source) override;
  std::unique_ptr<opc::OutputStream> openForWriting(opc::interfaces::ItemIndex item) override;
  void removeItem(opc::interfaces::ItemIndex item) override;

 private:
  void requireSound(opc::interfaces::ItemIndex item) const;

  std::string path_;
  const opc::zippackage::ZipDirectory& directory_;
  const std::vector<ItemState>& states_;
  opc::zippackage::ZipItemReader reader_;
};

}  // namespace opc::checks::detail
