// SPDX-License-Identifier: MIT
#include "addon/packaging/HostStruct.h"

#include <array>
#include <utility>

#include "addon/packaging/DocumentTable.h"
#include "hostarray/matrix.h"

namespace addon::packaging {

namespace {

/// The elements of an array one after the other, each taken with the host's own indexing.
class ElementLoop {
 public:
  /// `array` may be null, which has no elements.
  explicit ElementLoop(const kxArray* array)
      : array_(array),
        subscript_(array == nullptr ? nullptr : kxCreateDoubleScalar(0.0)),
        count_(array == nullptr ? 0 : kxGetNumberOfElements(array)) {}

  /// Whether there is an element to take; element() is then that one.
  bool next() {
    if (taken_ == count_) return false;
    kxArray* subscript = subscript_.get();
    *kxGetDoubles(subscript) = static_cast<double>(++taken_);
    element_ = kxSubscriptedReference(array_, 1, &subscript);
    return true;
  }
  /// Belongs to the host's current call.
  const kxArray* element() const { return element_; }

 private:
  const kxArray* array_;
  ArrayPointer subscript_;
  std::size_t count_;
  std::size_t taken_ = 0;
  const kxArray* element_ = nullptr;
};

ArrayPointer toStructArray(const ConstRecord& record, const Field& list) {
  ArrayPointer array = createStruct(list.table(), record.size(list));
  for (std::size_t i = 0; i < record.size(list); ++i) {
    writeStruct(record.at(list, i), array.get(), i);
  }
  return array;
}

ArrayPointer toValue(const ConstRecord& record, const Field& field) {
  switch (field.kind()) {
    case FieldKind::Text:
      return toText(record.text(field));
    case FieldKind::Flag:
      return toFlag(record.flag(field));
    case FieldKind::Texts:
      return toTextCell(record.texts(field));
    case FieldKind::Records:
      return toStructArray(record, field);
  }
  return nullptr;
}

}  // namespace

ArrayPointer createStruct(const RecordTable& table, std::size_t count) {
  std::vector<const char*> names;
  for (const Field& field : table.fields) names.push_back(field.name);
  return ArrayPointer(kxCreateStructArray(1, &count, names.size(), names.data()));
}

void writeStruct(const ConstRecord& record, kxArray* array, std::size_t index) {
  for (const Field& field : record.table().fields) {
    if (!record.isUnset(field)) setField(array, index, field.name, toValue(record, field));
  }
}

ArrayPointer toStruct(const DocumentTable& table, const ConstRecord& document) {
  if (table.isList) return toStructArray(document, table.list());
  ArrayPointer array = createStruct(table.record, 1);
  writeStruct(document, array.get(), 0);
  return array;
}

void readStruct(const Record& record, const kxArray* array, std::size_t index) {
  for (const Field& field : record.table().fields) {
    switch (field.kind()) {
      case FieldKind::Text:
        record.text(field) = readText(array, index, field.name);
        break;
      case FieldKind::Flag:
        record.flag(field) = isNotFalse(readText(array, index, field.name));
        break;
      case FieldKind::Texts:
        record.texts(field) = readOptionalTexts(array, index, field.name);
        break;
      case FieldKind::Records:
        for (ElementLoop loop(kxGetField(array, index, field.name)); loop.next();) {
          readStruct(record.append(field), loop.element(), 0);
        }
        break;
    }
  }
}

void readStruct(const DocumentTable& table, const Record& document, const kxArray* array) {
  if (!table.isList) return readStruct(document, array, 0);
  const std::size_t count = kxGetNumberOfElements(array);
  for (std::size_t i = 0; i < count; ++i) readStruct(document.append(table.list()), array, i);
}

ArrayPointer toText(const std::u16string& text) {
  return ArrayPointer(kxCreateString_UTF16(text.c_str()));
}

ArrayPointer toTextCell(std::vector<std::u16string> texts) {
  const std::array<std::size_t, 2> sizes{1, texts.size()};
  ArrayPointer cell(kxCreateCellArray(sizes.size(), sizes.data()));
  for (std::size_t i = 0; i < texts.size(); ++i) {
    ArrayPointer text = toText(std::exchange(texts[i], {}));
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

}  // namespace addon::packaging
