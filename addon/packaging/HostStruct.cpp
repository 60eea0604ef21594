// SPDX-License-Identifier: MIT
#include "addon/packaging/HostStruct.h"

#include <utility>

#include "hostarray/matrix.h"

namespace addon::packaging {

ArrayPointer createStruct(std::size_t count, std::span<const char* const> fieldNames) {
  return ArrayPointer(kxCreateStructArray(1, &count, fieldNames.size(), fieldNames.data()));
}

ArrayPointer toText(const std::u16string& text) {
  return ArrayPointer(kxCreateString_UTF16(text.c_str()));
}

ArrayPointer toTextCell(const std::vector<std::u16string>& texts) {
  const std::array<std::size_t, 2> sizes{1, texts.size()};
  ArrayPointer cell(kxCreateCellArray(sizes.size(), sizes.data()));
  for (std::size_t i = 0; i < texts.size(); ++i) {
    ArrayPointer text = toText(texts[i]);
    kxSetCell(cell.get(), i, text.get());
    static_cast<void>(text.release());
  }
  return cell;
}

std::u16string flagText(bool value) {
  return value ? u"true" : u"false";
}

ArrayPointer toFlag(bool value) {
  return toText(flagText(value));
}

void setField(kxArray* array, std::size_t index, const char* name, ArrayPointer value) {
  kxSetField(array, index, name, value.get());
  static_cast<void>(value.release());
}

std::u16string readText(const kxArray* array, std::size_t index, const char* name) {
  return matrix::get_ustring(kxGetField(array, index, name));
}

std::vector<std::u16string> readTextCell(const kxArray* cell) {
  std::vector<std::u16string> texts;
  for (std::size_t i = 0; i < kxGetNumberOfElements(cell); ++i) {
    texts.push_back(matrix::get_ustring(kxGetCell(cell, i)));
  }
  return texts;
}

std::vector<std::u16string> readOptionalTexts(const kxArray* array, std::size_t index,
                                              const char* name) {
  const kxArray* field = kxGetField(array, index, name);
  if (field == nullptr || kxIsEmpty(field)) return {};
  return readTextCell(field);
}

bool isNotFalse(std::u16string_view text) {
  return text != u"false";
}

bool isTrue(std::u16string_view text) {
  return text == u"true";
}

ElementLoop::ElementLoop(const kxArray* array)
    : array_(array),
      subscript_(array == nullptr ? nullptr : kxCreateDoubleScalar(0.0)),
      count_(array == nullptr ? 0 : kxGetNumberOfElements(array)) {}

bool ElementLoop::next() {
  if (taken_ == count_) return false;
  kxArray* subscript = subscript_.get();
  *kxGetDoubles(subscript) = static_cast<double>(++taken_);
  element_ = kxSubscriptedReference(array_, 1, &subscript);
  return true;
}

}  // namespace addon::packaging
