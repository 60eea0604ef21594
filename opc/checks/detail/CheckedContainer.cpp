// SPDX-License-Identifier: MIT
#include "opc/checks/detail/CheckedContainer.h"

#include "opc/Exception.h"
#include "opc/zippackage/ItemInfoOf.h"

namespace opc::checks::detail {

using opc::interfaces::ItemIndex;

namespace {

[[noreturn]] void refuseToChange() {
  throw opc::Exception(opc::ErrorCode::InvalidState, "the package is open for reading only");
}

}  // namespace

opc::interfaces::ItemInfo CheckedContainer::itemInfo(ItemIndex item) const {
  return opc::zippackage::itemInfoOf(directory_, item);
}

std::string_view CheckedContainer::itemName(ItemIndex item) const {
  return directory_.name(item);
}

std::unique_ptr<opc::InputStream> CheckedContainer::openItem(ItemIndex item) {
  requireSound(item);
  return reader_.open(item);
}

void CheckedContainer::readItem(ItemIndex item, opc::ByteBuffer& into, std::uint64_t limit) {
  requireSound(item);
  reader_.read(item, into, limit);
}

void CheckedContainer::requireSound(ItemIndex item) const {
  if (!states_[item].isDamaged) return;
  throw opc::Exception(opc::ErrorCode::Damaged,
                       "item '" + std::string(itemName(item)) + "' is damaged");
}

void CheckedContainer::open(opc::interfaces::OpenMode) {
  throw opc::Exception(opc::ErrorCode::InvalidState, "the package is open already");
}

ItemIndex CheckedContainer::addItem(const opc::interfaces::NewItem&) {
  refuseToChange();
}

ItemIndex CheckedContainer::addItem(const opc::interfaces::NewItem&,
                                    std::unique_ptr<opc::interfaces::IContentSource>) {
  refuseToChange();
}

std::unique_ptr<opc::OutputStream> CheckedContainer::openForWriting(ItemIndex) {
  refuseToChange();
}

void CheckedContainer::removeItem(ItemIndex) {
  refuseToChange();
}

}  // namespace opc::checks::detail
