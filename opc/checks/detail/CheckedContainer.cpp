// SPDX-License-Identifier: MIT
#include "opc/checks/detail/CheckedContainer.h"

#include "opc/Exception.h"
#include "opc/zippackage/ItemInfoOf.h"

namespace opc::checks::detail {

using interfaces::ItemIndex;

namespace {

[[noreturn]] void refuseToChange() {
  throw Exception(ErrorCode::InvalidState, "the package is open only for reading");
}

}  // namespace

interfaces::ItemInfo CheckedContainer::itemInfo(ItemIndex item) const {
  return zippackage::itemInfoOf(directory_, item);
}

std::string_view CheckedContainer::itemName(ItemIndex item) const {
  return directory_.name(item);
}

std::unique_ptr<InputStream> CheckedContainer::openItem(ItemIndex item) {
  requireSound(item);
  return reader_.open(item);
}

void CheckedContainer::readItem(ItemIndex item, ByteBuffer& into, std::uint64_t limit) {
  requireSound(item);
  reader_.read(item, into, limit);
}

void CheckedContainer::requireSound(ItemIndex item) const {
  if (!states_[item].isDamaged) return;
  throw Exception(ErrorCode::Damaged, "item '" + std::string(itemName(item)) + "' is damaged");
}

void CheckedContainer::open(interfaces::OpenMode) {
  throw Exception(ErrorCode::InvalidState, "the package is already open");
}

ItemIndex CheckedContainer::addItem(const interfaces::NewItem&) {
  refuseToChange();
}

ItemIndex CheckedContainer::addItem(const interfaces::NewItem&,
                                    std::unique_ptr<interfaces::IContentSource>) {
  refuseToChange();
}

std::unique_ptr<OutputStream> CheckedContainer::openForWriting(ItemIndex) {
  refuseToChange();
}

void CheckedContainer::removeItem(ItemIndex) {
  refuseToChange();
}

}  // namespace opc::checks::detail
